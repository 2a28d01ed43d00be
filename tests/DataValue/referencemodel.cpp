#include "referencemodel.h"

#include <algorithm>

namespace {

Json::Value freshMirror(ENUM_VALUE_TYPE kind)
{
    switch (kind) {
    case INT_VALUE:
        return Json::Value(Json::intValue);
    case UINT_VALUE:
        return Json::Value(Json::uintValue);
    case REAL_VALUE:
        return Json::Value(Json::realValue);
    case STRING_VALUE:
        return Json::Value(Json::stringValue);
    case BOOLEAN_VALUE:
        return Json::Value(Json::booleanValue);
    case ARRAY_VALUE:
        return Json::Value(Json::arrayValue);
    case MAP_VALUE:
        return Json::Value(Json::objectValue);
    default:
        return Json::Value(Json::nullValue);
    }
}

bool isAddressKind(ENUM_VALUE_TYPE kind)
{
    return kind == ADDRESS_VALUE || kind == ADDRESS_ARRAY_VALUE || kind == ADDRESS_MAP_VALUE;
}

} // namespace

ModelValue::ModelValue(ENUM_VALUE_TYPE kind)
    : m_mirror(freshMirror(kind))
    , m_kind(kind)
{
}
ModelValue::ModelValue(bool value)
    : m_mirror(value)
    , m_kind(BOOLEAN_VALUE)
{
}
ModelValue::ModelValue(int value)
    : m_mirror(value)
    , m_kind(INT_VALUE)
{
}
ModelValue::ModelValue(unsigned int value)
    : m_mirror(value)
    , m_kind(UINT_VALUE)
{
}
ModelValue::ModelValue(double value)
    : m_mirror(value)
    , m_kind(REAL_VALUE)
{
}
ModelValue::ModelValue(const char* utf8)
    : ModelValue(std::string(utf8))
{
}
ModelValue::ModelValue(const std::string& utf8)
    : m_mirror(utf8)
    , m_kind(STRING_VALUE)
{
}
ModelValue::ModelValue(const void* address)
    : m_address(address)
    , m_kind(ADDRESS_VALUE)
{
}

ModelValue::ModelValue(const ModelValue& other)
    : m_address(other.m_address)
    , m_kind(other.m_kind)
{
    for (const Child& element : other.m_elements)
        m_elements.push_back(std::make_unique<ModelValue>(*element));
    for (const auto& [key, member] : other.m_members)
        m_members[key] = std::make_unique<ModelValue>(*member);
    if (isAddressKind(m_kind))
        return;
    m_mirror = other.m_mirror;
    synchPreDataPoint();
}

ModelValue& ModelValue::operator=(const ModelValue& other)
{
    ModelValue copy(other);
    swap(copy);
    synchPreDataPoint();
    return *this;
}

void ModelValue::swap(ModelValue& other)
{
    std::swap(m_kind, other.m_kind);
    std::swap(m_elements, other.m_elements);
    std::swap(m_members, other.m_members);
    std::swap(m_address, other.m_address);
    m_mirror.swap(other.m_mirror);
    for (ModelValue* child : children())
        child->m_parent = nullptr;
    for (ModelValue* child : other.children())
        child->m_parent = nullptr;
}

void ModelValue::clear()
{
    if (!isOrdinaryContainer())
        return;
    m_mirror.clear();
    m_elements.clear();
    m_members.clear();
}

bool ModelValue::isOrdinaryContainer() const
{
    return m_kind == ARRAY_VALUE || m_kind == MAP_VALUE;
}

bool ModelValue::isEqual(const ModelValue& other) const
{
    return m_mirror == other.m_mirror;
}

unsigned int ModelValue::getSize() const
{
    return m_mirror.size();
}

bool ModelValue::isEmpty() const
{
    return m_mirror.empty();
}

bool ModelValue::isHasAddressType() const
{
    if (!isOrdinaryContainer())
        return isAddressKind(m_kind);
    const std::vector<ModelValue*> all = children();
    return std::any_of(all.begin(), all.end(),
                       [](const ModelValue* child) { return child->isHasAddressType(); });
}

bool ModelValue::holds(const ModelValue& other) const
{
    const std::vector<ModelValue*> all = children();
    return this == &other || std::any_of(all.begin(), all.end(), [&](const ModelValue* child) {
               return child->holds(other);
           });
}

size_t ModelValue::treeSize() const
{
    size_t size = 1;
    for (const ModelValue* child : children())
        size += child->treeSize();
    return size;
}

int ModelValue::asInt() const
{
    if (m_kind == UINT_VALUE)
        return static_cast<int>(m_mirror.asUInt());
    return m_kind == INT_VALUE ? m_mirror.asInt() : 0;
}

unsigned int ModelValue::asUInt() const
{
    if (m_kind == INT_VALUE)
        return m_mirror.asInt() < 0 ? 0 : static_cast<unsigned int>(m_mirror.asInt());
    return m_kind == UINT_VALUE ? m_mirror.asUInt() : 0;
}

double ModelValue::asDouble() const
{
    return m_kind == REAL_VALUE ? m_mirror.asDouble() : 0.0;
}

bool ModelValue::asBool() const
{
    return m_kind == BOOLEAN_VALUE && m_mirror.asBool();
}

const void* ModelValue::asAddress() const
{
    return m_kind == ADDRESS_VALUE ? m_address : nullptr;
}

std::string ModelValue::asBytes() const
{
    return m_kind == STRING_VALUE ? m_mirror.asString() : std::string();
}

// Synchronising

void ModelValue::synchJsonData()
{
    if (!isOrdinaryContainer())
        return;
    m_mirror.clear();
    for (unsigned int i = 0; i < m_elements.size(); ++i) {
        m_elements[i]->synchJsonData();
        m_mirror[i] = m_elements[i]->m_mirror;
        m_elements[i]->m_parent = this;
    }
    for (const auto& [key, member] : m_members) {
        member->synchJsonData();
        m_mirror[key] = member->m_mirror;
        member->m_parent = this;
    }
}

void ModelValue::synchPreDataPoint()
{
    for (ModelValue* child : children()) {
        child->synchJsonData();
        child->m_parent = this;
    }
}

void ModelValue::synPreDataValue(ModelValue* start)
{
    for (ModelValue* value = start; value; value = value->m_parent)
        value->synchJsonData();
}

// Text

std::string ModelValue::text(ENUM_STYLE style) const
{
    return modelText(m_mirror, style);
}

bool ModelValue::parse(const std::string& text, ModelValue& out)
{
    Json::Value root;
    if (!modelReadJson(text, &root))
        return false;
    out = fromJson(root);
    return true;
}

ModelValue ModelValue::fromJson(const Json::Value& json)
{
    ModelValue value(static_cast<ENUM_VALUE_TYPE>(json.type()));
    value.m_mirror = json;
    if (json.isArray()) {
        for (const Json::Value& element : json)
            value.m_elements.push_back(value.held(fromJson(element)));
    } else if (json.isObject()) {
        for (const std::string& name : json.getMemberNames())
            value.m_members[name] = value.held(fromJson(json[name]));
    }
    return ModelValue(value); // a copy, so that the children name the final value
}

// The shared null value

ModelValue& ModelValue::null()
{
    static ModelValue value(NULL_VALUE);
    return value;
}

ModelValue& ModelValue::referToMemberNull()
{
    null() = ModelValue(NULL_VALUE);
    return null();
}

// Helpers

std::vector<ModelValue*> ModelValue::children() const
{
    std::vector<ModelValue*> all;
    for (const Child& element : m_elements)
        all.push_back(element.get());
    for (const auto& [key, member] : m_members)
        all.push_back(member.get());
    return all;
}

/// A copy of `value` whose parent is this.
ModelValue::Child ModelValue::held(const ModelValue& value)
{
    Child child = std::make_unique<ModelValue>(value);
    child->m_parent = this;
    return child;
}
