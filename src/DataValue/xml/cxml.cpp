#include "DataValue/xml/cxml.h"

#include "DataValue/filecontent_p.h"
#include "DataValue/xml/xmlcheck_p.h"
#include "DataValue/xml/xmlprint_p.h"

#include <QFile>

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>

namespace {

/// While it lives, TinyXML keeps blanks as they are. Its setting is one for the whole process, so
/// it is put back, and only one parse runs at a time.
class KeepWhiteSpace
{
public:
    KeepWhiteSpace()
        : m_guard(mutex())
        , m_condensed(TiXmlBase::IsWhiteSpaceCondensed())
    {
        TiXmlBase::SetCondenseWhiteSpace(false);
    }
    ~KeepWhiteSpace() { TiXmlBase::SetCondenseWhiteSpace(m_condensed); }
    KeepWhiteSpace(const KeepWhiteSpace&) = delete;
    KeepWhiteSpace& operator=(const KeepWhiteSpace&) = delete;

private:
    static std::mutex& mutex()
    {
        static std::mutex one;
        return one;
    }

    std::lock_guard<std::mutex> m_guard;
    bool m_condensed;
};

std::string trimmed(const char* text)
{
    std::string result = text ? text : "";
    result.erase(result.find_last_not_of(' ') + 1);
    return result;
}

/// The element after `element` in document order, within the tree of `top`.
TiXmlElement* following(TiXmlElement* element, const TiXmlElement* top, bool enter)
{
    TiXmlElement* const child = enter ? element->FirstChildElement() : nullptr;
    if (child)
        return child;
    while (element && element != top) {
        if (TiXmlElement* const sibling = element->NextSiblingElement())
            return sibling;
        TiXmlNode* const parent = element->Parent();
        element = parent ? parent->ToElement() : nullptr;
    }
    return nullptr;
}

bool isNamed(const TiXmlElement& element, const char* name)
{
    return element.ValueStr() == name;
}

TiXmlElement* append(TiXmlNode& parent, const char* name, const char* text)
{
    auto* const element = new TiXmlElement(name);
    if (text)
        element->LinkEndChild(new TiXmlText(text));
    parent.LinkEndChild(element);
    return element;
}

} // namespace

CXml::CXml() = default;

CXml::~CXml() = default;

bool CXml::fail(int id, const char* text, int row, int column)
{
    m_errorId = id;
    m_errorText = text;
    m_errorRow = row;
    m_errorColumn = column;
    return false;
}

bool CXml::succeed()
{
    m_errorId = TIXML_NO_ERROR;
    m_errorText.clear();
    m_errorRow = 0;
    m_errorColumn = 0;
    return true;
}

bool CXml::checkAndParse(std::string_view text, TiXmlEncoding encoding)
{
    const XmlCheck check(text, encoding == TIXML_ENCODING_UTF8);
    if (!check.refusal())
        return parse(check.prepared(), encoding);
    SetError(TIXML_ERROR, nullptr, nullptr, encoding);
    return fail(TIXML_ERROR, check.refusal(), check.position().first, check.position().second);
}

bool CXml::parse(const std::string& text, TiXmlEncoding encoding)
{
    {
        const KeepWhiteSpace keep;
        // The parser looks a few bytes ahead of the place where it stands.
        const std::string padded = text + std::string(8, '\0');
        Parse(padded.c_str(), nullptr, encoding);
    }
    if (!Error() && !RootElement())
        SetError(TIXML_ERROR_DOCUMENT_EMPTY, nullptr, nullptr, encoding);
    if (!Error())
        return succeed();
    TiXmlNode::Clear();
    return fail(ErrorId(), trimmed(ErrorDesc()).c_str(), std::max(ErrorRow(), 0),
                std::max(ErrorCol(), 0));
}

bool CXml::ParseXmlString(const char* text)
{
    if (!text)
        return false;
    Clear();
    return checkAndParse(text, TIXML_ENCODING_UTF8);
}

bool CXml::ParseXmlFile(const char* path, TiXmlEncoding encoding)
{
    if (!path)
        return false;
    Clear();
    SetValue(path);
    if (encoding == TIXML_ENCODING_UNKNOWN)
        encoding = TIXML_ENCODING_UTF8;
    try {
        if (const std::optional<std::string> content = FileContent::read(QFile::decodeName(path)))
            return checkAndParse(*content, encoding);
    } catch (const std::bad_alloc&) { // the document takes several times the memory of its text
        TiXmlNode::Clear();
    }
    SetError(TIXML_ERROR_OPENING_FILE, nullptr, nullptr, encoding);
    return fail(TIXML_ERROR_OPENING_FILE, ErrorDesc(), 0, 0);
}

bool CXml::SaveFile()
{
    return !ValueStr().empty() && SaveFileAs(std::string(ValueStr()).c_str());
}

bool CXml::SaveFileAs(const char* path)
{
    if (!path)
        return false;
    const std::string text = XmlPrint::document(*this);
    const bool saved = FileContent::replace(QFile::decodeName(path), text);
    return saved ? succeed() : fail(TIXML_ERROR_OPENING_FILE, "Failed to write file", 0, 0);
}

void CXml::Clear()
{
    TiXmlNode::Clear();
    ClearError();
    succeed();
}

bool CXml::IsOK() const
{
    return !Error();
}

int CXml::GetLastErrorID() const
{
    return m_errorId;
}

const char* CXml::GetLastErrorString() const
{
    return m_errorText.c_str();
}

int CXml::GetLastErrorRow() const
{
    return m_errorRow;
}

int CXml::GetLastErrorColumn() const
{
    return m_errorColumn;
}

bool CXml::AddXmlDeclaration(const char* version, const char* encoding, const char* standalone)
{
    if (!version || !encoding || !standalone)
        return false;
    LinkEndChild(new TiXmlDeclaration(version, encoding, standalone));
    return true;
}

TiXmlElement* CXml::AddXmlRootElement(const char* name, const char* text)
{
    return name ? append(*this, name, text) : nullptr;
}

TiXmlElement* CXml::AddChildElement(TiXmlElement* holder, const char* name, const char* text)
{
    return holder && name ? append(*holder, name, text) : nullptr;
}

bool CXml::AddElementValue(TiXmlElement* element, const char* text)
{
    if (!element || !text)
        return false;
    element->LinkEndChild(new TiXmlText(text));
    return true;
}

bool CXml::ModifyElementValue(TiXmlElement* element, const char* text)
{
    if (!element || !text)
        return false;
    const std::string copy = text; // it may be one of the texts that go
    for (TiXmlNode* node = element->FirstChild(); node;) {
        TiXmlNode* const after = node->NextSibling();
        if (node->ToText())
            element->RemoveChild(node);
        node = after;
    }
    const TiXmlText fresh(copy);
    if (TiXmlNode* const first = element->FirstChild())
        element->InsertBeforeChild(first, fresh);
    else
        element->InsertEndChild(fresh);
    return true;
}

bool CXml::AddAttribute(TiXmlElement* element, const char* name, int number)
{
    return AddAttribute(element, name, std::to_string(number).c_str());
}

bool CXml::AddAttribute(TiXmlElement* element, const char* name, double number)
{
    return AddAttribute(element, name, XmlPrint::number(number).c_str());
}

bool CXml::AddAttribute(TiXmlElement* element, const char* name, const char* text)
{
    if (!element || !name || !text)
        return false;
    element->SetAttribute(name, text);
    return true;
}

bool CXml::ModifyIntAttribute(TiXmlElement* element, const char* name, int number)
{
    return ModifyTextAttribute(element, name, std::to_string(number).c_str());
}

bool CXml::ModifyDoubleAttribute(TiXmlElement* element, const char* name, double number)
{
    return ModifyTextAttribute(element, name, XmlPrint::number(number).c_str());
}

bool CXml::ModifyTextAttribute(TiXmlElement* element, const char* name, const char* text)
{
    return GetTextAttributeValue(element, name) && AddAttribute(element, name, text);
}

int CXml::GetIntAttributeValue(TiXmlElement* element, const char* name) const
{
    return XmlPrint::toInt(GetTextAttributeValue(element, name));
}

double CXml::GetDoubleAttributeValue(TiXmlElement* element, const char* name) const
{
    return XmlPrint::toDouble(GetTextAttributeValue(element, name));
}

const char* CXml::GetTextAttributeValue(TiXmlElement* element, const char* name) const
{
    return element && name ? element->Attribute(name) : nullptr;
}

bool CXml::AddXmlComment(TiXmlElement* element, const char* text)
{
    if (!element || !text)
        return false;
    element->LinkEndChild(new TiXmlComment(text));
    return true;
}

TiXmlElement* CXml::GetRootElement()
{
    return RootElement();
}

TiXmlElement* CXml::GetElement(const char* name)
{
    return GetElement(GetRootElement(), name);
}

TiXmlElement* CXml::GetElement(TiXmlElement* start, const char* name)
{
    TiXmlElement* element = name ? start : nullptr;
    while (element && !isNamed(*element, name))
        element = following(element, start, true);
    return element;
}

TiXmlElement* CXml::GetElement(const char* name, const char* attributeName,
                               const char* attributeValue)
{
    TiXmlElement* const root = GetRootElement();
    TiXmlElement* element = name && attributeName && attributeValue ? root : nullptr;
    while (element) {
        const bool named = isNamed(*element, name);
        const char* const found = named ? element->Attribute(attributeName) : nullptr;
        if (found && std::string_view(found) == attributeValue)
            return element;
        element = following(element, root, !named);
    }
    return nullptr;
}

TiXmlElement* CXml::GetSessionElement(const char* name)
{
    TiXmlElement* const root = GetRootElement();
    return root && name ? root->FirstChildElement(name) : nullptr;
}

const char* CXml::GetElementValue(TiXmlElement* element) const
{
    return element ? element->GetText() : nullptr;
}

const char* CXml::GetElementValue(const char* name)
{
    return GetElementValue(GetElement(name));
}

const char* CXml::GetElementValue(TiXmlElement* start, const char* name)
{
    return GetElementValue(GetElement(start, name));
}

void CXml::CopyValue(TiXmlDocument document)
{
    Clear();
    TiXmlDocument::operator=(document);
}
