#include "deviceservice/attext.h"

#include "common/codes.h"

#include <algorithm>
#include <limits>

QList<QByteArray> AtLines::add(const char* bytes, int count)
{
    QList<QByteArray> lines;
    for (int i = 0; i < count; ++i) {
        const char byte = bytes[i];
        if (byte == '\r' || byte == '\n') {
            if (!m_line.isEmpty())
                lines.append(m_line);
            clear();
        } else if (m_line.size() >= kLongestLine) {
            m_cutLines += m_isCut ? 0 : 1;
            m_isCut = true;
        } else if (static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F) {
            m_line.append(byte);
        }
    }
    return lines;
}

void AtLines::clear()
{
    m_line.clear();
    m_isCut = false;
}

namespace {

// Numbers of "+CMS ERROR" (TS 27.005, 3.2.5) that "+CME ERROR" (TS 27.007, 9.2) has as well.
struct SameError
{
    int cms;
    int cme;
};
constexpr SameError kSameErrors[] = {
    {302, AtError::OperationNotAllowed},
    {303, AtError::OperationNotSupported},
    {305, AtError::IncorrectParameters},
    {310, AtError::SimNotInserted},
    {311, AtError::SimPinRequired},
    {312, AtError::PhonePinRequired},
    {313, AtError::SimFailure},
    {314, AtError::SimBusy},
    {315, AtError::SimWrong},
    {316, AtError::SimPukRequired},
    {317, AtError::SimPin2Required},
    {318, AtError::SimPuk2Required},
    {320, AtError::MemoryFailure},
    {321, AtError::InvalidIndex},
    {322, AtError::MemoryFull},
    {331, AtError::NoNetworkService},
    {332, AtError::NetworkTimeout},
};

int errorNumber(const QByteArray& text)
{
    bool isNumber = false;
    const int number = text.trimmed().toInt(&isNumber);
    return isNumber && number > 0 ? number : AtError::Unknown;
}

bool isHex(char character)
{
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F') ||
           (character >= 'a' && character <= 'f');
}

QString fromUcs2(const QByteArray& text)
{
    QString result;
    for (int i = 0; i < text.size(); i += 4) {
        const ushort unit = text.mid(i, 4).toUShort(nullptr, 16);
        result += unit == 0 ? QChar(QChar::ReplacementCharacter) : QChar(unit);
    }
    return result;
}

} // namespace

std::optional<int> AtText::finalResult(const QByteArray& line)
{
    if (line == "OK")
        return AtError::None;
    if (line == "ERROR")
        return AtError::Unknown;
    if (line.startsWith("+CME ERROR:"))
        return errorNumber(line.mid(11));
    if (!line.startsWith("+CMS ERROR:"))
        return std::nullopt;
    const int number = errorNumber(line.mid(11));
    for (const SameError& same : kSameErrors) {
        if (same.cms == number)
            return same.cme;
    }
    // Smaller ones are causes that the network gives, not what the same numbers mean elsewhere.
    return number < 300 ? AtError::Unknown : number;
}

bool AtText::isUnsolicited(const QByteArray& line)
{
    if (line.startsWith("+CREG:") || line.startsWith("+CGREG:")) {
        const QList<AtParameter> fields = parameters(information(line));
        return fields.size() == 1 || (fields.size() > 1 && fields.at(1).kind == AtParameter::Text);
    }
    static constexpr const char* Reports[] = {"+CIEV:", "+CMTI:", "+CUSD:", "+CGEV:"};
    return line == "RING" || line == "NO CARRIER" ||
           std::any_of(std::begin(Reports), std::end(Reports),
                       [&line](const char* report) { return line.startsWith(report); });
}

QByteArray AtText::information(const QByteArray& line)
{
    const auto colon = line.indexOf(':');
    return line.startsWith('+') && colon > 0 ? line.mid(colon + 1).trimmed() : line.trimmed();
}

QList<AtParameter> AtText::parameters(const QByteArray& text)
{
    QList<AtParameter> fields;
    AtParameter field;
    int depth = 0;
    bool isQuoted = false;
    for (const char character : text) {
        const bool isInside = isQuoted || depth > 0;
        if (character == ',' && !isInside) {
            fields.append(field);
            field = AtParameter();
            continue;
        }
        if (character == '"') {
            isQuoted = !isQuoted;
            if (depth == 0) {
                field.kind = AtParameter::Text;
                continue;
            }
        } else if (!isQuoted && character == '(' && depth++ == 0) {
            field.kind = AtParameter::Group;
            continue;
        } else if (!isQuoted && character == ')' && depth > 0 && --depth == 0) {
            continue;
        } else if (character == ' ' && !isInside) {
            // Blanks between words stay: "SIM PIN".
            if (field.kind != AtParameter::Plain || field.content.isEmpty())
                continue;
        }
        field.content.append(character);
    }
    if (isQuoted || depth > 0)
        return {};
    fields.append(field);
    return fields;
}

std::optional<int> AtText::number(const QList<AtParameter>& parameters, int index, int base)
{
    bool isNumber = false;
    const uint number = content(parameters, index).trimmed().toUInt(&isNumber, base);
    if (!isNumber || number > static_cast<uint>(std::numeric_limits<int>::max()))
        return std::nullopt;
    return static_cast<int>(number);
}

QByteArray AtText::content(const QList<AtParameter>& parameters, int index)
{
    return index < parameters.size() ? parameters.at(index).content : QByteArray();
}

QByteArray AtText::encoded(const QString& text)
{
    QByteArray result;
    for (const QChar character : text)
        result += QByteArray::number(character.unicode(), 16).rightJustified(4, '0').toUpper();
    return result;
}

bool AtText::isUcs2(const QByteArray& text)
{
    return !text.isEmpty() && text.size() % 4 == 0 && std::all_of(text.begin(), text.end(), isHex);
}

QString AtText::decoded(const QByteArray& text)
{
    return isUcs2(text) ? fromUcs2(text) : QString::fromUtf8(text);
}

QString AtText::decodedNumber(const QByteArray& text)
{
    const QString number = decoded(text);
    return isPhoneNumber(number) ? number : QString::fromUtf8(text);
}

bool AtText::isPhoneNumber(const QString& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return QStringLiteral("0123456789*#+ABCDPWpw").contains(character);
    });
}

bool AtText::isQuotable(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return character.unicode() >= 0x20 && character.unicode() < 0x7F &&
               character != QLatin1Char('"') && character != QLatin1Char('\\');
    });
}

QString AtText::nameOf(const QByteArray& command)
{
    const auto equals = command.indexOf('=');
    const bool isSet = equals >= 0 && !command.endsWith("=?");
    return QString::fromUtf8(isSet ? command.left(equals + 1) + "..." : command);
}

QString AtText::shown(const QByteArray& line)
{
    constexpr int kShownBytes = 80;
    const bool isEcho = line.toUpper().contains("AT+");
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const auto secret = std::find_if(line.cbegin(), line.cend(), [&](char c) {
        return c == '=' || c == '"' || (isEcho && isDigit(c));
    });
    const auto shownBytes = static_cast<int>(secret - line.cbegin());
    if (shownBytes == 0 || isDigit(line[0]))
        return QStringLiteral("%1 bytes").arg(line.size());
    const QString begin = QString::fromLatin1(line.left(std::min(shownBytes, kShownBytes)));
    return secret == line.cend() ? begin : begin + QLatin1String("...");
}
