// Stands in for the system's header of the same name, with what the listener uses of it.
#ifndef STANDIN_IOMESSAGE_H
#define STANDIN_IOMESSAGE_H

#include <cstdint>

constexpr std::uint32_t kIOMessageCanSystemSleep = 0xE0000270;
constexpr std::uint32_t kIOMessageSystemWillSleep = 0xE0000280;
constexpr std::uint32_t kIOMessageSystemHasPoweredOn = 0xE0000300;

#endif
