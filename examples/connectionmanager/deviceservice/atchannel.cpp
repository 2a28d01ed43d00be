#include "deviceservice/atchannel.h"

#include "LogTask/clog.h"
#include "common/codes.h"

#include <QEventLoop>
#include <QFile>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr char kLogSource[] = "deviceservice/atchannel";
// The port has no descriptor to wait on.
constexpr int kIdlePollMs = 20;
constexpr int kBusyPollMs = 2;
// With a time-out, a line on which nothing comes reads as "would block", and 0 is left for a
// device that has gone. No read waits for it.
constexpr int kLineTimeOutMs = 100;
constexpr int kReadsPerPoll = 16;
constexpr int kLinesPerAnswer = 5000;

// Each asks for something that no other command asks for.
constexpr const char* kProbes[] = {"+CMEE", "+CSCS", "+CMGF"};

QString errorText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// The name of a process as its user knows it.
QString nameOf(std::int64_t process)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    const QString name =
        file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
    return name.isEmpty() ? QStringLiteral("process %1").arg(process)
                          : QStringLiteral("%1 (process %2)").arg(name).arg(process);
}

// Why the port is not the line of a modem; empty when it is. To be asked after open().
QString refusal(const CSerialPort& port, bool isOpen)
{
    const int error = port.lastError();
    if (error == EBUSY && port.holder() > 0)
        return QStringLiteral("%1 has it").arg(nameOf(port.holder()));
    if (error == EBUSY)
        return QStringLiteral("another process has it");
    // Opened all the same, but it has no settings of a line: it may be somebody's file.
    if (isOpen && error == ENOTTY)
        return QStringLiteral("it is no terminal");
    if (error != 0)
        return errorText(error);
    return isOpen ? QString() : QStringLiteral("no reason is known");
}

} // namespace

struct AtChannel::Exchange
{
    AtCommand command;
    bool isProbe = false;
    bool isMarked = false; // the probe's own information has come
    bool isDone = false;
    QEventLoop loop;
    AtReply reply;
};

AtChannel::AtChannel(std::unique_ptr<CSerialPort> port, const Options& options, WorkQueue& queue)
    : m_port(std::move(port))
    , m_options(options)
    , m_queue(queue)
{
    m_port->setBaudRate(options.rate);
    m_port->setTimeOut(kLineTimeOutMs);
    // A second reader of the line would get a part of the answers.
    m_port->setExclusive(true);
    m_pollTimer.setInterval(kIdlePollMs);
    connect(&m_pollTimer, &QTimer::timeout, this, &AtChannel::poll);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(options.retryInterval);
    connect(&m_retryTimer, &QTimer::timeout, this, &AtChannel::start);
}

AtChannel::~AtChannel() = default;

void AtChannel::start()
{
    m_queue.add([this] { open(); });
}

void AtChannel::open()
{
    QString reason = openPort();
    if (!reason.isEmpty()) {
        close(QStringLiteral("cannot be opened: %1").arg(reason));
        return;
    }
    m_isPortOpen = true;
    m_pollTimer.start();
    if (!synchronise()) {
        if (m_isPortOpen && !m_isEnding)
            close(QStringLiteral("does not answer"));
        return;
    }
    m_isOpen = true;
    m_closedReason.clear();
    CLogFile() << kLogSource << "open" << m_options.port << "answers";
    Q_EMIT opened();
}

QString AtChannel::openPort()
{
    const bool isOpen = m_port->open(QFile::encodeName(m_options.port).constData());
    QString reason = refusal(*m_port, isOpen);
    if (isOpen && !reason.isEmpty())
        m_port->close();
    return reason;
}

void AtChannel::close(const QString& reason)
{
    m_port->close();
    m_isPortOpen = false;
    m_isOpen = false;
    m_pollTimer.stop();
    m_toWrite.clear();
    tellNotUnderstood();
    finish(AtError::NoConnection);
    if (!m_isEnding)
        m_retryTimer.start();
    if (reason == m_closedReason)
        return;
    m_closedReason = reason;
    CLogFile() << kLogSource << "close" << m_options.port << reason;
    Q_EMIT closed(reason);
}

AtReply AtChannel::send(const AtCommand& command)
{
    if (m_exchange != nullptr) {
        CLogFile() << kLogSource << "send" << AtText::nameOf(command.text)
                   << "is not sent inside another command";
        return {AtError::LinkReserved, {}};
    }
    if (!m_isOpen || m_isEnding)
        return {AtError::NoConnection, {}};
    AtReply reply = exchange(command, false, milliseconds(command.wait));
    if (m_isOpen && !m_isEnding && reply.error == AtError::NoConnection && !synchronise() &&
        m_isOpen)
        close(QStringLiteral("does not answer"));
    return reply;
}

// Whether the modem is now known to have answered everything that it will.
bool AtChannel::synchronise()
{
    for (int i = 0; i < m_options.probes && m_isPortOpen && !m_isEnding; ++i) {
        const QByteArray probe = kProbes[m_nextProbe++ % std::size(kProbes)];
        // A line that has begun is not continued. A command of which the modem has got only a part
        // ends at the line end with which the probe begins.
        m_lines.clear();
        if (exchange({"AT" + probe + '?', probe + ':'}, true, m_options.timeOut / 5).error ==
            AtError::None)
            return true;
    }
    return false;
}

// The error is AtError::NoConnection when there was no final result, and only then.
AtReply AtChannel::exchange(const AtCommand& command, bool isProbe, int milliseconds)
{
    Exchange exchange;
    exchange.command = command;
    exchange.isProbe = isProbe;
    exchange.reply.error = AtError::NoConnection;
    QTimer deadline;
    deadline.setSingleShot(true);
    connect(&deadline, &QTimer::timeout, &exchange.loop, &QEventLoop::quit);
    m_exchange = &exchange;
    m_toWrite = (isProbe ? "\r" : "") + command.text + '\r';
    Q_EMIT passed(true, command.text);
    m_pollTimer.setInterval(kBusyPollMs);
    deadline.start(milliseconds);
    writeWaiting();
    exchange.loop.exec();
    m_pollTimer.setInterval(kIdlePollMs);
    m_exchange = nullptr;
    if (exchange.isDone)
        return exchange.reply;
    // A loop that ends for neither reason was ended by the application.
    m_isEnding = deadline.isActive();
    if (!m_isEnding && !isProbe)
        CLogFile() << kLogSource << "exchange" << AtText::nameOf(command.text)
                   << "was not answered in" << milliseconds << "ms";
    if (!m_isEnding && !m_toWrite.isEmpty())
        close(QStringLiteral("does not take what is written") + m_writeError);
    return exchange.reply;
}

// The end of the command under way, if there is one.
void AtChannel::finish(int error)
{
    if (m_exchange == nullptr || m_exchange->isDone)
        return;
    m_exchange->isDone = true;
    m_exchange->reply.error = error;
    m_exchange->loop.quit();
}

void AtChannel::poll()
{
    writeWaiting();
    char buffer[4096];
    for (int i = 0; i < kReadsPerPoll && m_isPortOpen; ++i) {
        const int count = m_port->read(buffer, sizeof buffer);
        if (count < 0 && transferError().isEmpty())
            return;
        if (count < 0) {
            close(QStringLiteral("cannot be read") + transferError());
            return;
        }
        if (count == 0) {
            close(QStringLiteral("has gone"));
            return;
        }
        const int cutBefore = m_lines.cutLines();
        for (const QByteArray& line : m_lines.add(buffer, count))
            handleLine(line);
        if (m_lines.cutLines() != cutBefore)
            notUnderstood("a line without end");
    }
}

// Why the last transfer failed, behind ": "; empty when the line had just nothing, or no room.
QString AtChannel::transferError() const
{
    const int error = m_port->lastError();
    return error == 0 || error == EAGAIN || error == EINTR ? QString() : ": " + errorText(error);
}

void AtChannel::writeWaiting()
{
    if (m_toWrite.isEmpty())
        return;
    const int count = m_port->write(m_toWrite.constData(), static_cast<int>(m_toWrite.size()));
    m_writeError = count < 0 ? transferError() : QString();
    if (count > 0)
        m_toWrite.remove(0, count);
}

void AtChannel::handleLine(const QByteArray& line)
{
    Q_EMIT passed(false, line);
    if (AtText::isUnsolicited(line))
        Q_EMIT unsolicited(line);
    else if (m_exchange != nullptr && !m_exchange->isDone)
        handleAnswer(*m_exchange, line);
    else
        notUnderstood(line);
}

void AtChannel::handleAnswer(Exchange& exchange, const QByteArray& line)
{
    if (line == exchange.command.text)
        return; // the echo
    if (const std::optional<int> result = AtText::finalResult(line)) {
        // Before its own information, that is the late end of another answer.
        if (!exchange.isProbe || exchange.isMarked)
            finish(*result);
        tellNotUnderstood();
    } else if (!line.startsWith(exchange.command.prefix)) {
        if (!exchange.isProbe)
            notUnderstood(line);
    } else {
        exchange.isMarked = true;
        if (exchange.reply.lines.size() < kLinesPerAnswer)
            exchange.reply.lines.append(line);
        else
            notUnderstood(line);
    }
}

// The first of a series is shown; a line in bad order rarely comes alone.
void AtChannel::notUnderstood(const QByteArray& line)
{
    if (++m_notUnderstood == 1)
        CLogFile() << kLogSource << "notUnderstood" << m_options.port << AtText::shown(line);
}

void AtChannel::tellNotUnderstood()
{
    if (m_notUnderstood > 1)
        CLogFile() << kLogSource << "notUnderstood" << m_options.port
                   << "and further lines:" << m_notUnderstood - 1;
    m_notUnderstood = 0;
}
