#pragma once

#include <QVKit/QVKitExport.h>

class QTableView;
class QToolBar;

/**
 * Mirrors live toolbars and tables for right-to-left languages, following
 * QVLocalization::isRightToLeftLayout(). The operations run on the main
 * thread; calling them elsewhere stops at an assertion.
 */
class QVKIT_EXPORT QVViewLocalization
{
public:
    QVViewLocalization() = delete;

    /**
     * Reverses a live toolbar's actions when right-to-left. The same QAction
     * objects are put back (separators and widget actions included), so
     * connections and embedded widgets keep working. Fewer than two actions,
     * left-to-right or a null toolbar: nothing changes.
     */
    static void localizeToolbarItemOrder(QToolBar *toolbar);

    /**
     * Reverses the visual order of a table's columns when right-to-left, by
     * moving the first visual column to positions n-1 down to 1. Only the
     * horizontal header's visual order changes; the model is untouched.
     */
    static void legacyLocalizeTableViewColumnOrder(QTableView *tableView);
};
