#include "LogTask/logqueue_p.h"

#include <QAbstractEventDispatcher>

void LogQueue::push(Entry::Kind kind, const QString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.push_back({kind, text});
    ++m_pushed;
    if (m_idle && m_dispatcher) {
        m_idle = false;
        m_dispatcher->wakeUp();
    }
}

void LogQueue::attach(QAbstractEventDispatcher* dispatcher)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_dispatcher = dispatcher;
    m_changed.notify_all();
}

void LogQueue::detach()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_dispatcher = nullptr;
    m_changed.notify_all();
}

bool LogQueue::takeAll(std::vector<Entry>* entries)
{
    entries->clear();
    const std::lock_guard<std::mutex> lock(m_mutex);
    entries->swap(m_waiting);
    m_taken = m_pushed;
    m_idle = entries->empty();
    return !m_idle;
}

void LogQueue::written()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_written = m_taken;
    m_changed.notify_all();
}

bool LogQueue::waitAttached(std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, limit, [this] { return m_dispatcher != nullptr; });
}

bool LogQueue::waitWritten(std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto goal = m_pushed;
    m_changed.wait_for(lock, limit, [&] { return m_written >= goal || !m_dispatcher; });
    return m_written >= goal && m_dispatcher;
}

void LogQueue::wake()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_dispatcher)
        m_dispatcher->wakeUp();
}
