#include <QVKit/Text/QVStringStatistics.h>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVStringStatisticsTest, CharacterCountCountsComposedSequences)
{
    struct Row
    {
        const char *name;
        QString text;
        quint64 count;
    };
    const Row rows[] = {
        {"empty", u""_s, 0},
        {"null", QString(), 0},
        {"ASCII", u"abc"_s, 3},
        {"emoji outside the BMP", u"\U0001F600"_s, 1},
        {"two flags", u"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA"_s, 2},
        {"combining marks", u"e\u0301\u0323x"_s, 2},
        {"family joined with ZWJ", u"\U0001F468\u200D\U0001F469\u200D\U0001F467"_s, 1},
        {"skin tone modifier", u"\U0001F44D\U0001F3FD!"_s, 2},
        {"CR LF is one", u"a\r\nb"_s, 3},
        {"Hangul jamo", u"\u1100\u1161\u11A8"_s, 1},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::characterCount(row.text), row.count);
        EXPECT_EQ(QVString::characterCountInRange(row.text, QVMakeRange(0, quint64(row.text.size()))), row.count);
    }
}

TEST(QVStringStatisticsTest, CharacterCountInRange)
{
    // a, 😀 (two code units), b, e + combining acute.
    const QString text = u"a\U0001F600be\u0301"_s;
    struct Row
    {
        const char *name;
        QVRange range;
        quint64 count;
    };
    const Row rows[] = {
        {"whole text", {0, 6}, 4},
        {"one emoji", {1, 2}, 1},
        {"half an emoji counts it once", {2, 1}, 1},
        {"across a cut character", {2, 2}, 2},
        {"letter without its mark", {4, 1}, 1},
        {"empty range", {3, 0}, 0},
        {"past the end is clipped", {3, 100}, 2},
        {"starting at the end", {6, 4}, 0},
        {"starting past the end", {7, 1}, 0},
        {"not found", QVNotFoundRange(), 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVString::characterCountInRange(text, row.range), row.count);
    }
}
