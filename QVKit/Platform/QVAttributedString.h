#pragma once

#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>
#include <QVKit/Text/QVTextAttributeRun.h>

#include <QtCore/QFlags>
#include <QtCore/QList>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariantMap>

#include <functional>
#include <optional>

class QVAttributedStringData;

/** Attribute name → value over one stretch of text. */
using QVTextAttributes = QVariantMap;

// Attributes that text widgets show. Any other name is carried along with the
// text and round-trips through a widget's text storage without being drawn.
/** Font family, a QString. */
inline constexpr QVStringConstant QVFontFamilyAttributeName = u"QVFontFamily";
/** Font point size, a double. */
inline constexpr QVStringConstant QVFontPointSizeAttributeName = u"QVFontPointSize";
/** Font weight, an int on QFont::Weight's scale (400 normal, 700 bold). */
inline constexpr QVStringConstant QVFontWeightAttributeName = u"QVFontWeight";
/** Italic, a bool. */
inline constexpr QVStringConstant QVFontItalicAttributeName = u"QVFontItalic";
/** Underline, a bool. */
inline constexpr QVStringConstant QVUnderlineAttributeName = u"QVUnderline";
/** Text colour, a QColor. */
inline constexpr QVStringConstant QVForegroundColorAttributeName = u"QVForegroundColor";
/** Colour behind the text, a QColor. */
inline constexpr QVStringConstant QVBackgroundColorAttributeName = u"QVBackgroundColor";

/** Enumeration options of QVAttributedString::enumerateAttribute(s). */
enum QVAttributedStringEnumerationOption : unsigned int {
    QVAttributedStringEnumerationReverse = 1u << 1,
    /** Stretches may be shorter than the longest range over which the value holds. */
    QVAttributedStringEnumerationLongestEffectiveRangeNotRequired = 1u << 20,
};
Q_DECLARE_FLAGS(QVAttributedStringEnumerationOptions, QVAttributedStringEnumerationOption)
Q_DECLARE_OPERATORS_FOR_FLAGS(QVAttributedStringEnumerationOptions)

/**
 * Text plus attribute dictionaries that hold over ranges of it, as a value:
 * copies are cheap and independent (copy on write). Indices and ranges count
 * UTF-16 code units of string().
 *
 * The attributes are kept as a sorted list of stretches, each with one
 * dictionary; neighbouring stretches with equal dictionaries are merged, so a
 * lookup is a binary search and an edit touches only the stretches it covers
 * (plus shifting those after it). Edits applied from the start of the text
 * towards its end, the order in which runs are usually written, stay cheap
 * however many stretches there are.
 *
 * Ranges that reach past the end are misuse: reads clip them to the text,
 * edits log one line and change nothing.
 */
class QVKIT_EXPORT QVAttributedString
{
public:
    /** The empty string without attributes. */
    QVAttributedString();
    /** The text with the same attributes over all of it. */
    explicit QVAttributedString(const QString &string, const QVTextAttributes &attributes = {});
    QVAttributedString(const QVAttributedString &other);
    QVAttributedString(QVAttributedString &&other) noexcept;
    QVAttributedString &operator=(const QVAttributedString &other);
    QVAttributedString &operator=(QVAttributedString &&other) noexcept;
    ~QVAttributedString();

    QString string() const;
    quint64 length() const;
    bool isEmpty() const { return length() == 0; }

    /**
     * The attributes at the index and, through effectiveRange, the whole
     * stretch over which exactly these attributes hold. An index at or past the
     * end gives no attributes and {index, 0}.
     */
    QVTextAttributes attributesAtIndex(quint64 index, QVRange *effectiveRange = nullptr) const;
    /** As above, with the effective range clipped to rangeLimit. */
    QVTextAttributes attributesAtIndex(quint64 index, QVRange *longestEffectiveRange, QVRange rangeLimit) const;
    /** One attribute's value at the index (invalid when absent) and the stretch over which it holds. */
    QVariant attributeAtIndex(const QString &name, quint64 index, QVRange *effectiveRange = nullptr) const;
    QVariant attributeAtIndex(const QString &name, quint64 index, QVRange *longestEffectiveRange,
                              QVRange rangeLimit) const;

    using AttributeBlock = std::function<void(const QVariant &value, QVRange range, bool *stop)>;
    using AttributesBlock = std::function<void(const QVTextAttributes &attributes, QVRange range, bool *stop)>;

    /**
     * Yields each maximal stretch of the range over which the attribute's value
     * is constant, with the value or an invalid QVariant where it is absent.
     * Stretches come in text order, or from the end with the reverse option.
     */
    void enumerateAttribute(const QString &name, QVRange range, QVAttributedStringEnumerationOptions options,
                            const AttributeBlock &block) const;
    /** Yields the stretches of the range with their whole attribute dictionary. */
    void enumerateAttributes(QVRange range, QVAttributedStringEnumerationOptions options,
                             const AttributesBlock &block) const;

    /** The text and attributes of the range; clipped to the text. */
    QVAttributedString attributedSubstringFromRange(QVRange range) const;

    /**
     * Replaces the characters of the range. Plain text takes the attributes of
     * the first replaced character, or of the character before an insertion
     * point (none at the start of an empty string).
     */
    void replaceCharactersInRange(QVRange range, const QString &string);
    /** Replaces the characters of the range; the new text brings its own attributes. */
    void replaceCharactersInRange(QVRange range, const QVAttributedString &string);
    void insertAttributedString(const QVAttributedString &string, quint64 index);
    void appendAttributedString(const QVAttributedString &string);
    void deleteCharactersInRange(QVRange range);
    void setAttributedString(const QVAttributedString &string);

    /** Makes the range's attributes exactly these (none when empty). */
    void setAttributes(const QVTextAttributes &attributes, QVRange range);
    /** Adds the attribute over the range, replacing any value it had there. */
    void addAttribute(const QString &name, const QVariant &value, QVRange range);
    void addAttributes(const QVTextAttributes &attributes, QVRange range);
    void removeAttribute(const QString &name, QVRange range);

    /** Same text and the same attributes at every index. */
    bool operator==(const QVAttributedString &other) const;
    bool operator!=(const QVAttributedString &other) const { return !(*this == other); }

    /** The text, then each stretch's range and attributes; for logs and test failures. */
    QString description() const;

    // Text attribute runs: the attributes as a flat list of runs and back.

    /** All runs of the whole text; nothing when there are none. */
    std::optional<QList<QVTextAttributeRun>> textAttributeRuns() const;
    std::optional<QList<QVTextAttributeRun>> textAttributeRunsInRange(QVRange range) const;
    /** One attribute's runs (all attributes without a name); options of QVTextAttributeRunOption. */
    std::optional<QList<QVTextAttributeRun>> textAttributeRunsForAttribute(const QString &name, QVTextAttributeRunOptions options,
                                                                           QVRange range) const;
    std::optional<QList<QVTextAttributeRun>>
    textAttributeRunsForAttributes(const std::optional<QStringList> &names, QVTextAttributeRunOptions options,
                                   QVRange range) const;
    /** Adds each run's attribute over its range, in list order. */
    void addTextAttributeRuns(const QList<QVTextAttributeRun> &runs);
    /** Clears the attributes over the runs' total range, then adds the runs. */
    void setTextAttributeRuns(const QList<QVTextAttributeRun> &runs);

    // Text core: the transformations applied in place to a range.

    void uppercaseRange(QVRange range);
    void lowercaseRange(QVRange range);
    void capitalizeRange(QVRange range);
    void straightenQuoteRange(QVRange range);
    void smartenQuoteRange(QVRange range);
    void insertLocalizedQuotesAroundRange(QVRange range);
    void insertLocalizedAlternativeQuotesAroundRange(QVRange range);
    void insertDelimitersMatchingDelimiter(const QString &delimiter, QVRange range);
    void insertOpenDelimiter(const QString &openDelimiter, const QString &closeDelimiter, QVRange range);

private:
    QSharedDataPointer<QVAttributedStringData> d;
};

Q_DECLARE_METATYPE(QVAttributedString)
