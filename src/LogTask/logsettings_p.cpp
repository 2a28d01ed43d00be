#include "LogTask/logsettings_p.h"

#include "appglobal/executablepath_p.h"
#include "common_function.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QSettings>
#include <QVariant>

#include <algorithm>

namespace {

enum FilePolicy { OneFilePerDay = 0, TruncateAlways = 1, AppendBelowMaximum = 2 };

void readSwitch(const QSettings& settings, const char* key, bool* value)
{
    const QVariant found = settings.value(QLatin1String(key));
    if (found.isValid() && found.canConvert<bool>())
        *value = found.toBool();
}

// Not QVariant::toInt(), which wraps numbers beyond 32 bits.
void readNumber(const QSettings& settings, const char* key, int* value)
{
    bool isNumber = false;
    const int number = settings.value(QLatin1String(key)).toString().toInt(&isNumber);
    if (isNumber)
        *value = number;
}

// Size and existence count for the path without the date: the day's file is only ever appended to.
void applyFilePolicy(int policy, QDate today, LogSettings* settings)
{
    settings->append = policy == OneFilePerDay || policy == AppendBelowMaximum;
    if (policy == OneFilePerDay) {
        // Not QDate::toString(), which in Qt 5 writes the digits of the user's language.
        const QString day = QLocale::c().toString(today, QStringLiteral("yy-MM-dd"));
        settings->file += QLatin1Char('_') + day;
    } else if (policy == AppendBelowMaximum) {
        QFile existing(settings->file);
        if (existing.exists() && existing.size() >= settings->maxSize)
            existing.remove();
    }
}

} // namespace

QString defaultLogFile(const QString& executable, const QString& user)
{
    const auto slash = executable.lastIndexOf(QLatin1Char('/'));
    const QString folder = executable.left(slash) + QLatin1String("/Log");
    QDir().mkpath(folder);
    return folder + executable.mid(slash) + QLatin1String("_Log_") + user;
}

LogSettings readLogSettings(const QString& iniFile, const QString& file, QDate today)
{
    LogSettings result;
    QSettings settings(iniFile, QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("SETTING"));
    readSwitch(settings, "VALID", &result.valid);
    if (!result.valid)
        return result;
    readSwitch(settings, "ADDTIME", &result.addTime);
    result.file = file.isNull() ? defaultLogFile(executableFilePath(), getActiveUserName()) : file;
    readNumber(settings, "MAXSIZE", &result.maxSize);
    int policy = OneFilePerDay;
    readNumber(settings, "TYPE", &policy);
    applyFilePolicy(policy, today, &result);
    readNumber(settings, "TIMER", &result.timer);
    if (result.timer < 1)
        result.timer = 10;
    readSwitch(settings, "DEBUG", &result.debug);
    readSwitch(settings, "FLUSH", &result.flush);
    readSwitch(settings, "FLUSHIDLE", &result.flushIdle);
    readNumber(settings, "MAXQUEUE", &result.maxQueue);
    result.maxQueue = std::max(result.maxQueue, 0);
    readNumber(settings, "MAXLINE", &result.maxLine);
    result.maxLine = std::max(result.maxLine, 0);
    return result;
}
