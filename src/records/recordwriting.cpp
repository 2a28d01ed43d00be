// A record is written as a packed tree, from front to back.

#include "DataValue/valueaccess_p.h"
#include "records/recordplan_p.h"
#include "text/utf8_p.h"

#include <charconv>
#include <string>

namespace records {

namespace {

/// Appends values to a packed tree.
class Writer
{
public:
    void operator()(int number) { m_builder.addInt(number); }
    void operator()(bool flag) { m_builder.addBool(flag); }
    void operator()(const QString& text)
    {
        char* const to = m_builder.textRoom(Utf8::room(text));
        char* const end = Utf8::write(text, to);
        *end = '\0';
        m_builder.trimText(end + 1);
        m_builder.addLastingText(to, static_cast<std::size_t>(end - to));
    }
    void operator()(long long number) { addDigits(number); }
    void operator()(unsigned long number) { addDigits(number); }
    void operator()(const TextMap& texts)
    {
        if (texts.isEmpty()) // travels as null
            m_builder.addNull();
        else
            addTexts(texts);
    }
    void operator()(const RecordType& type, const void* record)
    {
        m_builder.begin(MAP_VALUE);
        for (const std::uint8_t place : type.byKey) {
            const Field& field = type.fields[place];
            m_builder.addLastingText(field.key, field.keySize);
            walk(field.type, field.in(record), *this);
        }
        m_builder.end(type.byKey.count);
    }
    void operator()(const ListType& type, const void* list)
    {
        const std::size_t count = type.count(list);
        if (count == 0) { // travels as null
            m_builder.addNull();
            return;
        }
        m_builder.begin(ARRAY_VALUE);
        type.forEach(list, [&](const void* element) { walk(type.element, element, *this); });
        m_builder.end(count);
    }

    /// What was written; null when that is more than a packed tree can hold.
    CDataValue finish()
    {
        CDataValue result;
        ValueAccess::constructPacked(result, m_builder);
        return result;
    }

private:
    template<class Number>
    void addDigits(Number number)
    {
        char digits[24];
        char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        m_builder.addText({digits, static_cast<std::size_t>(end - digits)});
    }

    void addTexts(const TextMap& texts)
    {
        std::vector<std::pair<std::string, const QString*>> members;
        for (auto text = texts.cbegin(); text != texts.cend(); ++text)
            members.emplace_back(text.key().toStdString(), &text.value());
        std::stable_sort(members.begin(), members.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        m_builder.begin(MAP_VALUE);
        std::size_t count = 0;
        for (std::size_t i = 0; i < members.size(); ++i) {
            // Keys that differ only in half surrogate pairs are the same in UTF-8: the last is
            // kept.
            if (i + 1 < members.size() && members[i].first == members[i + 1].first)
                continue;
            m_builder.addText(members[i].first);
            (*this)(*members[i].second);
            ++count;
        }
        m_builder.end(count);
    }

    PackedBuilder m_builder;
};

} // namespace

void writeRecord(const RecordType& type, const void* record, CDataValue& data)
{
    if (data.isNull()) {
        Writer writer;
        writer(type, record);
        data = writer.finish();
        return;
    }
    for (const Field& field : type.fields) {
        Writer writer;
        walk(field.type, field.in(record), writer);
        data.mapSet(field.key, writer.finish(), false);
    }
}

} // namespace records
