#include "LogTask/logline_p.h"
#include "support/logcapture.h"

#include <QTest>

#include <sys/resource.h>

#include <memory>

class tst_logline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        setLogExcerptLimit(16384);
        m_log = std::make_unique<LogCapture>();
    }
    void cleanup() { m_log.reset(); }

    void writesSourceFunctionAndPieces();
    void keepsTextsUpToTheLimit();
    void cutsLongerTextsAndNamesTheirLength();
    void splitsNoSurrogatePair();
    void cutsWhereItIsTold();
    void copiesOnlyWhatTheLineShows();
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

void tst_logline::cutsWhereItIsTold()
{
    const QString text =
        QString::fromUtf8("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80xyz"); // 2 + 2 + 3 units
    setLogExcerptLimit(3);
    const QString cut = text.left(2) + "... 7 characters";
    QCOMPARE(logExcerpt(text), cut);
    QCOMPARE(logExcerpt(text.toUtf8()), cut);
    QCOMPARE(logExcerpt(text.left(1), text.mid(1, 2), text.mid(3)), cut);
    setLogExcerptLimit(7);
    QCOMPARE(logExcerpt(text.toUtf8()), text);
    setLogExcerptLimit(6);
    QCOMPARE(logExcerpt(text.toUtf8()), text.left(6) + "... 7 characters");
    const QString whole(100000, 'x');
    for (const int none : {0, -5}) {
        setLogExcerptLimit(none);
        QCOMPARE(logExcerpt(whole), whole);
        QCOMPARE(logExcerpt(whole.toUtf8()), whole);
        QCOMPARE(logExcerpt("y", whole, "y"), 'y' + whole + 'y');
        QCOMPARE(logExcerpt(whole, whole.size()), whole);
    }
}

// The highest memory use of this process so far, in KiB.
long peakMemory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
#ifdef Q_OS_MACOS
    return usage.ru_maxrss / 1024;
#else
    return usage.ru_maxrss;
#endif
}

void tst_logline::copiesOnlyWhatTheLineShows()
{
    const QByteArray frame(64 * 1024 * 1024, 'x');
    const QString text(64 * 1024 * 1024, 'x');
    const long before = peakMemory();
    QCOMPARE(logExcerpt(frame).size(), 16384 + 23);
    QCOMPARE(logExcerpt(text).size(), 16384 + 23);
    QCOMPARE(logExcerpt("head", text, "end").size(), 16384 + 23);
    const long more = peakMemory() - before;
    QVERIFY2(more < 16 * 1024, QByteArray::number(qlonglong(more)).constData());
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
