#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/**
 * HTTP status codes: success and the localized reason phrase.
 *
 * Reason phrases come from the "Status Codes" table under the key "http-"
 * followed by the decimal code ("http-404"), with an English default when the
 * host has no translation.
 */
namespace QVHTTPURLResponse {

/**
 * True for any code below 300. Informational (1xx) codes, 0 and negative
 * values count as success too: only redirects and errors do not.
 */
QVKIT_EXPORT bool isStatusCodeSuccess(qint64 statusCode);

/** The localized reason phrase of a known code ("Not Found"); a null string for any other. */
QVKIT_EXPORT QString statusString(qint64 statusCode);

} // namespace QVHTTPURLResponse
