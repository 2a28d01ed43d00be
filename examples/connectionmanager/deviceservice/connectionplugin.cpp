#include "deviceservice/connectionplugin.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

ConnectionPlugin::ConnectionPlugin(Modem& modem, const QString& deviceName)
    : m_modem(modem)
    , m_deviceName(deviceName)
{
    registerMessage(DemoMessage::Dial, "dial", 0, this);
    registerMessage(DemoMessage::HangUp, "hangUp", 0, this);
    registerMessage(DemoMessage::ConnectState, "state", 0, this);
    registerMessage(DemoMessage::Statistics, "statistics", 0, this);
    registererUnsolicitedMessage(ModemEvent::Connection, "connectionChanged", 0, this);
}

int ConnectionPlugin::answerWithState(int atError, CDataValue& response)
{
    BLConnectState state;
    m_modem.connectState(state);
    state.nErr = DeviceService_Global::atError2IpcError(atError);
    return answer(atError, state, response);
}

int ConnectionPlugin::dial(CDataValue& request, CDataValue& response)
{
    const auto profile = recordFrom<BLConnectionDialUp>(request);
    // A profile of another device is not for this modem.
    const QString ownID = DeviceService_Global::instance()->getDeviceIDByDeviceName(m_deviceName);
    if (!profile.strDeviceID.isEmpty() && profile.strDeviceID != ownID)
        return answerWithState(AtError::NotFound, response);
    return answerWithState(m_modem.dial(profile), response);
}

int ConnectionPlugin::hangUp(CDataValue&, CDataValue& response)
{
    return answerWithState(m_modem.hangUp(), response);
}

int ConnectionPlugin::state(CDataValue&, CDataValue& response)
{
    BLConnectState state;
    const int error = m_modem.connectState(state);
    state.nErr = DeviceService_Global::atError2IpcError(error);
    return answer(error, state, response);
}

int ConnectionPlugin::statistics(CDataValue&, CDataValue& response)
{
    BLGetStatisticsCnf answered;
    int error = m_modem.connectState(answered.tState);
    if (error == AtError::None)
        error = m_modem.statistics(answered.tInfo);
    answered.nErr = DeviceService_Global::atError2IpcError(error);
    return answer(error, answered, response);
}

int ConnectionPlugin::connectionChanged(QString text, CDataValue* data)
{
    BLConnectState state;
    state.nState = data->asInt();
    if (state.nState == Connection::Disconnected)
        state.strError = text;
    CDataValue report = valueOf(state);
    Q_EMIT sendUnsolicitedReportDirect(QLatin1String(DemoMessage::ReportConnectState), &report);
    return 0;
}
