// Texts of the SIM, as code units and as bytes.

#include "fuzztarget.h"

#include "common_function.h"

#include <QByteArray>

#include <cstring>
#include <vector>

namespace {

using Units = std::vector<unsigned short>;

/// The bytes as units, with a zero at the end.
Units unitsOf(const QByteArray& bytes)
{
    Units units(static_cast<std::size_t>(bytes.size()) / 2 + 1);
    std::memcpy(units.data(), bytes.constData(), (units.size() - 1) * 2);
    return units;
}

void copy(const Units& text, std::size_t length)
{
    Units target(length + 1, 0xEEEE);
    require(unistrcpy(target.data(), text.data()) == int(length), "a copy has the same length");
    require(std::equal(target.begin(), target.end(), text.begin()), "a copy has the same units");
    Units half(length / 2 + 1, 0xEEEE);
    require(unistrncpy(half.data(), text.data(), static_cast<unsigned long>(length / 2)) ==
                int(length / 2),
            "a limited copy has the limit's length");
    require(half.back() == 0, "and ends with a zero");
}

void convert(const Units& text, std::size_t length)
{
    std::vector<wchar_t> wide(length + 1);
    require(unichars2wchars(wide.data(), text.data()) == int(length), "each unit is widened");
    Units narrow(length + 1);
    require(wchars2unichars(narrow.data(), wide.data()) == int(length), "and narrowed");
    require(std::equal(narrow.begin(), narrow.end() - 1, text.begin()), "to what it was");
    std::vector<char> bytes(length + 1);
    require(wstr2str(text.data(), bytes.data()) == int(length), "each unit has a low byte");
    const int size = ParseContactNameConvert(wide.data(), int(length));
    require(size >= int(length) && size <= 2 * int(length) + 4, "a name takes one of the codings");
}

void judge(const Units& text, std::size_t length)
{
    int wide = 0;
    for (std::size_t i = 0; i < length; ++i)
        wide += IsUnicode(text[i]);
    require(isUnicodeString(text.data()) == (wide > 0 ? 1 : 0), "a text is judged by its units");
    const int coding = GetEncodeType(text.data());
    require(coding == 0 || (coding == 2 && wide > 0), "only other characters need UCS-2");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    const Units text = unitsOf(bytes);
    const auto length = static_cast<std::size_t>(unistrlen(text.data()));
    require(length < text.size(), "the length ends at a zero");
    copy(text, length);
    convert(text, length);
    judge(text, length);
    Units widened(std::strlen(bytes.constData()) + 1);
    str2wstr(bytes.constData(), widened.data());
    std::string dial;
    std::string tones;
    if (DivideNumber(bytes.constData(), dial, tones))
        require(dial.size() + tones.size() <= std::size_t(bytes.size()), "no digit is made up");
    return 0;
}
