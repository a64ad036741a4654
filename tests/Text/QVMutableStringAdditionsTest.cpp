#include <QVKit/Text/QVMutableStringAdditions.h>

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;
using namespace QVString;

namespace {

const QString thumbs = u"\U0001F44D"_s;
const QString flag = u"\U0001F1EB\U0001F1F7"_s;

} // namespace

TEST(QVMutableStringAdditionsTest, TrimString)
{
    struct Row
    {
        const char *name;
        QString text;
        QString expected;
    };
    const Row rows[] = {
        {"both ends", u"  ab \n"_s, u"ab"_s},
        {"tabs and newlines", u"\t\nab\r\n"_s, u"ab"_s},
        {"inner spaces stay", u" a b "_s, u"a b"_s},
        {"nothing to trim", u"ab"_s, u"ab"_s},
        {"other spaces and separators", u"\u00A0ab\u2028"_s, u"ab"_s},
        {"emoji", u" "_s + thumbs + u" "_s, thumbs},
        // Only whitespace: the trimmed range is the whole text, so it stays.
        {"only whitespace", u"   "_s, u"   "_s},
        {"empty", u""_s, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        trimString(text);
        EXPECT_EQ(text, row.expected);
    }
    QString null;
    trimString(null);
    EXPECT_TRUE(null.isNull());
}

TEST(QVMutableStringAdditionsTest, StripPrefixAndSuffix)
{
    struct Row
    {
        const char *name;
        QString text;
        QString affix;
        QVStringEdgeOptions options;
        QString withoutPrefix;
        QString withoutSuffix;
    };
    const Row rows[] = {
        {"prefix", u"abcdef"_s, u"abc"_s, 0, u"def"_s, u"abcdef"_s},
        {"suffix", u"abcdef"_s, u"def"_s, 0, u"abcdef"_s, u"abc"_s},
        {"both", u"abab"_s, u"ab"_s, 0, u"ab"_s, u"ab"_s},
        {"case", u"ABcAB"_s, u"ab"_s, 0, u"ABcAB"_s, u"ABcAB"_s},
        {"case-insensitive", u"ABcAB"_s, u"ab"_s, QVStringEdgeOptionCaseInsensitive, u"cAB"_s, u"ABc"_s},
        {"greedy", u"ababXabab"_s, u"ab"_s, QVStringEdgeOptionGreedy, u"Xabab"_s, u"ababX"_s},
        // The length of the match is removed from the very edge: the skipped
        // whitespace goes, the match stays.
        {"ignoring whitespace", u"  abXab  "_s, u"ab"_s, QVStringEdgeOptionIgnoreWhitespace, u"abXab  "_s,
         u"  abXab"_s},
        {"empty affix", u"abc"_s, u""_s, 0, u"abc"_s, u"abc"_s},
        {"null affix", u"abc"_s, QString(), 0, u"abc"_s, u"abc"_s},
        {"whole text", u"abc"_s, u"abc"_s, 0, u""_s, u""_s},
        {"longer than the text", u"ab"_s, u"abc"_s, 0, u"ab"_s, u"ab"_s},
        {"emoji", thumbs + u"x"_s + flag, thumbs, 0, u"x"_s + flag, thumbs + u"x"_s + flag},
        {"flag suffix", thumbs + u"x"_s + flag, flag, 0, thumbs + u"x"_s + flag, thumbs + u"x"_s},
        {"empty text", u""_s, u"a"_s, 0, u""_s, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        stripPrefix(text, row.affix, row.options);
        EXPECT_EQ(text, row.withoutPrefix);
        text = row.text;
        stripSuffix(text, row.affix, row.options);
        EXPECT_EQ(text, row.withoutSuffix);
        if (row.options == 0) {
            text = row.text;
            stripPrefix(text, row.affix);
            EXPECT_EQ(text, row.withoutPrefix);
            text = row.text;
            stripSuffix(text, row.affix);
            EXPECT_EQ(text, row.withoutSuffix);
        }
    }
}

TEST(QVMutableStringAdditionsTest, NewLines)
{
    struct Row
    {
        const char *name;
        QString text;
        QString ifNecessary;
    };
    const Row rows[] = {
        {"empty", u""_s, u"\n"_s},
        {"null", QString(), u"\n"_s},
        {"text", u"a"_s, u"a\n"_s},
        {"line feed", u"a\n"_s, u"a\n"_s},
        {"CR LF", u"a\r\n"_s, u"a\r\n"_s},
        {"carriage return", u"a\r"_s, u"a\r"_s},
        {"line separator", u"a\u2028"_s, u"a\u2028"_s},
        {"paragraph separator", u"a\u2029"_s, u"a\u2029"_s},
        {"next line", u"a\u0085"_s, u"a\u0085"_s},
        {"space after the break", u"a\n "_s, u"a\n \n"_s},
        {"emoji", thumbs, thumbs + u"\n"_s},
        {"combining mark", u"e\u0301"_s, u"e\u0301\n"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        appendNewLineIfNecessary(text);
        EXPECT_EQ(text, row.ifNecessary);

        text = row.text;
        appendNewLine(text);
        EXPECT_EQ(text, row.text + u"\n"_s) << "always appends";
    }
}

TEST(QVMutableStringAdditionsTest, CondenseMultipleSpaces)
{
    struct Row
    {
        const char *name;
        QString text;
        QString expected;
    };
    const Row rows[] = {
        {"two", u"a  b"_s, u"a b"_s},
        {"several runs", u"a     b   c"_s, u"a b c"_s},
        {"at the edges", u"  a  "_s, u" a "_s},
        {"single spaces", u"a b c"_s, u"a b c"_s},
        {"tabs stay", u"a\t\tb"_s, u"a\t\tb"_s},
        {"spaces around a tab", u"a \t b"_s, u"a \t b"_s},
        {"no-break spaces stay", u"a\u00A0\u00A0b"_s, u"a\u00A0\u00A0b"_s},
        {"only spaces", u"    "_s, u" "_s},
        {"emoji", thumbs + u"   "_s + flag, thumbs + u" "_s + flag},
        {"empty", u""_s, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        condenseMultipleSpaces(text);
        EXPECT_EQ(text, row.expected);
    }
}

TEST(QVMutableStringAdditionsTest, ReplaceStringPairs)
{
    struct Row
    {
        const char *name;
        QString text;
        QStringList pairs;
        QVStringCompareOptions options;
        std::optional<QVRange> range; // the full range when absent
        QString expected;
        qint64 change;
    };
    const Row rows[] = {
        {"one pair", u"a-b-c"_s, {u"-"_s, u"+"_s}, 0, std::nullopt, u"a+b+c"_s, 0},
        {"two pairs", u"a-b"_s, {u"-"_s, u"--"_s, u"b"_s, u"bee"_s}, 0, std::nullopt, u"a--bee"_s, 3},
        {"pairs apply in order", u"ab"_s, {u"a"_s, u"b"_s, u"b"_s, u"c"_s}, 0, std::nullopt, u"cc"_s, 0},
        {"growing replacement is not replaced again", u"a"_s, {u"a"_s, u"aa"_s}, 0, std::nullopt, u"aa"_s, 1},
        {"shrinking", u"x..y..z"_s, {u".."_s, u"."_s}, 0, std::nullopt, u"x.y.z"_s, -2},
        {"case-insensitive", u"aAa"_s, {u"a"_s, u"x"_s}, QVCaseInsensitiveSearch, std::nullopt, u"xxx"_s, 0},
        {"case-sensitive", u"aAa"_s, {u"a"_s, u"x"_s}, 0, std::nullopt, u"xAx"_s, 0},
        {"forwards from the start", u"aaa"_s, {u"aa"_s, u"b"_s}, 0, std::nullopt, u"ba"_s, -1},
        {"backwards from the end", u"aaa"_s, {u"aa"_s, u"b"_s}, QVBackwardsSearch, std::nullopt, u"ab"_s, -1},
        {"within a range", u"a-b-c-d"_s, {u"-"_s, u""_s}, 0, QVRange{2, 3}, u"a-bc-d"_s, -1},
        {"range grows with the text", u"x.x.x"_s, {u"."_s, u"..."_s, u"x"_s, u"y"_s}, 0, QVRange{0, 5},
         u"y...y...y"_s, 4},
        {"range past the end is clipped", u"a-b"_s, {u"-"_s, u"+"_s}, 0, QVRange{1, 100}, u"a+b"_s, 0},
        {"range starting past the end", u"a-b"_s, {u"-"_s, u"+"_s}, 0, QVRange{10, 1}, u"a-b"_s, 0},
        {"range not found", u"a-b"_s, {u"-"_s, u"+"_s}, 0, QVNotFoundRange(), u"a-b"_s, 0},
        {"no pairs", u"a-b"_s, {}, 0, std::nullopt, u"a-b"_s, 0},
        {"empty search string", u"a-b"_s, {u""_s, u"x"_s}, 0, std::nullopt, u"a-b"_s, 0},
        {"null replacement deletes", u"a-b"_s, {u"-"_s, QString()}, 0, std::nullopt, u"ab"_s, -1},
        {"emoji", thumbs + u"-"_s + thumbs, {thumbs, u"x"_s}, 0, std::nullopt, u"x-x"_s, -2},
        {"flag to emoji", flag, {flag, thumbs}, 0, std::nullopt, thumbs, -2},
        {"empty text", u""_s, {u"a"_s, u"b"_s}, 0, std::nullopt, u""_s, 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        const qint64 change = row.range ? replaceStringPairs(text, row.pairs, row.options, *row.range)
                                        : replaceStringPairs(text, row.pairs, row.options);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(change, row.change);
        EXPECT_EQ(change, qint64(text.length()) - qint64(row.text.length()));
    }
}

TEST(QVMutableStringAdditionsTest, ReplaceStringPairsFollowsRanges)
{
    struct Row
    {
        const char *name;
        QString text;
        QStringList pairs;
        QVRange range;
        QVRangeList ranges;
        QString expected;
        QVRangeList expectedRanges;
        qint64 change;
    };
    const Row rows[] = {
        // The gap before the range is edited first and moves the range; the
        // text after the last range is left alone.
        {"gap before, tail after", u"aXbXcXd"_s, {u"X"_s, u"YY"_s}, {0, 7}, {{2, 3}}, u"aYYbYYcXd"_s, {{3, 4}}, 2},
        {"shrinking ranges move", u"a--b--c"_s, {u"--"_s, u"-"_s}, {0, 7}, {{1, 2}, {4, 2}}, u"a-b-c"_s,
         {{1, 1}, {3, 1}}, -2},
        // {0, 2} grows to {0, 3} and then overlaps {2, 2}: they merge.
        {"overlapping neighbours merge", u"abcd"_s, {u"b"_s, u"BB"_s}, {0, 4}, {{0, 2}, {1, 2}}, u"aBBcd"_s,
         {{0, 4}}, 1},
        {"touching neighbours stay apart", u"abcd"_s, {u"x"_s, u"y"_s}, {0, 4}, {{0, 2}, {2, 2}}, u"abcd"_s,
         {{0, 2}, {2, 2}}, 0},
        {"ranges outside the working range", u"a-b-c-d"_s, {u"-"_s, u"+"_s}, {2, 2}, {{0, 1}, {5, 1}}, u"a-b-c-d"_s,
         {{0, 1}, {5, 1}}, 0},
        {"range reaching out of the working range", u"a-b-c-d"_s, {u"-"_s, u"=="_s}, {0, 3}, {{1, 4}},
         u"a==b-c-d"_s, {{1, 5}}, 1},
        {"not-found ranges pass through", u"a-b"_s, {u"-"_s, u"+"_s}, {0, 3}, {QVNotFoundRange()}, u"a-b"_s,
         {QVNotFoundRange()}, 0},
        {"no ranges, no edits", u"a-b"_s, {u"-"_s, u"+"_s}, {0, 3}, {}, u"a-b"_s, {}, 0},
        {"wrapping range", u"a-b"_s, {u"-"_s, u"+"_s}, {0, 3}, {{1, ~quint64(0)}}, u"a+b"_s, {{1, ~quint64(0)}}, 0},
        {"working range past the end", u"a-b"_s, {u"-"_s, u"+"_s}, {5, 3}, {{0, 3}}, u"a-b"_s, {{0, 3}}, 0},
        {"emoji", thumbs + u"-"_s + thumbs, {thumbs, u"x"_s}, {0, 5}, {{0, 2}, {3, 2}}, u"x-x"_s, {{0, 1}, {2, 1}},
         -2},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        QVRangeList ranges = row.ranges;
        const qint64 change = replaceStringPairs(text, row.pairs, 0, row.range, ranges);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(QVRangeListToString(ranges), QVRangeListToString(row.expectedRanges));
        EXPECT_EQ(change, row.change);
    }
}

TEST(QVMutableStringAdditionsTest, ReplaceOccurrencesBetweenStrings)
{
    struct Row
    {
        const char *name;
        QString text;
        QString opening;
        QString closing;
        QString replacement;
        bool include;
        QVStringCompareOptions options;
        std::optional<QVRange> range; // the full range when absent
        QString expected;
        quint64 count;
    };
    const Row rows[] = {
        {"between", u"a[b]c[d]e"_s, u"["_s, u"]"_s, u"X"_s, false, 0, std::nullopt, u"a[X]c[X]e"_s, 2},
        {"including the strings", u"a[b]c"_s, u"["_s, u"]"_s, u"X"_s, true, 0, std::nullopt, u"aXc"_s, 1},
        // The second range is used as found, before the first replacement
        // shortened the text by two: it now covers "]..." rather than "[b]".
        {"later ranges are not shifted", u"[a]....[b]...."_s, u"["_s, u"]"_s, u"X"_s, true, 0, std::nullopt,
         u"X....[bX.."_s, 2},
        // A range past the shrunken end is clipped rather than trusted.
        {"clipped at the shrunken end", u"[ab]-[cd]-"_s, u"["_s, u"]"_s, u"X"_s, true, 0, std::nullopt,
         u"X-[cdX"_s, 2},
        {"empty replacement", u"a[b]c"_s, u"["_s, u"]"_s, u""_s, true, 0, std::nullopt, u"ac"_s, 1},
        {"empty between", u"a[]c"_s, u"["_s, u"]"_s, u"X"_s, false, 0, std::nullopt, u"a[X]c"_s, 1},
        {"nothing found", u"abc"_s, u"["_s, u"]"_s, u"X"_s, false, 0, std::nullopt, u"abc"_s, 0},
        {"no closing string", u"a[bc"_s, u"["_s, u"]"_s, u"X"_s, false, 0, std::nullopt, u"a[bc"_s, 0},
        {"wide characters", u"x\u00AB"_s + thumbs + u"\u00BBy"_s, u"\u00AB"_s, u"\u00BB"_s, flag, false, 0,
         std::nullopt, u"x\u00AB"_s + flag + u"\u00BBy"_s, 1},
        {"within a range", u"[a][b]"_s, u"["_s, u"]"_s, u"X"_s, false, 0, QVRange{3, 3}, u"[a][X]"_s, 1},
        {"case-insensitive", u"<B>x</b>"_s, u"<b>"_s, u"</B>"_s, u"X"_s, false, QVCaseInsensitiveSearch,
         std::nullopt, u"<B>X</b>"_s, 1},
        {"empty text", u""_s, u"["_s, u"]"_s, u"X"_s, false, 0, std::nullopt, u""_s, 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        const quint64 count =
            row.range ? replaceOccurrencesBetweenString(text, row.opening, row.closing, row.replacement, row.include,
                                                        0, row.options, *row.range)
                      : replaceOccurrencesBetweenString(text, row.opening, row.closing, row.replacement, row.include,
                                                        0, row.options);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(count, row.count);

        // The longest form with no locale answers the same.
        QString again = row.text;
        EXPECT_EQ(replaceOccurrencesBetweenString(again, row.opening, row.closing, row.replacement, row.include, 0,
                                                  row.options, row.range.value_or(QVMakeRange(0, row.text.length())),
                                                  std::nullopt),
                  row.count);
        EXPECT_EQ(again, row.expected);
    }

    // The shortest form excludes the opening and closing strings.
    QString text = u"(a)(b)"_s;
    EXPECT_EQ(replaceOccurrencesBetweenString(text, u"("_s, u")"_s, u"x"_s), 2u);
    EXPECT_EQ(text, u"(x)(x)"_s);
}

TEST(QVMutableStringAdditionsTest, ReplaceOccurrencesOfCharacterSet)
{
    struct Row
    {
        const char *name;
        QString text;
        std::optional<QVCharacterSet> set;
        QString replacement;
        QVStringCompareOptions options;
        std::optional<QVRange> range; // the full range when absent
        QString expected;
        quint64 count;
    };
    const QVCharacterSet whitespace = QVCharacterSet::whitespaceCharacterSet();
    const Row rows[] = {
        {"each character", u"a b\tc"_s, whitespace, u"_"_s, 0, std::nullopt, u"a_b_c"_s, 2},
        {"runs are single characters", u"a  b"_s, whitespace, u"_"_s, 0, std::nullopt, u"a__b"_s, 2},
        {"empty replacement", u"a  b"_s, whitespace, u""_s, 0, std::nullopt, u"ab"_s, 2},
        {"null replacement", u"a  b"_s, whitespace, QString(), 0, std::nullopt, u"ab"_s, 2},
        {"replacement from the set is not replaced again", u"a b"_s, whitespace, u"  "_s, 0, std::nullopt,
         u"a  b"_s, 1},
        {"backwards", u"a b c"_s, whitespace, u" - "_s, QVBackwardsSearch, std::nullopt, u"a - b - c"_s, 2},
        {"within a range", u"a b c d"_s, whitespace, u"_"_s, 0, QVRange{2, 3}, u"a b_c d"_s, 1},
        {"range past the end is clipped", u"a b c d"_s, whitespace, u"_"_s, 0, QVRange{4, 100}, u"a b c_d"_s, 1},
        {"range starting past the end", u"a b"_s, whitespace, u"_"_s, 0, QVRange{4, 1}, u"a b"_s, 0},
        {"range not found", u"a b"_s, whitespace, u"_"_s, 0, QVNotFoundRange(), u"a b"_s, 0},
        {"no set", u"a b"_s, std::nullopt, u"_"_s, 0, std::nullopt, u"a b"_s, 0},
        {"nothing from the set", u"abc"_s, whitespace, u"_"_s, 0, std::nullopt, u"abc"_s, 0},
        {"emoji in the set", u"a"_s + thumbs + u"b"_s + thumbs, QVCharacterSet::characterSetWithCharactersInString(thumbs),
         u"+"_s, 0, std::nullopt, u"a+b+"_s, 2},
        {"emoji replacement", u"a,b,c"_s, QVCharacterSet::characterSetWithCharactersInString(u","_s), thumbs, 0,
         std::nullopt, u"a"_s + thumbs + u"b"_s + thumbs + u"c"_s, 2},
        {"empty text", u""_s, whitespace, u"_"_s, 0, std::nullopt, u""_s, 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        const quint64 count = row.range
                                  ? replaceOccurrencesOfCharacterSet(text, row.set, row.replacement, row.options,
                                                                     *row.range)
                                  : replaceOccurrencesOfCharacterSet(text, row.set, row.replacement, row.options);
        EXPECT_EQ(text, row.expected);
        EXPECT_EQ(count, row.count);
    }
}

TEST(QVMutableStringAdditionsTest, MisuseStopsTheProgram)
{
    EXPECT_DEATH(
        {
            QString text = u"ab"_s;
            replaceStringPairs(text, {u"a"_s});
        },
        "Condition not satisfied: \\(replacePairs.count % 2\\) == 0");
    EXPECT_DEATH(
        {
            QString text = u"ab"_s;
            QVRangeList ranges(1, QVMakeRange(0, 1));
            replaceStringPairs(text, {u"a"_s, u"b"_s, u"c"_s}, 0, {0, 2}, ranges);
        },
        "Condition not satisfied: \\(replacePairs.count % 2\\) == 0");

    const char *betweenText = "Condition not satisfied: \\(openingString != nil\\) && \\(closingString != nil\\) "
                              "&& \\(replacement != nil\\)";
    EXPECT_DEATH(
        {
            QString text = u"a[b]c"_s;
            replaceOccurrencesBetweenString(text, QString(), u"]"_s, u"x"_s);
        },
        betweenText);
    EXPECT_DEATH(
        {
            QString text = u"a[b]c"_s;
            replaceOccurrencesBetweenString(text, u"["_s, QString(), u"x"_s);
        },
        betweenText);
    EXPECT_DEATH(
        {
            QString text = u"a[b]c"_s;
            replaceOccurrencesBetweenString(text, u"["_s, u"]"_s, QString());
        },
        betweenText);
    // Checked before searching: a text without any bracket fails as well.
    EXPECT_DEATH(
        {
            QString text;
            replaceOccurrencesBetweenString(text, u"["_s, u"]"_s, QString(), true, 0, 0, {0, 0}, std::nullopt);
        },
        betweenText);
}
