// The menus that offer the text core's commands: Transformations, the
// contextual menu of a text view and the Select menu of a menu bar.

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/Platform/QVTextView.h>
#include <QVKit/Text/QVRangeFunctions.h>

#include <QtCore/QPointer>
#include <QtGui/QAction>
#include <QtGui/QKeySequence>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextEdit>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Command = void (QVTextView::*)(QObject *sender);

// The transformation actions, in menu order, with the standard word actions
// of a text widget's menu that each one takes the place of.
struct TransformationItem
{
    const char *title;
    const char *objectName;
    const char *replacedObjectName;
    Command command;
    bool hasShortcut;
};

constexpr TransformationItem transformationItems[] = {
    {"Make Upper Case", "uppercase:", "uppercaseWord:", &QVTextView::uppercase, true},
    {"Make Lower Case", "lowercase:", "lowercaseWord:", &QVTextView::lowercase, false},
    {"Capitalize", "capitalize:", "capitalizeWord:", &QVTextView::capitalize, false},
};

// The text core commands of the contextual menu after the Transformations item.
struct CommandItem
{
    const char *title;
    const char *objectName;
    Command command;
};

constexpr CommandItem contextualItems[] = {
    {"Straighten Quotes", "straightenQuotes:", &QVTextView::straightenQuotes},
    {"Smarten Quotes", "smartenQuotes:", &QVTextView::smartenQuotes},
    {"Insert Quotes", "insertLocalizedQuotes:", &QVTextView::insertLocalizedQuotes},
    {"Insert Alternative Quotes", "insertLocalizedAlternativeQuotes:", &QVTextView::insertLocalizedAlternativeQuotes},
};

QString localized(const char *english)
{
    const QString text = QString::fromLatin1(english);
    return QVBundle::localizedString(text, text, QString());
}

/**
 * An action running the command on the target; without a target, on the
 * text view that has the focus when the action triggers. A target that was
 * destroyed since gets nothing (never some other view).
 */
QAction *makeCommandAction(const char *title, const char *objectName, Command command, QVTextView *target,
                           QObject *parent)
{
    auto *action = new QAction(localized(title), parent);
    action->setObjectName(QString::fromLatin1(objectName));
    const bool hasTarget = target != nullptr;
    QObject::connect(action, &QAction::triggered, action, [action, command, hasTarget, guard = QPointer(target)] {
        QVTextView *view = hasTarget ? guard.data() : QVTextView::focusedTextView();
        if (view)
            (view->*command)(action);
    });
    return action;
}

QAction *makeTransformationAction(const TransformationItem &item, QVTextView *target, QObject *parent)
{
    QAction *action = makeCommandAction(item.title, item.objectName, item.command, target, parent);
    if (item.hasShortcut)
        action->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_U));
    return action;
}

enum class SelectionUnit { Word, Line, Paragraph };

// The range widened to the whole words it touches. An insertion point takes
// the word it stands in or at either edge of; a range touching no word stays.
QVRange wordRangeForRange(const QString &text, QVRange range)
{
    // Words never cross a paragraph break, so the paragraph is enough to look at.
    const QVRange neighbourhood = QVString::paragraphRangeForRange(text, range);
    QVRange result = range;
    QVString::enumerateSubstringsInRange(
        text, neighbourhood,
        QVStringEnumerationByWords | QVStringEnumerationSubstringNotRequired | QVStringEnumerationLocalized,
        [&](const QString &, QVRange word, QVRange, bool *stop) {
            if (word.location > QVMaxRange(range)) {
                *stop = true;
                return;
            }
            const bool touches = range.length == 0
                                     ? word.location <= range.location && range.location <= QVMaxRange(word)
                                     : word.location < QVMaxRange(range) && range.location < QVMaxRange(word);
            if (touches)
                result = QVUnionRange(result, word);
        });
    return result;
}

void selectWholeUnits(SelectionUnit unit)
{
    QVTextView *view = QVTextView::focusedTextView();
    if (!view || !view->isSelectable())
        return;
    const QString text = view->textStorage()->string();
    QVRangeList ranges;
    for (const QVRange range : view->selectedRanges()) {
        switch (unit) {
        case SelectionUnit::Word:
            ranges.append(wordRangeForRange(text, range));
            break;
        case SelectionUnit::Line:
            ranges.append(QVString::lineRangeForRange(text, range));
            break;
        case SelectionUnit::Paragraph:
            ranges.append(QVString::paragraphRangeForRange(text, range));
            break;
        }
    }
    // Widened ranges may now overlap; a view keeps its selection ascending and apart.
    view->setSelectedRanges(QVRangeSanitizeWithOptions(ranges, QVRangeSanitizeOptionSort | QVRangeSanitizeOptionMerge));
}

} // namespace

QMenu *QVTextView::transformationsMenu(QVTextView *target, QWidget *parent)
{
    auto *menu = new QMenu(parent);
    for (const TransformationItem &item : transformationItems)
        menu->addAction(makeTransformationAction(item, target, menu));
    return menu;
}

// The item is the menu action of a QMenu titled "Transformations", as
// QMenu::addMenu makes it: the menu owns the action, so deleting
// action->menu() (or the parent) frees both.
QAction *QVTextView::transformationsMenuItem(QVTextView *target, QWidget *parent)
{
    QMenu *menu = transformationsMenu(target, parent);
    menu->setTitle(localized("Transformations"));
    return menu->menuAction();
}

void QVTextView::replaceTransformationsMenuInMenu(QMenu *menu, QVTextView *target)
{
    if (!menu)
        return;
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        const QString name = action->objectName();
        for (const TransformationItem &item : transformationItems) {
            if (name != QLatin1StringView(item.replacedObjectName))
                continue;
            menu->insertAction(action, makeTransformationAction(item, target, menu));
            menu->removeAction(action);
            break;
        }
    }
}

void QVTextView::insertSelectMenuInMainMenu(QMenuBar *menuBar)
{
    if (!menuBar)
        return;
    auto *selectMenu = new QMenu(localized("Select"), menuBar);
    selectMenu->setObjectName(u"selectMenu"_s);
    const struct
    {
        const char *title;
        const char *objectName;
        SelectionUnit unit;
    } items[] = {
        {"Select Word", "selectWord:", SelectionUnit::Word},
        {"Select Line", "selectLine:", SelectionUnit::Line},
        {"Select Paragraph", "selectParagraph:", SelectionUnit::Paragraph},
    };
    for (const auto &item : items) {
        QAction *action = selectMenu->addAction(localized(item.title));
        action->setObjectName(QString::fromLatin1(item.objectName));
        const SelectionUnit unit = item.unit;
        QObject::connect(action, &QAction::triggered, action, [unit] { selectWholeUnits(unit); });
    }

    // Before the last menu (conventionally Help), counting only actions that open menus.
    const QList<QAction *> actions = menuBar->actions();
    const auto last = std::find_if(actions.crbegin(), actions.crend(), [](QAction *a) { return a->menu(); });
    if (last == actions.crend())
        menuBar->addMenu(selectMenu);
    else
        menuBar->insertMenu(*last, selectMenu);
}

QMenu *QVTextView::coreContextualMenu(QWidget *parent)
{
    QMenu *menu = nullptr;
    if (auto *textEdit = qobject_cast<QTextEdit *>(widget()))
        menu = textEdit->createStandardContextMenu();
    else if (auto *plainTextEdit = qobject_cast<QPlainTextEdit *>(widget()))
        menu = plainTextEdit->createStandardContextMenu();
    if (menu)
        menu->setParent(parent, menu->windowFlags()); // keep it a popup
    else
        menu = new QMenu(parent);

    menu->addSeparator();
    menu->addAction(transformationsMenuItem(this, menu));
    for (const CommandItem &item : contextualItems)
        menu->addAction(makeCommandAction(item.title, item.objectName, item.command, this, menu));
    return menu;
}
