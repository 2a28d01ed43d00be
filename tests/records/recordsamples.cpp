// Prints, for each record, lines of its name, a tab and the JSON text that the library writes for
// it: empty, filled, and filled otherwise.

#include "recordsundertest.h"

#include <cstdio>

int main()
{
    for (const RecordUnderTest& record : recordsUnderTest()) {
        for (int number : {0, 1, 50}) {
            const auto object = record.create();
            if (number > 0)
                object->fill(number);
            CDataValue data;
            object->write(data);
            // The text ends its line itself.
            std::printf("%s\t%s", qPrintable(record.name),
                        data.parseToQString(FAST_STYLE).toUtf8().constData());
        }
    }
    return 0;
}
