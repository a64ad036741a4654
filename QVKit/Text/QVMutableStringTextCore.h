#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/**
 * The text core transformations applied to a QString in place; each calls
 * the matching QVTextCore operation on the text (see QVTextCore.h for case
 * mapping, quote and delimiter rules). Ranges are clipped to the text.
 */
namespace QVString {

QVKIT_EXPORT void uppercaseRange(QString &text, QVRange range);
QVKIT_EXPORT void lowercaseRange(QString &text, QVRange range);
QVKIT_EXPORT void capitalizeRange(QString &text, QVRange range);
QVKIT_EXPORT void straightenQuoteRange(QString &text, QVRange range);
QVKIT_EXPORT void smartenQuoteRange(QString &text, QVRange range);
/** Wraps the range in the current locale's standard quotation marks. */
QVKIT_EXPORT void insertLocalizedQuotesAroundRange(QString &text, QVRange range);
/** Wraps the range in the current locale's alternate quotation marks (standard ones when it has none). */
QVKIT_EXPORT void insertLocalizedAlternativeQuotesAroundRange(QString &text, QVRange range);
/** Wraps the range in the pair that QVTextCore::stringsMatchingDelimiter finds for the delimiter. */
QVKIT_EXPORT void insertDelimitersMatchingDelimiter(QString &text, const QString &delimiter, QVRange range);
QVKIT_EXPORT void insertOpenDelimiter(QString &text, const QString &openDelimiter, const QString &closeDelimiter,
                                      QVRange range);

} // namespace QVString
