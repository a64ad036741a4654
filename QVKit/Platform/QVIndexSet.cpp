#include "QVKit/Platform/QVIndexSet.h"

#include <QtCore/QDebug>
#include <QtCore/QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The first range whose end lies after the index: the one that holds the
// index, or the one after the gap it falls in.
qsizetype rangeAtOrAfter(const QVRangeList &ranges, quint64 index)
{
    const auto it = std::upper_bound(ranges.cbegin(), ranges.cend(), index,
                                     [](quint64 value, const QVRange &range) { return value < QVMaxRange(range); });
    return qsizetype(it - ranges.cbegin());
}

// Ranges are clipped so that location + length never wraps.
QVRange clipped(QVRange range)
{
    const quint64 room = ~quint64(0) - range.location;
    return QVRange{range.location, std::min(range.length, room)};
}

} // namespace

QVIndexSet::QVIndexSet(quint64 index)
{
    addIndex(index);
}

QVIndexSet::QVIndexSet(QVRange range)
{
    addIndexesInRange(range);
}

QVIndexSet::QVIndexSet(std::initializer_list<quint64> indexes)
{
    for (const quint64 index : indexes)
        addIndex(index);
}

void QVIndexSet::addIndex(quint64 index)
{
    // Ascending additions, the common case, extend or append the last range.
    if (!m_ranges.isEmpty()) {
        QVRange &last = m_ranges.last();
        if (index == QVMaxRange(last) && index != ~quint64(0)) {
            ++last.length;
            return;
        }
        if (index > QVMaxRange(last)) {
            m_ranges.append(QVRange{index, 1});
            return;
        }
    }
    addIndexesInRange(QVRange{index, 1});
}

void QVIndexSet::addIndexesInRange(QVRange range)
{
    range = clipped(range);
    if (range.length == 0)
        return;
    quint64 start = range.location;
    quint64 end = QVMaxRange(range);
    // Every range that overlaps or touches [start, end) merges into it.
    const qsizetype first =
        qsizetype(std::lower_bound(m_ranges.cbegin(), m_ranges.cend(), start,
                                   [](const QVRange &r, quint64 value) { return QVMaxRange(r) < value; })
                  - m_ranges.cbegin());
    qsizetype last = first;
    while (last < m_ranges.size() && m_ranges.at(last).location <= end) {
        start = std::min(start, m_ranges.at(last).location);
        end = std::max(end, QVMaxRange(m_ranges.at(last)));
        ++last;
    }
    m_ranges.remove(first, last - first);
    m_ranges.insert(first, QVRange{start, end - start});
}

void QVIndexSet::addIndexes(const QVIndexSet &other)
{
    for (const QVRange &range : other.m_ranges)
        addIndexesInRange(range);
}

void QVIndexSet::removeIndex(quint64 index)
{
    removeIndexesInRange(QVRange{index, 1});
}

void QVIndexSet::removeIndexesInRange(QVRange range)
{
    range = clipped(range);
    if (range.length == 0 || m_ranges.isEmpty())
        return;
    const quint64 start = range.location;
    const quint64 end = QVMaxRange(range);
    QVRangeList kept;
    kept.reserve(m_ranges.size() + 1);
    for (const QVRange &existing : std::as_const(m_ranges)) {
        const quint64 existingEnd = QVMaxRange(existing);
        if (existingEnd <= start || existing.location >= end) {
            kept.append(existing);
            continue;
        }
        if (existing.location < start)
            kept.append(QVRange{existing.location, start - existing.location});
        if (existingEnd > end)
            kept.append(QVRange{end, existingEnd - end});
    }
    m_ranges = kept;
}

void QVIndexSet::removeIndexes(const QVIndexSet &other)
{
    for (const QVRange &range : other.m_ranges)
        removeIndexesInRange(range);
}

void QVIndexSet::removeAllIndexes()
{
    m_ranges.clear();
}

bool QVIndexSet::containsIndex(quint64 index) const
{
    const qsizetype position = rangeAtOrAfter(m_ranges, index);
    return position < m_ranges.size() && QVLocationInRange(index, m_ranges.at(position));
}

bool QVIndexSet::containsIndexesInRange(QVRange range) const
{
    range = clipped(range);
    if (range.length == 0)
        return false;
    const qsizetype position = rangeAtOrAfter(m_ranges, range.location);
    if (position >= m_ranges.size())
        return false;
    const QVRange &holder = m_ranges.at(position);
    return holder.location <= range.location && QVMaxRange(holder) >= QVMaxRange(range);
}

bool QVIndexSet::containsIndexes(const QVIndexSet &other) const
{
    return std::all_of(other.m_ranges.cbegin(), other.m_ranges.cend(),
                       [this](const QVRange &range) { return containsIndexesInRange(range); });
}

bool QVIndexSet::intersectsIndexesInRange(QVRange range) const
{
    return countOfIndexesInRange(range) > 0;
}

quint64 QVIndexSet::count() const
{
    quint64 total = 0;
    for (const QVRange &range : m_ranges)
        total += range.length;
    return total;
}

quint64 QVIndexSet::countOfIndexesInRange(QVRange range) const
{
    range = clipped(range);
    if (range.length == 0)
        return 0;
    quint64 total = 0;
    const quint64 end = QVMaxRange(range);
    for (qsizetype i = rangeAtOrAfter(m_ranges, range.location); i < m_ranges.size(); ++i) {
        const QVRange &existing = m_ranges.at(i);
        if (existing.location >= end)
            break;
        total += std::min(end, QVMaxRange(existing)) - std::max(range.location, existing.location);
    }
    return total;
}

quint64 QVIndexSet::firstIndex() const
{
    return m_ranges.isEmpty() ? QVNotFound : m_ranges.first().location;
}

quint64 QVIndexSet::lastIndex() const
{
    return m_ranges.isEmpty() ? QVNotFound : QVMaxRange(m_ranges.last()) - 1;
}

QList<quint64> QVIndexSet::toList() const
{
    QList<quint64> indexes;
    indexes.reserve(qsizetype(count()));
    for (const quint64 index : *this)
        indexes.append(index);
    return indexes;
}

QString QVIndexSet::description() const
{
    QStringList parts;
    parts.reserve(m_ranges.size());
    for (const QVRange &range : m_ranges) {
        if (range.length == 1)
            parts.append(QString::number(range.location));
        else
            parts.append(u"%1-%2"_s.arg(range.location).arg(QVMaxRange(range) - 1));
    }
    return u'(' + parts.join(u", "_s) + u')';
}

QDebug operator<<(QDebug debug, const QVIndexSet &set)
{
    QDebugStateSaver saver(debug);
    debug.noquote().nospace() << "QVIndexSet" << set.description();
    return debug;
}
