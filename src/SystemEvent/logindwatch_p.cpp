#include "SystemEvent/logindwatch_p.h"

#include "LogTask/clog.h"
#include "LogTask/logline_p.h"
#include "SystemEvent/csystemeventlistener.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QThread>
#include <QUuid>

#include <unistd.h>

namespace {

constexpr char kLogSource[] = "SystemEvent/csystemeventlistener_linux";
const auto kService = QStringLiteral("org.freedesktop.login1");
const auto kManagerPath = QStringLiteral("/org/freedesktop/login1");
const auto kManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const auto kPropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr char kSessionInterface[] = "org.freedesktop.login1.Session";

constexpr int kCheckUpMs = 1000;      // for a bus or a session that is not there yet
constexpr int kPollMs = 20;           // while sleep is delayed
constexpr int kOtherThreadsMs = 500;  // left to receivers in threads that are not known
constexpr int kLongestDelayMs = 2000; // logind itself waits 5 s by default

// The system bus of the moment, over a connection of our own: the shared one would stay broken once
// the bus was restarted.
QString uniqueName()
{
    return QLatin1String("wzrframework-") + QUuid::createUuid().toString();
}

// The bus is only connected to slots whose argument types it knows. A process that uses no D-Bus
// has made none known.
void registerSlotTypes()
{
    qDBusRegisterMetaType<QDBusObjectPath>();
}

// Whether logind has answered, be it with an error. What else comes as an error says that nobody
// did, and nothing about sessions.
bool isAnswer(const QDBusMessage& reply)
{
    switch (QDBusError(reply).type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
    case QDBusError::Disconnected:
    case QDBusError::NoServer:
    case QDBusError::NoMemory:
    case QDBusError::LimitsExceeded:
    case QDBusError::ServiceUnknown:
    case QDBusError::AccessDenied:
        return false;
    default:
        return true;
    }
}

} // namespace

LogindWatch::LogindWatch(CSystemEventListener& listener)
    : m_listener(listener)
    , m_busName(uniqueName())
{
    registerSlotTypes();
    m_checkUp.setInterval(kCheckUpMs);
    connect(&m_checkUp, &QTimer::timeout, this, &LogindWatch::checkUp);
    m_release.setInterval(kPollMs);
    connect(&m_release, &QTimer::timeout, this, &LogindWatch::releaseIfReceived);
}

LogindWatch::~LogindWatch()
{
    dropBus();
}

void LogindWatch::begin()
{
    connectToBus();
    m_checkUp.start();
}

void LogindWatch::checkUp()
{
    if (m_bus && !m_bus->isConnected())
        dropBus();
    if (!m_bus)
        connectToBus();
    else if (m_era && m_session.isEmpty() && !m_searching)
        findOwnSession();
}

void LogindWatch::connectToBus()
{
    const QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_busName);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromBus(m_busName);
        return;
    }
    m_bus = bus;
    m_owner = std::make_unique<QDBusServiceWatcher>(kService, *m_bus);
    connect(m_owner.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                logindWent();
                if (!owner.isEmpty())
                    logindCame();
            });
    hear(kManagerPath, kManagerInterface, "PrepareForSleep", SLOT(prepareForSleep(bool)));
    hear(kManagerPath, kManagerInterface, "SessionNew",
         SLOT(sessionAdded(QString, QDBusObjectPath)));
    hear(kManagerPath, kManagerInterface, "SessionRemoved",
         SLOT(sessionRemoved(QString, QDBusObjectPath)));
    QDBusMessage ask = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    ask << kService;
    call(ask, [this](const QDBusMessage& reply) {
        if (reply.arguments().value(0).toBool() && !m_era)
            logindCame();
    });
}

void LogindWatch::hear(const QString& path, const QString& interface, const char* signal,
                       const char* slot)
{
    const QString name = QLatin1String(signal);
    if (!m_bus->connect(kService, path, interface, name, this, slot))
        logLine(kLogSource, "hear", interface, name, "cannot be heard",
                m_bus->lastError().message());
}

void LogindWatch::dropBus()
{
    logindWent();
    m_owner.reset();
    m_bus.reset();
    QDBusConnection::disconnectFromBus(m_busName);
}

void LogindWatch::logindCame()
{
    m_era = std::make_unique<QObject>();
    takeInhibitor();
    findOwnSession();
    // A signal may have been missed while nobody was there to send it.
    getProperty(kManagerPath, "org.freedesktop.login1.Manager", "PreparingForSleep",
                [this](const QDBusMessage& reply) {
                    if (reply.type() == QDBusMessage::ReplyMessage)
                        prepareForSleep(
                            reply.arguments().value(0).value<QDBusVariant>().variant().toBool());
                });
}

// What is known of the session's state stays, so that it is compared with the next logind's word.
void LogindWatch::logindWent()
{
    m_era.reset();
    m_release.stop();
    m_inhibitor = QDBusUnixFileDescriptor();
    m_searching = false;
    leaveSession();
}

// Sleep

void LogindWatch::takeInhibitor()
{
    const QVariantList arguments = {QStringLiteral("sleep"), QCoreApplication::applicationName(),
                                    QStringLiteral("Prepare for sleep"), QStringLiteral("delay")};
    callManager("Inhibit", arguments, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ReplyMessage && !m_asleep)
            m_inhibitor = reply.arguments().value(0).value<QDBusUnixFileDescriptor>();
    });
}

void LogindWatch::prepareForSleep(bool sleeps)
{
    if (sleeps == m_asleep)
        return;
    m_asleep = sleeps;
    Log(sleeps ? "%s %s SystemWillSleep" : "%s %s SystemHasPoweredOn", kLogSource,
        "PowerMsgCallBack");
    m_listener.emitSignal(false, !sleeps);
    m_release.stop();
    if (sleeps)
        releaseWhenReceived();
    else if (m_era)
        takeInhibitor();
}

// The signal stands in the queues of its receivers' threads now. What is queued behind it there is
// handled after it.
void LogindWatch::releaseWhenReceived()
{
    const auto notEntered = std::make_shared<std::atomic<int>>(2);
    for (QObject* object : {static_cast<QObject*>(&m_listener),
                            static_cast<QObject*>(QCoreApplication::instance())}) {
        if (object)
            QMetaObject::invokeMethod(
                object, [notEntered] { --*notEntered; }, Qt::QueuedConnection);
        else
            --*notEntered;
    }
    m_notEntered = notEntered;
    m_sinceSleep.start();
    m_release.start();
}

void LogindWatch::releaseIfReceived()
{
    const qint64 waited = m_sinceSleep.elapsed();
    if (waited < kOtherThreadsMs || (*m_notEntered > 0 && waited < kLongestDelayMs))
        return;
    m_release.stop();
    m_inhibitor = QDBusUnixFileDescriptor();
}

// The session: the process's own, else the one that the environment names, else the user's own
// graphical one, for services that run outside of any.

void LogindWatch::findOwnSession()
{
    m_searching = true;
    callManager("GetSessionByPID", {static_cast<uint>(getpid())},
                [this](const QDBusMessage& reply) {
                    const QString id = qEnvironmentVariable("XDG_SESSION_ID");
                    if (reply.type() == QDBusMessage::ReplyMessage)
                        useSession(reply.arguments().value(0).value<QDBusObjectPath>().path());
                    else if (!id.isEmpty())
                        findSessionById(id);
                    else
                        findDisplaySession();
                });
}

void LogindWatch::findSessionById(const QString& id)
{
    callManager("GetSession", {id}, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ReplyMessage)
            useSession(reply.arguments().value(0).value<QDBusObjectPath>().path());
        else
            findDisplaySession();
    });
}

void LogindWatch::findDisplaySession()
{
    callManager("GetUser", {static_cast<uint>(getuid())}, [this](const QDBusMessage& user) {
        const QString path = user.arguments().value(0).value<QDBusObjectPath>().path();
        if (user.type() != QDBusMessage::ReplyMessage) {
            useNoSession(user); // The user is not logged in.
            return;
        }
        getProperty(
            path, "org.freedesktop.login1.User", "Display", [this](const QDBusMessage& reply) {
                const QVariant display = reply.arguments().value(0).value<QDBusVariant>().variant();
                QString id;
                QDBusObjectPath session;
                if (display.userType() == qMetaTypeId<QDBusArgument>()) {
                    const auto argument = display.value<QDBusArgument>();
                    argument.beginStructure();
                    argument >> id >> session;
                    argument.endStructure();
                }
                if (id.isEmpty())
                    useNoSession(reply);
                else
                    useSession(session.path());
            });
    });
}

void LogindWatch::useSession(const QString& path)
{
    m_searching = false;
    if (path == m_session)
        return;
    leaveSession();
    m_session = path;
    hear(path, kPropertiesInterface, "PropertiesChanged",
         SLOT(sessionChanged(QString, QVariantMap, QStringList)));
    askActive();
}

// Searched and found none: that is a state, inactive, so that the login after it is a change. A
// session that is being watched stays.
void LogindWatch::useNoSession(const QDBusMessage& lastReply)
{
    m_searching = false;
    if (m_session.isEmpty() && isAnswer(lastReply))
        setActive(false);
}

void LogindWatch::leaveSession()
{
    if (m_bus && !m_session.isEmpty()) {
        m_bus->disconnect(kService, m_session, kPropertiesInterface,
                          QStringLiteral("PropertiesChanged"), this,
                          SLOT(sessionChanged(QString, QVariantMap, QStringList)));
    }
    m_session.clear();
}

// A session from which the user has logged out stays, inactive, for as long as a process of it
// does. Whether the new one takes its place is for logind to say.
void LogindWatch::sessionAdded(const QString&, const QDBusObjectPath&)
{
    if (m_era && !m_active.value_or(false))
        findOwnSession();
}

void LogindWatch::sessionRemoved(const QString&, const QDBusObjectPath& path)
{
    if (path.path() != m_session || m_session.isEmpty())
        return;
    leaveSession();
    setActive(false);
    if (m_era)
        findOwnSession();
}

void LogindWatch::sessionChanged(const QString& interface, const QVariantMap& changed,
                                 const QStringList& invalidated)
{
    const auto name = QStringLiteral("Active");
    // What was posted before the session was left still arrives.
    if (m_session.isEmpty() || interface != QLatin1String(kSessionInterface))
        return;
    if (changed.contains(name))
        setActive(changed.value(name).toBool());
    else if (invalidated.contains(name))
        askActive();
}

void LogindWatch::askActive()
{
    const QString session = m_session;
    getProperty(session, kSessionInterface, "Active", [this, session](const QDBusMessage& reply) {
        if (reply.type() != QDBusMessage::ReplyMessage) {
            if (session == m_session) {
                leaveSession(); // It does not exist; another may, a little later.
                useNoSession(reply);
            }
        } else if (session == m_session) {
            setActive(reply.arguments().value(0).value<QDBusVariant>().variant().toBool());
        }
    });
}

// The first state heard of is no change.
void LogindWatch::setActive(bool active)
{
    const bool changed = m_active && *m_active != active;
    m_active = active;
    if (!changed)
        return;
    Log(active ? "%s %s User login" : "%s %s User logout", kLogSource, "userSwitchEventHandler");
    m_listener.emitSignal(true, active);
}

// Calls

void LogindWatch::callManager(const char* method, const QVariantList& arguments,
                              const Handler& handle)
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, kManagerPath, kManagerInterface,
                                                          QLatin1String(method));
    message.setArguments(arguments);
    call(message, handle);
}

void LogindWatch::getProperty(const QString& path, const char* interface, const char* name,
                              const Handler& handle)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(kService, path, kPropertiesInterface, QStringLiteral("Get"));
    message << QString(QLatin1String(interface)) << QString(QLatin1String(name));
    call(message, handle);
}

void LogindWatch::call(const QDBusMessage& message, const Handler& handle)
{
    if (!m_bus)
        return;
    QDBusMessage unstarted = message;
    unstarted.setAutoStartService(false);
    QObject* const owner = m_era ? m_era.get() : static_cast<QObject*>(m_owner.get());
    auto* const watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(unstarted), owner);
    connect(watcher, &QDBusPendingCallWatcher::finished, owner,
            [handle](QDBusPendingCallWatcher* done) {
                const QDBusMessage reply = done->reply();
                done->deleteLater();
                handle(reply);
            });
}
