#include "valuesamples.h"

#include <QtTest>

#include <memory>
#include <thread>

/// Copies share what they have in common; nobody can tell.
class tst_datavaluesharing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copyKeepsItsContentWhenTheSourceChanges_data();
    void copyKeepsItsContentWhenTheSourceChanges();
    void sourceKeepsItsContentWhenTheCopyChanges();
    void laterCopiesSeeEarlierChanges();
    void referencesOutliveCopyingAndChanging();
    void partOutlivesTheWhole_data();
    void partOutlivesTheWhole();
    void copyOfAStaleValueIsStale();
    void copyShowsTheNullBeyondTheEnd();
    void copyOfACopyIsInStep();
    void commentsAreCopied();
    void commentsDeepInsideAreCopiedAndRemoved();
    void addressesAreNotShared();
    void membersOfACopyAreFound();
    void sharedValuesAreEqual();
    void emptyContainersStaySo();
    void copiesMayLiveInOtherThreads();
    void deepTreesAreCopiedAndChanged();
};

namespace {

/// A tree whose children are values of their own: each was handed out.
CDataValue built()
{
    CDataValue root(MAP_VALUE);
    CDataValue& list = root.mapSet("list", CDataValue(ARRAY_VALUE), true);
    for (int i = 0; i < 3; ++i)
        list.arrayAppend(parsed("{\"n\":1,\"text\":\"a text longer than any short one\"}"), true);
    root.mapSet("z", CDataValue(2.5), true);
    return root;
}

constexpr char kBuilt[] = "{\"list\":[{\"n\":1,\"text\":\"a text longer than any short one\"},"
                          "{\"n\":1,\"text\":\"a text longer than any short one\"},"
                          "{\"n\":1,\"text\":\"a text longer than any short one\"}],\"z\":2.5}\n";

CDataValue& listOf(CDataValue& root)
{
    return root.mapGet("list");
}

/// One of nine changes, from 0 on.
void changeRoot(CDataValue& root, int change)
{
    CDataValue& list = listOf(root);
    switch (change) {
    case 0:
        root.mapSet("new", CDataValue(1), true);
        break;
    case 1:
        root.mapRemove("list", false);
        break;
    case 2:
        root.clear();
        break;
    case 3:
        list.arrayGet(1).mapSet("n", CDataValue(7), true);
        break;
    case 4:
        list.arrayGet(1).mapGet("n") = CDataValue(7);
        break;
    case 5:
        list.arrayModify(0, CDataValue("x"), true);
        break;
    case 6:
        list.arrayInsert(1, CDataValue(), false);
        break;
    case 7:
        list.arrayRemove(0, 2, true);
        break;
    default: {
        CDataValue other("y");
        list.arrayGet(2).swap(other);
        root.synchJsonData();
    }
    }
}

} // namespace

void tst_datavaluesharing::copyKeepsItsContentWhenTheSourceChanges_data()
{
    QTest::addColumn<bool>("isParsed");
    QTest::addColumn<int>("change");
    for (const bool isParsed : {false, true}) {
        for (int change = 0; change < 9; ++change)
            QTest::addRow("%s, change %d", isParsed ? "parsed" : "built", change)
                << isParsed << change;
    }
}

void tst_datavaluesharing::copyKeepsItsContentWhenTheSourceChanges()
{
    QFETCH(bool, isParsed);
    QFETCH(int, change);
    CDataValue root = isParsed ? parsed(kBuilt) : built();
    const CDataValue before(root);
    const CDataValue again(root);
    changeRoot(root, change);
    QCOMPARE(fast(before), QString(kBuilt));
    QCOMPARE(fast(again), QString(kBuilt));
    root.synchJsonData();
    QVERIFY(fast(root) != QString(kBuilt));
    const CDataValue after(root);
    QCOMPARE(fast(after), fast(root));
}

void tst_datavaluesharing::sourceKeepsItsContentWhenTheCopyChanges()
{
    for (const CDataValue& source : {built(), parsed(kBuilt)}) {
        CDataValue copy(source);
        listOf(copy).arrayGet(0).mapSet("n", CDataValue(7), true);
        copy.mapSet("z", CDataValue(0), true);
        CDataValue third(copy);
        third.mapRemove("list", true);
        QCOMPARE(fast(source), QString(kBuilt));
        QVERIFY(fast(copy).startsWith("{\"list\":[{\"n\":7,"));
        QCOMPARE(fast(third), QString("{\"z\":0}\n"));
    }
}

void tst_datavaluesharing::laterCopiesSeeEarlierChanges()
{
    CDataValue root = built();
    CDataValue& deep = listOf(root).arrayGet(2).mapGet("n");
    for (int i = 0; i < 3; ++i) {
        deep = CDataValue(100 + i);
        root.synchJsonData();
        CDataValue copy(root);
        QCOMPARE(listOf(copy).arrayGet(2).mapGet("n").asInt(), 100 + i);
        listOf(root).arrayGet(0).mapSet("n", CDataValue(i), true);
        QVERIFY(fast(CDataValue(root)).startsWith(QString("{\"list\":[{\"n\":%1,").arg(i)));
    }
}

void tst_datavaluesharing::referencesOutliveCopyingAndChanging()
{
    CDataValue root = parsed(kBuilt);
    CDataValue& inner = listOf(root).arrayGet(1);
    CDataValue& number = inner.mapGet("n");
    const CDataValue copy(root);
    QCOMPARE(&listOf(root).arrayGet(1), &inner);
    QCOMPARE(&inner.mapGet("n"), &number);
    number = CDataValue(9);
    QCOMPARE(fast(inner), QString("{\"n\":1,\"text\":\"a text longer than any short one\"}\n"));
    inner.synPreDataValue(&inner);
    QCOMPARE(fast(inner), QString("{\"n\":9,\"text\":\"a text longer than any short one\"}\n"));
    QVERIFY(fast(root).contains("\"n\":9"));
    QCOMPARE(fast(copy), QString(kBuilt));
}

void tst_datavaluesharing::partOutlivesTheWhole_data()
{
    QTest::addColumn<int>("siblings");
    QTest::newRow("half of the whole") << 1;
    QTest::newRow("a small part of it") << 1000;
}

void tst_datavaluesharing::partOutlivesTheWhole()
{
    QFETCH(int, siblings);
    CDataValue part;
    {
        CDataValue list(ARRAY_VALUE);
        for (int i = 0; i <= siblings; ++i)
            list.arrayAppend(parsed("{\"key\":[\"a text longer than any short one\",1,null]}"),
                             false);
        CDataValue whole = parsed(fast(list).toUtf8().constData());
        part = whole.arrayGet(1);
        const CDataValue taken(std::move(whole.arrayGet(0)));
        QCOMPARE(fast(whole.arrayGet(0)), fast(taken)); // an element is copied, not emptied
    }
    QCOMPARE(fast(part), QString("{\"key\":[\"a text longer than any short one\",1,null]}\n"));
    part.mapGet("key").arrayAppend(CDataValue(2), true);
    QCOMPARE(fast(part), QString("{\"key\":[\"a text longer than any short one\",1,null,2]}\n"));
}

void tst_datavaluesharing::copyOfAStaleValueIsStale()
{
    CDataValue root = parsed("{\"a\":{\"b\":1}}");
    const CDataValue before(root);
    root.mapGet("a").mapSet("b", CDataValue(2), false);
    CDataValue stale(root);
    QCOMPARE(fast(stale), QString("{\"a\":{\"b\":1}}\n"));
    QCOMPARE(fast(stale.mapGet("a")), QString("{\"b\":2}\n"));
    stale.synchJsonData();
    QCOMPARE(fast(stale), QString("{\"a\":{\"b\":2}}\n"));
    QCOMPARE(fast(root), QString("{\"a\":{\"b\":1}}\n"));
    QCOMPARE(fast(before), QString("{\"a\":{\"b\":1}}\n"));
}

void tst_datavaluesharing::copyShowsTheNullBeyondTheEnd()
{
    CDataValue list = parsed("[1]");
    list.arrayInsert(4, CDataValue(2), false);
    QCOMPARE(fast(CDataValue(list)), QString("[1,null]\n"));
    CDataValue outer(ARRAY_VALUE);
    outer.arrayAppend(list, false);
    QCOMPARE(fast(CDataValue(outer)), QString("[[1,null]]\n"));
}

void tst_datavaluesharing::copyOfACopyIsInStep()
{
    CDataValue root = parsed("{\"a\":{\"b\":{\"c\":1}}}");
    const CDataValue first(root);
    CDataValue second(first);
    second.mapGet("a").mapGet("b").mapSet("c", CDataValue(2), true); // parents are all there
    QCOMPARE(fast(second), QString("{\"a\":{\"b\":{\"c\":2}}}\n"));
    QCOMPARE(fast(first), QString("{\"a\":{\"b\":{\"c\":1}}}\n"));
}

void tst_datavaluesharing::commentsAreCopied()
{
    const CDataValue commented = parsed("{\"a\": // why\n [1, 2]}");
    CDataValue plain = parsed("{\"b\":[]}");
    plain.mapSet("c", commented, true);
    const CDataValue copy(plain);
    const QString styled = copy.parseToQString(STYLED_STYLE);
    QVERIFY2(styled.contains("// why"), qPrintable(styled));
    QCOMPARE(styled, plain.parseToQString(STYLED_STYLE));
}

void tst_datavaluesharing::commentsDeepInsideAreCopiedAndRemoved()
{
    CDataValue root = parsed("{\"a\":[[1],[{\"b\":[2, 3 // three\n]}]],\"z\":{}}");
    for (int i = 0; i < 2; ++i) { // the source is as it was after a copy
        const CDataValue copy(root);
        QVERIFY(copy.parseToQString(STYLED_STYLE).contains("// three"));
        QCOMPARE(fast(copy), QString("{\"a\":[[1],[{\"b\":[2,3]}]],\"z\":{}}\n"));
    }
    root.mapGet("a").arrayGet(1).arrayGet(0).mapSet("b", CDataValue(4), true);
    CDataValue copy(root);
    root.mapGet("a").arrayGet(1).arrayGet(0).mapSet("b", CDataValue(5), true);
    QCOMPARE(fast(copy), QString("{\"a\":[[1],[{\"b\":4}]],\"z\":{}}\n"));
    QCOMPARE(fast(CDataValue(root)), QString("{\"a\":[[1],[{\"b\":5}]],\"z\":{}}\n"));
}

void tst_datavaluesharing::addressesAreNotShared()
{
    int object = 0;
    CDataValue list = parsed("[[1],[2]]");
    const CDataValue before(list);
    CDataValue addresses(ADDRESS_MAP_VALUE);
    addresses.addressMapSet("list", list);
    addresses.addressMapSet("p", CDataValue(static_cast<const void*>(&object)));
    CDataValue copy(addresses);
    copy.addressMapGet("list").arrayAppend(CDataValue(3), true);
    QCOMPARE(copy.addressMapGet("p").asAddress(), static_cast<const void*>(&object));
    QCOMPARE(fast(copy.addressMapGet("list")), QString("[[1],[2],3]\n"));
    QCOMPARE(fast(addresses.addressMapGet("list")), QString("[[1],[2]]\n"));
    // A null in a copied list becomes an address container: the copy holds an address from then on.
    CDataValue holder = parsed("[null]");
    const CDataValue shared(holder);
    holder.arrayGet(0).addressMapSet("p", CDataValue(static_cast<const void*>(&object)));
    QVERIFY(holder.isHasAddressType());
    QVERIFY(!shared.isHasAddressType());
    QVERIFY(CDataValue(holder).isHasAddressType());
}

void tst_datavaluesharing::membersOfACopyAreFound()
{
    QString text = "{";
    for (int i = 100; i < 140; ++i)
        text += QString("%1\"k%2\":%2").arg(i == 100 ? "" : ",").arg(i);
    const CDataValue wide = parsed((text + '}').toUtf8().constData());
    const CDataValue narrow = parsed("{\"\":0,\"a\":{\"b\":1},\"ab\":2}");
    QVERIFY(wide.mapIsMember("k100") && wide.mapIsMember("k139") && !wide.mapIsMember("k14"));
    QVERIFY(narrow.mapIsMember("") && narrow.mapIsMember("a") && narrow.mapIsMember("ab"));
    QVERIFY(!narrow.mapIsMember("b") && !narrow.mapIsMember("abc"));
    QCOMPARE(narrow.mapGetKeys(), (std::vector<std::string>{"", "a", "ab"}));
    QVERIFY(!parsed("[\"a\",1]").mapIsMember("a")); // an array has no members
}

void tst_datavaluesharing::sharedValuesAreEqual()
{
    const CDataValue packed = parsed(kBuilt);
    QVERIFY(packed.isEqual(CDataValue(packed)));
    QVERIFY(packed.isEqual(parsed(kBuilt)));
    QVERIFY(packed.isEqual(built()));
    QVERIFY(built().isEqual(packed));
    for (const char* other :
         {"{\"a\":1}", "{\"a\":\"1\"}", "{\"a\":1.0}", "{\"b\":1}", "{\"a\":[1]}", "{\"a\":[]}",
          "{\"a\":{}}", "{\"a\":true}", "{\"a\":false}", "{\"a\":null}", "{\"a\":4000000000}",
          "{\"a\":[[],1]}", "{\"a\":[[1]]}", "[1]", "{}"}) {
        for (const char* one : {"{\"a\":2}", "{\"a\":\"2\"}", "{\"a\":[[1],1]}", "{\"a\":[[],[]]}"})
            QVERIFY2(!parsed(one).isEqual(parsed(other)), other);
        QVERIFY2(parsed(other).isEqual(parsed(other)), other);
    }
}

void tst_datavaluesharing::emptyContainersStaySo()
{
    for (const char* text : {"[]", "{}", "[[],{}]", "{\"a\":{},\"b\":[]}"}) {
        CDataValue value = parsed(text);
        CDataValue copy(value);
        value.clear();
        QCOMPARE(value.getSize(), 0U);
        QVERIFY(value.isEmpty());
        QCOMPARE(fast(copy), QString(text) + '\n');
        copy = CDataValue();
        QVERIFY(copy.isNull());
    }
}

void tst_datavaluesharing::copiesMayLiveInOtherThreads()
{
    auto source = std::make_unique<CDataValue>(parsed(kBuilt));
    std::vector<std::thread> threads;
    std::vector<QString> texts(4);
    for (QString& text : texts) {
        threads.emplace_back([copy = CDataValue(*source), &text]() mutable {
            for (int i = 0; i < 200; ++i) {
                CDataValue mine(copy);
                listOf(mine).arrayGet(0).mapSet("n", CDataValue(i), true);
                copy = CDataValue(std::as_const(mine));
            }
            text = fast(copy);
        });
    }
    source.reset();
    for (std::thread& thread : threads)
        thread.join();
    for (const QString& text : texts)
        QVERIFY2(text.startsWith("{\"list\":[{\"n\":199,"), qPrintable(text));
}

void tst_datavaluesharing::deepTreesAreCopiedAndChanged()
{
    constexpr int kDepth = 20000;
    CDataValue value(1);
    for (int i = 0; i < kDepth; ++i) {
        CDataValue outer(ARRAY_VALUE);
        outer.arrayAppend(std::move(value), false);
        value = std::move(outer);
    }
    const CDataValue copy(value);
    CDataValue* inner = &value;
    while (inner->isArray())
        inner = &inner->arrayGet(0);
    *inner = CDataValue(2);
    value.synchJsonData();
    QCOMPARE(fast(copy), QString(kDepth, '[') + '1' + QString(kDepth, ']') + '\n');
    QCOMPARE(fast(CDataValue(value)), QString(kDepth, '[') + '2' + QString(kDepth, ']') + '\n');
    QVERIFY(!copy.isEqual(value));
}

QTEST_APPLESS_MAIN(tst_datavaluesharing)
#include "tst_datavaluesharing.moc"
