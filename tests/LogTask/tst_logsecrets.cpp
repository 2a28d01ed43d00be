#include "LogTask/logsecrets_p.h"

#include "LogTask/clog.h"

#include <QTest>

class tst_logsecrets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { HideInLog({"strPwd", "strPin"}, {"VERIFY", "UNLOCK"}); }

    void hidesValues_data();
    void hidesValues();
    void hidesDataOfMessages_data();
    void hidesDataOfMessages();
    void leavesLinesWithoutSecrets_data();
    void leavesLinesWithoutSecrets();
    void hidesASecretCutAtEachPlace();
    void knowsMessagesWithSecretData();
    void takesTheLatestLists();
    void takesTimeLinearInTheLine_data();
    void takesTimeLinearInTheLine();
};

namespace {

void lineRows(std::initializer_list<std::array<const char*, 3>> rows)
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown");
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

} // namespace

void tst_logsecrets::hidesValues_data()
{
    lineRows({
        {"text", R"(x {"a":1,"strPwd":"ab c","z":2} )", R"(x {"a":1,"strPwd":"***","z":2} )"},
        {"several", R"({"strPin":"1"}{"strPwd":"2"})", R"({"strPin":"***"}{"strPwd":"***"})"},
        {"empty", R"({"strPwd":""})", R"({"strPwd":"***"})"},
        {"styled", "\"strPwd\" : \"ab\",\n", "\"strPwd\" : \"***\",\n"},
        {"number", R"({"strPin":1234,"b":"c"})", R"({"strPin":***,"b":"c"})"},
        {"last number", R"([{"strPin":1234}])", R"([{"strPin":***}])"},
        {"null", R"({"strPin":null})", R"({"strPin":***})"},
        {"array", R"({"strPin":["1","]"],"b":"c"})", R"({"strPin":***,"b":"c"})"},
        {"map", R"({"strPin":{"a":{"}":"\\"}},"b":2})", R"({"strPin":***,"b":2})"},
        {"quotation marks", R"({"strPwd":"a\"b\\","b":2})", R"({"strPwd":"***","b":2})"},
        {"no JSON around", R"("strPwd":"ab)", R"("strPwd":"***)"},
        {"other letters", "{\"strPwd\":\"\xC3\xA9\xF0\x9F\x98\x80\"}", R"({"strPwd":"***"})"},
        {"in a text", R"({"a":"{\"strPwd\":\"x\\\"y\",\"b\":1}"})",
         R"({"a":"{\"strPwd\":\"***\",\"b\":1}"})"},
        {"in a text of a text", R"("{\"a\":\"{\\\"strPwd\\\":\\\"x\\\",\\\"b\\\":1}\"}")",
         R"("{\"a\":\"{\\\"strPwd\\\":\\\"***\\\",\\\"b\\\":1}\"}")"},
        {"cut in a text", R"({"a":"{\"strPwd\":\"x","b":1})", R"({"a":"{\"strPwd\":\"***","b":1})"},
        {"cut, with its length", R"({"strPwd":"ab... 20000 characters )",
         R"({"strPwd":"***... 20000 characters )"},
        {"cut before the value", R"({"strPwd":... 20000 characters )",
         R"({"strPwd":***... 20000 characters )"},
        {"cut map", R"({"strPwd":{"a":"b... 20000 characters )",
         R"({"strPwd":***... 20000 characters )"},
        {"no length", R"({"strPwd":"ab... 20 characters more )", R"({"strPwd":"***)"},
    });
}

void tst_logsecrets::hidesValues()
{
    QFETCH(QString, line);
    QFETCH(QString, shown);
    QCOMPARE(withoutSecrets(line), shown);
}

void tst_logsecrets::hidesDataOfMessages_data()
{
    lineRows({
        {"text", R"({"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":"1234"})",
         R"({"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":"***"})"},
        {"map", R"({"IPCMSG_TYPE":"UNLOCK","IPCMSG_USER_DATA":{"a":"1"},"Z":1})",
         R"({"IPCMSG_TYPE":"UNLOCK","IPCMSG_USER_DATA":***,"Z":1})"},
        {"other message", R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":"1234"})",
         R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":"1234"})"},
        {"both",
         R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":1}{"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":2})",
         R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":1}{"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":***})"},
        {"data first", R"({"IPCMSG_USER_DATA":"1234","IPCMSG_TYPE":"VERIFY"})",
         R"({"IPCMSG_USER_DATA":"***","IPCMSG_TYPE":"VERIFY"})"},
        {"message unknown", R"({"IPCMSG_USER_DATA":"1234... 20000 characters)",
         R"({"IPCMSG_USER_DATA":"***... 20000 characters)"},
        {"reply",
         R"({"IPCMSG_RESPONSE_DATA":{"n":3},"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":"1"})",
         R"({"IPCMSG_RESPONSE_DATA":{"n":3},"IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":"***"})"},
        {"secret in open data", R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":{"strPin":"1","b":2}})",
         R"({"IPCMSG_TYPE":"SEND","IPCMSG_USER_DATA":{"strPin":"***","b":2}})"},
    });
}

void tst_logsecrets::hidesDataOfMessages()
{
    hidesValues();
}

void tst_logsecrets::leavesLinesWithoutSecrets_data()
{
    QTest::addColumn<QString>("line");
    for (const char* line :
         {"", ":", "\":", "\"\":\"\"", "12:05:09 7 Ipc/ipcserver startListen text ", "strPwd: ab",
          R"({"strPwdX":"ab","xstrPin":"1","strpwd":"c"})", R"({"a":"strPwd"})", "\"strPwd\"",
          R"(["strPwd","b"])", R"({"IPCMSG_TYPE":"VERIFY"})"})
        QTest::newRow(line) << QString(line);
}

void tst_logsecrets::leavesLinesWithoutSecrets()
{
    QFETCH(QString, line);
    QCOMPARE(withoutSecrets(line), line);
}

void tst_logsecrets::hidesASecretCutAtEachPlace()
{
    const QString line = R"({"a":"{\"strPwd\":\"7\\\"3519\"}","strPin":{"b":["73519"]},)"
                         R"("IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":"73519"})";
    for (int end = 0; end <= line.size(); ++end) {
        const QString shown = withoutSecrets(line.left(end));
        QVERIFY2(!shown.contains("3519") && !shown.contains('7'), qPrintable(shown));
    }
}

void tst_logsecrets::knowsMessagesWithSecretData()
{
    QVERIFY(hidesDataOf("VERIFY"));
    QVERIFY(!hidesDataOf("VERIF"));
    QVERIFY(!hidesDataOf(nullptr));
}

void tst_logsecrets::takesTheLatestLists()
{
    QVERIFY(hidesSecrets());
    HideInLog({"other"}, {});
    const QString line =
        R"({"strPwd":"1","other":"2","IPCMSG_TYPE":"VERIFY","IPCMSG_USER_DATA":3})";
    QCOMPARE(withoutSecrets(line), QString(line).replace("\"2\"", "\"***\""));
    HideInLog({}, {});
    QVERIFY(!hidesSecrets());
    QCOMPARE(withoutSecrets(line), line);
}

void tst_logsecrets::takesTimeLinearInTheLine_data()
{
    QTest::addColumn<QString>("begin");
    QTest::addColumn<QString>("unit");
    QTest::newRow("colons") << ""
                            << ":";
    QTest::newRow("keys") << ""
                          << "\"\":";
    QTest::newRow("keys of blanks") << ""
                                    << "\" :";
    QTest::newRow("backslashes") << "{\"strPwd\":{"
                                 << "\\";
    QTest::newRow("backslashes before a colon") << ""
                                                << "\\\":";
    QTest::newRow("brackets") << "{\"strPwd\":"
                              << "[";
    QTest::newRow("values") << ""
                            << "\"strPwd\":[";
    QTest::newRow("texts") << ""
                           << "\"strPwd\":\"\\\\\"";
    QTest::newRow("lengths") << ""
                             << "\"strPwd\":1... 1";
}

// A million characters: what is quadratic takes many minutes.
void tst_logsecrets::takesTimeLinearInTheLine()
{
    QFETCH(QString, begin);
    QFETCH(QString, unit);
    const QString line = begin + unit.repeated(1000000 / int(unit.size()));
    QVERIFY(withoutSecrets(line).size() >= begin.size());
}

QTEST_APPLESS_MAIN(tst_logsecrets)
#include "tst_logsecrets.moc"
