#include "QVKit/Application/QVURLResponse.h"

#include "QVKit/Application/QVHTTPURLResponse.h"

#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

// The status code of an HTTP response; nothing for any other reply.
std::optional<qint64> httpStatus(const QNetworkReply *reply)
{
    if (!reply)
        return std::nullopt;
    // QUrl keeps schemes in lower case.
    const QString scheme = reply->url().scheme();
    if (scheme != u"http"_s && scheme != u"https"_s)
        return std::nullopt;
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return std::nullopt;
    return status.toLongLong();
}

} // namespace

bool QVURLResponse::isHTTPStatusCodeSuccess(const QNetworkReply *reply)
{
    const std::optional<qint64> status = httpStatus(reply);
    return status && QVHTTPURLResponse::isStatusCodeSuccess(*status);
}

qint64 QVURLResponse::httpStatusCode(const QNetworkReply *reply)
{
    return httpStatus(reply).value_or(0);
}

QString QVURLResponse::httpStatusString(const QNetworkReply *reply)
{
    const std::optional<qint64> status = httpStatus(reply);
    return status ? QVHTTPURLResponse::statusString(*status) : QString();
}
