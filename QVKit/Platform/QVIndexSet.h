#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <initializer_list>
#include <iterator>

/**
 * A set of unsigned 64-bit indexes, kept as sorted ranges that neither overlap
 * nor touch (adding 3 to {0-2} gives the one range {0-3}).
 *
 * A value: copies are cheap (the range list is shared until written). Adding
 * indexes in ascending order, the order in which the collection tools collect
 * them, only extends or appends the last range. An empty set answers
 * QVNotFound for its first and last index.
 */
class QVKIT_EXPORT QVIndexSet
{
public:
    QVIndexSet() = default;
    explicit QVIndexSet(quint64 index);
    /** The indexes of a range; an empty range gives an empty set. */
    explicit QVIndexSet(QVRange range);
    QVIndexSet(std::initializer_list<quint64> indexes);

    void addIndex(quint64 index);
    /** Adds every index of the range (none for an empty range). */
    void addIndexesInRange(QVRange range);
    void addIndexes(const QVIndexSet &other);
    void removeIndex(quint64 index);
    void removeIndexesInRange(QVRange range);
    void removeIndexes(const QVIndexSet &other);
    void removeAllIndexes();

    bool containsIndex(quint64 index) const;
    /** True when every index of a non-empty range is in the set. */
    bool containsIndexesInRange(QVRange range) const;
    bool containsIndexes(const QVIndexSet &other) const;
    bool intersectsIndexesInRange(QVRange range) const;

    /** How many indexes the set holds. */
    quint64 count() const;
    quint64 countOfIndexesInRange(QVRange range) const;
    bool isEmpty() const { return m_ranges.isEmpty(); }

    /** The smallest index, or QVNotFound when empty. */
    quint64 firstIndex() const;
    /** The largest index, or QVNotFound when empty. */
    quint64 lastIndex() const;

    /** The sorted, separated ranges that make up the set. */
    const QVRangeList &ranges() const { return m_ranges; }
    /** Every index in ascending order. */
    QList<quint64> toList() const;

    /** "(0-2, 5)": ranges as first-last, single indexes alone; "()" when empty. */
    QString description() const;

    friend bool operator==(const QVIndexSet &a, const QVIndexSet &b) { return a.m_ranges == b.m_ranges; }
    friend bool operator!=(const QVIndexSet &a, const QVIndexSet &b) { return !(a == b); }

    /** Walks the indexes in ascending order. */
    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = quint64;
        using difference_type = std::ptrdiff_t;
        using pointer = const quint64 *;
        using reference = quint64;

        const_iterator() = default;
        quint64 operator*() const { return m_ranges->at(m_range).location + m_offset; }
        const_iterator &operator++()
        {
            if (++m_offset == m_ranges->at(m_range).length) {
                ++m_range;
                m_offset = 0;
            }
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator previous = *this;
            ++*this;
            return previous;
        }
        friend bool operator==(const const_iterator &a, const const_iterator &b)
        {
            return a.m_range == b.m_range && a.m_offset == b.m_offset;
        }

    private:
        friend class QVIndexSet;
        const_iterator(const QVRangeList *ranges, qsizetype range) : m_ranges(ranges), m_range(range) {}
        const QVRangeList *m_ranges = nullptr;
        qsizetype m_range = 0;
        quint64 m_offset = 0;
    };
    using iterator = const_iterator;

    const_iterator begin() const { return const_iterator(&m_ranges, 0); }
    const_iterator end() const { return const_iterator(&m_ranges, m_ranges.size()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

private:
    QVRangeList m_ranges;
};

inline size_t qHash(const QVIndexSet &set, size_t seed = 0) noexcept
{
    return qHashRange(set.ranges().cbegin(), set.ranges().cend(), seed);
}

QVKIT_EXPORT QDebug operator<<(QDebug debug, const QVIndexSet &set);

Q_DECLARE_METATYPE(QVIndexSet)
