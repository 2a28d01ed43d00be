// A modem that is none: a program that answers AT commands at a pseudo-terminal as the modem on a
// USB stick does. README.md tells the commands, the state file and what may stand in a script or
// be entered here.

#include "common/commandline.h"
#include "common/console.h"
#include "common/demomessages.h"
#include "common/exitstatus.h"
#include "common/process.h"
#include "modemsimulator/modemengine.h"
#include "modemsimulator/pseudoterminal.h"
#include "modemsimulator/script.h"
#include "modemsimulator/statefile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

namespace {

struct Options
{
    QString link;
    QString state;
    QString script;
    QString logFile;
    int signalInterval = 0;
    bool trace = false;
};

QList<QCommandLineOption> commandLineOptions()
{
    const auto text = [](const char* value) { return QString::fromLatin1(value); };
    return {{text("link"), text("Where the modem's device node is to appear."), text("PATH"),
             QDir(QDir::tempPath()).filePath(QLatin1String(kDefaultModemLink))},
            {text("state"), text("Keep the state in this file (*.config or *.xml)."), text("FILE")},
            {text("script"), text("Let happen what this file says."), text("FILE")},
            {text("signal-interval"),
             text("Milliseconds after which the signal changes; 0: never."), text("MS"),
             text("2000")},
            {text("trace"), text("Print what is received and sent, and when the line is closed.")},
            {text("log"), text("Log file."), text("FILE")}};
}

Options readOptions(CommandLine& line)
{
    constexpr int kLongestMs = 3600000;
    return {line.value("link"),
            line.value("state"),
            line.value("script"),
            line.value("log"),
            line.number("signal-interval", 0, kLongestMs),
            line.isSet("trace")};
}

int refuse(const QString& reason)
{
    Console::complain(reason);
    return ExitStatus::WrongUsage;
}

// On one line and of a readable length.
QString shown(const QByteArray& bytes)
{
    constexpr int kMaxShown = 400;
    QString text;
    for (const char byte : bytes.left(kMaxShown)) {
        if (byte == '\r')
            text += QLatin1String("\\r");
        else if (byte == '\n')
            text += QLatin1String("\\n");
        else if (byte >= ' ' && byte <= '~')
            text += QLatin1Char(byte);
        else
            text += QStringLiteral("\\x%1").arg(static_cast<unsigned char>(byte), 2, 16,
                                                QLatin1Char('0'));
    }
    return bytes.size() <= kMaxShown ? text
                                     : text + QStringLiteral("... (%1 bytes)").arg(bytes.size());
}

// The engine at its line, with its state file and its scripts.
class Simulator : public QObject
{
public:
    Simulator(const ModemState& state, StateFile stateFile)
        : m_stateFile(std::move(stateFile))
        , m_engine(state, hooks())
    {
        connect(&m_line, &PseudoTerminal::received, this, [this](const QByteArray& bytes) {
            say("received", bytes);
            m_engine.take(bytes);
        });
        connect(&m_line, &PseudoTerminal::sent, this,
                [this](const QByteArray& bytes) { say("sent", bytes); });
        connect(&m_line, &PseudoTerminal::hungUp, this, [this] {
            m_engine.hangUp();
            if (m_traces)
                Console::say(QStringLiteral("trace: closed"));
        });
        connect(&m_walk, &QTimer::timeout, this, [this] { m_engine.walk(); });
    }

    PseudoTerminal& line() { return m_line; }
    QStringList words() const { return m_engine.words() + QStringList(QStringLiteral("unplug")); }

    void trace() { m_traces = true; }
    void walkEvery(int milliseconds)
    {
        if (milliseconds > 0)
            m_walk.start(milliseconds);
    }
    void run(const QStringList& lines)
    {
        auto* script = new Script(
            lines, [this](const QString& text) { perform(text); }, this);
        m_scripts.append(script);
        connect(script, &Script::ended, this, [this, script] {
            m_scripts.removeAll(script);
            script->deleteLater();
        });
        script->start();
    }
    // One line that somebody has entered.
    void enter(const QString& line)
    {
        const QString error = Script::check({line}, words());
        if (error.isEmpty())
            run({line});
        else
            Console::say(QStringLiteral("cannot do: %1").arg(line));
    }

private:
    ModemEngine::Hooks hooks()
    {
        ModemEngine::Hooks hooks;
        hooks.send = [this](const QByteArray& bytes) { m_line.send(bytes); };
        hooks.delay = [this](int milliseconds) { m_line.delay(milliseconds); };
        hooks.stateChanged = [this] { save(); };
        hooks.answered = [this](const std::vector<QByteArray>& commands) {
            const QList<Script*> scripts = m_scripts;
            for (Script* script : scripts)
                script->answered(commands);
        };
        return hooks;
    }
    void say(const char* step, const QByteArray& bytes) const
    {
        if (m_traces)
            Console::say(QStringLiteral("trace: %1: %2").arg(QLatin1String(step), shown(bytes)));
    }
    void perform(const QString& text)
    {
        if (text == QLatin1String("unplug")) {
            // Not from inside what the line has emitted.
            QTimer::singleShot(0, this, [this] {
                m_line.close();
                QCoreApplication::quit();
            });
        } else if (m_engine.perform(text)) {
            Console::say(QStringLiteral("done: %1").arg(text));
        } else {
            Console::say(QStringLiteral("cannot do: %1").arg(text));
        }
    }
    // Said once per series of failures.
    void save()
    {
        const bool isSaved = m_stateFile.save(m_engine.state());
        if (!isSaved && m_wasSaved)
            Console::say(QStringLiteral("cannot save the state"));
        m_wasSaved = isSaved;
    }

    StateFile m_stateFile;
    bool m_wasSaved = true;
    bool m_traces = false;
    PseudoTerminal m_line;
    ModemEngine m_engine;
    QTimer m_walk;
    QList<Script*> m_scripts;
};

bool readScript(const QString& path, QStringList* lines, QString* error)
{
    if (path.isEmpty())
        return true;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read the script %1: %2").arg(path, file.errorString());
        return false;
    }
    *lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    CommandLine line("Simulated modem of the demo.", commandLineOptions(), argc, argv);
    const Options options = readOptions(line);
    const QCoreApplication application(argc, argv);
    if (const auto status = line.exitStatus())
        return *status;
    const ProcessLife life(options.logFile);

    QString error;
    QStringList script;
    ModemState state = ModemState::makeDefault();
    StateFile stateFile(options.state);
    if (!stateFile.load(&state, &error) || !readScript(options.script, &script, &error))
        return refuse(error);
    Simulator simulator(state, stateFile);
    error = Script::check(script, simulator.words());
    if (!error.isEmpty())
        return refuse(QStringLiteral("cannot use the script %1: %2").arg(options.script, error));
    if (!simulator.line().open(options.link, &error))
        return refuse(error);

    if (options.trace)
        simulator.trace();
    Console console;
    QObject::connect(&console, &Console::entered, &simulator,
                     [&simulator](const QString& text) { simulator.enter(text); });
    Console::say(QStringLiteral("modemsimulator ready: %1").arg(options.link));
    simulator.walkEvery(options.signalInterval);
    simulator.run(script);
    return Console::exitStatus(QCoreApplication::exec());
}
