// A modem that is none: a program that answers AT commands at a pseudo-terminal as the modem on a
// USB stick does. README.md tells the commands, the state file and what may stand in a script or
// be entered here.

#include "common/console.h"
#include "common/process.h"
#include "modemsimulator/modemengine.h"
#include "modemsimulator/pseudoterminal.h"
#include "modemsimulator/script.h"
#include "modemsimulator/statefile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int Refused = 2; // exit status

struct Options
{
    QString link;
    QString state;
    QString script;
    QString logFile;
    int signalInterval = 0;
    bool trace = false;
};

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Simulated modem of the demo."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("link"), QStringLiteral("Where the modem's device node is to appear."),
          QStringLiteral("PATH"), QDir::tempPath() + QStringLiteral("/demo-modem")},
         {QStringLiteral("state"),
          QStringLiteral("Keep the state in this file (*.config or *.xml)."),
          QStringLiteral("FILE")},
         {QStringLiteral("script"), QStringLiteral("Let happen what this file says."),
          QStringLiteral("FILE")},
         {QStringLiteral("signal-interval"),
          QStringLiteral("Change the signal every so many milliseconds; 0: never."),
          QStringLiteral("MS"), QStringLiteral("2000")},
         {QStringLiteral("trace"), QStringLiteral("Print what is received and sent.")},
         {QStringLiteral("log"), QStringLiteral("Log file."), QStringLiteral("FILE")}});
    parser.process(application);
    bool isNumber = false;
    Options options{parser.value(QStringLiteral("link")),
                    parser.value(QStringLiteral("state")),
                    parser.value(QStringLiteral("script")),
                    parser.value(QStringLiteral("log")),
                    parser.value(QStringLiteral("signal-interval")).toInt(&isNumber),
                    parser.isSet(QStringLiteral("trace"))};
    if (!isNumber || options.signalInterval < 0)
        parser.showHelp(Refused);
    return options;
}

int refuse(const QString& reason)
{
    std::fprintf(stderr, "modemsimulator: %s\n", qPrintable(reason));
    return Refused;
}

// On one line and of a readable length.
QString shown(const QByteArray& bytes)
{
    constexpr int MaxShown = 400;
    QString text;
    for (const char byte : bytes.left(MaxShown)) {
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
    return bytes.size() <= MaxShown ? text
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
        connect(&m_line, &PseudoTerminal::hungUp, this, [this] { m_engine.hangUp(); });
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
    QCoreApplication application(argc, argv);
    const Options options = readOptions(application);
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
                     [&simulator](const QString& line) { simulator.enter(line); });
    Console::say(QStringLiteral("modemsimulator ready: %1").arg(options.link));
    simulator.walkEvery(options.signalInterval);
    simulator.run(script);
    return QCoreApplication::exec();
}
