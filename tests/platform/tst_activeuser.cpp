#include "common_function.h"

#include <QTest>

class tst_activeuser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void prefersTheUserWhoStartedAPrivilegedCommand();
    void takesTheLoginNameNext();
    void takesTheLastPartOfTheHomeFolder_data();
    void takesTheLastPartOfTheHomeFolder();
    void aVariableSetToNothingCounts();
    void isEmptyWithoutAnyVariable();
    void hasNoUserFolder();
};

void tst_activeuser::init()
{
    qunsetenv("SUDO_USER");
    qunsetenv("LOGNAME");
    qunsetenv("HOME");
}

void tst_activeuser::prefersTheUserWhoStartedAPrivilegedCommand()
{
    qputenv("SUDO_USER", "alice");
    qputenv("LOGNAME", "root");
    qputenv("HOME", "/root");
    QCOMPARE(getActiveUserName(), QString("alice"));
}

void tst_activeuser::takesTheLoginNameNext()
{
    qputenv("LOGNAME", "bob");
    qputenv("HOME", "/home/carol");
    QCOMPARE(getActiveUserName(), QString("bob"));
}

void tst_activeuser::takesTheLastPartOfTheHomeFolder_data()
{
    QTest::addColumn<QByteArray>("home");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QByteArray("/home/alice") << "alice";
    QTest::newRow("slash at the end") << QByteArray("/home/alice/") << "alice";
    QTest::newRow("slashes at the end") << QByteArray("/home//alice///") << "alice";
    QTest::newRow("one part") << QByteArray("alice") << "alice";
    QTest::newRow("root folder") << QByteArray("/") << "";
    QTest::newRow("nothing") << QByteArray("") << "";
    QTest::newRow("non-ASCII") << QByteArray("/home/andr\xC3\xA9")
                               << QString::fromUtf8("andr\xC3\xA9");
}

void tst_activeuser::takesTheLastPartOfTheHomeFolder()
{
    QFETCH(QByteArray, home);
    QFETCH(QString, name);
    qputenv("HOME", home);
    QCOMPARE(getActiveUserName(), name);
}

void tst_activeuser::aVariableSetToNothingCounts()
{
    qputenv("SUDO_USER", "");
    qputenv("LOGNAME", "bob");
    QCOMPARE(getActiveUserName(), QString());
}

void tst_activeuser::isEmptyWithoutAnyVariable()
{
    QCOMPARE(getActiveUserName(), QString());
}

void tst_activeuser::hasNoUserFolder()
{
    QCOMPARE(getActiveUserDirectory(), QString());
    qputenv("SUDO_USER", "alice");
    qputenv("LOGNAME", "bob");
    qputenv("HOME", "/home/carol");
    QCOMPARE(getActiveUserDirectory(), QString());
}

QTEST_GUILESS_MAIN(tst_activeuser)
#include "tst_activeuser.moc"
