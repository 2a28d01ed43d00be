#ifndef TESTS_PROCESS_CONNECTIONMANAGER_H
#define TESTS_PROCESS_CONNECTIONMANAGER_H

#include "support/childprocess.h"

#include <QTemporaryDir>

#include <memory>

/// The example's processes, in a folder of their own; they do not count their starts. Each start
/// waits until the process is ready.
class ConnectionManager
{
public:
    using Process = std::unique_ptr<ChildProcess>;

    Process startController(const QStringList& arguments = {})
    {
        return start(HELPER_APPLICATIONCONTROLLER, QStringList{"--no-save"} + arguments,
                     "applicationcontroller ready");
    }
    /// The signal changes only when the test says so.
    Process startService(const QStringList& arguments = {})
    {
        return start(HELPER_DEVICESERVICE,
                     QStringList{"--no-save", "--signal-interval", "0"} + arguments,
                     "deviceservice ready");
    }
    Process startDashboard(const QStringList& arguments = {})
    {
        return start(HELPER_DASHBOARD, arguments, "dashboard ready");
    }

    /// The path of a socket that one of the processes listens on.
    QString socket(const QString& name) const { return m_folder.filePath(name); }

private:
    Process start(const QString& program, const QStringList& arguments, const QByteArray& ready)
    {
        const QString log = m_folder.filePath(QString("log%1").arg(++m_started));
        auto process = std::make_unique<ChildProcess>(
            program, arguments + QStringList{"--log", log}, m_folder.path());
        if (!process->says(ready))
            qFatal("%s does not get ready", qPrintable(program));
        return process;
    }

    QTemporaryDir m_folder;
    int m_started = 0;
};

#endif
