#include "Ipc/messageframe_p.h"

#include "Ipc/utf8_p.h"
#include "LogTask/logline_p.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// A consumed beginning of the text is removed when it is longer than this and than the rest, so
// that each unit is moved a bounded number of times.
constexpr qsizetype kCompactAbove = 32768;

// The first `marker`, which is not empty, at `from` or behind it; -1 when there is none.
qsizetype indexOf(const QByteArray& bytes, const QByteArray& marker, qsizetype from)
{
    const std::string_view all(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    const std::string_view sought(marker.constData(), static_cast<std::size_t>(marker.size()));
    const std::size_t found = all.find(sought, static_cast<std::size_t>(from));
    return found == std::string_view::npos ? -1 : static_cast<qsizetype>(found);
}

// False when the marker is no text that can be received.
bool encode(const QString& marker, QByteArray* bytes)
{
    *bytes = marker.toUtf8();
    return Utf8::decode(bytes->constData(), bytes->size()) == marker;
}

} // namespace

MessageFrame::MessageFrame()
    : MessageFrame(defaultHead(), defaultEnd())
{
}

MessageFrame::MessageFrame(const QString& head, const QString& end)
{
    setMarkers(head, end);
}

QString MessageFrame::defaultHead()
{
    return QStringLiteral("__BEGIN__");
}

QString MessageFrame::defaultEnd()
{
    return QStringLiteral("__END__");
}

QByteArray MessageFrame::wrap(const QByteArray& head, const QByteArray& message,
                              const QByteArray& end)
{
    QByteArray frame;
    frame.reserve(head.size() + message.size() + end.size());
    return frame.append(head).append(message).append(end);
}

void MessageFrame::setMarkers(const QString& head, const QString& end)
{
    m_headIsText = encode(head, &m_head);
    if (!encode(end, &m_end))
        m_end.clear();
    m_heads.clear();
    m_headSearched = m_start;
    m_endFound = -1;
    m_endSearched = m_start;
}

void MessageFrame::append(const QByteArray& read)
{
    m_from = m_start;
    m_hasCut = false;
    const void* zero = std::memchr(read.constData(), 0, static_cast<size_t>(read.size()));
    const qsizetype length =
        zero ? static_cast<const char*>(zero) - read.constData() : qsizetype(read.size());
    if (m_heldBack.isEmpty() && !zero) {
        const qsizetype tail = Utf8::incompleteTail(read.constData(), length);
        take(read.constData(), length - tail);
        m_heldBack = tail > 0 ? read.right(tail) : QByteArray();
        return;
    }
    QByteArray bytes = m_heldBack;
    bytes.append(read.constData(), length);
    const qsizetype tail = zero ? 0 : Utf8::incompleteTail(bytes.constData(), bytes.size());
    take(bytes.constData(), bytes.size() - tail);
    m_heldBack = bytes.right(tail);
}

void MessageFrame::take(const char* bytes, qsizetype size)
{
    if (Utf8::isValid(bytes, size))
        m_bytes.append(bytes, size);
    else
        m_bytes.append(Utf8::decode(bytes, size).toUtf8());
}

MessageFrame::Outcome MessageFrame::next(QString& body)
{
    Piece piece;
    const Outcome outcome = find(&piece);
    if (outcome == Body) {
        body = Utf8::decode(piece.bytes, piece.size);
        cut(piece.end);
    }
    return outcome;
}

MessageFrame::Outcome MessageFrame::next(std::string& body)
{
    Piece piece;
    const Outcome outcome = find(&piece);
    if (outcome == Body) {
        body.assign(piece.bytes, static_cast<std::size_t>(piece.size));
        cut(piece.end);
    }
    return outcome;
}

MessageFrame::Outcome MessageFrame::find(Piece* piece)
{
    if (m_hasCut && findEnd() < 0)
        return Done;
    const qsizetype head = m_from < 0 ? -1 : findHead(m_from);
    if (head < 0)
        return NoHead;
    const qsizetype end = findEnd();
    if (end < 0)
        return NoEnd;
    m_headFound = head;
    const qsizetype bodyStart = head + m_head.size();
    piece->bytes = m_bytes.constData() + bodyStart;
    piece->size = end < bodyStart ? m_bytes.size() - bodyStart : end - bodyStart;
    piece->end = end + m_end.size();
    return Body;
}

QString MessageFrame::buffer() const
{
    return Utf8::decode(m_bytes.constData() + m_start, m_bytes.size() - m_start);
}

QString MessageFrame::bufferExcerpt()
{
    const qsizetype size = m_bytes.size() - m_start;
    if (size <= kLogExcerptLimit)
        return buffer();
    m_countedUnits += Utf8::units(m_bytes.constData() + m_counted, m_bytes.size() - m_counted);
    m_counted = m_bytes.size();
    const char* const begin = m_bytes.constData() + m_start;
    const qsizetype first = Utf8::bytesOfUnits(begin, size, kLogExcerptLimit);
    return logExcerpt(Utf8::decode(begin, first < 0 ? size : first), m_countedUnits);
}

void MessageFrame::clear()
{
    MessageFrame empty;
    empty.m_head = m_head;
    empty.m_headIsText = m_headIsText;
    empty.m_end = m_end;
    *this = std::move(empty);
}

// The first head at `from` or behind it; -1 when there is none.
qsizetype MessageFrame::findHead(qsizetype from)
{
    if (!m_headIsText)
        return -1;
    if (m_head.isEmpty())
        return from;
    const auto known = std::lower_bound(m_heads.cbegin(), m_heads.cend(), from);
    if (known != m_heads.cend())
        return *known;
    for (;;) {
        const qsizetype found = indexOf(m_bytes, m_head, m_headSearched);
        if (found < 0) {
            m_headSearched =
                std::max<qsizetype>(m_headSearched, m_bytes.size() - m_head.size() + 1);
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
    m_endFound = indexOf(m_bytes, m_end, m_endSearched);
    if (m_endFound < 0)
        m_endSearched = std::max<qsizetype>(m_endSearched, m_bytes.size() - m_end.size() + 1);
    return m_endFound;
}

// Drops everything before `upTo`. The next head is searched from as many units behind it as the
// last head stood behind the start before: that head's place, moved by the units dropped.
void MessageFrame::cut(qsizetype upTo)
{
    const char* const bytes = m_bytes.constData();
    m_from = upTo;
    if (m_headFound > m_start) {
        const qsizetype dropped = Utf8::units(bytes + m_start, upTo - m_start);
        const qsizetype moved =
            Utf8::bytesOfUnits(bytes + m_headFound, m_bytes.size() - m_headFound, dropped);
        m_from = moved < 0 ? -1 : m_headFound + moved;
    }
    if (m_counted > upTo)
        m_countedUnits -= Utf8::units(bytes + m_start, upTo - m_start);
    else
        m_countedUnits = 0;
    m_counted = std::max(m_counted, upTo);
    m_start = upTo;
    m_hasCut = true;
    m_endFound = -1;
    m_endSearched = upTo;
    m_headSearched = std::max(m_headSearched, upTo);
    while (!m_heads.empty() && m_heads.front() < upTo)
        m_heads.pop_front();
    compact();
}

void MessageFrame::compact()
{
    const qsizetype rest = m_bytes.size() - m_start;
    if (rest > 0 && (m_start <= kCompactAbove || m_start <= rest))
        return;
    if (m_bytes.capacity() > kCompactAbove)
        m_bytes = m_bytes.mid(m_start); // and gives the memory of a large message back
    else
        m_bytes.remove(0, m_start);
    for (qsizetype& head : m_heads)
        head -= m_start;
    m_headSearched -= m_start;
    m_endSearched -= m_start;
    m_counted -= m_start;
    if (m_from >= 0)
        m_from -= m_start;
    m_start = 0;
}
