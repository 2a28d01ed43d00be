#ifndef RECORDS_PHONEBOOKRECORDS_H
#define RECORDS_PHONEBOOKRECORDS_H

#include "records/recorddeclaration.h"

#include <QHash>
#include <QList>
#include <QString>

// The phonebook.
//
// Codes of stores are those of the phonebook service; they are carried as they are.

/// One phonebook entry. Its fields are open: the services agree on their names.
struct BLPbItem
{
    int nStore = 0;                   ///< Code of the store (3GPP TS 27.007, +CPBS)
    int nIndex = 0;                   ///< Index of the entry in its store
    QHash<QString, QString> contents; ///< Texts of the entry by field name
};
WZR_DECLARE_RECORD(BLPbItem)

/// Request for the phonebook.
struct BLPbInitListReq
{
    bool blPCOnly = false;        ///< Whether only entries on the computer are wanted
    bool blRefreshPCList = false; ///< Whether the computer's list is read anew
    QString strIMSI;              ///< IMSI of the SIM (3GPP TS 23.003)
};
WZR_DECLARE_RECORD(BLPbInitListReq)

/// Answer to a request for the phonebook.
struct BLPbInitListCnf
{
    QList<BLPbItem> listPBItem; ///< The entries
};
WZR_DECLARE_RECORD(BLPbInitListCnf)

/// The phonebook of one store.
struct PBGetListMessageCnf
{
    int nStoreType = 0;         ///< Code of the store (3GPP TS 27.007, +CPBS)
    QList<BLPbItem> pbItemList; ///< The entries
};
WZR_DECLARE_RECORD(PBGetListMessageCnf)

/// Request to add entries.
struct BLPBNewItemReq
{
    QString strIMSI;             ///< IMSI of the SIM (3GPP TS 23.003)
    QList<BLPbItem> newItemList; ///< The entries to add
};
WZR_DECLARE_RECORD(BLPBNewItemReq)

/// How the adding of one entry went.
struct BLPbAddSingleItemRes
{
    int nErr = 0;    ///< Result code, 0 for success
    BLPbItem pbItem; ///< The entry
};
WZR_DECLARE_RECORD(BLPbAddSingleItemRes)

/// Answer to a request to add entries.
struct BLPbAddItemCnf
{
    int successItemCount = 0; ///< Entries added
    int failureItemCount = 0; ///< Entries not added
};
WZR_DECLARE_RECORD(BLPbAddItemCnf)

/// Request to change one entry.
struct BLPbUpdateItemReq
{
    BLPbItem tItem; ///< The entry as it is to be
};
WZR_DECLARE_RECORD(BLPbUpdateItemReq)

/// One entry to be deleted.
struct BLPbDeleteItem
{
    int nStoreIn = 0; ///< Code of the store (3GPP TS 27.007, +CPBS)
    int nIndex = 0;   ///< Index of the entry in its store
};
WZR_DECLARE_RECORD(BLPbDeleteItem)

/// Request to delete entries.
struct BLPbDeleteItemReq
{
    QList<BLPbDeleteItem> deleteItemList; ///< The entries to delete
};
WZR_DECLARE_RECORD(BLPbDeleteItemReq)

/// How the deleting of one entry went.
struct BLPbDeleteSingleItemRes
{
    int nErr = 0;     ///< Result code, 0 for success
    int nStoreIn = 0; ///< Code of the store (3GPP TS 27.007, +CPBS)
    int nIndex = 0;   ///< Index of the entry in its store
};
WZR_DECLARE_RECORD(BLPbDeleteSingleItemRes)

/// Answer to a request to delete entries.
struct BLPbDeleteItemCnf
{
    QList<BLPbDeleteSingleItemRes> successList; ///< Entries deleted
    QList<BLPbDeleteSingleItemRes> failureList; ///< Entries not deleted
};
WZR_DECLARE_RECORD(BLPbDeleteItemCnf)

/// Request to move entries from one store to another.
struct BLPbMoveItemReq
{
    int fromStoreType = 0;    ///< Code of the store that they come from
    int toStoreType = 0;      ///< Code of the store that they go to
    QString strIMSI;          ///< IMSI of the SIM (3GPP TS 23.003)
    QList<BLPbItem> ItemList; ///< The entries to move
};
WZR_DECLARE_RECORD(BLPbMoveItemReq)

/// How the moving of one entry went.
struct BLPbMoveSingleItemRes
{
    int nErr = 0;          ///< Result code, 0 for success
    int fromStoreType = 0; ///< Code of the store that it came from
    int toStoreType = 0;   ///< Code of the store that it went to
    int oldIndex = 0;      ///< Index before the move
    int newIndex = 0;      ///< Index after the move
};
WZR_DECLARE_RECORD(BLPbMoveSingleItemRes)

/// Answer to a request to move entries.
struct BLPbMoveItemCnf
{
    int successItemCount = 0; ///< Entries moved
    int failureItemCount = 0; ///< Entries not moved
};
WZR_DECLARE_RECORD(BLPbMoveItemCnf)

/// How full the phonebook stores are.
struct BLPbGetStorageInfoCnf
{
    int nSimTotal = 0; ///< Room for entries on the SIM
    int nSimUsed = 0;  ///< Entries on the SIM
    int nMeTotal = 0;  ///< Room for entries on the device
    int nMeUsed = 0;   ///< Entries on the device
    int nPCTotal = 0;  ///< Room for entries on the computer
    int nPCUsed = 0;   ///< Entries on the computer
};
WZR_DECLARE_RECORD(BLPbGetStorageInfoCnf)

/// How long the texts of an entry may be, in characters (3GPP TS 27.007, +CPBR).
struct BLPbGetConstraintCnf
{
    unsigned long dwMask = 0;  ///< Bit mask of the limits below that are set
    int nMeMaxNumberLen = 0;   ///< Longest number on the device
    int nMeMaxNameLen = 0;     ///< Longest name on the device
    int nSimMaxNumberLen = 0;  ///< Longest number on the SIM
    int nSimMaxNameLen = 0;    ///< Longest name on the SIM
    int nSimGroupLen = 0;      ///< Longest group name on the SIM
    int nSimSecondTextLen = 0; ///< Longest second name on the SIM
    int nSimMaxEmailLen = 0;   ///< Longest e-mail address on the SIM
};
WZR_DECLARE_RECORD(BLPbGetConstraintCnf)

/// A contact handed from one window to another.
struct PBItemExternal
{
    QString m_name;   ///< Name of the contact
    QString m_number; ///< Phone number of the contact
};
WZR_DECLARE_RECORD(PBItemExternal)

/// The contact chosen for a voice call.
struct PBSendItemVoiceCallCnf
{
    unsigned long parentWidget = 0; ///< Address of the asking widget, in this process only
    PBItemExternal pbItem;          ///< The contact
};
WZR_DECLARE_RECORD(PBSendItemVoiceCallCnf)

/// The contacts chosen for a message.
struct PBSendListMessageCnf
{
    bool isMultiSelect = false;     ///< Whether several were chosen
    unsigned long parentWidget = 0; ///< Address of the asking widget, in this process only
    QList<PBItemExternal> pbList;   ///< The contacts
};
WZR_DECLARE_RECORD(PBSendListMessageCnf)

/// What a search in the phonebook has found.
struct PBFindMessageCnf
{
    QString key;            ///< What was searched for
    QList<QString> results; ///< Texts found
};
WZR_DECLARE_RECORD(PBFindMessageCnf)

/// A number from a message, to be saved in the phonebook.
struct SmsSaveNumberToPB
{
    unsigned long nMainID = 0; ///< Main identifier of the request
    QString strNumber;         ///< Phone number
};
WZR_DECLARE_RECORD(SmsSaveNumberToPB)

#endif
