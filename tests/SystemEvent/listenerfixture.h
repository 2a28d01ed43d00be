#ifndef TESTS_SYSTEMEVENT_LISTENERFIXTURE_H
#define TESTS_SYSTEMEVENT_LISTENERFIXTURE_H

#include "SystemEvent/csystemeventlistener.h"
#include "logindmock.h"

#include <QCoreApplication>
#include <QList>
#include <QObject>
#include <QTest>

#include <memory>

#include <unistd.h>

using Signals = QList<bool>;

/// The Linux listener on a mock of logind, and what it has signalled in this thread.
class ListenerFixture
{
protected:
    void start();
    void stop();

    void listen();
    /// Listens until the session "own", which is active, is being watched.
    void useOwnSession();
    /// Listens, outside of any session, until the user's display session "first" is being watched.
    void useDisplaySession();
    bool heldInhibitor() { return m_mock->inhibitors() == QStringList("sleep delay"); }

    std::unique_ptr<LogindMock> m_mock;
    Signals m_power;
    Signals m_user;

private:
    void watch(const QString& id);

    QObject m_context;
};

inline void ListenerFixture::start()
{
    qunsetenv("XDG_SESSION_ID");
    if (!m_mock)
        m_mock = std::make_unique<LogindMock>();
    m_mock->startBus();
    m_mock->startLogind();
    m_power.clear();
    m_user.clear();
}

inline void ListenerFixture::stop()
{
    CSystemEventListener::destroy();
    QCoreApplication::sendPostedEvents();
    m_mock->stopLogind();
    m_mock->stopBus();
}

inline void ListenerFixture::listen()
{
    CSystemEventListener* const listener = CSystemEventListener::instance();
    QObject::connect(listener, &CSystemEventListener::powerEvent, &m_context,
                     [this](bool value) { m_power << value; });
    QObject::connect(listener, &CSystemEventListener::userSwitch, &m_context,
                     [this](bool value) { m_user << value; });
    listener->startListen(true);
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
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    // The first state heard of gives no signal; it may be either one.
    QTRY_VERIFY_WITH_TIMEOUT(
        (m_mock->setActive(id, false), m_mock->setActive(id, true), m_user.endsWith(true)), 30000);
    // Later than all signals that are still on their way.
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false, true}), 30000);
    QCOMPARE(m_user.last(), true);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_power.clear();
    m_user.clear();
}

#endif
