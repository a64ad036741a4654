#include <QVKit/Text/QVMutableStringAdditions.h>

#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Text/QVRangeFunctions.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

quint64 textLength(const QString &text)
{
    return quint64(text.length());
}

// The part of range that lies in the text; std::nullopt when it starts past the end.
std::optional<QVRange> clippedToText(const QString &text, QVRange range)
{
    const quint64 length = textLength(text);
    if (range.location == QVNotFound || range.location > length)
        return std::nullopt;
    return QVMakeRange(range.location, std::min(range.length, length - range.location));
}

// Intersection for a listed range that may reach past 2^64 - 1 (its maximum
// would wrap); within is a range of the text, so its maximum never wraps.
QVRange overlapOf(QVRange range, QVRange within)
{
    if (range.location == QVNotFound || range.location >= QVMaxRange(within))
        return QVMakeRange(0, 0);
    const quint64 rangeEnd = range.length > ~quint64(0) - range.location ? ~quint64(0) : QVMaxRange(range);
    const quint64 start = std::max(range.location, within.location);
    const quint64 end = std::min(rangeEnd, QVMaxRange(within));
    return end > start ? QVMakeRange(start, end - start) : QVMakeRange(start, 0);
}

quint64 shifted(quint64 value, qint64 change)
{
    if (change >= 0)
        return value + quint64(change);
    const quint64 magnitude = quint64(-(change + 1)) + 1;
    return value >= magnitude ? value - magnitude : 0;
}

// Replaces every occurrence of target in range (which lies in the text) and
// answers the change in length. Each search goes on in the part of the range
// after the inserted text (before it, for backwards searches).
qint64 replaceOccurrencesOfString(QString &text, const QString &target, const QString &replacement,
                                  QVStringCompareOptions options, QVRange range)
{
    if (target.isEmpty())
        return 0;
    const qint64 before = text.length();
    QVRange searchRange = range;
    while (searchRange.length > 0) {
        const QVRange found = QVString::rangeOfString(text, target, options, searchRange);
        if (found.location == QVNotFound)
            break;
        text.replace(qsizetype(found.location), qsizetype(found.length), replacement);
        searchRange.length = shifted(searchRange.length, qint64(replacement.length()) - qint64(found.length));
        searchRange = QVRangeAdjustForSubsequentFind(
            searchRange, QVMakeRange(found.location, quint64(replacement.length())), options);
    }
    return text.length() - before;
}

void assertEvenPairs(const QStringList &replacePairs)
{
    QV_ASSERT_TEXT((replacePairs.size() % 2) == 0, "(replacePairs.count % 2) == 0");
}

// Every pair over a range that lies in the text.
qint64 replacePairsInRange(QString &text, const QStringList &replacePairs, QVStringCompareOptions options,
                           QVRange range)
{
    qint64 total = 0;
    for (qsizetype index = 0; index + 1 < replacePairs.size(); index += 2) {
        const qint64 change =
            replaceOccurrencesOfString(text, replacePairs.at(index), replacePairs.at(index + 1), options, range);
        range.length = shifted(range.length, change);
        total += change;
    }
    return total;
}

} // namespace

namespace QVString {

void trimString(QString &text)
{
    if (text.isEmpty())
        return;
    text.truncate(qsizetype(QVMaxRange(trimmedEndRange(text))));
    text.remove(0, qsizetype(trimmedStartRange(text).location));
}

void stripPrefix(QString &text, const QString &prefix, QVStringEdgeOptions options)
{
    const QVRange found = rangeOfPrefix(text, prefix, options);
    if (found.location == QVNotFound)
        return;
    // The match's length counted from the very edge, not its maximum: a match
    // found after skipped whitespace removes that much from the start.
    text.remove(0, qsizetype(std::min(found.length, textLength(text))));
}

void stripSuffix(QString &text, const QString &suffix, QVStringEdgeOptions options)
{
    const QVRange found = rangeOfSuffix(text, suffix, options);
    if (found.location == QVNotFound)
        return;
    text.chop(qsizetype(std::min(found.length, textLength(text))));
}

void appendNewLine(QString &text)
{
    text.append(u'\n');
}

void appendNewLineIfNecessary(QString &text)
{
    if (!text.isEmpty()) {
        // A CR LF pair is one character: its first code unit decides.
        const QVRange last = rangeOfComposedCharacterSequenceAtIndex(text, textLength(text) - 1);
        const char32_t first = text.at(qsizetype(last.location)).unicode();
        if (QVCharacterSet::newlineCharacterSet().characterIsMember(first))
            return;
    }
    appendNewLine(text);
}

void condenseMultipleSpaces(QString &text)
{
    // Only U+0020 counts: a tab or a no-break space is usually there on
    // purpose (alignment, glue), and a space beside one is not a run.
    if (!text.contains(u"  "_s))
        return;
    qsizetype kept = 0;
    bool afterSpace = false;
    QChar *data = text.data();
    for (qsizetype index = 0; index < text.size(); ++index) {
        const QChar character = data[index];
        const bool isSpace = character == u' ';
        if (isSpace && afterSpace)
            continue;
        data[kept++] = character;
        afterSpace = isSpace;
    }
    text.truncate(kept);
}

qint64 replaceStringPairs(QString &text, const QStringList &replacePairs, QVStringCompareOptions options,
                          QVRange range)
{
    assertEvenPairs(replacePairs);
    const std::optional<QVRange> working = clippedToText(text, range);
    if (!working)
        return 0;
    return replacePairsInRange(text, replacePairs, options, *working);
}

qint64 replaceStringPairs(QString &text, const QStringList &replacePairs, QVStringCompareOptions options)
{
    return replaceStringPairs(text, replacePairs, options, fullRange(text));
}

qint64 replaceStringPairs(QString &text, const QStringList &replacePairs, QVStringCompareOptions options,
                          QVRange range, QVRangeList &adjustCharacterRanges)
{
    assertEvenPairs(replacePairs);
    const std::optional<QVRange> clipped = clippedToText(text, range);
    if (!clipped)
        return 0;

    QVRange working = *clipped;
    qint64 accumulated = 0;
    quint64 previousEnd = working.location;
    QVRangeList collected;
    collected.reserve(adjustCharacterRanges.size());
    for (QVRange listed : std::as_const(adjustCharacterRanges)) {
        // A not-found range marks no text and has nothing to follow.
        if (listed.location == QVNotFound) {
            collected.append(listed);
            continue;
        }
        listed.location = shifted(listed.location, accumulated);
        QVRange part = overlapOf(listed, working);
        if (part.length > 0) {
            qint64 total = 0;
            // The text between the previous listed range and this one is
            // edited too, so that the ranges and the text stay in step.
            if (part.location == listed.location && part.location > previousEnd) {
                const qint64 gapChange = replacePairsInRange(text, replacePairs, options,
                                                             QVMakeRange(previousEnd, part.location - previousEnd));
                total += gapChange;
                listed.location = shifted(listed.location, gapChange);
                working.length = shifted(working.length, gapChange);
                part = overlapOf(listed, working);
            }
            const qint64 change = replacePairsInRange(text, replacePairs, options, part);
            listed.length = shifted(listed.length, change);
            total += change;
            working.length = shifted(working.length, change);
            accumulated += total;
            previousEnd = shifted(QVMaxRange(part), change);
        }
        collected.append(listed);
    }

    // Edits can make neighbours overlap; merge them, walking from the last.
    for (qsizetype index = collected.size() - 1; index > 0; --index) {
        if (overlapOf(collected.at(index), collected.at(index - 1)).length > 0
            || overlapOf(collected.at(index - 1), collected.at(index)).length > 0) {
            collected[index - 1] = QVUnionRange(collected.at(index - 1), collected.at(index));
            collected.removeAt(index);
        }
    }
    adjustCharacterRanges = collected;
    return accumulated;
}

quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString, const QString &closingString,
                                        const QString &replacement, bool includeSearchStrings,
                                        QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                                        QVRange range, const std::optional<QLocale> &locale)
{
    QV_ASSERT_TEXT(!openingString.isNull() && !closingString.isNull() && !replacement.isNull(),
                   "(openingString != nil) && (closingString != nil) && (replacement != nil)");
    const QVOptionalRangeList found = rangesBetweenString(text, openingString, closingString, includeSearchStrings,
                                                          matchOptions, options, range, locale);
    if (!found || found->isEmpty())
        return 0;

    // The ranges are used as found: a replacement of another length is
    // deliberately not followed by shifting the later ranges, so those can
    // land beside their text. Whatever lies past the shrunken end is clipped.
    const auto replaceAt = [&text, &replacement](QVRange at) {
        const std::optional<QVRange> clipped = clippedToText(text, at);
        if (clipped)
            text.replace(qsizetype(clipped->location), qsizetype(clipped->length), replacement);
    };
    if (found->last().location > found->first().location) {
        for (const QVRange &at : *found)
            replaceAt(at);
    } else {
        for (auto at = found->crbegin(); at != found->crend(); ++at)
            replaceAt(*at);
    }
    return quint64(found->size());
}

quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString, const QString &closingString,
                                        const QString &replacement, bool includeSearchStrings,
                                        QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                                        QVRange range)
{
    return replaceOccurrencesBetweenString(text, openingString, closingString, replacement, includeSearchStrings,
                                           matchOptions, options, range, std::nullopt);
}

quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString, const QString &closingString,
                                        const QString &replacement, bool includeSearchStrings,
                                        QVStringMatchOptions matchOptions, QVStringCompareOptions options)
{
    return replaceOccurrencesBetweenString(text, openingString, closingString, replacement, includeSearchStrings,
                                           matchOptions, options, fullRange(text), std::nullopt);
}

quint64 replaceOccurrencesOfCharacterSet(QString &text, const std::optional<QVCharacterSet> &set,
                                         const QString &replacement, QVStringCompareOptions options, QVRange range)
{
    if (!set)
        return 0;
    const std::optional<QVRange> clipped = clippedToText(text, range);
    if (!clipped)
        return 0;

    quint64 replaced = 0;
    QVRange working = *clipped;
    while (working.length > 0) {
        const QVRange found = rangeOfCharacterFromSet(text, *set, options, working);
        if (found.location == QVNotFound)
            break;
        text.replace(qsizetype(found.location), qsizetype(found.length), replacement);
        ++replaced;
        working.length = shifted(working.length, qint64(replacement.length()) - qint64(found.length));
        // Go on after the inserted text, so a replacement holding characters
        // of the set is never replaced again.
        working = QVRangeAdjustForSubsequentFind(working, QVMakeRange(found.location, quint64(replacement.length())),
                                                 options);
    }
    return replaced;
}

quint64 replaceOccurrencesOfCharacterSet(QString &text, const std::optional<QVCharacterSet> &set,
                                         const QString &replacement, QVStringCompareOptions options)
{
    return replaceOccurrencesOfCharacterSet(text, set, replacement, options, fullRange(text));
}

} // namespace QVString
