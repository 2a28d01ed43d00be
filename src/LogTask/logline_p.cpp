#include "LogTask/logline_p.h"

QString logExcerpt(const QString& text)
{
    return g_bLog ? logExcerpt(text, text.size()) : QString();
}

QString logExcerpt(const QByteArray& utf8)
{
    return g_bLog ? logExcerpt(QString::fromUtf8(utf8)) : QString();
}

QString logExcerpt(const QString& head, const QString& text, const QString& end)
{
    return g_bLog ? logExcerpt(head + text + end) : QString();
}

QString logExcerpt(const QString& text, qsizetype length)
{
    if (length <= kLogExcerptLimit)
        return text;
    const bool splitsPair = text.at(kLogExcerptLimit - 1).isHighSurrogate();
    return text.left(splitsPair ? kLogExcerptLimit - 1 : kLogExcerptLimit) + QLatin1String("... ") +
           QString::number(length) + QLatin1String(" characters");
}
