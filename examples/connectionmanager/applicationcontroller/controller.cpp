#include "applicationcontroller/controller.h"

#include "LogTask/clog.h"
#include "common/demomessages.h"
#include "common/envelope.h"

namespace {

constexpr char kLogSource[] = "applicationcontroller/controller";
constexpr int kRefused = 1; // "IPCMSG_ERROR_CODE" of a request that makes no sense
constexpr int kUnknownMessage = 42;

} // namespace

Controller::Controller(QObject* parent)
    : QObject(parent)
    , m_server(nullptr)
{
    connect(&m_server, &IPCServer::sigIPCServerConnected, this,
            [this](int clientID) { m_clients.insert(clientID, QString()); });
    connect(&m_server, &IPCServer::sigIPCServerDisconnected, this, &Controller::forget);
    connect(&m_server, &IPCServer::sigMessageReceived, this, &Controller::receive);
}

void Controller::listen(const QString& socketName)
{
    m_server.startListen(socketName);
}

void Controller::plug(const QString& deviceName, const QString& deviceID)
{
    m_devices.insert(deviceName, deviceID);
    Q_EMIT happened(QStringLiteral("plugged: %1 (%2)").arg(deviceName, deviceID));
}

bool Controller::unplug(const QString& deviceName)
{
    if (m_devices.remove(deviceName) == 0)
        return false;
    Q_EMIT happened(QStringLiteral("unplugged: %1").arg(deviceName));
    broadcast(ControllerMessage::DeviceUnplug);
    return true;
}

void Controller::quit()
{
    m_quitting = true;
    Q_EMIT happened(QStringLiteral("telling everybody to quit"));
    broadcast(ControllerMessage::Quit);
    if (m_clients.isEmpty())
        Q_EMIT allGone();
}

void Controller::broadcast(const char* messageID)
{
    const CDataValue notice = Envelope::report(QLatin1String(messageID), 0, CDataValue());
    m_server.broadcastMsg(Envelope::text(notice));
}

void Controller::forget(int clientID)
{
    const QString name = m_clients.take(clientID);
    Q_EMIT happened(QStringLiteral("gone: %1 (client %2)").arg(name).arg(clientID));
    if (m_quitting && m_clients.isEmpty())
        Q_EMIT allGone();
}

// What a client has sent before it vanished still comes after it has gone.
void Controller::receive(const QString& text, int clientID)
{
    if (!m_clients.contains(clientID))
        return;
    CDataValue request;
    if (!Envelope::read(text, request)) {
        CLogFile() << kLogSource << "receive"
                   << "no message:" << text;
        return;
    }
    const QString messageID = request.mapGet("IPCMSG_TYPE").asQString();
    CDataValue response;
    int errorCode = kUnknownMessage;
    if (messageID == QLatin1String(ControllerMessage::ClientInit))
        errorCode = answerClientInit(request, clientID);
    else if (messageID == QLatin1String(ControllerMessage::GetDevID))
        errorCode = answerGetDevID(request, response, m_devices);
    else if (messageID == QLatin1String(ControllerMessage::GetMultDevID))
        errorCode = answerGetMultDevID(request, response, m_devices);
    const CDataValue answer = Envelope::answer(request, errorCode, response);
    m_server.sendResponse(Envelope::text(answer), clientID);
}

// The payload is the client's name.
int Controller::answerClientInit(CDataValue& request, int clientID)
{
    const CDataValue name(request.mapGet("IPCMSG_USER_DATA"));
    if (!name.isString() || name.asQString().isEmpty())
        return kRefused;
    m_clients[clientID] = name.asQString();
    Q_EMIT happened(
        QStringLiteral("introduced: %1 (client %2)").arg(name.asQString()).arg(clientID));
    return 0;
}

// The payload is a map with the device's "Name"; the answer maps that name to the ID, and is an
// empty map when there is no such device.
int Controller::answerGetDevID(CDataValue& request, CDataValue& response,
                               const QMap<QString, QString>& devices)
{
    CDataValue payload(request.mapGet("IPCMSG_USER_DATA"));
    if (!payload.isObject() || !payload.mapGet("Name").isString())
        return kRefused;
    response = CDataValue(MAP_VALUE);
    const QString name = payload.mapGet("Name").asQString();
    if (devices.contains(name))
        response.mapSet(name, devices.value(name), false);
    return 0;
}

// The payload is a list of names; the answer maps those that are known to their IDs.
int Controller::answerGetMultDevID(CDataValue& request, CDataValue& response,
                                   const QMap<QString, QString>& devices)
{
    CDataValue payload(request.mapGet("IPCMSG_USER_DATA"));
    if (!payload.isArray() && !payload.isNull())
        return kRefused;
    response = CDataValue(MAP_VALUE);
    for (unsigned int i = 0; i < payload.arrayCount(); ++i) {
        const QString name = payload.arrayGet(i).asQString();
        if (devices.contains(name))
            response.mapSet(name, devices.value(name), false);
    }
    return 0;
}
