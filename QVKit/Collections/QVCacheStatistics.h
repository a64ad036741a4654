#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/**
 * A cache's access counters: every lookup counts as an access, and a lookup
 * that found its key also as a hit.
 *
 * Misses and the rates are derived; both rates are 0.0 before the first
 * access, so a fresh cache reports 0% hits and 0% misses.
 */
class QVKIT_EXPORT QVCacheStatistics
{
public:
    QVCacheStatistics() { reset(); }

    /** Both counters back to 0. */
    void reset();
    /** One more access, and one more hit when hit is true. */
    void incrementAccessWithHit(bool hit)
    {
        ++m_accesses;
        m_hits += hit ? 1 : 0;
    }

    quint64 accesses() const { return m_accesses; }
    quint64 hits() const { return m_hits; }
    /** accesses - hits. */
    quint64 misses() const { return m_accesses - m_hits; }
    /** hits / accesses; 0.0 without accesses. */
    double hitRate() const;
    /** misses / accesses; 0.0 without accesses. */
    double missRate() const;

    /** "3 accesses (67% hit rate, 33% miss rate)." with the rates rounded to whole percents. */
    QString description() const;

private:
    quint64 m_accesses = 0;
    quint64 m_hits = 0;
};
