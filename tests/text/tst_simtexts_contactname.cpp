#include "common_function.h"

#include <QRandomGenerator>
#include <QTest>

#include <optional>
#include <string>

Q_DECLARE_METATYPE(std::u16string)

namespace {

using Name = std::u16string;

// An encoder of alpha identifiers as 3GPP TS 31.102 and ETSI TS 102 221, Annex A, define them. It
// produces the bytes; what is tested only counts them. Nothing where a coding cannot hold the name.
using Coded = std::optional<QByteArray>;

// The alphabet in the order of its codes; the escape (27) is not a character of a name.
const QString alphabet = QStringLiteral("@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\uFFFFÆæßÉ !\"#¤%&'()*+,-./"
                                        "0123456789:;<=>?¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§"
                                        "¿abcdefghijklmnopqrstuvwxyzäöñüà");
const QString extension = QStringLiteral("^{}\\[~]|€");
const char extensionCodes[] = "\x14\x28\x29\x2F\x3C\x3D\x3E\x40\x65";

QByteArray gsmBytes(char16_t character)
{
    const auto code = alphabet.indexOf(QChar(character));
    if (code >= 0)
        return QByteArray(1, static_cast<char>(code));
    const auto extended = extension.indexOf(QChar(character));
    if (extended >= 0)
        return QByteArray("\x1B") + extensionCodes[extended];
    return {};
}

Coded sevenBit(const Name& name)
{
    QByteArray bytes;
    for (char16_t character : name) {
        if (gsmBytes(character).isEmpty())
            return {};
        bytes += gsmBytes(character);
    }
    return bytes;
}

// The codings with a base: septets for the alphabet, 0x80 and the distance for what lies in the
// 128 code points from the base on.
Coded withBase(const Name& name, int base, QByteArray header)
{
    header.insert(1, static_cast<char>(name.size()));
    for (char16_t character : name) {
        const int distance = character - base;
        if (!gsmBytes(character).isEmpty())
            header += gsmBytes(character);
        else if (distance >= 0 && distance < 128)
            header += static_cast<char>(0x80 | distance);
        else
            return {};
    }
    return header;
}

// The base is bits 8 to 15 of a pointer whose bit 16 is zero: tries all 256.
Coded oneByteBase(const Name& name)
{
    for (int base = 0; base < 256; ++base) {
        const QByteArray header = QByteArray("\x81") + static_cast<char>(base);
        if (const Coded coded = withBase(name, base << 7, header))
            return coded;
    }
    return {};
}

// Any 16-bit pointer may be the base; one that begins at a character of the name is as good as any.
Coded twoByteBase(const Name& name)
{
    for (char16_t base : name) {
        const QByteArray header =
            QByteArray("\x82") + static_cast<char>(base >> 8) + static_cast<char>(base & 0xFF);
        if (const Coded coded = withBase(name, base, header))
            return coded;
    }
    return {};
}

QByteArray ucs2(const Name& name)
{
    QByteArray bytes("\x80");
    for (char16_t character : name) {
        bytes += static_cast<char>(character >> 8);
        bytes += static_cast<char>(character & 0xFF);
    }
    return bytes;
}

QByteArray encoded(const Name& name)
{
    for (auto coding : {sevenBit, oneByteBase, twoByteBase}) {
        if (const Coded coded = coding(name))
            return *coded;
    }
    return ucs2(name);
}

int sizeOf(const Name& name)
{
    const std::wstring wide(name.begin(), name.end());
    return ParseContactNameConvert(wide.data(), static_cast<int>(wide.size()));
}

} // namespace

class tst_simtexts_contactname : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsEachRule_data();
    void followsEachRule();
    void noLengthNeedsNothing();
    void readsNoFurtherThanTheLength();
    void sizesAreThoseOfARealEncoder_data();
    void sizesAreThoseOfARealEncoder();
};

void tst_simtexts_contactname::followsEachRule_data()
{
    QTest::addColumn<std::u16string>("name");
    QTest::addColumn<int>("size");
    auto row = [](const char* title, const Name& name, int size) {
        QTest::newRow(title) << name << size;
    };
    row("four Latin letters", u"Anna", 4);
    row("extension characters take two bytes", u"[A]€", 7);
    row("one Cyrillic letter", u"Ж", 4);
    row("two Cyrillic letters", u"Жа", 5);
    row("Cyrillic with Latin", u"Жа B", 7);
    row("Cyrillic with an extension character", u"Жа[", 7);
    row("Latin before the Cyrillic", u"AB Ж", 7);
    row("first and last of one page", {0x0400, 0x047F}, 5);
    row("across a page, within 128", {0x047F, 0x0480}, 6);
    row("across a page, 127 apart", {0x0410, 0x048F}, 6);
    row("across a page, 128 apart", {0x0410, 0x0490}, 5);
    row("going down, 127 apart", {0x048F, 0x0410}, 6);
    row("going down, 128 apart", {0x0490, 0x0410}, 5);
    row("lower and higher than the first", {0x0480, 0x0450, 0x04CF}, 7);
    row("lower and higher, too far apart", {0x0480, 0x0450, 0x04D0}, 7);
    row("with the highest bit set, one", {0x8000}, 5);
    row("with the highest bit set, within 128", {0x8001, 0x8080, 'A'}, 7);
    row("two scripts", {0x0416, 0x4E2D}, 5);
    row("a foreign character after a long page", {0x0416, 0x0416, 0x0416, 0x4E2D, 'A'}, 11);
    row("Latin, then two scripts", {'A', 'B', 0x0416, 0x4E2D}, 9);
    row("a zero is a character of the alphabet", {'A', 0, 'B'}, 3);
}

void tst_simtexts_contactname::followsEachRule()
{
    QFETCH(std::u16string, name);
    QTEST(sizeOf(name), "size");
}

void tst_simtexts_contactname::noLengthNeedsNothing()
{
    QCOMPARE(ParseContactNameConvert(L"Anna", 0), 0);
    QCOMPARE(ParseContactNameConvert(L"Anna", -1), 0);
    QCOMPARE(ParseContactNameConvert(nullptr, 4), 0);
}

void tst_simtexts_contactname::readsNoFurtherThanTheLength()
{
    QCOMPARE(ParseContactNameConvert(L"Anna\x0416", 4), 4);
}

void tst_simtexts_contactname::sizesAreThoseOfARealEncoder_data()
{
    // Characters of a name are drawn from these ranges, mixed with the alphabet's.
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("foreignInTen");
    QTest::newRow("alphabet only") << 0x0400 << 0x0400 << 0;
    QTest::newRow("one page") << 0x0400 << 0x047F << 5;
    QTest::newRow("two pages") << 0x0440 << 0x04C0 << 5;
    QTest::newRow("at the highest bit") << 0x7FC0 << 0x8040 << 5;
    QTest::newRow("above the highest bit") << 0x9000 << 0x9085 << 5;
    QTest::newRow("everything") << 0x0100 << 0xD7FF << 3;
}

void tst_simtexts_contactname::sizesAreThoseOfARealEncoder()
{
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(int, foreignInTen);
    QRandomGenerator random(4711);
    const QString plain = QString(alphabet).remove(QChar(0xFFFF)) + extension;
    for (int round = 0; round < 1500; ++round) {
        Name name;
        const int length = random.bounded(1, 12);
        while (static_cast<int>(name.size()) < length) {
            const bool foreign = random.bounded(10) < foreignInTen;
            name += foreign ? static_cast<char16_t>(random.bounded(first, last + 1))
                            : plain.at(random.bounded(static_cast<int>(plain.size()))).unicode();
        }
        const int expected = static_cast<int>(encoded(name).size());
        QVERIFY2(sizeOf(name) == expected, qPrintable(QString::fromStdU16String(name)));
    }
}

QTEST_GUILESS_MAIN(tst_simtexts_contactname)
#include "tst_simtexts_contactname.moc"
