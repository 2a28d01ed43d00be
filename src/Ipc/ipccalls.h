#ifndef IPC_IPCCALLS_H
#define IPC_IPCCALLS_H

#include "DataValue/datavalue.h"
#include "wzrframework_export.h"

#include <QObject>

#include <functional>
#include <memory>

class IPCClient;
class WaitingCalls;

/// How a call ended, and what it brought.
class WZRFRAMEWORK_EXPORT IPCAnswer
{
public:
    enum End {
        Answered,      ///< the server has answered, maybe with an error: see errorCode()
        NotSent,       ///< it never left: there was no connection, or the write failed
        TimedOut,      ///< no answer came in time; the server may still carry the request out
        Cancelled,     ///< by cancel(), or because the caller or the IPCCalls has gone
        ConnectionLost ///< after it had left: the server may have carried it out, or not
    };

    IPCAnswer(End end, const CDataValue& envelope);

    End end() const { return m_end; }
    /// Whether the server has answered with error code 0.
    bool isOk() const { return m_end == Answered && m_errorCode == 0; }
    /// The answer's "IPCMSG_ERROR_CODE", 0 where it has none; 6 when the call was not sent, as in
    /// the envelope that IPCClient makes up; -1 for every other end.
    int errorCode() const { return m_errorCode; }
    /// The answer's "IPCMSG_RESPONSE_DATA"; null where it has none, and for every other end.
    CDataValue& data() { return m_data; }
    const CDataValue& data() const { return m_data; }
    /// The whole answer, the sender as the caller gave it; null for every other end than Answered.
    const CDataValue& envelope() const { return m_envelope; }

private:
    End m_end;
    int m_errorCode;
    CDataValue m_envelope;
    CDataValue m_data;
};

/// One call that was made: a handle to wait by, to cancel by, or to throw away. Copies are the same
/// call. All of it belongs to the thread of the IPCCalls that made it, and stays usable when that
/// has gone.
class WZRFRAMEWORK_EXPORT IPCCall
{
public:
    /// Called with the call's end; may move from it.
    using Handler = std::function<void(IPCAnswer& answer)>;

    /// A call that has ended already.
    explicit IPCCall(IPCAnswer::End end);

    bool isFinished() const;

    /// Calls `handler` with the end of the call, once, from the event loop and never inside a
    /// function of this class or of IPCCalls. Where `context` lives in another thread, it is called
    /// there. May be used several times, and after the end.
    ///
    /// When `context` is destroyed before, the handler is not called; when that was the last
    /// handler, the call is cancelled.
    IPCCall& then(QObject* context, Handler handler);

    /// Ends the call here, if it has not ended yet. The server is not told: it has no word for that
    /// which all services share. See IPCCalls for the answer that comes afterwards.
    void cancel();

    /// Runs an event loop until the call has ended, and returns its end. For tests and tools:
    /// everything else in the thread goes on meanwhile, slots of the caller's included.
    IPCAnswer wait();

private:
    friend class IPCCalls;
    friend class WaitingCalls;
    struct State;
    explicit IPCCall(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

/// Requests with exactly one end each, on the connection of an IPCClient: the answer, an error, a
/// time-out, a cancellation, or the loss of the connection, also after the request has left.
///
///     IPCCalls calls(&client, "dashboard");
///     calls.call("GREET", &name).then(this, [this](IPCAnswer& answer) {
///         if (answer.isOk())
///             show(answer.data().asQString());
///         else
///             showError(answer.end(), answer.errorCode());
///     });
///
///     IPCAnswer answer = calls.call("GREET", &name).wait(); // in a test or a tool
///
/// What travels is what IPCClient::messageSend() sends, to any server.
///
/// **Which answer belongs to which call.** The protocol numbers nothing; an answer carries back the
/// request's identifier, sender and payload. An envelope is the answer to the call that has waited
/// longest among those whose identifier, sender and payload are the same. A server may leave the
/// sender or the payload out of its answers, but not both where the call had one. Therefore
/// - calls that are equal in all three get their answers in the order in which they were made. If
///   the first of them has timed out, its late answer goes to the second: it answers the same
///   request, but an older one;
/// - a call without sender and payload cannot be told from a report of the same identifier. Give
///   the constructor a name.
///
/// setMarked() makes it exact with every server that carries the sender back unchanged.
///
/// **Other envelopes**, reports and answers that nobody waits for (any more), are emitted by this
/// object's sigMessageReceived(). Connect MessageCenter::messageReceived() to it instead of to the
/// client's signal of that name, which still emits everything.
///
/// **Threads and ownership.** Lives in the client's thread, and may go before or after the client:
/// whichever goes first ends the calls that wait. Handlers may make calls, cancel, and delete this
/// object and the client.
///
/// **Cost.** A call costs what messageSend() costs, and writing the payload once more for the
/// comparison unless calls are marked; nothing grows with the number of calls that wait.
class WZRFRAMEWORK_EXPORT IPCCalls : public QObject
{
    Q_OBJECT

public:
    static constexpr int kDefaultTimeoutMs = 30000;

    /// `client`: not owned. `sender`: the name that calls carry as "IPCMSG_MSG_SENDER"; none when
    /// empty.
    explicit IPCCalls(IPCClient* client, const QString& sender = QString(),
                      QObject* parent = nullptr);
    /// Cancels what waits; its handlers are still called, from the event loop.
    ~IPCCalls() override;

    /// Sends a request: the identifier, and a copy of `data` as its payload unless it is null.
    /// `timeoutMs`: how long to wait for the answer, from now on; 0 or less: for ever.
    IPCCall call(const char* messageID, const CDataValue* data = nullptr,
                 int timeoutMs = kDefaultTimeoutMs);

    /// With `on`, the sender of each further call gets a number of its own, "dashboard#1.7", and
    /// the answer is known by it. It is taken off again before a handler sees the answer. An answer
    /// that comes after the end of its call is dropped with a line in the log. Only for servers
    /// that carry the sender back as it came; to all others, calls would time out. Off by default.
    void setMarked(bool on);

    /// How many calls wait for their end.
    int pendingCount() const;

Q_SIGNALS:
    /// An envelope came that is no call's answer; as IPCClient::sigMessageReceived().
    void sigMessageReceived(CDataValue* datavalue);

private:
    friend class IPCCall;
    struct Registry;

    void receive(CDataValue* envelope);
    void loseConnection();
    void endDue();
    void awaitNextDeadline();

    std::shared_ptr<Registry> m_registry;
};

#endif
