// The message list as a record: to text, from text, and both.

#include "records/recordpeers.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace recordpeers;

template<typename Way>
void recordToText(benchmark::State& state)
{
    const BLSmsGetListCnf list = makeMessages(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Way::write(list));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template<typename Way>
void textToRecord(benchmark::State& state)
{
    const auto text = Way::write(makeMessages(static_cast<int>(state.range(0))));
    for (auto _ : state)
        benchmark::DoNotOptimize(Way::read(text));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template<typename Way>
void both(benchmark::State& state)
{
    const BLSmsGetListCnf list = makeMessages(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Way::read(Way::write(list)));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Every way must read what every other one wrote, and all records must be the same.
template<typename Way>
void requireSameResult(const char* name)
{
    const BLSmsGetListCnf list = makeMessages(100);
    const auto text = Way::write(list);
    const bool isReadByUs = Own::read(QString::fromStdString(plainText(text))) == list;
    if (Way::read(text) == list && isReadByUs)
        return;
    std::fprintf(stderr, "%s gives another result\n", name);
    std::exit(1);
}

template<typename Way>
void add(const char* name)
{
    requireSameResult<Way>(name);
    const auto named = [name](const char* workload) { return std::string(workload) + '/' + name; };
    for (auto* item :
         {benchmark::RegisterBenchmark(named("recordToText").c_str(), recordToText<Way>),
          benchmark::RegisterBenchmark(named("textToRecord").c_str(), textToRecord<Way>),
          benchmark::RegisterBenchmark(named("both").c_str(), both<Way>)})
        item->Arg(10)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
}

} // namespace

int main(int argc, char** argv)
{
    add<Own>("wzrframework");
    add<Nlohmann>("nlohmann");
    add<QtJson>("QJsonDocument");
    add<JsonCpp>("JsonCpp");
    add<RapidJson>("RapidJSON");
    add<RapidJsonSax>("RapidJSON-SAX");
    add<RapidJsonSaxQString>("RapidJSON-SAX-QString");
    add<BoostJson>("Boost.JSON");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
