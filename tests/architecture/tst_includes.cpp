// The library is built in floors; each sees only what stands below it. This reads every source
// and follows its own includes ("Folder/header.h").

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

#include <algorithm>
#include <iterator>

namespace {

struct Component
{
    const char* path; // what the files of the component start with, below src/
    int floor;
    const char* name;
};

// The first entry that a path starts with is its component.
const Component kComponents[] = {
    {"assertion_p.h", 0, "assertions"},
    {"wzrframework_export.h", 0, "export header"},
    {"slotcall", 0, "slots by name"},
    {"text/utf8", 0, "UTF-8"},
    {"appglobal/applicationpaths", 1, "paths"},
    {"appglobal/executablepath", 1, "paths"},
    {"serialport/", 1, "serial port"},
    {"common_function.h", 1, "common functions"},
    {"platform/socketpeer", 0, "peers of sockets"},
    {"platform/activeuser", 1, "common functions"},
    {"text/", 1, "common functions"},
    {"LogTask/", 2, "log"},
    {"platform/launch", 3, "launching"},
    {"DataValue/xml/", 4, "XML and files"},
    {"DataValue/datavaluefiles", 4, "XML and files"},
    {"DataValue/", 3, "value"},
    {"Ipc/", 4, "messaging"},
    {"records/", 4, "records"},
    {"deviceservice_global", 4, "device service globals"},
    {"BusinessBase/", 4, "plug-in base"},
    {"SystemEvent/", 4, "system events"},
    {"singleapplication/", 4, "single instance"},
    {"MessageCenter/", 5, "message center"},
    {"applicationcontorllerclient/", 5, "controller client"},
    {"PersoManager/", 5, "personalisation"},
    {"appglobal/wzrfilehandler", 1, "text files"},
    {"appglobal/", 6, "application globals"},
};

// The private headers that other rooms than their own may see. A room is a folder of src/ with all
// below it; what lies in src/ itself is a room of its own.
const char* const kShared[] = {
    "assertion_p.h",
    "slotcall_p.h",
    "text/utf8_p.h",
    "platform/socketpeer_p.h",
    "appglobal/executablepath_p.h",
    "LogTask/logline_p.h",
    "DataValue/valueaccess_p.h",
};

bool isShared(const QString& header)
{
    const auto* const end = std::end(kShared);
    return std::find(std::begin(kShared), end, header) != end;
}

QString roomOf(const QString& path)
{
    return path.left(path.indexOf(QLatin1Char('/')) + 1);
}

const Component* componentOf(const QString& path)
{
    for (const Component& component : kComponents) {
        if (path.startsWith(QLatin1String(component.path)))
            return &component;
    }
    return nullptr;
}

bool maySee(const Component& from, const Component& to)
{
    return to.floor < from.floor || qstrcmp(to.name, from.name) == 0;
}

bool anyFile(const QString&)
{
    return true;
}

bool isPrivateHeader(const QString& path)
{
    return path.endsWith(QLatin1String("_p.h"));
}

bool isPublicHeader(const QString& path)
{
    return path.endsWith(QLatin1String(".h")) && !isPrivateHeader(path);
}

/// The headers of this library that a source includes, by their paths.
QStringList includesOf(const QString& path)
{
    QFile file(QStringLiteral(SOURCE_ROOT "/src/") + path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    const QString text = QString::fromUtf8(file.readAll());
    static const QRegularExpression include(QStringLiteral("^#include \"([^\"]+)\""),
                                            QRegularExpression::MultilineOption);
    QStringList headers;
    for (auto match = include.globalMatch(text); match.hasNext();) {
        const QString header = match.next().captured(1);
        if (!header.endsWith(QLatin1String(".moc")))
            headers << header;
    }
    return headers;
}

QStringList privateHeadersOfOthers(const QString& path)
{
    QStringList headers;
    for (const QString& header : includesOf(path)) {
        if (isPrivateHeader(header) && roomOf(header) != roomOf(path))
            headers << header;
    }
    return headers;
}

/// The paths of all sources and headers, from src/.
QStringList allSources()
{
    const QString root = QStringLiteral(SOURCE_ROOT "/src/");
    QDirIterator files(root, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                       QDirIterator::Subdirectories);
    QStringList paths;
    while (files.hasNext())
        paths << files.next().mid(root.size());
    return paths;
}

} // namespace

class tst_includes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFileHasAFloor_data() { sources(); }
    void everyFileHasAFloor()
    {
        QFETCH(QString, path);
        QVERIFY2(componentOf(path),
                 qPrintable(path + " belongs to no component of the list above"));
    }

    void includesPointDownwards_data() { sources(); }
    void includesPointDownwards()
    {
        QFETCH(QString, path);
        const Component* const own = componentOf(path);
        QVERIFY(own);
        for (const QString& included : includesOf(path)) {
            const Component* const other = componentOf(included);
            QVERIFY2(other, qPrintable(included + " is not included by its path from src/"));
            QVERIFY2(maySee(*own, *other),
                     qPrintable(QStringLiteral("%1 (%2, floor %3) sees %4 (%5, floor %6)")
                                    .arg(path, QLatin1String(own->name))
                                    .arg(own->floor)
                                    .arg(included, QLatin1String(other->name))
                                    .arg(other->floor)));
        }
    }

    void privateHeadersStayInTheirRoom_data() { sources(); }
    void privateHeadersStayInTheirRoom()
    {
        QFETCH(QString, path);
        for (const QString& header : privateHeadersOfOthers(path))
            QVERIFY2(isShared(header),
                     qPrintable(path + " sees " + header + ", which is not listed as shared"));
    }

    void everySharedHeaderIsSeenByOthers()
    {
        QSet<QString> seen;
        for (const QString& path : allSources()) {
            for (const QString& header : privateHeadersOfOthers(path))
                seen.insert(header);
        }
        for (const char* header : kShared)
            QVERIFY2(seen.contains(QLatin1String(header)), header);
    }

    void publicHeadersSeeNoPrivateOnes_data() { sources(isPublicHeader); }
    void publicHeadersSeeNoPrivateOnes()
    {
        QFETCH(QString, path);
        for (const QString& included : includesOf(path))
            QVERIFY2(!isPrivateHeader(included), qPrintable(path + " includes " + included));
    }

private:
    static void sources(bool (*accept)(const QString&) = anyFile)
    {
        QTest::addColumn<QString>("path");
        for (const QString& path : allSources()) {
            if (accept(path))
                QTest::newRow(qPrintable(path)) << path;
        }
    }
};

QTEST_APPLESS_MAIN(tst_includes)
#include "tst_includes.moc"
