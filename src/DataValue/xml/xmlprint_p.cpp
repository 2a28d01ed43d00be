#include "DataValue/xml/xmlprint_p.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <utility>

#include <locale.h>
#ifdef __APPLE__
#include <xlocale.h>
#endif

namespace {

constexpr char kIndent[] = "    ";

void appendEscaped(std::string& out, std::string_view text)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            if (byte >= 0x20)
                out += c;
            else
                out.append("&#x").append(1, kHex[byte >> 4]).append(1, kHex[byte & 0xF]) += ';';
        }
    }
}

/// A comment must not end before its end.
void appendComment(std::string& out, std::string text)
{
    for (std::size_t at = 0; (at = text.find("-->", at)) != std::string::npos;)
        text.replace(at, 3, "--&gt;");
    out += "<!--" + text + "-->";
}

void appendDeclaration(std::string& out, const TiXmlDeclaration& declaration)
{
    const auto part = [&out](const char* name, const char* value) {
        if (*value != '\0')
            out.append(name).append("=\"").append(value).append("\" ");
    };
    out += "<?xml ";
    part("version", declaration.Version());
    part("encoding", declaration.Encoding());
    part("standalone", declaration.Standalone());
    out += "?>";
}

void appendText(std::string& out, const TiXmlText& node)
{
    const std::string& text = node.ValueStr();
    const bool section = (node.CDATA() && text.find("]]>") == std::string::npos) ||
                         (!text.empty() && XmlPrint::isDroppedByParser(text));
    if (section)
        out += "<![CDATA[" + text + "]]>";
    else
        appendEscaped(out, text);
}

void appendTag(std::string& out, const TiXmlElement& element)
{
    out += '<' + element.ValueStr();
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute;
         attribute = attribute->Next()) {
        out += ' ';
        appendEscaped(out, attribute->NameTStr());
        out += "=\"";
        appendEscaped(out, attribute->ValueStr());
        out += '"';
    }
    out += element.NoChildren() ? " />" : ">";
}

class Printer
{
public:
    std::string print(const TiXmlDocument& document)
    {
        const TiXmlNode* node = document.FirstChild();
        while (node) {
            begin(*node);
            if (node->FirstChild()) {
                node = node->FirstChild();
                ++m_depth;
                continue;
            }
            node = next(*node);
        }
        return std::move(m_out);
    }

private:
    void lineBreak()
    {
        m_out += '\n';
        for (int i = 0; i < m_depth; ++i)
            m_out += kIndent;
    }

    void begin(const TiXmlNode& node)
    {
        if (!node.ToText() && m_depth > 0)
            lineBreak();
        if (const TiXmlElement* const element = node.ToElement())
            appendTag(m_out, *element);
        else if (const TiXmlText* const text = node.ToText())
            appendText(m_out, *text);
        else if (node.ToComment())
            appendComment(m_out, node.ValueStr());
        else if (const TiXmlDeclaration* const declaration = node.ToDeclaration())
            appendDeclaration(m_out, *declaration);
        else
            m_out += '<' + node.ValueStr() + '>';
    }

    /// Ends the node and each parent that it is the last child of; what comes after them.
    const TiXmlNode* next(const TiXmlNode& last)
    {
        const TiXmlNode* node = &last;
        while (!node->NextSibling() && m_depth > 0) {
            const TiXmlNode* const parent = node->Parent();
            --m_depth;
            const bool textOnly = parent->FirstChild() == node && node->ToText();
            if (!textOnly)
                lineBreak();
            m_out += "</" + parent->ValueStr() + '>';
            node = parent;
        }
        if (m_depth == 0)
            m_out += '\n';
        return node->NextSibling();
    }

    std::string m_out;
    int m_depth = 0;
};

locale_t plainLocale()
{
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
}

} // namespace

std::string XmlPrint::document(const TiXmlDocument& document)
{
    return Printer().print(document);
}

bool XmlPrint::isDroppedByParser(std::string_view text)
{
    // Besides white space the parser drops the byte-order mark and two noncharacters.
    static constexpr std::string_view kMarks[] = {"\xEF\xBB\xBF", "\xEF\xBF\xBE", "\xEF\xBF\xBF"};
    while (!text.empty()) {
        std::size_t length = text.find_first_not_of(" \t\n\v\f\r");
        for (const std::string_view mark : kMarks) {
            if (length == 0 && text.substr(0, mark.size()) == mark)
                length = mark.size();
        }
        if (length == 0)
            return false;
        text.remove_prefix(std::min(length, text.size()));
    }
    return true;
}

std::string XmlPrint::number(double value)
{
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    return std::string(digits, end);
}

double XmlPrint::toDouble(const char* text)
{
    return text ? strtod_l(text, nullptr, plainLocale()) : 0.0;
}

int XmlPrint::toInt(const char* text)
{
    return text ? static_cast<int>(std::strtol(text, nullptr, 10)) : 0;
}
