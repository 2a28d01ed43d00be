#ifndef TESTS_SUPPORT_ALLOCATIONPEAK_H
#define TESTS_SUPPORT_ALLOCATIONPEAK_H

#include <QtGlobal>

/// How much memory an operation needs beside what was there before: the most that was allocated at
/// one time, of all threads. Add allocationpeak.cpp to the test's sources; it takes the place of
/// the allocation functions of the C library.
///
///     AllocationPeak peak;
///     value.readFile(file);
///     QVERIFY(peak.bytes() < 64 * 1024);
///
/// With a sanitizer, which has allocation functions of its own, canCount() is false.
class AllocationPeak
{
public:
    AllocationPeak();
    qint64 bytes() const;
    /// What is still allocated of it.
    qint64 bytesKept() const;

    static bool canCount();

private:
    qint64 m_before;
};

/// Lets one allocation of this thread fail, of malloc(), calloc() or realloc(): the one after the
/// next `left`, while the object lives. One at a time in a thread.
///
///     AllocationFailure failure(3);
///     value.parse(text); // the fourth allocation throws std::bad_alloc
///
/// With a sanitizer none fails; AllocationPeak::canCount() tells.
class AllocationFailure
{
public:
    explicit AllocationFailure(int left);
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    bool hasHappened() const;
};

#endif
