#include "common/console.h"

#include "common/exitstatus.h"

#include <QCoreApplication>
#include <QTimer>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <unistd.h>

Console::Console(QObject* parent)
    : QObject(parent)
    , m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { readInput(); });
}

namespace {

bool s_lineIsOpen = false; // the last line was one of progress and has no end yet
bool s_hasFailed = false;  // something could not be written

void write(const QString& text)
{
    if (s_hasFailed)
        return;
    if (std::fputs(text.toUtf8().constData(), stdout) >= 0 && std::fflush(stdout) == 0)
        return;
    s_hasFailed = true;
    Console::complain(
        QStringLiteral("cannot write: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    // The event loop may not run yet.
    QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(ExitStatus::Failed); });
}

} // namespace

void Console::say(const QString& line)
{
    write((s_lineIsOpen ? QStringLiteral("\n") : QString()) + line + QLatin1Char('\n'));
    s_lineIsOpen = false;
}

void Console::sayProgress(const QString& line, bool last)
{
    if (::isatty(STDOUT_FILENO) == 0) {
        say(line);
        return;
    }
    write((s_lineIsOpen ? QStringLiteral("\r") : QString()) + line +
          (last ? QStringLiteral("\n") : QString()));
    s_lineIsOpen = !last;
}

void Console::complain(const QString& line)
{
    const QString text = QCoreApplication::applicationName() + QLatin1String(": ") + line;
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

int Console::exitStatus(int status)
{
    return s_hasFailed ? ExitStatus::Failed : status;
}

void Console::readInput()
{
    char bytes[4096];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count <= 0) {
        m_notifier.setEnabled(false);
        // The last line may have no end.
        take(m_input);
        Q_EMIT ended();
        return;
    }
    m_input.append(bytes, static_cast<int>(count));
    for (int end = m_input.indexOf('\n'); end >= 0; end = m_input.indexOf('\n')) {
        const QByteArray line = m_input.left(end);
        m_input.remove(0, end + 1);
        take(line);
    }
}

void Console::take(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line).trimmed();
    if (!text.isEmpty())
        Q_EMIT entered(text);
}
