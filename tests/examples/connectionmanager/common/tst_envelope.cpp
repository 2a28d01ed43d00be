#include "common/envelope.h"

#include <QTest>

class tst_envelope : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holdsNoEndMarker_data();
    void holdsNoEndMarker();
    void leavesOtherTextsAlone();
};

void tst_envelope::holdsNoEndMarker_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("written");
    QTest::newRow("alone") << "__END__"
                           << R"("\u005f_END__")";
    QTest::newRow("inside") << "cut __END__ here"
                            << R"("cut \u005f_END__ here")";
    QTest::newRow("twice") << "__END____END__"
                           << R"("\u005f_END__\u005f_END__")";
    QTest::newRow("overlapping") << "__END__END__"
                                 << R"("\u005f_END\u005f_END__")";
    QTest::newRow("one character before") << "___END__"
                                          << R"("_\u005f_END__")";
    QTest::newRow("behind a backslash") << R"(\__END__)"
                                        << R"("\\\u005f_END__")";
}

void tst_envelope::holdsNoEndMarker()
{
    QFETCH(const QString, text);
    QFETCH(const QString, written);
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("key", text, true);
    const QString sent = Envelope::text(envelope);
    QCOMPARE(sent, QString(R"({"key":%1})").arg(written) + '\n');
    CDataValue received;
    QVERIFY(CDataValue::parseToDataValue(sent, received));
    QCOMPARE(received.mapGet("key").asQString(), text);
}

void tst_envelope::leavesOtherTextsAlone()
{
    CDataValue envelope(MAP_VALUE);
    envelope.mapSet("key", "__BEGIN__ _END_ __END_ __end__ \xC3\xBC", true);
    QCOMPARE(Envelope::text(envelope),
             QString::fromUtf8("{\"key\":\"__BEGIN__ _END_ __END_ __end__ \xC3\xBC\"}\n"));
}

QTEST_APPLESS_MAIN(tst_envelope)
#include "tst_envelope.moc"
