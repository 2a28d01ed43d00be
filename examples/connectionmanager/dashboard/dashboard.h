#ifndef DEMO_DASHBOARD_H
#define DEMO_DASHBOARD_H

#include "DataValue/datavalue.h"
#include "dashboard/deviceslots.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

/// The conversation with the device: what is asked, when, and in which order. A module like
/// RecordView, which shows the answers; both know the message center only.
class Dashboard : public QObject
{
    Q_OBJECT

public:
    struct Plan
    {
        QString pin;       ///< Entered when the SIM asks for it
        bool dial = false; ///< Connect, after everything was asked
        int reports = 0;   ///< In a one-shot run: end only after this number of reports
    };

    Dashboard(const QString& senderID, const Plan& plan, QObject* parent = nullptr);

    /// Asks for everything, beginning with the PIN.
    void begin();
    /// What was asked will not be answered any more.
    void forgetQuestions();
    /// Does what a line of the user says. False when it says nothing known.
    bool obey(const QString& line);

Q_SIGNALS:
    /// Everything that was planned is done; `failures` answers told of an error.
    void finished(int failures);

private Q_SLOTS:
    // Called by the message center, by name.
    void onAnswer(CDataValue* envelope);
    void onPinState(CDataValue* envelope);
    void onPinVerified(CDataValue* envelope);
    void onMessages(CDataValue* envelope);
    void onReport(CDataValue* envelope);

private:
    /// What a line of the user lets happen.
    struct Command
    {
        int words; ///< how many the line has at least, the command's name included
        void (*run)(Dashboard& self, const QStringList& words);
    };
    static const QMap<QString, Command>& commands();

    void ask(const char* messageID, const CDataValue& data = CDataValue());
    void askEverything();
    void dial();
    void askForMessages();
    void askForPhonebook();
    void diagnose();
    void deleteMessages(const QStringList& numbers);
    void cancelDeleting();
    void addToPhonebook(const QString& number, const QString& name);
    void sendUssd(const QString& text);
    void selectNetwork(const QString& name);
    void finishWhenDone();

    QByteArray m_senderID;
    Plan m_plan;
    bool m_begun = false;
    bool m_pinTried = false;
    int m_open = 0;     // questions without an answer
    int m_failures = 0; // answers with an error code
    int m_reports = 0;
    QVector<int> m_messageRefs; // of the messages that were listed last
    DeviceSlots m_slots;
};

#endif
