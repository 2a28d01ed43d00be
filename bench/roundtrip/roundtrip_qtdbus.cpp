// QtDBus over the bus at ADDRESS, with typed arguments:
// roundtrip_qtdbus server|client ADDRESS CONNECTIONS
#include "exchange.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const char service[] = "bench.RoundTrip";
const char path[] = "/bench";

} // namespace

using Messages = QList<Message>;
Q_DECLARE_METATYPE(Message)
Q_DECLARE_METATYPE(Messages)

QDBusArgument& operator<<(QDBusArgument& out, const Message& message)
{
    out.beginStructure();
    out << message.index << message.number << message.text;
    out.endStructure();
    return out;
}

const QDBusArgument& operator>>(const QDBusArgument& in, Message& message)
{
    in.beginStructure();
    in >> message.index >> message.number >> message.text;
    in.endStructure();
    return in;
}

class Service : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "bench.RoundTrip")

public:
    explicit Service(QDBusConnection bus)
        : m_bus(std::move(bus))
    {
    }

public Q_SLOTS:
    int request(const QString& type, const QString& sender, int index, int bytes,
                const QString& note, int& replyIndex, Messages& messages)
    {
        if (note.isEmpty() || sender.isEmpty())
            fail("no note");
        replyIndex = index;
        const std::vector<Message>& made = messagesFor(bytes);
        messages = Messages(made.begin(), made.end());
        if (type != QLatin1String(broadcastType))
            return 0;
        QDBusMessage report = QDBusMessage::createSignal(
            QLatin1String(path), QLatin1String(service), QStringLiteral("report"));
        report << 0 << index << QVariant::fromValue(messages);
        m_bus.send(report);
        messages.clear();
        return 0;
    }

private:
    QDBusConnection m_bus;
};

class Client : public QObject
{
    Q_OBJECT

public:
    Client(const QString& address, int connections)
        : m_rounds(
              connections, [this](int index, int bytes) { ask(requestType, index, bytes); },
              [this](int index, int bytes) { ask(broadcastType, index, bytes); })
    {
        for (int i = 0; i < connections; ++i) {
            m_buses.push_back(QDBusConnection::connectToBus(address, QStringLiteral("c%1").arg(i)));
            if (!m_buses.back().isConnected())
                fail("cannot connect");
            m_buses.back().connect(QLatin1String(service), QLatin1String(path),
                                   QLatin1String(service), QStringLiteral("report"), this,
                                   SLOT(report(QDBusMessage)));
        }
        m_rounds.ready();
    }

    Rounds m_rounds;

private Q_SLOTS:
    void report(const QDBusMessage& message) { m_rounds.replied(replyOf(message)); }

private:
    static Reply replyOf(const QDBusMessage& message)
    {
        const QVariantList arguments = message.arguments();
        if (message.type() == QDBusMessage::ErrorMessage || arguments.size() != 3)
            fail("an error came back");
        const Messages messages = qdbus_cast<Messages>(arguments.at(2));
        return {arguments.at(0).toInt(), arguments.at(1).toInt(),
                std::vector<Message>(messages.begin(), messages.end())};
    }

    void ask(const char* type, int index, int bytes)
    {
        QDBusMessage call =
            QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                           QLatin1String(service), QStringLiteral("request"));
        call << QLatin1String(type) << QLatin1String(senderName) << index << bytes << requestNote();
        auto* watcher = new QDBusPendingCallWatcher(m_buses.front().asyncCall(call), this);
        const bool broadcast = type == broadcastType;
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, broadcast] {
            watcher->deleteLater();
            if (!broadcast)
                m_rounds.replied(replyOf(watcher->reply()));
        });
    }

    std::vector<QDBusConnection> m_buses;
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 4)
        fail("usage: roundtrip_qtdbus server|client ADDRESS CONNECTIONS");
    qDBusRegisterMetaType<Message>();
    qDBusRegisterMetaType<Messages>();
    const QString address = app.arguments().at(2);
    if (app.arguments().at(1) == QLatin1String("client")) {
        Client client(address, app.arguments().at(3).toInt());
        return runEvents(&client.m_rounds);
    }
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("server"));
    Service object(bus);
    if (!bus.registerObject(QLatin1String(path), &object, QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QLatin1String(service)))
        fail("cannot serve");
    printReady();
    return runEvents(nullptr);
}

#include "roundtrip_qtdbus.moc"
