#pragma once

#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVIndexSet.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <concepts>
#include <optional>
#include <type_traits>
#include <utility>

/**
 * A hash of a heterogeneous value, so that QSet<QVariant> and counts keyed by
 * QVariant work. It agrees with QVariant's equality: values of different
 * types never compare equal except numbers, which are hashed by their value
 * as a double (1 and 1.0 hash alike). Types it does not know hash by type
 * alone, which is correct but slow for many distinct values of one such type.
 */
QVKIT_EXPORT size_t qHash(const QVariant &value, size_t seed = 0) noexcept;

/** The heterogeneous set: what a QVariant holds when it holds a set. */
using QVVariantSet = QSet<QVariant>;

/**
 * Emptiness of the values the collection tools test: isNonEmpty() is true
 * when a string's length or a container's count is above zero, and
 * nonEmptyReturn() answers the value, or nothing when it is empty.
 *
 * A type without a notion of emptiness (a number, a date, the null marker)
 * counts as non-empty. For a QVariant the contained type decides: a string,
 * byte array, list, map, hash, QVVariantSet, QVAttributedString or QVIndexSet
 * by its count, anything else is non-empty, and an invalid QVariant (no
 * object at all) is not non-empty.
 */
namespace QVCollections {

QVKIT_EXPORT bool isNonEmpty(const QString &value);
QVKIT_EXPORT bool isNonEmpty(const QByteArray &value);
QVKIT_EXPORT bool isNonEmpty(const QVAttributedString &value);
QVKIT_EXPORT bool isNonEmpty(const QVIndexSet &value);
QVKIT_EXPORT bool isNonEmpty(const QVariant &value);

template <typename T>
bool isNonEmpty(const QList<T> &value)
{
    return !value.isEmpty();
}
template <typename K, typename V>
bool isNonEmpty(const QHash<K, V> &value)
{
    return !value.isEmpty();
}
template <typename K, typename V>
bool isNonEmpty(const QMap<K, V> &value)
{
    return !value.isEmpty();
}
template <typename T>
bool isNonEmpty(const QSet<T> &value)
{
    return !value.isEmpty();
}

namespace detail {
template <typename T>
concept HasEmptiness = requires(const T &value) {
    { value.isEmpty() } -> std::convertible_to<bool>;
};
} // namespace detail

/**
 * Emptiness of any value: a QVariant by its contents, a type with isEmpty()
 * (every type above has one) by that, anything else is non-empty. No implicit
 * conversion takes part, so a QUrl is never judged as a QVariant.
 */
template <typename T>
bool isNonEmptyValue(const T &value)
{
    if constexpr (std::is_same_v<T, QVariant>)
        return isNonEmpty(value);
    else if constexpr (detail::HasEmptiness<T>)
        return !value.isEmpty();
    else
        return true;
}

/** The value when it is non-empty, otherwise std::nullopt. */
template <typename T>
    requires(!std::is_same_v<std::remove_cvref_t<T>, QVariant>)
std::optional<std::remove_cvref_t<T>> nonEmptyReturn(T &&value)
{
    if (isNonEmptyValue(value))
        return std::optional<std::remove_cvref_t<T>>(std::forward<T>(value));
    return std::nullopt;
}

/** The value when it is non-empty, otherwise an invalid QVariant. */
QVKIT_EXPORT QVariant nonEmptyReturn(const QVariant &value);

} // namespace QVCollections
