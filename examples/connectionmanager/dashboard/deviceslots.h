#ifndef DEMO_DEVICESLOTS_H
#define DEMO_DEVICESLOTS_H

#include "MessageCenter/messagecenter.h"

/// The slots of one module that are called with envelopes from the device service, registered
/// with the message center as long as this object lives. A member of the module: the center must
/// not call a receiver that has gone.
///
///     constexpr DeviceSlots::Item Slots[] = {{DemoMessage::NetworkInfo, "showNetworkInfo"}};
///     ...
///     , m_slots(this, Slots)
class DeviceSlots
{
public:
    struct Item
    {
        const char* messageID;
        const char* slot; ///< Bare name of a slot that takes a CDataValue*
    };

    /// `items` must live as long as the object.
    template<int Count>
    DeviceSlots(const QObject* receiver, const Item (&items)[Count])
        : m_receiver(receiver)
        , m_begin(items)
        , m_end(items + Count)
    {
        for (const Item* item = m_begin; item != m_end; ++item)
            MessageCenter::defaultCenter()->registerDeviceMessage(item->messageID, item->slot,
                                                                  m_receiver);
    }
    ~DeviceSlots()
    {
        for (const Item* item = m_begin; item != m_end; ++item)
            MessageCenter::defaultCenter()->unregisterDeviceMessage(item->messageID, m_receiver);
    }
    DeviceSlots(const DeviceSlots&) = delete;
    DeviceSlots& operator=(const DeviceSlots&) = delete;

private:
    const QObject* m_receiver;
    const Item* m_begin;
    const Item* m_end;
};

#endif
