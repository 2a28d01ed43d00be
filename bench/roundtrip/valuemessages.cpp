#include "valuemessages.h"

#include <utility>

Asked readRequest(CDataValue& envelope)
{
    CDataValue& data = envelope.mapGet("IPCMSG_USER_DATA");
    Asked asked;
    asked.index = data.mapGet("nIndex").asInt();
    asked.bytes = data.mapGet("nBytes").asInt();
    if (data.mapGet("strNote").asQString().isEmpty())
        fail("no note");
    asked.broadcast = envelope.mapGet("IPCMSG_TYPE").asQString() == QLatin1String(broadcastType);
    return asked;
}

QString answerText(const Asked& asked, CDataValue& request)
{
    CDataValue list(ARRAY_VALUE);
    for (const Message& message : messagesFor(asked.bytes)) {
        CDataValue item(MAP_VALUE);
        item.mapSet("nIndex", CDataValue(message.index), false);
        item.mapSet("strContent", CDataValue(message.text), false);
        item.mapSet("strNumber", CDataValue(message.number), false);
        list.arrayAppend(std::move(item), false);
    }
    CDataValue data(MAP_VALUE);
    data.mapSet("nIndex", CDataValue(asked.index), false);
    data.mapSet("lstMessage", std::move(list), false);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", request.mapGet("IPCMSG_TYPE"), false);
    envelope.mapSet("IPCMSG_ERROR_CODE", CDataValue(0), false);
    envelope.mapSet("IPCMSG_MSG_SENDER", request.mapGet("IPCMSG_MSG_SENDER"), false);
    envelope.mapSet("IPCMSG_RESPONSE_DATA", std::move(data), false);
    envelope.synchJsonData();
    return envelope.parseToQString(FAST_STYLE);
}

Reply readAnswer(CDataValue& envelope)
{
    Reply reply;
    reply.error = envelope.mapGet("IPCMSG_ERROR_CODE").asInt();
    CDataValue& data = envelope.mapGet("IPCMSG_RESPONSE_DATA");
    reply.index = data.mapGet("nIndex").asInt();
    CDataValue& list = data.mapGet("lstMessage");
    const unsigned count = list.arrayCount();
    reply.messages.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        CDataValue& item = list.arrayGet(i);
        reply.messages.push_back({item.mapGet("nIndex").asInt(),
                                  item.mapGet("strNumber").asQString(),
                                  item.mapGet("strContent").asQString()});
    }
    return reply;
}

CDataValue requestData(int index, int bytes)
{
    CDataValue data(MAP_VALUE);
    data.mapSet("nIndex", CDataValue(index), false);
    data.mapSet("nBytes", CDataValue(bytes), false);
    data.mapSet("strNote", CDataValue(requestNote()), false);
    data.synchJsonData();
    return data;
}

QString requestText(const char* type, int index, int bytes)
{
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", CDataValue(type), false);
    envelope.mapSet("IPCMSG_USER_DATA", requestData(index, bytes), false);
    envelope.mapSet("IPCMSG_MSG_SENDER", CDataValue(senderName), false);
    envelope.synchJsonData();
    return envelope.parseToQString(FAST_STYLE);
}
