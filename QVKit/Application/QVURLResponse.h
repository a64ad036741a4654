#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

class QNetworkReply;

/**
 * HTTP status of a network reply.
 *
 * A reply is an HTTP response when it is not null, its URL's scheme is http
 * or https, and its status code has arrived
 * (QNetworkRequest::HttpStatusCodeAttribute holds a value). Any other reply,
 * including one still waiting for its headers, answers the neutral values.
 */
namespace QVURLResponse {

/** False unless an HTTP response; then whether its status code counts as success (below 300). */
QVKIT_EXPORT bool isHTTPStatusCodeSuccess(const QNetworkReply *reply);

/** The HTTP status code; 0 unless an HTTP response. */
QVKIT_EXPORT qint64 httpStatusCode(const QNetworkReply *reply);

/** The localized reason phrase of the status code; a null string unless an HTTP response with a known code. */
QVKIT_EXPORT QString httpStatusString(const QNetworkReply *reply);

} // namespace QVURLResponse
