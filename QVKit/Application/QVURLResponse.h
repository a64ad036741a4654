#pragma once

#include <QVKit/Application/QVHTTPURLResponse.h>

#include <QtCore/QString>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <optional>

/**
 * HTTP status of a network reply.
 *
 * A reply is an HTTP response when it is not null, its URL's scheme is http
 * or https, and its status code has arrived
 * (QNetworkRequest::HttpStatusCodeAttribute holds a value). Any other reply,
 * including one still waiting for its headers, answers the neutral values.
 *
 * These functions are inline: they are compiled into the application that
 * includes this header and links Qt Network itself, so the library never
 * loads Qt Network on behalf of programs that make no requests.
 */
namespace QVURLResponse {

namespace Detail {

// The status code of an HTTP response; nothing for any other reply.
inline std::optional<qint64> httpStatus(const QNetworkReply *reply)
{
    if (!reply)
        return std::nullopt;
    // QUrl keeps schemes in lower case.
    const QString scheme = reply->url().scheme();
    if (scheme != QStringView(u"http") && scheme != QStringView(u"https"))
        return std::nullopt;
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        return std::nullopt;
    return status.toLongLong();
}

} // namespace Detail

/** False unless an HTTP response; then whether its status code counts as success (below 300). */
inline bool isHTTPStatusCodeSuccess(const QNetworkReply *reply)
{
    const std::optional<qint64> status = Detail::httpStatus(reply);
    return status && QVHTTPURLResponse::isStatusCodeSuccess(*status);
}

/** The HTTP status code; 0 unless an HTTP response. */
inline qint64 httpStatusCode(const QNetworkReply *reply)
{
    return Detail::httpStatus(reply).value_or(0);
}

/** The localized reason phrase of the status code; a null string unless an HTTP response with a known code. */
inline QString httpStatusString(const QNetworkReply *reply)
{
    const std::optional<qint64> status = Detail::httpStatus(reply);
    return status ? QVHTTPURLResponse::statusString(*status) : QString();
}

} // namespace QVURLResponse
