#ifndef TESTS_FUZZ_FUZZTARGET_H
#define TESTS_FUZZ_FUZZTARGET_H

// A fuzz target reads bytes as a stranger may send them. It must neither crash nor hang, and what
// it states with require() must hold for all bytes.

#include <QByteArray>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process, and so makes the bytes a find, when something does not hold.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<int>(size)};
}

/// A path in a folder of this process.
inline QString temporaryPath(const QString& name)
{
    static const QTemporaryDir folder;
    return folder.filePath(name);
}

#endif
