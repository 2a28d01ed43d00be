#include "common/startcount.h"

#include "appglobal/mainappglobal.h"
#include "common/userconfig.h"

namespace {

constexpr char kKey[] = "Starts";

} // namespace

StartCount::StartCount(const QString& group, bool save)
    : m_group(group)
    // Whatever the file holds: a text or a huge number is no count.
    , m_number(qBound(0, CMainAppGlobal::systemMapGet(group, QLatin1String(kKey)).asInt(), 999999) +
               1)
    , m_save(save)
{
}

StartCount::~StartCount()
{
    if (m_save)
        UserConfig::save(m_group, QLatin1String(kKey), CDataValue(m_number));
}
