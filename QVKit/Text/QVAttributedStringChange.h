#pragma once

#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>
#include <QVKit/Text/QVTextAttributeRun.h>

#include <QtCore/QSharedDataPointer>
#include <QtCore/QStringList>

#include <optional>

class QVAttributedStringChangeData;

/** What a change does to its range. */
enum class QVAttributedStringChangeType : quint64 {
    None = 0,
    Attributes = 1,
    String = 2,
};
inline constexpr QVAttributedStringChangeType QVAttributedStringChangeTypeNone = QVAttributedStringChangeType::None;
inline constexpr QVAttributedStringChangeType QVAttributedStringChangeTypeAttributes = QVAttributedStringChangeType::Attributes;
inline constexpr QVAttributedStringChangeType QVAttributedStringChangeTypeString = QVAttributedStringChangeType::String;

/** How an attributes change applies its dictionary. */
enum class QVAttributeAction : quint64 {
    /** Add to the attributes present; a null-marker value removes that attribute. */
    Add = 0,
    /** Make the range's attributes exactly these. */
    Set = 1,
};
inline constexpr QVAttributeAction QVAttributeActionAdd = QVAttributeAction::Add;
inline constexpr QVAttributeAction QVAttributeActionSet = QVAttributeAction::Set;

/**
 * What one text operation wants done to one range of a text: nothing, new
 * attributes, or new attributed text. QVTextViewModifier collects one change
 * per selected range and applies them all in one editing pass.
 *
 * range is where the result lies once every change of the pass was made;
 * originalRange is the range of the text before the pass that the change
 * replaces or restyles. Both are QVNotFoundRange() until set.
 */
class QVKIT_EXPORT QVAttributedStringChange
{
public:
    QVAttributedStringChange();
    QVAttributedStringChange(const QVAttributedStringChange &other);
    QVAttributedStringChange(QVAttributedStringChange &&other) noexcept;
    QVAttributedStringChange &operator=(const QVAttributedStringChange &other);
    QVAttributedStringChange &operator=(QVAttributedStringChange &&other) noexcept;
    ~QVAttributedStringChange();

    static QVAttributedStringChange noChange();
    static QVAttributedStringChange attributedStringChange(const QVAttributedString &string);
    static QVAttributedStringChange attributesChange(const QVTextAttributes &attributes, QVAttributeAction attributeAction);
    static QVAttributedStringChange attributesChanges(const QList<QVTextAttributeRun> &runs);

    /** Each change's range, in order; nothing for an empty list. */
    static QVOptionalRangeList rangeValuesFromArray(const QList<QVAttributedStringChange> &changes);
    /**
     * Nothing unless some change replaces text; then one string per change,
     * the replacement's plain text or "" for changes that replace nothing.
     */
    static std::optional<QStringList> replacementStringsFromArray(const QList<QVAttributedStringChange> &changes);

    QVAttributedStringChangeType changeType() const;
    void setChangeType(QVAttributedStringChangeType changeType);
    std::optional<QVAttributedString> attributedString() const;
    void setAttributedString(const std::optional<QVAttributedString> &string);
    std::optional<QVTextAttributes> attributes() const;
    void setAttributes(const std::optional<QVTextAttributes> &attributes);
    std::optional<QList<QVTextAttributeRun>> attributeRuns() const;
    void setAttributeRuns(const std::optional<QList<QVTextAttributeRun>> &runs);
    QVAttributeAction attributeAction() const;
    void setAttributeAction(QVAttributeAction attributeAction);
    QVRange range() const;
    void setRange(QVRange range);
    QVRange originalRange() const;
    void setOriginalRange(QVRange range);

    /** "QVAttributedStringChange type=… range=… originalRange=…"; for logs and test failures. */
    QString description() const;

private:
    QSharedDataPointer<QVAttributedStringChangeData> d;
};

Q_DECLARE_METATYPE(QVAttributedStringChange)
