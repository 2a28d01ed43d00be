#ifndef LOGTASK_LOGUSE_P_H
#define LOGTASK_LOGUSE_P_H

#include <atomic>
#include <chrono>

/// Keeps the log's instance alive for one log call; the end of the log waits for it. Any thread.
///
///     if (const LogUse use{})
///         CLog::Instance()->Flush();
class LogUse
{
public:
    LogUse();
    ~LogUse();
    LogUse(const LogUse&) = delete;
    LogUse& operator=(const LogUse&) = delete;
    /// False when the log was ended meanwhile.
    explicit operator bool() const;

    /// Also in a signal handler, where counting by thread may take memory.
    enum InCrash { Crash };
    explicit LogUse(InCrash);

private:
    std::atomic<int>& m_users;
};

/// Waits until no LogUse is left that began before. False when the time is over.
bool waitForLogUses(std::chrono::milliseconds limit);

/// In a child process, where the threads that began them are not.
void forgetLogUses();

#endif
