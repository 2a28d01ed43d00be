#include "common/console.h"

#include <cstdio>
#include <unistd.h>

Console::Console(QObject* parent)
    : QObject(parent)
    , m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { readInput(); });
}

namespace {

bool s_lineIsOpen = false; // the last line was one of progress and has no end yet

void write(const QString& text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
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

void Console::readInput()
{
    char bytes[4096];
    const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) {
        m_notifier.setEnabled(false);
        return;
    }
    m_input.append(bytes, static_cast<int>(count));
    for (int end = m_input.indexOf('\n'); end >= 0; end = m_input.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_input.left(end)).trimmed();
        m_input.remove(0, end + 1);
        if (!line.isEmpty())
            Q_EMIT entered(line);
    }
}
