#include "common_function.h"

#include <algorithm>
#include <iterator>

namespace {

// The GSM 7-bit default alphabet, by code. Code 27, the escape to the extension, holds the no-break
// space, and that is meant: the escape itself is no character of a text.
constexpr unsigned short kGsmTable[128] = {
    0x0040, 0x00A3, 0x0024, 0x00A5, 0x00E8, 0x00E9, 0x00F9, 0x00EC, // 0
    0x00F2, 0x00C7, 0x000A, 0x00D8, 0x00F8, 0x000D, 0x00C5, 0x00E5, // 8
    0x0394, 0x005F, 0x03A6, 0x0393, 0x039B, 0x03A9, 0x03A0, 0x03A8, // 16
    0x03A3, 0x0398, 0x039E, 0x00A0, 0x00C6, 0x00E6, 0x00DF, 0x00C9, // 24
    0x0020, 0x0021, 0x0022, 0x0023, 0x00A4, 0x0025, 0x0026, 0x0027, // 32
    0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F, // 40
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037, // 48
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F, // 56
    0x00A1, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047, // 64
    0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F, // 72
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057, // 80
    0x0058, 0x0059, 0x005A, 0x00C4, 0x00D6, 0x00D1, 0x00DC, 0x00A7, // 88
    0x00BF, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067, // 96
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F, // 104
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077, // 112
    0x0078, 0x0079, 0x007A, 0x00E4, 0x00F6, 0x00F1, 0x00FC, 0x00E0, // 120
};

constexpr char32_t kEuroSign = 0x20AC;

// The zero only ends a text, so it counts as basic. All other basic characters are in the table.
bool isBasicGsm(char32_t character)
{
    return character == 0 ||
           std::find(std::begin(kGsmTable), std::end(kGsmTable), character) != std::end(kGsmTable);
}

bool isExtensionGsm(char32_t character)
{
    return (character >= '[' && character <= '^') || (character >= '{' && character <= '~') ||
           character == kEuroSign;
}

// Bytes of the character in unpacked 7-bit coding; 0 when the alphabet lacks it.
int gsmSize(char32_t character)
{
    if (isBasicGsm(character))
        return 1;
    return isExtensionGsm(character) ? 2 : 0;
}

// Stores the units before the source's zero through `convert` and returns their count.
template<typename Source, typename Target, typename Convert>
int convertUnits(Target* target, const Source* source, Convert convert)
{
    int count = 0;
    for (; source[count] != 0; ++count)
        target[count] = convert(source[count]);
    return count;
}

// One coding of a contact name: the leading characters that it holds, and the bytes these take.
struct Candidate
{
    int count = 0;
    int size = 0;
    bool valid = true;

    // Takes one more character, of this many bytes, unless an earlier one could not be held.
    void take(bool holds, int bytes)
    {
        valid = valid && holds;
        if (valid) {
            ++count;
            size += bytes;
        }
    }
};

// Characters outside the alphabet that share bits 7 to 14 with the first of them.
class OneByteBase
{
public:
    bool holds(char32_t character)
    {
        const char32_t base = character & 0x7F80;
        if (m_base == kUnset)
            m_base = base;
        return (character & 0x8000) == 0 && base == m_base;
    }

private:
    static constexpr char32_t kUnset = 0xFFFFFFFF;
    char32_t m_base = kUnset;
};

// Characters outside the alphabet that lie within 128 code points.
class TwoByteBase
{
public:
    bool holds(char32_t character)
    {
        m_lowest = std::min(m_lowest, character);
        m_highest = std::max(m_highest, character);
        return m_highest - m_lowest <= 127;
    }

private:
    char32_t m_lowest = 0xFFFFFFFF;
    char32_t m_highest = 0;
};

} // namespace

int unistrlen(const unsigned short* text)
{
    int length = 0;
    while (text && text[length] != 0)
        ++length;
    return length;
}

int unistrcpy(unsigned short* target, const unsigned short* source)
{
    return unistrncpy(target, source, static_cast<unsigned long>(unistrlen(source)));
}

int unistrncpy(unsigned short* target, const unsigned short* source, unsigned long n)
{
    unsigned long count = 0;
    for (; source && count < n && source[count] != 0; ++count)
        target[count] = source[count];
    target[count] = 0;
    return static_cast<int>(count);
}

int unichars2wchars(wchar_t* target, const unsigned short* source)
{
    if (!source)
        return 0;
    const int count = convertUnits(target, source,
                                   [](unsigned short unit) { return static_cast<wchar_t>(unit); });
    target[count] = 0;
    return count;
}

int wchars2unichars(unsigned short* target, const wchar_t* source)
{
    if (!source)
        return 0;
    return convertUnits(target, source,
                        [](wchar_t wide) { return static_cast<unsigned short>(wide & 0xFFFF); });
}

int wstr2str(const unsigned short* source, char* target)
{
    if (!source)
        return 0;
    const int count = convertUnits(
        target, source, [](unsigned short unit) { return static_cast<char>(unit & 0xFF); });
    target[count] = 0;
    return count;
}

int str2wstr(const char* source, unsigned short* target)
{
    if (!source)
        return 0;
    // Plain char is unsigned on some platforms; the widening is signed on all.
    const int count = convertUnits(target, source, [](char byte) {
        return static_cast<unsigned short>(static_cast<signed char>(byte));
    });
    target[count] = 0;
    return count;
}

int IsUnicode(unsigned short character)
{
    return isBasicGsm(character) ? 0 : 1;
}

int isUnicodeString(const unsigned short* text)
{
    return std::any_of(text, text + unistrlen(text), IsUnicode) ? 1 : 0;
}

int GetEncodeType(const unsigned short* text)
{
    const bool isGsm = std::all_of(text, text + unistrlen(text),
                                   [](unsigned short unit) { return gsmSize(unit) != 0; });
    return isGsm ? 0 : 2;
}

int ParseContactNameConvert(const wchar_t* name, int length)
{
    if (!name || length < 1)
        return 0;
    Candidate sevenBit;
    Candidate oneByte{0, 3};
    Candidate twoByte{0, 4};
    OneByteBase page;
    TwoByteBase span;
    for (int i = 0; i < length; ++i) {
        const auto character = static_cast<char32_t>(name[i]);
        const int size = gsmSize(character);
        const bool isGsm = size != 0;
        sevenBit.take(isGsm, size);
        oneByte.take(isGsm || page.holds(character), isGsm ? size : 1);
        twoByte.take(isGsm || span.holds(character), isGsm ? size : 1);
    }
    // What covers more wins; of equals, the earlier.
    Candidate best = oneByte.count > sevenBit.count ? oneByte : sevenBit;
    if (twoByte.count > best.count)
        best = twoByte;
    return best.count == length ? best.size : 2 * length + 1;
}

bool DivideNumber(const char* number, std::string& dial, std::string& tones)
{
    if (!number || *number == 0)
        return false;
    bool afterPause = false;
    for (const char* at = number; *at != 0; ++at) {
        char character = *at;
        if (std::string("PTWptw").find(character) != std::string::npos) {
            afterPause = true;
            continue;
        }
        if (character >= 'a' && character <= 'd')
            character = static_cast<char>(character - 'a' + 'A');
        const bool isDigit = character >= '0' && character <= '9';
        const bool isTone = std::string("#*ABCD").find(character) != std::string::npos;
        if (isDigit || (isTone && afterPause))
            (afterPause ? tones : dial) += character;
        else if (character == '+' && at == number)
            dial += character;
        else
            return false;
    }
    return true;
}
