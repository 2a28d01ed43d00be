#include "valuesamples.h"

#include "support/logcapture.h"

#include <QtTest>

#include <climits>
#include <cmath>
#include <limits>
#include <utility>

/// Kinds, constructors, conversions, copying: the value without its containers' operations.
class tst_datavalue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindNumbersAreFixed();
    void constructsEveryKindWithItsDefault();
    void constructsAKindThatDoesNotExist();
    void constructsScalars();
    void constructsStrings();
    void constructsDates();
    void constructsLongNumbersAsStrings();
    void predicatesTellTheKind_data();
    void predicatesTellTheKind();
    void sizeAndEmptinessAreTheTexts_data();
    void sizeAndEmptinessAreTheTexts();

    void comparesTexts();
    void copyIsDeep();
    void copyHasNoParent();
    void copyKeepsItsStaleText();
    void assignmentKeepsTheParent();
    void assignmentFromItsOwnTree();
    void movingIsACopyToTheEye();
    void movingAnElementCopiesIt();
    void movingAnAncestorCopiesIt();
    void swapExchangesKindAndContent();
    void swappedChildrenAreLinkedAgainOnRequest();
    void clearEmptiesContainersOnly();
    void clearLeavesScalarsAndWarns();

    void missesReturnTheSharedNull();
    void writingIntoTheSharedNullIsUndoneWithOneWarning();
    void travelsThroughQVariant();
};

void tst_datavalue::kindNumbersAreFixed()
{
    int number = 0;
    for (const NamedValue& sample : oneOfEveryKind())
        QCOMPARE(int(sample.value.type()), number++);
    QCOMPARE(number, 11);
    QCOMPARE(int(FAST_STYLE), 0);
    QCOMPARE(int(STYLED_STYLE), 1);
}

void tst_datavalue::constructsEveryKindWithItsDefault()
{
    const char* const texts[] = {"null\n", "0\n",  "0\n",    "0.0\n",  "\"\"\n", "false\n",
                                 "[]\n",   "{}\n", "null\n", "null\n", "null\n"};
    for (int kind = 0; kind < 11; ++kind) {
        const CDataValue value(static_cast<ENUM_VALUE_TYPE>(kind));
        QCOMPARE(int(value.type()), kind);
        QCOMPARE(fast(value), QString(texts[kind]));
    }
    QCOMPARE(CDataValue().type(), NULL_VALUE);
    QCOMPARE(CDataValue(ADDRESS_VALUE).asAddress(), static_cast<const void*>(nullptr));
}

void tst_datavalue::constructsAKindThatDoesNotExist()
{
    CDataValue value(static_cast<ENUM_VALUE_TYPE>(11));
    QCOMPARE(int(value.type()), 11);
    QCOMPARE(fast(value), QString("null\n"));
    const CDataValue copy(value);
    QCOMPARE(int(copy.type()), 11);
    value = CDataValue(1);
    QCOMPARE(value.asInt(), 1);
}

void tst_datavalue::constructsScalars()
{
    QCOMPARE(CDataValue(true).type(), BOOLEAN_VALUE);
    QCOMPARE(CDataValue(true).asBool(), true);
    QCOMPARE(CDataValue(INT_MIN).type(), INT_VALUE);
    QCOMPARE(CDataValue(INT_MIN).asInt(), INT_MIN);
    QCOMPARE(CDataValue(UINT_MAX).type(), UINT_VALUE);
    QCOMPARE(CDataValue(UINT_MAX).asUInt(), UINT_MAX);
    QCOMPARE(CDataValue(-0.25).type(), REAL_VALUE);
    QCOMPARE(CDataValue(-0.25).asDouble(), -0.25);
    QVERIFY(std::isnan(CDataValue(std::nan("")).asDouble()));
    QCOMPARE(CDataValue(pointer).type(), ADDRESS_VALUE);
    QCOMPARE(CDataValue(pointer).asAddress(), pointer);
}

void tst_datavalue::constructsStrings()
{
    QCOMPARE(CDataValue("abc").type(), STRING_VALUE);
    QCOMPARE(CDataValue("abc").asQString(), QString("abc"));
    QCOMPARE(CDataValue(static_cast<const char*>(nullptr)).asQString(), QString(""));
    QCOMPARE(CDataValue(std::string("x\0y", 3)).type(), STRING_VALUE);
    QCOMPARE(fast(CDataValue(std::string("x\0y", 3))), QString("\"x\\u0000y\"\n"));
    const char bytes[] = "one two";
    QCOMPARE(CDataValue(bytes + 4, bytes + 6).asQString(), QString("tw"));
    QCOMPARE(CDataValue(bytes, bytes).asQString(), QString(""));
    QVERIFY(CDataValue(bytes, bytes).isString());
    const QString accented = QString::fromUtf8("\xc3\xa9\xe4\xbd\xa0");
    QCOMPARE(CDataValue(accented).type(), STRING_VALUE);
    QCOMPARE(CDataValue(accented).asQString(), accented);
    QCOMPARE(CDataValue(QString()).asQString(), QString(""));
}

void tst_datavalue::constructsDates()
{
    CDataValue date(QDate(2011, 3, 9));
    QCOMPARE(date.type(), STRING_VALUE);
    QCOMPARE(date.asQString(), QString("09/03/2011"));
    QCOMPARE(date.asQDate(), QDate(2011, 3, 9));
    QCOMPARE(CDataValue(QDate()).type(), STRING_VALUE);
    QCOMPARE(fast(CDataValue(QDate())), QString("\"\"\n"));
}

void tst_datavalue::constructsLongNumbersAsStrings()
{
    const CDataValue negative(static_cast<long long>(-9000000000));
    QCOMPARE(negative.type(), STRING_VALUE);
    QVERIFY(negative.isString());
    QCOMPARE(negative.asQString(), QString("-9000000000"));
    QCOMPARE(negative.asLongLong(), -9000000000LL);
    QCOMPARE(CDataValue(LLONG_MIN).asLongLong(), LLONG_MIN);
    QCOMPARE(CDataValue(LLONG_MIN).asQString(), QString("-9223372036854775808"));
    QCOMPARE(CDataValue(18446744073709551615ul).asQString(), QString("18446744073709551615"));
    QCOMPARE(CDataValue(18446744073709551615ul).asUnsignedLong(), 18446744073709551615ul);
}

void tst_datavalue::predicatesTellTheKind_data()
{
    QTest::addColumn<CDataValue>("value");
    QTest::addColumn<int>("kind");
    for (const NamedValue& sample : oneOfEveryKind())
        QTest::newRow(sample.name) << sample.value << int(sample.value.type());
}

void tst_datavalue::predicatesTellTheKind()
{
    QFETCH(CDataValue, value);
    QFETCH(int, kind);
    QCOMPARE(value.isNull(), kind == 0);
    QCOMPARE(value.isInt(), kind == 1);
    QCOMPARE(value.isUInt(), kind == 2);
    QCOMPARE(value.isDouble(), kind == 3);
    QCOMPARE(value.isString(), kind == 4);
    QCOMPARE(value.isBool(), kind == 5);
    QCOMPARE(value.isArray(), kind == 6);
    QCOMPARE(value.isObject(), kind == 7);
    QCOMPARE(value.isAddress(), kind == 8);
    QCOMPARE(value.isAddressArray(), kind == 9);
    QCOMPARE(value.isAddressMap(), kind == 10);
    QCOMPARE(value.isIntegral(), kind == 1 || kind == 2 || kind == 5);
    QCOMPARE(value.isNumeric(), kind == 1 || kind == 2 || kind == 3 || kind == 5);
    QCOMPARE(value.isHasAddressType(), kind >= 8);
}

void tst_datavalue::sizeAndEmptinessAreTheTexts_data()
{
    QTest::addColumn<CDataValue>("value");
    QTest::addColumn<unsigned int>("size");
    QTest::addColumn<bool>("empty");
    QTest::newRow("null") << CDataValue() << 0u << true;
    QTest::newRow("zero") << CDataValue(0) << 0u << false;
    QTest::newRow("unsigned zero") << CDataValue(0u) << 0u << false;
    QTest::newRow("real zero") << CDataValue(0.0) << 0u << false;
    QTest::newRow("empty string") << CDataValue("") << 0u << false;
    QTest::newRow("string") << CDataValue("abc") << 0u << false;
    QTest::newRow("false") << CDataValue(false) << 0u << false;
    QTest::newRow("empty array") << CDataValue(ARRAY_VALUE) << 0u << true;
    QTest::newRow("empty map") << CDataValue(MAP_VALUE) << 0u << true;
    QTest::newRow("array") << parsed("[1,[2,3]]") << 2u << false;
    QTest::newRow("array of null") << parsed("[null]") << 1u << false;
    QTest::newRow("map") << parsed("{\"a\":{\"b\":1},\"c\":2,\"d\":3}") << 3u << false;
    CDataValue addresses;
    addresses.addressArrayAppend(CDataValue(pointer));
    QTest::newRow("address") << CDataValue(pointer) << 0u << true;
    QTest::newRow("address array") << addresses << 0u << true;
}

void tst_datavalue::sizeAndEmptinessAreTheTexts()
{
    QFETCH(CDataValue, value);
    QTEST(value.getSize(), "size");
    QTEST(value.isEmpty(), "empty");
}

void tst_datavalue::comparesTexts()
{
    QVERIFY(CDataValue(pointer).isEqual(CDataValue(NULL_VALUE)));
    QVERIFY(CDataValue(pointer).isEqual(CDataValue(static_cast<const void*>(nullptr))));
    QVERIFY(CDataValue(ADDRESS_MAP_VALUE).isEqual(CDataValue(ADDRESS_ARRAY_VALUE)));
    QVERIFY(!CDataValue(1).isEqual(CDataValue(1u)));
    QVERIFY(!CDataValue(1).isEqual(CDataValue(1.0)));
    QVERIFY(!CDataValue(0).isEqual(CDataValue(false)));
    QVERIFY(!CDataValue("").isEqual(CDataValue()));
    QVERIFY(CDataValue(0.0).isEqual(CDataValue(-0.0)));
    QVERIFY(!CDataValue(std::nan("")).isEqual(CDataValue(std::nan(""))));
    QVERIFY(CDataValue(std::string("a\0b", 3)).isEqual(CDataValue(std::string("a\0b", 3))));
    QVERIFY(!CDataValue(std::string("a\0b", 3)).isEqual(CDataValue("a")));
    QVERIFY(parsed("{\"a\":[1,{}]}").isEqual(parsed("{ \"a\" : [1, {}] } // same")));
    QVERIFY(!parsed("{\"a\":[1,{}]}").isEqual(parsed("{\"a\":[1,[]]}")));
    QVERIFY(!parsed("[1,2]").isEqual(parsed("[1]")));
    QVERIFY(!parsed("{\"a\":1}").isEqual(parsed("{\"b\":1}")));

    CDataValue stale = parsed("{\"a\":{}}");
    stale.mapGet("a").mapSet("b", CDataValue(1), false);
    QVERIFY(stale.isEqual(parsed("{\"a\":{}}")));
    stale.synchJsonData();
    QVERIFY(stale.isEqual(parsed("{\"a\":{\"b\":1}}")));
}

void tst_datavalue::copyIsDeep()
{
    CDataValue original = parsed("{\"a\":[{\"b\":1}]}");
    CDataValue copy(original);
    copy.mapGet("a").arrayGet(0).mapSet("b", CDataValue(2), true);
    QCOMPARE(fast(copy), QString("{\"a\":[{\"b\":2}]}\n"));
    QCOMPARE(fast(original), QString("{\"a\":[{\"b\":1}]}\n"));

    CDataValue addresses;
    addresses.addressMapSet("p", CDataValue(pointer));
    CDataValue addressCopy(addresses);
    addresses.addressMapSet("p", CDataValue(1));
    QCOMPARE(addressCopy.addressMapGet("p").asAddress(), pointer);
}

void tst_datavalue::copyHasNoParent()
{
    CDataValue root = parsed("{\"a\":{}}");
    CDataValue copy(root.mapGet("a"));
    copy.mapSet("b", CDataValue(1), true);
    QCOMPARE(fast(copy), QString("{\"b\":1}\n"));
    QCOMPARE(fast(root), QString("{\"a\":{}}\n"));
}

void tst_datavalue::copyKeepsItsStaleText()
{
    CDataValue root = parsed("{\"a\":{\"b\":{}}}");
    root.mapGet("a").mapGet("b").mapSet("c", CDataValue(1), false);
    CDataValue copy(root);
    QCOMPARE(fast(copy), QString("{\"a\":{\"b\":{}}}\n"));
    QCOMPARE(fast(copy.mapGet("a")), QString("{\"b\":{\"c\":1}}\n"));
    QCOMPARE(fast(root.mapGet("a")), QString("{\"b\":{}}\n"));
}

void tst_datavalue::assignmentKeepsTheParent()
{
    CDataValue root = parsed("{\"a\":1}");
    CDataValue& a = root.mapGet("a");
    a = parsed("{\"b\":[]}");
    QCOMPARE(fast(root), QString("{\"a\":1}\n"));
    a.mapGet("b").arrayAppend(CDataValue(2), true);
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":[2]}}\n"));
}

void tst_datavalue::assignmentFromItsOwnTree()
{
    CDataValue value = parsed("{\"a\":{\"b\":[1]}}");
    CDataValue& same = value;
    value = same;
    QCOMPARE(fast(value), QString("{\"a\":{\"b\":[1]}}\n"));
    value.mapGet("a") = value;
    value.synchJsonData();
    QCOMPARE(fast(value), QString("{\"a\":{\"a\":{\"b\":[1]}}}\n"));
    value = value.mapGet("a").mapGet("a");
    QCOMPARE(fast(value), QString("{\"b\":[1]}\n"));
    value = std::move(value.mapGet("b"));
    QCOMPARE(fast(value), QString("[1]\n"));
}

void tst_datavalue::movingIsACopyToTheEye()
{
    CDataValue source = parsed("{\"a\":{\"b\":{}}}");
    source.mapGet("a").mapGet("b").mapSet("c", CDataValue(1), false);
    CDataValue target(std::move(source));
    QCOMPARE(fast(target), QString("{\"a\":{\"b\":{}}}\n"));
    QCOMPARE(fast(target.mapGet("a")), QString("{\"b\":{\"c\":1}}\n"));
    target.mapGet("a").mapSet("d", CDataValue(2), true);
    QCOMPARE(fast(target), QString("{\"a\":{\"b\":{\"c\":1},\"d\":2}}\n"));

    CDataValue assigned;
    assigned = std::move(target);
    QCOMPARE(fast(assigned), QString("{\"a\":{\"b\":{\"c\":1},\"d\":2}}\n"));
}

void tst_datavalue::movingAnElementCopiesIt()
{
    CDataValue root = parsed("[[1],{\"a\":2}]");
    const CDataValue first(std::move(root.arrayGet(0)));
    CDataValue second;
    second = std::move(root.arrayGet(1).mapGet("a"));
    root.arrayAppend(std::move(root.arrayGet(1)), true);
    QCOMPARE(fast(first), QString("[1]\n"));
    QCOMPARE(second.asInt(), 2);
    QCOMPARE(fast(root), QString("[[1],{\"a\":2},{\"a\":2}]\n"));
}

void tst_datavalue::movingAnAncestorCopiesIt()
{
    const auto moved = [](CDataValue& value) -> CDataValue&& { return std::move(value); };
    CDataValue root = parsed("{\"a\":{\"b\":1}}");
    root.mapGet("a").mapSet("c", moved(root), false);
    root.synchJsonData();
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":1,\"c\":{\"a\":{\"b\":1}}}}\n"));
    root = parsed("{\"a\":{\"b\":1}}");
    root.mapGet("a").mapSet(QString("b"), moved(root), true);
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":{\"a\":{\"b\":1}}}}\n"));
    root = parsed("[[1]]");
    root.arrayGet(0).arrayAppend(moved(root), true);
    QCOMPARE(fast(root), QString("[[1,[[1]]]]\n"));
    root = parsed("[[1]]");
    root.arrayGet(0) = moved(root);
    root.synchJsonData();
    QCOMPARE(fast(root), QString("[[[1]]]\n"));
    root.swap(root.arrayGet(0).arrayGet(0));
    QCOMPARE(fast(root), QString("[1]\n"));
}

void tst_datavalue::swapExchangesKindAndContent()
{
    CDataValue a = parsed("[1,2]");
    CDataValue b("text");
    a.swap(b);
    QCOMPARE(a.asQString(), QString("text"));
    QCOMPARE(fast(b), QString("[1,2]\n"));
    CDataValue address(pointer);
    b.swap(address);
    QCOMPARE(b.asAddress(), pointer);
    QCOMPARE(fast(address), QString("[1,2]\n"));
    a.swap(a);
    QCOMPARE(a.asQString(), QString("text"));

    CDataValue root = parsed("{\"a\":{\"b\":1}}");
    CDataValue other("x");
    root.mapGet("a").swap(other);
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":1}}\n")); // the mirror above is not told
    root.synchJsonData();
    QCOMPARE(fast(root), QString("{\"a\":\"x\"}\n"));
    QCOMPARE(fast(other), QString("{\"b\":1}\n"));
}

void tst_datavalue::swappedChildrenAreLinkedAgainOnRequest()
{
    CDataValue a = parsed("{\"x\":[]}");
    CDataValue b(MAP_VALUE);
    a.swap(b);
    b.mapGet("x").arrayAppend(CDataValue(1), true);
    QCOMPARE(fast(b), QString("{\"x\":[]}\n")); // the child names no parent
    b.synchPreDataPoint();
    QCOMPARE(fast(b), QString("{\"x\":[]}\n"));
    b.mapGet("x").arrayAppend(CDataValue(2), true);
    QCOMPARE(fast(b), QString("{\"x\":[1,2]}\n"));
}

void tst_datavalue::clearEmptiesContainersOnly()
{
    LogCapture log;
    CDataValue root = parsed("{\"list\":[1,2],\"map\":{\"a\":1}}");
    root.mapGet("list").clear();
    QCOMPARE(fast(root.mapGet("list")), QString("[]\n"));
    QVERIFY(root.mapGet("list").isArray());
    QCOMPARE(fast(root), QString("{\"list\":[1,2],\"map\":{\"a\":1}}\n"));
    root.clear();
    QCOMPARE(fast(root), QString("{}\n"));
    root.mapSet("a", CDataValue(1), false);
    QCOMPARE(fast(root), QString("{\"a\":1}\n"));

    CDataValue null;
    null.clear();
    QVERIFY(null.isNull());
    CDataValue addresses;
    addresses.addressMapSet("p", CDataValue(pointer));
    addresses.clear();
    QVERIFY(addresses.addressMapIsMember("p"));
    CDataValue address(pointer);
    address.clear();
    QCOMPARE(address.asAddress(), pointer);
    QCOMPARE(log.lines(), QStringList());
}

void tst_datavalue::clearLeavesScalarsAndWarns()
{
    LogCapture log;
    int warnings = 0;
    for (NamedValue& sample : oneOfEveryKind()) {
        const int kind = sample.value.type();
        if (kind < INT_VALUE || kind > BOOLEAN_VALUE)
            continue;
        const QString text = fast(sample.value);
        sample.value.clear();
        QCOMPARE(fast(sample.value), text);
        QCOMPARE(log.lines().size(), ++warnings);
        QVERIFY(log.lines().last().contains(" DataValue/datavalue clear "));
    }
    QCOMPARE(warnings, 5);
}

void tst_datavalue::missesReturnTheSharedNull()
{
    LogCapture log;
    QVERIFY(CDataValue::m_sNull.isNull());
    QVERIFY(&CDataValue::referToMemberNull() == &CDataValue::m_sNull);
    CDataValue map(MAP_VALUE);
    QVERIFY(&map.mapGet("missing") == &CDataValue::m_sNull);
    QVERIFY(map.mapGet("missing").isNull());
    QCOMPARE(log.lines(), QStringList());
}

void tst_datavalue::writingIntoTheSharedNullIsUndoneWithOneWarning()
{
    LogCapture log;
    CDataValue map(MAP_VALUE);
    map.mapGet("missing").mapSet("a", CDataValue(1), true);
    QCOMPARE(fast(CDataValue::m_sNull), QString("{\"a\":1}\n"));
    QCOMPARE(log.lines(), QStringList());
    QVERIFY(CDataValue(5).arrayGet(0).isNull());
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().first().endsWith(
        " DataValue/datavalue referToMemberNull Warning: Reference is not exists, and Use Null "
        "Value to create new Value, reset m_sNull to NULL_VALUE! "));
    QVERIFY(map.mapGet("missing").isNull());
    QCOMPARE(log.lines().size(), 1);
}

void tst_datavalue::travelsThroughQVariant()
{
    const QVariant variant = QVariant::fromValue(parsed("{\"a\":[1]}"));
    QCOMPARE(fast(variant.value<CDataValue>()), QString("{\"a\":[1]}\n"));
    CDataValue value(5);
    QCOMPARE(QVariant::fromValue(&value).value<CDataValue*>(), &value);
}

QTEST_APPLESS_MAIN(tst_datavalue)

#include "tst_datavalue.moc"
