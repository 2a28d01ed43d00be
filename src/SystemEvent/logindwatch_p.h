#ifndef SYSTEMEVENT_LOGINDWATCH_P_H
#define SYSTEMEVENT_LOGINDWATCH_P_H

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

class CSystemEventListener;
class QDBusServiceWatcher;

/// Watches logind on the system bus and lets the listener emit what it hears; lives in the
/// listener's thread. README.md in this folder has the states and what holds of them.
///
/// Nothing here waits for logind: every call has its answer handled when it comes, and answers from
/// before logind went away are dropped.
class LogindWatch : public QObject
{
    Q_OBJECT

public:
    explicit LogindWatch(CSystemEventListener& listener);
    ~LogindWatch() override;

    /// Looks for the bus, now and again until it is there.
    void begin();

private Q_SLOTS:
    void prepareForSleep(bool sleeps);
    void sessionAdded(const QString& id, const QDBusObjectPath& path);
    void sessionRemoved(const QString& id, const QDBusObjectPath& path);
    void sessionChanged(const QString& interface, const QVariantMap& changed,
                        const QStringList& invalidated);

private:
    using Handler = std::function<void(const QDBusMessage& reply)>;

    void checkUp();
    void connectToBus();
    void hear(const QString& path, const QString& interface, const char* signal, const char* slot);
    void dropBus();
    void logindCame();
    void logindWent();

    void takeInhibitor();
    void releaseWhenReceived();
    void releaseIfReceived();

    void findOwnSession();
    void findSessionById(const QString& id);
    void findDisplaySession();
    void useSession(const QString& path);
    void useNoSession(const QDBusMessage& lastReply);
    void leaveSession();
    void askActive();
    void setActive(bool active);

    void callManager(const char* method, const QVariantList& arguments, const Handler& handle);
    void getProperty(const QString& path, const char* interface, const char* name,
                     const Handler& handle);
    void call(const QDBusMessage& message, const Handler& handle);

    CSystemEventListener& m_listener;
    const QString m_busName;
    std::optional<QDBusConnection> m_bus;
    QTimer m_checkUp;
    std::unique_ptr<QObject> m_era; // owns what waits for answers of the present logind
    std::unique_ptr<QDBusServiceWatcher> m_owner;

    bool m_asleep = false;
    QDBusUnixFileDescriptor m_inhibitor; // holding it delays sleep
    QTimer m_release;
    QElapsedTimer m_sinceSleep;
    std::shared_ptr<std::atomic<int>> m_notEntered; // threads that have not handled the signal yet

    QString m_session;
    bool m_searching = false;
    std::optional<bool> m_active;
};

#endif
