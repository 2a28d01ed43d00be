#include "PersoManager/inifile_p.h"

#include <QLatin1String>
#include <QStringList>

namespace {

/// How many of the characters from `begin` on, at most `most`, are digits of the base.
int digitsAt(const QString& text, int begin, int base, int most)
{
    int count = 0;
    bool isDigit = true;
    while (isDigit && count < most && begin + count < text.size()) {
        text.mid(begin + count, 1).toUInt(&isDigit, base);
        count += isDigit ? 1 : 0;
    }
    return count;
}

/// A group's or a key's name: `%41` and `%U0041` are characters, a backslash stands for a slash.
QString decodedName(const QString& name)
{
    QString result;
    for (int i = 0; i < name.size(); ++i) {
        const bool isWide = name.mid(i, 2) == QLatin1String("%U");
        const int begin = i + (isWide ? 2 : 1);
        const int digits = isWide ? 4 : 2;
        if (name.at(i) == QLatin1Char('%') && digitsAt(name, begin, 16, digits) == digits) {
            result += QChar(name.mid(begin, digits).toUShort(nullptr, 16));
            i = begin + digits - 1;
        } else {
            result += name.at(i) == QLatin1Char('\\') ? QChar(QLatin1Char('/')) : name.at(i);
        }
    }
    return result;
}

/// Appends what stands behind a backslash; returns how many characters that were.
int appendEscape(const QString& text, int at, QString* result)
{
    static const QString kLetters = QStringLiteral("abfnrtv");
    static const QString kMeanings = QStringLiteral("\a\b\f\n\r\t\v");
    const bool isHexadecimal = text.mid(at, 1) == QLatin1String("x");
    const int begin = at + (isHexadecimal ? 1 : 0);
    const int base = isHexadecimal ? 16 : 8;
    const int digits = digitsAt(text, begin, base, static_cast<int>(text.size()));
    if (digits > 0) {
        *result += QChar(static_cast<ushort>(text.mid(begin, digits).toUInt(nullptr, base)));
        return begin + digits - at;
    }
    const auto letter = at < text.size() ? kLetters.indexOf(text.at(at)) : -1;
    *result += letter >= 0 ? QString(kMeanings.at(letter)) : text.mid(at, 1);
    return 1;
}

/// A value, from behind its "=" to the end of the line.
QString decodedValue(const QString& raw)
{
    const QString text = raw.trimmed();
    QString result = QLatin1String(""); // not null, which would say that there is no such key
    auto kept = result.size();          // blanks at the end count only within quotation marks
    bool isQuoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char(';') && !isQuoted)
            break;
        if (c == QLatin1Char('"'))
            isQuoted = !isQuoted;
        else if (c == QLatin1Char('\\'))
            i += appendEscape(text, i + 1, &result);
        else
            result += c;
        if (!c.isSpace())
            kept = result.size();
    }
    result.truncate(kept);
    // QSettings writes a text that begins with "@" with two of them.
    return result.startsWith(QLatin1String("@@")) ? result.mid(1) : result;
}

} // namespace

QString IniFile::text(const QByteArray& content, const QString& group, const QString& key)
{
    const QString wanted = group + QLatin1Char('/') + key;
    QString holder;
    QString found;
    // With its size: from a byte array alone, Qt 5 would read up to the first zero byte.
    QString all = QString::fromUtf8(content.constData(), content.size());
    all.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    for (const QString& line : all.split(QLatin1Char('\n'))) {
        const QString entry = line.trimmed();
        const auto equals = entry.indexOf(QLatin1Char('='));
        if (entry.startsWith(QLatin1Char(';')))
            continue;
        if (entry.startsWith(QLatin1Char('['))) {
            // A group "General" is written as "%General" by QSettings.
            const QString name = entry.mid(1, entry.indexOf(QLatin1Char(']')) - 1).trimmed();
            holder = name == QLatin1String("%General") ? name.mid(1) : decodedName(name);
        } else if (equals > 0 &&
                   holder + QLatin1Char('/') + decodedName(entry.left(equals).trimmed()) ==
                       wanted) {
            found = decodedValue(entry.mid(equals + 1));
        }
    }
    return found;
}
