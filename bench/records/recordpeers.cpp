#include "records/recordpeers.h"

#include "DataValue/datavalue.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <json/json.h>
#include <nlohmann/json.hpp>
// As this library compiles it for itself.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>

NLOHMANN_JSON_NAMESPACE_BEGIN
template<>
struct adl_serializer<QString>
{
    static void to_json(json& out, const QString& text) { out = text.toStdString(); }
    static void from_json(const json& in, QString& text)
    {
        const auto& bytes = in.get_ref<const std::string&>();
        text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    }
};
NLOHMANN_JSON_NAMESPACE_END

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(BLSmsListItem, nPacketType, nRef, nStoreIn, nTag, nType, nClass,
                                   nCompleted, nTotalPacket, nStatusReportStatus, nCurrentPacket,
                                   nBoxType, strAddress, strDateTime, strContent)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(BLSmsGetListCnf, listSmsItem)

namespace recordpeers {

BLSmsGetListCnf makeMessages(int count)
{
    const QString plain = QStringLiteral(
        "Your parcel %1 arrives today between 10 and 12. Leave it at the door? Answer Y or N. "
        "\"Track\" it in the app, code 4711.");
    const QString accented = QString::fromUtf8(
        "Gr\xC3\xBC\xC3\x9F"
        "e aus Z\xC3\xBCrich, Nr. %1: das Fr\xC3\xBChst\xC3\xBC"
        "ck ist ab 7 Uhr, \xE4\xBD\xA0\xE5\xA5\xBD! Wir freuen uns \xF0\x9F\x98\x80 auf den "
        "n\xC3\xA4"
        "chsten Besuch, bis bald und alles Gute.");
    BLSmsGetListCnf list;
    for (int i = 0; i < count; ++i) {
        BLSmsListItem item;
        item.nPacketType = i % 2;
        item.nRef = i;
        item.nStoreIn = 1;
        item.nType = i % 5;
        item.nCompleted = 1;
        item.nTotalPacket = 1 + i % 3;
        item.nStatusReportStatus = -1;
        item.nCurrentPacket = 1;
        item.nBoxType = i % 4;
        item.strAddress = QStringLiteral("+4917%1").arg(10000000 + i);
        item.strDateTime = QStringLiteral("12/03/2024 14:05:%1").arg(i % 60, 2, 10, QChar('0'));
        item.strContent = (i % 3 == 0 ? accented : plain).arg(i);
        list.listSmsItem.push_back(std::move(item));
    }
    return list;
}

QString Own::write(const BLSmsGetListCnf& list)
{
    CDataValue value;
    GetDataValueFromStruct(const_cast<BLSmsGetListCnf&>(list), value);
    return value.parseToQString(FAST_STYLE);
}

BLSmsGetListCnf Own::read(const QString& text)
{
    CDataValue value;
    CDataValue::parseToDataValue(text, value);
    BLSmsGetListCnf list;
    GetStructFromDataValue(value, list);
    return list;
}

std::string Nlohmann::write(const BLSmsGetListCnf& list)
{
    return nlohmann::json(list).dump();
}

BLSmsGetListCnf Nlohmann::read(const std::string& text)
{
    return nlohmann::json::parse(text).get<BLSmsGetListCnf>();
}

QByteArray QtJson::write(const BLSmsGetListCnf& list)
{
    QJsonArray items;
    for (const BLSmsListItem& item : list.listSmsItem) {
        QJsonObject object;
        for (const NumberField& field : kNumbers)
            object.insert(QLatin1String(field.key), item.*field.member);
        for (const TextField& field : kTexts)
            object.insert(QLatin1String(field.key), item.*field.member);
        items.append(object);
    }
    QJsonObject root;
    root.insert(QLatin1String(kList), items);
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

BLSmsGetListCnf QtJson::read(const QByteArray& text)
{
    const QJsonObject root = QJsonDocument::fromJson(text).object();
    BLSmsGetListCnf list;
    const QJsonArray items = root.value(QLatin1String(kList)).toArray();
    for (const QJsonValue& value : items) {
        const QJsonObject object = value.toObject();
        BLSmsListItem& item = list.listSmsItem.emplace_back();
        for (const NumberField& field : kNumbers)
            item.*field.member = object.value(QLatin1String(field.key)).toInt();
        for (const TextField& field : kTexts)
            item.*field.member = object.value(QLatin1String(field.key)).toString();
    }
    return list;
}

std::string JsonCpp::write(const BLSmsGetListCnf& list)
{
    Json::Value root;
    Json::Value& items = root[kList] = Json::Value(Json::arrayValue);
    for (const BLSmsListItem& item : list.listSmsItem) {
        Json::Value object(Json::objectValue);
        for (const NumberField& field : kNumbers)
            object[field.key] = item.*field.member;
        for (const TextField& field : kTexts)
            object[field.key] = (item.*field.member).toStdString();
        items.append(std::move(object));
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, root);
}

BLSmsGetListCnf JsonCpp::read(const std::string& text)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value root;
    reader->parse(text.data(), text.data() + text.size(), &root, nullptr);
    BLSmsGetListCnf list;
    for (const Json::Value& object : root[kList]) {
        BLSmsListItem& item = list.listSmsItem.emplace_back();
        for (const NumberField& field : kNumbers)
            item.*field.member = object[field.key].asInt();
        for (const TextField& field : kTexts) {
            const char* begin = nullptr;
            const char* end = nullptr;
            object[field.key].getString(&begin, &end);
            item.*field.member = QString::fromUtf8(begin, static_cast<int>(end - begin));
        }
    }
    return list;
}

std::string RapidJson::write(const BLSmsGetListCnf& list)
{
    rapidjson::Document root(rapidjson::kObjectType);
    auto& allocator = root.GetAllocator();
    rapidjson::Value items(rapidjson::kArrayType);
    for (const BLSmsListItem& item : list.listSmsItem) {
        rapidjson::Value object(rapidjson::kObjectType);
        for (const NumberField& field : kNumbers)
            object.AddMember(rapidjson::StringRef(field.key), item.*field.member, allocator);
        for (const TextField& field : kTexts) {
            const QByteArray utf8 = (item.*field.member).toUtf8();
            object.AddMember(rapidjson::StringRef(field.key),
                             rapidjson::Value(utf8.constData(),
                                              static_cast<rapidjson::SizeType>(utf8.size()),
                                              allocator),
                             allocator);
        }
        items.PushBack(object, allocator);
    }
    root.AddMember(rapidjson::StringRef(kList), items, allocator);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    root.Accept(writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

BLSmsGetListCnf RapidJson::read(const std::string& text)
{
    rapidjson::Document root;
    root.Parse(text.data(), text.size());
    BLSmsGetListCnf list;
    for (const rapidjson::Value& object : root[kList].GetArray()) {
        BLSmsListItem& item = list.listSmsItem.emplace_back();
        for (const NumberField& field : kNumbers)
            item.*field.member = object[field.key].GetInt();
        for (const TextField& field : kTexts) {
            const rapidjson::Value& value = object[field.key];
            item.*field.member =
                QString::fromUtf8(value.GetString(), static_cast<int>(value.GetStringLength()));
        }
    }
    return list;
}

std::string plainText(const QString& text)
{
    return text.trimmed().toStdString();
}

std::string plainText(const QByteArray& text)
{
    return text.trimmed().toStdString();
}

std::string plainText(const std::string& text)
{
    return text;
}

} // namespace recordpeers
