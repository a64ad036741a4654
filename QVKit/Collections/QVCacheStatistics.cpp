#include "QVKit/Collections/QVCacheStatistics.h"

#include "QVKit/Platform/QVFormat.h"

void QVCacheStatistics::reset()
{
    m_accesses = 0;
    m_hits = 0;
}

double QVCacheStatistics::hitRate() const
{
    return m_accesses == 0 ? 0.0 : double(m_hits) / double(m_accesses);
}

double QVCacheStatistics::missRate() const
{
    return m_accesses == 0 ? 0.0 : double(misses()) / double(m_accesses);
}

QString QVCacheStatistics::description() const
{
    return QVFormat("%lu accesses (%.0f%% hit rate, %.0f%% miss rate).", m_accesses, hitRate() * 100.0,
                    missRate() * 100.0);
}
