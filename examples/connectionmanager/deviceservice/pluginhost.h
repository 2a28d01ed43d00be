#ifndef DEMO_PLUGINHOST_H
#define DEMO_PLUGINHOST_H

#include "BusinessBase/businesspluginbase.h"
#include "Ipc/ipcserver.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

class WorkQueue;

/// The part of a device service that is the same for every device: it stands between the
/// IPCServer and the business plug-ins.
///
///     IPCServer server(nullptr);
///     WorkQueue queue;
///     PluginHost host(server, queue);
///     host.add(new NetworkPlugin(modem));
///     server.startListen(deviceID);
///
/// **A request** is a message text of a client. The host reads the envelope and, when it is the
/// request's turn in the WorkQueue, lets the plug-in that has registered its "IPCMSG_TYPE" handle
/// the "IPCMSG_USER_DATA", and answers that client: "IPCMSG_ERROR_CODE" is what the handler
/// returned (42 when no plug-in knows the identifier), "IPCMSG_RESPONSE_DATA" what it filled in;
/// the request's identifier, payload and sender go back with it. Text that is no envelope is logged
/// and dropped: there is nobody to answer.
///
/// **Turns.** All clients' requests are handled in the order of their arrival, one at a time: a
/// handler may wait for the device, and the server goes on meanwhile. What no plug-in knows is
/// answered at once. A client of which kMostWaiting requests wait already is refused further ones
/// at once, with the error code of AtError::LinkReserved.
///
/// **A report** is what a plug-in emits as sendUnsolicitedReportDirect(). The host sends it to
/// every client, with the payload under "IPCMSG_RESPONSE_DATA".
///
/// **A cancel** (DemoMessage::Cancel) is the host's own request: it reaches every plug-in that
/// knows the identifier in it, and is answered with 42 when none does. It does not wait for its
/// turn, so that it reaches what is under way; unless it would overtake the request that it is to
/// cancel.
///
/// **An event** of the device is handed to every plug-in that has registered for it; a plug-in
/// turns it into a report when the clients are to know.
///
/// Runs in the thread of the server, as all of the service: plug-ins, DeviceService_Global and
/// look-ups in a CDataValue belong to that one thread. Owns the plug-ins; server and queue must
/// outlive the host.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMostWaiting = 100;

    PluginHost(IPCServer& server, WorkQueue& queue, QObject* parent = nullptr);

    /// Takes the plug-in over. When two plug-ins know one identifier, the one added first counts.
    void add(BusinessPluginBase* plugin);

    /// Hands an event of the device on. To be called as work of the queue.
    void handleEvent(const QString& event, QString text, CDataValue* data);

Q_SIGNALS:
    /// What happens to a message on its way, for people who want to watch: `step` says what,
    /// `text` is the message, framed where it travels so.
    void passed(const QString& step, const QString& text);

private:
    struct Request
    {
        int clientID;
        QString messageID;
        CDataValue envelope;
    };

    void receive(const QString& text, int clientID);
    void wait(const Request& request);
    void handle(Request request);
    void answer(Request& request, int errorCode, const CDataValue& response);
    void report(const QString& messageID, CDataValue* data, int errorCode);
    int handle(const QString& messageID, CDataValue& payload, CDataValue& response);
    int cancel(CDataValue& payload);
    bool overtakes(Request& cancel) const;
    BusinessPluginBase* pluginFor(const QString& messageID) const;

    IPCServer& m_server;
    WorkQueue& m_queue;
    QList<BusinessPluginBase*> m_plugins;
    QHash<QString, int> m_waiting;      // requests that have not had their turn, by identifier
    QHash<int, int> m_waitingOfClients; // the same by client
};

#endif
