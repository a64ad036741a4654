#pragma once

#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>
#include <QVKit/Text/QVAttributedStringChange.h>

#include <QtCore/QString>
#include <QtCore/QVariantList>

#include <functional>
#include <optional>

class QVTextStorage;
class QVTextView;

/** What QVTextViewModifier's around-range operation does with the two strings. */
enum class QVTextViewModifierAroundRangeOperation : quint64 {
    /** Puts the before string at the range's start and the after string at its end. */
    Wrap = 0,
    /**
     * Removes the two strings when the range starts with before and ends with
     * after, or when they sit just outside the range; leaves any other range alone.
     */
    Unwrap = 1,
    /** Unwraps a wrapped range and wraps any other. */
    Toggle = 2,
};
inline constexpr QVTextViewModifierAroundRangeOperation QVTextViewModifierAroundRangeOperationWrap = QVTextViewModifierAroundRangeOperation::Wrap;
inline constexpr QVTextViewModifierAroundRangeOperation QVTextViewModifierAroundRangeOperationUnwrap = QVTextViewModifierAroundRangeOperation::Unwrap;
inline constexpr QVTextViewModifierAroundRangeOperation QVTextViewModifierAroundRangeOperationToggle = QVTextViewModifierAroundRangeOperation::Toggle;

/**
 * The one path by which text operations edit a text view.
 *
 * The change pipeline asks a producer for one QVAttributedStringChange per
 * range (ranges in the text before the edit, ascending and not overlapping),
 * asks the view once for permission, applies every change in one editing pass
 * of the text storage (last range first, so earlier ranges stay valid), names
 * the undo step, selects where the results lie and calls didChangeText().
 *
 * A missing view, a view that is not editable, no ranges, no producer or a
 * refusal end a call silently with the text untouched. Main thread only.
 */
class QVKIT_EXPORT QVTextViewModifier
{
public:
    /** Gives the change for one range, or nothing to leave the range alone. */
    using ChangeProducer
        = std::function<std::optional<QVAttributedStringChange>(QVTextStorage *storage, QVRange range)>;

    QVTextViewModifier() = delete;

    /**
     * The change pipeline. A change whose range the producer left unset lies
     * where the modifier computes it: a replacement moves by the length
     * difference of the replacements before it, an attributes change moves
     * likewise, and a no-change keeps the range it was given, unshifted.
     * An empty undoActionName leaves the step's name alone.
     */
    static void modifyTextView(QVTextView *view, const QVRangeList &ranges, const QString &undoActionName,
                               const ChangeProducer &producer);
    /** The pipeline over the view's selected ranges. */
    static void modifyTextViewSelectedRanges(QVTextView *view, const QString &undoActionName,
                                             const ChangeProducer &producer);

    /**
     * Replaces each range by its replacement (a QString, a QVAttributedString
     * or the null marker, which counts as ""), selects the new texts and
     * registers the inverse call, so that undo and redo alternate through this
     * operation. A list whose length differs from the ranges', or that holds a
     * null marker, is normalised: cut to the number of ranges, and filled up
     * with its only element when it had one, else with "". Any other kind of
     * element makes the call do nothing. The edits form one editing pass of the
     * storage, so a widget's own undo history records them as one step.
     */
    static void modifyTextViewReplacements(QVTextView *view, const QVRangeList &ranges,
                                           const QVariantList &replacements, const QString &undoActionName);

    /**
     * Wraps, unwraps or toggles each range with the two strings
     * (QVTextViewModifierAroundRangeOperation) through the change pipeline;
     * the inner text keeps its attributes and the results are selected.
     * An unknown operation does nothing.
     */
    static void modifyTextViewPerformAroundRangeOperation(QVTextView *view, QVTextViewModifierAroundRangeOperation operation,
                                                          const QVRangeList &ranges, const QString &beforeString,
                                                          const QString &afterString, const QString &undoActionName);
    /** The around-range operation over the view's selected ranges. */
    static void modifyTextViewSelectedRangesPerformAroundRangeOperation(QVTextView *view, QVTextViewModifierAroundRangeOperation operation,
                                                                        const QString &beforeString,
                                                                        const QString &afterString,
                                                                        const QString &undoActionName);

private:
    /** Applies one change to the storage, inside an editing pass; unknown types and actions are skipped. */
    static void applyChange(QVTextStorage *storage, const QVAttributedStringChange &change);
};
