#ifndef DEMO_PLUGINHOST_H
#define DEMO_PLUGINHOST_H

#include "BusinessBase/businesspluginbase.h"
#include "Ipc/ipcserver.h"

#include <QList>
#include <QObject>
#include <QString>

/// The part of a device service that is the same for every device: it stands between the
/// IPCServer and the business plug-ins.
///
///     IPCServer server(nullptr);
///     PluginHost host(server);
///     host.add(new NetworkPlugin(modem));
///     server.startListen(deviceID);
///
/// **A request** is a message text of a client. The host reads the envelope, lets the plug-in
/// that has registered its "IPCMSG_TYPE" handle the "IPCMSG_USER_DATA", and answers that client:
/// "IPCMSG_ERROR_CODE" is what the handler returned (42 when no plug-in knows the identifier),
/// "IPCMSG_RESPONSE_DATA" what it filled in; the request's identifier, payload and sender go back
/// with it. Text that is no envelope is logged and dropped: there is nobody to answer.
///
/// **A report** is what a plug-in emits as sendUnsolicitedReportDirect(). The host sends it to
/// every client, with the payload under "IPCMSG_RESPONSE_DATA".
///
/// **A cancel** (DemoMessage::Cancel) is the host's own request: it reaches every plug-in that
/// knows the identifier in it, and is answered with 42 when none does.
///
/// **An event** of the device is handed to every plug-in that has registered for it; a plug-in
/// turns it into a report when the clients are to know.
///
/// Runs in the thread of the server. Owns the plug-ins; the server must outlive the host.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    explicit PluginHost(IPCServer& server, QObject* parent = nullptr);

    /// Takes the plug-in over. When two plug-ins know one identifier, the one added first counts.
    void add(BusinessPluginBase* plugin);

    /// Hands an event of the device on.
    void handleEvent(const QString& event, QString text, CDataValue* data);

Q_SIGNALS:
    /// What happens to a message on its way, for people who want to watch: `step` says what,
    /// `text` is the message, framed where it travels so.
    void passed(const QString& step, const QString& text);

private:
    void receive(const QString& text, int clientID);
    void report(const QString& messageID, CDataValue* data, int errorCode);
    int handle(const QString& messageID, CDataValue& payload, CDataValue& response);
    int cancel(CDataValue& payload);
    BusinessPluginBase* pluginFor(const QString& messageID) const;

    IPCServer& m_server;
    QList<BusinessPluginBase*> m_plugins;
};

#endif
