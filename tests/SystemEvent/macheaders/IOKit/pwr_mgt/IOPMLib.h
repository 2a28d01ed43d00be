// Stands in for the system's header of the same name, with what the listener uses of it.
#ifndef STANDIN_IOPMLIB_H
#define STANDIN_IOPMLIB_H

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>

using natural_t = std::uint32_t;
using io_object_t = std::uint32_t;
using io_connect_t = io_object_t;
using io_service_t = io_object_t;
using IOReturn = int;
struct StandInNotificationPort;
using IONotificationPortRef = StandInNotificationPort*;
using IOServiceInterestCallback = void (*)(void* refcon, io_service_t service,
                                           natural_t messageType, void* messageArgument);

io_connect_t IORegisterForSystemPower(void* refcon, IONotificationPortRef* port,
                                      IOServiceInterestCallback callback, io_object_t* notifier);
IOReturn IOAllowPowerChange(io_connect_t kernelPort, intptr_t notificationID);
CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef port);
void IONotificationPortDestroy(IONotificationPortRef port);

#endif
