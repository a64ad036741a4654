#include "QVKit/Application/QVLocalizedString.h"

#include "QVKit/Platform/QVBundle.h"
#include "QVKit/Platform/QVFormat.h"
#include "QVKit/Text/QVStringAdditions.h"

#include <QtCore/QFileInfo>

#include <iterator>

using namespace Qt::StringLiterals;

namespace {

// In the order of the FixedText enumeration.
constexpr QVLocalizedTextEntry fixedTextTable[] = {
    {"actionOK", u"action-OK", u"OK", u"Common"},
    {"actionCancel", u"action-cancel", u"Cancel", u"Common"},
    {"stateOn", u"state-on", u"On", u"Common"},
    {"stateOff", u"state-off", u"Off", u"Common"},
    {"stateMixed", u"state-mixed", u"Mixed", u"Common"},
    {"stateIndeterminate", u"state-indeterminate", u"Indeterminate", u"Common"},
    {"stateActive", u"state-active", u"Active", u"Common"},
    {"stateInactive", u"state-inactive", u"Inactive", u"Common"},
    {"stateEnabled", u"state-enabled", u"Enabled", u"Common"},
    {"stateDisabled", u"state-disabled", u"Disabled", u"Common"},
    {"actionEnable", u"action-enable", u"Enable", u"Common"},
    {"actionDisable", u"action-disable", u"Disable", u"Common"},
    {"stateDefault", u"state-default", u"Default", u"Common"},
    {"stateAutomatic", u"state-automatic", u"Automatic", u"Common"},
    {"stateYes", u"state-yes", u"Yes", u"Common"},
    {"stateNo", u"state-no", u"No", u"Common"},
    {"stateUnknown", u"state-unknown", u"Unknown", u"Common"},
    {"titleUntitled", u"title-untitled", u"Untitled", u"Common"},
    {"titleReset", u"title-reset", u"Reset", u"Common"},
    {"titleResetEllipsis", u"title-reset\u2026", u"Reset\u2026", u"Common"},
    {"titleDebug", u"title-debug", u"Debug", u"Common"},
    {"titleDebugEllipsis", u"title-debug\u2026", u"Debug\u2026", u"Common"},
    {"separatorLabel", u"separator-label", u":", u"Common"},
    {"separatorLabelWithSpace", u"separator-label-with-space", u": ", u"Common"},
    {"symbolTruncationString", u"symbol-truncation", u"\u2026", u"Common"},
    {"symbolAsteriskString", u"symbol-asterisk", u"*", u"Common"},
    {"frequencyTimeNever", u"frequency-never", u"Never", u"Common"},
    {"frequencyTimeDaily", u"frequency-daily", u"Daily", u"Common"},
    {"frequencyTimeSemiweekly", u"frequency-semiweekly", u"Semiweekly", u"Common"},
    {"frequencyTimeWeekly", u"frequency-weekly", u"Weekly", u"Common"},
    {"frequencyTimeMonthly", u"frequency-monthly", u"Monthly", u"Common"},
    {"objectValueNil", u"object-value-nil", u"<nil>", u"Common"},
    {"objectValueEmpty", u"object-value-empty", u"<Empty>", u"Common"},
    {"objectValueData", u"object-value-data", u"<Data>", u"Common"},
    {"objectValueOriginal", u"object-value-original", u"<Original Value>", u"Common"},
    {"genericDisplay", u"device-generic-display", u"Display", u"Common"},
    {"genericKeyboard", u"device-generic-keyboard", u"Keyboard", u"Common"},
    {"genericTrackpad", u"device-generic-trackpad", u"Trackpad", u"Common"},
    {"genericMicrophone", u"device-generic-microphone", u"Microphone", u"Common"},
    {"genericWebcam", u"device-generic-webcam", u"Webcam", u"Common"},
    {"genericSpeakers", u"device-generic-speakers", u"Speakers", u"Common"},
    {"noticeNotForRelease", u"notice-not-for-release-do-not-distribute", u"NOT FOR RELEASE. DO NOT DISTRIBUTE.", nullptr},
    {"noticeRequiresAppRestart", u"notice-requires-app-restart", u"Requires app restart.", nullptr},
    {"noticeRequiresAppRestartLong", u"notice-requires-app-restart-long", u"<APP_NAME> must be restarted for changes to take effect.", nullptr},
    {"noticeNotUndoable", u"notice-not-undoable", u"This action is not undoable.", nullptr},
    {"titleSettings", u"title-settings", u"Settings", nullptr},
    {"titleSettingsEllipsis", u"title-settings\u2026", u"Settings\u2026", nullptr},
    {"titleSystemSettings", u"title-system-settings", u"System Settings", nullptr},
    {"titlePreferences", u"title-preferences", u"Preferences", nullptr},
    {"titlePreferencesEllipsis", u"title-preferences\u2026", u"Preferences\u2026", nullptr},
    {"titleSystemPreferences", u"title-system-preferences", u"System Preferences", nullptr},
    {"titleInitialDate", u"analytics-title-initial-date", u"Initial Date", nullptr},
    {"titleLaunches", u"analytics-title-launches", u"Launches", nullptr},
    {"titleExceptions", u"analytics-title-exceptions", u"Exceptions", nullptr},
    {"titleCrashes", u"analytics-title-crashes", u"Crashes", nullptr},
    {"titleLastLaunch", u"analytics-title-last-launch", u"Last Launch", nullptr},
    {"titleLastException", u"analytics-title-last-exception", u"Last Exception", nullptr},
    {"titleLastCrashRecovery", u"analytics-title-last-crash-recovery", u"Last Crash Recovery", nullptr},
    {"titleAppRunTime", u"analytics-title-app-run-time", u"App Run Time", nullptr},
    {"titleAppUsedTime", u"analytics-title-app-used-time", u"App Used Time", nullptr},
    {"titleDocumentsOpened", u"analytics-title-documents-opened", u"Documents Opened", nullptr},
    {"titleDocumentsSaved", u"analytics-title-documents-saved", u"Documents Saved", nullptr},
    {"titleMostOpenedFileTypes", u"analytics-title-most-opened-file-types", u"Most Opened File Types", nullptr},
    {"titleMostSavedFileTypes", u"analytics-title-most-saved-file-types", u"Most Saved File Types", nullptr},
    {"titleMostDocumentsOpenAtOnce", u"analytics-title-most-documents-open-at-once", u"Most Documents Open at Once", nullptr},
};

QString fromTable(const char16_t *text)
{
    return text ? QString::fromUtf16(text) : QString();
}

QString lookup(const QVLocalizedTextEntry &entry)
{
    return QVBundle::localizedString(fromTable(entry.key), fromTable(entry.defaultValue), fromTable(entry.table));
}

// Pairs each opening marker with the next closing marker after it, both
// included, matching case-insensitively; an opening marker without a closing
// one ends the search.
void replaceIfPresent(QString &text, QStringView tag, const QString &value)
{
    if (!value.isNull())
        text.replace(tag.toString(), value, Qt::CaseInsensitive);
}

// The fixed texts by name, in the order of fixedTextTable.
enum class FixedText {
    ActionOK,
    ActionCancel,
    StateOn,
    StateOff,
    StateMixed,
    StateIndeterminate,
    StateActive,
    StateInactive,
    StateEnabled,
    StateDisabled,
    ActionEnable,
    ActionDisable,
    StateDefault,
    StateAutomatic,
    StateYes,
    StateNo,
    StateUnknown,
    TitleUntitled,
    TitleReset,
    TitleResetEllipsis,
    TitleDebug,
    TitleDebugEllipsis,
    SeparatorLabel,
    SeparatorLabelWithSpace,
    SymbolTruncationString,
    SymbolAsteriskString,
    FrequencyTimeNever,
    FrequencyTimeDaily,
    FrequencyTimeSemiweekly,
    FrequencyTimeWeekly,
    FrequencyTimeMonthly,
    ObjectValueNil,
    ObjectValueEmpty,
    ObjectValueData,
    ObjectValueOriginal,
    GenericDisplay,
    GenericKeyboard,
    GenericTrackpad,
    GenericMicrophone,
    GenericWebcam,
    GenericSpeakers,
    NoticeNotForRelease,
    NoticeRequiresAppRestart,
    NoticeRequiresAppRestartLong,
    NoticeNotUndoable,
    TitleSettings,
    TitleSettingsEllipsis,
    TitleSystemSettings,
    TitlePreferences,
    TitlePreferencesEllipsis,
    TitleSystemPreferences,
    TitleInitialDate,
    TitleLaunches,
    TitleExceptions,
    TitleCrashes,
    TitleLastLaunch,
    TitleLastException,
    TitleLastCrashRecovery,
    TitleAppRunTime,
    TitleAppUsedTime,
    TitleDocumentsOpened,
    TitleDocumentsSaved,
    TitleMostOpenedFileTypes,
    TitleMostSavedFileTypes,
    TitleMostDocumentsOpenAtOnce
};

QString fixedText(FixedText text)
{
    return lookup(fixedTextTable[static_cast<size_t>(text)]);
}

} // namespace

static_assert(std::size(fixedTextTable) == 65, "one entry per fixed text");

std::span<const QVLocalizedTextEntry> QVLocalizedString::fixedTexts()
{
    return fixedTextTable;
}


QString QVLocalizedString::actionOK() { return fixedText(FixedText::ActionOK); }
QString QVLocalizedString::actionCancel() { return fixedText(FixedText::ActionCancel); }
QString QVLocalizedString::stateOn() { return fixedText(FixedText::StateOn); }
QString QVLocalizedString::stateOff() { return fixedText(FixedText::StateOff); }
QString QVLocalizedString::stateMixed() { return fixedText(FixedText::StateMixed); }
QString QVLocalizedString::stateIndeterminate() { return fixedText(FixedText::StateIndeterminate); }
QString QVLocalizedString::stateActive() { return fixedText(FixedText::StateActive); }
QString QVLocalizedString::stateInactive() { return fixedText(FixedText::StateInactive); }
QString QVLocalizedString::stateEnabled() { return fixedText(FixedText::StateEnabled); }
QString QVLocalizedString::stateDisabled() { return fixedText(FixedText::StateDisabled); }
QString QVLocalizedString::actionEnable() { return fixedText(FixedText::ActionEnable); }
QString QVLocalizedString::actionDisable() { return fixedText(FixedText::ActionDisable); }
QString QVLocalizedString::stateDefault() { return fixedText(FixedText::StateDefault); }
QString QVLocalizedString::stateAutomatic() { return fixedText(FixedText::StateAutomatic); }
QString QVLocalizedString::stateYes() { return fixedText(FixedText::StateYes); }
QString QVLocalizedString::stateNo() { return fixedText(FixedText::StateNo); }
QString QVLocalizedString::stateUnknown() { return fixedText(FixedText::StateUnknown); }
QString QVLocalizedString::titleUntitled() { return fixedText(FixedText::TitleUntitled); }
QString QVLocalizedString::titleReset() { return fixedText(FixedText::TitleReset); }
QString QVLocalizedString::titleResetEllipsis() { return fixedText(FixedText::TitleResetEllipsis); }
QString QVLocalizedString::titleDebug() { return fixedText(FixedText::TitleDebug); }
QString QVLocalizedString::titleDebugEllipsis() { return fixedText(FixedText::TitleDebugEllipsis); }
QString QVLocalizedString::separatorLabel() { return fixedText(FixedText::SeparatorLabel); }
QString QVLocalizedString::separatorLabelWithSpace() { return fixedText(FixedText::SeparatorLabelWithSpace); }
QString QVLocalizedString::symbolTruncationString() { return fixedText(FixedText::SymbolTruncationString); }
QString QVLocalizedString::symbolAsteriskString() { return fixedText(FixedText::SymbolAsteriskString); }
QString QVLocalizedString::frequencyTimeNever() { return fixedText(FixedText::FrequencyTimeNever); }
QString QVLocalizedString::frequencyTimeDaily() { return fixedText(FixedText::FrequencyTimeDaily); }
QString QVLocalizedString::frequencyTimeSemiweekly() { return fixedText(FixedText::FrequencyTimeSemiweekly); }
QString QVLocalizedString::frequencyTimeWeekly() { return fixedText(FixedText::FrequencyTimeWeekly); }
QString QVLocalizedString::frequencyTimeMonthly() { return fixedText(FixedText::FrequencyTimeMonthly); }
QString QVLocalizedString::objectValueNil() { return fixedText(FixedText::ObjectValueNil); }
QString QVLocalizedString::objectValueEmpty() { return fixedText(FixedText::ObjectValueEmpty); }
QString QVLocalizedString::objectValueData() { return fixedText(FixedText::ObjectValueData); }
QString QVLocalizedString::objectValueOriginal() { return fixedText(FixedText::ObjectValueOriginal); }
QString QVLocalizedString::genericDisplay() { return fixedText(FixedText::GenericDisplay); }
QString QVLocalizedString::genericKeyboard() { return fixedText(FixedText::GenericKeyboard); }
QString QVLocalizedString::genericTrackpad() { return fixedText(FixedText::GenericTrackpad); }
QString QVLocalizedString::genericMicrophone() { return fixedText(FixedText::GenericMicrophone); }
QString QVLocalizedString::genericWebcam() { return fixedText(FixedText::GenericWebcam); }
QString QVLocalizedString::genericSpeakers() { return fixedText(FixedText::GenericSpeakers); }
QString QVLocalizedString::noticeNotForRelease() { return fixedText(FixedText::NoticeNotForRelease); }
QString QVLocalizedString::noticeRequiresAppRestart()
{
    return replaceTagsInString(fixedText(FixedText::NoticeRequiresAppRestart));
}
QString QVLocalizedString::noticeRequiresAppRestartLong()
{
    return replaceTagsInString(fixedText(FixedText::NoticeRequiresAppRestartLong));
}
QString QVLocalizedString::noticeNotUndoable() { return fixedText(FixedText::NoticeNotUndoable); }
QString QVLocalizedString::titleSettings() { return fixedText(FixedText::TitleSettings); }
QString QVLocalizedString::titleSettingsEllipsis() { return fixedText(FixedText::TitleSettingsEllipsis); }
QString QVLocalizedString::titleSystemSettings() { return fixedText(FixedText::TitleSystemSettings); }
QString QVLocalizedString::titlePreferences() { return fixedText(FixedText::TitlePreferences); }
QString QVLocalizedString::titlePreferencesEllipsis() { return fixedText(FixedText::TitlePreferencesEllipsis); }
QString QVLocalizedString::titleSystemPreferences() { return fixedText(FixedText::TitleSystemPreferences); }
QString QVLocalizedString::titleInitialDate() { return fixedText(FixedText::TitleInitialDate); }
QString QVLocalizedString::titleLaunches() { return fixedText(FixedText::TitleLaunches); }
QString QVLocalizedString::titleExceptions() { return fixedText(FixedText::TitleExceptions); }
QString QVLocalizedString::titleCrashes() { return fixedText(FixedText::TitleCrashes); }
QString QVLocalizedString::titleLastLaunch() { return fixedText(FixedText::TitleLastLaunch); }
QString QVLocalizedString::titleLastException() { return fixedText(FixedText::TitleLastException); }
QString QVLocalizedString::titleLastCrashRecovery() { return fixedText(FixedText::TitleLastCrashRecovery); }
QString QVLocalizedString::titleAppRunTime() { return fixedText(FixedText::TitleAppRunTime); }
QString QVLocalizedString::titleAppUsedTime() { return fixedText(FixedText::TitleAppUsedTime); }
QString QVLocalizedString::titleDocumentsOpened() { return fixedText(FixedText::TitleDocumentsOpened); }
QString QVLocalizedString::titleDocumentsSaved() { return fixedText(FixedText::TitleDocumentsSaved); }
QString QVLocalizedString::titleMostOpenedFileTypes() { return fixedText(FixedText::TitleMostOpenedFileTypes); }
QString QVLocalizedString::titleMostSavedFileTypes() { return fixedText(FixedText::TitleMostSavedFileTypes); }
QString QVLocalizedString::titleMostDocumentsOpenAtOnce() { return fixedText(FixedText::TitleMostDocumentsOpenAtOnce); }

QString QVLocalizedString::builtIn(const QString &deviceName)
{
    if (deviceName.isEmpty())
        return u""_s;
    const QString format = QVBundle::localizedString(u"device-built-in"_s, u"Built-in %@"_s, u"Common"_s);
    return QVFormat(format.toUtf8().constData(), deviceName);
}

QString QVLocalizedString::quoteString(const QString &string, qint64 style, const std::optional<QLocale> &locale)
{
    if (string.isNull() || !locale || style < 0 || style >= 2)
        return QString();
    // Qt's locale data always carries both pairs; where a locale's alternate
    // marks are its standard ones, Qt answers those, which is the fall-back.
    return locale->quoteString(string, style == 1 ? QLocale::AlternateQuotation : QLocale::StandardQuotation);
}

QString QVLocalizedString::quotedString(const QString &string)
{
    return quoteString(string, 0, QLocale());
}

QString QVLocalizedString::quotedString(const QString &string, const std::optional<QLocale> &locale)
{
    return quoteString(string, 0, locale);
}

QString QVLocalizedString::quotedAlternativeString(const QString &string)
{
    return quoteString(string, 1, QLocale());
}

QString QVLocalizedString::quotedAlternativeString(const QString &string, const std::optional<QLocale> &locale)
{
    return quoteString(string, 1, locale);
}

QString QVLocalizedString::stringWithLTRMarkup(const QString &string)
{
    return string.isNull() ? QString() : u'\u202A' + string + u'\u202C';
}

QString QVLocalizedString::stringWithRTLMarkup(const QString &string)
{
    return string.isNull() ? QString() : u'\u202B' + string + u'\u202C';
}

QString QVLocalizedString::replaceTagsInString(const QString &string)
{
    return replaceTags(string, std::nullopt, std::nullopt);
}

QString QVLocalizedString::replaceTagsInString(const QString &string,
                                               const std::optional<QVLocalizedStringTagConfiguration> &configuration)
{
    return replaceTags(string, configuration, std::nullopt);
}

QString QVLocalizedString::replaceTagsInString(const QString &string, const QVTagReplacements &customTagReplacement)
{
    return replaceTags(string, std::nullopt, customTagReplacement);
}

QString QVLocalizedString::replaceTags(const QString &string,
                                       const std::optional<QVLocalizedStringTagConfiguration> &configuration,
                                       const std::optional<QVTagReplacements> &customTagReplacement)
{
    if (string.isNull())
        return QString();
    QString text = string;

    // Custom tags come first, so that their values may carry built-in tags.
    // A configuration's own dictionary wins over the one passed directly.
    std::optional<QVTagReplacements> custom = configuration ? configuration->customTagReplacement() : std::nullopt;
    if (!custom)
        custom = customTagReplacement;
    if (custom) {
        for (auto it = custom->cbegin(); it != custom->cend(); ++it) {
            if (!it.key().isEmpty())
                text.replace(it.key(), it.value(), Qt::CaseInsensitive);
        }
    }

    // The quoted spans are found in the input as given, then quoted wherever
    // they stand now; unpaired markers are simply dropped. The guard looks for
    // closing markers too, so that a stray "</QUOTE>" is removed as well.
    if (text.contains(u"<QUOTE", Qt::CaseInsensitive) || text.contains(u"</QUOTE", Qt::CaseInsensitive)) {
        const QVOptionalRangeList spans = QVString::rangesBetweenString(
            string, u"<QUOTE>"_s, u"</QUOTE>"_s, true, 0, QVCaseInsensitiveSearch);
        for (const QVRange range : spans.value_or(QVRangeList())) {
            const QString marked = string.mid(qsizetype(range.location), qsizetype(range.length));
            const QString quoted = quotedString(marked);
            if (!quoted.isNull())
                text.replace(marked, quoted, Qt::CaseSensitive);
        }
        text.remove(u"<QUOTE>"_s, Qt::CaseInsensitive);
        text.remove(u"</QUOTE>"_s, Qt::CaseInsensitive);
    }

    if (text.contains(u"<NO_UNDO_NOTICE>", Qt::CaseInsensitive))
        replaceIfPresent(text, u"<NO_UNDO_NOTICE>", noticeNotUndoable());

    if (text.contains(u"<SEPARATOR", Qt::CaseInsensitive)) {
        replaceIfPresent(text, u"<SEPARATOR_LABEL>", separatorLabel());
        replaceIfPresent(text, u"<SEPARATOR_LABEL_WITH_SPACE>", separatorLabelWithSpace());
    }

    if (text.contains(u"<APP", Qt::CaseInsensitive)) {
        const QString name = QVBundle::applicationName();
        const QString version = QVBundle::shortVersionString();
        const QString build = QVBundle::bundleVersion();
        replaceIfPresent(text, u"<APP_NAME>", name);
        replaceIfPresent(text, u"<APP_VERSION>", version);
        replaceIfPresent(text, u"<APP_BUILD>", build);
        replaceIfPresent(text, u"<APP_NAME_VERSION_BUILD>", name + u' ' + QVFormat("%@ (%@)", version, build));
    }

    if (configuration && configuration->fileURL().isLocalFile() && text.contains(u"<FILE", Qt::CaseInsensitive)) {
        const QString path = configuration->fileURL().toLocalFile();
        const QFileInfo file(path);
        replaceIfPresent(text, u"<FILE_NAME>", file.fileName());
        replaceIfPresent(text, u"<FILE_PATH>", path);
        replaceIfPresent(text, u"<FILE_EXTENSION>", file.suffix());
    }
    return text;
}
