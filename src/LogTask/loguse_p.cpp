#include "LogTask/loguse_p.h"

#include "LogTask/clog.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <iterator>

namespace {

// Threads count in different places, as far as there are enough: they would slow each other down.
struct alignas(64) UserCount
{
    std::atomic<int> users{0};
};
UserCount s_userCounts[16];

std::atomic<int>& ownUserCount()
{
    static std::atomic<unsigned> threads{0};
    thread_local const unsigned own = threads++ % std::size(s_userCounts);
    return s_userCounts[own].users;
}

} // namespace

LogUse::LogUse()
    : m_users(ownUserCount())
{
    ++m_users;
}

LogUse::LogUse(InCrash)
    : m_users(s_userCounts[0].users)
{
    ++m_users;
}

LogUse::~LogUse()
{
    m_users.fetch_sub(1, std::memory_order_release);
}

LogUse::operator bool() const
{
    return g_bLog;
}

bool waitForLogUses(std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    const auto isUnused = [&deadline](const UserCount& count) {
        while (count.users.load() != 0) {
            if (deadline.hasExpired())
                return false;
            QThread::yieldCurrentThread();
        }
        return true;
    };
    return std::all_of(std::begin(s_userCounts), std::end(s_userCounts), isUnused);
}

void forgetLogUses()
{
    for (UserCount& count : s_userCounts)
        count.users = 0;
}
