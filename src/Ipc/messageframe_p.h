#ifndef IPC_MESSAGEFRAME_P_H
#define IPC_MESSAGEFRAME_P_H

#include <QByteArray>
#include <QString>

#include <deque>
#include <string>

/// Cuts the byte stream of one connection into message bodies: the text between a head and an end
/// marker. Both ends use it; it knows no sockets.
///
///     MessageFrame frame;
///     frame.append("__BEGIN__one__END____BEGIN__two__END__");
///     QString body;
///     while (frame.next(body) == MessageFrame::Body)
///         use(body); // "one", then "two"
///
/// README.md beside this file has the rules in full. Those that surprise are meant:
/// - within one read the next head is searched from where the head before it stood, counted from
///   the start of the buffer, although the buffer has become shorter: after stray text a head may
///   be passed over until the next read;
/// - an end marker before the head delivers all that follows the head, and drops only the text up
///   to the end marker;
/// - a zero byte ends a read; what follows it in the same read is lost.
///
/// An empty head stands wherever the search starts; an empty end is never found.
///
/// Every unit of text is searched a bounded number of times, however the reads are cut.
class MessageFrame
{
public:
    enum Outcome {
        Body,   ///< a body was cut out; there may be more
        NoHead, ///< stopped: no head marker
        NoEnd,  ///< stopped: a head marker without end marker
        Done    ///< stopped after a body: no end marker is left
    };

    MessageFrame();
    MessageFrame(const QString& head, const QString& end);

    static QString defaultHead();
    static QString defaultEnd();

    /// `message` between the markers, all encoded: what is written to a socket.
    static QByteArray wrap(const QByteArray& head, const QByteArray& message,
                           const QByteArray& end);

    /// Replaces the markers, from the next search on.
    void setMarkers(const QString& head, const QString& end);

    /// Takes one read. Up to 3 bytes of a character that the read cut in two wait for the next.
    void append(const QByteArray& read);

    /// Cuts out the next body. To be called after append() until it returns something else than
    /// Body. `body` is changed only then.
    Outcome next(QString& body);
    /// The same; the body as UTF-8, which is always valid.
    Outcome next(std::string& body);

    /// What is kept.
    QString buffer() const;
    /// How many bytes are kept.
    qsizetype size() const { return m_bytes.size() - m_start + m_heldBack.size(); }

    /// What is kept, as a log line may carry it; see logExcerpt(). Unless lines are kept whole, the
    /// cost is bounded by what has come since the call before.
    QString bufferExcerpt();

    /// Forgets what is kept, for a new connection.
    void clear();

private:
    struct Piece
    {
        const char* bytes = nullptr;
        qsizetype size = 0;
        qsizetype end = 0; // behind the end marker
    };

    Outcome find(Piece* piece);
    qsizetype findHead(qsizetype from);
    qsizetype findEnd();
    qsizetype units(qsizetype from, qsizetype to) const;
    void cut(qsizetype upTo);
    void compact();
    void take(const char* bytes, qsizetype size);

    // Encoded. A marker with half a surrogate pair, which no text has, is never found.
    QByteArray m_head;
    QByteArray m_end;
    bool m_headIsText = true;
    QByteArray m_heldBack; // the beginning of a character whose rest has not come yet

    // The text as UTF-8, always valid: what a read has of other bytes is replaced when it comes.
    // Positions are counted from the start of m_bytes; the buffer begins at m_start.
    QByteArray m_bytes;
    qsizetype m_start = 0;
    qsizetype m_headFound = 0;     // the last head
    qsizetype m_from = 0;          // where the next head is searched from; -1 behind the text
    bool m_hasCut = false;         // whether a body was cut out since the last read
    std::deque<qsizetype> m_heads; // all heads that start before m_headSearched
    qsizetype m_headSearched = 0;
    qsizetype m_endFound = -1;   // the first end, when it has been found
    qsizetype m_endSearched = 0; // no end starts before this

    qsizetype m_counted = 0;      // up to where units have been counted for the log
    qsizetype m_countedUnits = 0; // from m_start on
};

#endif
