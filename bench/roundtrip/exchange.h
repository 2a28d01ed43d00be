#ifndef BENCH_ROUNDTRIP_EXCHANGE_H
#define BENCH_ROUNDTRIP_EXCHANGE_H

#include <QString>

#include <functional>
#include <map>
#include <vector>

// What every transport carries, and the client's half of a measurement. A client asks "give me a
// list of messages of about so many bytes" and reads every field of the answer into a Reply.

constexpr char requestType[] = "WZR_MESSAGE_SMS_LIST";
constexpr char broadcastType[] = "WZR_MESSAGE_SMS_REPORT"; // the request to send one to all
constexpr char senderName[] = "dashboard";
constexpr int broadcastBytes = 500;

struct Message
{
    int index = 0;
    QString number;
    QString text;
};

struct Reply
{
    int error = -1;
    int index = -1; // that of the request
    std::vector<Message> messages;
};

/// Makes a request of about 200 bytes as the text of an envelope.
QString requestNote();

/// The messages of an answer that has about `bytes` bytes as the text of an envelope.
const std::vector<Message>& messagesFor(int bytes);

/// Reads commands of the driver from the standard input, one line each, keeps as many requests in
/// flight as a command says, checks the replies, and prints when the work began and ended, in
/// nanoseconds of the monotonic clock. A wrong reply ends the process.
///
///     1000 64 500 0    1000 requests, 64 in flight, answers of 500 bytes
///     100 1 500 1      100 broadcasts, one after the other, each to all connections
///     100 8 500 2      100 requests, 8 in flight, the connections taking turns
class Rounds
{
public:
    using Request = std::function<void(int index, int bytes)>;

    /// `connections`: how many of them hear a broadcast.
    Rounds(int connections, Request request, Request requestBroadcast);

    /// Tells the driver that all connections are there.
    void ready();

    /// The standard input can be read. False when the driver has closed it.
    bool readCommand();

    void replied(const Reply& reply);

    /// While a request is to be made: the connection whose turn it is, from 0; negative when it is
    /// to be the one that was connected last.
    int turn() const { return m_mode == Turns ? (m_sent - 1) % m_connections : -1; }

    /// Whether a command is being worked on.
    bool busy() const { return m_done < m_count; }

private:
    enum Mode { One, Broadcast, Turns };

    void check(const Reply& reply);
    bool isAwaited(int index);
    void sendNext();

    int m_connections;
    Request m_request;
    Request m_requestBroadcast;
    int m_count = 0;
    int m_done = 0;
    int m_sent = 0;
    int m_bytes = 0;
    int m_heard = 0; // how many connections have heard the broadcast under way
    Mode m_mode = One;
    std::vector<char> m_replied;
    long long m_begin = 0;
    std::map<int, bool> m_comparedInFull; // by size
};

/// Runs a Qt event loop until the driver closes the standard input; the client's commands are
/// handed to `rounds`, which is null for a server.
int runEvents(Rounds* rounds);

/// Prints "ready", for a server that listens.
void printReady();

[[noreturn]] void fail(const char* what);

#endif
