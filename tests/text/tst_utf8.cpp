// The judge is QString's decoder and encoder.
#include "text/utf8_p.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <vector>

namespace {

// Characters of 1 to 4 bytes, and sometimes bytes that belong to none.
QByteArray randomBytes(QRandomGenerator& random, bool mayBreak)
{
    static const char* const pieces[] = {
        "a", "plain text", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBB\xBF",
        "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF",
        // broken ones
        "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\xF0\x9F", "\xFF"};
    QByteArray bytes;
    for (int left = random.bounded(8); left > 0; --left)
        bytes += pieces[random.bounded(mayBreak ? int(std::size(pieces)) : 8)];
    return bytes;
}

// A letter in front keeps a first U+FEFF from being taken for a byte-order mark.
QString decoded(const QByteArray& bytes)
{
    return QString::fromUtf8("x" + bytes).mid(1);
}

std::string_view view(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

bool isValid(const QByteArray& bytes)
{
    return decoded(bytes).toUtf8() == bytes;
}

QByteArray written(const QString& text)
{
    QByteArray bytes(static_cast<int>(Utf8::room(text)), '#');
    const char* const end = Utf8::write(text, bytes.data());
    const auto size = static_cast<int>(end - bytes.constData());
    return size <= bytes.size() ? bytes.left(size) : QByteArray("too long");
}

} // namespace

class tst_utf8 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatTheDecoderWouldReplace();
    void findsTheLastWholeCharacter_data();
    void findsTheLastWholeCharacter();
    void holdsBackWhatMayStillBecomeACharacter();
    void tellsAscii();
    void decodesLikeQString();
    void countsUnits();
    void findsWhereUnitsEnd();
    void writesWhatQtWrites_data();
    void writesWhatQtWrites();
    void writesRandomTextsAsQtDoes();
    void convertsUpToWhatStopsIt();
};

void tst_utf8::findsWhatTheDecoderWouldReplace()
{
    QRandomGenerator random(1);
    int valid = 0;
    for (int i = 0; i < 20000; ++i) {
        const QByteArray bytes = randomBytes(random, i % 2 == 0);
        const bool expected = isValid(bytes);
        QVERIFY2(Utf8::isValid(view(bytes)) == expected, bytes.toHex().constData());
        valid += expected;
        const auto length = static_cast<int>(Utf8::validLength(view(bytes)));
        QVERIFY2(isValid(bytes.left(length)), bytes.toHex().constData());
        // No further character follows.
        for (int more = 1; more <= 4 && length + more <= bytes.size(); ++more)
            QVERIFY2(!isValid(bytes.mid(length, more)), bytes.toHex().constData());
    }
    QVERIFY(valid > 10000 && valid < 19000);
}

void tst_utf8::findsTheLastWholeCharacter_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("tail");
    const auto row = [](const char* name, const QByteArray& text, int tail) {
        QTest::newRow(name) << text << tail;
    };
    row("empty", "", 0);
    row("ASCII", "abc", 0);
    row("two bytes, whole", "a\xC3\xA9", 0);
    row("two bytes, one", "a\xC3", 1);
    row("three bytes, whole", "a\xE2\x82\xAC", 0);
    row("three bytes, two", "a\xE2\x82", 2);
    row("three bytes, one", "a\xE2", 1);
    row("four bytes, whole", "a\xF0\x9F\x98\x80", 0);
    row("four bytes, three", "a\xF0\x9F\x98", 3);
    row("four bytes, two", "a\xF0\x9F", 2);
    row("four bytes, one", "a\xF0", 1);
    row("no UTF-8", "a\x80\x80\x80\x80\x80", 0);
    row("only continuations", "\x80\x80", 0);
    row("never a first byte", "a\xC1", 0);
    row("beyond the first bytes", "a\xF5", 0);
    row("too long for its character", "a\xE0\x9F", 0);
    row("too long, four bytes", "a\xF0\x8F\xBF", 0);
    row("half a surrogate pair", "a\xED\xA0", 0);
    row("beyond the last character", "a\xF4\x90", 0);
    row("the last character", "a\xF4\x8F\xBF", 3);
}

void tst_utf8::findsTheLastWholeCharacter()
{
    QFETCH(QByteArray, text);
    QFETCH(int, tail);
    QCOMPARE(static_cast<int>(Utf8::incompleteTail(view(text))), tail);
}

// Every beginning of a character is held back, and no other bytes are.
void tst_utf8::holdsBackWhatMayStillBecomeACharacter()
{
    for (int lead = 0x80; lead < 0x100; ++lead) {
        for (int second = 0x80; second < 0x100; ++second) {
            const char bytes[] = {'a', static_cast<char>(lead), static_cast<char>(second)};
            const QByteArray text(bytes, 3);
            const bool begins =
                !isValid(text) && (isValid(text + "\x80") || isValid(text + "\x80\x80"));
            const bool secondBegins = isValid(text.left(1) + text.mid(2) + "\x80") ||
                                      isValid(text.left(1) + text.mid(2) + "\x80\x80") ||
                                      isValid(text.left(1) + text.mid(2) + "\xBF\xBF") ||
                                      isValid(text.left(1) + text.mid(2) + "\x8F\xBF\xBF") ||
                                      isValid(text.left(1) + text.mid(2) + "\xBF\xBF\xBF");
            const int expected = begins ? 2 : secondBegins ? 1 : 0;
            QVERIFY2(static_cast<int>(Utf8::incompleteTail(view(text))) == expected,
                     text.toHex().constData());
        }
    }
}

void tst_utf8::tellsAscii()
{
    for (int size = 0; size < 40; ++size) {
        QByteArray text(size, '\x7F');
        QVERIFY(Utf8::isAscii(view(text)));
        for (int at = 0; at < size; ++at) {
            text[at] = '\x80';
            QVERIFY(!Utf8::isAscii(view(text)));
            text[at] = '\0';
        }
    }
}

void tst_utf8::decodesLikeQString()
{
    QRandomGenerator random(2);
    for (int i = 0; i < 5000; ++i) {
        const QByteArray bytes = randomBytes(random, true);
        QCOMPARE(Utf8::decode(view(bytes)), decoded(bytes));
    }
}

void tst_utf8::countsUnits()
{
    QRandomGenerator random(3);
    for (int i = 0; i < 5000; ++i) {
        const QByteArray bytes = randomBytes(random, false);
        QCOMPARE(static_cast<int>(Utf8::units(view(bytes))),
                 static_cast<int>(decoded(bytes).size()));
    }
}

void tst_utf8::findsWhereUnitsEnd()
{
    const QByteArray bytes = "a\xC3\xA9\xF0\x9F\x98\x80z";
    const std::size_t ends[] = {0, 1, 3, 7, 7, 8, Utf8::npos, Utf8::npos};
    for (std::size_t count = 0; count < std::size(ends); ++count)
        QCOMPARE(Utf8::bytesOfUnits(view(bytes), count), ends[count]);
}

void tst_utf8::writesWhatQtWrites_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("ASCII, shorter than a step") << QString("short");
    QTest::newRow("ASCII, some steps") << QString("exactly as long as three steps.");
    QTest::newRow("two bytes") << QString::fromUtf8("\xC2\x80 \xDF\xBF");
    QTest::newRow("three bytes") << QString::fromUtf8("\xE0\xA0\x80 \xEF\xBF\xBF");
    QTest::newRow("four bytes") << QString::fromUtf8("\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF");
    QTest::newRow("between ASCII") << QString::fromUtf8("abcdefgh\xC3\xA4ijklmnop\xE2\x82\xAC");
    QTest::newRow("zero character") << QString(QChar(0)) + "after";
    QTest::newRow("byte-order mark") << QString(QChar(0xFEFF)) + "text";
    QTest::newRow("high surrogate at the end") << QString("a") + QChar(0xD800);
    QTest::newRow("high surrogate alone") << QString(QChar(0xD800)) + "b";
    QTest::newRow("low surrogate alone") << QString(QChar(0xDC00)) + "b";
    QTest::newRow("surrogates in the wrong order") << QString(QChar(0xDC00)) + QChar(0xD800);
}

void tst_utf8::writesWhatQtWrites()
{
    QFETCH(QString, text);
    QCOMPARE(written(text), text.toUtf8());
}

void tst_utf8::writesRandomTextsAsQtDoes()
{
    QRandomGenerator random(1);
    static constexpr ushort kUnits[] = {'a',    'b',    '"',    0x7F,   0x80,   0x7FF,  0x800,
                                        0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFF, 0xFEFF, 0};
    for (int round = 0; round < 20000; ++round) {
        QString text(random.bounded(40), QChar('x'));
        for (int i = 0; i < text.size(); ++i) {
            if (random.bounded(8) == 0)
                text[i] = QChar(kUnits[random.bounded(14)]);
        }
        QCOMPARE(written(text), text.toUtf8());
    }
}

void tst_utf8::convertsUpToWhatStopsIt()
{
    // At each place within and behind the steps of several bytes.
    for (int size = 0; size < 40; ++size) {
        for (int stop = 0; stop <= size; ++stop) {
            QByteArray bytes(size, 'a');
            QString text(size, QChar('a'));
            if (stop < size) {
                bytes[stop] = '\xC3';
                text[stop] = QChar(0x80);
            }
            std::vector<ushort> wide(40);
            QCOMPARE(Utf8::widenAscii(view(bytes), wide.data()), std::size_t(stop));
            QVERIFY(
                std::all_of(wide.begin(), wide.begin() + stop, [](ushort u) { return u == 'a'; }));
            QByteArray narrow(40, '#');
            QCOMPARE(Utf8::narrowAscii(text.utf16(), std::size_t(size), narrow.data()),
                     std::size_t(stop));
            QCOMPARE(narrow.left(stop), bytes.left(stop));
            for (const char special : {'"', '\\', '\x1F', '\0', '\x80'}) {
                if (stop < size)
                    bytes[stop] = special;
                QCOMPARE(Utf8::widenPlain(view(bytes), wide.data()), std::size_t(stop));
            }
        }
    }
}

QTEST_APPLESS_MAIN(tst_utf8)
#include "tst_utf8.moc"
