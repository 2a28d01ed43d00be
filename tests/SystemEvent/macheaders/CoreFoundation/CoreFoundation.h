// Stands in for the system's header of the same name, with what the listener uses of it.
#ifndef STANDIN_COREFOUNDATION_H
#define STANDIN_COREFOUNDATION_H

#include <cstdint>

struct StandInRunLoop;
struct StandInRunLoopSource;
using CFRunLoopRef = StandInRunLoop*;
using CFRunLoopSourceRef = StandInRunLoopSource*;
using CFRunLoopMode = const char*;
extern const CFRunLoopMode kCFRunLoopDefaultMode;

CFRunLoopRef CFRunLoopGetCurrent();
void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRun();
void CFRunLoopStop(CFRunLoopRef runLoop);

#endif
