#ifndef TESTS_PROCESS_CONNECTIONMANAGER_H
#define TESTS_PROCESS_CONNECTIONMANAGER_H

#include "support/childprocess.h"
#include "support/testfile.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

/// The example's processes, in a folder of their own; they do not count their starts. Each start
/// waits until the process is ready. The first service finds a simulated modem, whose signal
/// changes only when the test says so.
class ConnectionManager
{
public:
    using Process = std::unique_ptr<ChildProcess>;

    Process startController(const QStringList& arguments = {})
    {
        return start(HELPER_APPLICATIONCONTROLLER, QStringList{"--no-save"} + arguments,
                     "applicationcontroller ready");
    }
    /// With the modem, unless one was started or the service has a port of its own.
    Process startService(const QStringList& arguments = {})
    {
        if (!m_modem && !arguments.contains("--port"))
            m_modem = startModem();
        return start(HELPER_DEVICESERVICE, QStringList{"--no-save"} + arguments,
                     "deviceservice ready");
    }
    Process startModem(const QStringList& arguments = {})
    {
        return start(HELPER_MODEMSIMULATOR,
                     QStringList{"--signal-interval", "0", "--trace"} + arguments,
                     "modemsimulator ready");
    }
    /// The modem that the first service has found.
    ChildProcess& modem() { return *m_modem; }
    Process startDashboard(const QStringList& arguments = {})
    {
        return start(HELPER_DASHBOARD, arguments, "dashboard ready");
    }

    /// Any of the programs, without waiting for it.
    Process start(const QString& program, const QStringList& arguments = {})
    {
        const QString log = m_folder.filePath(QString("log%1").arg(++m_started));
        return std::make_unique<ChildProcess>(program, arguments + QStringList{"--log", log},
                                              m_folder.path());
    }

    /// The path of a socket or of a modem's line.
    QString socket(const QString& name) const { return m_folder.filePath(name); }
    /// What stands in the logs of all processes; one that runs may not have written everything yet.
    QByteArray logs() const
    {
        QByteArray logs;
        const QDir folder(m_folder.path());
        for (const QString& name : folder.entryList({"log*"}, QDir::Files))
            logs += TestFile::read(folder.filePath(name));
        return logs;
    }

private:
    Process start(const QString& program, const QStringList& arguments, const QByteArray& ready)
    {
        Process process = start(program, arguments);
        if (!process->says(ready))
            qFatal("%s does not get ready", qPrintable(program));
        return process;
    }

    QTemporaryDir m_folder;
    int m_started = 0;
    Process m_modem;
};

#endif
