#pragma once

#include <QVKit/Platform/QVCharacterSet.h>
#include <QVKit/Platform/QVRange.h>

#include <QtCore/QLocale>
#include <QtCore/QString>

#include <functional>
#include <optional>

/** Compare options of the string search, with their platform values. */
enum QVStringCompareOption : quint64 {
    QVCaseInsensitiveSearch = 1,
    QVLiteralSearch = 2,
    QVBackwardsSearch = 4,
    QVAnchoredSearch = 8,
    QVDiacriticInsensitiveSearch = 128,
};
using QVStringCompareOptions = quint64;

/** Substring enumeration: one kind in the low byte, plus flags. */
enum QVStringEnumerationOption : quint64 {
    QVStringEnumerationByLines = 0,
    QVStringEnumerationByParagraphs = 1,
    QVStringEnumerationByComposedCharacterSequences = 2,
    QVStringEnumerationByWords = 3,
    QVStringEnumerationBySentences = 4,
    QVStringEnumerationReverse = 256,
    QVStringEnumerationSubstringNotRequired = 512,
    QVStringEnumerationLocalized = 1024,
};
using QVStringEnumerationOptions = quint64;

/**
 * The string operations the text engine builds on, over QString (UTF-16 code
 * unit indexes throughout). "Characters" are composed character sequences:
 * extended grapheme clusters, so an emoji, a flag or a letter with its
 * combining marks is one character.
 */
namespace QVString {

/** {0, length}. */
QVKIT_EXPORT QVRange fullRange(const QString &text);

/**
 * The range of the whole character holding the code unit at index; an index
 * at or past the end gives {length, 0}. Only the text around the index is
 * examined, so the cost does not grow with the index.
 */
QVKIT_EXPORT QVRange rangeOfComposedCharacterSequenceAtIndex(const QString &text, quint64 index);
/**
 * The smallest range of whole characters covering the range (clipped to the
 * string): both edges widen, so an empty range inside a character covers that
 * character. A location at or past the end gives {length, 0}.
 */
QVKIT_EXPORT QVRange rangeOfComposedCharacterSequencesForRange(const QString &text, QVRange range);

/**
 * Finds search in text within range under the compare options; {QVNotFound, 0}
 * when absent, when either string is empty or when the range lies outside the
 * text. Backwards returns the last match; anchored requires the match to
 * start at the range's start (end at its end when backwards). Case-insensitive
 * matching uses full case folding; diacritic-insensitive matching ignores
 * combining marks after canonical decomposition. The locale, when given,
 * chooses locale-specific case rules (Turkish dotted and dotless i).
 * Found ranges always cover whole code units of text, mapped back from any
 * folding.
 *
 * Without case or diacritic folding the search compares code units, with or
 * without QVLiteralSearch (a plain QStringView::indexOf on the range). With
 * folding, QVLiteralSearch keeps composed and decomposed forms apart; without
 * it they match each other, and a match does not end before combining marks
 * that the search lacks. Diacritic-insensitive search drops non-spacing and
 * enclosing marks (Mn, Me) and extends a match over the dropped marks after it.
 */
QVKIT_EXPORT QVRange rangeOfString(const QString &text, const QString &search, QVStringCompareOptions options,
                                   QVRange range, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT QVRange rangeOfString(const QString &text, const QString &search,
                                   QVStringCompareOptions options = 0);

/**
 * The first (last, with backwards) character of the set in range; anchored
 * requires it at the range's start (end, with backwards). A character is one
 * code point here, so a surrogate pair gives a range of length 2.
 */
QVKIT_EXPORT QVRange rangeOfCharacterFromSet(const QString &text, const QVCharacterSet &set,
                                             QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT QVRange rangeOfCharacterFromSet(const QString &text, const QVCharacterSet &set,
                                             QVStringCompareOptions options = 0);

/**
 * Called for each substring: the substring (null with
 * QVStringEnumerationSubstringNotRequired), its range, the enclosing range
 * (the substring with its separators: a line with its line break, a word
 * with the spaces after it) and a stop flag to set.
 */
using QVSubstringBlock = std::function<void(const QString &substring, QVRange substringRange,
                                            QVRange enclosingRange, bool *stop)>;

/**
 * Enumerates the lines, paragraphs, characters, words or sentences of the
 * range, forwards or in reverse. Lines end at LF, CR, CR LF (one break),
 * U+0085, U+2028 and U+2029; paragraphs at the same breaks except U+2028.
 * Words are QTextBoundaryFinder's word segments that hold a letter, mark or
 * digit; sentences are its sentence segments without their trailing white
 * space. A word's or sentence's enclosing range runs on to the next one (or to
 * the end of the range).
 *
 * The range is clipped to the text; items are found in the whole text and cut
 * to the range where they straddle its edges. QVStringEnumerationLocalized is
 * accepted and changes nothing: the Unicode segmentation rules apply in every
 * locale. The stop flag ends the enumeration at once.
 */
QVKIT_EXPORT void enumerateSubstringsInRange(const QString &text, QVRange range, QVStringEnumerationOptions options,
                                             const QVSubstringBlock &block);

/**
 * The range of the whole lines that the range touches, line breaks included.
 * A range ending right after a line break does not take in the next line; an
 * empty range takes the line it stands on. A range past the end is clipped.
 */
QVKIT_EXPORT QVRange lineRangeForRange(const QString &text, QVRange range);
/** The range of the whole paragraphs that the range touches, separators included. */
QVKIT_EXPORT QVRange paragraphRangeForRange(const QString &text, QVRange range);

/**
 * Full case mapping (ß upper-cases to SS), in the locale when one is given,
 * else by the locale-independent rules (which include the final form of a
 * word-final capital sigma when lower-casing).
 */
QVKIT_EXPORT QString uppercaseString(const QString &text, const std::optional<QLocale> &locale = std::nullopt);
QVKIT_EXPORT QString lowercaseString(const QString &text, const std::optional<QLocale> &locale = std::nullopt);
/** Each word's first character in title case, the rest lower case. */
QVKIT_EXPORT QString capitalizedString(const QString &text, const std::optional<QLocale> &locale = std::nullopt);

} // namespace QVString
