// A program that listens and says what it hears, each on a line:
//     power <0|1>, user <0|1>     in its main thread
//     heard power <0|1>           directly, in the listener's own thread
//     warning <text>              what Qt complains of
// It registers no D-Bus type and makes no bus connection: it is a program that knows nothing of
// logind. It does what it reads:
//     start           begins to listen
//     stop            ends that, and says "stopped" or "not stopped", and the milliseconds
//     stop at sleep   the listener's own thread ends it when the system will sleep
//     start and block begins, and then:
//     block           the main thread does nothing until the next line
//     occupy          a thread of its own receives, says "occupied", and does nothing more
//     release         until now
//     log             says each line of the log after "log ", then "log end"
//     quit, or the end of the input

#include "SystemEvent/csystemeventlistener.h"

#include "support/logcapture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSemaphore>
#include <QSocketNotifier>
#include <QThread>

#include <cstdio>

#include <unistd.h>

namespace {

void say(const QByteArray& line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

void sayValue(const char* name, bool value)
{
    say(QByteArray(name) + (value ? " 1" : " 0"));
}

// Byte by byte: nothing may wait in a buffer where the notifier does not see it.
QByteArray nextLine()
{
    QByteArray line;
    for (char byte = 0; ::read(STDIN_FILENO, &byte, 1) == 1; line += byte) {
        if (byte == '\n')
            return line;
    }
    return "quit";
}

void sayWarning(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        say("warning " + text.toUtf8());
}

class Program : public QObject
{
public:
    Program()
        : m_input(STDIN_FILENO, QSocketNotifier::Read)
    {
        CSystemEventListener* const listener = CSystemEventListener::instance();
        connect(listener, &CSystemEventListener::powerEvent, this,
                [](bool on) { sayValue("power", on); });
        connect(listener, &CSystemEventListener::userSwitch, this,
                [](bool active) { sayValue("user", active); });
        connect(
            listener, &CSystemEventListener::powerEvent, listener,
            [](bool on) { sayValue("heard power", on); }, Qt::DirectConnection);
        connect(&m_input, &QSocketNotifier::activated, this, [this] { handle(nextLine()); });
        m_receiver.moveToThread(&m_thread);
        m_thread.start();
    }
    ~Program() override
    {
        m_thread.quit();
        m_thread.wait();
        CSystemEventListener::destroy();
    }

private:
    void handle(const QByteArray& command)
    {
        CSystemEventListener* const listener = CSystemEventListener::instance();
        if (command.startsWith("start")) {
            listener->startListen(true);
            if (command == "start and block")
                handle("block");
        } else if (command == "stop") {
            stop();
        } else if (command == "stop at sleep") {
            connect(
                listener, &CSystemEventListener::powerEvent, listener, [this] { stop(); },
                Qt::DirectConnection);
            say("will stop");
        } else if (command == "block") {
            say("blocked");
            handle(nextLine());
        } else if (command == "occupy") {
            occupy();
        } else if (command == "release") {
            m_mayGoOn.release(1000);
        } else if (command == "log") {
            for (const QString& line : m_log.lines())
                say("log " + line.toUtf8());
            say("log end");
        } else if (command == "quit") {
            QCoreApplication::quit();
        }
    }
    void stop()
    {
        CSystemEventListener* const listener = CSystemEventListener::instance();
        QElapsedTimer timer;
        timer.start();
        listener->stopListen();
        say((listener->isFinished() ? "stopped " : "not stopped ") +
            QByteArray::number(timer.elapsed()));
    }
    void occupy()
    {
        connect(CSystemEventListener::instance(), &CSystemEventListener::powerEvent, &m_receiver,
                [this] {
                    say("occupied");
                    m_mayGoOn.acquire();
                });
        say("to be occupied");
    }

    LogCapture m_log;
    QSemaphore m_mayGoOn;
    QSocketNotifier m_input;
    QThread m_thread;
    QObject m_receiver;
};

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    qInstallMessageHandler(sayWarning);
    const Program program;
    say("ready");
    return QCoreApplication::exec();
}
