#ifndef DEMO_CONNECTIONPLUGIN_H
#define DEMO_CONNECTIONPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// The data connection: dialling, its state and its counters. Reports every change of the state.
class ConnectionPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    /// `deviceName`: the device under which DeviceService_Global knows this service's ID.
    ConnectionPlugin(Modem& modem, const QString& deviceName);
    QString pluginName() override { return QStringLiteral("Connection"); }

private Q_SLOTS:
    int dial(CDataValue& request, CDataValue& response);
    int hangUp(CDataValue& request, CDataValue& response);
    int state(CDataValue& request, CDataValue& response);
    int statistics(CDataValue& request, CDataValue& response);
    int connectionChanged(QString text, CDataValue* data);

private:
    int answerWithState(int atError, CDataValue& response);

    Modem& m_modem;
    QString m_deviceName;
};

#endif
