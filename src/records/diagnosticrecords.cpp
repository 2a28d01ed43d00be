#include "records/diagnosticrecords.h"

#include "records/recordfields_p.h"

using namespace records;

RecordGroup records::diagnosticRecords{"records/diagnosticrecords.h"};
static RecordGroup& recordGroup = records::diagnosticRecords;

WZR_RECORD(BLDiagInfo, "The whole state of device, SIM and network at one moment.")
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
    field("strModemName", record.strModemName, "Name of the modem");
    field("nMode", record.nMode, "Code of the selection mode (3GPP TS 27.007, +COPS)");
    field("nFormat", record.nFormat, "Code of the form in which the operator is named");
    field("strOperator", record.strOperator, "Name or numeric code of the operator");
    field("nAct", record.nAct, "Code of the access technology");
    field("strSpName", record.strSpName, "Name of the service provider (3GPP TS 31.102, EF SPN)");
    field("strPnn", record.strPnn, "Network name from the SIM (3GPP TS 31.102, EF PNN)");
    field("nRssi", record.nRssi, "Signal strength as reported (3GPP TS 27.007, +CSQ)");
    field("nDBRssi", record.nDBRssi, "Signal strength in dB");
    field("strApplicationPort", record.strApplicationPort, "Name of the application port");
    field("nRoamState", record.nRoamState, "Code of roaming");
    field("nBearer", record.nBearer, "Code of the bearer in use");
    field("nPinState", record.nPinState, "Code of the PIN check (3GPP TS 27.007, +CPIN)");
    field("nGprsRegState", record.nGprsRegState,
          "Code of packet registration (3GPP TS 27.007, +CGREG)");
    field("nNormalRegState", record.nNormalRegState,
          "Code of circuit registration (3GPP TS 27.007, +CREG)");
    field("nPsAttachState", record.nPsAttachState,
          "Code of packet attachment (3GPP TS 27.007, +CGATT)");
}

WZR_RECORD(GLDiagInfo, "One finding of the diagnosis.")
{
    field("nGroup", record.nGroup, "Code of the group that it belongs to");
    field("strErr", record.strErr, "What is wrong");
    field("strSolution", record.strSolution, "What helps");
    field("strDiscription", record.strDiscription, "Lines that describe it; the key is spelt so");
}

WZR_RECORD(GLDiagInfoList, "Findings of the diagnosis.")
{
    field("listDiagInfo", record.listDiagInfo, "One entry per finding");
}

WZR_RECORD(BLCancelMessage, "Request to give up a message that is under way.")
{
    field("msgId", record.msgId, "Identifier of the message");
}
