// The text core family of QVAttributedString: each transformation applied to
// the string itself through QVTextCore.

#include <QVKit/Platform/QVAttributedString.h>

#include <QVKit/Text/QVTextCore.h>

void QVAttributedString::uppercaseRange(QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(*this, QVCaseTypeUppercase, range);
}

void QVAttributedString::lowercaseRange(QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(*this, QVCaseTypeLowercase, range);
}

void QVAttributedString::capitalizeRange(QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(*this, QVCaseTypeCapitalize, range);
}

void QVAttributedString::straightenQuoteRange(QVRange range)
{
    QVTextCore::modifySourceTextConvertToQuotation(*this, QVQuotationTypeStraight, range);
}

void QVAttributedString::smartenQuoteRange(QVRange range)
{
    QVTextCore::modifySourceTextConvertToQuotation(*this, QVQuotationTypeSmart, range);
}

void QVAttributedString::insertLocalizedQuotesAroundRange(QVRange range)
{
    QVTextCore::modifySourceTextInsertLocalizedQuoteType(*this, QVQuoteTypeStandard, range);
}

void QVAttributedString::insertLocalizedAlternativeQuotesAroundRange(QVRange range)
{
    QVTextCore::modifySourceTextInsertLocalizedQuoteType(*this, QVQuoteTypeAlternative, range);
}

void QVAttributedString::insertDelimitersMatchingDelimiter(const QString &delimiter, QVRange range)
{
    QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(*this, delimiter, range);
}

void QVAttributedString::insertOpenDelimiter(const QString &openDelimiter, const QString &closeDelimiter, QVRange range)
{
    QVTextCore::modifySourceTextInsertOpenDelimiter(*this, openDelimiter, closeDelimiter, range);
}
