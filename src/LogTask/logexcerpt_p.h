#ifndef LOGTASK_LOGEXCERPT_P_H
#define LOGTASK_LOGEXCERPT_P_H

#include <QString>

/// A text as a log line may carry it: whole up to 16,384 characters, else its first 16,384 (one
/// fewer where that would split a surrogate pair) and its full length, "... 1000000 characters".
/// For frames, buffers and values, which peers make as long as they like.
inline QString logExcerpt(const QString& text)
{
    constexpr int limit = 16384;
    if (text.size() <= limit)
        return text;
    const int kept = text.at(limit - 1).isHighSurrogate() ? limit - 1 : limit;
    return text.left(kept) + QLatin1String("... ") + QString::number(text.size()) +
           QLatin1String(" characters");
}

#endif
