#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QStringList>
#include <QtCore/qnamespace.h>

#include <optional>

/**
 * Layout direction of the running application and the locale's measurement
 * system. QVViewLocalization mirrors live toolbars and tables.
 *
 * The direction is the GUI application's own (its layoutDirection property),
 * unless a process-wide debug override forces one: 1 forces right-to-left,
 * any other non-zero value forces left-to-right, 0 follows the application.
 * A program without a GUI application lays out left to right.
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

    /** The process-wide layout-direction override; 0 (follow the application) until set. */
    static qint64 debugLayoutDirection();
    static void setDebugLayoutDirection(qint64 direction);

    /** True when the current locale (QLocale()) measures in the metric system. */
    static bool usesMetricSystem();
};
