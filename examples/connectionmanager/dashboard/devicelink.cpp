#include "dashboard/devicelink.h"

#include "MessageCenter/messagecenter.h"
#include "common/controllerstatus.h"
#include "common/envelope.h"

namespace {

constexpr int kAskAgainMs = 1000;
constexpr int kConnectAgainMs = 500;

} // namespace

DeviceLink::DeviceLink(const QString& clientName, const QString& deviceName, QObject* parent)
    : QObject(parent)
    , m_deviceName(deviceName)
    , m_controller(clientName, nullptr)
{
    m_nextQuestion.setSingleShot(true);
    m_nextQuestion.setInterval(kAskAgainMs);
    connect(&m_nextQuestion, &QTimer::timeout, this, &DeviceLink::askForDevice);
    m_nextAttempt.setSingleShot(true);
    m_nextAttempt.setInterval(kConnectAgainMs);
    connect(&m_nextAttempt, &QTimer::timeout, this, [this] { m_client->connectToServer(); });
    connect(MessageCenter::defaultCenter(), &MessageCenter::sigDeviceMessageSend, this,
            &DeviceLink::traceSending);
    replaceClient();
    watchController();
}

DeviceLink::~DeviceLink() = default;

void DeviceLink::start()
{
    m_controller.startConnect();
}

void DeviceLink::watchController()
{
    using Client = ApplicationContorllerClient;
    connect(&m_controller, &Client::sigConnectStatusChanged, this, [this](int status) {
        Q_EMIT happened(controllerStatusText(status));
        if (status == 2 && m_deviceID.isEmpty())
            askForDevice();
        if (status == 3)
            m_controller.startConnect();
    });
    connect(&m_controller, &Client::sigResponseGetDevID, this,
            [this](bool noError, const QString&, const QString& deviceID) {
                if (noError && deviceID != m_deviceID)
                    useDevice(deviceID);
                if (m_deviceID.isEmpty())
                    m_nextQuestion.start();
            });
    // The notice does not say which device it was.
    connect(&m_controller, &Client::sigDataCardUnpluged, this, &DeviceLink::askForDevice);
    connect(&m_controller, &Client::sigQuit, this, &DeviceLink::quitWanted);
}

void DeviceLink::askForDevice()
{
    m_controller.sendMsgToAppController_GetDevID(m_deviceName, 0);
}

// The device has this ID now; an empty one means that it is not plugged in.
void DeviceLink::useDevice(const QString& deviceID)
{
    const bool wasConnected = m_client->isConnected();
    m_deviceID = deviceID;
    replaceClient();
    if (wasConnected)
        Q_EMIT lost();
    if (deviceID.isEmpty()) {
        Q_EMIT happened(QStringLiteral("device: %1 was unplugged").arg(m_deviceName));
    } else {
        Q_EMIT happened(QStringLiteral("device: %1 is %2").arg(m_deviceName, deviceID));
        m_client->connectToServer();
    }
}

void DeviceLink::replaceClient()
{
    MessageCenter* center = MessageCenter::defaultCenter();
    m_nextAttempt.stop();
    if (m_client != nullptr) {
        // Nothing more may come from it or go to it; it may be in the middle of a signal.
        m_client->disconnect();
        center->disconnect(m_client);
        m_client->deleteLater();
    }
    m_client = new IPCClient(m_deviceID, this);
    connect(center, &MessageCenter::sigDeviceMessageSend, m_client, &IPCClient::messageSend);
    connect(m_client, &IPCClient::sigMessageReceived, this, &DeviceLink::traceReceiving);
    connect(m_client, &IPCClient::sigMessageReceived, center, &MessageCenter::messageReceived);
    connect(m_client, &IPCClient::sigIPCServerConnected, this, &DeviceLink::reached);
    connect(m_client, &IPCClient::sigIPCServerDisconnected, this, [this] {
        m_nextAttempt.start();
        Q_EMIT lost();
    });
    connect(m_client, &IPCClient::sigIPCSocketError, &m_nextAttempt, qOverload<>(&QTimer::start));
}

// Builds the envelope once more, in the way in which the client does, to have something to show.
void DeviceLink::traceSending(const char* messageID, const CDataValue* data, const char* senderID)
{
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue(messageID), false);
    if (data != nullptr)
        envelope.mapSet("IPCMSG_USER_DATA", *data, false);
    if (senderID != nullptr)
        envelope.mapSet("IPCMSG_MSG_SENDER", CDataValue(senderID), false);
    Q_EMIT passed(m_client->isConnected() ? QStringLiteral("IPCClient sends")
                                          : QStringLiteral("IPCClient cannot send"),
                  Envelope::frame(envelope.parseToQString(FAST_STYLE)));
}

void DeviceLink::traceReceiving(CDataValue* envelope)
{
    Q_EMIT passed(m_client->isConnected() ? QStringLiteral("IPCClient received")
                                          : QStringLiteral("IPCClient answers itself"),
                  Envelope::frame(Envelope::text(*envelope)));
}
