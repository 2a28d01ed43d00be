// The memory that reading and saving files takes, by the allocations that are made.

#include "DataValue/datavalue.h"
#include "support/allocationpeak.h"
#include "support/testfile.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr qint64 kKiB = 1024;
constexpr qint64 kMiB = 1024 * kKiB;

CDataValue mapWith(const QByteArray& text)
{
    CDataValue value;
    value.mapSet("text", CDataValue(text.constData()), true);
    return value;
}

} // namespace

class tst_filememory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void needsLittleForASmallFile_data() { forms(); }
    void needsLittleForASmallFile();
    void needsTheSizeOfALargeFileAFewTimes_data();
    void needsTheSizeOfALargeFileAFewTimes();
    void keepsNothingOfAFileThatIsRefused_data() { forms(); }
    void keepsNothingOfAFileThatIsRefused();

private:
    static void forms();
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void tst_filememory::initTestCase()
{
    if (!AllocationPeak::canCount())
        QSKIP("a sanitizer has allocation functions of its own");
    // What is made once: settings of the log, locales.
    for (const char* name : {"once.xml", "once.config", "once.perso"}) {
        CDataValue value = mapWith("x");
        QVERIFY(value.saveFileAs(path(name)) && value.readFile(path(name)));
    }
}

void tst_filememory::forms()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"a.xml", "a.config", "a.perso"})
        QTest::newRow(name) << QString(name);
}

void tst_filememory::needsLittleForASmallFile()
{
    QFETCH(QString, name);
    const QString file = path(name);
    CDataValue value = mapWith("small");
    const AllocationPeak saving;
    QVERIFY(value.saveFileAs(file));
    QVERIFY2(saving.bytes() < 64 * kKiB, qPrintable(QString::number(saving.bytes())));
    CDataValue read;
    const AllocationPeak reading;
    QVERIFY(read.readFile(file));
    QVERIFY2(reading.bytes() < 64 * kKiB, qPrintable(QString::number(reading.bytes())));
    QVERIFY2(reading.bytesKept() < 2 * kKiB, qPrintable(QString::number(reading.bytesKept())));
}

void tst_filememory::needsTheSizeOfALargeFileAFewTimes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("times"); // the size of the file, when it is one text
    QTest::newRow("a.config") << "a.config" << 3;
    QTest::newRow("a.xml") << "a.xml" << 8;
}

void tst_filememory::needsTheSizeOfALargeFileAFewTimes()
{
    QFETCH(QString, name);
    QFETCH(int, times);
    const QString file = path(name);
    CDataValue value = mapWith(QByteArray(8 * kMiB, 'x'));
    QVERIFY(value.saveFileAs(file));
    value = CDataValue();
    const qint64 size = QFileInfo(file).size();
    {
        CDataValue read;
        const AllocationPeak reading;
        QVERIFY(read.readFile(file));
        QVERIFY2(reading.bytes() < times * size, qPrintable(QString::number(reading.bytes())));
        QVERIFY2(reading.bytesKept() < size + size / 4,
                 qPrintable(QString::number(reading.bytesKept())));
    }
    const AllocationPeak reading;
    {
        CDataValue read;
        QVERIFY(read.readFile(file));
    }
    QVERIFY2(reading.bytesKept() < 16 * kKiB, qPrintable(QString::number(reading.bytesKept())));
}

void tst_filememory::keepsNothingOfAFileThatIsRefused()
{
    QFETCH(QString, name);
    const QString file = path(name);
    TestFile::write(file, "<DictValue>[" + QByteArray(kMiB, 'x'));
    CDataValue read;
    QVERIFY(!read.readFile(file));
    const AllocationPeak reading;
    QVERIFY(!read.readFile(file));
    QVERIFY2(reading.bytesKept() < 16 * kKiB, qPrintable(QString::number(reading.bytesKept())));
}

QTEST_GUILESS_MAIN(tst_filememory)
#include "tst_filememory.moc"
