#include "valuesamples.h"

#include <QtTest>

/// When a change reaches the text of which container.
class tst_datavaluesynchronising : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void childChangesStayBelowUntilSynchronised();
    void flagReachesAllAncestors();
    void storedChildrenAreCompleteCopies();
    void referencesSurviveGrowingArrays();
    void valueMayComeFromTheSameTree();
    void synchJsonDataReachesDownNotUp();
    void synchPreDataPointLeavesItsOwnText();
    void synPreDataValueWalksUpwards();
    void dataValueFindReadsTheChildren();
};

void tst_datavaluesynchronising::childChangesStayBelowUntilSynchronised()
{
    CDataValue root = parsed("{\"a\":{\"b\":1},\"z\":[]}");
    root.mapGet("a").mapSet("b", CDataValue(2), false);
    root.mapGet("a").mapSet("c", CDataValue(3), false);
    QCOMPARE(fast(root.mapGet("a")), QString("{\"b\":2,\"c\":3}\n"));
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":1},\"z\":[]}\n"));
    root.mapSet("d", CDataValue(4), false);
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":1},\"d\":4,\"z\":[]}\n"));
    root.mapGet("z").arrayAppend(CDataValue(5), true); // any later operation with the flag
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":2,\"c\":3},\"d\":4,\"z\":[5]}\n"));
}

void tst_datavaluesynchronising::flagReachesAllAncestors()
{
    CDataValue root = parsed("{\"a\":[{\"b\":[0]}]}");
    CDataValue& b = root.mapGet("a").arrayGet(0).mapGet("b");
    b.arrayModify(0, CDataValue(1), true);
    QCOMPARE(fast(root), QString("{\"a\":[{\"b\":[1]}]}\n"));
    b.arrayInsert(0, CDataValue(2), true);
    QCOMPARE(fast(root), QString("{\"a\":[{\"b\":[2,1]}]}\n"));
    b.arrayRemove(1, 1, true);
    QCOMPARE(fast(root), QString("{\"a\":[{\"b\":[2]}]}\n"));
    root.mapGet("a").arrayGet(0).mapRemove("b", true);
    QCOMPARE(fast(root), QString("{\"a\":[{}]}\n"));
}

void tst_datavaluesynchronising::storedChildrenAreCompleteCopies()
{
    CDataValue child = parsed("{\"x\":[]}");
    child.mapGet("x").arrayAppend(CDataValue(1), false);
    CDataValue root(MAP_VALUE);
    root.mapSet("stale", child, false);
    QCOMPARE(fast(root), QString("{\"stale\":{\"x\":[]}}\n")); // the copy carries its text along
    child.synchJsonData();
    root.mapSet("complete", child, false);
    QCOMPARE(fast(root), QString("{\"complete\":{\"x\":[1]},\"stale\":{\"x\":[]}}\n"));
}

void tst_datavaluesynchronising::referencesSurviveGrowingArrays()
{
    CDataValue array(ARRAY_VALUE);
    for (int i = 0; i < 100; ++i) {
        array.arrayAppend(CDataValue(MAP_VALUE), false);
        array.arrayGet(0).mapSet("n", CDataValue(i), i % 3 == 0);
    }
    array.arrayGet(99).mapSet("x", CDataValue(1), true);
    QCOMPARE(array.arrayGet(0).mapGet("n").asInt(), 99);
    QVERIFY(fast(array).startsWith("[{\"n\":99},{}"));
    QVERIFY(fast(array).endsWith("{},{\"x\":1}]\n"));
}

void tst_datavaluesynchronising::valueMayComeFromTheSameTree()
{
    CDataValue map = parsed("{\"a\":[1]}");
    map.mapSet("self", map, false);
    QCOMPARE(fast(map), QString("{\"a\":[1],\"self\":{\"a\":[1]}}\n"));
    map.mapSet("a", map.mapGet("self"), true);
    QCOMPARE(fast(map), QString("{\"a\":{\"a\":[1]},\"self\":{\"a\":[1]}}\n"));

    CDataValue array = parsed("[1]");
    for (int i = 0; i < 20; ++i)
        array.arrayAppend(array.arrayGet(0), false);
    array.arrayAppend(array, false);
    QCOMPARE(array.arrayCount(), 22u);
    QCOMPARE(array.arrayGet(21).arrayCount(), 21u);
    array.arrayModify(0, array.arrayGet(21), true);
    QCOMPARE(array.arrayGet(0).arrayCount(), 21u);

    CDataValue null;
    null.mapSet("a", null, false);
    QCOMPARE(fast(null), QString("{\"a\":null}\n"));
}

void tst_datavaluesynchronising::synchJsonDataReachesDownNotUp()
{
    CDataValue root = parsed("{\"a\":{\"b\":{\"c\":[]}}}");
    CDataValue& a = root.mapGet("a");
    a.mapGet("b").mapGet("c").arrayAppend(CDataValue(1), false);
    a.synchJsonData();
    QCOMPARE(fast(a), QString("{\"b\":{\"c\":[1]}}\n"));
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":{\"c\":[]}}}\n"));
    root.synchJsonData();
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":{\"c\":[1]}}}\n"));
    CDataValue scalar(5);
    scalar.synchJsonData();
    QCOMPARE(scalar.asInt(), 5);
}

void tst_datavaluesynchronising::synchPreDataPointLeavesItsOwnText()
{
    CDataValue root = parsed("{\"a\":{\"b\":[]}}");
    root.mapGet("a").mapGet("b").arrayAppend(CDataValue(1), false);
    root.synchPreDataPoint();
    QCOMPARE(fast(root.mapGet("a")), QString("{\"b\":[1]}\n"));
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":[]}}\n"));
}

void tst_datavaluesynchronising::synPreDataValueWalksUpwards()
{
    CDataValue root = parsed("{\"a\":{\"b\":[]},\"z\":[]}");
    CDataValue& b = root.mapGet("a").mapGet("b");
    b.arrayAppend(CDataValue(1), false);
    root.mapGet("z").arrayAppend(CDataValue(2), false);
    CDataValue unrelated;
    unrelated.synPreDataValue(&root.mapGet("a"));
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":[1]},\"z\":[2]}\n"));
    unrelated.synPreDataValue(nullptr);
}

void tst_datavaluesynchronising::dataValueFindReadsTheChildren()
{
    CDataValue map = parsed("{\"a\":{\"k\":1}}");
    map.mapGet("a").mapSet("k", CDataValue(2), false);
    std::list<CDataValue> found{CDataValue(0)};
    CDataValue().dataValueFind("k", map, &found);
    QCOMPARE(fast(found), QString("0\n2\n"));
    const CDataValue array = parsed("[{\"k\":3},[{\"k\":4}]]");
    map.dataValueFind("k", array, &found);
    QCOMPARE(fast(found), QString("0\n2\n3\n"));
}

QTEST_APPLESS_MAIN(tst_datavaluesynchronising)

#include "tst_datavaluesynchronising.moc"
