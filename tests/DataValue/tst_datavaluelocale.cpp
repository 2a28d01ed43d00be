#include "DataValue/datavalue.h"

#include <QLocale>
#include <QtTest>

/// Values in the process of a user whose language has digits of its own.
class tst_datavaluelocale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void writesDatesInPlainDigits();
    void readsDatesInPlainDigits();
    void writesNumbersInPlainDigits();
};

void tst_datavaluelocale::initTestCase()
{
    QCOMPARE(QLocale::system().language(), QLocale::Persian);
}

void tst_datavaluelocale::writesDatesInPlainDigits()
{
    QCOMPARE(CDataValue(QDate(2011, 3, 9)).asQString(), QString("09/03/2011"));
    QCOMPARE(CDataValue(QDate()).asQString(), QString(""));
}

void tst_datavaluelocale::readsDatesInPlainDigits()
{
    QCOMPARE(CDataValue("09/03/2011").asQDate(), QDate(2011, 3, 9));
}

void tst_datavaluelocale::writesNumbersInPlainDigits()
{
    QCOMPARE(CDataValue(-9000000000LL).asQString(), QString("-9000000000"));
    QCOMPARE(CDataValue(2.5).parseToQString(FAST_STYLE), QString("2.5\n"));
}

int main(int argc, char** argv)
{
    qputenv("LC_ALL", "fa_IR.UTF-8"); // before Qt asks for it
    tst_datavaluelocale test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_datavaluelocale.moc"
