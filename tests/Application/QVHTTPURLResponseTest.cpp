#include <QVKit/Application/QVHTTPURLResponse.h>
#include <QVKit/Application/QVURLResponse.h>

#include "support/QVTestSupport.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QLocale>
#include <QtCore/QTranslator>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

struct ExpectedPhrase
{
    qint64 code;
    QString phrase;
};

// Written out independently of the library's table, so a typo in either shows.
const ExpectedPhrase expectedPhrases[] = {
    {100, u"Continue"_s},
    {101, u"Switching Protocols"_s},
    {102, u"Processing"_s},
    {103, u"Early Hints"_s},
    {200, u"OK"_s},
    {201, u"Created"_s},
    {202, u"Accepted"_s},
    {203, u"Non-Authoritative Information"_s},
    {204, u"No Content"_s},
    {205, u"Reset Content"_s},
    {206, u"Partial Content"_s},
    {207, u"Multi-Status"_s},
    {208, u"Already Reported"_s},
    {226, u"IM Used"_s},
    {300, u"Multiple Choices"_s},
    {301, u"Moved Permanently"_s},
    {302, u"Not Found"_s},
    {303, u"See Other"_s},
    {304, u"Not Modified"_s},
    {305, u"Use Proxy"_s},
    {306, u"Switch Proxy"_s},
    {307, u"Temporary Redirect"_s},
    {308, u"Permanent Redirect"_s},
    {400, u"Bad Request"_s},
    {401, u"Unauthorized"_s},
    {402, u"Payment Required"_s},
    {403, u"Forbidden"_s},
    {404, u"Not Found"_s},
    {405, u"Method Not Allowed"_s},
    {406, u"Not Acceptable"_s},
    {407, u"Proxy Authentication Required"_s},
    {408, u"Request Timeout"_s},
    {409, u"Conflict"_s},
    {410, u"Gone"_s},
    {411, u"Length Required"_s},
    {412, u"Precondition Failed"_s},
    {413, u"Payload Too Large"_s},
    {414, u"URI Too Long"_s},
    {415, u"Unsupported Media Type"_s},
    {416, u"Range Not Satisfiable"_s},
    {417, u"Expectation Failed"_s},
    {421, u"Misdirected Request"_s},
    {422, u"Unprocessable Entity"_s},
    {423, u"Locked"_s},
    {424, u"Failed Dependency"_s},
    {426, u"Upgrade Required"_s},
    {428, u"Precondition Required"_s},
    {429, u"Too Many Requests"_s},
    {431, u"Request Header Fields Too Large"_s},
    {451, u"Unavailable For Legal Reasons"_s},
    {494, u"Request Header Too Large"_s},
    {495, u"SSL Certificate Error"_s},
    {496, u"SSL Certificate Required"_s},
    {497, u"HTTP Request Sent to HTTPS Port"_s},
    {499, u"Client Closed Request"_s},
    {500, u"Internal Server Error"_s},
    {501, u"Not Implemented"_s},
    {502, u"Bad Gateway"_s},
    {503, u"Service Unavailable"_s},
    {504, u"Gateway Timeout"_s},
    {505, u"HTTP Version Not Supported"_s},
    {506, u"Variant Also Negotiates"_s},
    {507, u"Insufficient Storage"_s},
    {508, u"Loop Detected"_s},
    {510, u"Not Extended"_s},
    {511, u"Network Authentication Required"_s},
};

// Answers "GET /<code>" with that status, an empty body and a reason phrase
// of its own, so a test can tell the server's phrase from the library's.
class StatusServer
{
public:
    StatusServer()
    {
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
            while (QTcpSocket *socket = m_server.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] { answer(socket); });
            }
        });
        m_listening = m_server.listen(QHostAddress::LocalHost, 0);
    }

    bool isListening() const { return m_listening; }

    QUrl url(int code) const
    {
        return QUrl(u"http://127.0.0.1:%1/%2"_s.arg(m_server.serverPort()).arg(code));
    }

private:
    static void answer(QTcpSocket *socket)
    {
        QByteArray &request = s_pending[socket];
        request += socket->readAll();
        if (!request.contains("\r\n\r\n"))
            return;
        // "GET /418 HTTP/1.1"
        const QList<QByteArray> requestLine = request.left(request.indexOf("\r\n")).split(' ');
        s_pending.remove(socket);
        const QByteArray code = requestLine.size() >= 2 ? requestLine[1].mid(1) : QByteArray("400");
        socket->write("HTTP/1.1 " + code + " Server Phrase\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    bool m_listening = false;
    static inline QHash<QTcpSocket *, QByteArray> s_pending;
};

class QVURLResponseTest : public ::testing::Test
{
protected:
    QVURLResponseTest() { m_manager.setProxy(QNetworkProxy::NoProxy); }

    std::unique_ptr<QNetworkReply> start(const QUrl &url)
    {
        QNetworkRequest request(url);
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        return std::unique_ptr<QNetworkReply>(m_manager.get(request));
    }

    std::unique_ptr<QNetworkReply> fetch(const QUrl &url)
    {
        std::unique_ptr<QNetworkReply> reply = start(url);
        QNetworkReply *raw = reply.get();
        EXPECT_TRUE(QVTest::waitUntil([raw] { return raw->isFinished(); }));
        return reply;
    }

    QNetworkAccessManager m_manager;
};

} // namespace

TEST(QVHTTPURLResponseTest, SuccessIsEverythingBelow300)
{
    const struct
    {
        qint64 code;
        bool success;
    } rows[] = {
        {std::numeric_limits<qint64>::min(), true},
        {-1, true},
        {0, true},
        {101, true},
        {200, true},
        {299, true},
        {300, false},
        {302, false},
        {404, false},
        {500, false},
        {std::numeric_limits<qint64>::max(), false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.code);
        EXPECT_EQ(QVHTTPURLResponse::isStatusCodeSuccess(row.code), row.success);
    }
}

TEST(QVHTTPURLResponseTest, EveryKnownCodeHasItsDefaultPhrase)
{
    ASSERT_EQ(std::size(expectedPhrases), 66u);
    for (const ExpectedPhrase &expected : expectedPhrases) {
        SCOPED_TRACE(expected.code);
        const QString phrase = QVHTTPURLResponse::statusString(expected.code);
        EXPECT_FALSE(phrase.isNull());
        EXPECT_EQ(phrase, expected.phrase);
    }

    // No code outside the list has a phrase.
    int known = 0;
    for (qint64 code = -1; code <= 1000; ++code)
        known += QVHTTPURLResponse::statusString(code).isNull() ? 0 : 1;
    EXPECT_EQ(known, 66);

    // 302 shares the text of 404 on purpose.
    EXPECT_EQ(QVHTTPURLResponse::statusString(302), u"Not Found"_s);
    EXPECT_EQ(QVHTTPURLResponse::statusString(404), u"Not Found"_s);
    EXPECT_EQ(QVHTTPURLResponse::statusString(511), u"Network Authentication Required"_s);
    for (const qint64 unknown : {qint64(418), qint64(0), qint64(-404), (qint64(1) << 32) + 404,
                                 std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()}) {
        SCOPED_TRACE(unknown);
        EXPECT_TRUE(QVHTTPURLResponse::statusString(unknown).isNull());
    }
}

TEST(QVHTTPURLResponseTest, TranslatedPhrasesComeFromTheStatusCodesTable)
{
    auto translator = std::make_unique<QTranslator>();
    ASSERT_TRUE(translator->load(QLocale(QLocale::German, QLocale::Germany), u"qvkit_test"_s, u"_"_s,
                                 QDir(QString::fromUtf8(QVKIT_TEST_BINARY_DIR)).filePath(u"translations"_s)));
    ASSERT_TRUE(QCoreApplication::installTranslator(translator.get()));

    EXPECT_EQ(QVHTTPURLResponse::statusString(404), u"Nicht gefunden"_s);
    // 302 has the same default text but its own key, which has no translation.
    EXPECT_EQ(QVHTTPURLResponse::statusString(302), u"Not Found"_s);
    EXPECT_EQ(QVHTTPURLResponse::statusString(405), u"Method Not Allowed"_s);
    EXPECT_TRUE(QVHTTPURLResponse::statusString(418).isNull());

    QCoreApplication::removeTranslator(translator.get());
    EXPECT_EQ(QVHTTPURLResponse::statusString(404), u"Not Found"_s);
}

TEST_F(QVURLResponseTest, HTTPRepliesAnswerTheirStatus)
{
    StatusServer server;
    ASSERT_TRUE(server.isListening());
    const struct
    {
        int code;
        QString phrase;
        bool success;
    } rows[] = {
        {200, u"OK"_s, true},
        {299, QString(), true},
        {302, u"Not Found"_s, false},
        {404, u"Not Found"_s, false},
        {418, QString(), false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.code);
        const std::unique_ptr<QNetworkReply> reply = fetch(server.url(row.code));
        ASSERT_TRUE(reply->isFinished());
        EXPECT_EQ(QVURLResponse::httpStatusCode(reply.get()), row.code);
        EXPECT_EQ(QVURLResponse::isHTTPStatusCodeSuccess(reply.get()), row.success);
        const QString phrase = QVURLResponse::httpStatusString(reply.get());
        EXPECT_EQ(phrase.isNull(), row.phrase.isNull());
        EXPECT_EQ(phrase, row.phrase);
    }
}

TEST_F(QVURLResponseTest, OtherRepliesAnswerNeutralValues)
{
    EXPECT_EQ(QVURLResponse::httpStatusCode(nullptr), 0);
    EXPECT_FALSE(QVURLResponse::isHTTPStatusCodeSuccess(nullptr));
    EXPECT_TRUE(QVURLResponse::httpStatusString(nullptr).isNull());

    const QUrl urls[] = {
        QUrl(u"data:text/plain;charset=utf-8,gr%C3%BC%C3%9Fe"_s),
        QUrl::fromLocalFile(QVTest::dataPath(u"translations/qvkit_test_de.ts"_s)),
    };
    for (const QUrl &url : urls) {
        SCOPED_TRACE(url.scheme().toStdString());
        const std::unique_ptr<QNetworkReply> reply = fetch(url);
        ASSERT_TRUE(reply->isFinished());
        EXPECT_EQ(reply->error(), QNetworkReply::NoError);
        EXPECT_EQ(QVURLResponse::httpStatusCode(reply.get()), 0);
        // Success is false here although 0 alone would count as success.
        EXPECT_FALSE(QVURLResponse::isHTTPStatusCodeSuccess(reply.get()));
        EXPECT_TRUE(QVURLResponse::httpStatusString(reply.get()).isNull());
    }

    // An HTTP reply whose headers have not arrived has no status yet.
    StatusServer server;
    ASSERT_TRUE(server.isListening());
    const std::unique_ptr<QNetworkReply> pending = start(server.url(200));
    EXPECT_EQ(QVURLResponse::httpStatusCode(pending.get()), 0);
    EXPECT_FALSE(QVURLResponse::isHTTPStatusCodeSuccess(pending.get()));
    EXPECT_TRUE(QVURLResponse::httpStatusString(pending.get()).isNull());
    QNetworkReply *raw = pending.get();
    EXPECT_TRUE(QVTest::waitUntil([raw] { return raw->isFinished(); }));
    EXPECT_EQ(QVURLResponse::httpStatusCode(pending.get()), 200);
}
