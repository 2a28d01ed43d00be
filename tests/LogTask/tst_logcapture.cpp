#include "support/logcapture.h"

#include <QTest>

class tst_logcapture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void givesTheLoggedLines();
    void forgetsClearedLines();
    void startsAgainAfterItsEnd();
};

void tst_logcapture::givesTheLoggedLines()
{
    LogCapture log;
    CLogFile() << "Ipc/ipcserver"
               << "startListen" << 5;
    CLogFile() << QStringLiteral("second");
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines[0].endsWith("Ipc/ipcserver startListen 5 "), qPrintable(lines[0]));
    QVERIFY(log.contains("second"));
    QVERIFY(!log.contains("third"));
    QCOMPARE(log.count("e"), 2);
}

void tst_logcapture::forgetsClearedLines()
{
    LogCapture log;
    CLogFile() << "before";
    log.clear();
    CLogFile() << "after";
    QVERIFY(!log.contains("before"));
    QCOMPARE(log.count("after"), 1);
}

void tst_logcapture::startsAgainAfterItsEnd()
{
    {
        LogCapture log;
        CLogFile() << "first log";
        QVERIFY(log.contains("first log"));
    }
    QVERIFY(!g_bLog);
    LogCapture log;
    QVERIFY(log.lines().isEmpty());
    CLogFile() << "second log";
    QVERIFY(log.contains("second log"));
}

QTEST_GUILESS_MAIN(tst_logcapture)
#include "tst_logcapture.moc"
