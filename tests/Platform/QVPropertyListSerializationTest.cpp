#include <QVKit/Platform/QVPropertyListSerialization.h>

#include "support/QVTestSupport.h"

#include <QtCore/QBuffer>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimeZone>
#include <QtCore/QUrl>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

using PL = QVPropertyListSerialization;

QByteArray wrap(const QByteArray &value)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + value + "\n</plist>\n";
}

QByteArray readFixture(const QString &name)
{
    QFile file(QVTest::dataPath(u"plist/"_s + name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QDateTime utc(int y, int mo, int d, int h, int mi, int s)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s), Qt::UTC);
}

QByteArray nestedArrays(int levels)
{
    return QByteArray("<array>").repeated(levels) + QByteArray("</array>").repeated(levels);
}

QVariant nestedLists(int levels)
{
    QVariant value = QVariantList();
    for (int i = 1; i < levels; ++i)
        value = QVariantList{value};
    return value;
}

// Equality that also tells NaN from NaN, -0 from 0, null strings from empty
// ones and the value types apart, which QVariant's own == glosses over.
::testing::AssertionResult sameValue(const QVariant &a, const QVariant &b, const QString &path = u"/"_s)
{
    if (a.typeId() != b.typeId())
        return ::testing::AssertionFailure() << qPrintable(path) << ": type " << a.typeName() << " vs "
                                             << b.typeName();
    switch (a.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap ma = a.toMap(), mb = b.toMap();
        if (ma.keys() != mb.keys())
            return ::testing::AssertionFailure() << qPrintable(path) << ": keys differ";
        for (auto it = ma.begin(); it != ma.end(); ++it) {
            if (auto r = sameValue(it.value(), mb.value(it.key()), path + it.key() + u'/'); !r)
                return r;
        }
        return ::testing::AssertionSuccess();
    }
    case QMetaType::QVariantList: {
        const QVariantList la = a.toList(), lb = b.toList();
        if (la.size() != lb.size())
            return ::testing::AssertionFailure() << qPrintable(path) << ": sizes differ";
        for (qsizetype i = 0; i < la.size(); ++i) {
            if (auto r = sameValue(la[i], lb[i], path + QString::number(i) + u'/'); !r)
                return r;
        }
        return ::testing::AssertionSuccess();
    }
    case QMetaType::Double: {
        const double da = a.toDouble(), db = b.toDouble();
        if ((std::isnan(da) && std::isnan(db)) || (da == db && std::signbit(da) == std::signbit(db)))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << qPrintable(path) << ": " << da << " vs " << db;
    }
    case QMetaType::QString:
        if (a.toString() == b.toString() && a.toString().isNull() == b.toString().isNull())
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << qPrintable(path) << ": \"" << qPrintable(a.toString())
                                             << "\" vs \"" << qPrintable(b.toString()) << '"';
    case QMetaType::QDateTime:
        if (a.toDateTime() == b.toDateTime() && a.toDateTime().timeSpec() == b.toDateTime().timeSpec())
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << qPrintable(path) << ": "
                                             << qPrintable(a.toDateTime().toString(Qt::ISODateWithMs))
                                             << " vs " << qPrintable(b.toDateTime().toString(Qt::ISODateWithMs));
    default:
        if (a == b)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << qPrintable(path) << ": values differ ("
                                             << qPrintable(a.toString()) << " vs " << qPrintable(b.toString())
                                             << ')';
    }
}

// Ten levels of entities, each ten of the one below: a gigabyte if expanded.
QByteArray billionLaughs()
{
    QByteArray xml = "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [\n<!ENTITY lol0 \"lol\">\n";
    for (int level = 1; level < 10; ++level) {
        xml += "<!ENTITY lol" + QByteArray::number(level) + " \"";
        for (int i = 0; i < 10; ++i)
            xml += "&lol" + QByteArray::number(level - 1) + ';';
        xml += "\">\n";
    }
    return xml + "]>\n<plist><string>&lol9;</string></plist>\n";
}

} // namespace

// ---------------------------------------------------------------------------
// Reading

TEST(QVPropertyListSerializationTest, ReadsEveryTypeFromFixture)
{
    QVError error;
    const QVariant value = PL::propertyListWithContentsOfFile(QVTest::dataPath(u"plist/all-types.plist"_s), &error);
    ASSERT_TRUE(value.isValid()) << qPrintable(error.localizedDescription());
    EXPECT_TRUE(error.isNull());

    const QVariantMap expected{
        {u"array"_s, QVariantList{qlonglong(1), u"two"_s, QVariantList(), QVariantMap()}},
        {u"data"_s, QByteArray("\x00\x01\x02\xff", 4)},
        {u"date"_s, utc(2026, 11, 14, 15, 55, 40)},
        {u"dict"_s, QVariantMap{{u"nested"_s, true}}},
        {u"emptyString"_s, QString(QLatin1StringView(""))},
        {u"false"_s, false},
        {u"hex"_s, qlonglong(31)},
        {u"integer"_s, qlonglong(-42)},
        {u"large"_s, std::numeric_limits<qulonglong>::max()},
        {u"real"_s, 325.0},
        {u"string"_s, u"Caf\u00e9 & <Bar> \U0001F600 <raw> & done"_s},
        {u"true"_s, true},
        {u"\U0001D11E clef"_s, u"\u03ba\u03cc\u03c3\u03bc\u03b5"_s},
    };
    EXPECT_TRUE(sameValue(value, expected));
}

TEST(QVPropertyListSerializationTest, ReadsRealisticPreferencesFile)
{
    const QVariant value = PL::propertyListWithData(readFixture(u"preferences.plist"_s));
    ASSERT_EQ(value.typeId(), QMetaType::QVariantMap);
    const QVariantMap prefs = value.toMap();
    EXPECT_EQ(prefs.value(u"AppleLanguages"_s).toStringList(), (QStringList{u"de-DE"_s, u"en-US"_s}));
    EXPECT_EQ(prefs.value(u"NSNavLastRootDirectory"_s).toString(), u"~/Documents/Projekte/\u00dcberblick"_s);
    // Trailing space inside a string is content, not layout.
    EXPECT_EQ(prefs.value(u"NSWindow Frame Main"_s).toString(), u"120 80 1024 768 0 0 1920 1080 "_s);
    const QVariantList recent = prefs.value(u"RecentDocuments"_s).toList();
    ASSERT_EQ(recent.size(), 2);
    EXPECT_EQ(recent[0].toMap().value(u"bookmark"_s).toByteArray(),
              QByteArray("bookmark for the first recent document, long enough to wrap over two lines"));
    EXPECT_EQ(recent[1].toMap().value(u"name"_s).toString(), u"Notes & Ideas.md"_s);
    EXPECT_TRUE(sameValue(prefs.value(u"SidebarWidth"_s), 212.5));
    EXPECT_TRUE(sameValue(prefs.value(u"TabWidth"_s), qlonglong(4)));

    // Writing it back and reading again changes nothing.
    EXPECT_TRUE(sameValue(PL::propertyListWithData(PL::dataWithPropertyList(value)), value));
}

TEST(QVPropertyListSerializationTest, ReadsEachValueSpelling)
{
    const double inf = std::numeric_limits<double>::infinity();
    const struct
    {
        const char *name;
        QByteArray xml;
        QVariant expected;
    } rows[] = {
        {"bare value without plist wrapper", "<integer>5</integer>", qlonglong(5)},
        {"no xml declaration", "<plist><true/></plist>", true},
        {"true as open and close tag", wrap("<true></true>"), true},
        {"integer with plus sign and spaces", wrap("<integer>\n +7 </integer>"), qlonglong(7)},
        {"integer hex upper case", wrap("<integer>0X7fffFFFFffffFFFF</integer>"),
         std::numeric_limits<qlonglong>::max()},
        {"integer smallest signed", wrap("<integer>-9223372036854775808</integer>"),
         std::numeric_limits<qlonglong>::min()},
        {"integer just above signed range", wrap("<integer>9223372036854775808</integer>"),
         qulonglong(9223372036854775808ull)},
        {"real with exponent", wrap("<real>-1.5E-3</real>"), -0.0015},
        {"real written as integer", wrap("<real>10</real>"), 10.0},
        {"real with leading dot", wrap("<real>.5</real>"), 0.5},
        {"real negative zero", wrap("<real>-0</real>"), -0.0},
        {"real inf", wrap("<real>inf</real>"), inf},
        {"real minus inf", wrap("<real>-inf</real>"), -inf},
        {"real nan", wrap("<real>nan</real>"), std::numeric_limits<double>::quiet_NaN()},
        {"real smallest subnormal", wrap("<real>4.9406564584124654e-324</real>"),
         std::numeric_limits<double>::denorm_min()},
        {"date", wrap("<date>2000-02-29T23:59:59Z</date>"), utc(2000, 2, 29, 23, 59, 59)},
        {"data across lines with tabs", wrap("<data>\n\tSGVs\n\tbG8=\n</data>"), QByteArray("Hello")},
        {"data empty", wrap("<data></data>"), QByteArray("")},
        {"string with character references beyond the BMP", wrap("<string>&#x1F600;&#128512;</string>"),
         u"\U0001F600\U0001F600"_s},
        {"string keeps carriage return from reference", wrap("<string>a&#13;\nb</string>"), u"a\r\nb"_s},
        {"string split by a comment", wrap("<string>ab<!-- note -->cd</string>"), u"abcd"_s},
        {"string with all predefined entities", wrap("<string>&lt;&gt;&amp;&apos;&quot;</string>"),
         u"<>&'\""_s},
        {"duplicate key keeps the last value",
         wrap("<dict><key>k</key><integer>1</integer><key>k</key><integer>2</integer></dict>"),
         QVariantMap{{u"k"_s, qlonglong(2)}}},
        {"empty key", wrap("<dict><key/><string>v</string></dict>"), QVariantMap{{u""_s, u"v"_s}}},
        {"utf-16 document with byte order mark",
         QByteArray("\xff\xfe") +
             QByteArray(reinterpret_cast<const char *>(u"<string>\u00e9\U0001F600</string>"), 40),
         u"\u00e9\U0001F600"_s},
        {"512 nested containers", nestedArrays(512), nestedLists(512)},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QVError error;
        const QVariant value = PL::propertyListWithData(row.xml, &error);
        EXPECT_TRUE(sameValue(value, row.expected)) << qPrintable(error.localizedDescription());
        EXPECT_TRUE(error.isNull());
    }
}

TEST(QVPropertyListSerializationTest, EmptyValuesAreNotMissingOnes)
{
    const QVariant value = PL::propertyListWithData(
        wrap("<dict><key>s</key><string/><key>s2</key><string></string>"
             "<key>a</key><array/><key>d</key><dict></dict></dict>"));
    const QVariantMap map = value.toMap();
    ASSERT_EQ(map.size(), 4);
    for (const QString &key : {u"s"_s, u"s2"_s}) {
        EXPECT_EQ(map.value(key).typeId(), QMetaType::QString);
        EXPECT_FALSE(map.value(key).toString().isNull()) << qPrintable(key);
        EXPECT_TRUE(map.value(key).toString().isEmpty());
    }
    EXPECT_EQ(map.value(u"a"_s).typeId(), QMetaType::QVariantList);
    EXPECT_EQ(map.value(u"d"_s).typeId(), QMetaType::QVariantMap);
    EXPECT_FALSE(map.contains(u"missing"_s));

    const QByteArray written = PL::dataWithPropertyList(value);
    EXPECT_TRUE(written.contains("<key>s</key>\n\t<string></string>\n"));
    EXPECT_TRUE(written.contains("<key>a</key>\n\t<array/>\n"));
    EXPECT_TRUE(written.contains("<key>d</key>\n\t<dict/>\n"));
    EXPECT_TRUE(sameValue(PL::propertyListWithData(written), value));
}

// ---------------------------------------------------------------------------
// Rejecting bad input

TEST(QVPropertyListSerializationTest, RejectsMalformedInput)
{
    const struct
    {
        const char *name;
        QByteArray xml;
        const char *message; // a fragment of the description
    } rows[] = {
        {"empty input", "", "Property list is empty"},
        {"whitespace only", " \n\t ", "Property list is empty"},
        {"not xml at all", "Hello, world", "start tag expected"},
        {"binary junk", QByteArray("\x9f\xff\x01garbage\x80", 11), "malformed at line 1"},
        {"NUL byte", QByteArray("<plist><string>a\0b</string></plist>", 35), "NUL byte at offset 16"},
        {"NUL byte last", QByteArray("<plist/>\0", 9), "NUL byte at offset 8"},
        {"NUL character in UTF-16",
         QByteArray("\xff\xfe") + QByteArray(reinterpret_cast<const char *>(u"<string>a\0</string>"), 40),
         "NUL byte at offset 20"},
        {"internal entity",
         "<!DOCTYPE plist [<!ENTITY e \"<true/>\">]>\n<plist>&e;</plist>",
         "line 1, column 41: entity declarations are not allowed"},
        {"external entity",
         "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [\n<!ENTITY secret SYSTEM \"file:///etc/passwd\">\n]>\n"
         "<plist><string>&secret;</string></plist>",
         "line 4, column 3: entity declarations are not allowed"},
        {"parameter entity", "<!DOCTYPE plist [<!ENTITY % p \"x\">]><plist><true/></plist>",
         "entity declarations are not allowed"},
        {"billion laughs", billionLaughs(), "entity declarations are not allowed"},
        {"binary property list", "bplist00\xd1\x01\x02", "binary format"},
        {"unexpected end of file", "<plist><dict><key>a</key>", "unexpected end of file"},
        {"unknown element", wrap("<dict><key>c</key><color>red</color></dict>"), "unknown element <color>"},
        {"unknown root element", "<plist><foo/></plist>", "unknown element <foo>"},
        {"key without value at end of dict", wrap("<dict><key>a</key></dict>"), "<key> without a value"},
        {"key followed by key", wrap("<dict><key>a</key><key>b</key><true/></dict>"), "<key> without a value"},
        {"value without key in dict", wrap("<dict><string>v</string></dict>"), "<string> without a <key>"},
        {"key outside dict", wrap("<array><key>a</key></array>"), "<key> outside a <dict>"},
        {"text inside dict", wrap("<dict>stray<key>a</key><true/></dict>"), "text inside <dict>"},
        {"text inside array", wrap("<array><true/>stray</array>"), "text inside <array>"},
        {"two values in plist", wrap("<true/><false/>"), "more than one value inside <plist>"},
        {"two root elements", "<true/><false/>", "extra content at end of document"},
        {"empty plist", wrap(""), "<plist> without a value"},
        {"element inside string", wrap("<string>a<b/>c</string>"), "element <b> inside <string>"},
        {"true with content", wrap("<true>yes</true>"), "<true> is not empty"},
        {"undefined entity",
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"x.dtd\"><string>&nbsp;</string>",
         "undefined entity &nbsp;"},
        {"bad integer", wrap("<integer>12a</integer>"), "<integer> holds \"12a\", not a number"},
        {"integer without digits", wrap("<integer>-</integer>"), "<integer> without a number"},
        {"integer beyond unsigned range", wrap("<integer>18446744073709551616</integer>"),
         "integer out of range"},
        {"integer below signed range", wrap("<integer>-9223372036854775809</integer>"), "integer out of range"},
        {"huge integer", wrap("<integer>" + QByteArray(5000, '9') + "</integer>"), "integer out of range"},
        {"bad real", wrap("<real>1.5.5</real>"), "<real> holds \"1.5.5\""},
        {"hex real", wrap("<real>0x10</real>"), "<real> holds \"0x10\""},
        {"double sign real", wrap("<real>+-1</real>"), "<real> holds \"+-1\""},
        {"empty real", wrap("<real/>"), "<real> without a number"},
        {"real out of range", wrap("<real>1e999</real>"), "real out of range"},
        {"bad date month", wrap("<date>2026-13-01T00:00:00Z</date>"), "<date> holds \"2026-13-01T00:00:00Z\""},
        {"date without zone", wrap("<date>2026-11-14T15:55:40</date>"), "not a date"},
        {"date with space", wrap("<date>2026-11-14 15:55:40Z</date>"), "not a date"},
        {"bad base64 character", wrap("<data>AA!A</data>"), "<data> holds invalid base64"},
        {"base64 with one stray character", wrap("<data>QUJD R</data>"), "<data> holds invalid base64"},
        {"base64 with non-ASCII", wrap("<data>\xc3\xa9</data>"), "not base64"},
        {"mismatched tags", wrap("<array><string>a</array></string>"), "opening and ending tag mismatch"},
        {"513 nested containers", nestedArrays(513), "nested deeper than 512 levels"},
        {"very deep nesting", nestedArrays(100000), "nested deeper than 512 levels"},
        {"truncated fixture", readFixture(u"truncated.plist"_s), "line 5, column 15: unexpected end of file"},
        {"key without value fixture", readFixture(u"key-without-value.plist"_s),
         "line 7, column 8: <key> without a value"},
        {"unknown element fixture", readFixture(u"unknown-element.plist"_s), "line 5, column 9: unknown element"},
        // Found by the fuzzer: the XML reader passes a lone surrogate in UTF-16
        // through, and what cannot be written back must not be read either.
        {"lone surrogate in UTF-16 string", readFixture(u"utf16-lone-surrogate.plist"_s),
         "<string> holds a lone surrogate"},
        {"lone surrogate in UTF-16 key",
         QByteArray("\xff\xfe") + QByteArray(reinterpret_cast<const char *>(u"<dict><key>\xDC00</key><true/></dict>"), 62),
         "<key> holds a lone surrogate"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        QVError error;
        const QVariant value = PL::propertyListWithData(row.xml, &error);
        EXPECT_FALSE(value.isValid());
        EXPECT_EQ(error.domain(), QVCocoaErrorDomain);
        EXPECT_EQ(error.code(), QVPropertyListReadCorruptError);
        EXPECT_TRUE(error.localizedDescription().contains(QString::fromUtf8(row.message)))
            << qPrintable(error.localizedDescription());
    }
}

TEST(QVPropertyListSerializationTest, RejectsEveryTruncation)
{
    for (const QString &name : {u"all-types.plist"_s, u"preferences.plist"_s}) {
        // The trailing newline after </plist> is the only part that may go.
        const QByteArray whole = readFixture(name).trimmed();
        ASSERT_FALSE(whole.isEmpty());
        ASSERT_TRUE(PL::propertyListWithData(whole).isValid());
        for (qsizetype length = 0; length < whole.size(); ++length) {
            QVError error;
            const QVariant value = PL::propertyListWithData(whole.left(length), &error);
            ASSERT_FALSE(value.isValid()) << qPrintable(name) << " accepted at length " << length;
            ASSERT_EQ(error.code(), QVPropertyListReadCorruptError) << qPrintable(name) << " at " << length;
            ASSERT_FALSE(error.localizedDescription().isEmpty());
        }
    }
}

// ---------------------------------------------------------------------------
// Writing

TEST(QVPropertyListSerializationTest, WritesTheStandardLayout)
{
    QVariantHash hash{{u"zeta"_s, false}, {u"alpha"_s, 1}};
    const QVariantMap value{
        {u"b & <c>"_s, QStringList{u"x"_s}},
        {u"a"_s, QVariant::fromValue(hash)},
        {u"date"_s, QDateTime(QDate(2026, 11, 14), QTime(16, 55, 40, 999), QTimeZone(3600))},
        {u"data"_s, QByteArray("Hello")},
        {u"real"_s, 0.1},
        {u"yes"_s, true},
    };
    const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                "<plist version=\"1.0\">\n"
                                "<dict>\n"
                                "\t<key>a</key>\n"
                                "\t<dict>\n"
                                "\t\t<key>alpha</key>\n"
                                "\t\t<integer>1</integer>\n"
                                "\t\t<key>zeta</key>\n"
                                "\t\t<false/>\n"
                                "\t</dict>\n"
                                "\t<key>b &amp; &lt;c&gt;</key>\n"
                                "\t<array>\n"
                                "\t\t<string>x</string>\n"
                                "\t</array>\n"
                                "\t<key>data</key>\n"
                                "\t<data>SGVsbG8=</data>\n"
                                "\t<key>date</key>\n"
                                "\t<date>2026-11-14T15:55:40Z</date>\n"
                                "\t<key>real</key>\n"
                                "\t<real>0.1</real>\n"
                                "\t<key>yes</key>\n"
                                "\t<true/>\n"
                                "</dict>\n"
                                "</plist>\n";
    EXPECT_EQ(PL::dataWithPropertyList(value), expected);
}

TEST(QVPropertyListSerializationTest, RoundTripsEveryType)
{
    const double inf = std::numeric_limits<double>::infinity();
    QByteArray everyByte(256, '\0');
    for (int i = 0; i < 256; ++i)
        everyByte[i] = char(i);
    const struct
    {
        const char *name;
        QVariant written;
        QVariant read; // what comes back, when it differs from what was written
    } rows[] = {
        {"int", 42, qlonglong(42)},
        {"negative qint8", QVariant::fromValue(qint8(-128)), qlonglong(-128)},
        {"quint16", QVariant::fromValue(quint16(65535)), qlonglong(65535)},
        {"uint", 4000000000u, qlonglong(4000000000)},
        {"long", QVariant::fromValue(-7L), qlonglong(-7)},
        {"qlonglong min", std::numeric_limits<qlonglong>::min(), {}},
        {"qulonglong max", std::numeric_limits<qulonglong>::max(), {}},
        {"small qulonglong", qulonglong(3), qlonglong(3)},
        {"bool", false, {}},
        {"real needing 17 digits", 0.1 + 0.2, {}},
        {"real large", 1.7976931348623157e308, {}},
        {"real subnormal", std::numeric_limits<double>::denorm_min(), {}},
        {"real negative zero", -0.0, {}},
        {"real inf", inf, {}},
        {"real minus inf", -inf, {}},
        {"real nan", std::numeric_limits<double>::quiet_NaN(), {}},
        {"float", 0.1f, double(0.1f)},
        {"string beyond the BMP", u"\U0001F600 \U0001D11E \u4e2d\u6587"_s, {}},
        {"string with markup", u"<a href=\"x\">&amp;</a> ]]> '"_s, {}},
        {"string with layout", u"  two\r\nlines\tand\rspaces  "_s, {}},
        {"empty string", QString(QLatin1StringView("")), {}},
        {"date drops milliseconds",
         QDateTime(QDate(1969, 7, 20), QTime(20, 17, 40, 500), Qt::UTC), utc(1969, 7, 20, 20, 17, 40)},
        {"date in another zone", QDateTime(QDate(2026, 1, 1), QTime(0, 30), QTimeZone(-5 * 3600)),
         utc(2026, 1, 1, 5, 30, 0)},
        {"data every byte", everyByte, {}},
        {"data long", QByteArray(1000, '\x5a'), {}},
        {"string list", QStringList{u"a"_s, u""_s}, QVariantList{u"a"_s, u""_s}},
        {"hash", QVariantHash{{u"k"_s, u"v"_s}}, QVariantMap{{u"k"_s, u"v"_s}}},
        {"nested", QVariantMap{{u"list"_s, QVariantList{QVariantMap{{u"\u00e9"_s, QVariantList()}}}}}, {}},
        {"512 nested containers", nestedLists(512), {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const QVariant expected = row.read.isValid() ? row.read : row.written;
        EXPECT_TRUE(PL::propertyListIsValid(row.written));

        QVError error;
        const QByteArray data = PL::dataWithPropertyList(row.written, &error);
        ASSERT_FALSE(data.isNull()) << qPrintable(error.localizedDescription());
        EXPECT_TRUE(sameValue(PL::propertyListWithData(data, &error), expected))
            << qPrintable(error.localizedDescription()) << "\n" << data.constData();

        // A device is written and read the same way.
        QBuffer buffer;
        buffer.open(QIODevice::ReadWrite);
        ASSERT_TRUE(PL::writePropertyList(row.written, &buffer));
        buffer.seek(0);
        EXPECT_TRUE(sameValue(PL::propertyListWithDevice(&buffer), expected));
    }
}

TEST(QVPropertyListSerializationTest, RefusesToWriteWhatIsNotAPropertyList)
{
    QObject object;
    const struct
    {
        const char *name;
        QVariant value;
        const char *message;
    } rows[] = {
        {"invalid QVariant", QVariant(), "an invalid QVariant is not a property list value at the top level"},
        {"null marker", QVariant::fromValue(nullptr), "type std::nullptr_t is not a property list value"},
        {"invalid QVariant nested in a list", QVariantList{1, QVariant()}, "invalid QVariant"},
        {"URL in a dict", QVariantMap{{u"a"_s, QVariantMap{{u"link"_s, QUrl(u"https://x.org"_s)}}}},
         "type QUrl is not a property list value at \"a.link\""},
        {"object pointer", QVariantList{QVariantList{QVariant::fromValue(&object)}},
         "type QObject* is not a property list value at \"[0][0]\""},
        {"plain date", QDate(2026, 1, 1), "type QDate"},
        {"custom type", QVariantMap{{u"e"_s, QVariant::fromValue(QVError(u"D"_s, 1))}}, "type QVError"},
        {"invalid date time", QVariantMap{{u"when"_s, QDateTime()}}, "the date is invalid at \"when\""},
        {"date beyond year 9999", QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::UTC), "year 10000"},
        {"control character", u"bell\u0007"_s, "control character U+0007"},
        {"nul character in a key", QVariantMap{{u"a\u0000b"_s, 1}}, "control character U+0000"},
        {"non-character", u"\uFFFE"_s, "non-character U+FFFE"},
        {"lone high surrogate", QVariantList{QString(QChar(0xD83D))}, "a lone surrogate, which XML cannot carry at \"[0]\""},
        {"lone low surrogate", QString(QChar(0xDE00)) + u"x"_s, "lone surrogate"},
        {"513 nested containers", nestedLists(513), "nested deeper than 512 levels"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(PL::propertyListIsValid(row.value));

        QVError error;
        EXPECT_TRUE(PL::dataWithPropertyList(row.value, &error).isNull());
        EXPECT_EQ(error.domain(), QVCocoaErrorDomain);
        EXPECT_EQ(error.code(), QVPropertyListWriteInvalidError);
        EXPECT_TRUE(error.localizedDescription().contains(QString::fromUtf8(row.message)))
            << qPrintable(error.localizedDescription());

        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        EXPECT_FALSE(PL::writePropertyList(row.value, &buffer));
        EXPECT_TRUE(buffer.data().isEmpty());
    }
}

// ---------------------------------------------------------------------------
// Files and devices

TEST(QVPropertyListSerializationTest, ReportsFileAndDeviceFailures)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());

    QVError error;
    const QString missing = dir.filePath(u"missing.plist"_s);
    EXPECT_FALSE(PL::propertyListWithContentsOfFile(missing, &error).isValid());
    EXPECT_EQ(error.domain(), QVCocoaErrorDomain);
    EXPECT_EQ(error.code(), QVFileReadNoSuchFileError);
    EXPECT_EQ(error.userInfoValue(QVFilePathErrorKey).toString(), missing);
    EXPECT_TRUE(error.localizedDescription().contains(u"missing.plist"_s));

    error = QVError();
    EXPECT_FALSE(PL::propertyListWithContentsOfFile(dir.path(), &error).isValid());
    EXPECT_EQ(error.code(), QVFileReadUnknownError);
    EXPECT_EQ(error.userInfoValue(QVFilePathErrorKey).toString(), dir.path());

    // A file that is there but malformed says so, and where the file is.
    error = QVError();
    const QString truncated = QVTest::dataPath(u"plist/truncated.plist"_s);
    EXPECT_FALSE(PL::propertyListWithContentsOfFile(truncated, &error).isValid());
    EXPECT_EQ(error.code(), QVPropertyListReadCorruptError);
    EXPECT_EQ(error.userInfoValue(QVFilePathErrorKey).toString(), truncated);

    error = QVError();
    QBuffer closed;
    EXPECT_FALSE(PL::propertyListWithDevice(&closed, &error).isValid());
    EXPECT_EQ(error.code(), QVFileReadUnknownError);
    error = QVError();
    EXPECT_FALSE(PL::writePropertyList(true, &closed, &error));
    EXPECT_EQ(error.code(), QVFileWriteUnknownError);
}

TEST(QVPropertyListSerializationTest, WritesFilesAtomically)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(u"settings.plist"_s);
    {
        QFile old(path);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old content that is longer than what replaces it, so leftovers would show\n"
                  "old content that is longer than what replaces it, so leftovers would show\n"
                  "old content that is longer than what replaces it, so leftovers would show\n"
                  "old content that is longer than what replaces it, so leftovers would show\n");
    }

    const QVariantMap value{{u"name"_s, u"\u00c9tude \U0001F3B9"_s}, {u"volume"_s, 0.75}};
    QVError error;
    ASSERT_TRUE(PL::writePropertyListToFile(value, path, &error)) << qPrintable(error.localizedDescription());
    EXPECT_TRUE(sameValue(PL::propertyListWithContentsOfFile(path), value));

    QFile written(path);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray before = written.readAll();
    written.close();
    EXPECT_TRUE(before.endsWith("</plist>\n"));

    // A value that cannot be written leaves the file as it was, and no temporary files behind.
    EXPECT_FALSE(PL::writePropertyListToFile(QVariantMap{{u"bad"_s, QVariant()}}, path, &error));
    EXPECT_EQ(error.code(), QVPropertyListWriteInvalidError);
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), before);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"settings.plist"_s});

    // A folder that does not exist is reported with the path.
    error = QVError();
    const QString nowhere = dir.filePath(u"no/such/folder/settings.plist"_s);
    EXPECT_FALSE(PL::writePropertyListToFile(value, nowhere, &error));
    EXPECT_EQ(error.code(), QVFileWriteUnknownError);
    EXPECT_EQ(error.userInfoValue(QVFilePathErrorKey).toString(), nowhere);
}
