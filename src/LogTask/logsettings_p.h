#ifndef LOGTASK_LOGSETTINGS_P_H
#define LOGTASK_LOGSETTINGS_P_H

#include <QDate>
#include <QString>

/// What the settings file says about the log, with the defaults of a missing file.
struct LogSettings
{
    bool valid = true;      ///< "VALID": whether anything is logged
    bool addTime = true;    ///< "ADDTIME": Log() and LogErr() lines begin with the time
    int maxSize = 0x100000; ///< "MAXSIZE", bytes: from there on "TYPE" 2 starts the file anew
    bool append = false;    ///< from "TYPE": the existing file is continued
    bool debug = true;      ///< "DEBUG": lines are echoed to the debug output
    bool flush = false;     ///< "FLUSH": each line leaves the process at once
    bool flushIdle = false; ///< "FLUSHIDLE": what was written leaves the process in each pause
    int timer = 10;         ///< "TIMER", at least 1: reserved, nothing is timed by it
    int maxQueue = 0;       ///< "MAXQUEUE", bytes waiting for the log thread; 0: no limit
    int maxLine = 16384;    ///< "MAXLINE", characters of a frame, buffer or value in a line; 0: all
    QString file;           ///< path of the log file
};

/// Reads group "SETTING" of the INI file `iniFile`. A value that does not convert leaves the
/// default: numbers must be 32-bit decimal integers; for switches, any text but nothing, "0" and
/// "false" means true. `file` is the log file's path; null means the built path. With "TYPE" 0 the
/// date `today` is added to it; with "TYPE" 2, a file of at least "MAXSIZE" bytes is deleted here.
/// When "VALID" is false nothing else is read.
LogSettings readLogSettings(const QString& iniFile, const QString& file, QDate today);

/// The log file's path of a process that names none, "<executable's folder>/Log/<executable>_Log_"
/// and the user's name, and makes that folder.
QString defaultLogFile(const QString& executable, const QString& user);

#endif
