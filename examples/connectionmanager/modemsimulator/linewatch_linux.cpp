#include "modemsimulator/linewatch.h"

#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

LineWatch::LineWatch(const QByteArray& path, QObject* parent)
    : QObject(parent)
    , m_watch(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (m_watch < 0 || ::inotify_add_watch(m_watch, path.constData(), IN_OPEN | IN_CLOSE) < 0) {
        m_openCount = 1;
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_watch, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { update(); });
}

LineWatch::~LineWatch()
{
    m_notifier.reset();
    if (m_watch >= 0)
        ::close(m_watch);
}

void LineWatch::update()
{
    // Events of a file that is watched itself carry no name.
    inotify_event events[64];
    bool hasClosed = false;
    for (;;) {
        const ssize_t count = m_notifier ? ::read(m_watch, events, sizeof events) : -1;
        if (count <= 0)
            break;
        for (size_t i = 0; i < static_cast<size_t>(count) / sizeof events[0]; ++i) {
            if ((events[i].mask & IN_OPEN) != 0)
                ++m_openCount;
            else if ((events[i].mask & IN_CLOSE) != 0 && m_openCount > 0)
                hasClosed = --m_openCount == 0 || hasClosed;
        }
    }
    if (hasClosed)
        Q_EMIT closed();
}
