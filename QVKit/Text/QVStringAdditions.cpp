#include "QVStringAdditions.h"

#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Text/QVRangeFunctions.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

bool isFound(QVRange range)
{
    return range.location != QVNotFound;
}

// Every match of a search that starts again after each match, in search
// order; nil when there is none. The list starts small and grows
// geometrically, so dense matches cost amortised appends only.
template <typename Find>
QVOptionalRangeList collectMatches(QVRange range, QVStringCompareOptions options, Find find)
{
    QVRangeList matches;
    matches.reserve(16);
    QVRange searchRange = range;
    for (;;) {
        const QVRange found = find(searchRange);
        if (!isFound(found) || found.length == 0)
            break;
        matches.append(found);
        searchRange = QVRangeAdjustForSubsequentFind(searchRange, found, options);
        if (searchRange.length == 0)
            break;
    }
    if (matches.isEmpty())
        return std::nullopt;
    return matches;
}

quint64 lengthOf(const QString &text)
{
    return quint64(text.size());
}

// True when the whole range lies in the text; written so that a range whose
// maximum wraps past 2^64 - 1 does not pass.
bool isRangeInText(const QString &text, QVRange range)
{
    const quint64 length = lengthOf(text);
    return range.location <= length && range.length <= length - range.location;
}

// The range cut to the text, or std::nullopt when it starts past the end.
std::optional<QVRange> clippedRange(const QString &text, QVRange range)
{
    const quint64 length = lengthOf(text);
    if (range.location > length)
        return std::nullopt;
    return QVMakeRange(range.location, qMin(range.length, length - range.location));
}

// Callers pass ranges that lie in the text.
QString substringWithRange(const QString &text, QVRange range)
{
    return text.mid(qsizetype(range.location), qsizetype(range.length));
}

const QVCharacterSet &whitespaceAndNewlineSet()
{
    static const QVCharacterSet set = QVCharacterSet::whitespaceAndNewlineCharacterSet();
    return set;
}

const QVCharacterSet &newlineSet()
{
    static const QVCharacterSet set = QVCharacterSet::newlineCharacterSet();
    return set;
}

// The complement used by trimming, reusing ready-made inverses for the two
// sets almost every caller trims with.
QVCharacterSet trimmingSetFor(const QVCharacterSet &set)
{
    static const QVCharacterSet whitespace = QVCharacterSet::whitespaceCharacterSet();
    static const QVCharacterSet invertedWhitespace = whitespace.invertedSet();
    static const QVCharacterSet invertedWhitespaceAndNewline = whitespaceAndNewlineSet().invertedSet();
    if (set == whitespaceAndNewlineSet())
        return invertedWhitespaceAndNewline;
    if (set == whitespace)
        return invertedWhitespace;
    return set.invertedSet();
}

// The search behind the rangeBetweenString family: optionally skips escaped
// occurrences and extends an unescaped one to its run of repeats. The escape
// test looks at the single occurrence, so that in "\**" the escaped first
// star is skipped and the second one still counts.
QVRange findBetweenOccurrence(const QString &text, const QString &string, QVStringMatchOptions matchOptions,
                              QVStringCompareOptions options, QVRange range, const std::optional<QLocale> &locale)
{
    const bool greedy = (matchOptions & QVStringMatchOptionGreedyRepeats) == QVStringMatchOptionGreedyRepeats;
    const bool skipEscaped = (matchOptions & QVStringMatchOptionSkipEscaped) != 0;
    QVRange searchRange = range;
    while (searchRange.length != 0) {
        const QVRange found = QVString::rangeOfString(text, string, options, searchRange, locale);
        if (!isFound(found) || found.length == 0)
            return QVNotFoundRange();
        if (skipEscaped && QVString::isRangeDelimited(text, found)) {
            searchRange = QVRangeAdjustForSubsequentFind(searchRange, found, options);
            continue;
        }
        if (!greedy)
            return found;
        const QVRange rest = QVMakeRange(found.location, QVMaxRange(searchRange) - found.location);
        return QVString::greedyRangeOfString(text, string, options | QVAnchoredSearch, rest, locale);
    }
    return QVNotFoundRange();
}

enum class RangeType { Lines, Paragraphs };

// Lines and paragraphs for a list of ranges: each range grows to the units
// it touches, then the sanitize steps sort and merge the overlaps that the
// growing creates. Ranges that cannot address the text are left out.
QVRangeList rangesForType(const QString &text, RangeType type, const QVRangeList &ranges, quint64 options)
{
    QVRangeList expanded;
    expanded.reserve(ranges.size());
    for (const QVRange &range : ranges) {
        if (range.location == QVNotFound)
            continue;
        const std::optional<QVRange> clipped = clippedRange(text, range);
        if (!clipped)
            continue;
        expanded.append(type == RangeType::Lines ? QVString::lineRangeForRange(text, *clipped)
                                                 : QVString::paragraphRangeForRange(text, *clipped));
    }
    return QVRangeSanitizeWithOptions(expanded, options);
}

} // namespace

namespace QVString {

// ---- Edges -----------------------------------------------------------------

QVRange rangeOfPrefixAtEdge(const QString &text, const QString &string, QVStringEdge stringEdge,
                            QVStringEdgeOptions options)
{
    if (string.isEmpty())
        return QVNotFoundRange();
    QV_ASSERT_TEXT(stringEdge == QVStringEdgeStart || stringEdge == QVStringEdgeEnd,
                   "(stringEdge == QVStringEdgeStart) || (stringEdge == QVStringEdgeEnd)");

    QVRange searchRange = fullRange(text);
    if (options & QVStringEdgeOptionIgnoreWhitespace) {
        // Trim only the edge being matched: the start edge is trim option 1, the end edge 2.
        searchRange = rangeByTrimmingCharacterSet(text, whitespaceAndNewlineSet(), QVTrimOptions(stringEdge) + 1);
    }

    QVStringCompareOptions compareOptions = QVAnchoredSearch;
    if (stringEdge == QVStringEdgeEnd)
        compareOptions |= QVBackwardsSearch;
    if (options & QVStringEdgeOptionCaseInsensitive)
        compareOptions |= QVCaseInsensitiveSearch;
    if (options & QVStringEdgeOptionDiacriticInsensitive)
        compareOptions |= QVDiacriticInsensitiveSearch;

    if (options & QVStringEdgeOptionGreedy)
        return greedyRangeOfString(text, string, compareOptions, searchRange);
    return rangeOfString(text, string, compareOptions, searchRange);
}

bool hasStringAtEdge(const QString &text, const QString &string, QVStringEdge stringEdge, QVStringEdgeOptions options)
{
    return rangeOfPrefixAtEdge(text, string, stringEdge, options & ~quint64(QVStringEdgeOptionGreedy)).length != 0;
}

bool hasPrefix(const QString &text, const QString &prefix, QVStringEdgeOptions options)
{
    return hasStringAtEdge(text, prefix, QVStringEdgeStart, options);
}

bool hasSuffix(const QString &text, const QString &suffix, QVStringEdgeOptions options)
{
    return hasStringAtEdge(text, suffix, QVStringEdgeEnd, options);
}

QVRange rangeOfPrefix(const QString &text, const QString &prefix, QVStringEdgeOptions options)
{
    return rangeOfPrefixAtEdge(text, prefix, QVStringEdgeStart, options);
}

QVRange rangeOfSuffix(const QString &text, const QString &suffix, QVStringEdgeOptions options)
{
    return rangeOfPrefixAtEdge(text, suffix, QVStringEdgeEnd, options);
}

QString stringByStrippingPrefix(const QString &text, const QString &prefix, QVStringEdgeOptions options)
{
    const QVRange found = rangeOfPrefix(text, prefix, options);
    if (!isFound(found))
        return text;
    // The match's length counts from the very edge, not from where the match
    // starts: with leading whitespace skipped, that much whitespace goes instead.
    return text.mid(qsizetype(found.length));
}

QString stringByStrippingSuffix(const QString &text, const QString &suffix, QVStringEdgeOptions options)
{
    const QVRange found = rangeOfSuffix(text, suffix, options);
    if (!isFound(found))
        return text;
    return text.left(text.size() - qsizetype(found.length));
}

QVRange rangeByTrimmingCharacterSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                    QVTrimOptions options)
{
    const QVRange full = fullRange(text);
    if (!set)
        return full;
    const QVCharacterSet kept = trimmingSetFor(*set);
    quint64 start = 0;
    quint64 end = full.length;
    // A text made only of trimmed characters finds nothing either way and
    // keeps its full range: deliberately, it is not trimmed to nothing.
    if (options & QVTrimOptionEnd) {
        const QVRange last = rangeOfCharacterFromSet(text, kept, QVBackwardsSearch, full);
        if (isFound(last))
            end = QVMaxRange(last);
    }
    if (options & QVTrimOptionStart) {
        const QVRange first = rangeOfCharacterFromSet(text, kept, 0, full);
        if (isFound(first))
            start = first.location;
    }
    return QVMakeRange(start, end - start);
}

QVRange trimmedRange(const QString &text)
{
    return rangeByTrimmingCharacterSet(text, whitespaceAndNewlineSet(), QVTrimOptionStart | QVTrimOptionEnd);
}

QVRange trimmedStartRange(const QString &text)
{
    return rangeByTrimmingCharacterSet(text, whitespaceAndNewlineSet(), QVTrimOptionStart);
}

QVRange trimmedEndRange(const QString &text)
{
    return rangeByTrimmingCharacterSet(text, whitespaceAndNewlineSet(), QVTrimOptionEnd);
}

QString stringByTrimmingString(const QString &text)
{
    const QVRange range = trimmedRange(text);
    if (range == fullRange(text))
        return text;
    return substringWithRange(text, range);
}

// ---- Searching -------------------------------------------------------------

QVRange greedyRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                            const std::optional<QLocale> &locale)
{
    if (range.length == 0)
        return QVNotFoundRange();
    QVRange found = rangeOfString(text, search, options, range, locale);
    if (!isFound(found))
        return QVNotFoundRange();

    const bool backwards = (options & QVBackwardsSearch) != 0;
    QVRange run = found;
    QVRange searchRange = range;
    // A zero-length match (folding can make one) would never move on.
    while (found.length != 0) {
        searchRange = QVRangeAdjustForSubsequentFind(searchRange, found, options);
        if (searchRange.length == 0)
            break;
        // Only a match touching the run counts, and the adjusted range begins
        // (ends, backwards) exactly at the run: anchoring finds the same match
        // without scanning the rest of the text for one that would be dropped.
        found = rangeOfString(text, search, options | QVAnchoredSearch, searchRange, locale);
        const bool touches
            = isFound(found) && (backwards ? QVMaxRange(found) == run.location : found.location == QVMaxRange(run));
        if (!touches)
            break;
        run = QVUnionRange(run, found);
    }
    return run;
}


QVRange greedyRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options)
{
    return greedyRangeOfString(text, search, options, fullRange(text), std::nullopt);
}

QVOptionalRangeList rangesOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                   QVRange range, const std::optional<QLocale> &locale)
{
    if (text.isEmpty() || search.isEmpty() || range.length == 0)
        return std::nullopt;
    return collectMatches(range, options, [&](QVRange searchRange) {
        return rangeOfString(text, search, options, searchRange, locale);
    });
}


QVOptionalRangeList rangesOfString(const QString &text, const QString &search, QVStringCompareOptions options)
{
    return rangesOfString(text, search, options, fullRange(text), std::nullopt);
}

void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                            const std::optional<QLocale> &locale, const QVStringRangeBlock &block)
{
    if (!block || search.isEmpty())
        return;
    QVRange searchRange = range;
    bool stop = false;
    while (searchRange.length != 0) {
        const QVRange found = rangeOfString(text, search, options, searchRange, locale);
        if (!isFound(found) || found.length == 0)
            return;
        block(found, &stop);
        if (stop)
            return;
        // After the match for forward searches, before it for backwards ones.
        searchRange = QVRangeAdjustForSubsequentFind(searchRange, found, options);
    }
}

void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                            const QVStringRangeBlock &block)
{
    enumerateRangeOfString(text, search, options, range, std::nullopt, block);
}

void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                            const QVStringRangeBlock &block)
{
    enumerateRangeOfString(text, search, options, fullRange(text), std::nullopt, block);
}

void enumerateRangeOfString(const QString &text, const QString &search, const QVStringRangeBlock &block)
{
    enumerateRangeOfString(text, search, 0, fullRange(text), std::nullopt, block);
}

quint64 countOfString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                      const std::optional<QLocale> &locale)
{
    quint64 count = 0;
    enumerateRangeOfString(text, search, options, range, locale, [&count](QVRange, bool *) { ++count; });
    return count;
}


quint64 countOfString(const QString &text, const QString &search, QVStringCompareOptions options)
{
    return countOfString(text, search, options, fullRange(text), std::nullopt);
}

bool containsString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                    const std::optional<QLocale> &locale)
{
    return isFound(rangeOfString(text, search, options, range, locale));
}


bool containsString(const QString &text, const QString &search, QVStringCompareOptions options)
{
    return containsString(text, search, options, fullRange(text), std::nullopt);
}

bool matchesString(const QString &text, const QString &string, QVStringCompareOptions options, QVRange range,
                   const std::optional<QLocale> &locale)
{
    if (string.isNull() || !isRangeInText(text, range))
        return false;
    // The search cannot look for an empty string, so settle that case here:
    // "" equals exactly the empty text (range).
    if (string.isEmpty() || range.length == 0)
        return string.isEmpty() && range.length == 0;
    // Anchored at the start, the match must then also end at the range's end.
    const QVStringCompareOptions forwardsAnchored = (options & ~quint64(QVBackwardsSearch)) | QVAnchoredSearch;
    return rangeOfString(text, string, forwardsAnchored, range, locale) == range;
}


bool matchesString(const QString &text, const QString &string, QVStringCompareOptions options)
{
    return matchesString(text, string, options, fullRange(text), std::nullopt);
}

bool matchesStringCaseInsensitive(const QString &text, const QString &string)
{
    return matchesString(text, string, QVCaseInsensitiveSearch, fullRange(text), std::nullopt);
}

QVOptionalRangeList rangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                             QVStringCompareOptions options, QVRange range)
{
    if (!set || text.isEmpty() || range.length == 0)
        return std::nullopt;
    return collectMatches(range, options, [&](QVRange searchRange) {
        return rangeOfCharacterFromSet(text, *set, options, searchRange);
    });
}

QVOptionalRangeList rangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                             QVStringCompareOptions options)
{
    return rangesOfCharacterFromSet(text, set, options, fullRange(text));
}

QVRange fullRangeOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                    QVStringCompareOptions options, QVRange range)
{
    if (text.isEmpty() || !set || range.length == 0)
        return QVNotFoundRange();
    const QVStringCompareOptions searchOptions = options & (QVBackwardsSearch | QVAnchoredSearch);
    const bool backwards = (searchOptions & QVBackwardsSearch) != 0;
    QVRange found = rangeOfCharacterFromSet(text, *set, searchOptions, range);
    if (!isFound(found))
        return QVNotFoundRange();

    QVRange run = found;
    QVRange searchRange = range;
    while (found.length != 0) {
        searchRange = QVRangeAdjustForSubsequentFind(searchRange, found, searchOptions);
        if (searchRange.length == 0)
            break;
        // As in the greedy string search: only a touching character extends
        // the run, and anchoring finds exactly that one.
        found = rangeOfCharacterFromSet(text, *set, searchOptions | QVAnchoredSearch, searchRange);
        const bool touches
            = isFound(found) && (backwards ? QVMaxRange(found) == run.location : found.location == QVMaxRange(run));
        if (!touches)
            break;
        run = QVUnionRange(run, found);
    }
    return run;
}

QVRange fullRangeOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                    QVStringCompareOptions options)
{
    return fullRangeOfCharacterFromSet(text, set, options, fullRange(text));
}

QVOptionalRangeList fullRangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                 QVStringCompareOptions options, QVRange range)
{
    if (text.isEmpty() || !set || range.length == 0)
        return std::nullopt;
    const QVStringCompareOptions searchOptions = options & (QVBackwardsSearch | QVAnchoredSearch);
    return collectMatches(range, searchOptions, [&](QVRange searchRange) {
        return fullRangeOfCharacterFromSet(text, set, searchOptions, searchRange);
    });
}

QVOptionalRangeList fullRangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                 QVStringCompareOptions options)
{
    return fullRangesOfCharacterFromSet(text, set, options, fullRange(text));
}

bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                              QVStringCompareOptions options, QVRange range, bool exclusivelyContains)
{
    if (!set || text.isEmpty() || range.length == 0)
        return false;
    if (exclusivelyContains) {
        // Only the set's characters: the whole range is text, and nothing in
        // it lies outside the set. Direction and anchoring do not matter here.
        if (!isRangeInText(text, range))
            return false;
        return !isFound(rangeOfCharacterFromSet(text, set->invertedSet(), 0, range));
    }
    return isFound(rangeOfCharacterFromSet(text, *set, options, range));
}

bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                              QVStringCompareOptions options, QVRange range)
{
    return containsCharacterFromSet(text, set, options, range, false);
}

bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                              QVStringCompareOptions options)
{
    return containsCharacterFromSet(text, set, options, fullRange(text), false);
}

// ---- Between an opening and a closing string -------------------------------

QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                           bool includeSearchStrings, QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                           QVRange range, const std::optional<QLocale> &locale, QVRange *fullReferenceRange)
{
    if (fullReferenceRange)
        *fullReferenceRange = QVNotFoundRange();
    if (openingString.isEmpty() || closingString.isEmpty() || range.length == 0)
        return QVNotFoundRange();

    // Pairs are read forwards: a backwards search would meet the closing
    // string first. Anchoring ties the opening string to the range's start;
    // the closing string may come anywhere after it. Nesting is not tracked:
    // the first opening string pairs with the next closing string, so
    // "((a) b)" gives "(a".
    const QVStringCompareOptions openingOptions = options & ~quint64(QVBackwardsSearch);
    const QVStringCompareOptions closingOptions = openingOptions & ~quint64(QVAnchoredSearch);

    const QVRange opening = findBetweenOccurrence(text, openingString, matchOptions, openingOptions, range, locale);
    if (!isFound(opening))
        return QVNotFoundRange();
    const QVRange rest = QVRangeAdjustForSubsequentFind(range, opening, closingOptions);
    if (rest.length == 0)
        return QVNotFoundRange();
    const QVRange closing = findBetweenOccurrence(text, closingString, matchOptions, closingOptions, rest, locale);
    if (!isFound(closing))
        return QVNotFoundRange();

    const QVRange full = QVMakeRange(opening.location, QVMaxRange(closing) - opening.location);
    if (fullReferenceRange)
        *fullReferenceRange = full;
    if (includeSearchStrings)
        return full;
    return QVMakeRange(QVMaxRange(opening), closing.location - QVMaxRange(opening));
}

QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                           bool includeSearchStrings, QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                           QVRange range)
{
    return rangeBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions, options, range,
                              std::nullopt);
}

QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                           bool includeSearchStrings, QVStringMatchOptions matchOptions, QVStringCompareOptions options)
{
    return rangeBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions, options,
                              fullRange(text), std::nullopt);
}

QVRange simpleRangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                 bool includeSearchStrings, QVStringCompareOptions options, QVRange range,
                                 const std::optional<QLocale> &locale)
{
    // Without match options the richer search is exactly the plain one.
    return rangeBetweenString(text, openingString, closingString, includeSearchStrings, 0, options, range, locale);
}

QVRange simpleRangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                 bool includeSearchStrings, QVStringCompareOptions options, QVRange range)
{
    return simpleRangeBetweenString(text, openingString, closingString, includeSearchStrings, options, range,
                                    std::nullopt);
}

QVRange simpleRangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                 bool includeSearchStrings, QVStringCompareOptions options)
{
    return simpleRangeBetweenString(text, openingString, closingString, includeSearchStrings, options, fullRange(text),
                                    std::nullopt);
}

QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                        QVStringCompareOptions options, QVRange range,
                                        const std::optional<QLocale> &locale)
{
    if (openingString.isEmpty() || closingString.isEmpty() || range.length == 0)
        return std::nullopt;
    const QVStringCompareOptions forwards = options & ~quint64(QVBackwardsSearch);
    QVRangeList found;
    QVRange searchRange = range;
    for (;;) {
        QVRange full;
        const QVRange between = rangeBetweenString(text, openingString, closingString, includeSearchStrings,
                                                   matchOptions, forwards, searchRange, locale, &full);
        if (!isFound(between))
            break;
        found.append(between);
        // The next pair starts after this one's closing string.
        searchRange = QVRangeAdjustForSubsequentFind(searchRange, full, forwards);
        if (searchRange.length == 0)
            break;
    }
    if (found.isEmpty())
        return std::nullopt;
    return found;
}

QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                        QVStringCompareOptions options, QVRange range)
{
    return rangesBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions, options, range,
                               std::nullopt);
}

QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                        QVStringCompareOptions options)
{
    return rangesBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions, options,
                               fullRange(text), std::nullopt);
}

QString substringBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                               bool includeSearchStrings, QVStringMatchOptions matchOptions,
                               QVStringCompareOptions options, QVRange range, const std::optional<QLocale> &locale)
{
    const QVRange between = rangeBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions,
                                               options, range, locale);
    if (!isFound(between))
        return QString();
    return substringWithRange(text, between);
}


QString substringBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                               bool includeSearchStrings, QVStringMatchOptions matchOptions,
                               QVStringCompareOptions options)
{
    return substringBetweenString(text, openingString, closingString, includeSearchStrings, matchOptions, options,
                                  fullRange(text), std::nullopt);
}

// ---- Range tests -----------------------------------------------------------

bool isRangePrecededAndFollowed(const QString &text, QVRange range, const QString &precededByString,
                                const QString &followedByString,
                                const std::optional<QVCharacterSet> &precededByCharacterSet,
                                const std::optional<QVCharacterSet> &followedByCharacterSet,
                                QVStringCompareOptions options, QVRangeTestOperation operation, QVRange *referenceRange)
{
    // A not-found location with a length is no more a place in the text than
    // {QVNotFound, 0}: answer it the same way rather than stop.
    if (range.location == QVNotFound || range.length == 0)
        return false;
    QV_ASSERT_TEXT(isRangeInText(text, range), "NSMaxRange(range) <= self.length");
    QV_ASSERT_TEXT(quint64(operation) < 3, "hasValidOption");

    const quint64 length = lengthOf(text);
    const quint64 location = range.location;
    const quint64 maximum = QVMaxRange(range);
    bool hasPreceding = false;
    bool hasFollowing = false;
    QVRange precedingMatch = QVNotFoundRange();
    QVRange followingMatch = QVNotFoundRange();

    if (!precededByString.isNull() || !followedByString.isNull()) {
        const QVStringCompareOptions stringOptions = options & ~quint64(QVBackwardsSearch | QVAnchoredSearch);
        hasPreceding = !precededByString.isNull();
        hasFollowing = !followedByString.isNull();
        const quint64 precedingLength = lengthOf(precededByString);
        const quint64 followingLength = lengthOf(followedByString);
        if (hasPreceding && precedingLength <= location) {
            precedingMatch = rangeOfString(text, precededByString, stringOptions,
                                           QVMakeRange(location - precedingLength, precedingLength));
        }
        if (hasFollowing && followingLength <= length - maximum) {
            followingMatch
                = rangeOfString(text, followedByString, stringOptions, QVMakeRange(maximum, followingLength));
        }
    } else if (precededByCharacterSet || followedByCharacterSet) {
        hasPreceding = precededByCharacterSet.has_value();
        hasFollowing = followedByCharacterSet.has_value();
        // Anchored at the range: the character right before (after) it must
        // belong to the set.
        if (hasPreceding) {
            precedingMatch
                = rangeOfCharacterFromSet(text, *precededByCharacterSet, options | QVBackwardsSearch | QVAnchoredSearch,
                                          QVMakeRange(0, location));
        }
        if (hasFollowing) {
            followingMatch = rangeOfCharacterFromSet(text, *followedByCharacterSet,
                                                     (options & ~quint64(QVBackwardsSearch)) | QVAnchoredSearch,
                                                     QVMakeRange(maximum, length - maximum));
        }
    }

    const bool precedingPassed = isFound(precedingMatch);
    const bool followingPassed = isFound(followingMatch);
    if (referenceRange) {
        QVRange reference = range;
        if (precedingPassed)
            reference = QVUnionRange(reference, precedingMatch);
        if (followingPassed)
            reference = QVUnionRange(reference, followingMatch);
        *referenceRange = reference;
    }
    if (!hasPreceding && !hasFollowing)
        return false;

    const bool any = (hasPreceding && precedingPassed) || (hasFollowing && followingPassed);
    switch (operation) {
    case QVRangeTestAll:
        return (!hasPreceding || precedingPassed) && (!hasFollowing || followingPassed);
    case QVRangeTestAny:
        return any;
    case QVRangeTestNone:
        return !any;
    }
    return false;
}

bool isRangePrecededByString(const QString &text, QVRange range, const QString &precededByString,
                             const QString &followedByString, QVStringCompareOptions options, QVRange *referenceRange)
{
    return isRangePrecededAndFollowed(text, range, precededByString, followedByString, std::nullopt, std::nullopt,
                                      options, QVRangeTestAll, referenceRange);
}

bool isRangePrecededByCharacterSet(const QString &text, QVRange range,
                                   const std::optional<QVCharacterSet> &precededByCharacterSet,
                                   const std::optional<QVCharacterSet> &followedByCharacterSet,
                                   QVStringCompareOptions options, QVRange *referenceRange)
{
    return isRangePrecededAndFollowed(text, range, QString(), QString(), precededByCharacterSet, followedByCharacterSet,
                                      options, QVRangeTestAll, referenceRange);
}

bool isRangeDelimitedByString(const QString &text, QVRange range, const QString &delimiter,
                              QVStringCompareOptions options)
{
    if (range.length == 0 || delimiter.isEmpty())
        return false;
    if (!isRangePrecededByString(text, range, delimiter, QString(), options))
        return false;
    // The run of delimiters that ends right at the range: searching backwards
    // from the range, anchored to it, and taking in every touching repeat.
    const QVStringCompareOptions runOptions
        = (options & ~quint64(QVAnchoredSearch)) | QVBackwardsSearch | QVAnchoredSearch;
    const QVRange run = greedyRangeOfString(text, delimiter, runOptions, rangeBeforeRange(text, range));
    return isFound(run) && run.length % 2 == 1;
}

bool isRangeDelimited(const QString &text, QVRange range)
{
    return isRangeDelimitedByString(text, range, u"\\"_s, 0);
}

QVRange rangeBeforeRange(const QString &text, QVRange range)
{
    // Clipped, so that a not-found or far range still names text that exists.
    return QVMakeRange(0, qMin(range.location, lengthOf(text)));
}

QVRange rangeAfterRange(const QString &text, QVRange range)
{
    const quint64 length = lengthOf(text);
    // Nothing follows a range that is not in the text: answer the empty range
    // at the end rather than one that reaches past it.
    if (range.location == QVNotFound || !isRangeInText(text, range))
        return QVMakeRange(length, 0);
    return QVMakeRange(QVMaxRange(range), length - QVMaxRange(range));
}

bool isCharacterIndexValid(const QString &text, quint64 index)
{
    return !text.isEmpty() && index < lengthOf(text);
}

QVRange safeRangeFromRange(const QString &text, QVRange range)
{
    return isRangeInText(text, range) ? range : QVNotFoundRange();
}

QVRange safeRangeLeft(const QString &text, quint64 count, QVRange range)
{
    // The range itself must start in the text for what lies before it to be text.
    if (range.location < count || range.location > lengthOf(text))
        return QVNotFoundRange();
    return QVMakeRange(range.location - count, count);
}

QVRange safeRangeRight(const QString &text, quint64 count, QVRange range)
{
    if (!isRangeInText(text, range) || count > lengthOf(text) - QVMaxRange(range))
        return QVNotFoundRange();
    return QVMakeRange(QVMaxRange(range), count);
}

QVRangeList ensureComposedCharacterRanges(const QString &text, const QVRangeList &ranges)
{
    QVRangeList widened;
    bool changed = false;
    for (qsizetype i = 0; i < ranges.size(); ++i) {
        const QVRange range = ranges.at(i);
        QVRange value = range;
        // Ranges outside the text have no characters to widen to; they stay as given.
        if (range.location != QVNotFound && isRangeInText(text, range)) {
            if (range.length == 0) {
                if (range.location < lengthOf(text))
                    value = QVMakeRange(rangeOfComposedCharacterSequenceAtIndex(text, range.location).location, 0);
            } else {
                value = rangeOfComposedCharacterSequencesForRange(text, range);
            }
        }
        // Boxing a widened range cannot fail with value types, so the
        // "newValue != nil" check has nothing to guard here.
        if (!changed && value != range) {
            changed = true;
            widened.reserve(ranges.size());
            widened.append(ranges.mid(0, i));
        }
        if (changed)
            widened.append(value);
    }
    // Unchanged: hand back the caller's own list, sharing its data.
    return changed ? widened : ranges;
}

QString composedSubstringWithRange(const QString &text, QVRange range)
{
    const std::optional<QVRange> clipped = clippedRange(text, range);
    if (!clipped)
        return QString();
    if (clipped->length == 0)
        return QString(u""_s);
    return substringWithRange(text, rangeOfComposedCharacterSequencesForRange(text, *clipped));
}

QString composedSubstringAtIndex(const QString &text, quint64 index)
{
    if (index >= lengthOf(text))
        return QString();
    return substringWithRange(text, rangeOfComposedCharacterSequenceAtIndex(text, index));
}

QString composedSubstringFromIndex(const QString &text, quint64 index)
{
    if (index > lengthOf(text))
        return QString();
    return composedSubstringWithRange(text, QVMakeRange(index, lengthOf(text) - index));
}

QString composedSubstringToIndex(const QString &text, quint64 index)
{
    if (index > lengthOf(text))
        return QString();
    return composedSubstringWithRange(text, QVMakeRange(0, index));
}

// The substrings the options enumerate in the range, counted up to limit.
quint64 countSubstrings(const QString &text, QVStringEnumerationOptions options, QVRange range, quint64 limit)
{
    const std::optional<QVRange> clipped = clippedRange(text, range);
    if (!clipped || clipped->length == 0)
        return 0;
    quint64 count = 0;
    enumerateSubstringsInRange(text, *clipped, options | QVStringEnumerationSubstringNotRequired,
                               [&count, limit](const QString &, QVRange, QVRange, bool *stop) {
                                   if (++count >= limit)
                                       *stop = true;
                               });
    return count;
}

QStringList substringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options, QVRange range)
{
    QStringList substrings;
    const std::optional<QVRange> clipped = clippedRange(text, range);
    if (!clipped || clipped->length == 0)
        return substrings;
    // The substrings are the point here, whatever the options say.
    enumerateSubstringsInRange(
        text, *clipped, options & ~quint64(QVStringEnumerationSubstringNotRequired),
        [&substrings](const QString &substring, QVRange, QVRange, bool *) { substrings.append(substring); });
    return substrings;
}

QStringList substringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options)
{
    return substringsEnumeratedByOptions(text, options, fullRange(text));
}

quint64 countOfSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options, QVRange range)
{
    return countSubstrings(text, options, range, std::numeric_limits<quint64>::max());
}

quint64 countOfSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options)
{
    return countOfSubstringsEnumeratedByOptions(text, options, fullRange(text));
}

bool hasMultipleSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options, QVRange range)
{
    return countSubstrings(text, options, range, 2) >= 2;
}

bool hasMultipleSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options)
{
    return hasMultipleSubstringsEnumeratedByOptions(text, options, fullRange(text));
}

bool isMultiWord(const QString &text)
{
    return isMultiWordInRange(text, fullRange(text));
}

bool isMultiLine(const QString &text)
{
    return isMultiLineInRange(text, fullRange(text));
}

bool isMultiParagraph(const QString &text)
{
    return isMultiParagraphInRange(text, fullRange(text));
}

bool isMultiSentence(const QString &text)
{
    return isMultiSentenceInRange(text, fullRange(text));
}

bool isMultiWordInRange(const QString &text, QVRange range)
{
    return hasMultipleSubstringsEnumeratedByOptions(text, QVStringEnumerationByWords, range);
}

bool isMultiLineInRange(const QString &text, QVRange range)
{
    return hasMultipleSubstringsEnumeratedByOptions(text, QVStringEnumerationByLines, range);
}

bool isMultiParagraphInRange(const QString &text, QVRange range)
{
    return hasMultipleSubstringsEnumeratedByOptions(text, QVStringEnumerationByParagraphs, range);
}

bool isMultiSentenceInRange(const QString &text, QVRange range)
{
    return hasMultipleSubstringsEnumeratedByOptions(text, QVStringEnumerationBySentences, range);
}

QVRangeList lineRangesFromRanges(const QString &text, const QVRangeList &ranges, quint64 options)
{
    return rangesForType(text, RangeType::Lines, ranges, options);
}

QVRangeList paragraphRangesFromRanges(const QString &text, const QVRangeList &ranges, quint64 options)
{
    return rangesForType(text, RangeType::Paragraphs, ranges, options);
}

QString stringByTruncatingFromEndWithLength(const QString &text, quint64 length, quint64 options)
{
    const quint64 textLength = lengthOf(text);
    quint64 start = textLength - qMin(textLength, length);
    if (start == 0)
        return text;
    if (options & QVStringTruncateOptionWholeLines) {
        const QChar before = text.at(qsizetype(start - 1));
        if (!newlineSet().characterIsMember(before.unicode())) {
            const QVRange lineBreak
                = rangeOfCharacterFromSet(text, newlineSet(), 0, QVMakeRange(start, textLength - start));
            if (isFound(lineBreak))
                start = QVMaxRange(lineBreak);
        }
        // CR LF is one line break: never keep a line that starts with the LF of one.
        if (start < textLength && text.at(qsizetype(start - 1)) == u'\r' && text.at(qsizetype(start)) == u'\n')
            ++start;
    }
    return text.mid(qsizetype(start));
}

QString stringByRepeatingString(const QString &string, quint64 repeatCount)
{
    if (repeatCount == 0 || string.isEmpty())
        return QString();
    // QString counts in qsizetype; a product beyond what it can hold would
    // overflow before any allocation could fail cleanly.
    const quint64 largest = quint64(std::numeric_limits<qsizetype>::max()) / sizeof(QChar) / 2;
    if (repeatCount > largest / lengthOf(string)) {
        QVLog("%s: repeating a string of %llu code units %llu times would exceed the largest string. Fix this.",
              "QVString::stringByRepeatingString", lengthOf(string), repeatCount);
        return QString();
    }
    return string.repeated(qsizetype(repeatCount));
}

} // namespace QVString
