#include "DataValue/xml/cxmlconvert.h"

#include "DataValue/filecontent_p.h"
#include "DataValue/xml/xmlprint_p.h"
#include "text/utf8_p.h"

#include <QString>

#include <json/json.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr char kKey[] = "key";
constexpr char kTrue[] = "true";
constexpr char kBlanks[] = " \t\n\v\f\r";

/// The element names by the number of the kind. Null has none in the described form; any name
/// that the others do not take is read as null.
constexpr const char* kNames[] = {"NullValue",   "IntValue",     "UintValue",  "RealValue",
                                  "StringValue", "BooleanValue", "ArrayValue", "DictValue"};

bool isContainer(ENUM_VALUE_TYPE kind)
{
    return kind == ARRAY_VALUE || kind == MAP_VALUE;
}

/// The kind a JSON value is written as: integers that do not fit 32 bits as doubles.
ENUM_VALUE_TYPE writtenKind(const Json::Value& json)
{
    const ENUM_VALUE_TYPE kind = CDataValue::toValueType(json);
    const bool tooLarge =
        (kind == INT_VALUE && !json.isInt()) || (kind == UINT_VALUE && !json.isUInt());
    return tooLarge ? REAL_VALUE : kind;
}

/// The bytes of a string value, zero bytes included, as UTF-8.
std::string textOf(const char* begin, const char* end)
{
    std::string text(begin, end);
    if (!Utf8::isValid(text))
        text = QString::fromUtf8(text.data(), static_cast<int>(text.size())).toStdString();
    return text;
}

std::string textOf(const Json::Value& json)
{
    const char* begin = nullptr;
    const char* end = nullptr;
    return json.getString(&begin, &end) ? textOf(begin, end) : std::string();
}

/// All texts of an element, comments between them left out. False when it has none.
bool collectText(const TiXmlNode& element, std::string& text)
{
    bool found = false;
    for (const TiXmlNode* node = element.FirstChild(); node; node = node->NextSibling()) {
        if (!node->ToText())
            continue;
        text += node->ValueStr();
        found = true;
    }
    return found;
}

} // namespace

CXMLConvert::CXMLConvert() = default;

CXMLConvert::~CXMLConvert() = default;

const char* CXMLConvert::convertToStrBuf(int value)
{
    m_buffer = std::to_string(value);
    return m_buffer.c_str();
}

const char* CXMLConvert::convertToStrBuf(unsigned int value)
{
    return convertToStrBuf(static_cast<int>(value));
}

const char* CXMLConvert::convertToStrBuf(double value)
{
    char digits[512]; // the largest double has 309 digits before the point
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 6).ptr;
    m_buffer.assign(digits, end);
    return m_buffer.c_str();
}

const char* CXMLConvert::convertToStrBuf(bool value)
{
    m_buffer = value ? kTrue : "false";
    return m_buffer.c_str();
}

const char* CXMLConvert::convertToStrBuf(const std::string& value)
{
    m_buffer = std::string(value); // it may be the buffer itself
    return m_buffer.c_str();
}

const char* CXMLConvert::convertToStrBuf(const char* value)
{
    return convertToStrBuf(convertToString(value));
}

int CXMLConvert::convertToInt(const char* text)
{
    return XmlPrint::toInt(text);
}

unsigned int CXMLConvert::convertToUInt(const char* text)
{
    return text ? static_cast<unsigned int>(std::strtoul(text, nullptr, 10)) : 0;
}

double CXMLConvert::convertToDouble(const char* text)
{
    return XmlPrint::toDouble(text);
}

bool CXMLConvert::convertToBoolean(const char* text)
{
    return text && std::strcmp(text, kTrue) == 0;
}

std::string CXMLConvert::convertToString(const char* text)
{
    return text ? text : std::string();
}

ENUM_VALUE_TYPE CXMLConvert::convertToEType(const char* typeName)
{
    m_kind = NULL_VALUE;
    for (int kind = INT_VALUE; kind <= MAP_VALUE; ++kind) {
        if (typeName && std::strcmp(typeName, kNames[kind]) == 0)
            m_kind = static_cast<ENUM_VALUE_TYPE>(kind);
    }
    return m_kind;
}

TiXmlNode* CXMLConvert::getJsonTypeFromXml(TiXmlNode* node)
{
    m_key.clear();
    m_text.clear();
    m_hasText = false;
    m_kind = NULL_VALUE;
    TiXmlElement* element = node ? node->ToElement() : nullptr;
    if (element && element->ValueStr() == kKey) {
        collectText(*element, m_key);
        element = element->NextSiblingElement();
    }
    if (!element)
        return nullptr;
    if (!isContainer(convertToEType(element->Value())))
        m_hasText = collectText(*element, m_text);
    return element;
}

TiXmlElement* CXMLConvert::addElement(TiXmlElement* parent, const char* name,
                                      const std::string* text)
{
    auto* const element = new TiXmlElement(name);
    if (text)
        element->LinkEndChild(new TiXmlText(*text));
    TiXmlNode* const holder = parent ? static_cast<TiXmlNode*>(parent) : &m_xml;
    holder->LinkEndChild(element);
    return element;
}

TiXmlElement* CXMLConvert::getXmlTypeFromJson(const Json::Value& json, TiXmlElement* parent,
                                              const char* key)
{
    return addMember(json, parent, convertToString(key));
}

TiXmlElement* CXMLConvert::addMember(const Json::Value& json, TiXmlElement* parent,
                                     const std::string& key)
{
    if (parent && !key.empty())
        addElement(parent, kKey, &key);
    const ENUM_VALUE_TYPE kind = writtenKind(json);
    std::string text;
    switch (kind) {
    case INT_VALUE:
        text = convertToStrBuf(json.asInt());
        break;
    case UINT_VALUE:
        text = convertToStrBuf(json.asUInt());
        break;
    case REAL_VALUE:
        text = convertToStrBuf(json.asDouble());
        break;
    case BOOLEAN_VALUE:
        text = convertToStrBuf(json.asBool());
        break;
    case STRING_VALUE:
        text = textOf(json);
        break;
    default:
        if (isContainer(kind))
            m_openContainer = kind;
    }
    return addElement(parent, kNames[kind], text.empty() ? nullptr : &text);
}

/// A container that is being written: its element, and which child is next.
struct CXMLConvert::WriteStep
{
    TiXmlElement* element;
    Json::Value::const_iterator next;
    Json::Value::const_iterator end;
};

bool CXMLConvert::changeDataJsonToXml(const Json::Value& json, TiXmlElement* parent,
                                      const char* key)
{
    std::vector<WriteStep> open;
    const auto write = [&](const Json::Value& value, TiXmlElement* holder,
                           const std::string& name) {
        TiXmlElement* const element = addMember(value, holder, name);
        if (value.isArray() || value.isObject())
            open.push_back({element, value.begin(), value.end()});
    };
    write(json, parent, convertToString(key));
    while (!open.empty()) {
        WriteStep& step = open.back();
        if (step.next == step.end) {
            open.pop_back();
            continue;
        }
        if (open.size() >= FileContent::kMaximumNesting)
            return false;
        const Json::Value& child = *step.next;
        const char* nameEnd = nullptr;
        const char* const name = step.next.memberName(&nameEnd);
        ++step.next;
        write(child, step.element, name ? textOf(name, nameEnd) : std::string());
    }
    return true;
}

bool CXMLConvert::convertJsonToXml(const Json::Value& json, const char* path)
{
    if (json.isNull() || !path)
        return false;
    m_xml.Clear();
    m_xml.AddXmlDeclaration("1.0", "utf-8", "");
    return changeDataJsonToXml(json, nullptr, "") && m_xml.SaveFileAs(path);
}

void CXMLConvert::readScalar(Json::Value& json) const
{
    switch (m_kind) {
    case INT_VALUE:
        json = convertToInt(m_text.c_str());
        break;
    case UINT_VALUE:
        json = convertToUInt(m_text.c_str());
        break;
    case REAL_VALUE:
        json = convertToDouble(m_text.c_str());
        break;
    case STRING_VALUE:
        json = m_text;
        break;
    case BOOLEAN_VALUE: {
        // Blanks around the word come from a file that was laid out by hand.
        const std::size_t begin = std::min(m_text.find_first_not_of(kBlanks), m_text.size());
        const std::size_t end = m_text.find_last_not_of(kBlanks) + 1;
        json = end > begin && convertToBoolean(m_text.substr(begin, end - begin).c_str());
        break;
    }
    case ARRAY_VALUE:
        json = Json::Value(Json::arrayValue);
        break;
    case MAP_VALUE:
        json = Json::Value(Json::objectValue);
        break;
    default:
        json = Json::Value();
    }
}

/// A container that is being read: where it goes, and which child is next.
struct CXMLConvert::ReadStep
{
    TiXmlNode* next;
    Json::Value* json;
};

/// Fills `json`, an empty array or object. Never by recursion, and each container is finished
/// before its next sibling is read: a later member of the same name may replace it.
bool CXMLConvert::readInto(TiXmlNode* container, Json::Value& json)
{
    std::vector<ReadStep> open{{container->FirstChildElement(), &json}};
    while (!open.empty()) {
        ReadStep& step = open.back();
        TiXmlNode* const element = getJsonTypeFromXml(step.next);
        if (!element) { // the end, or a key that no value follows
            open.pop_back();
            continue;
        }
        if (open.size() >= FileContent::kMaximumNesting)
            return false;
        step.next = element->NextSiblingElement();
        Json::Value& slot =
            step.json->isArray() ? step.json->append(Json::Value()) : (*step.json)[m_key];
        readScalar(slot);
        if (isContainer(m_kind))
            open.push_back({element->FirstChildElement(), &slot});
    }
    return true;
}

bool CXMLConvert::readRoot(TiXmlElement* root, Json::Value& json)
{
    if (!root || root->ValueStr() == kKey || !getJsonTypeFromXml(root) || m_kind == NULL_VALUE)
        return false;
    Json::Value result;
    readScalar(result);
    if (isContainer(m_kind) && !readInto(root, result))
        return false;
    json.swap(result);
    return true;
}

bool CXMLConvert::convertXmlToJson(const char* path, Json::Value& json)
{
    return m_xml.ParseXmlFile(path, TIXML_ENCODING_UTF8) && readRoot(m_xml.GetRootElement(), json);
}

bool CXMLConvert::changeToJsonObject(TiXmlNode* node, Json::Value& json)
{
    Json::Value result(Json::objectValue);
    if (!node || !readInto(node, result))
        return false;
    json.swap(result);
    return true;
}

bool CXMLConvert::convertToJsonArray(TiXmlNode* node, Json::Value& json)
{
    Json::Value result(Json::arrayValue);
    if (!node || !readInto(node, result))
        return false;
    json.swap(result);
    return true;
}
