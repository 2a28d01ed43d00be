// The ordinary containers: maps and arrays.

#include "DataValue/core/tree_p.h"

#include "assertion_p.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace {

using Tree = DataValueTree;

constexpr char kLogSource[] = "DataValue/datavalue";

/// Ordinary operations are not for values that hold addresses.
void requireOrdinary(const CDataValue& value, int line)
{
    assertThat(!Tree::holdsAddress(value), "!bIsHasAddressType", kLogSource, line);
}

void requireOrdinary(const CDataValue& value, const CDataValue& fresh, int line)
{
    assertThat(!Tree::holdsAddress(value) && !Tree::holdsAddress(fresh),
               "!bIsHasAddressType && !newElement.isHasAddressType()", kLogSource, line);
}

/// Turns a null value into an empty container of the kind, a change of its own mirror.
void becomeContainer(CDataValue& value, ENUM_VALUE_TYPE kind, bool synchronised)
{
    Tree::beforeChange(value, synchronised);
    Tree::reset(value);
    if (Tree::extras(value))
        Tree::makeExtras(value).comments = {};
    Tree::construct(value, kind);
}

/// A value as the text of `value` shows it, to go into a mirror or a result.
CDataValue faceOf(const CDataValue& value)
{
    CDataValue result;
    Tree::copy(result, value, Tree::Copy::Face);
    return result;
}

/// Stores a finished value under `key`, in the mirror (if one is stored) and in the members.
CDataValue& setMember(CDataValue& map, std::string_view key, CDataValue&& fresh, bool synchronised)
{
    if (map.isNull())
        becomeContainer(map, MAP_VALUE, synchronised);
    else
        Tree::beforeChange(map, synchronised);
    Tree::Container& container = *Tree::children(map);
    if (Tree::Container* const mirrored = synchronised ? nullptr : Tree::mirrored(container))
        Tree::attach(*mirrored, Tree::memberSlot(*mirrored, key), faceOf(fresh));
    CDataValue& slot = Tree::memberSlot(container, key);
    Tree::attach(container, slot, std::move(fresh));
    if (synchronised)
        Tree::synchroniseUpwards(map);
    return slot;
}

CDataValue& getMember(CDataValue& map, std::string_view key)
{
    DataValueMembers::Member* const member =
        map.isObject() ? Tree::children(map)->members.find(key) : nullptr;
    return member ? member->value : CDataValue::referToMemberNull();
}

/// The members and the text always have the same keys.
bool hasMember(const CDataValue& map, std::string_view key)
{
    if (!map.isObject())
        return false;
    const PackedNode* const packed = Tree::packedNode(map);
    return packed ? ::findMember(*packed, key) != nullptr
                  : Tree::unpacked(map)->members.find(key) != nullptr;
}

std::list<CDataValue> findMembers(std::string_view key, const CDataValue& node)
{
    std::list<CDataValue> found;
    if (node.isObject())
        Tree::find(key, node, true, found);
    return found;
}

CDataValue removeMember(CDataValue& map, std::string_view key, bool synchronised)
{
    CDataValue result(MAP_VALUE);
    if (!map.isObject())
        return result;
    Tree::Container& container = *Tree::children(map);
    DataValueMembers::Member* const member = container.members.find(key);
    if (!member)
        return result;
    Tree::beforeChange(map, synchronised);
    if (Tree::Container* const mirrored = Tree::mirrored(container)) {
        setMember(result, key, faceOf(mirrored->members.find(key)->value), false);
        mirrored->members.remove(key);
    } else {
        setMember(result, key, faceOf(member->value), false);
    }
    container.members.remove(key);
    if (synchronised)
        Tree::synchroniseUpwards(map);
    return result;
}

void resize(Tree::Container& mirrored, std::size_t size)
{
    while (mirrored.elements.size() > size)
        mirrored.elements.pop_back();
    while (mirrored.elements.size() < size)
        Tree::appendSlot(mirrored);
}

/// Inserts before `index`, which is at most the number of elements, into elements and mirror.
void insertElement(CDataValue& array, std::size_t index, CDataValue&& fresh, bool synchronised)
{
    Tree::beforeChange(array, synchronised);
    Tree::Container& container = *Tree::children(array);
    if (Tree::Container* const mirrored = Tree::mirrored(container)) {
        resize(*mirrored, container.elements.size()); // a null beyond the end gives way
        Tree::attach(*mirrored, Tree::insertSlot(*mirrored, index), faceOf(fresh));
    }
    const bool isLast = index == container.elements.size();
    CDataValue& slot = isLast ? Tree::appendSlot(container) : Tree::insertSlot(container, index);
    Tree::attach(container, slot, std::move(fresh));
    if (synchronised)
        Tree::synchroniseUpwards(array);
}

unsigned int appendElement(CDataValue& array, CDataValue&& fresh, bool synchronised)
{
    if (array.isNull())
        becomeContainer(array, ARRAY_VALUE, synchronised);
    const std::size_t index = Tree::children(array)->elements.size();
    insertElement(array, index, std::move(fresh), synchronised);
    return static_cast<unsigned int>(index);
}

/// Whether `index` names an element or the place behind the last one that the text shows.
bool mayReach(CDataValue& array, unsigned int index)
{
    return array.isArray() && !Tree::children(array)->elements.empty() && index <= array.getSize();
}

/// The element; one that only the text shows does not exist.
CDataValue& elementAt(Tree::Container& container, unsigned int index)
{
    if (index >= container.elements.size())
        throw std::out_of_range("vector::_M_range_check");
    return container.elements[index].value;
}

void eraseRange(DataValueElements& elements, std::size_t index, std::size_t count)
{
    if (count == 0)
        return;
    const auto first = elements.begin() + static_cast<std::ptrdiff_t>(index);
    elements.erase(first, first + static_cast<std::ptrdiff_t>(count));
}

} // namespace

CDataValue& CDataValue::mapSet(const char* key, const CDataValue& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!isNull() && !isObject())
        return referToMemberNull();
    return setMember(*this, keyOf(key), CDataValue(value), synchronise);
}

CDataValue& CDataValue::mapSet(const QString& key, const CDataValue& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!isNull() && !isObject())
        return referToMemberNull();
    return setMember(*this, key.toStdString(), CDataValue(value), synchronise);
}

CDataValue& CDataValue::mapSet(const char* key, CDataValue&& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!isNull() && !isObject())
        return referToMemberNull();
    if (Tree::isLoose(value, *this))
        return setMember(*this, keyOf(key), std::move(value), synchronise);
    return setMember(*this, keyOf(key), Tree::moved(value, *this), synchronise);
}

CDataValue& CDataValue::mapSet(const QString& key, CDataValue&& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!isNull() && !isObject())
        return referToMemberNull();
    return setMember(*this, key.toStdString(), Tree::moved(value, *this), synchronise);
}

CDataValue& CDataValue::mapGet(const char* key)
{
    requireOrdinary(*this, __LINE__);
    return getMember(*this, keyOf(key));
}

CDataValue& CDataValue::mapGet(const QString& key)
{
    requireOrdinary(*this, __LINE__);
    return getMember(*this, key.toStdString());
}

bool CDataValue::mapIsMember(const char* key) const
{
    requireOrdinary(*this, __LINE__);
    return hasMember(*this, keyOf(key));
}

bool CDataValue::mapIsMember(const QString& key) const
{
    requireOrdinary(*this, __LINE__);
    return hasMember(*this, key.toStdString());
}

std::vector<std::string> CDataValue::mapGetKeys() const
{
    requireOrdinary(*this, __LINE__);
    return isObject() ? DataValueTree::keys(*this) : std::vector<std::string>();
}

CDataValue CDataValue::mapRemove(const char* key, bool synchronise)
{
    requireOrdinary(*this, __LINE__);
    return removeMember(*this, keyOf(key), synchronise);
}

CDataValue CDataValue::mapRemove(const QString& key, bool synchronise)
{
    requireOrdinary(*this, __LINE__);
    return removeMember(*this, key.toStdString(), synchronise);
}

std::list<CDataValue> CDataValue::mapFind(const char* key) const
{
    return mapFind(key, *this);
}

std::list<CDataValue> CDataValue::mapFind(const QString& key) const
{
    return mapFind(key, *this);
}

std::list<CDataValue> CDataValue::mapFind(const char* key, const CDataValue& node) const
{
    requireOrdinary(*this, __LINE__);
    return findMembers(keyOf(key), node);
}

std::list<CDataValue> CDataValue::mapFind(const QString& key, const CDataValue& node) const
{
    requireOrdinary(*this, __LINE__);
    return findMembers(key.toStdString(), node);
}

void CDataValue::dataValueFind(const char* key, const CDataValue& node,
                               std::list<CDataValue>* list) const
{
    if (list)
        DataValueTree::find(keyOf(key), node, false, *list);
}

unsigned int CDataValue::arrayAppend(const CDataValue& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    return isNull() || isArray() ? appendElement(*this, CDataValue(value), synchronise) : 0;
}

unsigned int CDataValue::arrayAppend(CDataValue&& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!isNull() && !isArray())
        return 0;
    if (Tree::isLoose(value, *this))
        return appendElement(*this, std::move(value), synchronise);
    return appendElement(*this, Tree::moved(value, *this), synchronise);
}

void CDataValue::arrayInsert(unsigned int index, const CDataValue& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (isNull()) {
        appendElement(*this, CDataValue(value), true);
        return;
    }
    if (!isArray())
        return;
    const std::size_t count = DataValueTree::children(*this)->elements.size();
    if (index <= count) {
        insertElement(*this, index, CDataValue(value), synchronise);
        return;
    }
    DataValueTree::beforeChange(*this, false);
    if (!DataValueTree::children(*this)->mirror)
        DataValueTree::storeMirror(*DataValueTree::children(*this));
    resize(*DataValueTree::mirrored(*DataValueTree::children(*this)), count + 1);
}

CDataValue& CDataValue::arrayModify(unsigned int index, const CDataValue& value, bool synchronise)
{
    requireOrdinary(*this, value, __LINE__);
    if (!mayReach(*this, index))
        return referToMemberNull();
    CDataValue fresh(value);
    DataValueTree::Container& container = *DataValueTree::children(*this);
    const bool exists = index < container.elements.size();
    DataValueTree::beforeChange(*this, synchronise && exists);
    if (!exists && !container.mirror)
        DataValueTree::storeMirror(container); // the text gains an element, the list does not
    if (DataValueTree::Container* const mirrored = Tree::mirrored(container)) {
        resize(*mirrored, std::max<std::size_t>(mirrored->elements.size(), index + 1U));
        DataValueTree::attach(*mirrored, mirrored->elements[index].value, faceOf(fresh));
    }
    CDataValue& slot = elementAt(container, index);
    // The text has been seen to, so the element changes without storing the mirror again.
    DataValueTree::exchangeContent(slot, fresh);
    slot.m_linked = true;
    DataValueTree::noteChild(container, slot);
    if (synchronise)
        DataValueTree::synchroniseUpwards(*this);
    return slot;
}

CDataValue& CDataValue::arrayGet(unsigned int index)
{
    requireOrdinary(*this, __LINE__);
    if (!mayReach(*this, index))
        return referToMemberNull();
    return elementAt(*DataValueTree::children(*this), index);
}

unsigned int CDataValue::arrayCount() const
{
    requireOrdinary(*this, __LINE__);
    return isArray() ? getSize() : 0;
}

CDataValue CDataValue::arrayRemove(unsigned int index, int count, bool synchronise)
{
    requireOrdinary(*this, __LINE__);
    CDataValue result(ARRAY_VALUE);
    if (!mayReach(*this, index))
        return result;
    DataValueTree::Container& container = *DataValueTree::children(*this);
    const std::size_t behind =
        container.elements.size() - std::min<std::size_t>(index, container.elements.size());
    const std::size_t wanted = count > 0 ? static_cast<std::size_t>(count) : 0;
    const std::size_t removed = std::min(wanted, behind);
    DataValueTree::beforeChange(*this, synchronise);
    DataValueTree::Container* const mirrored = Tree::mirrored(container);
    DataValueElements& shown = mirrored ? mirrored->elements : container.elements;
    for (std::size_t i = index; i < index + removed; ++i)
        appendElement(result, faceOf(shown[i].value), false);
    if (mirrored)
        eraseRange(mirrored->elements, index, removed);
    eraseRange(container.elements, index, removed);
    if (synchronise)
        DataValueTree::synchroniseUpwards(*this);
    return result;
}
