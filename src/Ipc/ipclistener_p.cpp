#include "Ipc/ipclistener_p.h"

#include "LogTask/logline_p.h"

#include <QLocalSocket>
#include <QSocketNotifier>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr char kLogSource[] = "Ipc/ipclistener";

constexpr std::size_t kMaxWaiting = 30;

// How long accepting rests when there was no descriptor for a connection.
constexpr int kResumeMs = 500;

// Shortages that follow each other more closely than this are one, with one line in the log.
constexpr int kOneShortageMs = 10000;

} // namespace

std::shared_ptr<IPCListener> IPCListener::create(QObject* parent, Gate gate)
{
    return {new IPCListener(parent, std::move(gate)), &IPCListener::dispose};
}

IPCListener::IPCListener(QObject* parent, Gate gate)
    : QLocalServer(parent)
    , m_gate(std::move(gate))
{
    setMaxPendingConnections(0); // QLocalServer itself accepts nothing
    m_resume.setSingleShot(true);
    m_resume.setInterval(kResumeMs);
    connect(&m_resume, &QTimer::timeout, this, [this] { updateNotifier(); });
}

IPCListener::~IPCListener() = default;

void IPCListener::dispose(IPCListener* listener)
{
    listener->end();
    listener->setParent(nullptr);
    if (listener->m_mustNotClose) {
        // Its destructor would remove the file. Kept where leak checkers find it.
        static auto* const kept = new std::vector<IPCListener*>;
        kept->push_back(listener);
    } else if (listener->m_announcing > 0) {
        listener->deleteLater();
    } else {
        delete listener;
    }
}

bool IPCListener::listenUnder(const QString& name, int mode)
{
    if (mode >= 0)
        setSocketOptions(UserAccessOption); // nobody else gets in before the mode is set
    if (!listen(name))
        return false;
    m_file = SocketSystem::identify(fullServerName());
    if (mode >= 0 && !SocketSystem::setMode(fullServerName(), static_cast<mode_t>(mode))) {
        close();
        return false;
    }
    const auto descriptor = static_cast<int>(socketDescriptor());
    SocketSystem::setNonBlocking(descriptor);
    m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { acceptOne(); });
    return true;
}

void IPCListener::end()
{
    if (!m_notifier && !isListening())
        return;
    if (m_notifier)
        m_notifier->setEnabled(false); // deleted with this object: it may be what called
    m_resume.stop();
    for (const int descriptor : std::exchange(m_waiting, {}))
        SocketSystem::closeDescriptor(descriptor);
    if (!m_mustNotClose && isListening()) {
        if (SocketSystem::identify(fullServerName()) == m_file)
            close();
        else
            closeLeavingTheFile();
    }
}

// QLocalServer removes whatever stands under its name, unless the name is no file's. Only Linux has
// such names: elsewhere Qt takes the option for another one, and removes the file.
void IPCListener::closeLeavingTheFile()
{
#if defined(Q_OS_LINUX) && QT_VERSION >= QT_VERSION_CHECK(6, 2, 0)
    setSocketOptions(AbstractNamespaceOption);
    close();
#else
    SocketSystem::closeDescriptor(static_cast<int>(socketDescriptor()));
    m_mustNotClose = true;
#endif
}

QLocalSocket* IPCListener::nextPendingConnection()
{
    if (m_waiting.empty())
        return nullptr;
    const int descriptor = m_waiting.front();
    m_waiting.pop_front();
    updateNotifier();
    auto* const socket = new QLocalSocket(this);
    socket->setSocketDescriptor(descriptor);
    return socket;
}

void IPCListener::passOverDeparted()
{
    const auto gone = std::stable_partition(m_waiting.begin(), m_waiting.end(), [](int descriptor) {
        return !SocketSystem::hasHungUp(descriptor);
    });
    if (gone == m_waiting.end())
        return;
    logLine(kLogSource, "passOverDeparted",
            "clients that have gone while they waited:", static_cast<int>(m_waiting.end() - gone));
    std::for_each(gone, m_waiting.end(), SocketSystem::closeDescriptor);
    m_waiting.erase(gone, m_waiting.end());
    updateNotifier();
}

bool IPCListener::isFull() const
{
    return m_waiting.size() > kMaxWaiting;
}

void IPCListener::acceptOne()
{
    passOverDeparted(); // what is waiting already was announced, and has been left waiting
    const SocketSystem::Accepted accepted =
        SocketSystem::acceptFrom(static_cast<int>(socketDescriptor()));
    if (accepted.descriptor < 0) {
        if (accepted.error != 0)
            pause(accepted.error);
        return;
    }
    if (!m_gate(accepted.descriptor)) {
        SocketSystem::closeDescriptor(accepted.descriptor);
        return;
    }
    m_waiting.push_back(accepted.descriptor);
    updateNotifier();
    ++m_announcing;
    Q_EMIT newConnection();
    --m_announcing;
}

// The notifier would go off again and again while a client waits that cannot be accepted.
void IPCListener::pause(int error)
{
    if (!m_lastShortage.isValid() || m_lastShortage.hasExpired(kOneShortageMs))
        logLine(kLogSource, "pause", "cannot accept a connection, trying again; errno", error);
    m_lastShortage.start();
    m_resume.start();
    updateNotifier();
}

void IPCListener::updateNotifier()
{
    if (m_notifier && isListening() && !m_mustNotClose)
        m_notifier->setEnabled(!isFull() && !m_resume.isActive());
}
