#include "records/recordplan_p.h"

namespace records {

namespace {

/// Compares what it is given with what lies at the same place of another record.
struct Comparer
{
    const void* other;

    template<class T>
    bool operator()(const T& member) const
    {
        return member == valueAt<T>(other);
    }
    bool operator()(const RecordType& type, const void* record) const
    {
        return equalRecords(type, record, other);
    }
    bool operator()(const ListType& type, const void* list) const
    {
        return type.equal(list, other);
    }
};

} // namespace

bool equalRecords(const RecordType& type, const void* left, const void* right)
{
    return std::all_of(type.fields.begin(), type.fields.end(), [&](const Field& field) {
        return walk(field.type, field.in(left), Comparer{field.in(right)});
    });
}

} // namespace records
