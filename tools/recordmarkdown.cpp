#include "recordmarkdown.h"

#include "records/recordcatalogue.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

const char introduction[] = R"(<!-- Made by `wzrrecords --markdown`; do not edit. -->
# Business records

What the processes tell each other travels as *records*: maps with fixed keys. This page lists all
of them. `wzrrecords` prints the same as JSON Schema, and `recordCatalogue()` in
`records/recordcatalogue.h` gives it to programs.

In C++ each record is a struct whose members are named as the keys.
`GetDataValueFromStruct(record, data)` writes one into a data value, and
`GetStructFromDataValue(data, record)` reads one.

| Value | What travels |
|---|---|
| number | a signed 32-bit integer |
| true or false | a boolean |
| text | a string, UTF-8 |
| 64-bit number as text | a string of decimal digits, with a leading `-` when negative |
| unsigned number as text | a string of decimal digits (`unsigned long` in C++) |
| the name of a record | a map with the keys of that record |
| list | an array in the order of the entries; `null` without entries |
| texts by free keys | a map of strings; `null` without entries |

Keys are case-sensitive and spelt exactly as listed, odd spellings included. A reader takes a key
that is missing, or whose value is of another kind, as 0, false or empty and goes on; keys that it
does not know are left alone. A number where a number *as text* is expected reads as 0. Keys of a
map of texts must be ASCII.
)";

std::string link(const char* record)
{
    std::string anchor = record;
    std::transform(anchor.begin(), anchor.end(), anchor.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::string("[") + record + "](#" + anchor + ')';
}

std::string kindText(const RecordFieldInfo& field)
{
    switch (field.kind) {
    case RecordValueKind::Number:
        return "number";
    case RecordValueKind::Boolean:
        return "true or false";
    case RecordValueKind::Text:
        return "text";
    case RecordValueKind::LongNumber:
        return "64-bit number as text";
    case RecordValueKind::UnsignedNumber:
        return "unsigned number as text";
    case RecordValueKind::Record:
        return link(field.record);
    case RecordValueKind::TextMap:
        return "texts by free keys";
    case RecordValueKind::List:
        break;
    }
    if (field.record)
        return "list of " + link(field.record);
    return field.elementKind == RecordValueKind::Number ? "list of numbers" : "list of texts";
}

} // namespace

std::string pageOfAllRecords()
{
    std::string page = introduction;
    const char* header = "";
    for (const RecordInfo& record : recordCatalogue()) {
        if (std::strcmp(header, record.header) != 0) {
            header = record.header;
            page += std::string("\n## `") + header + "`\n";
        }
        page += std::string("\n### ") + record.name + "\n\n" + record.meaning +
                "\n\n| Key | Value | Meaning |\n|---|---|---|\n";
        for (const RecordFieldInfo& field : record.fields)
            page += std::string("| `") + field.key + "` | " + kindText(field) + " | " +
                    field.meaning + " |\n";
    }
    return page;
}
