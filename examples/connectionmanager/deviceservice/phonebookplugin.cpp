#include "deviceservice/phonebookplugin.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "common/envelope.h"
#include "deviceservice/answer.h"
#include "deviceservice/modem.h"

PhonebookPlugin::PhonebookPlugin(Modem& modem)
    : m_modem(modem)
{
    registerMessage(DemoMessage::PbList, "list", 0, this);
    registerMessage(DemoMessage::PbAdd, "add", 0, this);
    registerMessage(DemoMessage::PbStorage, "storage", 0, this);
}

int PhonebookPlugin::list(CDataValue& request, CDataValue& response)
{
    // Nothing is stored on the computer here.
    BLPbInitListCnf phonebook;
    if (recordFrom<BLPbInitListReq>(request).blPCOnly)
        return answer(AtError::None, phonebook, response);
    return answerOnSuccess(m_modem.phonebook(phonebook), phonebook, response);
}

// The error code is that of the last entry that was refused; the answer counts both kinds.
int PhonebookPlugin::add(CDataValue& request, CDataValue& response)
{
    const auto addition = recordFrom<BLPBNewItemReq>(request);
    BLPbAddItemCnf counts;
    int lastError = addition.newItemList.isEmpty() ? AtError::IncorrectParameters : AtError::None;
    for (const BLPbItem& entry : addition.newItemList) {
        const int error = entry.contents.isEmpty() ? AtError::IncorrectParameters
                                                   : m_modem.addPhonebookEntry(entry);
        if (error == AtError::None) {
            ++counts.successItemCount;
        } else {
            ++counts.failureItemCount;
            lastError = error;
        }
    }
    return answer(lastError, counts, response);
}

int PhonebookPlugin::storage(CDataValue&, CDataValue& response)
{
    BLPbGetStorageInfoCnf state;
    return answerOnSuccess(m_modem.phonebookStorage(state), state, response);
}
