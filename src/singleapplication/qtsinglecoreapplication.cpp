#include "singleapplication/qtsinglecoreapplication.h"

#include "singleapplication/singleinstance_p.h"

QtSingleCoreApplication::QtSingleCoreApplication(int& argc, char** argv)
    : QtSingleCoreApplication(QString(), argc, argv)
{
}

QtSingleCoreApplication::QtSingleCoreApplication(const QString& id, int& argc, char** argv)
    : QCoreApplication(argc, argv)
    , m_instance(new SingleInstance(id.isNull() ? applicationFilePath() : id, this))
{
    connect(m_instance, &SingleInstance::messageReceived, this,
            &QtSingleCoreApplication::messageReceived);
}

QtSingleCoreApplication::~QtSingleCoreApplication()
{
    // The local server needs the application object, which is gone when children are deleted.
    delete m_instance;
}

bool QtSingleCoreApplication::isRunning()
{
    return m_instance->isOtherRunning();
}

QString QtSingleCoreApplication::id() const
{
    return m_instance->id();
}

bool QtSingleCoreApplication::sendMessage(const QString& message, int timeout)
{
    return m_instance->send(message, timeout);
}
