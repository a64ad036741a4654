#include "QVKit/Application/QVLocalization.h"

#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVDispatch.h"

#include <QtCore/QLocale>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolBar>

#include <algorithm>
#include <atomic>

namespace {

// Constant-initialised: nothing runs when the library loads.
constinit std::atomic<qint64> debugLayoutDirectionOverride{0};

} // namespace

bool QVLocalization::isRightToLeftLayout()
{
    const qint64 forced = debugLayoutDirectionOverride.load(std::memory_order_relaxed);
    if (forced != 0)
        return forced == 1;
    // Without a GUI application there is no layout direction to follow.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    return QGuiApplication::layoutDirection() == Qt::RightToLeft;
}

Qt::Alignment QVLocalization::localizedTextAlignment()
{
    return isRightToLeftLayout() ? Qt::AlignRight : Qt::AlignLeft;
}

std::optional<QStringList> QVLocalization::localizedToolbarDefaultItemIdentifiers(
    const std::optional<QStringList> &identifiers)
{
    if (!identifiers || !isRightToLeftLayout())
        return identifiers;
    QStringList reversed = *identifiers;
    std::reverse(reversed.begin(), reversed.end());
    return reversed;
}

void QVLocalization::localizeToolbarItemOrder(QToolBar *toolbar)
{
    QV_ASSERT(qv_is_main_thread());
    if (!toolbar || toolbar->actions().size() < 2 || !isRightToLeftLayout())
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

void QVLocalization::legacyLocalizeTableViewColumnOrder(QTableView *tableView)
{
    QV_ASSERT(qv_is_main_thread());
    if (!tableView || !isRightToLeftLayout())
        return;
    QHeaderView *header = tableView->horizontalHeader();
    const int count = header->count();
    // Moving the first visual column to the end of the unsorted part reverses
    // the current visual order; a single column stays where it is.
    for (int position = count - 1; position >= 1; --position)
        header->moveSection(0, position);
}

qint64 QVLocalization::debugLayoutDirection()
{
    return debugLayoutDirectionOverride.load(std::memory_order_relaxed);
}

void QVLocalization::setDebugLayoutDirection(qint64 direction)
{
    debugLayoutDirectionOverride.store(direction, std::memory_order_relaxed);
}

bool QVLocalization::usesMetricSystem()
{
    return QLocale().measurementSystem() == QLocale::MetricSystem;
}
