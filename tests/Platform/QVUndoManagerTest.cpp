#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVUndoManager.h>

#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// A value with undoable setters: each set registers the inverse set.
struct Value
{
    QVUndoManager &manager;
    QString text;

    void set(const QString &newText)
    {
        const QString old = text;
        manager.registerUndo([this, old] { set(old); });
        text = newText;
    }
};

} // namespace

TEST(QVUndoManagerTest, GroupsUndoLastToFirstAndRedoAlternates)
{
    QVUndoManager manager;
    QSignalSpy changed(&manager, &QVUndoManager::stacksChanged);
    Value value{manager, u"a"_s};
    QStringList order;

    manager.beginUndoGrouping();
    value.set(u"b"_s);
    manager.registerUndo([&order] { order.append(u"first"_s); });
    manager.registerUndo([&order] { order.append(u"second"_s); });
    value.set(u"c"_s);
    manager.setActionName(u"Typing"_s);
    manager.endUndoGrouping();
    EXPECT_EQ(changed.count(), 1) << "one group recorded";

    value.set(u"d"_s); // outside a group: a step of its own
    manager.setActionName(u"Paste"_s);
    EXPECT_EQ(manager.undoActionName(), u"Paste"_s);
    EXPECT_FALSE(manager.canRedo());

    manager.undo();
    EXPECT_EQ(value.text, u"c"_s);
    EXPECT_EQ(manager.undoActionName(), u"Typing"_s);
    EXPECT_EQ(manager.redoActionName(), u"Paste"_s) << "the redo step keeps the undone step's name";

    manager.undo();
    EXPECT_EQ(value.text, u"a"_s);
    EXPECT_EQ(order, QStringList({u"second"_s, u"first"_s})) << "a group runs last to first";
    EXPECT_FALSE(manager.canUndo());
    EXPECT_EQ(manager.undoActionName(), QString());

    manager.redo();
    EXPECT_EQ(value.text, u"c"_s) << "the whole group comes back";
    manager.redo();
    EXPECT_EQ(value.text, u"d"_s);
    EXPECT_FALSE(manager.canRedo());
    manager.undo();
    manager.undo();
    manager.redo();
    EXPECT_EQ(value.text, u"c"_s) << "undo and redo alternate through the same steps";

    value.set(u"e"_s); // new work drops what could be redone
    EXPECT_FALSE(manager.canRedo());
    EXPECT_EQ(manager.redoActionName(), QString());
    EXPECT_FALSE(manager.isUndoing());
    EXPECT_FALSE(manager.isRedoing());
}

TEST(QVUndoManagerTest, NestedGroupsAndEmptyGroups)
{
    QVUndoManager manager;
    Value value{manager, u"0"_s};
    manager.beginUndoGrouping();
    value.set(u"1"_s);
    manager.beginUndoGrouping();
    value.set(u"2"_s);
    manager.setActionName(u"Inner"_s);
    manager.endUndoGrouping();
    value.set(u"3"_s);
    manager.endUndoGrouping();
    EXPECT_EQ(manager.undoActionName(), u"Inner"_s) << "a nested group joins the outer one";
    manager.undo();
    EXPECT_EQ(value.text, u"0"_s);
    EXPECT_FALSE(manager.canUndo()) << "one step for the nested groups";

    // A group without registrations is no step, and naming afterwards names the newest real step.
    manager.redo();
    manager.beginUndoGrouping();
    manager.endUndoGrouping();
    manager.setActionName(u"Renamed"_s);
    EXPECT_EQ(manager.undoActionName(), u"Renamed"_s);
    manager.undo();
    EXPECT_FALSE(manager.canUndo());
}

TEST(QVUndoManagerTest, RegistrationOffAndMisuse)
{
    QVUndoManager manager;
    Value value{manager, u"a"_s};
    manager.disableUndoRegistration();
    manager.disableUndoRegistration();
    manager.enableUndoRegistration();
    EXPECT_FALSE(manager.isUndoRegistrationEnabled()) << "more disables than enables";
    value.set(u"b"_s);
    EXPECT_FALSE(manager.canUndo());
    manager.enableUndoRegistration();
    EXPECT_TRUE(manager.isUndoRegistrationEnabled());
    value.set(u"c"_s);
    EXPECT_TRUE(manager.canUndo());
    manager.registerUndo({}); // an empty action is no step
    manager.undo();
    EXPECT_EQ(value.text, u"b"_s);

    QVLogCapture log;
    manager.endUndoGrouping();
    manager.beginUndoGrouping();
    manager.undo();
    EXPECT_EQ(value.text, u"b"_s) << "no undo while a group is open";
    manager.endUndoGrouping();
    EXPECT_TRUE(log.contains(u"QVUndoManager::endUndoGrouping: no undo group is open. Fix this."_s));
    EXPECT_TRUE(log.contains(u"QVUndoManager::undo: cannot undo while an undo group is open. Fix this."_s));

    manager.removeAllActions();
    EXPECT_FALSE(manager.canUndo());
    EXPECT_FALSE(manager.canRedo());
}
