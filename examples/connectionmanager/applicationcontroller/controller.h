#ifndef DEMO_CONTROLLER_H
#define DEMO_CONTROLLER_H

#include "DataValue/datavalue.h"
#include "Ipc/ipcserver.h"

#include <QMap>
#include <QObject>
#include <QString>

/// The application controller: knows which devices are plugged in and which processes take part.
///
/// The other processes introduce themselves
/// by a name, ask for the IDs of devices by their names (a device's ID is the name of the socket
/// that its device service listens on), and are told when a device was unplugged and when
/// everybody is to quit. Their side is the library's ApplicationContorllerClient.
class Controller : public QObject
{
    Q_OBJECT

public:
    explicit Controller(QObject* parent = nullptr);

    /// Serves the local socket of that name.
    void listen(const QString& socketName);

    /// From now on the device is found under its name. Nobody is told: processes that miss a
    /// device ask again.
    void plug(const QString& deviceName, const QString& deviceID);
    /// Forgets the device and tells everybody. The notice names no device; whoever hears it asks
    /// whether the own device is still there. False when there is no such device.
    bool unplug(const QString& deviceName);
    /// Tells everybody to quit. allGone() follows.
    void quit();

Q_SIGNALS:
    /// Something happened that a person may want to read.
    void happened(const QString& text);
    /// After quit(): no process is connected any more.
    void allGone();

private:
    void receive(const QString& text, int clientID);
    void forget(int clientID);
    void broadcast(const char* messageID);
    int answerClientInit(CDataValue& request, int clientID);
    static int answerGetDevID(CDataValue& request, CDataValue& response,
                              const QMap<QString, QString>& devices);
    static int answerGetMultDevID(CDataValue& request, CDataValue& response,
                                  const QMap<QString, QString>& devices);

    IPCServer m_server;
    QMap<QString, QString> m_devices; // ID by name
    QMap<int, QString> m_clients;     // name by client ID; empty until introduced
    bool m_quitting = false;
};

#endif
