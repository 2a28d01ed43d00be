#include "listenerfixture.h"

#include <QTest>

#include <unistd.h>

namespace {

const QByteArray kUserLine = "SystemEvent/csystemeventlistener_linux userSwitchEventHandler User ";

} // namespace

class tst_csystemeventlistener_session : public QObject, private ListenerFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { stop(); }
    void sessionIsFound_data();
    void sessionIsFound();
    void firstStateIsNoChange_data();
    void firstStateIsNoChange();
    void firstLoginIsSignalledOutsideOfASession_data();
    void firstLoginIsSignalledOutsideOfASession();
    void loginIsSignalledAfterTheUserHasGone();
    void sessionThatHasGoneIsGivenUp();
    void stateThatIsOnlyAnnouncedIsAskedFor();
    void replacedSessionIsFollowedByTheNext();
    void newSessionOfTheUserTakesOverFromAClosingOne();
    void newSessionLeavesAnActiveOneAlone();
    void endedSessionIsInactiveUntilThereIsOneAgain();
    void lastSignalMatchesTheSession();
};

void tst_csystemeventlistener_session::sessionIsFound_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("the process's own") << "own";
    QTest::newRow("named by the environment") << "environment";
    QTest::newRow("the user's display session") << "display";
    QTest::newRow("the display session, as the environment names none that exists") << "stale";
}

void tst_csystemeventlistener_session::sessionIsFound()
{
    QFETCH(QString, way);
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
                              m_mock->setActive(QStringLiteral("right"), false), !user().isEmpty()),
                             30000);
    const QByteArray line = kUserLine + (user().first() ? "login" : "logout");
    QVERIFY(log().first().endsWith(line));
    // The other session is not looked at.
    m_mock->setActive(QStringLiteral("wrong"), false);
    m_mock->setActive(QStringLiteral("wrong"), true);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QCOMPARE(user().last(), false);
}

void tst_csystemeventlistener_session::firstStateIsNoChange_data()
{
    QTest::addColumn<bool>("active");
    QTest::newRow("active") << true;
    QTest::newRow("inactive") << false;
}

void tst_csystemeventlistener_session::firstStateIsNoChange()
{
    QFETCH(bool, active);
    m_mock->addSession(QStringLiteral("own"), active);
    m_mock->setOwnSession(QStringLiteral("own"));
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(m_mock->wasAsked("Session.Active"), 30000);
    // Sent after the answer.
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QCOMPARE(user(), Signals());
    m_mock->setActive(QStringLiteral("own"), !active);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({!active}), 30000);
    QVERIFY(log().last().endsWith(kUserLine + (active ? "logout" : "login")));
}

void tst_csystemeventlistener_session::firstLoginIsSignalledOutsideOfASession_data()
{
    QTest::addColumn<bool>("isLoggedIn");
    QTest::addColumn<bool>("isAnnounced");
    QTest::newRow("the user is not logged in") << false << true;
    QTest::newRow("the user has nothing but services") << true << true;
    QTest::newRow("nobody announces the session") << false << false;
}

void tst_csystemeventlistener_session::firstLoginIsSignalledOutsideOfASession()
{
    QFETCH(bool, isLoggedIn);
    QFETCH(bool, isAnnounced);
    if (isLoggedIn)
        m_mock->addUser(getuid());
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(m_mock->wasAsked(isLoggedIn ? "User.Display" : "GetUser"), 30000);
    // Sent after the answer.
    catchUp();
    QCOMPARE(user(), Signals());
    m_mock->addSession(QStringLiteral("late"), true, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("late"));
    if (isAnnounced)
        m_mock->announceSession(QStringLiteral("late"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({true}), 30000);
    QVERIFY(log().last().endsWith(kUserLine + "login"));
    m_mock->setActive(QStringLiteral("late"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({true, false}), 30000);
    m_mock->setActive(QStringLiteral("late"), true);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({true, false, true}), 30000);
}

// The user has logged out while logind was away.
void tst_csystemeventlistener_session::loginIsSignalledAfterTheUserHasGone()
{
    useDisplaySession();
    m_mock->stopLogind();
    m_mock->startLogind();
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    m_mock->addSession(QStringLiteral("next"), true, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("next"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
}

void tst_csystemeventlistener_session::sessionThatHasGoneIsGivenUp()
{
    m_mock->setOwnSession(QStringLiteral("gone"));
    listen();
    QTRY_VERIFY_WITH_TIMEOUT(m_mock->wasAsked("GetSessionByPID"), 30000);
    catchUp();
    QCOMPARE(user(), Signals());
    m_mock->addSession(QStringLiteral("late"), true);
    m_mock->setOwnSession(QStringLiteral("late"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({true}), 30000);
}

void tst_csystemeventlistener_session::stateThatIsOnlyAnnouncedIsAskedFor()
{
    useOwnSession();
    m_mock->claimActive(QStringLiteral("own"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    m_mock->invalidateActive(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
}

void tst_csystemeventlistener_session::replacedSessionIsFollowedByTheNext()
{
    useOwnSession();
    m_mock->removeSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    m_mock->addSession(QStringLiteral("next"), true);
    m_mock->setOwnSession(QStringLiteral("next"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
    m_mock->setActive(QStringLiteral("next"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true, false}), 30000);
    // Whoever gets the old name is another's.
    m_mock->addSession(QStringLiteral("own"), false);
    m_mock->setActive(QStringLiteral("own"), true);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QCOMPARE(user(), Signals({false, true, false}));
}

// A session stays, inactive, for as long as a process of it does.
void tst_csystemeventlistener_session::newSessionOfTheUserTakesOverFromAClosingOne()
{
    useDisplaySession();
    m_mock->setActive(QStringLiteral("first"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    m_mock->addSession(QStringLiteral("second"), true, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("second"));
    m_mock->announceSession(QStringLiteral("second"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
    m_mock->endSession(QStringLiteral("first"));
    m_mock->setActive(QStringLiteral("second"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true, false}), 30000);
    m_mock->setActive(QStringLiteral("second"), true);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true, false, true}), 30000);
}

void tst_csystemeventlistener_session::newSessionLeavesAnActiveOneAlone()
{
    useDisplaySession();
    m_mock->addSession(QStringLiteral("second"), false, getuid());
    m_mock->setDisplaySession(getuid(), QStringLiteral("second"));
    m_mock->announceSession(QStringLiteral("second"));
    // Two rounds to logind and back, more than a search takes.
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_mock->inhibitors(), QStringList(), 30000);
    m_mock->setActive(QStringLiteral("first"), false);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false}), 30000);
    m_mock->setActive(QStringLiteral("first"), true);
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
}

void tst_csystemeventlistener_session::endedSessionIsInactiveUntilThereIsOneAgain()
{
    useOwnSession();
    m_mock->endSession(QStringLiteral("another"));
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QCOMPARE(user(), Signals());
    m_mock->endSession(QStringLiteral("own"));
    QTRY_COMPARE_WITH_TIMEOUT(user(), Signals({false, true}), 30000);
}

void tst_csystemeventlistener_session::lastSignalMatchesTheSession()
{
    useOwnSession();
    for (int i = 0; i < 20; ++i)
        m_mock->setActive(QStringLiteral("own"), i % 2 != 0);
    m_mock->setActive(QStringLiteral("own"), false);
    m_mock->prepareForSleep(true);
    QTRY_COMPARE_WITH_TIMEOUT(power(), Signals({false}), 30000);
    QCOMPARE(user().last(), false);
    for (int i = 1; i < user().size(); ++i)
        QVERIFY(user()[i] != user()[i - 1]);
}

QTEST_GUILESS_MAIN(tst_csystemeventlistener_session)
#include "tst_csystemeventlistener_session.moc"
