#ifndef DEMO_CONSOLE_H
#define DEMO_CONSOLE_H

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>

/// The terminal of a process: lines in, lines out. Reading takes part in the event loop and never
/// waits. The end of the input is no reason to end: there are just no further lines.
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

Q_SIGNALS:
    /// A line was entered; blanks at both ends are removed, empty lines are not reported.
    void entered(const QString& line);

private:
    void readInput();

    QSocketNotifier m_notifier;
    QByteArray m_input; // what was read behind the last line end
};

#endif
