#include "QVKit/Platform/QVError.h"

#include "QVKit/Platform/QVFormat.h"

using namespace Qt::StringLiterals;

class QVErrorData : public QSharedData
{
public:
    QString domain;
    qint64 code = 0;
    QVariantMap userInfo;
};

QVError::QVError()
    : d(new QVErrorData)
{
}

QVError::QVError(const QString &domain, qint64 code, const QVariantMap &userInfo)
    : d(new QVErrorData)
{
    d->domain = domain;
    d->code = code;
    d->userInfo = userInfo;
}

QVError::QVError(QStringView domain, qint64 code, const QVariantMap &userInfo)
    : QVError(domain.toString(), code, userInfo)
{
}

QVError::QVError(const QVError &other) = default;
QVError::QVError(QVError &&other) noexcept = default;
QVError &QVError::operator=(const QVError &other) = default;
QVError &QVError::operator=(QVError &&other) noexcept = default;
QVError::~QVError() = default;

bool QVError::isNull() const
{
    return d->domain.isNull();
}

QString QVError::domain() const
{
    return d->domain;
}

qint64 QVError::code() const
{
    return d->code;
}

QVariantMap QVError::userInfo() const
{
    return d->userInfo;
}

QVariant QVError::userInfoValue(QStringView key) const
{
    return d->userInfo.value(key.toString());
}

QString QVError::localizedDescription() const
{
    // No error has nothing to describe, not "( error 0.)".
    if (isNull())
        return {};
    const QString title = userInfoValue(QVLocalizedDescriptionKey).toString();
    if (!title.isEmpty())
        return title;
    return u"The operation couldn\u2019t be completed. (%1 error %2.)"_s.arg(d->domain).arg(d->code);
}

QString QVError::localizedRecoverySuggestion() const
{
    return userInfoValue(QVLocalizedRecoverySuggestionErrorKey).toString();
}

QVError QVError::underlyingError() const
{
    return fromVariant(userInfoValue(QVUnderlyingErrorKey));
}

QList<QVError> QVError::underlyingErrors() const
{
    QList<QVError> errors;
    for (const QVariant &value : userInfoValue(QVMultipleUnderlyingErrorsKey).toList()) {
        if (value.metaType() == QMetaType::fromType<QVError>())
            errors.append(value.value<QVError>());
    }
    return errors;
}

QString QVError::description() const
{
    if (isNull())
        return {};
    return u"Error Domain=%1 Code=%2 \"%3\" UserInfo=%4"_s.arg(
        d->domain, QString::number(d->code), localizedDescription(), QVDescription(d->userInfo));
}

bool QVError::operator==(const QVError &other) const
{
    return d == other.d
           || (d->domain == other.d->domain && d->code == other.d->code
               && d->userInfo == other.d->userInfo);
}

QVError QVError::fromVariant(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<QVError>())
        return value.value<QVError>();
    return QVError();
}
