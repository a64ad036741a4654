#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QFlags>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

/** Read options of QVAttributedString::textAttributeRunsForAttribute(s); 0 behaves as present values. */
enum QVTextAttributeRunOption : unsigned int {
    /** Report the stretches where the attribute has a value. */
    QVTextAttributeRunOptionPresentValues = 1,
    /** Report the stretches where the attribute is absent, as runs without a value. */
    QVTextAttributeRunOptionAbsentValues = 2,
};
Q_DECLARE_FLAGS(QVTextAttributeRunOptions, QVTextAttributeRunOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(QVTextAttributeRunOptions)

/**
 * One attribute, a name and a value (invalid when absent), over one range of
 * an attributed string: the flat form in which text operations carry
 * attributes across edits.
 *
 * Two runs are equal when their hashes are, and only then: the hash mixes the
 * name, the value and the range, and runs whose hashes collide count as equal.
 */
class QVKIT_EXPORT QVTextAttributeRun
{
public:
    QVTextAttributeRun() = default;
    QVTextAttributeRun(const QString &name, const QVariant &value, QVRange range);
    static QVTextAttributeRun textAttributeRunWithName(const QString &name, const QVariant &value, QVRange range);

    QString name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QVariant value() const { return m_value; }
    void setValue(const QVariant &value) { m_value = value; }
    QVRange range() const { return m_range; }
    void setRange(QVRange range) { m_range = range; }

    /** (hash(name) × 2) ^ (hash(value) × 3) ^ (location × 5) ^ (length × 7), wrapping; absent parts hash as 0. */
    quint64 hash() const;
    bool operator==(const QVTextAttributeRun &other) const { return hash() == other.hash(); }
    bool operator!=(const QVTextAttributeRun &other) const { return !(*this == other); }
    /** "QVTextAttributeRun 0x…: {location, length} name value". */
    QString description() const;

    // Operations on lists of runs.

    /**
     * Moves, resizes or removes the runs after an edit at the index that moved
     * the text's origin by deltaOrigin and its length by deltaLength.
     */
    static void shiftTextAttributeRunRanges(QList<QVTextAttributeRun> &runs, quint64 characterIndex,
                                            qint64 deltaOrigin, qint64 deltaLength);
    /** By location, then length, then name. */
    static void sortTextAttributeRunsByRange(QList<QVTextAttributeRun> &runs);
    /**
     * From the smallest location to the running end; exact when the smallest
     * location is 0, otherwise the end may be overstated (each step adds the
     * smallest location so far again). {0, 0} for no runs.
     */
    static QVRange totalRangeOfTextAttributeRuns(const QList<QVTextAttributeRun> &runs);

private:
    QString m_name;
    QVariant m_value;
    QVRange m_range {};
};

inline size_t qHash(const QVTextAttributeRun &run, size_t seed = 0) noexcept
{
    return size_t(run.hash()) ^ seed;
}

Q_DECLARE_METATYPE(QVTextAttributeRun)
