// The judge is QString's decoder.
#include "Ipc/utf8_p.h"

#include <QTest>

#include <random>

namespace {

// Characters of 1 to 4 bytes, and sometimes bytes that belong to none.
QByteArray randomBytes(std::mt19937& random, bool mayBreak)
{
    static const char* const pieces[] = {
        "a", "plain text", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBB\xBF",
        "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF",
        // broken ones
        "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\xF0\x9F", "\xFF"};
    QByteArray bytes;
    for (auto left = random() % 8; left > 0; --left)
        bytes += pieces[random() % (mayBreak ? std::size(pieces) : 8)];
    return bytes;
}

// A letter in front keeps a first U+FEFF from being taken for a byte-order mark.
QString decoded(const QByteArray& bytes)
{
    return QString::fromUtf8("x" + bytes).mid(1);
}

} // namespace

class tst_utf8 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatTheDecoderWouldReplace()
    {
        std::mt19937 random(1);
        int valid = 0;
        for (int i = 0; i < 20000; ++i) {
            const QByteArray bytes = randomBytes(random, i % 2 == 0);
            const bool expected = decoded(bytes).toUtf8() == bytes;
            QVERIFY2(Utf8::isValid(bytes.constData(), bytes.size()) == expected,
                     bytes.toHex().constData());
            valid += expected;
        }
        QVERIFY(valid > 10000 && valid < 19000);
    }

    void decodesLikeQString()
    {
        std::mt19937 random(2);
        for (int i = 0; i < 5000; ++i) {
            const QByteArray bytes = randomBytes(random, true);
            QCOMPARE(Utf8::decode(bytes.constData(), bytes.size()), decoded(bytes));
        }
    }

    void countsUnits()
    {
        std::mt19937 random(3);
        for (int i = 0; i < 5000; ++i) {
            const QByteArray bytes = randomBytes(random, false);
            QCOMPARE(Utf8::units(bytes.constData(), bytes.size()),
                     qsizetype(decoded(bytes).size()));
        }
    }

    void findsWhereUnitsEnd()
    {
        const QByteArray bytes = "a\xC3\xA9\xF0\x9F\x98\x80z";
        const qsizetype ends[] = {0, 1, 3, 7, 7, 8, -1, -1};
        for (int count = 0; count < int(std::size(ends)); ++count)
            QCOMPARE(Utf8::bytesOfUnits(bytes.constData(), bytes.size(), count), ends[count]);
    }
};

QTEST_APPLESS_MAIN(tst_utf8)
#include "tst_utf8.moc"
