#include "modemsimulator/networkcommands.h"

#include "common/codes.h"

namespace {

constexpr int kMaxSignal = 31;
constexpr int kUnknownSignal = 99;

// The indicators of "+CIND" by their number.
enum Indicator { Signal = 2, Service = 3, Roaming = 4 };

// 0 to 5, for the bars of a display.
int bars(int rssi)
{
    return rssi > kMaxSignal ? 0 : qMin(5, (rssi + 5) / 6);
}

QByteArray plainQuoted(const QString& text)
{
    return '"' + encodedText(TeCharset::Ira, text) + '"';
}

} // namespace

NetworkCommands::NetworkCommands(ModemCore& core)
    : CommandFamily(core)
    , m_reportedRegistration(registrationText(2))
    , m_reported(currentIndicators())
{
    command("+CSQ", &NetworkCommands::signalQuality);
    command("+CREG", &NetworkCommands::circuitRegistration);
    command("+CGREG", &NetworkCommands::packetRegistration);
    command("+COPS", &NetworkCommands::operators);
    command("+CIND", &NetworkCommands::indicators);
    command("+CMER", &NetworkCommands::events);
    word("signal", &NetworkCommands::signalWord);
    word("registration", &NetworkCommands::registrationWord);
}

void NetworkCommands::reset()
{
    m_circuitForm = 0;
    m_packetForm = 0;
    m_operatorFormat = 0;
    m_events = 0;
}

// The radio works without a SIM.
AtResult NetworkCommands::signalQuality(const AtCommand& command)
{
    if (command.form == AtCommand::Test)
        answer(command, "(0-31,99),(99)");
    else if (command.form == AtCommand::Execute)
        answer(command, QByteArray::number(m_core.state.network.signal) + ",99");
    else
        return AtResult::cme(AtError::OperationNotSupported);
    return AtResult::ok();
}

AtResult NetworkCommands::circuitRegistration(const AtCommand& command)
{
    return registration(command, m_circuitForm);
}

AtResult NetworkCommands::packetRegistration(const AtCommand& command)
{
    return registration(command, m_packetForm);
}

AtResult NetworkCommands::registration(const AtCommand& command, int& form)
{
    if (command.form != AtCommand::Read)
        return numberSetting(command, 2, form);
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    answer(command, QByteArray::number(form) + ',' + registrationText(form));
    return AtResult::ok();
}

// The place and the technology come with form 2 and where there is a network only.
QByteArray NetworkCommands::registrationText(int form) const
{
    QByteArray status = QByteArray::number(m_core.registration());
    if (form < 2 || !m_core.isRegistered())
        return status;
    return status + ",\"" + m_core.state.network.area.toLatin1() + "\",\"" +
           m_core.state.network.cell.toLatin1() + "\"," +
           QByteArray::number(m_core.operatorInUse().technology);
}

void NetworkCommands::registrationChanged()
{
    const QByteArray current = registrationText(2);
    if (current != m_reportedRegistration) {
        m_reportedRegistration = current;
        if (m_circuitForm > 0)
            m_core.report("+CREG: " + registrationText(m_circuitForm));
        if (m_packetForm > 0)
            m_core.report("+CGREG: " + registrationText(m_packetForm));
    }
    reportIndicators();
}

AtResult NetworkCommands::operators(const AtCommand& command)
{
    if (m_core.simError() != AtError::None)
        return AtResult::cme(m_core.simError());
    switch (command.form) {
    case AtCommand::Test:
        answer(command, operatorList() + ",,(0-4),(0-2)");
        return AtResult::ok();
    case AtCommand::Read:
        answerOperator(command);
        return AtResult::ok();
    case AtCommand::Set:
        return selectOperator(command);
    default:
        return AtResult::cme(AtError::OperationNotSupported);
    }
}

void NetworkCommands::answerOperator(const AtCommand& command)
{
    const OperatorState& current = m_core.operatorInUse();
    const QString names[] = {current.longName, current.shortName, current.numeric};
    QByteArray values = QByteArray::number(m_core.state.network.mode);
    if (m_core.isRegistered())
        values += ',' + QByteArray::number(m_operatorFormat) + ',' +
                  plainQuoted(names[m_operatorFormat]) + ',' +
                  QByteArray::number(current.technology);
    answer(command, values);
}

QByteArray NetworkCommands::operatorList() const
{
    QByteArray list;
    for (const OperatorState& one : m_core.state.network.operators) {
        int status = Availability::Available;
        if (one.forbidden)
            status = Availability::Forbidden;
        else if (m_core.isRegistered() && one.numeric == m_core.state.network.selected)
            status = Availability::Current;
        list += (list.isEmpty() ? "(" : ",(") + QByteArray::number(status) + ',' +
                plainQuoted(one.longName) + ',' + plainQuoted(one.shortName) + ',' +
                plainQuoted(one.numeric) + ',' + QByteArray::number(one.technology) + ')';
    }
    return list;
}

const OperatorState* NetworkCommands::findOperator(int format, const QByteArray& name) const
{
    for (const OperatorState& one : m_core.state.network.operators) {
        const QString names[] = {one.longName, one.shortName, one.numeric};
        if (encodedText(TeCharset::Ira, names[format]) == name)
            return &one;
    }
    return nullptr;
}

AtResult NetworkCommands::selectOperator(const AtCommand& command)
{
    const int mode = command.number(0, 0);
    const int format = command.number(1, m_operatorFormat);
    if (mode < 0 || mode > 4 || format < 0 || format > 2)
        return AtResult::cme(AtError::IncorrectParameters);
    if (mode == 3) {
        m_operatorFormat = format;
        return AtResult::ok();
    }
    NetworkState& network = m_core.state.network;
    const OperatorState* wanted = &network.operators.front();
    if (mode == SelectionMode::Manual || mode == 4) {
        if (!command.has(2))
            return AtResult::cme(AtError::IncorrectParameters);
        wanted = findOperator(format, command.text(2));
        const int technology = command.number(3, wanted == nullptr ? 0 : wanted->technology);
        int error = AtError::None;
        if (wanted == nullptr)
            error = AtError::NotFound;
        else if (wanted->forbidden || wanted->technology != technology)
            error = AtError::NoNetworkService;
        if (error != AtError::None && mode == SelectionMode::Manual)
            return AtResult::cme(error);
        if (error != AtError::None)
            wanted = &network.operators.front();
    }
    network.mode = mode == 4 ? SelectionMode::Manual : mode;
    network.selected = wanted->numeric;
    network.registration = -1;
    m_core.changed();
    m_core.registrationChanged();
    return AtResult::ok();
}

NetworkCommands::Indicators NetworkCommands::currentIndicators() const
{
    return {bars(m_core.state.network.signal), m_core.isRegistered() ? 1 : 0,
            m_core.registration() == Registration::Roaming ? 1 : 0};
}

AtResult NetworkCommands::indicators(const AtCommand& command)
{
    const Indicators now = currentIndicators();
    if (command.form == AtCommand::Test)
        answer(command, "(\"battchg\",(0-5)),(\"signal\",(0-5)),(\"service\",(0,1)),"
                        "(\"roam\",(0,1))");
    else if (command.form == AtCommand::Read)
        answer(command, "5," + QByteArray::number(now.signal) + ',' +
                            QByteArray::number(now.service) + ',' +
                            QByteArray::number(now.roaming));
    else
        return AtResult::cme(AtError::OperationNotSupported);
    return AtResult::ok();
}

AtResult NetworkCommands::events(const AtCommand& command)
{
    if (command.form == AtCommand::Test) {
        answer(command, "(0,3),(0),(0),(0,1),(0)");
        return AtResult::ok();
    }
    if (command.form == AtCommand::Read) {
        answer(command, m_events == 0 ? "0,0,0,0,0" : "3,0,0,1,0");
        return AtResult::ok();
    }
    const int mode = command.number(0, 0);
    const int indicator = command.number(3, 0);
    const bool othersAreZero = command.number(1, 0) == 0 && command.number(2, 0) == 0 &&
                               command.number(4, 0) == 0 && command.parameters.size() <= 5;
    if (!othersAreZero || (mode != 0 && mode != 3) || indicator < 0 || indicator > 1)
        return AtResult::cme(AtError::IncorrectParameters);
    m_events = mode == 3 ? indicator : 0;
    m_reported = currentIndicators();
    return AtResult::ok();
}

void NetworkCommands::reportIndicators()
{
    const Indicators now = currentIndicators();
    const auto report = [this](Indicator indicator, int before, int value) {
        if (m_events != 0 && before != value)
            m_core.report("+CIEV: " + QByteArray::number(indicator) + ',' +
                          QByteArray::number(value));
    };
    report(Signal, m_reported.signal, now.signal);
    report(Service, m_reported.service, now.service);
    report(Roaming, m_reported.roaming, now.roaming);
    m_reported = now;
}

void NetworkCommands::setSignal(int rssi)
{
    m_core.state.network.signal = rssi >= 0 && rssi <= kMaxSignal ? rssi : kUnknownSignal;
    m_core.changed();
    reportIndicators();
}

bool NetworkCommands::signalWord(const QString& arguments)
{
    bool isNumber = false;
    const int rssi = arguments.toInt(&isNumber);
    if (isNumber)
        setSignal(rssi);
    return isNumber;
}

bool NetworkCommands::registrationWord(const QString& arguments)
{
    bool isNumber = false;
    const int status = arguments == QLatin1String("auto") ? -1 : arguments.toInt(&isNumber);
    if (status < -1 || status > Registration::Roaming || (!isNumber && status != -1))
        return false;
    m_core.state.network.registration = status;
    m_core.changed();
    m_core.registrationChanged();
    return true;
}
