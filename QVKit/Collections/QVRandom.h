#pragma once

#include <QVKit/QVKitExport.h>
#include <QVKit/Platform/QVRange.h>

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtCore/QSet>
#include <QtCore/QSizeF>
#include <QtCore/QString>

#include <concepts>
#include <iterator>
#include <optional>
#include <ranges>
#include <type_traits>

namespace QVRandomDetail {

/** A collection read by position: count() plus objectAtIndex(i) or operator[](i). */
template <typename C>
concept IndexedCollection = requires(const C &collection) {
    { collection.count() } -> std::convertible_to<quint64>;
} && (requires(const C &collection, quint64 index) { collection.objectAtIndex(index); }
      || requires(const C &collection, qsizetype index) { collection[index]; });

template <IndexedCollection C>
decltype(auto) elementAt(const C &collection, quint64 index)
{
    if constexpr (requires { collection.objectAtIndex(index); })
        return collection.objectAtIndex(index);
    else
        return collection[qsizetype(index)];
}

template <IndexedCollection C>
using IndexedElement = std::remove_cvref_t<decltype(elementAt(std::declval<const C &>(), quint64(0)))>;

/** Any collection that can be enumerated in its own order. */
template <typename C>
concept EnumerableCollection = std::ranges::input_range<const C>;

} // namespace QVRandomDetail

/**
 * The library's one source of random values; static members only, safe from
 * any thread.
 *
 * Integers and doubles come from QRandomGenerator::system() through unbiased
 * bounded draws; bytes come from the operating system's cryptographic source.
 * Ranges are inclusive and the order of two bounds does not matter. Picks from
 * empty collections give std::nullopt (QVNotFound for indexes).
 */
class QVKIT_EXPORT QVRandom
{
public:
    QVRandom() = delete;

    /**
     * Uniform in 0..n inclusive. Up to 2^32 - 2 the draw is exact; above that
     * the result is round(doubleValue() * n), so it is only as fine-grained as
     * the double draw.
     */
    static quint64 unsignedIntegerUpTo(quint64 n);
    /** Uniform in min(a, b)..max(a, b) inclusive. */
    static quint64 unsignedIntegerBetween(quint64 a, quint64 b);
    /** Uniform in min(a, b)..max(a, b) inclusive, over the whole signed range. */
    static qint64 integerBetween(qint64 a, qint64 b);

    /** Uniform in [0, 1) in steps of 1 / 4294967295; 1.0 never occurs. */
    static double doubleValue();
    /** doubleBetween(0, x). */
    static double doubleUpTo(double x);
    /** r / (1 / (max - min)) + min with r = doubleValue(); equal bounds give the bound. */
    static double doubleBetween(double a, double b);
    /** unsignedIntegerUpTo(1) != 0. */
    static bool boolValue();

    /**
     * count characters of characters: each time a code unit position is drawn
     * uniformly and the whole composed character holding it is appended, so a
     * flag or a letter with its marks is never split. A null string when count
     * is 0 or negative or characters is empty.
     */
    static QString stringWithCharacters(const QString &characters, qint64 count);
    /**
     * n random bytes decoded as UTF-8; a null string when they are not valid
     * UTF-8 (which random bytes mostly are not, so expect null for n > 1).
     * Zero bytes decode to an empty, non-null string.
     */
    static QString stringOfLength(quint64 n);
    /** n bytes from the cryptographic source; a null QByteArray for n = 0. */
    static QByteArray dataWithLength(quint64 n);

    /**
     * A location uniform in 0..length and a length uniform in what remains,
     * widened to whole composed characters; {0, 0} for an empty string.
     */
    static QVRange rangeWithinString(const QString &text);

    /** Uniform in 0..count - 1; QVNotFound when the list is empty. */
    template <typename T>
    static quint64 indexFromArray(const QList<T> &array)
    {
        return indexForCount(quint64(array.size()));
    }
    /** The element at indexFromArray(array); nullopt when empty. */
    template <typename T>
    static std::optional<T> objectFromArray(const QList<T> &array)
    {
        const quint64 index = indexFromArray(array);
        if (index == QVNotFound)
            return std::nullopt;
        return array.at(qsizetype(index));
    }
    /** There is no ordered-set type here; an ordered set is a list of distinct values. */
    template <typename T>
    static quint64 indexFromOrderedSet(const QList<T> &orderedSet)
    {
        return indexFromArray(orderedSet);
    }
    template <typename T>
    static std::optional<T> objectFromOrderedSet(const QList<T> &orderedSet)
    {
        return objectFromArray(orderedSet);
    }

    /**
     * Uniform in 0..count - 1 over a sorted array (or any collection with
     * count() and objectAtIndex() or operator[]); QVNotFound when empty.
     */
    template <QVRandomDetail::IndexedCollection C>
    static quint64 indexFromSortedArray(const C &sortedArray)
    {
        return indexForCount(quint64(sortedArray.count()));
    }
    /** The element at indexFromSortedArray(sortedArray); nullopt when empty. */
    template <QVRandomDetail::IndexedCollection C>
    static std::optional<QVRandomDetail::IndexedElement<C>> objectFromSortedArray(const C &sortedArray)
    {
        const quint64 index = indexFromSortedArray(sortedArray);
        if (index == QVNotFound)
            return std::nullopt;
        return QVRandomDetail::elementAt(sortedArray, index);
    }

    /**
     * Unindexed pick: position p = unsignedIntegerUpTo(count - 1), then the
     * element met at p when the collection is enumerated in its own order.
     * nullopt when count is 0 (or the collection holds fewer than p + 1
     * elements).
     */
    template <QVRandomDetail::EnumerableCollection C>
    static std::optional<std::ranges::range_value_t<const C>> randomObjectFromUnindexedCollection(
        const C &collection, quint64 count)
    {
        return pickFrom(std::ranges::begin(collection), std::ranges::end(collection), count);
    }
    /** The same, with the collection's own size as the count. */
    template <QVRandomDetail::EnumerableCollection C>
        requires std::ranges::sized_range<const C>
    static std::optional<std::ranges::range_value_t<const C>> randomObjectFromUnindexedCollection(
        const C &collection)
    {
        return randomObjectFromUnindexedCollection(collection, quint64(std::ranges::size(collection)));
    }

    /** A uniformly chosen key (unindexed pick); nullopt when empty. */
    template <typename K, typename V>
    static std::optional<K> keyFromDictionary(const QHash<K, V> &dictionary)
    {
        return pickFrom(dictionary.keyBegin(), dictionary.keyEnd(), quint64(dictionary.size()));
    }
    template <typename K, typename V>
    static std::optional<K> keyFromDictionary(const QMap<K, V> &dictionary)
    {
        return pickFrom(dictionary.keyBegin(), dictionary.keyEnd(), quint64(dictionary.size()));
    }
    /** The value stored under keyFromDictionary(dictionary); nullopt when empty. */
    template <typename K, typename V>
    static std::optional<V> objectFromDictionary(const QHash<K, V> &dictionary)
    {
        return pickFrom(dictionary.cbegin(), dictionary.cend(), quint64(dictionary.size()));
    }
    template <typename K, typename V>
    static std::optional<V> objectFromDictionary(const QMap<K, V> &dictionary)
    {
        return pickFrom(dictionary.cbegin(), dictionary.cend(), quint64(dictionary.size()));
    }

    /** A uniformly chosen member (unindexed pick); nullopt when empty. */
    template <typename T>
    static std::optional<T> objectFromSet(const QSet<T> &set)
    {
        return pickFrom(set.cbegin(), set.cend(), quint64(set.size()));
    }
    /**
     * A member of a counted set (member → occurrences), chosen uniformly among
     * the distinct members whatever their counts; nullopt when empty.
     */
    template <typename T>
    static std::optional<T> objectFromCountedSet(const QHash<T, qsizetype> &countedSet)
    {
        return pickFrom(countedSet.keyBegin(), countedSet.keyEnd(), quint64(countedSet.size()));
    }

    /** A point uniform in the (normalised) rectangle. */
    static QPointF pointWithinRect(const QRectF &rect);
    /** A size with each side uniform in 0..the rectangle's side. */
    static QSizeF sizeWithinRect(const QRectF &rect);
    /** A rectangle inside the given one: a random origin, then a random size that still fits. */
    static QRectF rectWithinRect(const QRectF &rect);

private:
    static quint64 indexForCount(quint64 count);

    template <typename Iterator, typename Sentinel>
    static auto pickFrom(Iterator it, Sentinel end, quint64 count)
        -> std::optional<std::remove_cvref_t<decltype(*it)>>
    {
        if (count == 0)
            return std::nullopt;
        for (quint64 position = unsignedIntegerUpTo(count - 1); it != end; ++it, --position) {
            if (position == 0)
                return *it;
        }
        return std::nullopt;
    }
};
