#ifndef LOGTASK_LOGFORMAT_P_H
#define LOGTASK_LOGFORMAT_P_H

#include <cstdarg>
#include <cstddef>

/// Writes a printf-style message and a zero byte into `buffer`, at most `size` bytes, and returns
/// the length: what std::vsnprintf() leaves there, several times faster for the usual formats.
/// Where a directive cannot be shown, say the lone '%' at the end of "Progress 100%", the message
/// ends before it. A null format gives an empty message.
std::size_t formatText(char* buffer, std::size_t size, const char* format, va_list arguments);

#endif
