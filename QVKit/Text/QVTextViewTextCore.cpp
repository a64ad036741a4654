// The text core's user commands on a text view: each runs over every
// selected range through QVTextViewModifier, as one named undo step.

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVLoggingCategories.h>
#include <QVKit/Platform/QVTextView.h>
#include <QVKit/Text/QVAttributedStringChange.h>
#include <QVKit/Text/QVTextCore.h>
#include <QVKit/Text/QVTextViewModifier.h>

#include <QtGui/QAction>

using namespace Qt::StringLiterals;

namespace {

QString localized(const char *english)
{
    const QString text = QString::fromLatin1(english);
    return QVBundle::localizedString(text, text, QString());
}

// Converting a range changes its text but keeps its attributes: the
// converted attributed substring replaces the range.
template <typename Convert> void modifySelectedRanges(QVTextView *view, const QString &undoActionName, Convert convert)
{
    QVTextViewModifier::modifyTextViewSelectedRanges(
        view, undoActionName,
        [convert](QVTextStorage *storage, QVRange range) -> std::optional<QVAttributedStringChange> {
            const QVAttributedString source = storage->attributedSubstringFromRange(range);
            return QVAttributedStringChange::attributedStringChange(convert(source, QVRange {0, source.length()}));
        });
}

void convertToCaseType(QVTextView *view, QVCaseType caseType)
{
    const char *name = nullptr;
    switch (caseType) {
    case QVCaseTypeUppercase:
        name = "Uppercase";
        break;
    case QVCaseTypeLowercase:
        name = "Lowercase";
        break;
    case QVCaseTypeCapitalize:
        name = "Capitalize";
        break;
    default:
        QVLog("Unknown caseType");
        return;
    }
    modifySelectedRanges(view, localized(name), [caseType](const QVAttributedString &source, QVRange range) {
        return QVTextCore::sourceTextConvertToCase(source, caseType, range);
    });
}

void convertToQuotationType(QVTextView *view, QVQuotationType quotationType)
{
    const char *name = nullptr;
    switch (quotationType) {
    case QVQuotationTypeStraight:
        name = "Straighten Quotes";
        break;
    case QVQuotationTypeSmart:
        name = "Smarten Quotes";
        break;
    default:
        QVLog("Unknown quotationType");
        return;
    }
    modifySelectedRanges(view, localized(name), [quotationType](const QVAttributedString &source, QVRange range) {
        return QVTextCore::sourceTextConvertToQuotation(source, quotationType, range);
    });
}

void wrapSelectedRanges(QVTextView *view, const QString &before, const QString &after, const QString &undoActionName)
{
    QVTextViewModifier::modifyTextViewSelectedRangesPerformAroundRangeOperation(
        view, QVTextViewModifierAroundRangeOperationWrap, before, after, undoActionName);
}

void insertQuoteType(QVTextView *view, QVQuoteType quoteType)
{
    const char *name = nullptr;
    switch (quoteType) {
    case QVQuoteTypeStandard:
        name = "Quote";
        break;
    case QVQuoteTypeAlternative:
        name = "Alternative Quote";
        break;
    default:
        // Only the two commands below call this.
        return;
    }
    QString begin;
    QString end;
    QVTextCore::stringsForQuoteType(quoteType, &begin, &end);
    wrapSelectedRanges(view, begin, end, localized(name));
}

} // namespace

void QVTextView::uppercase(QObject *)
{
    convertToCaseType(this, QVCaseTypeUppercase);
}

void QVTextView::lowercase(QObject *)
{
    convertToCaseType(this, QVCaseTypeLowercase);
}

void QVTextView::capitalize(QObject *)
{
    convertToCaseType(this, QVCaseTypeCapitalize);
}

void QVTextView::straightenQuotes(QObject *)
{
    convertToQuotationType(this, QVQuotationTypeStraight);
}

void QVTextView::smartenQuotes(QObject *)
{
    convertToQuotationType(this, QVQuotationTypeSmart);
}

void QVTextView::insertLocalizedQuotes(QObject *)
{
    insertQuoteType(this, QVQuoteTypeStandard);
}

void QVTextView::insertLocalizedAlternativeQuotes(QObject *)
{
    insertQuoteType(this, QVQuoteTypeAlternative);
}

void QVTextView::insertDelimiter(QObject *sender)
{
    // A menu action names its delimiter in its data, else in its title.
    QString delimiter;
    if (const auto *action = qobject_cast<const QAction *>(sender)) {
        delimiter = action->data().toString();
        if (delimiter.isEmpty())
            delimiter = action->text();
    }
    QString open;
    QString close;
    if (!QVTextCore::stringsMatchingDelimiter(delimiter, &open, &close)) {
        qCDebug(lcQVText) << "insertDelimiter: the sender names no delimiter:" << sender;
        return;
    }
    insertOpenDelimiter(open, close);
}

void QVTextView::insertOpenDelimiter(const QString &openDelimiter, const QString &closeDelimiter)
{
    wrapSelectedRanges(this, openDelimiter, closeDelimiter, localized("Insert Delimiters"));
}
