#include "LogTask/clogobject.h"
#include "support/filesizelimit.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimerEvent>

#include <memory>

class tst_clogobject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void writesBanners();
    void truncatesOrAppends();
    void endsALineWhenAsked();
    void keepsTextUntilItFlushes();
    void keepsTheOrderOfTextsAndBytes();
    void flushesEachTextWhenSet();
    void flushesOnRequestWithAMark();
    void flushesOnATimerEvent();
    void writesTheLocalEncoding();
    void losesLinesWhenTheFileCannotBeOpened();
    void goesOnAfterAFullDisk();
    void offersItsSlotsInOrder();

private:
    QByteArray content() const;
    std::unique_ptr<CLogObject> open(bool append = false, bool flush = false)
    {
        return std::make_unique<CLogObject>(path(), append, false, flush, nullptr);
    }
    QString path() const { return m_folder->filePath("log"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

// Each time of day becomes "T".
QByteArray withoutTimes(const QByteArray& text)
{
    return QString::fromUtf8(text)
        .replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d"), "T")
        .toUtf8();
}

} // namespace

void tst_clogobject::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

QByteArray tst_clogobject::content() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

void tst_clogobject::writesBanners()
{
    open().reset();
    QCOMPARE(withoutTimes(content()), QByteArray("\r\nStart Log--T\r\n\r\nEnd Log--T\r\n"));
}

void tst_clogobject::truncatesOrAppends()
{
    const QByteArray run = "\r\nStart Log--T\r\n\r\nEnd Log--T\r\n";
    open().reset();
    open(true).reset();
    QCOMPARE(withoutTimes(content()), run + run);
    open(false).reset();
    QCOMPARE(withoutTimes(content()), run);
}

void tst_clogobject::endsALineWhenAsked()
{
    auto writer = open();
    writer->WriteLog("one", true);
    writer->WriteLog("two", false);
    writer->WriteLog("three", true);
    writer.reset();
    QCOMPARE(withoutTimes(content()),
             QByteArray("\r\nStart Log--T\r\none\r\ntwothree\r\n\r\nEnd Log--T\r\n"));
}

void tst_clogobject::keepsTextUntilItFlushes()
{
    const auto writer = open();
    writer->WriteLog("one", true);
    QCOMPARE(content(), QByteArray());
}

void tst_clogobject::keepsTheOrderOfTextsAndBytes()
{
    auto writer = open();
    writer->WriteLog("one", true);
    writer->writeBytes("two", 3);
    QCOMPARE(content(), QByteArray());
    const QByteArray many(20000, 'x'); // more than is kept back
    writer->writeBytes(many.constData(), many.size());
    const QByteArray expected = "\r\nStart Log--T\r\none\r\ntwo" + many;
    QCOMPARE(withoutTimes(content()), expected);
    writer->WriteLog("three", true);
    writer.reset();
    QCOMPARE(withoutTimes(content()), expected + "three\r\n\r\nEnd Log--T\r\n");
}

void tst_clogobject::flushesEachTextWhenSet()
{
    const auto writer = open(false, true);
    writer->WriteLog("one", false);
    QCOMPARE(withoutTimes(content()), QByteArray("\r\nStart Log--T\r\none"));
}

void tst_clogobject::flushesOnRequestWithAMark()
{
    const auto writer = open();
    writer->WriteLog("one", true);
    writer->flushLog();
    QCOMPARE(withoutTimes(content()), QByteArray("\r\nStart Log--T\r\none\r\nflush to file \r\n"));
}

void tst_clogobject::flushesOnATimerEvent()
{
    const auto writer = open();
    writer->WriteLog("one", true);
    QTimerEvent event(1);
    QCoreApplication::sendEvent(writer.get(), &event);
    QCOMPARE(withoutTimes(content()), QByteArray("\r\nStart Log--T\r\none\r\n"));
}

void tst_clogobject::writesTheLocalEncoding()
{
    auto writer = open();
    const QString text = QString::fromUtf8("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    writer->WriteLog(text, true);
    writer.reset();
    QVERIFY(content().contains("\r\n" + text.toLocal8Bit() + "\r\n"));
    QVERIFY(content().contains("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")); // tests run in UTF-8
}

void tst_clogobject::losesLinesWhenTheFileCannotBeOpened()
{
    const QString below = m_folder->filePath("missing/log");
    CLogObject writer(below, false, true, true, nullptr);
    writer.WriteLog("one", true);
    writer.flushLog();
    QTimerEvent event(1);
    QCoreApplication::sendEvent(&writer, &event);
    QVERIFY(!QFile::exists(below));
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void tst_clogobject::goesOnAfterAFullDisk()
{
    auto writer = open(false, true);
    {
        const FileSizeLimit full(8192);
        for (int i = 0; i < 50; ++i)
            writer->WriteLog("lost " + QString(1000, 'x'), true);
        QCOMPARE(QFile(path()).size(), qint64(8192));
    }
    writer->WriteLog("after", true);
    QVERIFY(content().endsWith(" lines lost here\r\nafter\r\n"));
    QVERIFY(QFile(path()).size() < 50 * 1000);
}

void tst_clogobject::offersItsSlotsInOrder()
{
    const QMetaObject& meta = CLogObject::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(),
             QByteArray("WriteLog(QString,bool)"));
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), QByteArray("flushLog()"));
}

QTEST_GUILESS_MAIN(tst_clogobject)
#include "tst_clogobject.moc"
