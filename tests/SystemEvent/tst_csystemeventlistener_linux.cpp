#include "listenerfixture.h"

#include <QElapsedTimer>
#include <QTest>

class tst_csystemeventlistener_linux : public QObject, private ListenerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }
    void sleepAndWakingBecomeSignals();
    void inhibitorIsHeldUntilSleepAndTakenAfterIt();
    void inhibitorStaysWhenWakingComesAtOnce();
    void sleepWaitsForTheMainThreadButNotForever();
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
    void stopFromItsOwnThreadOnlyAsks();
    void inhibitorThatComesAsleepIsNotKept();
};

void tst_csystemeventlistener_linux::sleepAndWakingBecomeSignals()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false, true}), 30000);
    QCOMPARE(user(), Signals());
    const QByteArray name = "SystemEvent/csystemeventlistener_linux PowerMsgCallBack ";
    const QList<QByteArray> lines = log();
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].endsWith(name + "SystemWillSleep"));
    QVERIFY(lines[1].endsWith(name + "SystemHasPoweredOn"));
}

void tst_csystemeventlistener_linux::inhibitorIsHeldUntilSleepAndTakenAfterIt()
{
    listen();
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList("sleep delay"), 30000);
    for (int night = 0; night < 2; ++night) {
        m_mock->prepareForSleep(true);
        QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
        QCOMPARE(power().last(), false);
        m_mock->prepareForSleep(false);
        QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList("sleep delay"), 30000);
    }
    QVERIFY(stopListening().ended);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
}

void tst_csystemeventlistener_linux::inhibitorStaysWhenWakingComesAtOnce()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    m_mock->prepareForSleep(false);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false, true}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    // Longer than the release would have been put off.
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 1000) {
        QCoreApplication::processEvents();
        QVERIFY(m_mock->inhibitors().contains("sleep delay"));
    }
}

void tst_csystemeventlistener_linux::sleepWaitsForTheMainThreadButNotForever()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_program->enter("block");
    QVERIFY(m_program->says("blocked"));
    QElapsedTimer timer;
    timer.start();
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    // The main thread was waited for, longer than those which are not known.
    QVERIFY(timer.elapsed() > 1500);
    QCOMPARE(power(), Signals());
    m_program->enter("go on");
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
}

void tst_csystemeventlistener_linux::sleepWaitsForOtherThreads()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_program->enter("occupy");
    QVERIFY(m_program->says("to be occupied"));
    QElapsedTimer timer;
    timer.start();
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    QVERIFY(timer.elapsed() >= 500); // left to threads that the listener does not know
    QVERIFY(m_program->output().contains("\noccupied\n"));
    m_program->enter("release");
}

void tst_csystemeventlistener_linux::repeatedNotificationsAreOneSignal()
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
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
    QCOMPARE(power(), Signals({false, true}));
}

void tst_csystemeventlistener_linux::noBusMeansNoEvents()
{
    m_mock->stopLogind();
    m_mock->stopBus();
    listen();
    const Stop stop = stopListening();
    QVERIFY(stop.ended);
    QVERIFY(stop.milliseconds < 10000);
    QCOMPARE(power(), Signals());
}

void tst_csystemeventlistener_linux::noLogindMeansNoEventsUntilItComes()
{
    m_mock->stopLogind();
    listen();
    m_mock->startLogind();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
}

void tst_csystemeventlistener_linux::eventsResumeAfterLogindRestarts()
{
    useOwnSession();
    m_mock->stopLogind();
    m_mock->startLogind();
    // Meanwhile another user has taken over.
    m_mock->addSession(QStringLiteral("own"), false);
    m_mock->setOwnSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    m_mock->setActive(QStringLiteral("own"), true);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
    QCOMPARE(power(), Signals({false}));
}

void tst_csystemeventlistener_linux::eventsResumeAfterTheBusRestarts()
{
    useOwnSession();
    m_mock->stopBus();
    m_mock->stopLogind();
    m_mock->startBus();
    m_mock->startLogind();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
}

void tst_csystemeventlistener_linux::wakingMissedByARestartIsTold()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    m_mock->stopLogind();
    m_mock->startLogind();
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false, true}), 30000);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
}

void tst_csystemeventlistener_linux::silentLogindDoesNotHoldUpTheStop()
{
    m_mock->signalLogind(SIGSTOP);
    listen();
    QVERIFY(stopListening().ended);
    m_program->enter("start");
    m_mock->signalLogind(SIGCONT);
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
}

void tst_csystemeventlistener_linux::silentBusDoesNotHoldUpTheStop()
{
    m_mock->signalBus(SIGSTOP);
    listen();
    QVERIFY(stopListening().milliseconds < 10000);
    m_mock->signalBus(SIGCONT);
    QTRY_VERIFY_WITH_TIMEOUT(stopListening().ended, 30000);
}

void tst_csystemeventlistener_linux::startsAgainAfterItsStop()
{
    useOwnSession();
    QVERIFY(stopListening().ended);
    m_program->enter("start");
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
}

void tst_csystemeventlistener_linux::stopFromItsOwnThreadOnlyAsks()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_program->enter("stop at sleep");
    QVERIFY(m_program->says("will stop"));
    m_mock->prepareForSleep(true);
    const QByteArray answer = m_program->lineWith("stopped ");
    QVERIFY(answer.startsWith("not stopped "));
    QVERIFY(answer.mid(answer.lastIndexOf(' ')).toInt() < 500);
    // The thread ends by itself, with all that it holds.
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    QVERIFY(stopListening().ended);
}

// An inhibitor that is kept goes when sleep has been delayed for long enough, here after 2 seconds,
// as the main thread receives nothing.
void tst_csystemeventlistener_linux::inhibitorThatComesAsleepIsNotKept()
{
    m_mock->sleepBeforeInhibitorIsGiven();
    listen("start and block");
    QVERIFY(m_program->says("heard power 0"));
    QElapsedTimer timer;
    timer.start();
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    QVERIFY(timer.elapsed() < 1500);
    m_program->enter("go on");
}

QTEST_GUILESS_MAIN(tst_csystemeventlistener_linux)
#include "tst_csystemeventlistener_linux.moc"
