#pragma once

#include <QVKit/Platform/QVCharacterSet.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/Platform/QVStringPlatform.h>

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <optional>

/** The edge of a string that an edge operation looks at. */
enum QVStringEdge : quint64 {
    QVStringEdgeStart = 0,
    QVStringEdgeEnd = 1,
};

/** Options of the prefix and suffix operations (bit mask). */
enum QVStringEdgeOption : quint64 {
    /** Skip whitespace and newlines at that edge before matching. */
    QVStringEdgeOptionIgnoreWhitespace = 1,
    QVStringEdgeOptionCaseInsensitive = 2,
    QVStringEdgeOptionDiacriticInsensitive = 4,
    /** Match a contiguous run of repeats of the string. */
    QVStringEdgeOptionGreedy = 8,
};
using QVStringEdgeOptions = quint64;

/** Which edges rangeByTrimmingCharacterSet trims (bit mask). */
enum QVTrimOption : quint64 {
    QVTrimOptionStart = 1,
    QVTrimOptionEnd = 2,
};
using QVTrimOptions = quint64;

/** How the preceded/followed test combines the tests it was given. */
enum QVRangeTestOperation : quint64 {
    /** Every test that was given passes. */
    QVRangeTestAll = 0,
    /** At least one given test passes. */
    QVRangeTestAny = 1,
    /** No given test passes. */
    QVRangeTestNone = 2,
};

/**
 * Match options of the rangeBetweenString family (bit mask), beside the
 * compare options.
 *
 * Only these bits have a meaning; any other bit is ignored. Greedy matching
 * needs both QVStringMatchOptionGreedy and QVStringMatchOptionRepeats
 * (QVStringMatchOptionGreedyRepeats), so that either bit alone leaves the
 * search plain.
 */
enum QVStringMatchOption : quint64 {
    /** With QVStringMatchOptionRepeats: an opening or closing string matches a whole run of its repeats. */
    QVStringMatchOptionGreedy = 4,
    /** Skip an opening or closing string escaped by an odd run of backslashes (isRangeDelimited). */
    QVStringMatchOptionSkipEscaped = 8,
    /** With QVStringMatchOptionGreedy: see there. */
    QVStringMatchOptionRepeats = 16,
    QVStringMatchOptionGreedyRepeats = QVStringMatchOptionGreedy | QVStringMatchOptionRepeats,
};
using QVStringMatchOptions = quint64;

/** Called for each match of enumerateRangeOfString; set *stop to end the enumeration. */
using QVStringRangeBlock = std::function<void(QVRange range, bool *stop)>;

/**
 * Search, edge and range-test operations on QString (the string additions).
 *
 * Indexes and lengths count UTF-16 code units; "characters" are composed
 * character sequences. A failed search answers QVNotFoundRange(), a list that
 * would hold nothing is std::nullopt where the difference matters, and a
 * string that does not exist is a null QString. Each family's short forms pass
 * options 0, the full range {0, length} and no locale to the fullest form.
 * Character sets are optional: std::nullopt stands for "no set".
 */
namespace QVString {

// ---- Edges -----------------------------------------------------------------

/**
 * The match of string at the given edge under the edge options; {QVNotFound, 0}
 * for an empty string or no match. With QVStringEdgeOptionIgnoreWhitespace the
 * match may start (or end) after whitespace at that edge. Any edge other than
 * start or end is a programming error.
 */
QVKIT_EXPORT QVRange rangeOfPrefixAtEdge(const QString &text, const QString &string, QVStringEdge stringEdge,
                                         QVStringEdgeOptions options);
/** True when rangeOfPrefixAtEdge (without the greedy bit) finds a non-empty match. */
QVKIT_EXPORT bool hasStringAtEdge(const QString &text, const QString &string, QVStringEdge stringEdge,
                                  QVStringEdgeOptions options);

/** True when the text starts with prefix; an empty prefix is never a prefix. */
QVKIT_EXPORT bool hasPrefix(const QString &text, const QString &prefix, QVStringEdgeOptions options = 0);
QVKIT_EXPORT bool hasSuffix(const QString &text, const QString &suffix, QVStringEdgeOptions options = 0);
QVKIT_EXPORT QVRange rangeOfPrefix(const QString &text, const QString &prefix, QVStringEdgeOptions options = 0);
QVKIT_EXPORT QVRange rangeOfSuffix(const QString &text, const QString &suffix, QVStringEdgeOptions options = 0);

/**
 * The text without its prefix (suffix), or the text itself when it has none.
 * Removes as many code units from the very edge as the match is long, even
 * when leading whitespace was skipped: "  ab" stripped of "ab" ignoring
 * whitespace gives "ab".
 */
QVKIT_EXPORT QString stringByStrippingPrefix(const QString &text, const QString &prefix,
                                             QVStringEdgeOptions options = 0);
QVKIT_EXPORT QString stringByStrippingSuffix(const QString &text, const QString &suffix,
                                             QVStringEdgeOptions options = 0);

/**
 * The range left after trimming characters of the set at the edges named by
 * the trim options; the full range for no set, and also for a text made only
 * of characters of the set (such a text is deliberately not trimmed).
 */
QVKIT_EXPORT QVRange rangeByTrimmingCharacterSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                 QVTrimOptions options);
/** Trims whitespace and newlines at both edges, the start only, the end only. */
QVKIT_EXPORT QVRange trimmedRange(const QString &text);
QVKIT_EXPORT QVRange trimmedStartRange(const QString &text);
QVKIT_EXPORT QVRange trimmedEndRange(const QString &text);
/** The text of trimmedRange; the text itself when nothing is trimmed. */
QVKIT_EXPORT QString stringByTrimmingString(const QString &text);

// ---- Searching -------------------------------------------------------------

/**
 * The contiguous run of repeats of search that starts at the first match (ends
 * at the last, for backwards searches); {QVNotFound, 0} when there is none.
 */
QVKIT_EXPORT QVRange greedyRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                         QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT QVRange greedyRangeOfString(const QString &text, const QString &search,
                                         QVStringCompareOptions options = 0);

/**
 * Every match in search order (descending for backwards searches); std::nullopt
 * for an empty text or search string, an empty range or no match.
 */
QVKIT_EXPORT QVOptionalRangeList rangesOfString(const QString &text, const QString &search,
                                                QVStringCompareOptions options, QVRange range,
                                                const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT QVOptionalRangeList rangesOfString(const QString &text, const QString &search,
                                                QVStringCompareOptions options = 0);

/**
 * Calls block with each match until it sets its stop flag. Forward searches go
 * on after each match, backwards searches before it. Nothing happens without
 * a block or with an empty search string.
 */
QVKIT_EXPORT void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                         QVRange range, const std::optional<QLocale> &locale,
                                         const QVStringRangeBlock &block);
QVKIT_EXPORT void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                         QVRange range, const QVStringRangeBlock &block);
QVKIT_EXPORT void enumerateRangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                         const QVStringRangeBlock &block);
QVKIT_EXPORT void enumerateRangeOfString(const QString &text, const QString &search, const QVStringRangeBlock &block);

/** The number of matches that enumerateRangeOfString visits. */
QVKIT_EXPORT quint64 countOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                   QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT quint64 countOfString(const QString &text, const QString &search, QVStringCompareOptions options = 0);

QVKIT_EXPORT bool containsString(const QString &text, const QString &search, QVStringCompareOptions options,
                                 QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT bool containsString(const QString &text, const QString &search, QVStringCompareOptions options = 0);

/**
 * True when the whole range (the whole text) equals string under the options.
 * An empty string matches only an empty range; a range past the end never matches.
 */
QVKIT_EXPORT bool matchesString(const QString &text, const QString &string, QVStringCompareOptions options,
                                QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT bool matchesString(const QString &text, const QString &string, QVStringCompareOptions options = 0);
QVKIT_EXPORT bool matchesStringCaseInsensitive(const QString &text, const QString &string);

/** Each single character of the set in the range, in search order; std::nullopt when there is none. */
QVKIT_EXPORT QVOptionalRangeList rangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                          QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVOptionalRangeList rangesOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                          QVStringCompareOptions options = 0);

/**
 * The first contiguous run of characters from the set (the last, backwards).
 * Only the backwards and anchored options are used.
 */
QVKIT_EXPORT QVRange fullRangeOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                 QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVRange fullRangeOfCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                                 QVStringCompareOptions options = 0);
/** Every run that fullRangeOfCharacterFromSet would find, in search order; std::nullopt when there is none. */
QVKIT_EXPORT QVOptionalRangeList fullRangesOfCharacterFromSet(const QString &text,
                                                              const std::optional<QVCharacterSet> &set,
                                                              QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVOptionalRangeList fullRangesOfCharacterFromSet(const QString &text,
                                                              const std::optional<QVCharacterSet> &set,
                                                              QVStringCompareOptions options = 0);

/**
 * True when the range holds a character of the set; with exclusivelyContains,
 * when it holds nothing else. False for no set and for an empty range.
 */
QVKIT_EXPORT bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                           QVStringCompareOptions options, QVRange range, bool exclusivelyContains);
QVKIT_EXPORT bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                           QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT bool containsCharacterFromSet(const QString &text, const std::optional<QVCharacterSet> &set,
                                           QVStringCompareOptions options = 0);

// ---- Between an opening and a closing string -------------------------------

/**
 * The range between the first openingString and the next closingString after
 * it, with or without the two strings; {QVNotFound, 0} when either string or
 * the range is empty, or when either is not found. Pairs are always read
 * forwards: the backwards option is ignored, and anchored applies to the
 * opening string only.
 */
QVKIT_EXPORT QVRange simpleRangeBetweenString(const QString &text, const QString &openingString,
                                              const QString &closingString, bool includeSearchStrings,
                                              QVStringCompareOptions options, QVRange range,
                                              const std::optional<QLocale> &locale);
QVKIT_EXPORT QVRange simpleRangeBetweenString(const QString &text, const QString &openingString,
                                              const QString &closingString, bool includeSearchStrings,
                                              QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVRange simpleRangeBetweenString(const QString &text, const QString &openingString,
                                              const QString &closingString, bool includeSearchStrings = false,
                                              QVStringCompareOptions options = 0);

/**
 * As simpleRangeBetweenString, with match options (QVStringMatchOption):
 * escaped strings can be skipped and runs of repeats matched greedily. When
 * fullReferenceRange is given it receives the range including both strings
 * ({QVNotFound, 0} when nothing is found). Nesting is not tracked: the first
 * opening string pairs with the next closing string.
 */
QVKIT_EXPORT QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                        QVStringCompareOptions options, QVRange range,
                                        const std::optional<QLocale> &locale, QVRange *fullReferenceRange = nullptr);
QVKIT_EXPORT QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                        QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVRange rangeBetweenString(const QString &text, const QString &openingString, const QString &closingString,
                                        bool includeSearchStrings = false, QVStringMatchOptions matchOptions = 0,
                                        QVStringCompareOptions options = 0);

/** Every pair in order, each search going on after the previous closing string; std::nullopt when there is none. */
QVKIT_EXPORT QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString,
                                                     const QString &closingString, bool includeSearchStrings,
                                                     QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                                                     QVRange range, const std::optional<QLocale> &locale);
QVKIT_EXPORT QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString,
                                                     const QString &closingString, bool includeSearchStrings,
                                                     QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                                                     QVRange range);
QVKIT_EXPORT QVOptionalRangeList rangesBetweenString(const QString &text, const QString &openingString,
                                                     const QString &closingString, bool includeSearchStrings = false,
                                                     QVStringMatchOptions matchOptions = 0,
                                                     QVStringCompareOptions options = 0);

/** The text of rangeBetweenString; a null QString when nothing is found. */
QVKIT_EXPORT QString substringBetweenString(const QString &text, const QString &openingString,
                                            const QString &closingString, bool includeSearchStrings,
                                            QVStringMatchOptions matchOptions, QVStringCompareOptions options,
                                            QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT QString substringBetweenString(const QString &text, const QString &openingString,
                                            const QString &closingString, bool includeSearchStrings = false,
                                            QVStringMatchOptions matchOptions = 0, QVStringCompareOptions options = 0);

// ---- Range tests -----------------------------------------------------------

/**
 * The preceded/followed test. Strings, when either is given (not null), are
 * tested right before and right after the range and the sets are ignored;
 * otherwise the character just before and just after the range is tested
 * against the sets. The operation combines the tests that were given; with
 * no test at all the answer is false, as it is for an empty or not-found
 * range. When referenceRange is given it receives the range united with the
 * matches that passed. A range past the end of the text and an operation
 * other than QVRangeTestAll/Any/None are programming errors.
 */
QVKIT_EXPORT bool isRangePrecededAndFollowed(const QString &text, QVRange range, const QString &precededByString,
                                             const QString &followedByString,
                                             const std::optional<QVCharacterSet> &precededByCharacterSet,
                                             const std::optional<QVCharacterSet> &followedByCharacterSet,
                                             QVStringCompareOptions options, QVRangeTestOperation operation,
                                             QVRange *referenceRange = nullptr);
/** The test above with strings only and QVRangeTestAll. */
QVKIT_EXPORT bool isRangePrecededByString(const QString &text, QVRange range, const QString &precededByString,
                                          const QString &followedByString, QVStringCompareOptions options = 0,
                                          QVRange *referenceRange = nullptr);
/** The test above with character sets only and QVRangeTestAll. */
QVKIT_EXPORT bool isRangePrecededByCharacterSet(const QString &text, QVRange range,
                                                const std::optional<QVCharacterSet> &precededByCharacterSet,
                                                const std::optional<QVCharacterSet> &followedByCharacterSet,
                                                QVStringCompareOptions options = 0, QVRange *referenceRange = nullptr);

/**
 * True when the range is escaped: preceded by a run of the delimiter whose
 * length in code units is odd. False for an empty range or delimiter.
 */
QVKIT_EXPORT bool isRangeDelimitedByString(const QString &text, QVRange range, const QString &delimiter,
                                           QVStringCompareOptions options = 0);
/** isRangeDelimitedByString with a single backslash: "\\x" is escaped, "\\\\x" is not. */
QVKIT_EXPORT bool isRangeDelimited(const QString &text, QVRange range);

/** {0, location}, the location clipped to the text's length. */
QVKIT_EXPORT QVRange rangeBeforeRange(const QString &text, QVRange range);
/** {maximum, length - maximum}; {length, 0} for a not-found range or one past the end. */
QVKIT_EXPORT QVRange rangeAfterRange(const QString &text, QVRange range);
/** True when the text is non-empty and index lies below its length. */
QVKIT_EXPORT bool isCharacterIndexValid(const QString &text, quint64 index);
/** The range itself when it lies within the text, else {QVNotFound, 0}. */
QVKIT_EXPORT QVRange safeRangeFromRange(const QString &text, QVRange range);
/** The count code units just before the range, or {QVNotFound, 0} when they are not all in the text. */
QVKIT_EXPORT QVRange safeRangeLeft(const QString &text, quint64 count, QVRange range);
/** The count code units just after the range, or {QVNotFound, 0} when they are not all in the text. */
QVKIT_EXPORT QVRange safeRangeRight(const QString &text, quint64 count, QVRange range);

/**
 * Each range widened to whole composed character sequences (an empty range
 * stays empty and moves to its character's start). When nothing changes the
 * input list itself is returned, sharing its data.
 */
QVKIT_EXPORT QVRangeList ensureComposedCharacterRanges(const QString &text, const QVRangeList &ranges);

/**
 * Substrings whose edges are widened to whole composed character sequences;
 * a null QString for a location (index) past the end.
 */
QVKIT_EXPORT QString composedSubstringWithRange(const QString &text, QVRange range);
QVKIT_EXPORT QString composedSubstringAtIndex(const QString &text, quint64 index);
QVKIT_EXPORT QString composedSubstringFromIndex(const QString &text, quint64 index);
QVKIT_EXPORT QString composedSubstringToIndex(const QString &text, quint64 index);

/** The substrings the platform's substring enumeration yields for the options in the range. */
QVKIT_EXPORT QStringList substringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options,
                                                       QVRange range);
QVKIT_EXPORT QStringList substringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options);
QVKIT_EXPORT quint64 countOfSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options,
                                                          QVRange range);
QVKIT_EXPORT quint64 countOfSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options);
/** True when the enumeration yields at least two items; it stops at the second. */
QVKIT_EXPORT bool hasMultipleSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options,
                                                           QVRange range);
QVKIT_EXPORT bool hasMultipleSubstringsEnumeratedByOptions(const QString &text, QVStringEnumerationOptions options);

QVKIT_EXPORT bool isMultiWord(const QString &text);
QVKIT_EXPORT bool isMultiLine(const QString &text);
QVKIT_EXPORT bool isMultiParagraph(const QString &text);
QVKIT_EXPORT bool isMultiSentence(const QString &text);
QVKIT_EXPORT bool isMultiWordInRange(const QString &text, QVRange range);
QVKIT_EXPORT bool isMultiLineInRange(const QString &text, QVRange range);
QVKIT_EXPORT bool isMultiParagraphInRange(const QString &text, QVRange range);
QVKIT_EXPORT bool isMultiSentenceInRange(const QString &text, QVRange range);

/**
 * Each range expanded to the whole lines (paragraphs) it touches, line breaks
 * included, then sanitized (sorted, merged) with the sanitize options
 * (0 means every step). Not-found ranges and ranges starting past the end are
 * left out.
 */
QVKIT_EXPORT QVRangeList lineRangesFromRanges(const QString &text, const QVRangeList &ranges, quint64 options = 0);
QVKIT_EXPORT QVRangeList paragraphRangesFromRanges(const QString &text, const QVRangeList &ranges, quint64 options = 0);

/** Option of stringByTruncatingFromEndWithLength: start the kept part at a line's start. */
inline constexpr quint64 QVStringTruncateOptionWholeLines = 1;

/**
 * The last length code units of the text (the text itself when it is not
 * longer). With QVStringTruncateOptionWholeLines a cut inside a line moves to
 * the start of the next line, when there is one.
 */
QVKIT_EXPORT QString stringByTruncatingFromEndWithLength(const QString &text, quint64 length, quint64 options = 0);

/** string repeated repeatCount times; a null QString for a count of 0 or an empty string. */
QVKIT_EXPORT QString stringByRepeatingString(const QString &string, quint64 repeatCount);

} // namespace QVString
