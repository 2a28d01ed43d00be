#include "instanceprocess.h"
#include "qtsingleapplication.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <memory>

// The test's own application is the running instance.
class tst_qtsingleapplication : public QObject
{
    Q_OBJECT

public:
    tst_qtsingleapplication(QtSingleApplication& app, const QString& defaultId)
        : m_app(app)
        , m_defaultId(defaultId)
    {
    }

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void idIsTheExecutableUnlessGiven();
    void messageBringsTheWindowBack();
    void messageActivatesAmongTheOwnWindows();
    void windowIsActiveBeforeTheSignal();
    void activationOnMessageCanBeOff();
    void activateWindowWorksWhenAsked();
    void maximisedWindowStaysMaximised();
    void deletedWindowIsForgotten();

private:
    void sendFromAnother(const QString& message);

    QtSingleApplication& m_app;
    const QString m_defaultId;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<QWidget> m_other;
};

void tst_qtsingleapplication::initTestCase()
{
    m_app.initialize();
    sendFromAnother(QStringLiteral("hello"));
    QVERIFY(!m_app.isRunning());
}

void tst_qtsingleapplication::init()
{
    m_window = std::make_unique<QWidget>();
    m_other = std::make_unique<QWidget>();
    m_window->show();
    m_other->show();
    m_other->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_other.get()));
}

void tst_qtsingleapplication::cleanup()
{
    m_app.setActivationWindow(nullptr);
    m_window.reset();
    m_other.reset();
}

void tst_qtsingleapplication::sendFromAnother(const QString& message)
{
    QSignalSpy received(&m_app, &QtSingleApplication::messageReceived);
    InstanceProcess another(m_app.id(), message);
    QCOMPARE(another.outcome(), QStringLiteral("sent"));
    QTRY_COMPARE(received.size(), 1);
    QCOMPARE(received.at(0).at(0).toString(), message);
}

void tst_qtsingleapplication::idIsTheExecutableUnlessGiven()
{
    QCOMPARE(m_defaultId, QCoreApplication::applicationFilePath());
    QCOMPARE(QUuid(m_app.id()).toString(), m_app.id());
}

void tst_qtsingleapplication::messageBringsTheWindowBack()
{
    m_window->showMinimized();
    QTRY_VERIFY(m_window->isMinimized());
    m_app.setActivationWindow(m_window.get());
    QCOMPARE(m_app.activationWindow(), m_window.get());
    sendFromAnother(QStringLiteral("show yourself"));
    QVERIFY(!m_window->isMinimized());
    QTRY_VERIFY(m_window->isActiveWindow());
}

void tst_qtsingleapplication::messageActivatesAmongTheOwnWindows()
{
    QVERIFY(!m_window->isActiveWindow());
    m_app.setActivationWindow(m_window.get());
    sendFromAnother(QStringLiteral("show yourself"));
    QTRY_VERIFY(m_window->isActiveWindow());
}

void tst_qtsingleapplication::windowIsActiveBeforeTheSignal()
{
    m_window->showMinimized();
    m_app.setActivationWindow(m_window.get());
    bool minimised = true;
    const auto connection = connect(&m_app, &QtSingleApplication::messageReceived, this,
                                    [&] { minimised = m_window->isMinimized(); });
    sendFromAnother(QStringLiteral("show yourself"));
    disconnect(connection);
    QVERIFY(!minimised);
}

void tst_qtsingleapplication::activationOnMessageCanBeOff()
{
    m_window->showMinimized();
    m_app.setActivationWindow(m_window.get(), false);
    sendFromAnother(QStringLiteral("stay"));
    QVERIFY(m_window->isMinimized());
}

void tst_qtsingleapplication::activateWindowWorksWhenAsked()
{
    m_window->showMinimized();
    m_app.setActivationWindow(m_window.get(), false);
    m_app.activateWindow();
    QVERIFY(!m_window->isMinimized());
    QTRY_VERIFY(m_window->isActiveWindow());
}

void tst_qtsingleapplication::maximisedWindowStaysMaximised()
{
    m_window->setWindowState(Qt::WindowMaximized | Qt::WindowMinimized);
    m_app.setActivationWindow(m_window.get());
    m_app.activateWindow();
    QVERIFY(!m_window->isMinimized());
    QVERIFY(m_window->isMaximized());
}

void tst_qtsingleapplication::deletedWindowIsForgotten()
{
    m_app.setActivationWindow(m_window.get());
    m_window.reset();
    QVERIFY(!m_app.activationWindow());
    sendFromAnother(QStringLiteral("show yourself"));
    m_app.activateWindow();
}

int main(int argc, char** argv)
{
    const QTemporaryDir runtime;
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    // One application at a time.
    auto first = std::make_unique<QtSingleApplication>(argc, argv);
    const QString defaultId = first->id();
    first.reset();
    QtSingleApplication app(QUuid::createUuid().toString(), argc, argv);
    tst_qtsingleapplication test(app, defaultId);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_qtsingleapplication.moc"
