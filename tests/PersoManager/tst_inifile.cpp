#include "PersoManager/inifile_p.h"

#include "support/testfile.h"

#include <QDir>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <iterator>

class tst_inifile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void findsTexts_data();
    void findsTexts();
    void findsNothingElse_data();
    void findsNothingElse();
    void readsWhatQSettingsWrites_data();
    void readsWhatQSettingsWrites();
    void readsRandomTextsOfQSettings();
    void survivesTheCorpus_data();
    void survivesTheCorpus();
    void survivesRandomFiles();

private:
    QRandomGenerator m_random;
    QTemporaryDir m_folder;
};

namespace {

/// Pieces that the reader's branches look at, whole and cut.
QByteArray randomPieces(QRandomGenerator& random, int most)
{
    static const char* const kPieces[] = {
        "[",     "]",    "[General]", "[%General]", "=",        "key",  "key=", "\n",
        "\r",    "\r\n", ";",         "\"",         "\\",       "\\x",  "\\x4", "\\0",
        "\\777", "%",    "%U",        "%U00E9",     "%4",       "%41",  "/",    ",",
        " ",     "\t",   "@",         "@@",         "\xC3\xA9", "\xC3", "\xFF", "\xEF\xBB\xBF",
        "a",     "1"};
    QByteArray bytes;
    for (int left = random.bounded(most); left > 0; --left)
        bytes += kPieces[random.bounded(int(std::size(kPieces)))];
    return bytes;
}

} // namespace

void tst_inifile::initTestCase()
{
    bool isGiven = false;
    quint32 seed = qEnvironmentVariableIntValue("WZR_SEED", &isGiven);
    if (!isGiven)
        seed = QRandomGenerator::global()->generate();
    m_random.seed(seed);
    qInfo("WZR_SEED=%u", seed);
}

void tst_inifile::findsTexts_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, const QByteArray& content, const char* text) {
        QTest::newRow(name) << content << QString::fromUtf8(text);
    };
    row("plain", "[General]\nkey=Demo\n", "Demo");
    row("no line feed at the end", "[General]\nkey=Demo", "Demo");
    row("line ends of another system", "[General]\r\nkey=Demo\r\n", "Demo");
    row("byte-order mark", "\xEF\xBB\xBF[General]\nkey=Demo\n", "Demo");
    row("as QSettings names the group", "[%General]\nkey=Demo\n", "Demo");
    row("blanks around", " [General] \n\t key \t=  Demo Project \t\n", "Demo Project");
    row("other groups", "key=a\n[X]\nkey=b\n[General]\nkey=Demo\n[Y]\nkey=c\n", "Demo");
    row("group in two places", "[General]\na=1\n[X]\nkey=b\n[General]\nkey=Demo\n", "Demo");
    row("last of several", "[General]\nkey=a\nkey=Demo\n", "Demo");
    row("comma", "[General]\nkey=a,b\n", "a,b");
    row("commas and blanks", "[General]\nkey=a,  b ,, c,\n", "a,  b ,, c,");
    row("comma in quotation marks", "[General]\nkey=\"a, b\"\n", "a, b");
    row("blanks in quotation marks", "[General]\nkey=\"  a \"\n", "  a ");
    row("equals sign", "[General]\nkey=a=b\n", "a=b");
    row("comment behind", "[General]\nkey=Demo ; not Test\n", "Demo");
    row("comment before", "[General]\n;key=Test\n  ; key=Test\nkey=Demo\n", "Demo");
    row("semicolon in quotation marks", "[General]\nkey=\"a; b\"\n", "a; b");
    row("quotation mark that does not end", "[General]\nkey=\"a; b\n[X]\nkey=c\n", "a; b");
    row("escapes", "[General]\nkey=C:\\\\t\\x41\\101\\n\\\"\\;\n", "C:\\tAA\n\";");
    row("backslash at the end", "[General]\nkey=a\\\nb=c\n", "a");
    row("non-ASCII", "[General]\nkey=\xC3\xA9\xF0\x9F\x98\x80\n", "\xC3\xA9\xF0\x9F\x98\x80");
    row("empty", "[General]\nkey=\n", "");
    row("number", "[General]\nkey=0010\n", "0010");
    row("group that does not end", "[General\nkey=Demo\n", "Demo");
}

void tst_inifile::findsTexts()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, text);
    const QString found = IniFile::text(content, "General", "key");
    QVERIFY(!found.isNull());
    QCOMPARE(found, text);
}

void tst_inifile::findsNothingElse_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no group") << QByteArray("key=Demo\n");
    QTest::newRow("group without a name") << QByteArray("[]\nkey=Demo\n[\nkey=Demo\n");
    QTest::newRow("another group") << QByteArray("[X]\nkey=Demo\n");
    QTest::newRow("another case of the group") << QByteArray("[general]\nkey=Demo\n");
    QTest::newRow("another case of the key") << QByteArray("[General]\nKey=Demo\n");
    QTest::newRow("longer key") << QByteArray("[General]\nkeys=Demo\n");
    QTest::newRow("no equals sign") << QByteArray("[General]\nkey\nkey Demo\n");
    QTest::newRow("no key") << QByteArray("[General]\n=Demo\n");
    QTest::newRow("binary") << QByteArray("\x00\xFF[General", 10);
}

void tst_inifile::findsNothingElse()
{
    QFETCH(QByteArray, content);
    QVERIFY(IniFile::text(content, "General", "key").isNull());
}

void tst_inifile::readsWhatQSettingsWrites_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, const char* group, const char* key, const char* text) {
        QTest::newRow(name) << QString::fromUtf8(group) << QString::fromUtf8(key)
                            << QString::fromUtf8(text);
    };
    row("plain", "LOCAL CONFIG", "current_project", "Demo");
    row("General", "General", "key", "Demo");
    row("names", "a % b \xC3\xA9 \xE4\xB8\xAD=]", "; k=1 [\xC3\xA9\xE4\xB8\xAD]\"", "Demo");
    row("key in parts", "group", "part/key", "Demo");
    row("commas", "group", "key", "a, b,c");
    row("blanks", "group", "key", "  a  b  ");
    row("blanks only", "group", "key", "   ");
    row("quotation marks", "group", "key", "\"a\" \"b\" '");
    row("backslashes", "group", "key", "C:\\temp\\new\\");
    row("line ends", "group", "key", "\r\na\n\nb\r");
    row("control characters", "group", "key", "\x01\x1F\x7F\t\a\b\f\v");
    row("digits behind an escape", "group", "key",
        "\x01"
        "2\x02"
        "ab");
    row("semicolon, equals sign, per cent", "group", "key", ";a=b;%41");
    row("non-ASCII", "group", "key", "\xC3\xA9\xE4\xB8\xAD");
    row("at sign", "group", "key", "@ByteArray(a)");
    row("two at signs", "group", "key", "@@a");
    row("empty", "group", "key", "");
}

void tst_inifile::readsWhatQSettingsWrites()
{
    QFETCH(QString, group);
    QFETCH(QString, key);
    QFETCH(QString, text);
    const QTemporaryDir folder;
    {
        QSettings settings(folder.filePath("a.ini"), QSettings::IniFormat);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        settings.setIniCodec("UTF-8");
#endif
        settings.setValue("other", "x");
        settings.beginGroup(group);
        settings.setValue(key, text);
        settings.setValue("zzz", "x");
    }
    const QByteArray content = TestFile::read(folder.filePath("a.ini"));
    const QString found = IniFile::text(content, group, key);
    QVERIFY2(!found.isNull(), content.constData());
    QCOMPARE(found, text);
}

void tst_inifile::readsRandomTextsOfQSettings()
{
    for (int round = 0; round < 10; ++round) {
        const QString file = m_folder.filePath(QString::number(round) + ".ini");
        QStringList texts;
        {
            QSettings settings(file, QSettings::IniFormat);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
            settings.setIniCodec("UTF-8");
#endif
            settings.beginGroup("General");
            for (int i = 0; i < 100; ++i) {
                // Without half characters, which no file keeps, and marks, which Qt takes for one.
                texts += QString::fromUtf8('x' + randomPieces(m_random, 8)).mid(1);
                texts.last().remove(QChar(0xFFFD)).remove(QChar(0xFEFF));
                settings.setValue("key" + QString::number(i), texts.last());
            }
        }
        const QByteArray content = TestFile::read(file);
        for (int i = 0; i < texts.size(); ++i)
            QCOMPARE(IniFile::text(content, "General", "key" + QString::number(i)), texts.at(i));
    }
}

void tst_inifile::survivesTheCorpus_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(INI_CORPUS);
    for (const QString& name : folder.entryList(QDir::Files))
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
}

/// Whatever the file holds, a group put behind it is found, and cutting it anywhere does no harm.
void tst_inifile::survivesTheCorpus()
{
    QFETCH(QString, file);
    const QByteArray content = TestFile::read(file);
    QVERIFY(!content.isEmpty());
    for (int size = 0; size <= content.size(); ++size) {
        const QByteArray cut = content.left(size);
        IniFile::text(cut, "General", "key");
        QCOMPARE(IniFile::text(cut + "\n[Last]\nkey=here\n", "Last", "key"), QString("here"));
    }
}

void tst_inifile::survivesRandomFiles()
{
    for (int round = 0; round < 5000; ++round) {
        const QByteArray content = randomPieces(m_random, 40);
        IniFile::text(content, "General", "key");
        const QString found = IniFile::text(content + "\n[Last]\nkey=here\n", "Last", "key");
        QVERIFY2(found == "here", content.toHex().constData());
    }
}

QTEST_APPLESS_MAIN(tst_inifile)
#include "tst_inifile.moc"
