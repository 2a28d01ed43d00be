// The content of values and the rule of their mirrors.

#include "DataValue/core/tree_p.h"

#include <algorithm>
#include <new>
#include <utility>

namespace {

/// Calls `visit` with every child, in index or key order.
template<typename Visit>
void forEachChild(DataValueTree::Container& container, Visit visit)
{
    for (DataValueElement& element : container.elements)
        visit(element.value);
    for (auto& member : container.members)
        visit(member.value);
}

} // namespace

bool CDataValue::Extras::hasComments() const
{
    return std::any_of(comments.begin(), comments.end(),
                       [](const DataValueText& comment) { return !comment.view().empty(); });
}

DataValueElement::DataValueElement(DataValueElement&& other) noexcept
{
    DataValueTree::relocate(value, other.value);
}

DataValueElement& DataValueElement::operator=(DataValueElement&& other) noexcept
{
    if (this != &other) {
        DataValueTree::reset(value);
        DataValueTree::relocate(value, other.value);
    }
    return *this;
}

DataValueTree::Extras& DataValueTree::makeExtras(CDataValue& value)
{
    if (!value.m_extras)
        value.m_extras = new Extras;
    return *value.m_extras;
}

CDataValue::Container* CDataValue::Container::create(CDataValue& owner, std::size_t members)
{
    constexpr std::size_t kMost = 64; // clearing a larger map gives its memory back
    const std::size_t inside = members <= kMost ? members : 0;
    const std::size_t room = inside ? DataValueMembers::roomFor(inside) : 0;
    void* const memory = ::operator new(sizeof(Container) + room);
    return inside ? new (memory) Container(owner, inside) : new (memory) Container(owner);
}

void DataValueTree::constructFor(CDataValue& value, ENUM_VALUE_TYPE kind, std::size_t members)
{
    if (kind == STRING_VALUE) {
        constructText(value, std::string_view());
        return;
    }
    if (isContainer(kind)) {
        const bool isMap = kind == MAP_VALUE || kind == ADDRESS_MAP_VALUE;
        value.m_payload.children = Container::create(value, isMap ? members : 0);
    } else if (kind == REAL_VALUE) {
        value.m_payload.real = 0.0;
    } else {
        value.m_payload.address = nullptr; // 0 and false as well
    }
    value.m_kind = kind;
}

void DataValueTree::constructText(CDataValue& value, std::string_view text)
{
    new (value.m_payload.text) DataValueText(text);
    value.m_kind = STRING_VALUE;
}

void DataValueTree::constructText(CDataValue& value, const DataValueText& text)
{
    new (value.m_payload.text) DataValueText(text);
    value.m_kind = STRING_VALUE;
}

void DataValueTree::release(Container* container)
{
    // A deep tree must not be destroyed by recursion: containers below are taken out and queued.
    container->nextToRelease = nullptr;
    const auto detach = [](CDataValue& value, Container*& queue) {
        Container* const below = unpacked(value);
        if (!below)
            return;
        value.m_kind = NULL_VALUE;
        below->nextToRelease = std::exchange(queue, below);
    };
    while (container) {
        Container* queue = container->nextToRelease;
        forEachChild(*container, [&](CDataValue& child) { detach(child, queue); });
        if (container->mirror)
            detach(*container->mirror, queue);
        delete std::exchange(container, queue);
    }
}

void DataValueTree::exchangeContent(CDataValue& a, CDataValue& b)
{
    const bool haveExtras = a.m_extras || b.m_extras;
    if (haveExtras) { // both need some below; to make them may fail, so it comes first
        makeExtras(a);
        makeExtras(b);
    }
    const auto place = [](CDataValue& value, Container* holder, bool linked) {
        value.m_holder = holder;
        value.m_linked = linked;
    };
    Container* const holderOfA = a.m_holder;
    Container* const holderOfB = b.m_holder;
    const bool linkedA = a.m_linked;
    const bool linkedB = b.m_linked;
    CDataValue spare;
    relocate(spare, a);
    relocate(a, b);
    relocate(b, spare);
    place(a, holderOfA, linkedA);
    place(b, holderOfB, linkedB);
    if (haveExtras) // the comments went along; the file paths stay
        std::swap(a.m_extras->filePath, b.m_extras->filePath);
}

void DataValueTree::take(CDataValue& to, CDataValue& from)
{
    Container* const container = unpacked(from);
    if (from.m_holder || isAddressKind(from.m_kind) || (container && container->mayHoldAddress)) {
        copy(to, from, Copy::Whole);
        return;
    }
    if (container && container->outOfStep) { // as in a copy: only the root may be out of step
        if (!container->mirror)
            storeMirror(*container);
        forEachChild(*container, [](CDataValue& child) {
            synchronise(child);
            child.m_linked = true;
        });
    }
    if (from.m_extras)
        exchangeContent(to, from); // leaves the file path
    else
        relocate(to, from);
}

CDataValue DataValueTree::movedContainer(CDataValue& value, const CDataValue& target)
{
    const Container& container = *unpacked(value);
    const bool isEmpty = container.elements.empty() && container.members.empty();
    if (!isEmpty && isBelow(target, value))
        return CDataValue(std::as_const(value));
    return CDataValue(std::move(value));
}

void DataValueTree::replaceContent(CDataValue& target, CDataValue&& fresh)
{
    beforeChange(target, false);
    exchangeContent(target, fresh);
    if (target.m_holder) // before what may fail for want of memory
        noteChild(*target.m_holder, target);
    if (isAddressKind(target.m_kind))
        target.synchPreDataPoint();
}

bool DataValueTree::isBelow(const CDataValue& inner, const CDataValue& outer)
{
    for (const Container* holder = inner.m_holder; holder; holder = holder->owner->m_holder) {
        if (holder->owner == &outer)
            return true;
    }
    return false;
}

void DataValueTree::makeRoom(Container& container)
{
    constexpr std::size_t kFirst = 8;
    container.elements.reserve(std::max(kFirst, 2 * container.elements.size()));
}

CDataValue& DataValueTree::insertSlot(Container& container, std::size_t index)
{
    const auto at = static_cast<std::ptrdiff_t>(index);
    if (container.elements.size() == container.elements.capacity())
        makeRoom(container);
    return place(container, container.elements.emplace(container.elements.begin() + at)->value);
}

void DataValueTree::keepMirrorAround(CDataValue& value, bool synchronised)
{
    const CDataValue* top = &value;
    while (synchronised && top->m_holder && top->m_linked)
        top = top->m_holder->owner;
    Container* const holder = top->m_holder;
    if (holder && isOrdinary(holder->owner->m_kind) && !holder->mirror)
        storeMirror(*holder);
}

void DataValueTree::storeMirror(Container& container)
{
    auto mirror = std::make_unique<CDataValue>();
    copy(*mirror, *container.owner, Copy::Face);
    container.mirror = std::move(mirror);
    markOutOfStep(&container);
}

void DataValueTree::synchronise(CDataValue& value)
{
    Container* const top = unpacked(value);
    if (!top || !top->outOfStep || !isOrdinary(value.m_kind))
        return;
    // To find them all may fail for want of memory, so nothing changes until they are found.
    std::vector<Container*> found{top};
    for (std::size_t i = 0; i < found.size(); ++i) {
        forEachChild(*found[i], [&found](CDataValue& child) {
            Container* const below = unpacked(child);
            if (below && below->outOfStep && isOrdinary(child.m_kind))
                found.push_back(below);
        });
    }
    for (Container* const container : found) {
        container->mirror.reset();
        container->outOfStep = false;
        forEachChild(*container, [](CDataValue& child) { child.m_linked = true; });
    }
}

void DataValueTree::synchroniseUpwards(CDataValue& start)
{
    synchronise(start);
    for (CDataValue* value = &start; value->m_holder && value->m_linked;) {
        value = value->m_holder->owner;
        synchronise(*value);
    }
}

void DataValueTree::markOutOfStep(Container* container)
{
    // What is out of step below an address container concerns no mirror above it.
    while (container && isOrdinary(container->owner->m_kind) && !container->outOfStep) {
        container->outOfStep = true;
        container = container->owner->m_holder;
    }
}

void DataValueTree::markMayHoldAddress(Container* container)
{
    while (container && !container->mayHoldAddress) {
        container->mayHoldAddress = true;
        container = container->owner->m_holder;
    }
}

void CDataValue::swap(CDataValue& other)
{
    if (this == &other)
        return;
    DataValueTree::beforeChange(*this, false);
    DataValueTree::beforeChange(other, false);
    // A value cannot hold itself: of two nested values the inner one's content survives.
    const bool inside = DataValueTree::isBelow(other, *this);
    if (inside || DataValueTree::isBelow(*this, other)) {
        CDataValue& outer = inside ? *this : other;
        CDataValue content(std::move(inside ? other : *this));
        DataValueTree::replaceContent(outer, std::move(content));
        return;
    }
    // Packed children have no links to cut. To unpack them may fail, so it comes first.
    DataValueTree::children(*this);
    DataValueTree::children(other);
    DataValueTree::exchangeContent(*this, other);
    for (CDataValue* value : {this, &other}) {
        DataValueTree::Container* const container = DataValueTree::unpacked(*value);
        if (container) {
            forEachChild(*container, [](CDataValue& child) { child.m_linked = false; });
            container->outOfStep = DataValueTree::isOrdinary(value->m_kind);
        }
        if (value->m_holder)
            DataValueTree::noteChild(*value->m_holder, *value);
    }
}

void CDataValue::synchJsonData()
{
    DataValueTree::Container* const container = DataValueTree::unpacked(*this);
    if (!container || !container->outOfStep)
        return;
    DataValueTree::beforeChange(*this, false);
    DataValueTree::synchronise(*this);
}

void CDataValue::synchPreDataPoint()
{
    DataValueTree::Container* const container = DataValueTree::unpacked(*this);
    if (!container)
        return;
    const bool ordinary = DataValueTree::isOrdinary(m_kind);
    if (ordinary && container->outOfStep && !container->mirror)
        DataValueTree::storeMirror(*container);
    if (!ordinary || container->outOfStep) {
        forEachChild(*container, [](CDataValue& child) {
            DataValueTree::synchronise(child);
            child.m_linked = true;
        });
    }
}

void CDataValue::synPreDataValue(CDataValue* start)
{
    if (!start)
        return;
    DataValueTree::beforeChange(*start, true);
    DataValueTree::synchroniseUpwards(*start);
}
