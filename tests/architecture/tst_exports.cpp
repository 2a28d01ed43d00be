// The shared library exports its interface and nothing else: every strong symbol belongs to one of
// the names below, and each of these is there. Templates of Qt and the standard library, which are
// weak, do not count.

#include "support/childprocess.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

const char* const kInterface[] = {
    // values and files
    "CDataValue",
    "CXml",
    "CXMLConvert",
    // log
    "CLog",
    "CLogFile",
    "CLogObject",
    "InitLog",
    "Log",
    "LogDebug",
    "LogErr",
    "FlushLog",
    "DestroyLog",
    "g_bLog",
    // messages and routing
    "IPCServer",
    "IPCClient",
    "MessageCenter",
    "BusinessPluginBase",
    "DeviceService_Global",
    "ApplicationContorllerClient",
    // records
    "GetDataValueFromStruct",
    "GetStructFromDataValue",
    "operator==",
    "operator<<",
    "recordCatalogue",
    // configuration
    "CApplicationPaths",
    "CPersoManager",
    "CMainAppGlobal",
    "WZRFileHandler",
    // platform
    "CSystemEventListener",
    "CSerialPort",
    "QtSingleCoreApplication",
    "SingleInstance", // shared with the library of QtSingleApplication
    "getActiveUserName",
    "getActiveUserDirectory",
    "startApplication",
    "GetEncodeType",
    "IsUnicode",
    "ParseContactNameConvert",
    "DivideNumber",
    "isUnicodeString",
    "str2wstr",
    "wstr2str",
    "unichars2wchars",
    "wchars2unichars",
    "unistrlen",
    "unistrcpy",
    "unistrncpy",
};

/// The outermost name of a demangled symbol: "CLog" of "vtable for CLog" and "CLog::Init(...)".
QString outermost(QString symbol)
{
    symbol.remove(QRegularExpression(QStringLiteral("^(vtable|typeinfo|typeinfo name|VTT|"
                                                    "guard variable) for ")));
    symbol.remove(QRegularExpression(QStringLiteral("\\[abi:[^\\]]*\\]")));
    return symbol.left(symbol.indexOf(QRegularExpression(QStringLiteral("\\(|::|$"))));
}

} // namespace

class tst_exports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const auto nm = ChildProcess::run("nm", {"-DC", "--defined-only", LIBRARY});
        QCOMPARE(nm.code, 0);
        const QStringList lines = QString::fromLocal8Bit(nm.out).split('\n');
        static const QRegularExpression strong(QStringLiteral("^\\S+ [TDBR] (.+)$"));
        for (const QString& line : lines) {
            const QRegularExpressionMatch match = strong.match(line);
            if (match.hasMatch())
                m_exported.insert(outermost(match.captured(1)));
        }
        QVERIFY(!m_exported.isEmpty());
    }

    void exportsTheWholeInterface_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : kInterface)
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void exportsTheWholeInterface()
    {
        QFETCH(QString, name);
        QVERIFY2(m_exported.contains(name), "is not exported");
    }

    void exportsNothingElse()
    {
        QSet<QString> unexpected = m_exported;
        for (const char* name : kInterface)
            unexpected.remove(QString::fromLatin1(name));
        QVERIFY2(unexpected.isEmpty(),
                 qPrintable(
                     QStringList(unexpected.begin(), unexpected.end()).join(QStringLiteral(", "))));
    }

private:
    QSet<QString> m_exported;
};

QTEST_APPLESS_MAIN(tst_exports)
#include "tst_exports.moc"
