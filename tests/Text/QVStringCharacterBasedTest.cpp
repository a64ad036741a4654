#include <QVKit/Platform/QVLog.h>
#include <QVKit/Text/QVStringCharacterBased.h>

#include <QtCore/QString>

#include <gtest/gtest.h>

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;
using namespace QVString;

namespace {

// a, thumbs up (a surrogate pair), b, the French flag (two regional
// indicators, four code units), c: code units 0, 1-2, 3, 4-7, 8.
const QString mixed = u"a\U0001F44Db\U0001F1EB\U0001F1F7c"_s;
const QString thumbs = u"\U0001F44D"_s;
const QString flag = u"\U0001F1EB\U0001F1F7"_s;
// e with a combining acute accent: one character of two code units.
const QString eAcute = u"e\u0301"_s;

constexpr QVRange notFound = QVNotFoundRange();

} // namespace

TEST(QVStringCharacterBasedTest, ExtendRangeCountsWholeCharacters)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        quint64 count;
        QVCharacterDirection direction;
        QVRange expected;
    };
    const Row rows[] = {
        {"plain left", u"abcdef"_s, {3, 1}, 2, QVCharacterDirectionLeft, {1, 3}},
        {"plain right", u"abcdef"_s, {3, 1}, 2, QVCharacterDirectionRight, {3, 3}},
        {"count 0 left", u"abcdef"_s, {3, 1}, 0, QVCharacterDirectionLeft, {3, 1}},
        {"count 0 right", u"abcdef"_s, {3, 1}, 0, QVCharacterDirectionRight, {3, 1}},
        {"left stops at the start", u"abcdef"_s, {1, 1}, 3, QVCharacterDirectionLeft, {0, 2}},
        {"right stops at the end", u"abcdef"_s, {4, 1}, 3, QVCharacterDirectionRight, {4, 2}},
        {"count of the length left", u"abcdef"_s, {2, 1}, 6, QVCharacterDirectionLeft, {0, 3}},
        {"count of the length right", u"abcdef"_s, {2, 1}, 6, QVCharacterDirectionRight, {2, 4}},
        {"huge count", u"abcdef"_s, {2, 1}, ~quint64(0), QVCharacterDirectionRight, {2, 4}},
        {"empty range at the end left", u"abcdef"_s, {6, 0}, 1, QVCharacterDirectionLeft, {5, 1}},
        {"empty range at the end right", u"abcdef"_s, {6, 0}, 1, QVCharacterDirectionRight, {6, 0}},
        {"past the end", u"abcdef"_s, {5, 2}, 1, QVCharacterDirectionLeft, notFound},
        {"location past the end", u"abcdef"_s, {7, 0}, 1, QVCharacterDirectionRight, notFound},
        {"wrapping range", u"abcdef"_s, {2, ~quint64(0)}, 1, QVCharacterDirectionRight, notFound},
        {"not found", u"abcdef"_s, notFound, 1, QVCharacterDirectionRight, notFound},
        {"empty text", u""_s, {0, 0}, 0, QVCharacterDirectionLeft, {0, 0}},
        {"null text", QString(), {0, 0}, 2, QVCharacterDirectionRight, {0, 0}},
        {"null text, range beyond", QString(), {0, 1}, 2, QVCharacterDirectionRight, notFound},
        {"onto a surrogate pair", mixed, {0, 1}, 1, QVCharacterDirectionRight, {0, 3}},
        {"past a surrogate pair", mixed, {0, 1}, 2, QVCharacterDirectionRight, {0, 4}},
        {"onto a flag", mixed, {3, 1}, 1, QVCharacterDirectionRight, {3, 5}},
        {"flag then c", mixed, {3, 1}, 2, QVCharacterDirectionRight, {3, 6}},
        {"left onto a flag", mixed, {8, 1}, 1, QVCharacterDirectionLeft, {4, 5}},
        {"left over a surrogate pair", mixed, {3, 1}, 2, QVCharacterDirectionLeft, {0, 4}},
        {"left onto a combining mark", u"ae\u0301b"_s, {3, 1}, 1, QVCharacterDirectionLeft, {1, 3}},
        {"right onto a combining mark", u"ae\u0301b"_s, {0, 1}, 1, QVCharacterDirectionRight, {0, 3}},
        {"flags only", flag + flag + flag, {4, 4}, 1, QVCharacterDirectionLeft, {0, 8}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(extendRangeInDirection(row.text, row.range, row.count, row.direction), row.expected);
        if (row.direction == QVCharacterDirectionLeft)
            EXPECT_EQ(extendRangeLeft(row.text, row.range, row.count), row.expected);
        else
            EXPECT_EQ(extendRangeRight(row.text, row.range, row.count), row.expected);
    }
}

TEST(QVStringCharacterBasedTest, ExtendRangeOnBothSidesAndSubstrings)
{
    EXPECT_EQ(extendRange(mixed, {3, 1}, 1), QVMakeRange(1, 7));
    EXPECT_EQ(extendRange(u"abcdef"_s, {2, 2}, 1), QVMakeRange(1, 4));
    EXPECT_EQ(extendRange(u"abcdef"_s, {0, 1}, 2), QVMakeRange(0, 3));
    EXPECT_EQ(extendRange(u"abc"_s, {1, 5}, 1), notFound);
    EXPECT_EQ(extendRange(u"abc"_s, notFound, 1), notFound);

    EXPECT_EQ(extendSubstringAtRangeLeft(mixed, {3, 1}, 1), thumbs + u"b"_s);
    EXPECT_EQ(extendSubstringAtRangeRight(mixed, {3, 1}, 1), u"b"_s + flag);
    EXPECT_EQ(extendSubstringAtRangeLeft(u"e\u0301x"_s, {2, 1}, 5), u"e\u0301x"_s);
    EXPECT_EQ(extendSubstringAtRangeRight(u"abc"_s, {3, 0}, 1), u""_s);
    EXPECT_FALSE(extendSubstringAtRangeRight(u"abc"_s, {3, 0}, 1).isNull()) << "an empty range is a range";
    EXPECT_TRUE(extendSubstringAtRangeLeft(u"abc"_s, {2, 2}, 1).isNull());
    EXPECT_TRUE(extendSubstringAtRangeRight(u"abc"_s, notFound, 1).isNull());
}

TEST(QVStringCharacterBasedTest, CharacterBeforeAndAfterRange)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        QVRange before;
        QString beforeText;
        QVRange after;
        QString afterText;
    };
    const Row rows[] = {
        {"between wide characters", mixed, {3, 1}, {1, 2}, thumbs, {4, 4}, flag},
        {"at the start", mixed, {0, 1}, notFound, QString(), {1, 2}, thumbs},
        {"empty at the start", mixed, {0, 0}, notFound, QString(), {0, 1}, u"a"_s},
        {"up to the end", mixed, {8, 1}, {4, 4}, flag, notFound, QString()},
        {"empty at the end", mixed, {9, 0}, {8, 1}, u"c"_s, notFound, QString()},
        {"past the end", mixed, {8, 5}, notFound, QString(), notFound, QString()},
        {"not found", mixed, notFound, notFound, QString(), notFound, QString()},
        {"combining marks", u"e\u0301xe\u0301"_s, {2, 1}, {0, 2}, eAcute, {3, 2}, eAcute},
        {"empty text", u""_s, {0, 0}, notFound, QString(), notFound, QString()},
        {"null text", QString(), {0, 0}, notFound, QString(), notFound, QString()},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(characterRangeBeforeRange(row.text, row.range), row.before);
        EXPECT_EQ(characterRangeAfterRange(row.text, row.range), row.after);
        const QString before = characterSubstringBeforeRange(row.text, row.range);
        const QString after = characterSubstringAfterRange(row.text, row.range);
        EXPECT_EQ(before, row.beforeText);
        EXPECT_EQ(before.isNull(), row.beforeText.isNull());
        EXPECT_EQ(after, row.afterText);
        EXPECT_EQ(after.isNull(), row.afterText.isNull());
    }
}

TEST(QVStringCharacterBasedTest, FirstAndLastCharacter)
{
    struct Row
    {
        const char *name;
        QString text;
        QString first;
        QVRange firstRange;
        QString last;
        QVRange lastRange;
    };
    const Row rows[] = {
        {"plain", u"abc"_s, u"a"_s, {0, 1}, u"c"_s, {2, 1}},
        {"one character", u"x"_s, u"x"_s, {0, 1}, u"x"_s, {0, 1}},
        {"wide ends", flag + u"x"_s + thumbs, flag, {0, 4}, thumbs, {5, 2}},
        {"one combined character", eAcute, eAcute, {0, 2}, eAcute, {0, 2}},
        {"CR LF is one character", u"a\r\n"_s, u"a"_s, {0, 1}, u"\r\n"_s, {1, 2}},
        {"empty", u""_s, QString(), notFound, QString(), notFound},
        {"null", QString(), QString(), notFound, QString(), notFound},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(firstCharacter(row.text), row.first);
        EXPECT_EQ(firstCharacter(row.text).isNull(), row.first.isNull());
        EXPECT_EQ(firstCharacterRange(row.text), row.firstRange);
        EXPECT_EQ(lastCharacter(row.text), row.last);
        EXPECT_EQ(lastCharacter(row.text).isNull(), row.last.isNull());
        EXPECT_EQ(lastCharacterRange(row.text), row.lastRange);
    }
}

TEST(QVStringCharacterBasedTest, RangeWithCharacterCount)
{
    struct Row
    {
        const char *name;
        quint64 count;
        QVRange range;
        QVRange expected;
    };
    // mixed: a 👍 b 🇫🇷 c at 0, 1, 3, 4, 8.
    const Row rows[] = {
        {"none", 0, {3, 2}, {3, 0}},
        {"none at the end", 0, {9, 0}, {9, 0}},
        {"none past the end", 0, {10, 0}, notFound},
        {"none of not found", 0, notFound, notFound},
        {"two from the start", 2, {0, 9}, {0, 3}},
        {"three from the pair", 3, {1, 8}, {1, 7}},
        {"more than there are", 10, {0, 9}, {0, 9}},
        {"range past the end is clipped", 2, {3, 100}, {3, 5}},
        {"empty range", 1, {4, 0}, {4, 0}},
        {"empty range at the end", 1, {9, 0}, {9, 0}},
        {"not found", 1, notFound, notFound},
        {"past the end", 1, {12, 1}, notFound},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(rangeWithCharacterCount(mixed, row.count, row.range), row.expected);
    }
    EXPECT_EQ(rangeWithCharacterCount(QString(), 3, {0, 0}), QVMakeRange(0, 0));
    EXPECT_EQ(rangeWithCharacterCount(eAcute + eAcute, 1, {0, 4}), QVMakeRange(0, 2));
}

TEST(QVStringCharacterBasedTest, Padding)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 count;
        QString pad;
        QVStringDirection direction;
        QString expected;
    };
    const Row rows[] = {
        // 5 missing, (5 mod 2) + 5 / 2 = 3 repeats of xy, cut to their last 5.
        {"repeats cut from the start", u"ab"_s, 7, u"xy"_s, QVStringDirectionEnd, u"abyxyxy"_s},
        {"padding at the start", u"ab"_s, 7, u"xy"_s, QVStringDirectionStart, u"yxyxyab"_s},
        // 8 missing, (8 mod 2) + 8 / 3 = 2 repeats: 7 characters, short of 9.
        {"deliberately short", u"a"_s, 9, u"xyz"_s, QVStringDirectionEnd, u"axyzxyz"_s},
        // 2 missing, (2 mod 2) + 2 / 3 = 0, so one repeat, cut to 2.
        {"at least one repeat", u"a"_s, 3, u"xyz"_s, QVStringDirectionEnd, u"ayz"_s},
        {"one-character pad, odd", u"ab"_s, 5, u"-"_s, QVStringDirectionEnd, u"ab---"_s},
        {"one-character pad, even", u"ab"_s, 6, u"-"_s, QVStringDirectionStart, u"----ab"_s},
        {"already long enough", u"abc"_s, 3, u"x"_s, QVStringDirectionEnd, u"abc"_s},
        {"longer than wanted", u"abcd"_s, 2, u"x"_s, QVStringDirectionEnd, u"abcd"_s},
        {"empty pad", u"ab"_s, 5, u""_s, QVStringDirectionEnd, u"ab"_s},
        {"null pad", u"ab"_s, 5, QString(), QVStringDirectionStart, u"ab"_s},
        {"empty text", u""_s, 3, u"ab"_s, QVStringDirectionEnd, u"bab"_s},
        {"null text", QString(), 3, u"ab"_s, QVStringDirectionEnd, u"bab"_s},
        {"emoji count once", thumbs, 3, flag, QVStringDirectionEnd, thumbs + flag + flag},
        {"surplus of a wide pad", u"x"_s, 4, thumbs + u"a"_s, QVStringDirectionEnd, u"xa"_s + thumbs + u"a"_s},
        {"combining marks", eAcute, 3, u"a\u0301"_s, QVStringDirectionStart, u"a\u0301a\u0301e\u0301"_s},
        {"wide text counts once", flag + flag, 3, u"."_s, QVStringDirectionEnd, flag + flag + u"."_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        padToCharacterCount(text, row.count, row.pad, row.direction);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(stringByPaddingToCharacterCount(row.text, row.count, row.pad, row.direction), row.expected);
    }
}

TEST(QVStringCharacterBasedTest, PaddingToAnAbsurdCountLeavesTheTextAndLogs)
{
    QVLogCapture capture;
    QString text = u"ab"_s;
    padToCharacterCount(text, std::numeric_limits<quint64>::max(), u"xy"_s, QVStringDirectionEnd);
    EXPECT_EQ(text, u"ab"_s);
    ASSERT_EQ(capture.lines().size(), 1);
    EXPECT_TRUE(capture.lines().constFirst().startsWith(u"QVString::padToCharacterCount: "_s));
    EXPECT_TRUE(capture.lines().constFirst().endsWith(u"Fix this."_s));
}

TEST(QVStringCharacterBasedTest, Truncating)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 count;
        QString truncation;
        QVStringDirection direction;
        QString expected;
    };
    const Row rows[] = {
        // Start and End name the side that is kept.
        {"keep the start", u"abcdefgh"_s, 5, u"..."_s, QVStringDirectionStart, u"ab..."_s},
        {"keep the end", u"abcdefgh"_s, 5, u"..."_s, QVStringDirectionEnd, u"...gh"_s},
        {"null truncation string, start", u"abcdefgh"_s, 3, QString(), QVStringDirectionStart, u"abc"_s},
        {"null truncation string, end", u"abcdefgh"_s, 3, QString(), QVStringDirectionEnd, u"fgh"_s},
        {"to nothing", u"abc"_s, 0, QString(), QVStringDirectionStart, u""_s},
        {"exactly as long", u"abc"_s, 3, u"..."_s, QVStringDirectionStart, u"abc"_s},
        {"shorter", u"abc"_s, 5, u"..."_s, QVStringDirectionEnd, u"abc"_s},
        {"truncation string as long as the text", u"abcd"_s, 2, u"wxyz"_s, QVStringDirectionStart, u"abcd"_s},
        {"truncation string longer than wanted, start", u"abcdefgh"_s, 2, u"..."_s, QVStringDirectionStart,
         u"..."_s},
        {"truncation string longer than wanted, end", u"abcdefgh"_s, 2, u"..."_s, QVStringDirectionEnd, u"..."_s},
        {"wide characters, start", mixed, 3, u"\u2026"_s, QVStringDirectionStart, u"a"_s + thumbs + u"\u2026"_s},
        {"wide characters, end", mixed, 3, u"\u2026"_s, QVStringDirectionEnd, u"\u2026"_s + flag + u"c"_s},
        {"combining marks", eAcute + eAcute + eAcute, 2, u""_s, QVStringDirectionEnd, eAcute + eAcute},
        {"emoji truncation string", u"abcdef"_s, 3, thumbs, QVStringDirectionStart, u"ab"_s + thumbs},
        {"empty text", u""_s, 0, u"."_s, QVStringDirectionStart, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        truncateToCharacterCount(text, row.count, row.truncation, row.direction);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(stringByTruncatingToCharacterCount(row.text, row.count, row.truncation, row.direction),
                  row.expected);
    }
}

TEST(QVStringCharacterBasedTest, PadOrTruncate)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 count;
        QString expected;
    };
    const Row rows[] = {
        {"shorter is padded", u"ab"_s, 4, u"--ab"_s},
        {"longer is truncated", u"abcdef"_s, 4, u"\u2026def"_s},
        {"equal is left alone", u"abcd"_s, 4, u"abcd"_s},
        {"equal in characters", flag + thumbs + eAcute + u"x"_s, 4, flag + thumbs + eAcute + u"x"_s},
        {"wide characters truncated", mixed, 2, u"\u2026c"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        padOrTruncateToCharacterCount(text, row.count, u"-"_s, QVStringDirectionStart, u"\u2026"_s,
                                      QVStringDirectionEnd);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(stringByPaddingOrTruncatingToCharacterCount(row.text, row.count, u"-"_s, QVStringDirectionStart,
                                                              u"\u2026"_s, QVStringDirectionEnd),
                  row.expected);
    }
}

TEST(QVStringCharacterBasedTest, ImmutableFormsLeaveTheirInputAlone)
{
    const QString original = u"abcdefgh"_s;
    const QString copy = original;
    EXPECT_EQ(stringByTruncatingToCharacterCount(copy, 2, QString(), QVStringDirectionStart), u"ab"_s);
    EXPECT_EQ(stringByPaddingToCharacterCount(copy, 10, u"."_s, QVStringDirectionEnd), u"abcdefgh.."_s);
    EXPECT_EQ(stringByPaddingOrTruncatingToCharacterCount(copy, 1, QString(), QVStringDirectionEnd, QString(),
                                                          QVStringDirectionEnd),
              u"h"_s);
    EXPECT_EQ(copy, original);
}

TEST(QVStringCharacterBasedTest, InsertStringEveryNthCharacter)
{
    struct Row
    {
        const char *name;
        QString text;
        QString separator;
        qint64 every;
        std::optional<QVRange> range; // the full range when absent
        QString expected;
    };
    const Row rows[] = {
        {"forwards", u"1234567"_s, u","_s, 3, std::nullopt, u"123,456,7"_s},
        {"thousands", u"1234567"_s, u","_s, -3, std::nullopt, u"1,234,567"_s},
        {"no separator at the end", u"123456"_s, u","_s, 3, std::nullopt, u"123,456"_s},
        {"no separator at the start", u"123456"_s, u","_s, -3, std::nullopt, u"123,456"_s},
        {"every character", u"1234"_s, u","_s, 1, std::nullopt, u"1,2,3,4"_s},
        {"every character in reverse", u"1234"_s, u","_s, -1, std::nullopt, u"1,2,3,4"_s},
        {"long separator", u"1234567"_s, u", "_s, 2, std::nullopt, u"12, 34, 56, 7"_s},
        {"emoji", thumbs + thumbs + thumbs + thumbs, u","_s, 2, std::nullopt, thumbs + thumbs + u","_s + thumbs + thumbs},
        {"emoji in reverse", thumbs + thumbs + thumbs + thumbs, u","_s, -3, std::nullopt,
         thumbs + u","_s + thumbs + thumbs + thumbs},
        {"flags", flag + flag + flag, u"|"_s, 1, std::nullopt, flag + u"|"_s + flag + u"|"_s + flag},
        {"combining marks", eAcute + eAcute + eAcute + eAcute, u","_s, 2, std::nullopt,
         eAcute + eAcute + u","_s + eAcute + eAcute},
        {"emoji separator", u"abcd"_s, thumbs, 2, std::nullopt, u"ab"_s + thumbs + u"cd"_s},
        {"part of the text", u"abcdefgh"_s, u"-"_s, 2, QVRange{2, 5}, u"abcd-ef-gh"_s},
        {"part of the text in reverse", u"abcdefgh"_s, u"-"_s, -2, QVRange{2, 5}, u"abc-de-fgh"_s},
        {"group ending at the range's end", u"abcdefgh"_s, u"-"_s, 2, QVRange{2, 4}, u"abcd-efgh"_s},
        {"range past the end is clipped", u"1234567"_s, u","_s, 3, QVRange{0, 100}, u"123,456,7"_s},
        {"empty separator", u"1234567"_s, u""_s, 3, std::nullopt, u"1234567"_s},
        {"null separator", u"1234567"_s, QString(), 3, std::nullopt, u"1234567"_s},
        {"every 0", u"1234567"_s, u","_s, 0, std::nullopt, u"1234567"_s},
        {"every as long as the text", u"123"_s, u","_s, 3, std::nullopt, u"123"_s},
        {"every as long as the text in reverse", u"123"_s, u","_s, -3, std::nullopt, u"123"_s},
        {"most negative", u"1234567"_s, u","_s, std::numeric_limits<qint64>::min(), std::nullopt, u"1234567"_s},
        {"range of one code unit", u"1234567"_s, u","_s, 1, QVRange{2, 1}, u"1234567"_s},
        {"range not found", u"1234567"_s, u","_s, 1, notFound, u"1234567"_s},
        {"range past the end", u"1234567"_s, u","_s, 1, QVRange{10, 2}, u"1234567"_s},
        {"empty text", u""_s, u","_s, 1, std::nullopt, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        if (row.range)
            insertString(text, row.separator, row.every, *row.range);
        else
            insertString(text, row.separator, row.every);
        EXPECT_EQ(text, row.expected);
    }
}

TEST(QVStringCharacterBasedTest, DirectionsOutsideTheEnumerationStopTheProgram)
{
    const auto wrongCharacterDirection = static_cast<QVCharacterDirection>(2);
    const auto wrongStringDirection = static_cast<QVStringDirection>(2);
    EXPECT_DEATH(extendRangeInDirection(u"abc"_s, {0, 1}, 1, wrongCharacterDirection),
                 "Condition not satisfied: isDirectionLeft \\|\\| isDirectionRight");
    // Checked before anything else, so even a range that could not be used fails.
    EXPECT_DEATH(extendRangeInDirection(u"abc"_s, notFound, 1, wrongCharacterDirection),
                 "Condition not satisfied: isDirectionLeft \\|\\| isDirectionRight");

    EXPECT_DEATH(
        {
            QString text = u"ab"_s;
            padToCharacterCount(text, 5, u"x"_s, wrongStringDirection);
        },
        "Condition not satisfied: isDirectionStart \\|\\| isDirectionEnd");
    EXPECT_DEATH(
        {
            QString text = u"abcdef"_s;
            truncateToCharacterCount(text, 2, QString(), wrongStringDirection);
        },
        "Condition not satisfied: isDirectionStart \\|\\| isDirectionEnd");
    // Both directions are checked even when the text needs neither.
    EXPECT_DEATH(
        {
            QString text = u"abc"_s;
            padOrTruncateToCharacterCount(text, 3, u"x"_s, QVStringDirectionEnd, QString(), wrongStringDirection);
        },
        "Condition not satisfied: isDirectionStart \\|\\| isDirectionEnd");
}
