#ifndef DEMO_NETWORKPLUGIN_H
#define DEMO_NETWORKPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// Network, registration, cell and signal. Reports the network information whenever the signal
/// changes.
class NetworkPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit NetworkPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Network"); }

private Q_SLOTS:
    int networkInfo(CDataValue& request, CDataValue& response);
    int registration(CDataValue& request, CDataValue& response);
    int cell(CDataValue& request, CDataValue& response);
    int search(CDataValue& request, CDataValue& response);
    int select(CDataValue& request, CDataValue& response);
    int signalChanged(QString text, CDataValue* data);

private:
    Modem& m_modem;
};

#endif
