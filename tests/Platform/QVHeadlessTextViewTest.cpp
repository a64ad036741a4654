#include <QVKit/Platform/QVHeadlessTextView.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVNotificationCenter.h>
#include <QVKit/Platform/QVUndoManager.h>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVHeadlessTextViewTest, SelectionIsClippedAndKeptAsGiven)
{
    QVHeadlessTextView view(u"héllo 😀"_s); // 8 code units
    EXPECT_TRUE(view.isEditable());
    EXPECT_TRUE(view.isSelectable());
    EXPECT_EQ(view.selectedRanges(), QVRangeList({QVMakeRange(0, 0)}));
    EXPECT_EQ(view.widget(), nullptr);

    view.setSelectedRanges({QVMakeRange(6, 1), QVMakeRange(0, 2), QVMakeRange(7, 5), QVMakeRange(20, 3)});
    EXPECT_EQ(view.selectedRanges(),
              QVRangeList({QVMakeRange(6, 1), QVMakeRange(0, 2), QVMakeRange(7, 1), QVMakeRange(8, 0)}));

    QVLogCapture log;
    view.setSelectedRanges({});
    EXPECT_EQ(view.selectedRanges().size(), 4) << "an empty list changes nothing";
    EXPECT_EQ(log.lines().size(), 1);

    // The text shrinking under the selection never reports ranges past its end.
    view.textStorage()->replaceCharactersInRange(QVMakeRange(2, 6), QString());
    EXPECT_EQ(view.selectedRanges(),
              QVRangeList({QVMakeRange(2, 0), QVMakeRange(0, 2), QVMakeRange(2, 0), QVMakeRange(2, 0)}));
}

TEST(QVHeadlessTextViewTest, PermissionRecordsSnapshotForUndoAndRedo)
{
    const QVAttributedString original(u"one two"_s, {{u"Tag"_s, 1}});
    QVHeadlessTextView view(original);
    QVTextStorage *storage = view.textStorage();
    int notifications = 0;
    QObject context;
    QVNotificationCenter::defaultCenter()->addObserver(QVTextDidChangeNotification, &view, &context,
                                                       [&](const QVNotification &) { ++notifications; });

    view.setShouldChangeTextDelegate([](QVTextView *, const QVRangeList &ranges, const std::optional<QStringList> &) {
        return ranges.constFirst().location != 99;
    });
    EXPECT_FALSE(view.shouldChangeTextInRanges({QVMakeRange(99, 0)}, std::nullopt));
    EXPECT_FALSE(view.undoManager()->canUndo()) << "a refused edit records nothing";

    view.setSelectedRanges({QVMakeRange(4, 3)});
    ASSERT_TRUE(view.shouldChangeTextInRanges({QVMakeRange(4, 3)}, QStringList{u"2"_s}));
    storage->beginEditing();
    storage->replaceCharactersInRange(QVMakeRange(4, 3), QVAttributedString(u"2"_s));
    storage->addAttribute(u"Tag"_s, 2, QVMakeRange(0, 3));
    storage->endEditing();
    view.setSelectedRanges({QVMakeRange(4, 1)});
    view.didChangeText();
    EXPECT_EQ(notifications, 1);
    const QVAttributedString edited = view.attributedString();

    view.undoManager()->undo();
    EXPECT_EQ(view.attributedString(), original);
    EXPECT_EQ(view.selectedRanges(), QVRangeList({QVMakeRange(4, 3)}));
    EXPECT_EQ(notifications, 2) << "undo reports the change";
    view.undoManager()->redo();
    EXPECT_EQ(view.attributedString(), edited);
    EXPECT_EQ(view.selectedRanges(), QVRangeList({QVMakeRange(4, 1)}));
    view.undoManager()->undo();
    EXPECT_EQ(view.string(), u"one two"_s);

    view.undoManager()->disableUndoRegistration();
    ASSERT_TRUE(view.shouldChangeTextInRanges({QVMakeRange(0, 1)}, std::nullopt));
    view.undoManager()->enableUndoRegistration();
    EXPECT_FALSE(view.undoManager()->canUndo());
}
