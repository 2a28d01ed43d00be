// What lies on the SIM: codes, messages, phonebook.

#include "LogTask/clog.h"
#include "common/codes.h"
#include "common/demomessages.h"
#include "deviceservice/atanswers.h"
#include "deviceservice/atmodem.h"

#include <algorithm>

using namespace AtText;

namespace {

constexpr char kLogSource[] = "deviceservice/atmodemsim";
constexpr int kUnknownAttempts = -1;

bool isCode(const QString& code, int shortest, int longest)
{
    return code.size() >= shortest && code.size() <= longest &&
           std::all_of(code.begin(), code.end(), [](QChar character) {
               return character >= QLatin1Char('0') && character <= QLatin1Char('9');
           });
}

bool isPin(const QString& code)
{
    return isCode(code, 4, 8);
}

QByteArray quoted(const QString& code)
{
    return '"' + code.toLatin1() + '"';
}

void logSkipped(const char* function, int skipped)
{
    if (skipped > 0)
        CLogFile() << kLogSource << function << "not understood:" << skipped;
}

} // namespace

int AtModem::pinCode(int& state)
{
    return askFor("AT+CPIN?", "+CPIN:", state, AtAnswer::pinState, AtWait::Sim);
}

int AtModem::pinState(BLPinCheckState& state)
{
    int error = pinCode(state.nState);
    if (error == AtError::NoConnection)
        return error;
    const AtReply reply = ask("AT+CPINR", "+CPINR:");
    state.nPinCnt = AtAnswer::attempts(reply.lines, "SIM PIN").value_or(kUnknownAttempts);
    state.nPukCnt = AtAnswer::attempts(reply.lines, "SIM PUK").value_or(kUnknownAttempts);
    // Without attempts at the PUK, the failure is for good; that is a state, and known.
    if (error == AtError::SimFailure && state.nPukCnt == 0) {
        state.nState = PinState::Blocked;
        error = AtError::None;
    }
    return reply.error == AtError::NoConnection ? reply.error : error;
}

// The settings that needed the SIM.
int AtModem::unlocked(int error)
{
    if (error == AtError::None)
        applySettings();
    return error;
}

int AtModem::verifyPin(const QString& pin)
{
    if (!isPin(pin))
        return AtError::IncorrectParameters;
    return unlocked(tell("AT+CPIN=" + quoted(pin), AtWait::Sim));
}

int AtModem::unblockPin(const BLPINVerifyPukInfo& unblocking)
{
    if (!isCode(unblocking.strPUK, 8, 8) || !isPin(unblocking.strNewPin))
        return AtError::IncorrectParameters;
    // Where the PIN is asked for, some modems would try the PUK as one.
    int state = PinState::Ready;
    const int error = pinCode(state);
    if (error != AtError::None)
        return error;
    if (state != PinState::PukNeeded)
        return AtError::OperationNotAllowed;
    return unlocked(tell(
        "AT+CPIN=" + quoted(unblocking.strPUK) + ',' + quoted(unblocking.strNewPin), AtWait::Sim));
}

int AtModem::changePin(const BLPINChangeInfo& change)
{
    if (!isPin(change.strOldPin) || !isPin(change.strNewPin))
        return AtError::IncorrectParameters;
    return tell("AT+CPWD=\"SC\"," + quoted(change.strOldPin) + ',' + quoted(change.strNewPin),
                AtWait::Sim);
}

int AtModem::enablePin(const BLPINEnableInfo& enabling)
{
    if (!isPin(enabling.strPinCode))
        return AtError::IncorrectParameters;
    const QByteArray mode = enabling.blPinEnable ? "1," : "0,";
    return tell("AT+CLCK=\"SC\"," + mode + quoted(enabling.strPinCode), AtWait::Sim);
}

int AtModem::messages(BLSmsGetListCnf& list)
{
    const AtReply reply = ask("AT+CMGL=\"ALL\"", {}, AtWait::Sim);
    if (reply.error != AtError::None)
        return reply.error;
    int skipped = 0;
    list = AtAnswer::messages(reply.lines, &skipped);
    logSkipped("messages", skipped);
    return AtError::None;
}

int AtModem::messageStorage(BLSmsStorageState& state)
{
    AtAnswer::Room room;
    const int error = askFor("AT+CPMS?", "+CPMS:", room, AtAnswer::room);
    state.nSimUsed = room.used;
    state.nSimTotal = room.total;
    return error;
}

int AtModem::deleteMessage(int ref)
{
    if (ref < 0)
        return AtError::InvalidIndex;
    return tell("AT+CMGD=" + QByteArray::number(ref), AtWait::Sim);
}

int AtModem::phonebook(BLPbInitListCnf& list)
{
    AtAnswer::Places places;
    const int error = askFor("AT+CPBR=?", "+CPBR:", places, AtAnswer::phonebookPlaces);
    if (error != AtError::None)
        return error;
    const AtReply reply =
        ask("AT+CPBR=" + QByteArray::number(places.first) + ',' + QByteArray::number(places.last),
            "+CPBR:", AtWait::Sim);
    // An empty phonebook is "not found" to many modems.
    if (reply.error != AtError::None && reply.error != AtError::NotFound)
        return reply.error;
    int skipped = 0;
    for (const QByteArray& line : reply.lines) {
        if (const auto entry = AtAnswer::phonebookEntry(line))
            list.listPBItem.append(*entry);
        else
            ++skipped;
    }
    logSkipped("phonebook", skipped);
    return AtError::None;
}

int AtModem::phonebookStorage(BLPbGetStorageInfoCnf& state)
{
    AtAnswer::Room room;
    const int error = askFor("AT+CPBS?", "+CPBS:", room, AtAnswer::room);
    state.nSimUsed = room.used;
    state.nSimTotal = room.total;
    return error;
}

// Into the first free place, which the modem finds.
int AtModem::addPhonebookEntry(const BLPbItem& entry)
{
    const QString number = entry.contents.value(QLatin1String(PhonebookField::Number));
    const QString name = entry.contents.value(QLatin1String(PhonebookField::Name));
    if (!isPhoneNumber(number))
        return AtError::IncorrectParameters;
    const QByteArray type = number.startsWith(QLatin1Char('+')) ? "145" : "129";
    return tell("AT+CPBW=," + quoted(number) + ',' + type + ",\"" + encoded(name) + '"',
                AtWait::Sim);
}
