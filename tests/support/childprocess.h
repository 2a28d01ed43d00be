#ifndef TESTS_SUPPORT_CHILDPROCESS_H
#define TESTS_SUPPORT_CHILDPROCESS_H

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTest>

/// A program that a test starts, talks to through its standard input and output, and ends. When
/// the object dies with the program still running, the program is killed.
///
///     ChildProcess server(HELPER_SERVER, {"--name", "x"}, folder.path());
///     QVERIFY(server.says("ready"));
///     server.enter("quit");
///     QCOMPARE(server.exitCode(), 0);
///
/// What the program writes to its error output goes to that of the test.
class ChildProcess
{
public:
    /// What exitCode() returns for a program that was killed by a signal, or does not end.
    static constexpr int Crashed = -1;
    static constexpr int StillRunning = -2;

    /// `folder` is the program's place for temporary files, local sockets among them: programs
    /// with different folders do not see each other.
    ChildProcess(const QString& program, const QStringList& arguments, const QString& folder)
        : m_program(program)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", folder);
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process,
                         [this] { m_output += m_process.readAllStandardOutput(); });
        m_process.start(program, arguments);
        if (!m_process.waitForStarted(WaitMs))
            qFatal("ChildProcess: cannot start %s", qPrintable(program));
    }
    ~ChildProcess()
    {
        if (m_process.state() != QProcess::NotRunning)
            kill();
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits until a line that contains `part` has come since the last line that was waited for.
    bool says(const QByteArray& part) { return !lineWith(part).isNull(); }

    /// The same; returns the line, null when it does not come.
    QByteArray lineWith(const QByteArray& part)
    {
        QByteArray found;
        const bool came = QTest::qWaitFor([&] { return takeLine(part, &found); }, WaitMs);
        if (!came)
            qWarning("%s does not say \"%s\"; it said:\n%s", qPrintable(m_program),
                     part.constData(), m_output.constData());
        return came ? found : QByteArray();
    }

    /// Everything that the program has said so far.
    QByteArray output() const { return m_output; }

    qint64 processId() const { return m_process.processId(); }

    /// A line for the program's standard input.
    void enter(const QByteArray& line) { m_process.write(line + '\n'); }

    /// Waits until the program has ended by itself.
    int exitCode()
    {
        if (!QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, WaitMs))
            return StillRunning;
        m_output += m_process.readAllStandardOutput();
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : Crashed;
    }

    /// Asks the program to end, as `kill` does.
    void terminate() { m_process.terminate(); }

    /// Ends the program at once, in the middle of what it does.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(WaitMs);
    }

private:
    static constexpr int WaitMs = 30000;

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

    QString m_program;
    QProcess m_process;
    QByteArray m_output;
    decltype(m_output.size()) m_read = 0; // how much of the output was waited for
};

#endif
