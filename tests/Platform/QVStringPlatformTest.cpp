#include <QVKit/Platform/QVStringPlatform.h>

#include <QtCore/QRandomGenerator>
#include <QtCore/QTextBoundaryFinder>

#include <gtest/gtest.h>

#include <ostream>
#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;

void PrintTo(const QVRange &range, std::ostream *os)
{
    *os << QVRangeToString(range).toStdString();
}

void PrintTo(const QString &string, std::ostream *os)
{
    *os << '"' << string.toStdString() << '"';
}

namespace {

const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s; // 8 code units, one character
const QString flags = u"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"_s; // 🇩🇪🇫🇷: two characters of 4
const QString loneHigh = QString(QChar(0xD83D));
const QString loneLow = QString(QChar(0xDE00));

QString repeated(const QString &piece, int count)
{
    QString result;
    for (int i = 0; i < count; ++i)
        result += piece;
    return result;
}

struct Substring
{
    QString substring;
    QVRange range;
    QVRange enclosing;

    friend bool operator==(const Substring &, const Substring &) = default;
    friend void PrintTo(const Substring &s, std::ostream *os)
    {
        *os << '"' << s.substring.toStdString() << "\" " << QVRangeToString(s.range).toStdString() << ' '
            << QVRangeToString(s.enclosing).toStdString();
    }
};

std::vector<Substring> enumerate(const QString &text, QVStringEnumerationOptions options,
                                 QVRange range = QVMakeRange(0, ~0ULL))
{
    std::vector<Substring> items;
    QVString::enumerateSubstringsInRange(text, range, options,
                                         [&](const QString &substring, QVRange r, QVRange enclosing, bool *) {
                                             items.push_back({substring, r, enclosing});
                                         });
    return items;
}

std::vector<QString> substrings(const QString &text, QVStringEnumerationOptions options)
{
    std::vector<QString> result;
    for (const Substring &item : enumerate(text, options))
        result.push_back(item.substring);
    return result;
}

} // namespace

TEST(QVStringPlatformTest, ComposedCharacterAtIndex)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 index;
        QVRange expected;
    };
    const QString withFamily = u"a"_s + family + u"b"_s; // a{1,8}b, length 10
    const QString runOfIndicators = repeated(u"\U0001F1E9"_s, 51); // pairs, with one left over at the end
    const Row rows[] = {
        {"before the family", withFamily, 0, {0, 1}},
        {"family first unit", withFamily, 1, {1, 8}},
        {"family middle (ZWJ)", withFamily, 3, {1, 8}},
        {"family last unit", withFamily, 8, {1, 8}},
        {"after the family", withFamily, 9, {9, 1}},
        {"at length", withFamily, 10, {10, 0}},
        {"past length", withFamily, 11, {10, 0}},
        {"not found index", withFamily, QVNotFound, {10, 0}},
        {"empty text", u""_s, 0, {0, 0}},
        {"first flag", flags, 1, {0, 4}},
        {"second flag starts", flags, 4, {4, 4}},
        {"second flag last unit", flags, 7, {4, 4}},
        {"indicators pair from the start", runOfIndicators, 61, {60, 4}},
        {"indicators shifted by a prefix", u"x"_s + runOfIndicators, 61, {61, 4}},
        {"odd indicator left alone", runOfIndicators, 101, {100, 2}},
        {"combining acute", u"e\u0301x"_s, 1, {0, 2}},
        {"base of combining acute", u"e\u0301x"_s, 0, {0, 2}},
        {"after combining acute", u"e\u0301x"_s, 2, {2, 1}},
        {"long run of marks", u"a"_s + repeated(u"\u0301"_s, 300) + u"b"_s, 200, {0, 301}},
        {"hangul jamo L V T", u"\u1100\u1161\u11A8\uAC00"_s, 1, {0, 3}},
        {"hangul syllable after jamo", u"\u1100\u1161\u11A8\uAC00"_s, 3, {3, 1}},
        {"hangul LV plus T", u"\uAC00\u11A8"_s, 1, {0, 2}},
        {"CR LF at CR", u"a\r\nb"_s, 1, {1, 2}},
        {"CR LF at LF", u"a\r\nb"_s, 2, {1, 2}},
        {"CR before CR LF", u"\r\r\n"_s, 0, {0, 1}},
        {"devanagari conjunct", u"a \u0915\u094D\u0937\u093F b"_s, 4, {2, 4}},
        {"thai spacing vowel", u"x\u0E01\u0E33"_s, 2, {1, 2}},
        {"skin tone modifier", u"x\U0001F44D\U0001F3FDy"_s, 3, {1, 4}},
        {"lone high surrogate", loneHigh + u"a"_s, 0, {0, 1}},
        {"lone low surrogate", u"a"_s + loneLow, 1, {1, 1}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::rangeOfComposedCharacterSequenceAtIndex(row.text, row.index), row.expected);
    }
}

// The lookup classifies only a window around the index; on a mixed text every
// index must still agree with a finder run over the whole string. (Scripts
// that Qt tailors by script run, such as Devanagari and Thai, are left out:
// next to emoji the whole-string finder then breaks inside surrogate pairs;
// so are regional indicators, which Qt pairs wrongly after a pictograph and
// which have their own test below.)
TEST(QVStringPlatformTest, ComposedCharacterAgreesWithWholeStringFinder)
{
    const QString pieces[] = {u"a"_s,          u" "_s,      u"\u0301"_s, u"\u200D"_s, family,      u"\U0001F468"_s,
                              u"\U0001F3FD"_s, u"\r"_s,     u"\n"_s,     u"\u1100"_s, u"\u1161"_s, u"\uAC00"_s,
                              u"\u0600"_s,     u"\u65E5"_s, loneHigh,    loneLow,     u"\u00E9"_s, u"\u2764\uFE0F"_s};
    QRandomGenerator random(20240607);
    QString text;
    while (text.size() < 3000)
        text += pieces[random.bounded(int(std::size(pieces)))];

    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype clusterStart = 0;
    finder.toStart();
    int mismatches = 0;
    while (clusterStart < text.size() && mismatches < 5) {
        const qsizetype clusterEnd = finder.toNextBoundary();
        for (qsizetype i = clusterStart; i < clusterEnd; ++i) {
            const QVRange expected = QVMakeRange(quint64(clusterStart), quint64(clusterEnd - clusterStart));
            const QVRange actual = QVString::rangeOfComposedCharacterSequenceAtIndex(text, quint64(i));
            if (actual != expected) {
                ADD_FAILURE() << "index " << i << ": " << QVRangeToString(actual).toStdString() << " instead of "
                              << QVRangeToString(expected).toStdString();
                ++mismatches;
            }
        }
        clusterStart = clusterEnd;
    }

    // The enumeration, forwards and backwards, yields the same characters.
    std::vector<QVRange> forward, backward;
    QVString::enumerateSubstringsInRange(text, QVString::fullRange(text),
                                         QVStringEnumerationByComposedCharacterSequences,
                                         [&](const QString &, QVRange r, QVRange, bool *) { forward.push_back(r); });
    QVString::enumerateSubstringsInRange(
        text, QVString::fullRange(text), QVStringEnumerationByComposedCharacterSequences | QVStringEnumerationReverse,
        [&](const QString &, QVRange r, QVRange, bool *) { backward.insert(backward.begin(), r); });
    EXPECT_EQ(forward, backward);
    quint64 next = 0;
    for (const QVRange &r : forward) {
        ASSERT_EQ(r.location, next);
        ASSERT_EQ(QVString::rangeOfComposedCharacterSequenceAtIndex(text, r.location), r);
        next = QVMaxRange(r);
    }
    EXPECT_EQ(next, quint64(text.size()));
}

TEST(QVStringPlatformTest, ComposedCharactersForRange)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        QVRange expected;
    };
    const QString withFamily = u"a"_s + family + u"b"_s;
    const Row rows[] = {
        {"empty at a boundary", withFamily, {1, 0}, {1, 0}},
        {"empty inside a character", withFamily, {2, 0}, {1, 8}},
        {"end inside a character", withFamily, {0, 2}, {0, 9}},
        {"both edges inside", withFamily, {5, 2}, {1, 8}},
        {"whole string", withFamily, {0, 10}, {0, 10}},
        {"reaching past the end", withFamily, {9, 5}, {9, 1}},
        {"at the end", withFamily, {10, 0}, {10, 0}},
        {"past the end", withFamily, {12, 3}, {10, 0}},
        {"not found", withFamily, QVNotFoundRange(), {10, 0}},
        {"huge length", withFamily, {3, ~0ULL}, {1, 9}},
        {"flags, inside the second", flags, {5, 1}, {4, 4}},
        {"flags, across both", flags, {3, 2}, {0, 8}},
        {"empty text", u""_s, {0, 0}, {0, 0}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::rangeOfComposedCharacterSequencesForRange(row.text, row.range), row.expected);
    }
}

TEST(QVStringPlatformTest, RangeOfString)
{
    struct Row
    {
        const char *name;
        QString text;
        QString search;
        QVStringCompareOptions options;
        QVRange range; // {QVNotFound, 1} stands for the full range
        std::optional<QLocale> locale;
        QVRange expected;
    };
    const QVRange full = {QVNotFound, 1};
    const QVRange none = QVNotFoundRange();
    const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
    const Row rows[] = {
        {"plain", u"abcabc"_s, u"bc"_s, 0, full, {}, {1, 2}},
        {"plain literal", u"abcabc"_s, u"bc"_s, QVLiteralSearch, full, {}, {1, 2}},
        {"backwards", u"abcabc"_s, u"bc"_s, QVBackwardsSearch, full, {}, {4, 2}},
        {"anchored at start", u"abcabc"_s, u"ab"_s, QVAnchoredSearch, full, {}, {0, 2}},
        {"anchored misses", u"abcabc"_s, u"bc"_s, QVAnchoredSearch, full, {}, none},
        {"anchored backwards at end", u"abcabc"_s, u"bc"_s, QVAnchoredSearch | QVBackwardsSearch, full, {}, {4, 2}},
        {"anchored backwards misses", u"abcabc"_s, u"ab"_s, QVAnchoredSearch | QVBackwardsSearch, full, {}, none},
        {"within range", u"abcabc"_s, u"ab"_s, 0, {1, 5}, {}, {3, 2}},
        {"match crossing range end", u"abcabc"_s, u"bc"_s, 0, {2, 3}, {}, none},
        {"anchored at range start", u"abcabc"_s, u"ca"_s, QVAnchoredSearch, {2, 4}, {}, {2, 2}},
        {"case differs, sensitive", u"Straße"_s, u"STRASSE"_s, 0, full, {}, none},
        {"empty search", u"abc"_s, u""_s, 0, full, {}, none},
        {"null search", u"abc"_s, QString(), QVCaseInsensitiveSearch, full, {}, none},
        {"empty text", u""_s, u"a"_s, 0, full, {}, none},
        {"empty range", u"abc"_s, u"a"_s, 0, {0, 0}, {}, none},
        {"range past the end", u"abc"_s, u"c"_s, 0, {2, 5}, {}, none},
        {"range past the end, folding", u"abc"_s, u"c"_s, QVCaseInsensitiveSearch, {2, 5}, {}, none},
        {"range at not found", u"abc"_s, u"a"_s, 0, QVNotFoundRange(), {}, none},
        {"range overflowing", u"abc"_s, u"a"_s, 0, {1, ~0ULL}, {}, none},
        // Full case folding: ß is ss, and the range covers whole characters of the text.
        {"sharp s finds SS", u"Straße"_s, u"STRASSE"_s, QVCaseInsensitiveSearch, full, {}, {0, 6}},
        {"SS finds sharp s", u"DIE STRASSE"_s, u"straße"_s, QVCaseInsensitiveSearch, full, {}, {4, 7}},
        {"capital sharp s", u"\u1E9E"_s, u"ss"_s, QVCaseInsensitiveSearch, full, {}, {0, 1}},
        {"ss inside a word", u"Straße"_s, u"ss"_s, QVCaseInsensitiveSearch, full, {}, {4, 1}},
        {"half a sharp s", u"\u00DF"_s, u"s"_s, QVCaseInsensitiveSearch, full, {}, none},
        {"ligature fi", u"\uFB01x"_s, u"FIX"_s, QVCaseInsensitiveSearch, full, {}, {0, 2}},
        {"backwards folding", u"aXbxc"_s, u"x"_s, QVCaseInsensitiveSearch | QVBackwardsSearch, full, {}, {3, 1}},
        {"anchored backwards folding",
         u"xxstra\u00DFe"_s,
         u"STRASSE"_s,
         QVCaseInsensitiveSearch | QVBackwardsSearch | QVAnchoredSearch,
         full,
         {},
         {2, 6}},
        {"anchored backwards folding misses",
         u"abXc"_s,
         u"x"_s,
         QVCaseInsensitiveSearch | QVBackwardsSearch | QVAnchoredSearch,
         full,
         {},
         none},
        {"anchored folding misses", u"aX"_s, u"x"_s, QVCaseInsensitiveSearch | QVAnchoredSearch, full, {}, none},
        {"folding in range", u"XaXbX"_s, u"x"_s, QVCaseInsensitiveSearch, {1, 3}, {}, {2, 1}},
        // Turkish: I and ı, İ and i are the pairs.
        {"turkish dotted capital",
         u"D\u0130YARBAKIR"_s,
         u"diyarbak\u0131r"_s,
         QVCaseInsensitiveSearch,
         full,
         turkish,
         {0, 10}},
        {"turkish I is not i", u"ISTANBUL"_s, u"istanbul"_s, QVCaseInsensitiveSearch, full, turkish, none},
        {"without locale I is i", u"ISTANBUL"_s, u"istanbul"_s, QVCaseInsensitiveSearch, full, {}, {0, 8}},
        {"without locale dotless i stays",
         u"D\u0130YARBAKIR"_s,
         u"diyarbak\u0131r"_s,
         QVCaseInsensitiveSearch,
         full,
         {},
         none},
        // Diacritics are ignored after decomposition; ranges map back to the text.
        {"resume finds résumé",
         u"Mon r\u00E9sum\u00E9!"_s,
         u"resume"_s,
         QVDiacriticInsensitiveSearch,
         full,
         {},
         {4, 6}},
        {"decomposed text, marks included",
         u"re\u0301sume\u0301 x"_s,
         u"resume"_s,
         QVDiacriticInsensitiveSearch,
         full,
         {},
         {0, 8}},
        {"accented search", u"resume"_s, u"r\u00E9sum\u00E9"_s, QVDiacriticInsensitiveSearch, full, {}, {0, 6}},
        {"accents sensitive", u"r\u00E9sum\u00E9"_s, u"resume"_s, QVCaseInsensitiveSearch, full, {}, none},
        {"case and diacritics",
         u"R\u00C9SUM\u00C9"_s,
         u"resume"_s,
         QVCaseInsensitiveSearch | QVDiacriticInsensitiveSearch,
         full,
         {},
         {0, 6}},
        {"marks-only search", u"e\u0301"_s, u"\u0301"_s, QVDiacriticInsensitiveSearch, full, {}, none},
        {"kana voicing mark", u"\u304C"_s, u"\u304B"_s, QVDiacriticInsensitiveSearch, full, {}, {0, 1}},
        // Without the literal option, composed and decomposed forms are equivalent when folding.
        {"composed finds decomposed", u"caf\u00E9"_s, u"CAFE\u0301"_s, QVCaseInsensitiveSearch, full, {}, {0, 4}},
        {"decomposed finds composed", u"cafe\u0301"_s, u"CAF\u00C9"_s, QVCaseInsensitiveSearch, full, {}, {0, 5}},
        {"literal keeps forms apart",
         u"caf\u00E9"_s,
         u"CAFE\u0301"_s,
         QVCaseInsensitiveSearch | QVLiteralSearch,
         full,
         {},
         none},
        {"base letter is not the accented one", u"e\u0301"_s, u"E"_s, QVCaseInsensitiveSearch, full, {}, none},
        {"literal base letter", u"e\u0301"_s, u"E"_s, QVCaseInsensitiveSearch | QVLiteralSearch, full, {}, {0, 1}},
        {"hangul syllable and jamo", u"x\uAC01"_s, u"\u1100\u1161\u11A8"_s, QVCaseInsensitiveSearch, full, {}, {1, 1}},
        {"emoji folding", u"a"_s + family + u"b"_s, family + u"B"_s, QVCaseInsensitiveSearch, full, {}, {1, 9}},
        // Lone surrogates are characters of their own and never crash a search.
        {"lone low in text, plain", u"a"_s + loneHigh + u"b"_s + loneLow, loneLow, 0, full, {}, {3, 1}},
        {"lone low in text, folding",
         u"a"_s + loneHigh + u"b"_s + loneLow,
         loneLow,
         QVCaseInsensitiveSearch,
         full,
         {},
         {3, 1}},
        {"lone high search in a pair", u"\U0001F600"_s, loneHigh, QVDiacriticInsensitiveSearch, full, {}, none},
        {"pair cut by the range", u"\U0001F600"_s, loneHigh, QVCaseInsensitiveSearch, {0, 1}, {}, {0, 1}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRange range = row.range == full ? QVString::fullRange(row.text) : row.range;
        EXPECT_EQ(QVString::rangeOfString(row.text, row.search, row.options, range, row.locale), row.expected);
    }
    EXPECT_EQ(QVString::rangeOfString(u"abcabc"_s, u"c"_s, QVBackwardsSearch), QVMakeRange(5, 1));
}

TEST(QVStringPlatformTest, RangeOfCharacterFromSet)
{
    struct Row
    {
        const char *name;
        QString text;
        QVCharacterSet set;
        QVStringCompareOptions options;
        QVRange range; // {QVNotFound, 1} stands for the full range
        QVRange expected;
    };
    const QVRange full = {QVNotFound, 1};
    const QVRange none = QVNotFoundRange();
    const QVCharacterSet letters = QVCharacterSet::letterCharacterSet();
    const QVCharacterSet spaces = QVCharacterSet::whitespaceCharacterSet();
    const QVCharacterSet emoji = QVCharacterSet::characterSetWithCharactersInString(u"\U0001F600"_s);
    const QString text = u"ab \U0001F600 cd"_s; // the emoji is {3, 2}
    const Row rows[] = {
        {"first", text, spaces, 0, full, {2, 1}},
        {"surrogate pair is one character", text, emoji, 0, full, {3, 2}},
        {"backwards surrogate pair", text, emoji, QVBackwardsSearch, full, {3, 2}},
        {"backwards", text, letters, QVBackwardsSearch, full, {7, 1}},
        {"anchored", text, letters, QVAnchoredSearch, full, {0, 1}},
        {"anchored misses", text, spaces, QVAnchoredSearch, full, none},
        {"anchored backwards", text, letters, QVAnchoredSearch | QVBackwardsSearch, full, {7, 1}},
        {"anchored backwards misses", text, spaces, QVAnchoredSearch | QVBackwardsSearch, full, none},
        {"in range", text, letters, 0, {2, 5}, {6, 1}},
        {"none in range", text, letters, 0, {2, 4}, none},
        {"anchored at range start", text, emoji, QVAnchoredSearch, {3, 3}, {3, 2}},
        {"pair cut by the range", text, emoji, 0, {0, 4}, none},
        {"inverted set skips the pair", text, letters.invertedSet(), QVBackwardsSearch, {0, 6}, {5, 1}},
        {"lone surrogate as itself",
         u"a"_s + loneLow,
         QVCharacterSet::characterSetWithCharactersInString(loneLow),
         0,
         full,
         {1, 1}},
        {"empty text", u""_s, spaces, 0, {0, 0}, none},
        {"range past the end", text, letters, 0, {7, 2}, none},
        {"not found range", text, letters, 0, QVNotFoundRange(), none},
        {"absent", u"abc"_s, spaces, 0, full, none},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRange range = row.range == full ? QVString::fullRange(row.text) : row.range;
        EXPECT_EQ(QVString::rangeOfCharacterFromSet(row.text, row.set, row.options, range), row.expected);
    }
}

TEST(QVStringPlatformTest, EnumerateLinesAndParagraphs)
{
    const QString text = u"a\r\nb\n\nc\u2028d\u2029e\rf\u0085g"_s;
    const std::vector<Substring> lines = {
        {u"a"_s, {0, 1}, {0, 3}}, {u"b"_s, {3, 1}, {3, 2}},   {u""_s, {5, 0}, {5, 1}},    {u"c"_s, {6, 1}, {6, 2}},
        {u"d"_s, {8, 1}, {8, 2}}, {u"e"_s, {10, 1}, {10, 2}}, {u"f"_s, {12, 1}, {12, 2}}, {u"g"_s, {14, 1}, {14, 1}},
    };
    EXPECT_EQ(enumerate(text, QVStringEnumerationByLines), lines);

    const std::vector<Substring> paragraphs = {
        {u"a"_s, {0, 1}, {0, 3}},        {u"b"_s, {3, 1}, {3, 2}},   {u""_s, {5, 0}, {5, 1}},
        {u"c\u2028d"_s, {6, 3}, {6, 4}}, {u"e"_s, {10, 1}, {10, 2}}, {u"f"_s, {12, 1}, {12, 2}},
        {u"g"_s, {14, 1}, {14, 1}},
    };
    EXPECT_EQ(enumerate(text, QVStringEnumerationByParagraphs), paragraphs);

    std::vector<Substring> reversed(lines.rbegin(), lines.rend());
    EXPECT_EQ(enumerate(text, QVStringEnumerationByLines | QVStringEnumerationReverse), reversed);

    // A final line break does not start an empty last line; the range is clipped.
    EXPECT_EQ(enumerate(u"x\n"_s, QVStringEnumerationByLines), (std::vector<Substring> {{u"x"_s, {0, 1}, {0, 2}}}));
    EXPECT_EQ(enumerate(u"ab\ncd"_s, QVStringEnumerationByLines, {1, 100}),
              (std::vector<Substring> {{u"b"_s, {1, 1}, {1, 2}}, {u"cd"_s, {3, 2}, {3, 2}}}));
    EXPECT_TRUE(enumerate(u"ab"_s, QVStringEnumerationByLines, QVNotFoundRange()).empty());
    EXPECT_TRUE(enumerate(u""_s, QVStringEnumerationByLines).empty());
}

TEST(QVStringPlatformTest, EnumerationFlagsAndStop)
{
    const QString text = u"a"_s + family + u"e\u0301"_s + flags;
    const std::vector<QVRange> characters = {{0, 1}, {1, 8}, {9, 2}, {11, 4}, {15, 4}};
    for (const bool reverse : {false, true}) {
        SCOPED_TRACE(reverse ? "reverse" : "forwards");
        const QVStringEnumerationOptions options = QVStringEnumerationByComposedCharacterSequences
            | QVStringEnumerationSubstringNotRequired | (reverse ? quint64(QVStringEnumerationReverse) : 0);
        std::vector<QVRange> seen;
        bool allNull = true;
        QVString::enumerateSubstringsInRange(text, QVString::fullRange(text), options,
                                             [&](const QString &s, QVRange r, QVRange enclosing, bool *stop) {
                                                 allNull = allNull && s.isNull();
                                                 EXPECT_EQ(r, enclosing);
                                                 seen.push_back(r);
                                                 *stop = seen.size() == 2;
                                             });
        EXPECT_TRUE(allNull);
        const std::vector<QVRange> expected = reverse ? std::vector<QVRange> {characters[4], characters[3]}
                                                      : std::vector<QVRange> {characters[0], characters[1]};
        EXPECT_EQ(seen, expected);
    }

    // The stop flag also ends enumerations that look one item ahead (words) or collect (reverse).
    for (const QVStringEnumerationOptions options :
         {quint64(QVStringEnumerationByWords), quint64(QVStringEnumerationByWords | QVStringEnumerationReverse),
          quint64(QVStringEnumerationByLines | QVStringEnumerationReverse)}) {
        int calls = 0;
        QVString::enumerateSubstringsInRange(u"one two\nthree"_s, {0, 13}, options,
                                             [&](const QString &, QVRange, QVRange, bool *stop) {
                                                 ++calls;
                                                 *stop = true;
                                             });
        EXPECT_EQ(calls, 1) << options;
    }

    // A range cutting characters yields the pieces inside it.
    EXPECT_EQ(enumerate(text, QVStringEnumerationByComposedCharacterSequences, {5, 5}),
              (std::vector<Substring> {{text.mid(5, 4), {5, 4}, {5, 4}}, {u"e"_s, {9, 1}, {9, 1}}}));
    // Localized is accepted and changes nothing.
    EXPECT_EQ(enumerate(u"Grüße aus Köln"_s, QVStringEnumerationByWords | QVStringEnumerationLocalized),
              enumerate(u"Grüße aus Köln"_s, QVStringEnumerationByWords));
    // No block, no crash.
    QVString::enumerateSubstringsInRange(text, {0, 3}, QVStringEnumerationByWords, {});
}

TEST(QVStringPlatformTest, EnumerateWordsAndSentences)
{
    const QString german = u"Grüße, Herr Müller! Wie geht's?"_s;
    const std::vector<Substring> words = {
        {u"Grüße"_s, {0, 5}, {0, 7}}, {u"Herr"_s, {7, 4}, {7, 5}},     {u"Müller"_s, {12, 6}, {12, 8}},
        {u"Wie"_s, {20, 3}, {20, 4}}, {u"geht's"_s, {24, 6}, {24, 7}},
    };
    EXPECT_EQ(enumerate(german, QVStringEnumerationByWords), words);
    EXPECT_EQ(enumerate(german, QVStringEnumerationByWords | QVStringEnumerationReverse),
              std::vector<Substring>(words.rbegin(), words.rend()));
    // Inside a range: a word cut by the range start is cut, filler before the next word belongs to it.
    EXPECT_EQ(
        enumerate(german, QVStringEnumerationByWords, {2, 11}),
        (std::vector<Substring> {{u"üße"_s, {2, 3}, {2, 5}}, {u"Herr"_s, {7, 4}, {7, 5}}, {u"M"_s, {12, 1}, {12, 1}}}));

    // QTextBoundaryFinder keeps runs of katakana together; each kanji and
    // hiragana stands alone, and the ideographic full stop is no word.
    EXPECT_EQ(substrings(u"日本語のテキストです。"_s, QVStringEnumerationByWords),
              (std::vector<QString> {u"日"_s, u"本"_s, u"語"_s, u"の"_s, u"テキスト"_s, u"で"_s, u"す"_s}));
    EXPECT_EQ(substrings(u"-- 42, 3.5 \U0001F600 x_y"_s, QVStringEnumerationByWords),
              (std::vector<QString> {u"42"_s, u"3.5"_s, u"x_y"_s}));
    EXPECT_TRUE(enumerate(u" ,.! "_s, QVStringEnumerationByWords).empty());

    const QString prose = u"Hello there. How are you?\n\nFine."_s;
    EXPECT_EQ(enumerate(prose, QVStringEnumerationBySentences),
              (std::vector<Substring> {{u"Hello there."_s, {0, 12}, {0, 13}},
                                       {u"How are you?"_s, {13, 12}, {13, 14}},
                                       {u"Fine."_s, {27, 5}, {27, 5}}}));
    EXPECT_EQ(substrings(prose, QVStringEnumerationBySentences | QVStringEnumerationReverse),
              (std::vector<QString> {u"Fine."_s, u"How are you?"_s, u"Hello there."_s}));
}

TEST(QVStringPlatformTest, LineAndParagraphRanges)
{
    struct Row
    {
        const char *name;
        QString text;
        QVRange range;
        QVRange line;
        QVRange paragraph;
    };
    const QString text = u"ab\ncd\r\nef\n"_s; // lines {0,3} {3,4} {7,3}
    const QString separated = u"a\u2028b\u2029c"_s;
    const Row rows[] = {
        {"start", text, {0, 0}, {0, 3}, {0, 3}},
        {"inside first line", text, {1, 1}, {0, 3}, {0, 3}},
        {"empty after a break", text, {3, 0}, {3, 4}, {3, 4}},
        {"ending right after a break", text, {0, 3}, {0, 3}, {0, 3}},
        {"one past the break", text, {0, 4}, {0, 7}, {0, 7}},
        {"at the CR", text, {5, 0}, {3, 4}, {3, 4}},
        {"between CR and LF", text, {6, 0}, {3, 4}, {3, 4}},
        {"ending at the CR", text, {4, 2}, {3, 4}, {3, 4}},
        {"last line", text, {9, 1}, {7, 3}, {7, 3}},
        {"at the end after a break", text, {10, 0}, {10, 0}, {10, 0}},
        {"past the end", text, {20, 5}, {10, 0}, {10, 0}},
        {"not found range", text, QVNotFoundRange(), {10, 0}, {10, 0}},
        {"reaching past the end", text, {8, 100}, {7, 3}, {7, 3}},
        {"no break at the end", u"ab\ncd"_s, {5, 0}, {3, 2}, {3, 2}},
        {"empty text", u""_s, {0, 0}, {0, 0}, {0, 0}},
        {"line separator", separated, {0, 0}, {0, 2}, {0, 4}},
        {"after the line separator", separated, {2, 0}, {2, 2}, {0, 4}},
        {"after the paragraph separator", separated, {4, 1}, {4, 1}, {4, 1}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::lineRangeForRange(row.text, row.range), row.line);
        EXPECT_EQ(QVString::paragraphRangeForRange(row.text, row.range), row.paragraph);
    }
}

TEST(QVStringPlatformTest, CaseMapping)
{
    const QLocale turkish(QLocale::Turkish, QLocale::Turkey);
    const QLocale german(QLocale::German, QLocale::Germany);
    struct Row
    {
        const char *name;
        QString text;
        std::optional<QLocale> locale;
        QString upper;
        QString lower;
        QString capitalized;
    };
    const Row rows[] = {
        {"sharp s", u"straße"_s, {}, u"STRASSE"_s, u"straße"_s, u"Straße"_s},
        {"sharp s in German", u"straße"_s, german, u"STRASSE"_s, u"straße"_s, u"Straße"_s},
        {"sharp s first", u"ßig"_s, {}, u"SSIG"_s, u"ßig"_s, u"Ssig"_s},
        {"ligature", u"\uFB01ne"_s, {}, u"FINE"_s, u"\uFB01ne"_s, u"Fine"_s},
        {"digraph dz", u"\u01C6ungla"_s, {}, u"\u01C4UNGLA"_s, u"\u01C6ungla"_s, u"\u01C5ungla"_s},
        {"turkish i", u"istanbul ılık"_s, turkish, u"İSTANBUL ILIK"_s, u"istanbul ılık"_s, u"İstanbul Ilık"_s},
        {"turkish capitals", u"IŞIK İZMİR"_s, turkish, u"IŞIK İZMİR"_s, u"ışık izmir"_s, u"Işık İzmir"_s},
        {"i without locale", u"IŞIK"_s, {}, u"IŞIK"_s, u"işik"_s, u"Işik"_s},
        {"words and filler",
         u"  hello, wORLD! don't stop-me 3D"_s,
         {},
         u"  HELLO, WORLD! DON'T STOP-ME 3D"_s,
         u"  hello, world! don't stop-me 3d"_s,
         u"  Hello, World! Don't Stop-Me 3d"_s},
        {"combining mark stays", u"e\u0301lan"_s, {}, u"E\u0301LAN"_s, u"e\u0301lan"_s, u"E\u0301lan"_s},
        {"empty", u""_s, {}, u""_s, u""_s, u""_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::uppercaseString(row.text, row.locale), row.upper);
        EXPECT_EQ(QVString::lowercaseString(row.text, row.locale), row.lower);
        EXPECT_EQ(QVString::capitalizedString(row.text, row.locale), row.capitalized);
    }
}

TEST(QVStringPlatformTest, BackwardsSearchStaysInsideARangeThatEndsEarly)
{
    // Qt's own view search can look past the end of a view for one-unit needles.
    EXPECT_EQ(QVString::rangeOfString(u"a-a-a-a"_s, u"a"_s, QVBackwardsSearch, QVMakeRange(1, 5)), QVMakeRange(4, 1));
    EXPECT_EQ(QVString::rangeOfString(u"a-a-a-a"_s, u"a-"_s, QVBackwardsSearch, QVMakeRange(0, 5)), QVMakeRange(2, 2));
    EXPECT_EQ(QVString::rangeOfString(u"ab"_s, u"abc"_s, QVBackwardsSearch, QVMakeRange(0, 2)), QVNotFoundRange());
}

TEST(QVStringPlatformTest, FlagsPairFromTheStartOfTheirRunAfterAnEmoji)
{
    // 👍 🇫🇷 🇫🇷 x: Qt's own finder pairs the indicators one off after a pictograph.
    const QString text = u"\U0001F44D\U0001F1EB\U0001F1F7\U0001F1EB\U0001F1F7x"_s;
    const QVRange expected[]
        = {{0, 2}, {0, 2}, {2, 4}, {2, 4}, {2, 4}, {2, 4}, {6, 4}, {6, 4}, {6, 4}, {6, 4}, {10, 1}};
    for (qsizetype i = 0; i < text.size(); ++i)
        EXPECT_EQ(QVString::rangeOfComposedCharacterSequenceAtIndex(text, quint64(i)), expected[i]) << i;

    for (const bool reverse : {false, true}) {
        QVRangeList seen;
        QVString::enumerateSubstringsInRange(
            text, QVString::fullRange(text),
            QVStringEnumerationByComposedCharacterSequences
                | (reverse ? quint64(QVStringEnumerationReverse) : quint64(0)),
            [&](const QString &, QVRange range, QVRange, bool *) { seen.append(range); });
        QVRangeList wanted {{0, 2}, {2, 4}, {6, 4}, {10, 1}};
        if (reverse)
            std::reverse(wanted.begin(), wanted.end());
        EXPECT_EQ(seen, wanted);
    }
    // An odd indicator at the end of a run stands alone.
    const QString odd = u"\U0001F44D\U0001F1EB\U0001F1F7\U0001F1EB"_s;
    EXPECT_EQ(QVString::rangeOfComposedCharacterSequenceAtIndex(odd, 6), QVMakeRange(6, 2));
    EXPECT_EQ(QVString::rangeOfComposedCharacterSequencesForRange(odd, QVMakeRange(3, 1)), QVMakeRange(2, 4));
}
