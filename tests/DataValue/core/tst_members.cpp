#include "DataValue/core/members_p.h"

#include <QtTest>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

/// Enough for several pages of the index.
constexpr int kMany = 1000;

std::string keyOf(int number)
{
    return "k" + std::to_string(1000000 + number);
}

/// Numbers from 0 on, shuffled by a fixed seed.
std::vector<int> shuffled(int count)
{
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(7));
    return numbers;
}

void fill(DataValueMembers& members, int count)
{
    for (const int number : shuffled(count))
        members.findOrAdd(std::string_view(keyOf(number))).value = CDataValue(number);
}

/// The keys in the order of the walk, each with its number.
std::vector<std::pair<std::string, int>> contents(const DataValueMembers& members)
{
    std::vector<std::pair<std::string, int>> all;
    for (const auto& member : members)
        all.emplace_back(member.key.view(), member.value.asInt());
    return all;
}

} // namespace

/// The members of a map, in pages.
class tst_members : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isEmptyAtFirst();
    void keepsTheOrderOfTheKeysBytes();
    void findsEveryMemberOfSeveralPages();
    void appendsInOrder();
    void membersStayWhereTheyAre();
    void dropsAPageWhoseMembersAllGo_data();
    void dropsAPageWhoseMembersAllGo();
    void agreesWithAPlainMap();
    void usesTheRoomOfRemovedMembersAgain();
    void beginsInTheRoomThatItIsGiven();
};

void tst_members::isEmptyAtFirst()
{
    DataValueMembers members;
    QVERIFY(members.empty());
    QVERIFY(members.begin() == members.end());
    QVERIFY(!members.find(""));
    QVERIFY(!members.remove("a"));
}

void tst_members::keepsTheOrderOfTheKeysBytes()
{
    using namespace std::literals;
    // In order: bytes count, shorter before longer, and a zero byte is a byte.
    const std::string_view keys[] = {"",         "\0"sv,         "B",         "a",  "a\0"sv,
                                     "aaaaaaaa", "aaaaaaaa\0"sv, "aaaaaaaab", "ab", "b",
                                     "\x7f",     "\xc3\xa9"};
    DataValueMembers members;
    for (std::size_t i = std::size(keys); i > 0; --i)
        members.findOrAdd(keys[i - 1]);
    std::size_t at = 0;
    for (const auto& member : members)
        QCOMPARE(std::string(member.key.view()), std::string(keys[at++]));
    QCOMPARE(at, std::size(keys));
}

void tst_members::findsEveryMemberOfSeveralPages()
{
    DataValueMembers members;
    fill(members, kMany);
    QCOMPARE(members.size(), std::size_t(kMany));
    for (int i = 0; i < kMany; ++i) {
        DataValueMembers::Member* const member = members.find(keyOf(i));
        QVERIFY(member);
        QCOMPARE(member->value.asInt(), i);
        QCOMPARE(&members.findOrAdd(std::string_view(keyOf(i))), member);
        QVERIFY(!members.find(keyOf(i) + "x"));
    }
    QCOMPARE(members.size(), std::size_t(kMany));
}

void tst_members::appendsInOrder()
{
    DataValueMembers members;
    for (int i = 0; i < kMany; ++i)
        members.append(DataValueText(keyOf(i))).value = CDataValue(i);
    int expected = 0;
    for (const auto& content : contents(members)) {
        QCOMPARE(content.first, keyOf(expected));
        QCOMPARE(content.second, expected++);
    }
    QCOMPARE(expected, kMany);
}

void tst_members::membersStayWhereTheyAre()
{
    DataValueMembers members;
    std::map<int, DataValueMembers::Member*> places;
    for (const int number : shuffled(kMany))
        places[number] = &members.findOrAdd(std::string_view(keyOf(number)));
    for (int i = 0; i < kMany; i += 2)
        QVERIFY(members.remove(keyOf(i)));
    for (int i = 1; i < kMany; i += 2)
        QCOMPARE(members.find(keyOf(i)), places[i]);
}

void tst_members::dropsAPageWhoseMembersAllGo_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("end");
    QTest::newRow("first page") << 0 << 200;
    QTest::newRow("in between") << 300 << 700;
    QTest::newRow("last page") << 800 << kMany;
    QTest::newRow("all but one") << 0 << kMany - 1;
    QTest::newRow("all") << 0 << kMany;
}

void tst_members::dropsAPageWhoseMembersAllGo()
{
    QFETCH(int, first);
    QFETCH(int, end);
    DataValueMembers members;
    fill(members, kMany);
    for (int i = first; i < end; ++i)
        QVERIFY(members.remove(keyOf(i)));
    std::vector<std::pair<std::string, int>> expected;
    for (int i = 0; i < kMany; ++i) {
        if (i < first || i >= end)
            expected.emplace_back(keyOf(i), i);
    }
    QVERIFY(contents(members) == expected);
    // What went can come again, at its place.
    fill(members, kMany);
    QCOMPARE(contents(members).size(), std::size_t(kMany));
    QCOMPARE(contents(members).at(static_cast<std::size_t>(first)).second, first);
}

void tst_members::agreesWithAPlainMap()
{
    std::mt19937 random(3);
    DataValueMembers members;
    std::map<std::string, int> plain;
    for (int step = 0; step < 20000; ++step) {
        // Waves: mostly adding, then mostly removing.
        const bool adds = random() % 8 < (step / 2500 % 2 == 0 ? 6u : 2u);
        const std::string key = keyOf(static_cast<int>(random() % 1500));
        if (adds) {
            members.findOrAdd(std::string_view(key)).value = CDataValue(step);
            plain[key] = step;
        } else {
            QCOMPARE(members.remove(key), plain.erase(key) != 0);
        }
        QCOMPARE(members.size(), plain.size());
    }
    const std::vector<std::pair<std::string, int>> expected(plain.begin(), plain.end());
    QVERIFY(contents(members) == expected);
}

void tst_members::usesTheRoomOfRemovedMembersAgain()
{
    DataValueMembers members;
    fill(members, kMany);
    DataValueMembers::Member* const place = members.find(keyOf(5));
    QVERIFY(members.remove(keyOf(5)));
    QCOMPARE(&members.findOrAdd(std::string_view("new")), place);
}

void tst_members::beginsInTheRoomThatItIsGiven()
{
    constexpr std::size_t kCount = 4;
    const std::size_t size = DataValueMembers::roomFor(kCount);
    std::vector<std::max_align_t> room(size / sizeof(std::max_align_t) + 1);
    const auto isInside = [&room](const void* place) {
        return place >= room.data() && place < room.data() + room.size();
    };
    DataValueMembers members(room.data(), kCount);
    for (int i = 0; i < 4; ++i)
        QVERIFY(isInside(&members.findOrAdd(std::string_view(keyOf(i)))));
    QVERIFY(!isInside(&members.findOrAdd(std::string_view(keyOf(4)))));
    QCOMPARE(contents(members).size(), std::size_t(5));
    members.clear();
    QVERIFY(isInside(&members.findOrAdd(std::string_view(keyOf(0)))));
}

QTEST_APPLESS_MAIN(tst_members)
#include "tst_members.moc"
