#ifndef DATAVALUE_FILECONTENT_P_H
#define DATAVALUE_FILECONTENT_P_H

#include <QByteArray>
#include <QString>

#include <string_view>

/// Whole files, read and replaced: the one way in which values and documents meet the disk.
namespace FileContent {

/// The largest file that is read or written. Parsed documents take up to a hundred times the
/// memory of their text, so a limit keeps a hostile file from ending the process.
constexpr qint64 kMaximumSize = qint64(16) * 1024 * 1024;
/// The deepest nesting in a file, scalars counting as a level: JsonCpp's and TinyXML's trees are
/// built and destroyed by recursion.
constexpr int kMaximumNesting = 1000;

/// Reads a regular file. False when it is none (a folder, a pipe that would block for ever), is
/// too large or cannot be read; `content` is then unchanged.
bool read(const QString& path, QByteArray& content);

/// Replaces the file by one that holds `content`, or leaves everything as it was and returns
/// false: the content is written beside it and renamed when it is complete on the disk. A new file
/// needs a folder in which files can be made, an old one must be writable and a regular file.
bool replace(const QString& path, std::string_view content);

} // namespace FileContent

#endif
