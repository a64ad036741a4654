#include "QVKit/Platform/QVTextDocumentUndoManager.h"

#include "QVKit/Platform/QVLog.h"

#include <QtCore/QMap>
#include <QtCore/QPointer>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>

class QVTextDocumentUndoManagerPrivate
{
public:
    QPointer<QTextDocument> document;
    // The document counts commands, not steps: an edit block holds several.
    // A step is known here by its end, the command count when it was complete
    // (availableUndoSteps() right after it), mapped to its name ("" unnamed).
    // Keys are ascending, so the step to redo is the first key past the
    // current count.
    QMap<int, QString> steps;
    // The command count the last time the document was at rest: where a new
    // step starts.
    int position = 0;
    QTextCursor groupingCursor;
    int groupingLevel = 0;
    int disableCount = 0;
    bool undoing = false;
    bool redoing = false;

    int undoCount() const { return document ? document->availableUndoSteps() : 0; }

    void stepAdded()
    {
        // The steps after the new step's start were undone and are gone now,
        // as are ends that fell inside the new step.
        steps.erase(steps.upperBound(position), steps.end());
        position = undoCount();
        steps.insert(position, QString());
    }
};

QVTextDocumentUndoManager::QVTextDocumentUndoManager(QTextDocument *document, QObject *parent)
    : QVUndoManager(parent)
    , d(std::make_unique<QVTextDocumentUndoManagerPrivate>())
{
    d->document = document;
    if (!document)
        return;
    d->position = d->undoCount();
    // The document announces a new step before the change of contents it
    // made, and every undo and redo with a change of contents.
    connect(document, &QTextDocument::undoCommandAdded, this, [this] {
        d->stepAdded();
        Q_EMIT stacksChanged();
    });
    connect(document, &QTextDocument::contentsChanged, this, [this] { d->position = d->undoCount(); });
    connect(document, &QTextDocument::undoAvailable, this, [this](bool available) {
        // Nothing to undo nor to redo means the history was emptied, which the
        // document does not report as a change of contents. While the document
        // undoes a step it reports its history as switched off (and so counts
        // nothing to redo yet): "nothing to undo" then means the first step
        // was undone.
        if (!available && d->document->isUndoRedoEnabled() && d->document->availableRedoSteps() == 0) {
            d->steps.clear();
            d->position = 0;
        }
        Q_EMIT stacksChanged();
    });
    connect(document, &QTextDocument::redoAvailable, this, &QVUndoManager::stacksChanged);
}

QVTextDocumentUndoManager::~QVTextDocumentUndoManager() = default;

QTextDocument *QVTextDocumentUndoManager::document() const
{
    return d->document;
}

bool QVTextDocumentUndoManager::isUndoRegistrationEnabled() const
{
    return d->document && d->document->isUndoRedoEnabled();
}

void QVTextDocumentUndoManager::disableUndoRegistration()
{
    if (++d->disableCount == 1 && d->document)
        d->document->setUndoRedoEnabled(false);
}

void QVTextDocumentUndoManager::enableUndoRegistration()
{
    if (--d->disableCount == 0 && d->document)
        d->document->setUndoRedoEnabled(true);
}

void QVTextDocumentUndoManager::registerUndo(Action action)
{
    Q_UNUSED(action);
}

void QVTextDocumentUndoManager::setActionName(const QString &name)
{
    if (canUndo())
        d->steps.insert(d->undoCount(), name);
}

QString QVTextDocumentUndoManager::undoActionName() const
{
    return canUndo() ? d->steps.value(d->undoCount()) : QString();
}

QString QVTextDocumentUndoManager::redoActionName() const
{
    if (!canRedo())
        return QString();
    const auto next = d->steps.upperBound(d->undoCount());
    return next == d->steps.end() ? QString() : next.value();
}

void QVTextDocumentUndoManager::beginUndoGrouping()
{
    if (!d->document)
        return;
    if (d->groupingLevel++ == 0)
        d->groupingCursor = QTextCursor(d->document);
    d->groupingCursor.beginEditBlock();
}

void QVTextDocumentUndoManager::endUndoGrouping()
{
    if (!d->document)
        return;
    if (d->groupingLevel == 0) {
        QVLog("%s: no undo group is open. Fix this.", "QVTextDocumentUndoManager::endUndoGrouping");
        return;
    }
    --d->groupingLevel;
    d->groupingCursor.endEditBlock();
}

bool QVTextDocumentUndoManager::canUndo() const
{
    return d->document && d->document->isUndoAvailable();
}

bool QVTextDocumentUndoManager::canRedo() const
{
    return d->document && d->document->isRedoAvailable();
}

void QVTextDocumentUndoManager::undo()
{
    if (d->groupingLevel > 0) {
        QVLog("%s: cannot undo while an undo group is open. Fix this.", "QVTextDocumentUndoManager::undo");
        return;
    }
    if (!canUndo() || d->undoing || d->redoing)
        return;
    d->undoing = true;
    d->document->undo();
    d->undoing = false;
}

void QVTextDocumentUndoManager::redo()
{
    if (d->groupingLevel > 0) {
        QVLog("%s: cannot redo while an undo group is open. Fix this.", "QVTextDocumentUndoManager::redo");
        return;
    }
    if (!canRedo() || d->undoing || d->redoing)
        return;
    d->redoing = true;
    d->document->redo();
    d->redoing = false;
}

bool QVTextDocumentUndoManager::isUndoing() const
{
    return d->undoing;
}

bool QVTextDocumentUndoManager::isRedoing() const
{
    return d->redoing;
}

void QVTextDocumentUndoManager::removeAllActions()
{
    if (d->document)
        d->document->clearUndoRedoStacks();
    d->steps.clear();
    d->position = 0;
    Q_EMIT stacksChanged();
}
