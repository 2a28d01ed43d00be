#ifndef RECORDS_CONNECTIONRECORDS_H
#define RECORDS_CONNECTIONRECORDS_H

#include "records/recorddeclaration.h"

#include <QString>

#include <list>

// Voice calls, network, PIN and lock, data connection and the identity of the device.
//
// Codes (modes, states, formats, access technologies) are carried as the device service reports
// them. PINs, PUKs, lock codes and passwords travel as plain text; the debug output hides them.

/// Volume of a voice call.
struct BLCallVolume
{
    int nOut = 0; ///< Level of the loudspeaker (3GPP TS 27.007, +CLVL)
    int nIn = 0;  ///< Level of the microphone
};
WZR_DECLARE_RECORD(BLCallVolume)

/// Which sides of a voice call are muted.
struct BLCallMute
{
    bool bMuteOut = false; ///< Whether the loudspeaker is muted
    bool bMuteIn = false;  ///< Whether the microphone is muted (3GPP TS 27.007, +CMUT)
};
WZR_DECLARE_RECORD(BLCallMute)

/// One current call; the fields follow the list of current calls of 3GPP TS 27.007 (+CLCC).
struct TBLCallItemState
{
    int nIdx = 0;      ///< Index of the call, from 1
    int nType = 0;     ///< Code of the kind of call
    int nState = 0;    ///< Code of the call's state
    int nMode = 0;     ///< Code of the bearer mode: voice, data, fax
    int nMpty = 0;     ///< 1 when the call belongs to a conference, else 0
    QString strNumber; ///< Phone number of the other side
};
WZR_DECLARE_RECORD(TBLCallItemState)

/// All current calls.
struct TBLCallState
{
    std::list<TBLCallItemState> lstState; ///< One entry per call
};
WZR_DECLARE_RECORD(TBLCallState)

/// The cell that serves the device.
struct BLNetLacAndCellID
{
    int nLac = 0;    ///< Location area code, 16 bits (3GPP TS 23.003)
    int nCellID = 0; ///< Cell identity (3GPP TS 23.003)
};
WZR_DECLARE_RECORD(BLNetLacAndCellID)

/// How far the device is registered in the network.
struct BLNetRegState
{
    int nType = 0;  ///< Code of the kind of registration
    int nState = 0; ///< Code of the registration state (3GPP TS 27.007, +CREG)
};
WZR_DECLARE_RECORD(BLNetRegState)

/// Request to choose a network; the fields follow 3GPP TS 27.007 (+COPS).
struct BLNetworkSet
{
    int nMask = 0;       ///< Bit mask of the fields below that are set
    int nMode = 0;       ///< Code of the selection mode: automatic, manual
    int nFormat = 0;     ///< Code of the form in which the operator is named
    QString strOperator; ///< Name or numeric code of the operator
    int nAct = 0;        ///< Code of the access technology
};
WZR_DECLARE_RECORD(BLNetworkSet)

/// One network that a search has found (3GPP TS 27.007, +COPS).
struct BLNetworkListItem
{
    int mode = 0;            ///< Code of the selection mode
    int nState = 0;          ///< Code of availability: available, current, forbidden
    QString strLongAlpha;    ///< Long name of the operator
    QString strShortAlpha;   ///< Short name of the operator
    QString strNumericAlpha; ///< MCC and MNC of the operator as digits (3GPP TS 23.003)
    QString strPnn;          ///< Network name from the SIM (3GPP TS 31.102, EF PNN)
    int nAct = 0;            ///< Code of the access technology
};
WZR_DECLARE_RECORD(BLNetworkListItem)

/// Answer to a network search.
struct BLNetworkListCnf
{
    std::list<BLNetworkListItem> listNetworkItem; ///< One entry per network found
};
WZR_DECLARE_RECORD(BLNetworkListCnf)

/// The network in use, its signal, and roaming.
struct BLNetworkInfo
{
    int nMode = 0;        ///< Code of the selection mode (3GPP TS 27.007, +COPS)
    int nFormat = 0;      ///< Code of the form in which the operator is named
    QString strOperator;  ///< Name or numeric code of the operator
    QString strPnn;       ///< Network name from the SIM (3GPP TS 31.102, EF PNN)
    int nAct = 0;         ///< Code of the access technology
    int nDisplayMask = 0; ///< Bit mask of the names to be shown
    QString strSpName;    ///< Name of the service provider (3GPP TS 31.102, EF SPN)
    int nRssi = 0;        ///< Signal strength as reported (3GPP TS 27.007, +CSQ)
    int nRoamState = 0;   ///< Code of roaming
    int nBearer = 0;      ///< Code of the bearer in use
    int nGprsState = 0;   ///< Code of the packet service's state
};
WZR_DECLARE_RECORD(BLNetworkInfo)

/// How many attempts are left for PIN and PUK.
struct BLPINInfo
{
    int nPinCnt = 0; ///< Attempts left for the PIN
    int nPukCnt = 0; ///< Attempts left for the PUK
};
WZR_DECLARE_RECORD(BLPINInfo)

/// What the SIM asks for, and how many attempts are left.
struct BLPinCheckState
{
    int nState = 0;  ///< Code of the PIN check (3GPP TS 27.007, +CPIN)
    int nPinCnt = 0; ///< Attempts left for the PIN
    int nPukCnt = 0; ///< Attempts left for the PUK
};
WZR_DECLARE_RECORD(BLPinCheckState)

/// Request to unblock the SIM.
struct BLPINVerifyPukInfo
{
    QString strPUK;    ///< The PUK, 8 digits; a secret
    QString strNewPin; ///< The PIN to set, 4 to 8 digits; a secret
};
WZR_DECLARE_RECORD(BLPINVerifyPukInfo)

/// Request to change the PIN.
struct BLPINChangeInfo
{
    QString strOldPin; ///< The PIN so far, 4 to 8 digits; a secret
    QString strNewPin; ///< The PIN to set, 4 to 8 digits; a secret
};
WZR_DECLARE_RECORD(BLPINChangeInfo)

/// Request to switch the PIN check on or off.
struct BLPINEnableInfo
{
    bool blPinEnable = false; ///< Whether the PIN is to be asked for
    QString strPinCode;       ///< The PIN, 4 to 8 digits; a secret
};
WZR_DECLARE_RECORD(BLPINEnableInfo)

/// Request to change the code of the device lock.
struct BLLockChangeInfo
{
    QString strOldLockCode; ///< The lock code so far; a secret
    QString strNewLockCode; ///< The lock code to set; a secret
};
WZR_DECLARE_RECORD(BLLockChangeInfo)

/// Request to switch the device lock on or off.
struct BLLockEnableInfo
{
    bool blLockEnable = false; ///< Whether the device is to be locked
    QString strLockCode;       ///< The lock code; a secret
};
WZR_DECLARE_RECORD(BLLockEnableInfo)

/// A PDP context to define (3GPP TS 27.007, +CGDCONT).
struct BLSetPDPContext
{
    QString strPdpId;   ///< Identifier of the context
    QString strPdpType; ///< Packet data protocol, for example "IP"
    QString strAPN;     ///< Access point name (3GPP TS 23.003)
    QString strDNS;     ///< Address of the DNS server
};
WZR_DECLARE_RECORD(BLSetPDPContext)

/// A PDP context as the device holds it (3GPP TS 27.007, +CGDCONT).
struct BLGetPDPContext
{
    QString strPdpId;   ///< Identifier of the context
    QString strPdpType; ///< Packet data protocol, for example "IP"
    QString strAPN;     ///< Access point name (3GPP TS 23.003)
};
WZR_DECLARE_RECORD(BLGetPDPContext)

/// Credentials of a connection profile.
struct BLProUserNameAndPwd
{
    QString strUserName; ///< User name
    QString strPwd;      ///< Password; a secret
};
WZR_DECLARE_RECORD(BLProUserNameAndPwd)

/// State of the data connection.
struct BLConnectState
{
    int nErr = 0;     ///< Result code, 0 for success
    int nState = 0;   ///< Code of the connection's state
    QString strError; ///< Text of the error, empty without one
};
WZR_DECLARE_RECORD(BLConnectState)

/// Request to dial: the profile, its addresses and credentials.
struct BLConnectionDialUp
{
    int nConnectMode = 0;           ///< Code of the way to connect
    QString strDeviceID;            ///< Identifier of the device
    QString strTechPref;            ///< Access technology preferred
    int nProfileID = 0;             ///< Identifier of the profile
    QString strPriNBNS;             ///< Primary NetBIOS name server
    QString strSecNBNS;             ///< Secondary NetBIOS name server
    int nIpFamilyPref = 0;          ///< Code of the IP family preferred
    QString strAPN;                 ///< Access point name (3GPP TS 23.003)
    QString strModemID;             ///< Identifier of the modem
    QString strName;                ///< Name of the profile
    QString strNumber;              ///< Number to dial, for example "*99#"
    QString strUserName;            ///< User name
    QString strPassWord;            ///< Password; a secret
    bool blIpAddress = false;       ///< Whether strIpAddress is used
    QString strIpAddress;           ///< Fixed IP address
    bool blDnsServer = false;       ///< Whether the two fixed DNS servers are used
    QString strPrimaryDNS;          ///< First DNS server
    QString strSecondaryDNS;        ///< Second DNS server
    bool blWinsServer = false;      ///< Whether the two fixed WINS servers are used
    QString strPrimaryWins;         ///< First WINS server
    QString strSecondaryWins;       ///< Second WINS server
    int nAuthProtocol = 0;          ///< Code of the authentication protocol
    int nIdleDisconnectSeconds = 0; ///< Seconds without traffic until hanging up
};
WZR_DECLARE_RECORD(BLConnectionDialUp)

/// Counters of the data connection. Service and user interface agree on the unit of duration and
/// rates.
struct BLConnectionStatistics
{
    long long dwDuration = 0;        ///< How long the connection has lasted
    long long dwByteTransferred = 0; ///< Bytes in both directions
    long long dwByteReceived = 0;    ///< Bytes received
    long long dwByteSent = 0;        ///< Bytes sent
    long long dwRateReceived = 0;    ///< Rate of receiving
    long long dwRateSent = 0;        ///< Rate of sending
    long long dwRateMax = 0;         ///< Highest rate
};
WZR_DECLARE_RECORD(BLConnectionStatistics)

/// Answer to a request for the connection's counters.
struct BLGetStatisticsCnf
{
    int nErr = 0;                 ///< Result code, 0 for success
    BLConnectState tState;        ///< The connection's state
    BLConnectionStatistics tInfo; ///< The connection's counters
};
WZR_DECLARE_RECORD(BLGetStatisticsCnf)

/// Request about connecting on its own in Ethernet (ECM) mode.
struct SetECMAutoConnect
{
    int nState = 0;       ///< Code of automatic connecting
    bool bIsCfun = false; ///< Flag for the phone functionality (3GPP TS 27.007, +CFUN)
};
WZR_DECLARE_RECORD(SetECMAutoConnect)

/// Who made the device, and which device and SIM these are.
struct BLEquipmentInfo
{
    QString strManufacturer;           ///< Manufacturer (3GPP TS 27.007, +CGMI)
    QString strModel;                  ///< Model (3GPP TS 27.007, +CGMM)
    QString strRevision;               ///< Version of the firmware (3GPP TS 27.007, +CGMR)
    QString strSerialNumber;           ///< Serial number (3GPP TS 27.007, +CGSN)
    QString strCommercialSerialNumber; ///< Serial number under which the device is sold
    QString strImsi;                   ///< IMSI of the SIM (3GPP TS 23.003)
    QString strMsisdn;                 ///< Own phone number, MSISDN (3GPP TS 23.003)
    QString strHardwareVersion;        ///< Version of the hardware
    QString strQcn;                    ///< QCN of the device
};
WZR_DECLARE_RECORD(BLEquipmentInfo)

#endif
