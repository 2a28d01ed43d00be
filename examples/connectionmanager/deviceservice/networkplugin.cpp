#include "deviceservice/networkplugin.h"

#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

NetworkPlugin::NetworkPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::NetworkInfo, "networkInfo", 0, this);
    registerMessage(DemoMessage::NetworkRegState, "registration", 0, this);
    registerMessage(DemoMessage::NetworkCell, "cell", 0, this);
    registerMessage(DemoMessage::NetworkList, "search", 0, this);
    registerMessage(DemoMessage::NetworkSet, "select", 0, this);
    registererUnsolicitedMessage(ModemEvent::Signal, "signalChanged", 0, this);
}

int NetworkPlugin::networkInfo(CDataValue&, CDataValue& response)
{
    BLNetworkInfo info;
    return answerOnSuccess(m_modem.networkInfo(info), info, response);
}

int NetworkPlugin::registration(CDataValue&, CDataValue& response)
{
    BLNetRegState state;
    return answerOnSuccess(m_modem.registration(state), state, response);
}

int NetworkPlugin::cell(CDataValue&, CDataValue& response)
{
    BLNetLacAndCellID cell;
    return answerOnSuccess(m_modem.cell(cell), cell, response);
}

int NetworkPlugin::search(CDataValue&, CDataValue& response)
{
    BLNetworkListCnf networks;
    return answerOnSuccess(m_modem.searchNetworks(networks), networks, response);
}

int NetworkPlugin::select(CDataValue& request, CDataValue&)
{
    const int error = m_modem.selectNetwork(recordFrom<BLNetworkSet>(request));
    return DeviceService_Global::atError2IpcError(error);
}

int NetworkPlugin::signalChanged(QString, CDataValue*)
{
    // The report tells everything about the network, so that a user interface needs one picture
    // only. A SIM that is still locked has nothing to tell.
    BLNetworkInfo info;
    const int error = m_modem.networkInfo(info);
    if (error == 0) {
        CDataValue data = valueOf(info);
        Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportNetworkInfo), &data);
    }
    return DeviceService_Global::atError2IpcError(error);
}
