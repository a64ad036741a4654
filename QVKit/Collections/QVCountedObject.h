#pragma once

#include <QtCore/QtGlobal>

#include <utility>

/** An object paired with a count, for tallies that travel as one value. */
template <typename T>
class QVCountedObject
{
public:
    QVCountedObject() = default;
    QVCountedObject(T object, quint64 count) : m_object(std::move(object)), m_count(count) {}

    /** Same as the constructor. */
    static QVCountedObject object(T object, quint64 count) { return QVCountedObject(std::move(object), count); }

    const T &object() const { return m_object; }
    void setObject(T object) { m_object = std::move(object); }
    quint64 count() const { return m_count; }
    void setCount(quint64 count) { m_count = count; }

private:
    T m_object{};
    quint64 m_count = 0;
};
