#include "records/recordcatalogue.h"

#include "records/recordfields_p.h"

using namespace records;

RecordRegistration::RecordRegistration(RecordGroup& group, const RecordType& recordType,
                                       void (*describeRecord)(FieldVisitor& visitor)) noexcept
    : type(recordType)
    , describe(describeRecord)
{
    (group.last ? group.last->next : group.first) = this;
    group.last = this;
}

namespace {

/// Notes what each field is.
class Describer final : public FieldVisitor
{
public:
    explicit Describer(std::vector<RecordFieldInfo>& fields)
        : m_fields(fields)
    {
    }

private:
    void add(const Field& field, RecordValueKind kind)
    {
        m_fields.push_back({field.key, field.meaning, kind, kind, nullptr, field.secret});
    }
    void number(const Field& field, int&) override { add(field, RecordValueKind::Number); }
    void boolean(const Field& field, bool&) override { add(field, RecordValueKind::Boolean); }
    void text(const Field& field, QString&) override { add(field, RecordValueKind::Text); }
    void longNumber(const Field& field, long long&) override
    {
        add(field, RecordValueKind::LongNumber);
    }
    void unsignedNumber(const Field& field, unsigned long&) override
    {
        add(field, RecordValueKind::UnsignedNumber);
    }
    void textMap(const Field& field, TextMap&) override { add(field, RecordValueKind::TextMap); }
    void record(const Field& field, const RecordType& type, void*) override
    {
        add(field, RecordValueKind::Record);
        m_fields.back().record = type.name;
    }
    void list(const Field& field, const ListType& type, void*) override
    {
        add(field, RecordValueKind::List);
        m_fields.back().elementKind = type.elementKind;
        m_fields.back().record = type.record ? type.record->name : nullptr;
    }

    std::vector<RecordFieldInfo>& m_fields;
};

std::vector<RecordInfo> describeAllRecords()
{
    std::vector<RecordInfo> all;
    for (const RecordGroup* group :
         {&connectionRecords, &messageRecords, &phonebookRecords, &diagnosticRecords}) {
        for (const RecordRegistration* entry = group->first; entry; entry = entry->next) {
            all.push_back({entry->type.name, entry->type.meaning, group->header, {}});
            Describer describer(all.back().fields);
            entry->describe(describer);
        }
    }
    return all;
}

} // namespace

const std::vector<RecordInfo>& recordCatalogue()
{
    static const std::vector<RecordInfo> catalogue = describeAllRecords();
    return catalogue;
}
