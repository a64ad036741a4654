// The text core's commands on text views, from a menu action down to the
// edited text and its undo step, over a QTextEdit and over the headless view.

#include <QVKit/Platform/QVHeadlessTextView.h>
#include <QVKit/Platform/QVTextEditView.h>
#include <QVKit/Platform/QVTextView.h>
#include <QVKit/Platform/QVUndoManager.h>

#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QTextEdit>

#include "support/QVTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString weight = QVFontWeightAttributeName;

// The view under test, with the widget it may stand on.
struct ViewUnderTest
{
    std::unique_ptr<QTextEdit> textEdit;
    std::unique_ptr<QVTextView> view;
};

struct TextEditFactory
{
    static ViewUnderTest make(const QVAttributedString &text)
    {
        ViewUnderTest result;
        result.textEdit = std::make_unique<QTextEdit>();
        result.view = std::make_unique<QVTextEditView>(result.textEdit.get());
        result.view->textStorage()->replaceCharactersInRange(QVRange{0, 0}, text);
        // The history starts after the setup, so that undo counts only the command's steps.
        result.textEdit->document()->clearUndoRedoStacks();
        return result;
    }
};

struct HeadlessFactory
{
    static ViewUnderTest make(const QVAttributedString &text)
    {
        return {nullptr, std::make_unique<QVHeadlessTextView>(text)};
    }
};

// "große Welt und mehr" with the second word bold.
QVAttributedString walkThroughText()
{
    QVAttributedString text(u"gro\u00dfe Welt und mehr"_s);
    text.addAttribute(weight, 700, QVRange{6, 4});
    return text;
}

struct LocaleGuard
{
    explicit LocaleGuard(const QLocale &locale) { QLocale::setDefault(locale); }
    ~LocaleGuard() { QLocale::setDefault(saved); }
    QLocale saved;
};

template <typename Factory>
class QVTextViewTextCoreTest : public ::testing::Test
{
};

using Factories = ::testing::Types<TextEditFactory, HeadlessFactory>;
TYPED_TEST_SUITE(QVTextViewTextCoreTest, Factories);

} // namespace

TYPED_TEST(QVTextViewTextCoreTest, MakeUpperCaseFromTheMenuIsOneUndoStepOverEverySelection)
{
    ViewUnderTest subject = TypeParam::make(walkThroughText());
    QVTextView *view = subject.view.get();
    QVTextStorage *storage = view->textStorage();
    view->setSelectedRanges({QVRange{0, 10}, QVRange{15, 4}});
    if (subject.textEdit) {
        ASSERT_EQ(subject.textEdit->extraSelections().size(), 1) << "the second range is shown as an extra selection";
    }
    const QVAttributedString before = storage->attributedString();

    std::unique_ptr<QMenu> menu(QVTextView::transformationsMenu(view));
    menu->actions().at(0)->trigger();

    // ß grew to SS: the bold word and the second selection moved one unit on.
    EXPECT_EQ(storage->string(), u"GROSSE WELT und MEHR"_s);
    QVRange bold;
    EXPECT_EQ(storage->attributedString().attributeAtIndex(weight, 7, &bold).toInt(), 700);
    EXPECT_EQ(bold, (QVRange{7, 4}));
    EXPECT_FALSE(storage->attributedString().attributeAtIndex(weight, 0).isValid());
    EXPECT_EQ(view->selectedRanges(), (QVRangeList{{0, 11}, {16, 4}}));
    EXPECT_EQ(view->undoManager()->undoActionName(), u"Uppercase"_s);
    const QVAttributedString after = storage->attributedString();

    view->undoManager()->undo();
    EXPECT_EQ(storage->attributedString(), before) << storage->attributedString().description().toStdString();
    EXPECT_FALSE(view->undoManager()->canUndo()) << "one step held the whole command";
    EXPECT_EQ(view->undoManager()->redoActionName(), u"Uppercase"_s);
    QCoreApplication::processEvents(); // the widget's manager checks for an emptied history later
    EXPECT_EQ(view->undoManager()->redoActionName(), u"Uppercase"_s);

    view->undoManager()->redo();
    EXPECT_EQ(storage->attributedString(), after);
    view->undoManager()->undo();
    EXPECT_EQ(storage->string(), before.string());
}

TYPED_TEST(QVTextViewTextCoreTest, EachCommandRunsOverEverySelectionWithItsName)
{
    QAction parenthesis(u"ignored"_s);
    parenthesis.setData(u")"_s); // the data wins over the title, and a closing delimiter finds its pair
    QAction bracket(u"["_s);

    const struct
    {
        const char *name;
        std::function<void(QVTextView *)> command;
        QString text;
        QVRangeList selection;
        QString expected;
        QString undoName;
    } rows[] = {
        {"lowercase", [](QVTextView *v) { v->lowercase(); }, u"\u0130B CD \u03a3Q"_s, {{0, 2}, {6, 2}},
         u"i\u0307b CD \u03c3q"_s, u"Lowercase"_s},
        {"capitalize", [](QVTextView *v) { v->capitalize(); }, u"hELLO wORLD again"_s, {{0, 5}, {6, 5}},
         u"Hello World again"_s, u"Capitalize"_s},
        {"smarten", [](QVTextView *v) { v->smartenQuotes(); }, u"\"ab\" x 'cd' \"z\""_s, {{0, 4}, {7, 4}},
         u"\u201cab\u201d x \u2018cd\u2019 \"z\""_s, u"Smarten Quotes"_s},
        {"straighten", [](QVTextView *v) { v->straightenQuotes(); }, u"\u201cab\u201d x \u2018cd\u2019 \u201cz\u201d"_s,
         {{0, 4}, {7, 4}}, u"\"ab\" x 'cd' \u201cz\u201d"_s, u"Straighten Quotes"_s},
        {"quote", [](QVTextView *v) { v->insertLocalizedQuotes(); }, u"ab cd ef"_s, {{0, 2}, {6, 2}},
         u"\u201cab\u201d cd \u201cef\u201d"_s, u"Quote"_s},
        {"alternative quote", [](QVTextView *v) { v->insertLocalizedAlternativeQuotes(); }, u"ab cd ef"_s,
         {{0, 2}, {6, 2}}, u"\u2018ab\u2019 cd \u2018ef\u2019"_s, u"Alternative Quote"_s},
        {"delimiter from data", [&](QVTextView *v) { v->insertDelimiter(&parenthesis); }, u"ab cd ef"_s,
         {{0, 2}, {6, 2}}, u"(ab) cd (ef)"_s, u"Insert Delimiters"_s},
        {"delimiter from title", [&](QVTextView *v) { v->insertDelimiter(&bracket); }, u"ab cd ef"_s,
         {{0, 2}, {6, 2}}, u"[ab] cd [ef]"_s, u"Insert Delimiters"_s},
        {"open and close", [](QVTextView *v) { v->insertOpenDelimiter(u"<<"_s, u">"_s); }, u"ab cd ef"_s,
         {{0, 2}, {6, 2}}, u"<<ab> cd <<ef>"_s, u"Insert Delimiters"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        ViewUnderTest subject = TypeParam::make(QVAttributedString(row.text));
        QVTextView *view = subject.view.get();
        view->setSelectedRanges(row.selection);
        row.command(view);
        EXPECT_EQ(view->textStorage()->string(), row.expected);
        EXPECT_EQ(view->undoManager()->undoActionName(), row.undoName);
        view->undoManager()->undo();
        EXPECT_EQ(view->textStorage()->string(), row.text);
    }
}

TYPED_TEST(QVTextViewTextCoreTest, QuotesFollowTheCurrentLocale)
{
    const LocaleGuard german(QLocale(QLocale::German, QLocale::Germany));
    ViewUnderTest subject = TypeParam::make(QVAttributedString(u"ein Wort"_s));
    QVTextView *view = subject.view.get();
    view->setSelectedRanges({QVRange{4, 4}});
    view->insertLocalizedQuotes();
    EXPECT_EQ(view->textStorage()->string(), u"ein \u201eWort\u201c"_s);

    view->setSelectedRanges({QVRange{0, 3}});
    view->insertLocalizedAlternativeQuotes();
    EXPECT_EQ(view->textStorage()->string(), u"\u201aein\u2018 \u201eWort\u201c"_s);
    EXPECT_EQ(view->undoManager()->undoActionName(), u"Alternative Quote"_s);
}

TYPED_TEST(QVTextViewTextCoreTest, ReadOnlyViewsAreLeftAlone)
{
    ViewUnderTest subject = TypeParam::make(walkThroughText());
    QVTextView *view = subject.view.get();
    view->setEditable(false);
    view->setSelectedRanges({QVRange{0, 10}});
    const QVAttributedString before = view->textStorage()->attributedString();
    view->uppercase();
    view->insertLocalizedQuotes();
    view->insertOpenDelimiter(u"("_s, u")"_s);
    EXPECT_EQ(view->textStorage()->attributedString(), before);
    EXPECT_FALSE(view->undoManager()->canUndo());
}

// Without a target, the menu works on the text view that has the keyboard focus.
TEST(QVTextViewTextCoreFocusTest, MenuWithoutTargetWorksOnTheFocusedView)
{
    QWidget window;
    auto *first = new QTextEdit(&window);
    auto *second = new QTextEdit(&window);
    first->setPlainText(u"First"_s);
    second->setPlainText(u"Second"_s);
    QVTextEditView firstView(first);
    QVTextEditView secondView(second);
    firstView.setSelectedRanges({QVRange{0, 5}});
    secondView.setSelectedRanges({QVRange{0, 6}});
    window.show();
    window.activateWindow();
    second->setFocus();
    ASSERT_TRUE(QVTest::waitUntil([&] { return QApplication::focusWidget() == second; }));
    ASSERT_EQ(QVTextView::focusedTextView(), &secondView);

    std::unique_ptr<QMenu> menu(QVTextView::transformationsMenu());
    menu->actions().at(0)->trigger();
    EXPECT_EQ(first->toPlainText(), u"First"_s);
    EXPECT_EQ(second->toPlainText(), u"SECOND"_s);

    // A target that is gone gets nothing, and the focused view is not used instead.
    auto *third = new QTextEdit(&window);
    third->setPlainText(u"Third"_s);
    auto target = std::make_unique<QVTextEditView>(third);
    target->setSelectedRanges({QVRange{0, 5}});
    std::unique_ptr<QMenu> targeted(QVTextView::transformationsMenu(target.get()));
    targeted->actions().at(1)->trigger();
    EXPECT_EQ(third->toPlainText(), u"third"_s);
    target.reset();
    targeted->actions().at(0)->trigger();
    EXPECT_EQ(third->toPlainText(), u"third"_s);
    EXPECT_EQ(second->toPlainText(), u"SECOND"_s);
}
