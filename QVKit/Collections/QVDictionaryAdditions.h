#pragma once

#include <QVKit/Collections/QVArrayAdditions.h>
#include <QVKit/Collections/QVCollectionTools.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>

#include <functional>
#include <optional>
#include <type_traits>
#include <vector>

namespace QVDictionaryDetail {

template <typename M>
struct IsDictionary : std::false_type
{
};
template <typename K, typename V>
struct IsDictionary<QHash<K, V>> : std::true_type
{
};
template <typename K, typename V>
struct IsDictionary<QMap<K, V>> : std::true_type
{
};

} // namespace QVDictionaryDetail

/** QHash<K, V> or QMap<K, V> (QVariantHash and QVariantMap included). */
template <typename M>
concept QVDictionaryType = QVDictionaryDetail::IsDictionary<M>::value;

/**
 * Extensions of dictionaries (QHash and QMap): type-specific names for the
 * collection tools, filtering and lookups.
 *
 * The tested objects are the values; keys identify them. Mutating forms take
 * the dictionary by reference. Operations that answer a dictionary or a key
 * list answer std::nullopt ("nil") where the answer would be empty. Keys
 * answered by the matching operations come in no defined order.
 */
namespace QVDictionary {

// ---- Collection tools, by the dictionary's names ----------------------------------------------

/** Keys of the values matching the mask (QVCollectionMatch bits); nil when none. */
template <QVDictionaryType M>
std::optional<QList<typename M::key_type>> keysWithObjectsMatching(const M &dictionary, quint64 mask)
{
    return QVCollectionTools::identifiersWithObjectsMatching(dictionary, mask);
}
/** The entries whose values match the mask; nil when none. */
template <QVDictionaryType M>
std::optional<M> dictionaryWithObjectsMatching(const M &dictionary, quint64 mask)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(dictionary, mask);
}
/** Keys within inDictionary of its matching values; dictionary only adds to the occurrence counts. */
template <QVDictionaryType M, QVDictionaryType O>
std::optional<QList<typename O::key_type>> keysWithObjectsMatching(const M &dictionary, quint64 mask,
                                                                   const O &inDictionary)
{
    return QVCollectionTools::identifiersWithObjectsMatching(dictionary, mask, inDictionary);
}
/** The matching entries of inDictionary; dictionary only adds to the occurrence counts. */
template <QVDictionaryType M, QVDictionaryType O>
std::optional<O> dictionaryWithObjectsMatching(const M &dictionary, quint64 mask, const O &inDictionary)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(dictionary, mask, inDictionary);
}
/** Removes entries whose value repeats another's, keeping one of each value. */
template <QVDictionaryType M>
void removeDuplicateObjects(M &dictionary)
{
    QVCollectionTools::removeDuplicateObjects(dictionary);
}
/** Removes entries with empty values, null values and repeated values in one pass. */
template <QVDictionaryType M>
void removeUnsanitizedObjects(M &dictionary)
{
    QVCollectionTools::removeUnsanitizedObjects(dictionary);
}
/** Removes every entry whose value matches any criterion of the mask. */
template <QVDictionaryType M>
void removeObjectsMatching(M &dictionary, quint64 mask)
{
    QVCollectionTools::removeObjectsMatching(dictionary, mask);
}
/** Inserts the entries of other whose values the dictionary does not hold yet, each value once. */
template <QVDictionaryType M, QVDictionaryType O>
void addUniqueObjectsFromDictionary(M &dictionary, const O &other)
{
    QVCollectionTools::addUniqueObjectsFromCollection(dictionary, other);
}
/** As addUniqueObjectsFromDictionary(), leaving out empty and null values. */
template <QVDictionaryType M, QVDictionaryType O>
void addSanitizedObjectsFromDictionary(M &dictionary, const O &other)
{
    QVCollectionTools::addSanitizedObjectsFromCollection(dictionary, other);
}
/** Inserts the entries of other whose values match every criterion of the mask. */
template <QVDictionaryType M, QVDictionaryType O>
void addObjectsFromDictionary(M &dictionary, const O &other, quint64 mask)
{
    QVCollectionTools::addObjectsFromCollection(dictionary, other, mask);
}

// ---- Filtering and lookups --------------------------------------------------------------------

/**
 * The entries for which block(key, value, stop) answers true; nil when none.
 * The block sees the entries in the dictionary's order, backwards with
 * QVEnumerationReverse (which matters once it sets stop); QVEnumerationConcurrent
 * runs serially.
 */
template <QVDictionaryType M, typename Block>
std::optional<M> filteredDictionaryWithOptions(const M &dictionary, QVEnumerationOptions options, Block &&block)
{
    const M entries = dictionary;
    std::vector<typename M::const_iterator> positions;
    positions.reserve(size_t(entries.size()));
    for (auto it = entries.cbegin(); it != entries.cend(); ++it)
        positions.push_back(it);
    M result;
    QVArrayDetail::enumerateIndexes(qsizetype(positions.size()), options, [&](qsizetype i, bool *stop) {
        const auto &entry = positions[size_t(i)];
        if (std::invoke(block, entry.key(), entry.value(), stop))
            result.insert(entry.key(), entry.value());
    });
    if (result.isEmpty())
        return std::nullopt;
    return result;
}
/** filteredDictionaryWithOptions() in place; nil leaves the dictionary empty. */
template <QVDictionaryType M, typename Block>
void filterWithOptions(M &dictionary, QVEnumerationOptions options, Block &&block)
{
    std::optional<M> kept = filteredDictionaryWithOptions(dictionary, options, std::forward<Block>(block));
    dictionary = kept ? std::move(*kept) : M();
}

/** The entries of the given keys (any list or set of keys) that have a value; nil when none has. */
template <QVDictionaryType M, typename Keys>
std::optional<M> dictionaryWithObjectsForKeys(const M &dictionary, const Keys &keys)
{
    M result;
    for (const auto &key : keys) {
        const auto found = dictionary.constFind(key);
        if (found != dictionary.cend())
            result.insert(found.key(), found.value());
    }
    if (result.isEmpty())
        return std::nullopt;
    return result;
}

} // namespace QVDictionary
