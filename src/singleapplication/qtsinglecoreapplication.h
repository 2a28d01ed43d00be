#ifndef SINGLEAPPLICATION_QTSINGLECOREAPPLICATION_H
#define SINGLEAPPLICATION_QTSINGLECOREAPPLICATION_H

#include "wzrframework_export.h"

#include <QCoreApplication>

class SingleInstance;

/// An application without windows of which one instance runs per user and application id. Another
/// one hands its message to it and leaves:
///
///     QtSingleCoreApplication app(QStringLiteral("example.service"), argc, argv);
///     if (app.sendMessage(app.arguments().value(1)))
///         return 0;
///     QObject::connect(&app, &QtSingleCoreApplication::messageReceived, handle);
///     return app.exec();
///
/// Instances with the same id find each other, QtSingleApplication's included. The role of the
/// running instance ends with the object, or with the process however that ends. All of it belongs
/// to the main thread.
class WZRFRAMEWORK_EXPORT QtSingleCoreApplication : public QCoreApplication
{
    Q_OBJECT

public:
    /// The id is the path of the executable.
    QtSingleCoreApplication(int& argc, char** argv);
    QtSingleCoreApplication(const QString& id, int& argc, char** argv);
    ~QtSingleCoreApplication() override;

    /// Whether another instance is running. If not, this one takes the role, keeps it, and answers
    /// false from then on. Where no lock can be taken at all, such as on a full disk or when
    /// another user has put something in its place, the log says so and this instance runs alone.
    bool isRunning();

    QString id() const;

public Q_SLOTS:
    /// Hands the text to the running instance and waits at most `timeout` milliseconds until it has
    /// it. False when none is running (this one then takes the role) and when it did not take the
    /// text in time, such as while its event loop stands still. Nothing is sent to a process of
    /// another user, and nothing taken from one.
    bool sendMessage(const QString& message, int timeout = 5000);

Q_SIGNALS:
    /// Another instance has sent this text; it does not wait for the slots.
    void messageReceived(const QString& message);

private:
    SingleInstance* m_instance;
};

#endif
