#include "exchange.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>

#include <unistd.h>

namespace {

constexpr int envelopeBytes = 160; // what an answer without messages takes
constexpr int messageBytes = 140;

long long now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

std::vector<Message> makeMessages(int bytes)
{
    const int count = std::max(1, (bytes - envelopeBytes) / messageBytes);
    const QString text = QStringLiteral("The train leaves at ten; bring the tickets, the maps and "
                                        "gr\u00FC\u00DFe to all, \u20AC.");
    std::vector<Message> messages;
    for (int index = 0; index < count; ++index)
        messages.push_back({index, QStringLiteral("+491511234567"), text});
    const int missing = bytes - envelopeBytes - count * messageBytes;
    messages.back().text += QString(std::max(0, missing), QLatin1Char('x'));
    return messages;
}

} // namespace

QString requestNote()
{
    return QString(58, QLatin1Char('n'));
}

const std::vector<Message>& messagesFor(int bytes)
{
    static std::map<int, std::vector<Message>> made;
    auto found = made.find(bytes);
    if (found == made.end())
        found = made.emplace(bytes, makeMessages(bytes)).first;
    return found->second;
}

Rounds::Rounds(int connections, Request request, Request requestBroadcast)
    : m_connections(connections)
    , m_request(std::move(request))
    , m_requestBroadcast(std::move(requestBroadcast))
{
}

void Rounds::ready()
{
    printReady();
}

bool Rounds::readCommand()
{
    char line[100];
    const ssize_t length = ::read(STDIN_FILENO, line, sizeof line - 1);
    if (length <= 0)
        return false;
    line[length] = '\0';
    int inFlight = 0;
    int mode = 0;
    if (std::sscanf(line, "%d %d %d %d", &m_count, &inFlight, &m_bytes, &mode) != 4)
        fail("no command");
    messagesFor(m_bytes); // made before the time begins
    m_mode = static_cast<Mode>(mode);
    m_done = 0;
    m_sent = 0;
    m_heard = 0;
    m_replied.assign(static_cast<size_t>(m_count), 0);
    m_begin = now();
    for (int i = 0; i < inFlight && m_sent < m_count; ++i)
        sendNext();
    return true;
}

void Rounds::sendNext()
{
    const int index = m_sent++;
    if (m_mode == Broadcast)
        m_requestBroadcast(index, m_bytes);
    else
        m_request(index, m_bytes);
}

void Rounds::replied(const Reply& reply)
{
    check(reply);
    if (m_mode == Broadcast && ++m_heard < m_connections)
        return;
    m_heard = 0;
    if (++m_done == m_count) {
        std::printf("%lld %lld\n", m_begin, now());
        std::fflush(stdout);
    } else if (m_sent < m_count) {
        sendNext();
    }
}

// Some transports give replies out of order.
bool Rounds::isAwaited(int index)
{
    if (m_mode == Broadcast)
        return index == m_done;
    return index >= 0 && index < m_sent && !std::exchange(m_replied[size_t(index)], 1);
}

void Rounds::check(const Reply& reply)
{
    const std::vector<Message>& expected = messagesFor(m_bytes);
    if (reply.error != 0 || reply.messages.size() != expected.size() || !isAwaited(reply.index))
        fail("a reply is not the expected one");
    if (reply.messages.back().index != expected.back().index ||
        reply.messages.back().text.size() != expected.back().text.size())
        fail("a message is not the expected one");
    if (std::exchange(m_comparedInFull[m_bytes], true))
        return;
    for (size_t i = 0; i < expected.size(); ++i) {
        if (reply.messages[i].index != expected[i].index ||
            reply.messages[i].number != expected[i].number ||
            reply.messages[i].text != expected[i].text)
            fail("a field is not the expected one");
    }
}

int runEvents(Rounds* rounds)
{
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &input, [rounds] {
        char byte = 0;
        if (rounds ? !rounds->readCommand() : ::read(STDIN_FILENO, &byte, 1) <= 0)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

void printReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}
