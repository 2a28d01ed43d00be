#include "LogTask/logtext_p.h"

#include "text/utf8_p.h"

#include <QDateTime>

#include <charconv>
#include <chrono>
#include <cstring>

namespace {

// The conversion to local time is asked once per second and thread: it costs more than
// the rest of a line.
struct SecondText
{
    qint64 second = -1;
    char text[8] = {};

    void show(qint64 newSecond)
    {
        if (newSecond == second)
            return;
        second = newSecond;
        const QTime time = QDateTime::fromMSecsSinceEpoch(second * 1000).time();
        const int parts[] = {time.hour(), time.minute(), time.second()};
        char* out = text;
        for (const int part : parts) {
            if (out != text)
                *out++ = ':';
            *out++ = static_cast<char>('0' + part / 10);
            *out++ = static_cast<char>('0' + part % 10);
        }
    }
};

struct Now
{
    const SecondText& second;
    int milliseconds;
};

Now timeNow()
{
    using namespace std::chrono;
    const qint64 now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    thread_local SecondText current;
    current.show(now / 1000);
    return {current, static_cast<int>(now % 1000)};
}

void append(LogBytes* line, const QByteArray& bytes)
{
    line->append(bytes.constData(), bytes.size());
}

} // namespace

void appendTime(QString* line)
{
    appendUtf8(line, timeNow().second.text, sizeof SecondText::text);
}

void appendTime(LogBytes* line)
{
    line->append(timeNow().second.text, sizeof SecondText::text);
}

void appendStamp(QString* line)
{
    const Now now = timeNow();
    char stamp[16];
    std::memcpy(stamp, now.second.text, sizeof now.second.text);
    char* end = stamp + sizeof now.second.text;
    *end++ = ' ';
    end = std::to_chars(end, end + 3, now.milliseconds).ptr;
    *end++ = ' ';
    appendUtf8(line, stamp, static_cast<std::size_t>(end - stamp));
}

void appendNumber(QString* line, int number, int base)
{
    char digits[16];
    // A code is written as the 32 bits it has, not with a minus sign.
    const auto end = base == 16 ? std::to_chars(digits, digits + sizeof digits,
                                                static_cast<unsigned>(number), 16)
                                : std::to_chars(digits, digits + sizeof digits, number, base);
    appendUtf8(line, digits, static_cast<std::size_t>(end.ptr - digits));
}

// ASCII, the usual case, is converted and checked at once.
void appendUtf8(QString* line, const char* text, std::size_t size)
{
    const auto before = line->size();
    line->resize(before + static_cast<int>(size));
    auto* const to = reinterpret_cast<ushort*>(line->data()) + before;
    if (Utf8::widenAscii({text, size}, to) == size)
        return;
    line->resize(before);
    line->append(QString::fromUtf8(text, static_cast<int>(size)));
}

void appendUtf8(LogBytes* line, const char* text, std::size_t size)
{
    if (size == 0) // there may be no text at all
        return;
    if (Utf8::isAscii({text, size}))
        line->append(text, static_cast<int>(size));
    else
        append(line, QString::fromUtf8(text, static_cast<int>(size)).toLocal8Bit());
}

void appendText(LogBytes* line, const QString& text)
{
    const auto before = line->size();
    const auto size = text.size();
    line->resize(before + size);
    const auto* const from = reinterpret_cast<const ushort*>(text.constData());
    const auto count = static_cast<std::size_t>(size);
    if (Utf8::narrowAscii(from, count, line->data() + before) == count)
        return;
    line->resize(before);
    append(line, text.toLocal8Bit());
}
