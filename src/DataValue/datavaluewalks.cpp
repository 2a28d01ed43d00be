// Walks over whole trees: copying, comparing, searching.

#include "DataValue/datavalue_p.h"

#include <algorithm>
#include <utility>

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

void DataValueTree::copyOne(const CopyStep& step, std::vector<CopyStep>& pending)
{
    const bool faces = step.what == Copy::Face;
    const CDataValue& from = faces ? face(*step.from) : *step.from;
    CDataValue& to = *step.to;
    if (from.m_extras && from.m_extras->hasComments())
        makeExtras(to).comments = from.m_extras->comments;
    if ((faces && faceKind(from) == NULL_VALUE) || copyPacked(to, from))
        return;
    const Container* const source = children(from);
    if (!source) {
        copyScalar(to, from);
        return;
    }

    constructFor(to, from.m_kind, source->members.size());
    Container& container = *to.m_payload.children;
    container.mayHoldAddress = !faces && source->mayHoldAddress;
    const Copy below = faces ? Copy::Face : isOrdinary(from.m_kind) ? Copy::InStep : Copy::Whole;
    const auto copyChild = [&pending, below](CDataValue& slot, const CDataValue& child) {
        const CopyStep next{&slot, &child, below};
        if (isContainer(child.m_kind))
            pending.push_back(next);
        else
            copyOne(next, pending);
    };
    container.elements.reserve(source->elements.size());
    for (const DataValueElement& element : source->elements)
        copyChild(appendSlot(container), element.value);
    for (const auto& member : source->members)
        copyChild(memberSlot(container, member.key), member.value);

    if (step.what == Copy::Whole && isOrdinary(from.m_kind) && source->outOfStep) {
        container.mirror = std::make_unique<CDataValue>();
        copy(*container.mirror, from, Copy::Face);
        markOutOfStep(&container);
    }
}

void DataValueTree::copy(CDataValue& to, const CDataValue& from, Copy what)
{
    if (!from.m_extras && copyPacked(to, from))
        return;
    std::vector<CopyStep> pending;
    copyOne(CopyStep{&to, &from, what}, pending);
    while (!pending.empty()) {
        const CopyStep step = pending.back();
        pending.pop_back();
        copyOne(step, pending);
    }
}

namespace {

using Tree = DataValueTree;
using Pair = std::pair<const CDataValue*, const CDataValue*>;

bool equalScalars(const CDataValue& a, const CDataValue& b, ENUM_VALUE_TYPE kind)
{
    switch (kind) {
    case INT_VALUE:
        return Tree::signedNumber(a) == Tree::signedNumber(b);
    case UINT_VALUE:
        return Tree::unsignedNumber(a) == Tree::unsignedNumber(b);
    case REAL_VALUE:
        return Tree::real(a) == Tree::real(b);
    case STRING_VALUE:
        return Tree::text(a).view() == Tree::text(b).view();
    case BOOLEAN_VALUE:
        return Tree::flag(a) == Tree::flag(b);
    default:
        return true;
    }
}

/// Whether both containers have the same keys and count; queues the pairs of their children.
bool sameShape(const Tree::Container& a, const Tree::Container& b, std::vector<Pair>& pending)
{
    if (a.elements.size() != b.elements.size() || a.members.size() != b.members.size())
        return false;
    for (std::size_t i = 0; i < a.elements.size(); ++i)
        pending.emplace_back(&a.elements[i].value, &b.elements[i].value);
    auto other = b.members.begin();
    for (const auto& member : a.members) {
        if (member.key.view() != other->key.view())
            return false;
        pending.emplace_back(&member.value, &other->value);
        ++other;
    }
    return true;
}

} // namespace

bool DataValueTree::equal(const CDataValue& first, const CDataValue& second)
{
    std::vector<Pair> pending{{&first, &second}};
    while (!pending.empty()) {
        const CDataValue& a = face(*pending.back().first);
        const CDataValue& b = face(*pending.back().second);
        pending.pop_back();
        const ENUM_VALUE_TYPE kind = faceKind(a);
        if (kind != faceKind(b))
            return false;
        if (isOrdinary(kind)) {
            const PackedNode* const one = packedNode(a);
            const PackedNode* const other = packedNode(b);
            if (one && other) {
                if (!equalNodes(*one, *other))
                    return false;
            } else if (!sameShape(*children(a), *children(b), pending))
                return false;
        } else if (!equalScalars(a, b, kind)) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> DataValueTree::keys(const CDataValue& map)
{
    std::vector<std::string> result;
    if (const PackedNode* const packed = packedNode(map)) {
        result.reserve(packed->count);
        const PackedNode* key = packed + 1;
        for (std::uint32_t i = 0; i < packed->count; ++i, key = (key + 1)->behind())
            result.emplace_back(key->view());
        return result;
    }
    result.reserve(children(map)->members.size());
    for (const auto& member : children(map)->members)
        result.emplace_back(member.key.view());
    return result;
}

void DataValueTree::find(std::string_view key, const CDataValue& node, bool faces,
                         std::list<CDataValue>& found)
{
    struct Candidate
    {
        const CDataValue* value;
        bool matches;
    };
    // The stack holds what is still to visit, the next one on top: children go on it backwards.
    std::vector<Candidate> pending{{&node, false}};
    while (!pending.empty()) {
        const Candidate candidate = pending.back();
        pending.pop_back();
        const CDataValue& value = faces ? face(*candidate.value) : *candidate.value;
        if (candidate.matches) {
            found.emplace_back();
            copy(found.back(), value, faces ? Copy::Face : Copy::Whole);
        }
        if (!isOrdinary(value.m_kind))
            continue;
        const Container& container = *children(value);
        for (auto element = container.elements.rbegin(); element != container.elements.rend();
             ++element) {
            if (element->value.isObject())
                pending.push_back({&element->value, false});
        }
        const auto top = static_cast<std::ptrdiff_t>(pending.size());
        for (const auto& member : container.members)
            pending.push_back({&member.value, member.key.view() == key});
        std::reverse(pending.begin() + top, pending.end());
    }
}
