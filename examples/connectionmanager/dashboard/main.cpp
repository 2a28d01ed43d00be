// A user interface for the console. It asks the device everything once and shows the answers;
// lines that begin with "*" are reports that came unasked. Then it ends (--once), or stays and
// takes commands from standard input:
//
//     ask | messages | phonebook | diagnose | quit
//     pin PIN | changepin OLD NEW | puk PUK NEWPIN
//     network [NAME] | dial | hangup | ussd TEXT
//     delete all | delete NUMBER... | cancel | add NUMBER NAME
//
// Exit codes: 0 done, 1 the device refused something, 2 wrong usage, 3 no answer in time (--once).

#include "common/console.h"
#include "common/demomessages.h"
#include "common/process.h"
#include "dashboard/dashboard.h"
#include "dashboard/devicelink.h"
#include "dashboard/recordview.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>

namespace {

constexpr int Refused = 1;
constexpr int WrongUsage = 2;
constexpr int NoAnswer = 3;

struct Options
{
    QString name;
    QString deviceName;
    QString logFile;
    Dashboard::Plan plan;
    bool once = false;
    bool trace = false;
    int timeout = 0; // seconds
};

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Console user interface of the demo."));
    parser.addHelpOption();
    const auto option = [&parser](const char* name, const char* description, const char* value = "",
                                  const char* preset = "") {
        parser.addOption({QLatin1String(name), QLatin1String(description), QLatin1String(value),
                          QLatin1String(preset)});
    };
    option("name", "Name of this process.", "NAME", "dashboard");
    option("device", "Name of the device.", "NAME", DefaultDeviceName);
    option("pin", "PIN to enter when the SIM asks for it.", "PIN");
    option("dial", "Connect to the internet.");
    option("once", "Ask once, then end.");
    option("reports", "With --once: end after so many reports.", "N", "0");
    option("timeout", "With --once: seconds after which to give up.", "S", "30");
    option("trace", "Print the messages as they travel.");
    option("log", "Log file.", "FILE");
    parser.process(application);

    bool isCount = false;
    bool isTime = false;
    Options options;
    options.name = parser.value(QStringLiteral("name"));
    options.deviceName = parser.value(QStringLiteral("device"));
    options.logFile = parser.value(QStringLiteral("log"));
    options.plan.pin = parser.value(QStringLiteral("pin"));
    options.plan.dial = parser.isSet(QStringLiteral("dial"));
    options.plan.reports = parser.value(QStringLiteral("reports")).toInt(&isCount);
    options.once = parser.isSet(QStringLiteral("once"));
    options.trace = parser.isSet(QStringLiteral("trace"));
    options.timeout = parser.value(QStringLiteral("timeout")).toInt(&isTime);
    if (!isCount || !isTime)
        parser.showHelp(WrongUsage);
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
    QObject::connect(&dashboard, &Dashboard::finished,
                     [](int failures) { QCoreApplication::exit(failures == 0 ? 0 : Refused); });
    QTimer::singleShot(timeout * 1000, &dashboard, [] {
        Console::say(QStringLiteral("no answer in time"));
        QCoreApplication::exit(NoAnswer);
    });
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const Options options = readOptions(application);
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
    return QCoreApplication::exec();
}
