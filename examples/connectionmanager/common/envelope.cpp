#include "common/envelope.h"

namespace {

const QLatin1String kEndMarker("__END__");

void copyMember(const char* key, CDataValue& from, CDataValue& to)
{
    if (from.mapIsMember(key))
        to.mapSet(key, from.mapGet(key), false);
}

} // namespace

CDataValue Envelope::answer(CDataValue& request, int errorCode, const CDataValue& response)
{
    CDataValue envelope(MAP_VALUE);
    copyMember("IPCMSG_TYPE", request, envelope);
    envelope.mapSet("IPCMSG_ERROR_CODE", errorCode, false);
    envelope.mapSet("IPCMSG_RESPONSE_DATA", response, false);
    copyMember("IPCMSG_USER_DATA", request, envelope);
    copyMember("IPCMSG_MSG_SENDER", request, envelope);
    return envelope;
}

CDataValue Envelope::report(const QString& messageID, int errorCode, const CDataValue& data)
{
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("IPCMSG_TYPE", messageID, false);
    envelope.mapSet("IPCMSG_ERROR_CODE", errorCode, false);
    envelope.mapSet("IPCMSG_RESPONSE_DATA", data, false);
    return envelope;
}

bool Envelope::read(const QString& text, CDataValue& envelope)
{
    return CDataValue::parseToDataValue(text, envelope) && envelope.isObject() &&
           envelope.mapIsMember("IPCMSG_TYPE") && envelope.mapGet("IPCMSG_TYPE").isString();
}

QString Envelope::text(const CDataValue& envelope)
{
    const QString escaped = QStringLiteral("\\u005f");
    QString text = envelope.parseToQString(FAST_STYLE);
    // End markers can overlap: "__END__END__".
    for (auto at = text.indexOf(kEndMarker); at >= 0; at = text.indexOf(kEndMarker, at))
        text.replace(at, 1, escaped);
    return text;
}

QString Envelope::frame(const QString& text)
{
    QString shown = text;
    shown.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return QLatin1String("__BEGIN__") + shown + kEndMarker;
}
