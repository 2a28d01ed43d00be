#ifndef RECORDS_MESSAGERECORDS_H
#define RECORDS_MESSAGERECORDS_H

#include "records/recorddeclaration.h"

#include <QString>
#include <QVector>

#include <list>

// Short messages and USSD.
//
// A message is named by its reference, its store and its box. The codes of stores, boxes, tags,
// parts and operations are those of the message service; they are carried as they are.

/// A phone number that a message goes to or comes from.
struct BLSmsAddress
{
    QString strAddress; ///< Phone number (3GPP TS 23.040)
};
WZR_DECLARE_RECORD(BLSmsAddress)

/// Request to send one message.
struct BLSmsSendItemReq
{
    BLSmsAddress blAddress; ///< Whom it goes to: a record, whatever "bl" suggests
    QString strContent;     ///< Text of the message
};
WZR_DECLARE_RECORD(BLSmsSendItemReq)

/// Request to set the service centre (3GPP TS 27.005, +CSCA).
struct BLSmsSetScReq
{
    BLSmsAddress tSc; ///< Number of the service centre
};
WZR_DECLARE_RECORD(BLSmsSetScReq)

/// Answer to setting the service centre.
struct BLSmsSetScCnf
{
    int nErr = 0;     ///< Result code, 0 for success
    BLSmsAddress tSc; ///< Number of the service centre
};
WZR_DECLARE_RECORD(BLSmsSetScCnf)

/// Answer to asking for the service centre.
struct BLSmsGetScCnf
{
    int nErr = 0;     ///< Result code, 0 for success
    BLSmsAddress tSc; ///< Number of the service centre
};
WZR_DECLARE_RECORD(BLSmsGetScCnf)

/// How long the network tries to deliver a message (3GPP TS 23.040). All four are numbers, the flag
/// included.
struct BLSmsValidPeriod
{
    int bAvailable = 0; ///< 1 when a period is set, else 0: a number
    int bWeek = 0;      ///< Weeks of the period: a number
    int bDay = 0;       ///< Days of the period: a number
    int bHour = 0;      ///< Hours of the period: a number
};
WZR_DECLARE_RECORD(BLSmsValidPeriod)

/// Request to set what holds for every message sent.
struct BLSmsSetProfileReq
{
    BLSmsValidPeriod tValidPeriod;     ///< How long delivery is tried
    bool blEnableStatusReport = false; ///< Whether delivery is reported back (3GPP TS 23.040)
};
WZR_DECLARE_RECORD(BLSmsSetProfileReq)

/// How full the message stores are.
struct BLSmsStorageState
{
    int nPCUsed = 0;   ///< Messages on the computer
    int nPCTotal = 0;  ///< Room for messages on the computer
    int nSimUsed = 0;  ///< Messages on the SIM
    int nSimTotal = 0; ///< Room for messages on the SIM
};
WZR_DECLARE_RECORD(BLSmsStorageState)

/// How far a long message operation has come.
struct BLSmsProgressBarPos
{
    int nCurPos = 0; ///< Steps done
    int nTotal = 0;  ///< Steps in all
};
WZR_DECLARE_RECORD(BLSmsProgressBarPos)

/// What sounds when a message arrives.
struct BLSmsPlayAlertItem
{
    bool blPlayAlert = false; ///< Whether a sound is played
    QString strSoundFileDir;  ///< Path of the sound file
};
WZR_DECLARE_RECORD(BLSmsPlayAlertItem)

/// Request for the message list.
struct BLSmsGetListReq
{
    bool blPCOnly = false;        ///< Whether only messages on the computer are wanted
    bool blRefreshPCList = false; ///< Whether the computer's list is read anew
};
WZR_DECLARE_RECORD(BLSmsGetListReq)

/// One message of a list, or one part of a long message.
struct BLSmsListItem
{
    int nPacketType = 0;         ///< Code of the kind of part
    int nRef = 0;                ///< Reference of the message in its store
    int nStoreIn = 0;            ///< Code of the store (3GPP TS 27.005, +CPMS)
    int nTag = 0;                ///< Code of the message's tag
    int nType = 0;               ///< Code of the kind of message
    int nClass = 0;              ///< Message class (3GPP TS 23.038)
    int nCompleted = 0;          ///< Code of whether all parts are there
    int nTotalPacket = 0;        ///< Parts in all
    int nStatusReportStatus = 0; ///< State of the status report (3GPP TS 23.040)
    int nCurrentPacket = 0;      ///< Number of this part
    int nBoxType = 0;            ///< Code of the message box
    QString strAddress;          ///< Phone number of the other side
    QString strDateTime;         ///< Date and time as text
    QString strContent;          ///< Text of the message
};
WZR_DECLARE_RECORD(BLSmsListItem)

/// Answer to a request for the message list.
struct BLSmsGetListCnf
{
    std::list<BLSmsListItem> listSmsItem; ///< One entry per message
};
WZR_DECLARE_RECORD(BLSmsGetListCnf)

/// Report of a message that has arrived.
struct BLNewSmsReport
{
    int nPacketType = 0;     ///< Code of the kind of part
    BLSmsListItem tListItem; ///< The message
};
WZR_DECLARE_RECORD(BLNewSmsReport)

/// Request for the messages on the computer of one SIM and box.
struct BLSmsGetPcListInfo
{
    QString strIMSI;  ///< IMSI of the SIM (3GPP TS 23.003)
    int nBoxType = 0; ///< Code of the message box
};
WZR_DECLARE_RECORD(BLSmsGetPcListInfo)

/// One row of the message table.
struct SMS_TABLE_INFO
{
    int nRef = 0;            ///< Reference of the message in its store
    QString strNumber;       ///< Phone number of the other side
    QString strDateTime;     ///< Date and time as text
    QString strContent;      ///< Text of the message
    int nBoxType = 0;        ///< Code of the message box
    QString strIMSI;         ///< IMSI of the SIM (3GPP TS 23.003)
    bool blDeleted = false;  ///< Whether it lies in the deleted box
    bool blArchived = false; ///< Whether it lies in the archive
};
WZR_DECLARE_RECORD(SMS_TABLE_INFO)

/// A message to several numbers, with the SIM that it belongs to.
struct BLSmsMessageItem
{
    QString strIMSI;                   ///< IMSI of the SIM (3GPP TS 23.003)
    int nRef = 0;                      ///< Reference of the message in its store
    int nStoreIn = 0;                  ///< Code of the store (3GPP TS 27.005, +CPMS)
    int nNumCount = 0;                 ///< How many numbers it goes to
    int nPacketCount = 0;              ///< Parts in all
    std::list<QString> vstrNumberList; ///< The numbers it goes to
    QString strContent;                ///< Text of the message
};
WZR_DECLARE_RECORD(BLSmsMessageItem)

/// A message to several numbers.
struct SmsMessageItem
{
    int nRef = 0;                    ///< Reference of the message in its store
    int nStoreIn = 0;                ///< Code of the store (3GPP TS 27.005, +CPMS)
    int nNumCount = 0;               ///< How many numbers it goes to
    QVector<QString> vstrNumberList; ///< The numbers it goes to
    QString strContent;              ///< Text of the message
};
WZR_DECLARE_RECORD(SmsMessageItem)

/// A message to be saved, once per number. The record's name is spelt so.
struct SmsMesageSaveItem
{
    int nRef = 0;                    ///< Reference of the message in its store
    QString strImsi;                 ///< IMSI of the SIM (3GPP TS 23.003)
    QVector<QString> strNumberGroug; ///< The numbers it goes to; the key is spelt so
    QString strContent;              ///< Text of the message
};
WZR_DECLARE_RECORD(SmsMesageSaveItem)

/// One saved copy of a message.
struct SmsSaveItemRef
{
    int nRef = 0;      ///< Reference of the copy in its store
    QString strNumber; ///< Phone number that the copy is for
};
WZR_DECLARE_RECORD(SmsSaveItemRef)

/// Answer to saving a message.
struct smsMessageSaveReturnItem
{
    QVector<SmsSaveItemRef> vSmsRefAndNumb; ///< One entry per saved copy
    QString strDateTime;                    ///< Date and time as text
    QString strContent;                     ///< Text of the message
    int nBoxType = 0;                       ///< Code of the message box
    QString strIMSI;                        ///< IMSI of the SIM (3GPP TS 23.003)
};
WZR_DECLARE_RECORD(smsMessageSaveReturnItem)

/// One copy of a message that was sent, or was not.
struct BLSmsNumberRefItem
{
    int nRef = 0;      ///< Reference of the copy in its store
    QString strNumber; ///< Phone number that the copy is for
};
WZR_DECLARE_RECORD(BLSmsNumberRefItem)

/// How the sending of a message went.
struct SMS_SEND_RESULT_TO_UI
{
    QVector<BLSmsNumberRefItem> vSucceedItem; ///< Copies that were sent
    QVector<BLSmsNumberRefItem> vFailureItem; ///< Copies that could not be sent
    QString strDateTime;                      ///< Date and time as text
    QString strContent;                       ///< Text of the message
    int nBoxType = 0;                         ///< Code of the message box
};
WZR_DECLARE_RECORD(SMS_SEND_RESULT_TO_UI)

/// Request to mark a message as read or unread.
struct BLSmsModifyTagReq
{
    int nRef = 0;     ///< Reference of the message in its store
    int blUnread = 0; ///< 1 for unread, 0 for read: a number
};
WZR_DECLARE_RECORD(BLSmsModifyTagReq)

/// One message to be moved or copied.
struct BLSmsMoveReq
{
    int nRef = 0;        ///< Reference of the message in its store
    bool blCopy = false; ///< Whether it is copied instead of moved
    int nToStoreIn = 0;  ///< Code of the store that it goes to
};
WZR_DECLARE_RECORD(BLSmsMoveReq)

/// Request to move or copy messages.
struct BLSmsMoveItems
{
    QVector<BLSmsMoveReq> vSmsMoveItems; ///< One entry per message
};
WZR_DECLARE_RECORD(BLSmsMoveItems)

/// The two references of a message that was moved.
struct BLMoveSucceedRef
{
    int nNewRef = 0; ///< Reference after the move
    int nOldRef = 0; ///< Reference before the move
};
WZR_DECLARE_RECORD(BLMoveSucceedRef)

/// How the moving of messages went.
struct BLSmsMoveResult
{
    QVector<BLMoveSucceedRef> vSucceedRef; ///< Messages that were moved
    QVector<int> nFailureRef;              ///< References of those that were not: a list
};
WZR_DECLARE_RECORD(BLSmsMoveResult)

/// One message to be moved to another store with its text.
struct BLSmsOutMoveItem
{
    QString strAddress;        ///< Phone number of the other side
    QString strDateTime;       ///< Date and time as text
    QString strContent;        ///< Text of the message
    int nToStoreIn = 0;        ///< Code of the store that it goes to
    bool blSent = false;       ///< Whether it was sent from here
    bool blCopy = false;       ///< Whether it is copied instead of moved
    int nOldRef = 0;           ///< Reference before the move
    bool blSimRecycle = false; ///< Flag for recycling on the SIM
};
WZR_DECLARE_RECORD(BLSmsOutMoveItem)

/// Request to move messages with their text.
struct BLSmsOutMoveItemList
{
    QVector<BLSmsOutMoveItem> vSmsOutMoveItems; ///< One entry per message
};
WZR_DECLARE_RECORD(BLSmsOutMoveItemList)

/// One message to be taken back.
struct BLSmsRecoverItem
{
    int nFromBoxType = 0;   ///< Code of the box that it comes from
    int nRef = 0;           ///< Reference of the message in its store
    bool blArchive = false; ///< Whether it goes to the archive
};
WZR_DECLARE_RECORD(BLSmsRecoverItem)

/// Request to take messages back.
struct BLVSmsRecoverItems
{
    int nCurBoxType = 0;                     ///< Code of the box that is shown
    QVector<BLSmsRecoverItem> vRecoverItems; ///< One entry per message
};
WZR_DECLARE_RECORD(BLVSmsRecoverItems)

/// Request to archive messages by reference.
struct BLSmsArchiveItemList
{
    bool blInbox = false; ///< Whether they lie in the inbox
    QVector<int> vRef;    ///< References of the messages
};
WZR_DECLARE_RECORD(BLSmsArchiveItemList)

/// One message to be deleted or archived, with its text.
struct BLDeleteItemInfo
{
    int nRef = 0;               ///< Reference of the message in its store
    int nStoreIn = 0;           ///< Code of the store (3GPP TS 27.005, +CPMS)
    int nBoxtype = 0;           ///< Code of the message box; the key is spelt so
    int nMsgType = 0;           ///< Code of the kind of message
    bool blFromArchive = false; ///< Whether it lies in the archive
    QString strDateTime;        ///< Date and time as text
    QString strNumber;          ///< Phone number of the other side
    QString strContent;         ///< Text of the message
    bool blSent = false;        ///< Whether it was sent from here
};
WZR_DECLARE_RECORD(BLDeleteItemInfo)

/// Request to archive messages.
struct BLArchiveReq
{
    QVector<BLDeleteItemInfo> DeleteItemInfoList; ///< One entry per message
};
WZR_DECLARE_RECORD(BLArchiveReq)

/// Request to delete messages.
struct BLDeleteSmsReq
{
    bool blFromDeletedBox = false;                ///< Whether they lie in the deleted box
    bool blFromArchiveBox = false;                ///< Whether they lie in the archive
    QVector<BLDeleteItemInfo> DeleteItemInfoList; ///< One entry per message
};
WZR_DECLARE_RECORD(BLDeleteSmsReq)

/// Request to delete messages by reference.
struct BLSmsDeleteReq
{
    QVector<int> vRef; ///< References of the messages
    int nBoxType = 0;  ///< Code of the message box
    int nStoreIn = 0;  ///< Code of the store (3GPP TS 27.005, +CPMS)
};
WZR_DECLARE_RECORD(BLSmsDeleteReq)

/// Answer to deleting one message.
struct BLSmsDeleteCnf
{
    int nErr = 0; ///< Result code, 0 for success
    int nRef = 0; ///< Reference of the message in its store
};
WZR_DECLARE_RECORD(BLSmsDeleteCnf)

/// How the deleting by reference went.
struct BLSmsDeleteReturnItem
{
    QVector<int> vSuccessRef; ///< References of deleted messages
    QVector<int> vFailureRef; ///< References of messages not deleted
};
WZR_DECLARE_RECORD(BLSmsDeleteReturnItem)

/// One message that was deleted.
struct BLDeleteSuccessItem
{
    int nSotreIn = 0; ///< Code of the store; the key is spelt so
    int nOldRef = 0;  ///< Reference before deleting
    int nNewRef = 0;  ///< Reference after deleting
};
WZR_DECLARE_RECORD(BLDeleteSuccessItem)

/// One message that was not deleted.
struct BLDeleteFailureItem
{
    int nStoreIn = 0; ///< Code of the store (3GPP TS 27.005, +CPMS)
    int nRef = 0;     ///< Reference of the message in its store
};
WZR_DECLARE_RECORD(BLDeleteFailureItem)

/// Answer to a request to delete messages.
struct BLDeleteSmsCnf
{
    QVector<BLDeleteSuccessItem> DeleteSuccessList; ///< Messages that were deleted
    QVector<BLDeleteFailureItem> DeleteFailureList; ///< Messages that were not
};
WZR_DECLARE_RECORD(BLDeleteSmsCnf)

/// One message to be removed from the deleted box for good.
struct BLSmsDelDeletedBoxItem
{
    int nRef = 0;         ///< Reference of the message in its store
    int nFromBoxType = 0; ///< Code of the box that it comes from
};
WZR_DECLARE_RECORD(BLSmsDelDeletedBoxItem)

/// Request to remove messages from the deleted box for good.
struct BLSmsDelDeletedBoxList
{
    QVector<BLSmsDelDeletedBoxItem> vtrDeleteBox; ///< One entry per message
};
WZR_DECLARE_RECORD(BLSmsDelDeletedBoxList)

/// USSD text to be sent (3GPP TS 22.090; TS 27.007, +CUSD).
struct BLUssdSendCmd
{
    int nOpCode = 0;     ///< Code of the operation
    QString strUssdCmd;  ///< USSD text, for example "*100#"
    QString strClientID; ///< Identifier of the asking client
    int nTimeOutSec = 0; ///< Seconds to wait for the network
};
WZR_DECLARE_RECORD(BLUssdSendCmd)

/// USSD text from the network (3GPP TS 22.090; TS 27.007, +CUSD).
struct BLUssdReport
{
    int nReportType = 0; ///< Code of the kind of report
    QString strContent;  ///< USSD text
    QString strClientID; ///< Identifier of the asking client
};
WZR_DECLARE_RECORD(BLUssdReport)

#endif
