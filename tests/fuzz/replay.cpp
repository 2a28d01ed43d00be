// Instead of a fuzzer: gives a target every file of the folders that it is called with, whole and
// cut in up to a hundred places.

#include "fuzztarget.h"

#include "support/testfile.h"

#include <QDirIterator>

#include <algorithm>

int main(int argc, char** argv)
{
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator file(QString::fromLocal8Bit(argv[i]), QDir::Files);
        for (; file.hasNext(); ++files) {
            const QByteArray content = TestFile::read(file.next());
            std::fprintf(stderr, "%s\n", qPrintable(file.filePath()));
            const int step = std::max(1, static_cast<int>(content.size()) / 100);
            for (int size = 0; size < content.size(); size += step)
                LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.constData()),
                                       static_cast<std::size_t>(size));
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.constData()),
                                   static_cast<std::size_t>(content.size()));
        }
    }
    std::printf("%d files\n", files);
    return files > 0 ? 0 : 1;
}
