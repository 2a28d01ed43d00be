// The service of one device. It listens under the device's ID; clients find the ID by asking the
// application controller for the device's name. Lines on standard input drive the simulated
// modem:
//
//     signal N            the signal strength is N from now on, 0 to 31
//     message FROM TEXT   a message arrives

#include "applicationcontorllerclient/applicationcontorllerclient.h"
#include "common/console.h"
#include "common/controllerstatus.h"
#include "common/demomessages.h"
#include "common/personalisation.h"
#include "common/process.h"
#include "common/startcount.h"
#include "deviceservice/connectionplugin.h"
#include "deviceservice/diagnosticplugin.h"
#include "deviceservice/equipmentplugin.h"
#include "deviceservice/messageplugin.h"
#include "deviceservice/networkplugin.h"
#include "deviceservice/phonebookplugin.h"
#include "deviceservice/pinplugin.h"
#include "deviceservice/pluginhost.h"
#include "deviceservice/simulatedmodem.h"
#include "deviceservice/ussdplugin.h"
#include "deviceservice_global.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <memory>

namespace {

struct Options
{
    QString deviceName;
    QString deviceID;
    QString logFile;
    int signalInterval = 0;
    int pace = 0;
    bool trace = false;
    bool save = true;
};

Options readOptions(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Device service of the demo."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("name"), QStringLiteral("Name of the device."), QStringLiteral("NAME"),
          QLatin1String(DefaultDeviceName)},
         {QStringLiteral("id"), QStringLiteral("ID of the device, and name of the socket."),
          QStringLiteral("ID"), QLatin1String(DefaultDeviceID)},
         {QStringLiteral("signal-interval"),
          QStringLiteral("Change the signal every so many milliseconds; 0: never."),
          QStringLiteral("MS"), QStringLiteral("2000")},
         {QStringLiteral("pace"),
          QStringLiteral("Rest so many milliseconds between the steps of long operations."),
          QStringLiteral("MS"), QStringLiteral("100")},
         {QStringLiteral("trace"), QStringLiteral("Print the messages as they travel.")},
         {QStringLiteral("no-save"), QStringLiteral("Do not save the user's configuration.")},
         {QStringLiteral("log"), QStringLiteral("Log file."), QStringLiteral("FILE")}});
    parser.process(application);
    bool isNumber = false;
    bool isPace = false;
    Options options{parser.value(QStringLiteral("name")),
                    parser.value(QStringLiteral("id")),
                    parser.value(QStringLiteral("log")),
                    parser.value(QStringLiteral("signal-interval")).toInt(&isNumber),
                    parser.value(QStringLiteral("pace")).toInt(&isPace),
                    parser.isSet(QStringLiteral("trace")),
                    !parser.isSet(QStringLiteral("no-save"))};
    if (!isNumber || !isPace || options.pace < 0)
        parser.showHelp(2);
    return options;
}

// Those that the personalisation of this installation lists.
void addPlugins(PluginHost& host, Modem& modem, const Options& options,
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
    add(std::make_unique<MessagePlugin>(modem, options.pace));
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

void obeyConsole(SimulatedModem& modem, const QString& line)
{
    const QString from = line.section(QLatin1Char(' '), 1, 1);
    const QString text = line.section(QLatin1Char(' '), 2);
    bool isNumber = false;
    const int rssi = line.section(QLatin1Char(' '), 1).toInt(&isNumber);
    if (isNumber && line.startsWith(QLatin1String("signal ")))
        modem.setSignal(rssi);
    else if (line.startsWith(QLatin1String("message ")) && !text.isEmpty())
        modem.receiveMessage(from, text);
    else
        Console::say(QStringLiteral("cannot do: %1").arg(line));
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const Options options = readOptions(application);
    const ProcessLife life(options.logFile);
    const StartCount starts(QStringLiteral("DeviceService"), options.save);
    const Personalisation personalisation(QStringLiteral("DeviceService"));
    DeviceService_Global::instance()->initErrorTable();
    storeDeviceIDs({{options.deviceName, options.deviceID}});

    SimulatedModem modem;
    IPCServer server(nullptr);
    PluginHost host(server);
    if (options.trace || personalisation.hasFeature(QStringLiteral("Trace"))) {
        QObject::connect(&host, &PluginHost::passed, [](const QString& step, const QString& text) {
            Console::say(QStringLiteral("trace: %1: %2").arg(step, text));
        });
    }
    addPlugins(host, modem, options, personalisation);
    QObject::connect(&modem, &Modem::reported, &host, &PluginHost::handleEvent);
    server.startListen(options.deviceID);

    ApplicationContorllerClient controller(options.deviceID, nullptr);
    obeyController(controller, options.deviceName);
    controller.startConnect();

    Console console;
    QObject::connect(&console, &Console::entered, &modem,
                     [&modem](const QString& line) { obeyConsole(modem, line); });
    modem.changeSignalEvery(options.signalInterval);
    Console::say(QStringLiteral("deviceservice ready: %1 (%2), start %3")
                     .arg(options.deviceName, options.deviceID)
                     .arg(starts.number()));
    return QCoreApplication::exec();
}
