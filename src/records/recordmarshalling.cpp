// Records into data values and back. A record becomes a packed tree, made at one go, and is read
// from one without unpacking it.

#include "DataValue/datavalue_p.h"
#include "DataValue/utf8text_p.h"
#include "records/recordplan_p.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace records {

namespace {

using Tree = DataValueTree;
using Entry = RecordPlan::Entry;

/// Appends the values of fields to a packed tree.
class Writer final : public FieldVisitor
{
public:
    void writeRecord(const RecordType& type, void* record)
    {
        const RecordPlan& plan = type.plan(record);
        const std::size_t map = m_builder.begin(MAP_VALUE);
        for (const std::size_t index : plan.sorted()) {
            const Entry& entry = plan.entries()[index];
            m_builder.addLastingText(entry.key.data(), entry.key.size());
            writeMember(entry, record);
        }
        m_builder.end(map, plan.sorted().size());
    }

    void writeMember(const Entry& entry, void* record)
    {
        switch (entry.kind) {
        case RecordPlan::Kind::Number:
            m_builder.addInt(entry.member<int>(record));
            break;
        case RecordPlan::Kind::Boolean:
            m_builder.addBool(entry.member<bool>(record));
            break;
        case RecordPlan::Kind::Text:
            addText(entry.member<QString>(record));
            break;
        case RecordPlan::Kind::LongNumber:
            addDigits(entry.member<long long>(record));
            break;
        case RecordPlan::Kind::UnsignedNumber:
            addDigits(entry.member<unsigned long>(record));
            break;
        case RecordPlan::Kind::Texts:
            writeTextMap(entry.member<TextMap>(record));
            break;
        case RecordPlan::Kind::Record:
            writeRecord(*entry.record, &entry.member<char>(record));
            break;
        case RecordPlan::Kind::List:
            writeList(*entry.list, &entry.member<char>(record));
            break;
        }
    }

    /// What was written; a null value when it was more than a packed tree can hold.
    CDataValue finish()
    {
        CDataValue result;
        Tree::constructPacked(result, m_builder);
        return result;
    }

private:
    void addText(const QString& text)
    {
        char* const to = m_builder.textRoom(Utf8Text::room(text));
        char* const end = Utf8Text::write(text, to);
        *end = '\0';
        m_builder.trimText(end + 1);
        m_builder.addLastingText(to, static_cast<std::size_t>(end - to));
    }

    template<class Number>
    void addDigits(Number number)
    {
        char digits[24];
        char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        m_builder.addText({digits, static_cast<std::size_t>(end - digits)});
    }

    void writeTextMap(const TextMap& texts)
    {
        if (texts.isEmpty()) { // travels as null
            m_builder.addNull();
            return;
        }
        std::vector<std::pair<std::string, const QString*>> members;
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            members.emplace_back(text.key().toStdString(), &text.value());
        std::stable_sort(members.begin(), members.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        const std::size_t map = m_builder.begin(MAP_VALUE);
        std::size_t count = 0;
        for (std::size_t i = 0; i < members.size(); ++i) {
            // Keys that differ in what has no UTF-8 are one key, and the last one stays.
            if (i + 1 < members.size() && members[i].first == members[i + 1].first)
                continue;
            m_builder.addText(members[i].first);
            addText(*members[i].second);
            ++count;
        }
        m_builder.end(map, count);
    }

    void writeList(const ListType& type, const void* list)
    {
        const std::size_t count = type.count(list);
        if (count == 0) { // travels as null
            m_builder.addNull();
            return;
        }
        const std::size_t array = m_builder.begin(ARRAY_VALUE);
        type.visitElements(*this, list);
        m_builder.end(array, count);
    }

    // The elements of lists.
    void number(const Field&, int& member) override { m_builder.addInt(member); }
    void boolean(const Field&, bool& member) override { m_builder.addBool(member); }
    void text(const Field&, QString& member) override { addText(member); }
    void longNumber(const Field&, long long& member) override { addDigits(member); }
    void unsignedNumber(const Field&, unsigned long& member) override { addDigits(member); }
    void textMap(const Field&, TextMap& member) override { writeTextMap(member); }
    void record(const Field&, const RecordType& type, void* member) override
    {
        writeRecord(type, member);
    }
    void list(const Field&, const ListType& type, void* member) override
    {
        writeList(type, member);
    }

    PackedBuilder m_builder;
};

void readTextMap(CDataValue& map, TextMap& texts)
{
    const std::vector<std::string> keys = map.mapGetKeys();
    for (const std::string& bytes : keys) {
        // The peers read keys byte by byte: one outside ASCII changes here, and its text is then
        // not found under the changed key.
        const QString key = QString::fromLatin1(bytes.c_str());
        texts.insert(key, map.mapGet(key).asQString());
    }
}

/// Reads fields: the member of an entry from the value that was found for it, the element of a
/// list, which has no key, from the value itself.
///
/// What a value is read as, and what is noted of a wrong one, is CDataValue's to say; a packed
/// node of the right kind is read directly.
class Reader final : public FieldVisitor
{
public:
    explicit Reader(CDataValue& value)
        : m_value(&value)
        , m_node(Tree::packedNode(value))
        , m_block(Tree::packedBlock(value))
    {
    }
    /// A node of a packed tree; null stands for a member that is not there.
    Reader(const PackedNode* node, PackedBlock* block)
        : m_node(node)
        , m_block(block)
    {
    }

    void readRecord(const RecordType& type, void* record)
    {
        noteMiss();
        const RecordPlan& plan = type.plan(record);
        if (m_value && !m_node) {
            for (const Entry& entry : plan.entries())
                Reader(m_value->mapGet(entry.key.data())).readMember(entry, record);
            return;
        }
        std::array<const PackedNode*, kUsualFields> usual;
        std::vector<const PackedNode*> many;
        const PackedNode** members = usual.data();
        if (plan.entries().size() > usual.size()) {
            many.resize(plan.entries().size());
            members = many.data();
        }
        findMembers(plan, members);
        for (std::size_t i = 0; i < plan.entries().size(); ++i)
            Reader(members[i], m_block).readMember(plan.entries()[i], record);
    }

private:
    static constexpr std::size_t kUsualFields = 32;

    void readMember(const Entry& entry, void* record)
    {
        switch (entry.kind) {
        case RecordPlan::Kind::Number:
            number({}, entry.member<int>(record));
            break;
        case RecordPlan::Kind::Boolean:
            boolean({}, entry.member<bool>(record));
            break;
        case RecordPlan::Kind::Text:
            text({}, entry.member<QString>(record));
            break;
        case RecordPlan::Kind::LongNumber:
            longNumber({}, entry.member<long long>(record));
            break;
        case RecordPlan::Kind::UnsignedNumber:
            unsignedNumber({}, entry.member<unsigned long>(record));
            break;
        case RecordPlan::Kind::Texts:
            textMap({}, entry.member<TextMap>(record));
            break;
        case RecordPlan::Kind::Record:
            readRecord(*entry.record, &entry.member<char>(record));
            break;
        case RecordPlan::Kind::List:
            list({}, *entry.list, &entry.member<char>(record));
            break;
        }
    }

    /// Looks all fields up in one walk: both the members and the sorted fields are in key order.
    void findMembers(const RecordPlan& plan, const PackedNode** members) const
    {
        const bool isMap = m_node && m_node->kind == MAP_VALUE;
        const PackedNode* key = isMap ? m_node + 1 : nullptr;
        std::uint32_t left = isMap ? m_node->count : 0;
        for (const std::size_t index : plan.sorted()) {
            const std::string_view wanted = plan.entries()[index].key;
            for (; left != 0 && key->view() < wanted; --left)
                key = (key + 1)->behind();
            members[index] = left != 0 && key->view() == wanted ? key + 1 : nullptr;
        }
    }

    /// A member that is not there is a miss, also where nothing is read from it.
    void noteMiss() const
    {
        if (!m_value && !m_node)
            CDataValue::referToMemberNull();
    }

    bool isA(ENUM_VALUE_TYPE kind) const { return m_node && m_node->kind == kind; }

    /// Calls `read` with the value itself, made for the purpose where it is a node.
    template<class Read>
    auto asValue(Read read) const
    {
        if (m_value)
            return read(*m_value);
        if (!m_node)
            return read(CDataValue::referToMemberNull());
        CDataValue value;
        Tree::constructPacked(value, *m_block, *m_node);
        return read(value);
    }

    void number(const Field&, int& member) override
    {
        member = isA(INT_VALUE) ? m_node->signedNumber
                                : asValue([](CDataValue& value) { return value.asInt(); });
    }
    void boolean(const Field&, bool& member) override
    {
        member = isA(BOOLEAN_VALUE) ? m_node->flag
                                    : asValue([](CDataValue& value) { return value.asBool(); });
    }
    void text(const Field&, QString& member) override
    {
        member = isA(STRING_VALUE) ? QString::fromUtf8(m_node->text)
                                   : asValue([](CDataValue& value) { return value.asQString(); });
    }
    void longNumber(const Field&, long long& member) override
    {
        member = asValue([](CDataValue& value) { return value.asLongLong(); });
    }
    void unsignedNumber(const Field&, unsigned long& member) override
    {
        member = asValue([](CDataValue& value) { return value.asUnsignedLong(); });
    }
    void textMap(const Field&, TextMap& member) override
    {
        asValue([&member](CDataValue& value) { readTextMap(value, member); });
    }
    void record(const Field&, const RecordType& type, void* member) override
    {
        readRecord(type, member);
    }
    void list(const Field&, const ListType& type, void* member) override
    {
        noteMiss();
        if (!m_value || m_node) {
            const PackedNode* element = isA(ARRAY_VALUE) ? m_node + 1 : nullptr;
            for (std::uint32_t left = element ? m_node->count : 0; left != 0; --left) {
                Reader reader(element, m_block);
                type.append(reader, member);
                element = element->behind();
            }
            return;
        }
        for (unsigned int index = 0; index < m_value->arrayCount(); ++index) {
            Reader reader(m_value->arrayGet(index));
            type.append(reader, member);
        }
    }

    CDataValue* m_value = nullptr;
    const PackedNode* m_node;
    PackedBlock* m_block;
};

} // namespace

// The lists take records that can be changed, because reading changes them; writing changes
// nothing.

void writeRecord(const RecordType& type, const void* record, CDataValue& data)
{
    void* const fields = const_cast<void*>(record);
    if (data.isNull()) {
        Writer writer;
        writer.writeRecord(type, fields);
        data = writer.finish();
        return;
    }
    for (const Entry& entry : type.plan(record).entries()) {
        Writer writer;
        writer.writeMember(entry, fields);
        data.mapSet(entry.key.data(), writer.finish(), false);
    }
}

void readRecord(const RecordType& type, CDataValue& data, void* record)
{
    // A miss discards the content of the shared null value, and with it what is being read.
    if (&data == &CDataValue::m_sNull || Tree::isBelow(data, CDataValue::m_sNull)) {
        CDataValue written(data);
        Reader(written).readRecord(type, record);
        return;
    }
    Reader(data).readRecord(type, record);
}

} // namespace records
