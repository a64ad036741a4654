#include "QVKit/Collections/QVCache.h"

#include "QVKit/Platform/QVFormat.h"
#include "QVKit/Platform/QVLog.h"

namespace QVCacheDetail {

void logUnsupportedCacheBehavior()
{
    QVLog("Unsupported cache behavior");
}

void logDictionaryBeyondItemLimit(const void *cache)
{
    QVLog("<%@ %p> is adding a dictionary with more items than its itemLimit.", "QVCache", cache);
}

QString cacheDescription(const void *cache, quint64 count, const QVCacheStatistics &statistics)
{
    return QVFormat("<%@ %p> %lu items. %@", "QVCache", cache, count, statistics);
}

} // namespace QVCacheDetail
