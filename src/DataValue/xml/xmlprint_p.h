#ifndef DATAVALUE_XML_XMLPRINT_P_H
#define DATAVALUE_XML_XMLPRINT_P_H

#include <tinyxml.h>

#include <string>
#include <string_view>

/// The text of a document, in the form of TinyXML's own printing: each element on a line of its
/// own, nested ones indented by four blanks, an element with nothing but a text on one line.
///
/// Written here because TinyXML's printing loses data: a text of blanks only is dropped when it is
/// read again (it becomes CDATA here), and a text like "&#x41;" is written unescaped.
namespace XmlPrint {

std::string document(const TiXmlDocument& document);

/// Whether the parser takes the text for white space between elements and drops it.
bool isDroppedByParser(std::string_view text);

/// A number as printf's "%g" writes it, with a decimal point whatever the locale.
std::string number(double value);
/// The number at the start of a text, in the same manner; 0 for null and where there is none.
double toDouble(const char* text);
/// As atoi(), without its undefined behaviour for numbers that are too large.
int toInt(const char* text);

} // namespace XmlPrint

#endif
