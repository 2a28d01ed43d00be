#include "modemsimulator/modemengine.h"

#include "modemsimulator/generalcommands.h"
#include "modemsimulator/messagecommands.h"
#include "modemsimulator/networkcommands.h"
#include "modemsimulator/packetcommands.h"
#include "modemsimulator/phonebookcommands.h"
#include "modemsimulator/simcommands.h"
#include "modemsimulator/ussdcommands.h"

namespace {

constexpr char kCarriageReturn = '\r';
constexpr char kBackspace = '\b';
constexpr char kEndOfText = 0x1A; // Ctrl-Z
constexpr char kEscape = 0x1B;

QByteArray framed(const QByteArray& text)
{
    return "\r\n" + text + "\r\n";
}

QByteArray joined(const std::vector<QByteArray>& lines)
{
    QByteArray text;
    for (const QByteArray& line : lines)
        text += (text.isEmpty() ? "" : "\r\n") + line;
    return text;
}

// What stands behind "AT"; null when that is not there.
QByteArray commandBody(const QByteArray& line)
{
    for (int i = 0; i + 1 < line.size(); ++i) {
        if ((line.at(i) | 0x20) == 'a' && (line.at(i + 1) | 0x20) == 't')
            return line.mid(i + 2) + ' ';
    }
    return {};
}

} // namespace

ModemEngine::ModemEngine(ModemState state, Hooks hooks)
    : m_core(std::move(state))
    , m_hooks(std::move(hooks))
{
    add<GeneralCommands>();
    add<SimCommands>();
    m_network = add<NetworkCommands>();
    add<PacketCommands>();
    add<MessageCommands>();
    add<PhonebookCommands>();
    add<UssdCommands>();
    addOwnWords();
}

ModemEngine::~ModemEngine() = default;

template<class Family>
Family* ModemEngine::add()
{
    auto family = std::make_unique<Family>(m_core);
    Family* added = family.get();
    for (auto it = added->commands().cbegin(); it != added->commands().cend(); ++it)
        m_commands.insert(it.key(), it.value());
    for (auto it = added->words().cbegin(); it != added->words().cend(); ++it)
        m_words.insert(it.key(), it.value());
    m_core.families.push_back(added);
    m_families.push_back(std::move(family));
    return added;
}

void ModemEngine::addOwnWords()
{
    m_words.insert(QStringLiteral("fault"),
                   [this](const QString& text) { return m_faults.prepare(text); });
    m_words.insert(QStringLiteral("garbage"), [this](const QString&) {
        m_output += Faults::garbage();
        return true;
    });
    m_words.insert(QStringLiteral("silence"), [this](const QString&) {
        m_isSilent = true;
        return true;
    });
    m_words.insert(QStringLiteral("talk"), [this](const QString&) {
        m_isSilent = false;
        return true;
    });
}

void ModemEngine::take(const QByteArray& bytes)
{
    for (const char byte : bytes) {
        if (m_isSilent)
            break;
        if (m_core.echo)
            m_output += byte;
        if (m_isAtPrompt)
            takeTextByte(byte);
        else
            takeByte(byte);
    }
    settle();
}

void ModemEngine::takeByte(char byte)
{
    if (byte == kCarriageReturn) {
        executeLine();
        m_input.clear();
        m_isTooLong = false;
    } else if (byte == kBackspace) {
        m_input.chop(1);
    } else if (static_cast<unsigned char>(byte) >= ' ') {
        // Other control characters count for nothing.
        m_isTooLong = m_isTooLong || m_input.size() >= kMaxLine;
        if (!m_isTooLong)
            m_input += byte;
    }
}

void ModemEngine::takeTextByte(char byte)
{
    if (byte == kBackspace) {
        m_input.chop(1);
        return;
    }
    if (byte != kEndOfText && byte != kEscape) {
        // One byte more than allowed says that it was too long.
        if (m_input.size() <= kMaxText)
            m_input += byte;
        return;
    }
    const QByteArray text = m_input;
    const auto takeText = m_core.takeText;
    m_isAtPrompt = false;
    m_input.clear();
    m_core.takeText = nullptr;
    finish(byte == kEscape ? AtResult::ok() : takeText(text));
}

void ModemEngine::executeLine()
{
    m_running.clear();
    m_information.clear();
    if (m_isTooLong) {
        finish(AtResult::error());
        return;
    }
    const QByteArray body = commandBody(m_input);
    if (body.isNull())
        return;
    const AtResult result = executeCommands(parseAtLine(body));
    if (result.kind != AtResult::Prompt) {
        finish(result);
        return;
    }
    m_isAtPrompt = true;
    m_output += m_information + "\r\n> ";
    m_information.clear();
}

// The first failure ends the line; what the commands before it have answered stands.
AtResult ModemEngine::executeCommands(const AtLine& line)
{
    for (const AtCommand& command : line.commands) {
        m_running.push_back(command.name);
        const auto handler = m_commands.constFind(command.name);
        const AtResult result =
            handler == m_commands.constEnd() ? AtResult::error() : (*handler)(command);
        if (!m_core.lines.empty())
            m_information += framed(joined(m_core.lines));
        m_core.lines.clear();
        if (result.kind != AtResult::Ok)
            return result;
    }
    return line.isComplete ? AtResult::ok() : AtResult::error();
}

void ModemEngine::finish(const AtResult& result)
{
    if (!m_core.lines.empty())
        m_information += framed(joined(m_core.lines));
    m_core.lines.clear();
    Answer answer{m_information, framed(resultText(result, m_core.errorForm))};
    m_faults.apply(m_running, answer);
    if (answer.delay > 0) {
        if (m_hooks.send && !m_output.isEmpty())
            m_hooks.send(m_output);
        m_output.clear();
        if (m_hooks.delay)
            m_hooks.delay(answer.delay);
    }
    m_output += answer.information + answer.final;
    m_information.clear();
    settle();
    if (m_hooks.answered)
        m_hooks.answered(m_running);
}

void ModemEngine::hangUp()
{
    m_input.clear();
    m_isTooLong = false;
    m_isAtPrompt = false;
    m_core.takeText = nullptr;
    settle();
}

bool ModemEngine::perform(const QString& line)
{
    const auto handler = m_words.constFind(line.section(QLatin1Char(' '), 0, 0));
    if (handler == m_words.constEnd())
        return false;
    const bool done = (*handler)(line.section(QLatin1Char(' '), 1));
    settle();
    return done;
}

void ModemEngine::walk()
{
    const int rssi = m_core.state.network.signal;
    m_network->setSignal(rssi >= 10 && rssi < 28 ? rssi + 3 : 10);
    settle();
}

void ModemEngine::sendReports()
{
    for (const QByteArray& report : m_core.reports)
        m_output += framed(report);
    m_core.reports.clear();
}

// What is to leave leaves; a report waits until no text is being entered. A change is kept before
// the other side hears of it.
void ModemEngine::settle()
{
    if (!m_isAtPrompt)
        sendReports();
    const QByteArray output = m_output;
    m_output.clear();
    const bool hasChanged = m_core.hasChanged;
    m_core.hasChanged = false;
    if (hasChanged && m_hooks.stateChanged)
        m_hooks.stateChanged();
    if (m_hooks.send && !output.isEmpty() && !m_isSilent)
        m_hooks.send(output);
}
