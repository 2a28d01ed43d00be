#ifndef TESTS_RECORDS_RECORDTEXTS_H
#define TESTS_RECORDS_RECORDTEXTS_H

#include "DataValue/datavalue.h"

#include <QByteArray>

// Records from JSON texts and to them, and what the log says of fields that are not there.

inline constexpr char kNoInt[] =
    "asInt The value type is not int value, NULL_VALUE, return int(0)!";
inline constexpr char kNoBool[] =
    "asBool The value type is not bool value, NULL_VALUE, return bool(false)!";
inline constexpr char kNoText[] =
    "asQString The value type is not utf8 string, NULL_VALUE, return QString()!";

inline CDataValue parsed(const char* json)
{
    CDataValue value;
    if (!CDataValue::parseToDataValue(json, value))
        qFatal("no JSON: %s", json);
    return value;
}

template<class R>
R readFrom(const char* json)
{
    CDataValue data = parsed(json);
    R record;
    GetStructFromDataValue(data, record);
    return record;
}

template<class R>
QByteArray textOf(R record)
{
    CDataValue data;
    GetDataValueFromStruct(record, data);
    return data.parseToQString(FAST_STYLE).toUtf8();
}

#endif
