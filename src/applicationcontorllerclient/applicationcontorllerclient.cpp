#include "applicationcontorllerclient/applicationcontorllerclient.h"

#include "Ipc/ipcclient.h"
#include "LogTask/logline_p.h"

#include <QPointer>

#include <utility>

namespace {

constexpr char kLogSource[] = "applicationcontorllerclient/applicationcontorllerclient";

constexpr char kClientInit[] = "WZR_MESSAGE_APPLICATION_CLIENT_INIT";
constexpr char kGetDeviceID[] = "WZR_MESSAGE_APPLICATION_GET_DEV_ID";
constexpr char kGetMultDeviceID[] = "WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID";
constexpr char kDeviceUnplug[] = "WZR_MESSAGE_RPT_DEVICE_UNPLUG";
constexpr char kQuitMessage[] = "WZR_MESSAGE_QUIT";

constexpr int kRetryMs = 2000;

enum ConnectStatus { IntroductionRefused = 0, IntroductionAccepted = 2, ConnectionLost = 3 };

// Since the last accepted introduction, of all clients of the process: for the debugger.
int g_failedIntroductions = 0;

QString excerpt(const CDataValue& value)
{
    return g_bLog ? logExcerpt(value.parseToQString(FAST_STYLE)) : QString();
}

int errorCode(CDataValue& envelope)
{
    return envelope.mapGet("IPCMSG_ERROR_CODE").asInt();
}

} // namespace

ApplicationContorllerClient::ApplicationContorllerClient(QString clientName, QObject* parent)
    : QObject(parent)
    , m_clientName(std::move(clientName))
{
    for (QTimer* timer : {&m_nextAttempt, &m_nextIntroduction}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer); // a coarse one may be 100 ms early
        timer->setInterval(kRetryMs);
    }
    m_nextAttempt.setObjectName("nextAttempt");
    m_nextIntroduction.setObjectName("nextIntroduction");
    connect(&m_nextAttempt, &QTimer::timeout, this, &ApplicationContorllerClient::connectToServer);
    connect(&m_nextIntroduction, &QTimer::timeout, this,
            &ApplicationContorllerClient::sendMsgToAppController_ClientInit);
}

ApplicationContorllerClient::~ApplicationContorllerClient() = default;

void ApplicationContorllerClient::setTrustedServerUsers(const QList<quint32>& userIds)
{
    client().setTrustedServerUsers(userIds);
}

void ApplicationContorllerClient::startConnect()
{
    connectToServer();
}

/// Made when first needed, so that a request before startConnect() is answered like any other
/// that cannot be sent.
IPCClient& ApplicationContorllerClient::client()
{
    if (!m_client) {
        m_client = std::make_unique<IPCClient>("applicationcontroller", nullptr);
        using Self = ApplicationContorllerClient;
        connect(m_client.get(), &IPCClient::sigMessageReceived, this,
                &Self::handleAppControllerMessageReceived);
        connect(m_client.get(), &IPCClient::sigIPCServerConnected, this,
                &Self::handleAppControllerServerConnected);
        connect(m_client.get(), &IPCClient::sigIPCServerDisconnected, this,
                &Self::handleAppControllerServerDisconnected);
    }
    return *m_client;
}

void ApplicationContorllerClient::connectToServer()
{
    logLine(kLogSource, "connectToServer", "Enter connectToServer");
    if (client().isConnected()) {
        logLine(kLogSource, "connectToServer", "already connected!!!");
        return;
    }
    const QPointer<ApplicationContorllerClient> self(this); // signals come inside the call
    client().connectToServer();
    if (self && !client().isConnected() && !m_nextAttempt.isActive())
        m_nextAttempt.start();
}

void ApplicationContorllerClient::sendMsgToAppController(QString message, CDataValue* data)
{
    logLine(kLogSource, "sendMsgToAppController", "sendMsgToAppController");
    client().messageSend(message.toLatin1().constData(), data);
}

void ApplicationContorllerClient::sendMsgToAppController_ClientInit()
{
    logLine(kLogSource, "sendMsgToAppController_ClientInit",
            "Enter sendMsgToAppController_ClientInit");
    m_nextIntroduction.stop();
    const CDataValue name(m_clientName);
    client().messageSend(kClientInit, &name);
}

void ApplicationContorllerClient::sendMsgToAppController_GetDevID(QString deviceName, int id)
{
    logLine(kLogSource, "sendMsgToAppController_GetDevID", "Enter sendMsgToAppController_GetDevID");
    CDataValue request(MAP_VALUE);
    request.mapSet("Name", CDataValue(deviceName), true);
    request.mapSet("ID", CDataValue(id), true);
    client().messageSend(kGetDeviceID, &request);
}

void ApplicationContorllerClient::sendMsgToAppController_GetMultDevID(
    const QStringList& deviceNames)
{
    logLine(kLogSource, "sendMsgToAppController_GetMultDevID",
            "Enter sendMsgToAppController_GetMultDevID");
    CDataValue request(ARRAY_VALUE);
    for (const QString& name : deviceNames)
        request.arrayAppend(CDataValue(name), true);
    client().messageSend(kGetMultDeviceID, &request);
}

void ApplicationContorllerClient::handleAppControllerServerConnected()
{
    logLine(kLogSource, "handleAppControllerServerConnected",
            "Enter handleAppControllerServerConnected");
    sendMsgToAppController_ClientInit();
}

void ApplicationContorllerClient::handleAppControllerServerDisconnected()
{
    logLine(kLogSource, "handleAppControllerServerDisconnected",
            "Enter handleAppControllerServerDisconnected");
    m_nextAttempt.stop();
    m_nextIntroduction.stop();
    Q_EMIT sigConnectStatusChanged(ConnectionLost);
}

void ApplicationContorllerClient::handleAppControllerMessageReceived(CDataValue* datavalue)
{
    if (!datavalue)
        return;
    using Self = ApplicationContorllerClient;
    static constexpr struct
    {
        const char* identifier;
        void (Self::*handle)(CDataValue& envelope);
    } handlers[] = {
        {kClientInit, &Self::handleMsgFromAppController_ClientInit},
        {kGetDeviceID, &Self::handleMsgFromAppController_GetDevID},
        {kGetMultDeviceID, &Self::handleMsgFromAppController_GetMultDevID},
        {kDeviceUnplug, &Self::handleMsgFromAppController_DeviceUnplug},
        {kQuitMessage, &Self::handleMsgFromAppController_Quit},
    };
    const QString identifier = datavalue->mapGet("IPCMSG_TYPE").asQString();
    logLine(kLogSource, "handleAppControllerMessageReceived", logExcerpt(identifier));
    for (const auto& handler : handlers) {
        if (identifier == QLatin1String(handler.identifier)) {
            (this->*handler.handle)(*datavalue);
            return;
        }
    }
}

void ApplicationContorllerClient::handleMsgFromAppController(CDataValue* datavalue)
{
    Q_EMIT sigMessageIncoming(datavalue);
}

void ApplicationContorllerClient::handleMsgFromAppController_ClientInit(CDataValue& envelope)
{
    logLine(kLogSource, "handleMsgFromAppController_ClientInit",
            "Enter handleMsgFromAppController_ClientInit");
    if (errorCode(envelope) != 0) {
        ++g_failedIntroductions;
        m_nextIntroduction.start();
        Q_EMIT sigConnectStatusChanged(IntroductionRefused);
    } else {
        g_failedIntroductions = 0;
        Q_EMIT sigConnectStatusChanged(IntroductionAccepted);
    }
}

void ApplicationContorllerClient::handleMsgFromAppController_GetDevID(CDataValue& envelope)
{
    constexpr char function[] = "handleMsgFromAppController_GetDevID";
    logLine(kLogSource, function, "Enter handleMsgFromAppController_GetDevID");
    const int error = errorCode(envelope);
    CDataValue& response = envelope.mapGet("IPCMSG_RESPONSE_DATA");
    CDataValue& userData = envelope.mapGet("IPCMSG_USER_DATA");
    logLine(kLogSource, function, "incoming data is :", excerpt(envelope));
    logLine(kLogSource, function, "user data response is:", excerpt(response));
    logLine(kLogSource, function, "user data is:", excerpt(userData));

    const QString deviceName = userData.mapGet("Name").asQString();
    QString deviceID;
    if (response.isObject())
        deviceID = response.mapGet(deviceName).asQString();
    logLine(kLogSource, function, "strDevID:", logExcerpt(deviceID));
    logLine(kLogSource, function, "strDevName:", logExcerpt(deviceName));

    const int eventID = userData.mapGet("ID").asInt();
    if (error == 0)
        Q_EMIT sigResponseGetDevID(true, deviceName, deviceID, eventID);
    else
        Q_EMIT sigResponseGetDevID(false, deviceName, QString(""), eventID);
}

void ApplicationContorllerClient::handleMsgFromAppController_GetMultDevID(CDataValue& envelope)
{
    constexpr char function[] = "handleMsgFromAppController_GetMultDevID";
    logLine(kLogSource, function, "Enter handleMsgFromAppController_GetMultDevID");
    QMap<QString, QString> deviceIDs;
    const int error = errorCode(envelope);
    if (error != 0) {
        logLine(kLogSource, function, "GetMultDevID error =", error);
        Q_EMIT sigResponseGetMultDevID(false, deviceIDs);
        return;
    }
    CDataValue& response = envelope.mapGet("IPCMSG_RESPONSE_DATA");
    if (!response.isObject())
        return;
    for (const std::string& key : response.mapGetKeys()) {
        const QString deviceName = QString::fromStdString(key);
        deviceIDs.insert(deviceName, response.mapGet(deviceName).asQString());
    }
    Q_EMIT sigResponseGetMultDevID(true, deviceIDs);
}

void ApplicationContorllerClient::handleMsgFromAppController_DeviceUnplug(CDataValue&)
{
    logLine(kLogSource, "handleMsgFromAppController_DeviceUnplug",
            "Enter handleMsgFromAppController_DeviceUnplug");
    Q_EMIT sigDataCardUnpluged();
}

void ApplicationContorllerClient::handleMsgFromAppController_Quit(CDataValue&)
{
    Q_EMIT sigQuit();
}
