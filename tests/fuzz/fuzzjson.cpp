// JSON texts: accepted and refused as JsonCpp does, with the values that the rule of numbers gives.

#include "fuzztarget.h"

#include "DataValue/jsonjudge.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString wrong = check(bytesOf(data, size).toStdString());
    require(wrong.isEmpty(), qPrintable(wrong));
    return 0;
}
