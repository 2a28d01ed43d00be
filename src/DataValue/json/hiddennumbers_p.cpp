#include "DataValue/json/hiddennumbers_p.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <locale>
#include <optional>
#include <string_view>

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t behindDigits(std::string_view text, std::size_t at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

/// The end of the number that begins at `at`, by the rules of JsonCpp's reader.
std::size_t behindNumber(std::string_view text, std::size_t at)
{
    at = behindDigits(text, at + 1);
    if (at < text.size() && text[at] == '.')
        at = behindDigits(text, at + 1);
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-'))
            ++at;
        at = behindDigits(text, at);
    }
    return at;
}

std::size_t behindString(std::string_view text, std::size_t at)
{
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\')
            ++at;
    }
    return at + 1;
}

std::size_t behindComment(std::string_view text, std::size_t at)
{
    const char kind = at + 1 < text.size() ? text[at + 1] : '\0';
    if (kind == '*') {
        const auto end = text.find("*/", at + 2);
        return end == std::string_view::npos ? text.size() : end + 2;
    }
    return kind == '/' ? text.find_first_of("\r\n", at) : at + 1;
}

/// As a stream of the "C" locale reads it: too small is 0, too large is none.
std::optional<double> numberOf(std::string_view text)
{
    const char* const end = text.data() + text.size();
    double number = 0;
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ptr != end)
        return std::nullopt;
    if (read.ec == std::errc())
        return number;
    long double wide = 0; // says which of the two it is
    const auto exponent = text.find_first_of("eE");
    const bool isSmall = std::from_chars(text.data(), end, wide).ec == std::errc()
                             ? std::fabs(wide) < 1
                             : exponent != std::string_view::npos && text[exponent + 1] == '-';
    if (!isSmall)
        return std::nullopt;
    return text.front() == '-' ? -0.0 : 0.0;
}

} // namespace

bool HiddenNumbers::areNeeded()
{
    const std::locale locale;
    const auto& form = std::use_facet<std::numpunct<char>>(locale);
    return form.decimal_point() != '.' || !form.grouping().empty();
}

HiddenNumbers::HiddenNumbers(std::string& text)
{
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (c == '"') {
            at = behindString(text, at);
        } else if (c == '/') {
            at = behindComment(text, at);
        } else if (c == '-' || isDigit(c)) {
            const std::size_t end = behindNumber(text, at);
            hide(text, at, end);
            at = end;
        } else {
            ++at;
        }
    }
}

void HiddenNumbers::hide(std::string& text, std::size_t begin, std::size_t end)
{
    const std::string_view token(text.data() + begin, end - begin);
    if (token.find_first_of(".eE") == std::string_view::npos)
        return;
    const std::optional<double> number = numberOf(token);
    // A second point begins no number; behind zeros it would.
    const bool endsThere = end == text.size() || text[end] != '.';
    m_areValid = m_areValid && number && endsThere;
    m_numbers.push_back({static_cast<std::ptrdiff_t>(begin), number.value_or(0)});
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(begin),
              text.begin() + static_cast<std::ptrdiff_t>(end), '0');
}

const double* HiddenNumbers::at(std::ptrdiff_t offset) const
{
    const auto found = std::lower_bound(
        m_numbers.begin(), m_numbers.end(), offset,
        [](const Number& number, std::ptrdiff_t wanted) { return number.offset < wanted; });
    return found != m_numbers.end() && found->offset == offset ? &found->value : nullptr;
}
