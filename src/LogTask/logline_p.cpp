#include "LogTask/logline_p.h"

#include "LogTask/logsecrets_p.h"
#include "text/utf8_p.h"

#include <algorithm>
#include <atomic>
#include <string_view>

namespace {

std::atomic<int> s_limit{16384};

} // namespace

int logExcerptLimit()
{
    return s_limit.load(std::memory_order_relaxed);
}

void setLogExcerptLimit(int characters)
{
    s_limit = std::max(characters, 0);
}

QString logExcerpt(const QString& text)
{
    return g_bLog ? logExcerpt(text, text.size()) : QString();
}

QString logExcerpt(const QByteArray& utf8)
{
    if (!g_bLog)
        return QString();
    const qsizetype limit = logExcerptLimit();
    if (limit == 0 || utf8.size() <= limit)
        return QString::fromUtf8(utf8);
    const std::string_view all(utf8.constData(), static_cast<std::size_t>(utf8.size()));
    const std::size_t shown = Utf8::bytesOfUnits(all, static_cast<std::size_t>(limit));
    return logExcerpt(Utf8::decode(all.substr(0, shown)), static_cast<qsizetype>(Utf8::units(all)));
}

QString logExcerpt(const QString& head, const QString& text, const QString& end)
{
    if (!g_bLog)
        return QString();
    const qsizetype length = qsizetype(head.size()) + text.size() + end.size();
    const qsizetype limit = logExcerptLimit();
    const qsizetype shown = limit == 0 ? length : std::min(length, limit);
    QString result;
    result.reserve(static_cast<int>(shown));
    for (const QString* part : {&head, &text, &end}) {
        const qsizetype room = shown - result.size();
        result.append(part->constData(), static_cast<int>(std::min<qsizetype>(part->size(), room)));
    }
    return logExcerpt(result, length);
}

QString logExcerpt(const QString& text, qsizetype length)
{
    const int limit = logExcerptLimit();
    if (limit == 0 || length <= limit)
        return text;
    const bool splitsPair = text.at(limit - 1).isHighSurrogate();
    return text.left(splitsPair ? limit - 1 : limit) + QLatin1String("... ") +
           QString::number(length) + QLatin1String(" characters");
}

QString logDataOf(const char* message, const QString& data)
{
    return hidesDataOf(message) ? QStringLiteral("***") : logExcerpt(data);
}
