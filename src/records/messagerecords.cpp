#include "records/messagerecords.h"

#include "records/recordfields_p.h"

using namespace records;

RecordGroup records::messageRecords{"records/messagerecords.h"};
static RecordGroup& recordGroup = records::messageRecords;

WZR_RECORD(BLSmsAddress, "A phone number that a message goes to or comes from.")
{
    field("strAddress", record.strAddress, "Phone number (3GPP TS 23.040)");
}

WZR_RECORD(BLSmsSendItemReq, "Request to send one message.")
{
    field("blAddress", record.blAddress, "Whom it goes to: a record, whatever \"bl\" suggests");
    field("strContent", record.strContent, "Text of the message");
}

WZR_RECORD(BLSmsSetScReq, "Request to set the service centre (3GPP TS 27.005, +CSCA).")
{
    field("tSc", record.tSc, "Number of the service centre");
}

WZR_RECORD(BLSmsSetScCnf, "Answer to setting the service centre.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("tSc", record.tSc, "Number of the service centre");
}

WZR_RECORD(BLSmsGetScCnf, "Answer to asking for the service centre.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("tSc", record.tSc, "Number of the service centre");
}

WZR_RECORD(BLSmsValidPeriod, "How long the network tries to deliver a message (3GPP TS 23.040). "
                             "All four are numbers, the flag included.")
{
    field("bAvailable", record.bAvailable, "1 when a period is set, else 0: a number");
    field("bWeek", record.bWeek, "Weeks of the period: a number");
    field("bDay", record.bDay, "Days of the period: a number");
    field("bHour", record.bHour, "Hours of the period: a number");
}

WZR_RECORD(BLSmsSetProfileReq, "Request to set what holds for every message sent.")
{
    field("tValidPeriod", record.tValidPeriod, "How long delivery is tried");
    field("blEnableStatusReport", record.blEnableStatusReport,
          "Whether delivery is reported back (3GPP TS 23.040)");
}

WZR_RECORD(BLSmsStorageState, "How full the message stores are.")
{
    field("nPCUsed", record.nPCUsed, "Messages on the computer");
    field("nPCTotal", record.nPCTotal, "Room for messages on the computer");
    field("nSimUsed", record.nSimUsed, "Messages on the SIM");
    field("nSimTotal", record.nSimTotal, "Room for messages on the SIM");
}

WZR_RECORD(BLSmsProgressBarPos, "How far a long message operation has come.")
{
    field("nCurPos", record.nCurPos, "Steps done");
    field("nTotal", record.nTotal, "Steps in all");
}

WZR_RECORD(BLSmsPlayAlertItem, "What sounds when a message arrives.")
{
    field("blPlayAlert", record.blPlayAlert, "Whether a sound is played");
    field("strSoundFileDir", record.strSoundFileDir, "Path of the sound file");
}

WZR_RECORD(BLSmsGetListReq, "Request for the message list.")
{
    field("blPCOnly", record.blPCOnly, "Whether only messages on the computer are wanted");
    field("blRefreshPCList", record.blRefreshPCList, "Whether the computer's list is read anew");
}

WZR_RECORD(BLSmsListItem, "One message of a list, or one part of a long message.")
{
    field("nPacketType", record.nPacketType, "Code of the kind of part");
    field("nRef", record.nRef, "Reference of the message in its store");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
    field("nTag", record.nTag, "Code of the message's tag");
    field("nType", record.nType, "Code of the kind of message");
    field("nClass", record.nClass, "Message class (3GPP TS 23.038)");
    field("nCompleted", record.nCompleted, "Code of whether all parts are there");
    field("nTotalPacket", record.nTotalPacket, "Parts in all");
    field("nStatusReportStatus", record.nStatusReportStatus,
          "State of the status report (3GPP TS 23.040)");
    field("nCurrentPacket", record.nCurrentPacket, "Number of this part");
    field("nBoxType", record.nBoxType, "Code of the message box");
    field("strAddress", record.strAddress, "Phone number of the other side");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strContent", record.strContent, "Text of the message");
}

WZR_RECORD(BLSmsGetListCnf, "Answer to a request for the message list.")
{
    field("listSmsItem", record.listSmsItem, "One entry per message");
}

WZR_RECORD(BLNewSmsReport, "Report of a message that has arrived.")
{
    field("nPacketType", record.nPacketType, "Code of the kind of part");
    field("tListItem", record.tListItem, "The message");
}

WZR_RECORD(BLSmsGetPcListInfo, "Request for the messages on the computer of one SIM and box.")
{
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
    field("nBoxType", record.nBoxType, "Code of the message box");
}

WZR_RECORD(SMS_TABLE_INFO, "One row of the message table.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("strNumber", record.strNumber, "Phone number of the other side");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strContent", record.strContent, "Text of the message");
    field("nBoxType", record.nBoxType, "Code of the message box");
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
    field("blDeleted", record.blDeleted, "Whether it lies in the deleted box");
    field("blArchived", record.blArchived, "Whether it lies in the archive");
}

WZR_RECORD(BLSmsMessageItem, "A message to several numbers, with the SIM that it belongs to.")
{
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
    field("nRef", record.nRef, "Reference of the message in its store");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
    field("nNumCount", record.nNumCount, "How many numbers it goes to");
    field("nPacketCount", record.nPacketCount, "Parts in all");
    field("vstrNumberList", record.vstrNumberList, "The numbers it goes to");
    field("strContent", record.strContent, "Text of the message");
}

WZR_RECORD(SmsMessageItem, "A message to several numbers.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
    field("nNumCount", record.nNumCount, "How many numbers it goes to");
    field("vstrNumberList", record.vstrNumberList, "The numbers it goes to");
    field("strContent", record.strContent, "Text of the message");
}

WZR_RECORD(SmsMesageSaveItem,
           "A message to be saved, once per number. The record's name is spelt so.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("strImsi", record.strImsi, "IMSI of the SIM (3GPP TS 23.003)");
    field("strNumberGroug", record.strNumberGroug, "The numbers it goes to; the key is spelt so");
    field("strContent", record.strContent, "Text of the message");
}

WZR_RECORD(SmsSaveItemRef, "One saved copy of a message.")
{
    field("nRef", record.nRef, "Reference of the copy in its store");
    field("strNumber", record.strNumber, "Phone number that the copy is for");
}

WZR_RECORD(smsMessageSaveReturnItem, "Answer to saving a message.")
{
    field("vSmsRefAndNumb", record.vSmsRefAndNumb, "One entry per saved copy");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strContent", record.strContent, "Text of the message");
    field("nBoxType", record.nBoxType, "Code of the message box");
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
}

WZR_RECORD(BLSmsNumberRefItem, "One copy of a message that was sent, or was not.")
{
    field("nRef", record.nRef, "Reference of the copy in its store");
    field("strNumber", record.strNumber, "Phone number that the copy is for");
}

WZR_RECORD(SMS_SEND_RESULT_TO_UI, "How the sending of a message went.")
{
    field("vSucceedItem", record.vSucceedItem, "Copies that were sent");
    field("vFailureItem", record.vFailureItem, "Copies that could not be sent");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strContent", record.strContent, "Text of the message");
    field("nBoxType", record.nBoxType, "Code of the message box");
}

WZR_RECORD(BLSmsModifyTagReq, "Request to mark a message as read or unread.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("blUnread", record.blUnread, "1 for unread, 0 for read: a number");
}

WZR_RECORD(BLSmsMoveReq, "One message to be moved or copied.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("blCopy", record.blCopy, "Whether it is copied instead of moved");
    field("nToStoreIn", record.nToStoreIn, "Code of the store that it goes to");
}

WZR_RECORD(BLSmsMoveItems, "Request to move or copy messages.")
{
    field("vSmsMoveItems", record.vSmsMoveItems, "One entry per message");
}

WZR_RECORD(BLMoveSucceedRef, "The two references of a message that was moved.")
{
    field("nNewRef", record.nNewRef, "Reference after the move");
    field("nOldRef", record.nOldRef, "Reference before the move");
}

WZR_RECORD(BLSmsMoveResult, "How the moving of messages went.")
{
    field("vSucceedRef", record.vSucceedRef, "Messages that were moved");
    field("nFailureRef", record.nFailureRef, "References of those that were not: a list");
}

WZR_RECORD(BLSmsOutMoveItem, "One message to be moved to another store with its text.")
{
    field("strAddress", record.strAddress, "Phone number of the other side");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strContent", record.strContent, "Text of the message");
    field("nToStoreIn", record.nToStoreIn, "Code of the store that it goes to");
    field("blSent", record.blSent, "Whether it was sent from here");
    field("blCopy", record.blCopy, "Whether it is copied instead of moved");
    field("nOldRef", record.nOldRef, "Reference before the move");
    field("blSimRecycle", record.blSimRecycle, "Flag for recycling on the SIM");
}

WZR_RECORD(BLSmsOutMoveItemList, "Request to move messages with their text.")
{
    field("vSmsOutMoveItems", record.vSmsOutMoveItems, "One entry per message");
}

WZR_RECORD(BLSmsRecoverItem, "One message to be taken back.")
{
    field("nFromBoxType", record.nFromBoxType, "Code of the box that it comes from");
    field("nRef", record.nRef, "Reference of the message in its store");
    field("blArchive", record.blArchive, "Whether it goes to the archive");
}

WZR_RECORD(BLVSmsRecoverItems, "Request to take messages back.")
{
    field("nCurBoxType", record.nCurBoxType, "Code of the box that is shown");
    field("vRecoverItems", record.vRecoverItems, "One entry per message");
}

WZR_RECORD(BLSmsArchiveItemList, "Request to archive messages by reference.")
{
    field("blInbox", record.blInbox, "Whether they lie in the inbox");
    field("vRef", record.vRef, "References of the messages");
}

WZR_RECORD(BLDeleteItemInfo, "One message to be deleted or archived, with its text.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
    field("nBoxtype", record.nBoxtype, "Code of the message box; the key is spelt so");
    field("nMsgType", record.nMsgType, "Code of the kind of message");
    field("blFromArchive", record.blFromArchive, "Whether it lies in the archive");
    field("strDateTime", record.strDateTime, "Date and time as text");
    field("strNumber", record.strNumber, "Phone number of the other side");
    field("strContent", record.strContent, "Text of the message");
    field("blSent", record.blSent, "Whether it was sent from here");
}

WZR_RECORD(BLArchiveReq, "Request to archive messages.")
{
    field("DeleteItemInfoList", record.DeleteItemInfoList, "One entry per message");
}

WZR_RECORD(BLDeleteSmsReq, "Request to delete messages.")
{
    field("blFromDeletedBox", record.blFromDeletedBox, "Whether they lie in the deleted box");
    field("blFromArchiveBox", record.blFromArchiveBox, "Whether they lie in the archive");
    field("DeleteItemInfoList", record.DeleteItemInfoList, "One entry per message");
}

WZR_RECORD(BLSmsDeleteReq, "Request to delete messages by reference.")
{
    field("vRef", record.vRef, "References of the messages");
    field("nBoxType", record.nBoxType, "Code of the message box");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
}

WZR_RECORD(BLSmsDeleteCnf, "Answer to deleting one message.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("nRef", record.nRef, "Reference of the message in its store");
}

WZR_RECORD(BLSmsDeleteReturnItem, "How the deleting by reference went.")
{
    field("vSuccessRef", record.vSuccessRef, "References of deleted messages");
    field("vFailureRef", record.vFailureRef, "References of messages not deleted");
}

WZR_RECORD(BLDeleteSuccessItem, "One message that was deleted.")
{
    field("nSotreIn", record.nSotreIn, "Code of the store; the key is spelt so");
    field("nOldRef", record.nOldRef, "Reference before deleting");
    field("nNewRef", record.nNewRef, "Reference after deleting");
}

WZR_RECORD(BLDeleteFailureItem, "One message that was not deleted.")
{
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.005, +CPMS)");
    field("nRef", record.nRef, "Reference of the message in its store");
}

WZR_RECORD(BLDeleteSmsCnf, "Answer to a request to delete messages.")
{
    field("DeleteSuccessList", record.DeleteSuccessList, "Messages that were deleted");
    field("DeleteFailureList", record.DeleteFailureList, "Messages that were not");
}

WZR_RECORD(BLSmsDelDeletedBoxItem, "One message to be removed from the deleted box for good.")
{
    field("nRef", record.nRef, "Reference of the message in its store");
    field("nFromBoxType", record.nFromBoxType, "Code of the box that it comes from");
}

WZR_RECORD(BLSmsDelDeletedBoxList, "Request to remove messages from the deleted box for good.")
{
    field("vtrDeleteBox", record.vtrDeleteBox, "One entry per message");
}

WZR_RECORD(BLUssdSendCmd, "USSD text to be sent (3GPP TS 22.090; TS 27.007, +CUSD).")
{
    field("nOpCode", record.nOpCode, "Code of the operation");
    field("strUssdCmd", record.strUssdCmd, "USSD text, for example \"*100#\"");
    field("strClientID", record.strClientID, "Identifier of the asking client");
    field("nTimeOutSec", record.nTimeOutSec, "Seconds to wait for the network");
}

WZR_RECORD(BLUssdReport, "USSD text from the network (3GPP TS 22.090; TS 27.007, +CUSD).")
{
    field("nReportType", record.nReportType, "Code of the kind of report");
    field("strContent", record.strContent, "USSD text");
    field("strClientID", record.strClientID, "Identifier of the asking client");
}
