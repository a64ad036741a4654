#pragma once

#include <QVKit/Platform/QVTimestamp.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QHashFunctions>
#include <QtCore/QVariant>

#include <concepts>
#include <functional>
#include <type_traits>

namespace QVCacheDetail {

/**
 * Hash of a QVariant consistent with variantEqual(): numbers (bool included)
 * hash by their value, so 1 and 1.0 hash alike; other values by type and content.
 */
QVKIT_EXPORT size_t variantHash(const QVariant &value, size_t seed = 0) noexcept;

/**
 * Key equality for QVariants as dictionaries of objects compare them: numbers
 * by value across number types, everything else only within the same type (so
 * the text "1" is not the number 1, unlike QVariant's own operator==).
 */
QVKIT_EXPORT bool variantEqual(const QVariant &a, const QVariant &b);

/**
 * The hash a record combines: qHash (seed 0) where the type has one, the
 * variant hash for QVariant, and otherwise the value's address, which is the
 * identity of the object held in the record.
 */
template <typename T>
quint64 hashOf(const T &value)
{
    if constexpr (std::is_same_v<T, QVariant>)
        return quint64(variantHash(value));
    else if constexpr (requires { { qHash(value, size_t(0)) } -> std::convertible_to<size_t>; })
        return quint64(qHash(value, size_t(0)));
    else
        return quint64(reinterpret_cast<quintptr>(&value));
}

/** Null pointers and invalid QVariants are "no key" / "no object"; other values never are. */
template <typename T>
bool isNil(const T &value)
{
    if constexpr (std::is_pointer_v<T>)
        return value == nullptr;
    else if constexpr (std::is_same_v<T, QVariant>)
        return !value.isValid();
    else
        return false;
}

inline int ascending(auto a, auto b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

} // namespace QVCacheDetail

/**
 * The bookkeeping part of a cache record, shared by every key and object type:
 * cost, access count, creation and last-access times, the cached hash, the
 * record clock and the eight comparators.
 *
 * Times are QVTimestamp() seconds unless a test has installed its own clock
 * with setClockForTesting().
 */
class QVKIT_EXPORT QVCacheItemBase
{
public:
    /** "Lowest" comparators answer -1 when a's value is smaller, 1 when larger, 0 when equal. */
    struct LowestCostComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(a->m_cost, b->m_cost);
        }
    };
    /** "Highest" comparators are the reverse: the larger value first. */
    struct HighestCostComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(b->m_cost, a->m_cost);
        }
    };
    struct LowestAccessCountComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(a->m_accessCount, b->m_accessCount);
        }
    };
    struct HighestAccessCountComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(b->m_accessCount, a->m_accessCount);
        }
    };
    struct LowestCreationTimeComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(a->m_creationTime, b->m_creationTime);
        }
    };
    struct HighestCreationTimeComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(b->m_creationTime, a->m_creationTime);
        }
    };
    struct LowestLastAccessTimeComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(a->m_lastAccessTime, b->m_lastAccessTime);
        }
    };
    struct HighestLastAccessTimeComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            return QVCacheDetail::ascending(b->m_lastAccessTime, a->m_lastAccessTime);
        }
    };
    /**
     * The least-frequently-used order: highest access count first, and among
     * equal counts the most recent access first.
     */
    struct LeastFrequentlyUsedComparator
    {
        int operator()(const QVCacheItemBase *a, const QVCacheItemBase *b) const noexcept
        {
            const int byCount = HighestAccessCountComparator()(a, b);
            return byCount != 0 ? byCount : HighestLastAccessTimeComparator()(a, b);
        }
    };

    // Stateless callables: as a sorted array's Compare type they are called
    // inline, without std::function, and still convert to one where needed.
    static LowestCostComparator lowestCostComparator() { return {}; }
    static HighestCostComparator highestCostComparator() { return {}; }
    static LowestAccessCountComparator lowestAccessCountComparator() { return {}; }
    static HighestAccessCountComparator highestAccessCountComparator() { return {}; }
    static LowestCreationTimeComparator lowestCreationTimeComparator() { return {}; }
    static HighestCreationTimeComparator highestCreationTimeComparator() { return {}; }
    static LowestLastAccessTimeComparator lowestLastAccessTimeComparator() { return {}; }
    static HighestLastAccessTimeComparator highestLastAccessTimeComparator() { return {}; }
    static LeastFrequentlyUsedComparator leastFrequentlyUsedComparator() { return {}; }

    /** Now on the record clock: QVTimestamp(), or the clock a test installed. */
    static double currentTime() { return Q_UNLIKELY(s_testClock != nullptr) ? (*s_testClock)() : QVTimestamp(); }
    /**
     * Replaces the record clock of every cache in the process, so that tests
     * decide what "now" is (ties included); an empty function restores
     * QVTimestamp(). Not for production code, and not thread-safe.
     */
    static void setClockForTesting(std::function<double()> clock);

    quint64 cost() const { return m_cost; }
    /** 1 right after the record was filled, plus one per access. */
    quint64 accessCount() const { return m_accessCount; }
    double creationTime() const { return m_creationTime; }
    double lastAccessTime() const { return m_lastAccessTime; }
    /** The cached hash; 0 until hash() has computed it. */
    quint64 objectAndKeyHash() const { return m_objectAndKeyHash; }

    /** Records an access at time (now when time <= 0.0): sets the last access time, counts one access. */
    void accessForTime(double time)
    {
        if (time <= 0.0)
            time = currentTime();
        m_lastAccessTime = time;
        ++m_accessCount;
    }

    /** now - lastAccessTime. */
    double durationSinceLastAccess() const { return currentTime() - m_lastAccessTime; }

protected:
    QVCacheItemBase() = default;
    ~QVCacheItemBase() = default;

    void clearBookkeeping()
    {
        m_cost = 0;
        m_creationTime = 0.0;
        m_lastAccessTime = 0.0;
        m_accessCount = 0;
        m_objectAndKeyHash = 0;
    }

    quint64 m_cost = 0;
    quint64 m_accessCount = 0;
    double m_creationTime = 0.0;
    double m_lastAccessTime = 0.0;
    mutable quint64 m_objectAndKeyHash = 0;

private:
    // Null unless a test installed a clock; read inline on every access.
    static std::function<double()> *s_testClock;
};

/**
 * One cache entry: key, object and the bookkeeping the eviction orders sort by.
 *
 * Records are recycled through an object pool, so a record is filled with
 * setKey() and cleared with prepareForReuse() rather than made and destroyed.
 * Two records are equal when their hashes are equal, whatever their fields;
 * the hash combines the key's and the object's hashes and is cached until the
 * record is cleared. Key and Value must be default-constructible: the
 * default value is what a cleared record holds.
 */
template <typename Key, typename Value>
class QVCacheItem : public QVCacheItemBase
{
public:
    QVCacheItem() = default;

    const Key &key() const { return m_key; }
    const Value &object() const { return m_object; }

    /** Fills the record: key, object and cost, created now with one access at that same time. */
    void setKey(const Key &key, const Value &object, quint64 cost)
    {
        invariantSetKey(key, object, cost);
        const double now = currentTime();
        m_creationTime = now;
        accessForTime(now);
    }

    /** Sets key, object and cost only, leaving times, count and hash as they are. */
    void invariantSetKey(const Key &key, const Value &object, quint64 cost)
    {
        m_key = key;
        m_object = object;
        m_cost = cost;
    }

    /** Records an access now and answers the object. */
    const Value &accessObject()
    {
        accessForTime(0.0);
        return m_object;
    }

    /** Clears every field: default key and object, all numbers 0. */
    void prepareForReuse()
    {
        m_key = Key();
        m_object = Value();
        clearBookkeeping();
    }

    /**
     * (hash of key * 3) XOR (hash of object * 2), in wrapping 64-bit
     * arithmetic, computed on first use and kept; see QVCacheDetail::hashOf.
     */
    quint64 hash() const
    {
        if (m_objectAndKeyHash == 0)
            m_objectAndKeyHash =
                (QVCacheDetail::hashOf(m_key) * 3u) ^ (QVCacheDetail::hashOf(m_object) * 2u);
        return m_objectAndKeyHash;
    }

    /** Equal hashes make equal records; the fields themselves are not compared. */
    bool isEqual(const QVCacheItem &other) const { return hash() == other.hash(); }
    friend bool operator==(const QVCacheItem &a, const QVCacheItem &b) { return a.isEqual(b); }

private:
    Key m_key{};
    Value m_object{};
};

template <typename Key, typename Value>
size_t qHash(const QVCacheItem<Key, Value> &item, size_t seed = 0) noexcept
{
    return size_t(item.hash()) ^ seed;
}
