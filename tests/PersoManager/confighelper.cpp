// An installed application that carries out the commands given as arguments and prints a line for
// each: values as JSON, texts as they are. Then the lines it has logged, each after "log ".
#include "PersoManager/persomanager.h"
#include "appglobal/mainappglobal.h"
#include "support/logcapture.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>

#include <cstdio>
#include <functional>
#include <map>

namespace {

QString text(const CDataValue& value)
{
    return value.parseToQString(FAST_STYLE).trimmed();
}

QString text(bool flag)
{
    return flag ? "true" : "false";
}

CDataValue parsed(const QString& json)
{
    CDataValue value;
    if (!CDataValue::parseToDataValue(json, value))
        qFatal("bad JSON: %s", qPrintable(json));
    return value;
}

using Arguments = QStringList;
using Command = std::function<QString(const Arguments&)>;

QString sameInstances(const Arguments&)
{
    CPersoManager* const first = CPersoManager::instance("A");
    const bool same = first == CPersoManager::instance("A") &&
                      first != CPersoManager::instance("B") &&
                      CPersoManager::systemInstance() == CPersoManager::instance("SYSTEM MODULE");
    QPointer<CPersoManager> watched(first);
    CPersoManager::destroy();
    return text(same && !watched && CPersoManager::instance("A") != nullptr);
}

/// Two items of a module's data: before the personalisation file goes, and after loading again.
QString reloadWithoutPersonalisation(const Arguments& a)
{
    CPersoManager manager(a.at(1));
    const QString before = text(manager.getConfigData(a.at(2)));
    if (!QFile::remove(CMainAppGlobal::getDataPath() + "/Perso/project.perso"))
        qFatal("cannot remove the personalisation file");
    manager.loadModuleData(a.at(1));
    return before + ' ' + text(manager.getConfigData(a.at(2)));
}

QString set(const Arguments& a, bool save)
{
    CMainAppGlobal::systemMapSet(a.at(1), a.at(2), parsed(a.mid(3).join(':')), save);
    return text(CMainAppGlobal::data());
}

const std::map<QString, Command> kCommands = {
    {"config",
     [](const Arguments& a) { return text(CPersoManager::instance(a[1])->getConfigData(a[2])); }},
    {"feature",
     [](const Arguments& a) { return text(CPersoManager::instance(a[1])->hasFeature(a[2])); }},
    {"plugins", [](const Arguments& a) { return text(CPersoManager("").getSupportPlugins(a[1])); }},
    {"modules", [](const Arguments&) { return text(CPersoManager("").getAllSupportModules()); }},
    {"info", [](const Arguments&) { return text(CPersoManager("").getCurrentProjectInfo()); }},
    {"perso", [](const Arguments&) { return text(CPersoManager("").readPersoFile()); }},
    {"subproject", [](const Arguments&) { return CPersoManager("").getSubProjectName(); }},
    {"version", [](const Arguments&) { return CPersoManager("").getCurSoftWareVersion(); }},
    {"project", [](const Arguments&) { return CPersoManager("").getCurrentProjectName(); }},
    {"instances", sameInstances},
    {"load",
     [](const Arguments&) {
         CMainAppGlobal::loadSystemConfig();
         return text(CMainAppGlobal::data());
     }},
    {"defaults", [](const Arguments&) { return text(CMainAppGlobal::persoData()); }},
    {"save", [](const Arguments&) { return text(CMainAppGlobal::saveSystemConfig()); }},
    {"get",
     [](const Arguments& a) { return text(CMainAppGlobal::systemMapGet(a.at(1), a.at(2))); }},
    {"set", [](const Arguments& a) { return set(a, false); }},
    {"setsave", [](const Arguments& a) { return set(a, true); }},
    {"data", [](const Arguments&) { return text(CMainAppGlobal::data()); }},
    {"skin",
     [](const Arguments&) {
         return CMainAppGlobal::getSkinPath().remove(CMainAppGlobal::getResourcePath());
     }},
    {"software", [](const Arguments&) { return CMainAppGlobal::getSoftwareVersion(); }},
    {"savefile", [](const Arguments&) { return text(CMainAppGlobal::data().saveFile()); }},
    {"reload", reloadWithoutPersonalisation},
    {"release",
     [](const Arguments&) {
         CMainAppGlobal* const before = CMainAppGlobal::instance();
         const bool same = before == CMainAppGlobal::instance();
         CMainAppGlobal::release();
         CMainAppGlobal::release();
         return text(same && CMainAppGlobal::data().isNull() &&
                     CMainAppGlobal::persoData().isNull());
     }},
};

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const LogCapture log;
    for (const QString& argument : application.arguments().mid(1)) {
        const QStringList parts = argument.split(':');
        const QString result = kCommands.at(parts[0])(parts);
        std::printf("%s\n", result.toUtf8().constData());
    }
    for (const QString& line : log.lines())
        std::printf("log %s\n", line.section(' ', 2).trimmed().toUtf8().constData());
    CMainAppGlobal::release();
    CPersoManager::destroy();
    return 0;
}
