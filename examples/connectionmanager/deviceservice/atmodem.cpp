// The settings of the modem, what it says unasked, its identity, and USSD.

#include "deviceservice/atmodem.h"

#include "LogTask/clog.h"
#include "common/codes.h"
#include "common/envelope.h"
#include "deviceservice/atanswers.h"

#include <utility>

using namespace AtText;

namespace {

constexpr char kLogSource[] = "deviceservice/atmodem";
constexpr int kMostReports = 100; // that wait to be handled

// Refused settings are lived without. Some need the SIM: they are repeated when it is unlocked.
constexpr const char* kSettings[] = {
    "ATE0",
    "AT+CMEE=1",
    "AT+CSCS=\"UCS2\"",
    "AT+CMGF=1",
    "AT+CPMS=\"SM\",\"SM\",\"SM\"",
    "AT+CNMI=2,1",
    "AT+CREG=2",
    "AT+COPS=3,0",
    "AT+CMER=3,0,0,1",
    "AT+CGEREP=1",
    "AT+CPBS=\"SM\"",
};

} // namespace

AtModem::AtModem(AtChannel& channel, WorkQueue& queue, QObject* parent)
    : Modem(parent)
    , m_channel(channel)
    , m_queue(queue)
{
    connect(&channel, &AtChannel::opened, this, &AtModem::initialise);
    connect(&channel, &AtChannel::closed, this, &AtModem::lineLost);
    connect(&channel, &AtChannel::unsolicited, this, &AtModem::hear);
    m_ussdTimer.setSingleShot(true);
    connect(&m_ussdTimer, &QTimer::timeout, this, [this] {
        m_queue.add([this] {
            BLUssdReport report;
            report.nReportType = UssdReport::TimedOut;
            reportUssd(report, QStringLiteral("the network did not answer in time"));
        });
    });
}

AtReply AtModem::ask(const QByteArray& command, const QByteArray& prefix, AtWait wait)
{
    return m_channel.send({command, prefix, wait});
}

int AtModem::tell(const QByteArray& command, AtWait wait)
{
    return ask(command, QByteArray(), wait).error;
}

int AtModem::answerNotUnderstood(const QByteArray& command, const QByteArray& line)
{
    CLogFile() << kLogSource << "answerNotUnderstood" << nameOf(command) << shown(line);
    return AtError::Unknown;
}

void AtModem::initialise()
{
    applySettings();
    AtReply reply = ask("AT+CIND=?", "+CIND:");
    m_signalIndicator = AtAnswer::signalIndicator(reply.lines.value(0)).value_or(0);
    // The connection may be older than this service.
    bool isActive = false;
    contextState(isActive);
    if (m_channel.isOpen())
        Q_EMIT ready();
}

void AtModem::applySettings()
{
    for (const char* setting : kSettings) {
        const int error = tell(setting, AtWait::Sim);
        if (error == AtError::NoConnection)
            return;
        if (error != AtError::None)
            CLogFile() << kLogSource << "applySettings" << setting << "was refused:" << error;
    }
}

void AtModem::lineLost(const QString& reason)
{
    m_signalReport.clear();
    m_reports.clear();
    m_queue.add([this, reason] { setConnected(false, QStringLiteral("the modem ") + reason); });
}

// Comes at any time, also while a command waits; what it means may need a command.
void AtModem::hear(const QByteArray& line)
{
    const QByteArray signal = "+CIEV: " + QByteArray::number(m_signalIndicator) + ',';
    if (line.startsWith("+CREG:") || line.startsWith(signal)) {
        m_signalReport = line;
    } else if (line.startsWith("+CIEV:") || line.startsWith("+CGREG:") || line == "RING") {
        return;
    } else if (m_reports.size() < kMostReports) {
        m_reports.append(line);
    } else {
        CLogFile() << kLogSource << "hear"
                   << "too many reports, dropped:" << shown(line);
        return;
    }
    handleLater();
}

void AtModem::handleLater()
{
    if (std::exchange(m_isHandlingAdded, true))
        return;
    m_queue.add([this] { handleReports(); });
}

void AtModem::handleReports()
{
    // What comes from here on is other work.
    m_isHandlingAdded = false;
    handleSignal();
    const QList<QByteArray> reports = std::exchange(m_reports, {});
    for (const QByteArray& report : reports)
        handleReport(report);
}

void AtModem::handleSignal()
{
    const QString text = QString::fromUtf8(std::exchange(m_signalReport, {}));
    int rssi = 0;
    if (text.isEmpty() ||
        askFor("AT+CSQ", "+CSQ:", rssi, AtAnswer::signalStrength) != AtError::None)
        return;
    CDataValue data(rssi);
    Q_EMIT reported(QLatin1String(ModemEvent::Signal), text, &data);
}

void AtModem::handleReport(const QByteArray& line)
{
    if (line.startsWith("+CMTI:")) {
        messageArrived(line);
    } else if (line.startsWith("+CUSD:")) {
        ussdAnswered(line);
    } else {
        // One of the contexts, or the call behind it: which state ours is in, it says itself.
        bool isActive = false;
        if (m_isConnected && contextState(isActive) == AtError::None && !isActive)
            setConnected(false, QString::fromUtf8(line));
    }
}

void AtModem::messageArrived(const QByteArray& line)
{
    const std::optional<int> ref = AtAnswer::arrivedMessage(line);
    if (!ref) {
        answerNotUnderstood("+CMTI", line);
        return;
    }
    const AtReply reply = ask("AT+CMGR=" + QByteArray::number(*ref), {}, AtWait::Sim);
    if (reply.error != AtError::None)
        return;
    const QByteArray header = reply.lines.value(0);
    const auto item = header.startsWith("+CMGR:")
                          ? AtAnswer::message(header, reply.lines.value(1), *ref)
                          : std::nullopt;
    if (!item) {
        answerNotUnderstood("AT+CMGR", header);
        return;
    }
    CDataValue data = valueOf(*item);
    Q_EMIT reported(QLatin1String(ModemEvent::NewMessage), QString::fromUtf8(line), &data);
}

int AtModem::identity(const QByteArray& command, QString& text)
{
    return askFor(command, {}, text, [](const QByteArray& line) {
        return line.isEmpty() ? std::nullopt
                              : std::optional<QString>(QString::fromUtf8(information(line)));
    });
}

// The SIM's part is left empty when the SIM does not tell it.
int AtModem::equipment(BLEquipmentInfo& info)
{
    int error = identity("AT+CGMI", info.strManufacturer);
    if (error == AtError::None)
        error = identity("AT+CGMM", info.strModel);
    if (error == AtError::None)
        error = identity("AT+CGMR", info.strRevision);
    if (error == AtError::None)
        error = identity("AT+CGSN", info.strSerialNumber);
    if (error != AtError::None)
        return error;
    if (identity("AT+CIMI", info.strImsi) != AtError::None)
        return m_channel.isOpen() ? AtError::None : AtError::NoConnection;
    const AtReply numbers = ask("AT+CNUM", "+CNUM:");
    info.strMsisdn = AtAnswer::ownNumber(numbers.lines.value(0));
    return m_channel.isOpen() ? AtError::None : AtError::NoConnection;
}

int AtModem::sendUssd(const BLUssdSendCmd& command)
{
    if (command.strUssdCmd.isEmpty())
        return AtError::IncorrectParameters;
    if (m_ussdTimer.isActive())
        return AtError::OperationNotAllowed;
    // The answer may come before the command has ended.
    m_ussdClient = command.strClientID;
    constexpr int kLongestWaitSec = 600;
    m_ussdTimer.start(command.nTimeOutSec > 0 ? qMin(command.nTimeOutSec, kLongestWaitSec) * 1000
                                              : m_channel.milliseconds(AtWait::Network));
    const int error = tell("AT+CUSD=1,\"" + encoded(command.strUssdCmd) + "\",15", AtWait::Network);
    if (error != AtError::None)
        m_ussdTimer.stop();
    return error;
}

void AtModem::ussdAnswered(const QByteArray& line)
{
    const auto report = AtAnswer::ussd(line);
    if (report)
        reportUssd(*report, QString::fromUtf8(line));
    else
        answerNotUnderstood("+CUSD", line);
}

void AtModem::reportUssd(BLUssdReport report, const QString& text)
{
    // What the network begins by itself is for nobody in particular.
    report.strClientID = std::exchange(m_ussdClient, {});
    m_ussdTimer.stop();
    CDataValue data = valueOf(report);
    Q_EMIT reported(QLatin1String(ModemEvent::Ussd), text, &data);
}
