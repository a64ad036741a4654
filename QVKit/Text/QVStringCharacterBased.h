#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/** The side towards which a range is extended. */
enum QVCharacterDirection : quint64 {
    QVCharacterDirectionLeft = 0,  ///< towards the start
    QVCharacterDirectionRight = 1, ///< towards the end
};

/**
 * The side a pad or truncate operation works on. Padding puts its padding on
 * the named side; truncating keeps the named side (Start keeps the first
 * characters, End the last), so the two read in opposite senses.
 */
enum QVStringDirection : quint64 {
    QVStringDirectionStart = 0,
    QVStringDirectionEnd = 1,
};

/**
 * Character-based editing of QString: ranges extended, padded, truncated and
 * split by user-perceived characters (composed character sequences, so an
 * emoji, a flag or a letter with its combining marks counts once) rather than
 * by UTF-16 code units. Indexes and ranges still count code units.
 *
 * Each immutable `stringBy…` form copies the text, applies the mutating form
 * to the copy and returns it.
 */
namespace QVString {

/**
 * Extends range by count characters towards the left or right. {QVNotFound, 0}
 * or a range reaching past the end gives {QVNotFound, 0}; the string's edge
 * stops the extension. Any other direction is a programming error.
 */
QVKIT_EXPORT QVRange extendRangeInDirection(const QString &text, QVRange range, quint64 characterCount,
                                            QVCharacterDirection direction);
QVKIT_EXPORT QVRange extendRangeLeft(const QString &text, QVRange range, quint64 characterCount);
QVKIT_EXPORT QVRange extendRangeRight(const QString &text, QVRange range, quint64 characterCount);
/** The range extended by characterCount characters on both sides. */
QVKIT_EXPORT QVRange extendRange(const QString &text, QVRange range, quint64 characterCount);

/** The substring of the extended range; a null string when the range is not usable. */
QVKIT_EXPORT QString extendSubstringAtRangeLeft(const QString &text, QVRange range, quint64 characterCount);
QVKIT_EXPORT QString extendSubstringAtRangeRight(const QString &text, QVRange range, quint64 characterCount);

/**
 * The one character just before (after) the range: the sequence holding the
 * code unit at location - 1 (at the range's maximum). {QVNotFound, 0}, or a
 * null string for the substring forms, when there is none or when the range
 * does not lie within the text.
 */
QVKIT_EXPORT QVRange characterRangeBeforeRange(const QString &text, QVRange range);
QVKIT_EXPORT QVRange characterRangeAfterRange(const QString &text, QVRange range);
QVKIT_EXPORT QString characterSubstringBeforeRange(const QString &text, QVRange range);
QVKIT_EXPORT QString characterSubstringAfterRange(const QString &text, QVRange range);

/** The first (last) character and its range; a null string and {QVNotFound, 0} for an empty text. */
QVKIT_EXPORT QString firstCharacter(const QString &text);
QVKIT_EXPORT QString lastCharacter(const QString &text);
QVKIT_EXPORT QVRange firstCharacterRange(const QString &text);
QVKIT_EXPORT QVRange lastCharacterRange(const QString &text);

/**
 * The range from range.location that holds the first characterCount
 * characters of range (all of them when it has fewer). A count of 0 gives
 * {location, 0}; a location past the end gives {QVNotFound, 0}.
 */
QVKIT_EXPORT QVRange rangeWithCharacterCount(const QString &text, quint64 characterCount, QVRange range);

/**
 * Pads text towards characterCount characters with repeats of padString, at
 * the start or the end. The number of repeats is (missing mod 2) + missing / p
 * for p characters in the pad string (at least one), so a long pad string can
 * leave the text short of the wanted count; a surplus is cut from the start
 * of the padding. An empty pad string or a long enough text changes nothing.
 */
QVKIT_EXPORT void padToCharacterCount(QString &text, quint64 characterCount, const QString &padString,
                                      QVStringDirection direction);
QVKIT_EXPORT QString stringByPaddingToCharacterCount(const QString &text, quint64 characterCount,
                                                     const QString &padString, QVStringDirection direction);

/**
 * Truncates text to characterCount characters including truncationString (a
 * null string means none). Start keeps the first characters and appends the
 * truncation string; End keeps the last ones and puts it in front. Nothing
 * happens unless the text is longer than wanted and longer than the
 * truncation string; a truncation string of more characters than wanted
 * (but fewer than the text) replaces the whole text.
 */
QVKIT_EXPORT void truncateToCharacterCount(QString &text, quint64 characterCount, const QString &truncationString,
                                           QVStringDirection direction);
QVKIT_EXPORT QString stringByTruncatingToCharacterCount(const QString &text, quint64 characterCount,
                                                        const QString &truncationString, QVStringDirection direction);

/** Pads a shorter text, truncates a longer one and leaves one of exactly characterCount characters alone. */
QVKIT_EXPORT void padOrTruncateToCharacterCount(QString &text, quint64 characterCount, const QString &padString,
                                                QVStringDirection padDirection, const QString &truncationString,
                                                QVStringDirection truncationDirection);
QVKIT_EXPORT QString stringByPaddingOrTruncatingToCharacterCount(const QString &text, quint64 characterCount,
                                                                 const QString &padString,
                                                                 QVStringDirection padDirection,
                                                                 const QString &truncationString,
                                                                 QVStringDirection truncationDirection);

/**
 * Inserts separator after every n characters of range, counting from its
 * start for a positive n and from its end for a negative one (thousands
 * separators: n = -3 turns 1234567 into 1,234,567). A separator never lands at
 * either outer edge of the range. Nothing happens for an empty separator,
 * n = 0, |n| not below the text's length or a range of fewer than 2 code units.
 */
QVKIT_EXPORT void insertString(QString &text, const QString &separator, qint64 everyNthCharacter, QVRange range);
QVKIT_EXPORT void insertString(QString &text, const QString &separator, qint64 everyNthCharacter);

} // namespace QVString
