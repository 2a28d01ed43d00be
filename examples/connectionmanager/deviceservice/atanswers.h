#ifndef DEMO_ATANSWERS_H
#define DEMO_ATANSWERS_H

#include "records/records.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// What the answers of a modem mean, in the terms of the business records (3GPP TS 27.007,
/// TS 27.005; character set UCS2, reporting mode 2). Each takes lines as they came, and returns
/// nothing when they cannot be understood: what is missing never becomes a zero.
namespace AtAnswer {

/// +CREG: and +CGREG:, where the device is registered. Area and cell are absent while there is
/// none.
struct Place
{
    int state = 0; ///< Registration
    std::optional<int> area;
    std::optional<int> cell;
};
/// `+CREG: 2,1,"1A2B","01C3D4E",7`; with `isUnsolicited`, without the mode before the state.
std::optional<Place> place(const QByteArray& line, bool isUnsolicited = false);

/// `+COPS: 0,0,"Example Mobile",7` into nMode, nFormat, strOperator and nAct. Without a network
/// only the mode is there.
bool readOperator(const QByteArray& line, BLNetworkInfo& info);
/// `+COPS: (2,"Example Mobile","Example","00101",7),(...),,(0,1),(0,2)`.
std::optional<BLNetworkListCnf> networks(const QByteArray& line);

/// `+CSQ: 7,99`: 0 to 31, or 99 for unknown.
std::optional<int> signalStrength(const QByteArray& line);
/// The number of the indicator "signal" in `+CIND: ("battchg",(0-5)),("signal",(0-5))`: 2.
std::optional<int> signalIndicator(const QByteArray& line);

/// `+CPIN: SIM PIN` as a code of PinState.
std::optional<int> pinState(const QByteArray& line);
/// The attempts left in `+CPINR: SIM PIN,3,3` for the code of that name.
std::optional<int> attempts(const QList<QByteArray>& lines, const QByteArray& code);

/// `+CNUM: "","+15550100",145`: the number.
QString ownNumber(const QByteArray& line);

/// Whether one of the lines `+CGACT: 1,1` says that the context is active.
std::optional<bool> isActive(const QList<QByteArray>& lines, int context);

/// How much of a store is used, of how much in all.
struct Room
{
    int used = 0;
    int total = 0;
};
/// `+CPMS: "SM",8,20,...` and `+CPBS: "SM",3,10`.
std::optional<Room> room(const QByteArray& line);

/// One message from `+CMGL: 9,"REC UNREAD","...",,"24/05/17,12:09:00+08"` (or +CMGR, which does
/// not repeat the number: `ref` below zero reads it) and the line of its text.
std::optional<BLSmsListItem> message(const QByteArray& header, const QByteArray& text, int ref);
/// All messages of +CMGL. What cannot be read is left out; `skipped` counts it.
BLSmsGetListCnf messages(const QList<QByteArray>& lines, int* skipped);
/// The number in `+CMTI: "SM",9`.
std::optional<int> arrivedMessage(const QByteArray& line);

/// `+CPBR: (1-10),40,14`: the first and the last place.
struct Places
{
    int first = 0;
    int last = 0;
};
std::optional<Places> phonebookPlaces(const QByteArray& line);
/// `+CPBR: 1,"+15550102",145,"0041"`.
std::optional<BLPbItem> phonebookEntry(const QByteArray& line);

/// `+CUSD: 0,"0041",15` into nReportType and strContent.
std::optional<BLUssdReport> ussd(const QByteArray& line);

} // namespace AtAnswer

#endif
