#ifndef IPC_UTF8_P_H
#define IPC_UTF8_P_H

#include <QString>

/// What the framing has to know about UTF-8: it works on bytes, but its rules count characters as
/// QString does, by UTF-16 units.
namespace Utf8 {

/// Whether decoding and encoding again gives the same bytes.
bool isValid(const char* bytes, qsizetype size);

/// How many bytes at the end are the beginning of a character that may still become valid: 0 to 3.
qsizetype incompleteTail(const char* bytes, qsizetype size);

/// The text. U+FEFF at its beginning is a character like any other.
QString decode(const char* bytes, qsizetype size);

/// How many units the text has; the bytes are valid.
qsizetype units(const char* bytes, qsizetype size);

/// How many of the bytes, which are valid, the first `count` units take; when that is in the
/// middle of a character, with all of that. -1 when there are fewer units.
qsizetype bytesOfUnits(const char* bytes, qsizetype size, qsizetype count);

} // namespace Utf8

#endif
