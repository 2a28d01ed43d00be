#ifndef TEXT_UTF8_P_H
#define TEXT_UTF8_P_H

#include <QString>

#include <cstddef>
#include <string_view>

/// All that the library knows of UTF-8: what is valid, how bytes and UTF-16 units correspond, and
/// conversions into memory that is there already. QString's own conversions allocate for each text,
/// which for a record's many short ones takes longer than the conversion.
///
/// Every function takes time linear in its text and may be called in any thread.
namespace Utf8 {

bool isAscii(std::string_view bytes);

/// How many bytes at the beginning are whole characters: all of them when the text is valid, that
/// is when decoding and encoding it again gives the same bytes. A zero byte is a character.
std::size_t validLength(std::string_view bytes);

inline bool isValid(std::string_view bytes)
{
    return validLength(bytes) == bytes.size();
}

/// How many bytes at the end are the beginning of a character that may still become valid: 0 to 3.
std::size_t incompleteTail(std::string_view bytes);

/// The text. U+FEFF at its beginning is a character like any other; what is no character becomes
/// U+FFFD, as in QString::fromUtf8().
QString decode(std::string_view bytes);

/// How many UTF-16 units the text has; the bytes are valid.
std::size_t units(std::string_view bytes);

/// How many of the bytes, which are valid, the first `count` units take; when that is in the middle
/// of a character, with all of that. npos when there are fewer units.
std::size_t bytesOfUnits(std::string_view bytes, std::size_t count);
constexpr std::size_t npos = std::string_view::npos;

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

/// Writes units as bytes up to the first that is not ASCII, or to the end; returns how many.
std::size_t narrowAscii(const ushort* from, std::size_t count, char* to);

} // namespace Utf8

#endif
