#ifndef TESTS_DATAVALUE_VALUESAMPLES_H
#define TESTS_DATAVALUE_VALUESAMPLES_H

#include "DataValue/datavalue.h"

#include <list>
#include <vector>

/// The value of a JSON text that the test knows to be right.
inline CDataValue parsed(const QByteArray& text)
{
    CDataValue value;
    if (!CDataValue::parseToDataValue(text.constData(), value))
        qFatal("The test's JSON text is wrong: %s", text.constData());
    return value;
}

/// The compact text, line feed included.
inline QString fast(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE);
}

/// The compact texts in the order of the list.
inline QString fast(const std::list<CDataValue>& values)
{
    QString text;
    for (const CDataValue& value : values)
        text += fast(value);
    return text;
}

/// Something for addresses to point at.
inline const int pointee = 0;
inline const void* const pointer = &pointee;

struct NamedValue
{
    const char* name;
    CDataValue value;
};

/// One value of every kind, in the order of the kinds' numbers.
inline std::vector<NamedValue> oneOfEveryKind()
{
    return {{"null", CDataValue(NULL_VALUE)},
            {"int", CDataValue(-7)},
            {"uint", CDataValue(7u)},
            {"real", CDataValue(7.5)},
            {"string", CDataValue("seven")},
            {"bool", CDataValue(true)},
            {"array", CDataValue(ARRAY_VALUE)},
            {"map", CDataValue(MAP_VALUE)},
            {"address", CDataValue(pointer)},
            {"address array", CDataValue(ADDRESS_ARRAY_VALUE)},
            {"address map", CDataValue(ADDRESS_MAP_VALUE)}};
}

#endif
