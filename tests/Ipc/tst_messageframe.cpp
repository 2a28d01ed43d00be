#include "Ipc/messageframe_p.h"

#include <QtTest>

namespace {

QStringList bodiesOf(MessageFrame& frame)
{
    QStringList bodies;
    QString body;
    while (frame.next(body) == MessageFrame::Body)
        bodies << body;
    return bodies;
}

QStringList read(MessageFrame& frame, const QByteArray& bytes)
{
    frame.append(bytes);
    return bodiesOf(frame);
}

QString outcomeAfter(MessageFrame& frame, const QByteArray& bytes)
{
    frame.append(bytes);
    QString body;
    MessageFrame::Outcome outcome = frame.next(body);
    while (outcome == MessageFrame::Body)
        outcome = frame.next(body);
    return outcome == MessageFrame::NoHead  ? "no head"
           : outcome == MessageFrame::NoEnd ? "no end"
                                            : "done";
}

} // namespace

class tst_messageframe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wrapsAMessageBetweenTheMarkers();
    void deliversBodiesAsTextOrBytes();
    void namesTheLengthOfALongBuffer();
    void neverFindsHalfACharacter();
    void cutsOneRead_data();
    void cutsOneRead();
    void deliversAFrameSplitAtAnyByteOnce_data();
    void deliversAFrameSplitAtAnyByteOnce();
    void deliversAFrameOfThreeReadsAfterTheThird();
    void deliversAFrameOfSingleByteReads();
    void saysWhyItStopped();
    void passesOverAHeadBeforeThePlaceOfTheHeadBeforeIt();
    void findsAMarkerCutByARead();
    void dropsWhatFollowsAZeroByteInTheSameRead();
    void damagesACharacterCutByAZeroByteOnly();
    void keepsCharactersCutByReads_data();
    void keepsCharactersCutByReads();
    void keepsAMillionCharactersInReadsOf4096Bytes();
    void replacesInvalidBytes_data();
    void replacesInvalidBytes();
    void keepsTheByteOrderMarkOfARead();
    void usesChangedMarkers();
    void searchesKeptTextForChangedMarkers();
    void usesMarkersChangedBetweenTwoBodies();
    void neverFindsAnEmptyEnd();
    void takesAnEmptyHeadForTheStart();
    void deliversNothingBetweenEqualMarkers();
    void forgetsEverythingWhenCleared();
    void staysFastOnLongInput_data();
    void staysFastOnLongInput();
};

void tst_messageframe::deliversBodiesAsTextOrBytes()
{
    MessageFrame frame;
    frame.append("__BEGIN__\xC3\xA9\xFF__END____BEGIN__\xEF\xBB\xBF\xFF__END__");
    std::string bytes;
    QCOMPARE(frame.next(bytes), MessageFrame::Body);
    QCOMPARE(bytes, std::string("\xC3\xA9\xEF\xBF\xBD"));
    QString text;
    QCOMPARE(frame.next(text), MessageFrame::Body);
    QCOMPARE(text, QString(QChar(0xFEFF)) + QChar(0xFFFD));
    QCOMPARE(frame.next(bytes), MessageFrame::Done);
}

void tst_messageframe::namesTheLengthOfALongBuffer()
{
    const QByteArray euro = "\xE2\x82\xAC";
    MessageFrame frame;
    frame.append("__BEGIN__one__END__" + euro.repeated(16384));
    QString body;
    QCOMPARE(frame.bufferExcerpt(), QString("__BEGIN__one__END__") +
                                        QString(16384 - 19, QChar(0x20AC)) +
                                        "... 16403 characters");
    QCOMPARE(frame.next(body), MessageFrame::Body);
    QCOMPARE(frame.bufferExcerpt(), QString(16384, QChar(0x20AC)));
    frame.append(euro + "\xF0\x9F\x98\x80");
    QCOMPARE(frame.bufferExcerpt(), QString(16384, QChar(0x20AC)) + "... 16387 characters");
    QCOMPARE(frame.buffer().size(), 16387);
}

void tst_messageframe::neverFindsHalfACharacter()
{
    MessageFrame frame(QString(QChar(0xD83D)), "b");
    frame.append("\xF0\x9F\x98\x80?\xEF\xBF\xBD"
                 "b");
    QString body;
    QCOMPARE(frame.next(body), MessageFrame::NoHead);
    frame.setMarkers("?", QString(QChar(0xDE00)));
    frame.append("?");
    QCOMPARE(frame.next(body), MessageFrame::NoEnd);
}

void tst_messageframe::wrapsAMessageBetweenTheMarkers()
{
    QCOMPARE(MessageFrame::wrap("__BEGIN__", "{}\n", "__END__"),
             QByteArray("__BEGIN__{}\n__END__"));
    QCOMPARE(MessageFrame::defaultHead(), QString("__BEGIN__"));
    QCOMPARE(MessageFrame::defaultEnd(), QString("__END__"));
}

void tst_messageframe::cutsOneRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("bodies");
    QTest::addColumn<QString>("kept");

    QTest::newRow("nothing") << QByteArray() << QStringList() << "";
    QTest::newRow("one frame") << QByteArray("__BEGIN__a__END__") << QStringList{"a"} << "";
    QTest::newRow("empty body") << QByteArray("__BEGIN____END__") << QStringList{""} << "";
    QTest::newRow("two frames") << QByteArray("__BEGIN__a__END____BEGIN__b__END__")
                                << QStringList{"a", "b"} << "";
    QTest::newRow("stray text first")
        << QByteArray("xyz__BEGIN__a__END__") << QStringList{"a"} << "";
    QTest::newRow("stray text last")
        << QByteArray("__BEGIN__a__END__xyz") << QStringList{"a"} << "xyz";
    QTest::newRow("beginning of a second frame")
        << QByteArray("__BEGIN__a__END____BEGIN__b__E") << QStringList{"a"} << "__BEGIN__b__E";
    QTest::newRow("lone end") << QByteArray("__END__") << QStringList() << "__END__";
    QTest::newRow("lone head") << QByteArray("__BEGIN__") << QStringList() << "__BEGIN__";
    QTest::newRow("text without markers") << QByteArray("abc") << QStringList() << "abc";
    QTest::newRow("end inside the payload")
        << QByteArray("__BEGIN__a__END__b__END__") << QStringList{"a"} << "b__END__";
    QTest::newRow("head inside the payload")
        << QByteArray("__BEGIN__a__BEGIN__b__END__") << QStringList{"a__BEGIN__b"} << "";
    QTest::newRow("end before head takes the rest")
        << QByteArray("__END__xx__BEGIN__a") << QStringList{"a"} << "xx__BEGIN__a";
    QTest::newRow("end before a whole frame")
        << QByteArray("__END____BEGIN__a__END__") << QStringList{"a__END__"} << "__BEGIN__a__END__";
    QTest::newRow("overlapping underscores")
        << QByteArray("__BEGIN___a___END__") << QStringList{"_a_"} << "";
    QTest::newRow("other case") << QByteArray("__begin__a__end__") << QStringList()
                                << "__begin__a__end__";
}

void tst_messageframe::cutsOneRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, bodies);
    QFETCH(QString, kept);

    MessageFrame frame;
    QCOMPARE(read(frame, bytes), bodies);
    QCOMPARE(frame.buffer(), kept);
}

void tst_messageframe::deliversAFrameSplitAtAnyByteOnce_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("bodies");

    QTest::newRow("ascii") << QByteArray("__BEGIN__{\"a\":1}\n__END__")
                           << QStringList{"{\"a\":1}\n"};
    QTest::newRow("2, 3 and 4 bytes") << QByteArray("__BEGIN__\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"
                                                    "__END__")
                                      << QStringList{QString::fromUcs4(U"\u00E9\u20AC\U0001F600")};
    QTest::newRow("two frames") << QByteArray("__BEGIN__a__END____BEGIN__\xC3\xA9__END__")
                                << QStringList{"a", QString(QChar(0xE9))};
    QTest::newRow("empty bodies") << QByteArray("__BEGIN____END____BEGIN____END__")
                                  << QStringList{"", ""};
}

void tst_messageframe::deliversAFrameSplitAtAnyByteOnce()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, bodies);

    for (int first = 0; first <= bytes.size(); ++first) {
        for (int second = first; second <= bytes.size(); ++second) {
            MessageFrame frame;
            QStringList delivered = read(frame, bytes.left(first));
            delivered += read(frame, bytes.mid(first, second - first));
            delivered += read(frame, bytes.mid(second));
            QVERIFY2(delivered == bodies, qPrintable(QString("%1 %2").arg(first).arg(second)));
            QCOMPARE(frame.buffer(), QString());
        }
    }
}

void tst_messageframe::deliversAFrameOfThreeReadsAfterTheThird()
{
    MessageFrame frame;
    QCOMPARE(read(frame, "__BEG"), QStringList());
    QCOMPARE(read(frame, "IN__abc__EN"), QStringList());
    QCOMPARE(read(frame, "D__"), QStringList{"abc"});
    QCOMPARE(read(frame, ""), QStringList());
}

void tst_messageframe::deliversAFrameOfSingleByteReads()
{
    const QByteArray bytes("??__BEGIN__\xE2\x82\xAC__END____BEGIN__b__END__");
    MessageFrame frame;
    QStringList bodies;
    for (const char byte : bytes)
        bodies += read(frame, QByteArray(1, byte));
    QCOMPARE(bodies, (QStringList{QString(QChar(0x20AC)), "b"}));
}

void tst_messageframe::saysWhyItStopped()
{
    MessageFrame frame;
    QCOMPARE(outcomeAfter(frame, "x"), QString("no head"));
    QCOMPARE(outcomeAfter(frame, "__END__"), QString("no head"));
    frame.clear();
    QCOMPARE(outcomeAfter(frame, "__BEGIN__"), QString("no end"));
    QCOMPARE(outcomeAfter(frame, "__END__"), QString("done"));
    QCOMPARE(outcomeAfter(frame, "__BEGIN__a__END____END__"), QString("no head"));
}

void tst_messageframe::passesOverAHeadBeforeThePlaceOfTheHeadBeforeIt()
{
    MessageFrame frame;
    // The first head stands at 3; the second, once the first frame is gone, at 0.
    QCOMPARE(read(frame, "xyz__BEGIN__a__END____BEGIN__b__END__"), QStringList{"a"});
    QCOMPARE(frame.buffer(), QString("__BEGIN__b__END__"));
    // A read of nothing is enough: the search begins at 0 again.
    QCOMPARE(read(frame, ""), QStringList{"b"});

    // A later head is found, and then the first end stands before it.
    frame.clear();
    QCOMPARE(read(frame, "xyz__BEGIN__a__END____BEGIN__b__END____BEGIN__c__END__"), (QStringList{
                                                                                        "a",
                                                                                        "c__END__",
                                                                                    }));
    QCOMPARE(frame.buffer(), QString("__BEGIN__c__END__"));
}

void tst_messageframe::findsAMarkerCutByARead()
{
    MessageFrame frame;
    QCOMPARE(read(frame, "a_"), QStringList());
    QCOMPARE(read(frame, "_BEGIN_"), QStringList());
    QCOMPARE(read(frame, "_b__END_"), QStringList());
    QCOMPARE(read(frame, "_c_"), QStringList{"b"});
    QCOMPARE(frame.buffer(), QString("c_"));
}

void tst_messageframe::dropsWhatFollowsAZeroByteInTheSameRead()
{
    MessageFrame frame;
    QCOMPARE(read(frame, QByteArray("__BEGIN__a\0lost__END__", 22)), QStringList());
    QCOMPARE(frame.buffer(), QString("__BEGIN__a"));
    QCOMPARE(read(frame, "b__END__"), QStringList{"ab"});
    QCOMPARE(read(frame, QByteArray("\0__BEGIN__c__END__", 18)), QStringList());
    QCOMPARE(frame.buffer(), QString());
}

void tst_messageframe::damagesACharacterCutByAZeroByteOnly()
{
    MessageFrame frame;
    read(frame, QByteArray("a\xE2\x82\0z", 5));
    QVERIFY(frame.buffer().startsWith(QString("a") + QChar(0xFFFD)));
    const QString both = frame.buffer() + QChar(0xFFFD);
    read(frame, "\xAC");
    QCOMPARE(frame.buffer(), both);

    // What a read held back is lost to the zero byte of the next as well.
    frame.clear();
    read(frame, "\xE2\x82");
    QCOMPARE(frame.buffer(), QString());
    read(frame, QByteArray("\0\xAC", 2));
    QVERIFY(frame.buffer().startsWith(QChar(0xFFFD)));
}

void tst_messageframe::keepsCharactersCutByReads_data()
{
    QTest::addColumn<QByteArray>("character");
    QTest::addColumn<uint>("code");

    QTest::newRow("U+0080") << QByteArray("\xC2\x80") << 0x80u;
    QTest::newRow("U+07FF") << QByteArray("\xDF\xBF") << 0x7FFu;
    QTest::newRow("U+0800") << QByteArray("\xE0\xA0\x80") << 0x800u;
    QTest::newRow("U+D7FF") << QByteArray("\xED\x9F\xBF") << 0xD7FFu;
    QTest::newRow("U+E000") << QByteArray("\xEE\x80\x80") << 0xE000u;
    QTest::newRow("U+FEFF") << QByteArray("\xEF\xBB\xBF") << 0xFEFFu;
    QTest::newRow("U+10000") << QByteArray("\xF0\x90\x80\x80") << 0x10000u;
    QTest::newRow("U+10FFFF") << QByteArray("\xF4\x8F\xBF\xBF") << 0x10FFFFu;
}

void tst_messageframe::keepsCharactersCutByReads()
{
    QFETCH(QByteArray, character);
    QFETCH(uint, code);

    const char32_t codes[] = {U'z', code};
    const QString one = QString::fromUcs4(codes, 2).mid(1); // a first U+FEFF would be dropped
    const QString text = one + 'z' + one;
    const QByteArray bytes = character + 'z' + character;
    for (int cut = 0; cut <= bytes.size(); ++cut) {
        MessageFrame frame;
        read(frame, bytes.left(cut));
        read(frame, bytes.mid(cut));
        QCOMPARE(frame.buffer(), text);
    }
    MessageFrame frame;
    for (const char byte : bytes)
        read(frame, QByteArray(1, byte));
    QCOMPARE(frame.buffer(), text);
}

void tst_messageframe::keepsAMillionCharactersInReadsOf4096Bytes()
{
    QString text;
    text.reserve(1000000);
    for (int i = 0; i < 1000000; ++i)
        text += QChar(i % 3 == 0 ? 0x20AC : i % 3 == 1 ? 0xE9 : 0x4E2D);
    const QByteArray bytes = "__BEGIN__" + text.toUtf8() + "__END__";
    MessageFrame frame;
    QStringList bodies;
    for (int at = 0; at < bytes.size(); at += 4096)
        bodies += read(frame, bytes.mid(at, 4096));
    QCOMPARE(bodies.size(), 1);
    QVERIFY(bodies.first() == text);
}

void tst_messageframe::replacesInvalidBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("lone following byte") << QByteArray("\x80");
    QTest::newRow("overlong lead C0") << QByteArray("\xC0");
    QTest::newRow("overlong lead C1") << QByteArray("\xC1");
    QTest::newRow("overlong E0 80") << QByteArray("\xE0\x80");
    QTest::newRow("surrogate ED A0") << QByteArray("\xED\xA0");
    QTest::newRow("overlong F0 80") << QByteArray("\xF0\x80\x80");
    QTest::newRow("beyond the end F4 90") << QByteArray("\xF4\x90\x80");
    QTest::newRow("lead F5") << QByteArray("\xF5");
    QTest::newRow("byte FF") << QByteArray("\xFF");
    QTest::newRow("five following bytes") << QByteArray("\xF0\x90\x80\x80\x80");
}

// Such bytes are at once what they are: nothing that could follow makes a character of them.
void tst_messageframe::replacesInvalidBytes()
{
    QFETCH(QByteArray, bytes);
    MessageFrame frame;
    read(frame, bytes);
    QCOMPARE(frame.buffer(), QString::fromUtf8(bytes));
    QVERIFY(frame.buffer().contains(QChar(0xFFFD)));
    QCOMPARE(read(frame, "__BEGIN__a__END__"), QStringList{"a"});
}

void tst_messageframe::keepsTheByteOrderMarkOfARead()
{
    MessageFrame frame;
    read(frame, "__BEGIN__");
    QCOMPARE(read(frame, "\xEF\xBB\xBF\xEF\xBB\xBF!__END__"),
             QStringList{QString(2, QChar(0xFEFF)) + "!"});
}

void tst_messageframe::usesChangedMarkers()
{
    MessageFrame frame;
    frame.setMarkers("<", ">>");
    QCOMPARE(read(frame, "<a>>__BEGIN__b__END__<c>>"), (QStringList{"a", "c"}));
    frame.clear(); // keeps the markers
    QCOMPARE(read(frame, "<d>>"), QStringList{"d"});
    const QString euro(QChar(0x20AC));
    frame.setMarkers(euro, euro + euro);
    QCOMPARE(read(frame, (euro + "x" + euro + euro).toUtf8()), QStringList{"x"});
}

void tst_messageframe::searchesKeptTextForChangedMarkers()
{
    MessageFrame frame;
    QCOMPARE(read(frame, "<a>__BEGIN__"), QStringList());
    frame.setMarkers("<", ">");
    QCOMPARE(bodiesOf(frame), QStringList{"a"});
    QCOMPARE(frame.buffer(), QString("__BEGIN__"));
    frame.setMarkers("__BEGIN__", "__END__");
    QCOMPARE(read(frame, "b__END__"), QStringList{"b"});
}

void tst_messageframe::usesMarkersChangedBetweenTwoBodies()
{
    MessageFrame frame;
    frame.append("__BEGIN__a__END__<b>__BEGIN__c__END__");
    QString body;
    QCOMPARE(frame.next(body), MessageFrame::Body);
    frame.setMarkers("<", ">");
    QCOMPARE(frame.next(body), MessageFrame::Body);
    QCOMPARE(body, QString("b"));
    QCOMPARE(frame.next(body), MessageFrame::Done);
    QCOMPARE(frame.buffer(), QString("__BEGIN__c__END__"));
}

void tst_messageframe::neverFindsAnEmptyEnd()
{
    MessageFrame frame;
    frame.setMarkers("<", "");
    QCOMPARE(outcomeAfter(frame, "<a<b"), QString("no end"));
    QCOMPARE(frame.buffer(), QString("<a<b"));
    frame.setMarkers("", "");
    QCOMPARE(outcomeAfter(frame, "c"), QString("no end"));
    frame.setMarkers("<", ">");
    QCOMPARE(read(frame, ">"), QStringList{"a<bc"});
}

void tst_messageframe::takesAnEmptyHeadForTheStart()
{
    MessageFrame frame;
    frame.setMarkers("", ";");
    QCOMPARE(read(frame, "a;;b;c"), (QStringList{"a", "", "b"}));
    QCOMPARE(frame.buffer(), QString("c"));
    QCOMPARE(read(frame, ";"), QStringList{"c"});
}

// The end is found where the head is, so that all that follows is taken: equal markers are no use,
// but do no harm.
void tst_messageframe::deliversNothingBetweenEqualMarkers()
{
    MessageFrame frame;
    frame.setMarkers("|", "|");
    QCOMPARE(read(frame, "|abc|"), (QStringList{"abc|", ""}));
    QCOMPARE(frame.buffer(), QString());
}

void tst_messageframe::forgetsEverythingWhenCleared()
{
    MessageFrame frame;
    read(frame, "__BEGIN__a\xE2\x82");
    frame.clear();
    QCOMPARE(frame.buffer(), QString());
    QCOMPARE(read(frame, "\xAC__END__"), QStringList());
    QVERIFY(frame.buffer().startsWith(QChar(0xFFFD)));
    QCOMPARE(read(frame, "__BEGIN__b"), QStringList{"b"}); // behind the lone end
}

void tst_messageframe::staysFastOnLongInput_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::addColumn<int>("readSize");
    QTest::addColumn<qlonglong>("bodies");

    QTest::newRow("stray text, small reads") << QByteArray("0123456789abcdef") << 64 << 0ll;
    QTest::newRow("heads only, small reads") << QByteArray("__BEGIN__") << 64 << 0ll;
    QTest::newRow("ends only, small reads") << QByteArray("__END__") << 64 << 0ll;
    QTest::newRow("underscores, small reads") << QByteArray("_") << 64 << 0ll;
    QTest::newRow("small frames, one read")
        << QByteArray("__BEGIN__a__END__") << (16 << 20) << qlonglong((16 << 20) / 17);
}

// With costs that grow with the square of the input, each of these would run for hours.
void tst_messageframe::staysFastOnLongInput()
{
    QFETCH(QByteArray, unit);
    QFETCH(int, readSize);
    QFETCH(qlonglong, bodies);

    const QByteArray bytes = unit.repeated((16 << 20) / unit.size());
    MessageFrame frame;
    qlonglong delivered = 0;
    QString body;
    for (int at = 0; at < bytes.size(); at += readSize) {
        frame.append(bytes.mid(at, readSize));
        while (frame.next(body) == MessageFrame::Body)
            ++delivered;
    }
    QCOMPARE(delivered, bodies);
}

QTEST_APPLESS_MAIN(tst_messageframe)
#include "tst_messageframe.moc"
