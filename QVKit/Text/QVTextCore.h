#pragma once

#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QString>
#include <QtCore/QStringView>
#include <QtCore/QVariant>

#include <concepts>

/** How sourceTextConvertToCase converts each piece of the range. */
enum class QVCaseType : quint64 {
    Uppercase = 0,
    Lowercase = 1,
    /** First letter of each word upper (title) case, the rest lower case. */
    Capitalize = 2,
};
inline constexpr QVCaseType QVCaseTypeUppercase = QVCaseType::Uppercase;
inline constexpr QVCaseType QVCaseTypeLowercase = QVCaseType::Lowercase;
inline constexpr QVCaseType QVCaseTypeCapitalize = QVCaseType::Capitalize;

/** Which of the current locale's quotation mark pairs to use. */
enum class QVQuoteType : quint64 {
    Standard = 0,
    /** The alternate pair; the standard pair when the locale has none. */
    Alternative = 1,
};
inline constexpr QVQuoteType QVQuoteTypeStandard = QVQuoteType::Standard;
inline constexpr QVQuoteType QVQuoteTypeAlternative = QVQuoteType::Alternative;

/** What sourceTextConvertToQuotation makes of the quotes in the range. */
enum class QVQuotationType : quint64 {
    /** Typographic quotes become " and '. */
    Straight = 0,
    /** " and ' become the locale's opening or closing marks. */
    Smart = 1,
};
inline constexpr QVQuotationType QVQuotationTypeStraight = QVQuotationType::Straight;
inline constexpr QVQuotationType QVQuotationTypeSmart = QVQuotationType::Smart;

/** The operations of QVTextCore::modifySourceText. */
enum class QVTextCoreOperation : quint64 {
    Insert = 0,
    /** Removes the strings only where they are found around (or just inside) the range. */
    Remove = 1,
    /** Removes as many code units as the strings are long, without comparing. */
    RemoveIgnoringCheck = 2,
};
inline constexpr QVTextCoreOperation QVTextCoreOperationInsert = QVTextCoreOperation::Insert;
inline constexpr QVTextCoreOperation QVTextCoreOperationRemove = QVTextCoreOperation::Remove;
inline constexpr QVTextCoreOperation QVTextCoreOperationRemoveIgnoringCheck = QVTextCoreOperation::RemoveIgnoringCheck;

// User-default keys read by delimiter matching (QVUserDefaults::standardUserDefaults()).
/** bool, true when unset; false uses every delimiter as both its opening and its closing delimiter. */
inline constexpr QVStringConstant QVTextDelimitersUseDelimiterMatching = u"QVTextDelimitersUseDelimiterMatching";
/** A list of [open, close] string lists, looked at before the built-in pairs; other entries are skipped. */
inline constexpr QVStringConstant QVTextDelimitersCustomPairs = u"QVTextDelimitersCustomPairs";
/** A list of opening delimiters whose matching is switched off: each is used as both open and close. */
inline constexpr QVStringConstant QVTextDelimitersDisabledMatches = u"QVTextDelimitersDisabledMatches";

/** The three kinds of source text the operations take. */
template <typename T>
concept QVTextCoreSource =
    std::same_as<T, QVariant> || std::same_as<T, QString> || std::same_as<T, QVAttributedString>;

/**
 * The text transformations on plain and attributed text: case conversion,
 * straight and smart quotes, localized quotes and delimiters around a range,
 * and inserting or removing a string before and after a range. The members
 * are pure functions of their arguments and the current locale, and may run
 * on any thread; only delimiter matching also reads the user defaults, and
 * so belongs on the main thread with them.
 *
 * Each operation takes its source three ways: a QVariant holding a QString or
 * a QVAttributedString (anything else logs "Invalid source text: %@" and
 * answers an invalid QVariant or changes nothing), a QString, or a
 * QVAttributedString. Ranges count UTF-16 code units and are clipped to the
 * text; a range starting past the end converts or changes nothing.
 *
 * Case conversion uses QVString's full case mapping (ß → SS) in the current
 * locale (QLocale()): upper and lower case convert each composed character
 * sequence by itself (so a final Σ lowers to σ, not ς), capitalization each
 * word with the separators after it; text before the first word is kept.
 * Attribute runs over the range are kept, shifted where a piece changes length.
 *
 * Quotes: the locale's marks come from QLocale::quoteString (standard and
 * alternate). Straightening maps “ ” „ ‟ « » 〝 〞 〟 ＂ to " and ‘ ’ ‚ ‛ ‹ › ＇
 * to '. Smartening turns " into the standard pair and ' into the alternate
 * pair: a mark opens at the start of the text, or after white space, an
 * opening bracket, a dash or an opening mark of the locale (the text before
 * the range counts), and closes otherwise (so don't gets the closing single
 * mark).
 *
 * Delimiters: the built-in pairs () [] {} <> “” ‘’ «» ‹› „“ 「」 『』 are found
 * from either member; the custom pairs and switches of the delimiter
 * defaults apply first. Strings inserted around a range take the attributes of
 * the neighbouring text.
 */
class QVKIT_EXPORT QVTextCore
{
public:
    // Case conversion.

    /**
     * The range's text converted to the case type, as the source's kind (an
     * attributed result keeps the range's attributes, starting at 0). An
     * unknown case type logs "Unknown caseType" and gives an empty result.
     */
    static QVariant sourceTextConvertToCase(const QVariant &source, QVCaseType caseType, QVRange range);
    static QString sourceTextConvertToCase(const QString &source, QVCaseType caseType, QVRange range);
    static QVAttributedString sourceTextConvertToCase(const QVAttributedString &source, QVCaseType caseType,
                                                      QVRange range);
    /** Replaces the range by its converted text; an unknown case type changes nothing. */
    static void modifySourceTextConvertToCase(QVariant &source, QVCaseType caseType, QVRange range);
    static void modifySourceTextConvertToCase(QString &source, QVCaseType caseType, QVRange range);
    static void modifySourceTextConvertToCase(QVAttributedString &source, QVCaseType caseType, QVRange range);

    // Quotes.

    /**
     * The current locale's begin and end quotation marks for the quote type
     * through the two pointers (either may be null). A type of 2 or more logs
     * "Unsupported quote type: %lu" and gives the standard marks.
     */
    static void stringsForQuoteType(QVQuoteType type, QString *begin, QString *end);

    /**
     * The range's text with its quotes straightened or smartened. An unknown
     * quotation type logs "Unknown quotationType" and gives the text unchanged.
     */
    static QVariant sourceTextConvertToQuotation(const QVariant &source, QVQuotationType quotationType, QVRange range);
    static QString sourceTextConvertToQuotation(const QString &source, QVQuotationType quotationType, QVRange range);
    static QVAttributedString sourceTextConvertToQuotation(const QVAttributedString &source, QVQuotationType quotationType,
                                                           QVRange range);
    static void modifySourceTextConvertToQuotation(QVariant &source, QVQuotationType quotationType, QVRange range);
    static void modifySourceTextConvertToQuotation(QString &source, QVQuotationType quotationType, QVRange range);
    static void modifySourceTextConvertToQuotation(QVAttributedString &source, QVQuotationType quotationType, QVRange range);

    /** Wraps the range in the quote type's marks (see stringsForQuoteType). */
    static void modifySourceTextInsertLocalizedQuoteType(QVariant &source, QVQuoteType quoteType, QVRange range);
    static void modifySourceTextInsertLocalizedQuoteType(QString &source, QVQuoteType quoteType, QVRange range);
    static void modifySourceTextInsertLocalizedQuoteType(QVAttributedString &source, QVQuoteType quoteType, QVRange range);

    // Delimiters.

    /**
     * The opening and closing delimiter that belong to a delimiter given as
     * either of them, through the two pointers (either may be null). Without
     * a known pair, or with matching switched off for it, the delimiter is
     * both. Answers false (and sets nothing) only for an empty delimiter.
     */
    static bool stringsMatchingDelimiter(const QString &delimiter, QString *open, QString *close);

    /** Wraps the range in the pair that stringsMatchingDelimiter finds. */
    static void modifySourceTextInsertDelimitersMatchingDelimiter(QVariant &source, const QString &delimiter,
                                                                  QVRange range);
    static void modifySourceTextInsertDelimitersMatchingDelimiter(QString &source, const QString &delimiter,
                                                                  QVRange range);
    static void modifySourceTextInsertDelimitersMatchingDelimiter(QVAttributedString &source, const QString &delimiter,
                                                                  QVRange range);

    /** Wraps the range in the two strings. */
    template <QVTextCoreSource Source>
    static void modifySourceTextInsertOpenDelimiter(Source &source, const QString &openDelimiter,
                                                    const QString &closeDelimiter, QVRange range)
    {
        modifySourceText(source, QVTextCoreOperationInsert, openDelimiter, closeDelimiter, range);
    }

    // Strings before and after a range: modifySourceText with each operation.

    template <QVTextCoreSource Source>
    static void modifySourceTextInsertStringBefore(Source &source, const QString &before, const QString &after,
                                                   QVRange range)
    {
        modifySourceText(source, QVTextCoreOperationInsert, before, after, range);
    }
    template <QVTextCoreSource Source>
    static void modifySourceTextRemoveStringBefore(Source &source, const QString &before, const QString &after,
                                                   QVRange range)
    {
        modifySourceText(source, QVTextCoreOperationRemove, before, after, range);
    }
    template <QVTextCoreSource Source>
    static void modifySourceTextRemoveStringBeforeIgnoringCheck(Source &source, const QString &before,
                                                                const QString &after, QVRange range)
    {
        modifySourceText(source, QVTextCoreOperationRemoveIgnoringCheck, before, after, range);
    }

    /**
     * The worker of the three operations above (QVTextCoreOperation).
     * Insert puts before at the range's start and after at its end. Remove
     * removes before and after when the text just outside the range equals
     * them, or else when the range itself starts with before and ends with
     * after; otherwise nothing changes. RemoveIgnoringCheck removes the
     * strings' lengths just outside the range without comparing, clipped to
     * the text. An unknown operation changes nothing.
     */
    static void modifySourceText(QVariant &source, QVTextCoreOperation operation, const QString &before, const QString &after,
                                 QVRange range);
    static void modifySourceText(QString &source, QVTextCoreOperation operation, const QString &before, const QString &after,
                                 QVRange range);
    static void modifySourceText(QVAttributedString &source, QVTextCoreOperation operation, const QString &before,
                                 const QString &after, QVRange range);

    // The source in the wanted form; an invalid source gives the null or empty value.

    /** The text of a QString or QVAttributedString source; a null QString otherwise. */
    static QString commonStringFromObject(const QVariant &object);
    /** As commonStringFromObject: QString is already the editable form (a detached copy to edit and store back). */
    static QString commonMutableStringFromObject(const QVariant &object);
    /** An attributed source as it is, a string source without attributes; empty otherwise. */
    static QVAttributedString commonAttributedStringFromObject(const QVariant &object);
    /** As commonAttributedStringFromObject (a copy to edit and store back). */
    static QVAttributedString commonMutableAttributedStringFromObject(const QVariant &object);

private:
    QVTextCore() = delete;
};
