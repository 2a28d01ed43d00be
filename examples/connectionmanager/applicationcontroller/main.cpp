// The application controller. Lines on standard input drive it:
//
//     plug NAME=ID    the device is there, its service listens under ID
//     unplug NAME     the device is gone
//     quit            everybody is to end; then this process ends too

#include "applicationcontroller/controller.h"
#include "common/commandline.h"
#include "common/console.h"
#include "common/demomessages.h"
#include "common/exitstatus.h"
#include "common/personalisation.h"
#include "common/process.h"
#include "common/startcount.h"
#include "singleapplication/qtsinglecoreapplication.h"

#include <QTimer>

#include <algorithm>

namespace {

constexpr char kSocketName[] = "applicationcontroller";
constexpr int kQuitWithinMs = 5000; // how long the others may take to end

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
        devices.insert(QLatin1String(kDefaultDeviceName), QLatin1String(kDefaultDeviceID));
    return devices;
}

void quit(Controller& controller)
{
    QTimer::singleShot(kQuitWithinMs, &controller, [] {
        Console::say(QStringLiteral("some processes have not ended"));
        QCoreApplication::exit(ExitStatus::Failed);
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

QList<QCommandLineOption> commandLineOptions()
{
    const auto text = [](const char* value) { return QString::fromLatin1(value); };
    return {{text("device"), text("A device that is plugged in; may be given several times."),
             text("NAME=ID")},
            {text("no-save"), text("Do not save the user's configuration.")},
            {text("log"), text("Log file."), text("FILE")}};
}

} // namespace

int main(int argc, char* argv[])
{
    CommandLine line("Application controller of the demo.", commandLineOptions(), argc, argv);
    const QStringList devices = line.values("device");
    if (!std::all_of(devices.cbegin(), devices.cend(), isDevice))
        line.refuse(QStringLiteral("--device takes NAME=ID."));
    QtSingleCoreApplication application(instanceID(QLatin1String(kSocketName)), argc, argv);
    if (const auto status = line.exitStatus())
        return *status;
    const ProcessLife life(line.value("log"));
    if (isTaken(application))
        return ExitStatus::AlreadyRunning;

    const StartCount starts(QStringLiteral("ApplicationController"), !line.isSet("no-save"));
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
                     [&controller](const QString& text) { obey(controller, text); });
    controller.listen(QLatin1String(kSocketName));
    Console::say(QStringLiteral("applicationcontroller ready, start %1").arg(starts.number()));
    return Console::exitStatus(QCoreApplication::exec());
}
