#ifndef DEMO_RECORDVIEW_H
#define DEMO_RECORDVIEW_H

#include "DataValue/datavalue.h"
#include "dashboard/deviceslots.h"

#include <QObject>
#include <QString>

/// The part of the user interface that shows answers and reports: a module that registers one
/// slot per message identifier with the message center and prints the record that comes.
class RecordView : public QObject
{
    Q_OBJECT

public:
    explicit RecordView(QObject* parent = nullptr);

private Q_SLOTS:
    // Called by the message center, by name. The envelope belongs to the caller.
    void showNetworkInfo(CDataValue* envelope);
    void showRegistration(CDataValue* envelope);
    void showCell(CDataValue* envelope);
    void showNetworks(CDataValue* envelope);
    void showSelection(CDataValue* envelope);
    void showPinState(CDataValue* envelope);
    void showAttempts(CDataValue* envelope);
    void showEquipment(CDataValue* envelope);
    void showConnection(CDataValue* envelope);
    void showStatistics(CDataValue* envelope);
    void showNetworkReport(CDataValue* envelope);
    void showConnectionReport(CDataValue* envelope);
    void showMessages(CDataValue* envelope);
    void showMessageStorage(CDataValue* envelope);
    void showDeletion(CDataValue* envelope);
    void showPhonebook(CDataValue* envelope);
    void showAddition(CDataValue* envelope);
    void showPhonebookStorage(CDataValue* envelope);
    void showUssdSent(CDataValue* envelope);
    void showDiagnosis(CDataValue* envelope);
    void showFindings(CDataValue* envelope);
    void showCancel(CDataValue* envelope);
    void showNewMessage(CDataValue* envelope);
    void showProgress(CDataValue* envelope);
    void showDeleted(CDataValue* envelope);
    void showUssd(CDataValue* envelope);

private:
    DeviceSlots m_slots;
};

#endif
