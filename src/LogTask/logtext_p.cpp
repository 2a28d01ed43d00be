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
    QChar* const to = line->data() + before;
    unsigned char seen = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        seen = static_cast<unsigned char>(seen | byte);
        to[i] = QLatin1Char(text[i]);
    }
    if (seen < 0x80)
        return;
    line->resize(before);
    line->append(QString::fromUtf8(text, static_cast<int>(size)));
}

void appendUtf8(LogBytes* line, const char* text, std::size_t size)
{
    if (size == 0) // there may be no text at all
        return;
    if (isAscii(text, size))
        line->append(text, static_cast<int>(size));
    else
        append(line, QString::fromUtf8(text, static_cast<int>(size)).toLocal8Bit());
}

void appendText(LogBytes* line, const QString& text)
{
    const auto before = line->size();
    const auto size = text.size(); // a copy: what is written to bytes may change anything
    line->resize(before + size);
    char* const to = line->data() + before;
    const QChar* const from = text.constData();
    ushort seen = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const ushort unit = from[i].unicode();
        seen = static_cast<ushort>(seen | unit);
        to[i] = static_cast<char>(unit);
    }
    if (seen < 0x80)
        return;
    line->resize(before);
    append(line, text.toLocal8Bit());
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
