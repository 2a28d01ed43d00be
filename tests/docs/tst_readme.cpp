// The README's example is the one that the build compiles, the links of all pages lead somewhere,
// and no room of the library is left out.

#include <QDir>
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

    void linksToFilesThatExist_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("README.md") << QStringLiteral("README.md");
        for (const QString& page : QDir(path(QStringLiteral("docs"))).entryList({"*.md"}))
            QTest::newRow(qPrintable(page)) << QStringLiteral("docs/") + page;
    }
    void linksToFilesThatExist()
    {
        QFETCH(QString, page);
        static const QRegularExpression link(
            QStringLiteral("\\]\\(([A-Za-z0-9_./-]+)(#[a-z-]+)?\\)"));
        const QString text = read(page);
        const QDir folder = QFileInfo(path(page)).dir();
        QVERIFY(!text.isEmpty());
        for (auto match = link.globalMatch(text); match.hasNext();) {
            const QString target = match.next().captured(1);
            QVERIFY2(folder.exists(target), qPrintable(target));
        }
    }

    void linksToEveryPage()
    {
        for (const QString& page : QDir(path(QStringLiteral("docs"))).entryList({"*.md"}))
            QVERIFY2(m_text.contains("](docs/" + page + ')'), qPrintable(page));
    }

    void theArchitectureHasEveryRoom()
    {
        const QString page = read(QStringLiteral("docs/architecture.md"));
        for (const QString& room :
             QDir(path(QStringLiteral("src"))).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            QVERIFY2(page.contains('`' + room + '/'), qPrintable(room));
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
