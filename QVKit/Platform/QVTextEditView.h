#pragma once

#include <QVKit/Platform/QVTextView.h>
#include <QVKit/QVKitExport.h>

#include <memory>

class QPlainTextEdit;
class QTextDocument;
class QTextEdit;
class QVTextEditViewPrivate;

/**
 * A text view over a QTextEdit or a QPlainTextEdit and the document it has
 * when the view is made.
 *
 * The storage edits the document through QTextCursor. Positions are UTF-16
 * indices of string(), where each block separator counts one and reads as
 * '\n'; a '\n' (or '\r', U+2029) in inserted text starts a new block, so a
 * document never holds '\r'. Attributes map onto QTextCharFormat (font
 * family, point size, weight, italic, underline, foreground and background
 * colour); any other attribute, or a value of a kind the format cannot show,
 * travels in a user property of the format, so it reads back as it was put in.
 * Only properties set on a format are reported: unformatted text has no
 * attributes.
 *
 * An editing pass (beginEditing() to endEditing(), nesting) is one edit block
 * of the document, so it is one step of the document's undo history, which
 * the undo manager (a QVTextDocumentUndoManager) shares with the user's typing.
 *
 * Qt's text widgets have one selection: the first selected range is the
 * widget's selection, the others are shown as extra selections highlighted
 * alike, and selectedRanges() reports all of them. Moving the cursor in the
 * widget (anything but this view's own edits and selections) drops the others.
 * Selectable means selectable by mouse and keyboard; editable means not read-only.
 * When the widget is destroyed, the view stays safe and does nothing.
 */
class QVKIT_EXPORT QVTextEditView : public QVTextView
{
    Q_OBJECT

public:
    explicit QVTextEditView(QTextEdit *textEdit, QObject *parent = nullptr);
    explicit QVTextEditView(QPlainTextEdit *plainTextEdit, QObject *parent = nullptr);
    ~QVTextEditView() override;

    /** The widget when it is a QTextEdit, else nullptr. */
    QTextEdit *textEdit() const;
    /** The widget when it is a QPlainTextEdit, else nullptr. */
    QPlainTextEdit *plainTextEdit() const;
    QTextDocument *document() const;

    bool isEditable() const override;
    void setEditable(bool editable) override;
    bool isSelectable() const override;
    void setSelectable(bool selectable) override;

    QVRangeList selectedRanges() const override;
    /** Clips each range to the text; an empty list leaves the selection unchanged. */
    void setSelectedRanges(const QVRangeList &ranges) override;

    QVTextStorage *textStorage() override;
    QVUndoManager *undoManager() override;

    QWidget *widget() const override;

private:
    void dropExtraSelections();

    std::unique_ptr<QVTextEditViewPrivate> d;
};
