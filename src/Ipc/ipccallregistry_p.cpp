#include "Ipc/ipccallregistry_p.h"

#include <QEventLoop>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

std::atomic<int> registries{0};

bool isNumber(const QByteArray& text)
{
    return !text.isEmpty() &&
           std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

WaitingCalls::WaitingCalls()
    : m_tag('#' + QByteArray::number(++registries) + '.')
{
    m_clock.start();
}

void WaitingCalls::add(const std::shared_ptr<IPCCall::State>& state, Request request, int timeoutMs)
{
    state->number = ++m_lastNumber;
    state->sender = request.sender;
    state->isMarked = marked;
    if (marked)
        request.sender += m_tag + QByteArray::number(static_cast<qulonglong>(state->number));
    state->sentSender = request.sender;
    state->atKey = m_byKey.emplace(keyOf(request), state);
    if (!request.sender.isNull())
        state->atParts.push_back(
            m_byPart.emplace(keyOf({request.type, request.sender, QByteArray()}), state));
    if (!request.payload.isNull())
        state->atParts.push_back(
            m_byPart.emplace(keyOf({request.type, QByteArray(), request.payload}), state));
    if (timeoutMs > 0)
        state->atDeadline = m_deadlines.emplace(m_clock.elapsed() + timeoutMs, state.get());
    state->isWaiting = true;
}

void WaitingCalls::remove(IPCCall::State& state)
{
    if (!std::exchange(state.isWaiting, false))
        return;
    if (state.atDeadline)
        m_deadlines.erase(*std::exchange(state.atDeadline, std::nullopt));
    for (const auto& at : std::exchange(state.atParts, {}))
        m_byPart.erase(at);
    m_byKey.erase(state.atKey); // last: it may hold the last pointer to the state
}

std::shared_ptr<IPCCall::State> WaitingCalls::takeAnswered(const Request& request)
{
    const auto found = m_byKey.find(keyOf(request)); // any of the equals
    std::shared_ptr<IPCCall::State> state;
    if (found != m_byKey.end())
        state = m_byKey.lower_bound(found->first)->second;
    else if (isOwnMark(request.sender))
        state = findMarked(request);
    else
        state = findPartly(request);
    if (state)
        remove(*state);
    return state;
}

// A marked call is known without its payload.
std::shared_ptr<IPCCall::State> WaitingCalls::findMarked(const Request& request) const
{
    const auto found = m_byKey.find(keyOf({request.type, request.sender, QByteArray()}));
    return found == m_byKey.end() ? nullptr : found->second;
}

// For servers that carry back the sender or the payload only.
std::shared_ptr<IPCCall::State> WaitingCalls::findPartly(const Request& request) const
{
    if (request.sender.isNull() == request.payload.isNull())
        return nullptr;
    const QByteArray key = keyOf(request);
    const auto oldest = m_byPart.lower_bound(key);
    return oldest == m_byPart.end() || oldest->first != key ? nullptr : oldest->second;
}

std::vector<std::shared_ptr<IPCCall::State>> WaitingCalls::takeDue()
{
    std::vector<std::shared_ptr<IPCCall::State>> due;
    const qint64 now = m_clock.elapsed();
    while (!m_deadlines.empty() && m_deadlines.begin()->first <= now) {
        IPCCall::State& state = *m_deadlines.begin()->second;
        due.push_back(state.atKey->second);
        remove(state);
    }
    return due;
}

std::vector<std::shared_ptr<IPCCall::State>> WaitingCalls::takeAll()
{
    std::vector<std::shared_ptr<IPCCall::State>> all;
    all.reserve(m_byKey.size());
    for (const auto& entry : m_byKey)
        all.push_back(entry.second);
    for (const auto& state : all)
        remove(*state);
    std::sort(all.begin(), all.end(),
              [](const auto& a, const auto& b) { return a->number < b->number; });
    return all;
}

qint64 WaitingCalls::msToNextDeadline() const
{
    if (m_deadlines.empty())
        return -1;
    return std::max<qint64>(0, m_deadlines.begin()->first - m_clock.elapsed());
}

bool WaitingCalls::isOwnMark(const QByteArray& sender) const
{
    const auto at = sender.lastIndexOf(m_tag);
    return at >= 0 && isNumber(sender.mid(at + m_tag.size()));
}

void WaitingCalls::restoreSender(CDataValue& envelope, const QByteArray& sender)
{
    if (sender.isNull())
        envelope.mapRemove("IPCMSG_MSG_SENDER", true);
    else
        envelope.mapSet("IPCMSG_MSG_SENDER", CDataValue(sender.constData()), true);
}

QByteArray WaitingCalls::keyOf(const Request& request)
{
    QByteArray key = request.type;
    key += '\0';
    if (!request.sender.isNull())
        key += 's' + request.sender;
    key += '\0';
    if (!request.payload.isNull())
        key += 'p' + request.payload;
    return key;
}

void IPCCall::State::end(const IPCAnswer& how, When when)
{
    if (answer)
        return;
    answer.emplace(how);
    for (QEventLoop* const loop : loops)
        loop->quit();
    auto called = std::exchange(listeners, {});
    for (const Listener& listener : called)
        QObject::disconnect(listener.contextWatch);
    for (Listener& listener : called) {
        QObject* const context = listener.context;
        if (context && when == Now && context->thread() == QThread::currentThread()) {
            IPCAnswer own = how; // the handler may move from it
            listener.handler(own);
        } else if (context) {
            callLater(context, std::move(listener.handler), how);
        }
    }
}

void IPCCall::State::addListener(const std::shared_ptr<State>& self, QObject* context,
                                 Handler handler)
{
    // In the thread of the calls, whichever the context's is.
    const auto watch =
        QObject::connect(context, &QObject::destroyed, calls, [weak = std::weak_ptr<State>(self)] {
            if (const auto state = weak.lock())
                state->dropListenersWithoutContext();
        });
    listeners.push_back({context, std::move(handler), watch});
}

void IPCCall::State::dropListenersWithoutContext()
{
    const auto gone = std::remove_if(listeners.begin(), listeners.end(),
                                     [](const Listener& listener) { return !listener.context; });
    if (gone == listeners.end())
        return;
    listeners.erase(gone, listeners.end());
    if (!listeners.empty() || !loops.empty())
        return;
    if (const auto registry = waiting.lock())
        registry->remove(*this);
    end(IPCAnswer(IPCAnswer::Cancelled, CDataValue()), Later);
}

void IPCCall::State::callLater(QObject* context, Handler handler, const IPCAnswer& answer)
{
    QMetaObject::invokeMethod(
        context, [handler = std::move(handler), own = answer]() mutable { handler(own); },
        Qt::QueuedConnection);
}
