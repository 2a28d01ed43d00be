#include "Ipc/messageframe_p.h"

#include "LogTask/logline_p.h"
#include "text/utf8_p.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// A consumed beginning of the text is removed when it is longer than this and than the rest, so
// that each unit is moved a bounded number of times.
constexpr qsizetype kCompactAbove = 32768;

std::string_view view(const char* bytes, qsizetype size)
{
    return {bytes, static_cast<std::size_t>(size)};
}

std::string_view view(const QByteArray& bytes)
{
    return view(bytes.constData(), bytes.size());
}

// A size or a place as Qt counts; "none" becomes -1.
qsizetype signedSize(std::size_t size)
{
    return size == std::string_view::npos ? -1 : static_cast<qsizetype>(size);
}

// The first `marker`, which is not empty, at `from` or behind it; -1 when there is none.
qsizetype indexOf(const QByteArray& bytes, const QByteArray& marker, qsizetype from)
{
    return signedSize(view(bytes).find(view(marker), static_cast<std::size_t>(from)));
}

// False when the marker is no text that can be received.
bool encode(const QString& marker, QByteArray* bytes)
{
    *bytes = marker.toUtf8();
    return Utf8::decode(view(*bytes)) == marker;
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
        const qsizetype tail = signedSize(Utf8::incompleteTail(view(read.constData(), length)));
        take(read.constData(), length - tail);
        m_heldBack = tail > 0 ? read.right(tail) : QByteArray();
        return;
    }
    QByteArray bytes = m_heldBack;
    bytes.append(read.constData(), length);
    const qsizetype tail = zero ? 0 : signedSize(Utf8::incompleteTail(view(bytes)));
    take(bytes.constData(), bytes.size() - tail);
    m_heldBack = bytes.right(tail);
}

void MessageFrame::take(const char* bytes, qsizetype size)
{
    if (Utf8::isValid(view(bytes, size)))
        m_bytes.append(bytes, size);
    else
        m_bytes.append(Utf8::decode(view(bytes, size)).toUtf8());
}

MessageFrame::Outcome MessageFrame::next(QString& body)
{
    Piece piece;
    const Outcome outcome = find(&piece);
    if (outcome == Body) {
        body = Utf8::decode(view(piece.bytes, piece.size));
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
    return Utf8::decode(view(m_bytes.constData() + m_start, m_bytes.size() - m_start));
}

QString MessageFrame::bufferExcerpt()
{
    const qsizetype size = m_bytes.size() - m_start;
    const qsizetype limit = logExcerptLimit();
    if (limit == 0 || size <= limit)
        return buffer();
    m_countedUnits += units(m_counted, m_bytes.size());
    m_counted = m_bytes.size();
    const std::string_view all = view(m_bytes.constData() + m_start, size);
    const std::size_t shown = Utf8::bytesOfUnits(all, static_cast<std::size_t>(limit));
    return logExcerpt(Utf8::decode(all.substr(0, shown)), m_countedUnits);
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

// The UTF-16 units of the buffer from the byte `from` to the byte `to`.
qsizetype MessageFrame::units(qsizetype from, qsizetype to) const
{
    return signedSize(Utf8::units(view(m_bytes.constData() + from, to - from)));
}

// Drops everything before `upTo`. The next head is searched from as many units behind it as the
// last head stood behind the start before: that head's place, moved by the units dropped.
void MessageFrame::cut(qsizetype upTo)
{
    m_from = upTo;
    if (m_headFound > m_start) {
        const auto dropped = static_cast<std::size_t>(units(m_start, upTo));
        const std::string_view behind = view(m_bytes).substr(static_cast<std::size_t>(m_headFound));
        const qsizetype moved = signedSize(Utf8::bytesOfUnits(behind, dropped));
        m_from = moved < 0 ? -1 : m_headFound + moved;
    }
    if (m_counted > upTo)
        m_countedUnits -= units(m_start, upTo);
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
