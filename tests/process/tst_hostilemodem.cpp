// The device service at a modem that answers without any sense.

#include "failingline.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <string>

namespace {

/// What a modem in good order says to the questions of the service, by the question's beginning.
constexpr struct
{
    const char* command;
    const char* line;
} kGood[] = {{"AT+CPBR=?", "+CPBR: (1-10),40,30"},
             {"AT+CPBR=", "+CPBR: 1,\"123\",129,\"00470072\""},
             {"AT+CMGL=", "+CMGL: 1,\"REC READ\",\"123\",,\"24/05/17,12:01:00+00\"\r\n00470072"},
             {"AT+CPMS", "+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20"},
             {"AT+CSQ", "+CSQ: 7,99"},
             {"AT+CREG?", "+CREG: 2,1,\"1A2B\",\"01C3D4E\",7"},
             {"AT+COPS=?", "+COPS: (2,\"a\",\"b\",\"00101\",7),(1,\"c\",\"d\",\"00102\",2),,(0-4)"},
             {"AT+COPS?", "+COPS: 0,0,\"a\",7"},
             {"AT+CPINR", "+CPINR: SIM PIN,3,3"},
             {"AT+CPIN?", "+CPIN: READY"},
             {"AT+CGACT?", "+CGACT: 1,1"},
             {"AT+CGSN", "490154203237518"},
             {"AT+CNUM", "+CNUM: \"\",\"123\",129"}};

/// Answers as a modem in bad order gives them: a good one whose parts are lost, doubled or
/// replaced. Each ends in a final result, so that no time-out is waited for.
class Rubbish
{
public:
    explicit Rubbish(unsigned int seed)
        : m_random(seed)
    {
    }

    std::string operator()(const std::string& command)
    {
        const auto good = std::find_if(std::begin(kGood), std::end(kGood), [&](const auto& each) {
            return command.rfind(each.command, 0) == 0;
        });
        std::string answer;
        for (unsigned int i = pick(4); i > 0; --i)
            answer += "\r\n" + (good != std::end(kGood) ? spoilt(good->line) : piece());
        static constexpr const char* kResults[] = {
            "OK",           "OK", "OK", "ERROR", "+CME ERROR: 16", "+CMS ERROR: 99999999999",
            "+CME ERROR: x"};
        return answer + "\r\n\r\n" + kResults[pick(std::size(kResults))] + "\r\n";
    }

private:
    unsigned int pick(size_t count) { return static_cast<unsigned int>(m_random() % count); }
    std::string piece()
    {
        static const std::string kPieces[] = {
            "",         "1",     "\"SM\"",          "\"", "(",  ")", "-1", "4294967297", "=",
            "\xC3\xFF", "READY", "+CMTI: \"SM\",9", ": ", ",,", "OK"};
        return pick(10) == 0 ? std::string(1 + pick(300), static_cast<char>(pick(256)))
                             : kPieces[pick(std::size(kPieces))];
    }
    // One place is cut off, cut out or replaced; often none is.
    std::string spoilt(std::string line)
    {
        const size_t at = pick(line.size());
        const size_t comma = line.find(',', at);
        switch (pick(5)) {
        case 0:
            return line.substr(0, comma);
        case 1:
            return line.erase(at, 1 + pick(4));
        case 2:
            return line.insert(at, piece());
        case 3:
            return comma == std::string::npos ? line : line.replace(comma + 1, pick(6), piece());
        default:
            return line;
        }
    }

    std::mt19937 m_random;
};

// One request of each kind that the modem is asked for.
constexpr struct
{
    const char* name;
    const char* data;
} kRequests[] = {{"NETWORK_INFO", "null"},
                 {"NETWORK_REG_STATE", "null"},
                 {"NETWORK_CELL", "null"},
                 {"NETWORK_LIST", "null"},
                 {"PIN_STATE", "null"},
                 {"PIN_VERIFY", "\"1234\""},
                 {"EQUIPMENT_INFO", "null"},
                 {"DIAL", R"({"strAPN":"a","strNumber":"*99#"})"},
                 {"CONNECT_STATE", "null"},
                 {"STATISTICS", "null"},
                 {"SMS_LIST", "null"},
                 {"SMS_STORAGE", "null"},
                 {"PB_LIST", "null"},
                 {"PB_STORAGE", "null"},
                 {"USSD_SEND", R"({"strUssdCmd":"*100#"})"},
                 {"DIAG_INFO", "null"},
                 {"DIAG_FINDINGS", "null"}};

} // namespace

class tst_hostilemodem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersEveryRequestAtRubbish_data();
    void answersEveryRequestAtRubbish();
};

void tst_hostilemodem::answersEveryRequestAtRubbish_data()
{
    QTest::addColumn<unsigned int>("seed");
    for (const unsigned int seed : {1U, 2U, 3U})
        QTest::addRow("%u", seed) << seed;
}

void tst_hostilemodem::answersEveryRequestAtRubbish()
{
    QFETCH(const unsigned int, seed);
    FailingLine line;
    RawClient client(line.manager.socket("demo-device-1"));
    line.peer.setAnswerer(Rubbish(seed));
    for (int round = 0; round < 5; ++round) {
        for (const auto& request : kRequests) {
            client.send(QString(R"({"IPCMSG_TYPE":"DEMO_MESSAGE_%1","IPCMSG_USER_DATA":%2})")
                            .arg(request.name, request.data));
            const QString type = QString(R"("IPCMSG_TYPE":"DEMO_MESSAGE_%1")").arg(request.name);
            QVERIFY2(!client.answerWith(type).isNull(), request.name);
        }
    }
    QVERIFY(line.peer.commands().size() > 100);
    // The next answer that makes sense is understood.
    line.peer.setAnswerer(nullptr);
    const auto isUnderstood = [&client] {
        client.send(request("NETWORK_REG_STATE"));
        return errorIn(client.answerWith("NETWORK_REG_STATE"), "NETWORK_REG_STATE") == 0;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isUnderstood(), 30000);
    line.service->terminate();
    QCOMPARE(line.service->exitCode(), 0);
}

QTEST_GUILESS_MAIN(tst_hostilemodem)
#include "tst_hostilemodem.moc"
