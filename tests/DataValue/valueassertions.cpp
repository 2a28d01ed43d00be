// Does the one thing that the argument names. All but the last end the process.

#include "valuesamples.h"

#include <cstdio>
#include <functional>
#include <map>
#include <utility>

namespace {

CDataValue addressBelow()
{
    CDataValue map = parsed("{\"a\":[null]}");
    map.mapGet("a").arrayGet(0) = CDataValue(pointer);
    return map;
}

} // namespace

int main(int argc, char** argv)
{
    const CDataValue address(pointer);
    CDataValue map(MAP_VALUE);
    CDataValue array = parsed("[1]");
    CDataValue null;
    CDataValue addresses(ADDRESS_MAP_VALUE);
    CDataValue below = addressBelow();
    const std::map<std::string, std::function<void()>> scenarios{
        {"mapSet", [&] { map.mapSet("p", address, false); }},
        {"mapSetQString", [&] { map.mapSet(QString("p"), address, false); }},
        {"mapSetMoved", [&] { map.mapSet("p", CDataValue(pointer), false); }},
        {"mapSetBelow", [&] { map.mapSet("p", below, false); }},
        {"mapSetOnAddress", [&] { addresses.mapSet("a", CDataValue(1), false); }},
        {"arrayAppend", [&] { array.arrayAppend(address, false); }},
        {"arrayAppendMoved", [&] { array.arrayAppend(CDataValue(pointer), false); }},
        {"arrayAppendOnNull", [&] { null.arrayAppend(addresses, true); }},
        {"arrayInsert", [&] { array.arrayInsert(9, address, false); }},
        {"arrayModify", [&] { array.arrayModify(9, address, false); }},
        {"mapGet", [&] { addresses.mapGet("a"); }},
        {"mapIsMember", [&] { (void)addresses.mapIsMember("a"); }},
        {"mapGetKeys", [&] { (void)addresses.mapGetKeys(); }},
        {"mapRemove", [&] { addresses.mapRemove("a", false); }},
        {"mapFind", [&] { (void)addresses.mapFind("a"); }},
        {"mapFindNode", [&] { (void)address.mapFind("a", map); }},
        {"arrayGet", [&] { CDataValue(ADDRESS_ARRAY_VALUE).arrayGet(0); }},
        {"arrayCount", [&] { (void)address.arrayCount(); }},
        {"arrayRemove", [&] { addresses.arrayRemove(0, 1, false); }},
        {"mapGetBelow", [&] { below.mapGet("a"); }},
        {"addressArrayAppend", [&] { null.addressArrayAppend(address); }},
    };
    const auto scenario = scenarios.find(argc > 1 ? argv[1] : "");
    if (scenario == scenarios.end()) {
        std::fprintf(stderr, "usage: valueassertions SCENARIO\n");
        return 2;
    }
    scenario->second();
    return 0;
}
