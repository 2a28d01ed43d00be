#ifndef TESTS_PROCESS_RAWCLIENT_H
#define TESTS_PROCESS_RAWCLIENT_H

#include "DataValue/datavalue.h"
#include "Ipc/ipcclient.h"

#include <QSignalSpy>
#include <QTest>

/// A client of one of the servers that sends texts as they are and collects what comes back.
class RawClient
{
public:
    explicit RawClient(const QString& socket)
        : m_client(socket, nullptr)
    {
        QObject::connect(&m_client, &IPCClient::sigMessageReceived, [this](CDataValue* envelope) {
            m_answers += envelope->parseToQString(FAST_STYLE).trimmed();
        });
        QSignalSpy connected(&m_client, &IPCClient::sigIPCServerConnected);
        m_client.connectToServer();
        if (connected.isEmpty() && !connected.wait(30000))
            qFatal("RawClient: no connection");
    }

    void send(const QString& text) { QCOMPARE(m_client.sendblock(text), 0); }

    /// What comes next.
    QString answer()
    {
        return QTest::qWaitFor([this] { return !m_answers.isEmpty(); }, 30000)
                   ? m_answers.takeFirst()
                   : QString();
    }

    /// The next one that contains `part`; those before it are left out.
    QString answerWith(const QString& part)
    {
        QString text = answer();
        while (!text.isNull() && !text.contains(part))
            text = answer();
        return text;
    }

private:
    IPCClient m_client;
    QStringList m_answers;
};

#endif
