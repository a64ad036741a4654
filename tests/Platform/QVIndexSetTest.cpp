#include <QVKit/Platform/QVIndexSet.h>

#include <QtCore/QVariant>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVIndexSetTest, EmptySetAnswersNotFound)
{
    const QVIndexSet set;
    EXPECT_TRUE(set.isEmpty());
    EXPECT_EQ(set.count(), 0u);
    EXPECT_EQ(set.firstIndex(), QVNotFound);
    EXPECT_EQ(set.lastIndex(), QVNotFound);
    EXPECT_EQ(set.description(), u"()"_s);
    EXPECT_EQ(set.begin(), set.end());
    EXPECT_TRUE(QVIndexSet(QVRange{5, 0}).isEmpty());
}

TEST(QVIndexSetTest, AddingMergesTouchingAndOverlappingRanges)
{
    struct Row
    {
        const char *name;
        std::initializer_list<QVRange> added;
        QString description;
        quint64 count;
    };
    const Row rows[] = {
        {"ascending singles", {{0, 1}, {1, 1}, {2, 1}, {5, 1}}, u"(0-2, 5)"_s, 4},
        {"descending singles", {{5, 1}, {2, 1}, {1, 1}, {0, 1}}, u"(0-2, 5)"_s, 4},
        {"gap filled", {{0, 2}, {4, 2}, {2, 2}}, u"(0-5)"_s, 6},
        {"overlap spanning several", {{0, 1}, {3, 1}, {6, 1}, {9, 1}, {2, 6}}, u"(0, 2-7, 9)"_s, 8},
        {"contained", {{10, 10}, {12, 2}}, u"(10-19)"_s, 10},
        {"repeated", {{3, 1}, {3, 1}}, u"(3)"_s, 1},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVIndexSet set;
        for (const QVRange &range : row.added)
            set.addIndexesInRange(range);
        EXPECT_EQ(set.description(), row.description);
        EXPECT_EQ(set.count(), row.count);
    }
}

TEST(QVIndexSetTest, RemovingSplitsRanges)
{
    QVIndexSet set(QVRange{0, 10});
    set.removeIndex(4);
    EXPECT_EQ(set.description(), u"(0-3, 5-9)"_s);
    set.removeIndexesInRange({8, 100});
    EXPECT_EQ(set.description(), u"(0-3, 5-7)"_s);
    set.removeIndexesInRange({0, 1});
    set.removeIndex(42); // absent: no change
    EXPECT_EQ(set.description(), u"(1-3, 5-7)"_s);
    EXPECT_EQ(set.firstIndex(), 1u);
    EXPECT_EQ(set.lastIndex(), 7u);
    set.removeIndexes(QVIndexSet{1, 2, 3});
    EXPECT_EQ(set, QVIndexSet(QVRange{5, 3}));
    set.removeAllIndexes();
    EXPECT_TRUE(set.isEmpty());
}

TEST(QVIndexSetTest, ContainmentAndCounts)
{
    const QVIndexSet set{0, 1, 2, 5, 7, 8};
    EXPECT_TRUE(set.containsIndex(0));
    EXPECT_TRUE(set.containsIndex(2));
    EXPECT_FALSE(set.containsIndex(3));
    EXPECT_FALSE(set.containsIndex(9));
    EXPECT_TRUE(set.containsIndexesInRange({0, 3}));
    EXPECT_FALSE(set.containsIndexesInRange({0, 4}));
    EXPECT_FALSE(set.containsIndexesInRange({0, 0}));
    EXPECT_TRUE(set.containsIndexes(QVIndexSet{1, 7}));
    EXPECT_FALSE(set.containsIndexes(QVIndexSet{1, 6}));
    EXPECT_TRUE(set.intersectsIndexesInRange({3, 3}));
    EXPECT_FALSE(set.intersectsIndexesInRange({3, 2}));
    EXPECT_EQ(set.countOfIndexesInRange({1, 7}), 4u);
    // Near the top of the value space nothing wraps.
    QVIndexSet high;
    high.addIndexesInRange({~0ULL - 3, 100});
    EXPECT_EQ(high.count(), 3u);
    EXPECT_TRUE(high.containsIndex(~0ULL - 1));
}

TEST(QVIndexSetTest, IteratesAscendingAndComparesByContent)
{
    QVIndexSet set{9, 3, 4, 0};
    QList<quint64> seen;
    for (const quint64 index : set)
        seen.append(index);
    EXPECT_EQ(seen, (QList<quint64>{0, 3, 4, 9}));
    EXPECT_EQ(set.toList(), seen);

    QVIndexSet built;
    built.addIndexesInRange({3, 2});
    built.addIndex(9);
    built.addIndex(0);
    EXPECT_EQ(set, built);
    EXPECT_EQ(qHash(set), qHash(built));
    built.addIndex(10);
    EXPECT_NE(set, built);

    // Usable inside a QVariant, compared by content.
    EXPECT_EQ(QVariant::fromValue(set), QVariant::fromValue(QVIndexSet{0, 3, 4, 9}));
}
