// Values in files.

#include "DataValue/datavalue_p.h"
#include "DataValue/filecontent_p.h"
#include "DataValue/jsonbridge_p.h"
#include "DataValue/jsontext_p.h"
#include "DataValue/xml/cxmlconvert.h"
#include "LogTask/clog.h"
#include "assertion_p.h"

#include <QFile>

#include <cstring>

namespace {

constexpr char kSource[] = "DataValue/datavalue";

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
    CLogFile() << kSource << operation << message;
}

/// A file that cannot be read again must not be written.
bool isShallowEnough(const CDataValue& value, const char* operation)
{
    if (JsonBridge::nestsAtMost(value, FileContent::kMaximumNesting))
        return true;
    log(operation, QLatin1String("The value is nested too deeply for a file, it is not saved!"));
    return false;
}

/// The bytes as text: up to the first zero byte, without a byte-order mark, damaged characters
/// replaced.
std::string textOf(const QByteArray& content)
{
    static constexpr char kMark[] = "\xEF\xBB\xBF";
    const char* const begin = content.constData() + (content.startsWith(kMark) ? 3 : 0);
    return QString::fromUtf8(begin, static_cast<int>(std::strlen(begin))).toStdString();
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
    CXMLConvert convert;
    Json::Value json;
    if (!convert.convertXmlToJson(QFile::encodeName(path).constData(), json)) {
        log("readXMLFile", path);
        log("readXMLFile", QLatin1String("Read file error"));
        return false;
    }
    *this = JsonText::fromJson(json);
    DataValueTree::makeExtras(*this).filePath = path;
    return true;
}

bool CDataValue::readConfigFile(const QString& path)
{
    QByteArray content;
    if (!FileContent::read(path, content) || !JsonText::parse(textOf(content), *this))
        return false;
    DataValueTree::makeExtras(*this).filePath = path;
    return true;
}

bool CDataValue::saveFile()
{
    return saveFileAs(m_extras ? m_extras->filePath : QString());
}

bool CDataValue::saveFileAs(const QString& path)
{
    assertThat(!isHasAddressType(), "!bHasAddress", kSource, __LINE__);
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
    if (!isXmlPath(path) || !isShallowEnough(*this, "saveXMLFile"))
        return false;
    CXMLConvert convert;
    return convert.convertJsonToXml(JsonBridge::toJson(*this), QFile::encodeName(path).constData());
}

bool CDataValue::saveConfigFile(const QString& path)
{
    if (!isConfigPath(path) || !isShallowEnough(*this, "saveConfigFile"))
        return false;
    const QByteArray text = parseToQString(FAST_STYLE).toUtf8();
    return FileContent::replace(path, {text.constData(), static_cast<std::size_t>(text.size())});
}
