#ifndef SINGLEAPPLICATION_QTSINGLEAPPLICATION_H
#define SINGLEAPPLICATION_QTSINGLEAPPLICATION_H

#include <QApplication>
#include <QPointer>
#include <QWidget>

class SingleInstance;

/// An application with windows of which one instance runs per user and application id. Another one
/// hands its message to it, which brings its window to the front, and leaves:
///
///     QtSingleApplication app(QStringLiteral("example.manager"), argc, argv);
///     if (app.sendMessage(app.arguments().value(1)))
///         return 0;
///     MainWindow window;
///     app.setActivationWindow(&window);
///
/// What holds for QtSingleCoreApplication holds here.
class Q_DECL_EXPORT QtSingleApplication : public QApplication
{
    Q_OBJECT

public:
    /// The id is the path of the executable. The third argument is there for existing callers and
    /// without effect: a program without windows uses QtSingleCoreApplication.
    QtSingleApplication(int& argc, char** argv, bool GUIenabled = true);
    QtSingleApplication(const QString& id, int& argc, char** argv);
    ~QtSingleApplication() override;

    /// See QtSingleCoreApplication::isRunning().
    bool isRunning();

    QString id() const;

    /// The window that activateWindow() brings to the front; null, or a window since deleted, for
    /// none. The caller keeps it. Unless `activateOnMessage` is false, every message activates it
    /// before messageReceived() is emitted.
    void setActivationWindow(QWidget* window, bool activateOnMessage = true);
    QWidget* activationWindow() const;

    /// Takes the role of the running instance, if it is free, as isRunning() does. For existing
    /// callers; the argument has no effect.
    void initialize(bool dummy = true);

public Q_SLOTS:
    /// See QtSingleCoreApplication::sendMessage().
    bool sendMessage(const QString& message, int timeout = 5000);

    /// Restores the activation window when it is minimised, raises and activates it. How far the
    /// last goes is for the window system to decide. Nothing happens without a window.
    void activateWindow();

Q_SIGNALS:
    /// Another instance has sent this text; it does not wait for the slots.
    void messageReceived(const QString& message);

private:
    void handleMessage(const QString& message);

    SingleInstance* m_instance;
    QPointer<QWidget> m_window;
    bool m_activateOnMessage = true;
};

#endif
