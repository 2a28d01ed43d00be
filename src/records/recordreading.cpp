// A record is read from a packed tree without unpacking it.

#include "DataValue/valueaccess_p.h"
#include "records/recordplan_p.h"

#include <string>

namespace records {

namespace {

/// Reads members and elements from the value that was found for them.
///
/// CDataValue's conversions decide what a value gives and what is logged of a wrong kind. A packed
/// node of the right kind is read directly, with the same result.
class Reader
{
public:
    explicit Reader(CDataValue& value)
        : m_value(&value)
        , m_node(ValueAccess::packedNode(value))
        , m_block(ValueAccess::packedBlock(value))
    {
    }
    /// A node of a packed tree; null stands for a member that is not there.
    Reader(const PackedNode* node, PackedBlock* block)
        : m_node(node)
        , m_block(block)
    {
    }

    void operator()(int& number) const
    {
        number = isA(INT_VALUE) ? m_node->signedNumber
                                : asValue([](CDataValue& value) { return value.asInt(); });
    }
    void operator()(bool& flag) const
    {
        flag = isA(BOOLEAN_VALUE) ? m_node->flag
                                  : asValue([](CDataValue& value) { return value.asBool(); });
    }
    void operator()(QString& text) const
    {
        text = isA(STRING_VALUE) ? QString::fromUtf8(m_node->text)
                                 : asValue([](CDataValue& value) { return value.asQString(); });
    }
    void operator()(long long& number) const
    {
        number = asValue([](CDataValue& value) { return value.asLongLong(); });
    }
    void operator()(unsigned long& number) const
    {
        number = asValue([](CDataValue& value) { return value.asUnsignedLong(); });
    }
    void operator()(TextMap& texts) const
    {
        asValue([&texts](CDataValue& map) {
            for (const std::string& bytes : map.mapGetKeys()) {
                // Keys are read as Latin-1, as the other processes read them. A key that is not
                // ASCII changes by that, and no text is found under the changed key.
                const QString key = QString::fromLatin1(bytes.c_str());
                texts.insert(key, map.mapGet(key).asQString());
            }
        });
    }
    void operator()(const RecordType& type, void* record) const
    {
        noteMiss();
        if (m_value && !m_node) {
            for (const Field& field : type.fields)
                walk(field.type, field.in(record), Reader(m_value->mapGet(field.key)));
            return;
        }
        std::array<const PackedNode*, kMostFields> members;
        findMembers(type, members.data());
        const PackedNode* const* member = members.data();
        for (const Field& field : type.fields)
            walk(field.type, field.in(record), Reader(*member++, m_block));
    }
    void operator()(const ListType& type, void* list) const
    {
        noteMiss();
        if (m_value && !m_node) {
            for (unsigned int index = 0; index < m_value->arrayCount(); ++index)
                walk(type.element, type.append(list), Reader(m_value->arrayGet(index)));
            return;
        }
        const PackedNode* element = isA(ARRAY_VALUE) ? m_node + 1 : nullptr;
        for (std::uint32_t left = element ? m_node->count : 0; left != 0; --left) {
            walk(type.element, type.append(list), Reader(element, m_block));
            element = element->behind();
        }
    }

private:
    bool isA(ENUM_VALUE_TYPE kind) const { return m_node && m_node->kind == kind; }

    /// A missing list or record counts as a look-up that missed, as a missing scalar does.
    void noteMiss() const
    {
        if (!m_value && !m_node)
            CDataValue::referToMemberNull();
    }

    /// Looks all fields up in one walk: both the members and the sorted fields are in key order.
    void findMembers(const RecordType& type, const PackedNode** members) const
    {
        const bool isMap = isA(MAP_VALUE);
        const PackedNode* key = isMap ? m_node + 1 : nullptr;
        std::uint32_t left = isMap ? m_node->count : 0;
        for (const std::uint8_t place : type.byKey) {
            const std::string_view wanted = type.fields[place].keyText();
            for (; left != 0 && key->view() < wanted; --left)
                key = (key + 1)->behind();
            members[place] = left != 0 && key->view() == wanted ? key + 1 : nullptr;
        }
    }

    /// Calls `read` with the value; a packed node becomes a value for that call.
    template<class Read>
    std::invoke_result_t<Read, CDataValue&> asValue(Read read) const
    {
        if (m_value)
            return read(*m_value);
        if (!m_node)
            return read(CDataValue::referToMemberNull());
        CDataValue value;
        ValueAccess::constructPacked(value, *m_block, *m_node);
        return read(value);
    }

    CDataValue* m_value = nullptr;
    const PackedNode* m_node;
    PackedBlock* m_block;
};

} // namespace

void readRecord(const RecordType& type, CDataValue& data, void* record)
{
    // Each look-up that misses empties the shared null value. When that is to be read, or something
    // in it, a copy is read instead.
    if (&data == &CDataValue::m_sNull || ValueAccess::isBelow(data, CDataValue::m_sNull)) {
        CDataValue written(data);
        Reader{written}(type, record);
        return;
    }
    Reader{data}(type, record);
}

} // namespace records
