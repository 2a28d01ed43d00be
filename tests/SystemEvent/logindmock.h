#ifndef TESTS_SYSTEMEVENT_LOGINDMOCK_H
#define TESTS_SYSTEMEVENT_LOGINDMOCK_H

#include "support/tiedprocess.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <csignal>
#include <sys/types.h>

/// An entry of logind's "Display" property.
struct SessionReference
{
    QString id;
    QDBusObjectPath path;
};
Q_DECLARE_METATYPE(SessionReference)

inline QDBusArgument& operator<<(QDBusArgument& argument, const SessionReference& reference)
{
    argument.beginStructure();
    argument << reference.id << reference.path;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, SessionReference& reference)
{
    argument.beginStructure();
    argument >> reference.id >> reference.path;
    argument.endStructure();
    return argument;
}

/// A system bus of the test's own, for this process, and python3-dbusmock's logind on it. Either
/// can be ended, stopped and started again. The calls wait for their answer without handling
/// events.
class LogindMock
{
public:
    LogindMock()
    {
        qDBusRegisterMetaType<SessionReference>();
        const QString socket = m_folder.filePath(QStringLiteral("bus"));
        QFile config(m_folder.filePath(QStringLiteral("bus.conf")));
        if (!config.open(QIODevice::WriteOnly))
            qFatal("No bus configuration");
        config.write("<busconfig><type>session</type><listen>unix:path=" + socket.toUtf8() +
                     "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                     "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                     "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
        config.close();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + socket.toUtf8());
    }
    ~LogindMock()
    {
        stopLogind();
        stopBus();
    }
    LogindMock(const LogindMock&) = delete;
    LogindMock& operator=(const LogindMock&) = delete;

    void startBus()
    {
        QFile::remove(m_folder.filePath(QStringLiteral("bus")));
        m_bus.start(QStringLiteral("dbus-daemon"),
                    {"--config-file=" + m_folder.filePath(QStringLiteral("bus.conf")), "--nofork",
                     "--print-address"});
        if (!m_bus.waitForReadyRead(30000))
            qFatal("The bus did not start");
        m_name = QUuid::createUuid().toString();
        if (!connection().isConnected())
            qFatal("No connection to the bus");
    }
    void stopBus()
    {
        if (m_bus.state() == QProcess::NotRunning)
            return;
        QDBusConnection::disconnectFromBus(m_name);
        m_bus.kill();
        m_bus.waitForFinished(30000);
    }
    void startLogind()
    {
        // It reports every call; an unread pipe would stop it.
        m_logind.setStandardOutputFile(reports());
        m_logind.start(QStringLiteral(SYSTEM_PYTHON),
                       {"-m", "dbusmock", "--system", "--template", "logind"});
        const bool there = QTest::qWaitFor(
            [this] {
                return connection().interface()->isServiceRegistered(
                           QStringLiteral("org.freedesktop.login1")) &&
                       call("/org/freedesktop/login1", manager, "ListInhibitors").type() ==
                           QDBusMessage::ReplyMessage;
            },
            30000);
        if (!there)
            qFatal("The mock of logind did not start");
        // The template's own know every session, fail on a user's number, or are missing.
        check(call("/org/freedesktop/login1", mock, "AddMethod",
                   {manager, "GetSession", "s", "o",
                    "ret = \"/org/freedesktop/login1/session/\" + args[0]\n"
                    "if ret not in objects: raise dbus.exceptions.DBusException("
                    "\"No session\", name=\"org.freedesktop.login1.NoSuchSession\")"}));
        check(call("/org/freedesktop/login1", mock, "AddMethod",
                   {manager, "GetUser", "u", "o",
                    "ret = \"/org/freedesktop/login1/user/%d\" % args[0]\n"
                    "if ret not in objects: raise dbus.exceptions.DBusException("
                    "\"Not logged in\", name=\"org.freedesktop.login1.NoSuchUser\")"}));
        setNoOwnSession();
    }
    void stopLogind()
    {
        m_logind.kill();
        m_logind.waitForFinished(30000);
    }
    /// Lets a process hang, or go on: it is there, but answers nothing.
    void signalLogind(int number) { ::kill(static_cast<pid_t>(m_logind.processId()), number); }
    void signalBus(int number) { ::kill(static_cast<pid_t>(m_bus.processId()), number); }

    void addSession(const QString& id, bool active, uint user = 4242)
    {
        check(call("/org/freedesktop/login1", mock, "AddSession",
                   {id, "seat0", user, "user", active}));
    }
    /// Whether it has reported a call like this since its start.
    bool wasAsked(const char* call) const
    {
        QFile file(reports());
        return file.open(QIODevice::ReadOnly) && file.readAll().contains(call);
    }
    /// Announces a state that is not the session's.
    void claimActive(const QString& id, bool active)
    {
        announceProperties(id, {{"Active", active}}, {});
    }
    /// Announces that the state has changed, without saying to what.
    void invalidateActive(const QString& id) { announceProperties(id, {}, {"Active"}); }
    void announceSession(const QString& id)
    {
        emitSignal("SessionNew", "so", {id, QVariant::fromValue(sessionPath(id))});
    }
    void setActive(const QString& id, bool active)
    {
        check(call(sessionPath(id).path(), mock, "UpdateProperties",
                   {"org.freedesktop.login1.Session", QVariantMap{{"Active", active}}}));
    }
    /// Announces the end of a session; the object stays, as if one with its name had come at once.
    void endSession(const QString& id)
    {
        emitSignal("SessionRemoved", "so", {id, QVariant::fromValue(sessionPath(id))});
    }
    /// Ends a session, object and all. No process belongs to one then.
    void removeSession(const QString& id)
    {
        check(call("/org/freedesktop/login1", mock, "RemoveObject", {sessionPath(id).path()}));
        setNoOwnSession();
        endSession(id);
    }
    /// The session to which every process belongs; at first none belongs to any.
    void setOwnSession(const QString& id)
    {
        check(call(
            "/org/freedesktop/login1", mock, "AddMethod",
            {manager, "GetSessionByPID", "u", "o", "ret = \"" + sessionPath(id).path() + "\""}));
    }
    void setNoOwnSession()
    {
        check(call("/org/freedesktop/login1", mock, "AddMethod",
                   {manager, "GetSessionByPID", "u", "o",
                    "raise dbus.exceptions.DBusException("
                    "\"No session\", name=\"org.freedesktop.login1.NoSessionForPID\")"}));
    }
    /// A user who is logged in, without a session that is displayed.
    void addUser(uint user)
    {
        check(call("/org/freedesktop/login1", mock, "AddUser", {user, "user", true}));
    }
    void setDisplaySession(uint user, const QString& id)
    {
        const SessionReference display{id, sessionPath(id)};
        check(call("/org/freedesktop/login1/user/" + QString::number(user),
                   "org.freedesktop.DBus.Properties", "Set",
                   {"org.freedesktop.login1.User", "Display",
                    QVariant::fromValue(QDBusVariant(QVariant::fromValue(display)))}));
    }
    void prepareForSleep(bool sleeps) { emitSignal("PrepareForSleep", "b", {sleeps}); }

    /// From the next Inhibit() on, sleep is announced before the answer.
    void sleepBeforeInhibitorIsGiven()
    {
        check(call("/org/freedesktop/login1", mock, "AddMethod",
                   {manager, "Inhibit", "ssss", "h",
                    "self.EmitSignal(\"org.freedesktop.login1.Manager\", \"PrepareForSleep\", "
                    "\"b\", [True])\n"
                    "import dbusmock.templates.logind as template\n"
                    "ret = template.Inhibit(self, *args)"}));
    }

    /// What the listeners hold: "what mode" of each inhibitor.
    QStringList inhibitors()
    {
        QStringList held;
        const QDBusMessage reply = call("/org/freedesktop/login1", manager, "ListInhibitors");
        if (reply.type() != QDBusMessage::ReplyMessage)
            return {reply.errorMessage()};
        const auto list = reply.arguments().value(0).value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            QString what;
            QString who;
            QString why;
            QString mode;
            uint user = 0;
            uint process = 0;
            list.beginStructure();
            list >> what >> who >> why >> mode >> user >> process;
            list.endStructure();
            held << what + QLatin1Char(' ') + mode;
        }
        list.endArray();
        return held;
    }

private:
    QString reports() const { return m_folder.filePath(QStringLiteral("reports")); }
    static QDBusObjectPath sessionPath(const QString& id)
    {
        return QDBusObjectPath("/org/freedesktop/login1/session/" + id);
    }
    QDBusConnection connection() const
    {
        return QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_name);
    }
    QDBusMessage call(const QString& path, const char* interface, const char* method,
                      const QVariantList& arguments = {})
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.login1"), path,
                                           QLatin1String(interface), QLatin1String(method));
        message.setArguments(arguments);
        return connection().call(message, QDBus::Block, 30000);
    }
    void announceProperties(const QString& id, const QVariantMap& changed,
                            const QStringList& invalidated)
    {
        check(call(sessionPath(id).path(), mock, "EmitSignal",
                   {"org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                    QVariant::fromValue(
                        QVariantList{"org.freedesktop.login1.Session", changed, invalidated})}));
    }
    void emitSignal(const char* name, const char* signature, const QVariantList& arguments)
    {
        check(call("/org/freedesktop/login1", mock, "EmitSignal",
                   {manager, name, signature, QVariant::fromValue(arguments)}));
    }
    // Aborts the test, and leaves no process behind.
    void check(const QDBusMessage& reply)
    {
        if (reply.type() == QDBusMessage::ReplyMessage)
            return;
        m_logind.kill();
        m_bus.kill();
        qFatal("The mock refused: %s", qPrintable(reply.errorMessage()));
    }

    static constexpr const char* mock = "org.freedesktop.DBus.Mock";
    static constexpr const char* manager = "org.freedesktop.login1.Manager";

    QTemporaryDir m_folder;
    QString m_name;
    TiedProcess m_bus;
    TiedProcess m_logind;
};

#endif
