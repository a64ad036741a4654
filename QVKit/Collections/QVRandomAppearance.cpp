#include "QVRandomAppearance.h"

#include <QVKit/Collections/QVRandom.h>

#include <QtGui/QFontDatabase>
#include <QtGui/QGuiApplication>

QFont QVRandomAppearance::font()
{
    // Font families need the GUI application's font database; without one there is nothing to pick from.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return QFont();
    const int pointSize = int(QVRandom::integerBetween(8, 36));
    const std::optional<QString> family = QVRandom::objectFromArray(QFontDatabase::families());
    if (!family)
        return QFont();
    return QFont(*family, pointSize);
}

QColor QVRandomAppearance::color()
{
    const auto channel = [] { return int(QVRandom::unsignedIntegerUpTo(255)); };
    return QColor(channel(), channel(), channel());
}
