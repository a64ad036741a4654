#include <QVKit/Text/QVTextAttributeRun.h>

#include <QVKit/Platform/QVFormat.h>

#include <QtCore/QByteArray>
#include <QtCore/QHashFunctions>
#include <QtCore/QDataStream>
#include <QtCore/QIODevice>

#include <algorithm>
#include <cmath>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

// What the null marker hashes as: any fixed value other than 0, which stands
// for "no value".
constexpr quint64 NullMarkerHash = 0x9e3779b97f4a7c15ull;

quint64 hashInteger(quint64 bits)
{
    return quint64(qHash(bits, 0));
}

// Numbers hash by their value, not their type, so that 1, 1u, 1.0 and true
// make equal runs, as equal numbers do everywhere else in the text system.
std::optional<quint64> hashNumber(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return hashInteger(quint64(value.toLongLong()));
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return hashInteger(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double: {
        const double number = value.toDouble();
        // 2^63 and 2^64: the integral doubles that fit one of the integer paths above.
        constexpr double TwoTo63 = 9223372036854775808.0;
        constexpr double TwoTo64 = 18446744073709551616.0;
        if (std::isfinite(number) && std::trunc(number) == number) {
            if (number >= -TwoTo63 && number < TwoTo63)
                return hashInteger(quint64(qint64(number)));
            if (number >= TwoTo63 && number < TwoTo64)
                return hashInteger(quint64(number));
        }
        return quint64(qHash(number, 0));
    }
    default:
        return std::nullopt;
    }
}

quint64 hashValue(const QVariant &value)
{
    if (!value.isValid())
        return 0;
    if (value.metaType() == QMetaType::fromType<std::nullptr_t>())
        return NullMarkerHash;
    if (const std::optional<quint64> number = hashNumber(value))
        return *number;
    switch (value.metaType().id()) {
    case QMetaType::QString:
        return quint64(qHash(value.toString(), 0));
    case QMetaType::QByteArray:
        return quint64(qHash(value.toByteArray(), 0));
    default:
        break;
    }
    // Colours, fonts and other types of the GUI side stream every field they
    // compare (a colour's alpha included, which its text form leaves out), and
    // this library stays free of Qt GUI by not naming them.
    if (value.metaType().hasRegisteredDataStreamOperators()) {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        if (value.metaType().save(stream, value.constData()))
            return quint64(qHash(bytes, 0));
    }
    // qHash(QVariant) warns for types without a registered hash; the
    // description is defined for every value and equal for equal values.
    return quint64(qHash(QVDescription(value), 0));
}

} // namespace

QVTextAttributeRun::QVTextAttributeRun(const QString &name, const QVariant &value, QVRange range)
    : m_name(name)
    , m_value(value)
    , m_range(range)
{
}

QVTextAttributeRun QVTextAttributeRun::textAttributeRunWithName(const QString &name, const QVariant &value,
                                                                QVRange range)
{
    return QVTextAttributeRun(name, value, range);
}

quint64 QVTextAttributeRun::hash() const
{
    const quint64 nameHash = m_name.isEmpty() ? 0 : quint64(qHash(m_name, 0));
    return (nameHash * 2) ^ (hashValue(m_value) * 3) ^ (m_range.location * 5) ^ (m_range.length * 7);
}

QString QVTextAttributeRun::description() const
{
    return QVFormat("%@ %p: %@ %@ %@", u"QVTextAttributeRun"_s, this, QVRangeToString(m_range),
                    m_name.isNull() ? u"(null)"_s : m_name, QVDescription(m_value));
}

void QVTextAttributeRun::shiftTextAttributeRunRanges(QList<QVTextAttributeRun> &runs, quint64 characterIndex,
                                                     qint64 deltaOrigin, qint64 deltaLength)
{
    if (deltaOrigin == 0 && deltaLength == 0)
        return;

    // All arithmetic wraps in unsigned 64 bits; a negative delta's magnitude
    // is taken the same way, so that even the smallest qint64 stays defined.
    const quint64 index = characterIndex;
    const quint64 origin = quint64(deltaOrigin);
    const quint64 length = quint64(deltaLength);
    const quint64 total = origin + length;
    const bool totalNegative = qint64(total) < 0;

    // Each run's fate depends on that run alone, so deciding in one pass and
    // compacting the kept runs towards the front gives the result of walking
    // a snapshot and removing afterwards.
    qsizetype kept = 0;
    for (qsizetype position = 0; position < runs.size(); ++position) {
        const QVRange range = runs.at(position).range();
        const quint64 location = range.location;
        const quint64 size = range.length;
        QVRange shifted = range;
        if (location <= index && index - location < size) {
            if (deltaOrigin < 0 && location < quint64(0) - origin)
                continue;
            if (deltaLength < 0 && size <= quint64(0) - length)
                continue;
            shifted = QVRange{location + origin, size + length};
        } else if (location + size >= index + total) {
            if (totalNegative && location < quint64(0) - total)
                continue;
            shifted = QVRange{location + total, size};
        }
        if (kept != position)
            runs[kept] = runs.at(position);
        runs[kept].setRange(shifted);
        ++kept;
    }
    runs.resize(kept);
}

void QVTextAttributeRun::sortTextAttributeRunsByRange(QList<QVTextAttributeRun> &runs)
{
    std::stable_sort(runs.begin(), runs.end(), [](const QVTextAttributeRun &a, const QVTextAttributeRun &b) {
        const QVRange left = a.range();
        const QVRange right = b.range();
        if (left.location != right.location)
            return left.location < right.location;
        if (left.length != right.length)
            return left.length < right.length;
        return QString::compare(a.name(), b.name()) < 0;
    });
}

QVRange QVTextAttributeRun::totalRangeOfTextAttributeRuns(const QList<QVTextAttributeRun> &runs)
{
    if (runs.isEmpty())
        return QVRange{0, 0};
    quint64 minimum = runs.first().range().location;
    quint64 end = runs.first().range().length;
    for (const QVTextAttributeRun &run : runs) {
        const QVRange range = run.range();
        // The end grows by the smallest location so far at every step: exact
        // for runs read from a whole text (smallest location 0), generous otherwise.
        end = std::max(QVMaxRange(range), end + minimum);
        minimum = std::min(minimum, range.location);
    }
    return QVRange{minimum, end - minimum};
}
