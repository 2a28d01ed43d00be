#ifndef DEMO_RECORDTEXT_H
#define DEMO_RECORDTEXT_H

#include "records/records.h"

#include <QString>

/// Records as a person reads them: one line each, or several separated by line feeds.
QString textOf(const BLEquipmentInfo& info);
QString textOf(const BLNetworkInfo& info);
QString textOf(const BLNetRegState& state);
QString textOf(const BLNetLacAndCellID& cell);
QString textOf(const BLNetworkListCnf& networks);
QString textOf(const BLPinCheckState& state);
QString textOf(const BLPINInfo& attempts);
QString textOf(const BLConnectState& state);
QString textOf(const BLGetStatisticsCnf& statistics);
QString textOf(const BLSmsListItem& message);
QString textOf(const BLSmsGetListCnf& messages);
QString textOf(const BLNewSmsReport& report);
QString textOf(const BLSmsStorageState& state);
/// A bar: "[##########..........] 4 of 8".
QString textOf(const BLSmsProgressBarPos& position);
QString textOf(const BLSmsDeleteReturnItem& result);
QString textOf(const BLPbInitListCnf& phonebook);
QString textOf(const BLPbAddItemCnf& counts);
QString textOf(const BLPbGetStorageInfoCnf& state);
QString textOf(const BLUssdReport& report);
QString textOf(const BLDiagInfo& info);
QString textOf(const GLDiagInfoList& findings);

/// An "IPCMSG_ERROR_CODE" in words, with its number.
QString errorText(int code);

#endif
