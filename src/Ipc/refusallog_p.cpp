#include "Ipc/refusallog_p.h"

#include "LogTask/logline_p.h"

#include <utility>

namespace {

constexpr char kLogSource[] = "Ipc/ipcserver";
constexpr char kFunction[] = "mayEnter";

constexpr int kPauseMs = 10000;

} // namespace

RefusalLog::RefusalLog(QObject* parent)
    : QObject(parent)
{
    m_pause.setParent(this); // it moves to another thread with this object
    m_pause.setObjectName(QStringLiteral("refusals"));
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &RefusalLog::logCount);
}

void RefusalLog::note(const char* why, int detail)
{
    if (m_pause.isActive()) {
        ++m_count;
        return;
    }
    logLine(kLogSource, kFunction, why, detail);
    m_pause.start(kPauseMs);
}

void RefusalLog::logCount()
{
    if (m_count == 0)
        return;
    logLine(kLogSource, kFunction, "further connections refused:", std::exchange(m_count, 0));
    m_pause.start(kPauseMs);
}
