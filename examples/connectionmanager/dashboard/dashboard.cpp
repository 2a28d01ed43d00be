#include "dashboard/dashboard.h"

#include "MessageCenter/messagecenter.h"
#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "records/records.h"

namespace {

// The slots of one identifier are called in this order.
constexpr DeviceSlots::Item kSlots[] = {
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
    {DemoMessage::PinEnable, "onAnswer"},
    {DemoMessage::PukVerify, "onAnswer"},
    {DemoMessage::EquipmentInfo, "onAnswer"},
    {DemoMessage::Dial, "onAnswer"},
    {DemoMessage::HangUp, "onAnswer"},
    {DemoMessage::ConnectState, "onAnswer"},
    {DemoMessage::Statistics, "onAnswer"},
    {DemoMessage::SmsList, "onMessages"},
    {DemoMessage::SmsList, "onAnswer"},
    {DemoMessage::SmsStorage, "onAnswer"},
    {DemoMessage::SmsDelete, "onAnswer"},
    {DemoMessage::PbList, "onAnswer"},
    {DemoMessage::PbAdd, "onAnswer"},
    {DemoMessage::PbStorage, "onAnswer"},
    {DemoMessage::UssdSend, "onAnswer"},
    {DemoMessage::DiagInfo, "onAnswer"},
    {DemoMessage::DiagFindings, "onAnswer"},
    {DemoMessage::Cancel, "onAnswer"},
    {DemoMessage::ReportNetworkInfo, "onReport"},
    {DemoMessage::ReportConnectState, "onReport"},
    {DemoMessage::ReportNewSms, "onReport"},
    {DemoMessage::ReportSmsProgress, "onReport"},
    {DemoMessage::ReportSmsDeleted, "onReport"},
    {DemoMessage::ReportUssd, "onReport"},
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
    , m_slots(this, kSlots)
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
    askForMessages();
    askForPhonebook();
    diagnose();
    if (m_plan.dial)
        dial();
    ask(DemoMessage::ConnectState);
    ask(DemoMessage::Statistics);
}

void Dashboard::askForMessages()
{
    ask(DemoMessage::SmsList, valueOf(BLSmsGetListReq()));
    ask(DemoMessage::SmsStorage);
}

void Dashboard::askForPhonebook()
{
    ask(DemoMessage::PbList, valueOf(BLPbInitListReq()));
    ask(DemoMessage::PbStorage);
}

void Dashboard::diagnose()
{
    ask(DemoMessage::DiagInfo);
    ask(DemoMessage::DiagFindings);
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

void Dashboard::onMessages(CDataValue* envelope)
{
    const auto list = recordFrom<BLSmsGetListCnf>(envelope->mapGet("IPCMSG_RESPONSE_DATA"));
    m_messageRefs.clear();
    for (const BLSmsListItem& message : list.listSmsItem)
        m_messageRefs.append(message.nRef);
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

// The numbers of the messages, or "all" of those that were listed last.
void Dashboard::deleteMessages(const QStringList& numbers)
{
    BLSmsDeleteReq removal;
    removal.nBoxType = MessageBox::Inbox;
    removal.nStoreIn = Store::Sim;
    if (numbers == QStringList(QStringLiteral("all")))
        removal.vRef = m_messageRefs;
    else
        for (const QString& number : numbers)
            removal.vRef.append(number.toInt());
    ask(DemoMessage::SmsDelete, valueOf(removal));
}

void Dashboard::cancelDeleting()
{
    ask(DemoMessage::Cancel, valueOf(BLCancelMessage{QLatin1String(DemoMessage::SmsDelete)}));
}

void Dashboard::addToPhonebook(const QString& number, const QString& name)
{
    BLPbItem entry;
    entry.contents.insert(QLatin1String(PhonebookField::Name), name);
    entry.contents.insert(QLatin1String(PhonebookField::Number), number);
    BLPBNewItemReq addition;
    addition.newItemList.append(entry);
    ask(DemoMessage::PbAdd, valueOf(addition));
}

void Dashboard::sendUssd(const QString& text)
{
    BLUssdSendCmd command;
    command.strUssdCmd = text;
    command.strClientID = QString::fromUtf8(m_senderID);
    command.nTimeOutSec = 30;
    ask(DemoMessage::UssdSend, valueOf(command));
}

const QMap<QString, Dashboard::Command>& Dashboard::commands()
{
    using Words = const QStringList&;
    static const QMap<QString, Command> commands{
        {"ask", {1, [](Dashboard& self, Words) { self.begin(); }}},
        {"pin",
         {2, [](Dashboard& self, Words w) { self.ask(DemoMessage::PinVerify, CDataValue(w[1])); }}},
        {"changepin",
         {3,
          [](Dashboard& self, Words w) {
              self.ask(DemoMessage::PinChange, valueOf(BLPINChangeInfo{w[1], w[2]}));
          }}},
        {"puk",
         {3,
          [](Dashboard& self, Words w) {
              self.ask(DemoMessage::PukVerify, valueOf(BLPINVerifyPukInfo{w[1], w[2]}));
          }}},
        {"network", {1, [](Dashboard& self, Words w) { self.selectNetwork(w.mid(1).join(' ')); }}},
        {"dial", {1, [](Dashboard& self, Words) { self.dial(); }}},
        {"hangup", {1, [](Dashboard& self, Words) { self.ask(DemoMessage::HangUp); }}},
        {"messages", {1, [](Dashboard& self, Words) { self.askForMessages(); }}},
        {"delete", {2, [](Dashboard& self, Words w) { self.deleteMessages(w.mid(1)); }}},
        {"cancel", {1, [](Dashboard& self, Words) { self.cancelDeleting(); }}},
        {"phonebook", {1, [](Dashboard& self, Words) { self.askForPhonebook(); }}},
        {"add",
         {3, [](Dashboard& self, Words w) { self.addToPhonebook(w[1], w.mid(2).join(' ')); }}},
        {"ussd", {2, [](Dashboard& self, Words w) { self.sendUssd(w[1]); }}},
        {"diagnose", {1, [](Dashboard& self, Words) { self.diagnose(); }}},
    };
    return commands;
}

bool Dashboard::obey(const QString& line)
{
    const QStringList words = line.split(QLatin1Char(' '));
    const auto command = commands().constFind(words.first());
    if (command == commands().constEnd() || words.size() < command->words)
        return false;
    command->run(*this, words);
    return true;
}
