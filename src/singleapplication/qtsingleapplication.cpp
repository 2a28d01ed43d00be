#include "singleapplication/qtsingleapplication.h"

#include "singleapplication/singleinstance_p.h"

QtSingleApplication::QtSingleApplication(int& argc, char** argv, bool GUIenabled)
    : QtSingleApplication(QString(), argc, argv)
{
    Q_UNUSED(GUIenabled)
}

QtSingleApplication::QtSingleApplication(const QString& id, int& argc, char** argv)
    : QApplication(argc, argv)
    , m_instance(new SingleInstance(id.isNull() ? applicationFilePath() : id, this))
{
    connect(m_instance, &SingleInstance::messageReceived, this,
            &QtSingleApplication::handleMessage);
}

QtSingleApplication::~QtSingleApplication()
{
    // The local server needs the application object, which is gone when children are deleted.
    delete m_instance;
}

bool QtSingleApplication::isRunning()
{
    return m_instance->isOtherRunning();
}

QString QtSingleApplication::id() const
{
    return m_instance->id();
}

void QtSingleApplication::setActivationWindow(QWidget* window, bool activateOnMessage)
{
    m_window = window;
    m_activateOnMessage = activateOnMessage;
}

QWidget* QtSingleApplication::activationWindow() const
{
    return m_window;
}

void QtSingleApplication::initialize(bool dummy)
{
    Q_UNUSED(dummy)
    isRunning();
}

bool QtSingleApplication::sendMessage(const QString& message, int timeout)
{
    return m_instance->send(message, timeout);
}

void QtSingleApplication::activateWindow()
{
    if (!m_window)
        return;
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->raise();
    m_window->activateWindow();
}

void QtSingleApplication::handleMessage(const QString& message)
{
    if (m_activateOnMessage)
        activateWindow();
    Q_EMIT messageReceived(message);
}
