#ifndef RECORDS_RECORDDECLARATION_H
#define RECORDS_RECORDDECLARATION_H

#include "wzrframework_export.h"

#include <QDebug>

class CDataValue;

/// What every business record has beside its fields. A record is a plain struct whose members are
/// zero, false or empty at first; it travels as a map whose keys are the names of the members.
///
/// - `GetDataValueFromStruct(record, data)` writes one member of `data` per field. Members of the
///   same name are replaced, all others stay. A null value becomes a map; a value of another kind
///   than null and map is left unchanged. A list or hash without entries is written as null.
/// - `GetStructFromDataValue(data, record)` reads every field. A key that is missing, or whose
///   value is of another kind, gives 0, false or empty text and one warning in the log per scalar.
///   Lists are appended to and hashes merged into, not cleared, which is meant: read into a fresh
///   record. A missing list or hash adds nothing and warns of nothing.
/// - `==` and `!=` compare all fields.
/// - `qDebug() << record` prints `Name(key: value, ...)`; PINs, PUKs, lock codes and passwords are
///   never printed.
///
/// The comments of a record and of its members are their descriptions in recordCatalogue(). One
/// that ends in "; a secret" marks a value that must not be printed.
///
///     BLPINInfo info;
///     info.nPinCnt = 3;
///     CDataValue data;
///     GetDataValueFromStruct(info, data); // {"nPinCnt":3,"nPukCnt":0}
///
/// The functions keep no state and never fail. They run on the caller's thread; reading a value
/// that lacks keys must happen on the one thread that may miss (see CDataValue). The record is
/// not changed by writing, although it is passed without `const`. Address kinds are refused as
/// CDataValue refuses them.
// NOLINTBEGIN(bugprone-macro-parentheses): the argument is a type.
#define WZR_DECLARE_RECORD(Record)                                                                 \
    WZRFRAMEWORK_EXPORT void GetDataValueFromStruct(Record& record, CDataValue& data);             \
    WZRFRAMEWORK_EXPORT void GetStructFromDataValue(CDataValue& data, Record& record);             \
    WZRFRAMEWORK_EXPORT bool operator==(const Record& left, const Record& right);                  \
    inline bool operator!=(const Record& left, const Record& right)                                \
    {                                                                                              \
        return !(left == right);                                                                   \
    }                                                                                              \
    WZRFRAMEWORK_EXPORT QDebug operator<<(QDebug debug, const Record& record);
// NOLINTEND(bugprone-macro-parentheses)

#endif
