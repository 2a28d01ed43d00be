// The library is built in floors; each sees only what stands below it. This reads every source
// and follows its own includes ("Folder/header.h").

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

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

bool isPublicHeader(const QString& path)
{
    return path.endsWith(QLatin1String(".h")) && !path.endsWith(QLatin1String("_p.h"));
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
        QFile file(QStringLiteral(SOURCE_ROOT "/src/") + path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(file.readAll());
        static const QRegularExpression include(QStringLiteral("^#include \"([^\"]+)\""),
                                                QRegularExpression::MultilineOption);
        for (auto match = include.globalMatch(text); match.hasNext();) {
            const QString included = match.next().captured(1);
            if (included.endsWith(QLatin1String(".moc")))
                continue;
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

    void publicHeadersSeeNoPrivateOnes_data() { sources(isPublicHeader); }
    void publicHeadersSeeNoPrivateOnes()
    {
        QFETCH(QString, path);
        QFile file(QStringLiteral(SOURCE_ROOT "/src/") + path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        QVERIFY2(!text.contains("_p.h\""), qPrintable(path + " includes a private header"));
    }

private:
    static void sources(bool (*accept)(const QString&) = anyFile)
    {
        QTest::addColumn<QString>("path");
        const QString root = QStringLiteral(SOURCE_ROOT "/src/");
        QDirIterator files(root, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next().mid(root.size());
            if (accept(path))
                QTest::newRow(qPrintable(path)) << path;
        }
    }
};

QTEST_APPLESS_MAIN(tst_includes)
#include "tst_includes.moc"
