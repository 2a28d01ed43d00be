// Shows, converts, changes and checks data value files; wzrvalue.1 describes it to its users.

#include "DataValue/datavalue.h"
#include "valuecheck.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

namespace {

const char usage[] = R"(Usage: wzrvalue show FILE
       wzrvalue convert FROM TO
       wzrvalue get FILE PATH
       wzrvalue set FILE PATH JSON
       wzrvalue set --string FILE PATH TEXT
       wzrvalue check FILE...
       wzrvalue --help | --version

Works on data value files: typed XML (.xml) and JSON (.config, .perso).

  show      print the value as indented JSON
  convert   read one file and save it as another, whose name says its form
  get       print the value at PATH: a string as it is, others as JSON
  set       replace the value at PATH, or add it to its map or array
  check     say what is wrong in the files and on which line

PATH names a value by the keys that lead to it, joined by "/"; elements of
arrays are counted from 0. "~1" stands for a "/" in a key, "~0" for a "~".
The empty PATH is the whole value.

Exit status: 0 on success, 1 when a file cannot be read or is wrong, 2 when
the arguments are wrong, 3 when there is nothing at PATH, 4 when the output
cannot be written.
)";

enum ExitCode { Success = 0, WrongFile = 1, WrongUsage = 2, NothingThere = 3, NotWritten = 4 };

int complain(ExitCode code, const QString& message)
{
    std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
    return code;
}

int wrongUsage(const QString& message)
{
    complain(WrongUsage, "wzrvalue: " + message);
    std::fputs(usage, stderr);
    return WrongUsage;
}

int print(const QByteArray& text)
{
    const auto size = static_cast<std::size_t>(text.size());
    if (std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0)
        return Success;
    std::perror("wzrvalue: cannot write");
    return NotWritten;
}

/// Reads a file; says on the error output what is wrong when that fails.
bool load(const QString& path, CDataValue& value)
{
    if (value.readFile(path))
        return true;
    for (const FileProblem& problem : checkFile(path))
        complain(WrongFile, describe(path, problem));
    return false;
}

int save(const QString& path, CDataValue& value)
{
    return value.saveFileAs(path) ? Success : complain(NotWritten, path + ": Cannot be written");
}

QStringList keysOf(const QString& path)
{
    QStringList keys = path.isEmpty() ? QStringList() : path.split('/');
    for (QString& key : keys)
        key.replace("~1", "/").replace("~0", "~");
    return keys;
}

/// The child of that key or index; null when there is none.
CDataValue* childOf(CDataValue& value, const QString& key)
{
    if (value.isObject())
        return value.mapIsMember(key) ? &value.mapGet(key) : nullptr;
    bool isIndex = false;
    const unsigned int index = key.toUInt(&isIndex);
    return isIndex && index < value.arrayCount() ? &value.arrayGet(index) : nullptr;
}

CDataValue* find(CDataValue& root, const QStringList& keys)
{
    CDataValue* value = &root;
    for (const QString& key : keys)
        value = value ? childOf(*value, key) : nullptr;
    return value;
}

/// A number takes the kind of the number that it replaces, so that changing a setting does not
/// change its kind: JSON does not tell 5 from 5u, nor a whole double from an integer.
CDataValue inKindOf(const CDataValue& old, const CDataValue& fresh)
{
    if (fresh.isInt() && old.isUInt() && fresh.asInt() >= 0)
        return CDataValue(static_cast<unsigned int>(fresh.asInt()));
    if (fresh.isInt() && old.isDouble())
        return CDataValue(static_cast<double>(fresh.asInt()));
    return fresh;
}

/// Puts the value at the end of the path. False when there is no place for it.
bool put(CDataValue& root, QStringList keys, const CDataValue& fresh)
{
    if (CDataValue* const old = find(root, keys)) {
        *old = inKindOf(*old, fresh);
        root.synchJsonData();
        return true;
    }
    const QString key = keys.takeLast(); // the empty path was found above
    CDataValue* const holder = find(root, keys);
    if (!holder)
        return false;
    if (holder->isObject())
        holder->mapSet(key, fresh, true);
    else if (holder->isArray() && key == QString::number(holder->arrayCount()))
        holder->arrayAppend(fresh, true);
    else
        return false;
    return true;
}

int show(const QStringList& arguments)
{
    CDataValue value;
    return load(arguments[0], value) ? print(value.parseToQString(STYLED_STYLE).toUtf8())
                                     : WrongFile;
}

int convert(const QStringList& arguments)
{
    CDataValue value;
    return load(arguments[0], value) ? save(arguments[1], value) : WrongFile;
}

int nothingThere(const QStringList& arguments)
{
    return complain(NothingThere, arguments[0] + ": Nothing at \"" + arguments[1] + '"');
}

int get(const QStringList& arguments)
{
    CDataValue root;
    if (!load(arguments[0], root))
        return WrongFile;
    const CDataValue* const value = find(root, keysOf(arguments[1]));
    if (!value)
        return nothingThere(arguments);
    const QString text =
        value->isString() ? value->asQString() + '\n' : value->parseToQString(FAST_STYLE);
    return print(text.toUtf8());
}

int set(const QStringList& given)
{
    QStringList arguments = given;
    const bool isText = arguments.removeAll("--string") > 0;
    if (arguments.size() != 3)
        return wrongUsage("set takes a file, a path and a value");
    CDataValue fresh(arguments[2]);
    if (!isText && !CDataValue::parseToDataValue(arguments[2], fresh))
        return wrongUsage("the value is no JSON text; --string takes it as a string");
    CDataValue root;
    if (!load(arguments[0], root))
        return WrongFile;
    if (!put(root, keysOf(arguments[1]), fresh))
        return nothingThere(arguments);
    return save(arguments[0], root);
}

int check(const QStringList& arguments)
{
    int result = Success;
    for (const QString& path : arguments) {
        for (const FileProblem& problem : checkFile(path))
            result = complain(WrongFile, describe(path, problem));
    }
    return result;
}

struct Command
{
    const char* name;
    int least; // arguments
    int most;
    int files; // how many of them, from the first, name files
    int (*run)(const QStringList&);
};

constexpr int kAny = 1000000;
constexpr Command kCommands[] = {
    {"show", 1, 1, 1, show}, {"convert", 2, 2, 2, convert},   {"get", 2, 2, 1, get},
    {"set", 3, 4, 1, set},   {"check", 1, kAny, kAny, check},
};

/// What stands for a file and looks like an option, though the command has no such one.
QString wrongOption(const Command& command, const QStringList& arguments)
{
    const bool hasOption = command.run == set && arguments.startsWith("--string");
    for (const QString& file : arguments.mid(hasOption ? 1 : 0, command.files)) {
        if (file.startsWith('-'))
            return file;
    }
    return QString();
}

int run(const Command& command, const QStringList& arguments)
{
    if (arguments.size() < command.least || arguments.size() > command.most)
        return wrongUsage(QString("wrong number of arguments for ") + command.name);
    const QString option = wrongOption(command, arguments);
    if (!option.isEmpty())
        return wrongUsage(QString("%1 has no option %2").arg(command.name, option));
    return command.run(arguments);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString name = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (name == "--help" && arguments.isEmpty())
        return print(usage);
    if (name == "--version" && arguments.isEmpty())
        return print("wzrvalue " WZR_VERSION "\n");
    for (const Command& command : kCommands) {
        if (name == command.name)
            return run(command, arguments);
    }
    return wrongUsage(name.isEmpty() ? "a command is missing" : "unknown command " + name);
}
