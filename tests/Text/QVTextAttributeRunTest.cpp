#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Text/QVTextAttributeRun.h>

#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Runs = QList<QVTextAttributeRun>;

const QString Bold = u"bold"_s;
const QString Color = u"color"_s;
const QString Link = u"link"_s;

QVTextAttributeRun run(const QString &name, quint64 location, quint64 length, const QVariant &value = 1)
{
    return QVTextAttributeRun(name, value, QVMakeRange(location, length));
}

// "name{location, length}=value" per run: compares names, ranges, values and order at once.
std::string describe(const std::optional<Runs> &runs)
{
    if (!runs)
        return "nil";
    QStringList parts;
    for (const QVTextAttributeRun &run : *runs)
        parts.append(run.name() + QVRangeToString(run.range()) + u'=' + QVDescription(run.value()));
    return parts.join(u", "_s).toStdString();
}

} // namespace

TEST(QVTextAttributeRunTest, HashDecidesEqualityAndDescription)
{
    // Absent name and value count as 0, leaving the range's part alone.
    EXPECT_EQ(QVTextAttributeRun(u""_s, QVariant(), {3, 4}).hash(), quint64((3 * 5) ^ (4 * 7)));
    // Equality rests on the hash alone: these two collide.
    EXPECT_EQ(QVTextAttributeRun(QString(), QVariant(), {3, 4}), QVTextAttributeRun(QString(), QVariant(), {4, 1}));

    QVLogCapture capture;
    const QVariant same[][2] = {{700, 700}, {1, 1.0}, {1, true},
                                {QVariantList{1, u"a"_s}, QVariantList{1, u"a"_s}}};
    for (const auto &pair : same)
        EXPECT_EQ(run(Bold, 2, 3, pair[0]), run(Bold, 2, 3, pair[1])) << QVDescription(pair[0]).toStdString();
    const QVariant different[][2] = {{1, 1.5}, {QVariant(), QVariant::fromValue(nullptr)},
                                     {u"\u00e9"_s, u"e\u0301"_s}, {QVariantList{1}, QVariantList{2}}};
    for (const auto &pair : different)
        EXPECT_NE(run(Bold, 2, 3, pair[0]), run(Bold, 2, 3, pair[1])) << QVDescription(pair[0]).toStdString();
    EXPECT_NE(run(Bold, 2, 3), run(Bold, 2, 4));
    EXPECT_NE(run(Bold, 2, 3), run(Color, 2, 3));
    // Values without a hash of their own must not make Qt warn.
    EXPECT_TRUE(capture.lines().isEmpty()) << capture.lines().join(u'\n').toStdString();

    const QVTextAttributeRun italic(u"QVFontItalic"_s, true, {2, 3});
    EXPECT_TRUE(QRegularExpression(u"^QVTextAttributeRun 0x[0-9a-f]+: \\{2, 3\\} QVFontItalic 1$"_s)
                    .match(italic.description())
                    .hasMatch())
        << italic.description().toStdString();
    EXPECT_TRUE(QVTextAttributeRun(QString(), QVariant(), {0, 1}).description().endsWith(u": {0, 1} (null) (null)"_s));
}

TEST(QVTextAttributeRunTest, ShiftMovesResizesOrRemovesEachRunByItself)
{
    const struct
    {
        const char *name;
        QVRangeList ranges; // of runs named a, b, c, … in order
        quint64 index;
        qint64 deltaOrigin, deltaLength;
        const char *expected;
    } rows[] = {
        {"insertion grows its run, moves later ones", {{0, 5}, {10, 5}}, 2, 0, 3, "a{0, 8}=1, b{13, 5}=1"},
        {"no deltas change nothing", {{7, 0}, {0, 3}}, 1, 0, 0, "a{7, 0}=1, b{0, 3}=1"},
        {"deleting all of a run", {{2, 2}}, 2, 0, -2, ""},
        {"deleting part of a run", {{0, 10}}, 3, 0, -4, "a{0, 6}=1"},
        {"run ending at the index", {{0, 2}}, 2, 0, 3, "a{0, 2}=1"},
        {"run starting at the index", {{2, 3}}, 2, 0, 3, "a{2, 6}=1"},
        {"deleting before a run", {{10, 5}}, 5, 0, -3, "a{7, 5}=1"},
        {"run well before a deletion", {{10, 2}}, 20, 0, -3, "a{10, 2}=1"},
        {"run near the start before a deletion", {{0, 2}}, 5, 0, -3, ""},
        {"index plus delta wraps", {{10, 5}}, 0, 0, -3, "a{10, 5}=1"},
        {"origin moved back past the start", {{1, 5}}, 3, -2, 0, ""},
        {"origin moved back within reach", {{4, 5}}, 5, -2, 0, "a{2, 5}=1"},
        {"both deltas move later runs", {{10, 5}}, 2, -2, 5, "a{13, 5}=1"},
        {"neighbouring removals", {{0, 1}, {1, 1}, {1, 4}, {5, 1}, {0, 1}}, 1, 0, -1, "c{1, 3}=1, d{4, 1}=1"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        Runs runs;
        for (const QVRange &range : row.ranges)
            runs.append(run(QString(QChar(char16_t(u'a' + runs.size()))), range.location, range.length));
        QVTextAttributeRun::shiftTextAttributeRunRanges(runs, row.index, row.deltaOrigin, row.deltaLength);
        EXPECT_EQ(describe(runs), row.expected);
    }
}

TEST(QVTextAttributeRunTest, SortAndTotalRange)
{
    Runs runs {run(u"z"_s, 4, 2), run(u"é"_s, 0, 3), run(u"z"_s, 0, 3), run(u"b"_s, 0, 1), run(u"Z"_s, 0, 3)};
    QVTextAttributeRun::sortTextAttributeRunsByRange(runs);
    // Names compare by code unit: "Z" < "z" < "é".
    EXPECT_EQ(describe(runs), "b{0, 1}=1, Z{0, 3}=1, z{0, 3}=1, é{0, 3}=1, z{4, 2}=1");

    const auto total = [](const QVRangeList &ranges) {
        Runs runs;
        for (const QVRange &range : ranges)
            runs.append(run(Bold, range.location, range.length));
        return QVTextAttributeRun::totalRangeOfTextAttributeRuns(runs);
    };
    EXPECT_EQ(total({}), QVMakeRange(0, 0));
    EXPECT_EQ(total({{0, 4}, {4, 6}}), QVMakeRange(0, 10));
    EXPECT_EQ(total({{3, 4}}), QVMakeRange(3, 4));
    // Away from 0 the running end is overstated, deliberately.
    EXPECT_EQ(total({{5, 5}, {6, 1}}), QVMakeRange(5, 10));
    EXPECT_EQ(total({{4, 6}, {0, 4}}), QVMakeRange(0, 14));
}

TEST(QVTextAttributeRunTest, ReadingRunsFromAnAttributedString)
{
    EXPECT_EQ(describe(QVAttributedString().textAttributeRuns()), "nil");
    EXPECT_EQ(describe(QVAttributedString(u"plain"_s).textAttributeRuns()), "nil");

    QVAttributedString text(u"0123456789"_s);
    text.addAttribute(Bold, 700, {2, 3});
    const QVRange all {0, 10};
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(Bold, {}, all)), "bold{2, 3}=700");
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(Bold, QVTextAttributeRunOptionAbsentValues, all)),
              "bold{0, 2}=(null), bold{5, 5}=(null)");
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(
                  Bold, QVTextAttributeRunOptionPresentValues | QVTextAttributeRunOptionAbsentValues, all)),
              "bold{0, 2}=(null), bold{2, 3}=700, bold{5, 5}=(null)");
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(Bold, QVTextAttributeRunOptionAbsentValues, {3, 1})), "nil");
    EXPECT_EQ(describe(text.textAttributeRunsForAttributes(
                  QStringList(), QVTextAttributeRunOptionPresentValues | QVTextAttributeRunOptionAbsentValues, all)),
              "nil");

    // The null marker is a value, reported with the present ones.
    text.addAttribute(Color, QVariant::fromValue(nullptr), {0, 1});
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(Color, QVTextAttributeRunOptionPresentValues, all)),
              "color{0, 1}=<null>");

    // Several names: sorted by location, then length, then name, whatever order the names came in.
    text.addAttribute(Link, u"x"_s, {2, 3});
    text.addAttribute(Color, 5, {2, 8});
    EXPECT_EQ(describe(text.textAttributeRunsForAttributes(QStringList {Link, Color, Bold}, {}, all)),
              "color{0, 1}=<null>, bold{2, 3}=700, link{2, 3}=x, color{2, 8}=5");
    EXPECT_EQ(describe(text.textAttributeRunsForAttributes(QStringList {Link, Bold},
                                                           QVTextAttributeRunOptionAbsentValues, {0, 6})),
              "bold{0, 2}=(null), link{0, 2}=(null), bold{5, 1}=(null), link{5, 1}=(null)");
    // All attributes: one run per attribute and stretch, the options playing no part.
    EXPECT_EQ(describe(text.textAttributeRunsForAttribute(QString(), QVTextAttributeRunOptionAbsentValues, {0, 6})),
              "color{0, 1}=<null>, bold{2, 3}=700, color{2, 3}=5, link{2, 3}=x, color{5, 1}=5");
}

TEST(QVTextAttributeRunTest, RunsBeyondAsciiAndRoundTrip)
{
    // "é" is one code unit, "👋" two: ranges count UTF-16 code units.
    QVAttributedString text(u"h\u00e9 \U0001F44B w\u00f6rld"_s);
    text.addAttribute(Color, u"#ff0000"_s, {3, 2});
    text.addAttribute(Bold, 700, {0, 2});
    text.addAttribute(Link, QVariant::fromValue(nullptr), {6, 5});
    const std::optional<Runs> runs = text.textAttributeRuns();
    ASSERT_TRUE(runs);
    EXPECT_EQ(describe(runs), "bold{0, 2}=700, color{3, 2}=#ff0000, link{6, 5}=<null>");

    QVAttributedString copy(text.string());
    copy.setTextAttributeRuns(*runs);
    EXPECT_EQ(copy, text) << copy.description().toStdString();
}

TEST(QVTextAttributeRunTest, WritingRuns)
{
    const QVAttributedString original(u"abcdefghijkl"_s, {{Bold, 400}});

    // Later runs win where they overlap; a run without a value removes its attribute.
    QVAttributedString added = original;
    added.addTextAttributeRuns({run(Color, 0, 4, 1), run(Color, 2, 4, 2), run(Bold, 1, 2, QVariant())});
    EXPECT_EQ(describe(added.textAttributeRunsForAttributes(
                  QStringList {Bold, Color},
                  QVTextAttributeRunOptionPresentValues | QVTextAttributeRunOptionAbsentValues, {0, 12})),
              "bold{0, 1}=400, color{0, 2}=1, bold{1, 2}=(null), color{2, 4}=2, bold{3, 9}=400, color{6, 6}=(null)");

    // Nothing at all for no runs.
    QVAttributedString unchanged = original;
    unchanged.setTextAttributeRuns({});
    EXPECT_EQ(unchanged, original);

    // Clears only the runs' total range.
    QVAttributedString set = original;
    set.setTextAttributeRuns({run(Color, 2, 3)});
    EXPECT_EQ(describe(set.textAttributeRuns()), "bold{0, 2}=400, color{2, 3}=1, bold{5, 7}=400");

    // A total range overstated past the end is not the caller's fault: the
    // clearing stops at the end of the text, and nothing is logged.
    QVLogCapture capture;
    set = original;
    set.setTextAttributeRuns({run(Color, 5, 5), run(Link, 6, 1)});
    EXPECT_EQ(describe(set.textAttributeRuns()),
              "bold{0, 5}=400, color{5, 1}=1, color{6, 1}=1, link{6, 1}=1, "
              "color{7, 3}=1");
    EXPECT_TRUE(capture.lines().isEmpty()) << capture.lines().join(u'\n').toStdString();
}
