#include <QVKit/Application/QVLocalization.h>
#include <QVKit/Application/QVViewLocalization.h>

#include <QtGui/QAction>
#include <QtGui/QGuiApplication>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>

#include "support/QVTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// Every test leaves the override and the application's direction as it found them.
class QVViewLocalizationTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        QVLocalization::setDebugLayoutDirection(m_override);
        QGuiApplication::setLayoutDirection(m_direction);
    }

    static void setDirection(qint64 debugOverride, Qt::LayoutDirection application)
    {
        QVLocalization::setDebugLayoutDirection(debugOverride);
        QGuiApplication::setLayoutDirection(application);
    }

private:
    qint64 m_override = QVLocalization::debugLayoutDirection();
    Qt::LayoutDirection m_direction = QGuiApplication::layoutDirection();
};

QList<int> visualOrder(const QHeaderView *header)
{
    QList<int> order;
    for (int visual = 0; visual < header->count(); ++visual)
        order.append(header->logicalIndex(visual));
    return order;
}

template<typename T>
QList<T> reversed(QList<T> list)
{
    std::reverse(list.begin(), list.end());
    return list;
}

} // namespace

TEST_F(QVViewLocalizationTest, DirectionFollowsTheGuiApplicationUnlessOverridden)
{
    struct Row
    {
        const char *name;
        qint64 debugOverride;
        Qt::LayoutDirection application;
        bool rightToLeft;
    };
    const Row rows[] = {
        {"follows left-to-right", 0, Qt::LeftToRight, false},
        {"follows right-to-left", 0, Qt::RightToLeft, true},
        {"1 over left-to-right", 1, Qt::LeftToRight, true},
        {"2 over right-to-left", 2, Qt::RightToLeft, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        setDirection(row.debugOverride, row.application);
        EXPECT_EQ(QVLocalization::isRightToLeftLayout(), row.rightToLeft);
        EXPECT_EQ(QVLocalization::localizedTextAlignment(), row.rightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    }
}

TEST_F(QVViewLocalizationTest, ToolbarMirrorsTheSameActions)
{
    for (const int count : {0, 1, 2, 5}) {
        for (const bool rightToLeft : {false, true}) {
            SCOPED_TRACE(testing::Message() << count << " actions, "
                                            << (rightToLeft ? "right-to-left" : "left-to-right"));
            setDirection(0, rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
            QToolBar toolbar;
            QLineEdit *field = nullptr;
            QAction *fieldAction = nullptr;
            int triggered = 0;
            for (int i = 0; i < count; ++i) {
                if (count == 5 && i == 2) {
                    toolbar.addSeparator();
                } else if (count == 5 && i == 4) {
                    field = new QLineEdit(u"\u00e9t\u00e9"_s);
                    fieldAction = toolbar.addWidget(field);
                } else {
                    QAction *action = toolbar.addAction(u"Item %1"_s.arg(i));
                    QObject::connect(action, &QAction::triggered, [&triggered] { ++triggered; });
                }
            }
            toolbar.show();
            const QList<QAction *> before = toolbar.actions();
            ASSERT_EQ(before.size(), count);

            QVViewLocalization::localizeToolbarItemOrder(&toolbar);

            const QList<QAction *> after = toolbar.actions();
            EXPECT_EQ(after, rightToLeft ? reversed(before) : before);
            int connected = 0;
            for (QAction *action : after) {
                if (action->isSeparator() || action == fieldAction)
                    continue;
                action->trigger();
                ++connected;
            }
            EXPECT_EQ(triggered, connected);
            if (field) {
                EXPECT_EQ(toolbar.widgetForAction(fieldAction), field);
                EXPECT_EQ(field->parentWidget(), &toolbar);
                EXPECT_EQ(field->text(), u"\u00e9t\u00e9"_s);
                // The toolbar's layout shows a re-inserted widget when it next lays out.
                EXPECT_TRUE(QVTest::waitUntil([field, &toolbar] { return field->isVisibleTo(&toolbar); }));
            }

            // Mirroring twice is back where it started.
            QVViewLocalization::localizeToolbarItemOrder(&toolbar);
            EXPECT_EQ(toolbar.actions(), before);
        }
    }
    setDirection(1, Qt::LeftToRight);
    QVViewLocalization::localizeToolbarItemOrder(nullptr);
}

TEST_F(QVViewLocalizationTest, TableColumnsMirrorTheirVisualOrder)
{
    for (const int columns : {0, 1, 2, 4}) {
        for (const bool rightToLeft : {false, true}) {
            SCOPED_TRACE(testing::Message() << columns << " columns, "
                                            << (rightToLeft ? "right-to-left" : "left-to-right"));
            setDirection(rightToLeft ? 1 : 0, Qt::LeftToRight);
            QStandardItemModel model(3, columns);
            for (int column = 0; column < columns; ++column)
                model.setHorizontalHeaderItem(column, new QStandardItem(u"Column %1"_s.arg(column)));
            QTableView table;
            table.setModel(&model);
            QList<int> identity;
            for (int column = 0; column < columns; ++column)
                identity.append(column);
            ASSERT_EQ(visualOrder(table.horizontalHeader()), identity);

            QVViewLocalization::legacyLocalizeTableViewColumnOrder(&table);

            EXPECT_EQ(visualOrder(table.horizontalHeader()), rightToLeft ? reversed(identity) : identity);
            // Only the view moved: the model's columns are where they were.
            for (int column = 0; column < columns; ++column)
                EXPECT_EQ(model.headerData(column, Qt::Horizontal).toString(), u"Column %1"_s.arg(column));
        }
    }

    // An order the user already rearranged is mirrored as it stands.
    setDirection(1, Qt::LeftToRight);
    QStandardItemModel model(1, 4);
    QTableView table;
    table.setModel(&model);
    table.horizontalHeader()->moveSection(3, 0); // 3 0 1 2
    QVViewLocalization::legacyLocalizeTableViewColumnOrder(&table);
    EXPECT_EQ(visualOrder(table.horizontalHeader()), (QList<int>{2, 1, 0, 3}));
    QVViewLocalization::legacyLocalizeTableViewColumnOrder(nullptr);
}

TEST_F(QVViewLocalizationTest, LayoutOperationsBelongToTheMainThread)
{
    EXPECT_DEATH(
        {
            std::thread worker([] { QVViewLocalization::localizeToolbarItemOrder(nullptr); });
            worker.join();
        },
        "Condition not satisfied: qv_is_main_thread\\(\\)");
}
