#ifndef DATAVALUE_UTF8TEXT_P_H
#define DATAVALUE_UTF8TEXT_P_H

#include <QString>

#include <cstddef>
#include <string_view>

/// Between QString and UTF-8 in memory that is there already: QString's own conversions allocate
/// for each text, which for a record's many short ones takes longer than the conversion. What is
/// no proper text is left to Qt.
namespace Utf8Text {

/// Bytes that write() needs at most.
std::size_t room(const QString& text);

/// Writes what QString::toUtf8() gives, without a zero byte. Returns the end.
char* write(const QString& text, char* to);

/// Writes bytes as UTF-16 up to the first that is not ASCII, or to the end; returns how many. What
/// stands in `to` up to the size of `text` may be overwritten.
std::size_t widenAscii(std::string_view text, ushort* to);
/// The same, up to the first that is not ASCII or must be escaped in JSON: control characters, the
/// quotation mark and the backslash.
std::size_t widenPlain(std::string_view text, ushort* to);
/// Writes bytes that are not ASCII as UTF-16. Returns the end, null when they are no UTF-8.
ushort* widenOther(std::string_view text, ushort* to);

} // namespace Utf8Text

#endif
