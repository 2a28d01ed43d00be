#ifndef DATAVALUE_JSON_JSONTEXT_P_H
#define DATAVALUE_JSON_JSONTEXT_P_H

#include "DataValue/datavalue.h"
#include "DataValue/json/textbuffer_p.h"

#include <cstdint>
#include <string>
#include <string_view>

/// The JSON text of values, in both styles, and its reading: the one place that knows the form.
///
/// The writers of the installed JsonCpp write 17 digits and escape everything outside ASCII, so
/// the text is written here. What a text means is for JsonCpp's reader to say, with its comments
/// and leniencies; ordinary text is read by JsonFastReader, which agrees with it.
namespace JsonText {

/// The text of what the value shows, with the line feed at its end.
QString write(const CDataValue& value, ENUM_STYLE style);

/// Parses UTF-8 into `value`. False, with `value` unchanged, on any syntax error. Never throws
/// but for want of memory.
bool parse(std::string_view utf8, CDataValue& value);

/// The same by JsonCpp's reader alone, which says what every text means. parse() asks it only for
/// what JsonFastReader leaves.
bool parseSlowly(const std::string& utf8, CDataValue& value);

/// The number rule: whether an integer in a text is one; otherwise it is a double. Before each
/// digit, a number that has reached a tenth of the 32-bit range is ruled out, so the limits lie a
/// little inside that range.
constexpr bool isInteger(std::int64_t number)
{
    return number >= -2147483639 && number <= 4294967289;
}

/// Builds the value of a JSON tree, in place and in step. Integers keep their JSON type; those
/// outside 32 bits become doubles.
CDataValue fromJson(const Json::Value& json);

/// Appends a number with 16 significant digits that reads back as a double, with 17 where 16 would
/// be beyond the largest double; `null` for the numbers that JSON lacks.
void appendReal(TextBuffer& out, double number);

} // namespace JsonText

#endif
