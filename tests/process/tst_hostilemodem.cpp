// The device service at a modem that answers without any sense.

#include "failingline.h"

#include <iterator>
#include <random>
#include <string>

namespace {

/// Answers as a modem in bad order gives them: what belongs to the command, what does not, and
/// bytes without sense, in any order. Each ends in a final result, so that no time-out is waited
/// for.
class Rubbish
{
public:
    explicit Rubbish(unsigned int seed)
        : m_random(seed)
    {
    }

    std::string operator()(const std::string& command)
    {
        const std::string name = command.substr(0, command.find_first_of("=?")).substr(2);
        std::string answer;
        for (unsigned int i = pick(8); i > 0; --i)
            answer += "\r\n" + (pick(3) == 0 ? std::string() : name + ": ") + line();
        static constexpr const char* kResults[] = {"OK", "ERROR", "+CME ERROR: 16",
                                                   "+CMS ERROR: 99999999999", "+CME ERROR: x"};
        return answer + "\r\n\r\n" + kResults[pick(std::size(kResults))] + "\r\n";
    }

private:
    unsigned int pick(size_t count) { return static_cast<unsigned int>(m_random() % count); }
    std::string line()
    {
        static const std::string kPieces[] = {"1",
                                              "\"SM\"",
                                              ",",
                                              "\"",
                                              "(",
                                              ")",
                                              "-1",
                                              "4294967297",
                                              "\"00470072\"",
                                              "SIM PIN",
                                              "+CMTI: \"SM\",9",
                                              "READY",
                                              "\"24/05/17,12:01:00+00\"",
                                              "\xC3\xFF",
                                              "=",
                                              "OK"};
        std::string text;
        for (unsigned int i = pick(12); i > 0; --i)
            text += pick(6) == 0 ? std::string(1 + pick(300), static_cast<char>(pick(256)))
                                 : kPieces[pick(std::size(kPieces))] + (pick(2) == 0 ? "," : "");
        return text;
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
