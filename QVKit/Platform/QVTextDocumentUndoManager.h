#pragma once

#include <QVKit/Platform/QVUndoManager.h>
#include <QVKit/QVKitExport.h>

#include <memory>

class QTextDocument;
class QVTextDocumentUndoManagerPrivate;

/**
 * An undo manager over a QTextDocument's own undo history, so that the
 * user's typing, the widget's Undo (Ctrl+Z) and the edits of text operations
 * share one history.
 *
 * undo(), redo(), canUndo() and canRedo() are the document's. A step is
 * named by setActionName() after it was made; names are kept per position in
 * the history and dropped when new steps replace the steps they named.
 * Grouping maps onto the document's edit blocks.
 *
 * registerUndo() does nothing: every edit of the document is already recorded
 * by the document itself, together with its inverse. Registration is the
 * document's isUndoRedoEnabled(); turning it off empties the document's
 * history, as QTextDocument does.
 */
class QVKIT_EXPORT QVTextDocumentUndoManager : public QVUndoManager
{
    Q_OBJECT

public:
    explicit QVTextDocumentUndoManager(QTextDocument *document, QObject *parent = nullptr);
    ~QVTextDocumentUndoManager() override;

    QTextDocument *document() const;

    bool isUndoRegistrationEnabled() const override;
    void disableUndoRegistration() override;
    void enableUndoRegistration() override;

    /** Does nothing: the document records every edit made to it. */
    void registerUndo(Action action) override;
    /** Names the newest step of the document's history (a step closed by endUndoGrouping() or an edit). */
    void setActionName(const QString &name) override;
    QString undoActionName() const override;
    QString redoActionName() const override;

    void beginUndoGrouping() override;
    void endUndoGrouping() override;

    bool canUndo() const override;
    bool canRedo() const override;
    void undo() override;
    void redo() override;
    bool isUndoing() const override;
    bool isRedoing() const override;
    void removeAllActions() override;

private:
    std::unique_ptr<QVTextDocumentUndoManagerPrivate> d;
};
