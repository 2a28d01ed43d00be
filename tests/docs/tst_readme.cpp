// The README's example is the one that the build compiles, and its links lead somewhere.

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

class tst_readme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_text = read(QStringLiteral("README.md"));
        QVERIFY(m_text.startsWith(QLatin1String("# wzrframework\n")));
    }

    void showsTheCompiledExamples_data()
    {
        QTest::addColumn<QString>("source");
        QTest::newRow("server") << QStringLiteral("examples/minimal/server.cpp");
        QTest::newRow("client") << QStringLiteral("examples/minimal/client.cpp");
    }
    void showsTheCompiledExamples()
    {
        QFETCH(QString, source);
        const QString code = read(source);
        QVERIFY(!code.isEmpty());
        QVERIFY2(m_text.contains(QStringLiteral("```cpp\n") + code + QStringLiteral("```\n")),
                 qPrintable(source + " differs from what the README shows"));
    }

    void showsTheFilesOfTheDemo_data()
    {
        QTest::addColumn<QString>("form");
        QTest::addColumn<QString>("file");
        QTest::newRow("personalisation") << QStringLiteral("json") << QStringLiteral("demo.perso");
        QTest::newRow("module") << QStringLiteral("xml") << QStringLiteral("DeviceService.xml");
        QTest::newRow("defaults") << QStringLiteral("xml") << QStringLiteral("SYSTEM MODULE.xml");
    }
    void showsTheFilesOfTheDemo()
    {
        QFETCH(QString, form);
        QFETCH(QString, file);
        const QString content =
            read(QStringLiteral("examples/connectionmanager/Resources/Data/Perso/") + file);
        QVERIFY(!content.isEmpty());
        QVERIFY2(m_text.contains(QStringLiteral("```") + form + QLatin1Char('\n') + content +
                                 QStringLiteral("```\n")),
                 qPrintable(file + " differs from what the README shows"));
    }

    void linksToFilesThatExist()
    {
        static const QRegularExpression link(QStringLiteral("\\]\\(([A-Za-z0-9_./-]+)\\)"));
        int links = 0;
        for (auto match = link.globalMatch(m_text); match.hasNext(); ++links) {
            const QString target = match.next().captured(1);
            QVERIFY2(QFileInfo::exists(path(target)), qPrintable(target));
        }
        QVERIFY(links > 0);
    }

private:
    static QString path(const QString& name) { return QStringLiteral(SOURCE_ROOT "/") + name; }
    static QString read(const QString& name)
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QString m_text;
};

QTEST_APPLESS_MAIN(tst_readme)
#include "tst_readme.moc"
