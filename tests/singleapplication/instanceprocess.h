#ifndef TESTS_SINGLEAPPLICATION_INSTANCEPROCESS_H
#define TESTS_SINGLEAPPLICATION_INSTANCEPROCESS_H

#include <QProcess>
#include <QTest>

/// A started helper, ended with the object at the latest. It waits for go().
class InstanceProcess
{
public:
    InstanceProcess(const QString& id, const QString& message, int timeout = 20000)
    {
        m_process.start(QStringLiteral(HELPER_SINGLEINSTANCEHELPER),
                        {id, message, QString::number(timeout)});
        if (!m_process.waitForStarted(30000))
            qFatal("The helper did not start");
    }
    ~InstanceProcess() { crash(); }
    InstanceProcess(const InstanceProcess&) = delete;
    InstanceProcess& operator=(const InstanceProcess&) = delete;

    void go()
    {
        m_process.write("\n");
        m_process.waitForBytesWritten(30000);
    }

    /// The next line that it says, while this process handles its events, if it has an application.
    QString nextLine()
    {
        const auto hasLine = [this] {
            return m_process.canReadLine() ||
                   (m_process.waitForReadyRead(10) && m_process.canReadLine());
        };
        if (!QTest::qWaitFor(hasLine, 30000))
            return {};
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }

    /// What it says first once it may go.
    QString outcome()
    {
        go();
        return nextLine();
    }

    /// Ends it without a chance to clean up.
    void crash()
    {
        m_process.kill();
        m_process.waitForFinished(30000);
    }

    int exitCode()
    {
        const auto hasEnded = [this] {
            return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(10);
        };
        if (!QTest::qWaitFor(hasEnded, 30000))
            return -1;
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -2;
    }

private:
    QProcess m_process;
};

#endif
