#ifndef BENCH_ROUNDTRIP_VALUEMESSAGES_H
#define BENCH_ROUNDTRIP_VALUEMESSAGES_H

#include "exchange.h"

#include "DataValue/datavalue.h"

// The messages of an exchange as values of this library, for it and for transports that carry the
// same values.

struct Asked
{
    int index = 0;
    int bytes = 0;
    bool broadcast = false;
};

/// Reads every field of a request; one that is none ends the process.
Asked readRequest(CDataValue& envelope);

/// The envelope's text of the answer.
QString answerText(const Asked& asked, CDataValue& request);

/// Reads every field of an answer.
Reply readAnswer(CDataValue& envelope);

/// What a request carries.
CDataValue requestData(int index, int bytes);

/// The envelope's text of a request.
QString requestText(const char* type, int index, int bytes);

#endif
