#include "DataValue/json/jsonbridge_p.h"

#include "DataValue/core/cursor_p.h"

#include <vector>

namespace {

/// The value that it stands at, a container without its children.
Json::Value ownContent(const ValueCursor& at)
{
    const PackedNode& node = at.node();
    switch (node.type()) {
    case INT_VALUE:
        return node.signedNumber;
    case UINT_VALUE:
        return node.unsignedNumber;
    case REAL_VALUE:
        return node.real;
    case STRING_VALUE:
        return std::string(at.text());
    case BOOLEAN_VALUE:
        return node.flag;
    case ARRAY_VALUE:
        return Json::arrayValue;
    case MAP_VALUE:
        return Json::objectValue;
    default:
        return Json::nullValue;
    }
}

} // namespace

bool JsonBridge::nestsAtMost(const CDataValue& value, int levels)
{
    ValueCursor at(value);
    do {
        if (at.depth() >= static_cast<std::size_t>(levels))
            return false;
    } while (at.next());
    return true;
}

Json::Value JsonBridge::toJson(const CDataValue& value)
{
    Json::Value result;
    std::vector<Json::Value*> open; // the containers around
    ValueCursor at(value);
    do {
        if (at.isEnd()) {
            open.pop_back();
            continue;
        }
        Json::Value& to = open.empty()    ? result
                          : at.isMember() ? (*open.back())[std::string(at.key())]
                                          : open.back()->append(Json::Value());
        to = ownContent(at);
        if (at.mayEnter())
            open.push_back(&to);
    } while (at.next());
    return result;
}
