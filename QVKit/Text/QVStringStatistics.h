#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/**
 * Counting statistics on QString (the string statistics family).
 *
 * A character here is a composed character sequence (an extended grapheme
 * cluster): an emoji, a flag or a letter with its combining marks counts once.
 */
namespace QVString {

/** The number of composed character sequences in the text. */
QVKIT_EXPORT quint64 characterCount(const QString &text);

/**
 * The number of composed character sequences that the range touches, the
 * range clipped to the text; 0 for a range that starts past the end.
 */
QVKIT_EXPORT quint64 characterCountInRange(const QString &text, QVRange range);

} // namespace QVString
