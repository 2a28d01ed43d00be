#include "valuesamples.h"

#include <QtTest>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace {

CDataValue commentedValue()
{
    return parsed("/* before */ {\"a\":[1,2,{\"k\":[true,null]}],\"b\":{\"k\":2.5,\"l\":\"text\"},"
                  "\"k\":\"a text that no value holds in itself\" // behind\n}");
}

/// Packed as a whole.
CDataValue packedValue()
{
    return parsed("{\"a\":[1,2,{\"k\":[true,null]}],\"b\":{\"k\":2.5,\"l\":\"text\"},"
                  "\"k\":\"a text that no value holds in itself\",\"z\":[[],{}]}");
}

/// Its containers are kept in both forms, and a part of it shows other than it is.
CDataValue mixedValue()
{
    CDataValue map(packedValue());
    map.mapGet("a").arrayGet(0) = CDataValue("changed");
    map.mapGet("b").mapSet("m", packedValue(), false);
    map.mapGet("b").mapGet("m").mapGet("z").arrayAppend(CDataValue(7u), false);
    return map;
}

CDataValue addresses()
{
    CDataValue map(ADDRESS_MAP_VALUE);
    map.addressMapSet("p", CDataValue(pointer));
    map.addressMapSet("m", packedValue());
    return map;
}

std::string texts(const CDataValue& value)
{
    return (value.parseToQString(FAST_STYLE) + value.parseToQString(STYLED_STYLE)).toStdString();
}

std::string textOf(const std::list<CDataValue>& values)
{
    std::string all;
    for (const CDataValue& value : values)
        all += texts(value);
    return all;
}

/// What every operation says that only reads.
std::string everythingRead(const CDataValue& value)
{
    std::string all = texts(value);
    all += std::to_string(value.getSize()) + (value.isEmpty() ? "e" : "") +
           (value.isHasAddressType() ? "h" : "");
    const CDataValue copy(value);
    all += texts(copy) + (value.isEqual(copy) && copy.isEqual(value) ? "=" : "");
    std::list<CDataValue> found;
    value.dataValueFind("k", value, &found);
    all += textOf(found);
    for (const std::string& key : value.addressMapGetKeys())
        all += key;
    all += textOf(value.addressMapFind("k")) + (value.addressMapIsMember("p") ? "p" : "");
    if (value.isHasAddressType())
        return all;
    for (const std::string& key : value.mapGetKeys())
        all += key + (value.mapIsMember(key.c_str()) ? "+" : "-");
    return all + textOf(value.mapFind("k")) + std::to_string(value.arrayCount());
}

using Make = CDataValue (*)();

} // namespace

Q_DECLARE_METATYPE(Make)

/// Operations that are `const` only read.
class tst_datavaluereading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsOneValueInSeveralThreads_data();
    void readsOneValueInSeveralThreads();
};

void tst_datavaluereading::readsOneValueInSeveralThreads_data()
{
    QTest::addColumn<Make>("make"); // as copying could change the form
    QTest::newRow("packed") << Make(packedValue);
    QTest::newRow("in both forms, out of step") << Make(mixedValue);
    QTest::newRow("with comments") << Make(commentedValue);
    QTest::newRow("array") << Make([] { return parsed("[1,[2,3],{\"k\":4}]"); });
    QTest::newRow("addresses") << Make(addresses);
}

void tst_datavaluereading::readsOneValueInSeveralThreads()
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 40;
    QFETCH(Make, make);
    const std::string expected = everythingRead(make());
    std::atomic<int> wrong{0};
    for (int round = 0; round < kRounds; ++round) {
        const CDataValue value = make(); // a fresh one, which nobody has read
        std::atomic<int> waiting{kThreads};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                for (--waiting; waiting != 0;) // so that they meet
                    std::this_thread::yield();
                wrong += everythingRead(value) == expected ? 0 : 1;
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    QCOMPARE(wrong.load(), 0);
}

QTEST_APPLESS_MAIN(tst_datavaluereading)
#include "tst_datavaluereading.moc"
