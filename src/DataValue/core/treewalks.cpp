// Walks over whole trees: copying, comparing, searching.

#include "DataValue/core/cursor_p.h"
#include "DataValue/core/tree_p.h"

struct DataValueTree::CopyStep
{
    CDataValue* to;
    const CDataValue* from;
    Copy what;
};

void DataValueTree::copyScalar(CDataValue& to, const CDataValue& from)
{
    if (from.m_kind == STRING_VALUE) {
        constructText(to, text(from));
        return;
    }
    if (from.m_kind == REAL_VALUE)
        to.m_payload.real = from.m_payload.real;
    else
        to.m_payload.address = from.m_payload.address;
    to.m_kind = from.m_kind;
}

// What holds further children waits in `pending`, so that no depth is too deep.
void DataValueTree::copyChildren(Container& to, const Container& from, Copy what,
                                 std::vector<CopyStep>& pending)
{
    const auto copyChild = [&pending, what](CDataValue& slot, const CDataValue& child) {
        const CopyStep next{&slot, &child, what};
        if (isContainer(child.m_kind))
            pending.push_back(next);
        else
            copyOne(next, pending);
    };
    to.elements.reserve(from.elements.size());
    for (const DataValueElement& element : from.elements)
        copyChild(appendSlot(to), element.value);
    for (const auto& member : from.members)
        copyChild(memberSlot(to, member.key), member.value);
}

void DataValueTree::copyOne(const CopyStep& step, std::vector<CopyStep>& pending)
{
    const bool faces = step.what == Copy::Face;
    const CDataValue& from = faces ? face(*step.from) : *step.from;
    CDataValue& to = *step.to;
    if (from.m_extras && from.m_extras->hasComments())
        makeExtras(to).comments = from.m_extras->comments;
    if (faces && faceKind(from) == NULL_VALUE)
        return;
    if (!isContainer(from.m_kind)) {
        copyScalar(to, from);
        return;
    }
    const Container* const source = unpacked(from); // null for a packed one, which is in step
    const bool keepsMirror =
        step.what == Copy::Whole && isOrdinary(from.m_kind) && source && source->outOfStep;
    const bool mayPack = isOrdinary(from.m_kind) && !keepsMirror &&
                         (!source || (count(*source) != 0 && (faces || !source->mayHoldAddress)));
    if (mayPack && copyPacked(to, from, step.what))
        return;

    constructFor(to, from.m_kind, source->members.size());
    Container& container = *to.m_payload.children;
    container.mayHoldAddress = !faces && source->mayHoldAddress;
    const Copy below = faces ? Copy::Face : isOrdinary(from.m_kind) ? Copy::InStep : Copy::Whole;
    copyChildren(container, *source, below, pending);
    if (keepsMirror) {
        container.mirror = std::make_unique<CDataValue>();
        copy(*container.mirror, from, Copy::Face);
        markOutOfStep(&container);
    }
}

void DataValueTree::copy(CDataValue& to, const CDataValue& from, Copy what)
{
    std::vector<CopyStep> pending;
    copyOne(CopyStep{&to, &from, what}, pending);
    while (!pending.empty()) {
        const CopyStep step = pending.back();
        pending.pop_back();
        copyOne(step, pending);
    }
}

namespace {

/// Whether both are values of the same kind and content; of containers, the same count.
bool isSameValue(const ValueCursor& at, const ValueCursor& other)
{
    const PackedNode& a = at.node();
    const PackedNode& b = other.node();
    if (a.kind != b.kind)
        return false;
    switch (a.type()) {
    case INT_VALUE:
        return a.signedNumber == b.signedNumber;
    case UINT_VALUE:
        return a.unsignedNumber == b.unsignedNumber;
    case REAL_VALUE:
        return a.real == b.real;
    case STRING_VALUE:
        return at.text() == other.text();
    case BOOLEAN_VALUE:
        return a.flag == b.flag;
    case ARRAY_VALUE:
    case MAP_VALUE:
        return a.count == b.count;
    default:
        return true;
    }
}

} // namespace

bool DataValueTree::equal(const CDataValue& first, const CDataValue& second)
{
    ValueCursor at(first);
    ValueCursor other(second);
    do { // while all is the same, both stand at the same place
        if (at.isEnd())
            continue;
        if (at.isMember() && at.key() != other.key())
            return false;
        if (!isSameValue(at, other))
            return false;
    } while (at.next() && other.next());
    return true;
}

std::vector<std::string> DataValueTree::keys(const CDataValue& map)
{
    std::vector<std::string> result;
    result.reserve(shownCount(map));
    ValueCursor at(map);
    while (at.next() && !at.isEnd()) {
        result.emplace_back(at.key());
        at.skip();
    }
    return result;
}

void DataValueTree::find(std::string_view key, const CDataValue& node, bool faces,
                         std::list<CDataValue>& found)
{
    ValueCursor at(node, faces ? ValueCursor::Shown : ValueCursor::Held);
    do {
        if (at.isEnd())
            continue;
        if (at.isMember() && at.key() == key)
            at.copyTo(found.emplace_back());
        const bool isInArray = at.depth() != 0 && !at.isMember();
        if (isInArray && at.kind() == ARRAY_VALUE)
            at.skip();
    } while (at.next());
}

bool DataValueTree::findsAddress(const CDataValue& value)
{
    ValueCursor at(value, ValueCursor::Held);
    while (at.next()) {
        if (at.isEnd())
            continue;
        if (isAddressKind(at.value()->m_kind))
            return true;
        const Container* const below = unpacked(*at.value());
        if (!below || !below->mayHoldAddress)
            at.skip();
    }
    return false;
}
