#ifndef DEVICESERVICE_GLOBAL_H
#define DEVICESERVICE_GLOBAL_H

#include "wzrframework_export.h"

#include <QString>

#include <memory>

class CDataValue;

/// The state that the plug-ins of a device service share, as one map of values by key, and the
/// table from the modem's error numbers to the codes in "IPCMSG_ERROR_CODE".
///
/// **Threads.** The service's main thread; no locks.
///
/// **Ownership.** Values are copied in and out.
class WZRFRAMEWORK_EXPORT DeviceService_Global
{
public:
    /// The store of this process, made at the first call.
    static DeviceService_Global* instance();
    /// Deletes the store with its data; the error table stays. A later instance() makes a new,
    /// empty one. Does nothing when there is none.
    static void release();

    DeviceService_Global(const DeviceService_Global&) = delete;
    DeviceService_Global& operator=(const DeviceService_Global&) = delete;

    /// Stores a copy of `value`. Returns true.
    bool setGlobalDataByKey(QString key, CDataValue& value);
    /// Copies the value of `key` out. False without any data, with `value` unchanged; false with
    /// a null `value` when the key is absent or holds null.
    bool getGlobalDataByKey(QString key, CDataValue& value);
    /// The ID of a device, from the map from names to IDs that is stored under
    /// "kSYSTEM_DEVICE_ID_MAP"; empty when there is no such map or name.
    QString getDeviceIDByDeviceName(QString deviceName);
    /// Drops all data; the store stays.
    void reset();

    /// Puts the error table into use, for the rest of the process. A second call does nothing.
    void initErrorTable();
    /// The code for a number of the modem's AT command interface: 0 for 0, which is success; -1
    /// before initErrorTable() and for numbers outside 0 to 38.
    static int atError2IpcError(int atError);

private:
    DeviceService_Global();
    ~DeviceService_Global();

    std::unique_ptr<CDataValue> m_data; // null until the first value is stored
};

#endif
