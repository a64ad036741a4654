#include <QVKit/Platform/QVCharacterSet.h>

#include <gtest/gtest.h>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

struct Membership
{
    const char *name;
    QVCharacterSet set;
    std::initializer_list<char32_t> members;
    std::initializer_list<char32_t> others;
};

void expectMembership(const Membership &row)
{
    SCOPED_TRACE(row.name);
    for (char32_t c : row.members)
        EXPECT_TRUE(row.set.characterIsMember(c)) << std::hex << "U+" << quint32(c);
    for (char32_t c : row.others)
        EXPECT_FALSE(row.set.characterIsMember(c)) << std::hex << "U+" << quint32(c);
    // The inverse holds exactly the others.
    const QVCharacterSet inverted = row.set.invertedSet();
    for (char32_t c : row.members)
        EXPECT_FALSE(inverted.characterIsMember(c)) << std::hex << "inverted U+" << quint32(c);
    for (char32_t c : row.others)
        EXPECT_TRUE(inverted.characterIsMember(c)) << std::hex << "inverted U+" << quint32(c);
}

} // namespace

TEST(QVCharacterSetTest, ReadyMadeSets)
{
    const Membership rows[] = {
        {"whitespace", QVCharacterSet::whitespaceCharacterSet(), {U' ', U'\t', 0xA0, 0x2003, 0x3000},
         {U'\n', U'\r', 0x85, 0x2028, 0x200B, U'a', 0x110000}},
        {"newline", QVCharacterSet::newlineCharacterSet(), {U'\n', 0x0B, 0x0C, U'\r', 0x85, 0x2028, 0x2029},
         {U' ', U'\t', 0x09, 0x0E, 0x2027}},
        {"whitespace and newline", QVCharacterSet::whitespaceAndNewlineCharacterSet(),
         {U' ', U'\t', U'\n', U'\r', 0x85, 0x2029, 0x3000}, {U'a', U'_', 0x200B, 0xFEFF}},
        {"letters and marks", QVCharacterSet::letterCharacterSet(),
         {U'a', U'Z', 0xE9, 0xDF, 0x65E5, 0x0301, 0x0903, 0x1D400, 0x02B0},
         {U'1', U' ', U'_', 0x1F600, 0xD800, 0x110000, 0xFFFFFFFF}},
        {"decimal digits", QVCharacterSet::decimalDigitCharacterSet(), {U'0', U'9', 0x0663, 0xFF10, 0x1D7CE},
         {U'a', 0xBD, 0x2460, 0x216B}},
        {"punctuation", QVCharacterSet::punctuationCharacterSet(), {U'.', U'!', U'-', U'_', 0xBF, 0x300C, 0x2019},
         {U'+', U'$', U'a', U' ', 0x1F600}},
    };
    for (const Membership &row : rows)
        expectMembership(row);
}

TEST(QVCharacterSetTest, SetsOfCharactersAndRanges)
{
    const Membership rows[] = {
        {"characters with a surrogate pair and a lone surrogate",
         QVCharacterSet::characterSetWithCharactersInString(u"ba\U0001F600"_s + QChar(0xDC00) + u"a"_s),
         {U'a', U'b', 0x1F600, 0xDC00}, {U'c', 0xD83D, 0xDE00, 0}},
        {"no characters", QVCharacterSet::characterSetWithCharactersInString(QString()), {}, {0, U'a', 0x10FFFF}},
        {"empty set", QVCharacterSet(), {}, {0, U' ', 0x1F600}},
        {"range A-Z", QVCharacterSet::characterSetWithRange(U'A', 26), {U'A', U'M', U'Z'}, {U'@', U'[', U'a'}},
        {"empty range", QVCharacterSet::characterSetWithRange(U'A', 0), {}, {U'@', U'A', U'B'}},
        {"range at the top of char32_t", QVCharacterSet::characterSetWithRange(0xFFFFFFF0, 0x20),
         {0xFFFFFFF0, 0xFFFFFFFF}, {0, 0x0F, 0xFFFFFFEF}},
    };
    for (const Membership &row : rows)
        expectMembership(row);
}

TEST(QVCharacterSetTest, EqualityFollowsHowSetsWereMade)
{
    const QVCharacterSet whitespace = QVCharacterSet::whitespaceCharacterSet();
    const QVCharacterSet ab = QVCharacterSet::characterSetWithCharactersInString(u"ab"_s);

    EXPECT_EQ(whitespace, QVCharacterSet::whitespaceCharacterSet());
    EXPECT_NE(whitespace, QVCharacterSet::whitespaceAndNewlineCharacterSet());
    EXPECT_NE(whitespace, whitespace.invertedSet());
    EXPECT_EQ(whitespace.invertedSet(), QVCharacterSet::whitespaceCharacterSet().invertedSet());
    EXPECT_EQ(whitespace.invertedSet().invertedSet(), whitespace);

    EXPECT_EQ(ab, QVCharacterSet::characterSetWithCharactersInString(u"baab"_s));
    EXPECT_NE(ab, QVCharacterSet::characterSetWithCharactersInString(u"abc"_s));
    EXPECT_EQ(QVCharacterSet(), QVCharacterSet::characterSetWithCharactersInString(u""_s));
    EXPECT_EQ(QVCharacterSet::characterSetWithRange(U'a', 2), QVCharacterSet::characterSetWithRange(U'a', 2));
    EXPECT_NE(QVCharacterSet::characterSetWithRange(U'a', 2), QVCharacterSet::characterSetWithRange(U'a', 3));
    // Sets made differently are not compared member by member.
    EXPECT_NE(ab, QVCharacterSet::characterSetWithRange(U'a', 2));

    // Copies are values: inverting a copy leaves the original alone.
    QVCharacterSet copy = ab;
    copy = copy.invertedSet();
    EXPECT_TRUE(ab.characterIsMember(U'a'));
    EXPECT_FALSE(copy.characterIsMember(U'a'));
}
