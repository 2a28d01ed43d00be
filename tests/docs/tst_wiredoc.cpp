// Sends the examples of docs/wire.md through the library.
#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"
#include "Ipc/ipcserver.h"

#include <QFile>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QUuid>
#include <QtTest>

#include <memory>
#include <string>

namespace {

QString page()
{
    QFile file(PROJECT_FOLDER "/docs/wire.md");
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The blocks that are marked with `mark`, with the signs of the page replaced.
QStringList blocks(const QString& mark)
{
    QStringList result;
    const QRegularExpression fence("^```" + mark + "\\n(.*?)\\n```$",
                                   QRegularExpression::MultilineOption |
                                       QRegularExpression::DotMatchesEverythingOption);
    auto match = fence.globalMatch(page());
    while (match.hasNext())
        result << match.next()
                      .captured(1)
                      .replace(QChar(0x23CE), '\n')
                      .replace(QChar(0x2400), QChar(0));
    return result;
}

QString withoutMarkers(const QString& frame)
{
    return frame.mid(9, frame.size() - 16);
}

} // namespace

class tst_wiredoc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyFrameIsWhatTheClientSends();
    void everyFrameArrivesWhole();
    void aCutMessageMakesOthersArriveTwice();
    void bodiesAreWhatTheySay();
    void theMadeUpAnswerIsWhatThePageShows();
    void theTableNamesTheKeysOfTheFrames();

private:
    QString m_name;
    std::unique_ptr<IPCServer> m_server;
    std::unique_ptr<IPCClient> m_client;
    QStringList m_atServer;
    QStringList m_atClient;
};

void tst_wiredoc::init()
{
    m_name = "wzr-wire-" + QUuid::createUuid().toString(QUuid::Id128).left(16);
    m_server = std::make_unique<IPCServer>();
    m_client = std::make_unique<IPCClient>(m_name);
    m_atServer.clear();
    m_atClient.clear();
    connect(m_server.get(), &IPCServer::sigMessageReceived, this,
            [this](const QString& text) { m_atServer << text; });
    connect(m_client.get(), &IPCClient::sigMessageReceived, this,
            [this](CDataValue* value) { m_atClient << value->parseToQString(FAST_STYLE); });
    m_server->startListen(m_name);
    m_client->connectToServer();
    QTRY_VERIFY(m_server->hasClientConnected());
}

void tst_wiredoc::cleanup()
{
    m_client.reset();
    m_server.reset();
}

// Byte for byte, but for the escape that the page recommends to peers of another kind.
void tst_wiredoc::everyFrameIsWhatTheClientSends()
{
    const QStringList frames = blocks("frame");
    QCOMPARE(frames.size(), 5);
    for (const QString& frame : frames) {
        QVERIFY(frame.startsWith("__BEGIN__{") && frame.endsWith("}\n__END__"));
        CDataValue value;
        QVERIFY(CDataValue::parseToDataValue(withoutMarkers(frame), value));
        const QString text = value.parseToQString(FAST_STYLE);
        if (frame.contains("\\u005f")) {
            QCOMPARE(value.mapGet("IPCMSG_USER_DATA").asQString(), QString("not the __END__ yet"));
            continue;
        }
        QCOMPARE("__BEGIN__" + text + "__END__", frame);
        if (!value.mapIsMember("IPCMSG_USER_DATA") || value.mapIsMember("IPCMSG_ERROR_CODE"))
            continue;
        const std::string type = value.mapGet("IPCMSG_TYPE").asQString().toStdString();
        const std::string sender = value.mapGet("IPCMSG_MSG_SENDER").asQString().toStdString();
        m_client->messageSend(type.c_str(), &value.mapGet("IPCMSG_USER_DATA"), sender.c_str());
        QTRY_COMPARE(m_atServer, QStringList{text});
    }
    QCOMPARE(m_atServer.size(), 1);
}

void tst_wiredoc::everyFrameArrivesWhole()
{
    QStringList texts;
    for (const QString& frame : blocks("frame")) {
        const QString text = withoutMarkers(frame);
        QCOMPARE(m_client->sendblock(text), 0);
        m_server->broadcastMsg(text);
        texts << text;
    }
    QTRY_COMPARE(m_atServer, texts);
    QTRY_COMPARE(m_atClient.size(), texts.size());
    for (int i = 0; i < texts.size(); ++i) {
        if (!texts.at(i).contains("\\u005f"))
            QCOMPARE(m_atClient.at(i), texts.at(i));
    }
}

void tst_wiredoc::aCutMessageMakesOthersArriveTwice()
{
    QLocalSocket peer;
    peer.connectToServer(m_name);
    QVERIFY(peer.waitForConnected());
    const QByteArray frame = "__BEGIN__{\"IPCMSG_TYPE\":\"%\"}\n__END__";
    const auto named = [&frame](const char* name) { return QByteArray(frame).replace("%", name); };
    // Together, so that one read gets them all.
    peer.write("__BEGIN__{\"IPCMSG_TYPE\":\"CUT\",\"IPCMSG_USER_DATA\":\"not __END__ yet\"}\n"
               "__END__" +
               named("SECOND") + named("THIRD"));
    QTRY_VERIFY(!m_atServer.isEmpty());
    peer.write(named("FOURTH"));
    QTRY_VERIFY(m_atServer.last().contains("FOURTH"));

    QStringList types;
    for (const QString& body : m_atServer) {
        CDataValue value;
        if (CDataValue::parseToDataValue(body, value))
            types << value.mapGet("IPCMSG_TYPE").asQString();
    }
    QCOMPARE(types, (QStringList{"SECOND", "THIRD", "THIRD", "FOURTH"}));
}

void tst_wiredoc::bodiesAreWhatTheySay()
{
    const QStringList bodies = blocks("body");
    QCOMPARE(bodies.size(), 3);
    for (const QString& body : bodies)
        m_server->broadcastMsg(body);
    m_server->broadcastMsg("0");
    QTRY_VERIFY(m_atClient.endsWith("0\n"));
    // The second is dropped.
    QCOMPARE(m_atClient, (QStringList{bodies.at(0) + "\n", bodies.at(2) + "\n", "0\n"}));
}

void tst_wiredoc::theMadeUpAnswerIsWhatThePageShows()
{
    CDataValue data(MAP_VALUE);
    data.mapSet("ID", CDataValue(7), false);
    data.mapSet("Name", CDataValue("Modem"), false);
    m_server.reset();
    QTRY_VERIFY(!m_client->isConnected());
    QCOMPARE(m_client->sendblock("x"), 7);
    m_client->messageSend("WZR_MESSAGE_APPLICATION_GET_DEV_ID", &data, "dashboard");
    QCOMPARE(m_atClient, QStringList{blocks("body").at(2) + "\n"});
}

void tst_wiredoc::theTableNamesTheKeysOfTheFrames()
{
    for (const QString& frame : blocks("frame")) {
        CDataValue value;
        QVERIFY(CDataValue::parseToDataValue(withoutMarkers(frame), value));
        for (const std::string& key : value.mapGetKeys())
            QVERIFY(page().contains("\n| `" + QString::fromStdString(key) + "` |"));
    }
}

QTEST_GUILESS_MAIN(tst_wiredoc)
#include "tst_wiredoc.moc"
