#include "connectionmanager.h"
#include "rawclient.h"

class tst_connectionmanagerwire : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repeatsPayloadAndSenderInTheAnswer();
    void leavesOutWhatTheRequestLeftOut();
    void refusesAnUnknownRequest();
    void refusesAPayloadOfAnotherKind();
    void dropsTextThatIsNoMessage_data();
    void dropsTextThatIsNoMessage();
    void introducesClientsWithANameOnly();
    void tellsTheIDsOfKnownDevices();
    void refusesADialUpForAnotherDevice();
    void cancelsOnlyWhatAPluginKnows();
    void refusesToDeleteNothing();
    void deletesOneListAtATime();
};

void tst_connectionmanagerwire::repeatsPayloadAndSenderInTheAnswer()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CONNECT_STATE","IPCMSG_USER_DATA":[1,{"a":"ü"}],)"
                R"("IPCMSG_MSG_SENDER":"me","FURTHER":1})");
    QCOMPARE(client.answer(),
             QString(R"({"IPCMSG_ERROR_CODE":0,"IPCMSG_MSG_SENDER":"me","IPCMSG_RESPONSE_DATA":)"
                     R"({"nErr":0,"nState":0,"strError":""},)"
                     R"("IPCMSG_TYPE":"DEMO_MESSAGE_CONNECT_STATE",)"
                     R"("IPCMSG_USER_DATA":[1,{"a":"ü"}]})"));
}

void tst_connectionmanagerwire::leavesOutWhatTheRequestLeftOut()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CONNECT_STATE"})");
    QCOMPARE(client.answer(), QString(R"({"IPCMSG_ERROR_CODE":0,"IPCMSG_RESPONSE_DATA":)"
                                      R"({"nErr":0,"nState":0,"strError":""},)"
                                      R"("IPCMSG_TYPE":"DEMO_MESSAGE_CONNECT_STATE"})"));
}

void tst_connectionmanagerwire::refusesAnUnknownRequest()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    for (const char* socket : {"demo-device-1", "applicationcontroller"}) {
        RawClient client(manager.socket(socket));
        client.send(R"({"IPCMSG_TYPE":"NOBODY_KNOWS"})");
        QCOMPARE(client.answer(), QString(R"({"IPCMSG_ERROR_CODE":42,"IPCMSG_RESPONSE_DATA":null,)"
                                          R"("IPCMSG_TYPE":"NOBODY_KNOWS"})"));
    }
}

void tst_connectionmanagerwire::refusesAPayloadOfAnotherKind()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    // No attempt at the PIN is counted.
    const QString attempts = R"("IPCMSG_RESPONSE_DATA":{"nPinCnt":3,"nPukCnt":10})";
    for (const char* request : {"PIN_VERIFY", "PIN_CHANGE", "PIN_ENABLE", "PUK_VERIFY"}) {
        client.send(
            QString(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_%1","IPCMSG_USER_DATA":7})").arg(request));
        const QString answer = client.answer();
        QVERIFY2(answer.contains(R"("IPCMSG_ERROR_CODE":-1)"), qPrintable(answer));
        QVERIFY2(answer.contains(attempts), qPrintable(answer));
    }
}

void tst_connectionmanagerwire::dropsTextThatIsNoMessage_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("no JSON") << QString("nonsense");
    QTest::newRow("a list") << QString("[]");
    QTest::newRow("a number") << QString("1");
    QTest::newRow("no type") << QString(R"({"IPCMSG_USER_DATA":1})");
    QTest::newRow("type is no text") << QString(R"({"IPCMSG_TYPE":1})");
    QTest::newRow("nested too deeply") << QString(100000, '[');
}

void tst_connectionmanagerwire::dropsTextThatIsNoMessage()
{
    QFETCH(const QString, text);
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    for (const char* socket : {"demo-device-1", "applicationcontroller"}) {
        RawClient client(manager.socket(socket));
        client.send(text);
        client.send(R"({"IPCMSG_TYPE":"BEHIND"})");
        const QString answer = client.answer();
        QVERIFY2(answer.contains("BEHIND"), qPrintable(answer));
    }
}

void tst_connectionmanagerwire::introducesClientsWithANameOnly()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    RawClient client(manager.socket("applicationcontroller"));
    const QString request =
        R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_CLIENT_INIT","IPCMSG_USER_DATA":%1})";
    for (const char* name : {R"("")", "1", "null", "[]"}) {
        client.send(request.arg(name));
        QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":1,)"));
    }
    client.send(request.arg(R"("me")"));
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,)"));
    QVERIFY(controller->says("introduced: me (client 1)"));
}

void tst_connectionmanagerwire::tellsTheIDsOfKnownDevices()
{
    ConnectionManager manager;
    const auto controller = manager.startController({"--device", "A=a", "--device", "B=b"});
    RawClient client(manager.socket("applicationcontroller"));
    client.send(R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_DEV_ID",)"
                R"("IPCMSG_USER_DATA":{"Name":"A","ID":5}})");
    QCOMPARE(client.answer(), QString(R"({"IPCMSG_ERROR_CODE":0,"IPCMSG_RESPONSE_DATA":{"A":"a"},)"
                                      R"("IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_DEV_ID",)"
                                      R"("IPCMSG_USER_DATA":{"ID":5,"Name":"A"}})"));
    client.send(R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_DEV_ID",)"
                R"("IPCMSG_USER_DATA":{"Name":"C","ID":5}})");
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,"IPCMSG_RESPONSE_DATA":{},)"));
    client.send(R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_DEV_ID"})");
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":1,"IPCMSG_RESPONSE_DATA":null,)"));

    client.send(R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID",)"
                R"("IPCMSG_USER_DATA":["B","C",1,"A"]})");
    QVERIFY(client.answer().contains(
        R"("IPCMSG_ERROR_CODE":0,"IPCMSG_RESPONSE_DATA":{"A":"a","B":"b"},)"));
    client.send(R"({"IPCMSG_TYPE":"WZR_MESSAGE_APPLICATION_GET_MULT_DEV_ID",)"
                R"("IPCMSG_USER_DATA":"A"})");
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":1,"IPCMSG_RESPONSE_DATA":null,)"));
}

void tst_connectionmanagerwire::refusesADialUpForAnotherDevice()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_PIN_VERIFY","IPCMSG_USER_DATA":"1234"})");
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,)"));
    const QString request =
        R"({"IPCMSG_TYPE":"DEMO_MESSAGE_DIAL","IPCMSG_USER_DATA":)"
        R"({"strAPN":"internet.example","strNumber":"*99#","strDeviceID":"%1"}})";
    client.send(request.arg("another"));
    QVERIFY(client.answerWith("MESSAGE_DIAL").contains(R"("IPCMSG_ERROR_CODE":27,)"));
    client.send(request.arg("demo-device-1"));
    QVERIFY(client.answer().contains("DEMO_MESSAGE_RPT_CONNECT_STATE"));
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,)"));
}

void tst_connectionmanagerwire::cancelsOnlyWhatAPluginKnows()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    const QString request =
        R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CANCEL","IPCMSG_USER_DATA":{"msgId":"%1"}})";
    client.send(request.arg("DEMO_MESSAGE_SMS_DELETE"));
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,)"));
    client.send(request.arg("NOBODY_KNOWS"));
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":42,)"));
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_CANCEL"})");
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":42,)"));
}

void tst_connectionmanagerwire::refusesToDeleteNothing()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    RawClient client(manager.socket("demo-device-1"));
    for (const char* references : {"[]", "null", "7", R"({"a":1})"}) {
        client.send(QString(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_SMS_DELETE",)"
                            R"("IPCMSG_USER_DATA":{"vRef":%1}})")
                        .arg(references));
        QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":-1,)"));
    }
}

void tst_connectionmanagerwire::deletesOneListAtATime()
{
    ConnectionManager manager;
    const auto service = manager.startService({"--pace", "5000"});
    RawClient client(manager.socket("demo-device-1"));
    const QString request =
        R"({"IPCMSG_TYPE":"DEMO_MESSAGE_SMS_DELETE","IPCMSG_USER_DATA":{"vRef":[1]}})";
    client.send(request);
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":0,)"));
    client.send(request);
    QVERIFY(client.answer().contains(R"("IPCMSG_ERROR_CODE":2,)"));
    // Everything else is answered meanwhile.
    client.send(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_PIN_STATE"})");
    QVERIFY(client.answer().contains("DEMO_MESSAGE_PIN_STATE"));
}

QTEST_GUILESS_MAIN(tst_connectionmanagerwire)
#include "tst_connectionmanagerwire.moc"
