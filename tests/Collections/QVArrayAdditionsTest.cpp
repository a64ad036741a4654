#include <QVKit/Collections/QVArrayAdditions.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QObject>

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <numeric>

using namespace Qt::StringLiterals;

namespace {

const QVariant null = QVariant::fromValue(nullptr);

// A nested list as one element: QVariantList{QVariantList{}} would copy the inner list.
QVariant list(std::initializer_list<QVariant> elements)
{
    return QVariantList(elements);
}

QStringList strings(const std::optional<QList<QString>> &list)
{
    return list ? QStringList(*list) : QStringList{u"<nil>"_s};
}

struct Opaque
{
    int value = 0;
};

struct Described
{
    QString description() const { return u"described"_s; }
};

} // namespace

TEST(QVArrayAdditionsTest, ForwardingAgreesWithTheEngine)
{
    const QVariantList mixed{u"a"_s, u""_s, null, u"a"_s, u"b"_s};
    const quint64 nonEmpty = QVCollectionMatchNonEmpty | QVCollectionMatchNonNull;
    EXPECT_EQ(QVArray::indexSetWithObjectsMatching(mixed, nonEmpty),
              QVCollectionTools::identifiersWithObjectsMatching(mixed, nonEmpty));
    EXPECT_EQ(QVArray::indexSetWithObjectsMatching(mixed, nonEmpty), QVIndexSet({0, 3, 4}));
    EXPECT_EQ(QVArray::arrayWithObjectsMatching(mixed, nonEmpty), (QVariantList{u"a"_s, u"a"_s, u"b"_s}));
    EXPECT_EQ(QVArray::arrayWithObjectsMatching(mixed, QVCollectionMatchEmpty | QVCollectionMatchNonNull),
              QVariantList{u""_s});

    // The argument is enumerated; the receiver only adds to the counts.
    const QList<QString> receiver{u"a"_s, u"b"_s};
    const QList<QString> argument{u"b"_s, u"d"_s, u"d"_s};
    EXPECT_EQ(QVArray::indexSetWithObjectsMatching(receiver, QVCollectionTools::AddUniqueObjectsMatch, argument),
              QVIndexSet{1});
    EXPECT_EQ(strings(QVArray::arrayWithObjectsMatching(receiver, QVCollectionTools::AddUniqueObjectsMatch, argument)),
              QStringList{u"d"_s});

    QList<QString> array{u"a"_s, u"b"_s};
    QVArray::addUniqueObjectsFromArray(array, argument);
    EXPECT_EQ(QStringList(array), (QStringList{u"a"_s, u"b"_s, u"d"_s}));

    QList<QString> repeats{u"a"_s, u"b"_s, u"a"_s, u"c"_s, u"a"_s};
    QVArray::removeDuplicateObjects(repeats);
    EXPECT_EQ(QStringList(repeats), (QStringList{u"a"_s, u"b"_s, u"c"_s}));

    QVariantList unsanitized{u"x"_s, u""_s, null, u"y"_s, u"x"_s};
    QVArray::removeUnsanitizedObjects(unsanitized);
    EXPECT_EQ(unsanitized, (QVariantList{u"x"_s, u"y"_s}));

    QVariantList sanitizedTarget{u"x"_s};
    QVArray::addSanitizedObjectsFromArray(sanitizedTarget, QVariantList{u""_s, null, u"x"_s, u"z"_s, u"z"_s});
    EXPECT_EQ(sanitizedTarget, (QVariantList{u"x"_s, u"z"_s}));

    QVariantList removing = mixed;
    QVArray::removeObjectsMatching(removing, QVCollectionMatchNull);
    EXPECT_EQ(removing, (QVariantList{u"a"_s, u""_s, u"a"_s, u"b"_s}));

    QVariantList adding{u"a"_s};
    QVArray::addObjectsFromArray(adding, mixed, QVCollectionMatchEmpty);
    EXPECT_EQ(adding, (QVariantList{u"a"_s, u""_s}));

    // Invalid masks reach the engine's validation unchanged.
    QVLogCapture log;
    EXPECT_FALSE(QVArray::arrayWithObjectsMatching(mixed, 0));
    EXPECT_TRUE(log.contains(u"CollectionMatch invalid. Cannot be empty."_s));
}

TEST(QVArrayAdditionsTest, MappedAnswersNilForAnEmptyResultAndHonoursStop)
{
    const QList<int> numbers{1, 2, 3, 4};
    QList<qsizetype> seen;
    const auto doubled = QVArray::mappedArrayUsingBlock(numbers, [&](int n, qsizetype index, bool *stop) {
        seen.append(index);
        *stop = n == 3;
        return QString::number(n * 2);
    });
    // The call that sets stop still contributes its result.
    EXPECT_EQ(strings(doubled), (QStringList{u"2"_s, u"4"_s, u"6"_s}));
    EXPECT_EQ(seen, (QList<qsizetype>{0, 1, 2}));

    EXPECT_FALSE(QVArray::mappedArrayUsingBlock(QList<int>(), [](int n, qsizetype, bool *) { return n; }));

    // A nil result is the block's mistake: left out, one line for the whole call.
    QVLogCapture log;
    const auto none = QVArray::mappedArrayUsingBlock(QVariantList{1, 2},
                                                     [](const QVariant &, qsizetype, bool *) { return QVariant(); });
    EXPECT_FALSE(none.has_value());
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.containsFragment(u"QVArray::mappedArrayUsingBlock: the block returned nil"_s));
}

TEST(QVArrayAdditionsTest, CompactMapSkipsNilButKeepsTheNullMarker)
{
    const auto evens = QVArray::compactMappedArrayUsingBlock(QList<int>{1, 2, 3, 4},
                                                             [](int n, qsizetype, bool *) -> std::optional<int> {
                                                                 if (n % 2)
                                                                     return std::nullopt;
                                                                 return n * 10;
                                                             });
    EXPECT_EQ(evens, (QList<int>{20, 40}));

    QVLogCapture log;
    const auto variants = QVArray::compactMappedArrayUsingBlock(
        QVariantList{u"keep"_s, u"drop"_s, u"null"_s}, [](const QVariant &v, qsizetype, bool *) {
            if (v == u"drop"_s)
                return QVariant();
            return v == u"null"_s ? null : v;
        });
    EXPECT_EQ(variants, (QVariantList{u"keep"_s, null}));
    EXPECT_TRUE(log.lines().isEmpty());

    int a = 1, b = 2;
    const auto pointers = QVArray::compactMappedArrayUsingBlock(QList<int>{0, 1, 2}, [&](int n, qsizetype, bool *) {
        return n == 0 ? &a : n == 1 ? nullptr : &b;
    });
    EXPECT_EQ(pointers, (QList<int *>{&a, &b}));

    EXPECT_FALSE(QVArray::compactMappedArrayUsingBlock(
        QList<int>{1}, [](int, qsizetype, bool *) { return std::optional<int>(); }));

    QList<int> inPlace{1, 2, 3};
    QVArray::compactMapUsingBlock(inPlace, [](int n, qsizetype, bool *) {
        return n == 2 ? std::nullopt : std::optional<int>(n);
    });
    EXPECT_EQ(inPlace, (QList<int>{1, 3}));
}

TEST(QVArrayAdditionsTest, FlatMapAppliesTheBlockToNestedListsAtAnyDepth)
{
    // Each number above 1 splits into two halves, which the same block splits again.
    const auto split = [](const QVariant &v, qsizetype, bool *) -> QVariant {
        const int n = v.toInt();
        if (n <= 1)
            return n;
        return QVariantList{n / 2, n - n / 2};
    };
    EXPECT_EQ(QVArray::flatMappedArrayUsingBlock(QVariantList{5, 0}, split), (QVariantList{1, 1, 1, 1, 1, 0}));

    const QVariantList nested{1, QVariantList{2, QVariantList{3, QVariantList{}}, 4}, 5};
    const auto doubling = [](const QVariant &v, qsizetype, bool *) {
        return v.metaType() == QMetaType::fromType<QVariantList>() ? v : QVariant(v.toInt() * 2);
    };
    EXPECT_EQ(QVArray::flatMappedArrayUsingBlock(nested, doubling), (QVariantList{2, 4, 6, 8, 10}));

    // A stop inside a nested list ends that list only.
    const auto stopped = QVArray::flatMappedArrayUsingBlock(
        QVariantList{QVariantList{1, 2, 3}, 4}, [](const QVariant &v, qsizetype, bool *stop) {
            if (v == QVariant(1))
                *stop = true;
            return v;
        });
    EXPECT_EQ(stopped, (QVariantList{1, 4}));

    // Typed lists: the block answers a value or a list to flatten.
    using Result = std::variant<QString, QList<int>>;
    const auto typed = QVArray::flatMappedArrayUsingBlock(QList<int>{3, 10}, [](int n, qsizetype, bool *) -> Result {
        if (n >= 10)
            return QList<int>{n / 10, n % 10};
        return QString::number(n);
    });
    EXPECT_EQ(strings(typed), (QStringList{u"3"_s, u"1"_s, u"0"_s}));

    EXPECT_FALSE(QVArray::flatMappedArrayUsingBlock(QVariantList{list({}), list({list({})})}, doubling));

    QVariantList inPlace{QVariantList{1, QVariantList{2}}, 3};
    QVArray::flatMapUsingBlock(inPlace, [](const QVariant &v, qsizetype, bool *) { return v; });
    EXPECT_EQ(inPlace, (QVariantList{1, 2, 3}));
}

TEST(QVArrayAdditionsTest, JoinedFlattensWithTheIdentity)
{
    EXPECT_EQ(QVArray::joinedArray(QVariantList{QVariantList{1, QVariantList{2, 3}}, 4, QVariantList{}}),
              (QVariantList{1, 2, 3, 4}));
    EXPECT_FALSE(QVArray::joinedArray(QVariantList{list({}), list({list({})})}));
    EXPECT_EQ(QVArray::joinedArray(QList<QList<int>>{{1, 2}, {}, {3}}), (QList<int>{1, 2, 3}));
    EXPECT_FALSE(QVArray::joinedArray(QList<QList<int>>{{}, {}}));
    EXPECT_EQ(QVArray::joinedArray(QList<QVariantList>{{1, QVariantList{2}}, {3}}), (QVariantList{1, 2, 3}));

    QVariantList array{QVariantList{u"ä"_s}, u"🇩🇪"_s};
    QVArray::joined(array);
    EXPECT_EQ(array, (QVariantList{u"ä"_s, u"🇩🇪"_s}));
    QVariantList empty{list({})};
    QVArray::joined(empty);
    EXPECT_TRUE(empty.isEmpty());
}

TEST(QVArrayAdditionsTest, FilterHonoursDirectionAndStop)
{
    const QList<int> numbers{1, 2, 3, 4, 5, 6};
    const auto evens = [](int n, qsizetype, bool *) { return n % 2 == 0; };
    EXPECT_EQ(QVArray::filteredArrayWithOptions(numbers, 0, evens), (QList<int>{2, 4, 6}));
    EXPECT_EQ(QVArray::filteredArrayWithOptions(numbers, QVEnumerationConcurrent, evens), (QList<int>{2, 4, 6}));
    EXPECT_FALSE(QVArray::filteredArrayWithOptions(numbers, 0, [](int, qsizetype, bool *) { return false; }));

    // Stopping at the second even keeps what was seen, in index order either way.
    const auto firstTwoEvens = [](QVEnumerationOptions options) {
        int found = 0;
        return QVArray::filteredArrayWithOptions(QList<int>{1, 2, 3, 4, 5, 6}, options, [&](int n, qsizetype, bool *stop) {
            const bool even = n % 2 == 0;
            *stop = even && ++found == 2;
            return even;
        });
    };
    EXPECT_EQ(firstTwoEvens(0), (QList<int>{2, 4}));
    EXPECT_EQ(firstTwoEvens(QVEnumerationReverse), (QList<int>{4, 6}));
    EXPECT_EQ(firstTwoEvens(QVEnumerationReverse | QVEnumerationConcurrent), (QList<int>{4, 6}));

    QList<int> inPlace = numbers;
    QVArray::filterWithOptions(inPlace, 0, [](int, qsizetype index, bool *) { return index >= 4; });
    EXPECT_EQ(inPlace, (QList<int>{5, 6}));
    QVArray::filterWithOptions(inPlace, 0, [](int, qsizetype, bool *) { return false; });
    EXPECT_TRUE(inPlace.isEmpty());
}

TEST(QVArrayAdditionsTest, ReduceFoldsInOrder)
{
    const QList<QString> letters{u"a"_s, u"b"_s, u"c"_s};
    EXPECT_EQ(QVArray::reduce(letters, u">"_s, [](QString acc, const QString &s) { return acc + s; }), u">abc"_s);
    EXPECT_EQ(QVArray::reduce(QList<int>(), 7, [](int acc, int n) { return acc + n; }), 7);
    EXPECT_EQ(QVArray::reduce(QList<int>{1, 2, 3}, qint64(0), [](qint64 acc, int n) { return acc * 10 + n; }), 123);
}

TEST(QVArrayAdditionsTest, CombinationFilterCodes)
{
    const QList<QString> five{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
    struct Row
    {
        const char *name;
        unsigned code;
        QStringList expected;
        std::vector<std::pair<qsizetype, qsizetype>> calls;
    };
    const Row rows[] = {
        // 0 keeps both: every pair is asked once.
        {"keep both", 0, {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s},
         {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {2, 3}, {2, 4}, {3, 4}}},
        // 1 drops i at its first pair; the last object has no pair and stays.
        {"drop i", 1, {u"e"_s}, {{0, 1}, {1, 2}, {2, 3}, {3, 4}}},
        // 2 discards every j: discarded objects are never asked again.
        {"discard j", 2, {u"a"_s}, {{0, 1}, {0, 2}, {0, 3}, {0, 4}}},
        // 3 does both: the pairs (0,1) and (2,3) vanish, e has no partner left.
        {"drop both", 3, {u"e"_s}, {{0, 1}, {2, 3}}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::pair<qsizetype, qsizetype>> calls;
        const auto result = QVArray::combinationFilteredArrayUsingBlock(
            five, [&](const QString &, const QString &, qsizetype i, qsizetype j, bool *) {
                calls.emplace_back(i, j);
                return row.code;
            });
        EXPECT_EQ(strings(result), row.expected);
        EXPECT_EQ(calls, row.calls);
    }

    // Four objects with code 3 leave nothing: nil.
    EXPECT_FALSE(QVArray::combinationFilteredArrayUsingBlock(
        QList<int>{1, 2, 3, 4}, [](int, int, qsizetype, qsizetype, bool *) { return 3u; }));
    // Fewer than two objects come back as they are, even empty.
    const auto never = [](int, int, qsizetype, qsizetype, bool *) -> unsigned {
        ADD_FAILURE() << "the block must not be called";
        return 3;
    };
    EXPECT_EQ(QVArray::combinationFilteredArrayUsingBlock(QList<int>(), never), QList<int>());
    EXPECT_EQ(QVArray::combinationFilteredArrayUsingBlock(QList<int>{9}, never), QList<int>{9});
}

TEST(QVArrayAdditionsTest, CombinationFilterStopKeepsIAndEnds)
{
    const QList<QString> five{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
    // Stop at (1, 3) with code 3: d is discarded, b is kept although the code says drop, and nothing follows.
    const auto stopped = QVArray::combinationFilteredArrayUsingBlock(
        five, [](const QString &, const QString &, qsizetype i, qsizetype j, bool *stop) -> unsigned {
            if (i == 1 && j == 3) {
                *stop = true;
                return 3;
            }
            return 0;
        });
    EXPECT_EQ(strings(stopped), (QStringList{u"a"_s, u"b"_s}));

    // Case-insensitive de-duplication keeping the first spelling, in place.
    QList<QString> words{u"Straße"_s, u"straße"_s, u"Öl"_s, u"STRASSE"_s, u"öl"_s};
    QVArray::combinationFilterUsingBlock(words, [](const QString &a, const QString &b, qsizetype, qsizetype, bool *) {
        return a.compare(b, Qt::CaseInsensitive) == 0 ? 2u : 0u;
    });
    EXPECT_EQ(QStringList(words), (QStringList{u"Straße"_s, u"Öl"_s, u"STRASSE"_s}));
}

TEST(QVArrayAdditionsTest, InsertObjectsKeepsTheirOrder)
{
    struct Row
    {
        const char *name;
        quint64 index;
        QList<int> expected;
        bool logs;
    };
    const Row rows[] = {
        {"front", 0, {7, 8, 9, 1, 2, 3}, false},
        {"middle", 1, {1, 7, 8, 9, 2, 3}, false},
        {"end", 3, {1, 2, 3, 7, 8, 9}, false},
        {"beyond the end appends", 10, {1, 2, 3, 7, 8, 9}, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLogCapture log;
        QList<int> array{1, 2, 3};
        QVArray::insertObjects(array, QList<int>{7, 8, 9}, row.index);
        EXPECT_EQ(array, row.expected);
        EXPECT_EQ(log.lines().size(), row.logs ? 1 : 0);
    }
    QList<int> self{1, 2};
    QVArray::insertObjects(self, self, 1);
    EXPECT_EQ(self, (QList<int>{1, 1, 2, 2}));
}

TEST(QVArrayAdditionsTest, MoveObjectsAtIndexes)
{
    struct Row
    {
        const char *name;
        QVIndexSet indexes;
        quint64 toIndex;
        QString expected;
        bool logs;
    };
    const Row rows[] = {
        {"to the front", {3, 4}, 0, u"deabcf"_s, false},
        {"to the end", {0, 2}, 4, u"bdefac"_s, false},
        {"forward, apart", {0, 2}, 1, u"bacdef"_s, false},
        {"in place", {2, 3}, 2, u"abcdef"_s, false},
        {"single backward", {5}, 1, u"afbcde"_s, false},
        {"nothing", {}, 0, u"abcdef"_s, false},
        {"target beyond the end", {0}, 6, u"bcdefa"_s, true},
        {"indexes beyond the end", {1, 9}, 0, u"bacdef"_s, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLogCapture log;
        QList<QChar> array{u'a', u'b', u'c', u'd', u'e', u'f'};
        QVArray::moveObjectsAtIndexes(array, row.indexes, row.toIndex);
        EXPECT_EQ(QString(array.constData(), array.size()), row.expected);
        EXPECT_EQ(log.lines().size(), row.logs ? 1 : 0);
    }
}

TEST(QVArrayAdditionsTest, IndexesAndRanges)
{
    const QList<int> six{0, 1, 2, 3, 4, 5};
    EXPECT_EQ(QVArray::indexesByInvertingIndexes(six, QVIndexSet{1, 2, 4, 9}), (QVIndexSet{0, 3, 5}));
    EXPECT_EQ(QVArray::indexesByInvertingIndexes(six, QVIndexSet()), QVArray::fullIndexSet(six));
    EXPECT_TRUE(QVArray::indexesByInvertingIndexes(six, QVIndexSet(QVRange{0, 6})).isEmpty());
    EXPECT_TRUE(QVArray::indexesByInvertingIndexes(QList<int>(), QVIndexSet{0}).isEmpty());

    EXPECT_EQ(QVArray::fullRange(six), QVMakeRange(0, 6));
    EXPECT_EQ(QVArray::fullIndexSet(six).description(), u"(0-5)"_s);
    EXPECT_TRUE(QVArray::fullIndexSet(QList<int>()).isEmpty());
    EXPECT_EQ(QVArray::firstIndex(six), 0u);
    EXPECT_EQ(QVArray::lastIndex(six), 5u);
    EXPECT_EQ(QVArray::firstIndex(QList<int>()), 0u);
    EXPECT_EQ(QVArray::lastIndex(QList<int>()), 0u);

    EXPECT_EQ(QVArray::rangeForFirstObjects(six, 2), QVMakeRange(0, 2));
    EXPECT_EQ(QVArray::rangeForLastObjects(six, 2), QVMakeRange(4, 2));
    EXPECT_EQ(QVArray::rangeForLastObjects(six, 99), QVMakeRange(0, 6));
    EXPECT_EQ(QVArray::rangeForLastObjects(QList<int>(), 3), QVMakeRange(0, 0));
    EXPECT_EQ(QVArray::subarrayWithFirstObjects(six, 2), (QList<int>{0, 1}));
    EXPECT_EQ(QVArray::subarrayWithLastObjects(six, 2), (QList<int>{4, 5}));
    EXPECT_EQ(QVArray::subarrayWithLastObjects(six, quint64(-1)), six);
    EXPECT_FALSE(QVArray::subarrayWithFirstObjects(six, 0));
    EXPECT_FALSE(QVArray::subarrayWithLastObjects(QList<int>(), 3));
}

TEST(QVArrayAdditionsTest, SearchingWithOptions)
{
    const QList<int> numbers{1, 4, 6, 7, 8};
    const auto even = [](int n, qsizetype, bool *) { return n % 2 == 0; };
    EXPECT_EQ(QVArray::objectPassingTest(numbers, even), 4);
    EXPECT_EQ(QVArray::objectWithOptionsPassingTest(numbers, QVEnumerationReverse, even), 8);
    EXPECT_FALSE(QVArray::objectPassingTest(numbers, [](int n, qsizetype, bool *) { return n > 8; }));
    // A stop without a match ends the search with nothing.
    EXPECT_FALSE(QVArray::objectPassingTest(numbers, [](int n, qsizetype, bool *stop) {
        *stop = true;
        return n == 4;
    }));
    EXPECT_TRUE(QVArray::containsObjectPassingTest(numbers, even));
    EXPECT_FALSE(QVArray::containsObjectWithOptionsPassingTest(QList<int>(), QVEnumerationReverse, even));

    QList<qsizetype> visited;
    const auto recordEven = [&](int n, qsizetype index, bool *) {
        visited.append(index);
        return n % 2 == 0;
    };
    EXPECT_FALSE(QVArray::containsObjectAtIndexes(numbers, QVIndexSet{0, 3}, 0, recordEven));
    EXPECT_EQ(visited, (QList<qsizetype>{0, 3}));
    visited.clear();
    EXPECT_TRUE(QVArray::containsObjectAtIndexes(numbers, QVIndexSet{0, 2, 3}, QVEnumerationReverse, recordEven));
    EXPECT_EQ(visited, (QList<qsizetype>{3, 2}));

    QVLogCapture log;
    visited.clear();
    EXPECT_FALSE(QVArray::containsObjectAtIndexes(numbers, QVIndexSet{3, 5, 100}, 0, recordEven));
    EXPECT_EQ(visited, QList<qsizetype>{3});
    EXPECT_EQ(log.lines().size(), 1);
    EXPECT_TRUE(log.containsFragment(u"QVArray::containsObjectAtIndexes: indexes (3, 5, 100)"_s));

    EXPECT_TRUE(QVArray::containsArray(numbers, QList<int>{8, 1, 1}));
    EXPECT_TRUE(QVArray::containsArray(numbers, QList<int>()));
    EXPECT_FALSE(QVArray::containsArray(numbers, QList<int>{1, 2}));
    // Above the small-size path the answer comes from a hash set.
    EXPECT_TRUE(QVArray::containsArray(numbers, QList<int>{1, 4, 6, 7, 8, 1, 4, 6, 7, 8}));
    EXPECT_FALSE(QVArray::containsArray(numbers, QList<int>{1, 4, 6, 7, 8, 1, 4, 6, 7, 9}));
}

TEST(QVArrayAdditionsTest, SingleLineDescription)
{
    EXPECT_EQ(QVArray::singleLineDescription(QVariantList{u"a b"_s, 3, null, QVariantList{1, 2}}),
              u"(a b, 3, <null>, (1, 2))"_s);
    EXPECT_EQ(QVArray::singleLineDescription(QList<QString>{u"ü"_s, u"😀"_s}), u"(ü, 😀)"_s);
    EXPECT_EQ(QVArray::singleLineDescription(QList<int>()), u"()"_s);
    EXPECT_EQ(QVArray::singleLineDescription(QList<Described>{{}, {}}), u"(described, described)"_s);

    const QList<Opaque> opaque{{1}};
    const QString opaqueText = QVArray::singleLineDescription(opaque);
    EXPECT_TRUE(opaqueText.startsWith(u"("_s) && opaqueText.contains(u"Opaque <0x"_s)) << opaqueText.toStdString();
    EXPECT_TRUE(opaqueText.contains(QString::number(quintptr(&opaque.at(0)), 16))) << opaqueText.toStdString();

    QObject object;
    const QString objectText = QVArray::singleLineDescription(QList<QObject *>{&object, nullptr});
    EXPECT_TRUE(objectText.startsWith(u"(QObject <"_s)) << objectText.toStdString();
    EXPECT_TRUE(objectText.endsWith(u">, (null))"_s)) << objectText.toStdString();
}

TEST(QVArrayAdditionsTest, SafeAddingIgnoresNil)
{
    QVariantList variants;
    QVArray::safeAddObject(variants, QVariant());
    QVArray::safeAddObject(variants, null);
    QVArray::safeAddObject(variants, QVariant(u""_s));
    EXPECT_EQ(variants, (QVariantList{null, u""_s}));

    QList<int> numbers{1};
    QVArray::safeAddObject(numbers, std::optional<int>());
    QVArray::safeAddObject(numbers, std::optional<int>(2));
    QVArray::safeAddObject(numbers, 3);
    QVArray::safeAddObjectsFromArray(numbers, std::optional<QList<int>>());
    QVArray::safeAddObjectsFromArray(numbers, std::optional<QList<int>>({4, 5}));
    EXPECT_EQ(numbers, (QList<int>{1, 2, 3, 4, 5}));
    QVArray::safeSetArray(numbers, std::nullopt);
    EXPECT_EQ(numbers.size(), 5);
    QVArray::safeSetArray(numbers, std::optional<QList<int>>(QList<int>()));
    EXPECT_TRUE(numbers.isEmpty());

    QList<QObject *> objects;
    QVArray::safeAddObject(objects, static_cast<QObject *>(nullptr));
    EXPECT_TRUE(objects.isEmpty());
}

TEST(QVArrayAdditionsTest, InPlaceConveniences)
{
    QList<int> array{0, 1, 2, 3, 4, 5, 6};
    QVArray::keepObjectsAtIndexes(array, QVIndexSet{0, 2, 3, 4, 6, 40});
    EXPECT_EQ(array, (QList<int>{0, 2, 3, 4, 6}));
    QVArray::removeFirstObject(array);
    EXPECT_EQ(array, (QList<int>{2, 3, 4, 6}));
    QVArray::removeLastObjects(array, 1);
    QVArray::removeFirstObjects(array, 1);
    EXPECT_EQ(array, (QList<int>{3, 4}));
    QVArray::reverse(array);
    EXPECT_EQ(array, (QList<int>{4, 3}));
    QVArray::removeFirstObjects(array, 5);
    EXPECT_TRUE(array.isEmpty());
    QVArray::removeFirstObject(array);
    QVArray::removeLastObjects(array, 2);
    EXPECT_TRUE(array.isEmpty());

    QList<int> mapped{1, 2, 3};
    QVArray::mapUsingBlock(mapped, [](int n, qsizetype index, bool *) { return n * 10 + int(index); });
    EXPECT_EQ(mapped, (QList<int>{10, 21, 32}));

    EXPECT_EQ(QVArray::arrayWithRepeatedObject(u"é"_s, 3), (QList<QString>{u"é"_s, u"é"_s, u"é"_s}));
    EXPECT_TRUE(QVArray::arrayWithRepeatedObject(1, 0).isEmpty());
    QVLogCapture log;
    EXPECT_TRUE(QVArray::arrayWithRepeatedObject(1, quint64(-1)).isEmpty());
    EXPECT_EQ(log.lines().size(), 1);
}

TEST(QVArrayAdditionsTest, RandomizeGivesEveryPermutationEquallyOften)
{
    QList<int> empty;
    QVArray::randomize(empty);
    EXPECT_TRUE(empty.isEmpty());
    QList<int> one{42};
    QVArray::randomize(one);
    EXPECT_EQ(one, QList<int>{42});

    // 60000 shuffles of (0, 1, 2): each of the 6 orders expected 10000 times.
    // The chi-square critical value for 5 degrees of freedom at p = 0.0001 is
    // 25.7; 30 keeps the test quiet while an off-by-one draw (which reaches
    // only 2 or 3 of the orders) scores in the thousands.
    constexpr int trials = 60000;
    std::map<QList<int>, int> counts;
    for (int t = 0; t < trials; ++t) {
        QList<int> array{0, 1, 2};
        QVArray::randomize(array);
        ++counts[array];
    }
    EXPECT_EQ(counts.size(), 6u);
    const double expected = trials / 6.0;
    double chiSquare = 0;
    for (const auto &[order, count] : counts) {
        EXPECT_EQ(QList<int>(order).size(), 3);
        chiSquare += (count - expected) * (count - expected) / expected;
    }
    chiSquare += (6 - double(counts.size())) * expected;
    EXPECT_LT(chiSquare, 30.0);

    // Larger arrays keep their elements.
    QList<int> many(100);
    std::iota(many.begin(), many.end(), 0);
    QList<int> shuffled = many;
    QVArray::randomize(shuffled);
    std::sort(shuffled.begin(), shuffled.end());
    EXPECT_EQ(shuffled, many);
}
