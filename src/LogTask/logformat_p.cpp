#include "LogTask/logformat_p.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// Text that is cut where the room ends.
class Output
{
public:
    Output(char* begin, std::size_t size)
        : m_begin(begin)
        , m_at(begin)
        , m_end(begin + size - 1)
    {
    }
    void append(const char* text, std::size_t size)
    {
        const auto kept = std::min(size, static_cast<std::size_t>(m_end - m_at));
        std::memcpy(m_at, text, kept);
        m_at += kept;
    }
    template<typename Number>
    void appendNumber(Number number, int base = 10)
    {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, number, base);
        append(digits, static_cast<std::size_t>(end.ptr - digits));
    }
    std::size_t finish()
    {
        *m_at = '\0';
        return static_cast<std::size_t>(m_at - m_begin);
    }

private:
    char* m_begin;
    char* m_at;
    char* m_end;
};

// A directive without flags, width, precision and length; false for any other.
bool appendArgument(Output* output, char directive, va_list* arguments)
{
    switch (directive) {
    case 's': {
        const char* const text = va_arg(*arguments, const char*);
        if (text)
            output->append(text, std::strlen(text));
        return text != nullptr;
    }
    case 'd':
    case 'i':
        output->appendNumber(va_arg(*arguments, int));
        return true;
    case 'u':
        output->appendNumber(va_arg(*arguments, unsigned));
        return true;
    case 'x':
        output->appendNumber(va_arg(*arguments, unsigned), 16);
        return true;
    case '%':
        output->append("%", 1);
        return true;
    default:
        return false;
    }
}

// False when the C library has to do it, which then begins anew.
bool formatSimply(Output* output, const char* format, va_list* arguments)
{
    for (;;) {
        const char* const percent = std::strchr(format, '%');
        if (!percent) {
            output->append(format, std::strlen(format));
            return true;
        }
        output->append(format, static_cast<std::size_t>(percent - format));
        if (!appendArgument(output, percent[1], arguments))
            return false;
        format = percent + 2;
    }
}

// What the C library makes of the format and `arguments`; false when it cannot show all of it.
bool formatFully(char* buffer, std::size_t size, const char* format, va_list arguments)
{
    va_list used;
    va_copy(used, arguments);
    const int length = std::vsnprintf(buffer, size, format, used);
    va_end(used);
    return length >= 0;
}

// For a format that cannot be shown: the longest part before a '%' that can. The last directive is
// the first to go.
void formatBeginning(char* buffer, std::size_t size, std::string format, va_list arguments)
{
    bool done = false;
    while (!done) {
        const auto last = format.rfind('%');
        format.resize(last == std::string::npos ? 0 : last);
        done = formatFully(buffer, size, format.c_str(), arguments);
    }
}

} // namespace

std::size_t formatText(char* buffer, std::size_t size, const char* format, va_list arguments)
{
    buffer[0] = '\0';
    if (!format)
        return 0;
    Output output(buffer, size);
    va_list tried;
    va_copy(tried, arguments);
    const bool done = formatSimply(&output, format, &tried);
    va_end(tried);
    if (done)
        return output.finish();
    if (!formatFully(buffer, size, format, arguments))
        formatBeginning(buffer, size, format, arguments);
    return std::strlen(buffer);
}
