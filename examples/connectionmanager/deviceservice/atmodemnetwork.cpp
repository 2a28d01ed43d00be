// The network, and the connection over it.

#include "common/codes.h"
#include "deviceservice/atanswers.h"
#include "deviceservice/atmodem.h"

using namespace AtText;

namespace {

bool isNumeric(const QString& text)
{
    bool isNumber = false;
    text.toUInt(&isNumber);
    return isNumber && (text.size() == 5 || text.size() == 6);
}

// "*99#", "*98*1#" and the like: the packet service, which a context stands for.
bool isPacketService(const QString& number)
{
    return number.startsWith(QLatin1String("*9")) && number.endsWith(QLatin1Char('#'));
}

std::optional<AtAnswer::Place> readPlace(const QByteArray& line)
{
    return AtAnswer::place(line);
}

} // namespace

int AtModem::networkInfo(BLNetworkInfo& info)
{
    int error = askFor("AT+COPS?", "+COPS:", info, [info](const QByteArray& line) mutable {
        return AtAnswer::readOperator(line, info) ? std::optional<BLNetworkInfo>(info)
                                                  : std::nullopt;
    });
    if (error == AtError::None)
        error = askFor("AT+CSQ", "+CSQ:", info.nRssi, AtAnswer::signalStrength);
    AtAnswer::Place place;
    if (error == AtError::None)
        error = askFor("AT+CREG?", "+CREG:", place, readPlace);
    info.nRoamState = place.state == Registration::Roaming ? 1 : 0;
    if (error == AtError::None)
        error = askFor("AT+CGREG?", "+CGREG:", place, readPlace);
    info.nGprsState = place.state;
    return error;
}

int AtModem::registration(BLNetRegState& state)
{
    AtAnswer::Place place;
    const int error = askFor("AT+CREG?", "+CREG:", place, readPlace);
    state.nState = place.state;
    return error;
}

int AtModem::cell(BLNetLacAndCellID& cell)
{
    AtAnswer::Place place;
    const int error = askFor("AT+CREG?", "+CREG:", place, readPlace);
    if (error != AtError::None)
        return error;
    if (!place.area || !place.cell)
        return AtError::NoNetworkService;
    cell.nLac = *place.area;
    cell.nCellID = *place.cell;
    return AtError::None;
}

int AtModem::searchNetworks(BLNetworkListCnf& networks)
{
    return askFor("AT+COPS=?", "+COPS:", networks, AtAnswer::networks, AtWait::Search);
}

int AtModem::selectNetwork(const BLNetworkSet& selection)
{
    QByteArray command = "AT+COPS=0";
    if (selection.nMode != SelectionMode::Automatic) {
        const QString& name = selection.strOperator;
        if (name.isEmpty())
            return AtError::IncorrectParameters;
        const int format = isNumeric(name) ? OperatorFormat::Numeric : OperatorFormat::Long;
        command = "AT+COPS=1," + QByteArray::number(format) + ",\"" +
                  (isQuotable(name) ? name.toLatin1() : encoded(name)) + '"';
    }
    const int error = tell(command, AtWait::Network);
    // Every selection is reported, also one of the network that was in use.
    if (error == AtError::None) {
        m_signalReport = command;
        handleLater();
    }
    return error;
}

// Whether our context is active, by what the modem says now.
int AtModem::contextState(bool& isActive)
{
    const AtReply reply = ask("AT+CGACT?", "+CGACT:");
    if (reply.error != AtError::None)
        return reply.error;
    const std::optional<bool> state = AtAnswer::isActive(reply.lines, kContext);
    if (!state)
        return answerNotUnderstood("AT+CGACT?", reply.lines.value(0));
    isActive = *state;
    // Noticed here first when the modem has not reported it.
    if (isActive && !m_isConnected)
        setConnected(true, QStringLiteral("CONNECT"));
    return AtError::None;
}

int AtModem::dial(const BLConnectionDialUp& profile)
{
    if (profile.strAPN.isEmpty() || !isQuotable(profile.strAPN) || profile.strNumber.isEmpty())
        return AtError::IncorrectParameters;
    if (!isPacketService(profile.strNumber) || !profile.strUserName.isEmpty())
        return AtError::OperationNotSupported;
    bool isActive = false;
    int error = contextState(isActive);
    if (error == AtError::None && isActive)
        error = AtError::OperationNotAllowed;
    const QByteArray context = QByteArray::number(kContext);
    if (error == AtError::None)
        error = tell("AT+CGDCONT=" + context + ",\"IP\",\"" + profile.strAPN.toLatin1() + '"');
    if (error == AtError::None)
        error = tell("AT+CGACT=1," + context, AtWait::Network);
    if (error == AtError::None)
        setConnected(true, QStringLiteral("CONNECT"));
    return error;
}

int AtModem::hangUp()
{
    bool isActive = false;
    int error = contextState(isActive);
    if (error == AtError::None && !isActive)
        error = AtError::OperationNotAllowed;
    if (error == AtError::None)
        error = tell("AT+CGACT=0," + QByteArray::number(kContext), AtWait::Network);
    if (error == AtError::None)
        setConnected(false, QStringLiteral("hung up"));
    return error;
}

int AtModem::connectState(BLConnectState& state)
{
    bool isActive = false;
    const int error = contextState(isActive);
    if (error == AtError::None && !isActive)
        setConnected(false, QStringLiteral("the context is not active"));
    state.nState = isActive ? Connection::Connected : Connection::Disconnected;
    return error;
}

// Reports a change, and only a change: the modem may tell of what we have done ourselves.
void AtModem::setConnected(bool isConnected, const QString& text)
{
    if (isConnected == m_isConnected)
        return;
    m_isConnected = isConnected;
    m_connectedFor.start();
    CDataValue data(isConnected ? Connection::Connected : Connection::Disconnected);
    Q_EMIT reported(QLatin1String(ModemEvent::Connection), text, &data);
}

int AtModem::statistics(BLConnectionStatistics& statistics)
{
    if (!m_channel.isOpen())
        return AtError::NoConnection;
    if (!m_isConnected)
        return AtError::None;
    constexpr int kUnknown = -1;
    statistics.dwDuration = m_connectedFor.elapsed() / 1000;
    statistics.dwByteTransferred = kUnknown;
    statistics.dwByteReceived = kUnknown;
    statistics.dwByteSent = kUnknown;
    statistics.dwRateReceived = kUnknown;
    statistics.dwRateSent = kUnknown;
    statistics.dwRateMax = kUnknown;
    return AtError::None;
}
