#ifndef DEMO_ATCOMMAND_H
#define DEMO_ATCOMMAND_H

#include <QByteArray>

#include <vector>

/// One parameter of a command, without its quotation marks.
struct AtParameter
{
    QByteArray text;
    bool isQuoted = false;
};

/// One command of a command line (ITU-T V.250).
struct AtCommand
{
    enum Form {
        Execute, ///< "+CSQ"
        Read,    ///< "+CREG?"
        Test,    ///< "+CREG=?"
        Set      ///< "+CREG=2", and a basic command with a number: "E0"
    };

    QByteArray name; ///< in capitals, "+" and "&" included: "+CSQ", "E", "&F"
    Form form = Execute;
    std::vector<AtParameter> parameters; ///< of Set only

    /// Whether parameter `i` is there and not empty.
    bool has(int i) const;
    /// The text of parameter `i`, with or without quotation marks; empty when it is not there.
    QByteArray text(int i) const;
    /// The number that parameter `i` is: `omitted` when it is not there, -1 when it is no number of
    /// at most nine digits without quotation marks.
    int number(int i, int omitted = -1) const;
};

/// What a command ends in.
struct AtResult
{
    enum Kind {
        Ok,
        Error,    ///< whatever "+CMEE" says: the line is not understood
        CmeError, ///< an error of the equipment (3GPP TS 27.007, 9.2)
        CmsError, ///< an error of the message service (3GPP TS 27.005, 3.2.5)
        Prompt    ///< text is to follow
    };

    Kind kind = Ok;
    int number = 0;

    static AtResult ok() { return {}; }
    static AtResult error() { return {Error, 0}; }
    /// The number 0 stands for success.
    static AtResult cme(int number) { return {number == 0 ? Ok : CmeError, number}; }
    static AtResult cms(int number) { return {number == 0 ? Ok : CmsError, number}; }
    static AtResult prompt() { return {Prompt, 0}; }
};

/// The final result code of a line, as "+CMEE=n" wants it: 0 "ERROR", 1 "+CME ERROR: 11",
/// 2 "+CME ERROR: SIM PIN required". Errors of the message service are always given by number
/// unless n is 0.
QByteArray resultText(const AtResult& result, int cmee);

/// The commands of a line up to its end or up to the place that cannot be understood.
struct AtLine
{
    std::vector<AtCommand> commands;
    bool isComplete = true; ///< false: what follows the commands cannot be understood
};

/// Reads what stands behind "AT". Blanks and the case of letters count between quotation marks
/// only.
AtLine parseAtLine(const QByteArray& body);

#endif
