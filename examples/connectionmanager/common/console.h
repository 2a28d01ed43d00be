#ifndef DEMO_CONSOLE_H
#define DEMO_CONSOLE_H

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

/// The terminal of a process: lines in, lines out. Reading takes part in the event loop and never
/// waits.
///
/// What cannot be written, for example because the disk is full, is a failure of the whole process:
/// the reason goes to the error output once, the event loop ends, and exitStatus() says so.
class Console : public QObject
{
    Q_OBJECT

public:
    explicit Console(QObject* parent = nullptr);

    /// Writes one line to standard output, at once.
    static void say(const QString& line);
    /// Writes a line that shows how far something has come. On a terminal the next such line takes
    /// its place, until the `last` one.
    static void sayProgress(const QString& line, bool last);
    /// Writes one line to the error output, behind the program's name.
    static void complain(const QString& line);
    /// What main() returns: `status`, or ExitStatus::Failed when a line could not be written.
    static int exitStatus(int status);

Q_SIGNALS:
    /// A line was entered; blanks at both ends are removed, empty lines are not reported.
    void entered(const QString& line);
    /// The input has ended: no further line comes.
    void ended();

private:
    void readInput();
    void take(const QByteArray& line);

    QSocketNotifier m_notifier;
    QByteArray m_input; // what was read behind the last line end
};

#endif
