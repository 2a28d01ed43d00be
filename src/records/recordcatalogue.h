#ifndef RECORDS_RECORDCATALOGUE_H
#define RECORDS_RECORDCATALOGUE_H

#include "wzrframework_export.h"

#include <QStringList>

#include <vector>

/// What travels under a key of a record, or as an element of a list.
enum class RecordValueKind {
    Number,         ///< signed 32-bit integer (INT_VALUE)
    Boolean,        ///< BOOLEAN_VALUE
    Text,           ///< UTF-8 text (STRING_VALUE)
    LongNumber,     ///< signed 64-bit integer, as decimal text (STRING_VALUE)
    UnsignedNumber, ///< `unsigned long`, as decimal text (STRING_VALUE)
    Record,         ///< another record (MAP_VALUE)
    List,           ///< elements of one kind (ARRAY_VALUE; NULL_VALUE without elements)
    TextMap         ///< texts by free keys (MAP_VALUE; NULL_VALUE without entries)
};

/// One field of a record.
struct RecordFieldInfo
{
    const char* key;             ///< the key, which is also the name of the member
    const char* meaning;         ///< what the value says, in one line
    RecordValueKind kind;        ///< kind of the value
    RecordValueKind elementKind; ///< kind of the elements of a list, else the same as `kind`
    const char* record; ///< name of the nested record or of the list's element record, else null
    bool secret;        ///< a PIN, PUK, lock code or password: not to be printed
};

/// One record.
struct RecordInfo
{
    const char* name;                    ///< name of the struct
    const char* meaning;                 ///< what the record says
    const char* header;                  ///< the header that declares it
    std::vector<RecordFieldInfo> fields; ///< in the order in which they are written and read
};

/// All records, grouped as the headers are. Made from the same lists of fields that write and read
/// the records, at the first call; lives until the process ends. Any thread may call it.
WZRFRAMEWORK_EXPORT const std::vector<RecordInfo>& recordCatalogue();

/// The keys of all secret fields, each once: what HideInLog() takes, to keep them out of the log.
WZRFRAMEWORK_EXPORT QStringList secretRecordKeys();

#endif
