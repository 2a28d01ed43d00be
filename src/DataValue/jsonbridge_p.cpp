#include "DataValue/jsonbridge_p.h"

#include "DataValue/datavalue_p.h"

#include <utility>
#include <vector>

namespace {

using Tree = DataValueTree;

struct Step
{
    const CDataValue* from;
    Json::Value* to;
};

void convertContainer(const CDataValue& from, Json::Value& to, std::vector<Step>& pending)
{
    const Tree::Container& container = *Tree::children(from);
    to = Json::Value(from.isArray() ? Json::arrayValue : Json::objectValue);
    for (const DataValueElement& element : container.elements)
        pending.push_back({&element.value, &to.append(Json::Value())});
    for (const auto& member : container.members)
        pending.push_back({&member.value, &to[std::string(member.key.view())]});
}

void convertOne(const Step& step, std::vector<Step>& pending)
{
    const CDataValue& from = Tree::face(*step.from);
    switch (Tree::faceKind(from)) {
    case INT_VALUE:
        *step.to = Tree::signedNumber(from);
        break;
    case UINT_VALUE:
        *step.to = Tree::unsignedNumber(from);
        break;
    case REAL_VALUE:
        *step.to = Tree::real(from);
        break;
    case STRING_VALUE:
        *step.to = std::string(Tree::text(from).view());
        break;
    case BOOLEAN_VALUE:
        *step.to = Tree::flag(from);
        break;
    case ARRAY_VALUE:
    case MAP_VALUE:
        convertContainer(from, *step.to, pending);
        break;
    default:
        break; // null is what the slot holds
    }
}

} // namespace

bool JsonBridge::nestsAtMost(const CDataValue& value, int levels)
{
    std::vector<std::pair<const CDataValue*, int>> pending{{&value, 1}};
    while (!pending.empty()) {
        const auto [next, level] = pending.back();
        pending.pop_back();
        if (level > levels)
            return false;
        const CDataValue& face = Tree::face(*next);
        if (!Tree::isOrdinary(face.type()))
            continue;
        const Tree::Container& container = *Tree::children(face);
        for (const DataValueElement& element : container.elements)
            pending.emplace_back(&element.value, level + 1);
        for (const auto& member : container.members)
            pending.emplace_back(&member.value, level + 1);
    }
    return true;
}

Json::Value JsonBridge::toJson(const CDataValue& value)
{
    Json::Value result;
    std::vector<Step> pending{{&value, &result}};
    while (!pending.empty()) {
        const Step step = pending.back();
        pending.pop_back();
        convertOne(step, pending);
    }
    return result;
}
