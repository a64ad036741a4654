#pragma once

#include <QtCore/QHashFunctions>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <memory>
#include <optional>
#include <type_traits>

namespace QVStackDetail {

template <typename T>
struct IsOptional : std::false_type
{
};
template <typename T>
struct IsOptional<std::optional<T>> : std::true_type
{
};
template <typename T>
struct IsSmartPointer : std::false_type
{
};
template <typename T>
struct IsSmartPointer<std::shared_ptr<T>> : std::true_type
{
};
template <typename T>
struct IsSmartPointer<QSharedPointer<T>> : std::true_type
{
};
template <typename T>
struct IsSmartPointer<QPointer<T>> : std::true_type
{
};

/**
 * Whether a value stands for "no object": a null pointer, an invalid
 * QVariant, a null QString or an empty optional. Other types have no such
 * value. The null marker QVariant::fromValue(nullptr) is an object.
 */
template <typename T>
bool isNil(const T &value)
{
    if constexpr (std::is_pointer_v<T> || std::is_null_pointer_v<T> || IsSmartPointer<T>::value)
        return value == nullptr;
    else if constexpr (std::is_same_v<T, QVariant>)
        return !value.isValid();
    else if constexpr (std::is_same_v<T, QString>)
        return value.isNull();
    else if constexpr (IsOptional<T>::value)
        return !value.has_value();
    else
        return false;
}

} // namespace QVStackDetail

/**
 * A last-in-first-out stack of values.
 *
 * A value type: a copy is an independent stack with the same elements
 * (implicitly shared until either side changes). Pushing "no object" (see
 * QVStackDetail::isNil) is ignored, and popping or peeking an empty stack
 * answers std::nullopt. Two stacks are equal when their hashes are equal; the
 * hash is qHash over the elements from bottom to top, so T needs a qHash
 * overload for hash() and ==.
 */
template <typename T>
class QVStack
{
public:
    /** An empty stack with room for 8 elements. */
    QVStack() { m_objects.reserve(8); }

    /** Pushes the objects in list order: the last one ends on top. */
    explicit QVStack(const QList<T> &objects) : QVStack()
    {
        for (const T &object : objects)
            push(object);
    }

    static QVStack stack() { return QVStack(); }
    static QVStack stackWithObjects(const QList<T> &objects) { return QVStack(objects); }

    /** Puts an object on top; "no object" is ignored. */
    void push(const T &object)
    {
        if (!QVStackDetail::isNil(object))
            m_objects.append(object);
    }

    /** Removes and answers the top object; std::nullopt when empty. */
    std::optional<T> pop()
    {
        if (m_objects.isEmpty())
            return std::nullopt;
        return m_objects.takeLast();
    }

    /** The top object, left in place; std::nullopt when empty. */
    std::optional<T> peek() const
    {
        if (m_objects.isEmpty())
            return std::nullopt;
        return m_objects.constLast();
    }

    quint64 count() const { return quint64(m_objects.size()); }

    /** The elements from bottom to top. */
    const QList<T> &objects() const { return m_objects; }

    size_t hash(size_t seed = 0) const { return qHash(m_objects, seed); }

    /** Equal hashes make equal stacks, as for the library's other value classes. */
    friend bool operator==(const QVStack &left, const QVStack &right) { return left.hash() == right.hash(); }
    friend bool operator!=(const QVStack &left, const QVStack &right) { return !(left == right); }
    friend size_t qHash(const QVStack &stack, size_t seed = 0) { return stack.hash(seed); }

private:
    // The last element is the top.
    QList<T> m_objects;
};
