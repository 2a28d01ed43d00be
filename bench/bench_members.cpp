// Maps with many members: setting all of them, in an order that is not that of the keys, and
// looking each one up. The keys have 22 characters, more than small strings hold.

#include "DataValue/datavalue.h"

#include <benchmark/benchmark.h>
#include <boost/json.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::string> makeKeys(int count)
{
    std::vector<std::string> keys;
    keys.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        char key[32];
        std::snprintf(key, sizeof key, "strContactNumber%06d", i);
        keys.emplace_back(key);
    }
    std::mt19937 random(4711); // the same order in each run
    std::shuffle(keys.begin(), keys.end(), random);
    return keys;
}

CDataValue fillValue(const std::vector<std::string>& keys)
{
    CDataValue map(MAP_VALUE);
    int number = 0;
    for (const std::string& key : keys)
        map.mapSet(key.c_str(), CDataValue(++number), false);
    return map;
}

nlohmann::json fillNlohmann(const std::vector<std::string>& keys)
{
    nlohmann::json map = nlohmann::json::object();
    int number = 0;
    for (const std::string& key : keys)
        map[key.c_str()] = ++number;
    return map;
}

boost::json::object fillBoost(const std::vector<std::string>& keys)
{
    boost::json::object map;
    int number = 0;
    for (const std::string& key : keys)
        map[key.c_str()] = ++number;
    return map;
}

long long sum(CDataValue& map, const std::vector<std::string>& keys)
{
    long long total = 0;
    for (const std::string& key : keys)
        total += map.mapGet(key.c_str()).asInt();
    return total;
}

long long sum(nlohmann::json& map, const std::vector<std::string>& keys)
{
    long long total = 0;
    for (const std::string& key : keys)
        total += map.find(key.c_str())->get<int>();
    return total;
}

long long sum(boost::json::object& map, const std::vector<std::string>& keys)
{
    long long total = 0;
    for (const std::string& key : keys)
        total += map.find(key.c_str())->value().as_int64();
    return total;
}

template<auto Fill>
void set(benchmark::State& state)
{
    const std::vector<std::string> keys = makeKeys(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Fill(keys));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template<auto Fill>
void get(benchmark::State& state)
{
    const std::vector<std::string> keys = makeKeys(static_cast<int>(state.range(0)));
    auto map = Fill(keys);
    const long long expected = state.range(0) * (state.range(0) + 1) / 2;
    for (auto _ : state) {
        if (sum(map, keys) != expected)
            state.SkipWithError("a member is not the expected one");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template<auto Fill>
void add(const char* name)
{
    const auto named = [name](const char* workload) { return std::string(workload) + '/' + name; };
    for (auto* item : {benchmark::RegisterBenchmark(named("mapSet").c_str(), set<Fill>),
                       benchmark::RegisterBenchmark(named("mapGet").c_str(), get<Fill>)})
        item->RangeMultiplier(10)->Range(10, 100000)->Unit(benchmark::kMicrosecond);
}

} // namespace

int main(int argc, char** argv)
{
    add<fillValue>("CDataValue");
    add<fillNlohmann>("nlohmann");
    add<fillBoost>("Boost.JSON");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
