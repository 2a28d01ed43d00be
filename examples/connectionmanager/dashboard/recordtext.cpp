#include "dashboard/recordtext.h"

#include "common/codes.h"
#include "common/demomessages.h"

#include <QMap>
#include <QStringList>

namespace {

QString number(int value)
{
    return QString::number(value);
}

QString nameOf(const QMap<int, QString>& names, int code)
{
    return names.value(code, QStringLiteral("code %1").arg(code));
}

QString technology(int code)
{
    static const QMap<int, QString> names{{AccessTechnology::Gsm, QStringLiteral("GSM")},
                                          {AccessTechnology::Umts, QStringLiteral("UMTS")},
                                          {AccessTechnology::Lte, QStringLiteral("LTE")}};
    return nameOf(names, code);
}

// A modem need not tell them.
QString attemptsLeft(int count)
{
    return count < 0 ? QStringLiteral("unknown") : number(count);
}

QString attempts(int pin, int puk)
{
    return QStringLiteral("%1 attempts left for the PIN, %2 for the PUK")
        .arg(attemptsLeft(pin), attemptsLeft(puk));
}

// -113 dBm and 2 dBm a step, as +CSQ counts it.
QString signalStrength(int rssi)
{
    if (rssi < 0 || rssi > 31)
        return QStringLiteral("signal unknown");
    return QStringLiteral("signal %1 of 31 (%2 dBm)").arg(rssi).arg(2 * rssi - 113);
}

QString pinState(int code)
{
    static const QMap<int, QString> names{
        {PinState::Ready, QStringLiteral("the SIM is ready")},
        {PinState::PinNeeded, QStringLiteral("the SIM asks for the PIN")},
        {PinState::PukNeeded, QStringLiteral("the SIM asks for the PUK")},
        {PinState::Blocked, QStringLiteral("the SIM is blocked")}};
    return nameOf(names, code);
}

QString amount(long long bytes)
{
    if (bytes < 1000)
        return QStringLiteral("%1 B").arg(bytes);
    if (bytes < 1000000)
        return QStringLiteral("%1 kB").arg(static_cast<double>(bytes) / 1e3, 0, 'f', 1);
    return QStringLiteral("%1 MB").arg(static_cast<double>(bytes) / 1e6, 0, 'f', 1);
}

} // namespace

QString textOf(const BLEquipmentInfo& info)
{
    QString text =
        QStringLiteral("%1 %2, firmware %3, serial number %4")
            .arg(info.strManufacturer, info.strModel, info.strRevision, info.strSerialNumber);
    if (!info.strHardwareVersion.isEmpty())
        text += QStringLiteral(", hardware %1").arg(info.strHardwareVersion);
    if (!info.strImsi.isEmpty())
        text += QStringLiteral(", SIM %1, own number %2").arg(info.strImsi, info.strMsisdn);
    return text;
}

QString textOf(const BLNetworkInfo& info)
{
    return QStringLiteral("%1, %2, %3, %4")
        .arg(info.strOperator, technology(info.nAct), signalStrength(info.nRssi),
             info.nRoamState == 0 ? QStringLiteral("at home") : QStringLiteral("roaming"));
}

QString textOf(const BLNetRegState& state)
{
    static const QMap<int, QString> names{
        {Registration::None, QStringLiteral("not registered")},
        {Registration::Home, QStringLiteral("registered in the home network")},
        {Registration::Searching, QStringLiteral("searching")},
        {Registration::Denied, QStringLiteral("registration denied")},
        {Registration::Unknown, QStringLiteral("unknown")},
        {Registration::Roaming, QStringLiteral("registered, roaming")}};
    return nameOf(names, state.nState);
}

QString textOf(const BLNetLacAndCellID& cell)
{
    return QStringLiteral("area %1, cell %2")
        .arg(QString::number(cell.nLac, 16).toUpper(), QString::number(cell.nCellID, 16).toUpper());
}

QString textOf(const BLNetworkListCnf& networks)
{
    static const QMap<int, QString> names{{Availability::Unknown, QStringLiteral("unknown")},
                                          {Availability::Available, QStringLiteral("available")},
                                          {Availability::Current, QStringLiteral("in use")},
                                          {Availability::Forbidden, QStringLiteral("forbidden")}};
    QStringList lines{QStringLiteral("%1 found").arg(networks.listNetworkItem.size())};
    for (const BLNetworkListItem& item : networks.listNetworkItem) {
        lines += QStringLiteral("%1 (%2), %3, %4")
                     .arg(item.strLongAlpha, item.strNumericAlpha, technology(item.nAct),
                          nameOf(names, item.nState));
    }
    return lines.join(QLatin1Char('\n'));
}

QString textOf(const BLPinCheckState& state)
{
    return pinState(state.nState) + QStringLiteral("; ") + attempts(state.nPinCnt, state.nPukCnt);
}

QString textOf(const BLPINInfo& info)
{
    return attempts(info.nPinCnt, info.nPukCnt);
}

QString textOf(const BLConnectState& state)
{
    QString text = state.nState == Connection::Connected ? QStringLiteral("connected")
                                                         : QStringLiteral("not connected");
    if (!state.strError.isEmpty())
        text += QStringLiteral(" (%1)").arg(state.strError);
    return text;
}

QString textOf(const BLGetStatisticsCnf& statistics)
{
    if (statistics.tState.nState != Connection::Connected)
        return textOf(statistics.tState);
    const BLConnectionStatistics& info = statistics.tInfo;
    QString text = QStringLiteral("%1 for %2 s")
                       .arg(textOf(statistics.tState), QString::number(info.dwDuration));
    // A modem need not count.
    if (info.dwByteTransferred < 0)
        return text;
    return QStringLiteral("%1, %2 received, %3 sent, at %4/s and %5/s")
        .arg(text, amount(info.dwByteReceived), amount(info.dwByteSent),
             amount(info.dwRateReceived), amount(info.dwRateSent));
}

QString textOf(const BLSmsListItem& message)
{
    return QStringLiteral("%1 %2 from %3, %4: %5")
        .arg(QString::number(message.nRef),
             message.nTag == MessageTag::Unread ? QStringLiteral("unread") : QStringLiteral("read"),
             message.strAddress, message.strDateTime, message.strContent);
}

QString textOf(const BLSmsGetListCnf& messages)
{
    QStringList lines{QStringLiteral("%1 messages").arg(messages.listSmsItem.size())};
    for (const BLSmsListItem& message : messages.listSmsItem)
        lines += textOf(message);
    return lines.join(QLatin1Char('\n'));
}

QString textOf(const BLNewSmsReport& report)
{
    return textOf(report.tListItem);
}

QString textOf(const BLSmsStorageState& state)
{
    return QStringLiteral("room for messages on the SIM: %1 of %2 used")
        .arg(state.nSimUsed)
        .arg(state.nSimTotal);
}

QString textOf(const BLSmsProgressBarPos& position)
{
    constexpr int kWidth = 20;
    const int total = qMax(position.nTotal, 1);
    const int done = qBound(0, position.nCurPos, total);
    const int filled = static_cast<int>(static_cast<long long>(done) * kWidth / total);
    return QStringLiteral("[%1%2] %3 of %4")
        .arg(QString(filled, QLatin1Char('#')), QString(kWidth - filled, QLatin1Char('.')))
        .arg(position.nCurPos)
        .arg(position.nTotal);
}

QString textOf(const BLSmsDeleteReturnItem& result)
{
    return QStringLiteral("%1 deleted, %2 not deleted")
        .arg(result.vSuccessRef.size())
        .arg(result.vFailureRef.size());
}

QString textOf(const BLPbInitListCnf& phonebook)
{
    QStringList lines{QStringLiteral("%1 entries").arg(phonebook.listPBItem.size())};
    for (const BLPbItem& entry : phonebook.listPBItem) {
        lines += QStringLiteral("%1 %2: %3")
                     .arg(QString::number(entry.nIndex),
                          entry.contents.value(QLatin1String(PhonebookField::Name)),
                          entry.contents.value(QLatin1String(PhonebookField::Number)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString textOf(const BLPbAddItemCnf& counts)
{
    return QStringLiteral("%1 added, %2 not added")
        .arg(counts.successItemCount)
        .arg(counts.failureItemCount);
}

QString textOf(const BLPbGetStorageInfoCnf& state)
{
    return QStringLiteral("room for entries on the SIM: %1 of %2 used")
        .arg(state.nSimUsed)
        .arg(state.nSimTotal);
}

QString textOf(const BLUssdReport& report)
{
    static const QMap<int, QString> failures{
        {UssdReport::NotSupported, QStringLiteral("the network does not know this")},
        {UssdReport::TimedOut, QStringLiteral("the network did not answer")}};
    const QString text = failures.value(report.nReportType, report.strContent);
    return QStringLiteral("%1 (asked by %2)").arg(text, report.strClientID);
}

QString textOf(const BLDiagInfo& info)
{
    BLNetRegState registration;
    registration.nState = info.nNormalRegState;
    return QStringLiteral("%1 %2, %3, %4, %5, %6")
        .arg(info.strManufacturer, info.strModel,
             info.strOperator.isEmpty() ? QStringLiteral("no network") : info.strOperator,
             signalStrength(info.nRssi), pinState(info.nPinState), textOf(registration));
}

QString textOf(const GLDiagInfoList& findings)
{
    if (findings.listDiagInfo.isEmpty())
        return QStringLiteral("nothing wrong");
    QStringList lines;
    for (const GLDiagInfo& finding : findings.listDiagInfo) {
        lines +=
            QStringLiteral("%1 (%2): %3")
                .arg(finding.strErr, QStringList(finding.strDiscription).join(QStringLiteral(", ")),
                     finding.strSolution);
    }
    return lines.join(QLatin1Char('\n'));
}

QString errorText(int code)
{
    static const QMap<int, QString> names{
        {-1, QStringLiteral("refused by the modem")},
        {1, QStringLiteral("no connection to the modem")},
        {2, QStringLiteral("operation not allowed")},
        {6, QStringLiteral("could not be sent")},
        {8, QStringLiteral("too many requests")},
        {9, QStringLiteral("operation not supported")},
        {16, QStringLiteral("the SIM asks for the PIN")},
        {17, QStringLiteral("the SIM asks for the PUK")},
        {18, QStringLiteral("SIM failure")},
        {21, QStringLiteral("incorrect password")},
        {25, QStringLiteral("memory full")},
        {26, QStringLiteral("invalid index")},
        {27, QStringLiteral("not found")},
        {35, QStringLiteral("no network service")},
        {42, QStringLiteral("the device service knows no such request")}};
    return QStringLiteral("%1 (error %2)")
        .arg(names.value(code, QStringLiteral("failed")), number(code));
}
