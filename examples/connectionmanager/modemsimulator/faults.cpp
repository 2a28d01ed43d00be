#include "modemsimulator/faults.h"

#include <algorithm>
#include <random>

namespace {

constexpr int kDefaultFlood = 4000000;
constexpr int kMaxFlood = 64000000;
constexpr int kMaxDelay = 600000;

void silence(const QString&, Answer& answer)
{
    answer.information.clear();
    answer.final.clear();
}

void half(const QString&, Answer& answer)
{
    const QByteArray whole = answer.information + answer.final;
    answer.information = whole.left(whole.size() / 2);
    while (answer.information.endsWith('\n') || answer.information.endsWith('\r'))
        answer.information.chop(1);
    answer.final.clear();
}

void garbageBefore(const QString&, Answer& answer)
{
    answer.information.prepend(Faults::garbage());
}

void otherFinal(const QString& text, Answer& answer)
{
    answer.final = "\r\n" + text.toUtf8() + "\r\n";
}

// Before the last of several lines with a name, or else before the final result code; never between
// a message's head and its text.
void interrupt(const QString& text, Answer& answer)
{
    const QByteArray line = "\r\n" + text.toUtf8();
    const auto place = answer.information.lastIndexOf("\r\n+");
    if (place > 0)
        answer.information.insert(place, line);
    else
        answer.information += line + "\r\n";
}

void flood(const QString& text, Answer& answer)
{
    const int count = text.isEmpty() ? kDefaultFlood : text.toInt();
    answer.information = QByteArray(qBound(0, count, kMaxFlood), 'U');
    answer.final.clear();
}

void delay(const QString& text, Answer& answer)
{
    answer.delay = qBound(0, text.toInt(), kMaxDelay);
}

} // namespace

Faults::Spoiler Faults::spoiler(const QString& kind)
{
    struct Entry
    {
        const char* kind;
        Spoiler spoiler;
    };
    static constexpr Entry entries[] = {
        {"silence", silence}, {"half", half},   {"garbage", garbageBefore}, {"final", otherFinal},
        {"flood", flood},     {"delay", delay}, {"interrupt", interrupt},
    };
    for (const Entry& entry : entries) {
        if (kind == QLatin1String(entry.kind))
            return entry.spoiler;
    }
    return nullptr;
}

bool Faults::prepare(const QString& text)
{
    Fault fault;
    QString rest = text;
    const QString first = rest.section(QLatin1Char(' '), 0, 0);
    if (spoiler(first) == nullptr) {
        fault.command = first.toUpper().toLatin1();
        rest = rest.section(QLatin1Char(' '), 1);
    }
    fault.kind = rest.section(QLatin1Char(' '), 0, 0);
    fault.text = rest.section(QLatin1Char(' '), 1);
    bool isNumber = true;
    if (fault.kind == QLatin1String("delay") || !fault.text.isEmpty())
        fault.text.toInt(&isNumber);
    const bool needsNumber =
        fault.kind == QLatin1String("delay") || fault.kind == QLatin1String("flood");
    const bool needsText =
        fault.kind == QLatin1String("final") || fault.kind == QLatin1String("interrupt");
    if (spoiler(fault.kind) == nullptr || (needsNumber && !isNumber) ||
        (needsText && fault.text.isEmpty()))
        return false;
    m_faults.push_back(fault);
    return true;
}

void Faults::apply(const std::vector<QByteArray>& commands, Answer& answer)
{
    const auto concerns = [&commands](const Fault& fault) {
        return fault.command.isEmpty() ||
               std::find(commands.begin(), commands.end(), fault.command) != commands.end();
    };
    const auto found = std::find_if(m_faults.begin(), m_faults.end(), concerns);
    if (found == m_faults.end())
        return;
    spoiler(found->kind)(found->text, answer);
    m_faults.erase(found);
}

QByteArray Faults::garbage()
{
    std::mt19937 random; // always seeded alike
    static constexpr char start[] = "\r\n+CSQ: \r\n\xff\xfe\x00+CMTI: \"S\r";
    QByteArray bytes(start, sizeof start - 1);
    for (int i = 0; i < 64; ++i)
        bytes += static_cast<char>(random() & 0xFF);
    return bytes + "\r\n\x80\x1b[?\r\n+CM";
}
