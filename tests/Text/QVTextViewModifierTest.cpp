#include <QVKit/Platform/QVHeadlessTextView.h>
#include <QVKit/Platform/QVTextEditView.h>
#include <QVKit/Platform/QVUndoManager.h>
#include <QVKit/Text/QVTextViewModifier.h>

#include <QtGui/QColor>
#include <QtGui/QTextDocument>
#include <QtTest/QSignalSpy>
#include <QtWidgets/QTextEdit>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QVariant NullMarker = QVariant::fromValue(nullptr);
const QString Weight = QVFontWeightAttributeName;
const QString Color = QVForegroundColorAttributeName;
const QString Family = QVFontFamilyAttributeName;

struct HeadlessFactory
{
    static constexpr const char *name = "Headless";
    std::unique_ptr<QVHeadlessTextView> view;

    QVTextView *make(const QVAttributedString &text)
    {
        view = std::make_unique<QVHeadlessTextView>(text);
        return view.get();
    }
};

struct TextEditFactory
{
    static constexpr const char *name = "TextEdit";
    std::unique_ptr<QTextEdit> edit;
    std::unique_ptr<QVTextEditView> view;

    QVTextView *make(const QVAttributedString &text)
    {
        view.reset();
        edit = std::make_unique<QTextEdit>();
        view = std::make_unique<QVTextEditView>(edit.get());
        view->textStorage()->replaceCharactersInRange(QVMakeRange(0, 0), text);
        edit->document()->clearUndoRedoStacks();
        return view.get();
    }
};

struct FactoryNames
{
    template <typename Factory> static std::string GetName(int) { return Factory::name; }
};

QVAttributedStringChange stringChange(const QString &text)
{
    return QVAttributedStringChange::attributedStringChange(QVAttributedString(text));
}

} // namespace

template <typename Factory> class QVTextViewModifierTest : public ::testing::Test
{
protected:
    // A view over the text that counts the permission requests and change reports.
    QVTextView *makeView(const QVAttributedString &text)
    {
        QVTextView *view = factory.make(text);
        view->setShouldChangeTextDelegate(
            [this](QVTextView *, const QVRangeList &ranges, const std::optional<QStringList> &strings) {
                askedRanges.append(ranges);
                askedStrings.append(strings);
                return allow;
            });
        changes = std::make_unique<QSignalSpy>(view, &QVTextView::textDidChange);
        return view;
    }
    QString text() { return factory.view->textStorage()->string(); }
    QVAttributedString attributedText() { return factory.view->textStorage()->attributedString(); }

    Factory factory;
    bool allow = true;
    QList<QVRangeList> askedRanges;
    QList<std::optional<QStringList>> askedStrings;
    std::unique_ptr<QSignalSpy> changes;
};

using Factories = ::testing::Types<HeadlessFactory, TextEditFactory>;
TYPED_TEST_SUITE(QVTextViewModifierTest, Factories, FactoryNames);

TYPED_TEST(QVTextViewModifierTest, ReplacementsShiftTheRangesAfterThem)
{
    const QVAttributedString original(u"abcdefghijklmno"_s, {{Weight, 700}});
    QVTextView *view = this->makeView(original);
    QVTextViewModifier::modifyTextView(
        view, {QVMakeRange(0, 3), QVMakeRange(10, 2)}, u"Replace"_s,
        [](QVTextStorage *, QVRange range) { return stringChange(range.location == 0 ? u"12345"_s : u"Z"_s); });
    EXPECT_EQ(this->text(), u"12345defghijZmno"_s);
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(0, 5), QVMakeRange(12, 1)}));
    ASSERT_EQ(this->askedRanges.size(), 1) << "one permission request";
    EXPECT_EQ(this->askedRanges.constFirst(), QVRangeList({QVMakeRange(0, 3), QVMakeRange(10, 2)}));
    EXPECT_EQ(this->askedStrings.constFirst(), QStringList({u"12345"_s, u"Z"_s}));
    EXPECT_EQ(this->changes->count(), 1);
    EXPECT_EQ(view->undoManager()->undoActionName(), u"Replace"_s);

    const QVAttributedString edited = this->attributedText();
    view->undoManager()->undo();
    EXPECT_EQ(this->attributedText(), original) << "one undo step restores the text exactly";
    EXPECT_FALSE(view->undoManager()->canUndo());
    view->undoManager()->redo();
    EXPECT_EQ(this->attributedText(), edited);
}

TYPED_TEST(QVTextViewModifierTest, NothingProducedStillAsksAndReports)
{
    QVTextView *view = this->makeView(QVAttributedString(u"héllo wörld"_s));
    const QVRangeList ranges {QVMakeRange(1, 2), QVMakeRange(6, 0)};
    int calls = 0;
    QVTextViewModifier::modifyTextView(view, ranges, u"Nothing"_s,
                                       [&](QVTextStorage *, QVRange) -> std::optional<QVAttributedStringChange> {
                                           ++calls;
                                           return std::nullopt;
                                       });
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(this->text(), u"héllo wörld"_s);
    ASSERT_EQ(this->askedStrings.size(), 1);
    EXPECT_EQ(this->askedStrings.constFirst(), std::nullopt) << "no replacement strings without a replacement";
    EXPECT_EQ(this->changes->count(), 1);
    EXPECT_EQ(view->selectedRanges(), ranges);
}

TYPED_TEST(QVTextViewModifierTest, NoChangeKeepsItsUnshiftedRange)
{
    QVTextView *view = this->makeView(QVAttributedString(u"0123456789"_s));
    QVTextViewModifier::modifyTextView(
        view, {QVMakeRange(0, 2), QVMakeRange(5, 2), QVMakeRange(8, 1)}, QString(),
        [](QVTextStorage *, QVRange range) -> std::optional<QVAttributedStringChange> {
            if (range.location == 0)
                return stringChange(u"ABCDEFGHI"_s);
            if (range.location == 8)
                return QVAttributedStringChange::attributesChange({{Weight, 700}}, QVAttributeActionAdd);
            return std::nullopt;
        });
    EXPECT_EQ(this->text(), u"ABCDEFGHI23456789"_s);
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(0, 9), QVMakeRange(5, 2), QVMakeRange(15, 1)}))
        << "the no-change is not shifted, the attributes change is";
    QVRange bold;
    EXPECT_EQ(this->attributedText().attributeAtIndex(Weight, 15, &bold), QVariant(700));
    EXPECT_EQ(bold, QVMakeRange(15, 1));
}

TYPED_TEST(QVTextViewModifierTest, RefusalAndReadOnlyChangeNothing)
{
    QVTextView *view = this->makeView(QVAttributedString(u"text"_s));
    const auto upper = [](QVTextStorage *storage, QVRange range) {
        return stringChange(storage->attributedSubstringFromRange(range).string().toUpper());
    };
    this->allow = false;
    QVTextViewModifier::modifyTextView(view, {QVMakeRange(0, 4)}, u"Upper"_s, upper);
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 4)}, QVariantList {u"x"_s}, u"Upper"_s);
    EXPECT_EQ(this->text(), u"text"_s);
    EXPECT_EQ(this->changes->count(), 0);
    EXPECT_FALSE(view->undoManager()->canUndo());

    this->allow = true;
    view->setEditable(false);
    QVTextViewModifier::modifyTextView(view, {QVMakeRange(0, 4)}, u"Upper"_s, upper);
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 4)}, QVariantList {u"x"_s}, u"Upper"_s);
    QVTextViewModifier::modifyTextViewPerformAroundRangeOperation(view, QVTextViewModifierAroundRangeOperationWrap,
                                                                  {QVMakeRange(0, 4)}, u"("_s, u")"_s, u"Wrap"_s);
    EXPECT_EQ(this->text(), u"text"_s);
    EXPECT_TRUE(this->askedRanges.size() == 2) << "a read-only view is not even asked";

    view->setEditable(true);
    QVTextViewModifier::modifyTextView(view, QVRangeList(), u"Upper"_s, upper);
    QVTextViewModifier::modifyTextView(view, {QVMakeRange(0, 4)}, u"Upper"_s, {});
    QVTextViewModifier::modifyTextView(nullptr, {QVMakeRange(0, 4)}, u"Upper"_s, upper);
    EXPECT_EQ(this->changes->count(), 0);
}

TYPED_TEST(QVTextViewModifierTest, EmptyUndoNameLeavesNamesAlone)
{
    QVTextView *view = this->makeView(QVAttributedString(u"abc"_s));
    const auto replaceWith
        = [](const QString &text) { return [text](QVTextStorage *, QVRange) { return stringChange(text); }; };
    QVTextViewModifier::modifyTextView(view, {QVMakeRange(0, 1)}, u"First"_s, replaceWith(u"x"_s));
    QVTextViewModifier::modifyTextView(view, {QVMakeRange(1, 1)}, QString(), replaceWith(u"y"_s));
    EXPECT_EQ(this->text(), u"xyc"_s);
    EXPECT_EQ(view->undoManager()->undoActionName(), QString()) << "the new step does not take the old name";
    view->undoManager()->undo();
    EXPECT_EQ(view->undoManager()->undoActionName(), u"First"_s);
    EXPECT_EQ(this->text(), u"xbc"_s);
}

TYPED_TEST(QVTextViewModifierTest, AttributeChangesFollowTheirRules)
{
    const QVTextAttributes base {{Weight, 700}, {Color, QColor(Qt::red)}};
    QVTextView *view = this->makeView(QVAttributedString(u"abcdefgh"_s, base));
    QVTextViewModifier::modifyTextView(
        view, {QVMakeRange(0, 2), QVMakeRange(2, 2), QVMakeRange(4, 2)}, u"Style"_s,
        [](QVTextStorage *, QVRange range) {
            switch (range.location) {
            case 0:
                return QVAttributedStringChange::attributesChange({{u"QVTag"_s, 1}}, QVAttributeActionSet);
            case 2: // the null marker removes, the rest is added
                return QVAttributedStringChange::attributesChange({{Family, u"Serif"_s}, {Color, NullMarker}},
                                                                  QVAttributeActionAdd);
            default: // only null markers: removed, then added as values
                return QVAttributedStringChange::attributesChange({{Color, NullMarker}}, QVAttributeActionAdd);
            }
        });
    QVAttributedString expected(u"abcdefgh"_s, base);
    expected.setAttributes({{u"QVTag"_s, 1}}, QVMakeRange(0, 2));
    expected.setAttributes({{Weight, 700}, {Family, u"Serif"_s}}, QVMakeRange(2, 2));
    expected.setAttributes({{Weight, 700}, {Color, NullMarker}}, QVMakeRange(4, 2));
    EXPECT_EQ(this->attributedText(), expected) << this->attributedText().description().toStdString();

    // Runs apply over their own ranges; unknown types and actions are skipped.
    QVTextViewModifier::modifyTextView(
        view, {QVMakeRange(0, 1), QVMakeRange(1, 1), QVMakeRange(2, 1), QVMakeRange(3, 1)}, u"Runs"_s,
        [](QVTextStorage *, QVRange range) -> std::optional<QVAttributedStringChange> {
            QVAttributedStringChange change;
            switch (range.location) {
            case 0:
                return QVAttributedStringChange::attributesChanges(
                    {QVTextAttributeRun(u"QVTag"_s, 2, QVMakeRange(6, 2)),
                     QVTextAttributeRun(Weight, QVariant(), QVMakeRange(7, 1)),
                     QVTextAttributeRun(u"QVTag"_s, NullMarker, QVMakeRange(1, 1))});
            case 1:
                change = QVAttributedStringChange::attributesChange({{u"QVTag"_s, 9}}, QVAttributeAction(5));
                return change;
            case 2:
                change = stringChange(u"zzz"_s);
                change.setChangeType(QVAttributedStringChangeType(7));
                return change;
            default:
                change = QVAttributedStringChange::attributesChanges(
                    {QVTextAttributeRun(u"QVTag"_s, 3, QVMakeRange(3, 1))});
                change.setAttributeAction(QVAttributeActionSet);
                return change;
            }
        });
    expected.addAttribute(u"QVTag"_s, 2, QVMakeRange(6, 2));
    expected.removeAttribute(Weight, QVMakeRange(7, 1));
    expected.removeAttribute(u"QVTag"_s, QVMakeRange(1, 1));
    EXPECT_EQ(this->attributedText(), expected) << this->attributedText().description().toStdString();
}

TYPED_TEST(QVTextViewModifierTest, ReplacementOperationUndoesItself)
{
    const QVAttributedString original(u"abcdefg"_s, {{Weight, 700}});
    QVTextView *view = this->makeView(original);
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 1), QVMakeRange(4, 1)}, QVariantList {u"x"_s},
                                                   u"Replace"_s);
    EXPECT_EQ(this->text(), u"xbcdxfg"_s) << "a single replacement fills every range";
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(0, 1), QVMakeRange(4, 1)}));
    EXPECT_EQ(this->askedStrings.constFirst(), QStringList({u"x"_s, u"x"_s}));
    EXPECT_EQ(view->undoManager()->undoActionName(), u"Replace"_s);
    const QVAttributedString replaced = this->attributedText();

    for (int round = 0; round < 2; ++round) {
        view->undoManager()->undo();
        EXPECT_EQ(this->attributedText(), original);
        EXPECT_EQ(view->undoManager()->redoActionName(), u"Replace"_s);
        view->undoManager()->redo();
        EXPECT_EQ(this->attributedText(), replaced);
    }

    // Null markers count as "", an attributed replacement brings its attributes, and
    // a longer list is cut to the ranges.
    const QVAttributedString tagged(u"ΣΣ😀"_s, {{u"QVTag"_s, 1}});
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 1), QVMakeRange(2, 2)},
                                                   QVariantList {QVariant::fromValue(tagged), NullMarker, u"extra"_s},
                                                   QString());
    EXPECT_EQ(this->text(), u"ΣΣ😀bxfg"_s);
    EXPECT_EQ(this->attributedText().attributedSubstringFromRange(QVMakeRange(0, 4)), tagged);
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(0, 4), QVMakeRange(5, 0)}));

    // Two replacements for three ranges: the rest are "", and a bad kind refuses the call.
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 4), QVMakeRange(4, 1), QVMakeRange(6, 1)},
                                                   QVariantList {u"1"_s, u"2"_s}, QString());
    EXPECT_EQ(this->text(), u"12xg"_s);
    const int asked = int(this->askedRanges.size());
    QVTextViewModifier::modifyTextViewReplacements(view, {QVMakeRange(0, 1)}, QVariantList {42}, QString());
    EXPECT_EQ(this->text(), u"12xg"_s);
    EXPECT_EQ(this->askedRanges.size(), asked);
}

TYPED_TEST(QVTextViewModifierTest, AroundRangeOperations)
{
    QVAttributedString original(u"one two three"_s);
    original.addAttribute(Weight, 700, QVMakeRange(4, 3));
    QVTextView *view = this->makeView(original);
    view->setSelectedRanges({QVMakeRange(4, 3), QVMakeRange(8, 5)});
    QVTextViewModifier::modifyTextViewSelectedRangesPerformAroundRangeOperation(
        view, QVTextViewModifierAroundRangeOperationWrap, u"«"_s, u"»"_s, u"Quote"_s);
    EXPECT_EQ(this->text(), u"one «two» «three»"_s);
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(4, 5), QVMakeRange(10, 7)}));
    EXPECT_EQ(this->attributedText().attributeAtIndex(Weight, 4), QVariant(700))
        << "the strings take the attributes of the text they enclose";

    QVTextViewModifier::modifyTextViewSelectedRangesPerformAroundRangeOperation(
        view, QVTextViewModifierAroundRangeOperationToggle, u"«"_s, u"»"_s, u"Quote"_s);
    EXPECT_EQ(this->attributedText(), original) << "toggling a wrapped range unwraps it";
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(4, 3), QVMakeRange(8, 5)}));

    // Unwrap takes the strings from just outside a range, and leaves unwrapped ranges alone.
    view->textStorage()->replaceCharactersInRange(QVMakeRange(0, this->text().size()), u"[a] b [c]"_s);
    QVTextViewModifier::modifyTextViewPerformAroundRangeOperation(
        view, QVTextViewModifierAroundRangeOperationUnwrap, {QVMakeRange(0, 3), QVMakeRange(4, 1), QVMakeRange(7, 1)},
        u"["_s, u"]"_s, u"Unwrap"_s);
    EXPECT_EQ(this->text(), u"a b c"_s);
    EXPECT_EQ(view->selectedRanges(), QVRangeList({QVMakeRange(0, 1), QVMakeRange(2, 1), QVMakeRange(4, 1)}));

    // Toggle wraps what is not wrapped; an empty range gets both strings.
    QVTextViewModifier::modifyTextViewPerformAroundRangeOperation(view, QVTextViewModifierAroundRangeOperationToggle,
                                                                  {QVMakeRange(1, 0), QVMakeRange(2, 1)}, u"**"_s,
                                                                  u"**"_s, u"Bold"_s);
    EXPECT_EQ(this->text(), u"a**** **b** c"_s);
    const int reported = int(this->changes->count());
    QVTextViewModifier::modifyTextViewPerformAroundRangeOperation(view, QVTextViewModifierAroundRangeOperation(3), {QVMakeRange(0, 1)}, u"("_s, u")"_s,
                                                                  u"Bad"_s);
    EXPECT_EQ(this->changes->count(), reported) << "an unknown operation does nothing";
}
