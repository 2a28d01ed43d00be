#ifndef DEMO_DEVICELINK_H
#define DEMO_DEVICELINK_H

#include "Ipc/ipcclient.h"
#include "applicationcontorllerclient/applicationcontorllerclient.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

/// The way from this process to the service of one device, kept up as long as the process lives.
///
/// It asks the application controller for the device's ID, again and again until there is one;
/// connects an IPCClient to the socket of that name, again and again until the service is there;
/// and joins the client to the message center: what modules post as device messages leaves here,
/// what comes back is given to the slots that are registered for it. When the device is unplugged
/// it starts over.
///
/// Modules need not know whether the way is up: what they post meanwhile is answered at once with
/// "IPCMSG_ERROR_CODE" 6.
class DeviceLink : public QObject
{
    Q_OBJECT

public:
    /// `clientName` introduces this process to the controller.
    DeviceLink(const QString& clientName, const QString& deviceName, QObject* parent = nullptr);
    ~DeviceLink() override;

    void start();

Q_SIGNALS:
    /// The device service can be asked from now on.
    void reached();
    /// It cannot any more; what was asked and not answered yet never will be.
    void lost();
    /// The controller wants this process to quit.
    void quitWanted();
    /// Something happened that a person may want to read.
    void happened(const QString& text);
    /// What happens to a message on its way, for people who want to watch.
    void passed(const QString& step, const QString& text);

private:
    void watchController();
    void askForDevice();
    void useDevice(const QString& deviceID);
    void replaceClient();
    void traceSending(const char* messageID, const CDataValue* data, const char* senderID);
    void traceReceiving(CDataValue* envelope);

    QString m_deviceName;
    QString m_deviceID; // empty until the controller has told
    ApplicationContorllerClient m_controller;
    // A child, never null: one without a device is never connected, and so answers with error 6.
    IPCClient* m_client = nullptr;
    QTimer m_nextQuestion; // asks the controller again
    QTimer m_nextAttempt;  // connects again
};

#endif
