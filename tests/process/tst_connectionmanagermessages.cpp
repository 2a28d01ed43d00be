#include "connectionmanager.h"

namespace {

/// The processes with a dashboard that has asked everything.
struct Running
{
    explicit Running(const QStringList& serviceArguments = {})
        : controller(manager.startController())
        , service(manager.startService(serviceArguments))
        , dashboard(manager.startDashboard({"--name", "desk", "--pin", "1234"}))
    {
        if (!dashboard->says("Statistics"))
            qFatal("the dashboard does not get its answers");
    }

    ConnectionManager manager;
    ConnectionManager::Process controller;
    ConnectionManager::Process service;
    ConnectionManager::Process dashboard;
};

} // namespace

class tst_connectionmanagermessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheProgressOfDeleting();
    void tellsWhatCouldNotBeDeleted();
    void stopsDeletingWhenCancelled();
    void deletesAgainAfterACancel();
    void forgetsACancelThatCameTooLate();
    void reportsANewMessage();
    void carriesTheEndMarkerInAMessage();
    void findsThatThereIsNoRoomForMessages();
    void addsToThePhonebookUntilItIsFull();
    void asksTheNetworkByUssd();
    void findsWhatIsWrong();
    void needsThePinForMessagesAndPhonebook();
};

void tst_connectionmanagermessages::showsTheProgressOfDeleting()
{
    Running running({"--pace", "1"});
    running.dashboard->enter("delete all");
    QVERIFY(running.dashboard->says("Deletion      begun"));
    for (const char* bar : {
             "* Deletion    [##..................] 1 of 8",
             "* Deletion    [#####...............] 2 of 8",
             "* Deletion    [#######.............] 3 of 8",
             "* Deletion    [##########..........] 4 of 8",
             "* Deletion    [############........] 5 of 8",
             "* Deletion    [###############.....] 6 of 8",
             "* Deletion    [#################...] 7 of 8",
             "* Deletion    [####################] 8 of 8",
         })
        QVERIFY(running.dashboard->says(bar));
    QVERIFY(running.dashboard->says("* Deletion    8 deleted, 0 not deleted"));
    running.dashboard->enter("messages");
    QVERIFY(running.dashboard->says("Messages      0 messages"));
    QVERIFY(running.dashboard->says("Messages      room for messages on the SIM: 0 of 20 used"));
}

void tst_connectionmanagermessages::tellsWhatCouldNotBeDeleted()
{
    Running running({"--pace", "1"});
    running.dashboard->enter("delete 3 99 3");
    QVERIFY(running.dashboard->says("* Deletion    [####################] 3 of 3"));
    QVERIFY(running.dashboard->says("* Deletion    1 deleted, 2 not deleted"));
    running.dashboard->enter("messages");
    QVERIFY(running.dashboard->says("Messages      7 messages"));
}

void tst_connectionmanagermessages::stopsDeletingWhenCancelled()
{
    Running running({"--pace", "300"});
    running.dashboard->enter("delete all");
    QVERIFY(running.dashboard->says("* Deletion    [##..................] 1 of 8"));
    running.dashboard->enter("cancel");
    QVERIFY(running.dashboard->says("Cancel        done"));
    const QByteArray result = running.dashboard->lineWith("not deleted");
    QVERIFY2(!result.contains("8 deleted, 0 not"), result);
    const int deleted = result.mid(14, 1).toInt();
    QVERIFY(deleted > 0);
    QCOMPARE(result, QString("* Deletion    %1 deleted, %2 not deleted")
                         .arg(deleted)
                         .arg(8 - deleted)
                         .toLatin1());
    running.dashboard->enter("messages");
    QVERIFY(running.dashboard->says(QByteArray::number(8 - deleted) + " messages"));
}

void tst_connectionmanagermessages::deletesAgainAfterACancel()
{
    Running running({"--pace", "200"});
    running.dashboard->enter("delete 1 2 3 4 5 6");
    QVERIFY(running.dashboard->says("1 of 6"));
    running.dashboard->enter("cancel");
    QVERIFY(running.dashboard->says("not deleted"));
    running.dashboard->enter("delete 8");
    QVERIFY(running.dashboard->says("* Deletion    1 deleted, 0 not deleted"));
}

void tst_connectionmanagermessages::forgetsACancelThatCameTooLate()
{
    Running running({"--pace", "1"});
    running.dashboard->enter("cancel");
    QVERIFY(running.dashboard->says("Cancel        done"));
    running.dashboard->enter("delete 1 2");
    QVERIFY(running.dashboard->says("* Deletion    2 deleted, 0 not deleted"));
}

void tst_connectionmanagermessages::reportsANewMessage()
{
    Running running;
    const auto second = running.manager.startDashboard();
    QVERIFY(second->says("Statistics"));
    running.manager.modem().enter("message +15550106 Grüße, zum Mittag?");
    const QByteArray line =
        "* Message     9 unread from +15550106, 17/05/2024 12:09: Grüße, zum Mittag?";
    QCOMPARE(running.dashboard->lineWith("* Message"), line);
    QCOMPARE(second->lineWith("* Message"), line);
}

void tst_connectionmanagermessages::carriesTheEndMarkerInAMessage()
{
    Running running;
    running.manager.modem().enter("message +15550106 cut __END__ here");
    QVERIFY(running.dashboard->says("17/05/2024 12:09: cut __END__ here"));
    running.dashboard->enter("messages");
    QVERIFY(running.dashboard->says("Messages      9 messages"));
    QVERIFY(running.dashboard->says("              9 read from +15550106, 17/05/2024 12:09: "
                                    "cut __END__ here"));
    running.dashboard->enter("phonebook");
    QVERIFY(running.dashboard->says("Phonebook     room for entries"));
    // No answer came twice: two lines when it had asked everything, two now.
    QCOMPARE(running.dashboard->output().count("\nMessages      "), 4);
    QCOMPARE(running.dashboard->output().count("\nPhonebook     "), 4);
}

void tst_connectionmanagermessages::findsThatThereIsNoRoomForMessages()
{
    Running running;
    for (int i = 9; i <= 20; ++i) {
        running.manager.modem().enter("message +15550106 Hello");
        QVERIFY(running.dashboard->says("* Message     " + QByteArray::number(i)));
    }
    // It does not arrive.
    running.manager.modem().enter("message +15550106 Hello");
    running.dashboard->enter("diagnose");
    QVERIFY(running.dashboard->says("Diagnosis     no room for messages (20 of 20): delete some"));
    QVERIFY(!running.dashboard->output().contains("* Message     21"));
}

void tst_connectionmanagermessages::addsToThePhonebookUntilItIsFull()
{
    Running running;
    running.dashboard->enter("add +15550107 Jürgen Groß");
    QVERIFY(running.dashboard->says("Phonebook     1 added, 0 not added"));
    running.dashboard->enter("phonebook");
    QVERIFY(running.dashboard->says("Phonebook     4 entries"));
    QVERIFY(running.dashboard->says("              4 Jürgen Groß: +15550107"));
    for (int i = 5; i <= 10; ++i) {
        running.dashboard->enter("add 1 Somebody");
        QVERIFY(running.dashboard->says("1 added"));
    }
    running.dashboard->enter("add 1 Somebody");
    QVERIFY(running.dashboard->says("Phonebook     memory full (error 25)"));
}

void tst_connectionmanagermessages::asksTheNetworkByUssd()
{
    Running running;
    running.dashboard->enter("ussd *100#");
    QVERIFY(running.dashboard->says("USSD          sent"));
    QVERIFY(running.dashboard->says("* USSD        Your credit is 12.34. (asked by desk)"));
    running.dashboard->enter("ussd *999#");
    QVERIFY(
        running.dashboard->says("* USSD        the network does not know this (asked by desk)"));
}

void tst_connectionmanagermessages::findsWhatIsWrong()
{
    Running running;
    running.manager.modem().enter("signal 2");
    QVERIFY(running.dashboard->says("* Network"));
    running.dashboard->enter("diagnose");
    QVERIFY(running.dashboard->says("Example Mobile, signal 2 of 31 (-109 dBm), the SIM is ready"));
    QVERIFY(
        running.dashboard->says("Diagnosis     the signal is weak (-109 dBm): go to the window"));
    for (int i = 0; i < 3; ++i)
        running.dashboard->enter("changepin 0000 1111");
    running.dashboard->enter("diagnose");
    QVERIFY(
        running.dashboard->says("Diagnosis     the SIM cannot be used (10 attempts left for the "
                                "PUK): enter the PUK, or ask your operator"));
}

void tst_connectionmanagermessages::needsThePinForMessagesAndPhonebook()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService({"--pace", "1"});
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("Messages      the SIM asks for the PIN (error 16)"));
    QVERIFY(dashboard->says("Phonebook     the SIM asks for the PIN (error 16)"));
    QVERIFY(dashboard->says("Diagnosis     the SIM is locked (3 attempts left): enter the PIN"));
    QVERIFY(dashboard->says("Statistics"));
    dashboard->enter("ussd *100#");
    QVERIFY(dashboard->says("USSD          the SIM asks for the PIN (error 16)"));
    dashboard->enter("delete 1");
    QVERIFY(dashboard->says("* Deletion    0 deleted, 1 not deleted"));
}

QTEST_GUILESS_MAIN(tst_connectionmanagermessages)
#include "tst_connectionmanagermessages.moc"
