// CDataValue against the value types that a user would take instead. Every workload handles the
// same map: ten members of mixed kinds, among them a map and an array.

#include "DataValue/datavalue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <benchmark/benchmark.h>
#include <json/json.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

namespace {

const char* const kKeys[] = {"blActive", "dRate",   "listCells", "nIndex",    "nRssi",
                             "nState",   "strName", "strNumber", "strRemark", "tOperator"};
const char* const kRemark = "a remark that is longer than any small string buffer";

CDataValue buildValue()
{
    CDataValue list(ARRAY_VALUE);
    for (int i = 0; i < 5; ++i)
        list.arrayAppend(CDataValue(i * 100), false);
    CDataValue inner(MAP_VALUE);
    inner.mapSet("nAct", CDataValue(7), false);
    inner.mapSet("nMode", CDataValue(1), false);
    inner.mapSet("strLongAlpha", CDataValue("Example Mobile"), false);
    CDataValue map(MAP_VALUE);
    map.mapSet("nIndex", CDataValue(3), false);
    map.mapSet("nState", CDataValue(2), false);
    map.mapSet("nRssi", CDataValue(-71), false);
    map.mapSet("blActive", CDataValue(true), false);
    map.mapSet("dRate", CDataValue(2.5), false);
    map.mapSet("strName", CDataValue("modem"), false);
    map.mapSet("strNumber", CDataValue("+491701234567"), false);
    map.mapSet("strRemark", CDataValue(kRemark), false);
    map.mapSet("listCells", std::move(list), false);
    map.mapSet("tOperator", std::move(inner), false);
    return map;
}

nlohmann::json buildNlohmann()
{
    nlohmann::json list = nlohmann::json::array();
    for (int i = 0; i < 5; ++i)
        list.push_back(i * 100);
    nlohmann::json inner;
    inner["nAct"] = 7;
    inner["nMode"] = 1;
    inner["strLongAlpha"] = "Example Mobile";
    nlohmann::json map;
    map["nIndex"] = 3;
    map["nState"] = 2;
    map["nRssi"] = -71;
    map["blActive"] = true;
    map["dRate"] = 2.5;
    map["strName"] = "modem";
    map["strNumber"] = "+491701234567";
    map["strRemark"] = kRemark;
    map["listCells"] = std::move(list);
    map["tOperator"] = std::move(inner);
    return map;
}

template<typename Map, typename List>
Map buildQt()
{
    List list;
    for (int i = 0; i < 5; ++i)
        list.append(i * 100);
    Map inner;
    inner[QLatin1String("nAct")] = 7;
    inner[QLatin1String("nMode")] = 1;
    inner[QLatin1String("strLongAlpha")] = QLatin1String("Example Mobile");
    Map map;
    map[QLatin1String("nIndex")] = 3;
    map[QLatin1String("nState")] = 2;
    map[QLatin1String("nRssi")] = -71;
    map[QLatin1String("blActive")] = true;
    map[QLatin1String("dRate")] = 2.5;
    map[QLatin1String("strName")] = QLatin1String("modem");
    map[QLatin1String("strNumber")] = QLatin1String("+491701234567");
    map[QLatin1String("strRemark")] = QLatin1String(kRemark);
    map[QLatin1String("listCells")] = list;
    map[QLatin1String("tOperator")] = inner;
    return map;
}

Json::Value buildJsonCpp()
{
    Json::Value list(Json::arrayValue);
    for (int i = 0; i < 5; ++i)
        list.append(i * 100);
    Json::Value map;
    map["nIndex"] = 3;
    map["nState"] = 2;
    map["nRssi"] = -71;
    map["blActive"] = true;
    map["dRate"] = 2.5;
    map["strName"] = "modem";
    map["strNumber"] = "+491701234567";
    map["strRemark"] = kRemark;
    map["listCells"] = list;
    map["tOperator"]["nAct"] = 7;
    map["tOperator"]["nMode"] = 1;
    map["tOperator"]["strLongAlpha"] = "Example Mobile";
    return map;
}

/// Every workload's results are worth something only if the texts agree.
void requireSameText()
{
    const std::string own = buildValue().parseToQString(FAST_STYLE).trimmed().toStdString();
    if (own != buildNlohmann().dump()) {
        std::fprintf(stderr, "the peers do not hold the same data:\n%s\n%s\n", own.c_str(),
                     buildNlohmann().dump().c_str());
        std::exit(1);
    }
}

template<auto Build>
void build(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Build());
}

template<auto Build>
void copy(benchmark::State& state)
{
    const auto source = Build();
    for (auto _ : state) {
        auto copied = source;
        benchmark::DoNotOptimize(copied);
    }
}

void lookUpValue(benchmark::State& state)
{
    CDataValue map = buildValue();
    for (auto _ : state) {
        for (const char* key : kKeys)
            benchmark::DoNotOptimize(map.mapGet(key).type());
    }
}

void lookUpNlohmann(benchmark::State& state)
{
    nlohmann::json map = buildNlohmann();
    for (auto _ : state) {
        for (const char* key : kKeys)
            benchmark::DoNotOptimize(map[key].type());
    }
}

void lookUpVariantMap(benchmark::State& state)
{
    const QVariantMap map = buildQt<QVariantMap, QVariantList>();
    for (auto _ : state) {
        for (const char* key : kKeys)
            benchmark::DoNotOptimize(map.constFind(QLatin1String(key)));
    }
}

void lookUpJsonCpp(benchmark::State& state)
{
    Json::Value map = buildJsonCpp();
    for (auto _ : state) {
        for (const char* key : kKeys)
            benchmark::DoNotOptimize(map[key].type());
    }
}

void writeValue(benchmark::State& state)
{
    const CDataValue map = buildValue();
    for (auto _ : state)
        benchmark::DoNotOptimize(map.parseToQString(FAST_STYLE));
}

void writeNlohmann(benchmark::State& state)
{
    const nlohmann::json map = buildNlohmann();
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromStdString(map.dump()));
}

void writeQJson(benchmark::State& state)
{
    const QJsonObject map = buildQt<QJsonObject, QJsonArray>();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            QString::fromUtf8(QJsonDocument(map).toJson(QJsonDocument::Compact)));
}

void writeJsonCpp(benchmark::State& state)
{
    const Json::Value map = buildJsonCpp();
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromStdString(Json::writeString(builder, map)));
}

void parseValue(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state) {
        CDataValue value;
        benchmark::DoNotOptimize(CDataValue::parseToDataValue(text, value));
    }
}

void parseNlohmann(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(text.toStdString()));
}

void parseQJson(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text.toUtf8()));
}

void parseJsonCpp(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    for (auto _ : state) {
        const std::string utf8 = text.toStdString();
        Json::Value value;
        std::string errors;
        benchmark::DoNotOptimize(
            reader->parse(utf8.data(), utf8.data() + utf8.size(), &value, &errors));
    }
}

/// A leaf in a tree of as many values as the argument says, three levels deep.
CDataValue tree(int values)
{
    CDataValue root(ARRAY_VALUE);
    for (int i = 0; i < values / 10; ++i) {
        CDataValue map(MAP_VALUE);
        for (const char* key : kKeys)
            map.mapSet(key, CDataValue(i), false);
        root.arrayAppend(std::move(map), false);
    }
    return root;
}

void changeSynchronised(benchmark::State& state)
{
    CDataValue root = tree(static_cast<int>(state.range(0)));
    int number = 0;
    for (auto _ : state)
        root.arrayGet(3).mapSet("nRssi", CDataValue(++number), true);
}

void changeUnsynchronised(benchmark::State& state)
{
    CDataValue root = tree(static_cast<int>(state.range(0)));
    int number = 0;
    for (auto _ : state)
        root.arrayGet(3).mapSet("nRssi", CDataValue(++number), false);
}

BENCHMARK(build<buildValue>)->Name("build/CDataValue");
BENCHMARK(build<buildNlohmann>)->Name("build/nlohmann");
BENCHMARK(build<buildQt<QVariantMap, QVariantList>>)->Name("build/QVariantMap");
BENCHMARK(build<buildQt<QJsonObject, QJsonArray>>)->Name("build/QJsonObject");
BENCHMARK(build<buildJsonCpp>)->Name("build/JsonCpp");
BENCHMARK(copy<buildValue>)->Name("copy/CDataValue");
BENCHMARK(copy<buildNlohmann>)->Name("copy/nlohmann");
BENCHMARK(copy<buildQt<QVariantMap, QVariantList>>)->Name("copy/QVariantMap");
BENCHMARK(copy<buildJsonCpp>)->Name("copy/JsonCpp");
BENCHMARK(lookUpValue)->Name("lookup/CDataValue");
BENCHMARK(lookUpNlohmann)->Name("lookup/nlohmann");
BENCHMARK(lookUpVariantMap)->Name("lookup/QVariantMap");
BENCHMARK(lookUpJsonCpp)->Name("lookup/JsonCpp");
BENCHMARK(writeValue)->Name("write/CDataValue");
BENCHMARK(writeNlohmann)->Name("write/nlohmann");
BENCHMARK(writeQJson)->Name("write/QJsonDocument");
BENCHMARK(writeJsonCpp)->Name("write/JsonCpp");
BENCHMARK(parseValue)->Name("parse/CDataValue");
BENCHMARK(parseNlohmann)->Name("parse/nlohmann");
BENCHMARK(parseQJson)->Name("parse/QJsonDocument");
BENCHMARK(parseJsonCpp)->Name("parse/JsonCpp");
BENCHMARK(changeSynchronised)->Name("change-synchronised/CDataValue")->Arg(100)->Arg(100000);
BENCHMARK(changeUnsynchronised)->Name("change/CDataValue")->Arg(100)->Arg(100000);

} // namespace

int main(int argc, char** argv)
{
    requireSameText();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
