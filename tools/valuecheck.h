#ifndef TOOLS_VALUECHECK_H
#define TOOLS_VALUECHECK_H

#include <QString>

#include <vector>

/// Something wrong in a data value file.
struct FileProblem
{
    int line = 0; ///< counted from 1; 0 when it is not known
    QString reason;
};

/// What is wrong in a file of either form, in the order of the lines. More than what keeps the
/// library from reading it: the library reads an element that it does not know as null, and a
/// number that is none as 0.
std::vector<FileProblem> checkFile(const QString& path);

/// The problem as compilers write theirs: "a.xml:3: Key without a value".
QString describe(const QString& path, const FileProblem& problem);

#endif
