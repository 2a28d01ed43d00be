#include "connectionmanager.h"

#include <QLocalSocket>

class tst_connectionmanagerlifecycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waitsForAControllerThatStartsLate();
    void answersAtOnceWithoutADevice();
    void waitsForAServiceThatStartsLate();
    void findsAServiceThatWasKilledAndRestarted();
    void findsAControllerThatWasKilledAndRestarted();
    void endsTheServiceOfAnUnpluggedDevice();
    void findsADeviceThatIsPluggedInAgain();
    void keepsTheOtherDevicesService();
    void endsEverybodyOnQuit();
    void endsTheControllerThatIsAlone();
    void doesNotWaitForAClientThatVanishedWhileItAsked();
    void endsCleanlyWhenTerminated();
};

void tst_connectionmanagerlifecycle::waitsForAControllerThatStartsLate()
{
    ConnectionManager manager;
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--once", "--pin", "1234"});
    const auto controller = manager.startController();
    QVERIFY(dashboard->says("application controller: introduced"));
    QCOMPARE(dashboard->exitCode(), 0);
    QVERIFY(service->says("application controller: introduced"));
}

void tst_connectionmanagerlifecycle::answersAtOnceWithoutADevice()
{
    ConnectionManager manager;
    const auto dashboard = manager.startDashboard({"--trace"});
    dashboard->enter("ask");
    QVERIFY(dashboard->says("trace: IPCClient cannot send"));
    QVERIFY(dashboard->says("trace: IPCClient answers itself: "
                            "__BEGIN__{\"IPCMSG_ERROR_CODE\":6,"));
    QVERIFY(dashboard->says("PIN           could not be sent (error 6)"));
}

void tst_connectionmanagerlifecycle::waitsForAServiceThatStartsLate()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("device: Demo Modem is demo-device-1"));
    dashboard->enter("ask");
    QVERIFY(dashboard->says("PIN           could not be sent (error 6)"));
    const auto service = manager.startService();
    QVERIFY(dashboard->says("PIN           the SIM asks for the PIN"));
}

void tst_connectionmanagerlifecycle::findsAServiceThatWasKilledAndRestarted()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard({"--pin", "1234"});
    QVERIFY(dashboard->says("Statistics    not connected"));
    service->kill();
    QCOMPARE(service->exitCode(), ChildProcess::kCrashed);
    QVERIFY(dashboard->says("device: connection lost"));
    // Then the modem's line can be had again.
    QVERIFY(manager.modem().says("trace: closed"));
    dashboard->enter("ask");
    QVERIFY(dashboard->says("PIN           could not be sent (error 6)"));

    // The modem has lived on with the PIN that it had.
    const auto restarted = manager.startService();
    QVERIFY(dashboard->says("PIN           the SIM is ready"));
    QVERIFY(dashboard->says("Statistics    not connected"));
    manager.modem().enter("signal 9");
    QVERIFY(dashboard->says("* Network     Example Mobile, LTE, signal 9 of 31"));
}

void tst_connectionmanagerlifecycle::findsAControllerThatWasKilledAndRestarted()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard();
    QVERIFY(service->says("application controller: introduced"));
    QVERIFY(dashboard->says("Statistics"));
    controller->kill();
    QVERIFY(service->says("application controller: lost"));
    QVERIFY(dashboard->says("application controller: lost"));

    // The device is asked as before.
    dashboard->enter("ask");
    QVERIFY(dashboard->says("Statistics"));

    const auto restarted = manager.startController();
    QVERIFY(service->says("application controller: introduced"));
    QVERIFY(dashboard->says("application controller: introduced"));
    restarted->enter("quit");
    QCOMPARE(service->exitCode(), 0);
    QCOMPARE(dashboard->exitCode(), 0);
    QCOMPARE(restarted->exitCode(), 0);
}

void tst_connectionmanagerlifecycle::endsTheServiceOfAnUnpluggedDevice()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    QVERIFY(service->says("application controller: introduced"));
    controller->enter("unplug Nobody");
    QVERIFY(controller->says("cannot do: unplug Nobody"));
    controller->enter("unplug Demo Modem");
    QVERIFY(service->says("not plugged in: Demo Modem"));
    QCOMPARE(service->exitCode(), 0);
}

void tst_connectionmanagerlifecycle::findsADeviceThatIsPluggedInAgain()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("Statistics"));
    controller->enter("unplug Demo Modem");
    QVERIFY(dashboard->says("device: Demo Modem was unplugged"));
    // Whichever the dashboard notices first, the loss is said before.
    QCOMPARE(dashboard->output().count("device: connection lost"), 1);
    // Then the modem's line can be had again.
    QCOMPARE(service->exitCode(), 0);
    controller->enter("plug Demo Modem=demo-device-2");
    QVERIFY(dashboard->says("device: Demo Modem is demo-device-2"));
    const auto second = manager.startService({"--id", "demo-device-2"});
    QVERIFY(dashboard->says("PIN           the SIM asks for the PIN"));
}

void tst_connectionmanagerlifecycle::keepsTheOtherDevicesService()
{
    ConnectionManager manager;
    const auto controller = manager.startController({"--device", "A=a", "--device", "B=b"});
    const auto serviceA = manager.startService({"--name", "A", "--id", "a"});
    const QString lineB = manager.socket("modem-b");
    const auto modemB = manager.startModem({"--link", lineB});
    const auto serviceB = manager.startService({"--name", "B", "--id", "b", "--port", lineB});
    const auto dashboardB = manager.startDashboard({"--device", "B"});
    QVERIFY(serviceA->says("application controller: introduced"));
    QVERIFY(dashboardB->says("Statistics"));
    controller->enter("unplug A");
    QCOMPARE(serviceA->exitCode(), 0);
    dashboardB->enter("ask");
    QVERIFY(dashboardB->says("Statistics"));
    QVERIFY(!dashboardB->output().contains("lost"));
}

void tst_connectionmanagerlifecycle::endsEverybodyOnQuit()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto first = manager.startDashboard();
    const auto second = manager.startDashboard();
    QVERIFY(service->says("application controller: introduced"));
    QVERIFY(first->says("Statistics"));
    QVERIFY(second->says("Statistics"));
    controller->enter("quit");
    QVERIFY(first->says("the controller wants everybody to quit"));
    QCOMPARE(first->exitCode(), 0);
    QCOMPARE(second->exitCode(), 0);
    QCOMPARE(service->exitCode(), 0);
    QCOMPARE(controller->exitCode(), 0);
}

void tst_connectionmanagerlifecycle::endsTheControllerThatIsAlone()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    controller->enter("quit");
    QCOMPARE(controller->exitCode(), 0);
}

void tst_connectionmanagerlifecycle::doesNotWaitForAClientThatVanishedWhileItAsked()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    QLocalSocket client;
    client.connectToServer(manager.socket("applicationcontroller"));
    // The first answer finds that the client has gone; the introduction comes after that.
    client.write("__BEGIN__{\"IPCMSG_TYPE\":\"NOBODY_KNOWS\"}__END__"
                 "__BEGIN__{\"IPCMSG_TYPE\":\"WZR_MESSAGE_APPLICATION_CLIENT_INIT\","
                 "\"IPCMSG_USER_DATA\":\"ghost\"}__END__");
    QVERIFY(client.flush());
    client.abort();
    QVERIFY(controller->says("gone: "));
    controller->enter("quit");
    QCOMPARE(controller->exitCode(), 0);
}

void tst_connectionmanagerlifecycle::endsCleanlyWhenTerminated()
{
    ConnectionManager manager;
    const auto controller = manager.startController();
    const auto service = manager.startService();
    const auto dashboard = manager.startDashboard();
    QVERIFY(dashboard->says("Statistics"));
    dashboard->terminate();
    QCOMPARE(dashboard->exitCode(), 0);
    service->terminate();
    QCOMPARE(service->exitCode(), 0);
    controller->terminate();
    QCOMPARE(controller->exitCode(), 0);
}

QTEST_GUILESS_MAIN(tst_connectionmanagerlifecycle)
#include "tst_connectionmanagerlifecycle.moc"
