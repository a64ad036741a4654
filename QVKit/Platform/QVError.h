#pragma once

#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QMetaType>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

#include <optional>

// Domains, codes and detail keys of the errors the library makes or recognises.
// The texts are the well-known ones, so that details survive a round trip
// through a property list written elsewhere.
inline constexpr QVStringConstant QVCocoaErrorDomain = u"NSCocoaErrorDomain";
inline constexpr QVStringConstant QVURLErrorDomain = u"NSURLErrorDomain";
inline constexpr QVStringConstant QVPOSIXErrorDomain = u"NSPOSIXErrorDomain";

inline constexpr qint64 QVUserCancelledError = 3072;
inline constexpr qint64 QVURLErrorCancelled = -999;
inline constexpr qint64 QVFileReadUnknownError = 256;
inline constexpr qint64 QVFileReadNoSuchFileError = 260;
inline constexpr qint64 QVFileWriteUnknownError = 512;
inline constexpr qint64 QVPropertyListReadCorruptError = 3840;
inline constexpr qint64 QVPropertyListWriteInvalidError = 3852;

inline constexpr QVStringConstant QVLocalizedDescriptionKey = u"NSLocalizedDescription";
inline constexpr QVStringConstant QVLocalizedRecoverySuggestionErrorKey = u"NSLocalizedRecoverySuggestion";
inline constexpr QVStringConstant QVLocalizedFailureReasonErrorKey = u"NSLocalizedFailureReason";
inline constexpr QVStringConstant QVDebugDescriptionErrorKey = u"NSDebugDescription";
inline constexpr QVStringConstant QVUnderlyingErrorKey = u"NSUnderlyingError";
inline constexpr QVStringConstant QVMultipleUnderlyingErrorsKey = u"NSMultipleUnderlyingErrorsKey";
inline constexpr QVStringConstant QVFilePathErrorKey = u"NSFilePath";
inline constexpr QVStringConstant QVURLErrorKey = u"NSURL";

/** The library's own error domain and codes. */
inline constexpr QVStringConstant QVErrorDomain = u"QVErrorDomain";
inline constexpr qint64 QVErrorCodeUnknown = 0;
inline constexpr qint64 QVErrorCodeFileCreatedWithNewerVersion = 100;

class QVErrorData;
class QUrl;

/**
 * A failure a caller or a user should see: a domain, a signed 64-bit code and
 * a dictionary of details. A default-constructed error is null and stands for
 * "no error"; errors nest through QVUnderlyingErrorKey, whose value is a
 * QVError held in a QVariant.
 */
class QVKIT_EXPORT QVError
{
public:
    QVError();
    QVError(const QString &domain, qint64 code, const QVariantMap &userInfo = {});
    QVError(QStringView domain, qint64 code, const QVariantMap &userInfo = {});
    QVError(QVStringConstant domain, qint64 code, const QVariantMap &userInfo = {})
        : QVError(domain.toString(), code, userInfo)
    {
    }
    QVError(const QVError &other);
    QVError(QVError &&other) noexcept;
    QVError &operator=(const QVError &other);
    QVError &operator=(QVError &&other) noexcept;
    ~QVError();

    /** True for "no error": the domain is absent. */
    bool isNull() const;

    QString domain() const;
    qint64 code() const;
    QVariantMap userInfo() const;
    /** The detail under a key; an invalid QVariant when there is none. */
    QVariant userInfoValue(QStringView key) const;

    /** The title, or a generic sentence naming the domain and code; empty for a null error. */
    QString localizedDescription() const;
    /** The explanation under QVLocalizedRecoverySuggestionErrorKey, or a null string. */
    QString localizedRecoverySuggestion() const;
    /** The wrapped cause, or a null error. */
    QVError underlyingError() const;
    /** The list under QVMultipleUnderlyingErrorsKey; errors only, others skipped. */
    QList<QVError> underlyingErrors() const;

    /** "Error Domain=<domain> Code=<code> \"<description>\" UserInfo={...}"; empty for a null error. */
    QString description() const;

    /** True for the same domain, code and details. */
    bool operator==(const QVError &other) const;

    /** The error held in a QVariant, or a null error when it holds something else. */
    static QVError fromVariant(const QVariant &value);

    // Application additions, defined in QVKit/Application/QVErrorAdditions.cpp.

    /**
     * An error with a user-facing title and explanation: the details are
     * copied, then a non-empty title goes under QVLocalizedDescriptionKey and a
     * non-empty description under QVLocalizedRecoverySuggestionErrorKey,
     * replacing what the details had there. A null domain gives a null error.
     */
    static QVError errorWithDomain(const QString &domain, qint64 code, const QString &title,
                                   const QString &description, const QVariantMap &userInfo = {});
    /** The platform's user-cancelled error (QVCocoaErrorDomain, 3072), with no details. */
    static QVError userCancelledError();
    /**
     * True when this error or any error wrapped under QVUnderlyingErrorKey, at
     * any depth, is a cancellation (3072 in QVCocoaErrorDomain or -999 in
     * QVURLErrorDomain), or when one of this error's own
     * QVMultipleUnderlyingErrorsKey errors is. Cancelled work is never shown.
     */
    bool isCancelled() const;
    /**
     * An error in QVErrorDomain. A missing title becomes the generic "An error
     * occurred."; a missing description the generic request to report the
     * error, followed by the domain and code, the application's identifier,
     * name and version, and the operating system.
     */
    static QVError quoveraErrorWithCode(qint64 code, const QString &title = QString(),
                                        const QString &description = QString(), const QVariantMap &userInfo = {});
    /** quoveraErrorWithCode() with code 0 and nothing else. */
    static QVError quoveraUnknownError();
    /**
     * The error for a document written by a newer version of the application
     * (code 100), naming the file and, when given (even empty), the version to
     * upgrade to. An empty URL gives a null error.
     */
    static QVError quoveraErrorFileCreatedWithNewerVersion(const QUrl &fileURL,
                                                           const std::optional<QString> &newVersionString);

private:
    QSharedDataPointer<QVErrorData> d;
};

Q_DECLARE_METATYPE(QVError)
