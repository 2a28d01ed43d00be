// The entry of the module that watches logind; see logindmodule_p.h.
#include "SystemEvent/logindmodule_p.h"
#include "SystemEvent/logindwatch_p.h"

extern "C" Q_DECL_EXPORT QObject* wzrWatchLogind(CSystemEventListener* listener)
{
    auto* const watch = new LogindWatch(*listener);
    watch->begin();
    return watch;
}
