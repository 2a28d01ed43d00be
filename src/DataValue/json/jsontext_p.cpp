#include "DataValue/json/jsontext_p.h"

#include "DataValue/core/cursor_p.h"
#include "LogTask/logline_p.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr char kLogSource[] = "DataValue/datavalue";

template<typename Number>
void appendInteger(TextBuffer& out, Number number)
{
    char digits[std::numeric_limits<Number>::digits10 + 3];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    out.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

/// A scalar or an empty container; an address shows as null.
void appendLeaf(TextBuffer& out, const ValueCursor& at)
{
    const PackedNode& node = at.node();
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
        out.appendQuoted(at.text());
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

/// Makes room at once for all of a packed tree.
void reserveFor(TextBuffer& out, const ValueCursor& at)
{
    constexpr std::size_t kMarks = 4; // quotation marks, commas and digits for each node, about
    if (at.packedNode() && at.packedNode() == at.packedBlock().root())
        out.reserve(at.packedBlock().textBytes() + kMarks * at.packedNode()->size);
}

void writeCompact(TextBuffer& out, const CDataValue& value)
{
    ValueCursor at(value);
    do {
        if (at.isEnd()) {
            out.append(at.kind() == MAP_VALUE ? '}' : ']');
        } else {
            if (at.isMember()) {
                out.appendQuoted(at.key());
                out.append(':');
            }
            if (at.mayEnter()) {
                reserveFor(out, at);
                out.append(at.kind() == MAP_VALUE ? '{' : '[');
                continue;
            }
            appendLeaf(out, at);
        }
        if (!at.isLast())
            out.append(',');
    } while (at.next());
    out.append('\n');
}

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
        ValueCursor at(root);
        do {
            if (!at.isEnd() && !writeValue(at))
                continue;
            if (at.isEnd()) {
                indent(at);
                m_out.append(at.kind() == MAP_VALUE ? '}' : ']');
            }
            if (!at.isLast())
                m_out.append(',');
            commentsBehind(at);
        } while (at.next());
        m_out.append('\n');
    }

private:
    static constexpr std::size_t kIndent = 3;
    static constexpr std::size_t kRightMargin = 74;

    /// Starts a line at the value's depth. What the text ends with does not matter: a comment may
    /// end in a blank, and what followed it on its line would be lost to the comment.
    void indent(const ValueCursor& at)
    {
        if (m_out.size() != 0 && m_out.last() != '\n')
            m_out.append('\n');
        m_out.appendBlanks(at.depth() * kIndent);
    }

    void commentBefore(const ValueCursor& at)
    {
        const std::string_view text = at.comment(CommentPlace::Before);
        if (text.empty())
            return;
        m_out.append('\n');
        indent(at);
        std::size_t written = 0;
        for (std::size_t end = text.find("\n/"); end != std::string_view::npos;
             end = text.find("\n/", written)) {
            m_out.appendUtf8(text.substr(written, end + 1 - written));
            indent(at);
            written = end + 1;
        }
        m_out.appendUtf8(text.substr(written));
        m_out.append('\n');
    }

    void commentsBehind(const ValueCursor& at)
    {
        const std::string_view sameLine = at.comment(CommentPlace::SameLine);
        if (!sameLine.empty()) {
            m_out.append(' ');
            m_out.appendUtf8(sameLine);
        }
        const std::string_view after = at.comment(CommentPlace::After);
        if (!after.empty()) {
            m_out.append('\n');
            m_out.appendUtf8(after);
            m_out.append('\n');
        }
    }

    /// Writes a whole value, or the beginning of one that takes several lines; false for these.
    bool writeValue(ValueCursor& at)
    {
        commentBefore(at);
        if (at.depth() != 0)
            indent(at);
        if (at.isMember()) {
            m_out.appendQuoted(at.key());
            m_out.append(" : ");
        }
        if (!at.mayEnter()) {
            appendLeaf(m_out, at);
        } else if (oneLine(at)) {
            at.skip();
        } else {
            m_out.append(at.kind() == MAP_VALUE ? '{' : '[');
            return false;
        }
        return true;
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
    bool oneLine(const ValueCursor& array)
    {
        if (array.kind() != ARRAY_VALUE || array.node().count * 3 >= kRightMargin)
            return false;
        TextBuffer line;
        line.append("[ ");
        std::size_t length = 4; // in bytes, with both brackets
        ValueCursor at(array, ValueCursor::HereOnly);
        for (at.next(); !at.isEnd(); at.next()) {
            if (at.mayEnter() || at.hasComments())
                return false;
            const std::size_t before = line.size();
            appendLeaf(line, at);
            const bool isText = at.kind() == STRING_VALUE;
            length += isText ? quotedBytes(at.text()) : line.size() - before;
            if (!at.isLast()) {
                line.append(", ");
                length += 2;
            }
        }
        line.append(" ]");
        if (length >= kRightMargin)
            return false;
        m_out.append(line);
        return true;
    }

    TextBuffer& m_out;
};

} // namespace

void JsonText::appendReal(TextBuffer& out, double number)
{
    if (!std::isfinite(number)) {
        out.append("null");
        return;
    }
    // From here on 16 digits round up to a number that no double holds.
    constexpr double kNearTheLargest = 1.7976931348623155e308;
    const int precision = std::abs(number) >= kNearTheLargest ? 17 : 16;
    char digits[32];
    const char* const end =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, precision)
            .ptr;
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    out.append(text);
    if (text.find_first_of(".e") == std::string_view::npos)
        out.append(".0");
}

QString JsonText::write(const CDataValue& value, ENUM_STYLE style)
{
    TextBuffer out;
    if (style == FAST_STYLE)
        writeCompact(out, value);
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
