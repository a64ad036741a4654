#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QStringList>
#include <QtCore/qnamespace.h>

#include <optional>

class QTableView;
class QToolBar;

/**
 * Layout direction of the running application, and helpers that mirror
 * toolbars and table columns for right-to-left languages.
 *
 * The direction is the application's own (QGuiApplication::layoutDirection()),
 * unless a process-wide debug override forces one: 1 forces right-to-left,
 * any other non-zero value forces left-to-right, 0 follows the application.
 * The widget operations run on the main thread; calling them elsewhere stops
 * at an assertion.
 */
class QVKIT_EXPORT QVLocalization
{
public:
    QVLocalization() = delete;

    /** True when the override is 1, or the override is 0 and the application lays out right to left. */
    static bool isRightToLeftLayout();

    /**
     * The natural alignment of text: Qt::AlignRight (the platform's "right",
     * 1) when right-to-left, else Qt::AlignLeft (its "left", 0). The value is
     * absolute, so Qt does not mirror it a second time.
     */
    static Qt::Alignment localizedTextAlignment();

    /**
     * A toolbar's default item identifiers in display order: the list
     * reversed when right-to-left, else the list itself. An absent list
     * answers an absent list.
     */
    static std::optional<QStringList> localizedToolbarDefaultItemIdentifiers(
        const std::optional<QStringList> &identifiers);

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

    /** The process-wide layout-direction override; 0 (follow the application) until set. */
    static qint64 debugLayoutDirection();
    static void setDebugLayoutDirection(qint64 direction);

    /** True when the current locale (QLocale()) measures in the metric system. */
    static bool usesMetricSystem();
};
