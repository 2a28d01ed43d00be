#ifndef IPC_IPCCALLREGISTRY_P_H
#define IPC_IPCCALLREGISTRY_P_H

#include "Ipc/ipccalls.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QEventLoop;

/// The calls that wait for their end, found by what an answer carries back, and by their deadlines.
class WaitingCalls
{
public:
    /// What is told apart. A null text is a member that the envelope does not have.
    struct Request
    {
        QByteArray type;
        QByteArray sender;
        QByteArray payload; // compact JSON
    };

    WaitingCalls();

    bool marked = false; // whether calls that are added get a mark

    void add(const std::shared_ptr<IPCCall::State>& state, Request request, int timeoutMs);
    /// Takes out a call; does nothing when it does not wait here.
    void remove(IPCCall::State& state);
    /// Takes out the call that an answer with these members is for; null when there is none.
    std::shared_ptr<IPCCall::State> takeAnswered(const Request& request);
    /// Takes out all whose deadline is over, the one that was due first in front.
    std::vector<std::shared_ptr<IPCCall::State>> takeDue();
    /// Takes out all, in the order in which they were made.
    std::vector<std::shared_ptr<IPCCall::State>> takeAll();

    int count() const { return static_cast<int>(m_byKey.size()); }
    /// Milliseconds; negative when no call has a deadline.
    qint64 msToNextDeadline() const;

    /// Whether a call of this registry was sent with that sender.
    bool isOwnMark(const QByteArray& sender) const;
    /// Puts the sender of the caller in the place of the marked one.
    static void restoreSender(CDataValue& envelope, const QByteArray& sender);

private:
    friend struct IPCCall::State;
    using ByText = std::multimap<QByteArray, std::shared_ptr<IPCCall::State>>;
    using ByTime = std::multimap<qint64, IPCCall::State*>;

    static QByteArray keyOf(const Request& request);
    std::shared_ptr<IPCCall::State> findMarked(const Request& request) const;
    std::shared_ptr<IPCCall::State> findPartly(const Request& request) const;

    // Among equal keys, the one that was added first stands in front.
    ByText m_byKey;
    ByText m_byPart; // by type and sender, and by type and payload
    ByTime m_deadlines;
    std::uint64_t m_lastNumber = 0;
    QByteArray m_tag; // what marks of this registry contain, and of no other
    QElapsedTimer m_clock;
};

/// A call. Shared by its handles and, while it waits, by the registry.
struct IPCCall::State
{
    enum When {
        Now,  ///< handlers in this thread are called at once
        Later ///< by the event loop
    };

    struct Listener
    {
        QPointer<QObject> context;
        Handler handler;
        QMetaObject::Connection contextWatch;
    };

    /// Ends the call, the first time that it is called.
    void end(const IPCAnswer& answer, When when);
    /// `self` is this object.
    void addListener(const std::shared_ptr<State>& self, QObject* context, Handler handler);
    static void callLater(QObject* context, Handler handler, const IPCAnswer& answer);

    std::optional<IPCAnswer> answer;
    std::vector<Listener> listeners;
    std::vector<QEventLoop*> loops; // of those who wait()
    QPointer<IPCCalls> calls;
    bool isNotSent = false; // the client has said so

    // The registry's.
    std::weak_ptr<WaitingCalls> waiting;
    QByteArray sender;     // the caller's
    QByteArray sentSender; // with its mark, if any
    bool isMarked = false;
    std::uint64_t number = 0; // in the order in which they were made
    bool isWaiting = false;
    WaitingCalls::ByText::iterator atKey;
    std::vector<WaitingCalls::ByText::iterator> atParts;
    std::optional<WaitingCalls::ByTime::iterator> atDeadline;

private:
    void dropListenersWithoutContext();
};

#endif
