#pragma once

#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace QVObjectPoolDetail {

/**
 * Maps an object's address to its position in the pool's used store.
 *
 * Open addressing with linear probing and backward-shift deletion: no
 * tombstones, and no allocation once the table is large enough, so a pool in
 * steady state takes objects back without allocating or scanning.
 */
class PositionIndex
{
public:
    PositionIndex() = default;
    PositionIndex(PositionIndex &&other) noexcept { *this = std::move(other); }
    PositionIndex &operator=(PositionIndex &&other) noexcept
    {
        m_slots = std::exchange(other.m_slots, {});
        m_mask = std::exchange(other.m_mask, 0);
        m_shift = std::exchange(other.m_shift, 64);
        m_size = std::exchange(other.m_size, 0);
        return *this;
    }

    /** Makes room for count entries, keeping the load at or below one half. */
    void reserve(std::size_t count)
    {
        std::size_t wanted = 16;
        while (wanted < count * 2)
            wanted *= 2;
        if (wanted > m_slots.size())
            rehash(wanted);
    }

    /** Adds an address that is not in the table yet. */
    void insert(const void *key, std::size_t position)
    {
        if ((m_size + 1) * 2 > m_slots.size())
            rehash(std::max<std::size_t>(16, m_slots.size() * 2));
        std::size_t slot = home(key);
        while (m_slots[slot].key)
            slot = (slot + 1) & m_mask;
        m_slots[slot] = {key, position};
        ++m_size;
    }

    /** The position stored for an address, or nullptr when it is not in the table. */
    std::size_t *find(const void *key)
    {
        if (m_size == 0)
            return nullptr;
        for (std::size_t slot = home(key);; slot = (slot + 1) & m_mask) {
            if (m_slots[slot].key == key)
                return &m_slots[slot].position;
            if (!m_slots[slot].key)
                return nullptr;
        }
    }

    /** Removes an address; answers whether it was there. */
    bool erase(const void *key)
    {
        if (m_size == 0)
            return false;
        std::size_t hole = home(key);
        while (m_slots[hole].key != key) {
            if (!m_slots[hole].key)
                return false;
            hole = (hole + 1) & m_mask;
        }
        // Pull later members of the probe run back into the hole, so that
        // every remaining key stays reachable from its home slot.
        for (std::size_t next = (hole + 1) & m_mask; m_slots[next].key; next = (next + 1) & m_mask) {
            const std::size_t wanted = home(m_slots[next].key);
            const bool reachableFromHole = ((next - wanted) & m_mask) >= ((next - hole) & m_mask);
            if (reachableFromHole) {
                m_slots[hole] = m_slots[next];
                hole = next;
            }
        }
        m_slots[hole] = {};
        --m_size;
        return true;
    }

    std::size_t size() const { return m_size; }

private:
    struct Slot
    {
        const void *key = nullptr;
        std::size_t position = 0;
    };

    std::size_t home(const void *key) const
    {
        // Fibonacci hashing of the address: its low bits are alignment zeros.
        const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key));
        return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15ull) >> m_shift) & m_mask;
    }

    void rehash(std::size_t slotCount)
    {
        std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(slotCount));
        m_mask = slotCount - 1;
        m_shift = 64;
        for (std::size_t n = slotCount; n > 1; n /= 2)
            --m_shift;
        m_size = 0;
        for (const Slot &entry : old) {
            if (entry.key) {
                std::size_t slot = home(entry.key);
                while (m_slots[slot].key)
                    slot = (slot + 1) & m_mask;
                m_slots[slot] = entry;
                ++m_size;
            }
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    int m_shift = 64;
    std::size_t m_size = 0;
};

} // namespace QVObjectPoolDetail

/**
 * Recycles objects of one type so that hot paths do not allocate.
 *
 * The pool owns every object it made, handed out or not; callers borrow them
 * as plain pointers and give them back with prepareForReuse(). Free objects
 * form a stack: the object returned last is handed out first. A pool that is
 * not lazy (the default) cleans an object with the prepare callable when it is
 * returned; a lazy pool cleans it when it is handed out again, and never
 * cleans an object it has just made.
 *
 * Handing out and taking back do not allocate once the pool has grown to its
 * working size. Objects still handed out are destroyed with the pool.
 * An instance is used from one thread at a time.
 */
template <typename T>
class QVObjectPool
{
public:
    /** Makes one new object; nullptr is a programming error. */
    using NewObjectBlock = std::function<std::unique_ptr<T>()>;
    /**
     * Cleans an object and answers the object to keep: normally the same one.
     * When it answers another object, the pool takes ownership of that one
     * (it must come from new and belong to nobody else) and destroys the
     * object it passed in. nullptr is a programming error.
     */
    using PrepareForReuseBlock = std::function<T *(T *)>;

    /**
     * A pool of objects named objectClassName in its description. The name and
     * both callables are required (assertions "objectClass", "newObjectBlock",
     * "prepareForReuseBlock").
     */
    QVObjectPool(const QString &objectClassName, NewObjectBlock newObjectBlock,
                 PrepareForReuseBlock prepareForReuseBlock)
        : m_objectClassName(objectClassName),
          m_newObjectBlock(std::move(newObjectBlock)),
          m_prepareForReuseBlock(std::move(prepareForReuseBlock))
    {
        QV_ASSERT_TEXT(!m_objectClassName.isEmpty(), "objectClass");
        QV_ASSERT_TEXT(static_cast<bool>(m_newObjectBlock), "newObjectBlock");
        QV_ASSERT_TEXT(static_cast<bool>(m_prepareForReuseBlock), "prepareForReuseBlock");
    }

    /** As above, naming the objects after T's type name. */
    QVObjectPool(NewObjectBlock newObjectBlock, PrepareForReuseBlock prepareForReuseBlock)
        : QVObjectPool(QString::fromUtf8(QMetaType::fromType<T>().name()), std::move(newObjectBlock),
                       std::move(prepareForReuseBlock))
    {
    }

    static QVObjectPool poolWithClass(const QString &objectClassName, NewObjectBlock newObjectBlock,
                                      PrepareForReuseBlock prepareForReuseBlock)
    {
        return QVObjectPool(objectClassName, std::move(newObjectBlock), std::move(prepareForReuseBlock));
    }

    QVObjectPool(const QVObjectPool &) = delete;
    QVObjectPool &operator=(const QVObjectPool &) = delete;
    /** A moved-from pool may only be destroyed or assigned to. */
    QVObjectPool(QVObjectPool &&) noexcept = default;
    QVObjectPool &operator=(QVObjectPool &&) noexcept = default;
    ~QVObjectPool() = default;

    /**
     * Hands out an object: the most recently returned free one (cleaned first
     * when the pool is lazy), or a new one when none is free.
     */
    T *object()
    {
        const bool freeStackWasEmpty = m_free.empty();
        if (freeStackWasEmpty)
            fillWithObjectCount(1);
        if (m_lazy && !freeStackWasEmpty) {
            T *recycled = m_free.back().get();
            T *kept = internalPrepareForReuse(recycled);
            if (kept != recycled)
                m_free.back().reset(kept);
        }
        std::unique_ptr<T> handedOut = std::move(m_free.back());
        m_free.pop_back();
        T *result = handedOut.get();
        m_index.insert(result, m_used.size());
        m_used.push_back(std::move(handedOut));
        return result;
    }

    /**
     * Takes back an object handed out by object(), cleaning it first unless the
     * pool is lazy. nullptr does nothing; an object this pool did not hand out
     * (or that was already returned) is logged and left alone.
     */
    void prepareForReuse(T *object)
    {
        if (!object)
            return;
        std::size_t *found = m_index.find(object);
        if (!found) {
            QVLog("%s: %p was not handed out by this pool. Fix this.", "QVObjectPool::prepareForReuse",
                  static_cast<const void *>(object));
            return;
        }
        // Swap-remove keeps the used store dense; the moved object's position
        // is updated so that later lookups stay direct.
        const std::size_t position = *found;
        std::unique_ptr<T> returned = std::move(m_used[position]);
        if (position + 1 != m_used.size()) {
            m_used[position] = std::move(m_used.back());
            *m_index.find(m_used[position].get()) = position;
        }
        m_used.pop_back();
        m_index.erase(object);

        if (!m_lazy) {
            T *kept = internalPrepareForReuse(returned.get());
            if (kept != returned.get())
                returned.reset(kept);
        }
        m_free.push_back(std::move(returned));
    }

    /** Makes count new objects and puts them on the free stack. */
    void fillWithObjectCount(quint64 count)
    {
        const std::size_t total = std::size_t(this->count() + count);
        if (total > m_free.capacity())
            m_free.reserve(std::max<std::size_t>(total, m_free.capacity() * 2));
        // Room for every object to be handed out at once, so that object()
        // never grows the used store after a fill.
        if (total > m_used.capacity())
            m_used.reserve(std::max<std::size_t>(total, m_used.capacity() * 2));
        m_index.reserve(total);
        for (quint64 made = 0; made < count; ++made) {
            std::unique_ptr<T> newObject = m_newObjectBlock();
            QV_ASSERT_TEXT(newObject != nullptr, "newObject");
            m_free.push_back(std::move(newObject));
        }
    }

    /** Destroys every free object; objects handed out stay counted. */
    void drainFreeObjects() { m_free.clear(); }

    /** Objects handed out plus free objects. */
    quint64 count() const { return quint64(m_used.size() + m_free.size()); }
    quint64 usedObjectCount() const { return quint64(m_used.size()); }
    quint64 freeObjectCount() const { return quint64(m_free.size()); }

    /** False (the default): objects are cleaned when returned; true: when handed out again. */
    bool isLazy() const { return m_lazy; }
    void setLazy(bool lazy) { m_lazy = lazy; }

    /** The name of the pooled objects' type, as shown in the description. */
    QString objectClassName() const { return m_objectClassName; }

    /** "<QVObjectPool 0x…> 3 Item objects (1 used, 2 free)". */
    QString description() const
    {
        return QVFormat("<%@ %p> %lu %@ objects (%lu used, %lu free)", "QVObjectPool",
                        static_cast<const void *>(this), count(), m_objectClassName, usedObjectCount(),
                        freeObjectCount());
    }

private:
    T *internalPrepareForReuse(T *object)
    {
        T *reuseObject = m_prepareForReuseBlock(object);
        QV_ASSERT_TEXT(reuseObject != nullptr, "reuseObject");
        return reuseObject;
    }

    bool m_lazy = false;
    QString m_objectClassName;
    NewObjectBlock m_newObjectBlock;
    PrepareForReuseBlock m_prepareForReuseBlock;
    // Handed-out objects, and the position of each in that store by address.
    std::vector<std::unique_ptr<T>> m_used;
    QVObjectPoolDetail::PositionIndex m_index;
    // Free objects; the back is the top of the stack.
    std::vector<std::unique_ptr<T>> m_free;
};
