#ifndef LOGTASK_LOGLINE_P_H
#define LOGTASK_LOGLINE_P_H

#include "LogTask/clog.h"

#include <QByteArray>
#include <QString>

/// How the sources of the library write their log lines. A source names itself once, by its path
/// without the ending, and each line begins with that name and the function's:
///
///     constexpr char kLogSource[] = "Ipc/ipcserver";
///     logLine(kLogSource, "startListen", "Not able to start the Server");
///     logLine(kLogSource, "socket_readReady", "strDataValue =", logExcerpt(body));
///
/// Pieces are numbers, UTF-8 and texts, as CLogFile takes them. Any thread may call; nothing
/// happens while the log is off.
template<typename... Pieces>
void logLine(const char* source, const char* function, const Pieces&... pieces)
{
    CLogFile line;
    ((line << source << function) << ... << pieces);
}

/// How many characters of a content a log line carries: the setting "MAXLINE", 16384 until the log
/// has read it. 0 sets no limit.
int logExcerptLimit();
void setLogExcerptLimit(int characters);

/// A content as a log line may carry it: whole up to the limit, else cut there (one character
/// earlier where that would split a surrogate pair), and then its full length: "... 1000000
/// characters". For frames, buffers and values, which peers make as long as they like: only what
/// the line shows is copied or decoded. Empty while the log is off.
QString logExcerpt(const QString& text);
/// Of valid UTF-8.
QString logExcerpt(const QByteArray& utf8);
/// Of the three as one text.
QString logExcerpt(const QString& head, const QString& text, const QString& end);

/// The same for a text that the caller has cut already, to the limit or more, while the whole has
/// `length` characters. Also while the log is off.
QString logExcerpt(const QString& text, qsizetype length);

/// The data of a message, for a line that does not show the message's identifier with them: "***"
/// when HideInLog() hides all its data.
QString logDataOf(const char* message, const QString& data);

#endif
