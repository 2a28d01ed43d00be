// The application controller. Lines on standard input drive it:
//
//     plug NAME=ID    the device is there, its service listens under ID
//     unplug NAME     the device is gone
//     quit            everybody is to end; then this process ends too

#include "applicationcontroller/controller.h"
#include "common/console.h"
#include "common/demomessages.h"
#include "common/personalisation.h"
#include "common/process.h"
#include "common/startcount.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int QuitWithinMs = 5000; // how long the others may take to end

// "NAME=ID"
bool isDevice(const QString& text)
{
    const auto equals = text.indexOf(QLatin1Char('='));
    return equals > 0 && equals + 1 < text.size();
}

QString nameOf(const QString& device)
{
    return device.section(QLatin1Char('='), 0, 0);
}

QString idOf(const QString& device)
{
    return device.section(QLatin1Char('='), 1);
}

// What the options do not say is in the module's file, else it is the one device of the demo.
QMap<QString, QString> devicesOf(const QStringList& options)
{
    QMap<QString, QString> devices;
    for (const QString& device : options)
        devices.insert(nameOf(device), idOf(device));
    if (devices.isEmpty())
        devices = Personalisation(QStringLiteral("ApplicationController")).devices();
    if (devices.isEmpty())
        devices.insert(QLatin1String(DefaultDeviceName), QLatin1String(DefaultDeviceID));
    return devices;
}

void quit(Controller& controller)
{
    QTimer::singleShot(QuitWithinMs, &controller, [] {
        Console::say(QStringLiteral("some processes have not ended"));
        QCoreApplication::exit(1);
    });
    controller.quit();
}

void obey(Controller& controller, const QString& line)
{
    const QString command = line.section(QLatin1Char(' '), 0, 0);
    const QString argument = line.section(QLatin1Char(' '), 1).trimmed();
    bool done = true;
    if (command == QLatin1String("plug") && isDevice(argument))
        controller.plug(nameOf(argument), idOf(argument));
    else if (command == QLatin1String("unplug"))
        done = controller.unplug(argument);
    else if (command == QLatin1String("quit"))
        quit(controller);
    else
        done = false;
    if (!done)
        Console::say(QStringLiteral("cannot do: %1").arg(line));
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral("Application controller of the demo."));
    options.addHelpOption();
    options.addOptions(
        {{QStringLiteral("device"),
          QStringLiteral("A device that is plugged in; may be given several times."),
          QStringLiteral("NAME=ID")},
         {QStringLiteral("no-save"), QStringLiteral("Do not save the user's configuration.")},
         {QStringLiteral("log"), QStringLiteral("Log file."), QStringLiteral("FILE")}});
    options.process(application);

    const QStringList devices = options.values(QStringLiteral("device"));
    if (!std::all_of(devices.cbegin(), devices.cend(), isDevice))
        options.showHelp(2);

    const ProcessLife life(options.value(QStringLiteral("log")));
    const StartCount starts(QStringLiteral("ApplicationController"),
                            !options.isSet(QStringLiteral("no-save")));
    Controller controller;
    QObject::connect(&controller, &Controller::happened, &Console::say);
    // Not at once: what the last client was sent is still on its way through the sockets.
    QObject::connect(&controller, &Controller::allGone, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    const QMap<QString, QString> plugged = devicesOf(devices);
    for (auto it = plugged.cbegin(); it != plugged.cend(); ++it)
        controller.plug(it.key(), it.value());

    Console console;
    QObject::connect(&console, &Console::entered, &controller,
                     [&controller](const QString& line) { obey(controller, line); });
    controller.listen();
    Console::say(QStringLiteral("applicationcontroller ready, start %1").arg(starts.number()));
    return QCoreApplication::exec();
}
