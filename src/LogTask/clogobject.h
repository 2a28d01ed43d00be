#ifndef LOGTASK_CLOGOBJECT_H
#define LOGTASK_CLOGOBJECT_H

#include "wzrframework_export.h"

#include <QObject>

#include <memory>

class LogFile;

/// The open log file. Lives on the thread that created it, in the running log the log thread, and
/// is used from there only. A file that cannot be opened loses all lines without a report, a full
/// disk those that find no room: when there is room again, "N lines lost here" stands in their
/// place. Only the owner of the file may read and write it.
class WZRFRAMEWORK_EXPORT CLogObject : public QObject
{
    Q_OBJECT

public:
    /// Opens `path`, appending or truncating, and writes the start banner, "\r\nStart Log--", the
    /// time and "\r\n". With `flush`, each text leaves the process at once. `debug` is not used:
    /// the echo to the debug output happens where the line is logged.
    CLogObject(const QString& path, bool append, bool debug, bool flush, QObject* parent);

    /// Writes the end banner, "\r\nEnd Log--", the time and "\r\n", flushes and closes.
    ~CLogObject() override;

    /// Writes `size` bytes that are in the local 8-bit encoding already.
    void writeBytes(const char* bytes, qint64 size);

    /// Writes out what was kept back, as a timer event does.
    void writeOut();

    /// For a signal handler: writes out what was kept back, and `size` bytes after it. Nobody else
    /// may use the object meanwhile.
    void writeInCrash(const char* bytes, std::size_t size);

public Q_SLOTS:
    /// Writes the text in the local 8-bit encoding, and "\r\n" after it when `newLine` is true.
    void WriteLog(const QString& text, bool newLine);

    /// Writes "flush to file \r\n" and flushes: all text is then with the operating system.
    void flushLog();

protected:
    /// Any timer event flushes.
    void timerEvent(QTimerEvent* event) override;

private:
    void banner(const char* title);

    std::unique_ptr<LogFile> m_file;
    bool m_flush;
};

#endif
