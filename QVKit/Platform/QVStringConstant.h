#pragma once

#include <QtCore/QDebug>
#include <QtCore/QHashFunctions>
#include <QtCore/QString>
#include <QtCore/QStringView>

#include <cstddef>

/**
 * A name the library exports: a notification name, a dictionary key, an error
 * domain. It is a compile-time constant, so nothing runs when the library
 * loads, and it passes wherever a QString or a QStringView is taken: as a
 * QVariantMap key (`QVariantMap{{QVLocalizedDescriptionKey, text}}`), a
 * notification name, in comparisons and in qDebug().
 *
 * The QString it becomes shares the constant's characters instead of copying
 * them (QString::fromRawData over static storage).
 */
class QVStringConstant
{
public:
    template <std::size_t N>
    consteval QVStringConstant(const char16_t (&text)[N])
        : m_view(text, qsizetype(N - 1))
    {
    }

    constexpr QStringView view() const { return m_view; }
    QString toString() const { return QString::fromRawData(reinterpret_cast<const QChar *>(m_view.utf16()), m_view.size()); }
    constexpr qsizetype size() const { return m_view.size(); }

    operator QString() const { return toString(); }
    constexpr operator QStringView() const { return m_view; }

    friend bool operator==(QVStringConstant a, QVStringConstant b) { return a.m_view == b.m_view; }
    friend bool operator==(QVStringConstant a, QStringView b) { return a.m_view == b; }
    friend bool operator==(QVStringConstant a, const QString &b) { return a.m_view == b; }
    friend bool operator==(QVStringConstant a, const char16_t *b) { return a.m_view == QStringView(b); }

    friend size_t qHash(QVStringConstant key, size_t seed = 0) noexcept { return qHash(key.m_view, seed); }
    friend QDebug operator<<(QDebug debug, QVStringConstant key) { return debug << key.m_view; }

private:
    QStringView m_view;
};
