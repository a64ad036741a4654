#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVTextDocumentUndoManager.h>
#include <QVKit/Platform/QVTextEditView.h>

#include <QtGui/QColor>
#include <QtGui/QTextBlock>
#include <QtGui/QTextCursor>
#include <QtGui/QTextDocument>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTextEdit>

#include <gtest/gtest.h>

#include "support/QVTestSupport.h"

using namespace Qt::StringLiterals;

namespace {

const QVariant NullMarker = QVariant::fromValue(nullptr);

QVTextAttributes richAttributes()
{
    return {
        {QVFontFamilyAttributeName, u"DejaVu Sans"_s},
        {QVFontPointSizeAttributeName, 13.5},
        {QVFontWeightAttributeName, 700},
        {QVFontItalicAttributeName, true},
        {QVUnderlineAttributeName, false},
        {QVForegroundColorAttributeName, QColor(Qt::red)},
        {QVBackgroundColorAttributeName, QColor(0x11, 0x22, 0x33)},
        {u"QVLink"_s, u"https://example.org/ü"_s},
        {u"QVMarks"_s, QVariantList{1, NullMarker}},
    };
}

} // namespace

TEST(QVTextEditViewTest, AttributesRoundTripThroughCharFormats)
{
    QTextEdit edit;
    QVTextEditView view(&edit);
    QVTextStorage *storage = view.textStorage();
    // Non-BMP letters, a no-break space and a line separator keep their code units.
    const QString text = u"𝒳 a\u00A0b\u2028c😀"_s;
    QVAttributedString source(u"plain "_s);
    source.appendAttributedString(QVAttributedString(text, richAttributes()));
    // Values a format cannot show travel like any other attribute.
    const QVTextAttributes odd{{QVFontWeightAttributeName, u"heavy"_s},
                               {QVForegroundColorAttributeName, NullMarker}};
    source.appendAttributedString(QVAttributedString(u" odd"_s, odd));
    storage->replaceCharactersInRange(QVMakeRange(0, 0), source);

    EXPECT_EQ(storage->string(), source.string());
    EXPECT_EQ(storage->length(), source.length());
    EXPECT_EQ(storage->attributedString(), source) << storage->attributedString().description().toStdString();
    EXPECT_TRUE(storage->attributedSubstringFromRange(QVMakeRange(0, 6)).attributesAtIndex(0).isEmpty())
        << "unformatted text has no attributes";

    QTextCursor cursor(edit.document());
    cursor.setPosition(8);
    EXPECT_EQ(cursor.charFormat().fontWeight(), 700) << "visual attributes are the format's own properties";
    EXPECT_EQ(cursor.charFormat().foreground().color(), QColor(Qt::red));
    EXPECT_TRUE(cursor.charFormat().fontItalic());

    // Adding and removing keep the other attributes, the carried ones included.
    storage->addAttribute(QVFontItalicAttributeName, false, QVMakeRange(6, 3));
    storage->removeAttribute(u"QVLink"_s, QVMakeRange(7, 2));
    storage->addAttributes({{u"QVLink"_s, u"x"_s}, {QVUnderlineAttributeName, true}}, QVMakeRange(0, 1));
    QVAttributedString expected = source;
    expected.addAttribute(QVFontItalicAttributeName, false, QVMakeRange(6, 3));
    expected.removeAttribute(u"QVLink"_s, QVMakeRange(7, 2));
    expected.addAttributes({{u"QVLink"_s, u"x"_s}, {QVUnderlineAttributeName, true}}, QVMakeRange(0, 1));
    EXPECT_EQ(storage->attributedString(), expected) << storage->attributedString().description().toStdString();

    storage->setAttributes({}, QVMakeRange(0, storage->length()));
    EXPECT_EQ(storage->attributedString(), QVAttributedString(source.string()));
}

TEST(QVTextEditViewTest, MultiLineReplacementKeepsPositions)
{
    QPlainTextEdit edit;
    QVTextEditView view(&edit);
    QVTextStorage *storage = view.textStorage();
    edit.setPlainText(u"first\nsecond"_s);
    const QVTextAttributes bold{{QVFontWeightAttributeName, 700}};
    storage->replaceCharactersInRange(QVMakeRange(3, 6), QVAttributedString(u"A\nB\r\nC"_s, bold));
    // "\r\n" is two code units, so it becomes two block separators: positions stay one per code unit.
    EXPECT_EQ(storage->string(), u"firA\nB\n\nCond"_s);
    EXPECT_EQ(edit.document()->blockCount(), 4);
    EXPECT_EQ(storage->attributedSubstringFromRange(QVMakeRange(3, 6)), QVAttributedString(u"A\nB\n\nC"_s, bold))
        << "block separators carry their attributes";

    // Plain text takes the attributes of the first replaced character.
    storage->replaceCharactersInRange(QVMakeRange(5, 1), u"x\ny"_s);
    EXPECT_EQ(storage->string(), u"firA\nx\ny\n\nCond"_s);
    EXPECT_EQ(storage->attributedSubstringFromRange(QVMakeRange(5, 3)), QVAttributedString(u"x\ny"_s, bold));

    QVLogCapture log;
    storage->replaceCharactersInRange(QVMakeRange(10, 20), u"z"_s);
    EXPECT_EQ(storage->string(), u"firA\nx\ny\n\nCond"_s) << "out of bounds changes nothing";
    EXPECT_TRUE(log.containsFragment(u"out of bounds"_s));
}

TEST(QVTextEditViewTest, SeveralSelectionsShowAsExtraSelections)
{
    QTextEdit edit;
    edit.setPlainText(u"alpha beta gamma delta"_s);
    QTextEdit::ExtraSelection lineHighlight;
    lineHighlight.cursor = QTextCursor(edit.document());
    edit.setExtraSelections({lineHighlight});
    QVTextEditView view(&edit);
    EXPECT_EQ(QVTextView::textViewForWidget(edit.viewport()), &view) << "found from a child widget";
    EXPECT_EQ(view.widget(), &edit);

    const QVRangeList ranges{QVMakeRange(0, 5), QVMakeRange(6, 4), QVMakeRange(17, 5)};
    view.setSelectedRanges(ranges);
    EXPECT_EQ(view.selectedRanges(), ranges);
    EXPECT_EQ(edit.textCursor().selectedText(), u"alpha"_s);
    ASSERT_EQ(edit.extraSelections().size(), 3) << "the other highlight stays";
    EXPECT_EQ(edit.extraSelections().at(1).cursor.selectedText(), u"beta"_s);

    // Edits move the extra selections along.
    view.textStorage()->replaceCharactersInRange(QVMakeRange(0, 5), u"a"_s);
    EXPECT_EQ(view.selectedRanges(), QVRangeList({QVMakeRange(1, 0), QVMakeRange(2, 4), QVMakeRange(13, 5)}));

    // The user moving the cursor drops them.
    QTest::keyClick(&edit, Qt::Key_End);
    EXPECT_EQ(view.selectedRanges(), QVRangeList({QVMakeRange(18, 0)}));
    EXPECT_EQ(edit.extraSelections().size(), 1);

    view.setEditable(false);
    EXPECT_TRUE(edit.isReadOnly());
    EXPECT_TRUE(view.isSelectable()) << "selectability survives read-only";
    view.setSelectable(false);
    EXPECT_FALSE(edit.textInteractionFlags() & (Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard));
    view.setEditable(true);
    EXPECT_FALSE(view.isSelectable());
    EXPECT_TRUE(view.isEditable());
}

TEST(QVTextEditViewTest, EditingPassIsOneNamedUndoStep)
{
    QTextEdit edit;
    QVTextEditView view(&edit);
    auto *undo = qobject_cast<QVTextDocumentUndoManager *>(view.undoManager());
    ASSERT_NE(undo, nullptr);
    QTest::keyClicks(&edit, u"hello world"_s);
    const QVAttributedString before = view.textStorage()->attributedString();

    QVTextStorage *storage = view.textStorage();
    storage->beginEditing();
    storage->beginEditing();
    storage->replaceCharactersInRange(QVMakeRange(6, 5), u"wörld\nline 😀"_s);
    storage->endEditing();
    storage->addAttribute(QVFontWeightAttributeName, 700, QVMakeRange(0, 5));
    storage->addAttribute(u"QVTag"_s, 1, QVMakeRange(0, 2));
    storage->endEditing();
    undo->setActionName(u"Fix"_s);
    const QVAttributedString after = storage->attributedString();

    EXPECT_EQ(undo->undoActionName(), u"Fix"_s);
    undo->undo();
    EXPECT_EQ(storage->attributedString(), before) << "the pass is one step; the typing is another";
    EXPECT_EQ(undo->redoActionName(), u"Fix"_s);
    EXPECT_EQ(undo->undoActionName(), QString());
    undo->redo();
    EXPECT_EQ(storage->attributedString(), after);
    EXPECT_EQ(undo->undoActionName(), u"Fix"_s);

    // A new step where an undone step was does not inherit its name.
    undo->undo();
    QTest::keyClicks(&edit, u"!"_s);
    EXPECT_EQ(undo->undoActionName(), QString());
    EXPECT_FALSE(undo->canRedo());
    EXPECT_EQ(undo->redoActionName(), QString());

    undo->registerUndo([] { FAIL() << "the document records its own steps"; });
    undo->disableUndoRegistration();
    EXPECT_FALSE(undo->isUndoRegistrationEnabled());
    undo->enableUndoRegistration();
    EXPECT_TRUE(edit.document()->isUndoRedoEnabled());
}

TEST(QVTextEditViewTest, FocusedTextViewFollowsFocus)
{
    QWidget window;
    auto *first = new QTextEdit(&window);
    auto *second = new QPlainTextEdit(&window);
    QVTextEditView firstView(first);
    auto *secondView = new QVTextEditView(second);
    window.show();
    window.activateWindow();
    second->setFocus();
    ASSERT_TRUE(QVTest::waitUntil([&] { return QApplication::focusWidget() == second; }));
    EXPECT_EQ(QVTextView::focusedTextView(), secondView);
    delete secondView;
    EXPECT_EQ(QVTextView::focusedTextView(), nullptr) << "a destroyed view is no longer found";
    EXPECT_EQ(QVTextView::textViewForWidget(first), &firstView);
}
