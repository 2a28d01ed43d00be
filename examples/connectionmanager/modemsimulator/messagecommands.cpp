#include "modemsimulator/messagecommands.h"

#include "common/codes.h"
#include "common_function.h"

#include <algorithm>

namespace {

// 3GPP TS 27.005, 3.2.5.
enum MessageError {
    NotSupported = 303,
    InvalidTextParameter = 305,
    SimNotInserted = 310,
    SimPinRequired = 311,
    SimFailure = 313,
    SimPukRequired = 316,
    InvalidMemoryIndex = 321,
    NoNetworkService = 331
};

constexpr int kMaxGsmText = 160;
constexpr int kMaxUcs2Text = 70;

bool isNumber(const QString& number)
{
    const QString digits = number.startsWith(QLatin1Char('+')) ? number.mid(1) : number;
    const auto isDigit = [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); };
    return !digits.isEmpty() && digits.size() <= 20 &&
           std::all_of(digits.begin(), digits.end(), isDigit);
}

bool fitsIntoOneMessage(const QString& text)
{
    const bool isGsm = GetEncodeType(text.utf16()) == 0;
    return text.size() <= (isGsm ? kMaxGsmText : kMaxUcs2Text);
}

} // namespace

MessageCommands::MessageCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("+CPMS", &MessageCommands::storage);
    command("+CMGF", &MessageCommands::mode);
    command("+CMGL", &MessageCommands::list);
    command("+CMGR", &MessageCommands::read);
    command("+CMGD", &MessageCommands::remove);
    command("+CMGS", &MessageCommands::send);
    command("+CNMI", &MessageCommands::notification);
    word("message", &MessageCommands::messageWord);
}

void MessageCommands::reset()
{
    m_textMode = false;
    m_notifyMode = 0;
    m_notifyMessage = 0;
}

// The message service has error numbers of its own for a SIM that cannot be used.
int MessageCommands::accessError() const
{
    switch (m_core.simError()) {
    case AtError::None:
        return 0;
    case AtError::SimNotInserted:
        return SimNotInserted;
    case AtError::SimPinRequired:
        return SimPinRequired;
    case AtError::SimPukRequired:
        return SimPukRequired;
    default:
        return SimFailure;
    }
}

int MessageCommands::textModeError() const
{
    const int error = accessError();
    return error == 0 && !m_textMode ? NotSupported : error;
}

AtResult MessageCommands::storage(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(\"SM\"),(\"SM\"),(\"SM\")");
        return AtResult::ok();
    }
    if (accessError() != 0)
        return AtResult::cms(accessError());
    for (int i = 0; i < 3; ++i) {
        if (command.has(i) && command.text(i).toUpper() != "SM")
            return AtResult::cms(NotSupported);
    }
    const QByteArray room = QByteArray::number(static_cast<int>(m_core.state.messages.size())) +
                            ',' + QByteArray::number(m_core.state.messageRoom);
    const QByteArray name = command.form == AtCommand::Read ? "\"SM\"," : "";
    answer(command, name + room + ',' + name + room + ',' + name + room);
    return AtResult::ok();
}

AtResult MessageCommands::mode(const AtCommand& command)
{
    int number = m_textMode ? 1 : 0;
    const AtResult result = numberSetting(command, 1, number);
    m_textMode = number == 1;
    return result;
}

AtResult MessageCommands::list(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(\"REC UNREAD\",\"REC READ\",\"STO UNSENT\",\"STO SENT\",\"ALL\")");
        return AtResult::ok();
    }
    if (textModeError() != 0)
        return AtResult::cms(textModeError());
    const QString wanted = command.has(0) ? QString::fromLatin1(command.text(0)).toUpper()
                                          : QStringLiteral("REC UNREAD");
    const char* statuses[] = {"REC UNREAD", "REC READ", "STO UNSENT", "STO SENT", "ALL"};
    const bool isKnown =
        std::any_of(std::begin(statuses), std::end(statuses),
                    [&wanted](const char* status) { return wanted == QLatin1String(status); });
    if (!isKnown)
        return AtResult::cms(InvalidTextParameter);
    for (MessageState& message : m_core.state.messages) {
        if (wanted == QLatin1String("ALL") || message.status == wanted)
            answerMessage("+CMGL: " + QByteArray::number(message.index) + ',', message);
    }
    return AtResult::ok();
}

// Shown once, a message counts as read.
void MessageCommands::answerMessage(const QByteArray& start, MessageState& message)
{
    QByteArray line =
        start + '"' + message.status.toLatin1() + "\"," + m_core.quoted(message.number) + ',';
    if (!message.time.isEmpty())
        line += ",\"" + message.time.toLatin1() + '"';
    m_core.answer(line);
    m_core.answer(encodedText(m_core.charset, message.text));
    if (message.status == QLatin1String("REC UNREAD")) {
        message.status = QStringLiteral("REC READ");
        m_core.changed();
    }
}

MessageState* MessageCommands::find(int index)
{
    for (MessageState& message : m_core.state.messages) {
        if (message.index == index)
            return &message;
    }
    return nullptr;
}

AtResult MessageCommands::read(const AtCommand& command)
{
    if (command.form == AtCommand::Test)
        return AtResult::ok();
    if (textModeError() != 0)
        return AtResult::cms(textModeError());
    MessageState* message = find(command.number(0));
    if (message == nullptr)
        return AtResult::cms(InvalidMemoryIndex);
    answerMessage("+CMGR: ", *message);
    return AtResult::ok();
}

AtResult MessageCommands::remove(const AtCommand& command)
{
    if (accessError() != 0)
        return AtResult::cms(accessError());
    auto& messages = m_core.state.messages;
    if (command.form == AtCommand::Test) {
        QByteArray places;
        for (const MessageState& message : messages)
            places += (places.isEmpty() ? "" : ",") + QByteArray::number(message.index);
        answer(command, '(' + places + "),(0-4)");
        return AtResult::ok();
    }
    const int extent = command.number(1, 0);
    if (command.form != AtCommand::Set || extent < 0 || extent > 4)
        return AtResult::cms(InvalidTextParameter);
    if (extent > 0)
        return removeRead(extent);
    const MessageState* message = find(command.number(0));
    if (message == nullptr)
        return AtResult::cms(InvalidMemoryIndex);
    messages.erase(messages.begin() + (message - messages.data()));
    m_core.changed();
    deliver();
    return AtResult::ok();
}

// 1: those that were read; 2: the sent ones too; 3: the unsent ones too; 4: all.
AtResult MessageCommands::removeRead(int extent)
{
    const char* const statuses[] = {"REC READ", "STO SENT", "STO UNSENT", "REC UNREAD"};
    auto& messages = m_core.state.messages;
    const auto isConcerned = [&statuses, extent](const MessageState& message) {
        return std::any_of(statuses, statuses + extent, [&message](const char* status) {
            return message.status == QLatin1String(status);
        });
    };
    messages.erase(std::remove_if(messages.begin(), messages.end(), isConcerned), messages.end());
    m_core.changed();
    deliver();
    return AtResult::ok();
}

AtResult MessageCommands::send(const AtCommand& command)
{
    if (command.form == AtCommand::Test)
        return AtResult::ok();
    if (textModeError() != 0)
        return AtResult::cms(textModeError());
    if (!m_core.isRegistered())
        return AtResult::cms(NoNetworkService);
    QString number;
    if (!decodedText(m_core.charset, command.text(0), &number) || !isNumber(number))
        return AtResult::cms(InvalidTextParameter);
    m_core.takeText = [this, number](const QByteArray& bytes) { return submit(number, bytes); };
    return AtResult::prompt();
}

AtResult MessageCommands::submit(const QString& number, const QByteArray& bytes)
{
    MessageState message;
    if (!decodedText(m_core.charset, bytes, &message.text) || !fitsIntoOneMessage(message.text))
        return AtResult::cms(InvalidTextParameter);
    message.index = m_core.state.freeMessageIndex();
    message.status = QStringLiteral("STO SENT");
    message.number = number;
    if (message.index != 0) {
        m_core.state.insert(message);
        m_core.changed();
    }
    m_reference = m_reference % 255 + 1;
    m_core.answer("+CMGS: " + QByteArray::number(m_reference));
    return AtResult::ok();
}

AtResult MessageCommands::notification(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(0-2),(0,1),(0),(0),(0,1)");
        return AtResult::ok();
    }
    if (command.form == AtCommand::Read) {
        answer(command, QByteArray::number(m_notifyMode) + ',' +
                            QByteArray::number(m_notifyMessage) + ",0,0,0");
        return AtResult::ok();
    }
    const int mode = command.number(0, m_notifyMode);
    const int message = command.number(1, 0);
    const bool isSupported = mode >= 0 && mode <= 2 && message >= 0 && message <= 1 &&
                             command.number(2, 0) == 0 && command.number(3, 0) == 0 &&
                             command.number(4, 0) >= 0 && command.number(4, 0) <= 1;
    if (!isSupported)
        return AtResult::cms(NotSupported);
    m_notifyMode = mode;
    m_notifyMessage = message;
    return AtResult::ok();
}

bool MessageCommands::messageWord(const QString& arguments)
{
    MessageState message;
    message.number = arguments.section(QLatin1Char(' '), 0, 0);
    message.text = arguments.section(QLatin1Char(' '), 1);
    if (message.number.size() > 21 || message.text.isEmpty() || !fitsIntoOneMessage(message.text))
        return false;
    m_waiting.push_back(message);
    deliver();
    return true;
}

void MessageCommands::deliver()
{
    while (!m_waiting.empty() && m_core.isRegistered()) {
        const MessageState& next = m_waiting.front();
        const int index = m_core.state.addReceived(next.number, next.text);
        if (index == 0)
            return;
        m_waiting.erase(m_waiting.begin());
        m_core.changed();
        if (m_notifyMode > 0 && m_notifyMessage == 1)
            m_core.report("+CMTI: \"SM\"," + QByteArray::number(index));
    }
}
