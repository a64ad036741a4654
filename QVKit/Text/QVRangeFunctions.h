#pragma once

#include <QVKit/QVKitExport.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/Platform/QVStringPlatform.h>

/**
 * Free functions on lists of ranges: sanitizing (filter, sort, merge),
 * subtracting one list from another, and narrowing a search range after a
 * match so that a search loop can go on.
 *
 * Ranges whose maximum passes 2^64 - 1 (location + length wraps) cannot
 * address any text. These functions never crash or loop on them; they treat
 * such a range as apart from every other range: it never overlaps, touches
 * or merges with a neighbour and meets no subtrahend, so it passes through
 * as given (the empty and not-found filters still apply to it).
 */

/** The steps of QVRangeSanitizeWithOptions; 0 stands for all four. */
enum QVRangeSanitizeOption : quint64 {
    QVRangeSanitizeOptionSort = 1,
    QVRangeSanitizeOptionRemoveEmpty = 2,
    QVRangeSanitizeOptionRemoveNotFound = 4,
    QVRangeSanitizeOptionMerge = 8,
};
using QVRangeSanitizeOptions = quint64;

/** QVRangeSanitizeWithOptions with options 0: every step. */
QVKIT_EXPORT QVRangeList QVRangeSanitize(const QVRangeList &ranges);

/**
 * Applies the selected steps in this order: drop ranges of length 0
 * (RemoveEmpty) and ranges at QVNotFound (RemoveNotFound), keeping the order;
 * sort stably by location, then length (Sort); merge each range with the
 * following ones while they overlap or touch (Merge). Merging assumes sorted
 * input and does not sort by itself.
 *
 * Lists of 100 ranges or more are filtered and sorted on several threads,
 * with the same result as one thread gives. When no step changes anything,
 * the input list itself is returned (it shares its data: nothing is
 * allocated).
 */
QVKIT_EXPORT QVRangeList QVRangeSanitizeWithOptions(const QVRangeList &ranges, QVRangeSanitizeOptions options);

/**
 * Removes the subtrahends from the ranges, for lists that are sorted and free
 * of overlaps. An absent list gives an absent list; no subtrahends (absent or
 * empty) give the list unchanged; a result without ranges is absent.
 *
 * Two deliberate quirks: only the first range gets a piece before the first
 * subtrahend, and that piece runs up to the subtrahend's location even when
 * the subtrahend lies wholly after the range; of a later range, the part
 * before the first subtrahend it meets is dropped. A range that meets no
 * subtrahend is kept whole. The result is sanitized with every step.
 */
QVKIT_EXPORT QVOptionalRangeList QVRangeSubtract(const QVOptionalRangeList &ranges,
                                                 const QVOptionalRangeList &subtrahends);

/**
 * The part of searchRange in which to look for the next occurrence after
 * foundRange: the part after the match, or before it with QVBackwardsSearch.
 * Gives {0, 0} (which ends a search loop) for an empty search range, a
 * not-found match, a match outside the search range, or either range wrapping
 * past 2^64 - 1.
 */
QVKIT_EXPORT QVRange QVRangeAdjustForSubsequentFind(QVRange searchRange, QVRange foundRange,
                                                    QVStringCompareOptions options);
