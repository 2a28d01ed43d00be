#ifndef TESTS_SUPPORT_TIEDPROCESS_H
#define TESTS_SUPPORT_TIEDPROCESS_H

#include <QProcess>

#ifdef Q_OS_LINUX
#include <csignal>

#include <sys/prctl.h>
#include <unistd.h>
#endif

/// A process that the system ends with the thread that has started it: a test that is killed leaves
/// nothing running. Elsewhere than on Linux it is a plain process.
class TiedProcess : public QProcess
{
public:
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    TiedProcess()
    {
        setChildProcessModifier([parent = ::getpid()] { tie(parent); });
    }
#else
    TiedProcess()
        : m_parent(::getpid())
    {
    }

protected:
    void setupChildProcess() override
    {
        tie(m_parent);
    }

private:
    const pid_t m_parent;
#endif

private:
    // In the child, before its program begins.
    static void tie(pid_t parent)
    {
#ifdef Q_OS_LINUX
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have ended before.
        if (::getppid() != parent)
            ::_exit(1);
#else
        Q_UNUSED(parent)
#endif
    }
};

#endif
