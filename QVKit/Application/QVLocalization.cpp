#include "QVKit/Application/QVLocalization.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>

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
    // The direction is a property of QGuiApplication; reading it through the
    // meta-object keeps this library free of Qt GUI. A console application
    // has no such property and lays out left to right.
    const QCoreApplication *application = QCoreApplication::instance();
    if (!application)
        return false;
    const QVariant direction = application->property("layoutDirection");
    return direction.isValid() && direction.value<Qt::LayoutDirection>() == Qt::RightToLeft;
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
