#include "referencemodel.h"

#include <json/reader.h>

#include <cmath>
#include <cstdio>

namespace {

std::string realText(double number)
{
    if (!std::isfinite(number))
        return "null";
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.16g", number);
    std::string text = digits;
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    return text;
}

std::string quoted(const std::string& bytes)
{
    std::string text = "\"";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '"':
            text += "\\\"";
            break;
        case '\\':
            text += "\\\\";
            break;
        case '\b':
            text += "\\b";
            break;
        case '\f':
            text += "\\f";
            break;
        case '\n':
            text += "\\n";
            break;
        case '\r':
            text += "\\r";
            break;
        case '\t':
            text += "\\t";
            break;
        default:
            if (byte < 0x20) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned int>(byte));
                text += escape;
            } else {
                text += c;
            }
        }
    }
    return text + '"';
}

/// The text of a scalar or an empty container: the same in both styles.
std::string atomText(const Json::Value& value)
{
    switch (value.type()) {
    case Json::nullValue:
        return "null";
    case Json::intValue:
        return std::to_string(value.asLargestInt());
    case Json::uintValue:
        return std::to_string(value.asLargestUInt());
    case Json::realValue:
        return realText(value.asDouble());
    case Json::stringValue:
        return quoted(value.asString());
    case Json::booleanValue:
        return value.asBool() ? "true" : "false";
    case Json::arrayValue:
        return "[]";
    case Json::objectValue:
        return "{}";
    }
    return "null";
}

bool isFilledContainer(const Json::Value& value)
{
    return (value.isArray() || value.isObject()) && !value.empty();
}

std::string compactText(const Json::Value& value)
{
    if (!isFilledContainer(value))
        return atomText(value);
    std::string text;
    if (value.isArray()) {
        for (Json::ArrayIndex i = 0; i < value.size(); ++i)
            text += (i ? "," : "") + compactText(value[i]);
        return "[" + text + "]";
    }
    for (const std::string& name : value.getMemberNames())
        text += (text.empty() ? "" : ",") + quoted(name) + ":" + compactText(value[name]);
    return "{" + text + "}";
}

/// Writes one value in the styled form to the end of `out`.
class StyledText
{
public:
    explicit StyledText(const Json::Value& root)
    {
        commentBefore(root, "");
        write(root, "");
        commentsAfter(root);
        out += '\n';
    }

    std::string out;

private:
    void startLine(const std::string& indent)
    {
        if (!out.empty() && out.back() != '\n')
            out += '\n';
        out += indent;
    }

    void commentBefore(const Json::Value& value, const std::string& indent)
    {
        if (!value.hasComment(Json::commentBefore))
            return;
        out += '\n';
        out += indent;
        const std::string comment = value.getComment(Json::commentBefore);
        for (size_t i = 0; i < comment.size(); ++i) {
            out += comment[i];
            // Each further comment of a block starts at the indentation.
            if (comment[i] == '\n' && i + 1 < comment.size() && comment[i + 1] == '/')
                out += indent;
        }
        out += '\n';
    }

    void commentsAfter(const Json::Value& value)
    {
        if (value.hasComment(Json::commentAfterOnSameLine))
            out += " " + value.getComment(Json::commentAfterOnSameLine);
        if (value.hasComment(Json::commentAfter))
            out += "\n" + value.getComment(Json::commentAfter) + "\n";
    }

    static bool hasComment(const Json::Value& value)
    {
        return value.hasComment(Json::commentBefore) ||
               value.hasComment(Json::commentAfterOnSameLine) ||
               value.hasComment(Json::commentAfter);
    }

    /// The array on one line, or the empty text when it needs several.
    static std::string oneLine(const Json::Value& array)
    {
        std::string line = "[ ";
        for (Json::ArrayIndex i = 0; i < array.size(); ++i) {
            if (isFilledContainer(array[i]) || hasComment(array[i]))
                return {};
            line += (i ? ", " : "") + atomText(array[i]);
        }
        line += " ]";
        return line.size() < 74 ? line : std::string();
    }

    void write(const Json::Value& value, const std::string& indent)
    {
        if (!isFilledContainer(value)) {
            out += atomText(value);
            return;
        }
        if (value.isArray()) {
            const std::string line = oneLine(value);
            if (!line.empty()) {
                out += line;
                return;
            }
        }
        const std::string inner = indent + "   ";
        const std::vector<std::string> names =
            value.isObject() ? value.getMemberNames() : std::vector<std::string>();
        out += value.isArray() ? '[' : '{';
        for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
            const Json::Value& child = value.isArray() ? value[i] : value[names[i]];
            commentBefore(child, inner);
            startLine(inner);
            if (value.isObject())
                out += quoted(names[i]) + " : ";
            write(child, inner);
            if (i + 1 < value.size())
                out += ',';
            commentsAfter(child);
        }
        startLine(indent);
        out += value.isArray() ? ']' : '}';
    }
};

/// Gives every integer of a parsed tree the kind that its number has in a data value. An integer
/// is read digit by digit; it is a double as soon as a tenth of the 32-bit limit is reached with
/// a digit still to come.
void applyNumberRule(Json::Value& value)
{
    Json::Value number;
    if (value.type() == Json::intValue && value.asLargestInt() < 0) {
        const Json::LargestInt v = value.asLargestInt();
        number = v / 10 <= -214748364 ? Json::Value(static_cast<double>(v))
                                      : Json::Value(static_cast<Json::Int>(v));
    } else if (value.type() == Json::intValue || value.type() == Json::uintValue) {
        const Json::LargestUInt v = value.asLargestUInt();
        if (v / 10 >= 429496729)
            number = Json::Value(static_cast<double>(v));
        else if (v <= 2147483647)
            number = Json::Value(static_cast<Json::Int>(v));
        else
            number = Json::Value(static_cast<Json::UInt>(v));
    } else {
        for (Json::Value& child : value)
            applyNumberRule(child);
        return;
    }
    value.swapPayload(number); // the comments stay
}

} // namespace

std::string modelText(const Json::Value& mirror, ENUM_STYLE style)
{
    return style == FAST_STYLE ? compactText(mirror) + "\n" : StyledText(mirror).out;
}

bool modelReadJson(const std::string& text, Json::Value* root)
{
    Json::Reader reader;
    try {
        if (!reader.parse(text.data(), text.data() + text.size(), *root, true))
            return false;
    } catch (const Json::Exception&) {
        return false;
    }
    applyNumberRule(*root);
    return true;
}
