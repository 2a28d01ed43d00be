#include "records/recordplan_p.h"

#include <algorithm>
#include <numeric>

namespace records {

namespace {

/// Takes down what a list says of each field.
class PlanMaker final : public FieldVisitor
{
public:
    PlanMaker(const void* record, std::vector<RecordPlan::Entry>& entries)
        : m_record(static_cast<const char*>(record))
        , m_entries(entries)
    {
    }

private:
    using Kind = RecordPlan::Kind;

    RecordPlan::Entry& add(const Field& field, Kind kind, const void* member)
    {
        RecordPlan::Entry entry;
        entry.key = field.key;
        entry.kind = kind;
        entry.offset = static_cast<const char*>(member) - m_record;
        entry.record = nullptr;
        m_entries.push_back(entry);
        return m_entries.back();
    }
    void number(const Field& field, int& member) override { add(field, Kind::Number, &member); }
    void boolean(const Field& field, bool& member) override { add(field, Kind::Boolean, &member); }
    void text(const Field& field, QString& member) override { add(field, Kind::Text, &member); }
    void longNumber(const Field& field, long long& member) override
    {
        add(field, Kind::LongNumber, &member);
    }
    void unsignedNumber(const Field& field, unsigned long& member) override
    {
        add(field, Kind::UnsignedNumber, &member);
    }
    void textMap(const Field& field, TextMap& member) override { add(field, Kind::Texts, &member); }
    void record(const Field& field, const RecordType& type, void* member) override
    {
        add(field, Kind::Record, member).record = &type;
    }
    void list(const Field& field, const ListType& type, void* member) override
    {
        add(field, Kind::List, member).list = &type;
    }

    const char* m_record;
    std::vector<RecordPlan::Entry>& m_entries;
};

} // namespace

RecordPlan::RecordPlan(const RecordType& type, const void* record)
{
    PlanMaker maker(record, m_entries);
    type.visit(maker, const_cast<void*>(record)); // the maker only looks
    m_sorted.resize(m_entries.size());
    std::iota(m_sorted.begin(), m_sorted.end(), std::size_t(0));
    std::sort(m_sorted.begin(), m_sorted.end(), [this](std::size_t one, std::size_t other) {
        return m_entries[one].key < m_entries[other].key;
    });
}

const RecordPlan& makePlan(const RecordType& type, const void* record)
{
    return *new RecordPlan(type, record);
}

} // namespace records
