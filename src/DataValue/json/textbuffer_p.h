#ifndef DATAVALUE_JSON_TEXTBUFFER_P_H
#define DATAVALUE_JSON_TEXTBUFFER_P_H

#include <QString>

#include <cstddef>
#include <string_view>

/// A text that is written front to back, straight into the QString that it becomes.
class TextBuffer
{
public:
    TextBuffer() = default;
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    std::size_t size() const { return static_cast<std::size_t>(m_end - m_begin); }
    ushort last() const { return m_end[-1]; }
    /// The text. The buffer is used up.
    QString take();

    /// A byte that is ASCII.
    void append(char byte)
    {
        *room(1) = static_cast<unsigned char>(byte);
        ++m_end;
    }
    /// Bytes that are ASCII.
    void append(std::string_view text)
    {
        ushort* to = room(text.size());
        for (const char byte : text)
            *to++ = static_cast<unsigned char>(byte);
        m_end = to;
    }
    void appendBlanks(std::size_t count);
    /// UTF-8, as QString::fromUtf8() reads it.
    void appendUtf8(std::string_view text);
    /// UTF-8 in quotation marks, with the characters escaped that JSON does not allow there.
    void appendQuoted(std::string_view text);
    void append(const TextBuffer& other);

    /// Makes room for that many characters at once.
    void reserve(std::size_t size) { room(size); }

private:
    ushort* room(std::size_t size)
    {
        if (size > static_cast<std::size_t>(m_limit - m_end))
            grow(size);
        return m_end;
    }
    void grow(std::size_t size);
    void appendNonAscii(std::string_view run);
    void appendEscaped(unsigned char byte);

    static constexpr std::size_t kFirst = 512;

    ushort m_first[kFirst]; // room for short texts, which then become a QString of their size
    QString m_text;         // what has outgrown it; of the size of the room
    ushort* m_begin = m_first;
    ushort* m_end = m_first;
    ushort* m_limit = m_first + kFirst;
};

#endif
