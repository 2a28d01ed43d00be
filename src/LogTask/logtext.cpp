#include "LogTask/logtext_p.h"

#include <QDateTime>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstring>

namespace {

// The conversion to local time is asked once per second and thread: it is by far the dearest part
// of a line.
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

// Returns the milliseconds of the second.
int appendTimeNow(QString* line)
{
    using namespace std::chrono;
    const qint64 now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    thread_local SecondText current;
    current.show(now / 1000);
    line->append(QLatin1String(current.text, sizeof current.text));
    return static_cast<int>(now % 1000);
}

// Eight bytes at a time.
bool isAscii(const char* text, std::size_t size)
{
    std::uint64_t seen = 0;
    std::size_t at = 0;
    for (; at + sizeof seen <= size; at += sizeof seen) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text + at, sizeof bytes);
        seen |= bytes;
    }
    for (; at < size; ++at)
        seen |= static_cast<unsigned char>(text[at]);
    return (seen & 0x8080808080808080U) == 0;
}

} // namespace

void appendTime(QString* line)
{
    appendTimeNow(line);
}

void appendStamp(QString* line)
{
    const int milliseconds = appendTimeNow(line);
    *line += QLatin1Char(' ');
    appendNumber(line, milliseconds);
    *line += QLatin1Char(' ');
}

void appendNumber(QString* line, int number, int base)
{
    char digits[16];
    // A code is written as the 32 bits it has, not with a minus sign.
    const auto end = base == 16 ? std::to_chars(digits, digits + sizeof digits,
                                                static_cast<unsigned>(number), 16)
                                : std::to_chars(digits, digits + sizeof digits, number, base);
    line->append(QLatin1String(digits, static_cast<int>(end.ptr - digits)));
}

void appendUtf8(QString* line, const char* text, std::size_t size)
{
    if (isAscii(text, size))
        line->append(QLatin1String(text, static_cast<int>(size)));
    else
        line->append(QString::fromUtf8(text, static_cast<int>(size)));
}

std::size_t wholeUtf8(const char* text, std::size_t size)
{
    // Back to the last byte that begins a character, then ask whether all its bytes are there.
    std::size_t start = size;
    while (start > 0 && size - start < 4) {
        --start;
        const auto byte = static_cast<unsigned char>(text[start]);
        if ((byte & 0xC0U) == 0x80U)
            continue;
        const std::size_t length = byte >= 0xF0U ? 4 : byte >= 0xE0U ? 3 : byte >= 0xC0U ? 2 : 1;
        return size - start < length ? start : size;
    }
    return size;
}
