#include <QVKit/Platform/QVLog.h>
#include <QVKit/Text/QVStringAdditions.h>

#include <gtest/gtest.h>

#include <ostream>

using namespace Qt::StringLiterals;

// Readable failure messages: ranges as "{location, length}", strings as text.
void PrintTo(const QVRange &range, std::ostream *out)
{
    *out << QVRangeToString(range).toStdString();
}

void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace {

constexpr QVRange NF = QVNotFoundRange();

// "a", grinning face, "e" + combining acute, the French flag:
// a(0) 😀(1-2) e(3) ◌́(4) 🇫🇷(5-8); 9 code units, 4 characters.
const QString mixed = u"a\U0001F600e\u0301\U0001F1EB\U0001F1F7"_s;

const QVCharacterSet &whitespace()
{
    static const QVCharacterSet set = QVCharacterSet::whitespaceCharacterSet();
    return set;
}

const QVCharacterSet &digits()
{
    static const QVCharacterSet set = QVCharacterSet::decimalDigitCharacterSet();
    return set;
}

std::string listText(const QVOptionalRangeList &ranges)
{
    return QVRangeListToString(ranges).toStdString();
}

} // namespace

// ---- Edges -----------------------------------------------------------------

TEST(QVStringAdditionsTest, HasPrefixAndSuffix)
{
    struct Row
    {
        const char *name;
        QString text, string;
        QVStringEdgeOptions options;
        bool prefix, suffix;
    };
    const Row rows[] = {
        {"empty string is never an edge", u"abc"_s, u""_s, 0, false, false},
        {"null string", u"abc"_s, QString(), 0, false, false},
        {"empty text", u""_s, u"a"_s, 0, false, false},
        {"plain prefix", u"abcdef"_s, u"abc"_s, 0, true, false},
        {"plain suffix", u"abcdef"_s, u"def"_s, 0, false, true},
        {"whole text", u"abc"_s, u"abc"_s, 0, true, true},
        {"longer than the text", u"ab"_s, u"abc"_s, 0, false, false},
        {"case differs", u"Abc"_s, u"abc"_s, 0, false, false},
        {"case-insensitive", u"Abc"_s, u"abc"_s, QVStringEdgeOptionCaseInsensitive, true, true},
        {"case-insensitive beyond ASCII", u"\u00C9COLE"_s, u"\u00E9c"_s, QVStringEdgeOptionCaseInsensitive, true,
         false},
        {"Greek case-insensitive suffix", u"\u03A3\u039F\u03A6\u0399\u0391"_s, u"\u03B9\u03B1"_s,
         QVStringEdgeOptionCaseInsensitive, false, true},
        {"accent differs", u"\u00E9clair"_s, u"ec"_s, 0, false, false},
        {"diacritic-insensitive", u"\u00E9clair"_s, u"ec"_s, QVStringEdgeOptionDiacriticInsensitive, true, false},
        {"diacritic- and case-insensitive suffix", u"caf\u00C9"_s, u"FE"_s,
         QVStringEdgeOptionDiacriticInsensitive | QVStringEdgeOptionCaseInsensitive, false, true},
        {"whitespace blocks the edge", u" \tabc\n"_s, u"abc"_s, 0, false, false},
        {"whitespace ignored", u" \tabc\n"_s, u"abc"_s, QVStringEdgeOptionIgnoreWhitespace, true, true},
        {"only whitespace", u"   "_s, u"a"_s, QVStringEdgeOptionIgnoreWhitespace, false, false},
        {"emoji at both edges", u"\U0001F600x\U0001F600"_s, u"\U0001F600"_s, 0, true, true},
        {"flag suffix", u"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA"_s, u"\U0001F1E9\U0001F1EA"_s, 0, false, true},
        {"greedy bit does not matter", u"aab"_s, u"a"_s, QVStringEdgeOptionGreedy, true, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::hasPrefix(row.text, row.string, row.options), row.prefix);
        EXPECT_EQ(QVString::hasSuffix(row.text, row.string, row.options), row.suffix);
        EXPECT_EQ(QVString::hasStringAtEdge(row.text, row.string, QVStringEdgeStart, row.options), row.prefix);
        EXPECT_EQ(QVString::hasStringAtEdge(row.text, row.string, QVStringEdgeEnd, row.options), row.suffix);
    }
    // The short forms pass options 0.
    EXPECT_TRUE(QVString::hasPrefix(u"abc"_s, u"a"_s));
    EXPECT_FALSE(QVString::hasSuffix(u"abC"_s, u"c"_s));
}

TEST(QVStringAdditionsTest, RangeOfPrefixAndSuffix)
{
    struct Row
    {
        const char *name;
        QString text, string;
        QVStringEdgeOptions options;
        QVRange prefix, suffix;
    };
    const Row rows[] = {
        {"plain", u"abcabc"_s, u"abc"_s, 0, {0, 3}, {3, 3}},
        {"greedy takes the whole run", u"abcabc"_s, u"abc"_s, QVStringEdgeOptionGreedy, {0, 6}, {0, 6}},
        {"greedy run at the start only", u"abcabcx"_s, u"abc"_s, QVStringEdgeOptionGreedy, {0, 6}, NF},
        {"greedy run at the end only", u"xaaa"_s, u"a"_s, QVStringEdgeOptionGreedy, NF, {1, 3}},
        {"greedy run of a repeated pair", u"ababab"_s, u"ab"_s, QVStringEdgeOptionGreedy, {0, 6}, {0, 6}},
        {"greedy run of emoji", u"\U0001F600\U0001F600x"_s, u"\U0001F600"_s, QVStringEdgeOptionGreedy, {0, 4}, NF},
        {"greedy, case- and diacritic-insensitive",
         u"\u00C0\u00E0b"_s,
         u"a"_s,
         QVStringEdgeOptionGreedy | QVStringEdgeOptionCaseInsensitive | QVStringEdgeOptionDiacriticInsensitive,
         {0, 2},
         NF},
        {"whitespace ignored at the matched edge",
         u"  ab  "_s,
         u"ab"_s,
         QVStringEdgeOptionIgnoreWhitespace,
         {2, 2},
         {2, 2}},
        {"newlines count as whitespace", u"\n\nab\r\n"_s, u"ab"_s, QVStringEdgeOptionIgnoreWhitespace, {2, 2}, {2, 2}},
        {"not at the edge", u"xaby"_s, u"ab"_s, 0, NF, NF},
        {"empty text", u""_s, u"a"_s, QVStringEdgeOptionGreedy, NF, NF},
        {"empty string", u"abc"_s, u""_s, QVStringEdgeOptionGreedy, NF, NF},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::rangeOfPrefix(row.text, row.string, row.options), row.prefix);
        EXPECT_EQ(QVString::rangeOfSuffix(row.text, row.string, row.options), row.suffix);
    }
}

TEST(QVStringAdditionsTest, StrippingRemovesTheMatchLengthFromTheEdge)
{
    struct Row
    {
        const char *name;
        QString text, string;
        QVStringEdgeOptions options;
        QString withoutPrefix, withoutSuffix;
    };
    const Row rows[] = {
        {"plain", u"abcabc"_s, u"abc"_s, 0, u"abc"_s, u"abc"_s},
        {"greedy", u"abcabc"_s, u"abc"_s, QVStringEdgeOptionGreedy, u""_s, u""_s},
        {"absent", u"xyz"_s, u"ab"_s, 0, u"xyz"_s, u"xyz"_s},
        // Deliberate: the count is the match's length, taken from the very edge.
        {"leading whitespace ignored", u"  ab"_s, u"ab"_s, QVStringEdgeOptionIgnoreWhitespace, u"ab"_s, u"  "_s},
        {"trailing whitespace ignored", u"ab  "_s, u"ab"_s, QVStringEdgeOptionIgnoreWhitespace, u"  "_s, u"ab"_s},
        {"case-insensitive beyond ASCII", u"\u00C9COLE\u00C9"_s, u"\u00E9"_s, QVStringEdgeOptionCaseInsensitive,
         u"COLE\u00C9"_s, u"\u00C9COLE"_s},
        {"emoji", u"\U0001F600abc\U0001F600"_s, u"\U0001F600"_s, 0, u"abc\U0001F600"_s, u"\U0001F600abc"_s},
        {"combining mark stays with its letter", u"e\u0301x"_s, u"e\u0301"_s, 0, u"x"_s, u"e\u0301x"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::stringByStrippingPrefix(row.text, row.string, row.options), row.withoutPrefix);
        EXPECT_EQ(QVString::stringByStrippingSuffix(row.text, row.string, row.options), row.withoutSuffix);
    }
    // Nothing found: the text itself comes back, not a copy.
    const QString text(5, u'x');
    EXPECT_EQ(QVString::stringByStrippingPrefix(text, u"y"_s).constData(), text.constData());
    EXPECT_EQ(QVString::stringByStrippingSuffix(text, QString()).constData(), text.constData());
}

TEST(QVStringAdditionsTest, EdgeWithAnInvalidEdgeIsAProgrammingError)
{
    EXPECT_DEATH(QVString::rangeOfPrefixAtEdge(u"abc"_s, u"a"_s, QVStringEdge(2), 0),
                 "Condition not satisfied: \\(stringEdge == QVStringEdgeStart\\) \\|\\| "
                 "\\(stringEdge == QVStringEdgeEnd\\)");
    EXPECT_DEATH(QVString::hasStringAtEdge(u"abc"_s, u"c"_s, QVStringEdge(7), 0),
                 "Condition not satisfied: \\(stringEdge == QVStringEdgeStart\\)");
    // An empty string is answered before the edge is looked at.
    EXPECT_EQ(QVString::rangeOfPrefixAtEdge(u"abc"_s, u""_s, QVStringEdge(2), 0), NF);
}

TEST(QVStringAdditionsTest, TrimmedRanges)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange both, start, end;
    };
    const Row rows[] = {
        // Deliberate: a text made only of whitespace is not trimmed at all.
        {"three spaces", u"   "_s, {0, 3}, {0, 3}, {0, 3}},
        {"empty", u""_s, {0, 0}, {0, 0}, {0, 0}},
        {"nothing to trim", u"a b"_s, {0, 3}, {0, 3}, {0, 3}},
        {"both edges", u"  a b \n"_s, {2, 3}, {2, 5}, {0, 5}},
        {"no-break space and paragraph separator", u"\u00A0x\u2029"_s, {1, 1}, {1, 2}, {0, 2}},
        {"emoji kept whole", u"\t\U0001F600 "_s, {1, 2}, {1, 3}, {0, 3}},
        {"CR LF", u"\r\nab\r\n"_s, {2, 2}, {2, 4}, {0, 4}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::trimmedRange(row.text), row.both);
        EXPECT_EQ(QVString::trimmedStartRange(row.text), row.start);
        EXPECT_EQ(QVString::trimmedEndRange(row.text), row.end);
    }
}

TEST(QVStringAdditionsTest, TrimmingWithOtherSets)
{
    const QString text = u"xxabyx"_s;
    EXPECT_EQ(QVString::rangeByTrimmingCharacterSet(text, std::nullopt, QVTrimOptionStart | QVTrimOptionEnd),
              QVMakeRange(0, 6));
    EXPECT_EQ(QVString::rangeByTrimmingCharacterSet(text, QVCharacterSet::characterSetWithCharactersInString(u"xy"_s),
                                                    QVTrimOptionStart | QVTrimOptionEnd),
              QVMakeRange(2, 2));
    EXPECT_EQ(
        QVString::rangeByTrimmingCharacterSet(text, QVCharacterSet::characterSetWithCharactersInString(u"xy"_s), 0),
        QVMakeRange(0, 6));
    // The whitespace set leaves newlines alone.
    EXPECT_EQ(QVString::rangeByTrimmingCharacterSet(u"\n a \n"_s, whitespace(), QVTrimOptionStart | QVTrimOptionEnd),
              QVMakeRange(0, 5));
    EXPECT_EQ(QVString::rangeByTrimmingCharacterSet(u" a "_s, whitespace(), QVTrimOptionStart | QVTrimOptionEnd),
              QVMakeRange(1, 1));
}

TEST(QVStringAdditionsTest, StringByTrimmingString)
{
    // Unchanged texts come back as themselves (same data), not as copies.
    const QString spaces(3, u' ');
    EXPECT_EQ(QVString::stringByTrimmingString(spaces).constData(), spaces.constData());
    const QString word = QString::fromUtf8("word");
    EXPECT_EQ(QVString::stringByTrimmingString(word).constData(), word.constData());

    EXPECT_EQ(QVString::stringByTrimmingString(u"  x \n"_s), u"x"_s);
    EXPECT_EQ(QVString::stringByTrimmingString(u"\u3000e\u0301\u3000"_s), u"e\u0301"_s);
    EXPECT_TRUE(QVString::stringByTrimmingString(u""_s).isEmpty());
}

// ---- Searching -------------------------------------------------------------

TEST(QVStringAdditionsTest, GreedyRangeOfString)
{
    struct Row
    {
        const char *name;
        QString text, search;
        QVStringCompareOptions options;
        std::optional<QVRange> range;
        QVRange expected;
    };
    const Row rows[] = {
        {"run at the start", u"aaab"_s, u"a"_s, 0, {}, {0, 3}},
        {"run after other text", u"baaab a"_s, u"a"_s, 0, {}, {1, 3}},
        {"backwards takes the last run", u"aab aa"_s, u"a"_s, QVBackwardsSearch, {}, {4, 2}},
        {"backwards run touching the start", u"aaab"_s, u"a"_s, QVBackwardsSearch, {}, {0, 3}},
        {"repeated pair", u"ababx"_s, u"ab"_s, 0, {}, {0, 4}},
        {"overlap is not a repeat", u"aaa"_s, u"aa"_s, 0, {}, {0, 2}},
        {"within a range", u"xaaa"_s, u"a"_s, 0, QVRange {0, 2}, {1, 1}},
        {"case-insensitive", u"aAa"_s, u"a"_s, QVCaseInsensitiveSearch, {}, {0, 3}},
        {"anchored", u"xaa"_s, u"a"_s, QVAnchoredSearch, {}, NF},
        {"anchored backwards", u"xaa"_s, u"a"_s, QVAnchoredSearch | QVBackwardsSearch, {}, {1, 2}},
        {"emoji", u"x\U0001F600\U0001F600"_s, u"\U0001F600"_s, 0, {}, {1, 4}},
        {"no match", u"bbb"_s, u"a"_s, 0, {}, NF},
        {"empty search", u"aaa"_s, u""_s, 0, {}, NF},
        {"empty range", u"aaa"_s, u"a"_s, 0, QVRange {1, 0}, NF},
        {"range past the end", u"aaa"_s, u"a"_s, 0, QVRange {5, 2}, NF},
        {"not-found range", u"aaa"_s, u"a"_s, 0, NF, NF},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        if (row.range)
            EXPECT_EQ(QVString::greedyRangeOfString(row.text, row.search, row.options, *row.range), row.expected);
        else
            EXPECT_EQ(QVString::greedyRangeOfString(row.text, row.search, row.options), row.expected);
    }
}

TEST(QVStringAdditionsTest, RangesOfString)
{
    struct Row
    {
        const char *name;
        QString text, search;
        QVStringCompareOptions options;
        std::optional<QVRange> range;
        QVOptionalRangeList expected;
    };
    const Row rows[] = {
        {"two matches", u"abcabc"_s, u"abc"_s, 0, {}, QVRangeList {{0, 3}, {3, 3}}},
        {"backwards gives descending order",
         u"abcabc"_s,
         u"abc"_s,
         QVBackwardsSearch,
         {},
         QVRangeList {{3, 3}, {0, 3}}},
        {"matches do not overlap", u"aaaa"_s, u"aa"_s, 0, {}, QVRangeList {{0, 2}, {2, 2}}},
        {"within a range", u"abcabc"_s, u"abc"_s, 0, QVRange {1, 5}, QVRangeList {{3, 3}}},
        {"backwards within a range", u"abcabcabc"_s, u"abc"_s, QVBackwardsSearch, QVRange {0, 7},
         QVRangeList {{3, 3}, {0, 3}}},
        {"backwards within a range, one code unit", u"a-a-a-a"_s, u"a"_s, QVBackwardsSearch, QVRange {1, 5},
         QVRangeList {{4, 1}, {2, 1}}},
        {"anchored keeps only the leading run",
         u"ababxab"_s,
         u"ab"_s,
         QVAnchoredSearch,
         {},
         QVRangeList {{0, 2}, {2, 2}}},
        {"case-insensitive", u"Aa"_s, u"a"_s, QVCaseInsensitiveSearch, {}, QVRangeList {{0, 1}, {1, 1}}},
        {"diacritic-insensitive",
         u"r\u00E9sum\u00E9 resume"_s,
         u"resume"_s,
         QVDiacriticInsensitiveSearch,
         {},
         QVRangeList {{0, 6}, {7, 6}}},
        {"emoji", u"\U0001F600a\U0001F600"_s, u"\U0001F600"_s, 0, {}, QVRangeList {{0, 2}, {3, 2}}},
        {"empty text", u""_s, u"a"_s, 0, {}, std::nullopt},
        {"empty search", u"abc"_s, u""_s, 0, {}, std::nullopt},
        {"empty range", u"abc"_s, u"a"_s, 0, QVRange {0, 0}, std::nullopt},
        {"no match is no list", u"abc"_s, u"x"_s, 0, {}, std::nullopt},
        {"range at the end", u"abc"_s, u"c"_s, 0, QVRange {3, 0}, std::nullopt},
        {"range past the end", u"abc"_s, u"c"_s, 0, QVRange {7, 3}, std::nullopt},
        {"not-found range", u"abc"_s, u"c"_s, 0, NF, std::nullopt},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVOptionalRangeList found = row.range
            ? QVString::rangesOfString(row.text, row.search, row.options, *row.range)
            : QVString::rangesOfString(row.text, row.search, row.options);
        EXPECT_EQ(listText(found), listText(row.expected));
    }
}

TEST(QVStringAdditionsTest, EnumerationStopsWhenAsked)
{
    const QString text = u"a-a-a-a"_s;
    QVRangeList seen;
    QVString::enumerateRangeOfString(text, u"a"_s, [&seen](QVRange range, bool *stop) {
        seen.append(range);
        if (seen.size() == 2)
            *stop = true;
    });
    EXPECT_EQ(seen, (QVRangeList {{0, 1}, {2, 1}}));

    seen.clear();
    QVString::enumerateRangeOfString(text, u"a"_s, QVBackwardsSearch, QVMakeRange(1, 5),
                                     [&seen](QVRange range, bool *) { seen.append(range); });
    EXPECT_EQ(seen, (QVRangeList {{4, 1}, {2, 1}}));

    // No block, no search string: nothing happens, nothing crashes.
    QVString::enumerateRangeOfString(text, u"a"_s, QVStringRangeBlock());
    int calls = 0;
    QVString::enumerateRangeOfString(text, u""_s, [&calls](QVRange, bool *) { ++calls; });
    QVString::enumerateRangeOfString(text, u"a"_s, 0, QVMakeRange(20, 5), [&calls](QVRange, bool *) { ++calls; });
    EXPECT_EQ(calls, 0);
}

TEST(QVStringAdditionsTest, CountContainsAndMatches)
{
    EXPECT_EQ(QVString::countOfString(u"aaaa"_s, u"aa"_s), 2u);
    EXPECT_EQ(QVString::countOfString(u"AaA"_s, u"a"_s, QVCaseInsensitiveSearch), 3u);
    EXPECT_EQ(QVString::countOfString(u"a-a-a"_s, u"a"_s, 0, QVMakeRange(1, 4)), 2u);
    EXPECT_EQ(QVString::countOfString(u"abc"_s, u""_s), 0u);
    EXPECT_EQ(QVString::countOfString(u""_s, u"a"_s), 0u);

    EXPECT_TRUE(QVString::containsString(u"na\u00EFve"_s, u"naive"_s, QVDiacriticInsensitiveSearch));
    EXPECT_FALSE(QVString::containsString(u"na\u00EFve"_s, u"naive"_s));
    EXPECT_FALSE(QVString::containsString(u"abc"_s, u"c"_s, 0, QVMakeRange(0, 2)));
    EXPECT_FALSE(QVString::containsString(u"abc"_s, u""_s));

    struct Row
    {
        const char *name;
        QString text, string;
        QVStringCompareOptions options;
        std::optional<QVRange> range;
        bool expected;
    };
    const Row rows[] = {
        {"equal", u"abc"_s, u"abc"_s, 0, {}, true},
        {"case-insensitive", u"abc"_s, u"ABC"_s, QVCaseInsensitiveSearch, {}, true},
        {"case differs", u"abc"_s, u"ABC"_s, 0, {}, false},
        {"prefix only", u"abc"_s, u"ab"_s, 0, {}, false},
        {"suffix only", u"abc"_s, u"bc"_s, 0, {}, false},
        {"backwards makes no difference", u"abc"_s, u"bc"_s, QVBackwardsSearch, {}, false},
        {"two empty strings", u""_s, u""_s, 0, {}, true},
        {"empty text", u""_s, u"a"_s, 0, {}, false},
        {"empty string", u"a"_s, u""_s, 0, {}, false},
        {"null string", u""_s, QString(), 0, {}, false},
        {"a range", u"abc"_s, u"bc"_s, 0, QVRange {1, 2}, true},
        {"range past the end", u"abc"_s, u"bc"_s, 0, QVRange {1, 5}, false},
        {"diacritic-insensitive", u"caf\u00E9"_s, u"cafe"_s, QVDiacriticInsensitiveSearch, {}, true},
        {"emoji", u"\U0001F600"_s, u"\U0001F600"_s, 0, {}, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        if (row.range)
            EXPECT_EQ(QVString::matchesString(row.text, row.string, row.options, *row.range), row.expected);
        else
            EXPECT_EQ(QVString::matchesString(row.text, row.string, row.options), row.expected);
    }
    EXPECT_TRUE(QVString::matchesStringCaseInsensitive(u"\u00C9t\u00E9"_s, u"\u00E9T\u00C9"_s));
    EXPECT_FALSE(QVString::matchesStringCaseInsensitive(u"\u00C9t\u00E9"_s, u"eTE"_s));
}

TEST(QVStringAdditionsTest, CharacterSetSearches)
{
    EXPECT_EQ(listText(QVString::rangesOfCharacterFromSet(u"a1b22"_s, digits())),
              listText(QVRangeList {{1, 1}, {3, 1}, {4, 1}}));
    EXPECT_EQ(listText(QVString::rangesOfCharacterFromSet(u"a1b22"_s, digits(), QVBackwardsSearch)),
              listText(QVRangeList {{4, 1}, {3, 1}, {1, 1}}));
    EXPECT_EQ(listText(QVString::rangesOfCharacterFromSet(u"a1b22"_s, digits(), 0, QVMakeRange(2, 2))),
              listText(QVRangeList {{3, 1}}));
    // A character outside the BMP is one code point: two code units.
    EXPECT_EQ(listText(QVString::rangesOfCharacterFromSet(
                  u"x\U0001F600"_s, QVCharacterSet::characterSetWithCharactersInString(u"\U0001F600"_s))),
              listText(QVRangeList {{1, 2}}));
    EXPECT_FALSE(QVString::rangesOfCharacterFromSet(u"abc"_s, digits()).has_value());
    EXPECT_FALSE(QVString::rangesOfCharacterFromSet(u"a1"_s, std::nullopt).has_value());
    EXPECT_FALSE(QVString::rangesOfCharacterFromSet(u""_s, digits()).has_value());

    struct Row
    {
        const char *name;
        QString text;
        QVStringCompareOptions options;
        QVRange run;
        QVOptionalRangeList runs;
    };
    const Row rows[] = {
        {"forwards", u"ab  cd   e"_s, 0, {2, 2}, QVRangeList {{2, 2}, {6, 3}}},
        {"backwards", u"ab  cd   e"_s, QVBackwardsSearch, {6, 3}, QVRangeList {{6, 3}, {2, 2}}},
        {"anchored at the start", u"  x "_s, QVAnchoredSearch, {0, 2}, QVRangeList {{0, 2}}},
        {"anchored misses", u"x  "_s, QVAnchoredSearch, NF, std::nullopt},
        {"anchored backwards", u"x  "_s, QVAnchoredSearch | QVBackwardsSearch, {1, 2}, QVRangeList {{1, 2}}},
        {"case-insensitive bit is ignored", u"a b"_s, QVCaseInsensitiveSearch, {1, 1}, QVRangeList {{1, 1}}},
        {"whole text", u"   "_s, 0, {0, 3}, QVRangeList {{0, 3}}},
        {"none", u"abc"_s, 0, NF, std::nullopt},
        {"empty text", u""_s, 0, NF, std::nullopt},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::fullRangeOfCharacterFromSet(row.text, whitespace(), row.options), row.run);
        EXPECT_EQ(listText(QVString::fullRangesOfCharacterFromSet(row.text, whitespace(), row.options)),
                  listText(row.runs));
    }
    EXPECT_EQ(QVString::fullRangeOfCharacterFromSet(u"a  b"_s, std::nullopt), NF);
    EXPECT_EQ(QVString::fullRangeOfCharacterFromSet(u"a  b"_s, whitespace(), 0, QVMakeRange(1, 0)), NF);
    EXPECT_EQ(QVString::fullRangeOfCharacterFromSet(u"a    b"_s, whitespace(), 0, QVMakeRange(2, 2)),
              QVMakeRange(2, 2));
    EXPECT_FALSE(QVString::fullRangesOfCharacterFromSet(u"a  b"_s, std::nullopt).has_value());
}

TEST(QVStringAdditionsTest, ContainsCharacterFromSet)
{
    struct Row
    {
        const char *name;
        QString text;
        std::optional<QVCharacterSet> set;
        std::optional<QVRange> range;
        bool contains, exclusively;
    };
    const Row rows[] = {
        {"none", u"abc"_s, digits(), {}, false, false},
        {"some", u"a1"_s, digits(), {}, true, false},
        {"only", u"123"_s, digits(), {}, true, true},
        {"only within the range", u"12a"_s, digits(), QVRange {0, 2}, true, true},
        {"range past the end is not searched", u"12"_s, digits(), QVRange {0, 5}, false, false},
        {"no set", u"123"_s, std::nullopt, {}, false, false},
        {"empty range", u"123"_s, digits(), QVRange {1, 0}, false, false},
        {"empty text", u""_s, digits(), {}, false, false},
        {"emoji in a set of emoji",
         u"\U0001F600\U0001F601"_s,
         QVCharacterSet::characterSetWithRange(0x1F600, 16),
         {},
         true,
         true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRange range = row.range.value_or(QVString::fullRange(row.text));
        EXPECT_EQ(QVString::containsCharacterFromSet(row.text, row.set, 0, range), row.contains);
        EXPECT_EQ(QVString::containsCharacterFromSet(row.text, row.set, 0, range, true), row.exclusively);
    }
    EXPECT_TRUE(QVString::containsCharacterFromSet(u"x1"_s, digits()));
}

// ---- Between an opening and a closing string -------------------------------

TEST(QVStringAdditionsTest, SimpleRangeBetweenStrings)
{
    struct Row
    {
        const char *name;
        QString text, opening, closing;
        QVStringCompareOptions options;
        std::optional<QVRange> range;
        QVRange excluding, including;
    };
    const Row rows[] = {
        {"parentheses", u"a(bc)d"_s, u"("_s, u")"_s, 0, {}, {2, 2}, {1, 4}},
        {"nothing between", u"()"_s, u"("_s, u")"_s, 0, {}, {1, 0}, {0, 2}},
        {"no closing string", u"a(b"_s, u"("_s, u")"_s, 0, {}, NF, NF},
        {"closing only before the opening", u"a)b(c"_s, u"("_s, u")"_s, 0, {}, NF, NF},
        // Plain pairing: the first opening string meets the next closing one.
        {"nesting is not tracked", u"((a) b)"_s, u"("_s, u")"_s, 0, {}, {1, 2}, {0, 4}},
        {"longer strings", u"<<x>>"_s, u"<<"_s, u">>"_s, 0, {}, {2, 1}, {0, 5}},
        {"same opening and closing", u"say \"hi\" now"_s, u"\""_s, u"\""_s, 0, {}, {5, 2}, {4, 4}},
        {"case-insensitive", u"[B]x[/b]"_s, u"[b]"_s, u"[/B]"_s, QVCaseInsensitiveSearch, {}, {3, 1}, {0, 8}},
        {"backwards is ignored", u"(a)(b)"_s, u"("_s, u")"_s, QVBackwardsSearch, {}, {1, 1}, {0, 3}},
        {"anchored opening misses", u"x(a)"_s, u"("_s, u")"_s, QVAnchoredSearch, {}, NF, NF},
        {"anchored opening matches", u"(a)x"_s, u"("_s, u")"_s, QVAnchoredSearch, {}, {1, 1}, {0, 3}},
        {"within a range", u"(a)(b)"_s, u"("_s, u")"_s, 0, QVRange {3, 3}, {4, 1}, {3, 3}},
        {"range cuts the closing string", u"(ab)"_s, u"("_s, u")"_s, 0, QVRange {0, 3}, NF, NF},
        {"emoji brackets", u"\U0001F449x\U0001F448"_s, u"\U0001F449"_s, u"\U0001F448"_s, 0, {}, {2, 1}, {0, 5}},
        {"empty opening", u"a(b)"_s, u""_s, u")"_s, 0, {}, NF, NF},
        {"empty closing", u"a(b)"_s, u"("_s, QString(), 0, {}, NF, NF},
        {"empty text", u""_s, u"("_s, u")"_s, 0, {}, NF, NF},
        {"range past the end", u"(a)"_s, u"("_s, u")"_s, 0, QVRange {9, 3}, NF, NF},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRange range = row.range.value_or(QVString::fullRange(row.text));
        EXPECT_EQ(QVString::simpleRangeBetweenString(row.text, row.opening, row.closing, false, row.options, range),
                  row.excluding);
        EXPECT_EQ(QVString::simpleRangeBetweenString(row.text, row.opening, row.closing, true, row.options, range),
                  row.including);
        // Without match options the richer family answers the same.
        EXPECT_EQ(QVString::rangeBetweenString(row.text, row.opening, row.closing, false, 0, row.options, range),
                  row.excluding);
    }
}

TEST(QVStringAdditionsTest, RangeBetweenStringsWithMatchOptions)
{
    struct Row
    {
        const char *name;
        QString text, opening, closing;
        QVStringMatchOptions matchOptions;
        QVRange excluding, reference;
    };
    const Row rows[] = {
        {"escaped opening found without the option", u"\\(x) (y)"_s, u"("_s, u")"_s, 0, {2, 1}, {1, 3}},
        {"escaped opening skipped", u"\\(x) (y)"_s, u"("_s, u")"_s, QVStringMatchOptionSkipEscaped, {6, 1}, {5, 3}},
        {"escaped closing skipped", u"(a\\)b)"_s, u"("_s, u")"_s, QVStringMatchOptionSkipEscaped, {1, 4}, {0, 6}},
        {"double backslash escapes nothing",
         u"\\\\(a)"_s,
         u"("_s,
         u")"_s,
         QVStringMatchOptionSkipEscaped,
         {3, 1},
         {2, 3}},
        {"every closing escaped", u"(a\\)"_s, u"("_s, u")"_s, QVStringMatchOptionSkipEscaped, NF, NF},
        {"greedy runs", u"**bold**"_s, u"*"_s, u"*"_s, QVStringMatchOptionGreedyRepeats, {2, 4}, {0, 8}},
        {"greedy bit alone stays plain", u"**bold**"_s, u"*"_s, u"*"_s, QVStringMatchOptionGreedy, {1, 0}, {0, 2}},
        {"repeats bit alone stays plain", u"**bold**"_s, u"*"_s, u"*"_s, QVStringMatchOptionRepeats, {1, 0}, {0, 2}},
        {"greedy after an escaped star",
         u"\\***b**"_s,
         u"*"_s,
         u"*"_s,
         QVStringMatchOptionGreedyRepeats | QVStringMatchOptionSkipEscaped,
         {4, 1},
         {2, 5}},
        {"other bits are ignored", u"(a)"_s, u"("_s, u")"_s, 1 | 2 | 32, {1, 1}, {0, 3}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVRange reference = QVMakeRange(42, 42);
        EXPECT_EQ(QVString::rangeBetweenString(row.text, row.opening, row.closing, false, row.matchOptions, 0,
                                               QVString::fullRange(row.text), std::nullopt, &reference),
                  row.excluding);
        EXPECT_EQ(reference, row.reference);
        EXPECT_EQ(QVString::rangeBetweenString(row.text, row.opening, row.closing, true, row.matchOptions),
                  row.reference);
    }
}

TEST(QVStringAdditionsTest, RangesAndSubstringsBetweenStrings)
{
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"(a)(b) (c"_s, u"("_s, u")"_s)),
              listText(QVRangeList {{1, 1}, {4, 1}}));
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"(a)(b) (c"_s, u"("_s, u")"_s, true)),
              listText(QVRangeList {{0, 3}, {3, 3}}));
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"()()"_s, u"("_s, u")"_s)),
              listText(QVRangeList {{1, 0}, {3, 0}}));
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"\"a\" \"b\""_s, u"\""_s, u"\""_s)),
              listText(QVRangeList {{1, 1}, {5, 1}}));
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"(a) \\(b) (c)"_s, u"("_s, u")"_s, false,
                                                     QVStringMatchOptionSkipEscaped)),
              listText(QVRangeList {{1, 1}, {10, 1}}));
    EXPECT_EQ(listText(QVString::rangesBetweenString(u"(a)(b)"_s, u"("_s, u")"_s, false, 0, 0, QVMakeRange(1, 5))),
              listText(QVRangeList {{4, 1}}));
    EXPECT_FALSE(QVString::rangesBetweenString(u"no brackets"_s, u"("_s, u")"_s).has_value());
    EXPECT_FALSE(QVString::rangesBetweenString(u"(a)"_s, u""_s, u")"_s).has_value());
    EXPECT_FALSE(QVString::rangesBetweenString(u"(a)"_s, u"("_s, u")"_s, false, 0, 0, QVMakeRange(0, 0)).has_value());

    EXPECT_EQ(QVString::substringBetweenString(u"a(bc)d"_s, u"("_s, u")"_s), u"bc"_s);
    EXPECT_EQ(QVString::substringBetweenString(u"a(bc)d"_s, u"("_s, u")"_s, true), u"(bc)"_s);
    EXPECT_EQ(QVString::substringBetweenString(u"x\u00AB\U0001F600\u00BBy"_s, u"\u00AB"_s, u"\u00BB"_s),
              u"\U0001F600"_s);
    const QString empty = QVString::substringBetweenString(u"()"_s, u"("_s, u")"_s);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isNull());
    EXPECT_TRUE(QVString::substringBetweenString(u"a(bc"_s, u"("_s, u")"_s).isNull());
}

// ---- Range tests -----------------------------------------------------------

TEST(QVStringAdditionsTest, PrecededAndFollowed)
{
    const std::optional<QVCharacterSet> none;
    const QVCharacterSet punctuation = QVCharacterSet::punctuationCharacterSet();
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        QString preceding, following;
        std::optional<QVCharacterSet> precedingSet, followingSet;
        QVStringCompareOptions options;
        bool all, any, noneOf;
        QVRange reference;
    };
    const Row rows[] = {
        {"both strings", u"[x]"_s, {1, 1}, u"["_s, u"]"_s, none, none, 0, true, true, false, {0, 3}},
        {"only the preceding string", u"[x)"_s, {1, 1}, u"["_s, u"]"_s, none, none, 0, false, true, false, {0, 2}},
        {"only the following string", u"(x]"_s, {1, 1}, u"["_s, u"]"_s, none, none, 0, false, true, false, {1, 2}},
        {"neither string", u"(x)"_s, {1, 1}, u"["_s, u"]"_s, none, none, 0, false, false, true, {1, 1}},
        {"no following string asked", u"[x)"_s, {1, 1}, u"["_s, QString(), none, none, 0, true, true, false, {0, 2}},
        {"preceding string longer than the location",
         u"x]"_s,
         {0, 1},
         u"["_s,
         u"]"_s,
         none,
         none,
         0,
         false,
         true,
         false,
         {0, 2}},
        {"following string past the end",
         u"[x"_s,
         {1, 1},
         QString(),
         u"]"_s,
         none,
         none,
         0,
         false,
         false,
         true,
         {1, 1}},
        {"an empty string is given but never found",
         u"ax"_s,
         {1, 1},
         u""_s,
         QString(),
         none,
         none,
         0,
         false,
         false,
         true,
         {1, 1}},
        {"longer strings", u"<!--x-->"_s, {4, 1}, u"<!--"_s, u"-->"_s, none, none, 0, true, true, false, {0, 8}},
        {"case-insensitive",
         u"AxB"_s,
         {1, 1},
         u"a"_s,
         u"b"_s,
         none,
         none,
         QVCaseInsensitiveSearch,
         true,
         true,
         false,
         {0, 3}},
        {"backwards and anchored are cleared",
         u"[x]"_s,
         {1, 1},
         u"["_s,
         u"]"_s,
         none,
         none,
         QVBackwardsSearch | QVAnchoredSearch,
         true,
         true,
         false,
         {0, 3}},
        {"emoji",
         u"\U0001F600x\U0001F600"_s,
         {2, 1},
         u"\U0001F600"_s,
         u"\U0001F600"_s,
         none,
         none,
         0,
         true,
         true,
         false,
         {0, 5}},
        {"character sets",
         u" x,"_s,
         {1, 1},
         QString(),
         QString(),
         whitespace(),
         punctuation,
         0,
         true,
         true,
         false,
         {0, 3}},
        {"preceding set fails",
         u"ax,"_s,
         {1, 1},
         QString(),
         QString(),
         whitespace(),
         punctuation,
         0,
         false,
         true,
         false,
         {1, 2}},
        {"nothing before the range",
         u"x "_s,
         {0, 1},
         QString(),
         QString(),
         whitespace(),
         none,
         0,
         false,
         false,
         true,
         {0, 1}},
        {"only the character next to the range counts",
         u" ax"_s,
         {2, 1},
         QString(),
         QString(),
         whitespace(),
         none,
         0,
         false,
         false,
         true,
         {2, 1}},
        {"set member outside the BMP",
         u"\U0001F600x"_s,
         {2, 1},
         QString(),
         QString(),
         QVCharacterSet::characterSetWithRange(0x1F600, 1),
         none,
         0,
         true,
         true,
         false,
         {0, 3}},
        {"strings win over sets", u"[x "_s, {1, 1}, u"["_s, QString(), none, punctuation, 0, true, true, false, {0, 2}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRangeTestOperation operations[] = {QVRangeTestAll, QVRangeTestAny, QVRangeTestNone};
        const bool expected[] = {row.all, row.any, row.noneOf};
        for (int i = 0; i < 3; ++i) {
            SCOPED_TRACE(i);
            QVRange reference = NF;
            EXPECT_EQ(QVString::isRangePrecededAndFollowed(row.text, row.range, row.preceding, row.following,
                                                           row.precedingSet, row.followingSet, row.options,
                                                           operations[i], &reference),
                      expected[i]);
            EXPECT_EQ(reference, row.reference);
        }
    }

    EXPECT_TRUE(QVString::isRangePrecededByString(u"[x]"_s, QVMakeRange(1, 1), u"["_s, u"]"_s));
    EXPECT_FALSE(QVString::isRangePrecededByString(u"[x]"_s, QVMakeRange(1, 1), u"("_s, u"]"_s));
    EXPECT_TRUE(QVString::isRangePrecededByCharacterSet(u" x "_s, QVMakeRange(1, 1), whitespace(), whitespace()));
    EXPECT_TRUE(QVString::isRangePrecededByCharacterSet(u" x"_s, QVMakeRange(1, 1), whitespace(), std::nullopt));
}

TEST(QVStringAdditionsTest, PrecededAndFollowedNeutralAnswers)
{
    const QString text = u"[x]"_s;
    QVRange reference = QVMakeRange(7, 7);
    // Empty and not-found ranges, even past the end, are answered before any check.
    EXPECT_FALSE(QVString::isRangePrecededByString(text, QVMakeRange(1, 0), u"["_s, u"]"_s, 0, &reference));
    EXPECT_FALSE(QVString::isRangePrecededByString(text, QVMakeRange(9, 0), u"["_s, u"]"_s));
    EXPECT_FALSE(QVString::isRangePrecededByString(text, NF, u"["_s, u"]"_s));
    EXPECT_FALSE(QVString::isRangePrecededByString(text, QVMakeRange(QVNotFound, 2), u"["_s, u"]"_s));
    EXPECT_EQ(reference, QVMakeRange(7, 7));
    // No string and no set: nothing to test, false for every operation.
    for (QVRangeTestOperation operation : {QVRangeTestAll, QVRangeTestAny, QVRangeTestNone}) {
        EXPECT_FALSE(QVString::isRangePrecededAndFollowed(text, QVMakeRange(1, 1), QString(), QString(), std::nullopt,
                                                          std::nullopt, 0, operation));
    }
    // The range may reach the end exactly.
    EXPECT_TRUE(QVString::isRangePrecededByString(text, QVMakeRange(1, 2), u"["_s, QString()));
}

TEST(QVStringAdditionsTest, PrecededAndFollowedProgrammingErrors)
{
    EXPECT_DEATH(QVString::isRangePrecededByString(u"[x]"_s, QVMakeRange(2, 2), u"["_s, u"]"_s),
                 "Condition not satisfied: NSMaxRange\\(range\\) <= self.length");
    EXPECT_DEATH(QVString::isRangePrecededByCharacterSet(u"ab"_s, QVMakeRange(1, ~0ULL), whitespace(), std::nullopt),
                 "Condition not satisfied: NSMaxRange\\(range\\) <= self.length");
    EXPECT_DEATH(QVString::isRangePrecededAndFollowed(u"[x]"_s, QVMakeRange(1, 1), u"["_s, QString(), std::nullopt,
                                                      std::nullopt, 0, QVRangeTestOperation(3)),
                 "Condition not satisfied: hasValidOption");
}

TEST(QVStringAdditionsTest, EscapedRanges)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        bool escaped;
    };
    const Row rows[] = {
        {"one backslash", u"\\x"_s, {1, 1}, true},
        {"two backslashes", u"\\\\x"_s, {2, 1}, false},
        {"three backslashes", u"\\\\\\x"_s, {3, 1}, true},
        {"backslash after other text", u"a\\x"_s, {2, 1}, true},
        {"backslash not next to the range", u"\\ax"_s, {2, 1}, false},
        {"nothing before", u"x"_s, {0, 1}, false},
        {"empty range", u"\\x"_s, {1, 0}, false},
        {"not-found range", u"\\x"_s, NF, false},
        {"emoji escaped", u"\\\U0001F600"_s, {1, 2}, true},
        {"range of several characters", u"a\\\\\\bcd"_s, {4, 3}, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::isRangeDelimited(row.text, row.range), row.escaped);
    }
    EXPECT_TRUE(QVString::isRangeDelimitedByString(u"%x"_s, QVMakeRange(1, 1), u"%"_s));
    EXPECT_FALSE(QVString::isRangeDelimitedByString(u"%%x"_s, QVMakeRange(2, 1), u"%"_s));
    EXPECT_FALSE(QVString::isRangeDelimitedByString(u"%x"_s, QVMakeRange(1, 1), u""_s));
    EXPECT_TRUE(QVString::isRangeDelimitedByString(u"Ex"_s, QVMakeRange(1, 1), u"e"_s, QVCaseInsensitiveSearch));
    // The run is measured in code units: one two-unit delimiter is an even run.
    EXPECT_FALSE(QVString::isRangeDelimitedByString(u"abx"_s, QVMakeRange(2, 1), u"ab"_s));
}

TEST(QVStringAdditionsTest, RangesBeforeAfterAndSafeRanges)
{
    const QString text = u"abcdef"_s;
    EXPECT_EQ(QVString::rangeBeforeRange(text, QVMakeRange(2, 2)), QVMakeRange(0, 2));
    EXPECT_EQ(QVString::rangeBeforeRange(text, QVMakeRange(0, 3)), QVMakeRange(0, 0));
    EXPECT_EQ(QVString::rangeBeforeRange(text, NF), QVMakeRange(0, 6));

    struct AfterRow
    {
        const char *name;
        QVRange range, after;
    };
    const AfterRow afterRows[] = {
        {"inside", {2, 2}, {4, 2}},
        {"reaching the end", {2, 4}, {6, 0}},
        {"empty at the end", {6, 0}, {6, 0}},
        {"not found", NF, {6, 0}},
        {"past the end", {5, 5}, {6, 0}},
        {"starting past the end", {10, 0}, {6, 0}},
        {"wrapping maximum", {2, ~0ULL}, {6, 0}},
    };
    for (const AfterRow &row : afterRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::rangeAfterRange(text, row.range), row.after);
    }

    EXPECT_FALSE(QVString::isCharacterIndexValid(u""_s, 0));
    EXPECT_TRUE(QVString::isCharacterIndexValid(u"a"_s, 0));
    EXPECT_FALSE(QVString::isCharacterIndexValid(u"a"_s, 1));
    EXPECT_FALSE(QVString::isCharacterIndexValid(u"a"_s, QVNotFound));

    struct SafeRow
    {
        const char *name;
        QVRange range;
        quint64 count;
        QVRange safe, left, right;
    };
    const SafeRow safeRows[] = {
        {"inside", {3, 1}, 2, {3, 1}, {1, 2}, {4, 2}},        {"too far left", {3, 1}, 4, {3, 1}, NF, NF},
        {"nothing asked", {3, 1}, 0, {3, 1}, {3, 0}, {4, 0}}, {"whole text", {0, 6}, 0, {0, 6}, {0, 0}, {6, 0}},
        {"at the end", {6, 0}, 1, {6, 0}, {5, 1}, NF},        {"past the end", {5, 2}, 1, NF, {4, 1}, NF},
        {"starting past the end", {10, 0}, 1, NF, NF, NF},    {"not found", NF, 1, NF, NF, NF},
        {"wrapping maximum", {~0ULL, 2}, 1, NF, NF, NF},
    };
    for (const SafeRow &row : safeRows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::safeRangeFromRange(text, row.range), row.safe);
        EXPECT_EQ(QVString::safeRangeLeft(text, row.count, row.range), row.left);
        EXPECT_EQ(QVString::safeRangeRight(text, row.count, row.range), row.right);
    }
}

TEST(QVStringAdditionsTest, EnsureComposedCharacterRanges)
{
    struct Row
    {
        const char *name;
        QVRangeList ranges, expected;
        bool unchanged;
    };
    const Row rows[] = {
        {"whole characters", {{0, 1}, {1, 2}, {3, 2}, {5, 4}}, {{0, 1}, {1, 2}, {3, 2}, {5, 4}}, true},
        {"half a surrogate pair", {{0, 1}, {2, 1}}, {{0, 1}, {1, 2}}, false},
        {"a letter without its mark", {{3, 1}}, {{3, 2}}, false},
        {"half a flag", {{6, 1}}, {{5, 4}}, false},
        {"empty range inside a character", {{4, 0}, {7, 0}}, {{3, 0}, {5, 0}}, false},
        {"empty ranges at boundaries", {{0, 0}, {9, 0}}, {{0, 0}, {9, 0}}, true},
        {"later ranges change", {{0, 1}, {1, 2}, {8, 1}}, {{0, 1}, {1, 2}, {5, 4}}, false},
        {"not found and past the end stay", {NF, {8, 5}, {12, 0}}, {NF, {8, 5}, {12, 0}}, true},
        {"empty list", {}, {}, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRangeList widened = QVString::ensureComposedCharacterRanges(mixed, row.ranges);
        EXPECT_EQ(widened, row.expected);
        // Nothing changed: the very same list comes back, nothing allocated.
        if (!row.ranges.isEmpty()) {
            EXPECT_EQ(widened.isSharedWith(row.ranges), row.unchanged);
        }
    }
}

TEST(QVStringAdditionsTest, ComposedSubstrings)
{
    EXPECT_EQ(QVString::composedSubstringWithRange(mixed, QVMakeRange(2, 2)), u"\U0001F600e\u0301"_s);
    EXPECT_EQ(QVString::composedSubstringWithRange(mixed, QVMakeRange(7, 10)), u"\U0001F1EB\U0001F1F7"_s);
    EXPECT_EQ(QVString::composedSubstringWithRange(mixed, QVMakeRange(0, 1)), u"a"_s);
    EXPECT_TRUE(QVString::composedSubstringWithRange(mixed, QVMakeRange(10, 1)).isNull());
    EXPECT_TRUE(QVString::composedSubstringWithRange(mixed, NF).isNull());
    const QString emptyRange = QVString::composedSubstringWithRange(mixed, QVMakeRange(4, 0));
    EXPECT_TRUE(emptyRange.isEmpty());
    EXPECT_FALSE(emptyRange.isNull());

    EXPECT_EQ(QVString::composedSubstringAtIndex(mixed, 0), u"a"_s);
    EXPECT_EQ(QVString::composedSubstringAtIndex(mixed, 2), u"\U0001F600"_s);
    EXPECT_EQ(QVString::composedSubstringAtIndex(mixed, 4), u"e\u0301"_s);
    EXPECT_EQ(QVString::composedSubstringAtIndex(mixed, 8), u"\U0001F1EB\U0001F1F7"_s);
    EXPECT_TRUE(QVString::composedSubstringAtIndex(mixed, 9).isNull());
    EXPECT_TRUE(QVString::composedSubstringAtIndex(u""_s, 0).isNull());

    EXPECT_EQ(QVString::composedSubstringFromIndex(mixed, 4), u"e\u0301\U0001F1EB\U0001F1F7"_s);
    EXPECT_EQ(QVString::composedSubstringFromIndex(mixed, 0), mixed);
    EXPECT_EQ(QVString::composedSubstringFromIndex(mixed, 9), u""_s);
    EXPECT_TRUE(QVString::composedSubstringFromIndex(mixed, 10).isNull());

    EXPECT_EQ(QVString::composedSubstringToIndex(mixed, 2), u"a\U0001F600"_s);
    EXPECT_EQ(QVString::composedSubstringToIndex(mixed, 4), u"a\U0001F600e\u0301"_s);
    EXPECT_EQ(QVString::composedSubstringToIndex(mixed, 0), u""_s);
    EXPECT_EQ(QVString::composedSubstringToIndex(mixed, 9), mixed);
    EXPECT_TRUE(QVString::composedSubstringToIndex(mixed, 10).isNull());
}

TEST(QVStringAdditionsTest, SubstringEnumerations)
{
    const QString words = u"One two, three"_s;
    EXPECT_EQ(QVString::substringsEnumeratedByOptions(words, QVStringEnumerationByWords),
              (QStringList {u"One"_s, u"two"_s, u"three"_s}));
    // The substrings are produced even when the options say they are not needed.
    EXPECT_EQ(
        QVString::substringsEnumeratedByOptions(
            words, QVStringEnumerationByWords | QVStringEnumerationSubstringNotRequired | QVStringEnumerationReverse),
        (QStringList {u"three"_s, u"two"_s, u"One"_s}));
    EXPECT_EQ(QVString::substringsEnumeratedByOptions(words, QVStringEnumerationByWords, QVMakeRange(4, 100)),
              (QStringList {u"two"_s, u"three"_s}));
    EXPECT_EQ(QVString::substringsEnumeratedByOptions(mixed, QVStringEnumerationByComposedCharacterSequences),
              (QStringList {u"a"_s, u"\U0001F600"_s, u"e\u0301"_s, u"\U0001F1EB\U0001F1F7"_s}));
    EXPECT_TRUE(
        QVString::substringsEnumeratedByOptions(words, QVStringEnumerationByWords, QVMakeRange(20, 1)).isEmpty());

    EXPECT_EQ(QVString::countOfSubstringsEnumeratedByOptions(words, QVStringEnumerationByWords), 3u);
    EXPECT_EQ(QVString::countOfSubstringsEnumeratedByOptions(mixed, QVStringEnumerationByComposedCharacterSequences),
              4u);
    EXPECT_EQ(QVString::countOfSubstringsEnumeratedByOptions(u"a\nb\nc"_s, QVStringEnumerationByLines), 3u);
    EXPECT_EQ(QVString::countOfSubstringsEnumeratedByOptions(u""_s, QVStringEnumerationByLines), 0u);
    EXPECT_EQ(QVString::countOfSubstringsEnumeratedByOptions(words, QVStringEnumerationByWords, NF), 0u);

    EXPECT_TRUE(QVString::hasMultipleSubstringsEnumeratedByOptions(words, QVStringEnumerationByWords));
    EXPECT_FALSE(
        QVString::hasMultipleSubstringsEnumeratedByOptions(words, QVStringEnumerationByWords, QVMakeRange(0, 3)));
    EXPECT_FALSE(QVString::hasMultipleSubstringsEnumeratedByOptions(u"\U0001F1EB\U0001F1F7"_s,
                                                                    QVStringEnumerationByComposedCharacterSequences));
}

TEST(QVStringAdditionsTest, MultiWordLineParagraphSentence)
{
    struct Row
    {
        const char *name;
        QString text;
        bool word, line, paragraph, sentence;
    };
    const Row rows[] = {
        {"empty", u""_s, false, false, false, false},
        {"one word", u"word"_s, false, false, false, false},
        {"two words", u"two words"_s, true, false, false, false},
        {"two sentences on one line", u"Hi there. Bye now."_s, true, false, false, true},
        {"two paragraphs", u"one\ntwo"_s, true, true, true, true},
        {"line separator keeps the paragraph", u"one\u2028two"_s, true, true, false, true},
        {"two words of another script", u"\u65E5\u672C\u8A9E \u0645\u0631\u062D\u0628\u0627"_s, true, false, false,
         false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::isMultiWord(row.text), row.word);
        EXPECT_EQ(QVString::isMultiLine(row.text), row.line);
        EXPECT_EQ(QVString::isMultiParagraph(row.text), row.paragraph);
        EXPECT_EQ(QVString::isMultiSentence(row.text), row.sentence);
    }
    const QString text = u"one two\nthree"_s;
    EXPECT_FALSE(QVString::isMultiWordInRange(text, QVMakeRange(0, 3)));
    EXPECT_TRUE(QVString::isMultiWordInRange(text, QVMakeRange(0, 7)));
    EXPECT_FALSE(QVString::isMultiLineInRange(text, QVMakeRange(0, 7)));
    EXPECT_TRUE(QVString::isMultiLineInRange(text, QVMakeRange(4, 9)));
    EXPECT_TRUE(QVString::isMultiParagraphInRange(text, QVMakeRange(4, 100)));
    EXPECT_FALSE(QVString::isMultiSentenceInRange(text, QVMakeRange(0, 3)));
    EXPECT_FALSE(QVString::isMultiWordInRange(text, NF));
}

TEST(QVStringAdditionsTest, LineAndParagraphRangesFromRanges)
{
    // Lines {0,3} "ab\n", {3,2} "c\u2028", {5,2} "d\n", {7,2} "ef"; the line
    // separator does not end a paragraph: {0,3}, {3,4}, {7,2}.
    const QString text = u"ab\nc\u2028d\nef"_s;
    struct Row
    {
        const char *name;
        QVRangeList ranges;
        quint64 options;
        QVRangeList lines, paragraphs;
    };
    const Row rows[] = {
        {"empty range inside a line", {{1, 0}}, 0, {{0, 3}}, {{0, 3}}},
        {"line separator ends a line only", {{4, 1}}, 0, {{3, 2}}, {{3, 4}}},
        {"range over a line break", {{1, 3}}, 0, {{0, 5}}, {{0, 7}}},
        {"unsorted ranges are sorted and merged", {{8, 1}, {0, 1}, {2, 1}}, 0, {{0, 3}, {7, 2}}, {{0, 3}, {7, 2}}},
        {"touching lines merge", {{0, 1}, {3, 1}}, 0, {{0, 5}}, {{0, 7}}},
        {"sort only keeps duplicates", {{1, 1}, {0, 1}}, 1, {{0, 3}, {0, 3}}, {{0, 3}, {0, 3}}},
        {"unusable ranges are left out, long ones clipped", {NF, {20, 1}, {7, 10}}, 0, {{7, 2}}, {{7, 2}}},
        {"none", {}, 0, {}, {}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::lineRangesFromRanges(text, row.ranges, row.options), row.lines);
        EXPECT_EQ(QVString::paragraphRangesFromRanges(text, row.ranges, row.options), row.paragraphs);
    }
}

TEST(QVStringAdditionsTest, TruncatingFromTheEnd)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 length, options;
        QString expected;
    };
    const Row rows[] = {
        {"shorter than wanted", u"abcdef"_s, 10, 0, u"abcdef"_s},
        {"exactly wanted", u"abcdef"_s, 6, 0, u"abcdef"_s},
        {"last three", u"abcdef"_s, 3, 0, u"def"_s},
        {"nothing wanted", u"abcdef"_s, 0, 0, u""_s},
        {"empty text", u""_s, 5, 1, u""_s},
        {"whole lines: cut moves to the next line", u"one\ntwo\nthree"_s, 7, 1, u"three"_s},
        {"whole lines: cut already at a line start", u"one\ntwo\nthree"_s, 9, 1, u"two\nthree"_s},
        {"whole lines: no later line break", u"abc def"_s, 3, 1, u"def"_s},
        {"whole lines: CR LF is one break", u"one\r\ntwo"_s, 6, 1, u"two"_s},
        {"whole lines: cut inside CR LF", u"one\r\ntwo"_s, 4, 1, u"two"_s},
        {"whole lines: paragraph separator", u"ab\u2029cd"_s, 4, 1, u"cd"_s},
        {"code units, not lines, without the option", u"one\ntwo"_s, 5, 0, u"e\ntwo"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::stringByTruncatingFromEndWithLength(row.text, row.length, row.options), row.expected);
    }
    const QString text(4, u'z');
    EXPECT_EQ(QVString::stringByTruncatingFromEndWithLength(text, 4).constData(), text.constData());
}

TEST(QVStringAdditionsTest, RepeatingStrings)
{
    EXPECT_EQ(QVString::stringByRepeatingString(u"ab"_s, 3), u"ababab"_s);
    EXPECT_EQ(QVString::stringByRepeatingString(u"x"_s, 1), u"x"_s);
    EXPECT_EQ(QVString::stringByRepeatingString(u"\U0001F600"_s, 2), u"\U0001F600\U0001F600"_s);
    // "Nothing" rather than "": a count of 0 or an empty string gives a null string.
    EXPECT_TRUE(QVString::stringByRepeatingString(u"ab"_s, 0).isNull());
    EXPECT_TRUE(QVString::stringByRepeatingString(u""_s, 5).isNull());
    EXPECT_TRUE(QVString::stringByRepeatingString(QString(), 5).isNull());

    QVLogCapture capture;
    EXPECT_TRUE(QVString::stringByRepeatingString(u"ab"_s, ~0ULL / 2).isNull());
    ASSERT_EQ(capture.lines().size(), 1);
    EXPECT_TRUE(capture.lines().first().startsWith(u"QVString::stringByRepeatingString: "_s));
    EXPECT_TRUE(capture.lines().first().endsWith(u"Fix this."_s));
}
