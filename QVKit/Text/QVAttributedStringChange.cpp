#include <QVKit/Text/QVAttributedStringChange.h>

#include <QVKit/Platform/QVFormat.h>

#include <algorithm>

using namespace Qt::StringLiterals;

class QVAttributedStringChangeData : public QSharedData
{
public:
    // Set once the defaults below were applied, so that they are applied only once.
    bool didInitQVAttributedStringChange = false;
    QVAttributedStringChangeType changeType = QVAttributedStringChangeTypeNone;
    std::optional<QVAttributedString> attributedString;
    std::optional<QVTextAttributes> attributes;
    std::optional<QList<QVTextAttributeRun>> attributeRuns;
    QVAttributeAction attributeAction = QVAttributeActionAdd;
    QVRange range {};
    QVRange originalRange {};
};

namespace {

void initQVAttributedStringChange(QVAttributedStringChangeData &data)
{
    if (data.didInitQVAttributedStringChange)
        return;
    data.range = QVNotFoundRange();
    data.originalRange = QVNotFoundRange();
    data.changeType = QVAttributedStringChangeTypeNone;
    data.attributeAction = QVAttributeActionAdd;
    data.didInitQVAttributedStringChange = true;
}

} // namespace

QVAttributedStringChange::QVAttributedStringChange()
    : d(new QVAttributedStringChangeData)
{
    initQVAttributedStringChange(*d);
}

QVAttributedStringChange::QVAttributedStringChange(const QVAttributedStringChange &other) = default;
QVAttributedStringChange::QVAttributedStringChange(QVAttributedStringChange &&other) noexcept = default;
QVAttributedStringChange &QVAttributedStringChange::operator=(const QVAttributedStringChange &other) = default;
QVAttributedStringChange &QVAttributedStringChange::operator=(QVAttributedStringChange &&other) noexcept = default;
QVAttributedStringChange::~QVAttributedStringChange() = default;

QVAttributedStringChange QVAttributedStringChange::noChange()
{
    QVAttributedStringChange change;
    change.setChangeType(QVAttributedStringChangeTypeNone);
    return change;
}

QVAttributedStringChange QVAttributedStringChange::attributedStringChange(const QVAttributedString &string)
{
    QVAttributedStringChange change;
    change.setChangeType(QVAttributedStringChangeTypeString);
    change.setAttributedString(string);
    return change;
}

QVAttributedStringChange QVAttributedStringChange::attributesChange(const QVTextAttributes &attributes,
                                                                    QVAttributeAction attributeAction)
{
    QVAttributedStringChange change;
    change.setChangeType(QVAttributedStringChangeTypeAttributes);
    change.setAttributes(attributes);
    change.setAttributeAction(attributeAction);
    return change;
}

QVAttributedStringChange QVAttributedStringChange::attributesChanges(const QList<QVTextAttributeRun> &runs)
{
    QVAttributedStringChange change;
    change.setChangeType(QVAttributedStringChangeTypeAttributes);
    change.setAttributeRuns(runs);
    change.setAttributeAction(QVAttributeActionAdd);
    return change;
}

QVOptionalRangeList QVAttributedStringChange::rangeValuesFromArray(const QList<QVAttributedStringChange> &changes)
{
    if (changes.isEmpty())
        return std::nullopt;
    QVRangeList ranges;
    ranges.reserve(changes.size());
    for (const QVAttributedStringChange &change : changes)
        ranges.append(change.range());
    return ranges;
}

std::optional<QStringList>
QVAttributedStringChange::replacementStringsFromArray(const QList<QVAttributedStringChange> &changes)
{
    const bool replacesText = std::any_of(changes.cbegin(), changes.cend(), [](const QVAttributedStringChange &change) {
        return change.changeType() == QVAttributedStringChangeTypeString;
    });
    if (!replacesText)
        return std::nullopt;

    QStringList strings;
    strings.reserve(changes.size());
    for (const QVAttributedStringChange &change : changes) {
        // Never a null string: a change without replacement text stands for "".
        QString text = change.d->attributedString ? change.d->attributedString->string() : QString();
        strings.append(text.isNull() ? u""_s : text);
    }
    return strings;
}

QVAttributedStringChangeType QVAttributedStringChange::changeType() const
{
    return d->changeType;
}

void QVAttributedStringChange::setChangeType(QVAttributedStringChangeType changeType)
{
    d->changeType = changeType;
}

std::optional<QVAttributedString> QVAttributedStringChange::attributedString() const
{
    return d->attributedString;
}

void QVAttributedStringChange::setAttributedString(const std::optional<QVAttributedString> &string)
{
    d->attributedString = string;
}

std::optional<QVTextAttributes> QVAttributedStringChange::attributes() const
{
    return d->attributes;
}

void QVAttributedStringChange::setAttributes(const std::optional<QVTextAttributes> &attributes)
{
    d->attributes = attributes;
}

std::optional<QList<QVTextAttributeRun>> QVAttributedStringChange::attributeRuns() const
{
    return d->attributeRuns;
}

void QVAttributedStringChange::setAttributeRuns(const std::optional<QList<QVTextAttributeRun>> &runs)
{
    d->attributeRuns = runs;
}

QVAttributeAction QVAttributedStringChange::attributeAction() const
{
    return d->attributeAction;
}

void QVAttributedStringChange::setAttributeAction(QVAttributeAction attributeAction)
{
    d->attributeAction = attributeAction;
}

QVRange QVAttributedStringChange::range() const
{
    return d->range;
}

void QVAttributedStringChange::setRange(QVRange range)
{
    d->range = range;
}

QVRange QVAttributedStringChange::originalRange() const
{
    return d->originalRange;
}

void QVAttributedStringChange::setOriginalRange(QVRange range)
{
    d->originalRange = range;
}

QString QVAttributedStringChange::description() const
{
    return QVFormat("QVAttributedStringChange type=%llu range=%@ originalRange=%@", d->changeType,
                    QVRangeToString(d->range), QVRangeToString(d->originalRange));
}
