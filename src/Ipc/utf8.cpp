#include "Ipc/utf8_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// The length of the sequence that begins with `lead`; 1 for what begins no longer sequence.
int sequenceLength(unsigned char lead)
{
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 1;
}

// Whether `second` may follow `lead`: overlong forms, surrogates and what lies beyond U+10FFFF are
// excluded here, as they are by the decoder.
bool isSecondByte(unsigned char lead, unsigned char second)
{
    switch (lead) {
    case 0xE0:
        return second >= 0xA0 && second <= 0xBF;
    case 0xED:
        return second >= 0x80 && second <= 0x9F;
    case 0xF0:
        return second >= 0x90 && second <= 0xBF;
    case 0xF4:
        return second >= 0x80 && second <= 0x8F;
    default:
        return second >= 0x80 && second <= 0xBF;
    }
}

bool isFollowing(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// How many bytes from `at` on are ASCII for certain, eight at a time.
qsizetype asciiRun(const char* bytes, qsizetype size)
{
    qsizetype at = 0;
    std::uint64_t eight = 0;
    for (; at + 8 <= size; at += 8) {
        std::memcpy(&eight, bytes + at, 8);
        if (eight & 0x8080808080808080U)
            break;
    }
    return at;
}

// The length of the valid character at the beginning; 0 when there is none.
int validCharacter(const char* bytes, qsizetype size)
{
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80)
        return 1;
    const int length = sequenceLength(lead);
    if (length == 1 || length > size || !isSecondByte(lead, static_cast<unsigned char>(bytes[1])))
        return 0;
    for (int i = 2; i < length; ++i) {
        if (!isFollowing(bytes[i]))
            return 0;
    }
    return length;
}

} // namespace

bool Utf8::isValid(const char* bytes, qsizetype size)
{
    qsizetype at = 0;
    while (at < size) {
        at += asciiRun(bytes + at, size - at);
        // Some of what follows is not ASCII.
        for (const qsizetype end = std::min(size, at + 8); at < end;) {
            const int length = validCharacter(bytes + at, size - at);
            if (length == 0)
                return false;
            at += length;
        }
    }
    return true;
}

qsizetype Utf8::incompleteTail(const char* bytes, qsizetype size)
{
    for (qsizetype tail = 1; tail <= std::min<qsizetype>(3, size); ++tail) {
        const auto lead = static_cast<unsigned char>(bytes[size - tail]);
        if (lead >= 0x80 && lead <= 0xBF)
            continue; // a following byte: the lead stands before it
        if (sequenceLength(lead) <= tail)
            return 0;
        if (tail > 1 && !isSecondByte(lead, static_cast<unsigned char>(bytes[size - tail + 1])))
            return 0;
        return tail;
    }
    return 0;
}

// The decoder would take the first U+FEFF for a byte-order mark and drop it.
QString Utf8::decode(const char* bytes, qsizetype size)
{
    QString marks;
    while (size >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0) {
        marks += QChar(0xFEFF);
        bytes += 3;
        size -= 3;
    }
    const QString rest = QString::fromUtf8(bytes, size);
    return marks.isEmpty() ? rest : marks + rest;
}

qsizetype Utf8::units(const char* bytes, qsizetype size)
{
    qsizetype count = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        count += (byte & 0xC0U) != 0x80U; // each character once,
        count += byte >= 0xF0U;           // and those beyond U+FFFF twice
    }
    return count;
}

qsizetype Utf8::bytesOfUnits(const char* bytes, qsizetype size, qsizetype count)
{
    qsizetype at = 0;
    for (; at < size && count > 0; ++at) {
        count -= static_cast<unsigned char>(bytes[at]) >= 0xF0U ? 2 : 1;
        while (at + 1 < size && isFollowing(bytes[at + 1]))
            ++at;
    }
    return count > 0 ? -1 : at;
}
