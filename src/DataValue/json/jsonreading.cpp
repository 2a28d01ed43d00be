// Reading JSON text, and taking JsonCpp's trees over.

#include "DataValue/core/tree_p.h"
#include "DataValue/json/hiddennumbers_p.h"
#include "DataValue/json/jsonfastreader_p.h"
#include "DataValue/json/jsontext_p.h"

#include <json/json.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace {

using Tree = DataValueTree;

/// Where the kinds of integers come from.
enum class Integers {
    ByTheirText, ///< the rule of parsed text
    ByTheirType  ///< the JSON type; what has no place in 32 bits is a double
};

/// The double nearest to a 64-bit integer. JsonCpp's own conversion rounds twice.
double nearestDouble(const Json::Value& json)
{
    return json.isInt64() ? static_cast<double>(json.asInt64())
                          : static_cast<double>(json.asUInt64());
}

void addInteger(PackedBuilder& builder, const Json::Value& json, Integers rule)
{
    const bool byText = rule == Integers::ByTheirText;
    const bool ruledOut = byText && (!json.isInt64() || !JsonText::isInteger(json.asInt64()));
    const bool isUnsigned = byText ? !json.isInt() : json.type() == Json::uintValue;
    if (!ruledOut && isUnsigned && json.isUInt())
        builder.addUInt(json.asUInt());
    else if (!ruledOut && !isUnsigned && json.isInt())
        builder.addInt(json.asInt());
    else
        builder.addReal(nearestDouble(json));
}

/// Adds a scalar, or the beginning of a container.
void addValue(PackedBuilder& builder, const Json::Value& json, Integers rule,
              const HiddenNumbers& hidden)
{
    const ENUM_VALUE_TYPE kind = CDataValue::toValueType(json);
    switch (kind) {
    case INT_VALUE:
    case UINT_VALUE:
        if (const double* const real = hidden.at(json.getOffsetStart()))
            builder.addReal(*real);
        else
            addInteger(builder, json, rule);
        break;
    case REAL_VALUE:
        builder.addReal(json.asDouble());
        break;
    case STRING_VALUE: {
        const char* begin = nullptr;
        const char* end = nullptr;
        json.getString(&begin, &end);
        builder.addText(std::string_view(begin, static_cast<std::size_t>(end - begin)));
        break;
    }
    case BOOLEAN_VALUE:
        builder.addBool(json.asBool());
        break;
    case ARRAY_VALUE:
    case MAP_VALUE:
        builder.begin(kind);
        break;
    default:
        builder.addNull();
    }
}

std::string commentOf(const Json::Value& json, CommentPlace place)
{
    const auto placement = static_cast<Json::CommentPlacement>(place);
    return json.hasComment(placement) ? json.getComment(placement) : std::string();
}

static_assert(Json::commentBefore == int(CommentPlace::Before) &&
              Json::commentAfterOnSameLine == int(CommentPlace::SameLine) &&
              Json::commentAfter == int(CommentPlace::After));

/// For each comment the reader looks for a line end, from the end of the last value on: the time
/// for a line full of comments grows with the square of its length, to hours for a few megabytes.
/// So comments are collected while they, each taken for the longest line, stay below this many
/// bytes.
constexpr std::size_t kCommentWork = std::size_t(1) << 28;

bool mayCollectComments(const std::string& utf8)
{
    std::size_t comments = 0; // or what looks like one, inside a string
    std::size_t longestLine = 0;
    std::size_t line = 0;
    char previous = '\0';
    for (const char c : utf8) {
        line = c == '\n' || c == '\r' ? 0 : line + 1;
        longestLine = std::max(longestLine, line);
        if (previous == '/' && (c == '/' || c == '*'))
            ++comments;
        previous = c;
    }
    return comments == 0 || longestLine <= kCommentWork / comments;
}

/// JsonCpp's reader in its default features: the class with exactly the described leniencies. Its
/// successor differs in several of them (trailing commas, for one), hence the older class.
bool readJson(const std::string& utf8, Json::Value& root)
{
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader;
    return reader.parse(utf8, root, mayCollectComments(utf8));
#pragma GCC diagnostic pop
}

CDataValue build(const Json::Value& json, Integers rule, const HiddenNumbers& hidden)
{
    using Children = std::pair<Json::Value::const_iterator, const Json::Value*>;
    PackedBuilder builder;
    std::vector<Children> open; // the containers around, with what comes next
    const auto add = [&](const Json::Value& value) {
        addValue(builder, value, rule, hidden);
        if (value.isArray() || value.isObject())
            open.emplace_back(value.begin(), &value);
    };
    add(json);
    while (!open.empty()) {
        auto& [child, container] = open.back();
        if (child == container->end()) {
            builder.end(container->size());
            open.pop_back();
            continue;
        }
        if (container->isObject()) {
            const char* end = nullptr;
            const char* const begin = child.memberName(&end);
            builder.addText(std::string_view(begin, static_cast<std::size_t>(end - begin)));
        }
        const Json::Value& value = *child;
        ++child;
        for (const CommentPlace place : kCommentPlaces)
            builder.addComment(place, commentOf(value, place));
        add(value);
    }
    CDataValue result;
    Tree::constructPacked(result, builder);
    for (const CommentPlace place : kCommentPlaces) {
        if (json.hasComment(static_cast<Json::CommentPlacement>(place)))
            Tree::makeExtras(result).comments[std::size_t(place)] =
                DataValueText(commentOf(json, place));
    }
    return result;
}

} // namespace

CDataValue JsonText::fromJson(const Json::Value& json)
{
    return build(json, Integers::ByTheirType, HiddenNumbers());
}

bool JsonText::parse(std::string_view utf8, CDataValue& value)
{
    return JsonFastReader::read(utf8, value) || parseSlowly(std::string(utf8), value);
}

bool JsonText::parseSlowly(const std::string& utf8, CDataValue& value)
{
    Json::Value root;
    HiddenNumbers hidden;
    try {
        if (HiddenNumbers::areNeeded()) {
            std::string text = utf8;
            hidden = HiddenNumbers(text);
            if (!readJson(text, root) || !hidden.areValid())
                return false;
        } else if (!readJson(utf8, root)) {
            return false;
        }
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) { // nesting beyond the reader's limit
        return false;
    }
    value = build(root, Integers::ByTheirText, hidden);
    return true;
}

bool CDataValue::parseToDataValue(const QString& text, CDataValue& out)
{
    return JsonFastReader::read(text, out) || JsonText::parseSlowly(text.toStdString(), out);
}

bool CDataValue::parseToDataValue(const char* text, CDataValue& out)
{
    return text && JsonText::parse(text, out);
}

CDataValue CDataValue::jsontoDataValue(const Json::Value& json)
{
    return JsonText::fromJson(json);
}

ENUM_VALUE_TYPE CDataValue::toValueType(const Json::Value& json)
{
    const int type = json.type();
    return type >= NULL_VALUE && type <= MAP_VALUE ? static_cast<ENUM_VALUE_TYPE>(type)
                                                   : NULL_VALUE;
}
