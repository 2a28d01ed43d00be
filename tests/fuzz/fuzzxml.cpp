// XML documents: what could be read is saved, and then read and saved without a change.

#include "fuzztarget.h"

#include "DataValue/xml/cxml.h"
#include "support/testfile.h"

#include <cstring>

namespace {

/// Whether a document comes back as it was: all nodes are elements with a name, comments, or texts
/// that are the only child of their element. TinyXML also keeps what is no XML, such as "<>"; and a
/// text beside other children gets the line breaks between them.
bool comesBack(const TiXmlNode& node)
{
    for (const TiXmlNode* child = node.FirstChild(); child; child = child->NextSibling()) {
        if (child->ToUnknown() || (child->ToElement() && std::strlen(child->Value()) == 0))
            return false;
        if (child->ToText() && (child->PreviousSibling() || child->NextSibling()))
            return false;
        if (!comesBack(*child))
            return false;
    }
    return true;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString path = temporaryPath("a.xml");
    static const QByteArray name = QFile::encodeName(path);
    CXml xml;
    const bool parsed = xml.ParseXmlString(bytesOf(data, size).constData());
    require((xml.GetRootElement() != nullptr) == parsed, "a document that was read has a root");
    if (!parsed)
        return 0;
    require(xml.SaveFileAs(name.constData()), "a document that was read can be saved");
    const QByteArray saved = TestFile::read(path);
    CXml again;
    require(again.ParseXmlFile(name.constData(), TIXML_ENCODING_UTF8), "a saved document is read");
    require(again.SaveFileAs(name.constData()), "it is saved again");
    require(!comesBack(xml) || TestFile::read(path) == saved, "and has not changed");
    return 0;
}
