#include "text/utf8_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr std::uint64_t kNonAscii =
    0x8080808080808080U; // the bit of each of eight bytes that says it

char byte(unsigned int lead, unsigned int bits)
{
    return static_cast<char>(lead | bits);
}

/// Writes characters that are not ASCII; returns how many units that were, 0 before a surrogate
/// that stands alone.
std::size_t writeOther(const ushort* from, std::size_t count, char*& to)
{
    std::size_t done = 0;
    for (; done < count && from[done] >= 0x80; ++done) {
        unsigned int code = from[done];
        if (code < 0x800) {
            *to++ = byte(0xC0, code >> 6);
        } else {
            if (QChar::isSurrogate(code)) {
                const bool isPair = QChar::isHighSurrogate(code) && done + 1 < count &&
                                    QChar::isLowSurrogate(from[done + 1]);
                if (!isPair)
                    return 0;
                code = QChar::surrogateToUcs4(from[done], from[done + 1]);
                ++done;
                *to++ = byte(0xF0, code >> 18);
                *to++ = byte(0x80, code >> 12 & 0x3F);
            } else {
                *to++ = byte(0xE0, code >> 12);
            }
            *to++ = byte(0x80, code >> 6 & 0x3F);
        }
        *to++ = byte(0x80, code & 0x3F);
    }
    return done;
}

template<class Stops>
std::size_t widen(std::string_view text, ushort* to, Stops stops)
{
    std::size_t done = 0;
#ifdef __SSE2__
    for (; text.size() - done >= 16; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + done));
        if (_mm_movemask_epi8(stops(bytes)) != 0)
            break;
        const __m128i zero = _mm_setzero_si128();
        auto* const units = reinterpret_cast<__m128i*>(to + done);
        _mm_storeu_si128(units, _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(units + 1, _mm_unpackhi_epi8(bytes, zero));
    }
#endif
    for (; done < text.size(); ++done) {
        const auto byte = static_cast<unsigned char>(text[done]);
        if (stops(byte))
            break;
        to[done] = byte;
    }
    return done;
}

/// Which bytes are not ASCII: the highest bit of each says it.
struct NonAscii
{
    bool operator()(unsigned char byte) const { return byte >= 0x80; }
#ifdef __SSE2__
    __m128i operator()(__m128i bytes) const
    {
        return bytes;
    }
#endif
};

/// Which bytes are not ASCII, or not allowed in a JSON string.
struct NotPlain
{
    bool operator()(unsigned char byte) const
    {
        return byte < 0x20 || byte >= 0x80 || byte == '"' || byte == '\\';
    }
#ifdef __SSE2__
    __m128i operator()(__m128i bytes) const
    {
        // As signed numbers, those that are not ASCII are below the blank as well.
        const __m128i outside = _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20));
        const __m128i quote = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
        const __m128i backslash = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
        return _mm_or_si128(outside, _mm_or_si128(quote, backslash));
    }
#endif
};

/// The bytes of the character that begins with `lead`; 0 when none does.
inline std::size_t characterSize(uint lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
}

bool isFollowing(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Reads the character at the beginning, which is not ASCII; returns its bytes, 0 when they are
/// none.
inline std::size_t readOther(const char* bytes, std::size_t count, uint& code)
{
    // What a following byte adds to the code; 0x40 and more for other bytes.
    const auto bits = [bytes](std::size_t i) {
        return static_cast<unsigned char>(bytes[i]) ^ uint(0x80);
    };
    const uint lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0xE0) {
        if (lead < 0xC2 || count < 2 || bits(1) >= 0x40)
            return 0;
        code = (lead & 0x1FU) << 6 | bits(1);
        return 2;
    }
    if (lead < 0xF0) {
        if (count < 3 || (bits(1) | bits(2)) >= 0x40)
            return 0;
        code = (lead & 0x0FU) << 12 | bits(1) << 6 | bits(2);
        return code < 0x800 || QChar::isSurrogate(code) ? 0 : 3;
    }
    if (lead > 0xF4 || count < 4 || (bits(1) | bits(2) | bits(3)) >= 0x40)
        return 0;
    code = (lead & 0x07U) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
    return code < 0x10000 || code > 0x10FFFF ? 0 : 4;
}

/// How many bytes at the beginning are ASCII, looked at several at a time: those before the first
/// group that has another byte in it, or that is cut short by the end.
std::size_t asciiRun(const char* bytes, std::size_t size)
{
    std::size_t at = 0;
#ifdef __SSE2__
    for (; size - at >= 16; at += 16) {
        const __m128i step = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
        if (_mm_movemask_epi8(step) != 0) // the highest bit of each byte
            return at;
    }
#endif
    std::uint64_t step = 0;
    for (; size - at >= sizeof step; at += sizeof step) {
        std::memcpy(&step, bytes + at, sizeof step);
        if (step & kNonAscii)
            break;
    }
    return at;
}

} // namespace

bool Utf8::isAscii(std::string_view bytes)
{
    std::size_t at = asciiRun(bytes.data(), bytes.size());
    while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80)
        ++at;
    return at == bytes.size();
}

std::size_t Utf8::validLength(std::string_view bytes)
{
    const char* const begin = bytes.data();
    const std::size_t size = bytes.size();
    std::size_t at = 0;
    while (at < size) {
        at += asciiRun(begin + at, size - at);
        // Some of what follows is not ASCII.
        for (const std::size_t end = std::min(size, at + 16); at < end;) {
            uint code = 0;
            const bool isAscii = static_cast<unsigned char>(begin[at]) < 0x80;
            const std::size_t length = isAscii ? 1 : readOther(begin + at, size - at, code);
            if (length == 0)
                return at;
            at += length;
        }
    }
    return at;
}

std::size_t Utf8::incompleteTail(std::string_view bytes)
{
    std::size_t tail = 1;
    while (tail <= 3 && tail <= bytes.size() && isFollowing(bytes[bytes.size() - tail]))
        ++tail;
    if (tail > 3 || tail > bytes.size())
        return 0;
    const std::string_view begun = bytes.substr(bytes.size() - tail);
    const std::size_t size = characterSize(static_cast<unsigned char>(begun.front()));
    if (size <= tail)
        return 0;
    if (tail == 1)
        return 1;
    // It may become valid when one end makes it so: only the second byte depends on the first.
    char whole[] = {'\x80', '\x80', '\x80', '\x80'};
    begun.copy(whole, tail);
    uint code = 0;
    return readOther(whole, size, code) == 0 ? 0 : tail;
}

QString Utf8::decode(std::string_view bytes)
{
    using Size = decltype(QString().size());
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<Size>::max()))
        throw std::bad_alloc(); // more than a QString holds
    // The decoder would take the first U+FEFF for a byte-order mark and drop it.
    QString marks;
    while (bytes.substr(0, kMark.size()) == kMark) {
        marks += QChar(0xFEFF);
        bytes.remove_prefix(kMark.size());
    }
    const QString rest = QString::fromUtf8(bytes.data(), static_cast<Size>(bytes.size()));
    return marks.isEmpty() ? rest : marks + rest;
}

std::size_t Utf8::units(std::string_view bytes)
{
    std::size_t count = 0;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        count += (byte & 0xC0U) != 0x80U; // each character once,
        count += byte >= 0xF0U;           // and those beyond U+FFFF twice
    }
    return count;
}

std::size_t Utf8::bytesOfUnits(std::string_view bytes, std::size_t count)
{
    std::size_t at = 0;
    while (at < bytes.size() && count > 0) {
        const bool isPair = static_cast<unsigned char>(bytes[at]) >= 0xF0U;
        count -= isPair ? std::min<std::size_t>(count, 2) : 1;
        ++at;
        while (at < bytes.size() && isFollowing(bytes[at]))
            ++at;
    }
    return count > 0 ? npos : at;
}

std::size_t Utf8::narrowAscii(const ushort* from, std::size_t count, char* to)
{
    std::size_t done = 0;
#ifdef __SSE2__
    const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
    for (; count - done >= 8; done += 8) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        const __m128i ascii = _mm_cmpeq_epi16(_mm_and_si128(units, beyond), _mm_setzero_si128());
        if (_mm_movemask_epi8(ascii) != 0xFFFF)
            break;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + done), _mm_packus_epi16(units, units));
    }
#endif
    for (; done < count && from[done] < 0x80; ++done)
        to[done] = static_cast<char>(from[done]);
    return done;
}

std::size_t Utf8::widenAscii(std::string_view text, ushort* to)
{
    return widen(text, to, NonAscii());
}

std::size_t Utf8::widenPlain(std::string_view text, ushort* to)
{
    return widen(text, to, NotPlain());
}

ushort* Utf8::widenOther(std::string_view text, ushort* to)
{
    while (!text.empty()) {
        uint code = 0;
        const std::size_t size = readOther(text.data(), text.size(), code);
        if (size == 0)
            return nullptr;
        if (QChar::requiresSurrogates(code)) {
            *to++ = QChar::highSurrogate(code);
            *to++ = QChar::lowSurrogate(code);
        } else {
            *to++ = static_cast<ushort>(code);
        }
        text.remove_prefix(size);
    }
    return to;
}

std::size_t Utf8::room(const QString& text)
{
    const auto* const units = reinterpret_cast<const ushort*>(text.constData());
    const auto count = static_cast<std::size_t>(text.size());
    constexpr std::size_t kShort = 80; // whose characters are not worth a look
    if (count <= kShort)
        return 3 * count;
    std::size_t bytes = count;
    for (std::size_t i = 0; i < count; ++i)
        bytes += static_cast<std::size_t>((units[i] >= 0x80) + (units[i] >= 0x800));
    return bytes;
}

char* Utf8::write(const QString& text, char* to)
{
    const auto* const units = reinterpret_cast<const ushort*>(text.constData());
    const auto count = static_cast<std::size_t>(text.size());
    char* end = to;
    for (std::size_t done = 0; done < count;) {
        const std::size_t ascii = narrowAscii(units + done, count - done, end);
        end += ascii;
        done += ascii;
        if (done == count)
            break;
        const std::size_t other = writeOther(units + done, count - done, end);
        if (other == 0) { // what stands for half a character is Qt's decision
            const QByteArray whole = text.toUtf8();
            std::memcpy(to, whole.constData(), static_cast<std::size_t>(whole.size()));
            return to + whole.size();
        }
        done += other;
    }
    return end;
}
