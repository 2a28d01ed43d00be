#include "DataValue/json/textbuffer_p.h"

#include "text/utf8_p.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace {

std::size_t nonAsciiBytes(std::string_view text)
{
    std::size_t count = 0;
    while (count != text.size() && static_cast<unsigned char>(text[count]) >= 0x80)
        ++count;
    return count;
}

} // namespace

void TextBuffer::grow(std::size_t size)
{
    using Size = decltype(m_text.size());
    const std::size_t used = this->size();
    const std::size_t wanted = std::max(used + used / 2 + kFirst, used + size);
    if (wanted > static_cast<std::size_t>(std::numeric_limits<Size>::max() / 4))
        throw std::bad_alloc(); // more than a QString holds
    const bool isFirst = m_begin == m_first;
    m_text.reserve(static_cast<Size>(wanted)); // resize() alone would take up to twice as much
    m_text.resize(static_cast<Size>(wanted));
    m_begin = reinterpret_cast<ushort*>(m_text.data());
    m_end = m_begin + used;
    m_limit = m_begin + wanted;
    if (isFirst)
        std::memcpy(m_begin, m_first, used * sizeof(ushort));
}

QString TextBuffer::take()
{
    const auto used = static_cast<decltype(m_text.size())>(size());
    if (m_begin == m_first)
        return QString(reinterpret_cast<const QChar*>(m_first), used);
    const bool isRoomy = m_text.capacity() - used > used / 4;
    m_text.resize(used);
    if (isRoomy)
        m_text.squeeze();
    m_begin = m_end = m_first;
    m_limit = m_first + kFirst;
    return std::move(m_text);
}

void TextBuffer::appendBlanks(std::size_t count)
{
    std::fill_n(room(count), count, ushort(' '));
    m_end += count;
}

void TextBuffer::append(const TextBuffer& other)
{
    if (other.size() != 0)
        std::memcpy(room(other.size()), other.m_begin, other.size() * sizeof(ushort));
    m_end += other.size();
}

void TextBuffer::appendUtf8(std::string_view text)
{
    room(text.size()); // no text has more units than bytes
    while (!text.empty()) {
        const std::size_t ascii = Utf8::widenAscii(text, m_end);
        m_end += ascii;
        text.remove_prefix(ascii);
        const std::size_t other = nonAsciiBytes(text);
        appendNonAscii(text.substr(0, other));
        text.remove_prefix(other);
    }
}

void TextBuffer::appendQuoted(std::string_view text)
{
    room(text.size() + 2);
    *m_end++ = '"';
    for (;;) {
        const std::size_t plain = Utf8::widenPlain(text, m_end);
        m_end += plain;
        text.remove_prefix(plain);
        if (text.empty())
            break;
        const std::size_t other = nonAsciiBytes(text);
        if (other != 0) {
            appendNonAscii(text.substr(0, other));
            text.remove_prefix(other);
        } else {
            appendEscaped(static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            room(text.size() + 1); // an escape took more than its byte
        }
    }
    *m_end++ = '"';
}

void TextBuffer::appendEscaped(unsigned char byte)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr char kShort[] = "\"\\\b\f\n\r\t";
    static constexpr char kLetters[] = "\"\\bfnrt";
    const char* const found = byte ? std::strchr(kShort, byte) : nullptr;
    append('\\');
    if (found) {
        append(kLetters[found - kShort]);
    } else {
        append("u00");
        append(kHex[byte >> 4]);
        append(kHex[byte & 0xF]);
    }
}

void TextBuffer::appendNonAscii(std::string_view run)
{
    if (ushort* const end = Utf8::widenOther(run, m_end)) {
        m_end = end;
        return;
    }
    const QString whole = Utf8::decode(run);
    std::memcpy(m_end, whole.utf16(), static_cast<std::size_t>(whole.size()) * sizeof(ushort));
    m_end += whole.size();
}
