#ifndef APPLICATIONCONTORLLERCLIENT_APPLICATIONCONTORLLERCLIENT_H
#define APPLICATIONCONTORLLERCLIENT_APPLICATIONCONTORLLERCLIENT_H

#include "DataValue/datavalue.h"
#include "wzrframework_export.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

class IPCClient;

/// The client of the application controller, the process that serves the local socket
/// "applicationcontroller", knows the devices and tells the others to quit.
///
///     ApplicationContorllerClient controller("dashboard", nullptr);
///     connect(&controller, &ApplicationContorllerClient::sigQuit, qApp, &QCoreApplication::quit);
///     controller.startConnect();
///
/// After startConnect() the client tries every 2000 ms until it is connected, for ever if need
/// be. Once connected it introduces this process by its name, again every 2000 ms until the
/// controller accepts. At most one attempt and one introduction are pending, however often they
/// are asked for. When the connection is lost, it reports status 3 and is idle: nothing is
/// pending any more, and nothing reconnects by itself.
///
/// Requests never wait for a connection: what cannot be sent is answered inside the call, as by a
/// controller that reports error 6.
///
/// **Threads.** The thread of its owner, with an event loop; no locks.
///
/// **Ownership.** Payloads stay the caller's; values in signals are valid during the emission
/// only. Slots connected to the signals may delete this object.
class WZRFRAMEWORK_EXPORT ApplicationContorllerClient : public QObject
{
    Q_OBJECT

public:
    /// `clientName` is what this process is introduced by.
    ApplicationContorllerClient(QString clientName, QObject* parent);
    ~ApplicationContorllerClient() override;

    /// Talks only to a controller that runs as one of these users; see
    /// IPCClient::setTrustedServerUsers(). By default every controller is trusted.
    void setTrustedServerUsers(const QList<quint32>& userIds);

    /// Starts to connect; also what an owner calls to connect again after a loss.
    void startConnect();

    /// Sends a message with an optional payload.
    void sendMsgToAppController(QString message, CDataValue* data);
    /// Asks for the ID of one device; answered by sigResponseGetDevID(), which repeats `id`.
    void sendMsgToAppController_GetDevID(QString deviceName, int id);
    /// Asks for the IDs of several devices; answered by sigResponseGetMultDevID().
    void sendMsgToAppController_GetMultDevID(const QStringList& deviceNames);

public Q_SLOTS:
    /// Makes one attempt to connect and, unless that succeeds at once, goes on every 2000 ms.
    /// Does nothing when connected.
    void connectToServer();
    /// Introduces this process now; a pending introduction is replaced.
    void sendMsgToAppController_ClientInit();
    /// Acts on an envelope of the controller; one with an unknown "IPCMSG_TYPE" is ignored.
    void handleAppControllerMessageReceived(CDataValue* datavalue);
    void handleAppControllerServerConnected();
    void handleAppControllerServerDisconnected();
    /// Emits sigMessageIncoming(). For owners who want to pass a message through this object.
    void handleMsgFromAppController(CDataValue* datavalue);

Q_SIGNALS:
    /// 0: the introduction was refused or could not be sent, and is repeated in 2000 ms;
    /// 2: the controller accepted it; 3: the connection was lost.
    void sigConnectStatusChanged(int status);
    /// The IDs by device name; `noError` false, with an empty map, when the controller reports an
    /// error. A reply without a map of IDs gives no signal: that is meant.
    void sigResponseGetMultDevID(bool noError, QMap<QString, QString> deviceIDs);
    /// The ID of a device, empty when it is unknown; `noError` false, with an empty ID, when the
    /// controller reports an error. `nEventID` is the number given with the request.
    void sigResponseGetDevID(bool noError, QString deviceName, QString deviceID, int nEventID);
    /// A device was unplugged.
    void sigDataCardUnpluged();
    void sigMessageIncoming(CDataValue* datavalue);
    /// The controller wants this process to quit.
    void sigQuit();

private:
    IPCClient& client();
    void handleMsgFromAppController_ClientInit(CDataValue& envelope);
    void handleMsgFromAppController_GetDevID(CDataValue& envelope);
    void handleMsgFromAppController_GetMultDevID(CDataValue& envelope);
    void handleMsgFromAppController_DeviceUnplug(CDataValue& envelope);
    void handleMsgFromAppController_Quit(CDataValue& envelope);

    std::unique_ptr<IPCClient> m_client; // null until it is needed
    QString m_clientName;
    QTimer m_nextAttempt{this};
    QTimer m_nextIntroduction{this};
};

#endif
