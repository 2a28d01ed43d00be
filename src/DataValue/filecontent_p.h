#ifndef DATAVALUE_FILECONTENT_P_H
#define DATAVALUE_FILECONTENT_P_H

#include <QString>

#include <optional>
#include <string>
#include <string_view>

/// Whole files, read and replaced: the one way in which values and documents meet the disk.
namespace FileContent {

/// The deepest nesting in a file, scalars counting as a level: JsonCpp's and TinyXML's trees are
/// built and destroyed by recursion.
constexpr int kMaximumNesting = 1000;

/// The content of a regular file, of whatever size. A text ends at a zero byte, so nothing behind
/// the first one need be read: it is in the result, what follows it may be missing.
///
/// Nothing when there is no such file, when it is not a regular one (a folder; a pipe, at which
/// the call does not wait), when it cannot be read and when it does not fit into memory.
std::optional<std::string> read(const QString& path);

/// Replaces the file by one that holds `content`, or leaves everything as it was and returns
/// false: the content is written beside it and renamed when it is complete on the disk. A new file
/// needs a folder in which files can be made, an old one must be writable and a regular file. What
/// exceeds the process's limit of file sizes (RLIMIT_FSIZE) is not begun.
bool replace(const QString& path, std::string_view content);

} // namespace FileContent

#endif
