#pragma once

#include <QVKit/Platform/QVCharacterSet.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/QVKitExport.h>
#include <QVKit/Text/QVStringAdditions.h>

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

/**
 * Editing operations on a QString in place (the mutable string additions):
 * trimming, stripping, line breaks, runs of spaces, and the replacement of
 * string pairs, bracketed text and characters of a set.
 *
 * Ranges count UTF-16 code units; a range that reaches past the end is
 * clipped to the text, and one that starts past the end changes nothing.
 */
namespace QVString {

/**
 * Deletes whitespace and newlines at both ends, the end first. A text made
 * only of whitespace is left as it is, as trimmedRange leaves it whole.
 */
QVKIT_EXPORT void trimString(QString &text);

/**
 * Deletes the prefix (suffix) found under the edge options. As many code units
 * are deleted from the very edge as the match is long, also when whitespace
 * before the match was skipped ("  ab" stripped of "ab" ignoring whitespace
 * becomes "ab").
 */
QVKIT_EXPORT void stripPrefix(QString &text, const QString &prefix, QVStringEdgeOptions options = 0);
QVKIT_EXPORT void stripSuffix(QString &text, const QString &suffix, QVStringEdgeOptions options = 0);

/** Appends a line break (U+000A). */
QVKIT_EXPORT void appendNewLine(QString &text);
/** Appends a line break unless the text is non-empty and its last character starts with a newline character. */
QVKIT_EXPORT void appendNewLineIfNecessary(QString &text);

/** Reduces every run of two or more spaces (U+0020) to one space; tabs and other spaces stay. */
QVKIT_EXPORT void condenseMultipleSpaces(QString &text);

/**
 * Replaces, pair by pair, every occurrence of replacePairs[2k] in range by
 * replacePairs[2k + 1] under the compare options, and answers the signed
 * change in length. A list of odd length is a programming error.
 */
QVKIT_EXPORT qint64 replaceStringPairs(QString &text, const QStringList &replacePairs,
                                       QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT qint64 replaceStringPairs(QString &text, const QStringList &replacePairs,
                                       QVStringCompareOptions options = 0);

/**
 * As above, restricted to the listed ranges (sorted, in code units), which
 * are moved and resized in place to follow the edits. Each range's part
 * within range is replaced, and so is the text between a range and the
 * previous one (or the start of range); the text after the last listed range
 * is left alone. Overlapping neighbours are merged afterwards.
 */
QVKIT_EXPORT qint64 replaceStringPairs(QString &text, const QStringList &replacePairs,
                                       QVStringCompareOptions options, QVRange range,
                                       QVRangeList &adjustCharacterRanges);

/**
 * Replaces every range that rangesBetweenString finds by replacement and
 * answers the number of ranges found. The ranges are found once and replaced
 * in ascending order as found, without shifting later ones after a
 * replacement of another length: callers that need exact results use a
 * replacement as long as what it replaces, or a single occurrence. A null
 * opening, closing or replacement string is a programming error.
 */
QVKIT_EXPORT quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString,
                                                     const QString &closingString, const QString &replacement,
                                                     bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                                     QVStringCompareOptions options, QVRange range,
                                                     const std::optional<QLocale> &locale);
QVKIT_EXPORT quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString,
                                                     const QString &closingString, const QString &replacement,
                                                     bool includeSearchStrings, QVStringMatchOptions matchOptions,
                                                     QVStringCompareOptions options, QVRange range);
QVKIT_EXPORT quint64 replaceOccurrencesBetweenString(QString &text, const QString &openingString,
                                                     const QString &closingString, const QString &replacement,
                                                     bool includeSearchStrings = false,
                                                     QVStringMatchOptions matchOptions = 0,
                                                     QVStringCompareOptions options = 0);

/**
 * Replaces each single character (code point) of the set within range by
 * replacement and answers the number of replacements. The set is optional
 * like every character set of the string additions: std::nullopt does nothing
 * and answers 0. A null replacement deletes the characters.
 */
QVKIT_EXPORT quint64 replaceOccurrencesOfCharacterSet(QString &text, const std::optional<QVCharacterSet> &set,
                                                      const QString &replacement, QVStringCompareOptions options,
                                                      QVRange range);
QVKIT_EXPORT quint64 replaceOccurrencesOfCharacterSet(QString &text, const std::optional<QVCharacterSet> &set,
                                                      const QString &replacement,
                                                      QVStringCompareOptions options = 0);

} // namespace QVString
