#ifndef LOGTASK_LOGEXCERPT_P_H
#define LOGTASK_LOGEXCERPT_P_H

#include <QString>

constexpr int logExcerptLimit = 16384;

/// A text as a log line may carry it: whole up to 16,384 characters, else its first 16,384 (one
/// fewer where that would split a surrogate pair) and its full length, "... 1000000 characters".
/// For frames, buffers and values, which peers make as long as they like. `text` may be cut to its
/// first 16,384 characters or more; `length` is that of the whole.
inline QString logExcerpt(const QString& text, qsizetype length)
{
    if (length <= logExcerptLimit)
        return text;
    const bool splitsPair = text.at(logExcerptLimit - 1).isHighSurrogate();
    return text.left(splitsPair ? logExcerptLimit - 1 : logExcerptLimit) + QLatin1String("... ") +
           QString::number(length) + QLatin1String(" characters");
}

inline QString logExcerpt(const QString& text)
{
    return logExcerpt(text, text.size());
}

#endif
