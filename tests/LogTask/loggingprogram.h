#ifndef TESTS_LOGTASK_LOGGINGPROGRAM_H
#define TESTS_LOGTASK_LOGGINGPROGRAM_H

#include "support/installedprogram.h"

#include <QRegularExpression>

inline const QByteArray startBanner = "\r\nStart Log--T\r\n";
inline const QByteArray endBanner = "\r\nEnd Log--T\r\n";

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/// Every time of day becomes "T" and every stamp "T M".
inline QByteArray withoutTimes(const QByteArray& text)
{
    QString result = QString::fromUtf8(text);
    result.replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d"), "T");
    result.replace(QRegularExpression("T \\d{1,3} "), "T M ");
    return result.toUtf8();
}

/// The helper logprogram, installed with settings, and its log file.
class LoggingProgram : public InstalledProgram
{
public:
    using InstalledProgram::InstalledProgram;
    using InstalledProgram::path;

    void setSettings(const QByteArray& lines) { addData("LogFile.ini", "[SETTING]\n" + lines); }

    /// What the program has to do to log to path().
    QStringList actions(const QStringList& between) const
    {
        return QStringList("initpath=" + path()) + between + QStringList("destroy");
    }
    QString path() const { return path("log"); }

    QByteArray log() const { return withoutTimes(readFile(path())); }

    /// The log without start banner and end banner.
    QByteArray lines() const
    {
        QByteArray text = log();
        if (!text.startsWith(startBanner) || !text.endsWith(endBanner))
            return "not one whole log: " + text;
        text.chop(endBanner.size());
        return text.mid(startBanner.size());
    }
};

#endif
