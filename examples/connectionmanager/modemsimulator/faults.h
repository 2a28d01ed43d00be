#ifndef DEMO_FAULTS_H
#define DEMO_FAULTS_H

#include <QByteArray>
#include <QString>

#include <vector>

/// One answer: the texts of the line's commands and its final result code, each with its line ends,
/// and by how many milliseconds it is late.
struct Answer
{
    QByteArray information;
    QByteArray final;
    int delay = 0;
};

/// Answers that a modem should not give. Each fault that was prepared spoils one answer.
///
///     silence          nothing comes
///     half             only the first half comes, and no line end
///     garbage          bytes without sense come before it
///     final TEXT       TEXT comes in the place of the final result code
///     interrupt LINE   a line that nobody asked for comes in its middle
///     flood [BYTES]    bytes without a line end come in its place, 4000000 by default
///     delay MS         it comes late, and so does all that follows
class Faults
{
public:
    /// "KIND ..." for the next answer, "+CMGL KIND ..." for the next answer to that command. False
    /// when that makes no sense.
    bool prepare(const QString& text);
    /// Spoils the answer to a line with these commands, if a fault is there for it; the oldest one
    /// comes first.
    void apply(const std::vector<QByteArray>& commands, Answer& answer);

    /// Bytes as from a bad line: binary ones, line ends, and beginnings of lines. The last line has
    /// no end. The same bytes every time.
    static QByteArray garbage();

private:
    struct Fault
    {
        QByteArray command; // empty: any
        QString kind;
        QString text;
    };
    using Spoiler = void (*)(const QString& text, Answer& answer);

    static Spoiler spoiler(const QString& kind);

    std::vector<Fault> m_faults;
};

#endif
