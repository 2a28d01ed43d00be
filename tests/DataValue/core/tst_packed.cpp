#include "DataValue/core/packed_p.h"

#include <QtTest>

#include <memory>
#include <string>

namespace {

struct DropReference
{
    void operator()(PackedBlock* block) const { block->dropReference(); }
};
using Block = std::unique_ptr<PackedBlock, DropReference>;

Block finished(PackedBuilder& builder)
{
    return Block(builder.finish());
}

/// {"a":[1,[],"text"],"b":2.5}
Block sample()
{
    PackedBuilder builder;
    builder.begin(MAP_VALUE);
    builder.addText("a");
    builder.begin(ARRAY_VALUE);
    builder.addInt(1);
    builder.begin(ARRAY_VALUE);
    builder.end(0);
    builder.addText("text");
    builder.end(3);
    builder.addText("b");
    builder.addReal(2.5);
    builder.end(2);
    return finished(builder);
}

/// A map of numbers under the keys k000 and so on; the last member is an array of one number if
/// wanted, so that the members differ in size.
Block wideMap(int members, bool withArray)
{
    PackedBuilder builder;
    builder.begin(MAP_VALUE);
    for (int i = 0; i < members; ++i) {
        builder.addText(
            QByteArray("k" + QByteArray::number(i).rightJustified(3, '0')).toStdString());
        const bool isArray = withArray && i + 1 == members;
        if (isArray)
            builder.begin(ARRAY_VALUE);
        builder.addInt(i);
        if (isArray)
            builder.end(1);
    }
    builder.end(static_cast<std::size_t>(members));
    return finished(builder);
}

} // namespace

/// Packed trees and their builder.
class tst_packed : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holdsEveryScalar();
    void countsChildrenAndNodes();
    void keepsTextsOfItsOwn();
    void givesBackTheEndOfARoom();
    void copiesAPartWithItsTexts();
    void copiesTheCommentsBelowAPart();
    void takesTextsFromAnotherBuilder();
    void findsMembers_data();
    void findsMembers();
    void growsBeyondTheFirstRoom();
    void anUnfinishedBuilderFreesWhatItHas();
};

void tst_packed::holdsEveryScalar()
{
    PackedBuilder builder;
    builder.begin(ARRAY_VALUE);
    builder.addNull();
    builder.addInt(-7);
    builder.addUInt(4294967295u);
    builder.addReal(0.1);
    builder.addBool(true);
    builder.addText("abc");
    builder.end(6);
    const Block block = finished(builder);
    const PackedNode* const root = block->root();
    QCOMPARE(root[1].type(), NULL_VALUE);
    QCOMPARE(root[2].type(), INT_VALUE);
    QCOMPARE(root[2].signedNumber, -7);
    QCOMPARE(root[3].type(), UINT_VALUE);
    QCOMPARE(root[3].unsignedNumber, 4294967295u);
    QCOMPARE(root[4].type(), REAL_VALUE);
    QCOMPARE(root[4].real, 0.1);
    QCOMPARE(root[5].type(), BOOLEAN_VALUE);
    QCOMPARE(root[5].flag, true);
    QCOMPARE(root[6].type(), STRING_VALUE);
    QCOMPARE(std::string(root[6].view()), std::string("abc"));
    QCOMPARE(root->behind(), root + 7);
}

void tst_packed::countsChildrenAndNodes()
{
    const Block block = sample();
    const PackedNode* const root = block->root();
    QCOMPARE(root->count, 2u);
    QCOMPARE(root->size, 8u);
    const PackedNode* const array = root + 2;
    QCOMPARE(array->type(), ARRAY_VALUE);
    QCOMPARE(array->count, 3u);
    QCOMPARE(array->size, 4u);
    QCOMPARE(array[2].count, 0u);
    QCOMPARE(array[2].size, 1u);
    QCOMPARE(array[2].behind(), array + 3);
    QCOMPARE(array->behind(), root + 6);
    QCOMPARE(block->textBytes(), std::size_t(6));
}

void tst_packed::keepsTextsOfItsOwn()
{
    std::string text = "a text";
    PackedBuilder builder;
    builder.addText(text);
    text = "gone  ";
    const Block block = finished(builder);
    QCOMPARE(std::string(block->root()->text), std::string("a text")); // the zero byte, too
}

void tst_packed::givesBackTheEndOfARoom()
{
    PackedBuilder builder;
    builder.begin(ARRAY_VALUE);
    char* const room = builder.textRoom(100);
    room[0] = 'x';
    room[1] = '\0';
    builder.trimText(room + 2);
    builder.addLastingText(room, 1);
    QCOMPARE(builder.textRoom(4), room + 2);
    builder.end(1);
    QCOMPARE(std::string(finished(builder)->root()[1].view()), std::string("x"));
}

void tst_packed::copiesAPartWithItsTexts()
{
    PackedBuilder builder;
    builder.begin(ARRAY_VALUE);
    {
        const Block source = sample();
        builder.addCopy(*source, source->root()[2]);
        builder.addCopy(*source, source->root()[7]);
    }
    builder.end(2);
    const Block copy = finished(builder);
    QCOMPARE(copy->root()->size, 6u);
    QCOMPARE(copy->root()[1].count, 3u);
    QCOMPARE(std::string(copy->root()[4].view()), std::string("text"));
    QCOMPARE(copy->root()[5].real, 2.5);
    QCOMPARE(copy->textBytes(), std::size_t(4));
}

void tst_packed::copiesTheCommentsBelowAPart()
{
    PackedBuilder builder;
    builder.begin(ARRAY_VALUE);
    builder.addNull();
    builder.addComment(CommentPlace::Before, "// of the part");
    builder.begin(ARRAY_VALUE);
    builder.addComment(CommentPlace::Before, "/* 1 */");
    builder.addComment(CommentPlace::SameLine, "/* 2 */");
    builder.addComment(CommentPlace::After, "");
    builder.addInt(5);
    builder.end(1);
    builder.addComment(CommentPlace::After, "// behind the part");
    builder.addNull();
    builder.end(3);
    const Block source = finished(builder);
    PackedBuilder part;
    part.addCopy(*source, source->root()[2]);
    const Block copy = finished(part);
    std::string comments;
    for (const PackedComment& comment : copy->comments(copy->root(), copy->root()->behind()))
        comments += std::to_string(comment.node) + std::string(comment.text.view());
    QCOMPARE(comments, std::string("1/* 1 */1/* 2 */"));
}

void tst_packed::takesTextsFromAnotherBuilder()
{
    PackedBuilder builder;
    {
        PackedBuilder other;
        other.addText("kept");
        builder.addLastingText(other.root().text, other.root().size);
        builder.takeTexts(other);
    }
    QCOMPARE(std::string(finished(builder)->root()->view()), std::string("kept"));
}

void tst_packed::findsMembers_data()
{
    QTest::addColumn<int>("members");
    QTest::addColumn<bool>("withArray");
    for (const int members : {0, 1, 16, 17, 300}) {
        QTest::addRow("%d of one size", members) << members << false;
        QTest::addRow("%d of two sizes", members) << members << true;
    }
}

void tst_packed::findsMembers()
{
    QFETCH(int, members);
    QFETCH(bool, withArray);
    const Block block = wideMap(members, withArray);
    for (int i = 0; i < members; ++i) {
        const QByteArray key = "k" + QByteArray::number(i).rightJustified(3, '0');
        const PackedNode* const found = findMember(*block->root(), key.constData());
        QVERIFY2(found, key.constData());
        const bool isArray = withArray && i + 1 == members;
        QCOMPARE((isArray ? found + 1 : found)->signedNumber, i);
        QVERIFY(!findMember(*block->root(), (key + "x").constData()));
    }
    QVERIFY(!findMember(*block->root(), ""));
    QVERIFY(!findMember(*block->root(), "z"));
}

void tst_packed::growsBeyondTheFirstRoom()
{
    PackedBuilder builder;
    builder.begin(ARRAY_VALUE);
    for (int i = 0; i < 5000; ++i)
        builder.addText(std::string(static_cast<std::size_t>(i % 50), 'x'));
    builder.end(5000);
    const Block block = finished(builder);
    QCOMPARE(block->root()->count, 5000u);
    for (int i = 0; i < 5000; ++i)
        QCOMPARE(block->root()[i + 1].size, static_cast<std::uint32_t>(i % 50));
}

void tst_packed::anUnfinishedBuilderFreesWhatItHas()
{
    // The address sanitizer judges.
    PackedBuilder builder;
    builder.begin(MAP_VALUE);
    builder.addText("half");
    builder.addComment(CommentPlace::Before, "// a comment that lies on the heap");
    builder.addNull();
}

QTEST_APPLESS_MAIN(tst_packed)
#include "tst_packed.moc"
