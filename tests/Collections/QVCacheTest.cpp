#include <QVKit/Collections/QVCache.h>
#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QMap>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// Installs a clock the test moves by hand, so that every order and tie is the test's choice.
class ManualClock
{
public:
    ManualClock()
    {
        QVCacheItemBase::setClockForTesting([this] { return now; });
    }
    ~ManualClock() { QVCacheItemBase::setClockForTesting({}); }
    double now = 1.0;
};

using StringCache = QVCache<QString, int>;

QString sortedKeys(const StringCache &cache)
{
    QStringList keys = cache.allKeys();
    keys.sort();
    return keys.join(u' ');
}

/**
 * Runs a script on a cache, one step per word, each at the current time,
 * which then moves on by 1: "+a" caches a, "a" reads a, "-a" removes a,
 * "@5" sets the time to 5, "L8" sets the item limit to 8, "B1" the behaviour
 * to 1. Answers the keys left, sorted.
 */
QString runScript(QVCacheBehavior behavior, quint64 limit, const QString &script)
{
    ManualClock clock;
    StringCache cache(behavior, limit);
    int value = 0;
    for (const QString &step : script.split(u' ', Qt::SkipEmptyParts)) {
        const QString argument = step.mid(1);
        if (step.startsWith(u'@')) {
            clock.now = argument.toDouble();
            continue;
        }
        if (step.startsWith(u'+'))
            cache.setObject(++value, argument, 0);
        else if (step.startsWith(u'-'))
            cache.removeObjectForKey(argument);
        else if (step.startsWith(u'L'))
            cache.setItemLimit(argument.toULongLong());
        else if (step.startsWith(u'B'))
            cache.setCacheBehavior(QVCacheBehavior(argument.toULongLong()));
        else
            EXPECT_TRUE(cache.objectForKey(step).has_value()) << qPrintable(step);
        clock.now += 1.0;
    }
    return sortedKeys(cache);
}

} // namespace

TEST(QVCacheTest, EvictionOrders)
{
    const struct
    {
        const char *name;
        QVCacheBehavior behavior;
        quint64 limit;
        const char *script;
        const char *remaining;
    } rows[] = {
        {"lru evicts oldest", QVCacheBehaviorLeastRecentlyUsed, 2, "+a +b +c", "b c"},
        {"lru read refreshes", QVCacheBehaviorLeastRecentlyUsed, 2, "+a +b a +c", "a c"},
        {"lru equal times: later arrival goes first", QVCacheBehaviorLeastRecentlyUsed, 2, "@1 +a @1 +b @2 +c",
         "a c"},
        // Reading a takes b, whose time equals a's, out of the order with it:
        // b stays cached but is never evicted, so a goes instead.
        {"lru tied records leave the order together", QVCacheBehaviorLeastRecentlyUsed, 3,
         "@1 +a @1 +b @2 a @3 +c @4 +d", "b c d"},
        {"lru tied removal by key", QVCacheBehaviorLeastRecentlyUsed, 2, "@1 +a @1 +b @2 -a @3 +c @4 +d", "b d"},
        {"lfu lowest count goes", QVCacheBehaviorLeastFrequentlyUsed, 2, "+a +b a a b +c", "a c"},
        {"lfu equal counts: read longer ago goes", QVCacheBehaviorLeastFrequentlyUsed, 2, "+a +b b a +c", "a c"},
        {"lfu equal counts and times: later arrival goes", QVCacheBehaviorLeastFrequentlyUsed, 2,
         "@1 +a @1 +b @2 +c", "a c"},
        {"lfu replacement restarts the count", QVCacheBehaviorLeastFrequentlyUsed, 2, "+a +b a a a b b +a +c",
         "b c"},
        {"replacement at the limit never evicts", QVCacheBehaviorLeastRecentlyUsed, 2, "+a +b +a +b +a", "a b"},
        {"lowering 10 to 8 with 3 entries evicts 2", QVCacheBehaviorLeastRecentlyUsed, 10, "+a +b +c L8", "c"},
        {"lowering by less than the free room still evicts", QVCacheBehaviorLeastRecentlyUsed, 64, "+a +b L63",
         "b"},
        {"raising evicts nothing", QVCacheBehaviorLeastRecentlyUsed, 2, "+a +b L5 +c", "a b c"},
        {"same limit evicts nothing", QVCacheBehaviorLeastRecentlyUsed, 3, "+a +b +c L3", "a b c"},
        {"0 means 64", QVCacheBehaviorLeastRecentlyUsed, 64, "+a +b L0", "a b"},
        {"lru without switch", QVCacheBehaviorLeastRecentlyUsed, 3, "+a +b +c a a c b +d", "b c d"},
        {"switch to lfu rebuilds the order", QVCacheBehaviorLeastRecentlyUsed, 3, "+a +b +c a a c b B1 +d",
         "a b d"},
        {"switch back to lru", QVCacheBehaviorLeastFrequentlyUsed, 3, "+a +b +c a a c b B0 +d", "b c d"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(runScript(row.behavior, row.limit, QString::fromUtf8(row.script)),
                  QString::fromUtf8(row.remaining))
            << row.name;
}

TEST(QVCacheTest, RandomBehaviorEvictsOneOfTheEntries)
{
    StringCache cache(QVCacheBehaviorRandom, 3);
    for (int n = 0; n < 3; ++n)
        cache.setObject(n, QString::number(n), 0);
    int oldestEvicted = 0;
    for (int n = 3; n < 60; ++n) {
        const QStringList before = cache.allKeys();
        const QString key = QString::number(n);
        cache.setObject(n, key, 0);
        const QStringList after = cache.allKeys();
        ASSERT_EQ(cache.count(), 3u);
        ASSERT_TRUE(after.contains(key));
        int kept = 0;
        int oldest = n;
        for (const QString &old : before) {
            oldest = std::min(oldest, old.toInt());
            if (after.contains(old))
                ++kept;
        }
        ASSERT_EQ(kept, 2);
        if (!after.contains(QString::number(oldest)))
            ++oldestEvicted;
    }
    // Uniform picks among 3 hit the oldest about a third of the time; all or
    // none of 57 would take odds below 1e-9.
    EXPECT_GT(oldestEvicted, 0);
    EXPECT_LT(oldestEvicted, 57);
    EXPECT_EQ(cache.objectPool().count(), 3u);
}

TEST(QVCacheTest, ItemLimitAndPrefillAmount)
{
    const struct
    {
        quint64 limit;
        quint64 itemLimit;
        quint64 prefill;
    } rows[] = {{0, 64, 64}, {1, 1, 1}, {10, 10, 10}, {64, 64, 64}, {65, 65, 64}, {100, 100, 64}};
    for (const auto &row : rows) {
        const StringCache cache(QVCacheBehaviorLeastRecentlyUsed, row.limit);
        EXPECT_EQ(cache.itemLimit(), row.itemLimit) << row.limit;
        EXPECT_EQ(cache.prefillAmount(), row.prefill) << row.limit;
        EXPECT_EQ(cache.objectPool().freeObjectCount(), row.prefill) << row.limit;
    }
    const StringCache fresh;
    EXPECT_EQ(fresh.cacheBehavior(), QVCacheBehaviorLeastRecentlyUsed);
    EXPECT_EQ(fresh.itemLimit(), 64u);
    EXPECT_EQ(fresh.count(), 0u);
}

TEST(QVCacheTest, InsertingAfterAnEvictionMakesNoNewRecord)
{
    for (const QVCacheBehavior behavior :
         {QVCacheBehaviorLeastRecentlyUsed, QVCacheBehaviorLeastFrequentlyUsed, QVCacheBehaviorRandom}) {
        QVCache<int, QString> cache(behavior, 4);
        for (int n = 0; n < 200; ++n) {
            cache.setObject(u"value"_s, n, n);
            cache.objectForKey(n - 1);
        }
        EXPECT_EQ(cache.count(), 4u);
        // The pool made its 4 records up front and never needed another.
        EXPECT_EQ(cache.objectPool().count(), 4u) << behavior;
        EXPECT_EQ(cache.objectPool().usedObjectCount(), 4u);
    }
}

TEST(QVCacheTest, StatisticsAndDescription)
{
    StringCache cache;
    EXPECT_EQ(cache.statistics().description(), u"0 accesses (0% hit rate, 0% miss rate)."_s);
    EXPECT_EQ(cache.objectForKey(u"missing"_s), std::nullopt);
    EXPECT_EQ(cache.statistics().description(), u"1 accesses (0% hit rate, 100% miss rate)."_s);

    cache.setObject(7, u"a"_s, 3);
    EXPECT_EQ(cache.objectForKey(u"a"_s), 7);
    EXPECT_EQ(cache.objectForKeyedSubscript(u"a"_s), 7);
    EXPECT_EQ(cache.statistics().accesses(), 3u);
    EXPECT_EQ(cache.statistics().hits(), 2u);
    EXPECT_EQ(cache.statistics().misses(), 1u);
    const QRegularExpression expected(
        uR"(^<QVCache 0x[0-9a-f]+> 1 items\. 3 accesses \(67% hit rate, 33% miss rate\)\.$)"_s);
    EXPECT_TRUE(expected.match(cache.description()).hasMatch()) << qPrintable(cache.description());

    // Same behaviour: nothing happens; another one: entries kept, statistics from 0.
    cache.setCacheBehavior(QVCacheBehaviorLeastRecentlyUsed);
    EXPECT_EQ(cache.statistics().accesses(), 3u);
    cache.setCacheBehavior(QVCacheBehaviorRandom);
    EXPECT_EQ(cache.statistics().accesses(), 0u);
    EXPECT_EQ(cache.objectForKey(u"a"_s), 7);

    cache.removeAllObjects();
    EXPECT_EQ(cache.count(), 0u);
    EXPECT_EQ(cache.statistics().accesses(), 1u);
    EXPECT_EQ(cache.objectPool().usedObjectCount(), 0u);
    cache.setObject(1, u"b"_s, 0);
    cache.reset();
    EXPECT_EQ(cache.count(), 0u);
    EXPECT_EQ(cache.statistics().accesses(), 0u);
}

// Whether cache.setObject(object, key[, cost]) compiles for these argument types.
template <typename Cache, typename Object, typename Key>
concept SetsWithCost = requires(Cache &cache, Object object, Key key) { cache.setObject(object, key, quint64(1)); };
template <typename Cache, typename Object, typename Key>
concept Sets = requires(Cache &cache, Object object, Key key) { cache.setObject(object, key); };

// Object first, key second; swapping them must not compile where the two types differ.
static_assert(SetsWithCost<QVCache<QString, int>, int, QString>);
static_assert(Sets<QVCache<QString, int>, int, QString>);
static_assert(!SetsWithCost<QVCache<QString, int>, QString, int>);
static_assert(!Sets<QVCache<QString, int>, QString, int>);
static_assert(SetsWithCost<QVCache<int, double>, double, int>);
static_assert(!SetsWithCost<QVCache<int, double>, int, double>, "numbers would convert silently");
static_assert(!SetsWithCost<QVCache<QString, QVariant>, QString, QVariant>, "anything converts to QVariant");
static_assert(SetsWithCost<QVCache<QString, QVariant>, QVariant, QString>);
static_assert(SetsWithCost<QVCache<QString, QVariant>, int, QString>);
static_assert(SetsWithCost<QVCache<QString, int>, std::optional<int>, QString>);
static_assert(Sets<QVCache<QString, int>, std::nullopt_t, QString>);
static_assert(SetsWithCost<QVCache<QString, QString>, QString, QString>, "the same type cannot be told apart");

TEST(QVCacheTest, SetObjectWithAndWithoutACost)
{
    StringCache cache;
    cache.setObject(1, u"a"_s);
    cache.setObject(2, u"b"_s, 5);
    cache.setObject(std::optional<int>(3), u"c"_s);
    EXPECT_EQ(sortedKeys(cache), u"a b c"_s);
    EXPECT_EQ(cache.objectForKey(u"a"_s), 1);
    cache.setObject(std::nullopt, u"a"_s);
    cache.setObject(std::optional<int>(), u"b"_s, 9);
    EXPECT_EQ(sortedKeys(cache), u"c"_s);
}

TEST(QVCacheTest, RemovalAndNilObjects)
{
    StringCache cache(QVCacheBehaviorLeastFrequentlyUsed, 8);
    for (const QString &key : {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"ü😀"_s})
        cache.setObject(int(key.size()), key, 0);
    cache.removeObjectForKey(u"a"_s);
    cache.removeObjectForKey(u"absent"_s);
    cache.removeObjectsForKeys({u"b"_s, u"c"_s});
    cache.setObject(std::nullopt, u"d"_s, 0);
    cache.setObjectForKeyedSubscript(std::optional<int>(), u"nothing"_s);
    EXPECT_EQ(sortedKeys(cache), u"ü😀"_s);
    EXPECT_EQ(cache.objectForKey(u"ü😀"_s), 3);
    EXPECT_EQ(cache.objectPool().usedObjectCount(), 1u);

    cache.setObjectForKeyedSubscript(5, u"e"_s);
    cache.setObject(std::optional<int>(6), u"f"_s, 0);
    EXPECT_EQ(cache.allValues().size(), 3);
    EXPECT_EQ(cache.objectForKey(u"e"_s), 5);
    EXPECT_EQ(cache.objectForKey(u"f"_s), 6);
    cache.setObjectForKeyedSubscript(std::nullopt, u"e"_s);
    EXPECT_EQ(cache.objectForKey(u"e"_s), std::nullopt);
}

TEST(QVCacheTest, UnsupportedBehaviorLogsAndNeverEvicts)
{
    QVLogCapture capture;
    StringCache cache(QVCacheBehavior(7), 2);
    EXPECT_EQ(capture.lines(), QStringList{u"Unsupported cache behavior"_s});
    for (const QString &key : {u"a"_s, u"b"_s, u"c"_s, u"d"_s})
        cache.setObject(1, key, 0);
    // Only the insert that found the cache exactly at its limit tried to evict.
    EXPECT_EQ(capture.lines().size(), 2);
    EXPECT_EQ(cache.count(), 4u);
    EXPECT_EQ(cache.objectForKey(u"a"_s), 1);
    cache.setItemLimit(1);
    EXPECT_EQ(capture.lines().size(), 3);
    EXPECT_EQ(cache.count(), 4u);
}

TEST(QVCacheTest, BulkInsertWarnsAboutDictionariesBeyondTheLimit)
{
    ManualClock clock;
    StringCache cache(QVCacheBehaviorLeastRecentlyUsed, 2);
    QVLogCapture capture;
    cache.setObjectsAndKeys(QMap<QString, int>{{u"a"_s, 1}, {u"b"_s, 2}}, 5);
    EXPECT_TRUE(capture.lines().isEmpty());
    clock.now = 2.0;
    cache.setObjectsAndKeys(QMap<QString, int>{{u"c"_s, 3}, {u"d"_s, 4}, {u"e"_s, 5}}, 5);
    const QString warning = QVFormat("<%@ %p> is adding a dictionary with more items than its itemLimit.",
                                     "QVCache", static_cast<const void *>(&cache));
    EXPECT_EQ(capture.lines(), QStringList{warning});
    // Entries of one call share a time; among equal times the later arrival is evicted first.
    EXPECT_EQ(sortedKeys(cache), u"c e"_s);
}

TEST(QVCacheTest, VariantKeysAndValues)
{
    QVCache<QVariant, QVariant> cache;
    cache.setObject(QVariant(u"one"_s), QVariant(1), 0);
    cache.setObject(QVariant(QVariantList{1, u"x"_s}), QVariant(u"1"_s), 0);
    cache.setObject(QVariant(u"ignored"_s), QVariant(), 0);
    cache.setObject(QVariant::fromValue(nullptr), QVariant(u"null"_s), 0);
    EXPECT_EQ(cache.count(), 3u);

    // Numbers are one key across number types; text is not a number.
    EXPECT_EQ(cache.objectForKey(QVariant(1.0)), QVariant(u"one"_s));
    EXPECT_EQ(cache.objectForKey(QVariant(qulonglong(1))), QVariant(u"one"_s));
    EXPECT_EQ(cache.objectForKey(QVariant(u"1"_s)), QVariant(QVariantList{1, u"x"_s}));
    EXPECT_EQ(cache.objectForKey(QVariant(QByteArray("1"))), std::nullopt);
    EXPECT_EQ(cache.objectForKey(QVariant()), std::nullopt);
    EXPECT_EQ(cache.objectForKey(QVariant(u"null"_s))->metaType(), QMetaType::fromType<std::nullptr_t>());

    cache.setObject(QVariant(u"uno"_s), QVariant(1.0), 0);
    EXPECT_EQ(cache.count(), 3u);
    EXPECT_EQ(cache.objectForKey(QVariant(1)), QVariant(u"uno"_s));
    cache.setObjectForKeyedSubscript(QVariant(), QVariant(1));
    EXPECT_EQ(cache.count(), 2u);
    cache.setObjectsAndKeys(QVariantMap{{u"k"_s, 2}, {u"m"_s, QVariant()}}, 0);
    EXPECT_EQ(cache.objectForKey(QVariant(u"k"_s)), QVariant(2));
    EXPECT_EQ(cache.count(), 3u);
}

TEST(QVCacheItemTest, FillAccessAndClear)
{
    ManualClock clock;
    clock.now = 10.0;
    QVCacheItem<QString, int> item;
    item.setKey(u"k"_s, 7, 4);
    EXPECT_EQ(item.key(), u"k"_s);
    EXPECT_EQ(item.cost(), 4u);
    EXPECT_EQ(item.accessCount(), 1u);
    EXPECT_EQ(item.creationTime(), 10.0);
    EXPECT_EQ(item.lastAccessTime(), 10.0);

    clock.now = 12.5;
    EXPECT_EQ(item.accessObject(), 7);
    item.accessForTime(-1.0);
    EXPECT_EQ(item.lastAccessTime(), 12.5);
    item.accessForTime(20.0);
    EXPECT_EQ(item.lastAccessTime(), 20.0);
    EXPECT_EQ(item.accessCount(), 4u);
    EXPECT_EQ(item.creationTime(), 10.0);
    clock.now = 21.0;
    EXPECT_EQ(item.durationSinceLastAccess(), 1.0);

    const quint64 expectedHash = (quint64(qHash(u"k"_s, 0)) * 3) ^ (quint64(qHash(7, 0)) * 2);
    EXPECT_EQ(item.objectAndKeyHash(), 0u);
    EXPECT_EQ(item.hash(), expectedHash);
    EXPECT_EQ(item.objectAndKeyHash(), expectedHash);

    item.prepareForReuse();
    EXPECT_TRUE(item.key().isNull());
    EXPECT_EQ(item.object(), 0);
    EXPECT_EQ(item.cost() + item.accessCount() + item.objectAndKeyHash(), 0u);
    EXPECT_EQ(item.creationTime() + item.lastAccessTime(), 0.0);

    // invariantSetKey leaves times and count alone.
    item.invariantSetKey(u"j"_s, 1, 2);
    EXPECT_EQ(item.accessCount(), 0u);
    EXPECT_EQ(item.creationTime(), 0.0);
}

TEST(QVCacheItemTest, EqualityIsByHashAlone)
{
    using Item = QVCacheItem<QString, int>;
    Item a;
    Item b;
    Item c;
    a.setKey(u"k"_s, 7, 1);
    b.invariantSetKey(u"k"_s, 7, 99);
    b.accessForTime(50.0);
    c.setKey(u"k"_s, 8, 1);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a == c);

    StringCache cache;
    cache.setObject(7, u"k"_s, 0);
    cache.setObject(8, u"other"_s, 0);
    EXPECT_EQ(cache.allKeysForObject(b), QList<QString>{u"k"_s});
    EXPECT_TRUE(cache.allKeysForObject(c).isEmpty());
}

TEST(QVCacheItemTest, Comparators)
{
    using Item = QVCacheItem<int, int>;
    using Comparator = std::function<int(const QVCacheItemBase *, const QVCacheItemBase *)>;
    // small: cost 1, created at 1, read at 2; large: cost 2, created at 3, read at 5; two accesses each.
    ManualClock clock;
    Item small;
    Item large;
    small.setKey(1, 1, 1);
    small.accessForTime(2.0);
    clock.now = 3.0;
    large.setKey(2, 2, 2);
    large.accessForTime(5.0);
    const struct
    {
        const char *name;
        Comparator comparator;
        int smallFirst;
    } rows[] = {
        {"lowest cost", Item::lowestCostComparator(), -1},
        {"highest cost", Item::highestCostComparator(), 1},
        {"lowest creation", Item::lowestCreationTimeComparator(), -1},
        {"highest creation", Item::highestCreationTimeComparator(), 1},
        {"lowest last access", Item::lowestLastAccessTimeComparator(), -1},
        {"highest last access", Item::highestLastAccessTimeComparator(), 1},
        {"lowest access count", Item::lowestAccessCountComparator(), 0},
        {"highest access count", Item::highestAccessCountComparator(), 0},
        {"lfu: counts equal, time decides", Item::leastFrequentlyUsedComparator(), 1},
    };
    ASSERT_EQ(small.accessCount(), large.accessCount());
    for (const auto &row : rows) {
        EXPECT_EQ(row.comparator(&small, &large), row.smallFirst) << row.name;
        EXPECT_EQ(row.comparator(&large, &small), -row.smallFirst) << row.name;
        EXPECT_EQ(row.comparator(&small, &small), 0) << row.name;
    }
    // A higher count goes first whatever the times; equal counts and times tie.
    large.accessForTime(6.0);
    EXPECT_EQ(Item::leastFrequentlyUsedComparator()(&small, &large), 1);
    small.accessForTime(6.0);
    EXPECT_EQ(Item::leastFrequentlyUsedComparator()(&small, &large), 0);
    small.accessForTime(1.0);
    EXPECT_EQ(Item::leastFrequentlyUsedComparator()(&small, &large), -1);
}

TEST(QVCacheStatisticsTest, RatesAndDescription)
{
    const struct
    {
        int accesses;
        int hits;
        const char *description;
    } rows[] = {
        {0, 0, "0 accesses (0% hit rate, 0% miss rate)."},
        {1, 0, "1 accesses (0% hit rate, 100% miss rate)."},
        {1, 1, "1 accesses (100% hit rate, 0% miss rate)."},
        {3, 2, "3 accesses (67% hit rate, 33% miss rate)."},
        {8, 1, "8 accesses (12% hit rate, 88% miss rate)."},
    };
    for (const auto &row : rows) {
        QVCacheStatistics statistics;
        for (int n = 0; n < row.accesses; ++n)
            statistics.incrementAccessWithHit(n < row.hits);
        EXPECT_EQ(statistics.description(), QString::fromUtf8(row.description));
        EXPECT_EQ(statistics.misses(), quint64(row.accesses - row.hits));
        EXPECT_DOUBLE_EQ(statistics.hitRate() + statistics.missRate(), row.accesses ? 1.0 : 0.0);
        statistics.reset();
        EXPECT_EQ(statistics.accesses() + statistics.hits(), 0u);
    }
}
