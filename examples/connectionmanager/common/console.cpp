#include "common/console.h"

#include <cstdio>
#include <unistd.h>

Console::Console(QObject* parent)
    : QObject(parent)
    , m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { readInput(); });
}

void Console::say(const QString& line)
{
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stdout);
    std::fflush(stdout);
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
