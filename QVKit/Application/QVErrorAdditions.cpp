// The library's error operations: titled errors, its own domain, and the
// cancellation test every caller uses before showing an error.

#include "QVKit/Platform/QVError.h"

#include "QVKit/Application/QVLocalizedString.h"
#include "QVKit/Platform/QVBundle.h"
#include "QVKit/Platform/QVOSRelease.h"

#include <QtCore/QUrl>

using namespace Qt::StringLiterals;

namespace {

// Code first, then domain: 3072 or -999 in any other domain is no cancellation.
bool isCancellation(const QVError &error)
{
    return (error.code() == QVUserCancelledError && error.domain() == QVCocoaErrorDomain)
           || (error.code() == QVURLErrorCancelled && error.domain() == QVURLErrorDomain);
}

QString genericDescription(qint64 code)
{
    QString text = QVBundle::localizedString(u"error-generic-description"_s,
                                             u"Please report this error and the steps to reproduce it."_s, u"Errors"_s);
    text += u"\n\n"_s;
    text += QVErrorDomain + u" Code "_s + QString::number(code) + u'\n';
    text += QVBundle::bundleIdentifier() + u'\n';
    text += QVBundle::applicationName() + u' ' + QVBundle::shortVersionString() + u'\n';
    const QVOSRelease system = QVOSRelease::current();
    if (!system.name().isEmpty() && !system.versionId().isEmpty())
        text += system.name() + u' ' + system.versionId() + u'\n';
    return text.trimmed();
}

} // namespace

QVError QVError::errorWithDomain(const QString &domain, qint64 code, const QString &title,
                                 const QString &description, const QVariantMap &userInfo)
{
    if (domain.isNull())
        return QVError();
    QVariantMap details = userInfo;
    if (!title.isEmpty())
        details.insert(QVLocalizedDescriptionKey, title);
    if (!description.isEmpty())
        details.insert(QVLocalizedRecoverySuggestionErrorKey, description);
    return QVError(domain, code, details);
}

QVError QVError::userCancelledError()
{
    return QVError(QVCocoaErrorDomain, QVUserCancelledError);
}

bool QVError::isCancelled() const
{
    for (QVError error = *this; !error.isNull(); error = error.underlyingError()) {
        if (isCancellation(error))
            return true;
    }
    // The list of several underlying errors is looked at one level deep only.
    const QList<QVError> several = underlyingErrors();
    return std::any_of(several.cbegin(), several.cend(), isCancellation);
}

QVError QVError::quoveraErrorWithCode(qint64 code, const QString &title, const QString &description,
                                      const QVariantMap &userInfo)
{
    const QString effectiveTitle =
        title.isEmpty() ? QVBundle::localizedString(u"error-generic-title"_s, u"An error occurred."_s, u"Errors"_s)
                        : title;
    const QString effectiveDescription = description.isEmpty() ? genericDescription(code) : description;
    return errorWithDomain(QVErrorDomain, code, effectiveTitle, effectiveDescription, userInfo);
}

QVError QVError::quoveraUnknownError()
{
    return quoveraErrorWithCode(QVErrorCodeUnknown);
}

QVError QVError::quoveraErrorFileCreatedWithNewerVersion(const QUrl &fileURL,
                                                          const std::optional<QString> &newVersionString)
{
    if (fileURL.isEmpty())
        return QVError();
    QVLocalizedStringTagConfiguration configuration;
    configuration.setFileURL(fileURL);
    if (newVersionString)
        configuration.setCustomTagReplacement(QVTagReplacements{{u"<UPGRADE_VERSION>"_s, *newVersionString}});

    const QString title = QVLocalizedString::replaceTagsInString(
        QVBundle::localizedString(u"error-file-created-with-newer-version-title"_s,
                                  u"<QUOTE><FILE_NAME></QUOTE> was created with a newer version of <APP_NAME>."_s),
        configuration);
    const QString description = QVLocalizedString::replaceTagsInString(
        newVersionString && !newVersionString->isEmpty()
            ? QVBundle::localizedString(u"error-file-created-with-newer-version-description"_s,
                                        u"Please upgrade <APP_NAME> to <UPGRADE_VERSION> or newer to use this file."_s)
            : QVBundle::localizedString(u"error-file-created-with-newer-version-description-generic"_s,
                                        u"Please upgrade <APP_NAME> to a newer version to use this file."_s),
        configuration);
    return quoveraErrorWithCode(QVErrorCodeFileCreatedWithNewerVersion, title, description);
}
