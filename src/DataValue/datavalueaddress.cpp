// The address containers: no text, no synchronising, no assertions.

#include "DataValue/core/tree_p.h"

#include <algorithm>
#include <utility>

namespace {

using Tree = DataValueTree;

/// A null value becomes an address container; whatever holds it may hold an address from then on.
/// Its text stays null, so no mirror above it changes.
void becomeAddressContainer(CDataValue& value, ENUM_VALUE_TYPE kind)
{
    CDataValue container(kind);
    Tree::replaceContent(value, std::move(container));
}

CDataValue& setMember(CDataValue& map, std::string_view key, const CDataValue& value)
{
    CDataValue fresh(value);
    if (map.isNull())
        becomeAddressContainer(map, ADDRESS_MAP_VALUE);
    if (!map.isAddressMap())
        return CDataValue::referToMemberNull();
    Tree::Container& container = *Tree::children(map);
    CDataValue& slot = Tree::memberSlot(container, key);
    Tree::attach(container, slot, std::move(fresh));
    return slot;
}

CDataValue& getMember(CDataValue& map, std::string_view key)
{
    DataValueMembers::Member* const member =
        map.isAddressMap() ? Tree::children(map)->members.find(key) : nullptr;
    return member ? member->value : CDataValue::referToMemberNull();
}

bool hasMember(const CDataValue& map, std::string_view key)
{
    return map.isAddressMap() && Tree::unpacked(map)->members.find(key) != nullptr;
}

void removeMember(CDataValue& map, std::string_view key)
{
    if (map.isAddressMap())
        Tree::children(map)->members.remove(key);
}

std::list<CDataValue> findMembers(std::string_view key, const CDataValue& node)
{
    std::list<CDataValue> found;
    if (!node.isAddressMap())
        return found;
    for (const auto& member : Tree::unpacked(node)->members) {
        if (member.key.view() == key)
            found.push_back(member.value);
        Tree::find(key, member.value, false, found);
    }
    return found;
}

/// Whether `index` passes the described bound test, which only 0 does.
bool mayReach(const CDataValue& array, unsigned int index)
{
    return array.isAddressArray() && !Tree::unpacked(array)->elements.empty() &&
           index <= array.addressArrayCount();
}

} // namespace

CDataValue& CDataValue::addressMapSet(const char* key, const CDataValue& value)
{
    return setMember(*this, keyOf(key), value);
}

CDataValue& CDataValue::addressMapSet(const QString& key, const CDataValue& value)
{
    return setMember(*this, key.toStdString(), value);
}

CDataValue& CDataValue::addressMapGet(const char* key)
{
    return getMember(*this, keyOf(key));
}

CDataValue& CDataValue::addressMapGet(const QString& key)
{
    return getMember(*this, key.toStdString());
}

bool CDataValue::addressMapIsMember(const char* key) const
{
    return hasMember(*this, keyOf(key));
}

bool CDataValue::addressMapIsMember(const QString& key) const
{
    return hasMember(*this, key.toStdString());
}

std::vector<std::string> CDataValue::addressMapGetKeys() const
{
    std::vector<std::string> keys;
    if (!isAddressMap())
        return keys;
    for (const auto& member : m_payload.children->members)
        keys.emplace_back(member.key.view());
    return keys;
}

void CDataValue::addressMapRemove(const char* key)
{
    removeMember(*this, keyOf(key));
}

void CDataValue::addressMapRemove(const QString& key)
{
    removeMember(*this, key.toStdString());
}

std::list<CDataValue> CDataValue::addressMapFind(const char* key) const
{
    return findMembers(keyOf(key), *this);
}

std::list<CDataValue> CDataValue::addressMapFind(const QString& key) const
{
    return findMembers(key.toStdString(), *this);
}

std::list<CDataValue> CDataValue::addressMapFind(const char* key, const CDataValue& node) const
{
    return findMembers(keyOf(key), node);
}

std::list<CDataValue> CDataValue::addressMapFind(const QString& key, const CDataValue& node) const
{
    return findMembers(key.toStdString(), node);
}

unsigned int CDataValue::addressArrayAppend(const CDataValue& value)
{
    CDataValue fresh(value);
    if (isNull())
        becomeAddressContainer(*this, ADDRESS_ARRAY_VALUE);
    if (!isAddressArray())
        return 0;
    DataValueTree::Container& container = *DataValueTree::children(*this);
    const bool first = container.elements.empty();
    DataValueTree::attach(container, DataValueTree::appendSlot(container), std::move(fresh));
    return first ? 0 : addressArrayCount() - 1;
}

void CDataValue::addressArrayInsert(unsigned int index, const CDataValue& value)
{
    if (isNull()) {
        addressArrayAppend(value);
        return;
    }
    if (!isAddressArray() || index > addressArrayCount())
        return;
    CDataValue fresh(value);
    DataValueTree::Container& container = *DataValueTree::children(*this);
    DataValueTree::attach(container, DataValueTree::insertSlot(container, index), std::move(fresh));
}

CDataValue& CDataValue::addressArrayModify(unsigned int index, const CDataValue& value)
{
    if (!mayReach(*this, index))
        return referToMemberNull();
    CDataValue& slot = DataValueTree::children(*this)->elements[index].value;
    slot = value;
    return slot;
}

CDataValue& CDataValue::addressArrayGet(unsigned int index)
{
    return mayReach(*this, index) ? DataValueTree::children(*this)->elements[index].value
                                  : referToMemberNull();
}

void CDataValue::addressArrayRemove(unsigned int index, int count)
{
    if (!mayReach(*this, index) || count <= 0)
        return;
    DataValueElements& elements = DataValueTree::children(*this)->elements;
    const auto removed = std::min<std::size_t>(static_cast<std::size_t>(count), elements.size());
    elements.erase(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(removed));
}

unsigned int CDataValue::addressArrayCount() const
{
    return isAddressArray() ? getSize() : 0;
}
