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

/// An "IPCMSG_ERROR_CODE" in words, with its number.
QString errorText(int code);

#endif
