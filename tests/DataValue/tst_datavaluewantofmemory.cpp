// Every operation with each of its allocations failing in turn: std::bad_alloc comes out, and the
// values can be used further and hold no memory that nobody frees.

#include "support/allocationpeak.h"
#include "valuesamples.h"

#include <QtTest>

#include <functional>
#include <new>
#include <utility>
#include <vector>

namespace {

const char* const kText = "{\"a\":[1,{\"b\":\"a text that no value holds in itself\"},2.5],"
                          "\"c\":{\"d\":true,\"a\":[[],{}]},\"e\":\"short\"}";
const char* const kCommented = "/* one */{\"a\":[1,{\"b\":\"two\"} // three\n],\"c\":{\"a\":2}}";
const char* const kScalar = "\"a text that no value holds in itself\"";
const char* const kCommentedScalar =
    "/* a comment that no value holds */ \"a text, likewise\" // it";

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

struct NamedOperation
{
    const char* name;
    Operation operation;
    Make makeOther = mixed;
};

/// Runs the operation with one allocation failing; whether one did.
bool failsOnce(const Operation& operation, CDataValue& value, CDataValue& other, int left)
{
    AllocationFailure failure(left);
    try {
        operation(value, other);
    } catch (const std::bad_alloc&) {
        return true;
    }
    // What may fail without loss need not be passed on, such as giving memory back.
    return failure.hasHappened();
}

/// What is wrong with a value after an operation on it failed; empty when nothing is.
QString fault(CDataValue& value)
{
    const CDataValue copy(std::as_const(value));
    if (!copy.isEqual(value))
        return "the copy differs";
    if (value.type() == MAP_VALUE && !value.isHasAddressType()) { // else it is no JSON object
        // A packed value is unpacked by this, so it comes after the copy.
        if (value.mapGet("a").isHasAddressType())
            return "the map does not know of an address in it";
        value.mapSet("still", CDataValue(1), true);
        if (value.mapGet("still").asInt() != 1)
            return "a new member is not there";
    }
    return value.parseToQString(STYLED_STYLE).isEmpty() ? "no text" : QString();
}

std::vector<NamedOperation> exchanges()
{
    using V = CDataValue&;
    return {
        {"swap", [](V value, V other) { value.swap(other); }},
        {"swap a child", [](V value, V other) { other.swap(value.mapGet("a")); }},
        {"swap a child with addresses", [](V value, V other) { other.swap(value.mapGet("a")); },
         addresses},
        {"swap with addresses", [](V value, V other) { value.mapGet("a").swap(other); }, addresses},
        {"assign addresses to a child",
         [](V value, V other) { value.mapGet("a") = std::move(other); }, addresses},
    };
}

std::vector<NamedOperation> operations()
{
    using V = CDataValue&;
    return {
        {"copy", [](V value, V) { CDataValue copy(std::as_const(value)); }},
        {"move", [](V value, V) { CDataValue moved(std::move(value)); }},
        {"move a child", [](V value, V) { CDataValue moved(std::move(value.mapGet("a"))); }},
        {"assign", [](V value, V other) { value = std::as_const(other); }},
        {"assign moved", [](V value, V other) { value = std::move(other); }},
        {"assign a child", [](V value, V other) { other.mapGet("c") = value.mapGet("a"); }},
        {"compact text", [](V value, V) { value.parseToQString(FAST_STYLE); }},
        {"styled text", [](V value, V) { value.parseToQString(STYLED_STYLE); }},
        {"parse", [](V value, V) { CDataValue::parseToDataValue(kText, value); }},
        {"parse comments", [](V value, V) { CDataValue::parseToDataValue(kCommented, value); }},
        {"parse a text", [](V value, V) { CDataValue::parseToDataValue(kScalar, value); }},
        {"parse a text with comments",
         [](V value, V) { CDataValue::parseToDataValue(kCommentedScalar, value); }},
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
    QTest::addColumn<Make>("makeOther");
    const std::pair<const char*, Make> makers[] = {
        {"packed", [] { return parsed(kText); }}, {"mixed", mixed}, {"with comments", [] {
                                                                         return parsed(kCommented);
                                                                     }}};
    for (const auto& maker : makers) {
        for (const auto& rows : {operations(), exchanges()}) {
            for (const NamedOperation& row : rows)
                QTest::addRow("%s, %s", maker.first, row.name)
                    << maker.second << row.operation << row.makeOther;
        }
    }
}

void tst_datavaluewantofmemory::passesOnBadAlloc()
{
    if (!AllocationPeak::canCount())
        QSKIP("The allocation functions are a sanitizer's");
    constexpr int kMost = 2000; // allocations of one operation
    QFETCH(Make, make);
    QFETCH(Operation, operation);
    QFETCH(Make, makeOther);
    for (int left = 0; left < kMost; ++left) {
        const AllocationPeak allocated;
        {
            CDataValue value = make();
            CDataValue other = makeOther();
            if (!failsOnce(operation, value, other, left))
                return; // it needs no more
            for (CDataValue* used : {&value, &other}) {
                const QString wrong = fault(*used);
                QVERIFY2(wrong.isEmpty(), qPrintable(QString("%1: %2").arg(left).arg(wrong)));
            }
        }
        QVERIFY2(allocated.bytesKept() == 0,
                 qPrintable(QString("%1: %2 bytes").arg(left).arg(allocated.bytesKept())));
    }
    QFAIL("The operation never came to its end");
}

QTEST_APPLESS_MAIN(tst_datavaluewantofmemory)
#include "tst_datavaluewantofmemory.moc"
