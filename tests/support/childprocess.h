#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include "support/tiedprocess.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTest>

/// A program that a test starts, talks to through its standard input and output, and ends. When
/// the object dies with the program still running, the program is killed; so it is when the test
/// is.
///
///     ChildProcess server(HELPER_SERVER, {"--name", "x"}, folder.path());
///     QVERIFY(server.says("ready"));
///     server.enter("quit");
///     QCOMPARE(server.exitCode(), 0);
///
/// run() is for a program that is only started and looked at when it has ended:
///
///     const auto result = ChildProcess::run(HELPER_TOOL, {"--version"});
///     QCOMPARE(result.code, 0);
///     QCOMPARE(result.out, QByteArray("1.0\n"));
///
/// A program that cannot be started, or that run() has waited a minute for, ends the test program.
/// While the test waits for what a program says, or for its end, the events of its own thread are
/// handled, if it has an application object; run() handles none.
class ChildProcess
{
public:
    /// Instead of an exit code: a signal has ended the program, or it does not end.
    static constexpr int kCrashed = -1;
    static constexpr int kStillRunning = -2;

    /// The surroundings of a program; what is empty is the test's own. A text alone is the folder
    /// for temporary files.
    struct Surroundings
    {
        Surroundings() = default;
        Surroundings(const QString& temporary, const QString& working = {},
                     const QString& output = {})
            : temporaryFolder(temporary)
            , workingFolder(working)
            , outputFile(output)
        {
        }

        /// Local sockets and locks are here, too: programs with different folders do not see each
        /// other.
        QString temporaryFolder;
        QString workingFolder;
        QString outputFile; ///< takes the standard output, which then cannot be waited for
    };

    struct Result
    {
        int code; ///< exit code, or kCrashed
        QByteArray out;
        QByteArray err;
    };

    /// Started at once. What it writes to its error output goes to that of the test.
    ChildProcess(const QString& program, const QStringList& arguments,
                 const Surroundings& surroundings = {})
        : ChildProcess(program, arguments, surroundings, QProcess::ForwardedErrorChannel)
    {
    }
    ~ChildProcess()
    {
        if (isRunning())
            kill();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Runs a program to its end.
    static Result run(const QString& program, const QStringList& arguments,
                      const Surroundings& surroundings = {})
    {
        ChildProcess child(program, arguments, surroundings, QProcess::SeparateChannels);
        child.m_process.closeWriteChannel();
        if (child.isRunning() && !child.m_process.waitForFinished(2 * kWaitMs))
            qFatal("ChildProcess: %s does not end", qPrintable(program));
        const int code = child.exitCode();
        return {code, child.m_output, child.m_process.readAllStandardError()};
    }

    /// Waits until a line that contains `part` has come since the last line that was waited for.
    bool says(const QByteArray& part) { return !lineWith(part).isNull(); }

    /// The same; returns the line, null when it does not come.
    QByteArray lineWith(const QByteArray& part)
    {
        QByteArray found;
        const bool came = waitFor([&] { return takeLine(part, &found); });
        if (!came)
            qWarning("%s does not say \"%s\"; it said:\n%s", qPrintable(m_process.program()),
                     part.constData(), m_output.constData());
        return came ? found : QByteArray();
    }

    /// Everything that the program has said so far.
    QByteArray output() const { return m_output; }

    qint64 processId() const { return m_process.processId(); }

    /// A line for the program's standard input.
    void enter(const QByteArray& line)
    {
        m_process.write(line + '\n');
        if (!QCoreApplication::instance())
            m_process.waitForBytesWritten(kWaitMs); // no event loop does it
    }

    /// Ends the program's standard input, behind what was entered.
    void closeInput() { m_process.closeWriteChannel(); }

    bool isRunning() const { return m_process.state() != QProcess::NotRunning; }

    /// Waits until the program has ended by itself.
    int exitCode()
    {
        if (!waitFor([this] { return !isRunning(); }))
            return kStillRunning;
        m_output += m_process.readAllStandardOutput();
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : kCrashed;
    }

    /// Asks the program to end, as `kill` does.
    void terminate() { m_process.terminate(); }

    /// Ends the program at once, in the middle of what it does.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(kWaitMs);
    }

private:
    static constexpr int kWaitMs = 30000;

    ChildProcess(const QString& program, const QStringList& arguments,
                 const Surroundings& surroundings, QProcess::ProcessChannelMode channels)
    {
        if (!surroundings.temporaryFolder.isEmpty()) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert("TMPDIR", surroundings.temporaryFolder);
            environment.insert("XDG_RUNTIME_DIR", surroundings.temporaryFolder);
            m_process.setProcessEnvironment(environment);
        }
        if (!surroundings.workingFolder.isEmpty())
            m_process.setWorkingDirectory(surroundings.workingFolder);
        m_process.setProcessChannelMode(channels);
        if (!surroundings.outputFile.isEmpty())
            m_process.setStandardOutputFile(surroundings.outputFile);
        else
            QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process,
                             [this] { m_output += m_process.readAllStandardOutput(); });
        m_process.start(program, arguments);
        if (!m_process.waitForStarted(kWaitMs))
            qFatal("ChildProcess: cannot start %s: %s", qPrintable(program),
                   qPrintable(m_process.errorString()));
    }

    template<class Condition>
    bool waitFor(Condition condition)
    {
        return QTest::qWaitFor(
            [&] {
                if (condition())
                    return true;
                if (QCoreApplication::instance())
                    return false;
                m_process.waitForReadyRead(10); // it also sees that the program has ended
                return condition();
            },
            kWaitMs);
    }

    bool takeLine(const QByteArray& part, QByteArray* line)
    {
        for (;;) {
            const auto end = m_output.indexOf('\n', m_read);
            if (end < 0)
                return false;
            *line = m_output.mid(m_read, end - m_read);
            m_read = end + 1;
            if (line->contains(part))
                return true;
        }
    }

    TiedProcess m_process;
    QByteArray m_output;
    decltype(m_output.size()) m_read = 0; // how much of the output was waited for
};

#endif
