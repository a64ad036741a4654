#include "QVKit/Platform/QVUndoManager.h"

#include "QVKit/Platform/QVLog.h"

#include <QtCore/QList>

#include <utility>

namespace {

struct UndoGroup
{
    QString name;
    QList<QVUndoManager::Action> actions;
};

enum class ManagerState { Collecting, Undoing, Redoing };

} // namespace

class QVUndoManagerPrivate
{
public:
    QList<UndoGroup> undoStack;
    QList<UndoGroup> redoStack;
    // The group being filled while grouping is open (or while undo()/redo() run actions).
    UndoGroup openGroup;
    int groupingLevel = 0;
    // Disables minus enables; registration is on while it is not positive.
    int disableCount = 0;
    ManagerState state = ManagerState::Collecting;

    QList<UndoGroup> &stackBeingFilled() { return state == ManagerState::Undoing ? redoStack : undoStack; }

    void pushGroup(UndoGroup group)
    {
        // Empty groups are not steps: nothing could be undone by them.
        if (group.actions.isEmpty())
            return;
        // New work invalidates what was undone before it.
        if (state == ManagerState::Collecting)
            redoStack.clear();
        stackBeingFilled().append(std::move(group));
    }
};

QVUndoManager::QVUndoManager(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<QVUndoManagerPrivate>())
{
}

QVUndoManager::~QVUndoManager() = default;

bool QVUndoManager::isUndoRegistrationEnabled() const
{
    return d->disableCount <= 0;
}

void QVUndoManager::disableUndoRegistration()
{
    ++d->disableCount;
}

void QVUndoManager::enableUndoRegistration()
{
    --d->disableCount;
}

void QVUndoManager::registerUndo(Action action)
{
    if (!action || !isUndoRegistrationEnabled())
        return;
    if (d->groupingLevel > 0) {
        d->openGroup.actions.append(std::move(action));
        return;
    }
    UndoGroup group;
    group.actions.append(std::move(action));
    d->pushGroup(std::move(group));
    Q_EMIT stacksChanged();
}

void QVUndoManager::setActionName(const QString &name)
{
    if (d->groupingLevel > 0) {
        d->openGroup.name = name;
        return;
    }
    QList<UndoGroup> &stack = d->stackBeingFilled();
    if (!stack.isEmpty())
        stack.last().name = name;
}

QString QVUndoManager::undoActionName() const
{
    return d->undoStack.isEmpty() ? QString() : d->undoStack.last().name;
}

QString QVUndoManager::redoActionName() const
{
    return d->redoStack.isEmpty() ? QString() : d->redoStack.last().name;
}

void QVUndoManager::beginUndoGrouping()
{
    // Nested groups join the outermost one: undoing it undoes them all.
    if (d->groupingLevel++ == 0)
        d->openGroup = UndoGroup();
}

void QVUndoManager::endUndoGrouping()
{
    if (d->groupingLevel == 0) {
        QVLog("%s: no undo group is open. Fix this.", "QVUndoManager::endUndoGrouping");
        return;
    }
    if (--d->groupingLevel > 0)
        return;
    const bool recorded = !d->openGroup.actions.isEmpty();
    d->pushGroup(std::exchange(d->openGroup, UndoGroup()));
    if (recorded)
        Q_EMIT stacksChanged();
}

bool QVUndoManager::canUndo() const
{
    return !d->undoStack.isEmpty();
}

bool QVUndoManager::canRedo() const
{
    return !d->redoStack.isEmpty();
}

static void runGroup(QVUndoManagerPrivate *d, QList<UndoGroup> &from, ManagerState state)
{
    UndoGroup group = from.takeLast();
    d->state = state;
    // The actions' own registrations (the inverse steps) form one group on the
    // other stack, named like the step they came from unless they name it.
    d->groupingLevel = 1;
    d->openGroup = UndoGroup{group.name, {}};
    for (qsizetype i = group.actions.size() - 1; i >= 0; --i)
        group.actions.at(i)();
    if (d->groupingLevel != 1)
        QVLog("%s: an undo action left %d undo groups unbalanced. Fix this.", "QVUndoManager::undo",
              d->groupingLevel - 1);
    d->groupingLevel = 0;
    d->pushGroup(std::exchange(d->openGroup, UndoGroup()));
    d->state = ManagerState::Collecting;
}

void QVUndoManager::undo()
{
    if (d->groupingLevel > 0) {
        QVLog("%s: cannot undo while an undo group is open. Fix this.", "QVUndoManager::undo");
        return;
    }
    if (d->undoStack.isEmpty() || d->state != ManagerState::Collecting)
        return;
    runGroup(d.get(), d->undoStack, ManagerState::Undoing);
    Q_EMIT stacksChanged();
}

void QVUndoManager::redo()
{
    if (d->groupingLevel > 0) {
        QVLog("%s: cannot redo while an undo group is open. Fix this.", "QVUndoManager::redo");
        return;
    }
    if (d->redoStack.isEmpty() || d->state != ManagerState::Collecting)
        return;
    runGroup(d.get(), d->redoStack, ManagerState::Redoing);
    Q_EMIT stacksChanged();
}

bool QVUndoManager::isUndoing() const
{
    return d->state == ManagerState::Undoing;
}

bool QVUndoManager::isRedoing() const
{
    return d->state == ManagerState::Redoing;
}

void QVUndoManager::removeAllActions()
{
    d->undoStack.clear();
    d->redoStack.clear();
    d->openGroup = UndoGroup();
    Q_EMIT stacksChanged();
}
