#ifndef LOGTASK_CLOG_H
#define LOGTASK_CLOG_H

#include "wzrframework_export.h"

#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <memory>

struct CLogPrivate;

/// Whether log calls do anything: false until InitLog() has found logging switched on, and false
/// again after DestroyLog(). Set by those two only; any thread may read it.
extern WZRFRAMEWORK_EXPORT std::atomic<bool> g_bLog;

/// Starts the process's log, to be called once and early, from the main thread; an application
/// object need not exist yet. `name` is the log file's path, used as given; null lets the path be
/// built from the executable's path and the user's name. The settings come from
/// "Data/LogFile.ini" in the resource directory; every setting has a default, so the file may be
/// missing. Frames, buffers and values of any length are cut in the lines of the library, by the
/// setting "MAXLINE" (characters, 16384). Waits at most about one second for the writer. Returns
/// whether logging is on; a log file that cannot be opened is not reported, its lines are lost.
/// Calling it again while the log runs, or after it was found switched off, changes nothing.
///
/// In a child that fork() has made, the log is off, and stays the parent's: log calls do nothing
/// and DestroyLog() returns at once. The child may start a log of its own, in another file.
WZRFRAMEWORK_EXPORT bool InitLog(const char* name);

/// Logs a printf-style message, cut to 1023 bytes of UTF-8 (a character is never cut in two). Where
/// the format breaks off, as in "Progress 100%", the message ends.
WZRFRAMEWORK_EXPORT void Log(const char* format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);

/// Logs like Log() and adds the code in hexadecimal and its text from the error-code table.
WZRFRAMEWORK_EXPORT void LogErr(int code, const char* format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(2, 3);

/// Does its work only while the log is *off*, when no writer takes the line: it reaches the debug
/// output and no file. The inverted test is meant. At most 1048575 bytes. Other threads may call it
/// while InitLog() or DestroyLog() runs.
WZRFRAMEWORK_EXPORT void LogDebug(const char* format, ...) Q_ATTRIBUTE_FORMAT_PRINTF(1, 2);

/// Asks the log thread to write out all lines logged so far and returns at once.
WZRFRAMEWORK_EXPORT void FlushLog();

/// Ends the log: writes what was logged so far and closes the file. Log calls do nothing from then
/// on, a second DestroyLog() neither. Takes 50 ms, and up to 3 s more when the disk hangs; the log
/// thread is then left behind. InitLog() may start a new log afterwards.
WZRFRAMEWORK_EXPORT void DestroyLog();

/// For a signal handler of the application that runs in a crash: writes out all lines logged so
/// far, so that they survive the process. Safe there: takes no lock and no memory. Waits at most
/// about a second for the log thread when that is writing; lines that other threads are adding at
/// this moment may be lost, and those of the call in which the process has crashed. The log writes
/// nothing any more after it: the process has to end.
WZRFRAMEWORK_EXPORT void FlushLogInCrash();

/// From now on, log lines, their echo and WriteLog() show "***" in the place of secrets, which are
/// looked for in JSON text wherever it stands in a line, also cut, styled, or as the text of
/// another value:
/// - the values of `keys`, whatever their kind: `{"user":"ada","strPwd":"***"}`
/// - all data of the messages that `messages` identifies, say of a request whose data is the PIN:
///   `{"IPCMSG_TYPE":"VERIFY_PIN","IPCMSG_USER_DATA":"***"}`. In a line that shows data before a
///   message's identifier, they are hidden whatever the message.
/// Replaces what an earlier call has set; two empty lists, as at the beginning, hide nothing. Any
/// thread may call, also before InitLog(). Lines that others emit as WriteLog() stay as they are.
/// A line then costs a search through it.
WZRFRAMEWORK_EXPORT void HideInLog(const QStringList& keys, const QStringList& messages);

/// The log of the process: a thread that owns the log file, and the front end to it. Programs use
/// the free functions above and CLogFile.
///
/// Any thread may write. A written line is handed to the log thread without touching the file and
/// without waiting for the disk; lines of all threads are written in the order of their hand-over.
/// There is one instance, created on first use and owned by the class; Init() and Destroy() belong
/// to the main thread. Whoever holds the result of Instance() must not use it after Destroy().
class WZRFRAMEWORK_EXPORT CLog : public QThread
{
    Q_OBJECT

public:
    static CLog* Instance();

    /// Ends the log thread and deletes the instance; log calls are off from then on.
    static void Destroy();

    /// Reads settings and error-code table and, unless logging is switched off, starts the writer;
    /// see InitLog(). Works once in the life of an instance.
    void Init(const char* name);

    /// The setting "VALID": true until Init() has read otherwise.
    bool IsValid() const;

    /// Writes the message, after the time of day when the setting "ADDTIME" is on. `text` is UTF-8.
    void Write(const char* text);

    /// The same with " Error code:", the code in hexadecimal and the table's text. A code without
    /// a text gets an empty entry in the table.
    void Write(int code, const char* text);

    /// Writes the value as a line of its own without a time.
    CLog& operator<<(int value);
    CLog& operator<<(const QString& text);
    CLog& operator<<(const char* text);

    /// See FlushLog().
    void Flush();

    /// Waits until everything handed over before the call was handed to the writer, at most
    /// `milliseconds`; after Flush() this means that it is out of the process. False when the time
    /// is over or no writer is running.
    bool WaitWritten(int milliseconds);

    /// Adds the entries below the line "[CODE]" of a settings file to the error-code table, e.g.
    /// "1A=No signal" for code 26. A last line without a line end loses its last character; that
    /// is meant. A file that cannot be read gives one debug message.
    void GetErrorCode(const QString& file);

Q_SIGNALS:
    /// The line has to be written, with "\r\n" after it when `newLine` is true.
    void WriteLog(const QString& text, bool newLine);
    void flushLog();

protected:
    void run() override;
    void connectNotify(const QMetaMethod& signal) override;

private:
    CLog();
    ~CLog() override;
    friend void FlushLogInCrash();
    bool stop();
    static void forgetInChild();
    void writeLine(const QString& line);
    void writeShown(const QString& line);

    static std::atomic<CLog*> m_pIns;
    std::unique_ptr<CLogPrivate> d;
};

/// One line for the log, written when the object dies:
///
///     CLogFile() << "Ipc/ipcserver" << "startListen" << "Not able to start the Server";
///
/// gives "14:05:09 37 Ipc/ipcserver startListen Not able to start the Server " and "\r\n": time of
/// day, milliseconds and each piece, with a blank after each. Texts are UTF-8. Every operation
/// tests for itself whether the log is on, so an object that was begun before InitLog() and dies
/// after it writes its line without the time. A copy writes its line too.
class WZRFRAMEWORK_EXPORT CLogFile
{
public:
    CLogFile()
    {
        if (isOn())
            begin();
    }
    CLogFile(const CLogFile& other) = default;
    CLogFile& operator=(const CLogFile& other) = delete;
    ~CLogFile()
    {
        if (isOn())
            end();
    }
    CLogFile& operator<<(int value)
    {
        if (isOn())
            append(value);
        return *this;
    }
    CLogFile& operator<<(const char* text)
    {
        if (isOn())
            append(text);
        return *this;
    }
    CLogFile& operator<<(const QString& text)
    {
        if (isOn())
            append(text);
        return *this;
    }

private:
    static bool isOn() { return g_bLog.load(std::memory_order_relaxed); }
    void begin();
    void append(int value);
    void append(const char* text);
    void append(const QString& text);
    void end();

    QString m_line;
};

#endif
