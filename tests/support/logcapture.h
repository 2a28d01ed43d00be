#ifndef TESTS_SUPPORT_LOGCAPTURE_H
#define TESTS_SUPPORT_LOGCAPTURE_H

#include "LogTask/clog.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QStringList>
#include <QTemporaryDir>

/// The real log of this process, running while the object lives, and the lines it has written:
///
///     LogCapture log;
///     codeThatLogs();
///     QVERIFY(log.contains("Ipc/ipcserver startListen"));
///
/// Reading waits for the log thread and handles no events of the test's own thread. One at a time.
class LogCapture
{
public:
    /// The echo of every line to the debug output is silenced, with all of qDebug(), unless asked
    /// for.
    enum Echo { Silent, Echoing };

    explicit LogCapture(Echo echo = Silent)
    {
        if (g_bLog)
            qFatal("LogCapture: a log is running already");
        if (echo == Silent)
            QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        if (!m_folder.isValid() ||
            !InitLog(QFile::encodeName(m_folder.filePath("log")).constData()))
            qFatal("LogCapture: the log did not start");
    }
    ~LogCapture()
    {
        DestroyLog();
        QLoggingCategory::setFilterRules(QString());
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// Everything in the file, banners included.
    QString text() const
    {
        FlushLog();
        if (!CLog::Instance()->WaitWritten(30000))
            qFatal("LogCapture: the log thread does not write");
        // The file's name ends in the day on which the log was started.
        const QStringList names = QDir(m_folder.path()).entryList(QDir::Files);
        QFile file(m_folder.filePath(names.value(0)));
        if (names.size() != 1 || !file.open(QIODevice::ReadOnly))
            qFatal("LogCapture: no log file");
        return QString::fromLocal8Bit(file.readAll());
    }

    /// The logged lines with their stamps, without line ends, banners and the marks of a flush.
    QStringList lines() const { return allLines().mid(m_cleared); }

    bool contains(const QString& part) const { return count(part) > 0; }

    /// How many lines contain the part.
    int count(const QString& part) const { return static_cast<int>(lines().filter(part).size()); }

    /// Forgets the lines so far.
    void clear() { m_cleared = static_cast<int>(allLines().size()); }

private:
    QStringList allLines() const
    {
        QStringList lines = text().split(QStringLiteral("\r\n"));
        lines.removeAll(QStringLiteral("flush to file "));
        // Before the first line: an empty one and the start banner. After the last: the end of
        // text.
        lines.removeLast();
        return lines.mid(2);
    }

    QTemporaryDir m_folder;
    int m_cleared = 0;
};

#endif
