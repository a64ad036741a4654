#include "QVKit/Application/QVHTTPURLResponse.h"

#include "QVKit/Platform/QVBundle.h"

#include <QtCore/QStringView>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

struct StatusPhrase
{
    qint64 code;
    QStringView phrase; // the default when the host has no translation
};

// Every code with a reason phrase, in ascending order.
constexpr std::array<StatusPhrase, 66> statusPhrases{{
    {100, u"Continue"},
    {101, u"Switching Protocols"},
    {102, u"Processing"},
    {103, u"Early Hints"},
    {200, u"OK"},
    {201, u"Created"},
    {202, u"Accepted"},
    {203, u"Non-Authoritative Information"},
    {204, u"No Content"},
    {205, u"Reset Content"},
    {206, u"Partial Content"},
    {207, u"Multi-Status"},
    {208, u"Already Reported"},
    {226, u"IM Used"},
    {300, u"Multiple Choices"},
    {301, u"Moved Permanently"},
    {302, u"Not Found"},  // deliberately the same text as 404
    {303, u"See Other"},
    {304, u"Not Modified"},
    {305, u"Use Proxy"},
    {306, u"Switch Proxy"},
    {307, u"Temporary Redirect"},
    {308, u"Permanent Redirect"},
    {400, u"Bad Request"},
    {401, u"Unauthorized"},
    {402, u"Payment Required"},
    {403, u"Forbidden"},
    {404, u"Not Found"},
    {405, u"Method Not Allowed"},
    {406, u"Not Acceptable"},
    {407, u"Proxy Authentication Required"},
    {408, u"Request Timeout"},
    {409, u"Conflict"},
    {410, u"Gone"},
    {411, u"Length Required"},
    {412, u"Precondition Failed"},
    {413, u"Payload Too Large"},
    {414, u"URI Too Long"},
    {415, u"Unsupported Media Type"},
    {416, u"Range Not Satisfiable"},
    {417, u"Expectation Failed"},
    {421, u"Misdirected Request"},
    {422, u"Unprocessable Entity"},
    {423, u"Locked"},
    {424, u"Failed Dependency"},
    {426, u"Upgrade Required"},
    {428, u"Precondition Required"},
    {429, u"Too Many Requests"},
    {431, u"Request Header Fields Too Large"},
    {451, u"Unavailable For Legal Reasons"},
    {494, u"Request Header Too Large"},
    {495, u"SSL Certificate Error"},
    {496, u"SSL Certificate Required"},
    {497, u"HTTP Request Sent to HTTPS Port"},
    {499, u"Client Closed Request"},
    {500, u"Internal Server Error"},
    {501, u"Not Implemented"},
    {502, u"Bad Gateway"},
    {503, u"Service Unavailable"},
    {504, u"Gateway Timeout"},
    {505, u"HTTP Version Not Supported"},
    {506, u"Variant Also Negotiates"},
    {507, u"Insufficient Storage"},
    {508, u"Loop Detected"},
    {510, u"Not Extended"},
    {511, u"Network Authentication Required"},
}};

static_assert(std::ranges::is_sorted(statusPhrases, {}, &StatusPhrase::code),
              "statusPhrases is searched by bisection and must stay in ascending code order");

} // namespace

bool QVHTTPURLResponse::isStatusCodeSuccess(qint64 statusCode)
{
    return statusCode < 300;
}

QString QVHTTPURLResponse::statusString(qint64 statusCode)
{
    const auto found = std::ranges::lower_bound(statusPhrases, statusCode, {}, &StatusPhrase::code);
    if (found == statusPhrases.end() || found->code != statusCode)
        return QString();
    return QVBundle::localizedString(u"http-"_s + QString::number(statusCode), found->phrase.toString(),
                                     u"Status Codes"_s);
}
