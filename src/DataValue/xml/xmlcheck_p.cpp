#include "DataValue/xml/xmlcheck_p.h"

#include "DataValue/filecontent_p.h"
#include "text/utf8_p.h"

#include <algorithm>

namespace {

constexpr int kMaximumAttributes = 256;
constexpr std::string_view kBlanks = " \t\n\v\f\r";
constexpr std::string_view kCdata = "<![CDATA[";

bool isBlank(char c)
{
    return c != '\0' && kBlanks.find(c) != std::string_view::npos;
}

bool isLetter(char c)
{
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'z';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool startsName(char c)
{
    return isLetter(c) || c == '_' || static_cast<unsigned char>(c) >= 0x7F; // as the parser has it
}

bool continuesName(char c)
{
    return startsName(c) || isDigit(c) || c == '-' || c == '.' || c == ':';
}

int hexadecimal(char c)
{
    if (isDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

bool isCharacter(unsigned long code)
{
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

/// The first byte that is not part of a UTF-8 character, or a zero byte; the size when all is well.
std::size_t firstBadByte(std::string_view text, bool utf8)
{
    const std::size_t zero = std::min(text.find('\0'), text.size());
    return utf8 ? std::min(zero, Utf8::validLength(text)) : zero;
}

} // namespace

XmlCheck::XmlCheck(std::string_view text, bool utf8)
    : m_text(text)
{
    m_at = firstBadByte(text, utf8);
    if (m_at < text.size()) {
        refuse(text[m_at] == '\0' ? "A zero byte stands in the document"
                                  : "The document is not valid UTF-8");
        return;
    }
    m_at = 0;
    walk();
}

std::pair<int, int> XmlCheck::position() const
{
    const std::string_view before = m_text.substr(0, m_at);
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0
    return {static_cast<int>(lines) + 1, static_cast<int>(m_at - lineStart) + 1};
}

std::string XmlCheck::prepared() const
{
    std::string result;
    result.reserve(m_text.size());
    auto section = m_sections.begin();
    auto ampersand = m_ampersands.begin();
    for (std::size_t i = 0; i < m_text.size(); ++i) {
        if (section != m_sections.end() && i == section->first) {
            result.append(m_text, section->first, section->second - section->first);
            i = section->second - 1;
            ++section;
        } else if (ampersand != m_ampersands.end() && i == *ampersand) {
            result += "&amp;";
            ++ampersand;
        } else if (m_text[i] != '\r') {
            result += m_text[i];
        } else if (i + 1 == m_text.size() || m_text[i + 1] != '\n') {
            result += '\n';
        }
    }
    return result;
}

bool XmlCheck::refuse(const char* reason)
{
    m_refusal = reason;
    return false;
}

bool XmlCheck::startsWith(std::string_view word) const
{
    return m_text.substr(m_at, word.size()) == word;
}

void XmlCheck::skipBlanks()
{
    while (isBlank(current()))
        ++m_at;
}

bool XmlCheck::skipPast(std::string_view end, const char* reason)
{
    const std::size_t found = m_text.find(end, m_at);
    if (found == std::string_view::npos)
        return refuse(reason);
    m_at = found + end.size();
    return true;
}

bool XmlCheck::skipName()
{
    if (!startsName(current()))
        return refuse("A name was expected");
    while (continuesName(current()))
        ++m_at;
    return true;
}

bool XmlCheck::walk()
{
    if (startsWith("\xEF\xBB\xBF"))
        m_at += 3;
    while (m_at < m_text.size()) {
        const char c = current();
        if (c == '<') {
            if (!markup())
                return false;
        } else if (c == '&' && m_depth > 0) {
            if (!reference())
                return false;
        } else {
            ++m_at; // a text; outside of all elements the parser stops here, which is safe
        }
    }
    return m_depth == 0 || refuse("The document ends inside an element");
}

bool XmlCheck::markup()
{
    // In the parser's order: "<?xml" in any case begins a declaration, whatever follows.
    if (startsWith("<?")) {
        const std::string_view word = m_text.substr(m_at + 2, 3);
        const bool isXml = word.size() == 3 && (word[0] | 0x20) == 'x' && (word[1] | 0x20) == 'm' &&
                           (word[2] | 0x20) == 'l';
        return isXml ? declaration() : skipPast(">", "An instruction does not end");
    }
    if (startsWith("<!--")) {
        m_at += 4;
        return skipPast("-->", "A comment does not end");
    }
    if (startsWith(kCdata)) {
        const std::size_t begin = m_at;
        m_at += kCdata.size();
        if (!skipPast("]]>", "A CDATA section does not end"))
            return false;
        m_sections.emplace_back(begin, m_at);
        return true;
    }
    if (startsWith("</") && m_depth > 0)
        return endTag();
    if (m_at + 1 < m_text.size() && startsName(m_text[m_at + 1]))
        return startTag();
    return skipPast(">", "A tag does not end");
}

bool XmlCheck::declaration()
{
    m_at += 5;
    for (;;) {
        const bool blank = isBlank(current());
        skipBlanks();
        if (startsWith("?>")) {
            m_at += 2;
            return true;
        }
        if (!blank || !pseudoAttribute())
            return refuse("The declaration is malformed");
    }
}

bool XmlCheck::pseudoAttribute()
{
    static constexpr std::string_view kNames[] = {"version", "encoding", "standalone"};
    const auto name = std::find_if(std::begin(kNames), std::end(kNames),
                                   [this](std::string_view word) { return startsWith(word); });
    if (name == std::end(kNames))
        return false;
    m_at += name->size();
    skipBlanks();
    if (current() != '=')
        return false;
    ++m_at;
    skipBlanks();
    const char quote = current();
    if (quote != '"' && quote != '\'')
        return false;
    ++m_at;
    while (current() != quote) {
        if (current() == '\0' ||
            std::string_view("<>&\"'").find(current()) != std::string_view::npos)
            return false;
        ++m_at;
    }
    ++m_at;
    return true;
}

bool XmlCheck::startTag()
{
    const std::size_t begin = m_at++;
    skipName();
    for (int attributes = 0;; ++attributes) {
        skipBlanks();
        if (current() == '>') {
            ++m_at;
            if (++m_depth <= FileContent::kMaximumNesting)
                return true;
            m_at = begin;
            return refuse("The elements are nested too deeply");
        }
        if (startsWith("/>")) {
            m_at += 2;
            if (m_depth < FileContent::kMaximumNesting)
                return true;
            m_at = begin;
            return refuse("The elements are nested too deeply");
        }
        if (attributes == kMaximumAttributes)
            return refuse("An element has too many attributes");
        if (!attribute())
            return false;
    }
}

bool XmlCheck::attribute()
{
    if (!skipName())
        return false;
    skipBlanks();
    if (current() != '=')
        return refuse("An attribute has no value");
    ++m_at;
    skipBlanks();
    const char quote = current();
    if (quote != '"' && quote != '\'')
        return refuse("The value of an attribute is not quoted");
    ++m_at;
    while (current() != quote) {
        if (current() == '\0')
            return refuse("The value of an attribute does not end");
        if (current() != '&')
            ++m_at;
        else if (!reference())
            return false;
    }
    ++m_at;
    return true;
}

bool XmlCheck::endTag()
{
    m_at += 2;
    if (!skipName())
        return false;
    skipBlanks();
    if (current() != '>')
        return refuse("An end tag does not end");
    ++m_at;
    --m_depth;
    return true;
}

/// At an ampersand. One that begins a character reference must be followed by the rest of it.
bool XmlCheck::reference()
{
    static constexpr std::string_view kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
    if (startsWith("&#"))
        return characterReference();
    const bool known = std::any_of(std::begin(kEntities), std::end(kEntities),
                                   [this](std::string_view entity) { return startsWith(entity); });
    if (!known)
        m_ampersands.push_back(m_at);
    ++m_at;
    return true;
}

bool XmlCheck::characterReference()
{
    const std::size_t begin = m_at;
    m_at += 2;
    const bool isHexadecimal = current() == 'x';
    if (isHexadecimal)
        ++m_at;
    unsigned long code = 0;
    int digits = 0;
    for (; digits < 8 && hexadecimal(current()) >= 0; ++digits, ++m_at) {
        const int digit = hexadecimal(current());
        if (!isHexadecimal && digit > 9)
            break;
        code = code * (isHexadecimal ? 16 : 10) + static_cast<unsigned long>(digit);
    }
    if (digits == 0 || current() != ';' || !isCharacter(code)) {
        m_at = begin;
        return refuse("A character reference is malformed");
    }
    ++m_at;
    return true;
}
