// JSON texts read as records; the first byte chooses the record. What was read is written and read
// as the same record.

#include "fuzztarget.h"

#include "records/recordsundertest.h"

#include <algorithm>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto& all = recordsUnderTest();
    const RecordUnderTest& type = all[data[0] % all.size()];
    CDataValue value;
    if (!CDataValue::parseToDataValue(bytesOf(data + 1, size - 1).constData(), value))
        return 0;
    const auto record = type.create();
    record->read(value);
    require(record->printed().startsWith(type.name), "a record that was read can be printed");
    CDataValue written;
    record->write(written);
    const auto again = type.create();
    again->read(written);
    // The keys of hashes change outside ASCII.
    const QString text = written.parseToQString(FAST_STYLE);
    if (std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; }))
        require(again->equals(*record), "a record is read as it was written");
    return 0;
}
