#include <QVKit/Platform/QVAttributedString.h>

#include <QVKit/Text/QVTextAttributeRun.h>

#include <algorithm>

std::optional<QList<QVTextAttributeRun>> QVAttributedString::textAttributeRuns() const
{
    return textAttributeRunsInRange(QVRange{0, length()});
}

std::optional<QList<QVTextAttributeRun>> QVAttributedString::textAttributeRunsInRange(QVRange range) const
{
    return textAttributeRunsForAttribute(QString(), {}, range);
}

std::optional<QList<QVTextAttributeRun>> QVAttributedString::textAttributeRunsForAttribute(const QString &name,
                                                                                          QVTextAttributeRunOptions options,
                                                                                          QVRange range) const
{
    // A null name asks for every attribute; an empty one is a name like any other.
    if (name.isNull())
        return textAttributeRunsForAttributes(std::nullopt, options, range);
    return textAttributeRunsForAttributes(QStringList{name}, options, range);
}

std::optional<QList<QVTextAttributeRun>>
QVAttributedString::textAttributeRunsForAttributes(const std::optional<QStringList> &names, QVTextAttributeRunOptions options,
                                                   QVRange range) const
{
    QList<QVTextAttributeRun> runs;
    runs.reserve(16);

    if (names) {
        const bool present = !options || (options & QVTextAttributeRunOptionPresentValues);
        const bool absent = options & QVTextAttributeRunOptionAbsentValues;
        for (const QString &name : *names) {
            enumerateAttribute(name, range, {}, [&](const QVariant &value, QVRange stretch, bool *) {
                // The null marker is a value: it is reported with the present ones.
                if (value.isValid() ? present : absent)
                    runs.append(QVTextAttributeRun(name, value, stretch));
            });
        }
    } else {
        enumerateAttributes(range, QVAttributedStringEnumerationLongestEffectiveRangeNotRequired,
                            [&](const QVTextAttributes &attributes, QVRange stretch, bool *) {
                                for (auto it = attributes.cbegin(); it != attributes.cend(); ++it)
                                    runs.append(QVTextAttributeRun(it.key(), it.value(), stretch));
                            });
    }

    // One attribute's stretches already come in text order.
    if (!names || names->size() >= 2)
        QVTextAttributeRun::sortTextAttributeRunsByRange(runs);

    if (runs.isEmpty())
        return std::nullopt;
    return runs;
}

void QVAttributedString::addTextAttributeRuns(const QList<QVTextAttributeRun> &runs)
{
    for (const QVTextAttributeRun &run : runs)
        addAttribute(run.name(), run.value(), run.range());
}

void QVAttributedString::setTextAttributeRuns(const QList<QVTextAttributeRun> &runs)
{
    if (runs.isEmpty())
        return;

    // The total range may overstate its end past the text when the runs do
    // not start at 0; that is not the caller's mistake, so the clearing stops
    // at the end of the text instead of being refused as an edit past it.
    const QVRange total = QVTextAttributeRun::totalRangeOfTextAttributeRuns(runs);
    const quint64 textLength = length();
    if (total.location < textLength) {
        const quint64 end = std::min(QVMaxRange(total), textLength);
        if (end > total.location)
            setAttributes({}, QVRange{total.location, end - total.location});
    }
    addTextAttributeRuns(runs);
}
