#include "Ipc/ipcconnection_p.h"

#include <algorithm>
#include <utility>

namespace {

// How long one portion of deletions may take.
constexpr int kPortionMs = 2;

} // namespace

void SignalLinks::cut()
{
    for (const QMetaObject::Connection& link : std::exchange(m_links, {}))
        QObject::disconnect(link);
}

void IPCConnection::leaveOwner()
{
    links.cut();
    whenUnused = nullptr;
    if (socket)
        socket->setParent(nullptr);
}

IPCConnectionUse::~IPCConnectionUse()
{
    if (m_connection.use_count() == 1) {
        // Code of the socket may be what called. It returns before the event loop runs that this
        // function was called from; an event loop further in would not do, but there, the use
        // further out is the last one.
        m_connection->leaveOwner();
        if (m_connection->socket)
            m_connection->socket.release()->deleteLater();
    } else if (m_connection.use_count() == 2 && m_connection->whenUnused) {
        std::exchange(m_connection->whenUnused, nullptr)();
    }
}

DepartedConnections::DepartedConnections(QObject* parent)
    : QObject(parent)
{
    setObjectName(QStringLiteral("departedConnections"));
    m_clock.start();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &DepartedConnections::deleteDue);
}

void DepartedConnections::add(std::shared_ptr<IPCConnection> connection)
{
    connection->leaveOwner();
    m_entries.push_back({m_clock.elapsed() + m_lingerMs, std::move(connection)});
    if (!m_timer.isActive())
        m_timer.start(m_lingerMs);
}

void DepartedConnections::deleteDue()
{
    const qint64 begin = m_clock.elapsed();
    while (!m_entries.empty() && m_entries.front().dueMs <= begin &&
           m_clock.elapsed() - begin <= kPortionMs)
        m_entries.pop_front();
    if (m_entries.empty())
        m_entries = {}; // and its memory
    else
        m_timer.start(static_cast<int>(std::max<qint64>(0, m_entries.front().dueMs - begin)));
}
