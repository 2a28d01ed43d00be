#ifndef TESTS_SYSTEMEVENT_LISTENERFIXTURE_H
#define TESTS_SYSTEMEVENT_LISTENERFIXTURE_H

#include "logindmock.h"
#include "support/childprocess.h"

#include <QList>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <unistd.h>

using Signals = QList<bool>;

/// The Linux listener in a program of its own (listenerprocess), on a mock of logind in another.
/// What this process knows of D-Bus does not help the program.
class ListenerFixture
{
protected:
    void start();
    /// Ends everything; the program must have ended well, without a warning of Qt, and with nothing
    /// that it could not hear.
    void stop();

    /// Begins to listen.
    void listen(const char* command = "start");
    /// Listens until the session "own", which is active, is being watched.
    void useOwnSession();
    /// Listens, outside of any session, until the user's display session "first" is being watched.
    void useDisplaySession();
    /// Until all that logind has sent before has been heard; forgets the signals.
    void catchUp();
    bool heldInhibitor() { return m_mock->inhibitors() == QStringList("sleep delay"); }

    /// What the program's main thread has received since the last catchUp().
    Signals power() const { return signalsNamed("power "); }
    Signals user() const { return signalsNamed("user "); }
    /// The lines of the program's log so far.
    QList<QByteArray> log();
    /// Tells the listener to stop; whether its thread has ended, and after how long.
    struct Stop
    {
        bool ended;
        int milliseconds;
    };
    Stop stopListening();

    std::unique_ptr<LogindMock> m_mock;
    std::unique_ptr<ChildProcess> m_program;

private:
    void watch(const QString& id);
    Signals signalsNamed(const char* name) const;

    QTemporaryDir m_folder;
    decltype(QByteArray().size()) m_forgotten = 0;
};

inline void ListenerFixture::start()
{
    qunsetenv("XDG_SESSION_ID");
    if (!m_mock)
        m_mock = std::make_unique<LogindMock>();
    m_mock->startBus();
    m_mock->startLogind();
}

inline void ListenerFixture::stop()
{
    int code = 0;
    QByteArray output;
    if (m_program) {
        m_program->enter("log");
        m_program->enter("quit");
        code = m_program->exitCode();
        output = m_program->output();
        m_program.reset();
    }
    m_mock->stopLogind();
    m_mock->stopBus();
    QCOMPARE(code, 0);
    QVERIFY2(!output.contains("warning") && !output.contains("cannot be heard"),
             output.constData());
}

inline void ListenerFixture::listen(const char* command)
{
    m_forgotten = 0;
    m_program =
        std::make_unique<ChildProcess>(HELPER_LISTENERPROCESS, QStringList(), m_folder.path());
    m_program->enter(command);
}

inline void ListenerFixture::useOwnSession()
{
    m_mock->addSession(QStringLiteral("own"), true);
    m_mock->setOwnSession(QStringLiteral("own"));
    watch(QStringLiteral("own"));
}

inline void ListenerFixture::useDisplaySession()
{
    m_mock->addSession(QStringLiteral("first"), true, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("first"));
    watch(QStringLiteral("first"));
}

inline void ListenerFixture::watch(const QString& id)
{
    listen();
    // The first state heard of gives no signal; it may be either one.
    QTRY_VERIFY_WITH_TIMEOUT(
        (m_mock->setActive(id, false), m_mock->setActive(id, true), user().endsWith(true)), 30000);
    catchUp();
}

inline void ListenerFixture::catchUp()
{
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    const Signals before = power();
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(power(), before + Signals({false, true}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_forgotten = m_program->output().size();
}

inline Signals ListenerFixture::signalsNamed(const char* name) const
{
    Signals values;
    const QList<QByteArray> lines = m_program->output().mid(m_forgotten).split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(name))
            values << line.endsWith('1');
    }
    return values;
}

inline QList<QByteArray> ListenerFixture::log()
{
    QList<QByteArray> lines;
    m_program->enter("log");
    for (;;) {
        const QByteArray line = m_program->lineWith("log ");
        if (line.isNull() || line == "log end")
            return lines;
        lines << line.mid(4);
    }
}

inline ListenerFixture::Stop ListenerFixture::stopListening()
{
    m_program->enter("stop");
    const QByteArray answer = m_program->lineWith("stopped ");
    return {answer.startsWith("stopped "), answer.mid(answer.lastIndexOf(' ')).toInt()};
}

#endif
