#include "LogTask/logqueue_p.h"

#include <QAbstractEventDispatcher>

#include <ctime>

namespace {

// So many bytes end the gathering: enough that waking costs nothing beside writing them.
constexpr std::size_t enough = 262144;

// A batch that was once larger than this gives its memory back.
constexpr std::size_t keptCapacity = 1048576;

// The lock is held for less time than the system takes to put a thread to sleep and to wake it.
std::unique_lock<std::mutex> lockSoon(std::mutex& mutex)
{
    constexpr int attempts = 100;
    std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    for (int i = 0; i < attempts && !lock.owns_lock(); ++i)
        (void)lock.try_lock();
    if (!lock.owns_lock())
        lock.lock();
    return lock;
}

} // namespace

void sleepMillisecond()
{
    const timespec time = {0, 1000000};
    ::nanosleep(&time, nullptr);
}

void LogQueue::Batch::clear()
{
    if (text.capacity() > keptCapacity)
        std::string().swap(text);
    text.clear();
    flushes.clear();
}

void LogQueue::setDelay(std::chrono::milliseconds delay)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_delay = delay;
}

void LogQueue::setLimit(std::size_t bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_limit = bytes;
}

void LogQueue::push(const char* text, std::size_t size, bool newLine)
{
    const std::unique_lock<std::mutex> lock = lockSoon(m_mutex);
    if (m_limit > 0 && (m_lost > 0 || m_waiting.text.size() + size > m_limit)) {
        ++m_lost;
        pushed(); // an idle log thread has to write the notice: until then all lines are lost
        return;
    }
    if (!beginAdding())
        return;
    m_waiting.text.append(text, size);
    if (newLine)
        m_waiting.text.append("\r\n", 2);
    m_isAdding.store(false, std::memory_order_release);
    pushed();
    if (m_waiting.text.size() >= enough && !m_hurry)
        hurry();
}

// Either this sees that the queue is closed, or closeInCrash() that a line is being added.
bool LogQueue::beginAdding()
{
    m_isAdding = true;
    if (!m_isClosed)
        return true;
    m_isAdding = false;
    return false;
}

std::string_view LogQueue::closeInCrash(int milliseconds)
{
    m_isClosed = true;
    for (int waited = 0; m_isAdding; ++waited) {
        if (waited == milliseconds)
            return {};
        sleepMillisecond();
    }
    return m_waiting.text;
}

void LogQueue::pushFlush()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.flushes.push_back(m_waiting.text.size());
    pushed();
    hurry();
}

void LogQueue::pushed()
{
    ++m_pushed;
    if (m_idle && m_dispatcher) {
        m_idle = false;
        m_dispatcher->wakeUp();
    }
}

void LogQueue::hurry()
{
    m_hurry = true;
    m_hurried.notify_one();
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

void LogQueue::gather(bool wrote)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_delay.count() == 0 || (!wrote && m_waiting.isEmpty()))
        return;
    m_hurried.wait_for(lock, m_delay, [this] { return m_hurry; });
}

bool LogQueue::takeAll(Batch* batch)
{
    batch->clear();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hurry = false;
    if (m_lost > 0) {
        m_waiting.text += std::to_string(m_lost) + " lines lost here\r\n";
        m_lost = 0;
    }
    std::swap(*batch, m_waiting);
    m_taken = m_pushed;
    m_idle = batch->isEmpty();
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
    hurry();
    m_changed.wait_for(lock, limit, [&] { return m_written >= goal || !m_dispatcher; });
    return m_written >= goal && m_dispatcher;
}

void LogQueue::wake()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    hurry();
    if (m_dispatcher)
        m_dispatcher->wakeUp();
}
