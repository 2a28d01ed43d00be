#include "modemsimulator/techarset.h"

#include <array>

namespace {

constexpr char kEscape = 0x1B;

// The default alphabet in the order of its codes; position 27 leads to the extension.
const QString& gsmAlphabet()
{
    static const QString alphabet = QString::fromUtf8(
        "@\u00a3$\u00a5\u00e8\u00e9\u00f9\u00ec\u00f2\u00c7\n\u00d8\u00f8\r\u00c5\u00e5"
        "\u0394_\u03a6\u0393\u039b\u03a9\u03a0\u03a8\u03a3\u0398\u039e\x1b\u00c6\u00e6\u00df"
        "\u00c9 !\"#\u00a4%&'()*+,-./0123456789:;<=>?\u00a1ABCDEFGHIJKLMNOPQRSTUVWXYZ"
        "\u00c4\u00d6\u00d1\u00dc\u00a7\u00bfabcdefghijklmnopqrstuvwxyz"
        "\u00e4\u00f6\u00f1\u00fc\u00e0");
    return alphabet;
}

struct Extension
{
    char code;
    ushort unit;
};

constexpr std::array<Extension, 10> kExtensions = {{{0x0A, 0x000C},
                                                    {0x14, '^'},
                                                    {0x28, '{'},
                                                    {0x29, '}'},
                                                    {0x2F, '\\'},
                                                    {0x3C, '['},
                                                    {0x3D, '~'},
                                                    {0x3E, ']'},
                                                    {0x40, '|'},
                                                    {0x65, 0x20AC}}};

QByteArray gsmOf(QChar character)
{
    const auto code = gsmAlphabet().indexOf(character);
    if (code >= 0 && code != kEscape)
        return QByteArray(1, static_cast<char>(code));
    for (const Extension& extension : kExtensions) {
        if (extension.unit == character.unicode())
            return QByteArray(1, kEscape) + extension.code;
    }
    return QByteArrayLiteral("?");
}

QByteArray hexByte(int value)
{
    return QByteArray::number(value, 16).rightJustified(2, '0').toUpper();
}

QByteArray iraOf(QChar character)
{
    const ushort unit = character.unicode();
    if (unit == '"' || unit == '\\')
        return '\\' + hexByte(unit);
    return QByteArray(1, unit < 0x80 ? static_cast<char>(unit) : '?');
}

QByteArray ucs2Of(QChar character)
{
    return hexByte(character.unicode() >> 8) + hexByte(character.unicode() & 0xFF);
}

QString fromGsm(const QByteArray& bytes)
{
    QString text;
    for (int i = 0; i < bytes.size(); ++i) {
        if (bytes.at(i) != kEscape) {
            text += gsmAlphabet().at(bytes.at(i));
            continue;
        }
        const char code = ++i < bytes.size() ? bytes.at(i) : ' ';
        QChar character = gsmAlphabet().at(code); // as 23.038 wants it where nothing is defined
        for (const Extension& extension : kExtensions) {
            if (extension.code == code)
                character = QChar(extension.unit);
        }
        text += character;
    }
    return text;
}

QString fromIra(const QByteArray& bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes.size(); ++i) {
        bool isHex = false;
        const int value = bytes.mid(i + 1, 2).toInt(&isHex, 16);
        if (bytes.at(i) == '\\' && isHex && i + 2 < bytes.size()) {
            text += static_cast<char>(value);
            i += 2;
        } else {
            text += bytes.at(i);
        }
    }
    return QString::fromLatin1(text);
}

bool fromUcs2(const QByteArray& bytes, QString* text)
{
    if (bytes.size() % 4 != 0)
        return false;
    QString read;
    for (int i = 0; i < bytes.size(); i += 4) {
        const QByteArray digits = bytes.mid(i, 4);
        const QByteArray units = QByteArray::fromHex(digits);
        if (units.toHex() != digits.toLower())
            return false;
        read += QChar(digits.toUShort(nullptr, 16));
    }
    *text = read;
    return true;
}

bool isSevenBit(const QByteArray& bytes)
{
    for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) > 0x7F)
            return false;
    }
    return true;
}

} // namespace

QByteArray charsetName(TeCharset charset)
{
    switch (charset) {
    case TeCharset::Gsm:
        return QByteArrayLiteral("GSM");
    case TeCharset::Ucs2:
        return QByteArrayLiteral("UCS2");
    default:
        return QByteArrayLiteral("IRA");
    }
}

bool charsetByName(const QByteArray& name, TeCharset* charset)
{
    for (const TeCharset candidate : {TeCharset::Gsm, TeCharset::Ira, TeCharset::Ucs2}) {
        if (charsetName(candidate) == name.toUpper()) {
            *charset = candidate;
            return true;
        }
    }
    return false;
}

QByteArray encodedText(TeCharset charset, const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text) {
        if (charset == TeCharset::Ucs2)
            bytes += ucs2Of(character);
        else
            bytes += charset == TeCharset::Gsm ? gsmOf(character) : iraOf(character);
    }
    return bytes;
}

bool decodedText(TeCharset charset, const QByteArray& bytes, QString* text)
{
    if (charset == TeCharset::Ucs2)
        return fromUcs2(bytes, text);
    if (!isSevenBit(bytes))
        return false;
    *text = charset == TeCharset::Gsm ? fromGsm(bytes) : fromIra(bytes);
    return true;
}
