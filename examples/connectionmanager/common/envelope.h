#ifndef DEMO_ENVELOPE_H
#define DEMO_ENVELOPE_H

#include "DataValue/datavalue.h"

#include <QString>

/// The envelopes that the serving processes send. The library's IPCClient builds those of
/// requests; those of answers and reports are the server's own work.
namespace Envelope {

/// The answer to `request`. It repeats the request's identifier, "IPCMSG_USER_DATA" and
/// "IPCMSG_MSG_SENDER", by which the asking module recognises it.
CDataValue answer(CDataValue& request, int errorCode, const CDataValue& response);

/// A report that nobody asked for; `data` may be null.
CDataValue report(const QString& messageID, int errorCode, const CDataValue& data);

/// Reads `text` into `envelope`. False when it is no map with a text under "IPCMSG_TYPE".
bool read(const QString& text, CDataValue& envelope);

/// The envelope as it is sent: JSON on one line. An end marker inside a text would end the message
/// there, so a character of it is written as an escape, which every reader of JSON undoes.
QString text(const CDataValue& envelope);

/// The message as it stands on the wire, between its markers, on one line for people to read: the
/// line feed at the end of the JSON text is shown as "\n".
QString frame(const QString& text);

} // namespace Envelope

/// A fresh record, read from `data`.
template<class Record>
Record recordFrom(CDataValue& data)
{
    Record record;
    GetStructFromDataValue(data, record);
    return record;
}

/// `record` as a value.
template<class Record>
CDataValue valueOf(Record record)
{
    CDataValue data;
    GetDataValueFromStruct(record, data);
    return data;
}

#endif
