#ifndef DEMO_STARTCOUNT_H
#define DEMO_STARTCOUNT_H

#include <QString>

/// A value that a process keeps for its user: how often it was started, the setting "Starts" in
/// the process's own group of the user's configuration.
///
///     const ProcessLife life(logFile);
///     const StartCount starts("DeviceService", true);
///     Console::say(QString("start %1").arg(starts.number()));
///
/// Saved at the end. All processes of an installation share one file: what the others have saved
/// meanwhile in their groups stays.
///
/// Made after ProcessLife, which reads the configuration, and destroyed before it. A file that
/// cannot be written is logged; the count stays as it was.
class StartCount
{
public:
    /// `save`: whether the file is to be written; without, the process leaves no trace in it.
    StartCount(const QString& group, bool save);
    ~StartCount();
    StartCount(const StartCount&) = delete;
    StartCount& operator=(const StartCount&) = delete;

    /// 1 for the first start.
    int number() const { return m_number; }

private:
    QString m_group;
    int m_number;
    bool m_save;
};

#endif
