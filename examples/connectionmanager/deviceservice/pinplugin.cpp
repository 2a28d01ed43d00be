#include "deviceservice/pinplugin.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

PinPlugin::PinPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::PinState, "state", 0, this);
    registerMessage(DemoMessage::PinVerify, "verify", 0, this);
    registerMessage(DemoMessage::PinChange, "change", 0, this);
    registerMessage(DemoMessage::PinEnable, "enable", 0, this);
    registerMessage(DemoMessage::PukVerify, "unblock", 0, this);
}

int PinPlugin::answerWithAttempts(int atError, CDataValue& response)
{
    BLPinCheckState state;
    BLPINInfo attempts;
    if (m_modem.pinState(state) == AtError::None) {
        attempts.nPinCnt = state.nPinCnt;
        attempts.nPukCnt = state.nPukCnt;
    }
    return answer(atError, attempts, response);
}

int PinPlugin::state(CDataValue&, CDataValue& response)
{
    BLPinCheckState state;
    return answerOnSuccess(m_modem.pinState(state), state, response);
}

int PinPlugin::verify(CDataValue& request, CDataValue& response)
{
    // A request without a PIN must not cost an attempt. The other requests are records, whose
    // missing texts read as empty ones: those are refused in the same way.
    if (request.asQString().isEmpty())
        return answerWithAttempts(AtError::IncorrectParameters, response);
    return answerWithAttempts(m_modem.verifyPin(request.asQString()), response);
}

int PinPlugin::change(CDataValue& request, CDataValue& response)
{
    const auto change = recordFrom<BLPINChangeInfo>(request);
    if (change.strOldPin.isEmpty())
        return answerWithAttempts(AtError::IncorrectParameters, response);
    return answerWithAttempts(m_modem.changePin(change), response);
}

int PinPlugin::enable(CDataValue& request, CDataValue& response)
{
    const auto enabling = recordFrom<BLPINEnableInfo>(request);
    if (enabling.strPinCode.isEmpty())
        return answerWithAttempts(AtError::IncorrectParameters, response);
    return answerWithAttempts(m_modem.enablePin(enabling), response);
}

int PinPlugin::unblock(CDataValue& request, CDataValue& response)
{
    const auto unblocking = recordFrom<BLPINVerifyPukInfo>(request);
    if (unblocking.strPUK.isEmpty())
        return answerWithAttempts(AtError::IncorrectParameters, response);
    return answerWithAttempts(m_modem.unblockPin(unblocking), response);
}
