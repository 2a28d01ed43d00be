// Texts that stand in the source of a program. This file is compiled twice, as C++17 and as C++20,
// against the same library, which is C++17.

#include "DataValue/datavalue.h"

#include <QtTest>

#include <type_traits>

// A pointer to such characters must not compile: it would be stored as an address.
static_assert(!std::is_constructible_v<CDataValue, const char16_t*>);
static_assert(!std::is_constructible_v<CDataValue, const char32_t*>);
static_assert(!std::is_constructible_v<CDataValue, const wchar_t*>);
static_assert(!std::is_constructible_v<CDataValue, char16_t*>);
static_assert(!std::is_constructible_v<CDataValue, char32_t*>);
static_assert(!std::is_constructible_v<CDataValue, wchar_t*>);
static_assert(!std::is_constructible_v<CDataValue, decltype(u"text")>);
static_assert(!std::is_constructible_v<CDataValue, decltype(U"text")>);
static_assert(!std::is_constructible_v<CDataValue, decltype(L"text")>);
static_assert(!std::is_convertible_v<const wchar_t*, CDataValue>);

// What is no text may still be an address.
static_assert(std::is_convertible_v<QObject*, CDataValue>);
static_assert(std::is_convertible_v<const void*, CDataValue>);

#if __cplusplus >= 202002L
static_assert(std::is_same_v<decltype(u8"text"), const char8_t (&)[5]>);
#endif

class tst_datavalueliterals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storesUtf8Literals()
    {
        const CDataValue value(u8"gr\u00FC\u00DFe");
        QCOMPARE(value.type(), STRING_VALUE);
        QCOMPARE(value.asQString(), QStringLiteral("gr\u00FC\u00DFe"));
    }

    void storesUtf8LiteralsInMaps()
    {
        CDataValue map(MAP_VALUE);
        map.mapSet("name", u8"\u00E9", false);
        QCOMPARE(map.parseToQString(FAST_STYLE), QStringLiteral("{\"name\":\"\u00E9\"}\n"));
    }

    void storesTheEmptyTextForANullPointer()
    {
        using Character = std::remove_reference_t<decltype(u8""[0])>;
        Character* const none = nullptr;
        const CDataValue value(none);
        QCOMPARE(value.type(), STRING_VALUE);
        QCOMPARE(value.asQString(), QString());
    }
};

QTEST_APPLESS_MAIN(tst_datavalueliterals)
#include "tst_datavalueliterals.moc"
