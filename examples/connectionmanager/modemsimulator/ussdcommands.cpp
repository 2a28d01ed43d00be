#include "modemsimulator/ussdcommands.h"

#include "common/codes.h"
#include "common_function.h"

namespace {

// 3GPP TS 23.038, 5.
constexpr int kGsmCoding = 15;
constexpr int Ucs2Coding = 72;

// <m> of "+CUSD".
enum UssdType { ActionRequired = 1, NotSupported = 4, LastType = 5 };

} // namespace

UssdCommands::UssdCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("+CUSD", &UssdCommands::ussd);
    word("ussd", &UssdCommands::ussdWord);
}

void UssdCommands::registrationChanged()
{
    if (!m_core.isRegistered())
        m_dialogue.clear();
}

AtResult UssdCommands::ussd(const AtCommand& command)
{
    if (command.form == AtCommand::Test || command.form == AtCommand::Read) {
        answer(command, command.form == AtCommand::Test ? QByteArrayLiteral("(0-2)")
                                                        : QByteArray::number(m_reporting));
        return AtResult::ok();
    }
    const int mode = command.number(0, 0);
    const int coding = command.number(2, kGsmCoding);
    QString text;
    if (mode < 0 || mode > 2 || coding < 0 || coding > 255 ||
        !decodedText(m_core.charset, command.text(1), &text))
        return AtResult::cme(AtError::IncorrectParameters);
    if (mode == 2) {
        m_dialogue.clear();
        return AtResult::ok();
    }
    if (!text.isEmpty()) {
        if (m_core.simError() != AtError::None)
            return AtResult::cme(m_core.simError());
        if (!m_core.isRegistered())
            return AtResult::cme(AtError::NoNetworkService);
    }
    m_reporting = mode;
    if (!text.isEmpty())
        ask(text);
    return AtResult::ok();
}

// Inside a dialogue a text that does not go on with it begins another one.
void UssdCommands::ask(const QString& text)
{
    QString request = m_dialogue.isEmpty() ? text : m_dialogue + QLatin1Char('>') + text;
    const UssdState* found = find(request);
    if (found == nullptr) {
        request = text;
        found = find(request);
    }
    m_dialogue.clear();
    if (found == nullptr) {
        report(NotSupported, QString());
        return;
    }
    if (found->type == ActionRequired)
        m_dialogue = request;
    report(found->type, found->text);
}

const UssdState* UssdCommands::find(const QString& request) const
{
    for (const UssdState& candidate : m_core.state.ussd) {
        if (candidate.request == request)
            return &candidate;
    }
    return nullptr;
}

void UssdCommands::report(int type, const QString& text)
{
    if (m_reporting != 1)
        return;
    QByteArray line = "+CUSD: " + QByteArray::number(type);
    if (!text.isEmpty())
        line += ',' + m_core.quoted(text) + ',' +
                QByteArray::number(GetEncodeType(text.utf16()) == 0 ? kGsmCoding : Ucs2Coding);
    m_core.report(line);
}

bool UssdCommands::ussdWord(const QString& arguments)
{
    bool isNumber = false;
    const int type = arguments.section(QLatin1Char(' '), 0, 0).toInt(&isNumber);
    if (!isNumber || type < 0 || type > LastType || !m_core.isRegistered())
        return false;
    report(type, arguments.section(QLatin1Char(' '), 1));
    return true;
}
