#ifndef LOGTASK_LOGTEXT_P_H
#define LOGTASK_LOGTEXT_P_H

#include <QString>
#include <QVarLengthArray>

#include <cstddef>

/// A line as it stands in the file, in the local 8-bit encoding. Usual lines need no allocation.
using LogBytes = QVarLengthArray<char, 1280>;

/// Pieces of log lines, appended to the line under construction: as text, for those who see the
/// line inside the process, or as the bytes of the file. Any thread may call.

/// The local time of day, "14:05:09".
void appendTime(QString* line);
void appendTime(LogBytes* line);

/// The local time of day, a blank, the milliseconds of the second without padding and a blank:
/// "14:05:09 37 ".
void appendStamp(QString* line);

void appendNumber(QString* line, int number, int base = 10);

/// `size` bytes of UTF-8; what is none becomes the replacement character.
void appendUtf8(QString* line, const char* text, std::size_t size);
void appendUtf8(LogBytes* line, const char* text, std::size_t size);

/// What the local encoding cannot show becomes what Qt puts in its place.
void appendText(LogBytes* line, const QString& text);

#endif
