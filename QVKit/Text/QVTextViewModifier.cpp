#include "QVKit/Text/QVTextViewModifier.h"

#include "QVKit/Platform/QVLoggingCategories.h"
#include "QVKit/Platform/QVTextView.h"
#include "QVKit/Platform/QVUndoManager.h"

#include <QtCore/QPointer>

using namespace Qt::StringLiterals;

namespace {

bool isNullMarker(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<std::nullptr_t>();
}

bool isAttributedString(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<QVAttributedString>();
}

QString plainText(const QVariant &replacement)
{
    return isAttributedString(replacement) ? replacement.value<QVAttributedString>().string() : replacement.toString();
}

quint64 replacementLength(const QVariant &replacement)
{
    return isAttributedString(replacement) ? replacement.value<QVAttributedString>().length()
                                           : quint64(replacement.toString().size());
}

QVRange shiftedRange(QVRange range, qint64 delta)
{
    return QVMakeRange(quint64(qint64(range.location) + delta), range.length);
}

} // namespace

void QVTextViewModifier::modifyTextView(QVTextView *view, const QVRangeList &ranges, const QString &undoActionName,
                                        const ChangeProducer &producer)
{
    if (!view || !view->isEditable() || ranges.isEmpty() || !producer)
        return;
    QVTextStorage *storage = view->textStorage();
    if (!storage)
        return;

    // The length difference caused by the replacements before the current range.
    qint64 delta = 0;
    QList<QVAttributedStringChange> changes;
    changes.reserve(ranges.size());
    for (const QVRange range : ranges) {
        std::optional<QVAttributedStringChange> produced = producer(storage, range);
        QVAttributedStringChange change;
        if (produced) {
            change = std::move(*produced);
        } else {
            change = QVAttributedStringChange::noChange();
            change.setRange(range);
        }
        if (change.changeType() == QVAttributedStringChangeTypeString && !change.attributedString())
            change.setAttributedString(QVAttributedString());
        change.setOriginalRange(range);
        if (change.range() == QVNotFoundRange()) {
            QVRange result = range;
            if (change.changeType() == QVAttributedStringChangeTypeString) {
                const quint64 newLength = change.attributedString()->length();
                if (newLength != range.length || delta != 0) {
                    result = QVMakeRange(quint64(qint64(range.location) + delta), newLength);
                    delta += qint64(newLength) - qint64(range.length);
                }
            } else if (change.changeType() == QVAttributedStringChangeTypeAttributes && delta != 0) {
                result = shiftedRange(range, delta);
            }
            // A no-change keeps the range it was given, deliberately unshifted.
            change.setRange(result);
        }
        changes.append(std::move(change));
    }

    if (!view->shouldChangeTextInRanges(ranges, QVAttributedStringChange::replacementStringsFromArray(changes)))
        return;

    // Last to first: an edit never moves the ranges before it.
    storage->beginEditing();
    for (qsizetype i = changes.size() - 1; i >= 0; --i)
        applyChange(storage, changes.at(i));
    storage->endEditing();

    QVUndoManager *undoManager = view->undoManager();
    if (undoManager && undoManager->isUndoRegistrationEnabled() && !undoActionName.isEmpty())
        undoManager->setActionName(undoActionName);
    if (view->isSelectable())
        if (const QVOptionalRangeList results = QVAttributedStringChange::rangeValuesFromArray(changes))
            view->setSelectedRanges(*results);
    view->didChangeText();
}

void QVTextViewModifier::modifyTextViewSelectedRanges(QVTextView *view, const QString &undoActionName,
                                                      const ChangeProducer &producer)
{
    if (!view)
        return;
    modifyTextView(view, view->selectedRanges(), undoActionName, producer);
}

void QVTextViewModifier::applyChange(QVTextStorage *storage, const QVAttributedStringChange &change)
{
    const QVRange range = change.originalRange();
    switch (change.changeType()) {
    case QVAttributedStringChangeTypeNone:
        return;
    case QVAttributedStringChangeTypeString:
        storage->replaceCharactersInRange(range, change.attributedString().value_or(QVAttributedString()));
        return;
    case QVAttributedStringChangeTypeAttributes:
        break;
    default:
        qCDebug(lcQVText) << "Skipping a change of unknown type" << quint64(change.changeType());
        return;
    }

    if (const std::optional<QVTextAttributes> attributes = change.attributes()) {
        if (change.attributeAction() == QVAttributeActionSet) {
            storage->setAttributes(*attributes, range);
        } else if (change.attributeAction() == QVAttributeActionAdd) {
            QStringList removed;
            for (auto it = attributes->cbegin(); it != attributes->cend(); ++it) {
                if (isNullMarker(it.value())) {
                    storage->removeAttribute(it.key(), range);
                    removed.append(it.key());
                }
            }
            // Only null markers: they are added as values after all, on purpose.
            QVTextAttributes added = *attributes;
            if (!removed.isEmpty() && removed.size() != attributes->size())
                for (const QString &name : std::as_const(removed))
                    added.remove(name);
            if (added.size() == 1)
                storage->addAttribute(added.firstKey(), added.first(), range);
            else
                storage->addAttributes(added, range);
        } else {
            qCDebug(lcQVText) << "Skipping an attributes change with unknown action" << quint64(change.attributeAction());
        }
        return;
    }

    const std::optional<QList<QVTextAttributeRun>> runs = change.attributeRuns();
    if (!runs || change.attributeAction() != QVAttributeActionAdd)
        return;
    // Runs carry their own ranges; the change's range plays no part.
    for (const QVTextAttributeRun &run : *runs) {
        const QVariant value = run.value();
        if (value.isValid() && !isNullMarker(value))
            storage->addAttribute(run.name(), value, run.range());
        else
            storage->removeAttribute(run.name(), run.range());
    }
}

void QVTextViewModifier::modifyTextViewReplacements(QVTextView *view, const QVRangeList &ranges,
                                                    const QVariantList &replacements, const QString &undoActionName)
{
    if (!view || !view->isEditable() || ranges.isEmpty())
        return;
    QVTextStorage *storage = view->textStorage();
    if (!storage)
        return;

    QVariantList texts = replacements;
    bool normalise = texts.size() != ranges.size();
    for (QVariant &text : texts) {
        if (isNullMarker(text)) {
            text = QString(u""_s);
            normalise = true;
        } else if (text.metaType() != QMetaType::fromType<QString>() && !isAttributedString(text)) {
            qCDebug(lcQVText) << "Refusing a replacement of type" << text.metaType().name();
            return;
        }
    }
    if (normalise) {
        const QVariant filler = texts.size() == 1 ? texts.constFirst() : QVariant(QString(u""_s));
        texts.resize(qMin(texts.size(), ranges.size()));
        while (texts.size() < ranges.size())
            texts.append(filler);
    }

    if (const QVTextView::ShouldChangeTextDelegate delegate = view->shouldChangeTextDelegate()) {
        QStringList strings;
        strings.reserve(texts.size());
        for (const QVariant &text : std::as_const(texts))
            strings.append(plainText(text));
        if (!delegate(view, ranges, strings))
            return;
    }

    // Where each new text lies once all are in, and the attributed texts they
    // replace, both in list order: the inverse call needs exactly these.
    QVRangeList newRanges;
    QVariantList oldTexts;
    newRanges.reserve(ranges.size());
    oldTexts.reserve(ranges.size());
    qint64 delta = 0;
    for (qsizetype i = 0; i < ranges.size(); ++i) {
        const QVRange range = ranges.at(i);
        const quint64 newLength = replacementLength(texts.at(i));
        newRanges.append(QVMakeRange(quint64(qint64(range.location) + delta), newLength));
        oldTexts.append(QVariant::fromValue(storage->attributedSubstringFromRange(range)));
        delta += qint64(newLength) - qint64(range.length);
    }

    QVUndoManager *undoManager = view->undoManager();
    const bool registering = undoManager && undoManager->isUndoRegistrationEnabled();
    // One pass: a widget's own undo history records the whole call as one step
    // (and such a manager ignores the registration below, having the step already).
    storage->beginEditing();
    for (qsizetype i = ranges.size() - 1; i >= 0; --i) {
        const QVariant &text = texts.at(i);
        if (isAttributedString(text))
            storage->replaceCharactersInRange(ranges.at(i), text.value<QVAttributedString>());
        else
            storage->replaceCharactersInRange(ranges.at(i), text.toString());
    }
    if (registering) {
        undoManager->registerUndo([view = QPointer<QVTextView>(view), newRanges, oldTexts, undoActionName] {
            modifyTextViewReplacements(view, newRanges, oldTexts, undoActionName);
        });
    }
    storage->endEditing();
    if (registering && !undoActionName.isEmpty())
        undoManager->setActionName(undoActionName);

    if (view->isSelectable())
        view->setSelectedRanges(newRanges);
    view->didChangeText();
}

void QVTextViewModifier::modifyTextViewPerformAroundRangeOperation(QVTextView *view, QVTextViewModifierAroundRangeOperation operation,
                                                                   const QVRangeList &ranges,
                                                                   const QString &beforeString,
                                                                   const QString &afterString,
                                                                   const QString &undoActionName)
{
    if (!view || !view->textStorage() || ranges.isEmpty())
        return;
    if (quint64(operation) > quint64(QVTextViewModifierAroundRangeOperationToggle)) {
        qCDebug(lcQVText) << "Ignoring unknown around-range operation" << quint64(operation);
        return;
    }
    const QString text = view->textStorage()->string();
    const quint64 textLength = quint64(text.size());
    const quint64 beforeLength = quint64(beforeString.size());
    const quint64 afterLength = quint64(afterString.size());

    auto wrappedInside = [&](QVRange range) {
        return QVMaxRange(range) <= textLength && range.length >= beforeLength + afterLength
            && QStringView(text).sliced(qsizetype(range.location)).startsWith(beforeString)
            && QStringView(text).first(qsizetype(QVMaxRange(range))).endsWith(afterString);
    };
    auto wrappedOutside = [&](QVRange range) {
        return range.location >= beforeLength && QVMaxRange(range) + afterLength <= textLength
            && QStringView(text).first(qsizetype(range.location)).endsWith(beforeString)
            && QStringView(text).sliced(qsizetype(QVMaxRange(range))).startsWith(afterString);
    };

    // The pipeline replaces only the ranges it is given, so a range whose
    // strings sit just outside it is widened to take them in.
    QVRangeList workRanges = ranges;
    QList<bool> unwrap(ranges.size(), false);
    if (operation != QVTextViewModifierAroundRangeOperationWrap) {
        for (qsizetype i = 0; i < workRanges.size(); ++i) {
            const QVRange range = workRanges.at(i);
            if (wrappedInside(range)) {
                unwrap[i] = true;
            } else if (wrappedOutside(range)) {
                unwrap[i] = true;
                workRanges[i] = QVMakeRange(range.location - beforeLength, range.length + beforeLength + afterLength);
            }
        }
    }

    qsizetype index = 0;
    qint64 delta = 0;
    auto producer = [&](QVTextStorage *storage, QVRange range) -> std::optional<QVAttributedStringChange> {
        const bool unwrapping = unwrap.value(index++);
        if (operation == QVTextViewModifierAroundRangeOperationUnwrap && !unwrapping) {
            // Left alone, but its selection follows the edits before it.
            QVAttributedStringChange change = QVAttributedStringChange::noChange();
            change.setRange(shiftedRange(range, delta));
            return change;
        }
        QVAttributedString replacement;
        if (unwrapping) {
            replacement = storage->attributedSubstringFromRange(
                QVMakeRange(range.location + beforeLength, range.length - beforeLength - afterLength));
        } else {
            // The strings take the attributes of the text they enclose (of the
            // text before an empty range).
            const QVAttributedString inner = storage->attributedSubstringFromRange(range);
            QVTextAttributes beforeAttributes;
            if (!inner.isEmpty())
                beforeAttributes = inner.attributesAtIndex(0);
            else if (range.location > 0)
                beforeAttributes
                    = storage->attributedSubstringFromRange(QVMakeRange(range.location - 1, 1)).attributesAtIndex(0);
            const QVTextAttributes afterAttributes
                = inner.isEmpty() ? beforeAttributes : inner.attributesAtIndex(inner.length() - 1);
            replacement = QVAttributedString(beforeString, beforeAttributes);
            replacement.appendAttributedString(inner);
            replacement.appendAttributedString(QVAttributedString(afterString, afterAttributes));
        }
        delta += qint64(replacement.length()) - qint64(range.length);
        return QVAttributedStringChange::attributedStringChange(replacement);
    };
    modifyTextView(view, workRanges, undoActionName, producer);
}

void QVTextViewModifier::modifyTextViewSelectedRangesPerformAroundRangeOperation(QVTextView *view, QVTextViewModifierAroundRangeOperation operation,
                                                                                 const QString &beforeString,
                                                                                 const QString &afterString,
                                                                                 const QString &undoActionName)
{
    if (!view)
        return;
    modifyTextViewPerformAroundRangeOperation(view, operation, view->selectedRanges(), beforeString, afterString,
                                              undoActionName);
}
