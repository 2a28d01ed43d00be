#include "recordschema.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

/// A JSON string. The texts of the catalogue are ASCII without control characters.
std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + '"';
}

using Members = std::vector<std::pair<std::string, std::string>>;

/// A JSON object with its members in the given order; the values are JSON already.
std::string object(const Members& members)
{
    std::string text;
    for (const auto& [key, value] : members)
        text += (text.empty() ? "" : ", ") + quoted(key) + ": " + value;
    return '{' + text + '}';
}

/// The same with each member on a line of its own, `depth` levels deep.
std::string linedObject(const Members& members, std::size_t depth)
{
    const std::string indentation(2 * depth, ' ');
    std::string text;
    for (const auto& [key, value] : members) {
        text += text.empty() ? "\n" : ",\n";
        text += indentation;
        text += "  " + quoted(key) + ": " + value;
    }
    return members.empty() ? "{}" : '{' + text + '\n' + indentation + '}';
}

/// What a value of a kind other than a list must be.
Members constraints(RecordValueKind kind, const char* record)
{
    switch (kind) {
    case RecordValueKind::Number:
        return {{"type", quoted("integer")}, {"minimum", "-2147483648"}, {"maximum", "2147483647"}};
    case RecordValueKind::Boolean:
        return {{"type", quoted("boolean")}};
    case RecordValueKind::Text:
        return {{"type", quoted("string")}};
    case RecordValueKind::LongNumber:
        return {{"type", quoted("string")}, {"pattern", quoted("^-?[0-9]{1,19}$")}};
    case RecordValueKind::UnsignedNumber:
        return {{"type", quoted("string")}, {"pattern", quoted("^[0-9]{1,20}$")}};
    case RecordValueKind::Record:
        return {{"$ref", quoted(std::string("#/$defs/") + record)}};
    case RecordValueKind::TextMap:
        return {{"type", R"(["object", "null"])"},
                {"additionalProperties", object({{"type", quoted("string")}})}};
    case RecordValueKind::List:
        break;
    }
    return {{"type", R"(["array", "null"])"}};
}

std::string fieldSchema(const RecordFieldInfo& field)
{
    Members members = constraints(field.kind, field.record);
    members.emplace(members.begin(), "description", quoted(field.meaning));
    if (field.kind == RecordValueKind::List)
        members.emplace_back("items", object(constraints(field.elementKind, field.record)));
    return object(members);
}

/// The definition of one record, as a member of "$defs".
std::string recordSchema(const RecordInfo& record)
{
    Members properties;
    std::string required;
    for (const RecordFieldInfo& field : record.fields) {
        properties.emplace_back(field.key, fieldSchema(field));
        if (field.kind != RecordValueKind::List && field.kind != RecordValueKind::TextMap)
            required += (required.empty() ? "" : ", ") + quoted(field.key);
    }
    return linedObject({{"description", quoted(record.meaning)},
                        {"type", quoted("object")},
                        {"properties", linedObject(properties, 3)},
                        {"required", '[' + required + ']'}},
                       2);
}

/// The document that defines the given records. `root` is what the document itself describes, if
/// it describes anything.
std::string document(const std::vector<const RecordInfo*>& records, const RecordInfo* root)
{
    Members definitions;
    for (const RecordInfo* record : records)
        definitions.emplace_back(record->name, recordSchema(*record));
    Members members = {{"$schema", quoted("https://json-schema.org/draft/2020-12/schema")},
                       {"$id", quoted(std::string("urn:wzrframework:records") +
                                      (root ? std::string(":") + root->name : std::string()))},
                       {"title", quoted(root ? root->name : "Business records of wzrframework")}};
    if (root)
        members.emplace_back("$ref", quoted(std::string("#/$defs/") + root->name));
    members.emplace_back("$defs", linedObject(definitions, 1));
    return linedObject(members, 0) + '\n';
}

/// Adds the record, then the records that it holds, each once.
void addWithNested(const RecordInfo& record, std::vector<const RecordInfo*>& records)
{
    if (std::find(records.begin(), records.end(), &record) != records.end())
        return;
    records.push_back(&record);
    for (const RecordFieldInfo& field : record.fields) {
        if (field.record)
            addWithNested(*findRecord(field.record), records);
    }
}

} // namespace

std::string schemaOfAllRecords()
{
    std::vector<const RecordInfo*> records;
    for (const RecordInfo& record : recordCatalogue())
        records.push_back(&record);
    return document(records, nullptr);
}

std::string schemaOfRecord(const RecordInfo& record)
{
    std::vector<const RecordInfo*> records;
    addWithNested(record, records);
    return document(records, &record);
}

const RecordInfo* findRecord(const std::string& name)
{
    const std::vector<RecordInfo>& all = recordCatalogue();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const RecordInfo& record) { return name == record.name; });
    return found == all.end() ? nullptr : &*found;
}
