#include <QVKit/Platform/QVRange.h>

#include <QtCore/QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVRangeTest, NotFoundIsTheLargestSignedValue)
{
    EXPECT_EQ(QVNotFound, 0x7FFFFFFFFFFFFFFFULL);
    EXPECT_EQ(QVNotFoundRange(), QVMakeRange(QVNotFound, 0));
    // The maximum is unsigned arithmetic: one past QVNotFound, not an overflow trap.
    EXPECT_EQ(QVMaxRange(QVMakeRange(QVNotFound, 1)), 0x8000000000000000ULL);
}

TEST(QVRangeTest, LocationInRangeExcludesTheMaximum)
{
    const QVRange range = QVMakeRange(3, 2);
    EXPECT_FALSE(QVLocationInRange(2, range));
    EXPECT_TRUE(QVLocationInRange(3, range));
    EXPECT_TRUE(QVLocationInRange(4, range));
    EXPECT_FALSE(QVLocationInRange(5, range));
    EXPECT_FALSE(QVLocationInRange(3, QVMakeRange(3, 0)));
    // No overflow for a range that reaches the top of the value space.
    EXPECT_TRUE(QVLocationInRange(~0ULL - 1, QVMakeRange(~0ULL - 5, 5)));
}

TEST(QVRangeTest, IntersectionAndUnion)
{
    struct Row
    {
        const char *name;
        QVRange a, b, intersection, unionRange;
    };
    const Row rows[] = {
        {"overlapping", {2, 5}, {4, 10}, {4, 3}, {2, 12}},
        {"contained", {0, 10}, {3, 2}, {3, 2}, {0, 10}},
        {"touching", {0, 5}, {5, 3}, {5, 0}, {0, 8}},
        {"apart", {0, 2}, {7, 3}, {0, 0}, {0, 10}},
        {"identical", {4, 4}, {4, 4}, {4, 4}, {4, 4}},
        {"empty inside", {5, 0}, {0, 10}, {5, 0}, {0, 10}},
        {"both empty apart", {1, 0}, {3, 0}, {0, 0}, {1, 2}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVIntersectionRange(row.a, row.b), row.intersection);
        EXPECT_EQ(QVIntersectionRange(row.b, row.a), row.intersection);
        EXPECT_EQ(QVUnionRange(row.a, row.b), row.unionRange);
        EXPECT_EQ(QVUnionRange(row.b, row.a), row.unionRange);
    }
}

TEST(QVRangeTest, TextualForms)
{
    EXPECT_EQ(QVRangeToString({0, 0}), u"{0, 0}"_s);
    EXPECT_EQ(QVRangeToString(QVNotFoundRange()), u"{9223372036854775807, 0}"_s);
    EXPECT_EQ(QVRangeToString({~0ULL, 1}), u"{18446744073709551615, 1}"_s);

    EXPECT_EQ(QVRangeFromString(u"{3, 4}"), QVMakeRange(3, 4));
    EXPECT_EQ(QVRangeFromString(QVRangeToString(QVNotFoundRange())), QVNotFoundRange());
    EXPECT_EQ(QVRangeFromString(u"location 7"), QVMakeRange(7, 0));
    EXPECT_EQ(QVRangeFromString(u""), QVMakeRange(0, 0));
    EXPECT_EQ(QVRangeFromString(u"{-2, 3}"), QVMakeRange(2, 3)) << "signs are not digits";
    EXPECT_EQ(QVRangeFromString(u"{99999999999999999999999, 1}"), QVMakeRange(~0ULL, 1)) << "saturates";
    // Digits of other scripts are not numbers here: only ASCII digits count.
    EXPECT_EQ(QVRangeFromString(u"{\u0663, 5, 6}"), QVMakeRange(5, 6));

    EXPECT_EQ(QVRangeListToString(std::nullopt), u"(null)"_s);
    EXPECT_EQ(QVRangeListToString(QVRangeList{}), u"()"_s);
    EXPECT_EQ(QVRangeListToString(QVRangeList{{0, 1}, {4, 2}}), u"({0, 1}, {4, 2})"_s);
}

TEST(QVRangeTest, HashAgreesWithEquality)
{
    QSet<QVRange> set{{1, 2}, {1, 2}, {2, 1}, {0, 0}};
    EXPECT_EQ(set.size(), 3);
    EXPECT_TRUE(set.contains(QVMakeRange(2, 1)));
    EXPECT_FALSE(set.contains(QVMakeRange(1, 1)));
}
