#ifndef LOGTASK_ERRORCODETABLE_P_H
#define LOGTASK_ERRORCODETABLE_P_H

#include <QString>

#include <map>
#include <mutex>

/// The words for error codes. Any thread may call; a lock guards the entries and is never held
/// while a file is read.
class ErrorCodeTable
{
public:
    /// Adds the entries of a settings file: from the line after the first one that contains
    /// "[CODE]" to the end of the file, whatever sections follow, each "<hexadecimal code>=<text>".
    /// Codes have 32 bits; "FFFFFFFF" and "-1" are the same code. The last character of a line
    /// never belongs to the text, so a last line without a line end loses one; that is meant. The
    /// file is UTF-8. Other lines are skipped; a file that cannot be opened gives one debug
    /// message.
    void load(const QString& file);

    /// The text of the code. An unknown code gets an empty entry.
    QString text(int code);

private:
    std::mutex m_mutex;
    std::map<int, QString> m_texts;
};

#endif
