#include "deviceservice/pluginhost.h"

#include "LogTask/clog.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "records/records.h"

PluginHost::PluginHost(IPCServer& server, QObject* parent)
    : QObject(parent)
    , m_server(server)
{
    connect(&server, &IPCServer::sigMessageReceived, this, &PluginHost::receive);
}

void PluginHost::add(BusinessPluginBase* plugin)
{
    plugin->setParent(this);
    m_plugins.append(plugin);
    connect(plugin, &BusinessPluginBase::sendUnsolicitedReportDirect, this, &PluginHost::report);
}

BusinessPluginBase* PluginHost::pluginFor(const QString& messageID) const
{
    for (BusinessPluginBase* plugin : m_plugins) {
        if (plugin->hasRegeditMessage(messageID))
            return plugin;
    }
    return nullptr;
}

void PluginHost::receive(const QString& text, int clientID)
{
    Q_EMIT passed(QStringLiteral("IPCServer received from client %1").arg(clientID),
                  Envelope::frame(text));
    CDataValue request;
    if (!Envelope::read(text, request)) {
        CLogFile() << "deviceservice/pluginhost"
                   << "receive"
                   << "no message:" << text;
        return;
    }
    const QString messageID = request.mapGet("IPCMSG_TYPE").asQString();
    CDataValue payload(request.mapGet("IPCMSG_USER_DATA"));
    CDataValue response;
    const int errorCode = handle(messageID, payload, response);
    const QString answer =
        Envelope::answer(request, errorCode, response).parseToQString(FAST_STYLE);
    Q_EMIT passed(QStringLiteral("IPCServer sends to client %1").arg(clientID),
                  Envelope::frame(answer));
    m_server.sendResponse(answer, clientID);
}

int PluginHost::handle(const QString& messageID, CDataValue& payload, CDataValue& response)
{
    if (messageID == QLatin1String(DemoMessage::Cancel))
        return cancel(payload);
    BusinessPluginBase* plugin = pluginFor(messageID);
    if (plugin == nullptr)
        return BusinessPluginBase::NoHandler;
    const int errorCode = plugin->handleMessageComing(messageID, &payload, &response);
    Q_EMIT passed(QStringLiteral("plug-in %1 answered with error code %2")
                      .arg(plugin->pluginName())
                      .arg(errorCode),
                  response.parseToQString(FAST_STYLE).trimmed());
    return errorCode;
}

int PluginHost::cancel(CDataValue& payload)
{
    const QString messageID = recordFrom<BLCancelMessage>(payload).msgId;
    for (BusinessPluginBase* plugin : m_plugins)
        plugin->onCancelMessage(messageID);
    return pluginFor(messageID) != nullptr ? 0 : BusinessPluginBase::NoHandler;
}

void PluginHost::report(const QString& messageID, CDataValue* data, int errorCode)
{
    const CDataValue envelope =
        Envelope::report(messageID, errorCode, data != nullptr ? *data : CDataValue());
    const QString text = envelope.parseToQString(FAST_STYLE);
    Q_EMIT passed(QStringLiteral("IPCServer sends to every client"), Envelope::frame(text));
    m_server.broadcastMsg(text);
}

void PluginHost::handleEvent(const QString& event, QString text, CDataValue* data)
{
    for (BusinessPluginBase* plugin : m_plugins) {
        if (plugin->hasRegeditUnsolicitedMessage(event)) {
            Q_EMIT passed(QStringLiteral("plug-in %1 hears of %2").arg(plugin->pluginName(), event),
                          text);
            plugin->handleUnsolicitedReport(event, text, data);
        }
    }
}
