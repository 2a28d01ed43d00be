#ifndef DEMO_ATTEXT_H
#define DEMO_ATTEXT_H

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The language of AT commands (3GPP TS 27.007, TS 27.005) as plain functions: bytes into lines,
/// lines into parameters. Nothing here trusts what a modem sends.

/// Cuts what a modem sends into lines.
///
///     AtLines lines;
///     lines.add("\r\n+CSQ: 7,99\r\n\r\nO", 19);   // {"+CSQ: 7,99"}
///     lines.add("K\r\n", 3);                      // {"OK"}
///
/// A carriage return or a line feed ends a line; empty lines are left out, and so are control
/// characters, with which a line in bad order is full. Memory is bounded: of a longer line, the
/// first kLongestLine bytes are kept and the rest up to its end is thrown away.
class AtLines
{
public:
    static constexpr int kLongestLine = 4096;

    QList<QByteArray> add(const char* bytes, int count);
    /// Forgets the line that has begun.
    void clear();
    /// How many lines were cut so far.
    int cutLines() const { return m_cutLines; }

private:
    QByteArray m_line;
    bool m_isCut = false;
    int m_cutLines = 0;
};

/// One parameter of an answer.
struct AtParameter
{
    enum Kind {
        Plain, ///< a number or a word; may be empty
        Text,  ///< stood in quotation marks
        Group  ///< stood in parentheses; its content is parameters again
    };
    Kind kind = Plain;
    QByteArray content; ///< without the quotation marks or parentheses
};

namespace AtText {

/// The error number (AtError) that ends an answer; nothing when the line does not end one. "OK" is
/// AtError::None. "ERROR" and numbers that cannot be read are AtError::Unknown, and so is
/// "+CME ERROR: 0", the phone's failure, whose number would look like success. "+CMS ERROR" comes
/// in the numbers of "+CME ERROR" where those know the same failure, else with its own (300...).
std::optional<int> finalResult(const QByteArray& line);

/// Whether the modem says this unasked. "+CREG:" and "+CGREG:" are also answers: those have the
/// reporting mode before the state.
bool isUnsolicited(const QByteArray& line);

/// What stands behind "+NAME:", without blanks around it; the whole line when it has no such
/// beginning.
QByteArray information(const QByteArray& line);

/// The parameters between the commas. Empty when quotation marks or parentheses are left open.
QList<AtParameter> parameters(const QByteArray& text);

/// The number of a parameter in the given base; nothing when it is none, is negative, or larger
/// than an int. Quoted numbers count as well.
std::optional<int> number(const QList<AtParameter>& parameters, int index, int base = 10);
/// The content of a parameter; empty when there is none.
QByteArray content(const QList<AtParameter>& parameters, int index);

/// A text in the character set "UCS2": four hexadecimal digits for each UTF-16 unit.
QByteArray encoded(const QString& text);
/// Whether a text is in that form.
bool isUcs2(const QByteArray& text);
/// The reverse of encoded(). What is not in that form is taken as it stands: some modems send part
/// of their texts so.
QString decoded(const QByteArray& text);
/// The same for a phone number: digits that only look like that form stay as they are.
QString decodedNumber(const QByteArray& text);

/// Whether these are characters that can be dialled.
bool isPhoneNumber(const QString& text);

/// Whether the text can stand in quotation marks in a command: printable ASCII, no quotation mark
/// and no backslash. What a client sends must never become a command of its own.
bool isQuotable(const QString& text);

/// The command without what is secret in it, for the log: "AT+CPIN=..." for a PIN.
QString nameOf(const QByteArray& command);
/// The beginning of a line that the modem has sent, for the log. It may be the late echo of a
/// command with a PIN, and bytes of it may be lost. So it ends before the first "=" or quotation
/// mark, that of an echo also before the first digit, and a line that begins with one of these is
/// shown by its length alone.
QString shown(const QByteArray& line);

} // namespace AtText

#endif
