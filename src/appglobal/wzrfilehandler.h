#ifndef APPGLOBAL_WZRFILEHANDLER_H
#define APPGLOBAL_WZRFILEHANDLER_H

#include "wzrframework_export.h"

#include <QObject>
#include <QString>

#include <memory>

class QFile;
class QTextStream;

/// Reads or writes one text file in UTF-16, little-endian, with a byte-order mark.
///
///     WZRFileHandler file;
///     if (file.open(path, true)) {
///         file.writeLine("one"); // FF FE  6F 00 6E 00 65 00  0A 00
///         file.close();
///     }
///
/// **Writing and reading are not inverse**, and that is meant: a text is written as the bytes of
/// its UTF-8 form, each byte as one UTF-16 unit. ASCII reads back as it was written; U+00E9 reads
/// back as the two characters U+00C3 U+00A9.
///
/// The byte-order mark is not part of what is read. A line ends with the one unit 000A. One
/// handler is used by one thread at a time. Every operation on a handler that is not open is
/// harmless and gives an empty or neutral result.
class WZRFRAMEWORK_EXPORT WZRFileHandler : public QObject
{
    Q_OBJECT

public:
    explicit WZRFileHandler(QObject* parent = nullptr);
    ~WZRFileHandler() override;

    /// Opens the file, closing the one that was open. With `write` the file is emptied, begun with
    /// the mark and can be read too; else it is only read. False when that fails; the handler is
    /// not open then.
    bool open(const QString& path, bool write);

    /// The next line without its end, at most `maxLength` characters of it; 0 and less mean no
    /// limit.
    QString readLine(qint64 maxLength = 0);
    /// All that has not been read yet.
    QString readAll();
    /// Writes the text and a line end, and flushes.
    void writeLine(const QString& line);
    /// Writes the text alone; flush() and close() bring it to the file.
    void writeAll(const QString& text);

    /// Goes to a position in bytes; the first character stands at 2. False when it cannot.
    bool seek(qint64 position);
    /// Goes back to the first character.
    bool reset();
    bool atEnd() const;
    void flush();
    /// Flushes what was written and closes the file.
    void close();

private:
    bool isOpen() const;

    std::unique_ptr<QFile> m_pFile;
    std::unique_ptr<QTextStream> m_pStream; // on m_pFile, so it goes first
};

#endif
