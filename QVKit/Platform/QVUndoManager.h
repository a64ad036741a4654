#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>
#include <memory>

class QVUndoManagerPrivate;

/**
 * Records inverse actions in named groups, and runs them to undo and redo.
 *
 * An action registered while undoing goes to the redo stack, one registered
 * while redoing or in normal work to the undo stack (normal work clears the
 * redo stack). Registrations between beginUndoGrouping() and endUndoGrouping()
 * form one group, that is one undo step; a registration outside any group is
 * a step of its own. Undoing a group runs its actions last to first.
 *
 * Text views whose widget keeps its own undo history (QTextDocument) use a
 * subclass that names and steps through that history instead.
 */
class QVKIT_EXPORT QVUndoManager : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void()>;

    explicit QVUndoManager(QObject *parent = nullptr);
    ~QVUndoManager() override;

    virtual bool isUndoRegistrationEnabled() const;
    /** Registration is off while more disables than enables were called. */
    virtual void disableUndoRegistration();
    virtual void enableUndoRegistration();

    /** Records the inverse of an edit just made; ignored while registration is off. */
    virtual void registerUndo(Action action);
    /** Names the current group (the open one, else the newest on the stack being filled). */
    virtual void setActionName(const QString &name);
    virtual QString undoActionName() const;
    virtual QString redoActionName() const;

    virtual void beginUndoGrouping();
    virtual void endUndoGrouping();

    virtual bool canUndo() const;
    virtual bool canRedo() const;
    virtual void undo();
    virtual void redo();
    virtual bool isUndoing() const;
    virtual bool isRedoing() const;
    virtual void removeAllActions();

Q_SIGNALS:
    /** After a group was recorded, undone or redone, or the stacks were cleared. */
    void stacksChanged();

private:
    std::unique_ptr<QVUndoManagerPrivate> d;
};
