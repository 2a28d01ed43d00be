// Stands in for the system's header of the same name, with what the listener uses of it.
#ifndef STANDIN_CARBON_H
#define STANDIN_CARBON_H

#include <cstdint>

using OSStatus = std::int32_t;
using ItemCount = unsigned long;
struct StandInEvent
{
    std::uint32_t kind;
};
struct StandInEventTarget;
struct StandInEventHandler;
using EventRef = StandInEvent*;
using EventTargetRef = StandInEventTarget*;
using EventHandlerRef = StandInEventHandler*;
using EventHandlerCallRef = void*;
using EventHandlerUPP = OSStatus (*)(EventHandlerCallRef, EventRef, void*);
struct EventTypeSpec
{
    std::uint32_t eventClass;
    std::uint32_t eventKind;
};

constexpr OSStatus noErr = 0;
constexpr std::uint32_t kEventClassSystem = 0x6D616373; // 'macs'
constexpr std::uint32_t kEventSystemUserSessionActivated = 10;
constexpr std::uint32_t kEventSystemUserSessionDeactivated = 11;

EventTargetRef GetApplicationEventTarget();
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerUPP handler, ItemCount count,
                             const EventTypeSpec* types, void* userData,
                             EventHandlerRef* installed);
std::uint32_t GetEventKind(EventRef event);

#endif
