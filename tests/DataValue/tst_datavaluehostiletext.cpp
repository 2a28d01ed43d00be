#include "valuesamples.h"

#include <QtTest>

namespace {

/// Whether the text is accepted; what matters most is that it comes back at all.
bool accepts(const QByteArray& text)
{
    CDataValue out("before");
    const bool accepted = CDataValue::parseToDataValue(text.constData(), out);
    if (!accepted && out.asQString() != QLatin1String("before"))
        qFatal("A refused text changed the value");
    return accepted;
}

} // namespace

/// Texts that somebody sends to do harm: they come back, accepted or refused.
class tst_datavaluehostiletext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsDeepNesting_data();
    void readsDeepNesting();
    void survivesHugeNumbers();
    void survivesLoneSurrogates();
    void survivesBadUtf8();
    void survivesZeroBytes();
    void survivesHostileTexts_data();
    void survivesHostileTexts();
    void takesTheLastOfEqualKeys();
    void survivesALineFullOfComments();
    void keepsManyCommentsOnLinesOfTheirOwn();
};

void tst_datavaluehostiletext::readsDeepNesting_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("640") << 640 << true;
    QTest::newRow("999") << 999 << true;
    QTest::newRow("1000") << 1000 << true;
    QTest::newRow("1001") << 1001 << false;
    QTest::newRow("1002") << 1002 << false;
    QTest::newRow("2000") << 2000 << false;
    QTest::newRow("100000") << 100000 << false;
}

void tst_datavaluehostiletext::readsDeepNesting()
{
    QFETCH(int, depth);
    QFETCH(bool, accepted);
    const QByteArray arrays = QByteArray(depth, '[') + QByteArray(depth, ']');
    const QByteArray maps =
        QByteArray("{\"a\":").repeated(depth - 1) + "{}" + QByteArray(depth - 1, '}');
    for (const QByteArray& text : {arrays, maps}) {
        QCOMPARE(accepts(text), accepted);
        QVERIFY(!accepts(text.left(text.size() - 1)));
        if (!accepted)
            continue;
        const CDataValue value = parsed(text);
        const CDataValue copy(value);
        QCOMPARE(fast(copy), QString::fromLatin1(text + "\n"));
        QVERIFY(copy.isEqual(value));
        QCOMPARE(fast(parsed(value.parseToQString(STYLED_STYLE).toUtf8())), fast(value));
    }
}

void tst_datavaluehostiletext::survivesHugeNumbers()
{
    for (const char* text :
         {"1e308", "-1e308", "1e-400", "1e400", "-1e400", "1e99999999999", "[1e400]", "1.", ".5",
          "1e", "1e+", "--1", "1-1", "1+1", "1.2.3", "00012", "0x10", "1_000"})
        accepts(text);
    QCOMPARE(fast(parsed("1e308")), QString("1e+308\n"));
    const QByteArray digits(400, '9');
    accepts(digits);
    accepts("-" + digits);
    accepts("[" + QByteArray(100000, '1') + "]");
    accepts("0." + QByteArray(100000, '3'));
}

void tst_datavaluehostiletext::survivesLoneSurrogates()
{
    QVERIFY(!accepts("\"\\ud800\""));
    QVERIFY(!accepts("\"\\ud800x\""));
    accepts("\"\\ud800\\u0041\"");
    accepts("\"\\udc00\"");
    accepts("\"\\udc00\\ud800\"");
    QCOMPARE(parsed("\"\\ud83d\\ude00\"").asQString(), QString::fromUtf8("\xf0\x9f\x98\x80"));

    QString alone("\"x\"");
    alone[1] = QChar(0xd800);
    CDataValue out;
    QVERIFY(CDataValue::parseToDataValue(alone, out));
    QCOMPARE(out.asQString().size(), 1);
}

void tst_datavaluehostiletext::survivesBadUtf8()
{
    for (const char* bytes :
         {"\xff", "\xc3", "\xe4\xbd", "\xc0\x80", "\xed\xa0\x80", "\xf5\x80\x80\x80", "\x80"}) {
        const QByteArray quoted = QByteArray("\"") + bytes + "\"";
        const CDataValue value = parsed(quoted);
        QCOMPARE(fast(value), QString::fromUtf8(quoted + "\n"));
        QCOMPARE(value.asQString(), QString::fromUtf8(bytes));
        accepts(bytes);
    }
}

void tst_datavaluehostiletext::survivesZeroBytes()
{
    QString text("\"a_b\"");
    text[2] = QChar(0);
    CDataValue value;
    QVERIFY(CDataValue::parseToDataValue(text, value));
    QCOMPARE(fast(value), QString("\"a\\u0000b\"\n"));
    QCOMPARE(value.asQString(), QString("a"));
    QCOMPARE(fast(parsed("\"a\\u0000b\"")), QString("\"a\\u0000b\"\n"));

    const CDataValue map = parsed("{\"a\\u0000b\":1,\"a\":2}");
    QCOMPARE(fast(map), QString("{\"a\":2,\"a\\u0000b\":1}\n"));
    QCOMPARE(map.mapGetKeys(), (std::vector<std::string>{"a", std::string("a\0b", 3)}));

    QString structure("[1,2]");
    structure[2] = QChar(0);
    QVERIFY(!CDataValue::parseToDataValue(structure, value));
}

void tst_datavaluehostiletext::survivesHostileTexts_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("closing brackets") << QByteArray(100000, ']');
    QTest::newRow("open strings") << QByteArray("[\"").repeated(100000);
    QTest::newRow("open maps") << QByteArray("{\"\":").repeated(100000);
    QTest::newRow("commas") << "[" + QByteArray(100000, ',') + "]";
    QTest::newRow("comments") << QByteArray("/**/").repeated(10000) + "1";
    QTest::newRow("open comments") << QByteArray("/*").repeated(100000);
    QTest::newRow("slashes") << QByteArray(100000, '/');
    QTest::newRow("backslashes") << QByteArray("\"") + QByteArray(99999, '\\');
    QTest::newRow("minuses") << QByteArray(100000, '-');
    QTest::newRow("exponents") << QByteArray("1e").repeated(50000);
}

void tst_datavaluehostiletext::survivesHostileTexts()
{
    QFETCH(QByteArray, text);
    CDataValue out("before");
    if (CDataValue::parseToDataValue(text.constData(), out))
        QVERIFY(!fast(out).isEmpty());
    else
        QCOMPARE(out.asQString(), QString("before"));
}

void tst_datavaluehostiletext::takesTheLastOfEqualKeys()
{
    // Containers and long texts, which the leak checker misses when they are lost.
    QCOMPARE(fast(parsed("{\"a\":{\"b\":[1]},\"a\":[2],\"a\":\"longer than fifteen bytes\","
                         "\"c\":{\"d\":null,\"d\":{}},\"a\":{\"e\":3}}")),
             QString("{\"a\":{\"e\":3},\"c\":{\"d\":{}}}\n"));
}

void tst_datavaluehostiletext::survivesALineFullOfComments()
{
    // Collected behind the value, they would take hours.
    const CDataValue value = parsed("[1" + QByteArray("/**/").repeated(2000000) + "]");
    QCOMPARE(fast(value), QString("[1]\n"));
    QVERIFY(!accepts("[1" + QByteArray("/**/").repeated(2000000)));
    QCOMPARE(fast(parsed("[1" + QByteArray(4000000, ' ') + QByteArray("\n/**/").repeated(800000) +
                         "\n]")),
             QString("[1]\n"));
}

void tst_datavaluehostiletext::keepsManyCommentsOnLinesOfTheirOwn()
{
    const QByteArray text = "[\n" + QByteArray("1, // one\n").repeated(50000) + "2\n]";
    QCOMPARE(parsed(text).parseToQString(STYLED_STYLE).count("// one"), 50000);
}

QTEST_APPLESS_MAIN(tst_datavaluehostiletext)

#include "tst_datavaluehostiletext.moc"
