#include "deviceservice_global.h"

#include "DataValue/datavalue.h"
#include "LogTask/logline_p.h"

#include <array>
#include <cstddef>
#include <utility>

namespace {

constexpr char kLogSource[] = "deviceservice_global";

DeviceService_Global* g_instance = nullptr;
bool g_errorTableInUse = false;

// The codes by the modem's error number. The numbers 4 to 37 are shifted by five; the others follow
// no rule, which is meant. No number gives the codes 4 to 7: with 6, a client answers itself when a
// request could not be sent.
constexpr std::array<int, 39> kErrorTable = {0,  1,  8,  2,  9,  10, 11, 12, 13, 14, 15, 16, 17,
                                             18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30,
                                             31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 3};

} // namespace

DeviceService_Global::DeviceService_Global() = default;
DeviceService_Global::~DeviceService_Global() = default;

DeviceService_Global* DeviceService_Global::instance()
{
    if (!g_instance)
        g_instance = new DeviceService_Global;
    return g_instance;
}

void DeviceService_Global::release()
{
    delete std::exchange(g_instance, nullptr);
}

bool DeviceService_Global::setGlobalDataByKey(QString key, CDataValue& value)
{
    if (!m_data)
        m_data = std::make_unique<CDataValue>();
    m_data->mapSet(key, value, true);
    return true;
}

bool DeviceService_Global::getGlobalDataByKey(QString key, CDataValue& value)
{
    if (!m_data)
        return false;
    value = m_data->mapGet(key);
    return !value.isNull();
}

QString DeviceService_Global::getDeviceIDByDeviceName(QString deviceName)
{
    if (!m_data)
        return QString();
    CDataValue& deviceIDs = m_data->mapGet("kSYSTEM_DEVICE_ID_MAP");
    if (g_bLog) {
        logLine(kLogSource, "getDeviceIDByDeviceName",
                logExcerpt(m_data->parseToQString(FAST_STYLE)));
    }
    if (deviceIDs.isNull())
        return QString();
    return deviceIDs.mapGet(deviceName).asQString();
}

void DeviceService_Global::reset()
{
    m_data.reset();
}

void DeviceService_Global::initErrorTable()
{
    g_errorTableInUse = true;
}

int DeviceService_Global::atError2IpcError(int atError)
{
    if (!g_errorTableInUse || atError < 0 || atError >= int(kErrorTable.size()))
        return -1;
    return kErrorTable[std::size_t(atError)];
}
