#ifndef RECORDS_RECORDPLAN_P_H
#define RECORDS_RECORDPLAN_P_H

#include "records/recordfields_p.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace records {

/// Where the fields of a record type lie, worked out once from its list: writing and reading a
/// record then need no visit, which for a list of records is most of the work.
class RecordPlan
{
public:
    enum class Kind { Number, Boolean, Text, LongNumber, UnsignedNumber, Texts, Record, List };

    struct Entry
    {
        std::string_view key; // of the list, so it ends with a zero byte and stays
        Kind kind;
        std::ptrdiff_t offset; // of the member in the record
        union {
            const RecordType* record; // of Kind::Record
            const ListType* list;     // of Kind::List
        };

        template<class T>
        T& member(void* base) const
        {
            return *reinterpret_cast<T*>(static_cast<char*>(base) + offset);
        }
    };

    /// From the list of `type`, with any record of that type.
    RecordPlan(const RecordType& type, const void* record);

    /// In the order of the list.
    const std::vector<Entry>& entries() const { return m_entries; }
    /// Their places in entries(), in the byte order of the keys.
    const std::vector<std::size_t>& sorted() const { return m_sorted; }

private:
    std::vector<Entry> m_entries;
    std::vector<std::size_t> m_sorted;
};

} // namespace records

#endif
