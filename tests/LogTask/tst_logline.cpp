#include "LogTask/logline_p.h"
#include "support/logcapture.h"

#include <QTest>

#include <memory>

class tst_logline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_log = std::make_unique<LogCapture>(); }
    void cleanup() { m_log.reset(); }

    void writesSourceFunctionAndPieces();
    void keepsTextsUpToTheLimit();
    void cutsLongerTextsAndNamesTheirLength();
    void splitsNoSurrogatePair();
    void isEmptyWhileTheLogIsOff();

private:
    std::unique_ptr<LogCapture> m_log;
};

void tst_logline::writesSourceFunctionAndPieces()
{
    logLine("Ipc/ipcserver", "startListen");
    logLine("Ipc/ipcserver", "startListen", "client", 5, QStringLiteral("text"));
    const QStringList lines = m_log->lines();
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines[0].endsWith(" Ipc/ipcserver startListen "), qPrintable(lines[0]));
    QVERIFY2(lines[1].endsWith(" Ipc/ipcserver startListen client 5 text "), qPrintable(lines[1]));
}

void tst_logline::keepsTextsUpToTheLimit()
{
    QCOMPARE(logExcerpt(QString()), QString());
    QCOMPARE(logExcerpt(QString("frame")), QString("frame"));
    QCOMPARE(logExcerpt(QByteArray("fr\xC3\xA9")), QString::fromUtf8("fr\xC3\xA9"));
    QCOMPARE(logExcerpt("head", "text", "end"), QString("headtextend"));
    const QString longest(16384, 'x');
    QCOMPARE(logExcerpt(longest), longest);
    QCOMPARE(logExcerpt(longest.toUtf8()), longest);
    QCOMPARE(logExcerpt("x", longest.mid(2), "x"), longest);
}

void tst_logline::cutsLongerTextsAndNamesTheirLength()
{
    const QString cut(16384, 'x');
    QCOMPARE(logExcerpt(QString(16385, 'x')), cut + "... 16385 characters");
    QCOMPARE(logExcerpt(QString(1000000, 'x')), cut + "... 1000000 characters");
    QCOMPARE(logExcerpt(QByteArray(1000000, 'x')), cut + "... 1000000 characters");
    QCOMPARE(logExcerpt("xx", QString(1000000, 'x'), "y"), cut + "... 1000003 characters");
    QCOMPARE(logExcerpt(QString(16000, 'x'), QString(384, 'x'), "y"), cut + "... 16385 characters");
}

void tst_logline::splitsNoSurrogatePair()
{
    const QString pair = QString::fromUtf8("\xF0\x9F\x98\x80");
    const QString expected = QString(16383, 'x') + "... 16385 characters";
    QCOMPARE(logExcerpt(QString(16383, 'x') + pair), expected);
    QCOMPARE(logExcerpt((QString(16383, 'x') + pair).toUtf8()), expected);
    QCOMPARE(logExcerpt(QString(16383, 'x'), pair, ""), expected);
}

void tst_logline::isEmptyWhileTheLogIsOff()
{
    m_log.reset();
    QCOMPARE(logExcerpt(QString("frame")), QString());
    QCOMPARE(logExcerpt(QByteArray("frame")), QString());
    QCOMPARE(logExcerpt("head", "text", "end"), QString());
}

QTEST_GUILESS_MAIN(tst_logline)
#include "tst_logline.moc"
