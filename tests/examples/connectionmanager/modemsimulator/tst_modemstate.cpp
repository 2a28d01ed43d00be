#include "modemsimulator/statefile.h"

#include "support/testfile.h"

#include <QTemporaryDir>
#include <QTest>

class tst_modemstate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginsWithTheModemOfTheDemo();
    void writesAndReadsEveryMember();
    void keepsTheDefaultOfAMissingMember();
    void refusesWhatIsNoState_data();
    void refusesWhatIsNoState();
    void createsAMissingFile();
    void refusesFilesThatItCannotUse();
    void givesArrivingMessagesTheFirstFreePlace();

private:
    static QString load(const QByteArray& content, ModemState* state)
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("state.config");
        TestFile::write(path, content);
        QString error;
        const bool isLoaded = StateFile(path).load(state, &error);
        if (isLoaded != error.isEmpty() || TestFile::read(path) != content)
            qFatal("A result without its reason, or a file that was written");
        return error.remove(path);
    }
};

void tst_modemstate::beginsWithTheModemOfTheDemo()
{
    CDataValue value = toDataValue(ModemState::makeDefault());
    CDataValue& sim = value.mapGet("sim");
    QCOMPARE(sim.mapGet("pin").asQString(), QString("1234"));
    QCOMPARE(sim.mapGet("puk").asQString(), QString("12345678"));
    QVERIFY(sim.mapGet("pinAsked").asBool());
    QCOMPARE(value.mapGet("messages").arrayCount(), 8U);
    QCOMPARE(value.mapGet("messages").arrayGet(6).mapGet("text").asQString(),
             QString(u8"Gr\u00fc\u00dfe aus K\u00f6ln!"));
    QCOMPARE(value.mapGet("contacts").arrayGet(2).mapGet("name").asQString(),
             QString(u8"Zo\u00eb"));
    QCOMPARE(value.mapGet("network").mapGet("operators").arrayCount(), 3U);
    QCOMPARE(value.mapGet("ussd").arrayGet(0).mapGet("request").asQString(), QString("*100#"));
}

void tst_modemstate::writesAndReadsEveryMember()
{
    const QByteArray everything =
        R"({"contactRoom":5,"contacts":[{"index":2,"name":"N","number":"1"}],)"
        R"("contexts":[{"apn":"a.example","cid":3,"type":"IPV6"}],)"
        R"("equipment":{"manufacturer":"M","model":"O","revision":"R","serialNumber":"S"},)"
        R"("messageRoom":4,"messages":[{"index":4,"number":"2","status":"STO UNSENT",)"
        R"("text":"T","time":"24/01/01,00:00:00+00"}],"messagesArrived":3,)"
        R"("network":{"address":"10.0.0.2","area":"F","cell":"ABCD","mode":1,)"
        R"("operators":[{"forbidden":true,"longName":"L","numeric":"26201","shortName":"H",)"
        R"("technology":2}],"registration":3,"selected":"26201","signal":99},)"
        R"("sim":{"iccid":"8","imsi":"9","inserted":false,"number":"+7","pin":"4321",)"
        R"("pinAsked":false,"pinAttempts":1,"puk":"87654321","pukAttempts":2},)"
        R"("ussd":[{"request":"*1#","text":"U","type":1}]})";
    ModemState state = ModemState::makeDefault();
    QCOMPARE(load(everything + "\n", &state), QString());
    QCOMPARE(toDataValue(state).parseToQString(FAST_STYLE), QString::fromUtf8(everything + "\n"));
    QCOMPARE(state.contacts.at(0).index, 2);
    QCOMPARE(state.messages.at(0).status, QString("STO UNSENT"));
    QCOMPARE(state.sim.pukAttempts, 2);
}

void tst_modemstate::keepsTheDefaultOfAMissingMember()
{
    ModemState state = ModemState::makeDefault();
    QCOMPARE(load(R"({"sim":{"pin":"9999"},"messages":[]})", &state), QString());
    QCOMPARE(state.sim.pin, QString("9999"));
    QCOMPARE(state.sim.puk, QString("12345678"));
    QCOMPARE(state.messages.size(), size_t(0));
    QCOMPARE(state.contacts.size(), size_t(3));
}

void tst_modemstate::refusesWhatIsNoState_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const char* content, const char* reason) {
        QTest::newRow(name) << QByteArray(content) << QString(reason);
    };
    row("no JSON", "{", "it is no JSON text in a file whose name ends in .config");
    row("empty", "", "it is no JSON text in a file whose name ends in .config");
    row("no object", "[]", "\"\" must be an object");
    row("part that is no object", R"({"sim":7})", "\"sim\" must be an object");
    row("unknown member", R"({"sim":{"pim":"1"}})", "\"sim.pim\" is no member of the state");
    row("unknown part", R"({"sims":{}})", "\"sims\" is no member of the state");
    row("no text", R"({"sim":{"imsi":1}})",
        "\"sim.imsi\" must be a text of 0 to 15 characters out of \"0123456789\"");
    row("no PIN", R"({"sim":{"pin":"12a4"}})",
        "\"sim.pin\" must be a text of 4 to 8 characters out of \"0123456789\"");
    row("short PIN", R"({"sim":{"pin":"123"}})",
        "\"sim.pin\" must be a text of 4 to 8 characters out of \"0123456789\"");
    row("no number", R"({"network":{"signal":"21"}})",
        "\"network.signal\" must be a number from 0 to 99");
    row("beyond the range", R"({"network":{"signal":100}})",
        "\"network.signal\" must be a number from 0 to 99");
    row("no flag", R"({"sim":{"inserted":1}})", "\"sim.inserted\" must be true or false");
    row("no list", R"({"messages":{}})", "\"messages\" must be a list");
    row("item that is no object", R"({"messages":[1]})", "\"messages[0]\" must be an object");
    row("member of an item", R"({"contacts":[{"index":1},{"index":0}]})",
        "\"contacts[1].index\" must be a number from 1 to 250");
    row("place taken twice", R"({"contacts":[{"index":3},{"index":3}]})",
        "\"contacts\" has no place 3, or has it twice");
    row("no such place", R"({"contactRoom":2})", "\"contacts\" has no place 3, or has it twice");
    row("unknown status", R"({"messages":[{"number":"1","status":"NEW"}]})",
        "\"messages\" has the unknown status \"NEW\"");
    row("no operators", R"({"network":{"operators":[]}})",
        "\"network.selected\" names none of \"network.operators\"");
}

void tst_modemstate::refusesWhatIsNoState()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    ModemState state = ModemState::makeDefault();
    const QString before = toDataValue(state).parseToQString(FAST_STYLE);
    const QString error = load(content, &state);
    QVERIFY2(error.endsWith(": " + reason), qPrintable(error));
    QCOMPARE(toDataValue(state).parseToQString(FAST_STYLE), before);
}

void tst_modemstate::createsAMissingFile()
{
    const QTemporaryDir folder;
    for (const char* name : {"new.config", "new.xml"}) {
        const StateFile file(folder.filePath(name));
        ModemState state = ModemState::makeDefault();
        state.sim.pin = "2468";
        QString error;
        QVERIFY(StateFile(folder.filePath(name)).load(&state, &error));
        state.sim.pin = "1357";
        QVERIFY(StateFile(folder.filePath(name)).load(&state, &error));
        QCOMPARE(state.sim.pin, QString("2468"));
        state.sim.pin = "1357";
        QVERIFY(file.save(state));
        state.sim.pin.clear();
        QVERIFY(StateFile(folder.filePath(name)).load(&state, &error));
        QCOMPARE(state.sim.pin, QString("1357"));
    }
    QString error;
    ModemState state;
    QVERIFY(StateFile(QString()).load(&state, &error));
    QVERIFY(StateFile(QString()).save(state));
}

void tst_modemstate::refusesFilesThatItCannotUse()
{
    const QTemporaryDir folder;
    ModemState state = ModemState::makeDefault();
    for (const char* name : {"state.json", "missing/state.config"}) {
        QString error;
        QVERIFY(!StateFile(folder.filePath(name)).load(&state, &error));
        QVERIFY2(error.startsWith("cannot create the state file "), qPrintable(error));
        QVERIFY(!StateFile(folder.filePath(name)).save(state));
    }
}

void tst_modemstate::givesArrivingMessagesTheFirstFreePlace()
{
    ModemState state;
    state.messageRoom = 3;
    QCOMPARE(state.addReceived("1", "a"), 1);
    QCOMPARE(state.addReceived("1", "b"), 2);
    QCOMPARE(state.addReceived("1", "c"), 3);
    QCOMPARE(state.addReceived("1", "d"), 0);
    state.messages.erase(state.messages.begin() + 1);
    state.messagesArrived = 59;
    QCOMPARE(state.addReceived("1", "e"), 2);
    QCOMPARE(state.messages.at(1).text, QString("e"));
    QCOMPARE(state.messages.at(1).time, QString("24/05/17,13:00:00+00"));
}

QTEST_GUILESS_MAIN(tst_modemstate)
#include "tst_modemstate.moc"
