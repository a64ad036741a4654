#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVLog.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

// Readable failures: gtest finds these through the types' namespace.
void PrintTo(const QString &string, std::ostream *os)
{
    *os << '"' << string.toStdString() << '"';
}

void PrintTo(const QVRange &range, std::ostream *os)
{
    *os << QVRangeToString(range).toStdString();
}

namespace {

QVTextAttributes attrs(std::initializer_list<std::pair<QString, QVariant>> pairs)
{
    QVTextAttributes result;
    for (const auto &[name, value] : pairs)
        result.insert(name, value);
    return result;
}

struct Piece
{
    QVariant value;
    QVRange range;
    bool operator==(const Piece &) const = default;
};

std::vector<Piece> pieces(const QVAttributedString &string, const QString &name, QVRange range, QVAttributedStringEnumerationOptions options = {},
                          int stopAfter = -1)
{
    std::vector<Piece> result;
    string.enumerateAttribute(name, range, options, [&](const QVariant &value, QVRange piece, bool *stop) {
        result.push_back({value, piece});
        if (int(result.size()) == stopAfter)
            *stop = true;
    });
    return result;
}

void PrintTo(const Piece &piece, std::ostream *os)
{
    *os << QVDescription(piece.value).toStdString() << " " << QVRangeToString(piece.range).toStdString();
}

} // namespace

// ---------------------------------------------------------------------------
// Construction, description, merging of stretches

TEST(QVAttributedStringTest, ConstructionAndDescription)
{
    EXPECT_EQ(QVAttributedString().description(), u""_s);
    EXPECT_TRUE(QVAttributedString().isEmpty());
    // An empty string has no stretches, even when given attributes.
    EXPECT_EQ(QVAttributedString(QString(), attrs({{u"a"_s, 1}})).description(), u""_s);
    EXPECT_EQ(QVAttributedString(u"abc"_s).description(), u"abc {0, 3} {}"_s);
    EXPECT_EQ(QVAttributedString(u"abc"_s, attrs({{u"b"_s, u"x"_s}, {u"a"_s, 1}})).description(),
              u"abc {0, 3} {a = 1; b = x; }"_s);
    // Invalid values are no values.
    EXPECT_EQ(QVAttributedString(u"abc"_s, attrs({{u"a"_s, QVariant()}})), QVAttributedString(u"abc"_s));
}

TEST(QVAttributedStringTest, StretchesMergeAfterEdits)
{
    struct Row
    {
        const char *name;
        std::function<void(QVAttributedString &)> edit;
        QString expected;
    };
    const QVariant one = 1;
    const Row rows[] = {
        {"add in the middle splits", [&](auto &s) { s.addAttribute(u"a"_s, one, {2, 3}); },
         u"abcdefghij {0, 2} {} {2, 3} {a = 1; } {5, 5} {}"_s},
        {"same value next to a stretch merges",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {2, 3});
             s.addAttribute(u"a"_s, one, {5, 2});
             s.addAttribute(u"a"_s, one, {0, 2});
         },
         u"abcdefghij {0, 7} {a = 1; } {7, 3} {}"_s},
        {"filling the gap merges three",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {0, 3});
             s.addAttribute(u"a"_s, one, {6, 4});
             s.addAttribute(u"a"_s, one, {3, 3});
         },
         u"abcdefghij {0, 10} {a = 1; }"_s},
        {"removing the difference merges",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {0, 10});
             s.addAttribute(u"b"_s, one, {4, 2});
             s.removeAttribute(u"b"_s, {0, 10});
         },
         u"abcdefghij {0, 10} {a = 1; }"_s},
        {"invalid value removes",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {0, 4});
             s.addAttribute(u"a"_s, QVariant(), {2, 8});
         },
         u"abcdefghij {0, 2} {a = 1; } {2, 8} {}"_s},
        {"null marker is a value",
         [&](auto &s) { s.addAttribute(u"a"_s, QVariant::fromValue(nullptr), {0, 1}); },
         u"abcdefghij {0, 1} {a = <null>; } {1, 9} {}"_s},
        {"set attributes replaces a whole span",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {1, 1});
             s.addAttribute(u"b"_s, one, {3, 1});
             s.addAttribute(u"c"_s, one, {5, 1});
             s.setAttributes({}, {0, 10});
         },
         u"abcdefghij {0, 10} {}"_s},
        {"set attributes equal to a neighbour merges",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {0, 3});
             s.setAttributes(attrs({{u"a"_s, 1}}), {3, 3});
         },
         u"abcdefghij {0, 6} {a = 1; } {6, 4} {}"_s},
        {"add attributes merges values",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {0, 5});
             s.addAttributes(attrs({{u"b"_s, 2}, {u"a"_s, QVariant()}}), {3, 4});
         },
         u"abcdefghij {0, 3} {a = 1; } {3, 4} {b = 2; } {7, 3} {}"_s},
        {"deleting the different middle merges",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {4, 2});
             s.deleteCharactersInRange({3, 4});
         },
         u"abchij {0, 6} {}"_s},
        {"deleting everything leaves no stretches",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {4, 2});
             s.deleteCharactersInRange({0, 10});
         },
         u""_s},
        {"inserting equal attributes merges",
         [&](auto &s) { s.insertAttributedString(QVAttributedString(u"XY"_s), 4); },
         u"abcdXYefghij {0, 12} {}"_s},
        {"empty ranges change nothing",
         [&](auto &s) {
             s.addAttribute(u"a"_s, one, {4, 0});
             s.setAttributes(attrs({{u"a"_s, 1}}), {10, 0});
             s.replaceCharactersInRange(QVRange{3, 0}, QString());
         },
         u"abcdefghij {0, 10} {}"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVAttributedString string(u"abcdefghij"_s);
        row.edit(string);
        EXPECT_EQ(string.description(), row.expected);
    }
}

// ---------------------------------------------------------------------------
// Reading: effective ranges and enumeration

TEST(QVAttributedStringTest, EffectiveRanges)
{
    // a=1 over [0, 6), b=1 over [2, 4): three stretches, one value of a.
    QVAttributedString string(u"abcdefgh"_s);
    string.addAttribute(u"a"_s, 1, {0, 6});
    string.addAttribute(u"b"_s, 1, {2, 2});

    QVRange range;
    EXPECT_EQ(string.attributesAtIndex(3, &range), attrs({{u"a"_s, 1}, {u"b"_s, 1}}));
    EXPECT_EQ(range, QVMakeRange(2, 2));
    EXPECT_EQ(string.attributesAtIndex(0, &range), attrs({{u"a"_s, 1}}));
    EXPECT_EQ(range, QVMakeRange(0, 2));
    EXPECT_EQ(string.attributesAtIndex(7, &range), QVTextAttributes());
    EXPECT_EQ(range, QVMakeRange(6, 2));
    EXPECT_EQ(string.attributesAtIndex(4, nullptr), attrs({{u"a"_s, 1}}));

    // One attribute's range spans the stretches where only others change.
    EXPECT_EQ(string.attributeAtIndex(u"a"_s, 5, &range), QVariant(1));
    EXPECT_EQ(range, QVMakeRange(0, 6));
    EXPECT_FALSE(string.attributeAtIndex(u"b"_s, 7, &range).isValid());
    EXPECT_EQ(range, QVMakeRange(4, 4));
    EXPECT_FALSE(string.attributeAtIndex(u"b"_s, 0, &range).isValid());
    EXPECT_EQ(range, QVMakeRange(0, 2));
    EXPECT_FALSE(string.attributeAtIndex(u"missing"_s, 3, &range).isValid());
    EXPECT_EQ(range, QVMakeRange(0, 8));

    // Limits clip, including a limit that reaches past the end.
    EXPECT_EQ(string.attributesAtIndex(3, &range, {3, 10}), attrs({{u"a"_s, 1}, {u"b"_s, 1}}));
    EXPECT_EQ(range, QVMakeRange(3, 1));
    EXPECT_EQ(string.attributeAtIndex(u"a"_s, 3, &range, {1, 3}), QVariant(1));
    EXPECT_EQ(range, QVMakeRange(1, 3));
    EXPECT_EQ(string.attributeAtIndex(u"a"_s, 3, &range, {0, 100}), QVariant(1));
    EXPECT_EQ(range, QVMakeRange(0, 6));
    // An index outside its limit has nothing around it.
    string.attributeAtIndex(u"a"_s, 3, &range, {5, 2});
    EXPECT_EQ(range, QVMakeRange(3, 0));

    // At or past the end: nothing, and an empty range at the index.
    const quint64 pastEnd[] = {8, 9, QVNotFound, ~0ULL};
    for (const quint64 index : pastEnd) {
        SCOPED_TRACE(index);
        EXPECT_TRUE(string.attributesAtIndex(index, &range).isEmpty());
        EXPECT_EQ(range, QVMakeRange(index, 0));
        EXPECT_FALSE(string.attributeAtIndex(u"a"_s, index, &range, {0, 8}).isValid());
        EXPECT_EQ(range, QVMakeRange(index, 0));
    }
    EXPECT_TRUE(QVAttributedString().attributesAtIndex(0, &range).isEmpty());
    EXPECT_EQ(range, QVMakeRange(0, 0));
}

TEST(QVAttributedStringTest, EnumerationMergesAndClips)
{
    QVAttributedString string(u"0123456789"_s);
    string.addAttribute(u"font"_s, u"Serif"_s, {0, 6});
    string.addAttribute(u"color"_s, u"red"_s, {1, 1});
    string.addAttribute(u"color"_s, u"blue"_s, {3, 1});
    string.addAttribute(u"color"_s, u"red"_s, {5, 3});

    // The font holds across the colour changes: one piece, not five.
    EXPECT_EQ(pieces(string, u"font"_s, {0, 10}),
              (std::vector<Piece>{{u"Serif"_s, {0, 6}}, {QVariant(), {6, 4}}}));
    EXPECT_EQ(pieces(string, u"font"_s, {2, 100}, QVAttributedStringEnumerationLongestEffectiveRangeNotRequired),
              (std::vector<Piece>{{u"Serif"_s, {2, 4}}, {QVariant(), {6, 4}}}));
    EXPECT_EQ(pieces(string, u"color"_s, {1, 6}),
              (std::vector<Piece>{{u"red"_s, {1, 1}},
                                  {QVariant(), {2, 1}},
                                  {u"blue"_s, {3, 1}},
                                  {QVariant(), {4, 1}},
                                  {u"red"_s, {5, 2}}}));
    EXPECT_EQ(pieces(string, u"nothing"_s, {0, 10}), (std::vector<Piece>{{QVariant(), {0, 10}}}));
    EXPECT_TRUE(pieces(string, u"font"_s, {4, 0}).empty());
    EXPECT_TRUE(pieces(string, u"font"_s, {10, 5}).empty());
    EXPECT_TRUE(pieces(string, u"font"_s, QVNotFoundRange()).empty());
    EXPECT_TRUE(pieces(QVAttributedString(), u"font"_s, {0, 1}).empty());

    std::vector<std::pair<QVTextAttributes, QVRange>> all;
    string.enumerateAttributes({4, 3}, {}, [&](const QVTextAttributes &attributes, QVRange range, bool *) {
        all.emplace_back(attributes, range);
    });
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0], std::make_pair(attrs({{u"font"_s, u"Serif"_s}}), QVMakeRange(4, 1)));
    EXPECT_EQ(all[1], std::make_pair(attrs({{u"font"_s, u"Serif"_s}, {u"color"_s, u"red"_s}}), QVMakeRange(5, 1)));
    EXPECT_EQ(all[2], std::make_pair(attrs({{u"color"_s, u"red"_s}}), QVMakeRange(6, 1)));
}

TEST(QVAttributedStringTest, ReverseEnumerationAndStop)
{
    QVAttributedString string(u"0123456789"_s);
    string.addAttribute(u"a"_s, 1, {2, 3});
    string.addAttribute(u"b"_s, 1, {3, 1}); // splits a's stretch; a's pieces must still merge
    string.addAttribute(u"a"_s, 2, {7, 1});

    EXPECT_EQ(pieces(string, u"a"_s, {0, 10}, QVAttributedStringEnumerationReverse),
              (std::vector<Piece>{{QVariant(), {8, 2}},
                                  {2, {7, 1}},
                                  {QVariant(), {5, 2}},
                                  {1, {2, 3}},
                                  {QVariant(), {0, 2}}}));
    EXPECT_EQ(pieces(string, u"a"_s, {3, 5}, QVAttributedStringEnumerationReverse),
              (std::vector<Piece>{{2, {7, 1}}, {QVariant(), {5, 2}}, {1, {3, 2}}}));
    // Stop ends at once, in either direction.
    EXPECT_EQ(pieces(string, u"a"_s, {0, 10}, {}, 2), (std::vector<Piece>{{QVariant(), {0, 2}}, {1, {2, 3}}}));
    EXPECT_EQ(pieces(string, u"a"_s, {0, 10}, QVAttributedStringEnumerationReverse, 1),
              (std::vector<Piece>{{QVariant(), {8, 2}}}));

    std::vector<QVRange> ranges;
    string.enumerateAttributes({0, 10}, QVAttributedStringEnumerationReverse,
                               [&](const QVTextAttributes &, QVRange range, bool *stop) {
                                   ranges.push_back(range);
                                   *stop = ranges.size() == 3;
                               });
    EXPECT_EQ(ranges, (std::vector<QVRange>{{8, 2}, {7, 1}, {5, 2}}));

    // The block may edit the string it enumerates; the walk sees the old value.
    int calls = 0;
    string.enumerateAttributes({0, 10}, {}, [&](const QVTextAttributes &, QVRange, bool *) {
        ++calls;
        string.setAttributedString(QVAttributedString());
    });
    EXPECT_EQ(calls, 7);
    EXPECT_TRUE(string.isEmpty());
}

// ---------------------------------------------------------------------------
// Editing text

TEST(QVAttributedStringTest, PlainReplacementInheritsAttributes)
{
    // "aaBBcc": a=1 over [0, 2), b=1 over [2, 4), nothing over [4, 6).
    QVAttributedString base(u"aaBBcc"_s);
    base.addAttribute(u"a"_s, 1, {0, 2});
    base.addAttribute(u"b"_s, 1, {2, 2});

    struct Row
    {
        const char *name;
        QVRange range;
        QString text;
        QString expected;
    };
    const Row rows[] = {
        {"insert at start takes the first character's", {0, 0}, u"X"_s,
         u"XaaBBcc {0, 3} {a = 1; } {3, 2} {b = 1; } {5, 2} {}"_s},
        {"insert in the middle takes the one before", {2, 0}, u"X"_s,
         u"aaXBBcc {0, 3} {a = 1; } {3, 2} {b = 1; } {5, 2} {}"_s},
        {"insert inside a stretch", {3, 0}, u"XY"_s, u"aaBXYBcc {0, 2} {a = 1; } {2, 4} {b = 1; } {6, 2} {}"_s},
        {"insert at the end takes the last", {6, 0}, u"X"_s, u"aaBBccX {0, 2} {a = 1; } {2, 2} {b = 1; } {4, 3} {}"_s},
        {"replace takes the first replaced", {1, 3}, u"XY"_s, u"aXYcc {0, 3} {a = 1; } {3, 2} {}"_s},
        {"replace from a stretch start", {2, 4}, u"X"_s, u"aaX {0, 2} {a = 1; } {2, 1} {b = 1; }"_s},
        {"replace everything", {0, 6}, u"new"_s, u"new {0, 3} {a = 1; }"_s},
        {"replace by nothing deletes", {1, 2}, QString(), u"aBcc {0, 1} {a = 1; } {1, 1} {b = 1; } {2, 2} {}"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVAttributedString string = base;
        string.replaceCharactersInRange(row.range, row.text);
        EXPECT_EQ(string.description(), row.expected);
    }

    // Into an empty string: no attributes to take.
    QVAttributedString empty;
    empty.replaceCharactersInRange(QVRange{0, 0}, u"abc"_s);
    EXPECT_EQ(empty.description(), u"abc {0, 3} {}"_s);
}

TEST(QVAttributedStringTest, AttributedReplacementBringsItsOwn)
{
    QVAttributedString base(u"aaBBcc"_s);
    base.addAttribute(u"b"_s, 1, {2, 2});
    QVAttributedString inserted(u"XY"_s, attrs({{u"b"_s, 1}}));
    inserted.addAttribute(u"x"_s, 1, {1, 1});

    QVAttributedString string = base;
    string.replaceCharactersInRange(QVRange{0, 1}, inserted);
    EXPECT_EQ(string.description(), u"XYaBBcc {0, 1} {b = 1; } {1, 1} {b = 1; x = 1; } {2, 1} {} {3, 2} {b = 1; } {5, 2} {}"_s);

    // Neighbours equal to the new text's ends merge with it.
    string = base;
    string.replaceCharactersInRange(QVRange{4, 0}, QVAttributedString(u"Z"_s, attrs({{u"b"_s, 1}})));
    EXPECT_EQ(string.description(), u"aaBBZcc {0, 2} {} {2, 3} {b = 1; } {5, 2} {}"_s);

    string = QVAttributedString();
    string.appendAttributedString(inserted);
    string.appendAttributedString(QVAttributedString());
    string.insertAttributedString(QVAttributedString(u"-"_s), 0);
    EXPECT_EQ(string.description(), u"-XY {0, 1} {} {1, 1} {b = 1; } {2, 1} {b = 1; x = 1; }"_s);

    // A string may be put into itself.
    string.appendAttributedString(string);
    EXPECT_EQ(string.string(), u"-XY-XY"_s);
    EXPECT_EQ(string.attributedSubstringFromRange({3, 3}), string.attributedSubstringFromRange({0, 3}));
    string.replaceCharactersInRange(QVRange{1, 4}, string);
    EXPECT_EQ(string.string(), u"--XY-XYY"_s);
    string.insertAttributedString(string, 8);
    EXPECT_EQ(string.string(), u"--XY-XYY--XY-XYY"_s);

    string.setAttributedString(inserted);
    EXPECT_EQ(string, inserted);
}

TEST(QVAttributedStringTest, SubstringsClipToTheText)
{
    QVAttributedString string(u"abcdef"_s);
    string.addAttribute(u"a"_s, 1, {1, 2});
    EXPECT_EQ(string.attributedSubstringFromRange({2, 3}).description(), u"cde {0, 1} {a = 1; } {1, 2} {}"_s);
    EXPECT_EQ(string.attributedSubstringFromRange({4, 100}).description(), u"ef {0, 2} {}"_s);
    EXPECT_EQ(string.attributedSubstringFromRange({0, 6}), string);
    EXPECT_TRUE(string.attributedSubstringFromRange({6, 0}).isEmpty());
    EXPECT_TRUE(string.attributedSubstringFromRange({7, 2}).isEmpty());
    EXPECT_TRUE(string.attributedSubstringFromRange(QVNotFoundRange()).isEmpty());
    EXPECT_TRUE(string.attributedSubstringFromRange({3, ~0ULL}).string() == u"def"_s);
}

TEST(QVAttributedStringTest, IndicesCountCodeUnits)
{
    // U+1F600 is two code units; "e" plus U+0301 is one character in two code units.
    const QString face = QString::fromUcs4(U"\U0001F600");
    ASSERT_EQ(face.size(), 2);
    QVAttributedString string(u"a"_s + face + u"e\u0301z"_s);
    ASSERT_EQ(string.length(), 6u);

    string.addAttribute(u"emoji"_s, true, {1, 2});
    string.addAttribute(u"accent"_s, true, {4, 1}); // only the combining mark
    EXPECT_EQ(string.description(),
              u"a"_s + face + u"e\u0301z {0, 1} {} {1, 2} {emoji = 1; } {3, 1} {} {4, 1} {accent = 1; } {5, 1} {}"_s);
    QVRange range;
    EXPECT_EQ(string.attributeAtIndex(u"emoji"_s, 2, &range), QVariant(true));
    EXPECT_EQ(range, QVMakeRange(1, 2));

    // Inserting between the surrogates is the caller's business: the code units are kept as given.
    string.replaceCharactersInRange(QVRange{2, 0}, u"|"_s);
    EXPECT_EQ(string.string().mid(1, 3), face.left(1) + u'|' + face.right(1));
    EXPECT_EQ(string.attributeAtIndex(u"emoji"_s, 2, &range), QVariant(true));
    EXPECT_EQ(range, QVMakeRange(1, 3));
    string.deleteCharactersInRange({2, 1});
    EXPECT_EQ(string.attributedSubstringFromRange({1, 2}).string(), face);
    string.deleteCharactersInRange({0, 3});
    EXPECT_EQ(string.description(), u"e\u0301z {0, 1} {} {1, 1} {accent = 1; } {2, 1} {}"_s);
}

// ---------------------------------------------------------------------------
// Misuse

TEST(QVAttributedStringTest, OutOfBoundsEditsLogAndChangeNothing)
{
    QVAttributedString base(u"abcdef"_s);
    base.addAttribute(u"a"_s, 1, {1, 2});

    struct Row
    {
        std::function<void(QVAttributedString &)> edit;
        QString line;
    };
    const QVRange past{5, 3};
    const Row rows[] = {
        {[&](auto &s) { s.replaceCharactersInRange(past, u"x"_s); },
         u"QVAttributedString::replaceCharactersInRange: range {5, 3} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.replaceCharactersInRange(QVRange{7, 0}, QVAttributedString(u"x"_s)); },
         u"QVAttributedString::replaceCharactersInRange: range {7, 0} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.replaceCharactersInRange(QVNotFoundRange(), u"x"_s); },
         u"QVAttributedString::replaceCharactersInRange: range {9223372036854775807, 0} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.deleteCharactersInRange({2, ~0ULL}); },
         u"QVAttributedString::deleteCharactersInRange: range {2, 18446744073709551615} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.insertAttributedString(QVAttributedString(u"x"_s), 7); },
         u"QVAttributedString::insertAttributedString: index 7 out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.setAttributes({}, past); },
         u"QVAttributedString::setAttributes: range {5, 3} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.addAttribute(u"b"_s, 2, past); },
         u"QVAttributedString::addAttribute: range {5, 3} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.addAttributes(attrs({{u"b"_s, 2}}), QVRange{6, 1}); },
         u"QVAttributedString::addAttributes: range {6, 1} out of bounds for length 6. Fix this."_s},
        {[&](auto &s) { s.removeAttribute(u"a"_s, QVRange{QVNotFound, 1}); },
         u"QVAttributedString::removeAttribute: range {9223372036854775807, 1} out of bounds for length 6. Fix this."_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.line.toStdString());
        QVAttributedString string = base;
        QVLogCapture capture;
        row.edit(string);
        EXPECT_EQ(capture.lines(), QStringList{row.line});
        EXPECT_EQ(string.description(), base.description());
    }

    // Edits at the very end are in bounds.
    QVLogCapture capture;
    QVAttributedString string = base;
    string.replaceCharactersInRange(QVRange{6, 0}, u"g"_s);
    string.deleteCharactersInRange({7, 0});
    string.addAttribute(u"b"_s, 1, {7, 0});
    EXPECT_TRUE(capture.lines().isEmpty());
    EXPECT_EQ(string.string(), u"abcdefg"_s);
}

// ---------------------------------------------------------------------------
// Value semantics

TEST(QVAttributedStringTest, CopiesAreIndependent)
{
    QVAttributedString original(u"shared"_s, attrs({{u"a"_s, 1}}));
    QVAttributedString copy = original;
    QVAttributedString moved = QVAttributedString(original);

    copy.addAttribute(u"b"_s, 2, {0, 3});
    EXPECT_EQ(original.description(), u"shared {0, 6} {a = 1; }"_s);
    copy.replaceCharactersInRange(QVRange{0, 6}, u"other"_s);
    EXPECT_EQ(original.string(), u"shared"_s);
    original.deleteCharactersInRange({0, 1});
    EXPECT_EQ(moved.string(), u"shared"_s);
    EXPECT_EQ(copy.string(), u"other"_s);

    // A failed edit of a copy leaves both as they were.
    QVAttributedString second = moved;
    {
        QVLogCapture capture;
        second.addAttribute(u"c"_s, 1, {0, 99});
    }
    EXPECT_EQ(second, moved);

    // A moved-from string is still a string.
    QVAttributedString source(u"moved"_s);
    QVAttributedString target = std::move(source);
    EXPECT_EQ(target.string(), u"moved"_s);
    source.appendAttributedString(QVAttributedString(u"again"_s));
    EXPECT_EQ(source.description(), u"again {0, 5} {}"_s);
    target = std::move(source);
    EXPECT_EQ(target.string(), u"again"_s);
    EXPECT_EQ(QVAttributedString().length(), 0u);

    // Values stored in a QVariant keep their value too.
    const QVariant stored = QVariant::fromValue(moved);
    moved.appendAttributedString(QVAttributedString(u"!"_s));
    EXPECT_EQ(stored.value<QVAttributedString>().string(), u"shared"_s);
}

TEST(QVAttributedStringTest, EqualityIgnoresHowStretchesWereBuilt)
{
    QVAttributedString byRanges(u"abcdef"_s);
    byRanges.addAttribute(u"a"_s, 1, {0, 2});
    byRanges.addAttribute(u"a"_s, 1, {2, 2});
    byRanges.addAttribute(u"b"_s, 1, {1, 1});
    byRanges.removeAttribute(u"b"_s, {0, 6});

    QVAttributedString byPieces(u"ab"_s, attrs({{u"a"_s, 1}}));
    byPieces.appendAttributedString(QVAttributedString(u"cd"_s, attrs({{u"a"_s, 1}})));
    byPieces.appendAttributedString(QVAttributedString(u"ef"_s));

    EXPECT_EQ(byRanges, byPieces);
    EXPECT_EQ(byRanges.description(), byPieces.description());

    QVAttributedString other = byPieces;
    other.addAttribute(u"a"_s, 2, {3, 1});
    EXPECT_NE(byRanges, other);
    other.addAttribute(u"a"_s, 1, {3, 1});
    EXPECT_EQ(byRanges, other);
    EXPECT_NE(byRanges, QVAttributedString(u"abcdeF"_s));
    EXPECT_NE(QVAttributedString(u"x"_s), QVAttributedString(u"x"_s, attrs({{u"a"_s, 1}})));
    EXPECT_EQ(QVAttributedString(), QVAttributedString(QString(), attrs({{u"a"_s, 1}})));
}

TEST(QVAttributedStringTest, ManyStretchesEditedInOrder)
{
    // Thousands of stretches, edited front to back and back to front, with text
    // edits among them; checked against the same content appended piece by piece.
    const int count = 3000;
    QVAttributedString string(QString(count * 2, u'x'));
    for (int i = 0; i < count; ++i)
        string.addAttribute(u"n"_s, i % 3, {quint64(i) * 2, 2});
    QVAttributedString expected;
    for (int i = 0; i < count; ++i)
        expected.appendAttributedString(QVAttributedString(u"xx"_s, attrs({{u"n"_s, i % 3}})));
    ASSERT_EQ(string, expected);

    // Back to front: each doubles one character, as replacements applied from the end do.
    for (int i = count - 1; i >= 0; --i)
        string.replaceCharactersInRange(QVRange{quint64(i) * 2, 1}, u"yy"_s);
    expected = QVAttributedString();
    for (int i = 0; i < count; ++i)
        expected.appendAttributedString(QVAttributedString(u"yyx"_s, attrs({{u"n"_s, i % 3}})));
    ASSERT_EQ(string, expected);
    QVRange range;
    EXPECT_EQ(string.attributeAtIndex(u"n"_s, 3 * 1234 + 2, &range), QVariant(1234 % 3));
    EXPECT_EQ(range, QVMakeRange(3 * 1234, 3));

    // Front to back over the existing stretches, then everything cleared at once.
    for (int i = 0; i < count; ++i)
        string.addAttribute(u"m"_s, true, {quint64(i) * 3 + 1, 1});
    EXPECT_EQ(string.attributesAtIndex(3 * 2999 + 1, &range), attrs({{u"n"_s, 2999 % 3}, {u"m"_s, true}}));
    EXPECT_EQ(range, QVMakeRange(3 * 2999 + 1, 1));
    string.setAttributes({}, {0, string.length()});
    EXPECT_EQ(string.description(), string.string() + u" {0, 9000} {}"_s);
    string.addAttribute(u"n"_s, 1, {10, 5});
    string.deleteCharactersInRange({0, 8990});
    EXPECT_EQ(string.description(), u"xyyxyyxyyx {0, 10} {}"_s);
}

// ---------------------------------------------------------------------------
// Random edits against a model that keeps one dictionary per code unit

namespace {

struct Model
{
    QString text;
    std::vector<QVTextAttributes> attributes;

    void replace(quint64 location, quint64 length, const QString &string, const std::vector<QVTextAttributes> &added)
    {
        text.replace(qsizetype(location), qsizetype(length), string);
        attributes.erase(attributes.begin() + qsizetype(location), attributes.begin() + qsizetype(location + length));
        attributes.insert(attributes.begin() + qsizetype(location), added.begin(), added.end());
    }
};

void expectMatches(const QVAttributedString &string, const Model &model, const QStringList &names)
{
    ASSERT_EQ(string.string(), model.text);
    const quint64 length = quint64(model.text.size());
    // Stretches are maximal: the model differs just outside each effective range.
    std::vector<quint64> starts(length);
    std::vector<quint64> ends(length);
    for (quint64 i = 0; i < length; ++i)
        starts[i] = i > 0 && model.attributes[i - 1] == model.attributes[i] ? starts[i - 1] : i;
    for (quint64 i = length; i-- > 0;)
        ends[i] = i + 1 < length && model.attributes[i + 1] == model.attributes[i] ? ends[i + 1] : i + 1;
    for (quint64 i = 0; i < length; ++i) {
        QVRange range;
        ASSERT_EQ(string.attributesAtIndex(i, &range), model.attributes[i]) << "index " << i;
        ASSERT_EQ(range, QVMakeRange(starts[i], ends[i] - starts[i])) << "index " << i;
    }
    for (const QString &name : names) {
        std::vector<Piece> expected;
        for (quint64 i = 0; i < length; ++i) {
            const QVariant value = model.attributes[i].value(name);
            if (!expected.empty() && expected.back().value == value)
                ++expected.back().range.length;
            else
                expected.push_back({value, {i, 1}});
        }
        ASSERT_EQ(pieces(string, name, {0, length}), expected) << name.toStdString();
        const std::vector<Piece> reversed(expected.rbegin(), expected.rend());
        ASSERT_EQ(pieces(string, name, {0, length}, QVAttributedStringEnumerationReverse), reversed)
            << name.toStdString();
        for (const Piece &piece : expected) {
            QVRange range;
            ASSERT_EQ(string.attributeAtIndex(name, QVMaxRange(piece.range) - 1, &range), piece.value);
            ASSERT_EQ(range, piece.range) << name.toStdString();
        }
    }
}

} // namespace

TEST(QVAttributedStringTest, RandomEditsMatchAPerCodeUnitModel)
{
    const QStringList names{u"a"_s, u"b"_s, u"c"_s};
    const QString alphabet = u"xyz\u00e9"_s + QString::fromUcs4(U"\U0001F600");
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](quint64 bound) { return bound == 0 ? 0 : quint64(random() % bound); };
        const auto randomValue = [&]() -> QVariant {
            switch (below(4)) {
            case 0:
                return QVariant();
            case 1:
                return 1;
            case 2:
                return 2;
            default:
                return u"s"_s;
            }
        };
        const auto randomAttributes = [&] {
            QVTextAttributes result;
            for (const QString &name : names) {
                const QVariant value = randomValue();
                if (value.isValid())
                    result.insert(name, value);
            }
            return result;
        };
        const auto randomText = [&](quint64 maxLength) {
            QString text;
            for (quint64 n = below(maxLength + 1); n > 0; --n)
                text += alphabet.mid(qsizetype(below(quint64(alphabet.size()))), 1);
            return text;
        };
        const auto randomRange = [&](quint64 length) {
            const quint64 location = below(length + 1);
            return QVMakeRange(location, below(length - location + 1));
        };

        QVAttributedString string;
        Model model;
        QVLogCapture capture;
        for (int step = 0; step < 400; ++step) {
            const quint64 length = quint64(model.text.size());
            const QVRange range = randomRange(length);
            const QVAttributedString before = string;
            switch (below(9)) {
            case 0: { // plain replacement
                const QString text = randomText(4);
                QVTextAttributes inherited;
                if (length > 0)
                    inherited = model.attributes[range.length > 0 || range.location == 0 ? range.location
                                                                                         : range.location - 1];
                string.replaceCharactersInRange(range, text);
                model.replace(range.location, range.length, text,
                              std::vector<QVTextAttributes>(size_t(text.size()), inherited));
                break;
            }
            case 1: { // attributed replacement, built piece by piece
                QVAttributedString piece;
                std::vector<QVTextAttributes> added;
                for (quint64 n = below(3); n > 0; --n) {
                    const QString text = randomText(3);
                    const QVTextAttributes attributes = randomAttributes();
                    piece.appendAttributedString(QVAttributedString(text, attributes));
                    added.insert(added.end(), size_t(text.size()), attributes);
                }
                string.replaceCharactersInRange(range, piece);
                model.replace(range.location, range.length, piece.string(), added);
                break;
            }
            case 2:
                string.deleteCharactersInRange(range);
                model.replace(range.location, range.length, QString(), {});
                break;
            case 3: { // a piece of itself
                QVRange source = randomRange(length);
                source.length = std::min<quint64>(source.length, 8);
                const QVAttributedString piece = string.attributedSubstringFromRange(source);
                const std::vector<QVTextAttributes> added(model.attributes.begin() + qsizetype(source.location),
                                                          model.attributes.begin() + qsizetype(QVMaxRange(source)));
                string.insertAttributedString(piece, range.location);
                model.replace(range.location, 0, piece.string(), added);
                break;
            }
            case 4: {
                const QVTextAttributes attributes = randomAttributes();
                string.setAttributes(attributes, range);
                for (quint64 i = range.location; i < QVMaxRange(range); ++i)
                    model.attributes[i] = attributes;
                break;
            }
            case 5: {
                const QString name = names[qsizetype(below(3))];
                const QVariant value = randomValue();
                string.addAttribute(name, value, range);
                for (quint64 i = range.location; i < QVMaxRange(range); ++i) {
                    if (value.isValid())
                        model.attributes[i].insert(name, value);
                    else
                        model.attributes[i].remove(name);
                }
                break;
            }
            case 6: {
                const QVTextAttributes attributes = randomAttributes();
                string.addAttributes(attributes, range);
                for (quint64 i = range.location; i < QVMaxRange(range); ++i)
                    model.attributes[i].insert(attributes);
                break;
            }
            case 7: {
                const QString name = names[qsizetype(below(3))];
                string.removeAttribute(name, range);
                for (quint64 i = range.location; i < QVMaxRange(range); ++i)
                    model.attributes[i].remove(name);
                break;
            }
            default: { // misuse changes nothing
                capture.clear();
                string.addAttribute(u"a"_s, 1, {length, 1});
                string.replaceCharactersInRange(QVRange{length + 1, 0}, u"x"_s);
                EXPECT_EQ(capture.lines().size(), 2);
                EXPECT_EQ(string, before);
                break;
            }
            }
            ASSERT_NO_FATAL_FAILURE(expectMatches(string, model, names)) << "step " << step;
            // Rebuilding the same content by pieces compares equal.
            QVAttributedString rebuilt;
            for (quint64 i = 0; i < quint64(model.text.size()); ++i)
                rebuilt.appendAttributedString(QVAttributedString(model.text.mid(qsizetype(i), 1), model.attributes[i]));
            ASSERT_EQ(rebuilt, string) << "step " << step;
            ASSERT_EQ(rebuilt.description(), string.description()) << "step " << step;
        }
    }
}
