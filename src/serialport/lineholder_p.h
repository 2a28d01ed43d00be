#ifndef SERIALPORT_LINEHOLDER_P_H
#define SERIALPORT_LINEHOLDER_P_H

#include <cstdint>

/// The process that keeps others from the device node at `path`: the one with a lock on it, else
/// another one that has it open. 0 when the system does not tell. Each system has its own source.
/// The answer may be outdated when it is read.
std::int64_t lineHolder(const char* path);

#endif
