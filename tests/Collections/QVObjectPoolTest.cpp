#include <QVKit/Collections/QVObjectPool.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <numeric>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

// Counts allocations made by this thread while counting is switched on, so
// that the steady state of a pool can be checked for "allocates nothing".
namespace {
thread_local bool t_countAllocations = false;
thread_local long t_allocationCount = 0;
} // namespace

void *operator new(std::size_t size)
{
    if (t_countAllocations)
        ++t_allocationCount;
    if (void *memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

// Outside any namespace so that its type name is plain "PoolProbe".
struct PoolProbe
{
    virtual ~PoolProbe() = default;
    int serial = 0;
    int cleanings = 0;
    bool replaceWhenCleaned = false;
};

namespace {

// What the pool's callables did, shared by the objects they made.
struct PoolLog
{
    int made = 0;
    int destroyed = 0;
};

struct TrackedProbe : PoolProbe
{
    explicit TrackedProbe(PoolLog *log) : log(log) {}
    ~TrackedProbe() { ++log->destroyed; }
    PoolLog *log;
};

QVObjectPool<PoolProbe> makePool(PoolLog &log, bool lazy = false)
{
    QVObjectPool<PoolProbe> pool(
        u"PoolProbe"_s,
        [&log] {
            auto probe = std::make_unique<TrackedProbe>(&log);
            probe->serial = log.made++;
            return std::unique_ptr<PoolProbe>(std::move(probe));
        },
        [&log](PoolProbe *probe) -> PoolProbe * {
            ++probe->cleanings;
            if (!probe->replaceWhenCleaned)
                return probe;
            auto *replacement = new TrackedProbe(&log);
            replacement->serial = 1000 + probe->serial;
            return replacement;
        });
    pool.setLazy(lazy);
    return pool;
}

struct Counts
{
    quint64 count, used, free;
    friend bool operator==(const Counts &, const Counts &) = default;
};

Counts countsOf(const QVObjectPool<PoolProbe> &pool)
{
    return {pool.count(), pool.usedObjectCount(), pool.freeObjectCount()};
}

QString address(const void *pointer)
{
    return QString::asprintf("%p", pointer);
}

} // namespace

TEST(QVObjectPoolTest, CleansOnReturnUnlessLazyThenOnSecondHandOut)
{
    struct Row
    {
        const char *name;
        bool lazy;
        int cleaningsWhenReturned;
        int cleaningsWhenHandedOutAgain;
        int cleaningsOfFilledObject;
    };
    const Row rows[] = {
        {"eager", false, 1, 1, 0},
        {"lazy", true, 0, 1, 1},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        PoolLog log;
        QVObjectPool<PoolProbe> pool = makePool(log, row.lazy);
        EXPECT_EQ(pool.isLazy(), row.lazy);

        // A freshly made object is never cleaned, lazy or not.
        PoolProbe *probe = pool.object();
        EXPECT_EQ(probe->cleanings, 0);
        EXPECT_EQ(log.made, 1);
        EXPECT_EQ(countsOf(pool), (Counts{1, 1, 0}));

        pool.prepareForReuse(probe);
        EXPECT_EQ(probe->cleanings, row.cleaningsWhenReturned);
        EXPECT_EQ(countsOf(pool), (Counts{1, 0, 1}));

        EXPECT_EQ(pool.object(), probe);
        EXPECT_EQ(probe->cleanings, row.cleaningsWhenHandedOutAgain);
        EXPECT_EQ(log.made, 1);

        // Only an object made by the hand-out itself skips cleaning: one made
        // by a fill waits on the free stack, so a lazy pool cleans it.
        pool.fillWithObjectCount(1);
        EXPECT_EQ(pool.object()->cleanings, row.cleaningsOfFilledObject);
    }
}

TEST(QVObjectPoolTest, FreeObjectsAreAStackAndCountsFollowEachStep)
{
    PoolLog log;
    QVObjectPool<PoolProbe> pool = makePool(log);
    EXPECT_EQ(countsOf(pool), (Counts{0, 0, 0}));

    pool.fillWithObjectCount(3);
    EXPECT_EQ(log.made, 3);
    EXPECT_EQ(countsOf(pool), (Counts{3, 0, 3}));

    // The last object made is on top.
    PoolProbe *first = pool.object();
    PoolProbe *second = pool.object();
    EXPECT_EQ(first->serial, 2);
    EXPECT_EQ(second->serial, 1);
    EXPECT_EQ(countsOf(pool), (Counts{3, 2, 1}));

    pool.prepareForReuse(first);
    pool.prepareForReuse(second);
    EXPECT_EQ(countsOf(pool), (Counts{3, 0, 3}));
    EXPECT_EQ(pool.object(), second);
    EXPECT_EQ(pool.object(), first);

    // Draining destroys only free objects; the handed-out ones stay counted and alive.
    pool.drainFreeObjects();
    EXPECT_EQ(log.destroyed, 1);
    EXPECT_EQ(countsOf(pool), (Counts{2, 2, 0}));
    EXPECT_EQ(first->serial, 2);

    // An empty free stack makes exactly one object, counted as used.
    PoolProbe *third = pool.object();
    EXPECT_EQ(log.made, 4);
    EXPECT_EQ(third->serial, 3);
    EXPECT_EQ(countsOf(pool), (Counts{3, 3, 0}));

    pool.fillWithObjectCount(0);
    EXPECT_EQ(countsOf(pool), (Counts{3, 3, 0}));
    pool.prepareForReuse(nullptr);
    EXPECT_EQ(countsOf(pool), (Counts{3, 3, 0}));
}

TEST(QVObjectPoolTest, ObjectsNotHandedOutAreLoggedAndLeftAlone)
{
    PoolLog log;
    QVObjectPool<PoolProbe> pool = makePool(log);
    PoolProbe *probe = pool.object();
    pool.prepareForReuse(probe);
    const int cleanings = probe->cleanings;

    struct Case
    {
        const char *name;
        PoolProbe *object;
    };
    PoolProbe stranger;
    PoolLog otherLog;
    QVObjectPool<PoolProbe> otherPool = makePool(otherLog);
    const Case cases[] = {
        {"returned twice", probe},
        {"never pooled", &stranger},
        {"from another pool", otherPool.object()},
    };
    for (const Case &item : cases) {
        SCOPED_TRACE(item.name);
        QVLogCapture capture;
        pool.prepareForReuse(item.object);
        EXPECT_EQ(capture.lines(),
                  QStringList{u"QVObjectPool::prepareForReuse: %1 was not handed out by this pool. Fix this."_s.arg(
                      address(item.object))});
        EXPECT_EQ(countsOf(pool), (Counts{1, 0, 1}));
    }
    EXPECT_EQ(probe->cleanings, cleanings);
    EXPECT_EQ(stranger.cleanings, 0);
    EXPECT_EQ(log.destroyed, 0);
    EXPECT_EQ(otherPool.usedObjectCount(), 1u);
}

TEST(QVObjectPoolTest, SteadyStateMakesAndAllocatesNothing)
{
    constexpr int objectCount = 4096;
    std::mt19937 random(20240611);
    std::vector<int> orders[3];
    for (std::vector<int> &order : orders) {
        order.resize(objectCount);
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), random);
    }

    for (const bool lazy : {false, true}) {
        SCOPED_TRACE(lazy ? "lazy" : "eager");
        PoolLog log;
        QVObjectPool<PoolProbe> pool = makePool(log, lazy);
        std::vector<PoolProbe *> handedOut(objectCount);
        // Warm up: the pool grows to its working size once.
        for (PoolProbe *&probe : handedOut)
            probe = pool.object();
        for (int index : orders[0])
            pool.prepareForReuse(handedOut[index]);

        QVLogCapture capture;
        t_allocationCount = 0;
        t_countAllocations = true;
        for (int round = 1; round < 3; ++round) {
            for (PoolProbe *&probe : handedOut)
                probe = pool.object();
            // Returned in scrambled order, so every take-back must find its
            // object wherever the used store holds it.
            for (int index : orders[round])
                pool.prepareForReuse(handedOut[index]);
            // The cache's pattern: take one back, hand one out.
            for (int step = 0; step < objectCount; ++step)
                pool.prepareForReuse(pool.object());
        }
        t_countAllocations = false;

        EXPECT_EQ(t_allocationCount, 0);
        EXPECT_EQ(log.made, objectCount);
        EXPECT_TRUE(capture.lines().isEmpty()) << capture.lines().join(u'\n').toStdString();
        EXPECT_EQ(countsOf(pool), (Counts{objectCount, 0, objectCount}));
    }
}

TEST(QVObjectPoolTest, PrepareCallableMayReplaceTheObject)
{
    for (const bool lazy : {false, true}) {
        SCOPED_TRACE(lazy ? "lazy" : "eager");
        PoolLog log;
        QVObjectPool<PoolProbe> pool = makePool(log, lazy);
        PoolProbe *original = pool.object();
        PoolProbe *other = pool.object();
        original->replaceWhenCleaned = true;
        pool.prepareForReuse(original);
        EXPECT_EQ(log.destroyed, lazy ? 0 : 1);

        // The replacement takes the original's place on top of the free stack.
        PoolProbe *replacement = pool.object();
        EXPECT_EQ(replacement->serial, 1000 + 0);
        EXPECT_EQ(log.destroyed, 1);
        EXPECT_EQ(countsOf(pool), (Counts{2, 2, 0}));

        // The pool now knows the replacement as handed out, and only it.
        QVLogCapture capture;
        pool.prepareForReuse(replacement);
        pool.prepareForReuse(other);
        EXPECT_TRUE(capture.lines().isEmpty());
        EXPECT_EQ(countsOf(pool), (Counts{2, 0, 2}));
    }
}

TEST(QVObjectPoolTest, DescriptionNamesPoolObjectsAndCounts)
{
    PoolLog log;
    QVObjectPool<PoolProbe> pool = makePool(log);
    pool.fillWithObjectCount(3);
    pool.object();
    EXPECT_EQ(pool.description(), u"<QVObjectPool %1> 3 PoolProbe objects (1 used, 2 free)"_s.arg(address(&pool)));

    // Without a name the type's own name is used.
    auto unnamed = QVObjectPool<PoolProbe>([] { return std::make_unique<PoolProbe>(); },
                                           [](PoolProbe *probe) { return probe; });
    EXPECT_EQ(unnamed.objectClassName(), u"PoolProbe"_s);
    EXPECT_EQ(unnamed.description(), u"<QVObjectPool %1> 0 PoolProbe objects (0 used, 0 free)"_s.arg(address(&unnamed)));

    auto made = QVObjectPool<PoolProbe>::poolWithClass(u"Dé𝄞"_s, [] { return std::make_unique<PoolProbe>(); },
                                                       [](PoolProbe *probe) { return probe; });
    EXPECT_FALSE(made.isLazy());
    EXPECT_EQ(made.description(), u"<QVObjectPool %1> 0 Dé𝄞 objects (0 used, 0 free)"_s.arg(address(&made)));
}

TEST(QVObjectPoolTest, MissingPartsAndNilObjectsAreAssertionFailures)
{
    const auto makeObject = [] { return std::make_unique<PoolProbe>(); };
    const auto keep = [](PoolProbe *probe) { return probe; };
    const auto report = [](const char *condition) {
        return std::string("Assertion failure in .*QVObjectPool:[0-9]+\n\\*\\*\\* Condition not satisfied: ")
             + condition + "\n";
    };

    EXPECT_DEATH(QVObjectPool<PoolProbe>(QString(), makeObject, keep), report("objectClass"));
    EXPECT_DEATH(QVObjectPool<PoolProbe>(u"PoolProbe"_s, nullptr, keep), report("newObjectBlock"));
    EXPECT_DEATH(QVObjectPool<PoolProbe>(u"PoolProbe"_s, makeObject, nullptr), report("prepareForReuseBlock"));

    // The new-object callable answering nothing, from a fill and from a hand-out.
    const auto makeNothing = [] { return std::unique_ptr<PoolProbe>(); };
    EXPECT_DEATH(QVObjectPool<PoolProbe>(u"PoolProbe"_s, makeNothing, keep).fillWithObjectCount(1),
                 report("newObject"));
    EXPECT_DEATH(QVObjectPool<PoolProbe>(u"PoolProbe"_s, makeNothing, keep).object(), report("newObject"));

    // The prepare callable answering nothing, when returned (eager) or handed out again (lazy).
    const auto dropAll = [](PoolProbe *) -> PoolProbe * { return nullptr; };
    for (const bool lazy : {false, true}) {
        EXPECT_DEATH(
            {
                QVObjectPool<PoolProbe> pool(u"PoolProbe"_s, makeObject, dropAll);
                pool.setLazy(lazy);
                PoolProbe *probe = pool.object();
                pool.prepareForReuse(probe);
                pool.object();
            },
            report("reuseObject"));
    }
}
