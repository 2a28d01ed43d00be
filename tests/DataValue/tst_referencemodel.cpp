#include "referencemodel.h"

#include <json/writer.h>

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

std::string fast(const ModelValue& value)
{
    return value.text(FAST_STYLE);
}

std::string styled(const char* json)
{
    ModelValue value;
    return ModelValue::parse(json, value) ? value.text(STYLED_STYLE) : "syntax error";
}

ModelValue parsed(const char* json)
{
    ModelValue value;
    if (!ModelValue::parse(json, value))
        qFatal("The test's JSON text is wrong: %s", json);
    return value;
}

std::string fast(const std::list<ModelValue>& values)
{
    std::string text;
    for (const ModelValue& value : values)
        text += value.text(FAST_STYLE);
    return text;
}

} // namespace

/// The model judges CDataValue, so it is checked by itself, against literals written by hand.
class tst_referencemodel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesScalars_data();
    void writesScalars();
    void escapesStrings();
    void writesCompactContainers();
    void writesStyledContainers();
    void keepsCommentsInStyledText();
    void styledLayoutIsJsonCpps_data();
    void styledLayoutIsJsonCpps();
    void readsNumbersByTheRule_data();
    void readsNumbersByTheRule();
    void refusesSyntaxErrors();

    void childChangeIsStaleUntilSynchronised();
    void flagReachesEveryAncestor();
    void copyKeepsItsOwnStaleText();
    void storedValueKeepsItsOwnStaleText();
    void insertBeyondTheEndLeavesANull();
    void onePastTheEndThrows();
    void removalRebuildsFromTheText();
    void removalIsClampedToTheElements();
    void swappedChildrenNameNoParent();
    void findsDepthFirst();
    void addressArraysAreReachedAtZeroOnly();
    void addressesBreakOrdinaryContainers();
    void assignmentLinksChildrenOfAddressMaps();
    void nullReferenceIsReset();
};

void tst_referencemodel::writesScalars_data()
{
    QTest::addColumn<QByteArray>("actual");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char* name, const ModelValue& value, const char* expected) {
        QTest::newRow(name) << QByteArray::fromStdString(fast(value)) << QByteArray(expected);
    };
    row("null", ModelValue(), "null\n");
    row("int", ModelValue(-2147483647 - 1), "-2147483648\n");
    row("uint", ModelValue(4294967295u), "4294967295\n");
    row("true", ModelValue(true), "true\n");
    row("two", ModelValue(2.0), "2.0\n");
    row("minus zero", ModelValue(-0.0), "-0.0\n");
    row("tenth", ModelValue(0.1), "0.1\n");
    row("third", ModelValue(1.0 / 3), "0.3333333333333333\n");
    row("fifteen zeros", ModelValue(1e15), "1000000000000000.0\n");
    row("exponent", ModelValue(1e20), "1e+20\n");
    row("small", ModelValue(1.5e-7), "1.5e-07\n");
    row("nan", ModelValue(std::nan("")), "null\n");
    row("infinity", ModelValue(-std::numeric_limits<double>::infinity()), "null\n");
    row("address", ModelValue(static_cast<const void*>("x")), "null\n");
    row("empty array", ModelValue(ARRAY_VALUE), "[]\n");
    row("empty map", ModelValue(MAP_VALUE), "{}\n");
    row("address map", ModelValue(ADDRESS_MAP_VALUE), "null\n");
}

void tst_referencemodel::writesScalars()
{
    QFETCH(QByteArray, actual);
    QTEST(actual, "expected");
}

void tst_referencemodel::escapesStrings()
{
    QCOMPARE(fast(ModelValue("\"\\\b\f\n\r\t/\x1f\x7f\xc3\xa9")),
             std::string("\"\\\"\\\\\\b\\f\\n\\r\\t/\\u001F\x7f\xc3\xa9\"\n"));
    QCOMPARE(fast(ModelValue(std::string("a\0b", 3))), std::string("\"a\\u0000b\"\n"));
}

void tst_referencemodel::writesCompactContainers()
{
    ModelValue map(MAP_VALUE);
    map.mapSet("vList", parsed("[true,2.5]"), false);
    map.mapSet("nIndex", ModelValue(3), false);
    map.mapSet("strNumber", ModelValue("12"), false);
    QCOMPARE(fast(map), std::string("{\"nIndex\":3,\"strNumber\":\"12\",\"vList\":[true,2.5]}\n"));
    QCOMPARE(map.text(STYLED_STYLE), std::string("{\n"
                                                 "   \"nIndex\" : 3,\n"
                                                 "   \"strNumber\" : \"12\",\n"
                                                 "   \"vList\" : [ true, 2.5 ]\n"
                                                 "}\n"));
}

void tst_referencemodel::writesStyledContainers()
{
    QCOMPARE(styled("{\"a\":{\"b\":[],\"c\":{}},\"d\":[[1],{}]}"), std::string("{\n"
                                                                               "   \"a\" : {\n"
                                                                               "      \"b\" : [],\n"
                                                                               "      \"c\" : {}\n"
                                                                               "   },\n"
                                                                               "   \"d\" : [\n"
                                                                               "      [ 1 ],\n"
                                                                               "      {}\n"
                                                                               "   ]\n"
                                                                               "}\n"));
    const std::string longest(67, 'x'); // "[ ", the quotation marks and " ]" make 73
    ModelValue array(ARRAY_VALUE);
    array.arrayAppend(ModelValue(longest), false);
    QCOMPARE(array.text(STYLED_STYLE), "[ \"" + longest + "\" ]\n");
    array.arrayModify(0, ModelValue(longest + "x"), false);
    QCOMPARE(array.text(STYLED_STYLE), "[\n   \"" + longest + "x\"\n]\n");
}

void tst_referencemodel::keepsCommentsInStyledText()
{
    QCOMPARE(styled("[1, // one\n /* two */ 2]"), std::string("[\n"
                                                              "   1, // one\n"
                                                              "   /* two */\n"
                                                              "   2\n"
                                                              "]\n"));
    ModelValue value = parsed("{\"a\":1 // one\n}");
    QCOMPARE(fast(value), std::string("{\"a\":1}\n"));
    value.synchJsonData();
    QCOMPARE(value.text(STYLED_STYLE), std::string("{\n   \"a\" : 1 // one\n}\n"));
}

void tst_referencemodel::styledLayoutIsJsonCpps_data()
{
    QTest::addColumn<QString>("json");
    const char* const texts[] = {
        "null",
        "\"text\"",
        "[]",
        "{}",
        "[1,2,3]",
        "{\"a\":1}",
        "[[[]]]",
        "[[[1]]]",
        "{\"a\":{\"b\":{\"c\":[1,[2,{}],{\"d\":true}]}}}",
        "[{\"a\":1},{\"b\":[1,2,3]},null,\"x\"]",
        "// first\n5",
        "// first\n// second\n{\"a\":1} // last",
        "/* one\n   two */ [1, // x\n 2 /* y */, 3]",
        "{ // open\n \"a\" : 1, // a\n // before b\n \"b\" : [ // in b\n 1, 2 ] // after b\n }",
        "[1,2,3 // tail\n]\n// the end",
        "[\n// only\n[ // inner\n 1 ]\n]",
        "[1111111111,1111111111,1111111111,1111111111,1111111111,111111111]",
        "[1111111111,1111111111,1111111111,1111111111,1111111111,1111111111]",
        "[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0,1,2,3,4]",
        "[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0,1,2,3,4,5]",
        "{\"escapes\\n\\\"\\\\\":\"\\b\\f\\r\\t\\u0001\"}",
    };
    int number = 0;
    for (const char* text : texts)
        QTest::addRow("text %d", ++number) << QString::fromLatin1(text);
}

void tst_referencemodel::styledLayoutIsJsonCpps()
{
    QFETCH(QString, json);
    Json::Value root;
    QVERIFY(modelReadJson(json.toStdString(), &root));
    // For ASCII strings, integers, booleans and comments JsonCpp's own writer has the layout.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    Json::StyledWriter writer;
    QCOMPARE(modelText(root, STYLED_STYLE), writer.write(root));
    QT_WARNING_POP
}

void tst_referencemodel::readsNumbersByTheRule_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("written");
    const auto row = [](const char* text, int kind, const char* written) {
        QTest::newRow(text) << QByteArray(text) << kind << QByteArray(written);
    };
    row("0", INT_VALUE, "0\n");
    row("-0", INT_VALUE, "0\n");
    row("2147483647", INT_VALUE, "2147483647\n");
    row("2147483648", UINT_VALUE, "2147483648\n");
    row("4294967289", UINT_VALUE, "4294967289\n");
    row("4294967290", REAL_VALUE, "4294967290.0\n");
    row("4294967295", REAL_VALUE, "4294967295.0\n");
    row("-2147483639", INT_VALUE, "-2147483639\n");
    row("-2147483640", REAL_VALUE, "-2147483640.0\n");
    row("-2147483648", REAL_VALUE, "-2147483648.0\n");
    row("99999999999999999999", REAL_VALUE, "1e+20\n");
    row("1.0", REAL_VALUE, "1.0\n");
    row("1e2", REAL_VALUE, "100.0\n");
    row("[4294967290]", ARRAY_VALUE, "[4294967290.0]\n");
    row("{\"a\":-2147483648}", MAP_VALUE, "{\"a\":-2147483648.0}\n");
}

void tst_referencemodel::readsNumbersByTheRule()
{
    QFETCH(QByteArray, text);
    const ModelValue value = parsed(text.constData());
    QTEST(int(value.type()), "kind");
    QTEST(QByteArray::fromStdString(fast(value)), "written");
}

void tst_referencemodel::refusesSyntaxErrors()
{
    for (const char* text : {"", "{", "[1,", "nul", "\"a", "{\"a\"}", "{1:2}"}) {
        ModelValue out("before");
        QVERIFY2(!ModelValue::parse(text, out), text);
        QCOMPARE(out.asBytes(), std::string("before"));
    }
}

void tst_referencemodel::childChangeIsStaleUntilSynchronised()
{
    ModelValue root = parsed("{\"a\":{\"b\":1},\"z\":[]}");
    ModelValue& a = root.mapGet("a");
    a.mapSet("b", ModelValue(2), false);
    QCOMPARE(fast(a), std::string("{\"b\":2}\n"));
    QCOMPARE(fast(root), std::string("{\"a\":{\"b\":1},\"z\":[]}\n"));
    root.mapSet("c", ModelValue(3), false);
    QCOMPARE(fast(root), std::string("{\"a\":{\"b\":1},\"c\":3,\"z\":[]}\n"));
    root.mapGet("z").arrayAppend(ModelValue(0), true);
    QCOMPARE(fast(root), std::string("{\"a\":{\"b\":2},\"c\":3,\"z\":[0]}\n"));
}

void tst_referencemodel::flagReachesEveryAncestor()
{
    ModelValue root = parsed("{\"a\":[{\"b\":{}}]}");
    ModelValue& b = root.mapGet("a").arrayGet(0).mapGet("b");
    b.mapSet("c", ModelValue(1), false);
    QCOMPARE(fast(root), std::string("{\"a\":[{\"b\":{}}]}\n"));
    b.mapSet("d", ModelValue(2), true);
    QCOMPARE(fast(root), std::string("{\"a\":[{\"b\":{\"c\":1,\"d\":2}}]}\n"));
}

void tst_referencemodel::copyKeepsItsOwnStaleText()
{
    ModelValue root = parsed("{\"a\":{\"b\":{}}}");
    root.mapGet("a").mapGet("b").mapSet("c", ModelValue(1), false);
    ModelValue copy(root);
    QCOMPARE(fast(copy), std::string("{\"a\":{\"b\":{}}}\n"));
    QCOMPARE(fast(copy.mapGet("a")), std::string("{\"b\":{\"c\":1}}\n"));
    QCOMPARE(fast(root.mapGet("a")), std::string("{\"b\":{}}\n"));
    copy.mapGet("a").mapSet("d", ModelValue(2), true);
    QCOMPARE(fast(copy), std::string("{\"a\":{\"b\":{\"c\":1},\"d\":2}}\n"));
    QCOMPARE(fast(root), std::string("{\"a\":{\"b\":{}}}\n"));
}

void tst_referencemodel::storedValueKeepsItsOwnStaleText()
{
    ModelValue value = parsed("{\"a\":[]}");
    value.mapGet("a").arrayAppend(ModelValue(1), false);
    ModelValue root(ARRAY_VALUE);
    root.arrayAppend(value, false);
    QCOMPARE(fast(root), std::string("[{\"a\":[]}]\n"));
    QCOMPARE(fast(root.arrayGet(0)), std::string("{\"a\":[]}\n"));
    root.arrayAppend(ModelValue(2), true);
    QCOMPARE(fast(root), std::string("[{\"a\":[1]},2]\n"));
}

void tst_referencemodel::insertBeyondTheEndLeavesANull()
{
    ModelValue array = parsed("[1,2]");
    array.arrayInsert(5, ModelValue(9), true);
    QCOMPARE(array.arrayCount(), 3u);
    QCOMPARE(fast(array), std::string("[1,2,null]\n"));
    QCOMPARE(array.arrayAppend(ModelValue(3), false), 2u);
    QCOMPARE(fast(array), std::string("[1,2,3]\n"));
    array.arrayInsert(9, ModelValue(9), false);
    array.arrayInsert(1, ModelValue(0), false);
    QCOMPARE(fast(array), std::string("[1,0,2,3]\n"));
    array.arrayInsert(9, ModelValue(9), false);
    array.synPreDataValue(&array);
    QCOMPARE(fast(array), std::string("[1,0,2,3]\n"));
}

void tst_referencemodel::onePastTheEndThrows()
{
    ModelValue array = parsed("[1,2]");
    QVERIFY_EXCEPTION_THROWN(array.arrayGet(2), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(array.arrayModify(2, ModelValue(), false), std::out_of_range);
    QCOMPARE(fast(array), std::string("[1,2,null]\n")); // the text was changed before the list
    QVERIFY(&array.arrayGet(4) == &ModelValue::null());
}

void tst_referencemodel::removalRebuildsFromTheText()
{
    ModelValue map = parsed("{\"a\":{\"b\":1},\"c\":2}");
    map.mapGet("a").mapSet("b", ModelValue(9), false);
    QCOMPARE(fast(map.mapRemove("a", false)), std::string("{\"a\":{\"b\":1}}\n"));
    QCOMPARE(fast(map), std::string("{\"c\":2}\n"));
    QCOMPARE(fast(map.mapRemove("a", false)), std::string("{}\n"));

    ModelValue array = parsed("[[1],[2],[3],[4]]");
    array.arrayGet(1).arrayAppend(ModelValue(9), false);
    QCOMPARE(fast(array.arrayRemove(1, 2, false)), std::string("[[2],[3]]\n"));
    QCOMPARE(fast(array), std::string("[[1],[4]]\n"));
}

void tst_referencemodel::removalIsClampedToTheElements()
{
    ModelValue array = parsed("[1,2,3]");
    QCOMPARE(fast(array.arrayRemove(1, -1, false)), std::string("[]\n"));
    QCOMPARE(fast(array.arrayRemove(4, 1, false)), std::string("[]\n"));
    array.arrayInsert(9, ModelValue(), false);
    QCOMPARE(fast(array.arrayRemove(2, 9, false)), std::string("[3]\n"));
    QCOMPARE(fast(array), std::string("[1,2,null]\n"));
    array.arrayRemove(2, 1, true);
    QCOMPARE(fast(array), std::string("[1,2]\n"));
}

void tst_referencemodel::swappedChildrenNameNoParent()
{
    ModelValue root = parsed("{\"a\":{}}");
    ModelValue other(7);
    root.swap(other);
    QCOMPARE(fast(root), std::string("7\n"));
    other.mapGet("a").mapSet("b", ModelValue(1), true);
    QCOMPARE(fast(other), std::string("{\"a\":{}}\n"));
    other.synchPreDataPoint();
    other.mapGet("a").mapSet("c", ModelValue(2), true);
    QCOMPARE(fast(other), std::string("{\"a\":{\"b\":1,\"c\":2}}\n"));
}

void tst_referencemodel::findsDepthFirst()
{
    const ModelValue map =
        parsed("{\"k\":{\"k\":1},\"B\":[{\"k\":2},[{\"k\":3}],4],\"a\":{\"k\":[]}}");
    QCOMPARE(fast(map.mapFind("k")), std::string("2\n[]\n{\"k\":1}\n1\n"));
    QCOMPARE(fast(map.mapFind("k", parsed("[]"))), std::string());

    ModelValue stale = parsed("{\"a\":{\"k\":1}}");
    stale.mapGet("a").mapSet("k", ModelValue(2), false);
    QCOMPARE(fast(stale.mapFind("k")), std::string("1\n"));
    std::list<ModelValue> found;
    stale.dataValueFind("k", stale, &found);
    QCOMPARE(fast(found), std::string("2\n"));
}

void tst_referencemodel::addressArraysAreReachedAtZeroOnly()
{
    ModelValue array;
    QCOMPARE(array.addressArrayAppend(ModelValue(1)), 0u);
    QCOMPARE(array.addressArrayAppend(ModelValue(2)), 4294967295u);
    array.addressArrayInsert(1, ModelValue(3));
    array.addressArrayInsert(0, ModelValue(4));
    QCOMPARE(array.addressArrayGet(0).asInt(), 4);
    QVERIFY(&array.addressArrayGet(1) == &ModelValue::null());
    QCOMPARE(array.addressArrayCount(), 0u);
    array.addressArrayRemove(0, 2);
    QCOMPARE(array.addressArrayGet(0).asInt(), 2);
}

void tst_referencemodel::addressesBreakOrdinaryContainers()
{
    const ModelValue address(static_cast<const void*>("x"));
    ModelValue array(ARRAY_VALUE);
    QVERIFY_EXCEPTION_THROWN(array.arrayAppend(address, false), BrokenPrecondition);
    QVERIFY_EXCEPTION_THROWN(ModelValue(ADDRESS_MAP_VALUE).mapGet("a"), BrokenPrecondition);
    array.arrayAppend(ModelValue(), false);
    array.arrayGet(0) = address;
    QVERIFY(array.isHasAddressType());
    QVERIFY_EXCEPTION_THROWN(array.arrayCount(), BrokenPrecondition);
}

void tst_referencemodel::assignmentLinksChildrenOfAddressMaps()
{
    ModelValue root(MAP_VALUE);
    root.mapSet("list", ModelValue(ARRAY_VALUE), false);
    ModelValue& a = root.mapSet("a", ModelValue(), false);
    root.mapGet("list").arrayAppend(ModelValue(1), false);
    ModelValue& member = a.addressMapSet("m", ModelValue(MAP_VALUE));
    member.mapSet("x", ModelValue(1), true);
    QCOMPARE(fast(root), std::string("{\"a\":null,\"list\":[]}\n")); // the member has no parent

    const ModelValue copy(a);
    a = copy;
    a.addressMapGet("m").mapSet("x", ModelValue(2), true);
    QCOMPARE(fast(root), std::string("{\"a\":null,\"list\":[1]}\n"));
}

void tst_referencemodel::nullReferenceIsReset()
{
    ModelValue map(MAP_VALUE);
    map.mapGet("missing") = ModelValue(5);
    QCOMPARE(ModelValue::null().asInt(), 5);
    QCOMPARE(map.mapGet("missing").type(), NULL_VALUE);
}

QTEST_APPLESS_MAIN(tst_referencemodel)

#include "tst_referencemodel.moc"
