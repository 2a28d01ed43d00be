#include "common_function.h"

#include <QStringList>

QString getActiveUserName()
{
    for (const char* variable : {"SUDO_USER", "LOGNAME"}) {
        if (qEnvironmentVariableIsSet(variable))
            return qEnvironmentVariable(variable);
    }
    const QStringList parts =
        qEnvironmentVariable("HOME").split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return parts.isEmpty() ? QString() : parts.last();
}

QString getActiveUserDirectory()
{
    return QString();
}
