#ifndef TOOLS_RECORDMARKDOWN_H
#define TOOLS_RECORDMARKDOWN_H

#include <string>

/// The vocabulary as a page in Markdown: how records travel, then a table of the fields of each
/// record.
std::string pageOfAllRecords();

#endif
