#include <QVKit/Collections/QVSortedArray.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QVariant>

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <random>
#include <set>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// A key that orders and a payload that tells equal keys apart.
struct Item
{
    int key = 0;
    int payload = 0;
};

int compareKeys(const Item &a, const Item &b)
{
    return a.key < b.key ? -1 : (a.key > b.key ? 1 : 0);
}

// Reads a direction that tests flip behind the array's back, to see whether a
// re-sort happened.
int direction = 1;
int compareKeysInDirection(const Item &a, const Item &b)
{
    return direction * compareKeys(a, b);
}
int compareKeysInDirectionToo(const Item &a, const Item &b)
{
    return compareKeysInDirection(a, b);
}

int compareInts(const int &a, const int &b)
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

QList<int> payloads(const QList<Item> &items)
{
    QList<int> result;
    for (const Item &item : items)
        result.append(item.payload);
    return result;
}

QList<int> keys(const QList<Item> &items)
{
    QList<int> result;
    for (const Item &item : items)
        result.append(item.key);
    return result;
}

// Many equal keys carrying distinct payloads, in random arrival order.
QList<Item> itemsWithDuplicates(int size, int distinctKeys, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> key(0, distinctKeys - 1);
    QList<Item> items;
    for (int index = 0; index < size; ++index)
        items.append(Item{key(random), index});
    return items;
}

QList<Item> stablySorted(QList<Item> items)
{
    std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) { return a.key < b.key; });
    return items;
}

struct Described
{
    QString name;
    QString description() const { return u"<"_s + name + u">"_s; }
};

} // namespace

TEST(QVSortedArrayTest, EqualElementsKeepArrivalOrder)
{
    auto array = QVSortedArray<Item>::arrayWithComparator(compareKeys);
    for (const Item &item : {Item{3, 0}, Item{1, 1}, Item{2, 2}, Item{2, 3}})
        array.addObject(item);
    EXPECT_EQ(keys(array.array()), QList<int>({1, 2, 2, 3}));
    EXPECT_EQ(payloads(array.array()), QList<int>({1, 2, 3, 0})) << "2 stays before 2'";
    EXPECT_EQ(array.indexRangeOfObject(Item{2, 99}), QVMakeRange(1, 2));
    EXPECT_EQ(array.indexOfObject(Item{2, 99}, 0), 1u);
    EXPECT_EQ(array.indexOfObject(Item{2, 99}, 1), 2u);
    EXPECT_EQ(array.indexOfObjectForInsertion(Item{2, 99}, 0), 1u);
    EXPECT_EQ(array.indexOfObjectForInsertion(Item{2, 99}), 3u);

    // Range-for walks the backing store in order.
    QList<int> walked;
    for (const Item &item : array)
        walked.append(item.payload);
    EXPECT_EQ(walked, QList<int>({1, 2, 3, 0}));

    // A stateless callable type and a plain function pointer order the same way.
    auto descending = [](const int &a, const int &b) { return compareInts(b, a); };
    QVSortedArray<int, decltype(descending)> lambdaArray(descending);
    QVSortedArray<int, int (*)(const int &, const int &)> pointerArray(compareInts);
    for (int value : {3, 1, 2, 2}) {
        lambdaArray.addObject(value);
        pointerArray.addObject(value);
    }
    EXPECT_EQ(lambdaArray.description(), u"(3, 2, 2, 1)"_s);
    EXPECT_EQ(pointerArray.description(), u"(1, 2, 2, 3)"_s);
}

TEST(QVSortedArrayTest, RemoveObjectRemovesTheWholeEqualRun)
{
    auto array = QVSortedArray<Item>::arrayWithComparator(compareKeys);
    array.setArray({{2, 0}, {1, 1}, {2, 2}, {3, 3}, {2, 4}});
    array.removeObject(Item{2, 99}); // equal by the comparator, not the same object
    EXPECT_EQ(payloads(array.array()), QList<int>({1, 3}));
    array.removeObject(Item{7, 0});
    EXPECT_EQ(array.count(), 2u) << "absent objects remove nothing";

    array.setArray({{1, 0}, {2, 1}, {3, 2}, {3, 3}});
    array.removeObjectsInArray({{3, 0}, {1, 0}, {9, 0}});
    EXPECT_EQ(payloads(array.array()), QList<int>({1}));

    array.setArray({{1, 0}, {2, 1}, {3, 2}, {4, 3}});
    array.removeObjectAtIndex(1);
    array.removeObjectsInRange(QVMakeRange(1, 2));
    EXPECT_EQ(payloads(array.array()), QList<int>({0}));
    array.removeAllObjects();
    EXPECT_EQ(array.count(), 0u);
}

TEST(QVSortedArrayTest, RangesAndNilResultsOnEmptyAndShortArrays)
{
    struct Row
    {
        const char *name;
        int count;
        quint64 n;
        QVRange first;
        QVRange last;
    };
    const Row rows[] = {
        {"empty, 0", 0, 0, {0, 0}, {0, 0}},
        {"empty, 3", 0, 3, {0, 0}, {0, 0}},
        {"one, 0", 1, 0, {0, 0}, {1, 0}},
        {"one, 1", 1, 1, {0, 1}, {0, 1}},
        {"four, 3", 4, 3, {0, 3}, {1, 3}},
        {"four, 10", 4, 10, {0, 4}, {0, 4}},
        {"four, huge", 4, ~quint64(0), {0, 4}, {0, 4}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVSortedArray<int> array(compareInts);
        for (int value = row.count; value > 0; --value)
            array.addObject(value);
        EXPECT_EQ(array.fullRange(), QVMakeRange(0, quint64(row.count)));
        EXPECT_EQ(array.rangeForFirstObjects(row.n), row.first);
        EXPECT_EQ(array.rangeForLastObjects(row.n), row.last);
        const auto firsts = array.subarrayWithFirstObjects(row.n);
        const auto lasts = array.subarrayWithLastObjects(row.n);
        EXPECT_EQ(firsts.has_value(), row.first.length > 0);
        EXPECT_EQ(lasts.has_value(), row.last.length > 0);
        if (lasts) {
            EXPECT_EQ(*lasts, array.subarrayWithRange(row.last));
        }

        // lastIndex cannot tell an empty array from a one-element one.
        EXPECT_EQ(array.firstIndex(), 0u);
        EXPECT_EQ(array.lastIndex(), row.count > 1 ? quint64(row.count - 1) : 0u);
        EXPECT_EQ(array.firstObject(), row.count ? std::optional<int>(1) : std::nullopt);
        EXPECT_EQ(array.lastObject(), row.count ? std::optional<int>(row.count) : std::nullopt);
        EXPECT_EQ(array.indexRangeOfObject(1), row.count ? QVMakeRange(0, 1) : QVNotFoundRange());
        EXPECT_EQ(array.indexOfObjectForInsertion(1), row.count ? 1u : 0u);

        array.removeLastObjects(row.n);
        EXPECT_EQ(array.count(), quint64(row.count) - row.last.length);
        array.removeFirstObject();
        array.removeLastObject(); // nothing when empty
        array.removeFirstObjects(row.n);
    }
    QVSortedArray<int> array(compareInts);
    array.setArray({4, 2, 3, 1});
    array.removeFirstObjects(1);
    array.removeLastObject();
    EXPECT_EQ(array.array(), QList<int>({2, 3}));
}

TEST(QVSortedArrayTest, BulkAddSortsOnlyAboveAnEighthOfTheCount)
{
    // A sort of n elements needs at least n - 1 comparisons; inserting m
    // elements one by one needs a look at either end and a binary search each.
    struct Row
    {
        int existing;
        int added;
        bool sorts;
    };
    const Row rows[] = {{0, 1, true},   {7, 1, true},  {8, 1, false},  {15, 1, false},
                        {16, 2, false}, {16, 3, true}, {80, 10, false}, {80, 11, true}};
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.added << " into " << row.existing);
        int calls = 0;
        QVSortedArray<Item> array([&calls](const Item &a, const Item &b) {
            ++calls;
            return compareKeys(a, b);
        });
        QList<Item> existing;
        for (int index = 0; index < row.existing; ++index)
            existing.append(Item{index % 4, index});
        array.setArray(existing);
        QList<Item> added;
        for (int index = 0; index < row.added; ++index)
            added.append(Item{(3 * index) % 4, 1000 + index});

        calls = 0;
        array.addObjectsFromArray(added);
        const int total = row.existing + row.added;
        if (row.sorts) {
            EXPECT_GE(calls, total - 1);
        } else {
            int depth = 0;
            while ((1 << depth) < total + 1)
                ++depth;
            EXPECT_LE(calls, row.added * (depth + 2));
        }
        // Either way the result is the stable order of old elements, then new ones.
        EXPECT_EQ(payloads(array.array()), payloads(stablySorted(existing + added)));
    }
}

TEST(QVSortedArrayTest, ReplacingTheComparatorResortsOnlyForADifferentOne)
{
    const QList<Item> items{{2, 0}, {1, 1}, {3, 2}};
    direction = 1;
    QVSortedArray<Item, int (*)(const Item &, const Item &)> pointerArray(compareKeysInDirection);
    pointerArray.setArray(items);
    QVSortedArray<Item> functionArray(compareKeysInDirection);
    functionArray.setArray(items);
    auto stateless = [](const Item &a, const Item &b) { return compareKeysInDirection(a, b); };
    QVSortedArray<Item, decltype(stateless)> statelessArray(stateless);
    statelessArray.setArray(items);

    // The order the comparator now gives is reversed, but the same callable
    // does not re-sort.
    direction = -1;
    pointerArray.setComparator(compareKeysInDirection);
    functionArray.setComparator(compareKeysInDirection);
    statelessArray.setComparator(stateless);
    EXPECT_EQ(keys(pointerArray.array()), QList<int>({1, 2, 3}));
    EXPECT_EQ(keys(functionArray.array()), QList<int>({1, 2, 3}));
    EXPECT_EQ(keys(statelessArray.array()), QList<int>({1, 2, 3}));

    // A different function, or any std::function around a lambda, re-sorts.
    pointerArray.setComparator(compareKeysInDirectionToo);
    EXPECT_EQ(keys(pointerArray.array()), QList<int>({3, 2, 1}));
    EXPECT_EQ(pointerArray.comparator(), &compareKeysInDirectionToo);
    functionArray.setComparator([](const Item &a, const Item &b) { return compareKeysInDirection(a, b); });
    EXPECT_EQ(keys(functionArray.array()), QList<int>({3, 2, 1}));
    direction = 1;

    // Elements without an order of their own have no comparator until one is
    // set: nothing is added or found, and each attempt says so.
    QVSortedArray<Item> unset;
    QVLogCapture capture;
    unset.addObject(Item{1, 0});
    unset.addObjectsFromArray({Item{2, 0}});
    unset.setArray({Item{3, 0}});
    unset.setArray({});
    EXPECT_EQ(unset.count(), 0u);
    EXPECT_EQ(unset.indexOfObjectForInsertion(Item{1, 0}), QVNotFound);
    EXPECT_EQ(capture.lines(),
              QStringList({u"QVSortedArray::addObject: the sorted array has no comparator; nothing was added. Fix this."_s,
                           u"QVSortedArray::addObjectsFromArray: the sorted array has no comparator; nothing was "
                           u"added. Fix this."_s,
                           u"QVSortedArray::setArray: the sorted array has no comparator; nothing was added. Fix "
                           u"this."_s}));
    unset.setComparator(compareKeys);
    unset.addObject(Item{1, 0});
    EXPECT_TRUE(unset.containsObject(Item{1, 5}));
}

TEST(QVSortedArrayTest, DefaultArrayOfOrderedElementsSortsNaturally)
{
    QVSortedArray<QString> words;
    for (const QString &word : {u"pear"_s, u"\u00e9clair"_s, u"apple"_s, u"pear"_s})
        words.addObject(word);
    EXPECT_EQ(words.array(), QStringList({u"apple"_s, u"pear"_s, u"pear"_s, u"\u00e9clair"_s}));
    EXPECT_EQ(words.indexOfObject(u"pear"_s), 1u);

    QVSortedArray<int> numbers;
    numbers.addObjectsFromArray({3, -1, 2});
    EXPECT_EQ(numbers.array(), QList<int>({-1, 2, 3}));
}

TEST(QVSortedArrayTest, ConcurrentSortEqualsTheSerialStableSort)
{
    for (int size : {10000, 10001, 65537}) {
        SCOPED_TRACE(size);
        std::mutex mutex;
        std::set<std::thread::id> threads;
        QVSortedArray<Item> array([&](const Item &a, const Item &b) {
            const std::lock_guard lock(mutex);
            threads.insert(std::this_thread::get_id());
            return compareKeys(a, b);
        });
        const QList<Item> items = itemsWithDuplicates(size, 37, unsigned(size));
        array.setArray(items);
        EXPECT_EQ(payloads(array.array()), payloads(stablySorted(items)));
        EXPECT_EQ(threads.size() > 1, quint64(size) >= QVSortedArray<Item>::concurrentSortThreshold);
    }

    // Bulk adds and a new comparator go through the same sort.
    auto array = QVSortedArray<Item>::arrayWithCapacity(20000, compareKeys);
    const QList<Item> items = itemsWithDuplicates(20000, 5, 7);
    array.addObjectsFromArray(items.mid(0, 3));
    array.addObjectsFromArray(items.mid(3));
    EXPECT_EQ(payloads(array.array()), payloads(stablySorted(items)));
    array.setComparator([](const Item &a, const Item &b) { return compareKeys(b, a); });
    QList<Item> expected = stablySorted(items);
    std::stable_sort(expected.begin(), expected.end(), [](const Item &a, const Item &b) { return a.key > b.key; });
    EXPECT_EQ(payloads(array.array()), payloads(expected));
}

TEST(QVSortedArrayTest, SearchesAgreeWithLowerAndUpperBound)
{
    for (int size : {0, 1, 2, 3, 17, 500}) {
        SCOPED_TRACE(size);
        std::mt19937 random(unsigned(size) + 11);
        std::uniform_int_distribution<int> value(0, 12);
        QVSortedArray<int> array(compareInts);
        std::vector<int> reference;
        for (int index = 0; index < size; ++index) {
            const int element = value(random);
            array.addObject(element);
            reference.insert(std::upper_bound(reference.begin(), reference.end(), element), element);
        }
        ASSERT_EQ(array.array(), QList<int>(reference.begin(), reference.end()));
        for (int probe = -1; probe <= 13; ++probe) {
            SCOPED_TRACE(probe);
            const quint64 lower = quint64(std::lower_bound(reference.begin(), reference.end(), probe) - reference.begin());
            const quint64 upper = quint64(std::upper_bound(reference.begin(), reference.end(), probe) - reference.begin());
            const bool found = lower != upper;
            EXPECT_EQ(array.indexOfObject(probe), found ? lower : QVNotFound);
            EXPECT_EQ(array.indexOfObject(probe, 1), found ? upper - 1 : QVNotFound);
            EXPECT_EQ(array.indexRangeOfObject(probe), found ? QVMakeRange(lower, upper - lower) : QVNotFoundRange());
            EXPECT_EQ(array.containsObject(probe), found);
            EXPECT_EQ(array.indexOfObjectForInsertion(probe, 0), lower);
            EXPECT_EQ(array.indexOfObjectForInsertion(probe, 1), upper);

            quint64 first = 0;
            quint64 last = 0;
            array.binarySearchIndexOfObject(probe, &first, &last, true);
            EXPECT_EQ(first, lower);
            EXPECT_EQ(last, upper);
            array.binarySearchIndexOfObject(probe, nullptr, nullptr, true); // no outputs asked
        }
    }
}

TEST(QVSortedArrayTest, NilObjectsAreNeverFoundAndDescriptionsShowElements)
{
    Described first{u"f\u00fcr"_s};
    Described second{u"\U0001F600"_s};
    QVSortedArray<Described *> pointers([](Described *const &a, Described *const &b) {
        return a->name < b->name ? -1 : (b->name < a->name ? 1 : 0);
    });
    pointers.addObject(&second);
    pointers.addObject(&first);
    EXPECT_EQ(pointers.description(), u"(<f\u00fcr>, <\U0001F600>)"_s);
    EXPECT_EQ(pointers.indexOfObject(nullptr), QVNotFound);
    EXPECT_EQ(pointers.indexOfObjectForInsertion(nullptr), QVNotFound);
    pointers.removeObject(nullptr);
    EXPECT_EQ(pointers.count(), 2u);

    QVSortedArray<QVariant> variants([](const QVariant &a, const QVariant &b) {
        const int order = a.toString().compare(b.toString());
        return order < 0 ? -1 : (order > 0 ? 1 : 0);
    });
    variants.setArray({QVariant(u"b"_s), QVariant(u"\u00e4"_s), QVariant(u"a"_s)});
    EXPECT_EQ(variants.description(), u"(a, b, \u00e4)"_s);
    EXPECT_FALSE(variants.containsObject(QVariant()));
    EXPECT_EQ(QVSortedArray<int>(compareInts).description(), u"()"_s);

    QVSortedArray<QSharedPointer<int>> shared(
        [](const QSharedPointer<int> &a, const QSharedPointer<int> &b) { return compareInts(*a, *b); });
    shared.addObject(QSharedPointer<int>::create(4));
    EXPECT_FALSE(shared.containsObject(QSharedPointer<int>()));
}

TEST(QVSortedArrayTest, MisuseStopsAtNamedAssertions)
{
    const auto byName = [](Described *const &a, Described *const &b) { return a->name.compare(b->name); };
    QVSortedArray<Described *> pointers(byName);
    EXPECT_DEATH(pointers.addObject(nullptr),
                 "Assertion failure in .*addObject.*QVSortedArray:[0-9]+\n.*Condition not satisfied: object");
    Described one{u"one"_s};
    EXPECT_DEATH(pointers.addObjectsFromArray({&one, nullptr}), "Condition not satisfied: object");
    EXPECT_DEATH(pointers.setArray({nullptr}), "Condition not satisfied: object");

    QVSortedArray<QVariant> variants([](const QVariant &, const QVariant &) { return 0; });
    EXPECT_DEATH(variants.addObject(QVariant()), "Condition not satisfied: object");

    QVSortedArray<int> ints(compareInts);
    EXPECT_DEATH(ints.setComparator({}),
                 "Assertion failure in .*setComparator.*QVSortedArray:[0-9]+\n.*Condition not satisfied: comparator");
    EXPECT_DEATH((void)QVSortedArray<int>(std::function<int(const int &, const int &)>()),
                 "Condition not satisfied: comparator");
    using PointerArray = QVSortedArray<int, int (*)(const int &, const int &)>;
    EXPECT_DEATH((void)PointerArray(nullptr),
                 "Condition not satisfied: comparator");

    ints.setArray({1, 2, 3});
    EXPECT_DEATH(ints.objectAtIndex(3), "Condition not satisfied: index < count");
    EXPECT_DEATH(ints.removeObjectAtIndex(QVNotFound), "Condition not satisfied: index < count");
    EXPECT_DEATH(ints.removeObjectsInRange(QVMakeRange(2, 2)), "Condition not satisfied: QVMaxRange\\(range\\) <= count");
    EXPECT_DEATH(ints.subarrayWithRange(QVMakeRange(QVNotFound, ~quint64(0))), "QVMaxRange");
    EXPECT_EQ(ints.subarrayWithRange(QVMakeRange(3, 0)), QList<int>());
    EXPECT_EQ(ints[2], 3);
}

TEST(QVSortedArrayTest, LongEditSequencesAcrossBlocksMatchAFlatModel)
{
    // Several thousand elements spread over many blocks, edited at both ends
    // and in the middle, with long runs of equal keys that cross block
    // boundaries. After every step the array must equal the flat reference.
    std::mt19937 random(7);
    QVSortedArray<Item> array(compareKeys);
    std::vector<Item> reference;
    const auto lessByKey = [](const Item &a, const Item &b) { return a.key < b.key; };
    int nextPayload = 0;
    for (int step = 0; step < 6000; ++step) {
        const bool spread = step >= 3000;
        const int action = std::uniform_int_distribution<int>(0, 19)(random);
        // Seven keys at first, so that runs of equal keys span blocks, then
        // many; removals by key start with the second half and also hit the
        // early long runs.
        const int key = std::uniform_int_distribution<int>(0, spread ? 4000 : 6)(random);
        if (action < 13 || reference.empty()) {
            const Item item{action == 0 ? -1 : (action == 1 ? 5000 : key), nextPayload++};
            array.addObject(item);
            reference.insert(std::upper_bound(reference.begin(), reference.end(), item, lessByKey), item);
        } else if (action == 13 && spread) {
            const Item probe{std::uniform_int_distribution<int>(0, 40)(random), 0};
            array.removeObject(probe);
            const auto run = std::equal_range(reference.begin(), reference.end(), probe, lessByKey);
            reference.erase(run.first, run.second);
        } else if (action == 14 || action == 15) {
            const size_t index = std::uniform_int_distribution<size_t>(0, reference.size() - 1)(random);
            EXPECT_EQ(array.objectAtIndex(index).payload, reference[index].payload);
            array.removeObjectAtIndex(index);
            reference.erase(reference.begin() + qsizetype(index));
        } else if (action == 16 && step % 4 == 0) {
            const size_t location = std::uniform_int_distribution<size_t>(0, reference.size())(random);
            const size_t length = std::uniform_int_distribution<size_t>(0, std::min<size_t>(reference.size() - location, 40))(random);
            array.removeObjectsInRange(QVMakeRange(location, length));
            reference.erase(reference.begin() + qsizetype(location), reference.begin() + qsizetype(location + length));
        } else {
            const Item probe{key, 0};
            const auto run = std::equal_range(reference.begin(), reference.end(), probe, lessByKey);
            const quint64 lower = quint64(run.first - reference.begin());
            const quint64 length = quint64(run.second - run.first);
            ASSERT_EQ(array.indexRangeOfObject(probe), length ? QVMakeRange(lower, length) : QVNotFoundRange());
            ASSERT_EQ(array.indexOfObjectForInsertion(probe, 1), lower + length);
        }
        ASSERT_EQ(array.count(), reference.size()) << "step " << step;
        if (step % 97 == 0 || step == 5999) {
            QList<int> iterated;
            for (const Item &item : array)
                iterated.append(item.payload);
            ASSERT_EQ(iterated, payloads(QList<Item>(reference.begin(), reference.end()))) << "step " << step;
            ASSERT_EQ(payloads(array.array()), iterated);
        }
    }
    EXPECT_GT(reference.size(), 1000u) << "the sequence should have grown past several blocks";
}

TEST(QVSortedArrayTest, RemovingAContainedPointerEqualsRemovingByComparison)
{
    // Pointers into a pool of items with few keys: runs of equal keys span
    // blocks, and some probes are not in the array at all. Both removals must
    // leave the same elements, whichever element of a run is named.
    std::vector<Item> pool;
    for (int index = 0; index < 900; ++index)
        pool.push_back(Item{(index * 7919) % 13, index});
    const auto byKey = [](const Item *const &a, const Item *const &b) { return compareKeys(*a, *b); };
    QVSortedArray<const Item *, decltype(byKey)> array(byKey);
    for (size_t index = 0; index < 800; ++index)
        array.addObject(&pool[index]);
    for (size_t probe : {size_t(0), size_t(1), size_t(399), size_t(799), size_t(800), size_t(899)}) {
        SCOPED_TRACE(probe);
        auto byAddress = array;
        auto byComparison = array;
        byAddress.removeContainedObject(&pool[probe]);
        byComparison.removeObject(&pool[probe]);
        ASSERT_LT(byAddress.count(), array.count());
        EXPECT_EQ(byAddress.array(), byComparison.array());
    }
    // Distinct keys: the element is found by address, alone in its run.
    QVSortedArray<const Item *, decltype(byKey)> distinct(byKey);
    std::vector<Item> spread;
    for (int index = 0; index < 600; ++index)
        spread.push_back(Item{index, index});
    for (const Item &item : spread)
        distinct.addObject(&item);
    for (int index : {0, 255, 256, 599}) {
        distinct.removeContainedObject(&spread[size_t(index)]);
        EXPECT_FALSE(distinct.containsObject(&spread[size_t(index)]));
    }
    EXPECT_EQ(distinct.count(), 596u);
}
