#ifndef IPC_MESSAGEFRAME_P_H
#define IPC_MESSAGEFRAME_P_H

#include <QByteArray>
#include <QString>

#include <deque>

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

    /// `message` between the markers, as it is written to a socket.
    static QString wrap(const QString& head, const QString& message, const QString& end);

    /// Replaces the markers, from the next search on.
    void setMarkers(const QString& head, const QString& end);

    /// Takes one read. Up to 3 bytes of a character that the read cut in two wait for the next.
    void append(const QByteArray& read);

    /// Cuts out the next body. To be called after append() until it returns something else than
    /// Body. `body` is changed only then.
    Outcome next(QString& body);

    /// What is kept. The text refers to this object and is valid until it changes.
    QString buffer() const;

    /// Forgets what is kept, for a new connection.
    void clear();

private:
    qsizetype findHead(qsizetype from);
    qsizetype findEnd();
    void cut(qsizetype upTo);
    void decode(const char* bytes, qsizetype length);

    QString m_head;
    QString m_end;
    QByteArray m_heldBack; // the beginning of a character whose rest has not come yet

    // Positions are counted from the start of m_text; the buffer begins at m_start.
    QString m_text;
    qsizetype m_start = 0;
    qsizetype m_origin = 0;        // where the next head is searched from, counted from m_start
    bool m_hasCut = false;         // whether a body was cut out since the last read
    std::deque<qsizetype> m_heads; // all heads that start before m_headSearched
    qsizetype m_headSearched = 0;
    qsizetype m_endFound = -1;   // the first end, when it has been found
    qsizetype m_endSearched = 0; // no end starts before this
};

#endif
