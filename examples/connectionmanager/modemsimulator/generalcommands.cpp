#include "modemsimulator/generalcommands.h"

#include "common/codes.h"

GeneralCommands::GeneralCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("E", &GeneralCommands::echo);
    command("Z", &GeneralCommands::restart);
    command("&F", &GeneralCommands::restart);
    command("+CMEE", &GeneralCommands::errorForm);
    command("+CSCS", &GeneralCommands::charset);
    command("+CGMI", &GeneralCommands::manufacturer);
    command("+CGMM", &GeneralCommands::model);
    command("+CGMR", &GeneralCommands::revision);
    command("+CGSN", &GeneralCommands::serialNumber);
    command("+CIMI", &GeneralCommands::imsi);
    command("+CNUM", &GeneralCommands::ownNumber);
    command("+CCID", &GeneralCommands::iccid);
    word("report", &GeneralCommands::report);
}

void GeneralCommands::reset()
{
    m_core.echo = true;
    m_core.errorForm = 0;
    m_core.charset = TeCharset::Ira;
}

AtResult GeneralCommands::echo(const AtCommand& command)
{
    const int number = command.number(0, 0);
    if (number > 1)
        return AtResult::error();
    m_core.echo = number == 1;
    return AtResult::ok();
}

AtResult GeneralCommands::restart(const AtCommand& command)
{
    if (command.number(0, 0) != 0)
        return AtResult::error();
    for (CommandFamily* family : m_core.families)
        family->reset();
    return AtResult::ok();
}

AtResult GeneralCommands::errorForm(const AtCommand& command)
{
    return numberSetting(command, 2, m_core.errorForm);
}

AtResult GeneralCommands::charset(const AtCommand& command)
{
    switch (command.form) {
    case AtCommand::Test:
        answer(command, "(\"GSM\",\"IRA\",\"UCS2\")");
        return AtResult::ok();
    case AtCommand::Read:
        answer(command, '"' + charsetName(m_core.charset) + '"');
        return AtResult::ok();
    case AtCommand::Set:
        return charsetByName(command.text(0), &m_core.charset)
                   ? AtResult::ok()
                   : AtResult::cme(AtError::OperationNotSupported);
    default:
        return AtResult::cme(AtError::OperationNotSupported);
    }
}

// The commands of this kind answer with the bare text.
AtResult GeneralCommands::identity(const AtCommand& command, const QByteArray& text, int error)
{
    if (command.form == AtCommand::Test)
        return AtResult::ok();
    if (command.form != AtCommand::Execute)
        return AtResult::cme(AtError::OperationNotSupported);
    if (error == AtError::None)
        m_core.answer(text);
    return AtResult::cme(error);
}

AtResult GeneralCommands::manufacturer(const AtCommand& command)
{
    return identity(command, encodedText(TeCharset::Ira, m_core.state.equipment.manufacturer));
}

AtResult GeneralCommands::model(const AtCommand& command)
{
    return identity(command, encodedText(TeCharset::Ira, m_core.state.equipment.model));
}

AtResult GeneralCommands::revision(const AtCommand& command)
{
    return identity(command, encodedText(TeCharset::Ira, m_core.state.equipment.revision));
}

AtResult GeneralCommands::serialNumber(const AtCommand& command)
{
    return identity(command, encodedText(TeCharset::Ira, m_core.state.equipment.serialNumber));
}

AtResult GeneralCommands::imsi(const AtCommand& command)
{
    return identity(command, m_core.state.sim.imsi.toLatin1(), m_core.simError());
}

AtResult GeneralCommands::ownNumber(const AtCommand& command)
{
    const QString number = m_core.state.sim.number;
    const QByteArray type = number.startsWith(QLatin1Char('+')) ? "145" : "129";
    return identity(command,
                    "+CNUM: " + m_core.quoted(QString()) + ",\"" + number.toLatin1() + "\"," + type,
                    m_core.simError());
}

// To be had without the PIN.
AtResult GeneralCommands::iccid(const AtCommand& command)
{
    return identity(command, "+CCID: " + m_core.state.sim.iccid.toLatin1(),
                    m_core.state.sim.inserted ? AtError::None : AtError::SimNotInserted);
}

bool GeneralCommands::report(const QString& line)
{
    m_core.report(line.toUtf8());
    return !line.isEmpty();
}
