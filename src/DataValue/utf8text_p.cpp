#include "DataValue/utf8text_p.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

/// Narrows characters up to the first that is not ASCII, or to the end; returns how many.
std::size_t writeAscii(const ushort* from, std::size_t count, char* to)
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

/// Which bytes are not ASCII.
struct NonAscii
{
    bool operator()(unsigned char byte) const { return byte >= 0x80; }
#ifdef __SSE2__
    __m128i operator()(__m128i bytes) const
    {
        return bytes;
    } // the highest bit says it
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

/// Reads one character that is not ASCII; returns its bytes, 0 when they are none.
std::size_t readOther(std::string_view text, uint& code)
{
    const auto at = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const uint lead = at(0);
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < size)
        return 0;
    code = lead & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((at(i) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (at(i) & 0x3F);
    }
    const bool isTooLong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    return isTooLong || code > 0x10FFFF || QChar::isSurrogate(code) ? 0 : size;
}

} // namespace

std::size_t Utf8Text::widenAscii(std::string_view text, ushort* to)
{
    return widen(text, to, NonAscii());
}

std::size_t Utf8Text::widenPlain(std::string_view text, ushort* to)
{
    return widen(text, to, NotPlain());
}

ushort* Utf8Text::widenOther(std::string_view text, ushort* to)
{
    while (!text.empty()) {
        uint code = 0;
        const std::size_t size = readOther(text, code);
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

std::size_t Utf8Text::room(const QString& text)
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

char* Utf8Text::write(const QString& text, char* to)
{
    const auto* const units = reinterpret_cast<const ushort*>(text.constData());
    const auto count = static_cast<std::size_t>(text.size());
    char* end = to;
    for (std::size_t done = 0; done < count;) {
        const std::size_t ascii = writeAscii(units + done, count - done, end);
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
