#ifndef TESTS_RECORDS_RECORDSUNDERTEST_H
#define TESTS_RECORDS_RECORDSUNDERTEST_H

// Every record behind one interface, for the tests that treat all of them alike. Nothing here uses
// the library's lists of fields: members come from the compiler, keys from the golden files.

#include "DataValue/datavalue.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

/// One member of one RecordObject.
struct Member
{
    QString type;
    const void* place;
    std::function<void(int number)> fill;   ///< gives it content that depends on the number
    std::function<void()> reset;            ///< makes it zero, false or empty
    std::function<CDataValue()> travelling; ///< the value that must travel for it
};

/// One record.
class RecordObject
{
public:
    virtual ~RecordObject() = default;
    /// In the order of declaration.
    virtual std::vector<Member> members() = 0;
    virtual void fill(int number) = 0;
    virtual CDataValue travelling() = 0;
    virtual void write(CDataValue& data) = 0;
    virtual void read(CDataValue& data) = 0;
    virtual bool equals(const RecordObject& other) const = 0;
    virtual QString printed() const = 0;
};

struct RecordUnderTest
{
    QString name;
    std::function<std::unique_ptr<RecordObject>()> create;
};

const std::vector<RecordUnderTest>& recordsUnderTest();
const RecordUnderTest& recordUnderTest(const QString& name);

#endif
