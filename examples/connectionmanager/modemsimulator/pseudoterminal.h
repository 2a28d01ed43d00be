#ifndef DEMO_PSEUDOTERMINAL_H
#define DEMO_PSEUDOTERMINAL_H

#include "modemsimulator/linewatch.h"

#include <QByteArray>
#include <QLockFile>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <memory>

/// The modem's end of a pseudo-terminal, in raw mode, and a symbolic link to the other end, which
/// programs open as if it were a modem's device node.
///
/// Others may open and close the node as often as they like. What nobody reads is discarded: all
/// that is sent while nobody has the node open, what still waits when it is closed, and what
/// exceeds kMaxWaiting bytes.
class PseudoTerminal : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxWaiting = 70000000;

    explicit PseudoTerminal(QObject* parent = nullptr);
    /// Closes the line and removes the link.
    ~PseudoTerminal() override;

    /// Opens the line. A link at `link` is replaced, unless another simulator that is running has
    /// made it; anything else there is left alone. False, with the reason in `error`.
    bool open(const QString& link, QString* error);
    void close();
    QString link() const { return m_link; }

    /// Never waits. What is sent during a delay leaves after it.
    void send(const QByteArray& bytes);
    void delay(int milliseconds);

Q_SIGNALS:
    void received(const QByteArray& bytes);
    void sent(const QByteArray& bytes);
    /// The other side has closed the line. The line remains usable.
    void hungUp();

private:
    bool openTerminal(QString* error);
    bool makeLink(const QString& link, QString* error);
    void readInput();
    void writeOutput();
    void forgetOutput();
    void giveFree();

    int m_master = -1;
    int m_slave = -1; // kept open, so that the master does not fail while nobody else has it open
    QByteArray m_path;
    QString m_link;
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<LineWatch> m_watch;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_delay;
    QByteArray m_waiting;
    decltype(m_waiting.size()) m_written = 0; // how much of it is written
};

#endif
