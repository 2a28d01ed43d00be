#include "records/phonebookrecords.h"

#include "records/recordfields_p.h"

using namespace records;

RecordGroup records::phonebookRecords{"records/phonebookrecords.h"};
static RecordGroup& recordGroup = records::phonebookRecords;

WZR_RECORD(BLPbItem, "One phonebook entry. Its fields are open: the services agree on their names.")
{
    field("nStore", record.nStore, "Code of the store (3GPP TS 27.007, +CPBS)");
    field("nIndex", record.nIndex, "Index of the entry in its store");
    field("contents", record.contents, "Texts of the entry by field name");
}

WZR_RECORD(BLPbInitListReq, "Request for the phonebook.")
{
    field("blPCOnly", record.blPCOnly, "Whether only entries on the computer are wanted");
    field("blRefreshPCList", record.blRefreshPCList, "Whether the computer's list is read anew");
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
}

WZR_RECORD(BLPbInitListCnf, "Answer to a request for the phonebook.")
{
    field("listPBItem", record.listPBItem, "The entries");
}

WZR_RECORD(PBGetListMessageCnf, "The phonebook of one store.")
{
    field("nStoreType", record.nStoreType, "Code of the store (3GPP TS 27.007, +CPBS)");
    field("pbItemList", record.pbItemList, "The entries");
}

WZR_RECORD(BLPBNewItemReq, "Request to add entries.")
{
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
    field("newItemList", record.newItemList, "The entries to add");
}

WZR_RECORD(BLPbAddSingleItemRes, "How the adding of one entry went.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("pbItem", record.pbItem, "The entry");
}

WZR_RECORD(BLPbAddItemCnf, "Answer to a request to add entries.")
{
    field("successItemCount", record.successItemCount, "Entries added");
    field("failureItemCount", record.failureItemCount, "Entries not added");
}

WZR_RECORD(BLPbUpdateItemReq, "Request to change one entry.")
{
    field("tItem", record.tItem, "The entry as it is to be");
}

WZR_RECORD(BLPbDeleteItem, "One entry to be deleted.")
{
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.007, +CPBS)");
    field("nIndex", record.nIndex, "Index of the entry in its store");
}

WZR_RECORD(BLPbDeleteItemReq, "Request to delete entries.")
{
    field("deleteItemList", record.deleteItemList, "The entries to delete");
}

WZR_RECORD(BLPbDeleteSingleItemRes, "How the deleting of one entry went.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("nStoreIn", record.nStoreIn, "Code of the store (3GPP TS 27.007, +CPBS)");
    field("nIndex", record.nIndex, "Index of the entry in its store");
}

WZR_RECORD(BLPbDeleteItemCnf, "Answer to a request to delete entries.")
{
    field("successList", record.successList, "Entries deleted");
    field("failureList", record.failureList, "Entries not deleted");
}

WZR_RECORD(BLPbMoveItemReq, "Request to move entries from one store to another.")
{
    field("fromStoreType", record.fromStoreType, "Code of the store that they come from");
    field("toStoreType", record.toStoreType, "Code of the store that they go to");
    field("strIMSI", record.strIMSI, "IMSI of the SIM (3GPP TS 23.003)");
    field("ItemList", record.ItemList, "The entries to move");
}

WZR_RECORD(BLPbMoveSingleItemRes, "How the moving of one entry went.")
{
    field("nErr", record.nErr, "Result code, 0 for success");
    field("fromStoreType", record.fromStoreType, "Code of the store that it came from");
    field("toStoreType", record.toStoreType, "Code of the store that it went to");
    field("oldIndex", record.oldIndex, "Index before the move");
    field("newIndex", record.newIndex, "Index after the move");
}

WZR_RECORD(BLPbMoveItemCnf, "Answer to a request to move entries.")
{
    field("successItemCount", record.successItemCount, "Entries moved");
    field("failureItemCount", record.failureItemCount, "Entries not moved");
}

WZR_RECORD(BLPbGetStorageInfoCnf, "How full the phonebook stores are.")
{
    field("nSimTotal", record.nSimTotal, "Room for entries on the SIM");
    field("nSimUsed", record.nSimUsed, "Entries on the SIM");
    field("nMeTotal", record.nMeTotal, "Room for entries on the device");
    field("nMeUsed", record.nMeUsed, "Entries on the device");
    field("nPCTotal", record.nPCTotal, "Room for entries on the computer");
    field("nPCUsed", record.nPCUsed, "Entries on the computer");
}

WZR_RECORD(BLPbGetConstraintCnf,
           "How long the texts of an entry may be, in characters (3GPP TS 27.007, +CPBR).")
{
    field("dwMask", record.dwMask, "Bit mask of the limits below that are set");
    field("nMeMaxNumberLen", record.nMeMaxNumberLen, "Longest number on the device");
    field("nMeMaxNameLen", record.nMeMaxNameLen, "Longest name on the device");
    field("nSimMaxNumberLen", record.nSimMaxNumberLen, "Longest number on the SIM");
    field("nSimMaxNameLen", record.nSimMaxNameLen, "Longest name on the SIM");
    field("nSimGroupLen", record.nSimGroupLen, "Longest group name on the SIM");
    field("nSimSecondTextLen", record.nSimSecondTextLen, "Longest second name on the SIM");
    field("nSimMaxEmailLen", record.nSimMaxEmailLen, "Longest e-mail address on the SIM");
}

WZR_RECORD(PBItemExternal, "A contact handed from one window to another.")
{
    field("m_name", record.m_name, "Name of the contact");
    field("m_number", record.m_number, "Phone number of the contact");
}

WZR_RECORD(PBSendItemVoiceCallCnf, "The contact chosen for a voice call.")
{
    field("parentWidget", record.parentWidget,
          "Address of the asking widget, in this process only");
    field("pbItem", record.pbItem, "The contact");
}

WZR_RECORD(PBSendListMessageCnf, "The contacts chosen for a message.")
{
    field("isMultiSelect", record.isMultiSelect, "Whether several were chosen");
    field("parentWidget", record.parentWidget,
          "Address of the asking widget, in this process only");
    field("pbList", record.pbList, "The contacts");
}

WZR_RECORD(PBFindMessageCnf, "What a search in the phonebook has found.")
{
    field("key", record.key, "What was searched for");
    field("results", record.results, "Texts found");
}

WZR_RECORD(SmsSaveNumberToPB, "A number from a message, to be saved in the phonebook.")
{
    field("nMainID", record.nMainID, "Main identifier of the request");
    field("strNumber", record.strNumber, "Phone number");
}
