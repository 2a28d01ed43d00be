#include "LogTask/logsecrets_p.h"

#include "LogTask/clog.h"

#include <QStringList>

#include <algorithm>
#include <atomic>

namespace {

struct Secrets
{
    QStringList keys;
    QStringList messages;
    const Secrets* before = nullptr; // kept: a log call may still use it
};

std::atomic<const Secrets*> s_secrets{nullptr};

constexpr QLatin1String kHidden("***");

bool contains(const QStringList& texts, QStringView text)
{
    const auto isText = [text](const QString& other) { return QStringView(other) == text; };
    return std::any_of(texts.cbegin(), texts.cend(), isText);
}

/// Walks over the keys in a line, and replaces values.
class Scanner
{
public:
    Scanner(const Secrets& secrets, const QString& line)
        : m_secrets(secrets)
        , m_line(line)
    {
    }

    QString result()
    {
        qsizetype colon = 0;
        while ((colon = m_line.indexOf(QLatin1Char(':'), static_cast<int>(colon))) >= 0) {
            const QStringView key = keyBefore(colon);
            ++colon;
            if (contains(m_secrets.keys, key) || isSecretData(key, colon))
                colon = hideValue(colon);
        }
        return m_shownTo == 0 ? m_line : m_result + QStringView(m_line).mid(m_shownTo).toString();
    }

private:
    // The text in quotation marks before the colon; in a text that holds JSON in its turn, those
    // have backslashes.
    QStringView keyBefore(qsizetype colon) const
    {
        qsizetype end = colon;
        while (end > 0 && isBlank(end - 1))
            --end;
        if (end == 0 || at(end - 1) != u'"')
            return {};
        do
            --end;
        while (end > 0 && at(end - 1) == u'\\');
        qsizetype begin = end;
        while (begin > 0 && at(begin - 1) != u'"')
            --begin;
        return begin == 0 ? QStringView() : QStringView(m_line).mid(begin, end - begin);
    }

    // Remembers the message on the way. Data without a message before them may belong to one that
    // comes later, in the line or behind its end.
    bool isSecretData(QStringView key, qsizetype value)
    {
        if (m_secrets.messages.isEmpty())
            return false;
        if (key == QLatin1String("IPCMSG_TYPE")) {
            const QStringView message = textAt(skipBlanks(value));
            m_message = contains(m_secrets.messages, message) ? Secret : Plain;
        }
        if (key != QLatin1String("IPCMSG_USER_DATA"))
            return false;
        const bool isSecret = m_message != Plain;
        m_message = Unknown;
        return isSecret;
    }

    // Returns the place behind the value.
    qsizetype hideValue(qsizetype from)
    {
        const qsizetype begin = skipBlanks(from);
        if (begin == m_line.size())
            return begin;
        qsizetype inner = begin;
        qsizetype end = begin;
        if (isText(begin)) {
            inner = skipBackslashes(begin) + 1;
            end = endOfText(begin);
        } else if (at(begin) == u'{' || at(begin) == u'[') {
            end = endOfContainer(begin);
        } else {
            end = endOfWord(begin);
        }
        m_result += QStringView(m_line).mid(m_shownTo, inner - m_shownTo).toString() + kHidden;
        m_shownTo = std::max(std::min(end, endOfContent()), inner);
        return m_shownTo;
    }

    QStringView textAt(qsizetype begin) const
    {
        if (!isText(begin))
            return {};
        const qsizetype inner = skipBackslashes(begin) + 1;
        return QStringView(m_line).mid(inner, endOfText(begin) - inner);
    }

    // Where the mark that ends the text begins, its backslashes included, or the line's end. A text
    // whose marks have n backslashes, n being 0, 1, 3, 7..., ends at a mark with as many, or with
    // those of a text around it. Others are part of the text.
    qsizetype endOfText(qsizetype begin) const
    {
        const qsizetype quote = skipBackslashes(begin);
        const qsizetype own = quote - begin + 1;
        qsizetype backslashes = 0;
        for (qsizetype i = quote + 1; i < m_line.size(); ++i) {
            if (at(i) == u'"') {
                const qsizetype count = backslashes + 1;
                const qsizetype lowestBit = count & -count;
                if (lowestBit <= own)
                    return i - lowestBit + 1;
            }
            backslashes = at(i) == u'\\' ? backslashes + 1 : 0;
        }
        return m_line.size();
    }

    // Behind the bracket that closes this one. Those in texts do not count.
    qsizetype endOfContainer(qsizetype begin) const
    {
        int depth = 0;
        qsizetype i = begin;
        do {
            if (isText(i)) {
                i = std::min<qsizetype>(skipBackslashes(endOfText(i)) + 1, m_line.size());
                continue;
            }
            if (at(i) == u'{' || at(i) == u'[')
                ++depth;
            else if (at(i) == u'}' || at(i) == u']')
                --depth;
            i = at(i) == u'\\' ? skipBackslashes(i) : i + 1;
        } while (depth > 0 && i < m_line.size());
        return i;
    }

    qsizetype endOfWord(qsizetype begin) const
    {
        qsizetype end = begin;
        while (end < m_line.size() && !isBlank(end) && at(end) != u',' && at(end) != u'}' &&
               at(end) != u']')
            ++end;
        return end;
    }

    // Before the full length of a content that was cut, "... 1000000 characters", if the line ends
    // in that, else the line's end.
    qsizetype endOfContent()
    {
        if (m_contentEnd >= 0)
            return m_contentEnd;
        m_contentEnd = m_line.size();
        const auto dots = m_line.lastIndexOf(QLatin1String("... "));
        if (dots >= 0) {
            auto end = dots + 4;
            while (end < m_line.size() && m_line.at(end).isDigit())
                ++end;
            const QStringView rest = QStringView(m_line).mid(end).trimmed();
            if (end > dots + 4 && rest == QLatin1String("characters"))
                m_contentEnd = dots;
        }
        return m_contentEnd;
    }

    qsizetype skipBlanks(qsizetype from) const
    {
        while (from < m_line.size() && isBlank(from))
            ++from;
        return from;
    }
    qsizetype skipBackslashes(qsizetype from) const
    {
        while (from < m_line.size() && at(from) == u'\\')
            ++from;
        return from;
    }
    // Whether a text begins here, with the backslashes of a text that holds it.
    bool isText(qsizetype i) const
    {
        if (i == m_line.size() || (at(i) != u'"' && at(i) != u'\\'))
            return false;
        const qsizetype quote = skipBackslashes(i);
        return quote < m_line.size() && at(quote) == u'"';
    }
    char16_t at(qsizetype i) const { return m_line.constData()[i].unicode(); }
    bool isBlank(qsizetype i) const
    {
        return at(i) == u' ' || at(i) == u'\t' || at(i) == u'\n' || at(i) == u'\r';
    }

    const Secrets& m_secrets;
    const QString& m_line;
    QString m_result;
    qsizetype m_shownTo = 0; // the line up to here is in the result
    qsizetype m_contentEnd = -1;
    enum { Unknown, Plain, Secret } m_message = Unknown;
};

} // namespace

void HideInLog(const QStringList& keys, const QStringList& messages)
{
    auto* const secrets = new Secrets{keys, messages, s_secrets.load()};
    while (!s_secrets.compare_exchange_weak(secrets->before, secrets)) {
    }
}

bool hidesSecrets()
{
    const Secrets* const secrets = s_secrets.load(std::memory_order_acquire);
    return secrets && !(secrets->keys.isEmpty() && secrets->messages.isEmpty());
}

QString withoutSecrets(const QString& line)
{
    const Secrets* const secrets = s_secrets.load(std::memory_order_acquire);
    return secrets ? Scanner(*secrets, line).result() : line;
}

bool hidesDataOf(const char* message)
{
    const Secrets* const secrets = s_secrets.load(std::memory_order_acquire);
    return secrets && contains(secrets->messages, QString::fromUtf8(message));
}
