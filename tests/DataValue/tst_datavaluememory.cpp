// What values keep in memory and what they give back, counted at the allocator.

#include "valuesamples.h"

#include "support/allocationpeak.h"

#include <QtTest>

#include <cstddef>
#include <vector>

namespace {

constexpr int kMany = 5000;

/// {"part":{"a":[1,2]},"rest":[ many maps ]}, packed.
CDataValue largeValue()
{
    QByteArray text = "{\"part\":{\"a\":[1,2]},\"rest\":[0";
    for (int i = 0; i < kMany; ++i)
        text += ",{\"name\":\"a text that no value holds in itself\",\"number\":" +
                QByteArray::number(i) + "}";
    return parsed(text + "]}");
}

void setMany(CDataValue& map)
{
    for (int i = 0; i < kMany; ++i)
        map.mapSet(QByteArray::number(i).constData(), CDataValue(i), false);
}

void removeMany(CDataValue& map)
{
    for (int i = 0; i < kMany; ++i)
        map.mapRemove(QByteArray::number(i).constData(), false);
}

} // namespace

class tst_datavaluememory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!AllocationPeak::canCount())
            QSKIP("The allocation functions are a sanitizer's");
        // What is made once and kept: Qt's tables, the library's own.
        CDataValue value = largeValue();
        value.parseToQString(STYLED_STYLE);
        setMany(value);
    }

    void countsWhatIsAllocated()
    {
        const AllocationPeak use;
        {
            const CDataValue value = largeValue();
            QVERIFY(use.bytesKept() > kMany * 32);
        }
        QCOMPARE(use.bytesKept(), qint64(0));
    }

    void readingKeepsNothing()
    {
        const CDataValue value = largeValue();
        const CDataValue other = largeValue();
        const AllocationPeak use;
        QVERIFY(!value.parseToQString(STYLED_STYLE).isEmpty());
        QVERIFY(!value.parseToQString(FAST_STYLE).isEmpty());
        QVERIFY(value.isEqual(other));
        QCOMPARE(value.mapFind("number").size(), std::size_t(kMany));
        QCOMPARE(value.mapGetKeys().size(), std::size_t(2));
        QVERIFY(value.mapIsMember("rest"));
        QVERIFY(!value.isHasAddressType());
        QCOMPARE(use.bytesKept(), qint64(0));
    }

    void copiesOfAPackedValueShareIt()
    {
        const CDataValue value = largeValue();
        std::vector<CDataValue> copies;
        copies.reserve(100);
        const AllocationPeak use;
        for (int i = 0; i < 100; ++i)
            copies.push_back(value);
        QCOMPARE(use.bytesKept(), qint64(0));
    }

    void aSmallPartOfABlockDoesNotKeepTheWhole()
    {
        constexpr qint64 kFew = 2048;
        const AllocationPeak use;
        CDataValue part;
        {
            CDataValue value = largeValue();
            part = value.mapGet("part");
            const std::list<CDataValue> found = value.mapFind("a");
            QCOMPARE(found.size(), std::size_t(1));
            part.mapSet("found", found.front(), false);
        }
        QVERIFY2(use.bytesKept() < kFew, qPrintable(QString::number(use.bytesKept())));
        QCOMPARE(fast(part), QString("{\"a\":[1,2],\"found\":[1,2]}\n"));
    }

    void clearedMapsGiveTheirMembersBack()
    {
        constexpr qint64 kFew = 2048;
        CDataValue map(MAP_VALUE);
        const AllocationPeak use;
        setMany(map);
        QVERIFY(use.bytesKept() > kMany * qint64(sizeof(CDataValue)));
        map.clear();
        QVERIFY2(use.bytesKept() < kFew, qPrintable(QString::number(use.bytesKept())));
    }

    /// The room of removed members stays with the map, for others.
    void removedMembersMakeRoomForOthers()
    {
        CDataValue map(MAP_VALUE);
        setMany(map);
        const AllocationPeak use;
        for (int round = 0; round < 5; ++round) {
            removeMany(map);
            QVERIFY(use.bytesKept() < 0); // the pages of the index are freed
            setMany(map);
        }
        QVERIFY2(use.bytesKept() <= 0, qPrintable(QString::number(use.bytesKept())));
    }

    void readingWithCommentsKeepsNothingButTheValue()
    {
        const AllocationPeak use;
        {
            const CDataValue value = parsed("// one\n{\"a\": 1 /* two */, \"b\": [2]}");
            QVERIFY(use.bytesKept() > 0);
        }
        QCOMPARE(use.bytesKept(), qint64(0));
    }
};

QTEST_APPLESS_MAIN(tst_datavaluememory)
#include "tst_datavaluememory.moc"
