#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"
#include "LogTask/clog.h"
#include "records/recordcatalogue.h"
#include "records/records.h"
#include "support/logcapture.h"

#include <QSignalSpy>
#include <QTest>
#include <QUuid>

/// The lines of messages that carry secrets, from both ends of a connection.
class tst_hiddensecrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { HideInLog({}, {}); }
    void showsAllByDefault();
    void hidesSecretsEverywhere();
    void hidesThemInAllKindsOfLines();
    void knowsTheSecretKeysOfTheRecords();

private:
    static QString conversation();
};

namespace {

const QString kSecret = QStringLiteral("73519");

// Sends both requests; the server sends each back as it came.
void converse(LogCapture& log)
{
    const QString name = QUuid::createUuid().toString(QUuid::WithoutBraces);
    IPCServer server(nullptr);
    QObject::connect(&server, &IPCServer::sigMessageReceived, &server,
                     [&](const QString& text, int client) { server.sendResponse(text, client); });
    server.startListen(name);
    IPCClient client(name, nullptr);
    QSignalSpy connected(&client, &IPCClient::sigIPCServerConnected);
    QSignalSpy answered(&client, &IPCClient::sigMessageReceived);
    client.connectToServer();
    QTRY_COMPARE(connected.size(), 1);
    BLPINChangeInfo record{kSecret, kSecret};
    CDataValue change;
    GetDataValueFromStruct(record, change);
    client.messageSend("PIN_CHANGE", &change);
    const CDataValue pin(kSecret);
    client.messageSend("PIN_VERIFY", &pin);
    QTRY_COMPARE(answered.size(), 2);
    QVERIFY(log.contains("PIN_CHANGE") && log.contains("PIN_VERIFY"));
}

} // namespace

QString tst_hiddensecrets::conversation()
{
    LogCapture log;
    converse(log);
    return log.text();
}

void tst_hiddensecrets::showsAllByDefault()
{
    const QString text = conversation();
    QVERIFY(text.contains("\"strNewPin\":\"" + kSecret + '"'));
    QVERIFY(text.contains("\"IPCMSG_USER_DATA\":\"" + kSecret + '"'));
    QVERIFY(!text.contains("***"));
}

void tst_hiddensecrets::hidesSecretsEverywhere()
{
    HideInLog(secretRecordKeys(), {"PIN_VERIFY"});
    const QString text = conversation();
    QVERIFY2(!text.contains(kSecret), qPrintable(text));
    QVERIFY(text.contains("\"strNewPin\":\"***\",\"strOldPin\":\"***\""));
    QVERIFY(text.contains("\"IPCMSG_USER_DATA\":\"***\""));
    QVERIFY(text.contains(" messageSend messageSend *** \r\n")); // the PIN alone
}

void tst_hiddensecrets::hidesThemInAllKindsOfLines()
{
    HideInLog({"strPwd"}, {});
    LogCapture log;
    const QString secret = "{\"strPwd\":\"" + kSecret + "\"}";
    const auto writeAll = [&secret] {
        Log("Log %s", qPrintable(secret));
        LogErr(5, "LogErr %s", qPrintable(secret));
        CLogFile() << "CLogFile" << secret;
        *CLog::Instance() << secret;
        *CLog::Instance() << qPrintable(secret);
    };
    writeAll(); // straight to the file
    QSignalSpy emitted(CLog::Instance(), &CLog::WriteLog);
    writeAll();
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 10);
    for (const QString& line : lines) {
        QVERIFY2(line.contains("{\"strPwd\":\"***\"}"), qPrintable(line));
        QVERIFY(!line.contains(kSecret));
    }
    QCOMPARE(emitted.size(), 5);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(emitted.at(i).at(0).toString(), lines[5 + i]);
}

void tst_hiddensecrets::knowsTheSecretKeysOfTheRecords()
{
    QStringList keys = secretRecordKeys();
    keys.sort();
    QCOMPARE(keys, QStringList({"strLockCode", "strNewLockCode", "strNewPin", "strOldLockCode",
                                "strOldPin", "strPUK", "strPassWord", "strPinCode", "strPwd"}));
}

QTEST_GUILESS_MAIN(tst_hiddensecrets)
#include "tst_hiddensecrets.moc"
