#ifndef LOGTASK_LOGTEXT_P_H
#define LOGTASK_LOGTEXT_P_H

#include <QString>

#include <cstddef>

/// Pieces of log lines, appended to the line under construction. Any thread may call.

/// The local time of day, "14:05:09".
void appendTime(QString* line);

/// The local time of day, a blank, the milliseconds of the second without padding and a blank:
/// "14:05:09 37 ".
void appendStamp(QString* line);

void appendNumber(QString* line, int number, int base = 10);

/// `size` bytes of UTF-8; what is none becomes the replacement character.
void appendUtf8(QString* line, const char* text, std::size_t size);

/// How many of the `size` bytes are left when a character that is cut off at their end is dropped.
std::size_t wholeUtf8(const char* text, std::size_t size);

#endif
