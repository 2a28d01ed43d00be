#include "valuesamples.h"

#include "support/childprocess.h"

#include <QRegularExpression>
#include <QtTest>

#include <climits>

/// Address containers, and the assertions that keep addresses out of the ordinary ones.
class tst_datavalueaddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nullBecomesAnAddressContainer();
    void mapHoldsValuesOfEveryKind();
    void mapIsListedAndRemovedByKey();
    void mapMissesReturnTheSharedNull();
    void findSearchesOrdinaryContainersBelow();
    void arrayIsReachedAtIndexZeroOnly();
    void arrayAppendReturnsAllOnesFromTheSecondOn();
    void arrayInsertsAndRemovesInFront();
    void neverHasText();
    void tellsWhetherAnAddressIsBelow();
    void storedChildrenNameNoParent();
    void assignmentLinksTheChildren();

    void mixingEndsTheProcess_data();
    void mixingEndsTheProcess();
    void addressOperationsDoNotAssert();
};

void tst_datavalueaddress::nullBecomesAnAddressContainer()
{
    CDataValue map;
    CDataValue& stored = map.addressMapSet("p", CDataValue(pointer));
    QCOMPARE(map.type(), ADDRESS_MAP_VALUE);
    QVERIFY(&stored == &map.addressMapGet("p"));
    CDataValue appended;
    QCOMPARE(appended.addressArrayAppend(CDataValue(pointer)), 0u);
    QCOMPARE(appended.type(), ADDRESS_ARRAY_VALUE);
    CDataValue inserted;
    inserted.addressArrayInsert(9, CDataValue(pointer));
    QCOMPARE(inserted.type(), ADDRESS_ARRAY_VALUE);
    QCOMPARE(inserted.addressArrayGet(0).asAddress(), pointer);
}

void tst_datavalueaddress::mapHoldsValuesOfEveryKind()
{
    CDataValue map(ADDRESS_MAP_VALUE);
    for (const NamedValue& sample : oneOfEveryKind())
        map.addressMapSet(sample.name, sample.value);
    for (const NamedValue& sample : oneOfEveryKind())
        QCOMPARE(int(map.addressMapGet(sample.name).type()), int(sample.value.type()));
    QCOMPARE(map.addressMapGet("address").asAddress(), pointer);
    const CDataValue copy(map);
    QCOMPARE(copy.addressMapGetKeys(), map.addressMapGetKeys());
}

void tst_datavalueaddress::mapIsListedAndRemovedByKey()
{
    CDataValue map;
    for (const char* key : {"b", "B", "a"})
        map.addressMapSet(key, CDataValue(pointer));
    map.addressMapSet(QString("a"), CDataValue(1));
    QCOMPARE(map.addressMapGetKeys(), (std::vector<std::string>{"B", "a", "b"}));
    QVERIFY(map.addressMapIsMember(QString("B")));
    map.addressMapRemove("B");
    map.addressMapRemove("B");
    map.addressMapRemove(QString("b"));
    QVERIFY(!map.addressMapIsMember("B"));
    QCOMPARE(map.addressMapGetKeys(), std::vector<std::string>{"a"});
    const char* const none = nullptr;
    map.addressMapSet(none, CDataValue(2));
    QCOMPARE(map.addressMapGet("").asInt(), 2);
}

void tst_datavalueaddress::mapMissesReturnTheSharedNull()
{
    CDataValue map;
    map.addressMapSet("p", CDataValue(pointer));
    QVERIFY(&map.addressMapGet("q") == &CDataValue::m_sNull);
    QVERIFY(&CDataValue().addressMapGet("p") == &CDataValue::m_sNull);
    for (NamedValue& sample : oneOfEveryKind()) {
        const int kind = sample.value.type();
        if (kind == NULL_VALUE || kind == ADDRESS_MAP_VALUE)
            continue;
        const QString before = fast(sample.value);
        QVERIFY(&sample.value.addressMapSet("p", CDataValue(1)) == &CDataValue::m_sNull);
        QVERIFY(&sample.value.addressMapGet("p") == &CDataValue::m_sNull);
        QVERIFY(!sample.value.addressMapIsMember("p"));
        QVERIFY(sample.value.addressMapGetKeys().empty());
        sample.value.addressMapRemove("p");
        QCOMPARE(int(sample.value.type()), kind);
        QCOMPARE(fast(sample.value), before);
    }
}

void tst_datavalueaddress::findSearchesOrdinaryContainersBelow()
{
    CDataValue map;
    map.addressMapSet("k", parsed("{\"k\":1}"));
    map.addressMapSet("a", parsed("[{\"k\":2},[{\"k\":3}]]"));
    CDataValue closed;
    closed.addressMapSet("k", CDataValue(4));
    map.addressMapSet("z", closed);
    QCOMPARE(fast(map.addressMapFind("k")), QString("2\n{\"k\":1}\n1\n"));
    QCOMPARE(fast(CDataValue().addressMapFind(QString("k"), map)), QString("2\n{\"k\":1}\n1\n"));
    QVERIFY(map.addressMapFind("k", parsed("{\"k\":1}")).empty());
    QVERIFY(CDataValue(1).addressMapFind("k").empty());
}

void tst_datavalueaddress::arrayIsReachedAtIndexZeroOnly()
{
    CDataValue array;
    for (int i = 1; i <= 3; ++i)
        array.addressArrayAppend(CDataValue(i));
    QCOMPARE(array.addressArrayCount(), 0u);
    QCOMPARE(array.addressArrayGet(0).asInt(), 1);
    for (const unsigned int index : {1u, 2u, 3u, UINT_MAX}) {
        QVERIFY(&array.addressArrayGet(index) == &CDataValue::m_sNull);
        QVERIFY(&array.addressArrayModify(index, CDataValue(9)) == &CDataValue::m_sNull);
    }
    QCOMPARE(array.addressArrayModify(0, CDataValue(pointer)).asAddress(), pointer);
    QCOMPARE(array.addressArrayGet(0).asAddress(), pointer);
    CDataValue empty(ADDRESS_ARRAY_VALUE);
    QVERIFY(&empty.addressArrayGet(0) == &CDataValue::m_sNull);
    QVERIFY(&empty.addressArrayModify(0, CDataValue(1)) == &CDataValue::m_sNull);
    QVERIFY(&CDataValue(5).addressArrayGet(0) == &CDataValue::m_sNull);
}

void tst_datavalueaddress::arrayAppendReturnsAllOnesFromTheSecondOn()
{
    CDataValue array(ADDRESS_ARRAY_VALUE);
    QCOMPARE(array.addressArrayAppend(CDataValue(pointer)), 0u);
    QCOMPARE(array.addressArrayAppend(CDataValue(pointer)), 4294967295u);
    QCOMPARE(array.addressArrayAppend(CDataValue(pointer)), 4294967295u);
    QCOMPARE(CDataValue(5).addressArrayAppend(CDataValue(pointer)), 0u);
}

void tst_datavalueaddress::arrayInsertsAndRemovesInFront()
{
    CDataValue array(ADDRESS_ARRAY_VALUE);
    array.addressArrayInsert(0, CDataValue(3));
    array.addressArrayInsert(0, CDataValue(2));
    array.addressArrayInsert(1, CDataValue(9)); // beyond the count of 0
    array.addressArrayInsert(0, CDataValue(1));
    array.addressArrayRemove(1, 1);
    array.addressArrayRemove(0, 0);
    array.addressArrayRemove(0, -1);
    for (int expected = 1; expected <= 3; ++expected) {
        QCOMPARE(array.addressArrayGet(0).asInt(), expected);
        array.addressArrayRemove(0, 1);
    }
    QVERIFY(array.addressArrayGet(0).isNull());
    array.addressArrayAppend(CDataValue(1));
    array.addressArrayAppend(CDataValue(2));
    array.addressArrayRemove(0, INT_MAX);
    QCOMPARE(array.addressArrayAppend(CDataValue(3)), 0u);
}

void tst_datavalueaddress::neverHasText()
{
    CDataValue map;
    map.addressMapSet("n", CDataValue(5));
    QCOMPARE(fast(map), QString("null\n"));
    QCOMPARE(map.parseToQString(STYLED_STYLE), QString("null\n"));
    QCOMPARE(map.getSize(), 0u);
    QVERIFY(map.isEmpty());
    QVERIFY(map.isEqual(CDataValue(NULL_VALUE)));

    CDataValue root = parsed("{\"a\":1}");
    root.mapGet("a") = map;
    QCOMPARE(fast(root), QString("{\"a\":1}\n"));
    root.synchJsonData();
    QCOMPARE(fast(root), QString("{\"a\":null}\n"));
}

void tst_datavalueaddress::tellsWhetherAnAddressIsBelow()
{
    CDataValue root = parsed("{\"a\":[{\"b\":null}]}");
    QVERIFY(!root.isHasAddressType());
    CDataValue& b = root.mapGet("a").arrayGet(0).mapGet("b");
    b = CDataValue(pointer);
    QVERIFY(root.isHasAddressType());
    QVERIFY(CDataValue(root).isHasAddressType());
    b = CDataValue(5);
    QVERIFY(!root.isHasAddressType());
    b = CDataValue(NULL_VALUE);
    b.addressArrayAppend(CDataValue(1));
    QVERIFY(root.isHasAddressType());
    root.clear();
    QVERIFY(!root.isHasAddressType());
}

void tst_datavalueaddress::storedChildrenNameNoParent()
{
    CDataValue map;
    map.addressMapSet("list", parsed("[[]]"));
    CDataValue& list = map.addressMapGet("list");
    list.arrayGet(0).arrayAppend(CDataValue(1), true);
    QCOMPARE(fast(list), QString("[[1]]\n"));
}

void tst_datavalueaddress::assignmentLinksTheChildren()
{
    CDataValue root = parsed("{\"a\":null,\"list\":[]}");
    CDataValue& a = root.mapGet("a");
    root.mapGet("list").arrayAppend(CDataValue(1), false);
    a.addressMapSet("m", CDataValue(MAP_VALUE)).mapSet("x", CDataValue(1), true);
    QCOMPARE(fast(root), QString("{\"a\":null,\"list\":[]}\n"));
    const CDataValue copy(a);
    a = copy;
    a.addressMapGet("m").mapSet("x", CDataValue(2), true);
    QCOMPARE(fast(root), QString("{\"a\":null,\"list\":[1]}\n"));
}

void tst_datavalueaddress::mixingEndsTheProcess_data()
{
    QTest::addColumn<QString>("condition");
    const QString self = QStringLiteral("!bIsHasAddressType");
    const QString both = QStringLiteral("!bIsHasAddressType && !newElement.isHasAddressType()");
    for (const char* scenario :
         {"mapSet", "mapSetQString", "mapSetMoved", "mapSetBelow", "mapSetOnAddress", "arrayAppend",
          "arrayAppendMoved", "arrayAppendOnNull", "arrayInsert", "arrayModify"})
        QTest::newRow(scenario) << both;
    for (const char* scenario :
         {"mapGet", "mapIsMember", "mapGetKeys", "mapRemove", "mapFind", "mapFindNode", "arrayGet",
          "arrayCount", "arrayRemove", "mapGetBelow"})
        QTest::newRow(scenario) << self;
}

void tst_datavalueaddress::mixingEndsTheProcess()
{
    QFETCH(QString, condition);
    const auto result =
        ChildProcess::run(HELPER_VALUEASSERTIONS, {QString::fromLatin1(QTest::currentDataTag())});
    QCOMPARE(result.code, ChildProcess::kCrashed);
    const QString message = QString::fromUtf8(result.err);
    const QRegularExpression expected("ASSERT: \"" + QRegularExpression::escape(condition) +
                                      "\" in DataValue/datavalue, line [1-9][0-9]*");
    QVERIFY2(expected.match(message).hasMatch(), qPrintable(message));
}

void tst_datavalueaddress::addressOperationsDoNotAssert()
{
    QCOMPARE(ChildProcess::run(HELPER_VALUEASSERTIONS, {"addressArrayAppend"}).code, 0);
}

QTEST_GUILESS_MAIN(tst_datavalueaddress)

#include "tst_datavalueaddress.moc"
