#include "dashboard/dashboard.h"

#include "MessageCenter/messagecenter.h"
#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "records/records.h"

namespace {

// The slots of one identifier are called in this order.
constexpr DeviceSlots::Item Slots[] = {
    {DemoMessage::PinState, "onPinState"},
    {DemoMessage::PinVerify, "onPinVerified"},
    {DemoMessage::NetworkInfo, "onAnswer"},
    {DemoMessage::NetworkRegState, "onAnswer"},
    {DemoMessage::NetworkCell, "onAnswer"},
    {DemoMessage::NetworkList, "onAnswer"},
    {DemoMessage::NetworkSet, "onAnswer"},
    {DemoMessage::PinState, "onAnswer"},
    {DemoMessage::PinVerify, "onAnswer"},
    {DemoMessage::PinChange, "onAnswer"},
    {DemoMessage::PukVerify, "onAnswer"},
    {DemoMessage::EquipmentInfo, "onAnswer"},
    {DemoMessage::Dial, "onAnswer"},
    {DemoMessage::HangUp, "onAnswer"},
    {DemoMessage::ConnectState, "onAnswer"},
    {DemoMessage::Statistics, "onAnswer"},
    {DemoMessage::ReportNetworkInfo, "onReport"},
    {DemoMessage::ReportConnectState, "onReport"},
};

int errorCodeOf(CDataValue* envelope)
{
    return envelope->mapGet("IPCMSG_ERROR_CODE").asInt();
}

} // namespace

Dashboard::Dashboard(const QString& senderID, const Plan& plan, QObject* parent)
    : QObject(parent)
    , m_senderID(senderID.toUtf8())
    , m_plan(plan)
    , m_slots(this, Slots)
{
}

void Dashboard::begin()
{
    m_begun = true;
    m_pinTried = false;
    ask(DemoMessage::PinState);
}

void Dashboard::forgetQuestions()
{
    m_open = 0;
}

// Counted before it is posted: an answer can come from inside the post.
void Dashboard::ask(const char* messageID, const CDataValue& data)
{
    ++m_open;
    MessageCenter::defaultCenter()->postDeviceMessage(messageID, data.isNull() ? nullptr : &data,
                                                      m_senderID.constData());
}

void Dashboard::askEverything()
{
    ask(DemoMessage::EquipmentInfo);
    ask(DemoMessage::NetworkRegState);
    ask(DemoMessage::NetworkInfo);
    ask(DemoMessage::NetworkCell);
    ask(DemoMessage::NetworkList);
    if (m_plan.dial)
        dial();
    ask(DemoMessage::ConnectState);
    ask(DemoMessage::Statistics);
}

void Dashboard::dial()
{
    BLConnectionDialUp profile;
    profile.strName = QStringLiteral("Example");
    profile.strAPN = QStringLiteral("internet.example");
    profile.strNumber = QStringLiteral("*99#");
    ask(DemoMessage::Dial, valueOf(profile));
}

void Dashboard::onPinState(CDataValue* envelope)
{
    const bool begun = m_begun;
    m_begun = false;
    if (!begun || errorCodeOf(envelope) != 0)
        return;
    const auto state = recordFrom<BLPinCheckState>(envelope->mapGet("IPCMSG_RESPONSE_DATA"));
    m_pinTried = state.nState == PinState::PinNeeded && !m_plan.pin.isEmpty();
    if (m_pinTried)
        ask(DemoMessage::PinVerify, CDataValue(m_plan.pin));
    else
        askEverything();
}

void Dashboard::onPinVerified(CDataValue* envelope)
{
    if (m_pinTried && errorCodeOf(envelope) == 0)
        askEverything();
    m_pinTried = false;
}

void Dashboard::onAnswer(CDataValue* envelope)
{
    if (errorCodeOf(envelope) != 0)
        ++m_failures;
    if (m_open > 0)
        --m_open;
    finishWhenDone();
}

void Dashboard::onReport(CDataValue*)
{
    ++m_reports;
    finishWhenDone();
}

// A refusal ends a one-shot run at once: the reports would not come.
void Dashboard::finishWhenDone()
{
    if (m_open == 0 && !m_begun && (m_failures > 0 || m_reports >= m_plan.reports))
        Q_EMIT finished(m_failures);
}

void Dashboard::selectNetwork(const QString& name)
{
    BLNetworkSet selection;
    selection.nMode = name.isEmpty() ? SelectionMode::Automatic : SelectionMode::Manual;
    selection.nFormat = OperatorFormat::Long;
    selection.strOperator = name;
    ask(DemoMessage::NetworkSet, valueOf(selection));
}

bool Dashboard::obey(const QString& line)
{
    const QStringList words = line.split(QLatin1Char(' '));
    const QString& command = words.first();
    if (command == QLatin1String("ask"))
        begin();
    else if (command == QLatin1String("pin") && words.size() == 2)
        ask(DemoMessage::PinVerify, CDataValue(words[1]));
    else if (command == QLatin1String("changepin") && words.size() == 3)
        ask(DemoMessage::PinChange, valueOf(BLPINChangeInfo{words[1], words[2]}));
    else if (command == QLatin1String("puk") && words.size() == 3)
        ask(DemoMessage::PukVerify, valueOf(BLPINVerifyPukInfo{words[1], words[2]}));
    else if (command == QLatin1String("network"))
        selectNetwork(line.section(QLatin1Char(' '), 1).trimmed());
    else if (command == QLatin1String("dial"))
        dial();
    else if (command == QLatin1String("hangup"))
        ask(DemoMessage::HangUp);
    else
        return false;
    return true;
}
