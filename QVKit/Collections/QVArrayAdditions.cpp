#include "QVKit/Collections/QVArrayAdditions.h"

#include <QVKit/Platform/QVLog.h>

using namespace Qt::StringLiterals;

namespace QVArrayDetail {

QVIndexSet indexesWithinCount(const char *operation, const QVIndexSet &indexes, quint64 count)
{
    if (indexes.isEmpty() || indexes.lastIndex() < count)
        return indexes;
    QVLog("%s: indexes %@ reach beyond the end of an array of %llu objects; those beyond are left out. Fix this.",
          operation, indexes.description(), count);
    QVIndexSet within = indexes;
    within.removeIndexesInRange(QVRange{count, ~quint64(0) - count});
    // The range above stops one short of the largest index, which no array can reach anyway.
    within.removeIndex(~quint64(0));
    return within;
}

void logNilBlockResult(const char *operation, qsizetype index)
{
    QVLog("%s: the block returned nil for the object at index %lld; it is left out. Fix this.", operation,
          qint64(index));
}

void logIndexBeyondEnd(const char *operation, quint64 index, quint64 count, const char *consequence)
{
    QVLog("%s: index %llu is beyond the end of an array of %llu objects; %s. Fix this.", operation, index, count,
          consequence);
}

void logCountTooLarge(const char *operation, quint64 count)
{
    QVLog("%s: %llu objects are more than an array can hold; no array is made. Fix this.", operation, count);
}

QString describeAnonymous(const char *typeName, const void *address)
{
    return QVFormat("%@ <%p>", QString::fromUtf8(typeName), address);
}

} // namespace QVArrayDetail

namespace QVArray {

std::optional<QVariantList> joinedArray(const QVariantList &array)
{
    return flatMappedArrayUsingBlock(array, [](const QVariant &object, qsizetype, bool *) { return object; });
}

void joined(QVariantList &array)
{
    QVArrayDetail::assign(array, joinedArray(array));
}

} // namespace QVArray
