#pragma once

#include <QVKit/Collections/QVCacheItem.h>
#include <QVKit/Collections/QVCacheStatistics.h>
#include <QVKit/Collections/QVObjectPool.h>
#include <QVKit/Collections/QVRandom.h>
#include <QVKit/Collections/QVSortedArray.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <concepts>
#include <memory>
#include <optional>
#include <type_traits>

/**
 * How a QVCache chooses what to evict. Values other than these three are
 * accepted but unsupported: such a cache logs "Unsupported cache behavior",
 * keeps no eviction order and never evicts.
 */
enum QVCacheBehavior : quint64 {
    /** Evicts the least recently accessed entries first. */
    QVCacheBehaviorLeastRecentlyUsed = 0,
    /** Evicts the lowest access count first; among equal counts the least recently accessed. */
    QVCacheBehaviorLeastFrequentlyUsed = 1,
    /** Evicts entries at random positions. */
    QVCacheBehaviorRandom = 2,
};

namespace QVCacheDetail {

/** A QVariant as a hash key, with the equality and hash of variantEqual() and variantHash(). */
struct VariantKey
{
    QVariant value;

    friend bool operator==(const VariantKey &a, const VariantKey &b) { return variantEqual(a.value, b.value); }
    friend size_t qHash(const VariantKey &key, size_t seed = 0) noexcept { return variantHash(key.value, seed); }
};

/** What the entry dictionary is keyed by: the key itself, or VariantKey for QVariant keys. */
template <typename Key>
using StoredKey = std::conditional_t<std::is_same_v<Key, QVariant>, VariantKey, Key>;

template <typename Key>
const Key &unwrap(const StoredKey<Key> &key)
{
    if constexpr (std::is_same_v<Key, QVariant>)
        return key.value;
    else
        return key;
}

template <typename Key>
StoredKey<Key> wrap(const Key &key)
{
    if constexpr (std::is_same_v<Key, QVariant>)
        return VariantKey{key};
    else
        return key;
}

/**
 * Whether an argument may stand for a Target parameter whose sibling
 * parameter is Other: it converts to Target, and where the two types differ
 * it is not exactly Other (the sign of swapped arguments).
 */
template <typename Argument, typename Target, typename Other>
concept ArgumentFor = std::convertible_to<Argument, Target>
                      && (std::same_as<Target, Other> || std::same_as<std::remove_cvref_t<Argument>, Target>
                          || !std::same_as<std::remove_cvref_t<Argument>, Other>);

/** 64 for a limit of 0 or above 64, else the limit. */
constexpr quint64 prefillAmountForItemLimit(quint64 itemLimit)
{
    return (itemLimit == 0 || itemLimit >= 65) ? 64 : itemLimit;
}

QVKIT_EXPORT void logUnsupportedCacheBehavior();
QVKIT_EXPORT void logDictionaryBeyondItemLimit(const void *cache);
QVKIT_EXPORT QString cacheDescription(const void *cache, quint64 count, const QVCacheStatistics &statistics);

} // namespace QVCacheDetail

/**
 * A bounded key-object cache with a selectable eviction behaviour, a cost per
 * entry (stored, never used for eviction) and hit/miss statistics.
 *
 * Keys are hashed (QHash); QVariant keys compare as QVCacheDetail::variantEqual
 * says, so 1 and 1.0 are one key and "1" another. A null pointer or invalid
 * QVariant is "no key" / "no object": inserting it under no key does nothing,
 * and inserting no object (std::nullopt, or an invalid QVariant for a QVariant
 * cache) removes the key's entry.
 *
 * The eviction order lives in one QVSortedArray of records, chosen by the
 * behaviour: last access time (most recent first) for LRU, access count then
 * last access time (highest first) for LFU, creation time (oldest first) for
 * random eviction, which picks positions with QVRandom. Removing a record from
 * that order removes every record that compares equal to it, so records with
 * exactly the same ordering values leave the order together; those stay
 * cached but are no longer candidates for eviction. No behaviour orders by
 * cost, so no cost order is kept.
 *
 * Records come from a QVObjectPool filled with prefillAmount() records, so
 * inserting after an eviction reuses the evicted record instead of allocating.
 *
 * The [] forms of the platform's keyed subscripting are the named members
 * objectForKeyedSubscript() and setObjectForKeyedSubscript(): a cache lookup
 * counts an access and may return nothing, which operator[] could not express.
 *
 * No locking: use an instance from one thread at a time.
 */
template <typename Key, typename Value>
class QVCache
{
public:
    using Item = QVCacheItem<Key, Value>;

    /** Least recently used, item limit 64. */
    QVCache() : QVCache(QVCacheBehaviorLeastRecentlyUsed, 0) {}

    /** A cache with the given behaviour and item limit (0 means 64). */
    QVCache(QVCacheBehavior behavior, quint64 itemLimit)
        : m_objectPool(
              QStringLiteral("QVCacheItem"), [] { return std::make_unique<Item>(); },
              [](Item *item) {
                  item->prepareForReuse();
                  return item;
              })
    {
        // The order array is sized by the prefill amount of the still-zero limit.
        setCacheBehavior(behavior);
        setItemLimit(itemLimit);
        m_statistics.reset();
        m_cacheDict.reserve(qsizetype(prefillAmount()));
        m_objectPool.fillWithObjectCount(prefillAmount());
        m_didInitQVCache = true;
    }

    static QVCache cacheWithBehavior(QVCacheBehavior behavior, quint64 itemLimit)
    {
        return QVCache(behavior, itemLimit);
    }

    QVCache(const QVCache &) = delete;
    QVCache &operator=(const QVCache &) = delete;
    QVCache(QVCache &&) noexcept = default;
    QVCache &operator=(QVCache &&) noexcept = default;
    ~QVCache() = default;

    QVCacheBehavior cacheBehavior() const { return m_cacheBehavior; }

    /**
     * Switches the eviction behaviour: the entries stay, the order is rebuilt
     * from them and the statistics start again from 0. Setting the current
     * behaviour does nothing.
     */
    void setCacheBehavior(QVCacheBehavior behavior)
    {
        if (behavior == m_cacheBehavior)
            return;
        m_cacheBehavior = behavior;
        const QList<Item *> records = m_cacheDict.values();
        m_lastAccessTimeArray.reset();
        m_accessCountArray.reset();
        m_creationTimeArray.reset();
        switch (behavior) {
        case QVCacheBehaviorLeastRecentlyUsed:
            m_lastAccessTimeArray.emplace(prefillAmount(), Item::highestLastAccessTimeComparator());
            break;
        case QVCacheBehaviorLeastFrequentlyUsed:
            m_accessCountArray.emplace(prefillAmount(), Item::leastFrequentlyUsedComparator());
            break;
        case QVCacheBehaviorRandom:
            m_creationTimeArray.emplace(prefillAmount(), Item::lowestCreationTimeComparator());
            break;
        default:
            QVCacheDetail::logUnsupportedCacheBehavior();
            break;
        }
        if (m_lastAccessTimeArray)
            m_lastAccessTimeArray->setArray(records);
        if (m_accessCountArray)
            m_accessCountArray->setArray(records);
        if (m_creationTimeArray)
            m_creationTimeArray->setArray(records);
        m_statistics.reset();
    }

    quint64 itemLimit() const { return m_itemLimit; }

    /**
     * Sets the maximum number of entries (0 means 64). Lowering the limit
     * evicts as many entries as the limit fell by, however many entries there
     * are, so going from 10 to 8 with 3 entries evicts 2. Raising it evicts nothing.
     */
    void setItemLimit(quint64 itemLimit)
    {
        const quint64 limit = itemLimit == 0 ? 64 : itemLimit;
        if (limit == m_itemLimit)
            return;
        if (m_itemLimit > limit)
            makeSpaceForNumberOfItems(m_itemLimit - limit);
        m_itemLimit = limit;
    }

    /** How many records the pool, dictionary and order are prepared for: 64, or the limit when it is 1...64. */
    quint64 prefillAmount() const { return QVCacheDetail::prefillAmountForItemLimit(m_itemLimit); }

    quint64 count() const { return quint64(m_cacheDict.size()); }

    QList<Key> allKeys() const
    {
        QList<Key> keys;
        keys.reserve(m_cacheDict.size());
        for (auto it = m_cacheDict.cbegin(); it != m_cacheDict.cend(); ++it)
            keys.append(QVCacheDetail::unwrap<Key>(it.key()));
        return keys;
    }

    /** Every cached object, in the order of allKeys(). */
    QList<Value> allValues() const
    {
        QList<Value> values;
        values.reserve(m_cacheDict.size());
        for (const Item *item : m_cacheDict)
            values.append(item->object());
        return values;
    }

    /**
     * The keys whose record equals the given one under record equality (equal
     * hashes). Records, not plain objects, are what this compares.
     */
    QList<Key> allKeysForObject(const Item &record) const
    {
        QList<Key> keys;
        for (auto it = m_cacheDict.cbegin(); it != m_cacheDict.cend(); ++it) {
            if (it.value()->isEqual(record))
                keys.append(QVCacheDetail::unwrap<Key>(it.key()));
        }
        return keys;
    }

    /**
     * The object cached under the key, or std::nullopt. Counts an access in
     * the statistics, a hit when found; a hit also records an access on the
     * entry, which moves it in the LRU and LFU orders.
     */
    std::optional<Value> objectForKey(const Key &key)
    {
        Item *item = m_cacheDict.value(QVCacheDetail::wrap(key), nullptr);
        if (item) {
            // Out and back in, so that the record's position follows its new values.
            if (m_lastAccessTimeArray)
                m_lastAccessTimeArray->removeContainedObject(item);
            if (m_accessCountArray)
                m_accessCountArray->removeContainedObject(item);
            item->accessForTime(0.0);
            if (m_lastAccessTimeArray)
                m_lastAccessTimeArray->addObject(item);
            if (m_accessCountArray)
                m_accessCountArray->addObject(item);
        }
        m_statistics.incrementAccessWithHit(item != nullptr);
        if (!item)
            return std::nullopt;
        return item->object();
    }

    /** objectForKey(), the form of keyed subscripting (cache[key]). */
    std::optional<Value> objectForKeyedSubscript(const Key &key) { return objectForKey(key); }

    /**
     * Caches the object under the key with a cost (0 when left out). A key
     * already cached gets a fresh entry (access count 1, created now) and
     * never evicts another; a new key at the limit first evicts one entry. No
     * key does nothing; no object removes the key's entry.
     *
     * The object comes first, as in every setter of the library. Where Key and
     * Value differ, an argument of exactly the other type is refused at
     * compile time, so that swapping them (setObject(key, object)) does not
     * quietly convert one into the other.
     */
    template <typename O, typename K>
        requires QVCacheDetail::ArgumentFor<O, Value, Key> && QVCacheDetail::ArgumentFor<K, Key, Value>
    void setObject(O &&object, K &&key, quint64 cost = 0)
    {
        store(Value(std::forward<O>(object)), Key(std::forward<K>(key)), cost);
    }

    /** As above; std::nullopt removes the key's entry. */
    template <typename Optional, typename K>
        requires std::same_as<std::remove_cvref_t<Optional>, std::optional<Value>>
                 && QVCacheDetail::ArgumentFor<K, Key, Value>
    void setObject(Optional &&object, K &&key, quint64 cost = 0)
    {
        if (object)
            store(*object, Key(std::forward<K>(key)), cost);
        else
            removeObjectForKey(Key(std::forward<K>(key)));
    }

    template <typename K>
        requires QVCacheDetail::ArgumentFor<K, Key, Value>
    void setObject(std::nullopt_t, K &&key, quint64 /*cost*/ = 0)
    {
        removeObjectForKey(Key(std::forward<K>(key)));
    }

    /** cache[key] = object: setObject() with cost 0; no object removes the entry. */
    void setObjectForKeyedSubscript(const Value &object, const Key &key) { store(object, key, 0); }

    template <typename Optional>
        requires std::same_as<std::remove_cvref_t<Optional>, std::optional<Value>>
    void setObjectForKeyedSubscript(Optional &&object, const Key &key)
    {
        setObject(std::forward<Optional>(object), key, 0);
    }

    void setObjectForKeyedSubscript(std::nullopt_t, const Key &key) { removeObjectForKey(key); }

    /**
     * Caches every entry of a dictionary (QHash, QMap, QVariantMap, ... whose
     * keys and values convert to Key and Value) with one cost, in the
     * dictionary's order, so later entries may evict earlier ones. A
     * dictionary larger than the item limit is logged first
     * ("<QVCache 0x…> is adding a dictionary with more items than its itemLimit.").
     */
    template <typename Dictionary>
    void setObjectsAndKeys(const Dictionary &dictionary, quint64 cost)
    {
        if (quint64(dictionary.size()) > m_itemLimit)
            QVCacheDetail::logDictionaryBeyondItemLimit(this);
        for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it)
            store(Value(it.value()), Key(it.key()), cost);
    }

    /** Removes the key's entry, if any. */
    void removeObjectForKey(const Key &key)
    {
        if (Item *item = m_cacheDict.take(QVCacheDetail::wrap(key)))
            releaseCacheItem(item, true);
    }

    void removeObjectsForKeys(const QList<Key> &keys)
    {
        for (const Key &key : keys)
            removeObjectForKey(key);
    }

    /** Empties the cache; the statistics stay. */
    void removeAllObjects()
    {
        for (Item *item : std::as_const(m_cacheDict))
            m_objectPool.prepareForReuse(item);
        m_cacheDict.clear();
        if (m_lastAccessTimeArray)
            m_lastAccessTimeArray->removeAllObjects();
        if (m_accessCountArray)
            m_accessCountArray->removeAllObjects();
        if (m_creationTimeArray)
            m_creationTimeArray->removeAllObjects();
    }

    /** removeAllObjects(), then the statistics start again from 0. */
    void reset()
    {
        removeAllObjects();
        m_statistics.reset();
    }

    const QVCacheStatistics &statistics() const { return m_statistics; }

    /** The record pool, for inspection: its count() is the number of records ever made. */
    const QVObjectPool<Item> &objectPool() const { return m_objectPool; }

    /** "<QVCache 0x…> 2 items. 3 accesses (67% hit rate, 33% miss rate)." */
    QString description() const { return QVCacheDetail::cacheDescription(this, count(), m_statistics); }

private:
    void store(const Value &object, const Key &key, quint64 cost)
    {
        if (QVCacheDetail::isNil(key))
            return;
        if (QVCacheDetail::isNil(object)) {
            removeObjectForKey(key);
            return;
        }
        addCacheItem(key, object, cost);
    }

    using LastAccessTimeArray = QVSortedArray<Item *, QVCacheItemBase::HighestLastAccessTimeComparator>;
    using AccessCountArray = QVSortedArray<Item *, QVCacheItemBase::LeastFrequentlyUsedComparator>;
    using CreationTimeArray = QVSortedArray<Item *, QVCacheItemBase::LowestCreationTimeComparator>;

    void addCacheItem(const Key &key, const Value &object, quint64 cost)
    {
        QVCacheDetail::StoredKey<Key> storedKey = QVCacheDetail::wrap(key);
        // A replaced key starts over with a fresh record; only a new key at
        // the limit needs room.
        if (Item *existing = m_cacheDict.take(storedKey))
            releaseCacheItem(existing, true);
        if (count() == m_itemLimit)
            makeSpaceForNumberOfItems(1);

        Item *item = m_objectPool.object();
        item->setKey(key, object, cost);
        m_cacheDict.insert(std::move(storedKey), item);
        if (m_lastAccessTimeArray)
            m_lastAccessTimeArray->addObject(item);
        if (m_accessCountArray)
            m_accessCountArray->addObject(item);
        if (m_creationTimeArray)
            m_creationTimeArray->addObject(item);
    }

    // The record is already out of the dictionary; with removeFromOrders it
    // also leaves every order (with the records that compare equal to it).
    void releaseCacheItem(Item *item, bool removeFromOrders)
    {
        if (removeFromOrders) {
            if (m_lastAccessTimeArray)
                m_lastAccessTimeArray->removeContainedObject(item);
            if (m_accessCountArray)
                m_accessCountArray->removeContainedObject(item);
            if (m_creationTimeArray)
                m_creationTimeArray->removeContainedObject(item);
        }
        m_objectPool.prepareForReuse(item);
    }

    // Evicts up to count entries: the tail of the LRU or LFU order, or random
    // positions of the creation order.
    void makeSpaceForNumberOfItems(quint64 count)
    {
        if (count == 0)
            return;
        switch (m_cacheBehavior) {
        case QVCacheBehaviorLeastRecentlyUsed:
            if (m_lastAccessTimeArray)
                evictLastRecords(*m_lastAccessTimeArray, count);
            break;
        case QVCacheBehaviorLeastFrequentlyUsed:
            if (m_accessCountArray)
                evictLastRecords(*m_accessCountArray, count);
            break;
        case QVCacheBehaviorRandom:
            if (m_creationTimeArray) {
                for (quint64 evicted = 0; evicted < count; ++evicted) {
                    const quint64 index = QVRandom::indexFromSortedArray(*m_creationTimeArray);
                    if (index == QVNotFound)
                        break;
                    Item *item = m_creationTimeArray->objectAtIndex(index);
                    m_creationTimeArray->removeObjectAtIndex(index);
                    evictRecord(item);
                }
            }
            break;
        default:
            QVCacheDetail::logUnsupportedCacheBehavior();
            break;
        }
    }

    template <typename Order>
    void evictLastRecords(Order &order, quint64 count)
    {
        // The records are released before the range leaves the order: removing
        // by range compares nothing, and no list of victims has to be made.
        const QVRange range = order.rangeForLastObjects(count);
        for (quint64 index = range.location; index < QVMaxRange(range); ++index)
            evictRecord(order.objectAtIndex(index));
        order.removeObjectsInRange(range);
    }

    void evictRecord(Item *item)
    {
        m_cacheDict.remove(QVCacheDetail::wrap(item->key()));
        releaseCacheItem(item, false);
    }

    QVCacheBehavior m_cacheBehavior = QVCacheBehavior(~quint64(0));
    quint64 m_itemLimit = 0;
    [[maybe_unused]] bool m_didInitQVCache = false;
    QVCacheStatistics m_statistics;
    QHash<QVCacheDetail::StoredKey<Key>, Item *> m_cacheDict;
    // Exactly one exists at a time, the one the behaviour needs; none for an
    // unsupported behaviour.
    std::optional<LastAccessTimeArray> m_lastAccessTimeArray;
    std::optional<AccessCountArray> m_accessCountArray;
    std::optional<CreationTimeArray> m_creationTimeArray;
    QVObjectPool<Item> m_objectPool;
};
