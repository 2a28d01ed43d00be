#ifndef TESTS_DATAVALUE_JSONJUDGE_H
#define TESTS_DATAVALUE_JSONJUDGE_H

#include "referencemodel.h"

#include <QString>

#include <string>

/// What is wrong with the value of the text; empty when nothing is.
inline QString difference(const CDataValue& value, const Json::Value& expected)
{
    for (const ENUM_STYLE style : {FAST_STYLE, STYLED_STYLE}) {
        const QString should = QString::fromStdString(modelText(expected, style));
        const QString is = value.parseToQString(style);
        if (is != should)
            return "is\n" + is + "\nshould be\n" + should;
        CDataValue again;
        if (!CDataValue::parseToDataValue(is, again))
            return "its own text is refused: " + is;
        if (again.type() != value.type() && value.type() != REAL_VALUE)
            return "its own text reads back as another kind: " + is;
        // Keys of broken UTF-8 may become one on their way through a QString.
        if (!is.contains(QChar::ReplacementCharacter) && again.getSize() != value.getSize())
            return "its own text reads back with another size: " + is;
    }
    return QString();
}

/// Reads the text in both forms and compares with JsonCpp's reader and the rule for numbers.
inline QString check(const std::string& text, bool* accepted = nullptr)
{
    const QString wide = QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    for (const bool asBytes : {true, false}) {
        Json::Value expected;
        const bool valid =
            modelReadJson(asBytes ? std::string(text.c_str()) : wide.toStdString(), &expected);
        CDataValue value("before");
        const bool parsed = asBytes ? CDataValue::parseToDataValue(text.c_str(), value)
                                    : CDataValue::parseToDataValue(wide, value);
        if (parsed != valid)
            return parsed ? "is accepted" : "is refused";
        if (!parsed && value.asQString() != QLatin1String("before"))
            return "is refused, but the value was changed";
        const QString wrong = parsed ? difference(value, expected) : QString();
        if (!wrong.isEmpty())
            return wrong;
        if (accepted)
            *accepted = parsed;
    }
    return QString();
}

#endif
