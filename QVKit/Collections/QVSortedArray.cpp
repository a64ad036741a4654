#include "QVKit/Collections/QVSortedArray.h"

#include "QVKit/Platform/QVLog.h"

void QVSortedArrayDetail::logMissingComparator(const char *operation)
{
    QVLog("%s: the sorted array has no comparator; nothing was added. Fix this.", operation);
}
