#ifndef DEMO_ANSWER_H
#define DEMO_ANSWER_H

#include "deviceservice_global.h"

/// What a handler returns: `record` becomes the response, and the modem's error number the
/// "IPCMSG_ERROR_CODE".
template<class Record>
int answer(int atError, Record& record, CDataValue& response)
{
    GetDataValueFromStruct(record, response);
    return DeviceService_Global::atError2IpcError(atError);
}

/// The same with a record that counts on success only.
template<class Record>
int answerOnSuccess(int atError, Record& record, CDataValue& response)
{
    if (atError == 0)
        GetDataValueFromStruct(record, response);
    return DeviceService_Global::atError2IpcError(atError);
}

#endif
