// The service of one device, a modem on a serial line. It listens under the device's ID; clients
// find the ID by asking the application controller for the device's name.
//
// Everything runs in the main thread. A request waits for the modem in an event loop, and what
// arrives meanwhile waits for its turn in the WorkQueue: the library's plug-ins, its
// DeviceService_Global and look-ups in its values belong to one thread.

#include "applicationcontorllerclient/applicationcontorllerclient.h"
#include "common/commandline.h"
#include "common/console.h"
#include "common/controllerstatus.h"
#include "common/demomessages.h"
#include "common/exitstatus.h"
#include "common/personalisation.h"
#include "common/process.h"
#include "common/startcount.h"
#include "deviceservice/atmodem.h"
#include "deviceservice/connectionplugin.h"
#include "deviceservice/diagnosticplugin.h"
#include "deviceservice/equipmentplugin.h"
#include "deviceservice/messageplugin.h"
#include "deviceservice/networkplugin.h"
#include "deviceservice/phonebookplugin.h"
#include "deviceservice/pinplugin.h"
#include "deviceservice/pluginhost.h"
#include "deviceservice/ussdplugin.h"
#include "deviceservice/workqueue.h"
#include "deviceservice_global.h"
#include "singleapplication/qtsinglecoreapplication.h"

#include <QDir>
#include <QMap>

#include <memory>

namespace {

struct Options
{
    QString deviceName;
    QString deviceID;
    QString logFile;
    AtChannel::Options line;
    int pace = 0;
    bool trace = false;
    bool save = true;
};

BAUDRATE baudRate(CommandLine& line)
{
    const QMap<QString, BAUDRATE> rates{{QStringLiteral("9600"), BAUDRATE_9600},
                                        {QStringLiteral("19200"), BAUDRATE_19200},
                                        {QStringLiteral("38400"), BAUDRATE_38400}};
    const QString rate = line.value("baud");
    if (!rates.contains(rate))
        line.refuse(QStringLiteral("--baud takes 9600, 19200 or 38400."));
    return rates.value(rate, BAUDRATE_9600);
}

QList<QCommandLineOption> commandLineOptions()
{
    const auto text = [](const char* value) { return QString::fromLatin1(value); };
    return {{text("name"), text("Name of the device."), text("NAME"), text(kDefaultDeviceName)},
            {text("id"), text("ID of the device, and name of the socket."), text("ID"),
             text(kDefaultDeviceID)},
            {text("port"), text("The modem's serial line; without, the modem simulator's."),
             text("PATH"), QDir(QDir::tempPath()).filePath(QLatin1String(kDefaultModemLink))},
            {text("baud"), text("Speed of the line: 9600, 19200 or 38400."), text("RATE"),
             text("38400")},
            {text("timeout"),
             text("Milliseconds to wait for the answer to a simple command; slower commands have "
                  "a multiple."),
             text("MS"), text("5000")},
            {text("retry"), text("Milliseconds until a lost line is tried again."), text("MS"),
             text("2000")},
            {text("pace"), text("Milliseconds of rest between the steps of long operations."),
             text("MS"), text("100")},
            {text("trace"), text("Print the messages and the lines of the modem as they travel.")},
            {text("no-save"), text("Do not save the user's configuration.")},
            {text("log"), text("Log file."), text("FILE")}};
}

Options readOptions(CommandLine& line)
{
    constexpr int kLongestMs = 60000;
    Options options;
    options.deviceName = line.value("name");
    options.deviceID = line.value("id");
    options.logFile = line.value("log");
    options.line.port = line.value("port");
    options.line.rate = baudRate(line);
    options.line.timeOut = line.number("timeout", 5, kLongestMs);
    options.line.retryInterval = line.number("retry", 1, kLongestMs);
    options.pace = line.number("pace", 0, kLongestMs);
    options.trace = line.isSet("trace");
    options.save = !line.isSet("no-save");
    return options;
}

// Those that the personalisation of this installation lists.
void addPlugins(PluginHost& host, Modem& modem, WorkQueue& queue, const Options& options,
                const Personalisation& personalisation)
{
    const auto add = [&host, &personalisation](auto plugin) {
        if (personalisation.hasPlugin(plugin->pluginName()))
            host.add(plugin.release());
    };
    add(std::make_unique<NetworkPlugin>(modem));
    add(std::make_unique<PinPlugin>(modem));
    add(std::make_unique<EquipmentPlugin>(modem));
    add(std::make_unique<ConnectionPlugin>(modem, options.deviceName));
    add(std::make_unique<MessagePlugin>(modem, queue, options.pace));
    add(std::make_unique<PhonebookPlugin>(modem));
    add(std::make_unique<UssdPlugin>(modem));
    add(std::make_unique<DiagnosticPlugin>(modem));
}

// What the plug-ins share: the ID of each device by its name.
void storeDeviceIDs(const QMap<QString, QString>& deviceIDs)
{
    CDataValue map(MAP_VALUE);
    for (auto it = deviceIDs.cbegin(); it != deviceIDs.cend(); ++it)
        map.mapSet(it.key(), it.value(), false);
    DeviceService_Global::instance()->setGlobalDataByKey(QStringLiteral("kSYSTEM_DEVICE_ID_MAP"),
                                                         map);
}

// Ends this process when the controller says so, or when it does not know the device any more.
void obeyController(ApplicationContorllerClient& controller, const QString& deviceName)
{
    using Client = ApplicationContorllerClient;
    const auto askForDevice = [&controller, deviceName] {
        controller.sendMsgToAppController_GetDevID(deviceName, 0);
    };
    QObject::connect(&controller, &Client::sigConnectStatusChanged, &controller,
                     [&controller, askForDevice](int status) {
                         Console::say(controllerStatusText(status));
                         if (status == 2)
                             askForDevice();
                         // It may come back.
                         if (status == 3)
                             controller.startConnect();
                     });
    // The notice does not say which device it was.
    QObject::connect(&controller, &Client::sigDataCardUnpluged, &controller, askForDevice);
    QObject::connect(&controller, &Client::sigResponseGetDevID,
                     [](bool noError, const QString& name, const QString& deviceID) {
                         if (!noError)
                             return;
                         if (deviceID.isEmpty()) {
                             Console::say(QStringLiteral("not plugged in: %1").arg(name));
                             QCoreApplication::quit();
                         }
                         storeDeviceIDs({{name, deviceID}});
                     });
    QObject::connect(&controller, &Client::sigQuit, [] {
        Console::say(QStringLiteral("the controller wants everybody to quit"));
        QCoreApplication::quit();
    });
}

void trace(PluginHost& host, AtChannel& channel)
{
    QObject::connect(&host, &PluginHost::passed, [](const QString& step, const QString& text) {
        Console::say(QStringLiteral("trace: %1: %2").arg(step, text));
    });
    QObject::connect(&channel, &AtChannel::passed, [](bool isSent, const QByteArray& line) {
        Console::say(QStringLiteral("trace: modem %1 %2")
                         .arg(QLatin1String(isSent ? "<" : ">"), QString::fromUtf8(line)));
    });
}

// Tells how the line is.
void tellState(AtModem& modem, AtChannel& channel)
{
    QObject::connect(&modem, &AtModem::ready, [&channel] {
        Console::say(QStringLiteral("modem ready: %1").arg(channel.port()));
    });
    QObject::connect(&channel, &AtChannel::closed, [&channel](const QString& reason) {
        Console::say(QStringLiteral("modem away: %1 %2").arg(channel.port(), reason));
    });
}

} // namespace

int main(int argc, char* argv[])
{
    CommandLine line("Device service of the demo.", commandLineOptions(), argc, argv);
    const Options options = readOptions(line);
    QtSingleCoreApplication application(instanceID(options.deviceID), argc, argv);
    if (const auto status = line.exitStatus())
        return *status;
    const ProcessLife life(options.logFile);
    if (isTaken(application))
        return ExitStatus::AlreadyRunning;

    const StartCount starts(QStringLiteral("DeviceService"), options.save);
    const Personalisation personalisation(QStringLiteral("DeviceService"));
    DeviceService_Global::instance()->initErrorTable();
    storeDeviceIDs({{options.deviceName, options.deviceID}});

    WorkQueue queue;
    AtChannel channel(std::unique_ptr<CSerialPort>(CSerialPort::CreateObject()), options.line,
                      queue);
    AtModem modem(channel, queue);
    tellState(modem, channel);
    IPCServer server(nullptr);
    PluginHost host(server, queue);
    if (options.trace || personalisation.hasFeature(QStringLiteral("Trace")))
        trace(host, channel);
    addPlugins(host, modem, queue, options, personalisation);
    QObject::connect(&modem, &Modem::reported, &host, &PluginHost::handleEvent);
    // Before any request, so that the first ones find the modem open.
    channel.start();
    server.startListen(options.deviceID);

    ApplicationContorllerClient controller(options.deviceID, nullptr);
    obeyController(controller, options.deviceName);
    controller.startConnect();

    Console::say(QStringLiteral("deviceservice ready: %1 (%2), start %3")
                     .arg(options.deviceName, options.deviceID)
                     .arg(starts.number()));
    return Console::exitStatus(QCoreApplication::exec());
}
