#ifndef DATAVALUE_JSON_JSONBRIDGE_P_H
#define DATAVALUE_JSON_JSONBRIDGE_P_H

#include "DataValue/datavalue.h"

#include <json/value.h>

/// From values to JsonCpp's trees, which the XML form is written from; JsonText::fromJson() is the
/// way back. No walk recurses, but JsonCpp destroys its trees by recursion: test the depth first.
namespace JsonBridge {

/// Whether what the text of the value shows has at most that many levels, scalars included.
bool nestsAtMost(const CDataValue& value, int levels);

/// What the text of the value shows; kinds map one to one, addresses become null.
Json::Value toJson(const CDataValue& value);

} // namespace JsonBridge

#endif
