#ifndef BENCH_RECORDPEERS_H
#define BENCH_RECORDPEERS_H

// A list of short messages as text and back, by this library and by what a user would take instead.
//
// Every way yields and takes the text in the form that is natural to it: a QString here, UTF-8
// bytes for the others where the name does not say otherwise. None of them keeps anything from one
// call to the next.

#include "records/messagerecords.h"

#include <QByteArray>
#include <QString>

#include <string>

namespace recordpeers {

struct NumberField
{
    const char* key;
    int BLSmsListItem::*member;
};
constexpr NumberField kNumbers[] = {
    {"nPacketType", &BLSmsListItem::nPacketType},
    {"nRef", &BLSmsListItem::nRef},
    {"nStoreIn", &BLSmsListItem::nStoreIn},
    {"nTag", &BLSmsListItem::nTag},
    {"nType", &BLSmsListItem::nType},
    {"nClass", &BLSmsListItem::nClass},
    {"nCompleted", &BLSmsListItem::nCompleted},
    {"nTotalPacket", &BLSmsListItem::nTotalPacket},
    {"nStatusReportStatus", &BLSmsListItem::nStatusReportStatus},
    {"nCurrentPacket", &BLSmsListItem::nCurrentPacket},
    {"nBoxType", &BLSmsListItem::nBoxType},
};

struct TextField
{
    const char* key;
    QString BLSmsListItem::*member;
};
constexpr TextField kTexts[] = {
    {"strAddress", &BLSmsListItem::strAddress},
    {"strDateTime", &BLSmsListItem::strDateTime},
    {"strContent", &BLSmsListItem::strContent},
};

constexpr char kList[] = "listSmsItem";

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

/// RapidJSON's events, without a document: its writer is told each field, and its reader tells each
/// one to a handler that expects the fields in the order in which they are written.
struct RapidJsonSax
{
    using Text = std::string;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

/// The same, with the text as a QString like ours.
struct RapidJsonSaxQString
{
    using Text = QString;
    static Text write(const BLSmsGetListCnf& list);
    static BLSmsGetListCnf read(const Text& text);
};

/// Boost.JSON's document, read into a block of memory for one use, as its makers advise.
struct BoostJson
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
