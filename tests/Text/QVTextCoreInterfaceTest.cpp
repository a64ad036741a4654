// The menus that offer the text core's commands.

#include <QVKit/Platform/QVHeadlessTextView.h>
#include <QVKit/Platform/QVTextEditView.h>
#include <QVKit/Platform/QVTextView.h>
#include <QVKit/Platform/QVUndoManager.h>

#include <QtCore/QTranslator>
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QTextEdit>

#include "support/QVTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

QStringList texts(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *action : actions)
        result.append(action->isSeparator() ? u"--"_s : action->text());
    return result;
}

QStringList objectNames(const QList<QAction *> &actions)
{
    QStringList result;
    for (const QAction *action : actions)
        result.append(action->objectName());
    return result;
}

// Marks every text of the application's main table, as a host's translation would.
class MarkingTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *sourceText, const char *, int) const override
    {
        return qstrcmp(context, "Localizable") == 0 ? u"<"_s + QString::fromUtf8(sourceText) + u'>' : QString();
    }
};

} // namespace

TEST(QVTextCoreInterfaceTest, TransformationsMenuAndItem)
{
    std::unique_ptr<QMenu> menu(QVTextView::transformationsMenu());
    const QList<QAction *> actions = menu->actions();
    EXPECT_EQ(texts(actions), (QStringList{u"Make Upper Case"_s, u"Make Lower Case"_s, u"Capitalize"_s}));
    EXPECT_EQ(objectNames(actions), (QStringList{u"uppercase:"_s, u"lowercase:"_s, u"capitalize:"_s}));
    ASSERT_EQ(actions.size(), 3);
    EXPECT_EQ(actions[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_U));
    EXPECT_TRUE(actions[1]->shortcut().isEmpty());
    EXPECT_TRUE(actions[2]->shortcut().isEmpty());

    QAction *item = QVTextView::transformationsMenuItem();
    std::unique_ptr<QMenu> owner(item->menu());
    ASSERT_NE(owner, nullptr);
    EXPECT_EQ(item->text(), u"Transformations"_s);
    EXPECT_EQ(objectNames(owner->actions()), objectNames(actions));

    // Titles and undo names come from the application's main string table.
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    std::unique_ptr<QMenu> translated(QVTextView::transformationsMenu());
    EXPECT_EQ(translated->actions().at(2)->text(), u"<Capitalize>"_s);
    QVHeadlessTextView view(QVAttributedString(u"abc"_s));
    view.setSelectedRanges({QVRange{0, 3}});
    translated->actions().at(1)->trigger(); // no target and no focused view: nothing happens
    EXPECT_EQ(view.textStorage()->string(), u"abc"_s);
    view.uppercase();
    EXPECT_EQ(view.undoManager()->undoActionName(), u"<Uppercase>"_s);
    QCoreApplication::removeTranslator(&translator);
}

TEST(QVTextCoreInterfaceTest, ReplaceTransformationsMenuInMenuKeepsPositions)
{
    const struct
    {
        const char *name;
        QStringList before;
        QStringList after;
    } rows[] = {
        {"none", {u"cut:"_s, u"copy:"_s}, {u"cut:"_s, u"copy:"_s}},
        {"some", {u"a"_s, u"uppercaseWord:"_s, u"b"_s, u"capitalizeWord:"_s},
         {u"a"_s, u"uppercase:"_s, u"b"_s, u"capitalize:"_s}},
        {"all", {u"capitalizeWord:"_s, u"lowercaseWord:"_s, u"uppercaseWord:"_s, u"z"_s},
         {u"capitalize:"_s, u"lowercase:"_s, u"uppercase:"_s, u"z"_s}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QMenu menu;
        for (const QString &name : row.before)
            menu.addAction(name)->setObjectName(name);
        const QList<QAction *> original = menu.actions();
        QVHeadlessTextView target(QVAttributedString(u"Mixed"_s));
        target.setSelectedRanges({QVRange{0, 5}});

        QVTextView::replaceTransformationsMenuInMenu(&menu, &target);
        const QList<QAction *> actions = menu.actions();
        EXPECT_EQ(objectNames(actions), row.after);
        for (qsizetype i = 0; i < actions.size(); ++i) {
            if (row.before[i] == row.after[i]) {
                EXPECT_EQ(actions[i], original[i]) << "untouched actions stay themselves";
            }
        }
        if (const qsizetype upper = row.after.indexOf(u"uppercase:"_s); upper >= 0) {
            EXPECT_EQ(actions[upper]->text(), u"Make Upper Case"_s);
            actions[upper]->trigger();
            EXPECT_EQ(target.textStorage()->string(), u"MIXED"_s);
        }
    }
    QVTextView::replaceTransformationsMenuInMenu(nullptr); // no menu, nothing to do
}

TEST(QVTextCoreInterfaceTest, SelectMenuGoesBeforeTheLastMenu)
{
    const struct
    {
        const char *name;
        QStringList bar; // "+" marks a plain action, everything else a menu
        qsizetype expectedIndex;
    } rows[] = {
        {"empty bar", {}, 0},
        {"before help", {u"File"_s, u"Edit"_s, u"Help"_s}, 2},
        {"plain actions do not count", {u"File"_s, u"Help"_s, u"+About"_s}, 1},
        {"no menu at all", {u"+About"_s}, 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QMenuBar bar;
        for (const QString &title : row.bar) {
            if (title.startsWith(u'+'))
                bar.addAction(title.mid(1));
            else
                bar.addMenu(title);
        }
        QVTextView::insertSelectMenuInMainMenu(&bar);
        const QList<QAction *> actions = bar.actions();
        ASSERT_EQ(actions.size(), row.bar.size() + 1);
        QAction *select = actions.at(row.expectedIndex);
        EXPECT_EQ(select->text(), u"Select"_s);
        ASSERT_NE(select->menu(), nullptr);
        EXPECT_EQ(texts(select->menu()->actions()),
                  (QStringList{u"Select Word"_s, u"Select Line"_s, u"Select Paragraph"_s}));
    }
}

TEST(QVTextCoreInterfaceTest, SelectCommandsWidenTheFocusedViewsSelections)
{
    QWidget window;
    QMenuBar bar(&window);
    QVTextView::insertSelectMenuInMainMenu(&bar);
    const QList<QAction *> commands = bar.actions().at(0)->menu()->actions();
    auto *edit = new QTextEdit(&window);
    QVTextEditView view(edit);
    window.show();
    window.activateWindow();
    edit->setFocus();
    ASSERT_TRUE(QVTest::waitUntil([&] { return QVTextView::focusedTextView() == &view; }));

    // Lines: "one two\n" {0, 8}, "three four\n" {8, 11}, "five" {19, 4}.
    edit->setPlainText(u"one two\nthree four\nfive"_s);
    const struct
    {
        const char *name;
        int command;
        QVRangeList selection;
        QVRangeList expected;
    } rows[] = {
        {"word at and in", 0, {{1, 0}, {9, 1}}, {{0, 3}, {8, 5}}},
        {"word across a line break", 0, {{5, 5}}, {{4, 9}}},
        {"word-free range stays", 0, {{3, 1}}, {{3, 1}}},
        {"line", 1, {{9, 1}}, {{8, 11}}},
        {"lines merge", 1, {{1, 0}, {2, 0}}, {{0, 8}}},
        {"paragraphs", 2, {{5, 5}}, {{0, 19}}},
        {"last paragraph", 2, {{21, 0}}, {{19, 4}}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        view.setSelectedRanges(row.selection);
        commands.at(row.command)->trigger();
        EXPECT_EQ(view.selectedRanges(), row.expected);
    }
    EXPECT_EQ(edit->toPlainText(), u"one two\nthree four\nfive"_s) << "selecting never edits";
}

TEST(QVTextCoreInterfaceTest, ContextualMenuAddsTheTextCoreCommands)
{
    const QStringList ours = {u"--"_s,
                              u"Transformations"_s,
                              u"Straighten Quotes"_s,
                              u"Smarten Quotes"_s,
                              u"Insert Quotes"_s,
                              u"Insert Alternative Quotes"_s};

    QTextEdit edit;
    edit.setPlainText(u"word"_s);
    QVTextEditView view(&edit);
    const std::unique_ptr<QMenu> standard(edit.createStandardContextMenu());
    const QStringList standardTexts = texts(standard->actions());
    ASSERT_FALSE(standardTexts.isEmpty());

    QWidget parent;
    QMenu *menu = view.coreContextualMenu(&parent);
    EXPECT_EQ(menu->parent(), &parent);
    EXPECT_EQ(texts(menu->actions()), standardTexts + ours);
    const QList<QAction *> actions = menu->actions().mid(standardTexts.size());
    ASSERT_EQ(actions.size(), ours.size());
    ASSERT_NE(actions[1]->menu(), nullptr);
    EXPECT_EQ(actions[1]->menu()->actions().size(), 3);

    // The commands work on this view, focused or not.
    view.setSelectedRanges({QVRange{0, 4}});
    actions[4]->trigger();
    EXPECT_EQ(edit.toPlainText(), u"\u201cword\u201d"_s);
    actions[1]->menu()->actions().at(0)->trigger();
    EXPECT_EQ(edit.toPlainText(), u"\u201cWORD\u201d"_s);

    QVHeadlessTextView headless(QVAttributedString(u"x"_s));
    const std::unique_ptr<QMenu> bare(headless.coreContextualMenu());
    EXPECT_EQ(texts(bare->actions()), ours);
}

// Every menu and action belongs to the parent it was made with, or to the
// caller without one; replacing items never deletes what someone else owns.
TEST(QVTextCoreInterfaceTest, MenusBelongToTheirParents)
{
    auto *window = new QWidget;
    const QPointer<QMenu> menu = QVTextView::transformationsMenu(nullptr, window);
    const QPointer<QAction> item = QVTextView::transformationsMenuItem(nullptr, window);
    const QPointer<QMenu> itemMenu = item->menu();
    EXPECT_EQ(menu->parent(), window);
    EXPECT_EQ(itemMenu->parent(), window);

    auto *edit = new QMenu(window);
    QAction *old = edit->addAction(u"Make Upper Case"_s);
    old->setObjectName(u"uppercaseWord:"_s);
    const QPointer<QAction> replaced = old;
    QVTextView::replaceTransformationsMenuInMenu(edit);
    ASSERT_TRUE(replaced) << "taken out of the menu, not deleted";
    EXPECT_FALSE(edit->actions().contains(old));
    const QPointer<QAction> added = edit->actions().value(0);
    EXPECT_EQ(added->parent(), edit);

    QTextEdit textEdit;
    QVTextEditView view(&textEdit);
    const QPointer<QMenu> contextual = view.coreContextualMenu(window);
    EXPECT_EQ(contextual->parent(), window);

    delete window;
    for (const QPointer<QObject> &gone : {QPointer<QObject>(menu), QPointer<QObject>(item), QPointer<QObject>(itemMenu),
                                          QPointer<QObject>(replaced), QPointer<QObject>(added),
                                          QPointer<QObject>(contextual)})
        EXPECT_TRUE(gone.isNull());

    const std::unique_ptr<QMenu> own(QVTextView::transformationsMenu());
    EXPECT_EQ(own->parent(), nullptr) << "without a parent the caller owns the menu";
    const std::unique_ptr<QMenu> ownItemMenu(QVTextView::transformationsMenuItem()->menu());
    EXPECT_EQ(ownItemMenu->parent(), nullptr);
}
