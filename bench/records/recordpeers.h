#ifndef BENCH_RECORDPEERS_H
#define BENCH_RECORDPEERS_H

// A list of short messages as text and back, by this library and by what a user would take instead.
//
// Every way yields and takes the text in the form that is natural to it: a QString here, UTF-8
// bytes for the others. None of them keeps anything from one call to the next.

#include "records/messagerecords.h"

#include <QByteArray>
#include <QString>

#include <string>

namespace recordpeers {

/// `count` messages with texts of about 120 characters, each third with some that are not ASCII.
BLSmsGetListCnf makeMessages(int count);

struct Own
{
    using Text = QString;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

/// nlohmann/json by its macro for structs, with a conversion for QString.
struct Nlohmann
{
    using Text = std::string;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

struct QtJson
{
    using Text = QByteArray;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

struct JsonCpp
{
    using Text = std::string;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

/// RapidJSON's document.
struct RapidJson
{
    using Text = std::string;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

/// The text as UTF-8, without what stands around the value.
std::string plainText(const QString& text);
std::string plainText(const QByteArray& text);
std::string plainText(const std::string& text);

} // namespace recordpeers

#endif
