#pragma once

#include <QVKit/Collections/QVCollectionTools.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QSet>

#include <optional>

/**
 * Extensions of sets (QSet, QVVariantSet included): type-specific names for
 * the collection tools and set algebra that answers new sets.
 *
 * A set has no identifiers of its own, so the matching operations answer
 * the matching members as a set (std::nullopt, "nil", when none). Every
 * member of a set occurs once, so there are no remove-duplicates or
 * add-unique forms. Mutating forms take the set by reference.
 */
namespace QVSet {

// ---- Collection tools, by the set's names -----------------------------------------------------

/** The members matching the mask (QVCollectionMatch bits); nil when none. */
template <typename T>
std::optional<QSet<T>> setWithObjectsMatching(const QSet<T> &set, quint64 mask)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(set, mask);
}
/** The matching members of inSet; set only adds to the occurrence counts. */
template <typename T, typename U>
std::optional<QSet<U>> setWithObjectsMatching(const QSet<T> &set, quint64 mask, const QSet<U> &inSet)
{
    return QVCollectionTools::objectCollectionWithObjectsMatching(set, mask, inSet);
}
/** Removes empty and null members. */
template <typename T>
void removeUnsanitizedObjects(QSet<T> &set)
{
    QVCollectionTools::removeUnsanitizedObjects(set);
}
/** Removes every member that matches any criterion of the mask. */
template <typename T>
void removeObjectsMatching(QSet<T> &set, quint64 mask)
{
    QVCollectionTools::removeObjectsMatching(set, mask);
}
/** Adds the members of other that are not empty, not null and not yet in the set. */
template <typename T, typename U>
void addSanitizedObjectsFromSet(QSet<T> &set, const QSet<U> &other)
{
    QVCollectionTools::addSanitizedObjectsFromCollection(set, other);
}
/** Adds the members of other that match every criterion of the mask (the set counts too). */
template <typename T, typename U>
void addObjectsFromSet(QSet<T> &set, const QSet<U> &other, quint64 mask)
{
    QVCollectionTools::addObjectsFromCollection(set, other, mask);
}

// ---- Set algebra --------------------------------------------------------------------------------

/** True when every member of other is in set (an empty other always is). */
template <typename T>
bool containsSet(const QSet<T> &set, const QSet<T> &other)
{
    return set.contains(other);
}
/** True when the two sets have no member in common. */
template <typename T>
bool isDisjointWithSet(const QSet<T> &set, const QSet<T> &other)
{
    return !set.intersects(other);
}
/** The members in both sets. */
template <typename T>
QSet<T> setIntersectionWithSet(const QSet<T> &set, const QSet<T> &other)
{
    QSet<T> result = set;
    return result.intersect(other);
}
/**
 * The members in exactly one of the two sets (the symmetric difference).
 * What set holds and other does not is setSubtractionWithSet().
 */
template <typename T>
QSet<T> setDifferenceWithSet(const QSet<T> &set, const QSet<T> &other)
{
    QSet<T> result = set - other;
    for (const T &member : other) {
        if (!set.contains(member))
            result.insert(member);
    }
    return result;
}
/** The members of set that are not in other. */
template <typename T>
QSet<T> setSubtractionWithSet(const QSet<T> &set, const QSet<T> &other)
{
    return set - other;
}
/** The members of either set. */
template <typename T>
QSet<T> setUnionWithSet(const QSet<T> &set, const QSet<T> &other)
{
    return set | other;
}

} // namespace QVSet
