#ifndef RECORDS_RECORDS_H
#define RECORDS_RECORDS_H

// All business records.
#include "records/connectionrecords.h"
#include "records/diagnosticrecords.h"
#include "records/messagerecords.h"
#include "records/phonebookrecords.h"

#endif
