#ifndef DEMO_PINFILE_H
#define DEMO_PINFILE_H

#include <QString>

#include <optional>

/// The PIN from a file instead of the command line, which every user of the machine can read.
namespace PinFile {

/// The first line of the file, without blanks at both ends; "-" is standard input, of which no
/// more than that line is read. Waits until the line is there. Nothing, with the reason on the
/// error output, when the file cannot be read or has no such line of at most 64 bytes.
std::optional<QString> read(const QString& path);

} // namespace PinFile

#endif
