#ifndef SYSTEMEVENT_CSYSTEMEVENTLISTENER_P_H
#define SYSTEMEVENT_CSYSTEMEVENTLISTENER_P_H

class CSystemEventListener;

/// A new listener of this platform; each platform's source has its own.
CSystemEventListener* createSystemEventListener();

#endif
