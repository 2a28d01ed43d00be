#include "DataValue/jsontext_p.h"

#include "DataValue/datavalue_p.h"
#include "LogTask/clog.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

using Tree = DataValueTree;

template<typename Number>
void appendInteger(std::string& out, Number number)
{
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(digits, end);
}

/// A scalar, an address (as null) or an empty container.
void appendLeaf(std::string& out, const CDataValue& value)
{
    switch (value.type()) {
    case INT_VALUE:
        appendInteger(out, Tree::signedNumber(value));
        break;
    case UINT_VALUE:
        appendInteger(out, Tree::unsignedNumber(value));
        break;
    case REAL_VALUE:
        JsonText::appendReal(out, Tree::real(value));
        break;
    case STRING_VALUE:
        JsonText::appendQuoted(out, Tree::text(value).view());
        break;
    case BOOLEAN_VALUE:
        out += Tree::flag(value) ? "true" : "false";
        break;
    case ARRAY_VALUE:
        out += "[]";
        break;
    case MAP_VALUE:
        out += "{}";
        break;
    default:
        out += "null";
    }
}

/// A container that is being written: which of its children is next.
struct Level
{
    explicit Level(const CDataValue& container)
        : children(Tree::children(container))
        , isMap(container.isObject())
        , member(children->members.begin())
    {
    }

    bool atEnd() const
    {
        return isMap ? member == children->members.end() : element == children->elements.size();
    }
    bool atStart() const { return isMap ? member == children->members.begin() : element == 0; }
    const CDataValue& child() const
    {
        return Tree::face(isMap ? member->value : children->elements[element].value);
    }
    void advance() { isMap ? void(++member) : void(++element); }

    const Tree::Container* children;
    bool isMap;
    std::size_t element = 0;
    DataValueMembers::Iterator member;
};

bool isBranch(const CDataValue& face)
{
    return Tree::isOrdinary(face.type()) && face.getSize() != 0;
}

class FastWriter
{
public:
    std::string write(const CDataValue& root)
    {
        value(Tree::face(root));
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.atEnd()) {
                m_out += level.isMap ? '}' : ']';
                m_levels.pop_back();
                continue;
            }
            if (!level.atStart())
                m_out += ',';
            if (level.isMap) {
                JsonText::appendQuoted(m_out, level.member->key.view());
                m_out += ':';
            }
            const CDataValue& child = level.child();
            level.advance();
            value(child);
        }
        m_out += '\n';
        return std::move(m_out);
    }

private:
    void value(const CDataValue& face)
    {
        if (!isBranch(face)) {
            appendLeaf(m_out, face);
            return;
        }
        m_out += face.isObject() ? '{' : '[';
        m_levels.emplace_back(face);
    }

    std::string m_out;
    std::vector<Level> m_levels;
};

/// Indents by three blanks, keeps short arrays of leaves on one line and writes comments.
class StyledWriter
{
public:
    std::string write(const CDataValue& root)
    {
        const CDataValue& top = Tree::face(root);
        commentBefore(top);
        value(top);
        while (!m_levels.empty())
            step();
        commentsBehind(top);
        m_out += '\n';
        return std::move(m_out);
    }

private:
    static constexpr std::size_t kIndent = 3;
    static constexpr std::size_t kRightMargin = 74;

    static const std::string& comment(const CDataValue& value, CommentPlace place)
    {
        static const std::string none;
        const Tree::Extras* const extras = Tree::extras(value);
        return extras ? extras->comments[static_cast<std::size_t>(place)] : none;
    }

    static bool hasComments(const CDataValue& value)
    {
        const Tree::Extras* const extras = Tree::extras(value);
        return extras && extras->hasComments();
    }

    /// Starts a line at the current depth. What the text ends with does not matter: a comment may
    /// end in a blank, and what followed it on its line would be lost to the comment.
    void indent()
    {
        if (!m_out.empty() && m_out.back() != '\n')
            m_out += '\n';
        m_out.append(m_levels.size() * kIndent, ' ');
    }

    void commentBefore(const CDataValue& value)
    {
        const std::string& text = comment(value, CommentPlace::Before);
        if (text.empty())
            return;
        m_out += '\n';
        indent();
        for (std::size_t i = 0; i < text.size(); ++i) {
            m_out += text[i];
            if (text[i] == '\n' && i + 1 < text.size() && text[i + 1] == '/')
                indent();
        }
        m_out += '\n';
    }

    void commentsBehind(const CDataValue& value)
    {
        const std::string& sameLine = comment(value, CommentPlace::SameLine);
        if (!sameLine.empty())
            m_out += ' ' + sameLine;
        const std::string& after = comment(value, CommentPlace::After);
        if (!after.empty())
            m_out += '\n' + after + '\n';
    }

    /// Writes at the end of the text, which is where the value begins.
    void value(const CDataValue& face)
    {
        if (!isBranch(face)) {
            appendLeaf(m_out, face);
        } else if (!oneLine(face)) {
            m_out += face.isObject() ? '{' : '[';
            m_levels.emplace_back(face);
        }
    }

    /// Writes an array of leaves on one line where it fits and no comment is in the way.
    bool oneLine(const CDataValue& face)
    {
        if (!face.isArray())
            return false;
        const DataValueElements& elements = Tree::children(face)->elements;
        if (elements.size() * 3 >= kRightMargin)
            return false;
        std::string line = "[ ";
        for (const DataValueElement& element : elements) {
            const CDataValue& child = Tree::face(element.value);
            if (isBranch(child) || hasComments(child))
                return false;
            if (&element != &elements.front())
                line += ", ";
            appendLeaf(line, child);
        }
        line += " ]";
        if (line.size() >= kRightMargin)
            return false;
        m_out += line;
        return true;
    }

    void step()
    {
        Level& level = m_levels.back();
        if (level.atEnd()) {
            const bool isMap = level.isMap;
            m_levels.pop_back();
            indent();
            m_out += isMap ? '}' : ']';
            if (!m_levels.empty())
                finishChild();
            return;
        }
        const CDataValue& child = level.child();
        commentBefore(child);
        indent();
        if (level.isMap) {
            JsonText::appendQuoted(m_out, level.member->key.view());
            m_out += " : ";
        }
        const std::size_t depth = m_levels.size();
        value(child);
        if (m_levels.size() == depth)
            finishChild();
    }

    /// What follows the child that was just written: the comma and its comments.
    void finishChild()
    {
        Level& level = m_levels.back();
        const CDataValue& child = level.child();
        level.advance();
        if (!level.atEnd())
            m_out += ',';
        commentsBehind(child);
    }

    std::string m_out;
    std::vector<Level> m_levels;
};

} // namespace

void JsonText::appendQuoted(std::string& out, std::string_view text)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    static constexpr char kShort[] = "\"\\\b\f\n\r\t";
    static constexpr char kLetters[] = "\"\\bfnrt";
    out += '"';
    std::size_t plain = 0; // start of the bytes that are still to be copied as they are
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte >= 0x20 && byte != '"' && byte != '\\')
            continue;
        out.append(text, plain, i - plain);
        plain = i + 1;
        const char* const found = byte ? std::strchr(kShort, byte) : nullptr;
        out += '\\';
        if (found) {
            out += kLetters[found - kShort];
        } else {
            out += "u00";
            out += kHex[byte >> 4];
            out += kHex[byte & 0xF];
        }
    }
    out.append(text.substr(plain));
    out += '"';
}

void JsonText::appendReal(std::string& out, double number)
{
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    char digits[32];
    const char* const end =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 16).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    out += text;
    if (text.find_first_of(".e") == std::string_view::npos)
        out += ".0";
}

std::string JsonText::write(const CDataValue& value, ENUM_STYLE style)
{
    return style == FAST_STYLE ? FastWriter().write(value) : StyledWriter().write(value);
}

QString CDataValue::parseToQString(ENUM_STYLE style) const
{
    if (style != FAST_STYLE && style != STYLED_STYLE) {
        CLogFile() << "DataValue/datavalue"
                   << "parseToQString"
                   << "Parse style is not right!";
        return QString();
    }
    const std::string text = JsonText::write(*this, style);
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}
