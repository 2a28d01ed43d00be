// Records into data values and back. The maps and arrays that a record becomes are built directly
// in the value's tree, and read there: they are fresh, or plain maps, and the checks and notes of
// the value's own operations would find nothing to do for each of their members again.

#include "DataValue/datavalue_p.h"
#include "records/recordfields_p.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace records {

namespace {

using Tree = DataValueTree;

/// Puts a finished value, no container's yet, into a fresh place of `container`.
void adopt(Tree::Container& container, CDataValue& slot, CDataValue& value)
{
    Tree::relocate(slot, value);
    Tree::place(container, slot);
}

CDataValue arrayOf(const ListType& type, const void* list);
CDataValue mapOf(const RecordType& type, void* record);

/// Makes a value of each field; what follows says where it goes.
class Writer : public FieldVisitor
{
protected:
    ~Writer() = default;

private:
    virtual void put(const Field& field, CDataValue&& value) = 0;

    void number(const Field& field, int& member) override { put(field, CDataValue(member)); }
    void boolean(const Field& field, bool& member) override { put(field, CDataValue(member)); }
    void text(const Field& field, QString& member) override { put(field, CDataValue(member)); }
    void longNumber(const Field& field, long long& member) override
    {
        put(field, CDataValue(member));
    }
    void unsignedNumber(const Field& field, unsigned long& member) override
    {
        put(field, CDataValue(member));
    }
    void textMap(const Field& field, TextMap& member) override
    {
        CDataValue map;
        for (auto item = member.cbegin(); item != member.cend(); ++item)
            map.mapSet(item.key(), CDataValue(item.value()), false);
        put(field, std::move(map));
    }
    void record(const Field& field, const RecordType& type, void* member) override
    {
        put(field, mapOf(type, member));
    }
    void list(const Field& field, const ListType& type, void* member) override
    {
        put(field, arrayOf(type, member));
    }
};

/// Adds the fields to a value as it stands.
class MemberWriter final : public Writer
{
public:
    explicit MemberWriter(CDataValue& data)
        : m_data(data)
    {
    }

private:
    void put(const Field& field, CDataValue&& value) override
    {
        m_data.mapSet(field.key, std::move(value), false);
    }

    CDataValue& m_data;
};

/// Makes maps of records of the same type, one after the other. The order of the keys and their
/// texts are made for the first map and shared by the others.
class MapMaker final : public Writer
{
public:
    MapMaker()
    {
        m_keys.reserve(usualFields);
        m_values.reserve(usualFields);
    }

    CDataValue make(const RecordType& type, void* record)
    {
        type.visit(*this, record);
        if (m_order.empty())
            sortKeys();
        CDataValue map(MAP_VALUE);
        Tree::Container& container = *Tree::children(map);
        container.members.reserve(m_order.size());
        for (const std::size_t field : m_order)
            adopt(container, container.members.findOrAdd(m_keys[field]).value, m_values[field]);
        m_values.clear();
        return map;
    }

private:
    void put(const Field& field, CDataValue&& value) override
    {
        if (m_order.empty())
            m_keys.emplace_back(std::string_view(field.key));
        m_values.push_back(std::move(value));
    }

    void sortKeys()
    {
        m_order.resize(m_keys.size());
        std::iota(m_order.begin(), m_order.end(), std::size_t(0));
        std::sort(m_order.begin(), m_order.end(), [this](std::size_t one, std::size_t other) {
            return m_keys[one].view() < m_keys[other].view();
        });
    }

    static constexpr std::size_t usualFields = 16;

    std::vector<DataValueText> m_keys; // in the order of the fields
    std::vector<std::size_t> m_order;  // the fields in the order of their keys
    std::vector<CDataValue> m_values;  // of the record that is being visited
};

/// Appends the elements of a list to a fresh array.
class ArrayMaker final : public Writer
{
public:
    explicit ArrayMaker(std::size_t count) { container().elements.reserve(count); }

    CDataValue array{ARRAY_VALUE};

private:
    Tree::Container& container() { return *Tree::children(array); }

    void put(const Field&, CDataValue&& value) override
    {
        adopt(container(), Tree::appendSlot(container()), value);
    }
    void record(const Field& field, const RecordType& type, void* member) override
    {
        put(field, m_maps.make(type, member));
    }

    MapMaker m_maps;
};

CDataValue mapOf(const RecordType& type, void* record)
{
    return MapMaker().make(type, record);
}

CDataValue arrayOf(const ListType& type, const void* list)
{
    const std::size_t count = type.count(list);
    if (count == 0) // travels as null
        return CDataValue();
    ArrayMaker elements(count);
    type.visitElements(elements, list);
    return std::move(elements.array);
}

/// Where the fields of a record stood in the map before, by their order in the list.
using Places = std::vector<std::size_t>;

/// Finds the members of one map. With `places` each is first looked for where it was in the map
/// before: the maps of a list mostly have the same keys.
class MemberFinder
{
public:
    MemberFinder(CDataValue& map, Places* places)
        : m_map(map)
        , m_places(places)
    {
        if (!map.isObject() || Tree::holdsAddress(map))
            return; // both are for the value's own look-up
        m_members = &Tree::children(map)->members;
        if (!places || m_members->size() > m_inOrder.size())
            return;
        for (DataValueMembers::Member& member : *m_members)
            m_inOrder[m_count++] = &member;
    }

    CDataValue& find(const char* name)
    {
        if (!m_members)
            return m_map.mapGet(name);
        const std::string_view key(name);
        const std::size_t field = m_field++;
        if (m_count != 0 && field < m_places->size()) {
            const std::size_t place = (*m_places)[field];
            if (place < m_count && m_inOrder[place]->key.view() == key)
                return m_inOrder[place]->value;
        }
        DataValueMembers::Member* const found = m_members->find(key);
        if (m_count != 0)
            remember(field, found);
        return found ? found->value : CDataValue::referToMemberNull();
    }

private:
    void remember(std::size_t field, const DataValueMembers::Member* found)
    {
        const auto end = m_inOrder.begin() + static_cast<std::ptrdiff_t>(m_count);
        const auto place = std::find(m_inOrder.begin(), end, found) - m_inOrder.begin();
        m_places->resize(std::max(m_places->size(), field + 1));
        (*m_places)[field] = static_cast<std::size_t>(place);
    }

    CDataValue& m_map;
    Places* m_places;
    DataValueMembers* m_members = nullptr;
    std::size_t m_field = 0;
    std::size_t m_count = 0; // of m_inOrder
    std::array<DataValueMembers::Member*, 32> m_inOrder{};
};

/// Reads fields from the members of a map, and an element, which has no key, from the value itself.
class Reader final : public FieldVisitor
{
public:
    /// `places` are those of the list that `data` is an element of.
    explicit Reader(CDataValue& data, Places* places = nullptr)
        : m_data(data)
        , m_places(places)
    {
    }

    void read(const RecordType& type, void* record)
    {
        MemberFinder finder(m_data, m_places);
        m_finder = &finder;
        type.visit(*this, record);
    }

private:
    CDataValue& valueOf(const Field& field)
    {
        return field.key ? m_finder->find(field.key) : m_data;
    }
    void number(const Field& field, int& member) override { member = valueOf(field).asInt(); }
    void boolean(const Field& field, bool& member) override { member = valueOf(field).asBool(); }
    void text(const Field& field, QString& member) override { member = valueOf(field).asQString(); }
    void longNumber(const Field& field, long long& member) override
    {
        member = valueOf(field).asLongLong();
    }
    void unsignedNumber(const Field& field, unsigned long& member) override
    {
        member = valueOf(field).asUnsignedLong();
    }
    void textMap(const Field& field, TextMap& member) override
    {
        CDataValue& map = valueOf(field);
        const std::vector<std::string> keys = map.mapGetKeys();
        for (const std::string& bytes : keys) {
            // The peers read keys byte by byte: one outside ASCII changes here, and its text is
            // then not found under the changed key.
            const QString key = QString::fromLatin1(bytes.c_str());
            member.insert(key, map.mapGet(key).asQString());
        }
    }
    void record(const Field& field, const RecordType& type, void* member) override
    {
        Reader(valueOf(field), field.key ? nullptr : m_places).read(type, member);
    }
    void list(const Field& field, const ListType& type, void* member) override
    {
        CDataValue& array = valueOf(field);
        Places places;
        for (unsigned int index = 0; index < array.arrayCount(); ++index) {
            Reader element(array.arrayGet(index), &places);
            type.append(element, member);
        }
    }

    CDataValue& m_data;
    Places* m_places;
    MemberFinder* m_finder = nullptr;
};

} // namespace

// The lists take records that can be changed, because reading changes them; writing changes
// nothing.

void writeRecord(const RecordType& type, const void* record, CDataValue& data)
{
    if (data.isNull()) {
        data = mapOf(type, const_cast<void*>(record));
        return;
    }
    MemberWriter writer(data);
    type.visit(writer, const_cast<void*>(record));
}

void readRecord(const RecordType& type, CDataValue& data, void* record)
{
    Reader(data).read(type, record);
}

} // namespace records
