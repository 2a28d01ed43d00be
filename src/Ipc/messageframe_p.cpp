#include "Ipc/messageframe_p.h"

#include <algorithm>
#include <cstring>

namespace {

// A consumed beginning of the text is removed when it is longer than this and than the rest, so
// that each unit is moved a bounded number of times.
constexpr qsizetype compactAbove = 32 * 1024;

// The length of the sequence that begins with `lead`; 1 for what begins no longer sequence.
int sequenceLength(unsigned char lead)
{
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 1;
}

// Whether `second` may follow `lead`: overlong forms, surrogates and what lies beyond U+10FFFF are
// excluded here, as they are by the decoder.
bool isSecondByte(unsigned char lead, unsigned char second)
{
    switch (lead) {
    case 0xE0:
        return second >= 0xA0 && second <= 0xBF;
    case 0xED:
        return second >= 0x80 && second <= 0x9F;
    case 0xF0:
        return second >= 0x90 && second <= 0xBF;
    case 0xF4:
        return second >= 0x80 && second <= 0x8F;
    default:
        return second >= 0x80 && second <= 0xBF;
    }
}

// How many bytes at the end are the beginning of a character that may still become valid: 0 to 3.
qsizetype incompleteTail(const char* bytes, qsizetype length)
{
    for (qsizetype tail = 1; tail <= std::min<qsizetype>(3, length); ++tail) {
        const auto lead = static_cast<unsigned char>(bytes[length - tail]);
        if (lead >= 0x80 && lead <= 0xBF)
            continue; // a following byte: the lead stands before it
        if (sequenceLength(lead) <= tail)
            return 0;
        if (tail > 1 && !isSecondByte(lead, static_cast<unsigned char>(bytes[length - tail + 1])))
            return 0;
        return tail;
    }
    return 0;
}

// The first `marker`, which is not empty, at `from` or behind it; -1 when there is none. Markers
// are short and begin with a character that is rare in messages: QString::indexOf() would make a
// table for each search, which costs more than searching a usual message.
qsizetype indexOf(const QString& text, const QString& marker, qsizetype from)
{
    const QStringView all(text);
    const QStringView sought(marker);
    const qsizetype last = all.size() - sought.size();
    while (from <= last) {
        from = all.indexOf(sought.front(), from);
        if (from < 0 || from > last)
            return -1;
        if (all.mid(from, sought.size()) == sought)
            return from;
        ++from;
    }
    return -1;
}

} // namespace

MessageFrame::MessageFrame()
    : MessageFrame(defaultHead(), defaultEnd())
{
}

MessageFrame::MessageFrame(const QString& head, const QString& end)
    : m_head(head)
    , m_end(end)
{
}

QString MessageFrame::defaultHead()
{
    return QStringLiteral("__BEGIN__");
}

QString MessageFrame::defaultEnd()
{
    return QStringLiteral("__END__");
}

QString MessageFrame::wrap(const QString& head, const QString& message, const QString& end)
{
    QString frame;
    frame.reserve(head.size() + message.size() + end.size());
    return frame.append(head).append(message).append(end);
}

void MessageFrame::setMarkers(const QString& head, const QString& end)
{
    m_head = head;
    m_end = end;
    m_heads.clear();
    m_headSearched = m_start;
    m_endFound = -1;
    m_endSearched = m_start;
}

void MessageFrame::append(const QByteArray& read)
{
    m_origin = 0;
    m_hasCut = false;
    const void* zero = std::memchr(read.constData(), 0, static_cast<size_t>(read.size()));
    const qsizetype length =
        zero ? static_cast<const char*>(zero) - read.constData() : qsizetype(read.size());
    if (m_heldBack.isEmpty() && !zero) {
        const qsizetype tail = incompleteTail(read.constData(), length);
        decode(read.constData(), length - tail);
        m_heldBack = read.right(tail);
        return;
    }
    QByteArray bytes = m_heldBack;
    bytes.append(read.constData(), length);
    const qsizetype tail = zero ? 0 : incompleteTail(bytes.constData(), bytes.size());
    decode(bytes.constData(), bytes.size() - tail);
    m_heldBack = bytes.right(tail);
}

// U+FEFF at the beginning of a read is a character of the message like any other, but the decoder
// would take it for a byte-order mark and drop it.
void MessageFrame::decode(const char* bytes, qsizetype length)
{
    while (length >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0) {
        m_text.append(QChar(0xFEFF));
        bytes += 3;
        length -= 3;
    }
    if (length <= 0)
        return;
    if (m_text.isEmpty())
        m_text = QString::fromUtf8(bytes, length);
    else
        m_text.append(QString::fromUtf8(bytes, length));
}

MessageFrame::Outcome MessageFrame::next(QString& body)
{
    if (m_hasCut && findEnd() < 0)
        return Done;
    const qsizetype head = findHead(m_start + m_origin);
    if (head < 0)
        return NoHead;
    const qsizetype end = findEnd();
    if (end < 0)
        return NoEnd;
    m_origin = head - m_start;
    const qsizetype bodyStart = head + m_head.size();
    const qsizetype length = end < bodyStart ? m_text.size() - bodyStart : end - bodyStart;
    body = m_text.mid(bodyStart, length);
    cut(end + m_end.size());
    m_hasCut = true;
    return Body;
}

QString MessageFrame::buffer() const
{
    return QString::fromRawData(m_text.constData() + m_start, m_text.size() - m_start);
}

void MessageFrame::clear()
{
    *this = MessageFrame(m_head, m_end);
}

// The first head at `from` or behind it; -1 when there is none.
qsizetype MessageFrame::findHead(qsizetype from)
{
    if (m_head.isEmpty())
        return from <= m_text.size() ? from : -1;
    const auto known = std::lower_bound(m_heads.cbegin(), m_heads.cend(), from);
    if (known != m_heads.cend())
        return *known;
    for (;;) {
        const qsizetype found = indexOf(m_text, m_head, m_headSearched);
        if (found < 0) {
            m_headSearched = std::max<qsizetype>(m_headSearched, m_text.size() - m_head.size() + 1);
            return -1;
        }
        m_heads.push_back(found);
        m_headSearched = found + 1;
        if (found >= from)
            return found;
    }
}

// The first end in the buffer; -1 when there is none.
qsizetype MessageFrame::findEnd()
{
    if (m_endFound >= 0 || m_end.isEmpty())
        return m_endFound;
    m_endFound = indexOf(m_text, m_end, m_endSearched);
    if (m_endFound < 0)
        m_endSearched = std::max<qsizetype>(m_endSearched, m_text.size() - m_end.size() + 1);
    return m_endFound;
}

// Drops everything before `upTo`.
void MessageFrame::cut(qsizetype upTo)
{
    m_start = upTo;
    m_endFound = -1;
    m_endSearched = upTo;
    m_headSearched = std::max(m_headSearched, upTo);
    while (!m_heads.empty() && m_heads.front() < upTo)
        m_heads.pop_front();
    const qsizetype rest = m_text.size() - m_start;
    if (rest > 0 && (m_start <= compactAbove || m_start <= rest))
        return;
    if (rest == 0)
        m_text = QString();
    else
        m_text.remove(0, m_start);
    for (qsizetype& head : m_heads)
        head -= m_start;
    m_headSearched -= m_start;
    m_endSearched -= m_start;
    m_start = 0;
}
