#include "DataValue/jsontext_p.h"

#include "DataValue/datavalue_p.h"
#include "LogTask/logline_p.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr char kLogSource[] = "DataValue/datavalue";

using Tree = DataValueTree;

template<typename Number>
void appendInteger(TextBuffer& out, Number number)
{
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

/// A scalar or an empty container.
void appendLeaf(TextBuffer& out, const PackedNode& node)
{
    switch (node.type()) {
    case INT_VALUE:
        appendInteger(out, node.signedNumber);
        break;
    case UINT_VALUE:
        appendInteger(out, node.unsignedNumber);
        break;
    case REAL_VALUE:
        JsonText::appendReal(out, node.real);
        break;
    case STRING_VALUE:
        out.appendQuoted(node.view());
        break;
    case BOOLEAN_VALUE:
        out.append(std::string_view(node.flag ? "true" : "false"));
        break;
    case ARRAY_VALUE:
        out.append("[]");
        break;
    case MAP_VALUE:
        out.append("{}");
        break;
    default:
        out.append("null");
    }
}

/// The same for a value; an address shows as null.
void appendLeaf(TextBuffer& out, const CDataValue& value)
{
    appendLeaf(out, Tree::leafNode(value));
}

/// Writes a whole packed value in the compact form: its nodes stand in the order of the text.
class PackedWriter
{
public:
    explicit PackedWriter(TextBuffer& out)
        : m_out(out)
    {
    }

    void write(const PackedNode& root)
    {
        const PackedNode* const end = root.behind();
        for (const PackedNode* node = &root; node != end;) {
            if (node->isContainer() && node->count != 0) {
                const bool isMap = node->kind == MAP_VALUE;
                m_out.append(isMap ? '{' : '[');
                m_open.push_back({node->count, isMap});
                ++node;
            } else {
                appendLeaf(m_out, *node);
                ++node;
                close();
                if (m_open.empty())
                    return;
                m_out.append(',');
            }
            if (m_open.back().isMap) {
                appendLeaf(m_out, *node);
                m_out.append(':');
                ++node;
            }
        }
    }

private:
    struct Open
    {
        std::uint32_t left; // children that are not yet written
        bool isMap;
    };

    /// Closes the containers that end with the value just written.
    void close()
    {
        while (!m_open.empty() && --m_open.back().left == 0) {
            m_out.append(m_open.back().isMap ? '}' : ']');
            m_open.pop_back();
        }
    }

    TextBuffer& m_out;
    std::vector<Open> m_open;
};

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
    explicit FastWriter(TextBuffer& out)
        : m_out(out)
    {
    }

    void write(const CDataValue& root)
    {
        value(Tree::face(root));
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.atEnd()) {
                m_out.append(level.isMap ? '}' : ']');
                m_levels.pop_back();
                continue;
            }
            if (!level.atStart())
                m_out.append(',');
            if (level.isMap) {
                m_out.appendQuoted(level.member->key.view());
                m_out.append(':');
            }
            const CDataValue& child = level.child();
            level.advance();
            value(child);
        }
        m_out.append('\n');
    }

private:
    void value(const CDataValue& face)
    {
        if (const PackedNode* const packed = Tree::packedNode(face)) {
            const PackedBlock& block = *Tree::packedBlock(face);
            if (packed == block.root()) // quotation marks, commas and digits: about so many
                m_out.reserve(block.textBytes() + 4 * std::size_t(packed->size));
            PackedWriter(m_out).write(*packed);
        } else if (isBranch(face)) {
            m_out.append(face.isObject() ? '{' : '[');
            m_levels.emplace_back(face);
        } else {
            appendLeaf(m_out, face);
        }
    }

    TextBuffer& m_out;
    std::vector<Level> m_levels;
};

/// Indents by three blanks, keeps short arrays of leaves on one line and writes comments.
class StyledWriter
{
public:
    explicit StyledWriter(TextBuffer& out)
        : m_out(out)
    {
    }

    void write(const CDataValue& root)
    {
        const CDataValue& top = Tree::face(root);
        commentBefore(top);
        value(top);
        while (!m_levels.empty())
            step();
        commentsBehind(top);
        m_out.append('\n');
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
        if (m_out.size() != 0 && m_out.last() != '\n')
            m_out.append('\n');
        m_out.appendBlanks(m_levels.size() * kIndent);
    }

    void commentBefore(const CDataValue& value)
    {
        const std::string& text = comment(value, CommentPlace::Before);
        if (text.empty())
            return;
        m_out.append('\n');
        indent();
        std::size_t written = 0;
        for (std::size_t end = text.find("\n/"); end != std::string::npos;
             end = text.find("\n/", written)) {
            m_out.appendUtf8(std::string_view(text).substr(written, end + 1 - written));
            indent();
            written = end + 1;
        }
        m_out.appendUtf8(std::string_view(text).substr(written));
        m_out.append('\n');
    }

    void commentsBehind(const CDataValue& value)
    {
        const std::string& sameLine = comment(value, CommentPlace::SameLine);
        if (!sameLine.empty()) {
            m_out.append(' ');
            m_out.appendUtf8(sameLine);
        }
        const std::string& after = comment(value, CommentPlace::After);
        if (!after.empty()) {
            m_out.append('\n');
            m_out.appendUtf8(after);
            m_out.append('\n');
        }
    }

    /// Writes at the end of the text, which is where the value begins.
    void value(const CDataValue& face)
    {
        if (!isBranch(face)) {
            appendLeaf(m_out, face);
        } else if (!oneLine(face)) {
            m_out.append(face.isObject() ? '{' : '[');
            m_levels.emplace_back(face);
        }
    }

    /// The length in UTF-8 of a text in its quotation marks.
    static std::size_t quotedBytes(std::string_view text)
    {
        TextBuffer quoted;
        quoted.appendQuoted(text);
        TextBuffer plain;
        plain.appendUtf8(text);
        return quoted.size() - plain.size() + text.size();
    }

    /// Writes an array of leaves on one line where it fits and no comment is in the way.
    bool oneLine(const CDataValue& face)
    {
        if (!face.isArray())
            return false;
        const DataValueElements& elements = Tree::children(face)->elements;
        if (elements.size() * 3 >= kRightMargin)
            return false;
        TextBuffer line;
        line.append("[ ");
        std::size_t length = 4; // in bytes, with both brackets
        for (const DataValueElement& element : elements) {
            const CDataValue& child = Tree::face(element.value);
            if (isBranch(child) || hasComments(child))
                return false;
            if (&element != &elements.front()) {
                line.append(", ");
                length += 2;
            }
            const std::size_t before = line.size();
            appendLeaf(line, child);
            length +=
                child.isString() ? quotedBytes(Tree::text(child).view()) : line.size() - before;
        }
        line.append(" ]");
        if (length >= kRightMargin)
            return false;
        m_out.append(line);
        return true;
    }

    void step()
    {
        Level& level = m_levels.back();
        if (level.atEnd()) {
            const bool isMap = level.isMap;
            m_levels.pop_back();
            indent();
            m_out.append(isMap ? '}' : ']');
            if (!m_levels.empty())
                finishChild();
            return;
        }
        const CDataValue& child = level.child();
        commentBefore(child);
        indent();
        if (level.isMap) {
            m_out.appendQuoted(level.member->key.view());
            m_out.append(" : ");
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
            m_out.append(',');
        commentsBehind(child);
    }

    TextBuffer& m_out;
    std::vector<Level> m_levels;
};

} // namespace

void JsonText::appendReal(TextBuffer& out, double number)
{
    if (!std::isfinite(number)) {
        out.append("null");
        return;
    }
    char digits[32];
    const char* const end =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 16).ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    out.append(text);
    if (text.find_first_of(".e") == std::string_view::npos)
        out.append(".0");
}

QString JsonText::write(const CDataValue& value, ENUM_STYLE style)
{
    TextBuffer out;
    if (style == FAST_STYLE)
        FastWriter(out).write(value);
    else
        StyledWriter(out).write(value);
    return out.take();
}

QString CDataValue::parseToQString(ENUM_STYLE style) const
{
    if (style != FAST_STYLE && style != STYLED_STYLE) {
        logLine(kLogSource, "parseToQString", "Parse style is not right!");
        return QString();
    }
    return JsonText::write(*this, style);
}
