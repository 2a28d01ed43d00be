#ifndef COMMON_FUNCTION_H
#define COMMON_FUNCTION_H

#include "wzrframework_export.h"

#include <QString>

#include <string>

/// The name of the user on whose behalf the process runs, from the environment: "SUDO_USER", else
/// "LOGNAME", else the last part of "HOME" ("/home/alice/" gives "alice"). A variable that is set
/// to nothing counts as set and gives the empty name; so does an environment without any of them.
/// Any thread may call, as long as none changes the environment at the same time.
WZRFRAMEWORK_EXPORT QString getActiveUserName();

/// Always empty, and meant to be: callers build the paths of a user themselves.
WZRFRAMEWORK_EXPORT QString getActiveUserDirectory();

/// Starts another application in the background, through the command shell, and returns the shell's
/// status as system() gives it. `path` is the file to run; where nothing stands at that path, it is
/// the name of an application: of a bundle on macOS ("Notes" opens "Notes.app"), of a desktop entry
/// on Linux ("notes" launches "notes.desktop" of the user or of the system, through "gio launch").
///
/// The path is never read as code: what the shell would act on is escaped. Nothing else is checked:
/// 0 says that the shell could begin, not that the file could be run; a name that nobody has gives
/// another status. Any thread may call; it waits for the shell and, for a name, for the launcher.
WZRFRAMEWORK_EXPORT int startApplication(QString path);

// Helpers on zero-terminated strings of UCS-2 code units (`unsigned short`), wide characters and
// bytes. They keep no state, so any thread may call them. A target must have room for what is
// written; source and target must not overlap. Counts are code units without the closing zero. A
// null source is an empty string; where nothing is said, only the closing zero is written for it.

/// The number of code units before the zero.
WZRFRAMEWORK_EXPORT int unistrlen(const unsigned short* text);

/// Copies the text with its zero and returns the count.
WZRFRAMEWORK_EXPORT int unistrcpy(unsigned short* target, const unsigned short* source);

/// Copies at most `n` units and always writes a zero after them, so the target needs room for
/// n + 1 units. Returns the count.
WZRFRAMEWORK_EXPORT int unistrncpy(unsigned short* target, const unsigned short* source,
                                   unsigned long n);

/// Widens each unit and writes a zero; a null source writes nothing. Returns the count.
WZRFRAMEWORK_EXPORT int unichars2wchars(wchar_t* target, const unsigned short* source);

/// Stores the lower 16 bits of each wide character and returns the count. No zero is written, and
/// that is meant: the caller ends the string.
WZRFRAMEWORK_EXPORT int wchars2unichars(unsigned short* target, const wchar_t* source);

/// Keeps the low byte of each unit and writes a zero; a null source writes nothing. A unit with a
/// low byte of 0, such as 0x0100, counts and puts a zero inside the result. Returns the count.
WZRFRAMEWORK_EXPORT int wstr2str(const unsigned short* source, char* target);

/// Widens each byte as a signed value and writes a zero; a null source writes nothing. The bytes
/// 0x80 to 0xFF become 0xFF80 to 0xFFFF, and that is meant. Returns the count.
WZRFRAMEWORK_EXPORT int str2wstr(const char* source, unsigned short* target);

/// 0 for a character that takes one septet of the GSM 7-bit default alphabet (3GPP TS 23.038), 1
/// for any other, those of the alphabet's extension included ("[" gives 1; GetEncodeType() judges
/// otherwise, both are meant). The no-break space 0x00A0 counts as the alphabet's escape position
/// 27 and gives 0.
WZRFRAMEWORK_EXPORT int IsUnicode(unsigned short character);

/// 1 when IsUnicode() holds for any character, else 0; 0 for an empty text.
WZRFRAMEWORK_EXPORT int isUnicodeString(const unsigned short* text);

/// The coding that a message with this text needs: 0 for the GSM 7-bit alphabet with its extension
/// (the characters [ \ ] ^ { | } ~ and the euro sign), 2 for UCS-2. 0 for an empty text.
WZRFRAMEWORK_EXPORT int GetEncodeType(const unsigned short* text);

/// The number of bytes that a contact name of `length` characters takes on the SIM, as the first
/// of the codings of 3GPP TS 31.102 that holds it whole: GSM 7-bit (one byte each, two for the
/// extension), UCS-2 with a one-byte base (3 bytes more), with a two-byte base (4 bytes more), full
/// UCS-2 (2 * length + 1). That is not always the shortest: one Cyrillic letter gives 4, not 3. The
/// order is meant. 0 for a length below 1 or a null name.
WZRFRAMEWORK_EXPORT int ParseContactNameConvert(const wchar_t* name, int length);

/// Splits a phone number at its pause ("P", "T" or "W", in either case, itself dropped) and appends
/// what is to be dialled to `dial` and what is to be sent as tones to `tones`, in capitals:
/// "+123p4#a" gives "+123" and "4#A". "+" may stand only at the start; "#", "*" and "A" to "D" only
/// after a pause. False for an empty number and at the first character that is not accepted;
/// what stood before it is appended all the same.
WZRFRAMEWORK_EXPORT bool DivideNumber(const char* number, std::string& dial, std::string& tones);

#endif
