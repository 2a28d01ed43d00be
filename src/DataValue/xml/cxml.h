#ifndef DATAVALUE_XML_CXML_H
#define DATAVALUE_XML_CXML_H

#include "wzrframework_export.h"

#include <tinyxml.h>

#include <string>
#include <string_view>

/// An XML document with the operations that its users need: finding elements, reading and writing
/// texts and attributes, reading and saving files.
///
///     CXml xml;
///     xml.AddXmlDeclaration("1.0", "utf-8", "");
///     TiXmlElement* root = xml.AddXmlRootElement("Profiles", nullptr);
///     xml.AddAttribute(xml.AddChildElement(root, "Item", "Home"), "id", 7);
///     xml.SaveFileAs("/tmp/profiles.xml");
///
/// **Null arguments.** Every pointer may be null; the result is then null, 0 or false, and nothing
/// changes.
///
/// **Ownership.** The document owns every element; pointers to elements live until Clear(), the
/// next parse or the document's end. Texts that are returned live as long as their node.
///
/// **Texts** are UTF-8 and come back from a saved file as they were: blanks are kept, texts of
/// blanks only are written as CDATA. Only beside other children of its element a text gets the line
/// breaks that stand between them. Paths are in the local 8-bit encoding.
///
/// **Input** comes from anywhere. Before TinyXML sees a text it is checked: valid UTF-8 without
/// zero bytes, elements nested at most 1000 deep, at most 256 attributes in one element, character
/// references that name characters. What fails the check, a document without a root element and a
/// file that does not fit into memory is a parse failure like any other. Definitions in a document
/// type are not read: an entity that is none of XML's five is kept as it stands. Line ends become
/// single line feeds.
///
/// **Threads.** One document is used by one thread at a time.
class WZRFRAMEWORK_EXPORT CXml : public TiXmlDocument
{
public:
    CXml();
    /// A copy of a document is made with CopyValue().
    CXml(const CXml&) = delete;
    CXml& operator=(const CXml&) = delete;
    ~CXml() override;

    /// Replaces the document by the one that the text describes. False on failure; the document is
    /// then empty.
    bool ParseXmlString(const char* text);
    /// The same with the content of a file, which must be a regular one. The encoding is UTF-8
    /// unless TIXML_ENCODING_LEGACY is given: then bytes are taken as they are. What the
    /// declaration says of the encoding is not looked at.
    bool ParseXmlFile(const char* path, TiXmlEncoding encoding);
    /// Saves to the file that was last parsed. False when there is none.
    bool SaveFile();
    /// Saves to the file, replacing it as a whole or, on failure, not at all. One element per line,
    /// nested ones indented by four blanks.
    bool SaveFileAs(const char* path);
    /// Removes every node. The file's path is kept.
    void Clear();

    /// False after a failed parse, until the next parse or Clear().
    bool IsOK() const;
    /// TinyXML's error number of the last parse or save when it failed, else 0. 1 stands for what
    /// the check found.
    int GetLastErrorID() const;
    /// Its text, never null; such as "Failed to open file".
    const char* GetLastErrorString() const;
    /// Where a parse failed, counted from 1; 0 when it is not known.
    int GetLastErrorRow() const;
    int GetLastErrorColumn() const;

    /// Appends a declaration; an empty standalone text is left out when it is written.
    bool AddXmlDeclaration(const char* version, const char* encoding, const char* standalone);
    /// Appends an element at the top level. `text` may be null: no text then.
    TiXmlElement* AddXmlRootElement(const char* name, const char* text);
    /// Appends an element under `holder`. `text` may be null: no text then.
    TiXmlElement* AddChildElement(TiXmlElement* holder, const char* name, const char* text);
    /// Appends a text.
    bool AddElementValue(TiXmlElement* element, const char* text);
    /// Puts the text in the place of all texts of the element; its child elements stay.
    bool ModifyElementValue(TiXmlElement* element, const char* text);

    /// Sets an attribute, a new or an existing one. Doubles are written with six digits.
    bool AddAttribute(TiXmlElement* element, const char* name, int number);
    bool AddAttribute(TiXmlElement* element, const char* name, double number);
    bool AddAttribute(TiXmlElement* element, const char* name, const char* text);
    /// Changes an attribute. False, with nothing changed, when there is none of that name.
    bool ModifyIntAttribute(TiXmlElement* element, const char* name, int number);
    bool ModifyDoubleAttribute(TiXmlElement* element, const char* name, double number);
    bool ModifyTextAttribute(TiXmlElement* element, const char* name, const char* text);
    /// An attribute's value; 0, 0.0 or null when it is absent.
    int GetIntAttributeValue(TiXmlElement* element, const char* name) const;
    double GetDoubleAttributeValue(TiXmlElement* element, const char* name) const;
    const char* GetTextAttributeValue(TiXmlElement* element, const char* name) const;

    /// Appends a comment under the element.
    bool AddXmlComment(TiXmlElement* element, const char* text);

    /// The first top-level element.
    TiXmlElement* GetRootElement();
    /// The first element of that name: the root, then depth first in document order.
    TiXmlElement* GetElement(const char* name);
    /// The same for `start` and what is below it.
    TiXmlElement* GetElement(TiXmlElement* start, const char* name);
    /// The first element of that name whose attribute has exactly that text, depth first from the
    /// root. Elements of the name with another attribute value are not entered: that is meant.
    TiXmlElement* GetElement(const char* name, const char* attributeName,
                             const char* attributeValue);
    /// The first child of the root element with that name.
    TiXmlElement* GetSessionElement(const char* name);

    /// The text at the start of an element, or null.
    const char* GetElementValue(TiXmlElement* element) const;
    /// The same of the element that GetElement() finds.
    const char* GetElementValue(const char* name);
    const char* GetElementValue(TiXmlElement* start, const char* name);

    /// Replaces the document, its file path included, by a copy of the given one.
    void CopyValue(TiXmlDocument document);

private:
    bool checkAndParse(std::string_view text, TiXmlEncoding encoding);
    bool parse(const std::string& text, TiXmlEncoding encoding);
    bool fail(int id, const char* text, int row, int column);
    bool succeed();

    int m_errorId = TIXML_NO_ERROR;
    std::string m_errorText;
    int m_errorRow = 0;
    int m_errorColumn = 0;
};

#endif
