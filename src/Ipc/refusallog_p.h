#ifndef IPC_REFUSALLOG_P_H
#define IPC_REFUSALLOG_P_H

#include <QObject>
#include <QTimer>

/// Logs connections that a server refuses for one reason. Whoever is refused can come again at
/// once, and must not fill the disk with lines: the first refusal is logged, those of the next 10 s
/// are counted and logged in one line at their end. While they go on, so do the counts.
class RefusalLog : public QObject
{
public:
    explicit RefusalLog(QObject* parent);

    /// `why` and `detail`: the end of the line.
    void note(const char* why, int detail);

private:
    void logCount();

    QTimer m_pause; // runs while refusals are counted
    int m_count = 0;
};

#endif
