// Data value files; the first byte chooses the form. What could be read is saved, and then read
// as the same value.

#include "fuzztarget.h"

#include "DataValue/datavalue.h"
#include "support/testfile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QString paths[] = {temporaryPath("a.config"), temporaryPath("a.perso"),
                                    temporaryPath("a.xml")};
    if (size == 0)
        return 0;
    const QString& path = paths[data[0] % 3];
    TestFile::write(path, bytesOf(data + 1, size - 1));
    CDataValue value;
    if (!value.readFile(path))
        return 0;
    if (!value.saveFileAs(path))
        return 0; // a kind that the form does not have
    CDataValue again;
    require(again.readFile(path), "a saved file is read");
    require(again.parseToQString(FAST_STYLE) == value.parseToQString(FAST_STYLE),
            "and holds the same value");
    return 0;
}
