#include <QVKit/Text/QVMutableStringTextCore.h>

#include <QVKit/Text/QVTextCore.h>

namespace QVString {

void uppercaseRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeUppercase, range);
}

void lowercaseRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeLowercase, range);
}

void capitalizeRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeCapitalize, range);
}

void straightenQuoteRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextConvertToQuotation(text, QVQuotationTypeStraight, range);
}

void smartenQuoteRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextConvertToQuotation(text, QVQuotationTypeSmart, range);
}

void insertLocalizedQuotesAroundRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextInsertLocalizedQuoteType(text, QVQuoteTypeStandard, range);
}

void insertLocalizedAlternativeQuotesAroundRange(QString &text, QVRange range)
{
    QVTextCore::modifySourceTextInsertLocalizedQuoteType(text, QVQuoteTypeAlternative, range);
}

void insertDelimitersMatchingDelimiter(QString &text, const QString &delimiter, QVRange range)
{
    QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(text, delimiter, range);
}

void insertOpenDelimiter(QString &text, const QString &openDelimiter, const QString &closeDelimiter, QVRange range)
{
    QVTextCore::modifySourceTextInsertOpenDelimiter(text, openDelimiter, closeDelimiter, range);
}

} // namespace QVString
