#include "deviceservice/simulatedmodem.h"

#include "common/codes.h"
#include "common/envelope.h"

#include <array>

namespace {

constexpr int UnknownSignal = 99;
constexpr int MaxSignal = 31;
constexpr long long BytesReceivedPerMs = 6000;
constexpr long long BytesSentPerMs = 1500;

struct Network
{
    const char* numeric;
    const char* longName;
    const char* shortName;
    int state;
    int technology;
};

// Codes of test networks, which no operator has.
constexpr std::array<Network, 3> Networks = {{
    {"00101", "Example Mobile", "Example", Availability::Current, AccessTechnology::Lte},
    {"00102", "Sample Telecom", "Sample", Availability::Available, AccessTechnology::Umts},
    {"99999", "Closed Network", "Closed", Availability::Forbidden, AccessTechnology::Gsm},
}};

const Network* findNetwork(const QString& name)
{
    for (const Network& network : Networks) {
        if (name == QLatin1String(network.numeric) || name == QLatin1String(network.longName) ||
            name == QLatin1String(network.shortName))
            return &network;
    }
    return nullptr;
}

bool isCode(const QString& code, int shortest, int longest)
{
    for (const QChar character : code) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return false;
    }
    return code.size() >= shortest && code.size() <= longest;
}

} // namespace

SimulatedModem::SimulatedModem(QObject* parent)
    : Modem(parent)
    , m_operator(QLatin1String(Networks[0].numeric))
    , m_pinState(PinState::PinNeeded)
{
    // Up and down between 10 and 28, as if somebody walked about.
    connect(&m_signalTimer, &QTimer::timeout, this,
            [this] { setSignal(m_rssi >= 10 && m_rssi < 28 ? m_rssi + 3 : 10); });
}

void SimulatedModem::changeSignalEvery(int milliseconds)
{
    if (milliseconds > 0)
        m_signalTimer.start(milliseconds);
    else
        m_signalTimer.stop();
}

void SimulatedModem::setSignal(int rssi)
{
    m_rssi = rssi >= 0 && rssi <= MaxSignal ? rssi : UnknownSignal;
    CDataValue data(m_rssi);
    Q_EMIT reported(QLatin1String(ModemEvent::Signal), QStringLiteral("+CSQ: %1,99").arg(m_rssi),
                    &data);
}

// What the SIM answers to a request that needs it.
int SimulatedModem::simError() const
{
    switch (m_pinState) {
    case PinState::Ready:
        return AtError::None;
    case PinState::PinNeeded:
        return AtError::SimPinRequired;
    case PinState::PukNeeded:
        return AtError::SimPukRequired;
    default:
        return AtError::SimFailure;
    }
}

int SimulatedModem::equipment(BLEquipmentInfo& info)
{
    info.strManufacturer = QStringLiteral("Example Devices");
    info.strModel = QStringLiteral("Simulated Modem");
    info.strRevision = QStringLiteral("1.0");
    info.strSerialNumber = QStringLiteral("490154203237518");
    info.strCommercialSerialNumber = QStringLiteral("SM-0001");
    info.strHardwareVersion = QStringLiteral("A");
    if (m_pinState == PinState::Ready) {
        info.strImsi = QStringLiteral("001010123456789");
        info.strMsisdn = QStringLiteral("+15550100");
    }
    return AtError::None;
}

int SimulatedModem::networkInfo(BLNetworkInfo& info)
{
    const Network& network = *findNetwork(m_operator);
    info.nMode = m_selectionMode;
    info.nFormat = OperatorFormat::Long;
    info.strOperator = QLatin1String(network.longName);
    info.strPnn = QLatin1String(network.shortName);
    info.nAct = network.technology;
    info.strSpName = QLatin1String(Networks[0].longName);
    info.nRssi = m_rssi;
    info.nRoamState = &network == &Networks[0] ? 0 : 1;
    info.nGprsState = 1;
    return simError();
}

int SimulatedModem::registration(BLNetRegState& state)
{
    state.nState = m_operator == QLatin1String(Networks[0].numeric) ? Registration::Home
                                                                    : Registration::Roaming;
    return simError();
}

int SimulatedModem::cell(BLNetLacAndCellID& cell)
{
    cell.nLac = 0x1A2B;
    cell.nCellID = 0x01C3D4E;
    return simError();
}

int SimulatedModem::searchNetworks(BLNetworkListCnf& networks)
{
    for (const Network& network : Networks) {
        BLNetworkListItem item;
        item.strLongAlpha = QLatin1String(network.longName);
        item.strShortAlpha = QLatin1String(network.shortName);
        item.strNumericAlpha = QLatin1String(network.numeric);
        item.nAct = network.technology;
        item.nState = network.state;
        if (item.nState != Availability::Forbidden)
            item.nState = item.strNumericAlpha == m_operator ? Availability::Current
                                                             : Availability::Available;
        networks.listNetworkItem.push_back(item);
    }
    return simError();
}

int SimulatedModem::selectNetwork(const BLNetworkSet& selection)
{
    if (simError() != AtError::None)
        return simError();
    const Network* network = selection.nMode == SelectionMode::Automatic
                                 ? Networks.data()
                                 : findNetwork(selection.strOperator);
    if (network == nullptr)
        return AtError::NotFound;
    if (network->state == Availability::Forbidden)
        return AtError::NoNetworkService;
    m_selectionMode = selection.nMode;
    m_operator = QLatin1String(network->numeric);
    setSignal(m_rssi);
    return AtError::None;
}

int SimulatedModem::pinState(BLPinCheckState& state)
{
    state.nState = m_pinState;
    state.nPinCnt = m_pinAttempts;
    state.nPukCnt = m_pukAttempts;
    return AtError::None;
}

// One attempt at the PIN, whatever for.
int SimulatedModem::tryPin(const QString& pin)
{
    if (pin == m_pin) {
        m_pinAttempts = 3;
        return AtError::None;
    }
    if (--m_pinAttempts > 0)
        return AtError::IncorrectPassword;
    m_pinState = PinState::PukNeeded;
    if (m_connected)
        hangUp();
    return AtError::SimPukRequired;
}

int SimulatedModem::verifyPin(const QString& pin)
{
    if (m_pinState == PinState::Ready)
        return AtError::OperationNotAllowed;
    if (m_pinState != PinState::PinNeeded)
        return simError();
    const int error = tryPin(pin);
    if (error == AtError::None)
        m_pinState = PinState::Ready;
    return error;
}

int SimulatedModem::unblockPin(const BLPINVerifyPukInfo& unblocking)
{
    if (m_pinState != PinState::PukNeeded)
        return m_pinState == PinState::Blocked ? AtError::SimFailure : AtError::OperationNotAllowed;
    if (!isCode(unblocking.strNewPin, 4, 8))
        return AtError::IncorrectParameters;
    if (unblocking.strPUK != m_puk) {
        if (--m_pukAttempts == 0)
            m_pinState = PinState::Blocked;
        return m_pukAttempts == 0 ? AtError::SimFailure : AtError::IncorrectPassword;
    }
    m_pin = unblocking.strNewPin;
    m_pinAttempts = 3;
    m_pukAttempts = 10;
    m_pinState = PinState::Ready;
    return AtError::None;
}

int SimulatedModem::changePin(const BLPINChangeInfo& change)
{
    if (simError() != AtError::None)
        return simError();
    if (!m_pinAsked)
        return AtError::OperationNotAllowed;
    if (!isCode(change.strNewPin, 4, 8))
        return AtError::IncorrectParameters;
    const int error = tryPin(change.strOldPin);
    if (error == AtError::None)
        m_pin = change.strNewPin;
    return error;
}

int SimulatedModem::enablePin(const BLPINEnableInfo& enabling)
{
    if (simError() != AtError::None)
        return simError();
    const int error = tryPin(enabling.strPinCode);
    if (error == AtError::None)
        m_pinAsked = enabling.blPinEnable;
    return error;
}

int SimulatedModem::dial(const BLConnectionDialUp& profile)
{
    if (simError() != AtError::None)
        return simError();
    if (m_connected)
        return AtError::OperationNotAllowed;
    if (profile.strAPN.isEmpty() || profile.strNumber.isEmpty())
        return AtError::IncorrectParameters;
    m_connected = true;
    m_connectedFor.start();
    reportConnection();
    return AtError::None;
}

int SimulatedModem::hangUp()
{
    if (!m_connected)
        return AtError::OperationNotAllowed;
    m_connected = false;
    reportConnection();
    return AtError::None;
}

void SimulatedModem::reportConnection()
{
    CDataValue data(m_connected ? Connection::Connected : Connection::Disconnected);
    Q_EMIT reported(QLatin1String(ModemEvent::Connection),
                    m_connected ? QStringLiteral("CONNECT") : QStringLiteral("NO CARRIER"), &data);
}

int SimulatedModem::connectState(BLConnectState& state)
{
    state.nState = m_connected ? Connection::Connected : Connection::Disconnected;
    return AtError::None;
}

// As if the link had carried the same traffic all the time since it was made.
int SimulatedModem::statistics(BLConnectionStatistics& statistics)
{
    if (!m_connected)
        return AtError::None;
    const long long milliseconds = m_connectedFor.elapsed();
    statistics.dwDuration = milliseconds / 1000;
    statistics.dwByteReceived = milliseconds * BytesReceivedPerMs;
    statistics.dwByteSent = milliseconds * BytesSentPerMs;
    statistics.dwByteTransferred = statistics.dwByteReceived + statistics.dwByteSent;
    statistics.dwRateReceived = BytesReceivedPerMs * 1000;
    statistics.dwRateSent = BytesSentPerMs * 1000;
    statistics.dwRateMax = statistics.dwRateReceived;
    return AtError::None;
}

void SimulatedModem::receiveMessage(const QString& number, const QString& text)
{
    const BLSmsListItem* item = m_sim.addMessage(number, text);
    if (item == nullptr)
        return;
    CDataValue data = valueOf(*item);
    Q_EMIT reported(QLatin1String(ModemEvent::NewMessage),
                    QStringLiteral("+CMTI: \"SM\",%1").arg(item->nRef), &data);
}

int SimulatedModem::messages(BLSmsGetListCnf& list)
{
    list = m_sim.messages();
    return simError();
}

int SimulatedModem::messageStorage(BLSmsStorageState& state)
{
    state = m_sim.messageStorage();
    return simError();
}

int SimulatedModem::deleteMessage(int ref)
{
    if (simError() != AtError::None)
        return simError();
    return m_sim.deleteMessage(ref) ? AtError::None : AtError::InvalidIndex;
}

int SimulatedModem::phonebook(BLPbInitListCnf& list)
{
    list = m_sim.phonebook();
    return simError();
}

int SimulatedModem::phonebookStorage(BLPbGetStorageInfoCnf& state)
{
    state = m_sim.phonebookStorage();
    return simError();
}

int SimulatedModem::addPhonebookEntry(const BLPbItem& entry)
{
    if (simError() != AtError::None)
        return simError();
    return m_sim.addPhonebookEntry(entry) ? AtError::None : AtError::MemoryFull;
}

int SimulatedModem::sendUssd(const BLUssdSendCmd& command)
{
    if (simError() != AtError::None)
        return simError();
    if (command.strUssdCmd.isEmpty())
        return AtError::IncorrectParameters;
    BLUssdReport report;
    report.strClientID = command.strClientID;
    report.nReportType = UssdReport::NotSupported;
    if (command.strUssdCmd == QLatin1String("*100#")) {
        report.nReportType = UssdReport::Done;
        report.strContent = QStringLiteral("Your credit is 12.34.");
    }
    // The network takes its time.
    QTimer::singleShot(0, this, [this, report] {
        CDataValue data = valueOf(report);
        Q_EMIT reported(QLatin1String(ModemEvent::Ussd),
                        QStringLiteral("+CUSD: %1").arg(report.nReportType), &data);
    });
    return AtError::None;
}
