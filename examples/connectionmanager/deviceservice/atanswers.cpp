#include "deviceservice/atanswers.h"

#include "common/codes.h"
#include "common/demomessages.h"
#include "deviceservice/attext.h"

#include <QDateTime>

#include <algorithm>

using namespace AtText;

namespace {

QList<AtParameter> fieldsOf(const QByteArray& line)
{
    return parameters(information(line));
}

// "24/05/17,12:09:00+08" as "17/05/2024 12:09"; anything else stays as it is.
QString dateTime(const QByteArray& stamp)
{
    const QString text = QString::fromLatin1(stamp);
    const QDateTime read = QDateTime::fromString(QStringLiteral("20") + text.left(17),
                                                 QStringLiteral("yyyy/MM/dd,hh:mm:ss"));
    return read.isValid() ? read.toString(QStringLiteral("dd/MM/yyyy hh:mm")) : text;
}

// The line that has the form of a text; makers let their modems say things in between.
QByteArray textOf(const QList<QByteArray>& body)
{
    const auto text = std::find_if(body.begin(), body.end(), isUcs2);
    return text != body.end() ? *text : body.value(0);
}

bool isHeader(const QByteArray& line)
{
    return line.startsWith("+CMGL:");
}

} // namespace

std::optional<AtAnswer::Place> AtAnswer::place(const QByteArray& line, bool isUnsolicited)
{
    const QList<AtParameter> fields = fieldsOf(line);
    const int first = isUnsolicited ? 0 : 1;
    const std::optional<int> state = number(fields, first);
    if (!state)
        return std::nullopt;
    return Place{*state, number(fields, first + 1, 16), number(fields, first + 2, 16)};
}

bool AtAnswer::readOperator(const QByteArray& line, BLNetworkInfo& info)
{
    const QList<AtParameter> fields = fieldsOf(line);
    const std::optional<int> mode = number(fields, 0);
    if (!mode)
        return false;
    info.nMode = *mode;
    info.nFormat = number(fields, 1).value_or(OperatorFormat::Long);
    info.strOperator = decoded(content(fields, 2));
    info.nAct = number(fields, 3).value_or(AccessTechnology::Gsm);
    return true;
}

std::optional<BLNetworkListCnf> AtAnswer::networks(const QByteArray& line)
{
    BLNetworkListCnf list;
    const QList<AtParameter> fields = fieldsOf(line);
    if (fields.isEmpty())
        return std::nullopt;
    // Behind an empty parameter stand the modes and formats that the modem knows.
    for (const AtParameter& field : fields) {
        if (field.kind != AtParameter::Group)
            break;
        const QList<AtParameter> network = parameters(field.content);
        const std::optional<int> state = number(network, 0);
        if (!state || network.size() < 4)
            return std::nullopt;
        BLNetworkListItem item;
        item.nState = *state;
        item.strLongAlpha = decoded(content(network, 1));
        item.strShortAlpha = decoded(content(network, 2));
        item.strNumericAlpha = decodedNumber(content(network, 3));
        item.nAct = number(network, 4).value_or(AccessTechnology::Gsm);
        list.listNetworkItem.push_back(item);
    }
    return list;
}

std::optional<int> AtAnswer::signalStrength(const QByteArray& line)
{
    const std::optional<int> strength = number(fieldsOf(line), 0);
    const bool isKnown = strength && (*strength <= 31 || *strength == 99);
    return isKnown ? strength : std::nullopt;
}

std::optional<int> AtAnswer::signalIndicator(const QByteArray& line)
{
    const QList<AtParameter> fields = fieldsOf(line);
    for (int i = 0; i < fields.size(); ++i) {
        if (content(parameters(fields.at(i).content), 0) == "signal")
            return i + 1;
    }
    return std::nullopt;
}

std::optional<int> AtAnswer::pinState(const QByteArray& line)
{
    const QByteArray code = content(fieldsOf(line), 0);
    // The second PIN guards single functions only.
    if (code == "READY" || code == "SIM PIN2" || code == "SIM PUK2")
        return PinState::Ready;
    if (code == "SIM PIN")
        return PinState::PinNeeded;
    if (code == "SIM PUK")
        return PinState::PukNeeded;
    return std::nullopt;
}

std::optional<int> AtAnswer::attempts(const QList<QByteArray>& lines, const QByteArray& code)
{
    for (const QByteArray& line : lines) {
        const QList<AtParameter> fields = fieldsOf(line);
        if (content(fields, 0) == code)
            return number(fields, 1);
    }
    return std::nullopt;
}

QString AtAnswer::ownNumber(const QByteArray& line)
{
    return decodedNumber(content(fieldsOf(line), 1));
}

std::optional<bool> AtAnswer::isActive(const QList<QByteArray>& lines, int context)
{
    bool isFound = false;
    for (const QByteArray& line : lines) {
        const QList<AtParameter> fields = fieldsOf(line);
        const std::optional<int> state = number(fields, 1);
        if (!number(fields, 0) || !state)
            return std::nullopt;
        if (*number(fields, 0) == context)
            isFound = *state == 1;
    }
    return isFound;
}

std::optional<AtAnswer::Room> AtAnswer::room(const QByteArray& line)
{
    const QList<AtParameter> fields = fieldsOf(line);
    const std::optional<int> used = number(fields, 1);
    const std::optional<int> total = number(fields, 2);
    return used && total ? std::optional<Room>(Room{*used, *total}) : std::nullopt;
}

std::optional<BLSmsListItem> AtAnswer::message(const QByteArray& header, const QByteArray& text,
                                               int ref)
{
    QList<AtParameter> fields = fieldsOf(header);
    if (ref < 0) {
        ref = number(fields, 0).value_or(-1);
        fields = fields.mid(1);
    }
    const QByteArray state = content(fields, 0);
    if (ref < 0 || fields.size() < 2)
        return std::nullopt;
    BLSmsListItem item;
    item.nRef = ref;
    item.nStoreIn = Store::Sim;
    item.nTag = state == "REC UNREAD" ? MessageTag::Unread : MessageTag::Read;
    item.nBoxType = state.startsWith("STO") ? MessageBox::Outbox : MessageBox::Inbox;
    item.nCompleted = 1;
    item.nTotalPacket = 1;
    item.nCurrentPacket = 1;
    item.strAddress = decodedNumber(content(fields, 1));
    item.strDateTime = dateTime(content(fields, 3));
    item.strContent = decoded(text);
    return item;
}

BLSmsGetListCnf AtAnswer::messages(const QList<QByteArray>& lines, int* skipped)
{
    BLSmsGetListCnf list;
    *skipped = 0;
    int next = 0;
    while (next < lines.size()) {
        const QByteArray& header = lines.at(next++);
        // An empty text has no line of its own; the channel leaves out empty ones.
        QList<QByteArray> body;
        while (next < lines.size() && !isHeader(lines.at(next)))
            body.append(lines.at(next++));
        const auto item = isHeader(header) ? message(header, textOf(body), -1) : std::nullopt;
        if (item)
            list.listSmsItem.push_back(*item);
        else
            ++*skipped;
    }
    return list;
}

std::optional<int> AtAnswer::arrivedMessage(const QByteArray& line)
{
    return number(fieldsOf(line), 1);
}

std::optional<AtAnswer::Places> AtAnswer::phonebookPlaces(const QByteArray& line)
{
    const QList<QByteArray> limits = content(fieldsOf(line), 0).split('-');
    if (limits.size() != 2)
        return std::nullopt;
    bool isFirst = false;
    bool isLast = false;
    const Places places{limits.at(0).toInt(&isFirst), limits.at(1).toInt(&isLast)};
    return isFirst && isLast ? std::optional<Places>(places) : std::nullopt;
}

std::optional<BLPbItem> AtAnswer::phonebookEntry(const QByteArray& line)
{
    const QList<AtParameter> fields = fieldsOf(line);
    const std::optional<int> index = number(fields, 0);
    if (!index || fields.size() < 4)
        return std::nullopt;
    BLPbItem item;
    item.nStore = Store::Sim;
    item.nIndex = *index;
    item.contents.insert(QLatin1String(PhonebookField::Number), decodedNumber(content(fields, 1)));
    item.contents.insert(QLatin1String(PhonebookField::Name), decoded(content(fields, 3)));
    return item;
}

std::optional<BLUssdReport> AtAnswer::ussd(const QByteArray& line)
{
    const QList<AtParameter> fields = fieldsOf(line);
    const std::optional<int> type = number(fields, 0);
    if (!type)
        return std::nullopt;
    BLUssdReport report;
    report.nReportType = *type;
    report.strContent = decoded(content(fields, 1));
    return report;
}
