#ifndef PLATFORM_LAUNCH_P_H
#define PLATFORM_LAUNCH_P_H

#include <QString>

/// The text in double quotation marks, as one word of a shell command that stands for exactly this
/// text: the characters that keep a meaning between the marks are escaped.
inline QString shellQuoted(QString text)
{
    // The backslash first, so that those added after it stay single.
    for (const char* special : {"\\", "\"", "$", "`"}) {
        const QLatin1String character(special);
        text.replace(character, QLatin1Char('\\') + QString(character));
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

/// The shell command that opens the application of this name. Each platform has its own.
QString openByNameCommand(const QString& name);

#endif
