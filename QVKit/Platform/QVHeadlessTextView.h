#pragma once

#include <QVKit/Platform/QVTextView.h>
#include <QVKit/QVKitExport.h>

#include <memory>

class QVHeadlessTextViewPrivate;

/**
 * A text view without a widget: the text lives in a QVAttributedString, for
 * hosts without a display and for the command-line tool.
 *
 * It is editable and selectable when made. The selection keeps the ranges as
 * given, each clipped to the text; an empty list leaves it unchanged. Its undo
 * manager is a QVUndoManager of its own: when shouldChangeTextInRanges()
 * allows an edit (and registration is on), it records a snapshot of the text
 * and the selection, so undoing restores both exactly and redo comes back the
 * same way. An editing pass of the storage (beginEditing() to endEditing())
 * is one undo group.
 */
class QVKIT_EXPORT QVHeadlessTextView : public QVTextView
{
    Q_OBJECT

public:
    explicit QVHeadlessTextView(const QVAttributedString &text = QVAttributedString(), QObject *parent = nullptr);
    explicit QVHeadlessTextView(const QString &text, QObject *parent = nullptr);
    ~QVHeadlessTextView() override;

    bool isEditable() const override;
    void setEditable(bool editable) override;
    bool isSelectable() const override;
    void setSelectable(bool selectable) override;

    QVRangeList selectedRanges() const override;
    void setSelectedRanges(const QVRangeList &ranges) override;

    QVTextStorage *textStorage() override;
    QVUndoManager *undoManager() override;

    bool shouldChangeTextInRanges(const QVRangeList &ranges,
                                  const std::optional<QStringList> &replacementStrings) override;

    /** The whole text with its attributes. */
    QVAttributedString attributedString() const;
    /** The plain text. */
    QString string() const;
    /** Replaces the whole text, outside undo, and puts the insertion point at its start. */
    void setAttributedString(const QVAttributedString &text);

private:
    std::unique_ptr<QVHeadlessTextViewPrivate> d;
};
