#include "DataValue/json/textbuffer_p.h"

#include <QRandomGenerator>
#include <QtTest>

/// Texts of values as they are written, against Qt's own conversions.
class tst_textbuffer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatQtReads_data();
    void readsWhatQtReads();
    void readsRandomBytesAsQtDoes();
    void quotesWhatJsonDoesNotAllow();
    void growsWithTheText();
};

namespace {

std::string_view view(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

QString read(const QByteArray& bytes)
{
    TextBuffer buffer;
    buffer.appendUtf8(view(bytes));
    return buffer.take();
}

/// As QString::fromUtf8(), which drops a byte-order mark at the start.
QString readByQt(const QByteArray& bytes)
{
    const QByteArray guarded = 'x' + bytes;
    return QString::fromUtf8(guarded.constData(), guarded.size()).mid(1);
}

QString quotedByHand(const QByteArray& bytes)
{
    QString result = "\"";
    const QString text = readByQt(bytes);
    for (const QChar c : text) {
        const int at = QString("\"\\\b\f\n\r\t").indexOf(c);
        if (at >= 0 && c != QChar(0))
            result += QString("\\") + QString("\"\\bfnrt")[at];
        else if (c < QChar(0x20))
            result += QString("\\u%1")
                          .arg(c.unicode(), 4, 16, QChar('0'))
                          .toUpper()
                          .replace("\\U", "\\u");
        else
            result += c;
    }
    return result + '"';
}

} // namespace

void tst_textbuffer::readsWhatQtReads_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("ASCII") << QByteArray("text that is longer than sixteen bytes");
    QTest::newRow("two, three, four bytes") << QByteArray("\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80");
    QTest::newRow("largest character") << QByteArray("\xF4\x8F\xBF\xBF");
    QTest::newRow("beyond it") << QByteArray("a\xF4\x90\x80\x80z");
    QTest::newRow("too long for its character")
        << QByteArray("a\xC0\x80z\xE0\x80\x80\xF0\x80\x80\x80");
    QTest::newRow("surrogate") << QByteArray("a\xED\xA0\x80z");
    QTest::newRow("cut at the end") << QByteArray("a\xE2\x82");
    QTest::newRow("cut in the middle") << QByteArray("a\xE2\x82z");
    QTest::newRow("continuation alone") << QByteArray("a\x80\xBFz");
    QTest::newRow("byte-order mark") << QByteArray("\xEF\xBB\xBFz");
    QTest::newRow("byte-order mark before what is no character") << QByteArray("\xEF\xBB\xBF\x80z");
    QTest::newRow("zero byte") << QByteArray("a\0z", 3);
}

void tst_textbuffer::readsWhatQtReads()
{
    QFETCH(QByteArray, bytes);
    QCOMPARE(read(bytes), readByQt(bytes));
}

void tst_textbuffer::readsRandomBytesAsQtDoes()
{
    QRandomGenerator random(2);
    static constexpr unsigned char kBytes[] = {'"',  '\\', 1,    '\n', 0x7F, 0x80, 0xBF,
                                               0xC3, 0xA4, 0xE2, 0x82, 0xAC, 0xED, 0xF0,
                                               0x9F, 0xF4, 0xFF, 0xEF, 0xBB};
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes(random.bounded(50), 'x');
        for (int i = 0; i < bytes.size(); ++i) {
            if (random.bounded(5) == 0)
                bytes[i] = static_cast<char>(kBytes[random.bounded(19)]);
        }
        QCOMPARE(read(bytes), readByQt(bytes));
        TextBuffer quoted;
        quoted.appendQuoted(view(bytes));
        QCOMPARE(quoted.take(), quotedByHand(bytes));
    }
}

void tst_textbuffer::quotesWhatJsonDoesNotAllow()
{
    TextBuffer buffer;
    buffer.appendQuoted(std::string_view("a\"\\\b\f\n\r\t\0\x1F\x7Fz", 12));
    QCOMPARE(buffer.take(), QString("\"a\\\"\\\\\\b\\f\\n\\r\\t\\u0000\\u001F\x7Fz\""));
}

void tst_textbuffer::growsWithTheText()
{
    TextBuffer buffer;
    QString expected;
    for (int i = 0; i < 3000; ++i) {
        buffer.append('x');
        buffer.appendQuoted("\n");
        buffer.appendBlanks(3);
        expected += "x\"\\n\"   ";
    }
    QCOMPARE(buffer.size(), static_cast<std::size_t>(expected.size()));
    QCOMPARE(buffer.take(), expected);
}

QTEST_APPLESS_MAIN(tst_textbuffer)
#include "tst_textbuffer.moc"
