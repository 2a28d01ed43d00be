#ifndef TOOLS_RECORDSCHEMA_H
#define TOOLS_RECORDSCHEMA_H

#include "records/recordcatalogue.h"

#include <string>

/// The vocabulary as JSON Schema, draft 2020-12: what the library writes for each record, one
/// definition per record under "$defs", properties in the order of the keys. A list or hash may be
/// null or missing, since both read alike; every other key is required.
std::string schemaOfAllRecords();

/// The same for one record: the schema's root is that record, and only the definitions that it
/// needs are there.
std::string schemaOfRecord(const RecordInfo& record);

/// The record of that name, null without one.
const RecordInfo* findRecord(const std::string& name);

#endif
