#include "valuesamples.h"

#include "support/logcapture.h"

#include <json/value.h>

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

QString styled(const QByteArray& text)
{
    return parsed(text).parseToQString(STYLED_STYLE);
}

/// Whether the text is accepted; what matters most is that it comes back at all.
bool accepts(const QByteArray& text)
{
    CDataValue out("before");
    const bool accepted = CDataValue::parseToDataValue(text.constData(), out);
    if (!accepted && out.asQString() != QLatin1String("before"))
        qFatal("A refused text changed the value");
    return accepted;
}

void scalarRow(const char* name, const CDataValue& value, const char* expected)
{
    QTest::newRow(name) << fast(value) << QString::fromUtf8(expected);
    QTest::addRow("%s, styled", name)
        << value.parseToQString(STYLED_STYLE) << QString::fromUtf8(expected);
}

void addReals()
{
    scalarRow("two", CDataValue(2.0), "2.0\n");
    scalarRow("minus two", CDataValue(-2.0), "-2.0\n");
    scalarRow("minus zero", CDataValue(-0.0), "-0.0\n");
    scalarRow("a tenth", CDataValue(0.1), "0.1\n");
    scalarRow("a third", CDataValue(1.0 / 3), "0.3333333333333333\n");
    scalarRow("two thirds", CDataValue(2.0 / 3), "0.6666666666666666\n");
    scalarRow("sum of tenths", CDataValue(0.1 + 0.2), "0.3\n");
    scalarRow("sixteen digits", CDataValue(1234567890123456.0), "1234567890123456.0\n");
    scalarRow("seventeen digits", CDataValue(12345678901234567.0), "1.234567890123457e+16\n");
    scalarRow("1e15", CDataValue(1e15), "1000000000000000.0\n");
    scalarRow("1e16", CDataValue(1e16), "1e+16\n");
    scalarRow("1e20", CDataValue(1e20), "1e+20\n");
    scalarRow("1e-5", CDataValue(1e-5), "1e-05\n");
    scalarRow("0.0001", CDataValue(0.0001), "0.0001\n");
    scalarRow("1e300", CDataValue(-2.5e300), "-2.5e+300\n");
    const double largest = std::numeric_limits<double>::max();
    scalarRow("largest", CDataValue(largest), "1.7976931348623157e+308\n");
    scalarRow("least", CDataValue(-largest), "-1.7976931348623157e+308\n");
    scalarRow("next to it", CDataValue(std::nextafter(largest, 0.0)), "1.7976931348623155e+308\n");
    scalarRow("not so near", CDataValue(1.797693134862315e308), "1.797693134862315e+308\n");
    scalarRow("nan", CDataValue(std::nan("")), "null\n");
    scalarRow("infinity", CDataValue(std::numeric_limits<double>::infinity()), "null\n");
    scalarRow("minus infinity", CDataValue(-std::numeric_limits<double>::infinity()), "null\n");
}

} // namespace

class tst_datavaluetext : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesScalars_data();
    void writesScalars();
    void writesTheDescribedMap();
    void escapesControlCharactersOnly();
    void escapesKeysToo();
    void breaksStyledArraysAtTheMargin();
    void opensNestedContainersBehindTheirKey();
    void unknownStyleLogsAndGivesANullString();
    void staleChildIsWrittenAsItWas();

    void readsEveryKind();
    void readsNumbersAtTheLimits_data();
    void readsNumbersAtTheLimits();
    void changesKindsOnTheWayAndBack();
    void readsLongNumbersFromStrings();
    void refusesSyntaxErrorsSilently();
    void nullPointerIsASyntaxError();
    void keepsParentOfTheTarget();
    void readsTextsOfBothStylesBack();

    void keepsCommentsInStyledTextOnly();
    void commentEndingInABlankHidesNothing();
    void changedMemberLosesItsComment();

    void convertsJsonOneToOne();
};

void tst_datavaluetext::writesScalars_data()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
    addReals();
    scalarRow("null", CDataValue(NULL_VALUE), "null\n");
    scalarRow("zero", CDataValue(0), "0\n");
    scalarRow("lowest int", CDataValue(std::numeric_limits<int>::min()), "-2147483648\n");
    scalarRow("highest int", CDataValue(2147483647), "2147483647\n");
    scalarRow("highest uint", CDataValue(4294967295u), "4294967295\n");
    scalarRow("true", CDataValue(true), "true\n");
    scalarRow("false", CDataValue(false), "false\n");
    scalarRow("empty string", CDataValue(""), "\"\"\n");
    scalarRow("empty array", CDataValue(ARRAY_VALUE), "[]\n");
    scalarRow("empty map", CDataValue(MAP_VALUE), "{}\n");
    scalarRow("address", CDataValue(static_cast<const void*>("x")), "null\n");
    scalarRow("address array", CDataValue(ADDRESS_ARRAY_VALUE), "null\n");
    scalarRow("address map", CDataValue(ADDRESS_MAP_VALUE), "null\n");
    scalarRow("long long", CDataValue(1234567890123LL), "\"1234567890123\"\n");
}

void tst_datavaluetext::writesScalars()
{
    QFETCH(QString, actual);
    QTEST(actual, "expected");
}

void tst_datavaluetext::writesTheDescribedMap()
{
    CDataValue list(ARRAY_VALUE);
    list.arrayAppend(CDataValue(true), false);
    list.arrayAppend(CDataValue(2.5), false);
    CDataValue map(MAP_VALUE);
    map.mapSet("vList", list, false);
    map.mapSet("strNumber", CDataValue("12"), false);
    map.mapSet("nIndex", CDataValue(3), false);
    QCOMPARE(fast(map), QString("{\"nIndex\":3,\"strNumber\":\"12\",\"vList\":[true,2.5]}\n"));
    QCOMPARE(map.parseToQString(STYLED_STYLE), QString("{\n"
                                                       "   \"nIndex\" : 3,\n"
                                                       "   \"strNumber\" : \"12\",\n"
                                                       "   \"vList\" : [ true, 2.5 ]\n"
                                                       "}\n"));
}

void tst_datavaluetext::escapesControlCharactersOnly()
{
    QCOMPARE(fast(CDataValue("\"\\\b\f\n\r\t")), QString("\"\\\"\\\\\\b\\f\\n\\r\\t\"\n"));
    QCOMPARE(fast(CDataValue("\x01\x0b\x1f\x7f/")), QString("\"\\u0001\\u000B\\u001F\x7f/\"\n"));
    QCOMPARE(fast(CDataValue("\t\xc3\xa9")), QString::fromUtf8("\"\\t\xc3\xa9\"\n"));
    QCOMPARE(fast(CDataValue(std::string("a\0b", 3))), QString("\"a\\u0000b\"\n"));
    const QString smile = QString::fromUtf8("\xf0\x9f\x98\x80");
    QCOMPARE(fast(CDataValue(smile)), "\"" + smile + "\"\n");
}

void tst_datavaluetext::escapesKeysToo()
{
    CDataValue map(MAP_VALUE);
    map.mapSet("a\"\n\xc3\xa9", CDataValue(1), false);
    QCOMPARE(fast(map), QString::fromUtf8("{\"a\\\"\\n\xc3\xa9\":1}\n"));
    QCOMPARE(map.parseToQString(STYLED_STYLE),
             QString::fromUtf8("{\n   \"a\\\"\\n\xc3\xa9\" : 1\n}\n"));
}

void tst_datavaluetext::breaksStyledArraysAtTheMargin()
{
    // "[ ", the quotation marks and " ]" leave 67 characters of a line of 73.
    const QByteArray longest(67, 'x');
    QCOMPARE(styled("[\"" + longest + "\"]"), QString("[ \"" + longest + "\" ]\n"));
    QCOMPARE(styled("[\"" + longest + "x\"]"), QString("[\n   \"" + longest + "x\"\n]\n"));
    QCOMPARE(styled("[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0,1,2,3]"),
             QString("[ 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 2, 3 ]\n"));
    QCOMPARE(styled("[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0,1,2,3,4]").count('\n'), 26);
}

void tst_datavaluetext::opensNestedContainersBehindTheirKey()
{
    QCOMPARE(styled("{\"a\":{\"b\":[],\"c\":{}},\"d\":[[1],{},{\"e\":null}]}"),
             QString("{\n"
                     "   \"a\" : {\n"
                     "      \"b\" : [],\n"
                     "      \"c\" : {}\n"
                     "   },\n"
                     "   \"d\" : [\n"
                     "      [ 1 ],\n"
                     "      {},\n"
                     "      {\n"
                     "         \"e\" : null\n"
                     "      }\n"
                     "   ]\n"
                     "}\n"));
    QCOMPARE(styled("[[],{}]"), QString("[ [], {} ]\n"));
}

void tst_datavaluetext::unknownStyleLogsAndGivesANullString()
{
    LogCapture log;
    const QString text = CDataValue(5).parseToQString(static_cast<ENUM_STYLE>(2));
    QVERIFY(text.isNull());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.contains("DataValue/datavalue parseToQString Parse style is not right! "));
}

void tst_datavaluetext::staleChildIsWrittenAsItWas()
{
    CDataValue map = parsed("{\"a\":{\"b\":1}}");
    map.mapGet("a").mapSet("b", CDataValue(2), false);
    QCOMPARE(fast(map), QString("{\"a\":{\"b\":1}}\n"));
    QCOMPARE(map.parseToQString(STYLED_STYLE),
             QString("{\n   \"a\" : {\n      \"b\" : 1\n   }\n}\n"));
}

void tst_datavaluetext::readsEveryKind()
{
    CDataValue map =
        parsed("{\"n\":null,\"i\":-3,\"u\":3000000000,\"r\":1.5,\"s\":\"x\",\"b\":true,"
               "\"a\":[],\"m\":{}}");
    QCOMPARE(map.type(), MAP_VALUE);
    QCOMPARE(map.mapGet("n").type(), NULL_VALUE);
    QCOMPARE(map.mapGet("i").asInt(), -3);
    QCOMPARE(map.mapGet("u").asUInt(), 3000000000u);
    QCOMPARE(map.mapGet("r").asDouble(), 1.5);
    QCOMPARE(map.mapGet("s").asQString(), QString("x"));
    QCOMPARE(map.mapGet("b").asBool(), true);
    QCOMPARE(map.mapGet("a").type(), ARRAY_VALUE);
    QCOMPARE(map.mapGet("m").type(), MAP_VALUE);
    QCOMPARE(parsed("5").asInt(), 5);
    QCOMPARE(parsed("\"x\"").asQString(), QString("x"));
}

void tst_datavaluetext::readsNumbersAtTheLimits_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("written");
    const auto row = [](const char* text, int kind, const char* written) {
        QTest::newRow(text) << kind << QString::fromLatin1(written);
    };
    row("0", INT_VALUE, "0");
    row("-0", INT_VALUE, "0");
    row("2147483647", INT_VALUE, "2147483647");
    row("2147483648", UINT_VALUE, "2147483648");
    row("4294967289", UINT_VALUE, "4294967289");
    row("4294967290", REAL_VALUE, "4294967290.0");
    row("4294967295", REAL_VALUE, "4294967295.0");
    row("4294967296", REAL_VALUE, "4294967296.0");
    row("-2147483639", INT_VALUE, "-2147483639");
    row("-2147483640", REAL_VALUE, "-2147483640.0");
    row("-2147483648", REAL_VALUE, "-2147483648.0");
    row("-2147483649", REAL_VALUE, "-2147483649.0");
    row("395579553510779553", REAL_VALUE, "3.955795535107796e+17"); // nearest to ...584
    row("9223372036854775807", REAL_VALUE, "9.223372036854776e+18");
    row("9223372036854775808", REAL_VALUE, "9.223372036854776e+18");
    row("-9223372036854775808", REAL_VALUE, "-9.223372036854776e+18");
    row("-9223372036854775809", REAL_VALUE, "-9.223372036854776e+18");
    row("18446744073709551615", REAL_VALUE, "1.844674407370955e+19");
    row("18446744073709551616", REAL_VALUE, "1.844674407370955e+19");
    row("100000000000000000000", REAL_VALUE, "1e+20");
    row("1.7976931348623157e+308", REAL_VALUE, "1.7976931348623157e+308");
    row("-1.7976931348623157e+308", REAL_VALUE, "-1.7976931348623157e+308");
    row("1.0", REAL_VALUE, "1.0");
    row("1e2", REAL_VALUE, "100.0");
    row("1E+2", REAL_VALUE, "100.0");
    row("-1.5e-3", REAL_VALUE, "-0.0015");
    row("5.0000000000000001", REAL_VALUE, "5.0");
}

void tst_datavaluetext::readsNumbersAtTheLimits()
{
    const QByteArray text = QTest::currentDataTag();
    QFETCH(int, kind);
    QFETCH(QString, written);
    const CDataValue alone = parsed(text);
    QCOMPARE(int(alone.type()), kind);
    QCOMPARE(fast(alone), written + "\n");
    CDataValue inside = parsed("{\"a\":[" + text + "]}");
    QCOMPARE(int(inside.mapGet("a").arrayGet(0).type()), kind);
    QCOMPARE(fast(inside), "{\"a\":[" + written + "]}\n");
}

void tst_datavaluetext::changesKindsOnTheWayAndBack()
{
    const auto back = [](const CDataValue& value) { return parsed(fast(value).toUtf8()); };
    QCOMPARE(back(CDataValue(5u)).type(), INT_VALUE);
    QCOMPARE(back(CDataValue(5u)).asInt(), 5);
    QCOMPARE(back(CDataValue(4294967295u)).type(), REAL_VALUE);
    QCOMPARE(back(CDataValue(4294967295u)).asDouble(), 4294967295.0);
    QCOMPARE(back(CDataValue(3.0)).type(), REAL_VALUE);
    QCOMPARE(back(CDataValue(static_cast<const void*>("x"))).type(), NULL_VALUE);
    QCOMPARE(back(CDataValue(std::nan(""))).type(), NULL_VALUE);
}

void tst_datavaluetext::readsLongNumbersFromStrings()
{
    const CDataValue number = parsed(fast(CDataValue(1234567890123LL)).toUtf8());
    QCOMPARE(number.type(), STRING_VALUE);
    QCOMPARE(number.asLongLong(), 1234567890123LL);
}

void tst_datavaluetext::refusesSyntaxErrorsSilently()
{
    LogCapture log;
    for (const char* text : {"",
                             " ",
                             "{",
                             "[",
                             "}",
                             "[1",
                             "[1 2]",
                             "{\"a\"",
                             "{\"a\":",
                             "{\"a\":1",
                             "{a:1}",
                             "{\"a\":1,,}",
                             "nul",
                             "tru",
                             "\"open",
                             "'x'",
                             "+1",
                             "/",
                             "// only a comment",
                             "/* open",
                             "\"\\x\"",
                             "\"\\u12\"",
                             "\"\\u12g4\"",
                             "[1}",
                             ":",
                             ",",
                             "\xef\xbb\xbf"}) {
        QVERIFY2(!accepts(text), text);
        CDataValue out(7);
        QVERIFY2(!CDataValue::parseToDataValue(QString::fromUtf8(text), out), text);
        QCOMPARE(out.asInt(), 7);
    }
    QCOMPARE(log.lines(), QStringList());
}

void tst_datavaluetext::nullPointerIsASyntaxError()
{
    CDataValue out(7);
    QVERIFY(!CDataValue::parseToDataValue(static_cast<const char*>(nullptr), out));
    QVERIFY(!CDataValue::parseToDataValue(QString(), out));
    QCOMPARE(out.asInt(), 7);
}

void tst_datavaluetext::keepsParentOfTheTarget()
{
    CDataValue root = parsed("{\"a\":1}");
    CDataValue& a = root.mapGet("a");
    QVERIFY(CDataValue::parseToDataValue("{\"b\":[1]}", a));
    QCOMPARE(fast(root), QString("{\"a\":1}\n"));
    a.mapGet("b").arrayAppend(CDataValue(2), true);
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":[1,2]}}\n"));
}

void tst_datavaluetext::readsTextsOfBothStylesBack()
{
    const QByteArray text =
        "{\"\":[],\"a\":[1,[true,null],{\"b\":\"\\u0001\xc3\xa9\\\\\"}],\"z\":-0.5}";
    const CDataValue value = parsed(text);
    QCOMPARE(fast(parsed(fast(value).toUtf8())), QString::fromUtf8(text + "\n"));
    QCOMPARE(fast(parsed(value.parseToQString(STYLED_STYLE).toUtf8())),
             QString::fromUtf8(text + "\n"));
}

void tst_datavaluetext::keepsCommentsInStyledTextOnly()
{
    const QByteArray text = "// head\n"
                            "{\n"
                            "   /* before */\n"
                            "   \"a\" : 1, // behind\n"
                            "   // first\n"
                            "   // second\n"
                            "   \"b\" : [ 1, /* in */ 2 ]\n"
                            "}\n"
                            "// end\n";
    QCOMPARE(fast(parsed(text)), QString("{\"a\":1,\"b\":[1,2]}\n"));
    QCOMPARE(styled(text), QString("\n// head\n"
                                   "{\n"
                                   "   /* before */\n"
                                   "   \"a\" : 1, // behind\n"
                                   "   // first\n"
                                   "   // second\n"
                                   "   \"b\" : [\n"
                                   "      1, /* in */\n"
                                   "      2\n"
                                   "   ]\n"
                                   "}\n"
                                   "// end\n\n"));
    QCOMPARE(styled("[1, // one\n 2]"), QString("[\n   1, // one\n   2\n]\n"));

    CDataValue copy(parsed(text));
    copy.synchJsonData();
    QCOMPARE(copy.parseToQString(STYLED_STYLE), styled(text));
}

void tst_datavaluetext::commentEndingInABlankHidesNothing()
{
    QCOMPARE(styled("[1, // one \n2]"), QString("[\n   1, // one \n   2\n]\n"));
    QCOMPARE(styled("{\"a\":1, // one \n\"b\":2 // two \n}"),
             QString("{\n   \"a\" : 1, // one \n   \"b\" : 2 // two \n}\n"));
}

void tst_datavaluetext::changedMemberLosesItsComment()
{
    CDataValue map = parsed("{\"a\":1, // one\n\"b\":2 // two\n}");
    map.mapSet("a", CDataValue(3), false);
    QCOMPARE(map.parseToQString(STYLED_STYLE),
             QString("{\n   \"a\" : 3,\n   \"b\" : 2 // two\n}\n"));
    map.mapSet("c", parsed("// new\n4"), true);
    QCOMPARE(map.parseToQString(STYLED_STYLE),
             QString("{\n   \"a\" : 3,\n   \"b\" : 2, // two\n   // new\n   \"c\" : 4\n}\n"));
}

void tst_datavaluetext::convertsJsonOneToOne()
{
    Json::Value json(Json::objectValue);
    json["int"] = Json::Value(std::numeric_limits<Json::Int>::min());
    json["uint"] = Json::Value(5u);
    json["highest"] = Json::Value(4294967295u);
    json["long"] = Json::Value(Json::Int64(-3000000000));
    json["list"][0] = true;
    CDataValue value = CDataValue::jsontoDataValue(json);
    QCOMPARE(value.mapGet("int").asInt(), std::numeric_limits<int>::min());
    QCOMPARE(value.mapGet("uint").type(), UINT_VALUE);
    QCOMPARE(value.mapGet("highest").asUInt(), 4294967295u);
    QCOMPARE(value.mapGet("long").asDouble(), -3000000000.0);
    value.mapGet("list").arrayAppend(CDataValue(false), true);
    QCOMPARE(fast(value), QString("{\"highest\":4294967295,\"int\":-2147483648,"
                                  "\"list\":[true,false],\"long\":-3000000000.0,\"uint\":5}\n"));
    QCOMPARE(CDataValue::toValueType(Json::Value(1u)), UINT_VALUE);
    QCOMPARE(CDataValue::toValueType(Json::Value()), NULL_VALUE);
}

QTEST_APPLESS_MAIN(tst_datavaluetext)

#include "tst_datavaluetext.moc"
