#include "valuesamples.h"

#include "support/logcapture.h"

#include <QtTest>

#include <climits>
#include <stdexcept>

/// Ordinary maps and arrays, operation by operation.
class tst_datavaluecontainers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nullBecomesAMap();
    void mapSetReplacesAndSorts();
    void mapSetOnOtherKindsChangesNothing();
    void storingCopies();
    void mapGetWritesThroughTheReference();
    void mapMissesReturnTheSharedNull();
    void nullKeyIsTheEmptyKey();
    void keysComeInByteOrder();
    void bothKeyFormsAreAlike();
    void mapRemoveReturnsTheMemberAsShown();
    void mapRemoveOfNothingChangesNothing();
    void mapFindGoesDepthFirst();
    void mapFindReadsTheText();
    void mapFindNeedsAMap();

    void nullBecomesAnArray();
    void arrayAppendReturnsTheIndex();
    void arrayInsertMovesElementsUp();
    void arrayInsertIntoNullSynchronisesAlways();
    void arrayInsertBeyondTheEndLeavesANull();
    void arrayModifyReplaces();
    void arrayMissesReturnTheSharedNull();
    void onePastTheEndThrows();
    void elementsThatOnlyTheTextShowsThrow();
    void arrayRemoveReturnsTheElementsAsShown();
    void arrayRemoveIsClamped();
    void arrayOperationsOnOtherKindsChangeNothing();
    void wrongKindsLogNothing();
};

void tst_datavaluecontainers::nullBecomesAMap()
{
    CDataValue v(NULL_VALUE);
    CDataValue& stored = v.mapSet("a", CDataValue(1), false);
    QVERIFY(v.isObject());
    QCOMPARE(fast(v), QString("{\"a\":1}\n"));
    QVERIFY(&stored == &v.mapGet("a"));
}

void tst_datavaluecontainers::mapSetReplacesAndSorts()
{
    CDataValue map(MAP_VALUE);
    map.mapSet("b", CDataValue(1), false);
    map.mapSet("a", CDataValue(2), true);
    map.mapSet("b", CDataValue("three"), false);
    QCOMPARE(fast(map), QString("{\"a\":2,\"b\":\"three\"}\n"));
    QCOMPARE(map.getSize(), 2u);
}

void tst_datavaluecontainers::mapSetOnOtherKindsChangesNothing()
{
    for (NamedValue& sample : oneOfEveryKind()) {
        const int kind = sample.value.type();
        if (kind == NULL_VALUE || kind == MAP_VALUE || kind >= ADDRESS_VALUE)
            continue;
        const QString before = fast(sample.value);
        QVERIFY(&sample.value.mapSet("a", CDataValue(1), true) == &CDataValue::m_sNull);
        QVERIFY(&sample.value.mapSet(QString("a"), CDataValue(1), true) == &CDataValue::m_sNull);
        const CDataValue kept(1);
        QVERIFY(&sample.value.mapSet("a", kept, true) == &CDataValue::m_sNull);
        QVERIFY(CDataValue::m_sNull.isNull());
        QCOMPARE(fast(sample.value), before);
    }
}

void tst_datavaluecontainers::storingCopies()
{
    CDataValue member = parsed("[1]");
    CDataValue map(MAP_VALUE);
    map.mapSet("a", member, true);
    member.arrayAppend(CDataValue(2), true);
    QCOMPARE(fast(map), QString("{\"a\":[1]}\n"));
    QCOMPARE(fast(map.mapGet("a")), QString("[1]\n"));
}

void tst_datavaluecontainers::mapGetWritesThroughTheReference()
{
    CDataValue map = parsed("{\"a\":1}");
    map.mapGet("a") = CDataValue("changed");
    QCOMPARE(map.mapGet("a").asQString(), QString("changed"));
    QCOMPARE(fast(map), QString("{\"a\":1}\n"));
}

void tst_datavaluecontainers::mapMissesReturnTheSharedNull()
{
    CDataValue map = parsed("{\"a\":1}");
    QVERIFY(&map.mapGet("b") == &CDataValue::m_sNull);
    QVERIFY(&map.mapGet(QString("A")) == &CDataValue::m_sNull);
    QVERIFY(&CDataValue(MAP_VALUE).mapGet("a") == &CDataValue::m_sNull);
    QVERIFY(&CDataValue().mapGet("a") == &CDataValue::m_sNull);
    QVERIFY(!map.mapIsMember("b"));
    QVERIFY(!CDataValue("a").mapIsMember("a"));
    QVERIFY(CDataValue(ARRAY_VALUE).mapGetKeys().empty());

    LogCapture log;
    map.mapGet("missing") = CDataValue(5);
    QVERIFY(map.mapGet("missing").isNull());
    QCOMPARE(log.count("Warning: Reference is not exists, and Use Null Value to create new Value, "
                       "reset m_sNull to NULL_VALUE!"),
             1);
}

void tst_datavaluecontainers::nullKeyIsTheEmptyKey()
{
    const char* const none = nullptr;
    CDataValue map(MAP_VALUE);
    map.mapSet(none, CDataValue(1), false);
    QCOMPARE(fast(map), QString("{\"\":1}\n"));
    QVERIFY(map.mapIsMember(none));
    QVERIFY(map.mapIsMember(QString()));
    QCOMPARE(map.mapGet(none).asInt(), 1);
    QCOMPARE(int(map.mapFind(none).size()), 1);
    QCOMPARE(fast(map.mapRemove(none, false)), QString("{\"\":1}\n"));
    QVERIFY(map.isEmpty());
}

void tst_datavaluecontainers::keysComeInByteOrder()
{
    CDataValue map(MAP_VALUE);
    for (const char* key : {"b", "B", "a", "\xc3\xa9", "aa", ""})
        map.mapSet(key, CDataValue(), false);
    QCOMPARE(map.mapGetKeys(), (std::vector<std::string>{"", "B", "a", "aa", "b", "\xc3\xa9"}));
}

void tst_datavaluecontainers::bothKeyFormsAreAlike()
{
    const QString key = QString::fromUtf8("\xc3\xa9");
    CDataValue map(MAP_VALUE);
    map.mapSet(key, CDataValue(1), false);
    QCOMPARE(map.mapGet("\xc3\xa9").asInt(), 1);
    QVERIFY(map.mapIsMember("\xc3\xa9"));
    map.mapSet("\xc3\xa9", CDataValue(2), false);
    QCOMPARE(map.mapGet(key).asInt(), 2);
    QVERIFY(map.mapIsMember(key));
    QCOMPARE(fast(map.mapFind(key)), QString("2\n"));
    QCOMPARE(fast(map.mapRemove(key, true)), QString::fromUtf8("{\"\xc3\xa9\":2}\n"));
}

void tst_datavaluecontainers::mapRemoveReturnsTheMemberAsShown()
{
    CDataValue map = parsed("{\"k\":{\"a\":1},\"l\":2}");
    map.mapGet("k").mapSet("a", CDataValue(9), false);
    CDataValue removed = map.mapRemove("k", false);
    QCOMPARE(fast(removed), QString("{\"k\":{\"a\":1}}\n"));
    QCOMPARE(fast(map), QString("{\"l\":2}\n"));
    removed.mapGet("k").mapSet("b", CDataValue(2), true);
    QCOMPARE(fast(removed), QString("{\"k\":{\"a\":1,\"b\":2}}\n"));

    CDataValue root = parsed("{\"m\":{\"a\":1}}");
    root.mapGet("m").mapRemove("a", false);
    QCOMPARE(fast(root), QString("{\"m\":{\"a\":1}}\n"));
    root.mapGet("m").mapSet("b", CDataValue(1), false);
    root.mapGet("m").mapRemove("b", true);
    QCOMPARE(fast(root), QString("{\"m\":{}}\n"));
}

void tst_datavaluecontainers::mapRemoveOfNothingChangesNothing()
{
    CDataValue map = parsed("{\"a\":1}");
    QCOMPARE(fast(map.mapRemove("k", false)), QString("{}\n"));
    QCOMPARE(fast(map), QString("{\"a\":1}\n"));
    QCOMPARE(fast(CDataValue().mapRemove("k", true)), QString("{}\n"));
    QCOMPARE(fast(CDataValue("text").mapRemove("k", true)), QString("{}\n"));
    QCOMPARE(fast(CDataValue(ARRAY_VALUE).mapRemove("k", true)), QString("{}\n"));
}

void tst_datavaluecontainers::mapFindGoesDepthFirst()
{
    const CDataValue map =
        parsed("{\"k\":{\"k\":1},\"B\":[{\"k\":2},[{\"k\":3}],4],\"a\":{\"k\":[{\"k\":5}]}}");
    // Members in key order, a match before what is below it; the array in the array is closed.
    QCOMPARE(fast(map.mapFind("k")), QString("2\n[{\"k\":5}]\n5\n{\"k\":1}\n1\n"));
    QCOMPARE(fast(map.mapFind("none")), QString());
    QCOMPARE(fast(CDataValue(5).mapFind("k", map)), fast(map.mapFind("k")));
    std::list<CDataValue> found = map.mapFind("k");
    found.back().mapSet("x", CDataValue(1), true);
    found.front() = CDataValue(0);
    QCOMPARE(fast(map.mapFind("k")), QString("2\n[{\"k\":5}]\n5\n{\"k\":1}\n1\n"));
}

void tst_datavaluecontainers::mapFindReadsTheText()
{
    CDataValue map = parsed("{\"a\":{\"k\":1}}");
    map.mapGet("a").mapSet("k", CDataValue(2), false);
    QCOMPARE(fast(map.mapFind("k")), QString("1\n"));
    map.synchJsonData();
    QCOMPARE(fast(map.mapFind("k")), QString("2\n"));
}

void tst_datavaluecontainers::mapFindNeedsAMap()
{
    QVERIFY(parsed("[{\"k\":1}]").mapFind("k").empty());
    QVERIFY(CDataValue("k").mapFind("k").empty());
    QVERIFY(CDataValue(MAP_VALUE).mapFind("k", CDataValue(ADDRESS_MAP_VALUE)).empty());
}

void tst_datavaluecontainers::nullBecomesAnArray()
{
    CDataValue appended;
    QCOMPARE(appended.arrayAppend(CDataValue(1), false), 0u);
    QCOMPARE(fast(appended), QString("[1]\n"));
    CDataValue inserted;
    inserted.arrayInsert(7, CDataValue(1), false);
    QCOMPARE(fast(inserted), QString("[1]\n"));
    CDataValue modified;
    QVERIFY(&modified.arrayModify(0, CDataValue(1), false) == &CDataValue::m_sNull);
    QVERIFY(modified.isNull());
}

void tst_datavaluecontainers::arrayAppendReturnsTheIndex()
{
    CDataValue array(ARRAY_VALUE);
    for (unsigned int i = 0; i < 50; ++i)
        QCOMPARE(array.arrayAppend(CDataValue(i), i % 2 == 0), i);
    QCOMPARE(array.arrayCount(), 50u);
    QCOMPARE(array.arrayGet(49).asUInt(), 49u);
}

void tst_datavaluecontainers::arrayInsertMovesElementsUp()
{
    CDataValue array(ARRAY_VALUE);
    array.arrayInsert(0, CDataValue(3), false);
    array.arrayInsert(0, CDataValue(1), true);
    array.arrayInsert(1, CDataValue(2), false);
    array.arrayInsert(3, CDataValue(4), true);
    QCOMPARE(fast(array), QString("[1,2,3,4]\n"));
    QCOMPARE(array.arrayGet(2).asInt(), 3);
}

void tst_datavaluecontainers::arrayInsertIntoNullSynchronisesAlways()
{
    CDataValue root = parsed("{\"a\":null}");
    root.mapGet("a").arrayInsert(0, CDataValue(1), false);
    QCOMPARE(fast(root), QString("{\"a\":[1]}\n"));
}

void tst_datavaluecontainers::arrayInsertBeyondTheEndLeavesANull()
{
    CDataValue array = parsed("[1,2]");
    array.arrayInsert(5, CDataValue(9), false);
    QCOMPARE(array.arrayCount(), 3u);
    QCOMPARE(array.getSize(), 3u);
    QCOMPARE(fast(array), QString("[1,2,null]\n"));
    array.arrayInsert(3, CDataValue(9), true);
    QCOMPARE(fast(array), QString("[1,2,null]\n")); // of two elements, 3 is beyond the end
    QCOMPARE(array.arrayAppend(CDataValue(3), false), 2u);
    QCOMPARE(fast(array), QString("[1,2,3]\n"));
    array.arrayInsert(9, CDataValue(9), false);
    array.synchJsonData();
    QCOMPARE(fast(array), QString("[1,2,3]\n"));

    CDataValue empty(ARRAY_VALUE);
    empty.arrayInsert(1, CDataValue(9), false);
    QCOMPARE(fast(empty), QString("[null]\n"));
    QVERIFY(&empty.arrayGet(0) == &CDataValue::m_sNull);
}

void tst_datavaluecontainers::arrayModifyReplaces()
{
    CDataValue array = parsed("[1,[2],3]");
    CDataValue& element = array.arrayModify(1, parsed("{\"a\":[]}"), false);
    QVERIFY(&element == &array.arrayGet(1));
    QCOMPARE(fast(array), QString("[1,{\"a\":[]},3]\n"));
    element.mapGet("a").arrayAppend(CDataValue(1), true);
    QCOMPARE(fast(array), QString("[1,{\"a\":[1]},3]\n"));
}

void tst_datavaluecontainers::arrayMissesReturnTheSharedNull()
{
    CDataValue array = parsed("[1,2]");
    CDataValue empty(ARRAY_VALUE);
    for (const unsigned int index : {3u, 4u, UINT_MAX}) {
        QVERIFY(&array.arrayGet(index) == &CDataValue::m_sNull);
        QVERIFY(&array.arrayModify(index, CDataValue(9), true) == &CDataValue::m_sNull);
    }
    QVERIFY(&empty.arrayGet(0) == &CDataValue::m_sNull);
    QVERIFY(&empty.arrayModify(0, CDataValue(9), true) == &CDataValue::m_sNull);
    QVERIFY(&CDataValue().arrayGet(0) == &CDataValue::m_sNull);
    QVERIFY(&CDataValue(MAP_VALUE).arrayGet(0) == &CDataValue::m_sNull);
    QCOMPARE(fast(array), QString("[1,2]\n"));
    QCOMPARE(fast(empty), QString("[]\n"));
}

void tst_datavaluecontainers::onePastTheEndThrows()
{
    CDataValue array = parsed("[1,2]");
    try {
        array.arrayGet(2);
        QFAIL("arrayGet(2) returned");
    } catch (const std::out_of_range& error) {
        QCOMPARE(error.what(), "vector::_M_range_check");
    }
    QCOMPARE(fast(array), QString("[1,2]\n"));
    try {
        array.arrayModify(2, CDataValue(9), false);
        QFAIL("arrayModify(2) returned");
    } catch (const std::out_of_range& error) {
        QCOMPARE(error.what(), "vector::_M_range_check");
    }
    QCOMPARE(array.arrayGet(1).asInt(), 2);
}

void tst_datavaluecontainers::elementsThatOnlyTheTextShowsThrow()
{
    CDataValue array = parsed("[1,2]");
    array.arrayInsert(5, CDataValue(9), false);
    QVERIFY_EXCEPTION_THROWN(array.arrayGet(2), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(array.arrayGet(3), std::out_of_range);
    QVERIFY(&array.arrayGet(4) == &CDataValue::m_sNull);
}

void tst_datavaluecontainers::arrayRemoveReturnsTheElementsAsShown()
{
    CDataValue array = parsed("[[1],[2],[3],[4]]");
    array.arrayGet(1).arrayAppend(CDataValue(9), false);
    CDataValue removed = array.arrayRemove(1, 2, false);
    QCOMPARE(fast(removed), QString("[[2],[3]]\n"));
    QCOMPARE(fast(array), QString("[[1],[4]]\n"));
    QCOMPARE(fast(array.arrayGet(1)), QString("[4]\n"));
    removed.arrayGet(1).arrayAppend(CDataValue(0), true);
    QCOMPARE(fast(removed), QString("[[2],[3,0]]\n"));

    CDataValue root = parsed("{\"a\":[1,2,3]}");
    QCOMPARE(fast(root.mapGet("a").arrayRemove(0, 1, false)), QString("[1]\n"));
    QCOMPARE(fast(root), QString("{\"a\":[1,2,3]}\n"));
    QCOMPARE(fast(root.mapGet("a").arrayRemove(1, 1, true)), QString("[3]\n"));
    QCOMPARE(fast(root), QString("{\"a\":[2]}\n"));
}

void tst_datavaluecontainers::arrayRemoveIsClamped()
{
    CDataValue array = parsed("[1,2,3]");
    for (const int count : {0, -1, INT_MIN})
        QCOMPARE(fast(array.arrayRemove(0, count, false)), QString("[]\n"));
    for (const unsigned int index : {3u, 4u, UINT_MAX})
        QCOMPARE(fast(array.arrayRemove(index, 1, false)), QString("[]\n"));
    QCOMPARE(fast(array.arrayRemove(1, INT_MAX, false)), QString("[2,3]\n"));
    QCOMPARE(fast(array), QString("[1]\n"));

    array.arrayInsert(9, CDataValue(), false);
    QCOMPARE(fast(array.arrayRemove(0, 2, false)), QString("[1]\n"));
    QCOMPARE(fast(array), QString("[null]\n")); // the text loses exactly what the list lost
}

void tst_datavaluecontainers::arrayOperationsOnOtherKindsChangeNothing()
{
    for (NamedValue& sample : oneOfEveryKind()) {
        const int kind = sample.value.type();
        if (kind == NULL_VALUE || kind == ARRAY_VALUE || kind >= ADDRESS_VALUE)
            continue;
        const QString before = fast(sample.value);
        QCOMPARE(sample.value.arrayAppend(CDataValue(1), true), 0u);
        sample.value.arrayInsert(0, CDataValue(1), true);
        QVERIFY(&sample.value.arrayModify(0, CDataValue(1), true) == &CDataValue::m_sNull);
        QCOMPARE(fast(sample.value.arrayRemove(0, 1, true)), QString("[]\n"));
        QCOMPARE(sample.value.arrayCount(), 0u);
        QCOMPARE(fast(sample.value), before);
    }
}

void tst_datavaluecontainers::wrongKindsLogNothing()
{
    LogCapture log;
    CDataValue text("x");
    text.mapSet("a", CDataValue(1), true);
    text.arrayAppend(CDataValue(1), true);
    text.mapGet("a");
    text.arrayGet(0);
    text.mapRemove("a", true);
    text.addressMapSet("a", CDataValue(1));
    text.addressArrayGet(0);
    QCOMPARE(text.asQString(), QString("x"));
    QCOMPARE(log.lines(), QStringList());
}

QTEST_APPLESS_MAIN(tst_datavaluecontainers)

#include "tst_datavaluecontainers.moc"
