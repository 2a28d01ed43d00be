#ifndef SYSTEMEVENT_LOGINDMODULE_P_H
#define SYSTEMEVENT_LOGINDMODULE_P_H

#include <memory>

class CSystemEventListener;
class QObject;

/// Begins to watch logind for the listener, in the calling thread, which the result belongs to; the
/// watching ends with it. Null when the module cannot be loaded, which is logged.
///
/// What watches lies in a module of its own beside the library, as it alone needs Qt D-Bus: loading
/// that takes a quarter of the start of a process, and most processes do not listen.
std::unique_ptr<QObject> watchLogind(CSystemEventListener& listener);

/// What the module exports. The caller owns the result.
using LogindModuleEntry = QObject* (*)(CSystemEventListener* listener);
constexpr char kLogindModuleEntry[] = "wzrWatchLogind";

#endif
