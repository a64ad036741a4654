#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QDebug>
#include <QtCore/QHashFunctions>
#include <QtCore/QList>
#include <QtCore/QString>

#include <limits>
#include <optional>

/**
 * A span of UTF-16 code units: a location and a length, both unsigned 64-bit.
 *
 * A failed search answers {QVNotFound, 0}. The maximum (location + length) is
 * computed in unsigned arithmetic, so a range near the top of the value space
 * wraps exactly as its callers expect of the platform's range type.
 */
struct QVRange
{
    quint64 location = 0;
    quint64 length = 0;

    friend constexpr bool operator==(const QVRange &, const QVRange &) = default;
};

/** The location that marks "no location": 2^63 - 1. */
inline constexpr quint64 QVNotFound = quint64(std::numeric_limits<qint64>::max());

/** A list of ranges. Where "no list" and "empty list" differ, use QVOptionalRangeList. */
using QVRangeList = QList<QVRange>;
using QVOptionalRangeList = std::optional<QVRangeList>;

constexpr QVRange QVMakeRange(quint64 location, quint64 length)
{
    return QVRange{location, length};
}

/** The range a failed search returns. */
constexpr QVRange QVNotFoundRange()
{
    return QVRange{QVNotFound, 0};
}

constexpr quint64 QVMaxRange(QVRange range)
{
    return range.location + range.length;
}

constexpr bool QVEqualRanges(QVRange a, QVRange b)
{
    return a == b;
}

/** True when location lies in [range.location, QVMaxRange(range)). */
constexpr bool QVLocationInRange(quint64 location, QVRange range)
{
    return location >= range.location && location - range.location < range.length;
}

/**
 * The common part of two ranges. Ranges that do not touch give {0, 0}; ranges
 * that only touch give an empty range at the meeting point.
 */
constexpr QVRange QVIntersectionRange(QVRange a, QVRange b)
{
    if (QVMaxRange(a) < b.location || QVMaxRange(b) < a.location)
        return QVRange{0, 0};
    const quint64 start = a.location > b.location ? a.location : b.location;
    const quint64 end = QVMaxRange(a) < QVMaxRange(b) ? QVMaxRange(a) : QVMaxRange(b);
    return QVRange{start, end - start};
}

/** The smallest range that covers both ranges (and any gap between them). */
constexpr QVRange QVUnionRange(QVRange a, QVRange b)
{
    const quint64 start = a.location < b.location ? a.location : b.location;
    const quint64 end = QVMaxRange(a) > QVMaxRange(b) ? QVMaxRange(a) : QVMaxRange(b);
    return QVRange{start, end - start};
}

/** The textual form "{location, length}". */
QVKIT_EXPORT QString QVRangeToString(QVRange range);

/**
 * Reads the first two unsigned numbers of a text such as "{3, 4}" as location
 * and length; missing numbers read as 0, as the platform's parser does.
 */
QVKIT_EXPORT QVRange QVRangeFromString(QStringView text);

/** The textual form of a list: "({0, 1}, {4, 2})"; an absent list is "(null)". */
QVKIT_EXPORT QString QVRangeListToString(const QVOptionalRangeList &ranges);

inline size_t qHash(QVRange range, size_t seed = 0) noexcept
{
    return qHashMulti(seed, range.location, range.length);
}

QVKIT_EXPORT QDebug operator<<(QDebug debug, QVRange range);

Q_DECLARE_TYPEINFO(QVRange, Q_PRIMITIVE_TYPE);
