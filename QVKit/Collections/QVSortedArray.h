#pragma once

#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVRange.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <algorithm>
#include <concepts>
#include <functional>
#include <future>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace QVSortedArrayDetail {

template <typename C>
inline constexpr bool isStdFunction = false;
template <typename R, typename... A>
inline constexpr bool isStdFunction<std::function<R(A...)>> = true;

template <typename C>
struct FunctionPointerOf
{
};
template <typename R, typename... A>
struct FunctionPointerOf<std::function<R(A...)>>
{
    using type = R (*)(A...);
};

template <typename T>
concept SmartPointer = requires(const T &value) {
    { value.get() };
    requires std::is_pointer_v<decltype(value.get())>;
};

/**
 * Types that can hold "no object": raw pointers, smart pointers (anything whose
 * get() answers a pointer: std::shared_ptr, QSharedPointer, QPointer) and
 * QVariant, whose invalid value is nil. Other types are never nil.
 */
template <typename T>
inline constexpr bool canBeNil = std::is_pointer_v<T> || std::is_null_pointer_v<T> ||
                                 std::is_same_v<T, QVariant> || SmartPointer<T>;

template <typename T>
constexpr bool isNil(const T &value)
{
    if constexpr (std::is_pointer_v<T> || std::is_null_pointer_v<T>)
        return value == nullptr;
    else if constexpr (std::is_same_v<T, QVariant>)
        return !value.isValid();
    else if constexpr (SmartPointer<T>)
        return value.get() == nullptr;
    else
        return false;
}

/** A comparator is missing only when it is an empty std::function or a null function pointer. */
template <typename C>
constexpr bool isMissing(const C &comparator)
{
    if constexpr (isStdFunction<C> || std::is_pointer_v<C>)
        return !comparator;
    else
        return false;
}

/**
 * Whether two comparators are known to be the same callable: equal function
 * pointers; std::functions that both wrap the same function pointer (or are both
 * empty); two objects of a stateless callable type. Everything else, including
 * two std::functions wrapping lambdas, counts as different.
 */
template <typename C>
bool isSameComparator(const C &a, const C &b)
{
    if constexpr (std::is_pointer_v<C>) {
        return a == b;
    } else if constexpr (isStdFunction<C>) {
        if (!a || !b)
            return !a && !b;
        if (a.target_type() != b.target_type())
            return false;
        using Pointer = typename FunctionPointerOf<C>::type;
        const Pointer *pa = a.template target<Pointer>();
        const Pointer *pb = b.template target<Pointer>();
        return pa && pb && *pa == *pb;
    } else if constexpr (std::is_empty_v<C>) {
        return true;
    } else if constexpr (std::equality_comparable<C>) {
        return a == b;
    } else {
        return false;
    }
}

/** The text one element shows in a description, as "%@" would show it. */
template <typename T>
QString describe(const T &value)
{
    if constexpr (std::is_pointer_v<T> && requires { value->description(); }) {
        return value ? QString(value->description()) : QStringLiteral("(null)");
    } else if constexpr (std::is_constructible_v<QVFormatArgument, const T &>) {
        return QVFormatArgument(value).toText();
    } else {
        return QVDescription(QVariant::fromValue(value));
    }
}

} // namespace QVSortedArrayDetail

/**
 * An array that keeps itself sorted by a comparator answering -1 (ascending),
 * 0 (same) or 1 (descending) for a pair of elements.
 *
 * An added element goes after every element that compares equal to it, so a
 * run of equal elements stays in arrival order; bulk changes re-sort stably.
 * Searches are binary searches with the comparator and answer QVNotFound (or
 * {QVNotFound, 0}) when nothing compares equal.
 *
 * Compare may be a std::function (the default), a function pointer or any
 * callable type; a stateless callable type (a lambda without captures) keeps
 * the comparator call inline in the searches. The comparator is called from
 * several threads at once while an array of 10001 or more elements sorts, so it
 * must be safe to call concurrently (a pure function of its arguments is).
 *
 * Nil: adding a null pointer, null smart pointer or invalid QVariant is a
 * programming error (assertion "object"); searching for one finds nothing.
 * An empty std::function or null function pointer as comparator is a
 * programming error (assertion "comparator"). A default-constructed array of a
 * std::function comparator has no comparator yet: until one is set, searches
 * answer not-found and addObject() adds nothing.
 *
 * Index and range arguments outside the array stop at an assertion. Iteration
 * (range-for) runs over the backing QList; elements are read-only, since
 * editing one in place could break the order.
 */
template <typename T, typename Compare = std::function<int(const T &, const T &)>>
class QVSortedArray
{
public:
    using value_type = T;
    using comparator_type = Compare;
    using const_iterator = typename QList<T>::const_iterator;
    using iterator = const_iterator;

    /** Sorting runs on several threads from this element count on. */
    static constexpr quint64 concurrentSortThreshold = 10001;

    /** An array without comparator (see the class notes); only for default-constructible Compare. */
    QVSortedArray()
        requires std::default_initializable<Compare>
        : m_didInitQVSortedArray(true)
    {
    }

    explicit QVSortedArray(Compare comparator) : QVSortedArray(0, std::move(comparator)) {}

    /** The capacity is only a reservation hint (bounded, so that a huge hint costs nothing). */
    QVSortedArray(quint64 capacity, Compare comparator) : m_comparator(std::move(comparator))
    {
        QV_ASSERT_TEXT(!QVSortedArrayDetail::isMissing(m_comparator), "comparator");
        if (capacity > 0)
            m_store.reserve(qsizetype(std::min<quint64>(capacity, maximumReservation)));
        m_didInitQVSortedArray = true;
    }

    static QVSortedArray arrayWithComparator(Compare comparator)
    {
        return QVSortedArray(0, std::move(comparator));
    }

    static QVSortedArray arrayWithCapacity(quint64 capacity, Compare comparator)
    {
        return QVSortedArray(capacity, std::move(comparator));
    }

    /** A copy of the elements in order (implicitly shared, so cheap until one side changes). */
    QList<T> array() const { return m_store; }

    /** Replaces all elements, then sorts them stably. */
    void setArray(const QList<T> &array)
    {
        assertNoNilElements(array);
        m_store = array;
        sort();
    }

    const Compare &comparator() const { return m_comparator; }

    /**
     * Sets a new comparator and re-sorts; setting the same callable (see
     * QVSortedArrayDetail::isSameComparator) does nothing.
     */
    void setComparator(Compare comparator)
        requires std::is_move_assignable_v<Compare>
    {
        QV_ASSERT_TEXT(!QVSortedArrayDetail::isMissing(comparator), "comparator");
        if (QVSortedArrayDetail::isSameComparator(m_comparator, comparator))
            return;
        m_comparator = std::move(comparator);
        sort();
    }

    quint64 count() const { return quint64(m_store.size()); }
    QVRange fullRange() const { return QVMakeRange(0, count()); }

    /** Inserts after every element that compares equal to the object. */
    void addObject(const T &object)
    {
        QV_ASSERT_TEXT(!QVSortedArrayDetail::isNil(object), "object");
        const quint64 index = indexOfObjectForInsertion(object);
        if (index != QVNotFound)
            m_store.insert(qsizetype(index), object);
    }

    /**
     * Adds many elements: when they are more than an eighth of the current
     * count (m > n >> 3), appends them all and sorts once; otherwise adds them
     * one by one in the given order.
     */
    void addObjectsFromArray(const QList<T> &array)
    {
        assertNoNilElements(array);
        const quint64 added = quint64(array.size());
        if (added > (count() >> 3)) {
            m_store.append(array);
            sort();
        } else {
            for (const T &object : array)
                addObject(object);
        }
    }

    void removeObjectAtIndex(quint64 index)
    {
        assertIndex(index);
        m_store.removeAt(qsizetype(index));
    }

    void removeObjectsInRange(QVRange range)
    {
        assertRange(range);
        m_store.remove(qsizetype(range.location), qsizetype(range.length));
    }

    void removeAllObjects() { m_store.clear(); }

    /** Removes the whole run of elements that compare equal to the object; nothing when absent or nil. */
    void removeObject(const T &object)
    {
        const QVRange range = indexRangeOfObject(object);
        if (range.location != QVNotFound)
            m_store.remove(qsizetype(range.location), qsizetype(range.length));
    }

    void removeObjectsInArray(const QList<T> &array)
    {
        for (const T &object : array)
            removeObject(object);
    }

    const T &objectAtIndex(quint64 index) const
    {
        assertIndex(index);
        return m_store.at(qsizetype(index));
    }

    const T &operator[](quint64 index) const { return objectAtIndex(index); }

    QList<T> subarrayWithRange(QVRange range) const
    {
        assertRange(range);
        return m_store.mid(qsizetype(range.location), qsizetype(range.length));
    }

    std::optional<T> firstObject() const
    {
        return m_store.isEmpty() ? std::nullopt : std::optional<T>(m_store.first());
    }

    std::optional<T> lastObject() const
    {
        return m_store.isEmpty() ? std::nullopt : std::optional<T>(m_store.last());
    }

    /** 0, also when empty. */
    quint64 firstIndex() const { return 0; }
    /** count - 1, and 0 when empty (the same as for one element). */
    quint64 lastIndex() const { return m_store.isEmpty() ? 0 : count() - 1; }

    /** {0, min(count, n)}. */
    QVRange rangeForFirstObjects(quint64 n) const { return QVMakeRange(0, std::min(count(), n)); }

    /** {count - min(count, n), min(count, n)}. */
    QVRange rangeForLastObjects(quint64 n) const
    {
        const quint64 length = std::min(count(), n);
        return QVMakeRange(count() - length, length);
    }

    /** The first n elements (fewer when shorter); nullopt when that range is empty. */
    std::optional<QList<T>> subarrayWithFirstObjects(quint64 n) const
    {
        return nonEmptySubarray(rangeForFirstObjects(n));
    }

    /** The last n elements (fewer when shorter); nullopt when that range is empty. */
    std::optional<QList<T>> subarrayWithLastObjects(quint64 n) const
    {
        return nonEmptySubarray(rangeForLastObjects(n));
    }

    void removeFirstObject()
    {
        if (!m_store.isEmpty())
            m_store.removeFirst();
    }

    void removeLastObject()
    {
        if (!m_store.isEmpty())
            m_store.removeLast();
    }

    void removeFirstObjects(quint64 n) { removeObjectsInRange(rangeForFirstObjects(n)); }
    void removeLastObjects(quint64 n) { removeObjectsInRange(rangeForLastObjects(n)); }

    bool containsObject(const T &object) const { return indexOfObject(object) != QVNotFound; }

    /**
     * The index of the first (order 0) or last (any other order) element of
     * the run that compares equal to the object; QVNotFound when none does.
     */
    quint64 indexOfObject(const T &object, quint64 order = 0) const
    {
        quint64 index = QVNotFound;
        if (order == 0)
            binarySearchIndexOfObject(object, &index, nullptr, false);
        else
            binarySearchIndexOfObject(object, nullptr, &index, false);
        return index;
    }

    /** {first, last - first + 1} of the equal run; {QVNotFound, 0} when absent. */
    QVRange indexRangeOfObject(const T &object) const
    {
        quint64 first = QVNotFound;
        quint64 last = QVNotFound;
        binarySearchIndexOfObject(object, &first, &last, false);
        if (first == QVNotFound || last == QVNotFound)
            return QVNotFoundRange();
        return QVMakeRange(first, last - first + 1);
    }

    /**
     * Where the object would be inserted: before the first (order 0) or after
     * the last (any other order) element that compares equal, in 0...count;
     * QVNotFound only for a nil object or a missing comparator.
     */
    quint64 indexOfObjectForInsertion(const T &object, quint64 order = 1) const
    {
        quint64 index = QVNotFound;
        if (order == 0)
            binarySearchIndexOfObject(object, &index, nullptr, true);
        else
            binarySearchIndexOfObject(object, nullptr, &index, true);
        return index;
    }

    /**
     * The one search primitive. Each requested output starts as QVNotFound.
     * firstIndex gets the first element of the equal run (or, with
     * useInsertionIndex, the insertion index before it); lastIndex gets the
     * last element of the run (or the insertion index after it), searching
     * from the first index when this call found one. A nil object or a missing
     * comparator leaves both at QVNotFound.
     */
    void binarySearchIndexOfObject(const T &object, quint64 *firstIndex, quint64 *lastIndex,
                                   bool useInsertionIndex) const
    {
        quint64 first = QVNotFound;
        quint64 last = QVNotFound;
        const bool searchable =
            !QVSortedArrayDetail::isNil(object) && !QVSortedArrayDetail::isMissing(m_comparator);
        const T *data = m_store.constData();
        const quint64 end = count();
        if (firstIndex && searchable) {
            const quint64 lower = lowerBound(data, object, 0, end);
            if (useInsertionIndex)
                first = lower;
            else if (lower < end && m_comparator(data[lower], object) == 0)
                first = lower;
        }
        if (lastIndex && searchable) {
            const quint64 start = (firstIndex && first != QVNotFound) ? first : 0;
            const quint64 upper = upperBound(data, object, start, end);
            if (useInsertionIndex)
                last = upper;
            else if (upper > start && m_comparator(data[upper - 1], object) == 0)
                last = upper - 1;
        }
        if (firstIndex)
            *firstIndex = first;
        if (lastIndex)
            *lastIndex = last;
    }

    /**
     * Stable re-sort by the comparator. From concurrentSortThreshold elements
     * on, chunks are sorted on separate threads and merged in order, which
     * gives exactly the serial result. Nothing happens without a comparator.
     */
    void sort()
    {
        if (QVSortedArrayDetail::isMissing(m_comparator) || m_store.size() < 2)
            return;
        // One detach here, before any thread touches the elements.
        T *data = m_store.data();
        const Compare &comparator = m_comparator;
        const auto less = [&comparator](const T &a, const T &b) { return comparator(a, b) < 0; };
        if (count() >= concurrentSortThreshold)
            concurrentStableSort(data, data + m_store.size(), less);
        else
            std::stable_sort(data, data + m_store.size(), less);
    }

    /** The elements as a list description: "(a, b, c)". */
    QString description() const
    {
        QStringList parts;
        parts.reserve(m_store.size());
        for (const T &object : m_store)
            parts.append(QVSortedArrayDetail::describe(object));
        return QLatin1Char('(') + parts.join(QLatin1String(", ")) + QLatin1Char(')');
    }

    const_iterator begin() const { return m_store.cbegin(); }
    const_iterator end() const { return m_store.cend(); }
    const_iterator cbegin() const { return m_store.cbegin(); }
    const_iterator cend() const { return m_store.cend(); }

private:
    static constexpr quint64 maximumReservation = 1 << 16;

    // First index in [from, to) whose element is not ascending against the object.
    quint64 lowerBound(const T *data, const T &object, quint64 from, quint64 to) const
    {
        quint64 length = to - from;
        while (length > 0) {
            const quint64 half = length / 2;
            if (m_comparator(data[from + half], object) < 0) {
                from += half + 1;
                length -= half + 1;
            } else {
                length = half;
            }
        }
        return from;
    }

    // First index in [from, to) whose element is descending against the object.
    quint64 upperBound(const T *data, const T &object, quint64 from, quint64 to) const
    {
        quint64 length = to - from;
        while (length > 0) {
            const quint64 half = length / 2;
            if (m_comparator(data[from + half], object) <= 0) {
                from += half + 1;
                length -= half + 1;
            } else {
                length = half;
            }
        }
        return from;
    }

    template <typename Less>
    static void concurrentStableSort(T *first, T *last, const Less &less)
    {
        const size_t size = size_t(last - first);
        const size_t chunks = std::clamp<size_t>(std::thread::hardware_concurrency(), 2, 16);
        std::vector<T *> bounds(chunks + 1);
        for (size_t chunk = 0; chunk <= chunks; ++chunk)
            bounds[chunk] = first + size * chunk / chunks;

        // async|deferred: when no thread can be started the work runs on wait() instead.
        constexpr auto policy = std::launch::async | std::launch::deferred;
        std::vector<std::future<void>> pending;
        pending.reserve(chunks);
        for (size_t chunk = 1; chunk < chunks; ++chunk) {
            pending.push_back(std::async(policy, [&bounds, &less, chunk] {
                std::stable_sort(bounds[chunk], bounds[chunk + 1], less);
            }));
        }
        std::stable_sort(bounds[0], bounds[1], less);
        for (auto &future : pending)
            future.get();

        // Merging neighbours left into right keeps equal elements in their
        // original order, so the result is the serial stable sort's.
        for (size_t width = 1; width < chunks; width *= 2) {
            pending.clear();
            for (size_t left = 0; left + width < chunks; left += 2 * width) {
                T *low = bounds[left];
                T *middle = bounds[left + width];
                T *high = bounds[std::min(left + 2 * width, chunks)];
                pending.push_back(std::async(policy, [low, middle, high, &less] {
                    std::inplace_merge(low, middle, high, less);
                }));
            }
            for (auto &future : pending)
                future.get();
        }
    }

    std::optional<QList<T>> nonEmptySubarray(QVRange range) const
    {
        if (range.length == 0)
            return std::nullopt;
        return m_store.mid(qsizetype(range.location), qsizetype(range.length));
    }

    void assertIndex(quint64 index) const { QV_ASSERT_TEXT(index < count(), "index < count"); }

    void assertRange(QVRange range) const
    {
        QV_ASSERT_TEXT(range.location <= count() && range.length <= count() - range.location,
                       "QVMaxRange(range) <= count");
    }

    static void assertNoNilElements(const QList<T> &array)
    {
        if constexpr (QVSortedArrayDetail::canBeNil<T>) {
            for (const T &object : array)
                QV_ASSERT_TEXT(!QVSortedArrayDetail::isNil(object), "object");
        } else {
            Q_UNUSED(array);
        }
    }

    Compare m_comparator{};
    bool m_didInitQVSortedArray = false;
    QList<T> m_store;
};
