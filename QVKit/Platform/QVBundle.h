#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QVariant>

/**
 * The running application's identity and its translations.
 *
 * Identity comes from QCoreApplication (name, version, organization domain),
 * with the build and the identifier taken from the application-object
 * properties "QVBundleVersion" and "QVBundleIdentifier" when the host sets
 * them. Translations are whatever QTranslator files the host installed; each
 * string table is one translation context.
 */
class QVKIT_EXPORT QVBundle
{
public:
    QVBundle() = delete;

    /**
     * The host's text for a key in a table, or the default when the host has
     * none. A null or empty table means the application's default table.
     */
    static QString localizedString(const QString &key, const QString &defaultValue,
                                   const QString &table = QString());

    /** The translation context of a table: the table's name, or "Localizable" for the default table. */
    static QString translationContext(const QString &table);

    /**
     * Loads "<baseName>_<language>.qm" (Qt's usual fallbacks from the locale's
     * UI languages) from the folder and installs it for the whole
     * application. False when no file matched.
     */
    static bool installTranslations(const QLocale &locale, const QString &baseName,
                                    const QString &directory);

    /** "CFBundleName": the application name. */
    static QString applicationName();
    /** "CFBundleShortVersionString": the user-visible version. */
    static QString shortVersionString();
    /** "CFBundleVersion": the build, or the short version when no build was set. */
    static QString bundleVersion();
    /**
     * "CFBundleIdentifier": the property when set, else the organization domain
     * reversed followed by the application name ("com.quovera.Notes"), else
     * the application name alone.
     */
    static QString bundleIdentifier();

    /** One of the four keys above by its name; an invalid QVariant for any other key. */
    static QVariant objectForInfoDictionaryKey(const QString &key);
};
