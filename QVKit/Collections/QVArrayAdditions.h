#pragma once

#include <QVKit/Collections/QVCollectionTools.h>
#include <QVKit/Collections/QVRandom.h>
#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVIndexSet.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <algorithm>
#include <concepts>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

/**
 * Enumeration options of the block-based array and dictionary operations.
 * Concurrent is accepted and runs serially: the results are those of a
 * concurrent run, and a stop flag keeps its meaning.
 */
enum QVEnumerationOption : quint64 {
    QVEnumerationConcurrent = 1ull << 0,
    QVEnumerationReverse = 1ull << 1,
};
using QVEnumerationOptions = quint64;

namespace QVArrayDetail {

/**
 * What "nil" means for a block's result: an empty std::optional, an invalid
 * QVariant, a null pointer or smart pointer. Other types are never nil. The
 * null marker (QVariant::fromValue(nullptr)) is an object, not nil.
 */
template <typename R>
struct Nil
{
    using Value = R;
    static bool isNil(const R &) { return false; }
    static const Value &value(const R &result) { return result; }
};
template <typename U>
struct Nil<std::optional<U>>
{
    using Value = U;
    static bool isNil(const std::optional<U> &result) { return !result.has_value(); }
    static const Value &value(const std::optional<U> &result) { return *result; }
};
template <>
struct Nil<QVariant>
{
    using Value = QVariant;
    static bool isNil(const QVariant &result) { return !result.isValid(); }
    static const Value &value(const QVariant &result) { return result; }
};
template <typename U>
struct Nil<U *>
{
    using Value = U *;
    static bool isNil(U *result) { return result == nullptr; }
    static Value value(U *result) { return result; }
};
template <typename U>
struct Nil<std::shared_ptr<U>>
{
    using Value = std::shared_ptr<U>;
    static bool isNil(const Value &result) { return !result; }
    static const Value &value(const Value &result) { return result; }
};
template <typename U>
struct Nil<QSharedPointer<U>>
{
    using Value = QSharedPointer<U>;
    static bool isNil(const Value &result) { return result.isNull(); }
    static const Value &value(const Value &result) { return result; }
};
template <typename U>
struct Nil<QPointer<U>>
{
    using Value = QPointer<U>;
    static bool isNil(const Value &result) { return result.isNull(); }
    static const Value &value(const Value &result) { return result; }
};

/** The result type of an element block: block(object, index, stop). */
template <typename Block, typename T>
using ElementResult = std::remove_cvref_t<std::invoke_result_t<Block &, const T &, qsizetype, bool *>>;

/**
 * What flat-mapping accepts from a block: a QVariant, whose QVariantList is
 * flattened, or a std::variant<U, QList<T>>, whose list alternative is.
 */
template <typename R, typename T>
struct FlatMap
{
    static constexpr bool supported = false;
};
template <>
struct FlatMap<QVariant, QVariant>
{
    static constexpr bool supported = true;
    using Value = QVariant;
};
template <typename U, typename T>
struct FlatMap<std::variant<U, QList<T>>, T>
{
    static constexpr bool supported = true;
    using Value = U;
};

template <typename U>
std::optional<QList<U>> nonEmpty(QList<U> &&list)
{
    if (list.isEmpty())
        return std::nullopt;
    return std::optional<QList<U>>(std::move(list));
}

/** Visits 0..count-1 (backwards with QVEnumerationReverse) until body sets its stop flag. */
template <typename Body>
void enumerateIndexes(qsizetype count, QVEnumerationOptions options, Body &&body)
{
    bool stop = false;
    if (options & QVEnumerationReverse) {
        for (qsizetype i = count - 1; i >= 0 && !stop; --i)
            body(i, &stop);
    } else {
        for (qsizetype i = 0; i < count && !stop; ++i)
            body(i, &stop);
    }
}

/** Replaces the array's contents with an operation's result; nil empties it. */
template <typename T, typename U>
void assign(QList<T> &array, std::optional<QList<U>> &&result)
{
    if (!result) {
        array.clear();
    } else if constexpr (std::is_same_v<T, U>) {
        array = std::move(*result);
    } else {
        static_assert(std::is_convertible_v<U, T>, "the in-place form needs results of the array's element type");
        QList<T> converted;
        converted.reserve(result->size());
        for (U &value : *result)
            converted.append(T(std::move(value)));
        array = std::move(converted);
    }
}

/** The indexes of the set below count; logs one line for the operation when some lie beyond. */
QVKIT_EXPORT QVIndexSet indexesWithinCount(const char *operation, const QVIndexSet &indexes, quint64 count);
/** "<operation>: the block returned nil for the object at index <i>; it is left out. Fix this." */
QVKIT_EXPORT void logNilBlockResult(const char *operation, qsizetype index);
/** "<operation>: index <i> is beyond the end of an array of <n> objects; <consequence>. Fix this." */
QVKIT_EXPORT void logIndexBeyondEnd(const char *operation, quint64 index, quint64 count, const char *consequence);
/** "<operation>: <count> objects are more than an array can hold; no array is made. Fix this." */
QVKIT_EXPORT void logCountTooLarge(const char *operation, quint64 count);
/** "<type name> <address>", for an element that has no description of its own. */
QVKIT_EXPORT QString describeAnonymous(const char *typeName, const void *address);

template <typename T>
concept HasDescription = requires(const T &value) {
    { value.description() } -> std::convertible_to<QString>;
};

/** An element's description for singleLineDescription(). */
template <typename T>
QString describe(const T &element)
{
    if constexpr (std::is_same_v<T, QVariant>) {
        return QVDescription(element);
    } else if constexpr (std::is_same_v<T, bool>) {
        return element ? QStringLiteral("1") : QStringLiteral("0");
    } else if constexpr (std::is_arithmetic_v<T>) {
        return QString::number(element);
    } else if constexpr (std::is_convertible_v<const T &, QString>) {
        return QString(element);
    } else if constexpr (HasDescription<T>) {
        return element.description();
    } else if constexpr (std::is_pointer_v<T>) {
        using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
        if (element == nullptr)
            return QStringLiteral("(null)");
        if constexpr (HasDescription<Pointee>)
            return element->description();
        else if constexpr (std::is_base_of_v<QObject, Pointee>)
            return describeAnonymous(element->metaObject()->className(), element);
        else
            return describeAnonymous(QMetaType::fromType<Pointee *>().name(), element);
    } else {
        return describeAnonymous(QMetaType::fromType<T>().name(), &element);
    }
}

} // namespace QVArrayDetail

/**
 * Extensions of arrays (QList, QVariantList included): type-specific names for
 * the collection tools, functional operations and conveniences.
 *
 * Mutating forms take the list by reference. Blocks are callables:
 * element blocks are called as block(object, index, stop) with the index a
 * qsizetype and stop a bool * that ends the enumeration when set. Operations
 * that answer a list answer std::nullopt ("nil") where the answer would be
 * empty, unless said otherwise. Indexes and counts of the conveniences are
 * quint64, as in QVRange and QVIndexSet. A count larger than the array is
 * clipped silently ("the first 10 objects" of 3 are the 3); an index beyond
 * the end is a caller's mistake: one log line, then the nearest sensible
 * behaviour, never undefined behaviour. Every enumeration works on a copy of
 * the list (cheap: shared until written), so a block that edits the original
 * does not disturb it.
 */
namespace QVArray {

// ---- Collection tools, by the array's names ---------------------------------------------------

/** Indexes of the objects matching the mask (QVCollectionMatch bits); nil when none. */
template <typename T>
std::optional<QVIndexSet> indexSetWithObjectsMatching(const QList<T> &array, quint64 mask)
{
    return QVCollectionTools::identifiersWithObjectsMatching(array, mask);
}
/** The objects matching the mask, in order; nil when none. */
template <typename T>
std::optional<QList<T>> arrayWithObjectsMatching(const QList<T> &array, quint64 mask)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(array, mask);
}
/** Indexes within inArray of its matching objects; array only adds to the occurrence counts. */
template <typename T, typename U>
std::optional<QVIndexSet> indexSetWithObjectsMatching(const QList<T> &array, quint64 mask, const QList<U> &inArray)
{
    return QVCollectionTools::identifiersWithObjectsMatching(array, mask, inArray);
}
/** The matching objects of inArray; array only adds to the occurrence counts. */
template <typename T, typename U>
std::optional<QList<U>> arrayWithObjectsMatching(const QList<T> &array, quint64 mask, const QList<U> &inArray)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(array, mask, inArray);
}
/** Removes later copies of repeated objects, keeping the first. */
template <typename T>
void removeDuplicateObjects(QList<T> &array)
{
    QVCollectionTools::removeDuplicateObjects(array);
}
/** Removes empty objects, null objects and later copies of repeated objects in one pass. */
template <typename T>
void removeUnsanitizedObjects(QList<T> &array)
{
    QVCollectionTools::removeUnsanitizedObjects(array);
}
/** Removes every object that matches any criterion of the mask. */
template <typename T>
void removeObjectsMatching(QList<T> &array, quint64 mask)
{
    QVCollectionTools::removeObjectsMatching(array, mask);
}
/** Appends the objects of other not yet in the array, each once, in other's order. */
template <typename T, typename U>
void addUniqueObjectsFromArray(QList<T> &array, const QList<U> &other)
{
    QVCollectionTools::addUniqueObjectsFromCollection(array, other);
}
/** As addUniqueObjectsFromArray(), leaving out empty and null objects. */
template <typename T, typename U>
void addSanitizedObjectsFromArray(QList<T> &array, const QList<U> &other)
{
    QVCollectionTools::addSanitizedObjectsFromCollection(array, other);
}
/** Appends the objects of other matching every criterion of the mask (the array counts too). */
template <typename T, typename U>
void addObjectsFromArray(QList<T> &array, const QList<U> &other, quint64 mask)
{
    QVCollectionTools::addObjectsFromCollection(array, other, mask);
}

// ---- Functional operations --------------------------------------------------------------------

/**
 * block(object, index, stop) for each object in order, the results collected;
 * nil when there are none. A nil result (see compactMappedArrayUsingBlock())
 * is the block's mistake here: it is left out with one log line per call.
 */
template <typename T, typename Block>
auto mappedArrayUsingBlock(const QList<T> &array, Block &&block)
    -> std::optional<QList<typename QVArrayDetail::Nil<QVArrayDetail::ElementResult<Block, T>>::Value>>
{
    using R = QVArrayDetail::ElementResult<Block, T>;
    using Nil = QVArrayDetail::Nil<R>;
    const QList<T> objects = array;
    QList<typename Nil::Value> result;
    result.reserve(objects.size());
    bool stop = false;
    bool loggedNil = false;
    for (qsizetype i = 0; i < objects.size() && !stop; ++i) {
        const R value = std::invoke(block, objects.at(i), i, &stop);
        if (Nil::isNil(value)) {
            if (!std::exchange(loggedNil, true))
                QVArrayDetail::logNilBlockResult("QVArray::mappedArrayUsingBlock", i);
            continue;
        }
        result.append(Nil::value(value));
    }
    return QVArrayDetail::nonEmpty(std::move(result));
}

/**
 * As mappedArrayUsingBlock(), but nil results (an empty std::optional, an
 * invalid QVariant, a null pointer) are skipped silently.
 */
template <typename T, typename Block>
auto compactMappedArrayUsingBlock(const QList<T> &array, Block &&block)
    -> std::optional<QList<typename QVArrayDetail::Nil<QVArrayDetail::ElementResult<Block, T>>::Value>>
{
    using R = QVArrayDetail::ElementResult<Block, T>;
    using Nil = QVArrayDetail::Nil<R>;
    const QList<T> objects = array;
    QList<typename Nil::Value> result;
    bool stop = false;
    for (qsizetype i = 0; i < objects.size() && !stop; ++i) {
        const R value = std::invoke(block, objects.at(i), i, &stop);
        if (!Nil::isNil(value))
            result.append(Nil::value(value));
    }
    return QVArrayDetail::nonEmpty(std::move(result));
}

/**
 * As mappedArrayUsingBlock(), but a result that is itself a list is
 * flat-mapped with the same block and its elements appended, to any depth.
 *
 * The block returns either a QVariant (for a QVariantList; a result holding a
 * QVariantList is the list, an invalid QVariant is nil and left out with one
 * log line) or a std::variant<U, QList<T>> for typed lists. Each nested list
 * is a flat-map of its own, with its own indexes and stop flag: a stop set
 * inside a nested list ends that list only.
 */
template <typename T, typename Block>
auto flatMappedArrayUsingBlock(const QList<T> &array, Block &&block)
    -> std::optional<QList<typename QVArrayDetail::FlatMap<QVArrayDetail::ElementResult<Block, T>, T>::Value>>
{
    using R = QVArrayDetail::ElementResult<Block, T>;
    using Flat = QVArrayDetail::FlatMap<R, T>;
    static_assert(Flat::supported,
                  "flatMappedArrayUsingBlock: the block must return a QVariant (for a QVariantList) "
                  "or a std::variant<U, QList<T>>");
    const QList<T> objects = array;
    QList<typename Flat::Value> result;
    bool stop = false;
    bool loggedNil = false;
    for (qsizetype i = 0; i < objects.size() && !stop; ++i) {
        R value = std::invoke(block, objects.at(i), i, &stop);
        if constexpr (std::is_same_v<R, QVariant>) {
            if (!value.isValid()) {
                if (!std::exchange(loggedNil, true))
                    QVArrayDetail::logNilBlockResult("QVArray::flatMappedArrayUsingBlock", i);
            } else if (value.metaType() == QMetaType::fromType<QVariantList>()) {
                if (auto nested = flatMappedArrayUsingBlock(value.toList(), block))
                    result.append(std::move(*nested));
            } else {
                result.append(std::move(value));
            }
        } else {
            if (value.index() == 1) {
                if (auto nested = flatMappedArrayUsingBlock(std::get<1>(value), block))
                    result.append(std::move(*nested));
            } else {
                result.append(std::move(std::get<0>(value)));
            }
        }
    }
    return QVArrayDetail::nonEmpty(std::move(result));
}

/** Flat-map with the identity block: nested QVariantLists, at any depth, become one list; nil when empty. */
QVKIT_EXPORT std::optional<QVariantList> joinedArray(const QVariantList &array);
/**
 * The inner lists one after the other; nil when that is empty. For inner
 * QVariantLists the result is then joined as a QVariantList, to any depth.
 */
template <typename T>
std::optional<QList<T>> joinedArray(const QList<QList<T>> &arrays)
{
    QList<T> result;
    for (const QList<T> &inner : arrays)
        result.append(inner);
    if constexpr (std::is_same_v<T, QVariant>)
        return joinedArray(result);
    else
        return QVArrayDetail::nonEmpty(std::move(result));
}
/** joinedArray() in place; a result of nil leaves the array empty. */
QVKIT_EXPORT void joined(QVariantList &array);

/**
 * The objects for which block(object, index, stop) answers true, in index
 * order; nil when none. With QVEnumerationReverse the block sees the objects
 * from the last to the first (which matters once it sets stop).
 */
template <typename T, typename Block>
std::optional<QList<T>> filteredArrayWithOptions(const QList<T> &array, QVEnumerationOptions options, Block &&block)
{
    const QList<T> objects = array;
    std::vector<bool> passed(size_t(objects.size()), false);
    QVArrayDetail::enumerateIndexes(objects.size(), options, [&](qsizetype i, bool *stop) {
        if (std::invoke(block, objects.at(i), i, stop))
            passed[size_t(i)] = true;
    });
    QList<T> result;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        if (passed[size_t(i)])
            result.append(objects.at(i));
    }
    return QVArrayDetail::nonEmpty(std::move(result));
}

/** accumulator = block(accumulator, object) for each object in order, starting from initial. */
template <typename T, typename Accumulator, typename Block>
Accumulator reduce(const QList<T> &array, Accumulator initial, Block &&block)
{
    const QList<T> objects = array;
    for (const T &object : objects)
        initial = std::invoke(block, std::move(initial), object);
    return initial;
}

/**
 * Pairwise filter. For each object i not yet discarded, block(object i,
 * object j, i, j, stop) is asked for every later j not yet discarded and
 * answers a code: 2 or 3 discards j, 1 or 3 drops i (the scan moves on to
 * i + 1), 0 keeps both. When the block sets stop, object i is kept and the
 * filter ends there, whatever the code. An i that survives its scan is kept.
 * Arrays of fewer than 2 objects are answered as they are (an empty array
 * too); otherwise nil when nothing is kept.
 */
template <typename T, typename Block>
std::optional<QList<T>> combinationFilteredArrayUsingBlock(const QList<T> &array, Block &&block)
{
    const QList<T> objects = array;
    const qsizetype count = objects.size();
    if (count < 2)
        return objects;
    std::vector<bool> discarded(size_t(count), false);
    QList<T> output;
    bool stop = false;
    for (qsizetype i = 0; i < count && !stop; ++i) {
        if (discarded[size_t(i)])
            continue;
        bool dropped = false;
        for (qsizetype j = i + 1; j < count; ++j) {
            if (discarded[size_t(j)])
                continue;
            const quint64 code = quint64(std::invoke(block, objects.at(i), objects.at(j), i, j, &stop));
            if (code == 2 || code == 3)
                discarded[size_t(j)] = true;
            if (stop)
                break;
            if (code == 1 || code == 3) {
                dropped = true;
                break;
            }
        }
        if (stop || !dropped)
            output.append(objects.at(i));
    }
    return QVArrayDetail::nonEmpty(std::move(output));
}

/** mappedArrayUsingBlock() in place; nil leaves the array empty. Results must convert to T. */
template <typename T, typename Block>
void mapUsingBlock(QList<T> &array, Block &&block)
{
    QVArrayDetail::assign(array, mappedArrayUsingBlock(array, std::forward<Block>(block)));
}
/** compactMappedArrayUsingBlock() in place. */
template <typename T, typename Block>
void compactMapUsingBlock(QList<T> &array, Block &&block)
{
    QVArrayDetail::assign(array, compactMappedArrayUsingBlock(array, std::forward<Block>(block)));
}
/** flatMappedArrayUsingBlock() in place. */
template <typename T, typename Block>
void flatMapUsingBlock(QList<T> &array, Block &&block)
{
    QVArrayDetail::assign(array, flatMappedArrayUsingBlock(array, std::forward<Block>(block)));
}
/** filteredArrayWithOptions() in place. */
template <typename T, typename Block>
void filterWithOptions(QList<T> &array, QVEnumerationOptions options, Block &&block)
{
    QVArrayDetail::assign(array, filteredArrayWithOptions(array, options, std::forward<Block>(block)));
}
/** combinationFilteredArrayUsingBlock() in place. */
template <typename T, typename Block>
void combinationFilterUsingBlock(QList<T> &array, Block &&block)
{
    QVArrayDetail::assign(array, combinationFilteredArrayUsingBlock(array, std::forward<Block>(block)));
}

// ---- Description ------------------------------------------------------------------------------

/**
 * "(a, b, c)" on one line: each element's description (QVDescription for a
 * QVariant, the text of a string, a number in decimal, a description()
 * member), and "<type name> <address>" for an element without one.
 */
template <typename T>
QString singleLineDescription(const QList<T> &array)
{
    QStringList parts;
    parts.reserve(array.size());
    for (const T &element : array)
        parts.append(QVArrayDetail::describe(element));
    return QLatin1Char('(') + parts.join(QLatin1StringView(", ")) + QLatin1Char(')');
}

// ---- Indexes and ranges -----------------------------------------------------------------------

/** {0, count}. */
template <typename T>
QVRange fullRange(const QList<T> &array)
{
    return QVRange{0, quint64(array.size())};
}
/** Every index of the array; empty for an empty array. */
template <typename T>
QVIndexSet fullIndexSet(const QList<T> &array)
{
    return QVIndexSet(fullRange(array));
}
/** 0, also for an empty array. */
template <typename T>
quint64 firstIndex(const QList<T> &)
{
    return 0;
}
/** count - 1, or 0 for an empty array. */
template <typename T>
quint64 lastIndex(const QList<T> &array)
{
    return array.isEmpty() ? 0 : quint64(array.size() - 1);
}
/** The array's indexes that are not in indexes (indexes beyond the end play no part). */
template <typename T>
QVIndexSet indexesByInvertingIndexes(const QList<T> &array, const QVIndexSet &indexes)
{
    QVIndexSet inverted = fullIndexSet(array);
    inverted.removeIndexes(indexes);
    return inverted;
}
/** {0, min(count, size)}. */
template <typename T>
QVRange rangeForFirstObjects(const QList<T> &array, quint64 count)
{
    return QVRange{0, std::min(count, quint64(array.size()))};
}
/** The last min(count, size) positions. */
template <typename T>
QVRange rangeForLastObjects(const QList<T> &array, quint64 count)
{
    const quint64 size = quint64(array.size());
    const quint64 length = std::min(count, size);
    return QVRange{size - length, length};
}
/** The first count objects (all when there are fewer); nil when that is none. */
template <typename T>
std::optional<QList<T>> subarrayWithFirstObjects(const QList<T> &array, quint64 count)
{
    const QVRange range = rangeForFirstObjects(array, count);
    return QVArrayDetail::nonEmpty(array.sliced(qsizetype(range.location), qsizetype(range.length)));
}
/** The last count objects (all when there are fewer); nil when that is none. */
template <typename T>
std::optional<QList<T>> subarrayWithLastObjects(const QList<T> &array, quint64 count)
{
    const QVRange range = rangeForLastObjects(array, count);
    return QVArrayDetail::nonEmpty(array.sliced(qsizetype(range.location), qsizetype(range.length)));
}

// ---- Searching --------------------------------------------------------------------------------

/** The first object (the last with QVEnumerationReverse) for which block(object, index, stop) is true. */
template <typename T, typename Block>
std::optional<T> objectWithOptionsPassingTest(const QList<T> &array, QVEnumerationOptions options, Block &&block)
{
    const QList<T> objects = array;
    std::optional<T> found;
    QVArrayDetail::enumerateIndexes(objects.size(), options, [&](qsizetype i, bool *stop) {
        if (std::invoke(block, objects.at(i), i, stop)) {
            found = objects.at(i);
            *stop = true;
        }
    });
    return found;
}
template <typename T, typename Block>
std::optional<T> objectPassingTest(const QList<T> &array, Block &&block)
{
    return objectWithOptionsPassingTest(array, 0, std::forward<Block>(block));
}
template <typename T, typename Block>
bool containsObjectWithOptionsPassingTest(const QList<T> &array, QVEnumerationOptions options, Block &&block)
{
    return objectWithOptionsPassingTest(array, options, std::forward<Block>(block)).has_value();
}
template <typename T, typename Block>
bool containsObjectPassingTest(const QList<T> &array, Block &&block)
{
    return containsObjectWithOptionsPassingTest(array, 0, std::forward<Block>(block));
}
/**
 * True when some object at the given indexes passes block(object, index,
 * stop). Indexes beyond the end are left out with one log line.
 */
template <typename T, typename Block>
bool containsObjectAtIndexes(const QList<T> &array, const QVIndexSet &indexes, QVEnumerationOptions options,
                             Block &&block)
{
    const QList<T> objects = array;
    const QList<quint64> positions =
        QVArrayDetail::indexesWithinCount("QVArray::containsObjectAtIndexes", indexes, quint64(objects.size()))
            .toList();
    bool found = false;
    QVArrayDetail::enumerateIndexes(positions.size(), options, [&](qsizetype k, bool *stop) {
        const qsizetype i = qsizetype(positions.at(k));
        if (std::invoke(block, objects.at(i), i, stop)) {
            found = true;
            *stop = true;
        }
    });
    return found;
}
/**
 * True when every object of other is in the array (its repeats are not
 * counted), so an empty other is always contained.
 */
template <typename T>
bool containsArray(const QList<T> &array, const QList<T> &other)
{
    if constexpr (requires(const T &value) { qHash(value, size_t(0)); }) {
        if (other.size() > 8) {
            const QSet<T> members(array.cbegin(), array.cend());
            return std::all_of(other.cbegin(), other.cend(), [&](const T &object) { return members.contains(object); });
        }
    }
    return std::all_of(other.cbegin(), other.cend(), [&](const T &object) { return array.contains(object); });
}

// ---- Building and editing ---------------------------------------------------------------------

/** count copies of object (an empty array for 0; a count no array can hold logs and gives an empty one). */
template <typename T>
QList<T> arrayWithRepeatedObject(const T &object, quint64 count)
{
    // What QList's storage can address at all; a smaller count may still exhaust memory.
    constexpr quint64 largest = quint64(std::numeric_limits<qsizetype>::max() / 2) / sizeof(T);
    if (count > largest) {
        QVArrayDetail::logCountTooLarge("QVArray::arrayWithRepeatedObject", count);
        return {};
    }
    return QList<T>(qsizetype(count), object);
}

/** Appends object unless it is nil (an empty std::optional, an invalid QVariant, a null pointer). */
template <typename T, typename U>
    requires std::is_convertible_v<typename QVArrayDetail::Nil<U>::Value, T>
void safeAddObject(QList<T> &array, const U &object)
{
    if (!QVArrayDetail::Nil<U>::isNil(object))
        array.append(T(QVArrayDetail::Nil<U>::value(object)));
}
/** Appends the objects of other unless other is nil. */
template <typename T>
void safeAddObjectsFromArray(QList<T> &array, const std::optional<QList<std::type_identity_t<T>>> &other)
{
    if (other)
        array.append(*other);
}
/** Replaces the contents with other unless other is nil. */
template <typename T>
void safeSetArray(QList<T> &array, const std::optional<QList<std::type_identity_t<T>>> &other)
{
    if (other)
        array = *other;
}

/**
 * Inserts the objects at index as a block, in their own order (as inserting
 * each at index from the last to the first would). An index beyond the end
 * logs one line and appends.
 */
template <typename T>
void insertObjects(QList<T> &array, const QList<T> &objects, quint64 index)
{
    const quint64 count = quint64(array.size());
    if (index > count) {
        QVArrayDetail::logIndexBeyondEnd("QVArray::insertObjects", index, count, "the objects are appended");
        index = count;
    }
    // objects may be the array itself: copy before editing.
    const QList<T> inserted = objects;
    if (inserted.isEmpty())
        return;
    QList<T> result;
    result.reserve(array.size() + inserted.size());
    result.append(array.first(qsizetype(index)));
    result.append(inserted);
    result.append(array.sliced(qsizetype(index)));
    array = std::move(result);
}

/** Keeps only the objects at the given indexes, in order; indexes beyond the end play no part. */
template <typename T>
void keepObjectsAtIndexes(QList<T> &array, const QVIndexSet &indexes)
{
    QList<T> kept;
    for (const QVRange &range : indexes.ranges()) {
        if (range.location >= quint64(array.size()))
            break;
        const quint64 end = std::min(QVMaxRange(range), quint64(array.size()));
        for (quint64 i = range.location; i < end; ++i)
            kept.append(array.at(qsizetype(i)));
    }
    array = std::move(kept);
}

/**
 * Moves the objects at indexes, keeping their order, so that afterwards the
 * first of them sits at toIndex and the rest follow it. toIndex counts
 * positions in the final array: it is at most count − (number moved); a
 * larger one logs one line and moves them to the end. Indexes beyond the end
 * are left out with one log line.
 */
template <typename T>
void moveObjectsAtIndexes(QList<T> &array, const QVIndexSet &indexes, quint64 toIndex)
{
    const QVIndexSet moving =
        QVArrayDetail::indexesWithinCount("QVArray::moveObjectsAtIndexes", indexes, quint64(array.size()));
    if (moving.isEmpty())
        return;
    QList<T> moved;
    QList<T> rest;
    moved.reserve(qsizetype(moving.count()));
    rest.reserve(array.size() - qsizetype(moving.count()));
    for (qsizetype i = 0; i < array.size(); ++i)
        (moving.containsIndex(quint64(i)) ? moved : rest).append(array.at(i));
    if (toIndex > quint64(rest.size())) {
        QVArrayDetail::logIndexBeyondEnd("QVArray::moveObjectsAtIndexes", toIndex, quint64(rest.size()),
                                         "the objects are moved to the end");
        toIndex = quint64(rest.size());
    }
    QList<T> result;
    result.reserve(array.size());
    result.append(rest.first(qsizetype(toIndex)));
    result.append(moved);
    result.append(rest.sliced(qsizetype(toIndex)));
    array = std::move(result);
}

/** Removes the first object; nothing for an empty array. */
template <typename T>
void removeFirstObject(QList<T> &array)
{
    if (!array.isEmpty())
        array.removeFirst();
}
/** Removes the first count objects (all when there are fewer). */
template <typename T>
void removeFirstObjects(QList<T> &array, quint64 count)
{
    array.remove(0, qsizetype(rangeForFirstObjects(array, count).length));
}
/** Removes the last count objects (all when there are fewer). */
template <typename T>
void removeLastObjects(QList<T> &array, quint64 count)
{
    const QVRange range = rangeForLastObjects(array, count);
    array.remove(qsizetype(range.location), qsizetype(range.length));
}
/** Reverses the order in place. */
template <typename T>
void reverse(QList<T> &array)
{
    std::reverse(array.begin(), array.end());
}
/**
 * Shuffles in place (Fisher–Yates): for i from count − 1 down to 1, the
 * element at i changes place with the one at a uniform index in 0..i
 * (QVRandom::unsignedIntegerUpTo(i)). Arrays of 0 or 1 element are left alone.
 */
template <typename T>
void randomize(QList<T> &array)
{
    for (qsizetype i = array.size() - 1; i >= 1; --i) {
        const qsizetype j = qsizetype(QVRandom::unsignedIntegerUpTo(quint64(i)));
        if (j != i)
            array.swapItemsAt(j, i);
    }
}

} // namespace QVArray
