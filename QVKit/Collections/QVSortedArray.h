#pragma once

#include <QVKit/Collections/QVBlockList.h>
#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

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

/** Types with an order of their own: strings, numbers, anything with operator<. */
template <typename T>
concept NaturallyOrdered = requires(const T &a, const T &b) {
    { a < b } -> std::convertible_to<bool>;
};

/** The natural order as a comparator: -1, 0 or 1. */
template <NaturallyOrdered T>
int naturalOrder(const T &a, const T &b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

/** Logs that an array without a comparator was asked to take elements. */
QVKIT_EXPORT void logMissingComparator(const char *operation);

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
 * An empty std::function or null function pointer passed as comparator is a
 * programming error (assertion "comparator"). A default-constructed array of a
 * std::function comparator sorts by the elements' natural order (operator<)
 * when they have one. Elements without one have no comparator until it is set:
 * searches answer not-found, and adding logs "<operation>: the sorted array
 * has no comparator; nothing was added. Fix this." and adds nothing.
 *
 * Index and range arguments outside the array stop at an assertion. Iteration
 * (range-for) runs over the elements in order; they are read-only, since
 * editing one in place could break the order.
 *
 * The elements live in a QVBlockList, so an insertion or removal anywhere
 * moves at most one block of elements. Adding checks both ends before it
 * searches, because orders by time mostly grow at one end.
 */
template <typename T, typename Compare = std::function<int(const T &, const T &)>>
class QVSortedArray
{
public:
    using value_type = T;
    using comparator_type = Compare;
    using const_iterator = typename QVBlockList<T>::const_iterator;
    using iterator = const_iterator;

    /** Sorting runs on several threads from this element count on. */
    static constexpr quint64 concurrentSortThreshold = 10001;

    /**
     * An array in the elements' natural order, or without a comparator when
     * they have none (see the class notes); only for default-constructible Compare.
     */
    QVSortedArray()
        requires std::default_initializable<Compare>
        : m_didInitQVSortedArray(true)
    {
        if constexpr (QVSortedArrayDetail::isStdFunction<Compare> && QVSortedArrayDetail::NaturallyOrdered<T>)
            m_comparator = &QVSortedArrayDetail::naturalOrder<T>;
    }

    explicit QVSortedArray(Compare comparator) : QVSortedArray(0, std::move(comparator)) {}

    /** The capacity is only a reservation hint (at most one block is reserved). */
    QVSortedArray(quint64 capacity, Compare comparator) : m_comparator(std::move(comparator))
    {
        QV_ASSERT_TEXT(!QVSortedArrayDetail::isMissing(m_comparator), "comparator");
        m_store.reserve(qsizetype(std::min<quint64>(capacity, QVBlockList<T>::maximumBlockLength)));
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

    /** A copy of the elements in order. */
    QList<T> array() const { return m_store.toList(); }

    /** Replaces all elements, then sorts them stably. */
    void setArray(const QList<T> &array)
    {
        assertNoNilElements(array);
        if (QVSortedArrayDetail::isMissing(m_comparator) && !array.isEmpty()) {
            QVSortedArrayDetail::logMissingComparator("QVSortedArray::setArray");
            return;
        }
        std::vector<T> elements(array.cbegin(), array.cend());
        sortElements(elements);
        m_store.assign(std::move(elements));
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
        if (QVSortedArrayDetail::isMissing(m_comparator)) {
            QVSortedArrayDetail::logMissingComparator("QVSortedArray::addObject");
            return;
        }
        if (m_store.isEmpty() || m_comparator(m_store.last(), object) <= 0)
            m_store.insert(m_store.endPosition(), object);
        else if (m_comparator(m_store.first(), object) > 0)
            m_store.insert(Position{}, object);
        else
            m_store.insert(upperBoundPosition(object), object);
    }

    /**
     * Adds many elements: when they are more than an eighth of the current
     * count (m > n >> 3), appends them all and sorts once; otherwise adds them
     * one by one in the given order.
     */
    void addObjectsFromArray(const QList<T> &array)
    {
        assertNoNilElements(array);
        if (QVSortedArrayDetail::isMissing(m_comparator) && !array.isEmpty()) {
            QVSortedArrayDetail::logMissingComparator("QVSortedArray::addObjectsFromArray");
            return;
        }
        const quint64 added = quint64(array.size());
        if (added > (count() >> 3)) {
            std::vector<T> elements = m_store.takeAll();
            elements.insert(elements.end(), array.cbegin(), array.cend());
            sortElements(elements);
            m_store.assign(std::move(elements));
        } else {
            for (const T &object : array)
                addObject(object);
        }
    }

    void removeObjectAtIndex(quint64 index)
    {
        assertIndex(index);
        m_store.remove(qsizetype(index), 1);
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
        if (!isSearchable(object))
            return;
        const Position first = lowerBoundPosition(object);
        m_store.remove(first, equalRunLength(first, object));
    }

    /**
     * removeObject() for an element known to be in the array, such as a
     * record leaving its own order. For pointers the element is looked up by
     * address in the block that the block search points to, a short scan
     * that replaces the bisection; when an equal element lies before it, or
     * the address is elsewhere, this is removeObject().
     */
    void removeContainedObject(const T &object)
    {
        if constexpr (std::is_pointer_v<T>) {
            if (isSearchable(object) && !m_store.isEmpty()) {
                const qsizetype block =
                    firstBlockWhoseLastElement([&](const T &last) { return m_comparator(last, object) >= 0; });
                const auto &elements = m_store.block(block);
                const auto found = std::find(elements.cbegin(), elements.cend(), object);
                if (found != elements.cend()) {
                    const qsizetype offset = qsizetype(found - elements.cbegin());
                    const T &before = offset > 0 ? elements[size_t(offset - 1)]
                                                 : (block > 0 ? m_store.block(block - 1).back() : object);
                    if (&before == &object || m_comparator(before, object) != 0) {
                        const Position first{block, offset};
                        m_store.remove(first, equalRunLength(first, object));
                        return;
                    }
                }
            }
        }
        removeObject(object);
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
            m_store.remove(0, 1);
    }

    void removeLastObject()
    {
        if (!m_store.isEmpty())
            m_store.remove(m_store.size() - 1, 1);
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
        const bool searchable = isSearchable(object);
        qsizetype runLength = -1; // not measured
        if (firstIndex && searchable) {
            const Position lower = lowerBoundPosition(object);
            const quint64 index = quint64(m_store.indexOfPosition(lower));
            if (useInsertionIndex) {
                first = index;
            } else {
                runLength = equalRunLength(lower, object);
                if (runLength > 0)
                    first = index;
            }
        }
        if (lastIndex && searchable) {
            if (runLength > 0) {
                last = first + quint64(runLength) - 1;
            } else if (runLength < 0) {
                const quint64 upper = quint64(m_store.indexOfPosition(upperBoundPosition(object)));
                if (useInsertionIndex)
                    last = upper;
                else if (upper > 0 && m_comparator(m_store.at(qsizetype(upper - 1)), object) == 0)
                    last = upper - 1;
            }
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
        std::vector<T> elements = m_store.takeAll();
        sortElements(elements);
        m_store.assign(std::move(elements));
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

    const_iterator begin() const { return m_store.begin(); }
    const_iterator end() const { return m_store.end(); }
    const_iterator cbegin() const { return m_store.begin(); }
    const_iterator cend() const { return m_store.end(); }

private:
    using Position = typename QVBlockList<T>::Position;

    bool isSearchable(const T &object) const
    {
        return !QVSortedArrayDetail::isNil(object) && !QVSortedArrayDetail::isMissing(m_comparator);
    }

    // The first block whose last element satisfies the predicate, which is
    // false up to some block and true from there on. The last block is never
    // tested: a search within it also finds the end position.
    template <typename Predicate>
    qsizetype firstBlockWhoseLastElement(const Predicate &predicate) const
    {
        qsizetype from = 0;
        qsizetype length = std::max<qsizetype>(m_store.blockCount() - 1, 0);
        while (length > 0) {
            const qsizetype half = length / 2;
            if (!predicate(m_store.block(from + half).back())) {
                from += half + 1;
                length -= half + 1;
            } else {
                length = half;
            }
        }
        return from;
    }

    // Where the first element that is not ascending against the object is.
    Position lowerBoundPosition(const T &object) const
    {
        if (m_store.isEmpty())
            return {};
        const qsizetype block =
            firstBlockWhoseLastElement([&](const T &last) { return m_comparator(last, object) >= 0; });
        const auto &elements = m_store.block(block);
        return {block, qsizetype(lowerBound(elements.data(), object, 0, elements.size()))};
    }

    // Where the first element that is descending against the object is.
    Position upperBoundPosition(const T &object) const
    {
        if (m_store.isEmpty())
            return {};
        const qsizetype block =
            firstBlockWhoseLastElement([&](const T &last) { return m_comparator(last, object) > 0; });
        const auto &elements = m_store.block(block);
        return {block, qsizetype(upperBound(elements.data(), object, 0, elements.size()))};
    }

    // How many elements from the position on compare equal to the object.
    // Runs are usually short, so each block is probed at growing distances
    // (gallop) before the last stretch is bisected.
    qsizetype equalRunLength(Position from, const T &object) const
    {
        qsizetype length = 0;
        for (qsizetype block = from.block, offset = from.offset; block < m_store.blockCount(); ++block, offset = 0) {
            const auto &elements = m_store.block(block);
            const qsizetype size = qsizetype(elements.size());
            qsizetype equalEnd = offset; // [offset, equalEnd) compare equal
            qsizetype probe = offset;
            qsizetype step = 1;
            while (probe < size && m_comparator(elements[size_t(probe)], object) == 0) {
                equalEnd = probe + 1;
                probe += step;
                step *= 2;
            }
            const qsizetype bound = std::min(probe, size);
            const qsizetype runEnd = qsizetype(upperBound(elements.data(), object, quint64(equalEnd), quint64(bound)));
            length += runEnd - offset;
            if (runEnd < size || probe < size)
                break;
        }
        return length;
    }

    void sortElements(std::vector<T> &elements) const
    {
        if (QVSortedArrayDetail::isMissing(m_comparator) || elements.size() < 2)
            return;
        const Compare &comparator = m_comparator;
        const auto less = [&comparator](const T &a, const T &b) { return comparator(a, b) < 0; };
        T *data = elements.data();
        if (quint64(elements.size()) >= concurrentSortThreshold)
            concurrentStableSort(data, data + elements.size(), less);
        else
            std::stable_sort(data, data + elements.size(), less);
    }

    // First index in [from, to) whose element is not ascending against the
    // object (lower bound) or is descending against it (upper bound, which
    // passes the equal ones too). The bisection halves without a branch on
    // the comparison, so the processor has nothing to mispredict; it narrows
    // [base, base + length] to one candidate and settles it with a last
    // comparison.
    template <bool passEqual>
    quint64 bisect(const T *data, const T &object, quint64 from, quint64 to) const
    {
        const auto goesBefore = [&](const T &element) {
            const int order = m_comparator(element, object);
            return passEqual ? order <= 0 : order < 0;
        };
        if (from >= to)
            return from;
        const T *base = data + from;
        quint64 length = to - from;
        while (length > 1) {
            const quint64 half = length / 2;
            base = goesBefore(base[half]) ? base + half : base;
            length -= half;
        }
        return quint64(base - data) + (goesBefore(*base) ? 1 : 0);
    }

    quint64 lowerBound(const T *data, const T &object, quint64 from, quint64 to) const
    {
        return bisect<false>(data, object, from, to);
    }

    quint64 upperBound(const T *data, const T &object, quint64 from, quint64 to) const
    {
        return bisect<true>(data, object, from, to);
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
    QVBlockList<T> m_store;
};
