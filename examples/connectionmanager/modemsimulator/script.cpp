#include "modemsimulator/script.h"

#include <QTimer>

#include <algorithm>

namespace {

constexpr int kMaxDelay = 24 * 60 * 60 * 1000;

QString word(const QString& line, int i)
{
    return line.section(QLatin1Char(' '), i, i, QString::SectionSkipEmpty);
}

bool isTimed(const QString& line)
{
    return word(line, 0) == QLatin1String("after");
}

bool isAwaiting(const QString& line)
{
    return word(line, 0) == QLatin1String("once");
}

// Without "after MS" and "once COMMAND".
QString action(const QString& line)
{
    return isTimed(line) || isAwaiting(line)
               ? line.section(QLatin1Char(' '), 2, -1, QString::SectionSkipEmpty)
               : line;
}

} // namespace

QString Script::check(const QStringList& lines, const QStringList& words)
{
    for (const QString& line : meaningful(lines)) {
        bool isNumber = false;
        const int delay = word(line, 1).toInt(&isNumber);
        if (isTimed(line) && (!isNumber || delay < 0 || delay > kMaxDelay))
            return QStringLiteral("no milliseconds: %1").arg(line);
        if (!words.contains(word(action(line), 0)))
            return QStringLiteral("no such word: %1").arg(line);
    }
    return {};
}

QStringList Script::meaningful(const QStringList& lines)
{
    QStringList result;
    for (const QString& line : lines) {
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty() && !trimmed.startsWith(QLatin1Char('#')))
            result += trimmed;
    }
    return result;
}

Script::Script(const QStringList& lines, Performer performer, QObject* parent)
    : QObject(parent)
    , m_lines(meaningful(lines))
    , m_performer(std::move(performer))
{
}

void Script::next()
{
    // What happens can bring the next "answered".
    while (!m_isRunning && m_awaited.isEmpty()) {
        if (m_lines.isEmpty()) {
            Q_EMIT ended();
            return;
        }
        const QString& line = m_lines.first();
        if (isTimed(line)) {
            m_isRunning = true;
            QTimer::singleShot(word(line, 1).toInt(), this, [this] {
                m_isRunning = false;
                perform();
                next();
            });
        } else if (isAwaiting(line)) {
            m_awaited = word(line, 1).toUpper().toLatin1();
        } else {
            perform();
        }
    }
}

void Script::perform()
{
    const QString line = m_lines.takeFirst();
    m_isRunning = true;
    m_performer(action(line));
    m_isRunning = false;
}

void Script::answered(const std::vector<QByteArray>& commands)
{
    if (m_awaited.isEmpty() ||
        std::find(commands.begin(), commands.end(), m_awaited) == commands.end())
        return;
    m_awaited.clear();
    perform();
    next();
}
