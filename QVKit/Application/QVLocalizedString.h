#pragma once

#include <QVKit/Application/QVLocalizedStringTagConfiguration.h>

#include <QtCore/QLocale>
#include <QtCore/QString>

#include <optional>
#include <span>

/** One fixed text: the operation that returns it, its lookup key, its English default and its table. */
struct QVLocalizedTextEntry
{
    const char *operation;
    const char16_t *key;
    const char16_t *defaultValue;
    /** "Common", or nullptr for the application's default table. */
    const char16_t *table;
};

/**
 * Every user-visible text of the library, fetched from the host application's
 * translations by (key, English default, table), and the replacement of the
 * angle-bracket tags such texts may carry.
 *
 * A host translates or rewords any text by providing a translation for its
 * key in the table's context (see QVBundle::localizedString); without one the
 * English default is used.
 */
class QVKIT_EXPORT QVLocalizedString
{
public:
    QVLocalizedString() = delete;

    /** The fixed texts in one table, in a stable order. */
    static std::span<const QVLocalizedTextEntry> fixedTexts();

    /**
     * The fixed texts. "noticeRequiresAppRestart" and
     * "noticeRequiresAppRestartLong" arrive with their tags replaced; the
     * others are returned as looked up.
     */
    static QString actionOK();
    static QString actionCancel();
    static QString stateOn();
    static QString stateOff();
    static QString stateMixed();
    static QString stateIndeterminate();
    static QString stateActive();
    static QString stateInactive();
    static QString stateEnabled();
    static QString stateDisabled();
    static QString actionEnable();
    static QString actionDisable();
    static QString stateDefault();
    static QString stateAutomatic();
    static QString stateYes();
    static QString stateNo();
    static QString stateUnknown();
    static QString titleUntitled();
    static QString titleReset();
    static QString titleResetEllipsis();
    static QString titleDebug();
    static QString titleDebugEllipsis();
    static QString separatorLabel();
    static QString separatorLabelWithSpace();
    static QString symbolTruncationString();
    static QString symbolAsteriskString();
    static QString frequencyTimeNever();
    static QString frequencyTimeDaily();
    static QString frequencyTimeSemiweekly();
    static QString frequencyTimeWeekly();
    static QString frequencyTimeMonthly();
    static QString objectValueNil();
    static QString objectValueEmpty();
    static QString objectValueData();
    static QString objectValueOriginal();
    static QString genericDisplay();
    static QString genericKeyboard();
    static QString genericTrackpad();
    static QString genericMicrophone();
    static QString genericWebcam();
    static QString genericSpeakers();
    static QString noticeNotForRelease();
    static QString noticeRequiresAppRestart();
    static QString noticeRequiresAppRestartLong();
    static QString noticeNotUndoable();
    static QString titleSettings();
    static QString titleSettingsEllipsis();
    static QString titleSystemSettings();
    static QString titlePreferences();
    static QString titlePreferencesEllipsis();
    static QString titleSystemPreferences();
    static QString titleInitialDate();
    static QString titleLaunches();
    static QString titleExceptions();
    static QString titleCrashes();
    static QString titleLastLaunch();
    static QString titleLastException();
    static QString titleLastCrashRecovery();
    static QString titleAppRunTime();
    static QString titleAppUsedTime();
    static QString titleDocumentsOpened();
    static QString titleDocumentsSaved();
    static QString titleMostOpenedFileTypes();
    static QString titleMostSavedFileTypes();
    static QString titleMostDocumentsOpenAtOnce();

    /** "Built-in %@" with the device name; an empty or null name gives an empty string without a lookup. */
    static QString builtIn(const QString &deviceName);

    /** The string in the standard quotation marks of the application's language locale (QLocale()). */
    static QString quotedString(const QString &string);
    static QString quotedString(const QString &string, const std::optional<QLocale> &locale);
    /** The string in the alternate (inner) quotation marks of the application's language locale. */
    static QString quotedAlternativeString(const QString &string);
    static QString quotedAlternativeString(const QString &string, const std::optional<QLocale> &locale);
    /**
     * The worker of the quoting operations: style 0 is standard, 1 alternate
     * (falling back to standard marks where a locale has no alternate ones).
     * A null string, no locale or a style of 2 or more gives a null string.
     */
    static QString quoteString(const QString &string, qint64 style, const std::optional<QLocale> &locale);

    /** The string between U+202A (left-to-right embedding) and U+202C; null stays null. */
    static QString stringWithLTRMarkup(const QString &string);
    /** The string between U+202B (right-to-left embedding) and U+202C; null stays null. */
    static QString stringWithRTLMarkup(const QString &string);

    /**
     * Replaces the built-in tags: <QUOTE>…</QUOTE>, <NO_UNDO_NOTICE>,
     * <SEPARATOR_LABEL>, <SEPARATOR_LABEL_WITH_SPACE>, <APP_NAME>,
     * <APP_VERSION>, <APP_BUILD>, <APP_NAME_VERSION_BUILD>, matching case
     * insensitively. Unknown tags stay as written. A null string stays null.
     */
    static QString replaceTagsInString(const QString &string);
    /**
     * As above, with the configuration's custom tags replaced first and its
     * file filling <FILE_NAME>, <FILE_PATH> and <FILE_EXTENSION> (file URLs only).
     */
    static QString replaceTagsInString(const QString &string,
                                       const std::optional<QVLocalizedStringTagConfiguration> &configuration);
    /** The built-in tags plus the caller's own, replaced first. */
    static QString replaceTagsInString(const QString &string, const QVTagReplacements &customTagReplacement);

private:
    static QString replaceTags(const QString &string,
                               const std::optional<QVLocalizedStringTagConfiguration> &configuration,
                               const std::optional<QVTagReplacements> &customTagReplacement);
};
