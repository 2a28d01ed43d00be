#include "valuesamples.h"

#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

/// Runs the work in a thread with the system's usual stack, which a recursion over the trees of
/// these tests would exhaust.
void inThread(const std::function<void()>& work)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->start();
    thread->wait();
}

/// `depth` maps, or arrays at every second level, each built in the one above by reference.
/// Returns the innermost.
CDataValue& nest(CDataValue& root, int depth, bool synchronise)
{
    CDataValue* inner = &root;
    for (int level = 1; level < depth; ++level) {
        if (inner->isArray())
            inner = &inner->arrayGet(inner->arrayAppend(CDataValue(MAP_VALUE), synchronise));
        else
            inner =
                &inner->mapSet("a", CDataValue(level % 2 ? MAP_VALUE : ARRAY_VALUE), synchronise);
    }
    return *inner;
}

CDataValue& nestMaps(CDataValue& root, int depth)
{
    CDataValue* inner = &root;
    for (int level = 1; level < depth; ++level)
        inner = &inner->mapSet("a", CDataValue(MAP_VALUE), false);
    return *inner;
}

QString nestedMaps(int depth)
{
    return QString("{\"a\":").repeated(depth - 1) + "{}" + QString("}").repeated(depth - 1) + "\n";
}

int bracketsOf(const QString& text)
{
    return static_cast<int>(text.count('{') + text.count('['));
}

} // namespace

/// Trees built by hand may be of any depth.
class tst_datavaluedeep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void doesEverythingAtDepth_data();
    void doesEverythingAtDepth();
    void buildsSynchronised();
    void writesStyled();
    void changesTheInnermostOfATreeInStep();
    void searches();
    void knowsAddressesBelow();
    void holdsAddressContainersInside();
};

void tst_datavaluedeep::doesEverythingAtDepth_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("10000") << 10000;
    QTest::newRow("200000") << 200000;
}

void tst_datavaluedeep::doesEverythingAtDepth()
{
    QFETCH(int, depth);
    inThread([depth] {
        CDataValue root(MAP_VALUE);
        nestMaps(root, depth);
        QCOMPARE(fast(root), QString("{\"a\":{}}\n")); // the rest was not synchronised
        root.synchJsonData();
        const QString expected = nestedMaps(depth);
        QVERIFY(fast(root) == expected);

        CDataValue copy(root);
        QVERIFY(fast(copy) == expected);
        QVERIFY(copy.isEqual(root));
        nestMaps(copy, 3);
        QVERIFY(!copy.isEqual(root));
        copy = root;
        QVERIFY(copy.isEqual(root));

        CDataValue outer(ARRAY_VALUE);
        outer.arrayAppend(copy, true);
        outer.arrayAppend(std::move(copy), true);
        QCOMPARE(bracketsOf(fast(outer)), 2 * depth + 1);
        outer.arrayRemove(0, 1, false);
        outer.arrayGet(0).clear();
        QVERIFY(!outer.isHasAddressType());
        outer.synchJsonData();
        QCOMPARE(fast(outer), QString("[{}]\n"));
        root.mapRemove("a", true);
        QCOMPARE(fast(root), QString("{}\n"));
    });
}

void tst_datavaluedeep::buildsSynchronised()
{
    inThread([] {
        CDataValue root(MAP_VALUE);
        nest(root, 10000, true);
        QCOMPARE(bracketsOf(fast(root)), 10000);
        CDataValue unsynchronised(MAP_VALUE);
        nest(unsynchronised, 10000, false);
        QVERIFY(!unsynchronised.isEqual(root));
        unsynchronised.synchJsonData();
        QVERIFY(unsynchronised.isEqual(root));
    });
}

void tst_datavaluedeep::writesStyled()
{
    inThread([] {
        CDataValue root(MAP_VALUE);
        nestMaps(root, 2000);
        root.synchJsonData();
        const QString text = root.parseToQString(STYLED_STYLE);
        QCOMPARE(text.count('\n'), 2 * 2000 - 1);
        QVERIFY(text.contains("\n" + QString(3 * 1999, ' ') + "\"a\" : {}\n"));
    });
}

void tst_datavaluedeep::changesTheInnermostOfATreeInStep()
{
    inThread([] {
        const int depth = 10000;
        CDataValue root(MAP_VALUE);
        CDataValue& inner = nestMaps(root, depth);
        root.synchJsonData();
        inner.mapSet("x", CDataValue(1), false);
        inner.mapSet("y", CDataValue(2), false);
        QVERIFY(fast(root) == nestedMaps(depth));
        inner.mapRemove("y", true);
        QVERIFY(fast(root) == nestedMaps(depth).replace("{}", "{\"x\":1}"));
        inner = CDataValue("scalar");
        QVERIFY(fast(root) == nestedMaps(depth).replace("{}", "{\"x\":1}"));
        const CDataValue copy(root);
        root.synPreDataValue(&inner);
        QVERIFY(fast(root) == nestedMaps(depth).replace("{}", "\"scalar\""));
        QVERIFY(fast(copy) == nestedMaps(depth).replace("{}", "{\"x\":1}"));
    });
}

void tst_datavaluedeep::searches()
{
    inThread([] {
        CDataValue root(MAP_VALUE);
        nest(root, 10000, false).mapSet("needle", CDataValue(5), false);
        QCOMPARE(int(root.mapFind("needle").size()), 0);
        root.synchJsonData();
        QCOMPARE(fast(root.mapFind("needle")), QString("5\n"));
        std::list<CDataValue> found;
        root.dataValueFind("needle", root, &found);
        QCOMPARE(fast(found), QString("5\n"));
    });
}

void tst_datavaluedeep::knowsAddressesBelow()
{
    inThread([] {
        CDataValue root(MAP_VALUE);
        CDataValue& inner = nestMaps(root, 20000);
        QVERIFY(!root.isHasAddressType());
        inner = CDataValue(pointer);
        QVERIFY(root.isHasAddressType());
        const CDataValue copy(root);
        QVERIFY(copy.isHasAddressType());
    });
}

void tst_datavaluedeep::holdsAddressContainersInside()
{
    inThread([] {
        CDataValue root;
        CDataValue* inner = &root;
        for (int level = 0; level < 20000; ++level)
            inner = &inner->addressMapSet("a", CDataValue());
        *inner = CDataValue(pointer);
        CDataValue copy(root);
        const CDataValue moved(std::move(root));
        CDataValue assigned;
        assigned = copy;
        QCOMPARE(fast(assigned), QString("null\n"));
        CDataValue* level = &assigned;
        while (level->isAddressMap())
            level = &level->addressMapGet("a");
        QCOMPARE(level->asAddress(), pointer);
    });
}

QTEST_GUILESS_MAIN(tst_datavaluedeep)

#include "tst_datavaluedeep.moc"
