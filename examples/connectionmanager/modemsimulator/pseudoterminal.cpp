#include "modemsimulator/pseudoterminal.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(QObject* parent)
    : QObject(parent)
{
    m_delay.setSingleShot(true);
    m_delay.setTimerType(Qt::PreciseTimer);
    connect(&m_delay, &QTimer::timeout, this, &PseudoTerminal::writeOutput);
}

PseudoTerminal::~PseudoTerminal()
{
    close();
}

bool PseudoTerminal::open(const QString& link, QString* error)
{
    if (!openTerminal(error)) {
        close();
        return false;
    }
    m_watch = std::make_unique<LineWatch>(m_path);
    connect(m_watch.get(), &LineWatch::closed, this, [this] {
        forgetOutput();
        giveFree();
        Q_EMIT hungUp();
    });
    m_readable = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Read);
    connect(m_readable.get(), &QSocketNotifier::activated, this, [this] { readInput(); });
    m_writable = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Write);
    m_writable->setEnabled(false);
    connect(m_writable.get(), &QSocketNotifier::activated, this, [this] { writeOutput(); });
    if (makeLink(link, error))
        return true;
    close();
    return false;
}

bool PseudoTerminal::openTerminal(QString* error)
{
    std::array<char, 128> name{};
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master >= 0 && ::grantpt(m_master) == 0 && ::unlockpt(m_master) == 0 &&
        ::ptsname_r(m_master, name.data(), name.size()) == 0)
        m_slave = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    if (m_slave >= 0 && ::tcgetattr(m_slave, &settings) == 0) {
        ::cfmakeraw(&settings);
        m_path = name.data();
        if (::tcsetattr(m_slave, TCSANOW, &settings) == 0)
            return true;
    }
    *error = QStringLiteral("cannot open a pseudo-terminal: %1").arg(qt_error_string(errno));
    return false;
}

// The link appears whole, under its final name.
bool PseudoTerminal::makeLink(const QString& link, QString* error)
{
    m_lock = std::make_unique<QLockFile>(link + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0); // a lock is stale when its process is gone
    if (!m_lock->tryLock()) {
        *error = QStringLiteral("cannot use %1: another simulator does, or the folder is closed")
                     .arg(link);
        return false;
    }
    const QFileInfo old(link);
    if (old.exists() && !old.isSymLink()) {
        *error = QStringLiteral("cannot use %1: it is there and no link").arg(link);
        return false;
    }
    const QByteArray name = QFile::encodeName(link);
    const QByteArray other = name + ".new";
    ::unlink(other.constData());
    if (::symlink(m_path.constData(), other.constData()) != 0 ||
        ::rename(other.constData(), name.constData()) != 0) {
        *error = QStringLiteral("cannot make the link %1: %2").arg(link, qt_error_string(errno));
        return false;
    }
    m_link = link;
    return true;
}

void PseudoTerminal::close()
{
    if (!m_link.isEmpty())
        QFile::remove(m_link);
    m_link.clear();
    m_lock.reset();
    m_delay.stop();
    m_readable.reset();
    m_writable.reset();
    m_watch.reset();
    for (int* file : {&m_slave, &m_master}) {
        if (*file >= 0)
            ::close(*file);
        *file = -1;
    }
    m_waiting.clear();
    m_written = 0;
}

void PseudoTerminal::readInput()
{
    // A line that was closed in between comes first.
    m_watch->update();
    std::array<char, 4096> bytes;
    const ssize_t count = ::read(m_master, bytes.data(), bytes.size());
    if (count > 0)
        Q_EMIT received(QByteArray(bytes.data(), static_cast<int>(count)));
}

void PseudoTerminal::send(const QByteArray& bytes)
{
    if (m_master < 0)
        return;
    m_watch->update();
    if (!m_watch->isOpen() || m_waiting.size() + bytes.size() > kMaxWaiting)
        return;
    Q_EMIT sent(bytes);
    m_waiting += bytes;
    writeOutput();
}

void PseudoTerminal::delay(int milliseconds)
{
    m_delay.start(milliseconds);
}

void PseudoTerminal::writeOutput()
{
    if (m_delay.isActive())
        return;
    while (m_written < m_waiting.size()) {
        const ssize_t count = ::write(m_master, m_waiting.constData() + m_written,
                                      static_cast<size_t>(m_waiting.size() - m_written));
        if (count <= 0)
            break;
        m_written += static_cast<decltype(m_written)>(count);
    }
    if (m_written >= m_waiting.size()) {
        m_waiting.clear();
        m_written = 0;
    }
    m_writable->setEnabled(!m_waiting.isEmpty());
}

// A real line forgets with its last user that it was taken exclusively. This one always has a
// user, our own end, so that one which crashed would keep its successor out.
void PseudoTerminal::giveFree()
{
    if (!m_watch->isOpen())
        ::ioctl(m_slave, TIOCNXCL);
}

void PseudoTerminal::forgetOutput()
{
    m_waiting.clear();
    m_written = 0;
    m_delay.stop();
    m_writable->setEnabled(false);
    ::tcflush(m_slave, TCIFLUSH);
}
