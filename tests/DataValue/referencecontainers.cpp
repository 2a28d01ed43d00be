#include "referencemodel.h"

#include <algorithm>

// Preconditions

void ModelValue::requireNoAddress() const
{
    if (isHasAddressType())
        throw BrokenPrecondition("!bIsHasAddressType");
}

void ModelValue::requireNoAddress(const ModelValue& newElement) const
{
    if (isHasAddressType() || newElement.isHasAddressType())
        throw BrokenPrecondition("!bIsHasAddressType && !newElement.isHasAddressType()");
}

// Ordinary maps

ModelValue& ModelValue::mapSet(const std::string& key, const ModelValue& value, bool synchronise)
{
    requireNoAddress(value);
    const ModelValue source(value); // as it was before, should it be part of this tree
    if (m_kind == NULL_VALUE)
        *this = ModelValue(MAP_VALUE);
    if (m_kind != MAP_VALUE)
        return referToMemberNull();
    m_mirror[key] = source.m_mirror;
    m_members[key] = held(source);
    ModelValue& stored = *m_members[key];
    if (synchronise)
        synPreDataValue(this);
    return stored;
}

ModelValue& ModelValue::mapGet(const std::string& key)
{
    requireNoAddress();
    if (m_kind == MAP_VALUE && m_members.count(key))
        return *m_members[key];
    return referToMemberNull();
}

bool ModelValue::mapIsMember(const std::string& key) const
{
    requireNoAddress();
    return m_kind == MAP_VALUE && m_mirror.isMember(key);
}

std::vector<std::string> ModelValue::mapGetKeys() const
{
    requireNoAddress();
    return m_kind == MAP_VALUE ? m_mirror.getMemberNames() : std::vector<std::string>();
}

ModelValue ModelValue::mapRemove(const std::string& key, bool synchronise)
{
    requireNoAddress();
    ModelValue removed(MAP_VALUE);
    if (m_kind != MAP_VALUE || !m_members.count(key))
        return removed;
    removed.mapSet(key, fromJson(m_mirror[key]), false);
    m_mirror.removeMember(key);
    m_members.erase(key);
    if (synchronise)
        synPreDataValue(this);
    return removed;
}

std::list<ModelValue> ModelValue::mapFind(const std::string& key) const
{
    return mapFind(key, *this);
}

std::list<ModelValue> ModelValue::mapFind(const std::string& key, const ModelValue& node) const
{
    requireNoAddress();
    std::list<ModelValue> found;
    if (node.m_kind != MAP_VALUE)
        return found;
    for (const std::string& name : node.m_mirror.getMemberNames()) {
        const Json::Value& member = node.m_mirror[name];
        if (name == key)
            found.push_back(fromJson(member));
        if (member.isObject() || member.isArray())
            dataValueFind(key, fromJson(member), &found);
    }
    return found;
}

void ModelValue::dataValueFind(const std::string& key, const ModelValue& node,
                               std::list<ModelValue>* list) const
{
    if (node.m_kind == ARRAY_VALUE) {
        for (const Child& element : node.m_elements) {
            if (element->m_kind == MAP_VALUE)
                dataValueFind(key, *element, list);
        }
    }
    if (node.m_kind == MAP_VALUE) {
        for (const auto& [name, member] : node.m_members) {
            if (name == key)
                list->push_back(*member);
            if (member->isOrdinaryContainer())
                dataValueFind(key, *member, list);
        }
    }
}

// Ordinary arrays

unsigned int ModelValue::arrayAppend(const ModelValue& value, bool synchronise)
{
    requireNoAddress(value);
    const ModelValue source(value);
    if (m_kind == NULL_VALUE)
        *this = ModelValue(ARRAY_VALUE);
    if (m_kind != ARRAY_VALUE)
        return 0;
    const auto n = static_cast<unsigned int>(m_elements.size());
    m_mirror.resize(n + 1);
    m_mirror[n] = source.m_mirror;
    m_elements.push_back(held(source));
    if (synchronise)
        synPreDataValue(this);
    return n;
}

void ModelValue::arrayInsert(unsigned int index, const ModelValue& value, bool synchronise)
{
    requireNoAddress(value);
    const ModelValue source(value);
    if (m_kind == NULL_VALUE)
        arrayAppend(value, true);
    else if (m_kind == ARRAY_VALUE) {
        const auto n = static_cast<unsigned int>(m_elements.size());
        m_mirror.resize(n + 1);
        if (index > n)
            return;
        m_elements.insert(m_elements.begin() + index, held(source));
        for (unsigned int i = n; i > index; --i)
            m_mirror[i] = m_mirror[i - 1];
        m_mirror[index] = source.m_mirror;
        if (synchronise)
            synPreDataValue(this);
    }
}

ModelValue& ModelValue::arrayModify(unsigned int index, const ModelValue& value, bool synchronise)
{
    requireNoAddress(value);
    const ModelValue source(value);
    if (indexMisses(index))
        return referToMemberNull();
    m_mirror[index] = source.m_mirror;
    if (index >= m_elements.size())
        throw std::out_of_range("vector::_M_range_check"); // the text has the element all the same
    ModelValue& element = *m_elements[index];
    element = source;
    element.m_parent = this;
    if (synchronise)
        synPreDataValue(this);
    return element;
}

ModelValue& ModelValue::arrayGet(unsigned int index)
{
    requireNoAddress();
    if (indexMisses(index))
        return referToMemberNull();
    if (index >= m_elements.size())
        throw std::out_of_range("vector::_M_range_check");
    return *m_elements[index];
}

unsigned int ModelValue::arrayCount() const
{
    requireNoAddress();
    return m_kind == ARRAY_VALUE ? m_mirror.size() : 0;
}

ModelValue ModelValue::arrayRemove(unsigned int index, int count, bool synchronise)
{
    requireNoAddress();
    ModelValue removed(ARRAY_VALUE);
    if (indexMisses(index))
        return removed;
    const unsigned int oldCount = m_mirror.size();
    const unsigned int present = static_cast<unsigned int>(m_elements.size());
    const unsigned int wanted = count < 0 ? 0 : static_cast<unsigned int>(count);
    const unsigned int stretch = index >= present ? 0 : std::min(wanted, present - index);
    for (unsigned int i = index; i < index + stretch; ++i) {
        m_elements.erase(m_elements.begin() + index);
        removed.arrayAppend(fromJson(m_mirror[i]), false);
    }
    for (unsigned int i = index; i + stretch < oldCount; ++i)
        m_mirror[i] = m_mirror[i + stretch];
    m_mirror.resize(oldCount - stretch);
    if (synchronise)
        synPreDataValue(this);
    return removed;
}

bool ModelValue::indexMisses(unsigned int index) const
{
    return m_kind != ARRAY_VALUE || m_elements.empty() || index > m_mirror.size();
}

// Address containers

ModelValue& ModelValue::addressMapSet(const std::string& key, const ModelValue& value)
{
    const ModelValue source(value);
    if (m_kind == NULL_VALUE)
        *this = ModelValue(ADDRESS_MAP_VALUE);
    if (m_kind != ADDRESS_MAP_VALUE)
        return referToMemberNull();
    m_members[key] = std::make_unique<ModelValue>(source);
    return *m_members[key];
}

ModelValue& ModelValue::addressMapGet(const std::string& key)
{
    if (addressMapIsMember(key))
        return *m_members[key];
    return referToMemberNull();
}

bool ModelValue::addressMapIsMember(const std::string& key) const
{
    return m_kind == ADDRESS_MAP_VALUE && m_members.count(key);
}

std::vector<std::string> ModelValue::addressMapGetKeys() const
{
    std::vector<std::string> keys;
    if (m_kind == ADDRESS_MAP_VALUE) {
        for (const auto& [key, member] : m_members)
            keys.push_back(key);
    }
    return keys;
}

void ModelValue::addressMapRemove(const std::string& key)
{
    if (m_kind == ADDRESS_MAP_VALUE)
        m_members.erase(key);
}

std::list<ModelValue> ModelValue::addressMapFind(const std::string& key) const
{
    return addressMapFind(key, *this);
}

std::list<ModelValue> ModelValue::addressMapFind(const std::string& key,
                                                 const ModelValue& node) const
{
    std::list<ModelValue> found;
    if (node.m_kind != ADDRESS_MAP_VALUE)
        return found;
    for (const auto& [name, member] : node.m_members) {
        if (name == key)
            found.push_back(*member);
        if (member->isOrdinaryContainer())
            dataValueFind(key, *member, &found);
    }
    return found;
}

unsigned int ModelValue::addressArrayAppend(const ModelValue& value)
{
    const ModelValue source(value);
    if (m_kind == NULL_VALUE)
        *this = ModelValue(ADDRESS_ARRAY_VALUE);
    if (m_kind != ADDRESS_ARRAY_VALUE)
        return 0;
    const bool wasEmpty = m_elements.empty();
    m_elements.push_back(std::make_unique<ModelValue>(source));
    return wasEmpty ? 0 : addressArrayCount() - 1;
}

void ModelValue::addressArrayInsert(unsigned int index, const ModelValue& value)
{
    const ModelValue source(value);
    if (m_kind == NULL_VALUE)
        addressArrayAppend(value);
    else if (m_kind == ADDRESS_ARRAY_VALUE && index <= addressArrayCount())
        m_elements.insert(m_elements.begin() + index, std::make_unique<ModelValue>(source));
}

ModelValue& ModelValue::addressArrayModify(unsigned int index, const ModelValue& value)
{
    const ModelValue source(value);
    if (addressIndexMisses(index))
        return referToMemberNull();
    *m_elements[index] = source;
    return *m_elements[index];
}

ModelValue& ModelValue::addressArrayGet(unsigned int index)
{
    if (addressIndexMisses(index))
        return referToMemberNull();
    return *m_elements[index];
}

void ModelValue::addressArrayRemove(unsigned int index, int count)
{
    if (addressIndexMisses(index))
        return;
    for (int i = 0; i < count && index < m_elements.size(); ++i)
        m_elements.erase(m_elements.begin() + index);
}

unsigned int ModelValue::addressArrayCount() const
{
    return m_kind == ADDRESS_ARRAY_VALUE ? getSize() : 0;
}

bool ModelValue::addressIndexMisses(unsigned int index) const
{
    return m_kind != ADDRESS_ARRAY_VALUE || m_elements.empty() || index > addressArrayCount();
}
