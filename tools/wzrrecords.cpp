// Prints the vocabulary of the business records; wzrrecords.1 describes it to its users.

#include "recordmarkdown.h"
#include "recordschema.h"

#include <cstdio>
#include <string>

namespace {

const char usage[] = R"(Usage: wzrrecords [RECORD]
       wzrrecords --list | --markdown | --help | --version

Prints the keys, kinds and meanings of the business records as JSON Schema
(draft 2020-12): of all records, or of RECORD and the records in it.

  --list      print the names of the records, one per line
  --markdown  print the vocabulary as a page in Markdown
  --help      print this text
  --version   print the version

Exit status: 0 on success, 1 when there is no such record or the output
cannot be written, 2 when the arguments are wrong.
)";

enum ExitCode { Success = 0, Failure = 1, WrongUsage = 2 };

int print(const std::string& text)
{
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (written && std::fflush(stdout) == 0)
        return Success;
    std::perror("wzrrecords: cannot write");
    return Failure;
}

std::string namesOfAllRecords()
{
    std::string names;
    for (const RecordInfo& record : recordCatalogue())
        names += std::string(record.name) + '\n';
    return names;
}

int runOption(const std::string& option)
{
    if (option == "--list")
        return print(namesOfAllRecords());
    if (option == "--markdown")
        return print(pageOfAllRecords());
    if (option == "--help")
        return print(usage);
    if (option == "--version")
        return print("wzrrecords " WZR_VERSION "\n");
    std::fprintf(stderr, "wzrrecords: unknown option %s\n%s", option.c_str(), usage);
    return WrongUsage;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc > 2) {
        std::fputs(usage, stderr);
        return WrongUsage;
    }
    if (argc < 2)
        return print(schemaOfAllRecords());
    const std::string argument = argv[1];
    if (argument.rfind('-', 0) == 0)
        return runOption(argument);
    const RecordInfo* record = findRecord(argument);
    if (!record) {
        std::fprintf(stderr, "wzrrecords: there is no record %s\n", argument.c_str());
        return Failure;
    }
    return print(schemaOfRecord(*record));
}
