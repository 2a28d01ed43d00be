#include "Ipc/ipccalls.h"

#include "Ipc/ipccallregistry_p.h"
#include "Ipc/ipcclient.h"
#include "LogTask/logline_p.h"

#include <QEventLoop>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace {

constexpr char kLogSource[] = "Ipc/ipccalls";

constexpr int kNotSent = 6; // as IPCClient's made-up reply says

int errorCodeOf(IPCAnswer::End end)
{
    switch (end) {
    case IPCAnswer::Answered:
        return 0;
    case IPCAnswer::NotSent:
        return kNotSent;
    default:
        return -1;
    }
}

/// What an envelope carries back of the request that it answers.
WaitingCalls::Request carriedBack(CDataValue& envelope)
{
    WaitingCalls::Request request;
    request.type = envelope.mapGet("IPCMSG_TYPE").asQString().toUtf8();
    if (envelope.mapGet("IPCMSG_MSG_SENDER").isString())
        request.sender = envelope.mapGet("IPCMSG_MSG_SENDER").asQString().toUtf8();
    if (envelope.mapIsMember("IPCMSG_USER_DATA"))
        request.payload = envelope.mapGet("IPCMSG_USER_DATA").parseToQString(FAST_STYLE).toUtf8();
    return request;
}

/// Reports may have neither; an envelope without both is no answer.
bool mayBeAnswer(CDataValue& envelope)
{
    return envelope.mapIsMember("IPCMSG_ERROR_CODE") ||
           envelope.mapIsMember("IPCMSG_RESPONSE_DATA");
}

} // namespace

IPCAnswer::IPCAnswer(End end, const CDataValue& envelope)
    : m_end(end)
    , m_errorCode(errorCodeOf(end))
    , m_envelope(envelope)
{
    if (!m_envelope.isObject())
        return;
    if (m_envelope.mapIsMember("IPCMSG_ERROR_CODE"))
        m_errorCode = m_envelope.mapGet("IPCMSG_ERROR_CODE").asInt();
    m_data = m_envelope.mapGet("IPCMSG_RESPONSE_DATA");
}

IPCCall::IPCCall(IPCAnswer::End end)
    : m_state(std::make_shared<State>())
{
    m_state->answer.emplace(end, CDataValue());
}

IPCCall::IPCCall(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

bool IPCCall::isFinished() const
{
    return m_state->answer.has_value();
}

IPCCall& IPCCall::then(QObject* context, Handler handler)
{
    if (m_state->answer)
        State::callLater(context, std::move(handler), *m_state->answer);
    else
        m_state->addListener(m_state, context, std::move(handler));
    return *this;
}

void IPCCall::cancel()
{
    if (const auto waiting = m_state->waiting.lock())
        waiting->remove(*m_state);
    m_state->end(IPCAnswer(IPCAnswer::Cancelled, CDataValue()), State::Later);
}

IPCAnswer IPCCall::wait()
{
    const std::shared_ptr<State> state = m_state; // a handler may overwrite this object
    if (!state->answer) {
        QEventLoop loop;
        state->loops.push_back(&loop);
        loop.exec();
        state->loops.erase(std::find(state->loops.begin(), state->loops.end(), &loop));
        // The application has been told to quit: nobody is to wait any longer.
        if (!state->answer)
            IPCCall(state).cancel();
    }
    return *state->answer;
}

struct IPCCalls::Registry : WaitingCalls
{
    QPointer<IPCClient> client;
    QByteArray sender;
    QTimer deadline;
    int callDepth = 0;                 // how many call() are under way
    IPCCall::State* sending = nullptr; // the call that the client is sending
};

IPCCalls::IPCCalls(IPCClient* client, const QString& sender, QObject* parent)
    : QObject(parent)
    , m_registry(std::make_shared<Registry>())
{
    m_registry->client = client;
    m_registry->sender = sender.toUtf8();
    m_registry->deadline.setSingleShot(true);
    connect(&m_registry->deadline, &QTimer::timeout, this, &IPCCalls::endDue);
    connect(client, &IPCClient::sigMessageReceived, this, &IPCCalls::receive);
    connect(client, &IPCClient::sigIPCServerDisconnected, this, &IPCCalls::loseConnection);
    connect(client, &QObject::destroyed, this, &IPCCalls::loseConnection);
}

IPCCalls::~IPCCalls()
{
    for (const auto& state : m_registry->takeAll())
        state->end(IPCAnswer(IPCAnswer::Cancelled, CDataValue()), IPCCall::State::Later);
}

IPCCall IPCCalls::call(const char* messageID, const CDataValue* data, int timeoutMs)
{
    const std::shared_ptr<Registry> registry = m_registry; // a slot may delete this object
    const QPointer<IPCCalls> self(this);
    const auto state = std::make_shared<IPCCall::State>();
    state->calls = this;
    state->waiting = registry;
    WaitingCalls::Request request;
    request.type = messageID;
    if (!registry->sender.isEmpty())
        request.sender = registry->sender;
    if (data && !registry->marked)
        request.payload = data->parseToQString(FAST_STYLE).toUtf8();
    registry->add(state, std::move(request), timeoutMs);
    const QByteArray sender = state->sentSender;

    ++registry->callDepth;
    IPCCall::State* const before = std::exchange(registry->sending, state.get());
    if (registry->client)
        registry->client->sendEnvelope(messageID, data, sender.isNull() ? nullptr : sender.data(),
                                       state.get());
    else
        state->isNotSent = true;
    registry->sending = before;
    --registry->callDepth;

    if (!state->answer && state->isNotSent) {
        registry->remove(*state);
        state->end(IPCAnswer(IPCAnswer::NotSent, CDataValue()), IPCCall::State::Later);
    }
    if (self)
        awaitNextDeadline();
    return IPCCall(state);
}

void IPCCalls::setMarked(bool on)
{
    m_registry->marked = on;
}

int IPCCalls::pendingCount() const
{
    return m_registry->count();
}

void IPCCalls::receive(CDataValue* envelope)
{
    const std::shared_ptr<Registry> registry = m_registry; // a handler may delete this object
    if (!envelope->mapGet("IPCMSG_TYPE").isString() || !mayBeAnswer(*envelope)) {
        Q_EMIT sigMessageReceived(envelope);
        return;
    }
    if (registry->client && registry->client->m_madeUp.reply == envelope) {
        if (registry->sending && registry->client->m_madeUp.request == registry->sending)
            registry->sending->isNotSent = true;
        else // somebody else's request was not sent: no server has answered
            Q_EMIT sigMessageReceived(envelope);
        return;
    }
    const WaitingCalls::Request request = carriedBack(*envelope);
    const std::shared_ptr<IPCCall::State> state = registry->takeAnswered(request);
    if (state) {
        awaitNextDeadline();
        CDataValue answer = *envelope;
        if (state->isMarked)
            WaitingCalls::restoreSender(answer, state->sender);
        state->end(IPCAnswer(IPCAnswer::Answered, answer),
                   registry->callDepth > 0 ? IPCCall::State::Later : IPCCall::State::Now);
    } else if (registry->isOwnMark(request.sender)) {
        logLine(kLogSource, "receive",
                "an answer came after the end of its call:", request.type.constData());
    } else {
        Q_EMIT sigMessageReceived(envelope);
    }
}

// The call that is being sent is among them: some of it may have left.
void IPCCalls::loseConnection()
{
    const std::shared_ptr<Registry> registry = m_registry;
    const auto how = registry->callDepth > 0 ? IPCCall::State::Later : IPCCall::State::Now;
    for (const auto& state : registry->takeAll())
        state->end(IPCAnswer(IPCAnswer::ConnectionLost, CDataValue()), how);
}

void IPCCalls::endDue()
{
    const std::shared_ptr<Registry> registry = m_registry;
    const QPointer<IPCCalls> self(this);
    for (const auto& state : registry->takeDue())
        state->end(IPCAnswer(IPCAnswer::TimedOut, CDataValue()), IPCCall::State::Now);
    if (self)
        awaitNextDeadline();
}

void IPCCalls::awaitNextDeadline()
{
    const qint64 remaining = m_registry->msToNextDeadline();
    if (remaining < 0)
        m_registry->deadline.stop();
    else if (!m_registry->deadline.isActive() || m_registry->deadline.remainingTime() > remaining)
        m_registry->deadline.start(static_cast<int>(remaining));
}
