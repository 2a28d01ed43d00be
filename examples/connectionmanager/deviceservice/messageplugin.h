#ifndef DEMO_MESSAGEPLUGIN_H
#define DEMO_MESSAGEPLUGIN_H

#include "BusinessBase/businesspluginbase.h"
#include "records/records.h"

#include <QTimer>

class Modem;
class WorkQueue;

/// Short messages. Deleting is the example of a long operation: the request is answered when the
/// work begins; it goes on step by step, each as work of the queue, so that the service answers
/// others meanwhile, reports
/// after each step how far it has come, can be cancelled between two steps, and reports the
/// result at the end. What a cancel leaves undone counts as not deleted.
class MessagePlugin : public BusinessPluginBase
{
    Q_OBJECT

public:
    /// `pace`: milliseconds of rest between two steps.
    MessagePlugin(Modem& modem, WorkQueue& queue, int pace);
    QString pluginName() override { return QStringLiteral("Message"); }

private Q_SLOTS:
    int list(CDataValue& request, CDataValue& response);
    int storage(CDataValue& request, CDataValue& response);
    int remove(CDataValue& request, CDataValue& response);
    int messageArrived(QString text, CDataValue* data);

private:
    void removeNext();
    void reportResult();

    Modem& m_modem;
    WorkQueue& m_queue;
    QTimer m_nextStep; // single shot: the next one is started when a step is done
    bool m_isRemoving = false;
    QVector<int> m_toRemove; // references that are left
    int m_total = 0;
    BLSmsDeleteReturnItem m_result;
};

#endif
