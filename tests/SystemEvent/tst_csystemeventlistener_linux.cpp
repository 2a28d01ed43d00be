#include "listenerfixture.h"

#include "support/logcapture.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QTest>
#include <QThread>

#include <atomic>

class tst_CSystemEventListener_linux : public QObject, private ListenerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }
    void sleepAndWakingBecomeSignals();
    void inhibitorIsHeldUntilSleepAndTakenAfterIt();
    void inhibitorStaysWhenWakingComesAtOnce();
    void sleepWaitsForTheMainThread();
    void sleepDoesNotWaitForever();
    void sleepWaitsForOtherThreads();
    void repeatedNotificationsAreOneSignal();
    void noBusMeansNoEvents();
    void noLogindMeansNoEventsUntilItComes();
    void eventsResumeAfterLogindRestarts();
    void eventsResumeAfterTheBusRestarts();
    void wakingMissedByARestartIsTold();
    void silentLogindDoesNotHoldUpTheStop();
    void silentBusDoesNotHoldUpTheStop();
    void startsAgainAfterItsStop();
};

void tst_CSystemEventListener_linux::sleepAndWakingBecomeSignals()
{
    LogCapture log;
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false, true}), 30000);
    QCOMPARE(m_user, Signals());
    const QString name = QStringLiteral("SystemEvent/csystemeventlistener_linux PowerMsgCallBack ");
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines()[0].endsWith(name + "SystemWillSleep"));
    QVERIFY(log.lines()[1].endsWith(name + "SystemHasPoweredOn"));
}

void tst_CSystemEventListener_linux::inhibitorIsHeldUntilSleepAndTakenAfterIt()
{
    listen();
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList("sleep delay"), 30000);
    for (int night = 0; night < 2; ++night) {
        m_mock->prepareForSleep(true);
        QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
        QCOMPARE(m_power.last(), false);
        m_mock->prepareForSleep(false);
        QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList("sleep delay"), 30000);
    }
    CSystemEventListener::instance()->stopListen();
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
}

void tst_CSystemEventListener_linux::inhibitorStaysWhenWakingComesAtOnce()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false, true}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    // Longer than the release would have been put off.
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 1000) {
        QCoreApplication::processEvents();
        QVERIFY(m_mock->inhibitors().contains("sleep delay"));
    }
}

void tst_CSystemEventListener_linux::sleepWaitsForTheMainThread()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    // This thread, the receivers', handles no events here: asking the mock waits for its answer.
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 1000)
        QVERIFY(heldInhibitor());
    QCOMPARE(m_power, Signals());
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    QCOMPARE(m_power, Signals({false}));
}

void tst_CSystemEventListener_linux::sleepDoesNotWaitForever()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QElapsedTimer timer;
    timer.start();
    while (heldInhibitor())
        QVERIFY(timer.elapsed() < 20000);
    QVERIFY(timer.elapsed() > 1500);
    QCOMPARE(m_power, Signals());
}

void tst_CSystemEventListener_linux::sleepWaitsForOtherThreads()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    QThread thread;
    QObject receiver;
    receiver.moveToThread(&thread);
    std::atomic<bool> entered{false};
    QSemaphore finish;
    connect(CSystemEventListener::instance(), &CSystemEventListener::powerEvent, &receiver, [&] {
        entered = true;
        finish.acquire();
    });
    thread.start();
    QElapsedTimer timer;
    timer.start();
    m_mock->prepareForSleep(true);
    while (heldInhibitor() && timer.elapsed() < 30000)
        QCoreApplication::processEvents();
    const bool enteredInTime = entered;
    const qint64 waited = timer.elapsed();
    finish.release();
    thread.quit();
    QVERIFY(thread.wait(30000));
    QVERIFY(enteredInTime);
    QVERIFY(waited >= 500); // left to threads that the listener does not know
    QVERIFY(waited < 30000);
}

void tst_CSystemEventListener_linux::repeatedNotificationsAreOneSignal()
{
    useOwnSession();
    m_mock->setActive(QStringLiteral("own"), true);
    m_mock->setActive(QStringLiteral("own"), false);
    m_mock->setActive(QStringLiteral("own"), false);
    m_mock->prepareForSleep(false);
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(false);
    m_mock->prepareForSleep(false);
    m_mock->setActive(QStringLiteral("own"), true);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
    QCOMPARE(m_power, Signals({false, true}));
}

void tst_CSystemEventListener_linux::noBusMeansNoEvents()
{
    m_mock->stopLogind();
    m_mock->stopBus();
    listen();
    CSystemEventListener* const listener = CSystemEventListener::instance();
    QVERIFY(listener->isRunning());
    QElapsedTimer timer;
    timer.start();
    listener->stopListen();
    QVERIFY(listener->isFinished());
    QVERIFY(timer.elapsed() < 10000);
    QCOMPARE(m_power, Signals());
}

void tst_CSystemEventListener_linux::noLogindMeansNoEventsUntilItComes()
{
    m_mock->stopLogind();
    listen();
    m_mock->startLogind();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
}

void tst_CSystemEventListener_linux::eventsResumeAfterLogindRestarts()
{
    useOwnSession();
    m_mock->stopLogind();
    m_mock->startLogind();
    // Meanwhile another user has taken over.
    m_mock->addSession(QStringLiteral("own"), false);
    m_mock->setOwnSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    m_mock->setActive(QStringLiteral("own"), true);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
    QCOMPARE(m_power, Signals({false}));
}

void tst_CSystemEventListener_linux::eventsResumeAfterTheBusRestarts()
{
    useOwnSession();
    m_mock->stopBus();
    m_mock->stopLogind();
    m_mock->startBus();
    m_mock->startLogind();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
}

void tst_CSystemEventListener_linux::wakingMissedByARestartIsTold()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    m_mock->stopLogind();
    m_mock->startLogind();
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false, true}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
}

void tst_CSystemEventListener_linux::silentLogindDoesNotHoldUpTheStop()
{
    m_mock->signalLogind(SIGSTOP);
    listen();
    CSystemEventListener* const listener = CSystemEventListener::instance();
    listener->stopListen();
    QVERIFY(listener->isFinished());
    listener->startListen(true);
    m_mock->signalLogind(SIGCONT);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
}

void tst_CSystemEventListener_linux::silentBusDoesNotHoldUpTheStop()
{
    m_mock->signalBus(SIGSTOP);
    listen();
    QElapsedTimer timer;
    timer.start();
    CSystemEventListener::instance()->stopListen();
    QVERIFY(timer.elapsed() < 10000);
    m_mock->signalBus(SIGCONT);
    QVERIFY(CSystemEventListener::instance()->wait(30000));
}

void tst_CSystemEventListener_linux::startsAgainAfterItsStop()
{
    useOwnSession();
    CSystemEventListener* const listener = CSystemEventListener::instance();
    listener->stopListen();
    QVERIFY(listener->isFinished());
    listener->startListen(false);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
}

QTEST_GUILESS_MAIN(tst_CSystemEventListener_linux)
#include "tst_csystemeventlistener_linux.moc"
