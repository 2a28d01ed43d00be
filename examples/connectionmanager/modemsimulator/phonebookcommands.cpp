#include "modemsimulator/phonebookcommands.h"

#include "common/codes.h"
#include "common_function.h"

#include <algorithm>

namespace {

constexpr int kMaxNumber = 40;
constexpr int kMaxName = 30; // bytes on the SIM

// 3GPP TS 27.007, 9.2.
enum PhonebookError { TextTooLong = 24, InvalidText = 25, NumberTooLong = 26, InvalidNumber = 27 };

bool isDialString(const QByteArray& number)
{
    return std::all_of(number.begin(), number.end(), [](char c) {
        return c != '\0' && QByteArray("0123456789*#+PWpw,").contains(c);
    });
}

int bytesOnSim(const QString& name)
{
    const std::wstring wide = name.toStdWString();
    return ParseContactNameConvert(wide.c_str(), static_cast<int>(wide.size()));
}

} // namespace

PhonebookCommands::PhonebookCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("+CPBS", &PhonebookCommands::storage);
    command("+CPBR", &PhonebookCommands::read);
    command("+CPBW", &PhonebookCommands::write);
}

AtResult PhonebookCommands::storage(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(\"SM\")");
        return AtResult::ok();
    }
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    if (command.form == AtCommand::Set)
        return AtResult::cme(command.text(0).toUpper() == "SM" ? AtError::None
                                                               : AtError::OperationNotSupported);
    if (command.form != AtCommand::Read)
        return AtResult::cme(AtError::OperationNotSupported);
    answer(command, "\"SM\"," + QByteArray::number(static_cast<int>(m_core.state.contacts.size())) +
                        ',' + QByteArray::number(m_core.state.contactRoom));
    return AtResult::ok();
}

AtResult PhonebookCommands::read(const AtCommand& command)
{
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    if (command.form == AtCommand::Set)
        return readRange(command);
    if (command.form != AtCommand::Test)
        return AtResult::cme(AtError::OperationNotSupported);
    answer(command, "(1-" + QByteArray::number(m_core.state.contactRoom) + ")," +
                        QByteArray::number(kMaxNumber) + ',' + QByteArray::number(kMaxName));
    return AtResult::ok();
}

// Free places are passed over.
AtResult PhonebookCommands::readRange(const AtCommand& command)
{
    const int first = command.number(0);
    const int last = command.number(1, first);
    if (!isPlace(first) || !isPlace(last))
        return AtResult::cme(AtError::InvalidIndex);
    for (const ContactState& contact : m_core.state.contacts) {
        if (contact.index < first || contact.index > last)
            continue;
        const QByteArray type = contact.number.startsWith(QLatin1Char('+')) ? "145" : "129";
        answer(command, QByteArray::number(contact.index) + ",\"" + contact.number.toLatin1() +
                            "\"," + type + ',' + m_core.quoted(contact.name));
    }
    return AtResult::ok();
}

AtResult PhonebookCommands::write(const AtCommand& command)
{
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    if (command.form == AtCommand::Test) {
        answer(command, "(1-" + QByteArray::number(m_core.state.contactRoom) + ")," +
                            QByteArray::number(kMaxNumber) + ",(129,145)," +
                            QByteArray::number(kMaxName));
        return AtResult::ok();
    }
    if (command.form != AtCommand::Set)
        return AtResult::cme(AtError::OperationNotSupported);
    if (command.parameters.size() > 1)
        return store(command);
    const int index = command.number(0);
    if (!isPlace(index))
        return AtResult::cme(AtError::InvalidIndex);
    if (remove(index))
        m_core.changed();
    return AtResult::ok();
}

AtResult PhonebookCommands::store(const AtCommand& command)
{
    ContactState contact;
    const QByteArray number = command.text(1);
    const int type = command.number(2, number.startsWith('+') ? 145 : 129);
    if (!isDialString(number))
        return AtResult::cme(InvalidNumber);
    if (number.size() > kMaxNumber)
        return AtResult::cme(NumberTooLong);
    if (type != 129 && type != 145)
        return AtResult::cme(AtError::IncorrectParameters);
    if (!decodedText(m_core.charset, command.text(3), &contact.name))
        return AtResult::cme(InvalidText);
    if (contact.name.size() > kMaxName || bytesOnSim(contact.name) > kMaxName)
        return AtResult::cme(TextTooLong);
    contact.number = QString::fromLatin1(number);
    if (type == 145 && !number.startsWith('+'))
        contact.number.prepend(QLatin1Char('+'));
    contact.index = command.number(0, m_core.state.freeContactIndex());
    if (contact.index == 0 && !command.has(0))
        return AtResult::cme(AtError::MemoryFull);
    if (!isPlace(contact.index))
        return AtResult::cme(AtError::InvalidIndex);
    remove(contact.index);
    m_core.state.insert(contact);
    m_core.changed();
    return AtResult::ok();
}

bool PhonebookCommands::remove(int index)
{
    auto& contacts = m_core.state.contacts;
    const auto found =
        std::find_if(contacts.begin(), contacts.end(),
                     [index](const ContactState& contact) { return contact.index == index; });
    if (found == contacts.end())
        return false;
    contacts.erase(found);
    return true;
}
