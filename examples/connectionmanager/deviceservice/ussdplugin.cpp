#include "deviceservice/ussdplugin.h"

#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/modem.h"
#include "deviceservice_global.h"

UssdPlugin::UssdPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::UssdSend, "send", 0, this);
    registererUnsolicitedMessage(ModemEvent::Ussd, "networkAnswered", 0, this);
}

int UssdPlugin::send(CDataValue& request, CDataValue&)
{
    const int error = m_modem.sendUssd(recordFrom<BLUssdSendCmd>(request));
    return DeviceService_Global::atError2IpcError(error);
}

int UssdPlugin::networkAnswered(QString, CDataValue* data)
{
    Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportUssd), data);
    return 0;
}
