#ifndef PERSOMANAGER_INIFILE_P_H
#define PERSOMANAGER_INIFILE_P_H

#include <QByteArray>
#include <QString>

/// Texts of an INI file, as they stand in the file. QSettings takes a text with commas for a list
/// and drops the name of a group "General", so that neither could be given back.
///
///     ; a comment
///     [LOCAL CONFIG]
///     current_project=Demo, for the fair     ; the text ends before this comment
///     title="a; b"
///
/// Otherwise the form is that of QSettings, whose files can be read: UTF-8, escapes after a
/// backslash, `%20` in names, quotation marks around texts that hold semicolons, or blanks at an
/// end.
namespace IniFile {

/// The text of `key` in `group`, both case-sensitive; the last one when there are several. Null
/// when there is none.
QString text(const QByteArray& content, const QString& group, const QString& key);

} // namespace IniFile

#endif
