#include "deviceservice/pluginhost.h"

#include "LogTask/clog.h"
#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/workqueue.h"
#include "deviceservice_global.h"
#include "records/records.h"

namespace {

constexpr char kLogSource[] = "deviceservice/pluginhost";
// One less; a count of nothing is not kept.
template<class Key>
void countDown(QHash<Key, int>& counts, const Key& key)
{
    if (--counts[key] == 0)
        counts.remove(key);
}

} // namespace

PluginHost::PluginHost(IPCServer& server, WorkQueue& queue, QObject* parent)
    : QObject(parent)
    , m_server(server)
    , m_queue(queue)
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
    Request request{clientID, {}, {}};
    if (!Envelope::read(text, request.envelope)) {
        CLogFile() << kLogSource << "receive"
                   << "no message:" << text;
        return;
    }
    request.messageID = request.envelope.mapGet("IPCMSG_TYPE").asQString();
    const bool isCancel = request.messageID == QLatin1String(DemoMessage::Cancel);
    const bool isToWait = isCancel ? overtakes(request) : pluginFor(request.messageID) != nullptr;
    if (isToWait)
        wait(request);
    else
        handle(request);
}

// Whether what the cancel is meant for waits as well.
bool PluginHost::overtakes(Request& cancel) const
{
    CDataValue payload(cancel.envelope.mapGet("IPCMSG_USER_DATA"));
    return m_waiting.contains(recordFrom<BLCancelMessage>(payload).msgId);
}

void PluginHost::wait(const Request& request)
{
    if (m_waitingOfClients.value(request.clientID) >= kMostWaiting) {
        CLogFile() << kLogSource << "wait"
                   << "too many requests of client" << request.clientID;
        Request refused = request;
        answer(refused, DeviceService_Global::atError2IpcError(AtError::LinkReserved), {});
        return;
    }
    ++m_waiting[request.messageID];
    ++m_waitingOfClients[request.clientID];
    m_queue.add([this, request] {
        countDown(m_waiting, request.messageID);
        countDown(m_waitingOfClients, request.clientID);
        handle(request);
    });
}

void PluginHost::handle(Request request)
{
    CDataValue payload(request.envelope.mapGet("IPCMSG_USER_DATA"));
    CDataValue response;
    const int errorCode = handle(request.messageID, payload, response);
    answer(request, errorCode, response);
}

void PluginHost::answer(Request& request, int errorCode, const CDataValue& response)
{
    const QString text = Envelope::text(Envelope::answer(request.envelope, errorCode, response));
    Q_EMIT passed(QStringLiteral("IPCServer sends to client %1").arg(request.clientID),
                  Envelope::frame(text));
    m_server.sendResponse(text, request.clientID);
}

int PluginHost::handle(const QString& messageID, CDataValue& payload, CDataValue& response)
{
    if (messageID == QLatin1String(DemoMessage::Cancel))
        return cancel(payload);
    BusinessPluginBase* plugin = pluginFor(messageID);
    if (plugin == nullptr)
        return BusinessPluginBase::NoHandler;
    Q_EMIT passed(QStringLiteral("plug-in %1 handles").arg(plugin->pluginName()), messageID);
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
    const QString text = Envelope::text(envelope);
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
