#ifndef LOGTASK_CLOG_H
#define LOGTASK_CLOG_H

#include "wzrframework_export.h"

#include <QString>

/// One line for the log, written when the object dies.
///
///     CLogFile() << "Ipc/ipcserver" << "startListen" << "Not able to start the Server";
class WZRFRAMEWORK_EXPORT CLogFile
{
public:
    CLogFile();
    CLogFile(const CLogFile& other);
    ~CLogFile();
    CLogFile& operator<<(int value);
    CLogFile& operator<<(const char* text);
    CLogFile& operator<<(const QString& text);

private:
    QString m_line;
};

#endif
