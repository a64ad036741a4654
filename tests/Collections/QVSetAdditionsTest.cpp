#include <QVKit/Collections/QVSetAdditions.h>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QVariant null = QVariant::fromValue(nullptr);

} // namespace

TEST(QVSetAdditionsTest, ForwardingAgreesWithTheEngine)
{
    const QVVariantSet mixed{u""_s, null, u"x"_s, 1};
    const quint64 present = QVCollectionMatchNonEmpty | QVCollectionMatchNonNull;
    EXPECT_EQ(QVSet::setWithObjectsMatching(mixed, present),
              QVCollectionTools::objectCollectionWithObjectsMatching(mixed, present));
    EXPECT_EQ(QVSet::setWithObjectsMatching(mixed, present), (QVVariantSet{u"x"_s, 1}));
    // Every member of a set is unique, none is a duplicate.
    EXPECT_EQ(QVSet::setWithObjectsMatching(mixed, QVCollectionMatchUnique), mixed);
    EXPECT_FALSE(QVSet::setWithObjectsMatching(mixed, QVCollectionMatchDuplicate));

    // The argument is enumerated; the receiver only adds to the counts.
    const QSet<QString> receiver{u"x"_s};
    EXPECT_EQ(QVSet::setWithObjectsMatching(receiver, QVCollectionMatchUnique, QSet<QString>{u"x"_s, u"ÿ"_s}),
              (QSet<QString>{u"ÿ"_s}));

    QVVariantSet unsanitized = mixed;
    QVSet::removeUnsanitizedObjects(unsanitized);
    EXPECT_EQ(unsanitized, (QVVariantSet{u"x"_s, 1}));

    QVVariantSet removing = mixed;
    QVSet::removeObjectsMatching(removing, QVCollectionMatchNull);
    EXPECT_EQ(removing, (QVVariantSet{u""_s, u"x"_s, 1}));

    QVVariantSet sanitizedTarget{u"x"_s};
    QVSet::addSanitizedObjectsFromSet(sanitizedTarget, QVVariantSet{u""_s, null, u"x"_s, u"z"_s});
    EXPECT_EQ(sanitizedTarget, (QVVariantSet{u"x"_s, u"z"_s}));

    QSet<QString> typed{u"a"_s};
    QVSet::addObjectsFromSet(typed, QSet<QString>{u""_s, u"b"_s}, QVCollectionMatchEmpty);
    EXPECT_EQ(typed, (QSet<QString>{u"a"_s, u""_s}));
}

TEST(QVSetAdditionsTest, SetAlgebra)
{
    using Set = QSet<QString>;
    struct Row
    {
        const char *name;
        Set a, b;
        bool contains, disjoint;
        Set intersection, difference, subtraction, unionSet;
    };
    const Row rows[] = {
        {"overlapping", {u"1"_s, u"2"_s, u"3"_s}, {u"2"_s, u"3"_s, u"4"_s}, false, false,
         {u"2"_s, u"3"_s}, {u"1"_s, u"4"_s}, {u"1"_s}, {u"1"_s, u"2"_s, u"3"_s, u"4"_s}},
        {"subset", {u"1"_s, u"2"_s, u"3"_s}, {u"2"_s}, true, false,
         {u"2"_s}, {u"1"_s, u"3"_s}, {u"1"_s, u"3"_s}, {u"1"_s, u"2"_s, u"3"_s}},
        {"superset", {u"2"_s}, {u"1"_s, u"2"_s}, false, false, {u"2"_s}, {u"1"_s}, {}, {u"1"_s, u"2"_s}},
        {"disjoint", {u"é"_s}, {u"e\u0301"_s}, false, true, {}, {u"é"_s, u"e\u0301"_s}, {u"é"_s},
         {u"é"_s, u"e\u0301"_s}},
        {"other empty", {u"1"_s}, {}, true, true, {}, {u"1"_s}, {u"1"_s}, {u"1"_s}},
        {"both empty", {}, {}, true, true, {}, {}, {}, {}},
        {"equal", {u"1"_s, u"2"_s}, {u"2"_s, u"1"_s}, true, false, {u"1"_s, u"2"_s}, {}, {}, {u"1"_s, u"2"_s}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const Set aBefore = row.a, bBefore = row.b;
        EXPECT_EQ(QVSet::containsSet(row.a, row.b), row.contains);
        EXPECT_EQ(QVSet::isDisjointWithSet(row.a, row.b), row.disjoint);
        EXPECT_EQ(QVSet::isDisjointWithSet(row.b, row.a), row.disjoint);
        EXPECT_EQ(QVSet::setIntersectionWithSet(row.a, row.b), row.intersection);
        EXPECT_EQ(QVSet::setDifferenceWithSet(row.a, row.b), row.difference);
        EXPECT_EQ(QVSet::setDifferenceWithSet(row.b, row.a), row.difference);
        EXPECT_EQ(QVSet::setSubtractionWithSet(row.a, row.b), row.subtraction);
        EXPECT_EQ(QVSet::setUnionWithSet(row.a, row.b), row.unionSet);
        // None of them touches its arguments.
        EXPECT_EQ(row.a, aBefore);
        EXPECT_EQ(row.b, bBefore);
    }
}
