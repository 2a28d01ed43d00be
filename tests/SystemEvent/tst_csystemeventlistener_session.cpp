#include "listenerfixture.h"

#include "support/logcapture.h"

#include <QTest>

#include <unistd.h>

class tst_CSystemEventListener_session : public QObject, private ListenerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }
    void sessionIsFound_data();
    void sessionIsFound();
    void firstStateIsNoChange_data();
    void firstStateIsNoChange();
    void sessionThatComesLaterIsFound();
    void sessionThatHasGoneIsGivenUp();
    void stateThatIsOnlyAnnouncedIsAskedFor();
    void replacedSessionIsFollowedByTheNext();
    void newSessionOfTheUserTakesOverFromAClosingOne();
    void newSessionLeavesAnActiveOneAlone();
    void endedSessionIsInactiveUntilThereIsOneAgain();
    void lastSignalMatchesTheSession();
};

void tst_CSystemEventListener_session::sessionIsFound_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("the process's own") << "own";
    QTest::newRow("named by the environment") << "environment";
    QTest::newRow("the user's display session") << "display";
    QTest::newRow("the display session, as the environment names none that exists") << "stale";
}

void tst_CSystemEventListener_session::sessionIsFound()
{
    QFETCH(QString, way);
    LogCapture log;
    m_mock->addSession(QStringLiteral("right"), true, getuid());
    m_mock->addSession(QStringLiteral("wrong"), true, getuid());
    if (way == QLatin1String("own"))
        m_mock->setOwnSession(QStringLiteral("right"));
    if (way == QLatin1String("own"))
        qputenv("XDG_SESSION_ID", "wrong");
    if (way == QLatin1String("environment"))
        qputenv("XDG_SESSION_ID", "right");
    if (way == QLatin1String("stale"))
        qputenv("XDG_SESSION_ID", "bygone");
    const bool display = way == QLatin1String("display") || way == QLatin1String("stale");
    m_mock->setDisplaySession(getuid(),
                              display ? QStringLiteral("right") : QStringLiteral("wrong"));
    listen();
    QTRY_VERIFY_WITH_TIMEOUT((m_mock->setActive(QStringLiteral("right"), true),
                              m_mock->setActive(QStringLiteral("right"), false), !m_user.isEmpty()),
                             30000);
    const QString name =
        QStringLiteral("SystemEvent/csystemeventlistener_linux userSwitchEventHandler User ");
    QVERIFY(log.contains(name + (m_user.first() ? "login" : "logout")));
    // The other session is not looked at.
    m_mock->setActive(QStringLiteral("wrong"), false);
    m_mock->setActive(QStringLiteral("wrong"), true);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QCOMPARE(m_user.last(), false);
}

void tst_CSystemEventListener_session::firstStateIsNoChange_data()
{
    QTest::addColumn<bool>("active");
    QTest::newRow("active") << true;
    QTest::newRow("inactive") << false;
}

void tst_CSystemEventListener_session::firstStateIsNoChange()
{
    QFETCH(bool, active);
    const LogCapture log;
    m_mock->addSession(QStringLiteral("own"), active);
    m_mock->setOwnSession(QStringLiteral("own"));
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(m_mock->wasAsked("Session.Active"), 30000);
    // Sent after the answer.
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QCOMPARE(m_user, Signals());
    m_mock->setActive(QStringLiteral("own"), !active);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({!active}), 30000);
    const QString line =
        QStringLiteral("SystemEvent/csystemeventlistener_linux userSwitchEventHandler User ");
    QVERIFY(log.lines().last().endsWith(line + (active ? "logout" : "login")));
}

void tst_CSystemEventListener_session::sessionThatComesLaterIsFound()
{
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(heldInhibitor(), 30000);
    m_mock->addSession(QStringLiteral("late"), true);
    m_mock->setOwnSession(QStringLiteral("late"));
    QTRY_VERIFY_WITH_TIMEOUT((m_mock->setActive(QStringLiteral("late"), true),
                              m_mock->setActive(QStringLiteral("late"), false), !m_user.isEmpty()),
                             30000);
}

void tst_CSystemEventListener_session::sessionThatHasGoneIsGivenUp()
{
    m_mock->setOwnSession(QStringLiteral("gone"));
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(m_mock->wasAsked("GetSessionByPID"), 30000);
    m_mock->addSession(QStringLiteral("late"), true);
    m_mock->setOwnSession(QStringLiteral("late"));
    QTRY_VERIFY_WITH_TIMEOUT((m_mock->setActive(QStringLiteral("late"), true),
                              m_mock->setActive(QStringLiteral("late"), false), !m_user.isEmpty()),
                             30000);
}

void tst_CSystemEventListener_session::stateThatIsOnlyAnnouncedIsAskedFor()
{
    useOwnSession();
    m_mock->claimActive(QStringLiteral("own"), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false}), 30000);
    m_mock->invalidateActive(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
}

void tst_CSystemEventListener_session::replacedSessionIsFollowedByTheNext()
{
    useOwnSession();
    m_mock->removeSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false}), 30000);
    m_mock->addSession(QStringLiteral("next"), true);
    m_mock->setOwnSession(QStringLiteral("next"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
    m_mock->setActive(QStringLiteral("next"), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true, false}), 30000);
    // Whoever gets the old name is another's.
    m_mock->addSession(QStringLiteral("own"), false);
    m_mock->setActive(QStringLiteral("own"), true);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QCOMPARE(m_user, Signals({false, true, false}));
}

// A session stays, inactive, for as long as a process of it does.
void tst_CSystemEventListener_session::newSessionOfTheUserTakesOverFromAClosingOne()
{
    useDisplaySession();
    m_mock->setActive(QStringLiteral("first"), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false}), 30000);
    m_mock->addSession(QStringLiteral("second"), true, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("second"));
    m_mock->announceSession(QStringLiteral("second"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
    m_mock->endSession(QStringLiteral("first"));
    m_mock->setActive(QStringLiteral("second"), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true, false}), 30000);
    m_mock->setActive(QStringLiteral("second"), true);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true, false, true}), 30000);
}

void tst_CSystemEventListener_session::newSessionLeavesAnActiveOneAlone()
{
    useDisplaySession();
    m_mock->addSession(QStringLiteral("second"), false, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("second"));
    m_mock->announceSession(QStringLiteral("second"));
    // Two rounds to logind and back, more than a search takes.
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    m_mock->setActive(QStringLiteral("first"), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false}), 30000);
    m_mock->setActive(QStringLiteral("first"), true);
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
}

void tst_CSystemEventListener_session::endedSessionIsInactiveUntilThereIsOneAgain()
{
    useOwnSession();
    m_mock->endSession(QStringLiteral("another"));
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QCOMPARE(m_user, Signals());
    m_mock->endSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(m_user, Signals({false, true}), 30000);
}

void tst_CSystemEventListener_session::lastSignalMatchesTheSession()
{
    useOwnSession();
    for (int i = 0; i < 20; ++i)
        m_mock->setActive(QStringLiteral("own"), i % 2 != 0);
    m_mock->setActive(QStringLiteral("own"), false);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_power, Signals({false}), 30000);
    QCOMPARE(m_user.last(), false);
    for (int i = 1; i < m_user.size(); ++i)
        QVERIFY(m_user[i] != m_user[i - 1]);
}

QTEST_GUILESS_MAIN(tst_CSystemEventListener_session)
#include "tst_csystemeventlistener_session.moc"
