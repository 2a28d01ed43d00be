#ifndef DATAVALUE_XML_XMLCHECK_P_H
#define DATAVALUE_XML_XMLCHECK_P_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What must hold of a text before TinyXML may parse it.
///
/// TinyXML reads past the end of a text that ends inside a UTF-8 character, recurses once per
/// level of nesting, jumps over whole elements after a malformed character reference and compares
/// each attribute of an element with all others. The check walks the text by TinyXML's own rules of
/// where a tag, comment or section ends, and refuses it where following them would be unsafe. A
/// text that passes may still be refused by the parser.
class XmlCheck
{
public:
    /// `utf8`: whether the text must be UTF-8; else its bytes are characters.
    XmlCheck(std::string_view text, bool utf8);

    /// Null when the text passed, else the reason why not.
    const char* refusal() const { return m_refusal; }
    /// Line and column of the refused place, counted from 1.
    std::pair<int, int> position() const;
    /// The text as the parser is to see it. Each line end is one line feed, except in a CDATA
    /// section: a carriage return there is data, it is how a text of blanks and carriage returns
    /// is saved. An ampersand that begins none of XML's references, which the parser would drop,
    /// is escaped.
    std::string prepared() const;

private:
    bool walk();
    bool markup();
    bool declaration();
    bool pseudoAttribute();
    bool startTag();
    bool attribute();
    bool endTag();
    bool reference();
    bool characterReference();
    bool skipName();
    bool skipPast(std::string_view end, const char* reason);
    void skipBlanks();
    bool startsWith(std::string_view word) const;
    bool refuse(const char* reason);
    char current() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }

    std::string_view m_text;
    std::size_t m_at = 0;
    int m_depth = 0;
    const char* m_refusal = nullptr;
    std::vector<std::pair<std::size_t, std::size_t>> m_sections; // CDATA: begin and end
    std::vector<std::size_t> m_ampersands;                       // those that are to be escaped
};

#endif
