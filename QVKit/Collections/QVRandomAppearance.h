#pragma once

#include <QVKit/QVKitExport.h>

#include <QtGui/QColor>
#include <QtGui/QFont>

/**
 * Random fonts and colours, the user-interface conveniences of QVRandom.
 * They draw from the same system generator; they live apart because fonts and
 * colours belong to the GUI side of Qt.
 */
class QVKIT_EXPORT QVRandomAppearance
{
public:
    QVRandomAppearance() = delete;

    /**
     * A random installed font family at a random point size from 8 to 36;
     * the application's default font when no families are known or there is
     * no GUI application.
     */
    static QFont font();
    /** An opaque colour with random red, green and blue. */
    static QColor color();
};
