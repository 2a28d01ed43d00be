#include "LogTask/logtext_p.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QTime>

class tst_logtext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheTimeOfDay();
    void writesTheStampWithUnpaddedMilliseconds();
    void writesNumbers();
    void writesUtf8();
    void writesTheBytesOfTheFile();
};

void tst_logtext::writesTheTimeOfDay()
{
    // Twice, because the text of a second is kept.
    for (int i = 0; i < 2; ++i) {
        const QTime before = QTime::currentTime();
        QString line = "x";
        appendTime(&line);
        QCOMPARE(line.size(), 9);
        const QTime time = QTime::fromString(line.mid(1), "HH:mm:ss");
        QVERIFY2(time.isValid(), qPrintable(line));
        // At midnight the day's seconds start anew.
        const int elapsed = (before.secsTo(time) + 86400 + 1) % 86400 - 1;
        QVERIFY2(elapsed >= -1 && elapsed < 60, qPrintable(line));
    }
}

void tst_logtext::writesTheStampWithUnpaddedMilliseconds()
{
    const QRegularExpression form("^\\d\\d:\\d\\d:\\d\\d (0|[1-9]\\d{0,2}) $");
    bool sawFewDigits = false;
    QElapsedTimer timer;
    timer.start();
    // Within two seconds every millisecond below 100 has come by.
    while (!sawFewDigits && timer.elapsed() < 2000) {
        QString line;
        appendStamp(&line);
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
        sawFewDigits = line.size() < 13;
    }
    QVERIFY(sawFewDigits);
}

void tst_logtext::writesNumbers()
{
    QString line;
    for (const int number : {0, 5, -5, 2147483647, -2147483647 - 1}) {
        appendNumber(&line, number);
        line += ' ';
    }
    for (const int number : {0, 26, 2147483647, -1}) {
        appendNumber(&line, number, 16);
        line += ' ';
    }
    QCOMPARE(line, QString("0 5 -5 2147483647 -2147483648 0 1a 7fffffff ffffffff "));
}

void tst_logtext::writesUtf8()
{
    QString line;
    appendUtf8(&line, "abc", 3);
    appendUtf8(&line, "\xC3\xA9", 2);
    appendUtf8(&line, nullptr, 0);
    appendUtf8(&line, "\xFF", 1);
    QCOMPARE(line, QString("abc") + QChar(0xE9) + QChar(0xFFFD));
}

void tst_logtext::writesTheBytesOfTheFile()
{
    LogBytes line;
    appendTime(&line);
    QCOMPARE(int(line.size()), 8);
    line.clear();
    appendUtf8(&line, "abc ", 4);
    appendUtf8(&line, "\xC3\xA9", 2);
    appendUtf8(&line, nullptr, 0);
    appendUtf8(&line, "\xFF", 1);
    appendText(&line, QString());
    appendText(&line, QString(" text ") + QChar(0x20AC));
    appendText(&line, QString(3000, 'x'));
    // The tests' local encoding is UTF-8.
    QCOMPARE(QByteArray(line.constData(), int(line.size())),
             QByteArray("abc \xC3\xA9\xEF\xBF\xBD text \xE2\x82\xAC") + QByteArray(3000, 'x'));
}

QTEST_GUILESS_MAIN(tst_logtext)
#include "tst_logtext.moc"
