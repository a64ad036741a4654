#pragma once

#include <QVKit/Collections/QVNonEmpty.h>
#include <QVKit/Platform/QVError.h>
#include <QVKit/Platform/QVIndexSet.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QMetaType>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QSharedPointer>
#include <QtCore/QVariant>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

/** What an object must be for the collection tools to select it (a bit mask). */
enum QVCollectionMatch : quint64 {
    QVCollectionMatchEmpty = 1,
    QVCollectionMatchNonEmpty = 2,
    QVCollectionMatchNull = 4,
    QVCollectionMatchNonNull = 8,
    QVCollectionMatchUnique = 16,
    QVCollectionMatchDuplicate = 32,
    // 0x40 to 0x200 are unused: the values are stored and never renumbered.
    QVCollectionMatchKeepsFirstDuplicate = 1024,
    QVCollectionMatchKeepsLastDuplicate = 2048,
};

/** What the engine does with the selected objects. Other values match nothing. */
enum QVCollectionAction : quint64 {
    QVCollectionActionReturn = 1,
    QVCollectionActionRemove = 2,
};

/** What the engine answers. */
enum QVCollectionReturnType : quint64 {
    QVCollectionReturnTypeNone = 0,
    QVCollectionReturnTypeIdentifiers = 1,
    QVCollectionReturnTypeObjectCollection = 2,
};

/** Reading options of collectionForJSONString(). */
enum QVJSONReadingOption : quint64 {
    /** Accepted for compatibility: every parsed container is mutable here. */
    QVJSONReadingMutableContainers = 1,
    /** Accepted for compatibility: every parsed string is mutable here. */
    QVJSONReadingMutableLeaves = 2,
    /** A top-level value other than an array or object is accepted. */
    QVJSONReadingFragmentsAllowed = 4,
};

/** Collections with at least this many elements are tested concurrently (without Unique/Duplicate). */
inline constexpr qsizetype QVCollectionConcurrentThreshold = 100001;

/**
 * Which element is "the null object" for the collection tools: the null
 * marker for a QVariant, a null pointer or smart pointer, an empty
 * std::optional. Other types have none. Specialise it for an own handle type.
 */
template <typename T>
struct QVCollectionNullObject
{
    static bool isNull(const T &) { return false; }
};
template <typename T>
struct QVCollectionNullObject<T *>
{
    static bool isNull(const T *value) { return value == nullptr; }
};
template <typename T>
struct QVCollectionNullObject<std::shared_ptr<T>>
{
    static bool isNull(const std::shared_ptr<T> &value) { return !value; }
};
template <typename T>
struct QVCollectionNullObject<std::unique_ptr<T>>
{
    static bool isNull(const std::unique_ptr<T> &value) { return !value; }
};
template <typename T>
struct QVCollectionNullObject<QSharedPointer<T>>
{
    static bool isNull(const QSharedPointer<T> &value) { return value.isNull(); }
};
template <typename T>
struct QVCollectionNullObject<QPointer<T>>
{
    static bool isNull(const QPointer<T> &value) { return value.isNull(); }
};
template <typename T>
struct QVCollectionNullObject<std::optional<T>>
{
    static bool isNull(const std::optional<T> &value) { return !value.has_value(); }
};
template <>
struct QVCollectionNullObject<QVariant>
{
    static bool isNull(const QVariant &value) { return value.metaType() == QMetaType::fromType<std::nullptr_t>(); }
};

namespace QVCollectionDetail {

enum class Kind { Invalid, Array, Dictionary, Set };

template <typename C>
struct Traits
{
    static constexpr Kind kind = Kind::Invalid;
};
template <typename T>
struct Traits<QList<T>>
{
    static constexpr Kind kind = Kind::Array;
    using Value = T;
    using Identifiers = QVIndexSet;
};
template <typename K, typename V>
struct Traits<QHash<K, V>>
{
    static constexpr Kind kind = Kind::Dictionary;
    using Value = V;
    using Identifiers = QList<K>;
};
template <typename K, typename V>
struct Traits<QMap<K, V>>
{
    static constexpr Kind kind = Kind::Dictionary;
    using Value = V;
    using Identifiers = QList<K>;
};
template <typename T>
struct Traits<QSet<T>>
{
    static constexpr Kind kind = Kind::Set;
    using Value = T;
    using Identifiers = QSet<T>;
};

} // namespace QVCollectionDetail

/** QList<T>, QHash<K, V>, QMap<K, V> or QSet<T> (QVariantList, QVariantMap, … included). */
template <typename C>
concept QVTypedCollection = QVCollectionDetail::Traits<C>::kind != QVCollectionDetail::Kind::Invalid;

/** The identifiers of a typed collection: QVIndexSet for a list, QList<K> of keys, the set itself for a set. */
template <QVTypedCollection C>
using QVCollectionIdentifiers = typename QVCollectionDetail::Traits<C>::Identifiers;

/**
 * What enumerateCollection() answers for a typed collection: the identifiers
 * (for QVCollectionReturnTypeIdentifiers) or the object collection (for
 * QVCollectionReturnTypeObjectCollection), each std::nullopt for nil.
 */
template <QVTypedCollection C>
struct QVCollectionResult
{
    std::optional<QVCollectionIdentifiers<C>> identifiers;
    std::optional<C> objects;
};

/**
 * Filters, de-duplicates and sanitises arrays, dictionaries and sets by a
 * mask of QVCollectionMatch bits, returning what matched (as identifiers or
 * as a collection of the matching objects), removing it, or both.
 *
 * Two faces share one algorithm:
 * - Heterogeneous: a collection is a QVariant holding a QVariantList (array),
 *   a QVariantMap or QVariantHash (dictionary) or a QVVariantSet (set).
 *   Mutability is decided by how it is passed: `QVariant *` is mutable,
 *   `const QVariant &` immutable. Results are QVariants (a QVIndexSet, a
 *   QVariantList of keys, a QVVariantSet, or a collection of the enumerated
 *   kind); nil is an invalid QVariant.
 * - Typed: QList, QHash, QMap and QSet passed directly; a non-const reference
 *   is mutable, a const one immutable; results are std::optional.
 *
 * Elements must support operator== and qHash (QVariant's hash is declared in
 * QVNonEmpty.h). Objects are "the very same" when they are at the same address.
 */
class QVKIT_EXPORT QVCollectionTools
{
public:
    QVCollectionTools() = delete;

    /** Masks used by the conveniences. */
    static constexpr quint64 RemoveDuplicateObjectsMatch = 1056; // Duplicate + KeepsFirstDuplicate
    static constexpr quint64 RemoveUnsanitizedObjectsMatch = 1061; // Empty + Null + Duplicate + KeepsFirst
    static constexpr quint64 AddUniqueObjectsMatch = 1040; // Unique + KeepsFirstDuplicate
    static constexpr quint64 AddSanitizedObjectsMatch = 1050; // NonEmpty + NonNull + Unique + KeepsFirst

    // ---- Validators and getters ------------------------------------------------------------

    /**
     * True for a QVariant holding an array, dictionary or set. An invalid
     * QVariant answers false silently; anything else logs
     * "CollectionType invalid. Collection: %@.".
     */
    static bool isValidCollectionType(const QVariant &collection);
    /** As above; a null pointer is "no collection" (false, no message). */
    static bool isValidCollectionType(const QVariant *collection);
    /** Typed collections are always valid. */
    template <QVTypedCollection C>
    static constexpr bool isValidCollectionType(const C &)
    {
        return true;
    }

    /**
     * False, with one log line, for a mask of 0 or one holding both bits of
     * Empty/NonEmpty, Null/NonNull, Unique/Duplicate or the two Keeps bits
     * (checked in that order). Unused bits alone, or Keeps bits alone, are valid.
     */
    static bool isValidCollectionMatch(quint64 mask);

    /** Fills each given pointer. A QVariant passed by const reference is immutable. */
    static void getCollectionType(const QVariant &collection, bool *isArray, bool *isDictionary, bool *isSet,
                                  bool *isMutable);
    /** Fills each given pointer; a valid collection passed by pointer is mutable. */
    static void getCollectionType(QVariant *collection, bool *isArray, bool *isDictionary, bool *isSet,
                                  bool *isMutable);
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static void getCollectionType(Coll &&, bool *isArray, bool *isDictionary, bool *isSet, bool *isMutable)
    {
        using namespace QVCollectionDetail;
        constexpr Kind kind = Traits<std::remove_cvref_t<Coll>>::kind;
        if (isArray)
            *isArray = kind == Kind::Array;
        if (isDictionary)
            *isDictionary = kind == Kind::Dictionary;
        if (isSet)
            *isSet = kind == Kind::Set;
        if (isMutable)
            *isMutable = !std::is_const_v<std::remove_reference_t<Coll>>;
    }

    /**
     * True when both are arrays, both dictionaries, both sets, or both
     * invalid. Mutability is not compared. Never logs.
     */
    static bool isCollectionTypeSameAsCollectionType(const QVariant &a, const QVariant &b);
    template <QVTypedCollection A, QVTypedCollection B>
    static constexpr bool isCollectionTypeSameAsCollectionType(const A &, const B &)
    {
        return QVCollectionDetail::Traits<A>::kind == QVCollectionDetail::Traits<B>::kind;
    }

    /**
     * False, with one log line, for Return with return type None ("Return
     * action cannot use return type of None.") and for Remove on an
     * immutable collection ("Delete action requires mutable collection").
     * Any other action passes.
     */
    static bool isValidAction(quint64 action, quint64 returnType, bool collectionIsMutable);
    static bool isValidAction(quint64 action, quint64 returnType, const QVariant &collection);
    static bool isValidAction(quint64 action, quint64 returnType, QVariant *collection);
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static bool isValidAction(quint64 action, quint64 returnType, Coll &&)
    {
        return isValidAction(action, returnType, !std::is_const_v<std::remove_reference_t<Coll>>);
    }

    /** Sets each given pointer to whether its bit is in the mask. */
    static void getCollectionMatch(quint64 mask, bool *matchEmptyObjects, bool *matchNonEmptyObjects,
                                   bool *matchNullObjects, bool *matchNonNullObjects, bool *matchUniqueObjects,
                                   bool *matchDuplicateObjects, bool *keepsFirstDuplicate,
                                   bool *keepsLastDuplicate);
    /** Sets actionReturn for 1 and actionRemove for 2. */
    static void getCollectionAction(quint64 action, bool *actionReturn, bool *actionRemove);
    /** Sets each pointer for return types 0, 1 and 2. */
    static void getReturnType(quint64 returnType, bool *returnTypeNone, bool *returnTypeIdentifiers,
                              bool *returnTypeObjectCollection);

    // ---- The engine ---------------------------------------------------------------------------

    /**
     * Tests every object of the collection against the mask, then answers
     * and/or removes the matches. The comparison collection (an invalid
     * QVariant for none) only adds to the occurrence counts; when it is the
     * collection itself it is ignored, when it is of another kind the answer
     * is nil without a message. Return combines the criteria with AND, Remove
     * with OR. Identifiers and object collections that end up empty are nil;
     * an object collection is built before removal, so Remove with
     * ObjectCollection answers the removed objects.
     */
    static QVariant enumerateCollection(const QVariant &collection, quint64 mask, const QVariant &comparison,
                                        quint64 action, quint64 returnType);
    /** The mutable form: Remove edits the collection in place. */
    static QVariant enumerateCollection(QVariant *collection, quint64 mask, const QVariant &comparison,
                                        quint64 action, quint64 returnType);

    /**
     * The typed engine. A comparison of another kind, or whose tested values
     * do not convert to the collection's, answers an empty result.
     */
    template <typename Coll, typename Comp>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static QVCollectionResult<std::remove_cvref_t<Coll>> enumerateCollection(Coll &&collection, quint64 mask,
                                                                            const Comp *comparison,
                                                                            quint64 action, quint64 returnType);
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static QVCollectionResult<std::remove_cvref_t<Coll>> enumerateCollection(Coll &&collection, quint64 mask,
                                                                            std::nullptr_t, quint64 action,
                                                                            quint64 returnType)
    {
        return enumerateCollection(std::forward<Coll>(collection), mask,
                                   static_cast<const std::remove_cvref_t<Coll> *>(nullptr), action, returnType);
    }

    // ---- Wrappers: heterogeneous face ---------------------------------------------------------

    /** Return/Identifiers on the collection. */
    static QVariant identifiersWithObjectsMatching(const QVariant &collection, quint64 mask);
    /** Return/ObjectCollection on the collection. */
    static QVariant objectCollectionWithObjectsMatching(const QVariant &collection, quint64 mask);
    /** Enumerates inCollection with collection as the comparison; Return/Identifiers. */
    static QVariant identifiersWithObjectsMatching(const QVariant &collection, quint64 mask,
                                                   const QVariant &inCollection);
    /** Enumerates inCollection with collection as the comparison; Return/ObjectCollection. */
    static QVariant objectCollectionWithObjectsMatching(const QVariant &collection, quint64 mask,
                                                        const QVariant &inCollection);
    /** Remove/None. The const form only logs that removal needs a mutable collection. */
    static void removeObjectsMatching(QVariant *collection, quint64 mask);
    static void removeObjectsMatching(const QVariant &collection, quint64 mask);
    /** Removes later copies of repeated objects, keeping the first (mask 1056). */
    static void removeDuplicateObjects(QVariant *collection);
    static void removeDuplicateObjects(const QVariant &collection);
    /** Removes empty objects, null objects and later repeats in one pass (mask 1061). */
    static void removeUnsanitizedObjects(QVariant *collection);
    static void removeUnsanitizedObjects(const QVariant &collection);
    /**
     * Enumerates source with target as the comparison (Return/ObjectCollection)
     * and adds the result to target: list to list appended, dictionary entries
     * inserted, sets united. Any other pairing, or an immutable target, logs
     * "Unhandled collection type"; a nil result adds nothing.
     */
    static void addObjectsFromCollection(QVariant *target, const QVariant &source, quint64 mask);
    static void addObjectsFromCollection(const QVariant &target, const QVariant &source, quint64 mask);
    /** Adds the source's objects not yet in target, each once, first copy first (mask 1040). */
    static void addUniqueObjectsFromCollection(QVariant *target, const QVariant &source);
    /** As addUniqueObjectsFromCollection(), skipping empty and null objects (mask 1050). */
    static void addSanitizedObjectsFromCollection(QVariant *target, const QVariant &source);

    // ---- Wrappers: typed face -------------------------------------------------------------------

    template <QVTypedCollection C>
    static std::optional<QVCollectionIdentifiers<C>> identifiersWithObjectsMatching(const C &collection,
                                                                                   quint64 mask)
    {
        return enumerateCollection(collection, mask, nullptr, QVCollectionActionReturn,
                                   QVCollectionReturnTypeIdentifiers)
            .identifiers;
    }
    template <QVTypedCollection C>
    static std::optional<C> objectCollectionWithObjectsMatching(const C &collection, quint64 mask)
    {
        return enumerateCollection(collection, mask, nullptr, QVCollectionActionReturn,
                                   QVCollectionReturnTypeObjectCollection)
            .objects;
    }
    /** inCollection is enumerated, collection is the comparison; of another kind → nullopt. */
    template <QVTypedCollection C, QVTypedCollection O>
    static std::optional<QVCollectionIdentifiers<O>> identifiersWithObjectsMatching(const C &collection,
                                                                                   quint64 mask,
                                                                                   const O &inCollection)
    {
        return enumerateCollection(inCollection, mask, &collection, QVCollectionActionReturn,
                                   QVCollectionReturnTypeIdentifiers)
            .identifiers;
    }
    template <QVTypedCollection C, QVTypedCollection O>
    static std::optional<O> objectCollectionWithObjectsMatching(const C &collection, quint64 mask,
                                                                const O &inCollection)
    {
        return enumerateCollection(inCollection, mask, &collection, QVCollectionActionReturn,
                                   QVCollectionReturnTypeObjectCollection)
            .objects;
    }
    /** Remove/None; a const collection only logs. */
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static void removeObjectsMatching(Coll &&collection, quint64 mask)
    {
        enumerateCollection(std::forward<Coll>(collection), mask, nullptr, QVCollectionActionRemove,
                            QVCollectionReturnTypeNone);
    }
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static void removeDuplicateObjects(Coll &&collection)
    {
        removeObjectsMatching(std::forward<Coll>(collection), RemoveDuplicateObjectsMatch);
    }
    template <typename Coll>
        requires QVTypedCollection<std::remove_cvref_t<Coll>>
    static void removeUnsanitizedObjects(Coll &&collection)
    {
        removeObjectsMatching(std::forward<Coll>(collection), RemoveUnsanitizedObjectsMatch);
    }
    /** As the heterogeneous form; a const target logs "Unhandled collection type" when there is something to add. */
    template <typename Target, QVTypedCollection Source>
        requires QVTypedCollection<std::remove_cvref_t<Target>>
    static void addObjectsFromCollection(Target &&target, const Source &source, quint64 mask);
    template <typename Target, QVTypedCollection Source>
        requires QVTypedCollection<std::remove_cvref_t<Target>>
    static void addUniqueObjectsFromCollection(Target &&target, const Source &source)
    {
        addObjectsFromCollection(std::forward<Target>(target), source, AddUniqueObjectsMatch);
    }
    template <typename Target, QVTypedCollection Source>
        requires QVTypedCollection<std::remove_cvref_t<Target>>
    static void addSanitizedObjectsFromCollection(Target &&target, const Source &source)
    {
        addObjectsFromCollection(std::forward<Target>(target), source, AddSanitizedObjectsMatch);
    }

    // ---- JSON ---------------------------------------------------------------------------------

    /**
     * Parses the string (as UTF-8) as JSON and answers the value when it has
     * the expected type (QVariantList for an array, QVariantMap for an
     * object), otherwise an invalid QVariant after one log line naming the
     * operation: "… responseData is nil" for a null string, "… JSONError: …"
     * when parsing failed and error was given (error is then set), "… object
     * is not expectedClass …" otherwise.
     */
    static QVariant collectionForJSONString(const QString &string, quint64 options, QVError *error,
                                            QMetaType expectedType);
    /** A JSON array, or nullopt. */
    static std::optional<QVariantList> arrayForJSONString(const QString &string, QVError *error);
    static std::optional<QVariantList> arrayForJSONString(const QString &string, quint64 options, QVError *error);
    /** A JSON object, or nullopt. */
    static std::optional<QVariantMap> dictionaryForJSONString(const QString &string, QVError *error);
    static std::optional<QVariantMap> dictionaryForJSONString(const QString &string, quint64 options,
                                                              QVError *error);

private:
    static QVariant enumerateVariant(const QVariant *collection, QVariant *mutableCollection, quint64 mask,
                                     const QVariant &comparison, quint64 action, quint64 returnType);
    static QVariant jsonCollection(const char *operation, const QString &string, quint64 options,
                                   QVError *error, QMetaType expectedType);
};

// ------------------------------------------------------------------------------------------------
// The algorithm. Everything below is shared by both faces; the heterogeneous
// face instantiates it for QVariantList, QVariantMap, QVariantHash and QVVariantSet.

namespace QVCollectionDetail {

/** The mask and action as the match test reads them, captured once per call. */
struct Settings
{
    bool empty = false, nonEmpty = false, null = false, nonNull = false;
    bool unique = false, duplicate = false, keepsFirst = false, keepsLast = false;
    bool isReturn = false, isRemove = false;
    bool testsEmptiness = false, testsNull = false, testsUniqueness = false, decrements = false;

    QVKIT_EXPORT static Settings capture(quint64 mask, quint64 action);
    /** Walk backwards? Depends on the action and the Unique/Duplicate and Keeps bits. */
    bool reverse() const
    {
        return (isReturn && unique && keepsFirst) || (isRemove && unique && keepsLast)
            || (isReturn && duplicate && keepsLast) || (isRemove && duplicate && keepsFirst);
    }
};

QVKIT_EXPORT void logUnhandledAction();
QVKIT_EXPORT void logUnhandledCollectionType();
/** How many chunks a concurrent test splits into. */
QVKIT_EXPORT qsizetype concurrentChunkCount(qsizetype elementCount);
/** Runs body(chunk) for every chunk in 0..chunkCount-1 on the shared thread pool and waits. */
QVKIT_EXPORT void runConcurrently(qsizetype chunkCount, const std::function<void(qsizetype)> &body);

template <typename T>
concept Dereferenceable = std::is_pointer_v<T> || requires(const T &value) {
    *value;
    static_cast<bool>(value);
};

/** Emptiness of one object: a handle by what it points to; the null object is not empty. */
template <typename T>
bool objectIsNonEmpty(const T &object)
{
    if constexpr (std::is_same_v<T, QVariant>) {
        return QVCollections::isNonEmpty(object);
    } else if constexpr (Dereferenceable<T>) {
        if constexpr (std::is_void_v<std::remove_cv_t<std::remove_pointer_t<T>>>)
            return true;
        else
            return object ? QVCollections::isNonEmptyValue(*object) : true;
    } else {
        return QVCollections::isNonEmptyValue(object);
    }
}

/**
 * The match test of one object. count points at the object's occurrence count
 * when Unique or Duplicate is requested; a Keeps bit takes one occurrence away
 * from a repeated object after it has been read.
 */
template <typename T>
bool matches(const Settings &settings, const T &object, qsizetype *count)
{
    bool base;
    if (settings.isReturn) {
        base = true;
    } else if (settings.isRemove) {
        base = false;
    } else {
        logUnhandledAction();
        return false;
    }
    bool emptiness = base;
    if (settings.testsEmptiness) {
        const bool nonEmpty = objectIsNonEmpty(object);
        emptiness = (settings.nonEmpty && nonEmpty) || (settings.empty && !nonEmpty);
    }
    bool nullness = base;
    if (settings.testsNull) {
        const bool isNull = QVCollectionNullObject<T>::isNull(object);
        nullness = (settings.null && isNull) || (settings.nonNull && !isNull);
    }
    bool uniqueness = base;
    if (settings.testsUniqueness) {
        const qsizetype c = *count;
        if (settings.decrements && c >= 2)
            --*count;
        uniqueness = (settings.unique && c == 1) || (settings.duplicate && c != 1);
    }
    // Return selects what meets every criterion, Remove discards what fails any.
    return settings.isReturn ? (emptiness && nullness && uniqueness) : (emptiness || nullness || uniqueness);
}

/**
 * The counted multiset: each distinct object gets a slot in a dense vector of
 * counts, found through one hash lookup, so the matching walk reads and
 * decrements counts by slot without hashing again.
 */
template <typename T>
class CountedSet
{
public:
    qsizetype add(const T &object)
    {
        qsizetype &slot = m_slots[object];
        if (slot == 0) {
            m_counts.push_back(0);
            slot = qsizetype(m_counts.size());
        }
        ++m_counts[size_t(slot - 1)];
        return slot - 1;
    }
    qsizetype *count(qsizetype slot) { return &m_counts[size_t(slot)]; }

private:
    QHash<T, qsizetype> m_slots;
    std::vector<qsizetype> m_counts;
};

/** Uniform positional access to the tested objects of a collection, in its iteration order. */
template <typename C, Kind = Traits<C>::kind>
class Adapter;

template <typename T>
class Adapter<QList<T>, Kind::Array>
{
public:
    explicit Adapter(const QList<T> &list) : m_list(list) {}
    qsizetype size() const { return m_list.size(); }
    const T &value(qsizetype position) const { return m_list.at(position); }

    QVIndexSet identifiers(const std::vector<qsizetype> &positions) const
    {
        QVIndexSet set;
        for (const qsizetype position : positions)
            set.addIndex(quint64(position));
        return set;
    }
    QList<T> objects(const std::vector<qsizetype> &positions) const
    {
        QList<T> result;
        result.reserve(qsizetype(positions.size()));
        for (const qsizetype position : positions)
            result.append(m_list.at(position));
        return result;
    }
    static void remove(QList<T> &list, const std::vector<quint8> &marked)
    {
        // One compaction pass instead of an erase per index.
        const auto first = std::find(marked.cbegin(), marked.cend(), quint8(1));
        if (first == marked.cend())
            return;
        T *data = list.data();
        const qsizetype count = list.size();
        qsizetype write = qsizetype(first - marked.cbegin());
        for (qsizetype read = write + 1; read < count; ++read) {
            if (!marked[size_t(read)])
                data[write++] = std::move(data[read]);
        }
        list.resize(write);
    }

private:
    const QList<T> &m_list;
};

template <typename Map>
class Adapter<Map, Kind::Dictionary>
{
public:
    using Value = typename Traits<Map>::Value;
    explicit Adapter(const Map &map)
    {
        m_entries.reserve(size_t(map.size()));
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            m_entries.push_back(it);
    }
    qsizetype size() const { return qsizetype(m_entries.size()); }
    const Value &value(qsizetype position) const { return m_entries[size_t(position)].value(); }

    QVCollectionIdentifiers<Map> identifiers(const std::vector<qsizetype> &positions) const
    {
        QVCollectionIdentifiers<Map> keys;
        keys.reserve(qsizetype(positions.size()));
        for (const qsizetype position : positions)
            keys.append(m_entries[size_t(position)].key());
        return keys;
    }
    Map objects(const std::vector<qsizetype> &positions) const
    {
        Map result;
        for (const qsizetype position : positions)
            result.insert(m_entries[size_t(position)].key(), m_entries[size_t(position)].value());
        return result;
    }
    static void remove(Map &map, const QVCollectionIdentifiers<Map> &keys)
    {
        for (const auto &key : keys)
            map.remove(key);
    }

private:
    std::vector<typename Map::const_iterator> m_entries;
};

template <typename T>
class Adapter<QSet<T>, Kind::Set>
{
public:
    explicit Adapter(const QSet<T> &set)
    {
        m_members.reserve(size_t(set.size()));
        for (auto it = set.cbegin(); it != set.cend(); ++it)
            m_members.push_back(&*it);
    }
    qsizetype size() const { return qsizetype(m_members.size()); }
    const T &value(qsizetype position) const { return *m_members[size_t(position)]; }

    QSet<T> identifiers(const std::vector<qsizetype> &positions) const
    {
        QSet<T> result;
        result.reserve(qsizetype(positions.size()));
        for (const qsizetype position : positions)
            result.insert(*m_members[size_t(position)]);
        return result;
    }
    QSet<T> objects(const std::vector<qsizetype> &positions) const { return identifiers(positions); }
    static void remove(QSet<T> &set, const QSet<T> &members) { set.subtract(members); }

private:
    std::vector<const T *> m_members;
};

/** Whether a comparison collection can take part: same kind, tested values convertible. */
template <typename C, typename Comp>
constexpr bool comparable()
{
    if constexpr (!QVTypedCollection<Comp>)
        return false;
    else if constexpr (Traits<C>::kind != Traits<Comp>::kind)
        return false;
    else
        return std::is_convertible_v<typename Traits<Comp>::Value, typename Traits<C>::Value>;
}

/**
 * Steps 5 to 11 of the engine, after validation: count, choose the direction,
 * take the set shortcut or test every object, build the answer, remove.
 * comparison is null when there is no distinct comparison.
 */
template <typename C, typename Comp>
QVCollectionResult<C> run(const C &collection, C *mutableCollection, const Comp *comparison,
                          const Settings &settings, quint64 returnType)
{
    using Value = typename Traits<C>::Value;
    static_assert(std::equality_comparable<Value>, "collection elements need operator==");
    static_assert(requires(const Value &v) { qHash(v, size_t(0)); }, "collection elements need a qHash overload");

    constexpr Kind kind = Traits<C>::kind;
    QVCollectionResult<C> result;
    const bool wantsIdentifiers = returnType == QVCollectionReturnTypeIdentifiers;
    const bool wantsObjects = returnType == QVCollectionReturnTypeObjectCollection;

    // A set without a distinct comparison holds every member once: with no
    // other criterion, Unique matches the whole set and Duplicate nothing.
    if constexpr (kind == Kind::Set) {
        if (!comparison && !settings.testsEmptiness && !settings.testsNull && settings.testsUniqueness
            && (wantsIdentifiers || wantsObjects)) {
            const C matched = settings.unique ? collection : C();
            if (wantsIdentifiers)
                result.identifiers = QVCollections::nonEmptyReturn(matched);
            else
                result.objects = QVCollections::nonEmptyReturn(matched);
            // The action is Return or Remove; removal of the shortcut's set follows.
            if (settings.isRemove && mutableCollection && !matched.isEmpty())
                Adapter<C>::remove(*mutableCollection, matched);
            return result;
        }
    }

    const Adapter<C> adapter(collection);
    const qsizetype count = adapter.size();
    // One mark per object: writing marks needs no ordering afterwards, whether
    // the walk went backwards or chunks were tested concurrently.
    std::vector<quint8> marked(static_cast<size_t>(count), 0);
    qsizetype matchedCount = 0;

    if (settings.testsUniqueness) {
        CountedSet<Value> counted;
        // Slots fit 32 bits for any collection that fits in memory twice over.
        std::vector<quint32> slotOf(static_cast<size_t>(count));
        for (qsizetype i = 0; i < count; ++i)
            slotOf[size_t(i)] = quint32(counted.add(adapter.value(i)));
        if constexpr (comparable<C, Comp>()) {
            if (comparison) {
                const Adapter<Comp> other(*comparison);
                for (qsizetype i = 0, n = other.size(); i < n; ++i) {
                    if constexpr (std::is_same_v<typename Traits<Comp>::Value, Value>)
                        counted.add(other.value(i));
                    else
                        counted.add(Value(other.value(i)));
                }
            }
        }
        // The counts change while matching, so this walk is always serial.
        auto test = [&](qsizetype i) {
            const bool match = matches(settings, adapter.value(i), counted.count(slotOf[size_t(i)]));
            marked[size_t(i)] = match;
            matchedCount += match;
        };
        if (settings.reverse()) {
            for (qsizetype i = count - 1; i >= 0; --i)
                test(i);
        } else {
            for (qsizetype i = 0; i < count; ++i)
                test(i);
        }
    } else if (count >= QVCollectionConcurrentThreshold) {
        const qsizetype chunks = concurrentChunkCount(count);
        std::vector<qsizetype> found(static_cast<size_t>(chunks), 0);
        runConcurrently(chunks, [&](qsizetype chunk) {
            // Each chunk writes only its own marks.
            const qsizetype begin = count * chunk / chunks;
            const qsizetype end = count * (chunk + 1) / chunks;
            qsizetype mine = 0;
            for (qsizetype i = begin; i < end; ++i) {
                const bool match = matches(settings, adapter.value(i), nullptr);
                marked[size_t(i)] = match;
                mine += match;
            }
            found[size_t(chunk)] = mine;
        });
        for (const qsizetype part : found)
            matchedCount += part;
    } else {
        for (qsizetype i = 0; i < count; ++i) {
            const bool match = matches(settings, adapter.value(i), nullptr);
            marked[size_t(i)] = match;
            matchedCount += match;
        }
    }
    if (matchedCount == 0)
        return result;

    const bool removes = settings.isRemove && mutableCollection;
    std::vector<qsizetype> positions;
    if (wantsIdentifiers || wantsObjects || (removes && kind != Kind::Array)) {
        positions.reserve(size_t(matchedCount));
        for (qsizetype i = 0; i < count; ++i) {
            if (marked[size_t(i)])
                positions.push_back(i);
        }
    }
    if (wantsObjects)
        result.objects = adapter.objects(positions);

    if constexpr (kind == Kind::Array) {
        if (wantsIdentifiers)
            result.identifiers = adapter.identifiers(positions);
        if (removes)
            Adapter<C>::remove(*mutableCollection, marked);
    } else {
        if (wantsIdentifiers || removes) {
            QVCollectionIdentifiers<C> identifiers = adapter.identifiers(positions);
            // The adapter points into the collection: it is not used after removal.
            if (removes)
                Adapter<C>::remove(*mutableCollection, identifiers);
            if (wantsIdentifiers)
                result.identifiers = std::move(identifiers);
        }
    }
    return result;
}

} // namespace QVCollectionDetail

template <typename Coll, typename Comp>
    requires QVTypedCollection<std::remove_cvref_t<Coll>>
QVCollectionResult<std::remove_cvref_t<Coll>> QVCollectionTools::enumerateCollection(Coll &&collection, quint64 mask,
                                                                                   const Comp *comparison,
                                                                                   quint64 action,
                                                                                   quint64 returnType)
{
    using C = std::remove_cvref_t<Coll>;
    constexpr bool isMutable = !std::is_const_v<std::remove_reference_t<Coll>>;

    if (!isValidCollectionMatch(mask))
        return {};
    const bool distinct =
        comparison && static_cast<const void *>(comparison) != static_cast<const void *>(&collection);
    if constexpr (!QVCollectionDetail::comparable<C, Comp>()) {
        if (distinct)
            return {};
    }
    if (!isValidAction(action, returnType, isMutable))
        return {};

    C *mutableCollection = nullptr;
    if constexpr (isMutable)
        mutableCollection = &collection;
    return QVCollectionDetail::run<C, Comp>(std::as_const(collection), mutableCollection,
                                            distinct ? comparison : nullptr,
                                            QVCollectionDetail::Settings::capture(mask, action), returnType);
}

template <typename Target, QVTypedCollection Source>
    requires QVTypedCollection<std::remove_cvref_t<Target>>
void QVCollectionTools::addObjectsFromCollection(Target &&target, const Source &source, quint64 mask)
{
    using T = std::remove_cvref_t<Target>;
    const std::optional<Source> found = enumerateCollection(source, mask, &std::as_const(target),
                                                            QVCollectionActionReturn,
                                                            QVCollectionReturnTypeObjectCollection)
                                            .objects;
    if (!found)
        return;
    using namespace QVCollectionDetail;
    if constexpr (!std::is_const_v<std::remove_reference_t<Target>> && Traits<T>::kind == Traits<Source>::kind) {
        if constexpr (Traits<T>::kind == Kind::Array) {
            target.append(*found);
        } else if constexpr (Traits<T>::kind == Kind::Dictionary) {
            for (auto it = found->cbegin(); it != found->cend(); ++it)
                target.insert(it.key(), it.value());
        } else {
            for (const auto &member : *found)
                target.insert(member);
        }
    } else {
        logUnhandledCollectionType();
    }
}
