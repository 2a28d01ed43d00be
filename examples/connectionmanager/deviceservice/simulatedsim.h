#ifndef DEMO_SIMULATEDSIM_H
#define DEMO_SIMULATEDSIM_H

#include "records/records.h"

#include <QString>

/// What the simulated SIM stores: a few messages and contacts at first, and room for some more.
class SimulatedSim
{
public:
    static constexpr int MessageRoom = 20;
    static constexpr int PhonebookRoom = 10;

    SimulatedSim();

    const BLSmsGetListCnf& messages() const { return m_messages; }
    BLSmsStorageState messageStorage() const;
    /// Stores a message that has arrived. Null when there is no room; else valid until the next
    /// change.
    const BLSmsListItem* addMessage(const QString& number, const QString& text);
    /// False when there is none of that reference.
    bool deleteMessage(int ref);

    const BLPbInitListCnf& phonebook() const { return m_phonebook; }
    BLPbGetStorageInfoCnf phonebookStorage() const;
    /// False when there is no room. The entry gets the next free index.
    bool addPhonebookEntry(BLPbItem entry);

private:
    BLSmsGetListCnf m_messages;
    int m_lastRef = 0;
    BLPbInitListCnf m_phonebook;
};

#endif
