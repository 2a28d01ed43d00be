#include "records/connectionrecords.h"

#include "records/recordfields_p.h"

using namespace records;

RecordGroup records::connectionRecords{"records/connectionrecords.h"};
static RecordGroup& recordGroup = records::connectionRecords;

WZR_RECORD(BLCallVolume, "Volume of a voice call.")
{
    field("nOut", record.nOut, "Level of the loudspeaker (3GPP TS 27.007, +CLVL)");
    field("nIn", record.nIn, "Level of the microphone");
}

WZR_RECORD(BLCallMute, "Which sides of a voice call are muted.")
{
    field("bMuteOut", record.bMuteOut, "Whether the loudspeaker is muted");
    field("bMuteIn", record.bMuteIn, "Whether the microphone is muted (3GPP TS 27.007, +CMUT)");
}

WZR_RECORD(
    TBLCallItemState,
    "One current call; the fields follow the list of current calls of 3GPP TS 27.007 (+CLCC).")
{
    field("nIdx", record.nIdx, "Index of the call, from 1");
    field("nType", record.nType, "Code of the kind of call");
    field("nState", record.nState, "Code of the call's state");
    field("nMode", record.nMode, "Code of the bearer mode: voice, data, fax");
    field("nMpty", record.nMpty, "1 when the call belongs to a conference, else 0");
    field("strNumber", record.strNumber, "Phone number of the other side");
}

WZR_RECORD(TBLCallState, "All current calls.")
{
    field("lstState", record.lstState, "One entry per call");
}

WZR_RECORD(BLNetLacAndCellID, "The cell that serves the device.")
{
    field("nLac", record.nLac, "Location area code, 16 bits (3GPP TS 23.003)");
    field("nCellID", record.nCellID, "Cell identity (3GPP TS 23.003)");
}

WZR_RECORD(BLNetRegState, "How far the device is registered in the network.")
{
    field("nType", record.nType, "Code of the kind of registration");
    field("nState", record.nState, "Code of the registration state (3GPP TS 27.007, +CREG)");
}

WZR_RECORD(BLNetworkSet, "Request to choose a network; the fields follow 3GPP TS 27.007 (+COPS).")
{
    field("nMask", record.nMask, "Bit mask of the fields below that are set");
    field("nMode", record.nMode, "Code of the selection mode: automatic, manual");
    field("nFormat", record.nFormat, "Code of the form in which the operator is named");
    field("strOperator", record.strOperator, "Name or numeric code of the operator");
    field("nAct", record.nAct, "Code of the access technology");
}

WZR_RECORD(BLNetworkListItem, "One network that a search has found (3GPP TS 27.007, +COPS).")
{
    field("mode", record.mode, "Code of the selection mode");
    field("nState", record.nState, "Code of availability: available, current, forbidden");
    field("strLongAlpha", record.strLongAlpha, "Long name of the operator");
    field("strShortAlpha", record.strShortAlpha, "Short name of the operator");
    field("strNumericAlpha", record.strNumericAlpha,
          "MCC and MNC of the operator as digits (3GPP TS 23.003)");
    field("strPnn", record.strPnn, "Network name from the SIM (3GPP TS 31.102, EF PNN)");
    field("nAct", record.nAct, "Code of the access technology");
}

WZR_RECORD(BLNetworkListCnf, "Answer to a network search.")
{
    field("listNetworkItem", record.listNetworkItem, "One entry per network found");
}

WZR_RECORD(BLNetworkInfo, "The network in use, its signal, and roaming.")
{
    field("nMode", record.nMode, "Code of the selection mode (3GPP TS 27.007, +COPS)");
    field("nFormat", record.nFormat, "Code of the form in which the operator is named");
    field("strOperator", record.strOperator, "Name or numeric code of the operator");
    field("strPnn", record.strPnn, "Network name from the SIM (3GPP TS 31.102, EF PNN)");
    field("nAct", record.nAct, "Code of the access technology");
    field("nDisplayMask", record.nDisplayMask, "Bit mask of the names to be shown");
    field("strSpName", record.strSpName, "Name of the service provider (3GPP TS 31.102, EF SPN)");
    field("nRssi", record.nRssi, "Signal strength as reported (3GPP TS 27.007, +CSQ)");
    field("nRoamState", record.nRoamState, "Code of roaming");
    field("nBearer", record.nBearer, "Code of the bearer in use");
    field("nGprsState", record.nGprsState, "Code of the packet service's state");
}

WZR_RECORD(BLPINInfo, "How many attempts are left for PIN and PUK.")
{
    field("nPinCnt", record.nPinCnt, "Attempts left for the PIN");
    field("nPukCnt", record.nPukCnt, "Attempts left for the PUK");
}

WZR_RECORD(BLPinCheckState, "What the SIM asks for, and how many attempts are left.")
{
    field("nState", record.nState, "Code of the PIN check (3GPP TS 27.007, +CPIN)");
    field("nPinCnt", record.nPinCnt, "Attempts left for the PIN");
    field("nPukCnt", record.nPukCnt, "Attempts left for the PUK");
}

WZR_RECORD(BLPINVerifyPukInfo, "Request to unblock the SIM.")
{
    field.secret("strPUK", record.strPUK, "The PUK, 8 digits; a secret");
    field.secret("strNewPin", record.strNewPin, "The PIN to set, 4 to 8 digits; a secret");
}

WZR_RECORD(BLPINChangeInfo, "Request to change the PIN.")
{
    field.secret("strOldPin", record.strOldPin, "The PIN so far, 4 to 8 digits; a secret");
    field.secret("strNewPin", record.strNewPin, "The PIN to set, 4 to 8 digits; a secret");
}

WZR_RECORD(BLPINEnableInfo, "Request to switch the PIN check on or off.")
{
    field("blPinEnable", record.blPinEnable, "Whether the PIN is to be asked for");
    field.secret("strPinCode", record.strPinCode, "The PIN, 4 to 8 digits; a secret");
}

WZR_RECORD(BLLockChangeInfo, "Request to change the code of the device lock.")
{
    field.secret("strOldLockCode", record.strOldLockCode, "The lock code so far; a secret");
    field.secret("strNewLockCode", record.strNewLockCode, "The lock code to set; a secret");
}

WZR_RECORD(BLLockEnableInfo, "Request to switch the device lock on or off.")
{
    field("blLockEnable", record.blLockEnable, "Whether the device is to be locked");
    field.secret("strLockCode", record.strLockCode, "The lock code; a secret");
}

WZR_RECORD(BLSetPDPContext, "A PDP context to define (3GPP TS 27.007, +CGDCONT).")
{
    field("strPdpId", record.strPdpId, "Identifier of the context");
    field("strPdpType", record.strPdpType, "Packet data protocol, for example \"IP\"");
    field("strAPN", record.strAPN, "Access point name (3GPP TS 23.003)");
    field("strDNS", record.strDNS, "Address of the DNS server");
}

WZR_RECORD(BLGetPDPContext, "A PDP context as the device holds it (3GPP TS 27.007, +CGDCONT).")
{
    field("strPdpId", record.strPdpId, "Identifier of the context");
    field("strPdpType", record.strPdpType, "Packet data protocol, for example \"IP\"");
    field("strAPN", record.strAPN, "Access point name (3GPP TS 23.003)");
}

WZR_RECORD(BLProUserNameAndPwd, "Credentials of a connection profile.")
{
    field("strUserName", record.strUserName, "User name");
    field.secret("strPwd", record.strPwd, "Password; a secret");
}

WZR_RECORD(BLConnectState, "State of the data connection.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("nState", record.nState, "Code of the connection's state");
    field("strError", record.strError, "Text of the error, empty without one");
}

WZR_RECORD(BLConnectionDialUp, "Request to dial: the profile, its addresses and credentials.")
{
    field("nConnectMode", record.nConnectMode, "Code of the way to connect");
    field("strDeviceID", record.strDeviceID, "Identifier of the device");
    field("strTechPref", record.strTechPref, "Access technology preferred");
    field("nProfileID", record.nProfileID, "Identifier of the profile");
    field("strPriNBNS", record.strPriNBNS, "Primary NetBIOS name server");
    field("strSecNBNS", record.strSecNBNS, "Secondary NetBIOS name server");
    field("nIpFamilyPref", record.nIpFamilyPref, "Code of the IP family preferred");
    field("strAPN", record.strAPN, "Access point name (3GPP TS 23.003)");
    field("strModemID", record.strModemID, "Identifier of the modem");
    field("strName", record.strName, "Name of the profile");
    field("strNumber", record.strNumber, "Number to dial, for example \"*99#\"");
    field("strUserName", record.strUserName, "User name");
    field.secret("strPassWord", record.strPassWord, "Password; a secret");
    field("blIpAddress", record.blIpAddress, "Whether strIpAddress is used");
    field("strIpAddress", record.strIpAddress, "Fixed IP address");
    field("blDnsServer", record.blDnsServer, "Whether the two fixed DNS servers are used");
    field("strPrimaryDNS", record.strPrimaryDNS, "First DNS server");
    field("strSecondaryDNS", record.strSecondaryDNS, "Second DNS server");
    field("blWinsServer", record.blWinsServer, "Whether the two fixed WINS servers are used");
    field("strPrimaryWins", record.strPrimaryWins, "First WINS server");
    field("strSecondaryWins", record.strSecondaryWins, "Second WINS server");
    field("nAuthProtocol", record.nAuthProtocol, "Code of the authentication protocol");
    field("nIdleDisconnectSeconds", record.nIdleDisconnectSeconds,
          "Seconds without traffic until hanging up");
}

WZR_RECORD(BLConnectionStatistics, "Counters of the data connection. Service and user interface "
                                   "agree on the unit of duration and rates.")
{
    field("dwDuration", record.dwDuration, "How long the connection has lasted");
    field("dwByteTransferred", record.dwByteTransferred, "Bytes in both directions");
    field("dwByteReceived", record.dwByteReceived, "Bytes received");
    field("dwByteSent", record.dwByteSent, "Bytes sent");
    field("dwRateReceived", record.dwRateReceived, "Rate of receiving");
    field("dwRateSent", record.dwRateSent, "Rate of sending");
    field("dwRateMax", record.dwRateMax, "Highest rate");
}

WZR_RECORD(BLGetStatisticsCnf, "Answer to a request for the connection's counters.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("tState", record.tState, "The connection's state");
    field("tInfo", record.tInfo, "The connection's counters");
}

WZR_RECORD(SetECMAutoConnect, "Request about connecting on its own in Ethernet (ECM) mode.")
{
    field("nState", record.nState, "Code of automatic connecting");
    field("bIsCfun", record.bIsCfun, "Flag for the phone functionality (3GPP TS 27.007, +CFUN)");
}

WZR_RECORD(BLEquipmentInfo, "Who made the device, and which device and SIM these are.")
{
    field("strManufacturer", record.strManufacturer, "Manufacturer (3GPP TS 27.007, +CGMI)");
    field("strModel", record.strModel, "Model (3GPP TS 27.007, +CGMM)");
    field("strRevision", record.strRevision, "Version of the firmware (3GPP TS 27.007, +CGMR)");
    field("strSerialNumber", record.strSerialNumber, "Serial number (3GPP TS 27.007, +CGSN)");
    field("strCommercialSerialNumber", record.strCommercialSerialNumber,
          "Serial number under which the device is sold");
    field("strImsi", record.strImsi, "IMSI of the SIM (3GPP TS 23.003)");
    field("strMsisdn", record.strMsisdn, "Own phone number, MSISDN (3GPP TS 23.003)");
    field("strHardwareVersion", record.strHardwareVersion, "Version of the hardware");
    field("strQcn", record.strQcn, "QCN of the device");
}
