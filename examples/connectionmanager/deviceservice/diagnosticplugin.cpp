#include "deviceservice/diagnosticplugin.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

namespace {

constexpr int kWeakSignal = 5; // of 31

int decibels(int rssi)
{
    return rssi >= 0 && rssi <= 31 ? 2 * rssi - 113 : 0;
}

} // namespace

DiagnosticPlugin::DiagnosticPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::DiagInfo, "info", 0, this);
    registerMessage(DemoMessage::DiagFindings, "findings", 0, this);
}

// A part that the modem does not tell stays empty: half a picture is better than none. Without a
// modem there is no picture.
int DiagnosticPlugin::info(CDataValue&, CDataValue& response)
{
    BLDiagInfo info;
    BLEquipmentInfo equipment;
    if (m_modem.equipment(equipment) == AtError::None) {
        info.strManufacturer = equipment.strManufacturer;
        info.strModel = equipment.strModel;
        info.strRevision = equipment.strRevision;
        info.strSerialNumber = equipment.strSerialNumber;
        info.strCommercialSerialNumber = equipment.strCommercialSerialNumber;
        info.strImsi = equipment.strImsi;
        info.strMsisdn = equipment.strMsisdn;
        info.strHardwareVersion = equipment.strHardwareVersion;
    }
    BLNetworkInfo network;
    if (m_modem.networkInfo(network) == AtError::None) {
        info.nMode = network.nMode;
        info.nFormat = network.nFormat;
        info.strOperator = network.strOperator;
        info.nAct = network.nAct;
        info.strSpName = network.strSpName;
        info.strPnn = network.strPnn;
        info.nRssi = network.nRssi;
        info.nDBRssi = decibels(network.nRssi);
        info.nRoamState = network.nRoamState;
        info.nBearer = network.nBearer;
        info.nGprsRegState = network.nGprsState;
        info.nPsAttachState = network.nGprsState;
    }
    BLPinCheckState pin;
    const int pinError = m_modem.pinState(pin);
    if (pinError == AtError::NoConnection)
        return answerOnSuccess(pinError, info, response);
    if (pinError == AtError::None)
        info.nPinState = pin.nState;
    BLNetRegState registration;
    if (m_modem.registration(registration) == AtError::None)
        info.nNormalRegState = registration.nState;
    return answer(AtError::None, info, response);
}

int DiagnosticPlugin::findings(CDataValue&, CDataValue& response)
{
    GLDiagInfoList findings;
    const auto find = [&findings](int group, const char* error, const char* solution,
                                  const QString& detail) {
        GLDiagInfo finding;
        finding.nGroup = group;
        finding.strErr = QLatin1String(error);
        finding.strSolution = QLatin1String(solution);
        finding.strDiscription.append(detail);
        findings.listDiagInfo.append(finding);
    };
    BLPinCheckState pin;
    const int pinError = m_modem.pinState(pin);
    if (pinError == AtError::NoConnection)
        return answerOnSuccess(pinError, findings, response);
    if (pinError == AtError::None && pin.nState == PinState::PinNeeded)
        find(DiagnosisGroup::Sim, "the SIM is locked", "enter the PIN",
             QStringLiteral("%1 attempts left").arg(pin.nPinCnt));
    else if (pinError != AtError::None || pin.nState != PinState::Ready)
        find(DiagnosisGroup::Sim, "the SIM cannot be used", "enter the PUK, or ask your operator",
             QStringLiteral("%1 attempts left for the PUK").arg(pin.nPukCnt));
    BLNetworkInfo network;
    if (m_modem.networkInfo(network) == AtError::None && network.nRssi < kWeakSignal)
        find(DiagnosisGroup::Network, "the signal is weak", "go to the window",
             QStringLiteral("%1 dBm").arg(decibels(network.nRssi)));
    BLSmsStorageState messages;
    if (m_modem.messageStorage(messages) == AtError::None &&
        messages.nSimUsed >= messages.nSimTotal)
        find(DiagnosisGroup::Messages, "no room for messages", "delete some",
             QStringLiteral("%1 of %2").arg(messages.nSimUsed).arg(messages.nSimTotal));
    return answer(AtError::None, findings, response);
}
