// A user interface for the console. It asks the device everything once and shows the answers;
// lines that begin with "*" are reports that came unasked. Then it ends (--once), or stays and
// takes commands from standard input:
//
//     ask | messages | phonebook | diagnose | quit
//     pin PIN | changepin OLD NEW | puk PUK NEWPIN
//     network [NAME] | dial | hangup | ussd TEXT
//     delete all | delete NUMBER... | cancel | add NUMBER NAME
//
// The end of standard input is a "quit". Exit statuses: exitstatus.h.

#include "common/commandline.h"
#include "common/console.h"
#include "common/demomessages.h"
#include "common/exitstatus.h"
#include "common/process.h"
#include "dashboard/dashboard.h"
#include "dashboard/devicelink.h"
#include "dashboard/pinfile.h"
#include "dashboard/recordview.h"

#include <QCoreApplication>
#include <QTimer>

namespace {

struct Options
{
    QString name;
    QString deviceName;
    QString logFile;
    QString pinFile;
    Dashboard::Plan plan;
    bool once = false;
    bool trace = false;
    int timeout = 0; // seconds
};

QList<QCommandLineOption> commandLineOptions()
{
    const auto text = [](const char* value) { return QString::fromLatin1(value); };
    return {{text("name"), text("Name of this process."), text("NAME"), text("dashboard")},
            {text("device"), text("Name of the device."), text("NAME"), text(kDefaultDeviceName)},
            {text("pin-file"),
             text("File whose first line is the PIN to enter when the SIM asks for it; \"-\" is "
                  "standard input."),
             text("FILE")},
            {text("pin"), text("The PIN itself; other users can read it in the list of processes."),
             text("PIN")},
            {text("dial"), text("Connect to the internet.")},
            {text("once"), text("Ask once, then end.")},
            {text("reports"), text("With --once: end only after this number of reports."),
             text("N"), text("0")},
            {text("timeout"), text("With --once: seconds after which to give up."), text("S"),
             text("30")},
            {text("trace"), text("Print the messages as they travel.")},
            {text("log"), text("Log file."), text("FILE")}};
}

Options readOptions(CommandLine& line)
{
    constexpr int kMostReports = 1000000;
    constexpr int kLongestS = 86400;
    Options options;
    options.name = line.value("name");
    options.deviceName = line.value("device");
    options.logFile = line.value("log");
    options.pinFile = line.value("pin-file");
    options.plan.pin = line.value("pin");
    options.plan.dial = line.isSet("dial");
    options.plan.reports = line.number("reports", 0, kMostReports);
    options.once = line.isSet("once");
    options.trace = line.isSet("trace");
    options.timeout = line.number("timeout", 0, kLongestS);
    if (line.isSet("pin") && line.isSet("pin-file"))
        line.refuse(QStringLiteral("--pin and --pin-file exclude each other."));
    return options;
}

void connectParts(DeviceLink& link, Dashboard& dashboard, Console& console, const Options& options)
{
    QObject::connect(&link, &DeviceLink::happened, &Console::say);
    QObject::connect(&link, &DeviceLink::reached, &dashboard, &Dashboard::begin);
    QObject::connect(&link, &DeviceLink::lost, &dashboard, [&dashboard] {
        Console::say(QStringLiteral("device: connection lost"));
        dashboard.forgetQuestions();
    });
    QObject::connect(&link, &DeviceLink::quitWanted, [] {
        Console::say(QStringLiteral("the controller wants everybody to quit"));
        QCoreApplication::quit();
    });
    // A run that ends by itself needs no input.
    if (!options.once)
        QObject::connect(&console, &Console::ended, &dashboard, &QCoreApplication::quit);
    QObject::connect(&console, &Console::entered, &dashboard, [&dashboard](const QString& line) {
        if (line == QLatin1String("quit"))
            QCoreApplication::quit();
        else if (!dashboard.obey(line))
            Console::say(QStringLiteral("cannot do: %1").arg(line));
    });
    if (options.trace) {
        QObject::connect(&link, &DeviceLink::passed, [](const QString& step, const QString& text) {
            Console::say(QStringLiteral("trace: %1: %2").arg(step, text));
        });
    }
}

void endAfterOneRound(Dashboard& dashboard, int timeout)
{
    QObject::connect(&dashboard, &Dashboard::finished, [](int failures) {
        QCoreApplication::exit(failures == 0 ? ExitStatus::Done : ExitStatus::Failed);
    });
    QTimer::singleShot(timeout * 1000, &dashboard, [] {
        Console::say(QStringLiteral("no answer in time"));
        QCoreApplication::exit(ExitStatus::NoAnswer);
    });
}

} // namespace

int main(int argc, char* argv[])
{
    CommandLine line("Console user interface of the demo.", commandLineOptions(), argc, argv);
    Options options = readOptions(line);
    const QCoreApplication application(argc, argv);
    if (const auto status = line.exitStatus())
        return *status;
    if (line.isSet("pin-file")) {
        const auto pin = PinFile::read(options.pinFile);
        if (!pin)
            return ExitStatus::WrongUsage;
        options.plan.pin = *pin;
    }
    const ProcessLife life(options.logFile);

    // The view registers first, so an answer is shown before the dashboard acts on it.
    const RecordView view;
    Dashboard dashboard(options.name, options.plan);
    DeviceLink link(options.name, options.deviceName);
    Console console;
    connectParts(link, dashboard, console, options);
    if (options.once)
        endAfterOneRound(dashboard, options.timeout);

    Console::say(QStringLiteral("dashboard ready"));
    link.start();
    return Console::exitStatus(QCoreApplication::exec());
}
