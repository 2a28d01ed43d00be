// CDataValue against the value types that a user would take instead. Every workload handles the
// same map: ten members of mixed kinds, among them a map and an array.

#include "DataValue/datavalue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <benchmark/benchmark.h>
#include <boost/json.hpp>
#include <json/json.h>
#include <nlohmann/json.hpp>

// As this library compiles it for itself.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/document.h>

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

/// The same as it comes from a text, and so from a peer.
CDataValue parseBuiltValue()
{
    CDataValue value;
    if (!CDataValue::parseToDataValue(buildValue().parseToQString(FAST_STYLE), value))
        std::abort();
    return value;
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

boost::json::object buildBoost()
{
    boost::json::array list;
    for (int i = 0; i < 5; ++i)
        list.emplace_back(i * 100);
    boost::json::object inner;
    inner["nAct"] = 7;
    inner["nMode"] = 1;
    inner["strLongAlpha"] = "Example Mobile";
    boost::json::object map;
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

void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "the peers do not hold the same data: %s\n", what);
    std::exit(1);
}

/// What reading all fields of the map yields, so that all ways can be compared.
struct AllFields
{
    long long numbers = 0;
    double rate = 0;
    bool active = false;
    QString texts;

    bool operator==(const AllFields& other) const
    {
        return numbers == other.numbers && rate == other.rate && active == other.active &&
               texts == other.texts;
    }
};

QString textOf(const char* bytes, std::size_t size)
{
    return QString::fromUtf8(bytes, static_cast<int>(size));
}

AllFields readValue(const QString& text)
{
    CDataValue map;
    CDataValue::parseToDataValue(text, map);
    AllFields all;
    for (const char* key : {"nIndex", "nState", "nRssi"})
        all.numbers += map.mapGet(key).asInt();
    CDataValue& list = map.mapGet("listCells");
    for (unsigned i = 0; i < list.arrayCount(); ++i)
        all.numbers += list.arrayGet(i).asInt();
    all.rate = map.mapGet("dRate").asDouble();
    all.active = map.mapGet("blActive").asBool();
    CDataValue& inner = map.mapGet("tOperator");
    all.numbers += inner.mapGet("nAct").asInt() + inner.mapGet("nMode").asInt();
    for (const char* key : {"strName", "strNumber", "strRemark"})
        all.texts += map.mapGet(key).asQString();
    all.texts += inner.mapGet("strLongAlpha").asQString();
    return all;
}

AllFields readNlohmann(const QString& text)
{
    const nlohmann::json map = nlohmann::json::parse(text.toStdString());
    AllFields all;
    for (const char* key : {"nIndex", "nState", "nRssi"})
        all.numbers += map.find(key)->get<int>();
    for (const nlohmann::json& cell : *map.find("listCells"))
        all.numbers += cell.get<int>();
    all.rate = map.find("dRate")->get<double>();
    all.active = map.find("blActive")->get<bool>();
    const nlohmann::json& inner = *map.find("tOperator");
    all.numbers += inner.find("nAct")->get<int>() + inner.find("nMode")->get<int>();
    const auto add = [&all](const nlohmann::json& value) {
        const auto& bytes = value.get_ref<const std::string&>();
        all.texts += textOf(bytes.data(), bytes.size());
    };
    for (const char* key : {"strName", "strNumber", "strRemark"})
        add(*map.find(key));
    add(*inner.find("strLongAlpha"));
    return all;
}

AllFields readQJson(const QString& text)
{
    const QJsonObject map = QJsonDocument::fromJson(text.toUtf8()).object();
    AllFields all;
    for (const char* key : {"nIndex", "nState", "nRssi"})
        all.numbers += map.value(QLatin1String(key)).toInt();
    const QJsonArray list = map.value(QLatin1String("listCells")).toArray();
    for (const QJsonValue& cell : list)
        all.numbers += cell.toInt();
    all.rate = map.value(QLatin1String("dRate")).toDouble();
    all.active = map.value(QLatin1String("blActive")).toBool();
    const QJsonObject inner = map.value(QLatin1String("tOperator")).toObject();
    all.numbers += inner.value(QLatin1String("nAct")).toInt();
    all.numbers += inner.value(QLatin1String("nMode")).toInt();
    for (const char* key : {"strName", "strNumber", "strRemark"})
        all.texts += map.value(QLatin1String(key)).toString();
    all.texts += inner.value(QLatin1String("strLongAlpha")).toString();
    return all;
}

AllFields readRapidJson(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    rapidjson::Document map;
    map.Parse(utf8.constData(), static_cast<std::size_t>(utf8.size()));
    AllFields all;
    for (const char* key : {"nIndex", "nState", "nRssi"})
        all.numbers += map[key].GetInt();
    for (const rapidjson::Value& cell : map["listCells"].GetArray())
        all.numbers += cell.GetInt();
    all.rate = map["dRate"].GetDouble();
    all.active = map["blActive"].GetBool();
    const rapidjson::Value& inner = map["tOperator"];
    all.numbers += inner["nAct"].GetInt() + inner["nMode"].GetInt();
    for (const char* key : {"strName", "strNumber", "strRemark"})
        all.texts += textOf(map[key].GetString(), map[key].GetStringLength());
    const rapidjson::Value& alpha = inner["strLongAlpha"];
    all.texts += textOf(alpha.GetString(), alpha.GetStringLength());
    return all;
}

AllFields readBoost(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    boost::json::monotonic_resource memory;
    const boost::json::value parsed = boost::json::parse(
        boost::json::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())), &memory);
    const boost::json::object& map = parsed.as_object();
    AllFields all;
    for (const char* key : {"nIndex", "nState", "nRssi"})
        all.numbers += map.at(key).as_int64();
    for (const boost::json::value& cell : map.at("listCells").as_array())
        all.numbers += cell.as_int64();
    all.rate = map.at("dRate").as_double();
    all.active = map.at("blActive").as_bool();
    const boost::json::object& inner = map.at("tOperator").as_object();
    all.numbers += inner.at("nAct").as_int64() + inner.at("nMode").as_int64();
    const auto add = [&all](const boost::json::value& value) {
        const boost::json::string& bytes = value.as_string();
        all.texts += textOf(bytes.data(), bytes.size());
    };
    for (const char* key : {"strName", "strNumber", "strRemark"})
        add(map.at(key));
    add(inner.at("strLongAlpha"));
    return all;
}

/// Every workload's results are worth something only if all ways agree.
void requireSameResults()
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    require(text.trimmed().toStdString() == buildNlohmann().dump(), "nlohmann");
    require(buildBoost() == boost::json::parse(buildNlohmann().dump()).as_object(), "Boost.JSON");
    const AllFields all = readValue(text);
    require(all.numbers == 942 && all.rate == 2.5 && all.active && all.texts.size() == 84,
            "what is read of a value");
    require(readNlohmann(text) == all, "what is read by nlohmann");
    require(readQJson(text) == all, "what is read by QJsonDocument");
    require(readRapidJson(text) == all, "what is read by RapidJSON");
    require(readBoost(text) == all, "what is read by Boost.JSON");
}

template<auto Read>
void parseAndRead(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state)
        benchmark::DoNotOptimize(Read(text));
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

/// The first copy of a value that was built by hand, which may have to be put into another form.
template<auto Build>
void buildAndCopy(benchmark::State& state)
{
    for (auto _ : state) {
        const auto source = Build();
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
            benchmark::DoNotOptimize(map.find(key)->type());
    }
}

void lookUpBoost(benchmark::State& state)
{
    const boost::json::object map = buildBoost();
    for (auto _ : state) {
        for (const char* key : kKeys)
            benchmark::DoNotOptimize(map.find(key)->value().kind());
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

void writeBoost(benchmark::State& state)
{
    const boost::json::object map = buildBoost();
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromStdString(boost::json::serialize(map)));
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

void parseRapidJson(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state) {
        const QByteArray utf8 = text.toUtf8();
        rapidjson::Document map;
        map.Parse(utf8.constData(), static_cast<std::size_t>(utf8.size()));
        benchmark::DoNotOptimize(map.IsObject());
    }
}

void parseBoost(benchmark::State& state)
{
    const QString text = buildValue().parseToQString(FAST_STYLE);
    for (auto _ : state) {
        const QByteArray utf8 = text.toUtf8();
        benchmark::DoNotOptimize(boost::json::parse(
            boost::json::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size()))));
    }
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
BENCHMARK(build<buildBoost>)->Name("build/Boost.JSON");
BENCHMARK(buildAndCopy<buildValue>)->Name("build-and-copy/CDataValue");
BENCHMARK(buildAndCopy<buildNlohmann>)->Name("build-and-copy/nlohmann");
BENCHMARK(buildAndCopy<buildQt<QVariantMap, QVariantList>>)->Name("build-and-copy/QVariantMap");
BENCHMARK(copy<parseBuiltValue>)->Name("copy/CDataValue");
BENCHMARK(copy<buildNlohmann>)->Name("copy/nlohmann");
BENCHMARK(copy<buildQt<QVariantMap, QVariantList>>)->Name("copy/QVariantMap");
BENCHMARK(copy<buildJsonCpp>)->Name("copy/JsonCpp");
BENCHMARK(copy<buildValue>)->Name("copy-built/CDataValue");
BENCHMARK(copy<buildNlohmann>)->Name("copy-built/nlohmann");
BENCHMARK(copy<buildQt<QVariantMap, QVariantList>>)->Name("copy-built/QVariantMap");
BENCHMARK(copy<buildJsonCpp>)->Name("copy-built/JsonCpp");
BENCHMARK(lookUpValue)->Name("lookup/CDataValue");
BENCHMARK(lookUpNlohmann)->Name("lookup/nlohmann");
BENCHMARK(lookUpBoost)->Name("lookup/Boost.JSON");
BENCHMARK(lookUpVariantMap)->Name("lookup/QVariantMap");
BENCHMARK(lookUpJsonCpp)->Name("lookup/JsonCpp");
BENCHMARK(writeValue)->Name("write/CDataValue");
BENCHMARK(writeNlohmann)->Name("write/nlohmann");
BENCHMARK(writeQJson)->Name("write/QJsonDocument");
BENCHMARK(writeJsonCpp)->Name("write/JsonCpp");
BENCHMARK(writeBoost)->Name("write/Boost.JSON");
BENCHMARK(parseValue)->Name("parse/CDataValue");
BENCHMARK(parseNlohmann)->Name("parse/nlohmann");
BENCHMARK(parseQJson)->Name("parse/QJsonDocument");
BENCHMARK(parseJsonCpp)->Name("parse/JsonCpp");
BENCHMARK(parseRapidJson)->Name("parse/RapidJSON");
BENCHMARK(parseBoost)->Name("parse/Boost.JSON");
BENCHMARK(parseAndRead<readValue>)->Name("parse-and-read/CDataValue");
BENCHMARK(parseAndRead<readNlohmann>)->Name("parse-and-read/nlohmann");
BENCHMARK(parseAndRead<readQJson>)->Name("parse-and-read/QJsonDocument");
BENCHMARK(parseAndRead<readRapidJson>)->Name("parse-and-read/RapidJSON");
BENCHMARK(parseAndRead<readBoost>)->Name("parse-and-read/Boost.JSON");
BENCHMARK(changeSynchronised)->Name("change-synchronised/CDataValue")->Arg(100)->Arg(100000);
BENCHMARK(changeUnsynchronised)->Name("change/CDataValue")->Arg(100)->Arg(100000);

} // namespace

int main(int argc, char** argv)
{
    requireSameResults();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
