// Values in files.

#include "DataValue/core/tree_p.h"
#include "DataValue/filecontent_p.h"
#include "DataValue/json/jsonbridge_p.h"
#include "DataValue/json/jsontext_p.h"
#include "DataValue/xml/cxmlconvert.h"
#include "LogTask/logline_p.h"
#include "assertion_p.h"
#include "text/utf8_p.h"

#include <QFile>

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr char kLogSource[] = "DataValue/datavalue";

bool isXmlPath(const QString& path)
{
    return path.endsWith(QLatin1String(".xml"));
}

bool isConfigPath(const QString& path)
{
    return path.endsWith(QLatin1String(".config")) || path.endsWith(QLatin1String(".perso"));
}

void log(const char* operation, const QString& message)
{
    logLine(kLogSource, operation, message);
}

/// A value that nests deeper could not be read again.
bool isShallowEnough(const CDataValue& value)
{
    return JsonBridge::nestsAtMost(value, FileContent::kMaximumNesting);
}

/// The operation's result; false when the memory, or what a text or a tree can hold, is too small
/// for it.
template<class Operation>
bool ifItFits(Operation operation)
{
    try {
        return operation();
    } catch (const std::exception&) {
        return false;
    }
}

/// Gives the value what was read from a file, and the file's path. When memory runs out, nothing
/// has changed.
void takeOver(CDataValue& value, CDataValue&& read, const QString& path)
{
    DataValueTree::makeExtras(value); // allocates, so it comes first
    value = std::move(read);
    DataValueTree::makeExtras(value).filePath = path;
}

/// Parses the bytes of a file: up to the first zero byte, without a byte-order mark, damaged
/// characters replaced.
bool parseContent(std::string_view content, CDataValue& value)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    std::string_view text = content.substr(0, content.find('\0'));
    if (text.substr(0, kMark.size()) == kMark)
        text.remove_prefix(kMark.size());
    if (Utf8::isValid(text))
        return JsonText::parse(text, value);
    return JsonText::parse(Utf8::decode(text).toStdString(), value);
}

} // namespace

bool CDataValue::readFile(const QString& path)
{
    if (isXmlPath(path))
        return readXMLFile(path);
    if (isConfigPath(path))
        return readConfigFile(path);
    log("readFile",
        QLatin1String("Do not support read other file type except .xml, .config or .perso"));
    return false;
}

bool CDataValue::readFile(const char* path)
{
    return readFile(QString::fromUtf8(path));
}

bool CDataValue::readXMLFile(const QString& path)
{
    const bool isRead = ifItFits([&] {
        CXMLConvert convert;
        Json::Value json;
        if (!convert.convertXmlToJson(QFile::encodeName(path).constData(), json))
            return false;
        takeOver(*this, JsonText::fromJson(json), path);
        return true;
    });
    if (!isRead) {
        log("readXMLFile", path);
        log("readXMLFile", QLatin1String("Read file error"));
    }
    return isRead;
}

bool CDataValue::readConfigFile(const QString& path)
{
    return ifItFits([&] {
        const std::optional<std::string> content = FileContent::read(path);
        CDataValue value;
        if (!content || !parseContent(*content, value))
            return false;
        takeOver(*this, std::move(value), path);
        return true;
    });
}

bool CDataValue::saveFile()
{
    return saveFileAs(m_extras ? m_extras->filePath : QString());
}

bool CDataValue::saveFileAs(const QString& path)
{
    assertThat(!isHasAddressType(), "!bHasAddress", kLogSource, __LINE__);
    if (isXmlPath(path))
        return saveXMLFile(path);
    if (isConfigPath(path))
        return saveConfigFile(path);
    log("saveFileAs",
        QLatin1String("Do not support save other file type except .xml, .config or .perso"));
    return false;
}

bool CDataValue::saveFileAs(const char* path)
{
    return saveFileAs(QString::fromUtf8(path));
}

bool CDataValue::saveXMLFile(const QString& path)
{
    if (!isXmlPath(path))
        return false;
    return ifItFits([&] {
        CXMLConvert convert;
        return isShallowEnough(*this) &&
               convert.convertJsonToXml(JsonBridge::toJson(*this),
                                        QFile::encodeName(path).constData());
    });
}

bool CDataValue::saveConfigFile(const QString& path)
{
    if (!isConfigPath(path))
        return false;
    return ifItFits([&] {
        if (!isShallowEnough(*this))
            return false;
        const QByteArray text = parseToQString(FAST_STYLE).toUtf8();
        return FileContent::replace(path,
                                    {text.constData(), static_cast<std::size_t>(text.size())});
    });
}
