#ifndef LOGTASK_LOGQUEUE_P_H
#define LOGTASK_LOGQUEUE_P_H

#include <QString>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

class QAbstractEventDispatcher;

/// The lines on their way to the log thread, in the order of hand-over. It stands where queued
/// signals would, because a thread gets no queued signal while there is no application object.
///
/// Any thread may push. The lock is held to add one entry or to take all, never while a file is
/// written. attach(), takeAll(), written() and detach() belong to the log thread.
class LogQueue
{
public:
    struct Entry
    {
        enum Kind { Text, TextWithNewLine, Flush };
        Kind kind;
        QString text;
    };

    void push(Entry::Kind kind, const QString& text = QString());

    /// The writer is ready; from now on `dispatcher` is woken when an entry comes after takeAll()
    /// found none. A busy log thread is not woken: that would cost each caller a system call.
    void attach(QAbstractEventDispatcher* dispatcher);
    void detach();

    /// Replaces `entries` by all that wait. False when there are none.
    bool takeAll(std::vector<Entry>* entries);
    /// What takeAll() gave has been written.
    void written();

    /// Waits for attach(). False when the time is over.
    bool waitAttached(std::chrono::milliseconds limit);
    /// Waits until everything pushed before has been written. False when the time is over or no
    /// writer is attached.
    bool waitWritten(std::chrono::milliseconds limit);
    /// Wakes the log thread without an entry.
    void wake();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Entry> m_waiting;
    QAbstractEventDispatcher* m_dispatcher = nullptr;
    bool m_idle = false;
    unsigned long long m_pushed = 0;
    unsigned long long m_taken = 0;
    unsigned long long m_written = 0;
};

#endif
