#ifndef DEMO_TECHARSET_H
#define DEMO_TECHARSET_H

#include <QByteArray>
#include <QString>

/// The character set of the texts in commands and answers ("+CSCS").
enum class TeCharset {
    Gsm, ///< the GSM 7-bit default alphabet with its extension (3GPP TS 23.038), one byte each
    Ira, ///< ASCII; quotation marks and backslashes as "\22" and "\5C"
    Ucs2 ///< four hexadecimal digits for each UTF-16 unit
};

/// The set of that name ("GSM", "IRA", "UCS2"). False for another name.
bool charsetByName(const QByteArray& name, TeCharset* charset);
QByteArray charsetName(TeCharset charset);

/// The text as it is written in that set. What the set does not have becomes a question mark.
QByteArray encodedText(TeCharset charset, const QString& text);

/// Reads what was written in that set. False when it is none: with Ucs2 anything but groups of four
/// hexadecimal digits, otherwise bytes above 7F.
bool decodedText(TeCharset charset, const QByteArray& bytes, QString* text);

#endif
