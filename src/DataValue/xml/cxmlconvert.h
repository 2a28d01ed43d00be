#ifndef DATAVALUE_XML_CXMLCONVERT_H
#define DATAVALUE_XML_CXMLCONVERT_H

#include "DataValue/datavalue.h"
#include "DataValue/xml/cxml.h"
#include "wzrframework_export.h"

#include <string>

/// Converts between a JSON value and the typed XML form, in which each element is named after the
/// kind of the value it holds:
///
///     <?xml version="1.0" encoding="utf-8" ?>
///     <DictValue>
///         <key>list</key>
///         <ArrayValue>
///             <StringValue>a</StringValue>
///             <StringValue>b</StringValue>
///         </ArrayValue>
///         <key>nIndex</key>
///         <IntValue>3</IntValue>
///     </DictValue>
///
/// The other elements are "UintValue", "RealValue" (six decimals; more are lost) and
/// "BooleanValue". A null, which the form has no word for, is written as an empty "NullValue" so
/// that it keeps its place; every unknown element is read as null. A member with an empty name has
/// no "key" element. Numbers are written and read with a decimal point, whatever the locale.
///
/// Strings come back as they were saved, blanks and control characters included; bytes that are
/// not UTF-8 are written as U+FFFD, as in the JSON form. Values nest at most 1000 levels deep,
/// scalars included: deeper ones are neither written nor read. Integers beyond 32 bits are written
/// as doubles.
///
/// **Threads.** One object is used by one thread at a time. What an operation returns by pointer
/// lives until the next operation of that kind.
class WZRFRAMEWORK_EXPORT CXMLConvert
{
public:
    CXMLConvert();
    CXMLConvert(const CXMLConvert&) = delete;
    CXMLConvert& operator=(const CXMLConvert&) = delete;
    ~CXMLConvert();

    /// The text of a scalar, held by this object until the next call. An unsigned integer above
    /// 2147483647 comes out negative and is read back by convertToUInt(): that is meant.
    const char* convertToStrBuf(int value);
    const char* convertToStrBuf(unsigned int value);
    const char* convertToStrBuf(double value);
    const char* convertToStrBuf(bool value);
    const char* convertToStrBuf(const std::string& value);
    const char* convertToStrBuf(const char* value);

    /// The number at the start of a text; 0 for null and where there is none.
    static int convertToInt(const char* text);
    static unsigned int convertToUInt(const char* text);
    static double convertToDouble(const char* text);
    /// True for exactly "true".
    static bool convertToBoolean(const char* text);
    /// Null gives the empty string.
    static std::string convertToString(const char* text);

    /// Recognises the kind that an element's name stands for, case-sensitively; NULL_VALUE for
    /// every other name and for null.
    ENUM_VALUE_TYPE convertToEType(const char* typeName);

    /// Reads one member: at a "key" element its name and, from the element behind it, the value;
    /// at another element a value without a name. Returns the value's element; null when there is
    /// none.
    TiXmlNode* getJsonTypeFromXml(TiXmlNode* node);
    /// What the last getJsonTypeFromXml() read: the name; the text, null for a container and for
    /// an element without text; the kind.
    const std::string& memberName() const { return m_key; }
    const char* memberText() const { return m_hasText ? m_text.c_str() : nullptr; }
    ENUM_VALUE_TYPE memberKind() const { return m_kind; }

    /// Writes the "key" element (when `key` is neither null nor empty) and the value's own element
    /// under `parent`, without the children of a container; without a parent the element becomes
    /// the document's root. Returns the value's element.
    TiXmlElement* getXmlTypeFromJson(const Json::Value& json, TiXmlElement* parent,
                                     const char* key);
    /// The same with all children. False when the value nests too deeply; what was written until
    /// then stays.
    bool changeDataJsonToXml(const Json::Value& json, TiXmlElement* parent, const char* key);

    /// Saves the value as a file, which is replaced as a whole or not at all. False for null, for
    /// a value that nests too deeply, and when the file cannot be written.
    bool convertJsonToXml(const Json::Value& json, const char* path);
    /// Reads a file. False, with `json` unchanged, when it is no XML document or its root is none
    /// of the elements above.
    bool convertXmlToJson(const char* path, Json::Value& json);
    /// The object of the children of a "DictValue", and the array of those of an "ArrayValue".
    /// False, with `json` unchanged, for null and when they nest too deeply.
    bool changeToJsonObject(TiXmlNode* node, Json::Value& json);
    bool convertToJsonArray(TiXmlNode* node, Json::Value& json);

    /// The document last read or written, for its errors.
    const CXml& document() const { return m_xml; }

private:
    struct ReadStep;
    struct WriteStep;

    TiXmlElement* addElement(TiXmlElement* parent, const char* name, const std::string* text);
    TiXmlElement* addMember(const Json::Value& json, TiXmlElement* parent, const std::string& key);
    bool readInto(TiXmlNode* container, Json::Value& json);
    bool readRoot(TiXmlElement* root, Json::Value& json);
    void readScalar(Json::Value& json) const;

    std::string m_buffer;
    CXml m_xml;
    std::string m_key;
    std::string m_text;
    bool m_hasText = false;
    ENUM_VALUE_TYPE m_kind = NULL_VALUE;
    ENUM_VALUE_TYPE m_openContainer = NULL_VALUE;
};

#endif
