#include "modemsimulator/simcommands.h"

#include "common/codes.h"

namespace {

constexpr int kPinAttempts = 3;
constexpr int kPukAttempts = 10;

bool isCode(const QByteArray& code, int shortest, int longest)
{
    for (const char c : code) {
        if (c < '0' || c > '9')
            return false;
    }
    return code.size() >= shortest && code.size() <= longest;
}

bool isPin(const QByteArray& code)
{
    return isCode(code, 4, 8);
}

} // namespace

SimCommands::SimCommands(ModemCore& core)
    : CommandFamily(core)
{
    command("+CPIN", &SimCommands::pin);
    command("+CPINR", &SimCommands::attempts);
    command("+CLCK", &SimCommands::lock);
    command("+CPWD", &SimCommands::password);
    word("sim", &SimCommands::moveSim);
}

AtResult SimCommands::pin(const AtCommand& command)
{
    if (command.form == AtCommand::Test)
        return AtResult::ok();
    if (command.form == AtCommand::Set)
        return enter(command);
    if (command.form != AtCommand::Read)
        return AtResult::cme(AtError::OperationNotSupported);
    switch (const int error = m_core.simError()) {
    case AtError::None:
        answer(command, "READY");
        return AtResult::ok();
    case AtError::SimPinRequired:
        answer(command, "SIM PIN");
        return AtResult::ok();
    case AtError::SimPukRequired:
        answer(command, "SIM PUK");
        return AtResult::ok();
    default:
        return AtResult::cme(error);
    }
}

AtResult SimCommands::enter(const AtCommand& command)
{
    const int error = m_core.simError();
    if (command.parameters.size() == 2 && error == AtError::SimPukRequired)
        return unblock(command.text(0), command.text(1));
    if (error == AtError::None)
        return AtResult::cme(AtError::OperationNotAllowed);
    if (error != AtError::SimPinRequired)
        return AtResult::cme(error);
    if (command.parameters.size() != 1)
        return AtResult::cme(AtError::OperationNotAllowed);
    if (!isPin(command.text(0)))
        return AtResult::cme(AtError::IncorrectParameters);
    const int refused = tryPin(command.text(0));
    if (refused == AtError::None) {
        m_core.pinVerified = true;
        m_core.simChanged();
    }
    return AtResult::cme(refused);
}

AtResult SimCommands::unblock(const QByteArray& puk, const QByteArray& newPin)
{
    SimState& sim = m_core.state.sim;
    if (!isCode(puk, 8, 8) || !isPin(newPin))
        return AtResult::cme(AtError::IncorrectParameters);
    m_core.changed();
    if (puk != sim.puk.toLatin1()) {
        --sim.pukAttempts;
        return AtResult::cme(sim.pukAttempts == 0 ? AtError::SimFailure
                                                  : AtError::IncorrectPassword);
    }
    sim.pin = QString::fromLatin1(newPin);
    sim.pinAttempts = kPinAttempts;
    sim.pukAttempts = kPukAttempts;
    m_core.pinVerified = true;
    m_core.simChanged();
    return AtResult::ok();
}

// One attempt at the PIN, whatever for.
int SimCommands::tryPin(const QByteArray& pin)
{
    SimState& sim = m_core.state.sim;
    m_core.changed();
    if (pin == sim.pin.toLatin1()) {
        sim.pinAttempts = kPinAttempts;
        return AtError::None;
    }
    if (--sim.pinAttempts > 0)
        return AtError::IncorrectPassword;
    m_core.pinVerified = false;
    m_core.simChanged();
    return AtError::SimPukRequired;
}

AtResult SimCommands::attempts(const AtCommand& command)
{
    if (command.form == AtCommand::Test)
        return AtResult::ok();
    const SimState& sim = m_core.state.sim;
    if (!sim.inserted)
        return AtResult::cme(AtError::SimNotInserted);
    const QByteArray code = command.text(0).toUpper();
    if (command.form == AtCommand::Read ||
        (!code.isEmpty() && code != "SIM PIN" && code != "SIM PUK"))
        return AtResult::cme(AtError::OperationNotSupported);
    if (code != "SIM PUK")
        answer(command, "SIM PIN," + QByteArray::number(sim.pinAttempts) + ',' +
                            QByteArray::number(kPinAttempts));
    if (code != "SIM PIN")
        answer(command, "SIM PUK," + QByteArray::number(sim.pukAttempts) + ',' +
                            QByteArray::number(kPukAttempts));
    return AtResult::ok();
}

AtResult SimCommands::lock(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(\"SC\")");
        return AtResult::ok();
    }
    if (command.form != AtCommand::Set || command.text(0).toUpper() != "SC")
        return AtResult::cme(AtError::OperationNotSupported);
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    bool& pinAsked = m_core.state.sim.pinAsked;
    const int mode = command.number(1);
    if (mode == 2) {
        answer(command, pinAsked ? "1" : "0");
        return AtResult::ok();
    }
    if (mode < 0 || mode > 2 || !isPin(command.text(2)))
        return AtResult::cme(AtError::IncorrectParameters);
    const int error = tryPin(command.text(2));
    if (error == AtError::None) {
        pinAsked = mode == 1;
        m_core.pinVerified = true; // it is in use, and remains so
    }
    return AtResult::cme(error);
}

AtResult SimCommands::password(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(\"SC\",8)");
        return AtResult::ok();
    }
    if (command.form != AtCommand::Set || command.text(0).toUpper() != "SC")
        return AtResult::cme(AtError::OperationNotSupported);
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    // A PIN that is not asked for cannot be changed.
    if (!m_core.state.sim.pinAsked)
        return AtResult::cme(AtError::OperationNotAllowed);
    if (!isPin(command.text(1)) || !isPin(command.text(2)))
        return AtResult::cme(AtError::IncorrectParameters);
    const int error = tryPin(command.text(1));
    if (error == AtError::None)
        m_core.state.sim.pin = QString::fromLatin1(command.text(2));
    return AtResult::cme(error);
}

bool SimCommands::moveSim(const QString& where)
{
    if (where != QLatin1String("in") && where != QLatin1String("out"))
        return false;
    m_core.state.sim.inserted = where == QLatin1String("in");
    m_core.pinVerified = false;
    m_core.changed();
    m_core.simChanged();
    return true;
}
