#include "valuecheck.h"

#include "DataValue/datavalue.h"
#include "DataValue/xml/cxmlconvert.h"

#include <QFile>
#include <QFileInfo>

#include <json/json.h>

#include <algorithm>
#include <set>

namespace {

using Problems = std::vector<FileProblem>;

QString quoted(const std::string& text)
{
    return QLatin1Char('"') + QString::fromStdString(text) + QLatin1Char('"');
}

/// Whether the text of a scalar is one of its kind; blanks around it do not matter.
bool isOfKind(ENUM_VALUE_TYPE kind, const QString& text)
{
    bool fits = true;
    const QString word = text.trimmed();
    const bool isNegative = word.startsWith(QLatin1Char('-')); // as UINT: 2147483648 and above
    if (kind == INT_VALUE || (kind == UINT_VALUE && isNegative))
        word.toInt(&fits);
    else if (kind == UINT_VALUE)
        word.toUInt(&fits);
    else if (kind == REAL_VALUE)
        word.toDouble(&fits);
    else if (kind == BOOLEAN_VALUE)
        fits = word == QLatin1String("true") || word == QLatin1String("false");
    return fits;
}

/// Checks the elements of the typed form, each container after its parent.
class ElementCheck
{
public:
    explicit ElementCheck(TiXmlElement* root)
    {
        checkElement(*root);
        while (!m_pending.empty()) {
            TiXmlElement* const container = m_pending.back();
            m_pending.pop_back();
            checkChildren(*container);
        }
    }

    Problems problems;

private:
    void report(const TiXmlElement& element, const QString& reason)
    {
        problems.push_back({element.Row(), reason});
    }

    void checkElement(TiXmlElement& element)
    {
        const ENUM_VALUE_TYPE kind = m_convert.convertToEType(element.Value());
        if (kind == ARRAY_VALUE || kind == MAP_VALUE) {
            m_pending.push_back(&element);
            return;
        }
        if (kind == NULL_VALUE) {
            if (element.ValueStr() != "NullValue" ||
                &element == element.GetDocument()->RootElement())
                report(element, "Unknown element " + quoted(element.ValueStr()));
            return;
        }
        if (const TiXmlElement* const child = element.FirstChildElement())
            report(*child, "Element inside a " + quoted(element.ValueStr()));
        m_convert.getJsonTypeFromXml(&element);
        const QString text = QString::fromUtf8(m_convert.memberText());
        if (!isOfKind(kind, text))
            report(element, quoted(text.toStdString()) + " is no " + quoted(element.ValueStr()));
    }

    void checkChildren(TiXmlElement& container)
    {
        const bool isMap = container.ValueStr() == "DictValue";
        std::set<std::string> names;
        for (TiXmlElement* child = container.FirstChildElement(); child;) {
            TiXmlNode* const node = m_convert.getJsonTypeFromXml(child);
            const std::string name = m_convert.memberName();
            const bool hasKey = child->ValueStr() == "key";
            if (!node || node->ValueStr() == "key") {
                report(*child, "Key without a value");
                child = child->NextSiblingElement();
                continue;
            }
            if (hasKey && !isMap)
                report(*child, "Key in an \"ArrayValue\"");
            else if (isMap && !names.insert(name).second)
                report(*child, "Second member named " + quoted(name));
            checkElement(*node->ToElement());
            child = node->NextSiblingElement();
        }
    }

    CXMLConvert m_convert;
    std::vector<TiXmlElement*> m_pending;
};

Problems checkXml(const QString& path)
{
    CXml xml;
    if (!xml.ParseXmlFile(QFile::encodeName(path).constData(), TIXML_ENCODING_UTF8))
        return {{xml.GetLastErrorRow(), QString::fromUtf8(xml.GetLastErrorString())}};
    return ElementCheck(xml.GetRootElement()).problems;
}

int lineOf(const QByteArray& content, std::ptrdiff_t offset)
{
    const auto length =
        std::min<std::ptrdiff_t>(std::max<std::ptrdiff_t>(offset, 0), content.size());
    return static_cast<int>(std::count(content.begin(), content.begin() + length, '\n')) + 1;
}

Problems checkJson(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {{0, QStringLiteral("Failed to open file")}};
    const QByteArray content = file.readAll();
    const auto zero = content.indexOf('\0');
    if (zero >= 0)
        return {{lineOf(content, zero), QStringLiteral("A zero byte stands in the document")}};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    Json::Reader reader; // the one that the library reads with
    Json::Value root;
    const int mark = content.startsWith("\xEF\xBB\xBF") ? 3 : 0;
    const char* const begin = content.constData() + mark;
    Problems problems;
    try {
        if (reader.parse(begin, content.constData() + content.size(), root))
            return problems;
    } catch (const std::exception&) {
        return {{0, QStringLiteral("The values are nested too deeply")}};
    }
    for (const Json::Reader::StructuredError& error : reader.getStructuredErrors()) {
        problems.push_back({lineOf(content, mark + error.offset_start),
                            QString::fromStdString(error.message).simplified()});
    }
#pragma GCC diagnostic pop
    return problems;
}

} // namespace

std::vector<FileProblem> checkFile(const QString& path)
{
    const bool isXml = path.endsWith(QLatin1String(".xml"));
    if (!isXml && !path.endsWith(QLatin1String(".config")) &&
        !path.endsWith(QLatin1String(".perso")))
        return {{0, QStringLiteral("The name does not end in .xml, .config or .perso")}};
    Problems problems = isXml ? checkXml(path) : checkJson(path);
    CDataValue value;
    if (problems.empty() && !value.readFile(path))
        problems.push_back({0, QStringLiteral("The file cannot be read")});
    std::stable_sort(problems.begin(), problems.end(),
                     [](const FileProblem& a, const FileProblem& b) { return a.line < b.line; });
    return problems;
}

QString describe(const QString& path, const FileProblem& problem)
{
    const QString line =
        problem.line > 0 ? QLatin1Char(':') + QString::number(problem.line) : QString();
    return path + line + QLatin1String(": ") + problem.reason;
}
