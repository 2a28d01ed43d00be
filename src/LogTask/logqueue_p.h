#ifndef LOGTASK_LOGQUEUE_P_H
#define LOGTASK_LOGQUEUE_P_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

class QAbstractEventDispatcher;

/// Also in a signal handler.
void sleepMillisecond();

/// The lines on their way to the log thread, in the order of hand-over. It stands where queued
/// signals would, because a thread gets no queued signal while there is no application object.
///
/// Lines gather in one text, so that handing one over costs a copy and no allocation. The first
/// one wakes the log thread, which then lets more come for a while: see gather().
///
/// Any thread may push. The lock is held to add one entry or to take all, never while a file is
/// written. attach(), gather(), takeAll(), written() and detach() belong to the log thread;
/// setDelay() and setLimit() come before it.
class LogQueue
{
public:
    /// What waits: the bytes of all lines, and how many there were at each request to flush.
    struct Batch
    {
        std::string text;
        std::vector<std::size_t> flushes;

        bool isEmpty() const { return text.empty() && flushes.empty(); }
        void clear();
    };

    /// How long gather() waits. 0 wakes the log thread for each line.
    void setDelay(std::chrono::milliseconds delay);
    /// How many bytes may wait; 0 sets no limit. A line that finds no room is lost. How many were
    /// is written in their place.
    void setLimit(std::size_t bytes);

    /// A text as the file has it, with "\r\n" after it when `newLine` is true.
    void push(const char* text, std::size_t size, bool newLine);
    void pushFlush();

    /// The writer is ready; from now on `dispatcher` is woken when an entry comes after takeAll()
    /// found none. A busy log thread is not woken: that would cost each caller a system call.
    void attach(QAbstractEventDispatcher* dispatcher);
    void detach();

    /// Lets lines come for the delay, less when many have come, when a flush is asked for or
    /// somebody waits for the lines. Returns at once when `wrote`, the last result of takeAll(), is
    /// false and nothing waits.
    void gather(bool wrote);

    /// Replaces `batch` by all that waits. False when there is nothing.
    bool takeAll(Batch* batch);
    /// What takeAll() gave has been written.
    void written();

    /// Waits for attach(). False when the time is over.
    bool waitAttached(std::chrono::milliseconds limit);
    /// Waits until everything pushed before has been written. False when the time is over or no
    /// writer is attached.
    bool waitWritten(std::chrono::milliseconds limit);
    /// Wakes the log thread without an entry.
    void wake();

    /// For a signal handler: takes no line from now on, waits at most `milliseconds` for one that
    /// is being added, and gives the text of all that wait. Nothing when a call does not end, say
    /// that in which the process has crashed. Nobody may call takeAll() any more.
    std::string_view closeInCrash(int milliseconds);

private:
    void pushed();
    void hurry();

    bool beginAdding();

    std::mutex m_mutex;
    std::condition_variable m_changed; // attached, detached, written
    std::condition_variable m_hurried;
    Batch m_waiting;
    std::chrono::milliseconds m_delay{0};
    std::size_t m_limit = 0;
    unsigned long long m_lost = 0; // lines that found no room since takeAll()
    QAbstractEventDispatcher* m_dispatcher = nullptr;
    bool m_idle = false;
    bool m_hurry = false;
    // Instead of the mutex, which a signal handler cannot lock.
    std::atomic<bool> m_isAdding{false};
    std::atomic<bool> m_isClosed{false};
    unsigned long long m_pushed = 0;
    unsigned long long m_taken = 0;
    unsigned long long m_written = 0;
};

#endif
