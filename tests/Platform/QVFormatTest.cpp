#include <QVKit/Platform/QVError.h>
#include <QVKit/Platform/QVFormat.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVRange.h>

#include <QtCore/QDateTime>
#include <QtCore/QThread>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

struct Described
{
    QString description() const { return u"<Described \u00e9\U0001F600>"_s; }
};

} // namespace

TEST(QVFormatTest, PrintfConversionsBehaveAsTheCLibrary)
{
    EXPECT_EQ(QVFormat("%d|%5d|%-5d|%05d|%+d", 42, 42, 42, 42, 42), u"42|   42|42   |00042|+42"_s);
    EXPECT_EQ(QVFormat("%ld %lld %lu %zu %hhd", 1L, -2LL, 3UL, size_t(4), 5), u"1 -2 3 4 5"_s);
    EXPECT_EQ(QVFormat("%x %X %#x %o", 255, 255, 255, 8), u"ff FF 0xff 10"_s);
    EXPECT_EQ(QVFormat("%.2f %e %g", 3.14159, 1000.0, 0.5), u"3.14 1.000000e+03 0.5"_s);
    EXPECT_EQ(QVFormat("%*d|%-*d|%.*f", 4, 7, 3, 8, 1, 2.25), u"   7|8  |2.2"_s);
    EXPECT_EQ(QVFormat("%llu", ~0ULL), u"18446744073709551615"_s);
    EXPECT_EQ(QVFormat("%lld", std::numeric_limits<qint64>::min()), u"-9223372036854775808"_s);
    EXPECT_EQ(QVFormat("100%%"), u"100%"_s);
    EXPECT_EQ(QVFormat("%c%C", 'A', 0x1F600), u"A\U0001F600"_s);
}

TEST(QVFormatTest, StringsKeepUnicodeAndWidthCountsCharacters)
{
    EXPECT_EQ(QVFormat("%s and %@", "gr\u00fc\u00df", u"\u65e5\u672c"_s), u"gr\u00fc\u00df and \u65e5\u672c"_s);
    EXPECT_EQ(QVFormat("[%6@]", u"\u00e9t\u00e9"_s), u"[   \u00e9t\u00e9]"_s);
    EXPECT_EQ(QVFormat("[%.3s]", "abcdef"), u"[abc]"_s);
    EXPECT_EQ(QVFormat("%s", static_cast<const char *>(nullptr)), u"(null)"_s);
}

TEST(QVFormatTest, ObjectDescriptions)
{
    EXPECT_EQ(QVFormat("%@", Described()), u"<Described \u00e9\U0001F600>"_s);
    EXPECT_EQ(QVFormat("%@", QVariant()), u"(null)"_s);
    EXPECT_EQ(QVFormat("%@", QVariant::fromValue(nullptr)), u"<null>"_s);
    EXPECT_EQ(QVFormat("%@", QVariant(QVariantList{1, u"two"_s, true})), u"(1, two, 1)"_s);
    EXPECT_EQ(QVFormat("%@", QVariant(QVariantMap{{u"b"_s, 2}, {u"a"_s, QVariantList{}}})),
              u"{a = (); b = 2; }"_s);
    EXPECT_EQ(QVFormat("%@", QVariant(QByteArray("\x01\xff", 2))), u"<01ff>"_s);
    EXPECT_EQ(QVFormat("%@", QVariant(QDateTime(QDate(2026, 11, 14), QTime(15, 55, 40), Qt::UTC))),
              u"2026-11-14 15:55:40 +0000"_s);
    EXPECT_EQ(QVFormat("%@ %@", 7, 2.5), u"7 2.5"_s) << "numbers describe themselves";

    const QVError error(QVCocoaErrorDomain, 3072);
    EXPECT_EQ(QVFormat("%@", error), error.description());
    EXPECT_EQ(QVFormat("%@", QVariant::fromValue(error)), error.description());
}

TEST(QVFormatTest, BadFormatsNeverReadMissingArguments)
{
    EXPECT_EQ(QVFormat("a %d b %@ c"), u"a  b  c"_s);
    EXPECT_EQ(QVFormat("%d", 1, 2, 3), u"1"_s);
    EXPECT_EQ(QVFormat("tail %"), u"tail "_s);
    EXPECT_EQ(QVFormat("tail %-08"), u"tail "_s);
    EXPECT_EQ(QVFormat("%k %5y", 1), u"%k %5y"_s) << "unknown conversions stay as written";
    EXPECT_EQ(QVFormat("%*d", std::numeric_limits<qint64>::min(), 1).size(), 4096);
    EXPECT_TRUE(QVFormat(nullptr).isNull());
}

TEST(QVFormatTest, LogLinesReachTheMessageHandlerWordForWord)
{
    QVLogCapture capture;
    QVLog("%s: %@ is not a range. Fix this.", "QVRangeFromString", u"\u00abx\u00bb"_s);
    QVLog("plain line");
    EXPECT_EQ(capture.lines(),
              QStringList({u"QVRangeFromString: \u00abx\u00bb is not a range. Fix this."_s, u"plain line"_s}));
    EXPECT_TRUE(capture.containsFragment(u"not a range"_s));
    capture.clear();
    EXPECT_TRUE(capture.lines().isEmpty());
}

TEST(QVFormatTest, CapturesNestAndSeeOtherThreads)
{
    QVLogCapture outer;
    {
        QVLogCapture inner;
        QThread *worker = QThread::create([] { QVLog("from worker %d", 1); });
        worker->start();
        worker->wait();
        delete worker;
        EXPECT_TRUE(inner.contains(u"from worker 1"_s));
    }
    QVLog("after inner");
    EXPECT_EQ(outer.lines(), QStringList{u"after inner"_s});
}
