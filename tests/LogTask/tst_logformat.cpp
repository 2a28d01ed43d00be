#include "LogTask/logformat_p.h"

#include <QTest>

#include <climits>

namespace {

constexpr std::size_t room = 64;

QByteArray formattedList(const char* format, va_list arguments)
{
    char buffer[room];
    const std::size_t length = formatText(buffer, sizeof buffer, format, arguments);
    return buffer[length] == '\0' ? QByteArray(buffer, int(length)) : "no end";
}

// Everything after the format, as Log() hands it on.
Q_ATTRIBUTE_FORMAT_PRINTF(1, 2) QByteArray formatted(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QByteArray result = formattedList(format, arguments);
    va_end(arguments);
    return result;
}

// The same for formats that the compiler would refuse.
QByteArray formattedAs(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QByteArray result = formattedList(format, arguments);
    va_end(arguments);
    return result;
}

} // namespace

class tst_logformat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formatsTextsAndNumbers()
    {
        QCOMPARE(formatted("plain"), QByteArray("plain"));
        QCOMPARE(formatted("%s", ""), QByteArray());
        QCOMPARE(formatted("%s and %s", "a", "\xC3\xA9"), QByteArray("a and \xC3\xA9"));
        QCOMPARE(formatted("%d %i %d", 5, -7, INT_MIN), QByteArray("5 -7 -2147483648"));
        QCOMPARE(formatted("%u %x", UINT_MAX, 0xBEEFU), QByteArray("4294967295 beef"));
        QCOMPARE(formatted("100%% of %s", "it"), QByteArray("100% of it"));
    }

    void leavesTheRestToTheCLibrary()
    {
        QCOMPARE(formatted("%s %05.1f|%-4d|%ld", "a", 2.25, 7, 123456789012L),
                 QByteArray("a 002.2|7   |123456789012"));
        QCOMPARE(formatted("%d %c%3s", 1, 'x', "y"), QByteArray("1 x  y"));
        QCOMPARE(formatted("%p", nullptr), QByteArray("(nil)"));
    }

    void cutsWhereTheRoomEnds()
    {
        const QByteArray text(100, 'x');
        QCOMPARE(formatted("%s", text.constData()), QByteArray(63, 'x'));
        QCOMPARE(formatted("%s%d", text.left(62).constData(), 12), QByteArray(62, 'x') + "1");
        QCOMPARE(formatted("%100s", "a"), QByteArray(63, ' '));
        QCOMPARE(formatted("%s%s%s", text.left(63).constData(), "", "y"), QByteArray(63, 'x'));
    }

    void keepsWhatStandsBeforeAFormatBreaksOff()
    {
        QCOMPARE(formattedAs("Progress 100%"), QByteArray("Progress 100"));
        QCOMPARE(formattedAs("%s, %d%", "a", 5), QByteArray("a, 5"));
        QCOMPARE(formattedAs("%05.1f of 100%% or 100%", 2.25), QByteArray("002.2 of 100% or 100"));
        QCOMPARE(formattedAs("%"), QByteArray());
        const wchar_t none[] = {wchar_t(0xD800), 0}; // half a character
        QCOMPARE(formattedAs("%d: %ls, %d", 1, none, 2), QByteArray("1: "));
        QCOMPARE(formattedAs("%100d%", 5), QByteArray(63, ' '));
    }

    void showsNothingWithoutAFormat()
    {
        const char* const none = nullptr;
        QCOMPARE(formatted(none), QByteArray());
    }
};

QTEST_GUILESS_MAIN(tst_logformat)
#include "tst_logformat.moc"
