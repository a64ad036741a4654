#include "QVKit/Application/QVViewLocalization.h"

#include "QVKit/Application/QVLocalization.h"
#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVDispatch.h"

#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>

void QVViewLocalization::localizeToolbarItemOrder(QToolBar *toolbar)
{
    QV_ASSERT(qv_is_main_thread());
    if (!toolbar || toolbar->actions().size() < 2 || !QVLocalization::isRightToLeftLayout())
        return;
    // Each snapshot item in turn comes out of the toolbar and goes back in at
    // the front, so the front fills with the items in reverse order, one
    // removal and one insertion per step. A QWidget holds an action at most
    // once: inserting an action it still holds would move it, and removing the
    // last one first (as a toolbar of distinct item copies would) would drop
    // it for good. Taking the item itself out keeps every action exactly once.
    const QList<QAction *> snapshot = toolbar->actions();
    for (QAction *item : snapshot) {
        toolbar->removeAction(item);
        const QList<QAction *> current = toolbar->actions();
        toolbar->insertAction(current.isEmpty() ? nullptr : current.first(), item);
    }
}

void QVViewLocalization::legacyLocalizeTableViewColumnOrder(QTableView *tableView)
{
    QV_ASSERT(qv_is_main_thread());
    if (!tableView || !QVLocalization::isRightToLeftLayout())
        return;
    QHeaderView *header = tableView->horizontalHeader();
    const int count = header->count();
    // Moving the first visual column to the end of the unsorted part reverses
    // the current visual order; a single column stays where it is.
    for (int position = count - 1; position >= 1; --position)
        header->moveSection(0, position);
}
