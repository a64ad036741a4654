#include <QVKit/Text/QVRangeFunctions.h>

#include <QtCore/QRandomGenerator>
#include <QtCore/QThreadPool>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr quint64 NotFound = QVNotFound;
constexpr quint64 Top = ~quint64(0);

constexpr QVRangeSanitizeOptions Sort = QVRangeSanitizeOptionSort;
constexpr QVRangeSanitizeOptions RemoveEmpty = QVRangeSanitizeOptionRemoveEmpty;
constexpr QVRangeSanitizeOptions RemoveNotFound = QVRangeSanitizeOptionRemoveNotFound;
constexpr QVRangeSanitizeOptions Merge = QVRangeSanitizeOptionMerge;

std::string describe(const QVOptionalRangeList &ranges)
{
    return QVRangeListToString(ranges).toStdString();
}

// The sanitizing steps exactly as written down, one range at a time, to hold
// the concurrent implementation against.
QVRangeList referenceSanitize(QVRangeList ranges, QVRangeSanitizeOptions options)
{
    if (options == 0)
        options = 15;
    if (options & (RemoveEmpty | RemoveNotFound)) {
        QVRangeList kept;
        for (const QVRange &range : ranges) {
            if ((options & RemoveEmpty) && range.length == 0)
                continue;
            if ((options & RemoveNotFound) && range.location == QVNotFound)
                continue;
            kept.append(range);
        }
        ranges = kept;
    }
    if ((options & Sort) && ranges.size() >= 2) {
        std::stable_sort(ranges.begin(), ranges.end(), [](const QVRange &a, const QVRange &b) {
            return a.location != b.location ? a.location < b.location : a.length < b.length;
        });
    }
    if ((options & Merge) && ranges.size() >= 2) {
        const auto wraps = [](QVRange r) { return QVMaxRange(r) < r.location; };
        QVRangeList merged;
        QVRange current = ranges.first();
        for (qsizetype index = 1; index < ranges.size(); ++index) {
            const QVRange range = ranges.at(index);
            const bool joins = !wraps(current) && !wraps(range)
                && (QVIntersectionRange(current, range).length != 0 || QVMaxRange(current) == range.location);
            if (joins) {
                current = QVUnionRange(current, range);
            } else {
                merged.append(current);
                current = range;
            }
        }
        merged.append(current);
        ranges = merged;
    }
    return ranges;
}

enum class Shape {
    Crowded, // few distinct locations and lengths: many exactly equal ranges
    Text,    // text-like: locations up to 10^8, short lengths, some empty and not-found
    Wide,    // random 64-bit locations and lengths: too many key bytes for a radix sort
    Sorted,  // already sorted and apart
};

QVRangeList randomRanges(qsizetype count, Shape shape, quint32 seed)
{
    QRandomGenerator random(seed);
    QVRangeList ranges;
    ranges.reserve(count);
    for (qsizetype index = 0; index < count; ++index) {
        switch (shape) {
        case Shape::Crowded:
            ranges.append({random.bounded(12) == 0 ? NotFound : random.bounded(20u), random.bounded(4u)});
            break;
        case Shape::Text:
            ranges.append({random.bounded(50) == 0 ? NotFound : random.bounded(100000000u), random.bounded(101u)});
            break;
        case Shape::Wide:
            ranges.append({random.generate64() >> 1, random.generate64() >> 40});
            break;
        case Shape::Sorted:
            ranges.append({quint64(index) * 10, 1 + random.bounded(8u)});
            break;
        }
    }
    return ranges;
}

// Sets the global pool's thread count for one scope, so that chunk counts
// other than this machine's can be exercised.
class PoolThreads
{
public:
    explicit PoolThreads(int count) : m_saved(QThreadPool::globalInstance()->maxThreadCount())
    {
        QThreadPool::globalInstance()->setMaxThreadCount(count);
    }
    ~PoolThreads() { QThreadPool::globalInstance()->setMaxThreadCount(m_saved); }

private:
    int m_saved;
};

} // namespace

TEST(QVRangeFunctionsTest, SanitizeSteps)
{
    struct Row
    {
        const char *name;
        QVRangeList input;
        QVRangeSanitizeOptions options;
        QVRangeList expected;
    };
    const Row rows[] = {
        {"every step", {{5, 2}, {0, 0}, {NotFound, 0}, {1, 4}, {7, 1}}, 0, {{1, 7}}},
        {"options 0 mean all four", {{5, 2}, {0, 0}, {NotFound, 0}, {1, 4}, {7, 1}}, 15, {{1, 7}}},
        {"sort only keeps empty and not-found ranges",
         {{5, 0}, {1, 2}, {NotFound, 0}, {0, 0}, {1, 1}},
         Sort,
         {{0, 0}, {1, 1}, {1, 2}, {5, 0}, {NotFound, 0}}},
        {"remove empty keeps order and not-found ranges with a length",
         {{NotFound, 3}, {5, 0}, {9, 2}, {1, 2}},
         RemoveEmpty,
         {{NotFound, 3}, {9, 2}, {1, 2}}},
        {"remove not-found keeps empty ranges and ranges past QVNotFound",
         {{NotFound, 0}, {5, 0}, {NotFound + 1, 2}, {1, 2}, {NotFound, 3}},
         RemoveNotFound,
         {{5, 0}, {NotFound + 1, 2}, {1, 2}}},
        {"merge joins touching and overlapping neighbours",
         {{0, 2}, {2, 3}, {6, 1}, {7, 0}, {10, 5}, {12, 1}},
         Merge,
         {{0, 5}, {6, 1}, {10, 5}}},
        {"merge does not sort: a touch from the other side is missed", {{5, 2}, {1, 4}}, Merge, {{5, 2}, {1, 4}}},
        {"merge of an unsorted overlap takes the union", {{5, 2}, {0, 10}, {20, 1}}, Merge, {{0, 10}, {20, 1}}},
        {"an empty range inside another does not merge", {{0, 10}, {5, 0}}, Merge, {{0, 10}, {5, 0}}},
        {"an empty range at the end touches", {{0, 10}, {10, 0}}, Merge, {{0, 10}}},
        {"sort then merge without filtering", {{5, 0}, {0, 5}, {NotFound, 0}, {NotFound, 0}}, Sort | Merge,
         {{0, 5}, {NotFound, 0}}},
        {"filter then merge without sorting", {{4, 2}, {0, 0}, {6, 1}, {NotFound, 0}, {1, 1}},
         RemoveEmpty | RemoveNotFound | Merge,
         {{4, 3}, {1, 1}}},
        {"unknown option bits do nothing", {{5, 2}, {0, 0}, {5, 2}}, 16, {{5, 2}, {0, 0}, {5, 2}}},
        {"unknown bits beside known ones are ignored", {{5, 2}, {0, 0}}, 16 | RemoveEmpty, {{5, 2}}},
        {"an empty list", {}, 0, {}},
        {"one empty range is dropped", {{3, 0}}, 0, {}},
        {"one range stays", {{3, 1}}, 0, {{3, 1}}},
        {"a range reaching the top of the value space", {{Top - 5, 5}, {Top, 0}, {Top - 7, 2}}, Sort | Merge,
         {{Top - 7, 7}}},
        // Ranges whose maximum wraps past 2^64 - 1 never merge: they pass through as given.
        {"wrapping ranges stay apart", {{Top - 3, 2}, {Top - 1, 5}}, 0, {{Top - 3, 2}, {Top - 1, 5}}},
        {"a wrapping range is sorted by its location", {{Top - 1, 5}, {1, 1}}, 0, {{1, 1}, {Top - 1, 5}}},
        {"a wrapping range touching a neighbour's end", {{0, 10}, {10, Top}}, 0, {{0, 10}, {10, Top}}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRangeList input = row.input;
        const QVRangeList result = QVRangeSanitizeWithOptions(input, row.options);
        EXPECT_EQ(result, row.expected) << describe(result);
        EXPECT_EQ(result, referenceSanitize(row.input, row.options));
        EXPECT_EQ(input, row.input) << "the caller's list was modified";
        if (row.options == 0) {
            EXPECT_EQ(QVRangeSanitize(input), row.expected);
        }
    }
}

TEST(QVRangeFunctionsTest, SanitizeReturnsTheInputWhenNothingChanges)
{
    struct Row
    {
        const char *name;
        QVRangeList input;
        QVRangeSanitizeOptions options;
    };
    QVRangeList manyClean = randomRanges(5000, Shape::Sorted, 7);
    QVRangeList manyWithEmpty = manyClean;
    manyWithEmpty[2500].length = 0;
    QVRangeList unsortedApart = {{20, 1}, {0, 2}, {10, 3}};
    const Row rows[] = {
        {"clean short list, every step", {{0, 2}, {3, 1}, {9, 4}}, 0},
        {"clean long list, every step", manyClean, 0},
        {"long list with an empty range, no filter", manyWithEmpty, Sort | Merge | RemoveNotFound},
        {"unsorted list apart, merge only", unsortedApart, Merge},
        {"unsorted list, filters only", unsortedApart, RemoveEmpty | RemoveNotFound},
        {"unknown bits only", unsortedApart, 32},
        {"one range", {{4, 0}}, Sort | Merge},
        {"empty list", {}, 0},
        {"equal ranges, sort only", QVRangeList(300, QVRange{7, 7}), Sort},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVRangeList result = QVRangeSanitizeWithOptions(row.input, row.options);
        EXPECT_EQ(result, row.input);
        EXPECT_TRUE(result.isSharedWith(row.input));
        EXPECT_EQ(result.constData(), row.input.constData());
    }

    // When a step does change the list, the caller's list is left as it was.
    QVRangeList shuffled = manyClean;
    std::reverse(shuffled.begin(), shuffled.end());
    const QVRangeList before = shuffled;
    const QVRangeList sorted = QVRangeSanitize(shuffled);
    EXPECT_EQ(sorted, manyClean);
    EXPECT_FALSE(sorted.isSharedWith(shuffled));
    EXPECT_EQ(shuffled, before);
}

// Lists around the concurrency threshold and far above it (where the sort
// fills thousands of buckets) give what the one-by-one steps give, for every
// combination of options, with many exactly equal ranges, with locations
// spread over all 63 bits, and with several pool sizes (so 2, 4 and 8 chunks
// are all exercised).
TEST(QVRangeFunctionsTest, SanitizeConcurrentEqualsSerial)
{
    const qsizetype sizes[] = {2, 3, 50, 98, 99, 100, 101, 150, 1000, 4095, 4097, 20000};
    const Shape shapes[] = {Shape::Crowded, Shape::Text, Shape::Wide, Shape::Sorted};
    for (int threads : {1, 2, 3, 8}) {
        PoolThreads pool(threads);
        for (qsizetype size : sizes) {
            for (Shape shape : shapes) {
                for (quint32 seed : {1u, 2u}) {
                    const QVRangeList input = randomRanges(size, shape, seed * 1000 + quint32(size));
                    for (QVRangeSanitizeOptions options = 0; options < 16; ++options) {
                        SCOPED_TRACE(testing::Message() << "threads " << threads << ", size " << size << ", shape "
                                                        << int(shape) << ", seed " << seed << ", options " << options);
                        const QVRangeList result = QVRangeSanitizeWithOptions(input, options);
                        const QVRangeList expected = referenceSanitize(input, options);
                        ASSERT_EQ(result.size(), expected.size());
                        ASSERT_TRUE(result == expected);
                    }
                }
            }
        }
    }
}

// Callers on several threads at once, and callers that run on the global pool
// themselves while it is full, all finish with the serial answer.
TEST(QVRangeFunctionsTest, SanitizeFromManyThreads)
{
    PoolThreads pool(2);
    std::vector<QVRangeList> inputs;
    std::vector<QVRangeList> expected;
    for (quint32 seed = 0; seed < 6; ++seed) {
        inputs.push_back(randomRanges(10000 + seed * 37, seed % 2 ? Shape::Text : Shape::Crowded, seed));
        expected.push_back(referenceSanitize(inputs.back(), 0));
    }

    std::vector<QVRangeList> fromThreads(inputs.size());
    std::vector<std::thread> threads;
    for (size_t index = 0; index < inputs.size(); ++index)
        threads.emplace_back([&, index] { fromThreads[index] = QVRangeSanitize(inputs[index]); });
    for (std::thread &thread : threads)
        thread.join();

    std::vector<QVRangeList> fromPool(inputs.size());
    std::atomic<int> finished = 0;
    for (size_t index = 0; index < inputs.size(); ++index) {
        QThreadPool::globalInstance()->start([&, index] {
            fromPool[index] = QVRangeSanitize(inputs[index]);
            ++finished;
        });
    }
    ASSERT_TRUE(QThreadPool::globalInstance()->waitForDone(60000));
    EXPECT_EQ(finished.load(), int(inputs.size()));

    for (size_t index = 0; index < inputs.size(); ++index) {
        EXPECT_TRUE(fromThreads[index] == expected[index]) << "thread " << index;
        EXPECT_TRUE(fromPool[index] == expected[index]) << "pool task " << index;
    }
}

TEST(QVRangeFunctionsTest, Subtract)
{
    struct Row
    {
        const char *name;
        QVOptionalRangeList ranges;
        QVOptionalRangeList subtrahends;
        QVOptionalRangeList expected;
    };
    const Row rows[] = {
        {"two holes", QVRangeList{{0, 10}}, QVRangeList{{2, 2}, {6, 2}}, QVRangeList{{0, 2}, {4, 2}, {8, 2}}},
        {"everything removed gives nil", QVRangeList{{0, 10}}, QVRangeList{{0, 10}}, std::nullopt},
        {"the leading piece is not clipped to the first range", QVRangeList{{0, 5}}, QVRangeList{{10, 2}},
         QVRangeList{{0, 10}}},
        {"one hole in each of two ranges", QVRangeList{{0, 10}, {20, 10}}, QVRangeList{{5, 2}, {25, 2}},
         QVRangeList{{0, 5}, {7, 3}, {27, 3}}},
        {"a later range loses the part before its first subtrahend", QVRangeList{{0, 10}, {20, 10}},
         QVRangeList{{2, 2}, {22, 2}}, QVRangeList{{0, 2}, {4, 6}, {24, 6}}},
        {"a range between subtrahends is kept whole", QVRangeList{{0, 5}, {10, 5}, {20, 5}},
         QVRangeList{{2, 1}, {22, 1}}, QVRangeList{{0, 2}, {3, 2}, {10, 5}, {23, 2}}},
        {"a subtrahend covering a range's end, then one past it", QVRangeList{{0, 10}},
         QVRangeList{{5, 5}, {20, 2}}, QVRangeList{{0, 10}}},
        {"a subtrahend wider than the range", QVRangeList{{5, 5}}, QVRangeList{{0, 20}}, std::nullopt},
        {"an empty subtrahend meets nothing", QVRangeList{{0, 10}}, QVRangeList{{5, 0}}, QVRangeList{{0, 10}}},
        {"an empty range is not kept whole", QVRangeList{{0, 0}}, QVRangeList{{5, 1}}, QVRangeList{{0, 5}}},
        {"a not-found range gives nil", QVRangeList{{NotFound, 0}}, QVRangeList{{0, 1}}, std::nullopt},
        // Overlapping subtrahends: the next one starting before the piece leaves no piece.
        {"overlapping subtrahends", QVRangeList{{0, 20}}, QVRangeList{{2, 8}, {5, 2}}, QVRangeList{{0, 2}, {7, 13}}},
        {"pieces are sanitized", QVRangeList{{0, 10}, {10, 10}}, QVRangeList{{3, 1}, {30, 1}},
         QVRangeList{{0, 3}, {4, 16}}},
        {"a wrapping range meets no subtrahend", QVRangeList{{Top - 1, 5}}, QVRangeList{{0, 1}},
         QVRangeList{{Top - 1, 5}}},
        {"a range at the top of the value space", QVRangeList{{Top - 10, 10}}, QVRangeList{{Top - 5, 2}},
         QVRangeList{{Top - 10, 5}, {Top - 3, 3}}},
        {"nil list", std::nullopt, QVRangeList{{0, 1}}, std::nullopt},
        {"nil list and nil subtrahends", std::nullopt, std::nullopt, std::nullopt},
        {"empty list", QVRangeList{}, QVRangeList{{0, 1}}, std::nullopt},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVOptionalRangeList result = QVRangeSubtract(row.ranges, row.subtrahends);
        EXPECT_EQ(result, row.expected) << describe(result);
    }

    // No subtrahends give the list itself, unchanged and unsanitized, even an empty one.
    const QVRangeList messy = {{9, 1}, {0, 0}, {NotFound, 0}};
    for (const QVOptionalRangeList &none : {QVOptionalRangeList(), QVOptionalRangeList(QVRangeList())}) {
        const QVOptionalRangeList same = QVRangeSubtract(messy, none);
        ASSERT_TRUE(same.has_value());
        EXPECT_EQ(*same, messy);
        EXPECT_TRUE(same->isSharedWith(messy));
        const QVOptionalRangeList empty = QVRangeSubtract(QVRangeList(), none);
        ASSERT_TRUE(empty.has_value());
        EXPECT_TRUE(empty->isEmpty());
    }
}

TEST(QVRangeFunctionsTest, AdjustForSubsequentFind)
{
    struct Row
    {
        const char *name;
        QVRange search;
        QVRange found;
        QVStringCompareOptions options;
        QVRange expected;
    };
    const Row rows[] = {
        {"forwards: the part after the match", {0, 10}, {3, 2}, 0, {5, 5}},
        {"backwards: the part before the match", {0, 10}, {3, 2}, QVBackwardsSearch, {0, 3}},
        {"found outside the search range", {0, 10}, {12, 2}, 0, {0, 0}},
        {"found before the search range", {5, 10}, {3, 4}, 0, {0, 0}},
        {"found past the search maximum", {5, 10}, {13, 3}, QVBackwardsSearch, {0, 0}},
        {"not found", {0, 10}, QVNotFoundRange(), 0, {0, 0}},
        {"empty search range", {4, 0}, {4, 0}, 0, {0, 0}},
        {"match at the end ends a forward loop", {0, 10}, {8, 2}, 0, {10, 0}},
        {"match at the start ends a backward loop", {0, 10}, {0, 2}, QVBackwardsSearch, {0, 0}},
        {"offset search range, forwards", {5, 10}, {7, 3}, 0, {10, 5}},
        {"offset search range, backwards", {5, 10}, {7, 3}, QVBackwardsSearch, {5, 2}},
        {"other option bits are ignored", {5, 10}, {7, 3}, QVCaseInsensitiveSearch | QVAnchoredSearch, {10, 5}},
        {"backwards among other bits", {5, 10}, {7, 3}, QVBackwardsSearch | QVLiteralSearch, {5, 2}},
        {"an empty match", {0, 10}, {4, 0}, 0, {4, 6}},
        {"the top of the value space", {Top - 10, 10}, {Top - 5, 5}, 0, {Top, 0}},
        {"a wrapping search range", {Top - 2, 5}, {Top - 1, 1}, 0, {0, 0}},
        {"a wrapping match", {0, Top}, {Top - 1, 5}, QVBackwardsSearch, {0, 0}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVRangeAdjustForSubsequentFind(row.search, row.found, row.options), row.expected);
    }
}
