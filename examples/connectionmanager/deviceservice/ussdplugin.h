#ifndef DEMO_USSDPLUGIN_H
#define DEMO_USSDPLUGIN_H

#include "BusinessBase/businesspluginbase.h"

class Modem;

/// USSD: short dialogues with the network, such as asking for one's credit by "*100#". The answer
/// to a request only says that it was sent; the network's text is a report to every client, which
/// names the client that has asked.
class UssdPlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    explicit UssdPlugin(Modem& modem);
    QString pluginName() override { return QStringLiteral("Ussd"); }

private Q_SLOTS:
    int send(CDataValue& request, CDataValue& response);
    int networkAnswered(QString text, CDataValue* data);

private:
    Modem& m_modem;
};

#endif
