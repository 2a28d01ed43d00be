#include "modemsimulator/commandfamily.h"

#include "common/codes.h"

AtResult CommandFamily::numberSetting(const AtCommand& command, int highest, int& value)
{
    switch (command.form) {
    case AtCommand::Test:
        answer(command, "(0-" + QByteArray::number(highest) + ')');
        return AtResult::ok();
    case AtCommand::Read:
        answer(command, QByteArray::number(value));
        return AtResult::ok();
    case AtCommand::Set: {
        const int number = command.number(0);
        if (number < 0 || number > highest || command.parameters.size() != 1)
            return AtResult::cme(AtError::IncorrectParameters);
        value = number;
        return AtResult::ok();
    }
    default:
        return AtResult::cme(AtError::OperationNotSupported);
    }
}

void CommandFamily::answer(const AtCommand& command, const QByteArray& values)
{
    m_core.answer(command.name + ": " + values);
}
