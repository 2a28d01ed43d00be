#ifndef DEMO_SCRIPT_H
#define DEMO_SCRIPT_H

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <functional>
#include <vector>

/// What is to happen to the modem, line by line, each line when the one before it is done:
///
///     signal 7                     at once
///     after 500 signal 7           500 milliseconds after the line before it
///     once +CMGL message +1 Hello  when the next "+CMGL" was answered
///     # a comment
class Script : public QObject
{
    Q_OBJECT

public:
    /// Lets one thing happen, such as "signal 7".
    using Performer = std::function<void(const QString& line)>;

    /// The error of the first line that cannot be understood, empty when there is none. `words` are
    /// those that may begin what is to happen.
    static QString check(const QStringList& lines, const QStringList& words);

    /// `lines` were checked. Nothing happens before start().
    Script(const QStringList& lines, Performer performer, QObject* parent);
    void start() { next(); }

    /// A line with these commands was answered.
    void answered(const std::vector<QByteArray>& commands);

Q_SIGNALS:
    void ended();

private:
    static QStringList meaningful(const QStringList& lines);
    void next();
    void perform();

    QStringList m_lines;
    Performer m_performer;
    QByteArray m_awaited; // the command that the next line waits for
    bool m_isRunning = false;
};

#endif
