// Every operation with each of its allocations failing in turn: std::bad_alloc comes out, and the
// values can be used further.

#include "valuesamples.h"

#include <QtTest>

#include <cstddef>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
constexpr bool mayFail = true;

namespace {

thread_local int allocationsLeft = -1; // of this thread before one fails; negative: none does
thread_local bool hasFailed = false;

bool isToFail()
{
    if (allocationsLeft < 0)
        return false;
    hasFailed = hasFailed || allocationsLeft == 0;
    return allocationsLeft-- == 0;
}

} // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);

// These take the place of the C library's for the whole process.
void* malloc(std::size_t size)
{
    return isToFail() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size)
{
    return isToFail() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size)
{
    return isToFail() ? nullptr : __libc_realloc(memory, size);
}
}
#else
constexpr bool mayFail = false;
static int allocationsLeft = -1;
static bool hasFailed = false;
#endif

namespace {

const char* const kText = "{\"a\":[1,{\"b\":\"a text that no value holds in itself\"},2.5],"
                          "\"c\":{\"d\":true,\"a\":[[],{}]},\"e\":\"short\"}";
const char* const kCommented = "/* one */{\"a\":[1,{\"b\":\"two\"} // three\n],\"a\":2}";

/// In both forms, and out of step.
CDataValue mixed()
{
    CDataValue value = parsed(kText);
    value.mapGet("a").arrayGet(1).mapSet("x", parsed(kText), false);
    value.mapGet("c").mapGet("d") = CDataValue("another text that no value holds in itself");
    return value;
}

CDataValue addresses()
{
    CDataValue value(ADDRESS_MAP_VALUE);
    value.addressMapSet("p", CDataValue(pointer));
    value.addressMapSet("m", mixed());
    return value;
}

using Make = CDataValue (*)();
using Operation = std::function<void(CDataValue& value, CDataValue& other)>;

std::vector<std::pair<const char*, Operation>> operations()
{
    using V = CDataValue&;
    return {
        {"copy", [](V value, V) { CDataValue copy(std::as_const(value)); }},
        {"move", [](V value, V) { CDataValue moved(std::move(value)); }},
        {"move a child", [](V value, V) { CDataValue moved(std::move(value.mapGet("a"))); }},
        {"assign", [](V value, V other) { value = std::as_const(other); }},
        {"assign moved", [](V value, V other) { value = std::move(other); }},
        {"assign a child", [](V value, V other) { other.mapGet("c") = value.mapGet("a"); }},
        {"swap", [](V value, V other) { value.swap(other); }},
        {"compact text", [](V value, V) { value.parseToQString(FAST_STYLE); }},
        {"styled text", [](V value, V) { value.parseToQString(STYLED_STYLE); }},
        {"parse", [](V value, V) { CDataValue::parseToDataValue(kText, value); }},
        {"parse comments", [](V value, V) { CDataValue::parseToDataValue(kCommented, value); }},
        {"parse a QString",
         [](V value, V) { CDataValue::parseToDataValue(QString(kText), value); }},
        {"mapSet", [](V value, V other) { value.mapSet("new", other, true); }},
        {"mapSet moved", [](V value, V other) { value.mapSet("a", std::move(other), false); }},
        {"mapSet below", [](V value, V other) { value.mapGet("c").mapSet("a", other, false); }},
        {"mapGetKeys", [](V value, V) { value.mapGetKeys(); }},
        {"mapFind", [](V value, V) { value.mapFind("a"); }},
        {"mapRemove", [](V value, V) { value.mapRemove("a", true); }},
        {"arrayAppend", [](V value, V other) { value.mapGet("a").arrayAppend(other, true); }},
        {"arrayInsert", [](V value, V other) { value.mapGet("a").arrayInsert(0, other, false); }},
        {"arrayInsert beyond",
         [](V value, V other) { value.mapGet("a").arrayInsert(9, other, false); }},
        {"arrayModify", [](V value, V other) { value.mapGet("a").arrayModify(0, other, false); }},
        {"arrayRemove", [](V value, V) { value.mapGet("a").arrayRemove(0, 1, false); }},
        {"isEqual", [](V value, V other) { (void)value.isEqual(other); }},
        {"synchJsonData", [](V value, V) { value.synchJsonData(); }},
        {"address map", [](V value, V) { CDataValue(addresses()).addressMapSet("v", value); }},
    };
}

} // namespace

Q_DECLARE_METATYPE(Make)
Q_DECLARE_METATYPE(Operation)

class tst_datavaluewantofmemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void passesOnBadAlloc_data();
    void passesOnBadAlloc();
};

void tst_datavaluewantofmemory::passesOnBadAlloc_data()
{
    QTest::addColumn<Make>("make");
    QTest::addColumn<Operation>("operation");
    const std::pair<const char*, Make> makers[] = {
        {"packed", [] { return parsed(kText); }}, {"mixed", mixed}, {"with comments", [] {
                                                                         return parsed(kCommented);
                                                                     }}};
    for (const auto& maker : makers) {
        for (const auto& operation : operations())
            QTest::addRow("%s, %s", maker.first, operation.first)
                << maker.second << operation.second;
    }
}

void tst_datavaluewantofmemory::passesOnBadAlloc()
{
    if (!mayFail)
        QSKIP("The allocation functions are a sanitizer's");
    constexpr int kMost = 2000; // allocations of one operation
    QFETCH(Make, make);
    QFETCH(Operation, operation);
    for (int left = 0; left < kMost; ++left) {
        CDataValue value = make();
        CDataValue other = mixed();
        bool passedOn = false;
        hasFailed = false;
        allocationsLeft = left;
        try {
            operation(value, other);
        } catch (const std::bad_alloc&) {
            passedOn = true;
        }
        allocationsLeft = -1;
        if (!hasFailed)
            return; // it needs no more
        // What may fail without loss need not be passed on, such as giving memory back.
        for (CDataValue* used : {&value, &other}) {
            const CDataValue copy(*used);
            QVERIFY2(copy.isEqual(*used), qPrintable(QString("%1 %2").arg(left).arg(passedOn)));
            used->mapSet("still", CDataValue(1), true);
            QVERIFY(!used->parseToQString(STYLED_STYLE).isEmpty());
        }
    }
    QFAIL("The operation never came to its end");
}

QTEST_APPLESS_MAIN(tst_datavaluewantofmemory)
#include "tst_datavaluewantofmemory.moc"
