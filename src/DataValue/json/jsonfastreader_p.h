#ifndef DATAVALUE_JSON_JSONFASTREADER_P_H
#define DATAVALUE_JSON_JSONFASTREADER_P_H

#include "DataValue/datavalue.h"

#include <string_view>

/// The quick way to read ordinary JSON text: straight into a packed tree.
///
/// It refuses everything that it might read differently from JsonCpp's reader, whose word counts:
/// comments and other leniencies, numbers outside a double's range, deep nesting, errors of any
/// kind. What it accepts, both read alike.
namespace JsonFastReader {

/// Reads UTF-8 into `value`. False, with `value` unchanged, when the text is not for this way.
bool read(std::string_view utf8, CDataValue& value);
bool read(const QString& text, CDataValue& value);

} // namespace JsonFastReader

#endif
