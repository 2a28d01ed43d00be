#ifndef RECORDS_DIAGNOSTICRECORDS_H
#define RECORDS_DIAGNOSTICRECORDS_H

#include "records/recorddeclaration.h"

#include <QList>
#include <QString>

// Diagnosis of device, SIM and network; cancelling a message.
//
// Codes are carried as the device service and the diagnosis report them.

/// The whole state of device, SIM and network at one moment.
struct BLDiagInfo
{
    QString strManufacturer;           ///< Manufacturer (3GPP TS 27.007, +CGMI)
    QString strModel;                  ///< Model (3GPP TS 27.007, +CGMM)
    QString strRevision;               ///< Version of the firmware (3GPP TS 27.007, +CGMR)
    QString strSerialNumber;           ///< Serial number (3GPP TS 27.007, +CGSN)
    QString strCommercialSerialNumber; ///< Serial number under which the device is sold
    QString strImsi;                   ///< IMSI of the SIM (3GPP TS 23.003)
    QString strMsisdn;                 ///< Own phone number, MSISDN (3GPP TS 23.003)
    QString strHardwareVersion;        ///< Version of the hardware
    QString strModemName;              ///< Name of the modem
    int nMode = 0;                     ///< Code of the selection mode (3GPP TS 27.007, +COPS)
    int nFormat = 0;                   ///< Code of the form in which the operator is named
    QString strOperator;               ///< Name or numeric code of the operator
    int nAct = 0;                      ///< Code of the access technology
    QString strSpName;                 ///< Name of the service provider (3GPP TS 31.102, EF SPN)
    QString strPnn;                    ///< Network name from the SIM (3GPP TS 31.102, EF PNN)
    int nRssi = 0;                     ///< Signal strength as reported (3GPP TS 27.007, +CSQ)
    int nDBRssi = 0;                   ///< Signal strength in dB
    QString strApplicationPort;        ///< Name of the application port
    int nRoamState = 0;                ///< Code of roaming
    int nBearer = 0;                   ///< Code of the bearer in use
    int nPinState = 0;                 ///< Code of the PIN check (3GPP TS 27.007, +CPIN)
    int nGprsRegState = 0;             ///< Code of packet registration (3GPP TS 27.007, +CGREG)
    int nNormalRegState = 0;           ///< Code of circuit registration (3GPP TS 27.007, +CREG)
    int nPsAttachState = 0;            ///< Code of packet attachment (3GPP TS 27.007, +CGATT)
};
WZR_DECLARE_RECORD(BLDiagInfo)

/// One finding of the diagnosis.
struct GLDiagInfo
{
    int nGroup = 0;                ///< Code of the group that it belongs to
    QString strErr;                ///< What is wrong
    QString strSolution;           ///< What helps
    QList<QString> strDiscription; ///< Lines that describe it; the key is spelt so
};
WZR_DECLARE_RECORD(GLDiagInfo)

/// Findings of the diagnosis.
struct GLDiagInfoList
{
    QList<GLDiagInfo> listDiagInfo; ///< One entry per finding
};
WZR_DECLARE_RECORD(GLDiagInfoList)

/// Request to give up a message that is under way.
struct BLCancelMessage
{
    QString msgId; ///< Identifier of the message
};
WZR_DECLARE_RECORD(BLCancelMessage)

#endif
