#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVNotificationCenter.h>
#include <QVKit/Platform/QVPropertyListSerialization.h>
#include <QVKit/Platform/QVUserDefaults.h>

#include "support/QVTestSupport.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QLockFile>
#include <QtCore/QPoint>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

struct HelperRun
{
    int exitCode = -1;
    QString output;
};

HelperRun runHelper(const QStringList &arguments,
                    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QVTest::helperPath(u"QVUserDefaultsHelper"_s), arguments);
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput())};
}

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(contents), contents.size());
}

QVariantMap fileDictionary(const QString &path)
{
    return QVPropertyListSerialization::propertyListWithContentsOfFile(path).toMap();
}

// Each test owns its folder and its store file.
class QVUserDefaultsTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(folder.isValid()); }
    QString path(const QString &name = u"defaults.plist"_s) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

} // namespace

TEST_F(QVUserDefaultsTest, RegisteredValuesAnswerUntilSetAndAfterRemoval)
{
    QVUserDefaults defaults(path());
    defaults.registerDefaults({{u"volume"_s, 7}, {u"name"_s, u"anonymous"_s}});
    defaults.registerDefaults({{u"volume"_s, 9}});

    EXPECT_EQ(defaults.integerForKey(u"volume"_s), 9) << "a later registration replaces an earlier one";
    EXPECT_EQ(defaults.stringForKey(u"name"_s), u"anonymous"_s);
    EXPECT_FALSE(defaults.objectForKey(u"missing"_s).isValid());

    defaults.setInteger(3, u"volume"_s);
    EXPECT_EQ(defaults.integerForKey(u"volume"_s), 3);
    EXPECT_EQ(defaults.registeredDefaults().value(u"volume"_s).toInt(), 9) << "setting leaves the fallback alone";

    defaults.removeObjectForKey(u"volume"_s);
    EXPECT_EQ(defaults.integerForKey(u"volume"_s), 9);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(fileDictionary(path()).contains(u"volume"_s)) << "fallbacks never reach the file";

    // An invalid value removes too, and removing a set of keys removes each.
    defaults.setObject(u"x"_s, u"a"_s);
    defaults.setObject(u"y"_s, u"b"_s);
    defaults.setObject(QVariant(), u"a"_s);
    EXPECT_FALSE(defaults.objectForKey(u"a"_s).isValid());
    defaults.setObject(u"x"_s, u"a"_s);
    defaults.removeObjectsForKeys({u"a"_s, u"b"_s, u"never-set"_s});
    EXPECT_TRUE(defaults.persistentDictionary().isEmpty());
}

TEST_F(QVUserDefaultsTest, DictionaryRepresentationOverlaysSetValuesOnRegisteredOnes)
{
    QVUserDefaults defaults(path());
    defaults.registerDefaults({{u"shared"_s, u"registered"_s}, {u"onlyRegistered"_s, true}});
    defaults.setObject(u"set"_s, u"shared"_s);
    defaults.setObject(42, u"onlySet"_s);

    const QVariantMap all = defaults.dictionaryRepresentation();
    EXPECT_EQ(all.size(), 3);
    EXPECT_EQ(all.value(u"shared"_s).toString(), u"set"_s);
    EXPECT_EQ(all.value(u"onlyRegistered"_s).toBool(), true);
    EXPECT_EQ(all.value(u"onlySet"_s).toLongLong(), 42);

    const QVariantMap persistent = defaults.persistentDictionary();
    EXPECT_EQ(persistent.keys(), (QStringList{u"onlySet"_s, u"shared"_s}));
    EXPECT_EQ(persistent.value(u"shared"_s).toString(), u"set"_s);
}

TEST_F(QVUserDefaultsTest, EveryValueTypeRoundTripsThroughTheFile)
{
    const QDateTime date(QDate(2024, 2, 29), QTime(23, 59, 58), Qt::UTC);
    QByteArray allBytes;
    for (int byte = 0; byte < 256; ++byte)
        allBytes.append(char(byte));
    const QVariantMap nested{
        {u"list"_s, QVariantList{1, u"two"_s, 3.5, false, QVariantList{}, QVariantMap{}}},
        {u"map"_s, QVariantMap{{u"deeper"_s, QVariantMap{{u"data"_s, QByteArray("\x01\x02")}}}}},
    };
    const struct Row
    {
        const char *name;
        QVariant value;
    } rows[] = {
        {"string beyond the BMP", u"Grüße 😀 𝄞 中文"_s},
        {"empty string", QString(u""_s)},
        {"int64 max", QVariant(std::numeric_limits<qlonglong>::max())},
        {"int64 min", QVariant(std::numeric_limits<qlonglong>::min())},
        {"zero", QVariant(qlonglong(0))},
        {"real", QVariant(0.1)},
        {"negative real", QVariant(-1.5e300)},
        {"true", QVariant(true)},
        {"false", QVariant(false)},
        {"date", QVariant(date)},
        {"data", QVariant(allBytes)},
        {"empty data", QVariant(QByteArray(""))},
        {"nested", QVariant(nested)},
        {"empty array", QVariant(QVariantList{})},
    };

    QVUserDefaults defaults(path());
    for (const Row &row : rows)
        defaults.setObject(row.value, QString::fromUtf8(row.name));
    ASSERT_TRUE(defaults.synchronize());

    const QVariantMap file = fileDictionary(path());
    ASSERT_EQ(file.size(), qsizetype(std::size(rows)));
    for (const Row &row : rows) {
        const QString key = QString::fromUtf8(row.name);
        SCOPED_TRACE(row.name);
        EXPECT_EQ(file.value(key).typeId(), defaults.objectForKey(key).typeId());
        EXPECT_EQ(file.value(key), row.value);
        EXPECT_EQ(defaults.objectForKey(key), row.value) << "this process reads what the file holds";
    }

    // Empty is a value; absent is not.
    EXPECT_FALSE(defaults.stringForKey(u"empty string"_s).isNull());
    EXPECT_TRUE(defaults.stringForKey(u"empty string"_s).isEmpty());
    EXPECT_TRUE(defaults.stringForKey(u"absent"_s).isNull());
    EXPECT_FALSE(defaults.dataForKey(u"empty data"_s).isNull());
    EXPECT_TRUE(defaults.dataForKey(u"absent"_s).isNull());
    EXPECT_EQ(runHelper({u"get"_s, path(), u"empty string"_s}).exitCode, 0);
    EXPECT_EQ(runHelper({u"get"_s, path(), u"absent"_s}).exitCode, 1);

    EXPECT_EQ(defaults.integerForKey(u"int64 max"_s), std::numeric_limits<qint64>::max());
    EXPECT_EQ(defaults.integerForKey(u"int64 min"_s), std::numeric_limits<qint64>::min());
    EXPECT_EQ(defaults.stringForKey(u"int64 min"_s), u"-9223372036854775808"_s);
    EXPECT_EQ(defaults.dataForKey(u"data"_s), allBytes);
    EXPECT_EQ(defaults.dictionaryForKey(u"nested"_s), nested);
}

TEST_F(QVUserDefaultsTest, ValuesAreStoredAsTheFileGivesThemBack)
{
    // Qt-specific shapes become plain property-list values at once, so a
    // second process never reads something different from this one.
    QVUserDefaults defaults(path());
    defaults.setObject(QStringList{u"a"_s, u"b"_s}, u"list"_s);
    defaults.setObject(QVariantHash{{u"k"_s, 1}}, u"hash"_s);
    defaults.setObject(int(5), u"int"_s);
    defaults.setObject(QDateTime(QDate(2020, 1, 1), QTime(12, 0, 0, 750), Qt::UTC), u"date"_s);
    ASSERT_TRUE(defaults.synchronize());

    const QVariantMap file = fileDictionary(path());
    for (const QString &key : {u"list"_s, u"hash"_s, u"int"_s, u"date"_s}) {
        SCOPED_TRACE(key.toStdString());
        EXPECT_EQ(defaults.objectForKey(key).typeId(), file.value(key).typeId());
        EXPECT_EQ(defaults.objectForKey(key), file.value(key));
    }
    EXPECT_EQ(defaults.stringArrayForKey(u"list"_s), (QStringList{u"a"_s, u"b"_s}));
}

TEST_F(QVUserDefaultsTest, TypedGettersConvertWhatTheyMayAndGiveNeutralValuesOtherwise)
{
    QVUserDefaults defaults(path());
    const struct Row
    {
        const char *name;
        QVariant value;
        bool boolean;
        qint64 integer;
        double real;
        QString string; // null: not a string
    } rows[] = {
        {"YES", u"YES"_s, true, 0, 0.0, u"YES"_s},
        {"yes lower case", u"yes"_s, true, 0, 0.0, u"yes"_s},
        {"true string", u"True"_s, true, 0, 0.0, u"True"_s},
        {"one string", u"1"_s, true, 1, 1.0, u"1"_s},
        {"two string", u"2"_s, false, 2, 2.0, u"2"_s},
        {"NO", u"NO"_s, false, 0, 0.0, u"NO"_s},
        {"numeric string", u" -42 "_s, false, -42, -42.0, u" -42 "_s},
        {"real string", u"4.75"_s, false, 4, 4.75, u"4.75"_s},
        {"trailing garbage", u"12abc"_s, false, 0, 0.0, u"12abc"_s},
        {"integer", QVariant(qlonglong(-7)), true, -7, -7.0, u"-7"_s},
        {"zero", QVariant(qlonglong(0)), false, 0, 0.0, u"0"_s},
        {"real", QVariant(2.5), true, 2, 2.5, u"2.5"_s},
        {"huge real", QVariant(1e300), true, std::numeric_limits<qint64>::max(), 1e300, u"1e+300"_s},
        {"huge negative real", QVariant(-1e300), true, std::numeric_limits<qint64>::min(), -1e300, u"-1e+300"_s},
        {"bool", QVariant(true), true, 1, 1.0, QString()},
        {"data", QVariant(QByteArray("1")), false, 0, 0.0, QString()},
        {"date", QVariant(QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC)), false, 0, 0.0, QString()},
        {"array", QVariant(QVariantList{u"1"_s}), false, 0, 0.0, QString()},
        {"dictionary", QVariant(QVariantMap{{u"1"_s, 1}}), false, 0, 0.0, QString()},
        {"absent", QVariant(), false, 0, 0.0, QString()},
    };
    for (const Row &row : rows)
        defaults.setObject(row.value, QString::fromUtf8(row.name));

    for (const Row &row : rows) {
        const QString key = QString::fromUtf8(row.name);
        SCOPED_TRACE(row.name);
        EXPECT_EQ(defaults.boolForKey(key), row.boolean);
        EXPECT_EQ(defaults.integerForKey(key), row.integer);
        EXPECT_EQ(defaults.doubleForKey(key), row.real);
        EXPECT_EQ(defaults.stringForKey(key), row.string);
        EXPECT_EQ(defaults.stringForKey(key).isNull(), row.string.isNull());
        if (row.value.typeId() != QMetaType::QVariantList) {
            EXPECT_TRUE(defaults.arrayForKey(key).isEmpty());
        }
        if (row.value.typeId() != QMetaType::QVariantMap) {
            EXPECT_TRUE(defaults.dictionaryForKey(key).isEmpty());
        }
        if (row.value.typeId() != QMetaType::QByteArray) {
            EXPECT_TRUE(defaults.dataForKey(key).isNull());
        }
    }
    EXPECT_EQ(defaults.arrayForKey(u"array"_s), (QVariantList{u"1"_s}));
    EXPECT_EQ(defaults.dictionaryForKey(u"dictionary"_s).value(u"1"_s).toLongLong(), 1);

    // A string array must hold strings only.
    defaults.setObject(QVariantList{u"a"_s, 1}, u"mixed"_s);
    EXPECT_TRUE(defaults.stringArrayForKey(u"mixed"_s).isEmpty());
    EXPECT_EQ(defaults.arrayForKey(u"mixed"_s).size(), 2);
    EXPECT_EQ(defaults.stringArrayForKey(u"array"_s), QStringList{u"1"_s});

    // URLs: as text or data, paths as file URLs, nothing for text without a scheme.
    defaults.setUrl(QUrl(u"https://example.com/a%20b?q=ü"_s), u"web"_s);
    EXPECT_EQ(defaults.urlForKey(u"web"_s), QUrl(u"https://example.com/a%20b?q=ü"_s));
    defaults.setUrl(QUrl::fromLocalFile(u"/tmp/Ünïcode folder/file.txt"_s), u"file"_s);
    EXPECT_EQ(defaults.urlForKey(u"file"_s), QUrl::fromLocalFile(u"/tmp/Ünïcode folder/file.txt"_s));
    defaults.setObject(u"/etc/hosts"_s, u"path"_s);
    EXPECT_EQ(defaults.urlForKey(u"path"_s), QUrl::fromLocalFile(u"/etc/hosts"_s));
    defaults.setObject(u"~/notes.txt"_s, u"tilde"_s);
    EXPECT_EQ(defaults.urlForKey(u"tilde"_s), QUrl::fromLocalFile(QDir::homePath() + u"/notes.txt"_s));
    defaults.setObject(QByteArray("ftp://host/file"), u"urlData"_s);
    EXPECT_EQ(defaults.urlForKey(u"urlData"_s), QUrl(u"ftp://host/file"_s));
    EXPECT_TRUE(defaults.urlForKey(u"YES"_s).isEmpty());
    EXPECT_TRUE(defaults.urlForKey(u"integer"_s).isEmpty());
    defaults.setUrl(QUrl(), u"web"_s);
    EXPECT_FALSE(defaults.objectForKey(u"web"_s).isValid()) << "an empty URL removes";
}

TEST_F(QVUserDefaultsTest, RefusedValuesLogOneLineAndChangeNothing)
{
    QVUserDefaults defaults(path());
    defaults.setObject(u"kept"_s, u"key"_s);
    ASSERT_TRUE(defaults.synchronize());
    const QByteArray before = fileContents(path());
    QSignalSpy spy(&defaults, &QVUserDefaults::didChange);

    const struct Row
    {
        const char *name;
        QVariant value;
        QString line;
    } rows[] = {
        {"point", QVariant(QPoint(1, 2)),
         u"QVUserDefaults::setObject: refusing to store a value of type QPoint under key \"key\". Fix this."_s},
        {"nested point", QVariant(QVariantList{1, QPoint(1, 2)}),
         u"QVUserDefaults::setObject: refusing to store a value of type QVariantList under key \"key\". Fix this."_s},
        {"null marker", QVariant::fromValue(nullptr),
         u"QVUserDefaults::setObject: refusing to store a value of type std::nullptr_t under key \"key\". Fix this."_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLogCapture capture;
        defaults.setObject(row.value, u"key"_s);
        EXPECT_EQ(capture.lines(), QStringList{row.line});
        EXPECT_EQ(defaults.stringForKey(u"key"_s), u"kept"_s);
    }
    {
        QVLogCapture capture;
        defaults.setObject(u"value"_s, QString());
        EXPECT_EQ(capture.lines(),
                  QStringList{u"QVUserDefaults::setObject: refusing to store a value under an empty key. Fix this."_s});
    }
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(spy.count(), 0);
    EXPECT_EQ(fileContents(path()), before);
    EXPECT_EQ(defaults.persistentDictionary().keys(), QStringList{u"key"_s});
}

TEST_F(QVUserDefaultsTest, DidChangeFiresOnRealChangesOnly)
{
    QVUserDefaults defaults(path());
    QSignalSpy spy(&defaults, &QVUserDefaults::didChange);
    int notifications = 0;
    QObject context;
    QVNotificationCenter::defaultCenter()->addObserver(
        QVUserDefaultsDidChangeNotification, &defaults, &context,
        [&](const QVNotification &) { ++notifications; });

    const struct Step
    {
        const char *name;
        std::function<void()> action;
        int expectedCount;
    } steps[] = {
        {"set", [&] { defaults.setObject(u"one"_s, u"k"_s); }, 1},
        {"same again", [&] { defaults.setObject(u"one"_s, u"k"_s); }, 1},
        {"new value", [&] { defaults.setObject(u"two"_s, u"k"_s); }, 2},
        {"same text as a number is a change", [&] { defaults.setObject(u"2"_s, u"n"_s); }, 3},
        {"number 2 after string 2", [&] { defaults.setInteger(2, u"n"_s); }, 4},
        {"int then qlonglong of same value", [&] { defaults.setObject(int(2), u"n"_s); }, 4},
        {"bool after a number", [&] { defaults.setBool(true, u"n"_s); }, 5},
        {"remove", [&] { defaults.removeObjectForKey(u"k"_s); }, 6},
        {"remove again", [&] { defaults.removeObjectForKey(u"k"_s); }, 6},
        {"remove nothing", [&] { defaults.removeObjectsForKeys({u"x"_s, u"y"_s}); }, 6},
        {"register", [&] { defaults.registerDefaults({{u"r"_s, 5}}); }, 7},
        {"register nothing", [&] { defaults.registerDefaults({}); }, 7},
        {"set the registered value", [&] { defaults.setInteger(5, u"r"_s); }, 7},
        {"remove it: the fallback answers the same", [&] { defaults.removeObjectForKey(u"r"_s); }, 7},
        {"same nested value", [&] { defaults.setObject(QVariantMap{{u"a"_s, QVariantList{1}}}, u"m"_s);
                                    defaults.setObject(QVariantMap{{u"a"_s, QVariantList{1}}}, u"m"_s); }, 8},
        {"synchronize with no news", [&] { ASSERT_TRUE(defaults.synchronize()); }, 8},
    };
    for (const Step &step : steps) {
        step.action();
        EXPECT_EQ(spy.count(), step.expectedCount) << step.name;
    }
    EXPECT_EQ(notifications, spy.count()) << "every change is also posted";

    // The scheduled write runs on the event loop and must not count as news.
    ASSERT_TRUE(QVTest::waitUntil([&] { return fileDictionary(path()).contains(u"m"_s); }));
    EXPECT_EQ(spy.count(), 8);
}

TEST_F(QVUserDefaultsTest, ChangesReachTheFileWithoutSynchronizeAndMissingFoldersAreMade)
{
    const QString nested = folder.filePath(u"not/yet/there/defaults.plist"_s);
    {
        QVUserDefaults defaults(nested);
        defaults.setObject(u"value"_s, u"key"_s);
        EXPECT_TRUE(QVTest::waitUntil([&] { return QFile::exists(nested); }));
    }
    EXPECT_EQ(fileDictionary(nested).value(u"key"_s).toString(), u"value"_s);
    EXPECT_EQ(runHelper({u"get"_s, nested, u"key"_s}).output, u"value"_s);
}

TEST_F(QVUserDefaultsTest, StandardStoreNeverPointsAtTheUsersRealConfiguration)
{
    // The variable is a user's deliberate override; tests run without it.
    qunsetenv("QVKIT_USER_DEFAULTS_PATH");
    const QString home = QDir(QVTest::temporaryHome()).canonicalPath();
    ASSERT_FALSE(home.isEmpty());
    const QString standard = QVUserDefaults::standardUserDefaults()->filePath();
    EXPECT_TRUE(QFileInfo(standard).absoluteFilePath().startsWith(home + u'/')
                || standard.startsWith(QVTest::temporaryHome() + u'/'))
        << standard.toStdString() << " is outside " << home.toStdString();
    EXPECT_EQ(QVUserDefaults::defaultFilePath(),
              QVTest::temporaryHome() + u"/.config/com.quovera.QVKitTests.plist"_s);
}

TEST_F(QVUserDefaultsTest, StandardStoreFileComesFromTheSetterThenTheEnvironmentThenTheDefault)
{
    // Each helper process makes its own standard store, so the choice at
    // creation is visible from outside.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"QVKIT_USER_DEFAULTS_PATH"_s);
    EXPECT_EQ(runHelper({u"path"_s}, environment).output,
              QVTest::temporaryHome() + u"/.config/QVUserDefaultsHelper.plist"_s);
    environment.insert(u"QVKIT_USER_DEFAULTS_PATH"_s, path(u"from-environment.plist"_s));
    EXPECT_EQ(runHelper({u"path"_s}, environment).output, path(u"from-environment.plist"_s));
}

TEST_F(QVUserDefaultsTest, RepointingTheStandardStoreWritesTheOldFileAndKeepsRegisteredValues)
{
    // Inside the temporary home, so the standard store never leaves it.
    QTemporaryDir local(QVTest::temporaryHome() + u"/repoint-XXXXXX"_s);
    ASSERT_TRUE(local.isValid());
    const QString first = local.filePath(u"first.plist"_s);
    const QString second = local.filePath(u"second.plist"_s);

    QVUserDefaults::setStandardUserDefaultsFilePath(first);
    QVUserDefaults *defaults = QVUserDefaults::standardUserDefaults();
    EXPECT_EQ(defaults->filePath(), first);
    defaults->registerDefaults({{u"fallback"_s, u"registered"_s}});
    defaults->setObject(u"in first"_s, u"key"_s);

    QSignalSpy spy(defaults, &QVUserDefaults::didChange);
    QVUserDefaults::setStandardUserDefaultsFilePath(second);
    EXPECT_EQ(QVUserDefaults::standardUserDefaults(), defaults);
    EXPECT_EQ(defaults->filePath(), second);
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(fileDictionary(first).value(u"key"_s).toString(), u"in first"_s);
    EXPECT_FALSE(defaults->objectForKey(u"key"_s).isValid());
    EXPECT_EQ(defaults->stringForKey(u"fallback"_s), u"registered"_s);

    defaults->setObject(u"in second"_s, u"key"_s);
    ASSERT_TRUE(defaults->synchronize());
    EXPECT_EQ(fileDictionary(second).value(u"key"_s).toString(), u"in second"_s);
    EXPECT_EQ(fileDictionary(first).value(u"key"_s).toString(), u"in first"_s);

    QVUserDefaults::setStandardUserDefaultsFilePath(QVUserDefaults::defaultFilePath());
}

TEST_F(QVUserDefaultsTest, ValuesCrossBetweenProcesses)
{
    QVUserDefaults defaults(path());
    const QString greeting = u"héllo 😀 wörld"_s;
    defaults.setObject(greeting, u"greeting"_s);
    defaults.setObject(u"stays"_s, u"untouched"_s);
    ASSERT_TRUE(defaults.synchronize());

    HelperRun run = runHelper({u"get"_s, path(), u"greeting"_s});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, greeting);

    QSignalSpy spy(&defaults, &QVUserDefaults::didChange);
    ASSERT_EQ(runHelper({u"set"_s, path(), u"fromHelper"_s, u"𝄞 written elsewhere"_s}).exitCode, 0);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(defaults.stringForKey(u"fromHelper"_s), u"𝄞 written elsewhere"_s);
    EXPECT_EQ(spy.count(), 1);

    ASSERT_EQ(runHelper({u"remove"_s, path(), u"greeting"_s}).exitCode, 0);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_FALSE(defaults.objectForKey(u"greeting"_s).isValid());
    EXPECT_EQ(spy.count(), 2);

    // A change here and one there merge instead of one erasing the other.
    defaults.setObject(u"mine"_s, u"local"_s);
    ASSERT_EQ(runHelper({u"set"_s, path(), u"remote"_s, u"theirs"_s}).exitCode, 0);
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileDictionary(path()),
              (QVariantMap{{u"fromHelper"_s, u"𝄞 written elsewhere"_s}, {u"local"_s, u"mine"_s},
                           {u"remote"_s, u"theirs"_s}, {u"untouched"_s, u"stays"_s}}));

    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(spy.count(), 4) << "nothing new: no signal";
}

TEST_F(QVUserDefaultsTest, DamagedFileReadsAsAnErrorAndIsMovedAsideByTheNextWrite)
{
    const struct Row
    {
        const char *name;
        QByteArray contents;
        const char *problem;
    } rows[] = {
        {"not XML", "this is the user's file, not a property list\n", "Property list is malformed at line 1"},
        {"truncated", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n<key>a</key>\n",
         "Property list is malformed at line 5"},
        {"array at the top", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
                             "<array><string>x</string></array>\n</plist>\n",
         "not a property-list dictionary"},
        {"NUL byte", QByteArray("<plist>\0</plist>", 16), "Property list is malformed: NUL byte at offset 7"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QString file = path(QString::fromUtf8(row.name) + u".plist"_s);
        writeFile(file, row.contents);

        QVUserDefaults defaults(file);
        EXPECT_EQ(defaults.status(), QVUserDefaults::Status::FormatError);
        EXPECT_TRUE(defaults.errorString().startsWith(file + u": "_s + QString::fromUtf8(row.problem)))
            << defaults.errorString().toStdString();
        EXPECT_TRUE(defaults.persistentDictionary().isEmpty());
        EXPECT_EQ(fileContents(file), row.contents) << "reading changes nothing";

        defaults.setObject(u"new"_s, u"key"_s);
        ASSERT_TRUE(defaults.synchronize()) << defaults.errorString().toStdString();
        EXPECT_EQ(defaults.status(), QVUserDefaults::Status::NoError);
        const QString aside = defaults.recoveredFilePath();
        EXPECT_TRUE(aside.startsWith(file + u".corrupt-"_s)) << aside.toStdString();
        EXPECT_EQ(fileContents(aside), row.contents) << "the damaged bytes are kept as they were";
        EXPECT_EQ(fileDictionary(file), (QVariantMap{{u"key"_s, u"new"_s}}));

        defaults.setObject(u"newer"_s, u"key"_s);
        ASSERT_TRUE(defaults.synchronize());
        EXPECT_TRUE(defaults.recoveredFilePath().isEmpty()) << "a healthy file is not moved";
    }

    // Two damaged files in the same second keep both copies.
    const QString file = path(u"twice.plist"_s);
    QStringList asides;
    for (const QByteArray &contents : {QByteArray("first"), QByteArray("second")}) {
        writeFile(file, contents);
        QVUserDefaults defaults(file);
        defaults.setObject(1, u"k"_s);
        ASSERT_TRUE(defaults.synchronize());
        asides.append(defaults.recoveredFilePath());
        EXPECT_EQ(fileContents(asides.last()), contents);
    }
    EXPECT_NE(asides.first(), asides.last());
}

TEST_F(QVUserDefaultsTest, FileThatCannotBeReadRefusesWritesAndKeepsTheChanges)
{
    // A folder where the file should be cannot be read, even by root.
    const QString file = path(u"folder.plist"_s);
    ASSERT_TRUE(QDir().mkpath(file));
    QVUserDefaults defaults(file);
    EXPECT_EQ(defaults.status(), QVUserDefaults::Status::AccessError);
    EXPECT_TRUE(defaults.errorString().startsWith(file + u": cannot read"_s)) << defaults.errorString().toStdString();

    defaults.setObject(u"kept"_s, u"pending"_s);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.status(), QVUserDefaults::Status::AccessError);
    EXPECT_EQ(defaults.stringForKey(u"pending"_s), u"kept"_s) << "the change stays in memory";
    EXPECT_TRUE(QFileInfo(file).isDir()) << "nothing was moved or replaced";
    EXPECT_EQ(runHelper({u"set"_s, file, u"key"_s, u"other"_s}).exitCode, 2) << "nor from another process";

    // Once the path holds a readable store, the change kept in memory is merged into it.
    ASSERT_TRUE(QDir(file).removeRecursively());
    ASSERT_TRUE(QVPropertyListSerialization::writePropertyListToFile(QVariantMap{{u"repaired"_s, true}}, file));
    QSignalSpy spy(&defaults, &QVUserDefaults::didChange);
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(spy.count(), 1);
    EXPECT_EQ(fileDictionary(file), (QVariantMap{{u"pending"_s, u"kept"_s}, {u"repaired"_s, true}}));
}

TEST_F(QVUserDefaultsTest, HeldLockFailsTheWriteAfterTheTimeoutAndKeepsTheChange)
{
    QLockFile held(path() + u".lock"_s);
    ASSERT_TRUE(held.lock());
    QVUserDefaults defaults(path());
    defaults.setLockTimeout(std::chrono::milliseconds(50));
    defaults.setObject(u"waiting"_s, u"key"_s);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_EQ(defaults.status(), QVUserDefaults::Status::LockError);
    EXPECT_EQ(defaults.errorString(), path() + u".lock: the settings file is locked by another process (waited 0.05 s)"_s);
    EXPECT_FALSE(QFile::exists(path()));

    held.unlock();
    EXPECT_TRUE(defaults.synchronize());
    EXPECT_EQ(fileDictionary(path()), (QVariantMap{{u"key"_s, u"waiting"_s}}));
}

// Writers started at once, each setting its own key: every one that reports
// success must find its key in the file afterwards.
TEST_F(QVUserDefaultsTest, ConcurrentProcessesLoseNoWrite)
{
    constexpr int rounds = 100;
    constexpr int writers = 16;
    for (int round = 0; round < rounds; ++round) {
        const QString file = path(u"round-%1.plist"_s.arg(round));
        std::vector<std::unique_ptr<QProcess>> processes;
        for (int writer = 0; writer < writers; ++writer) {
            auto process = std::make_unique<QProcess>();
            process->start(QVTest::helperPath(u"QVUserDefaultsHelper"_s),
                           {u"set"_s, file, u"k%1"_s.arg(writer), QString::number(writer)});
            processes.push_back(std::move(process));
        }
        for (int writer = 0; writer < writers; ++writer) {
            QProcess &process = *processes[size_t(writer)];
            ASSERT_TRUE(process.waitForFinished(60000));
            ASSERT_EQ(process.exitCode(), 0) << "round " << round << ", writer " << writer;
        }
        const QVariantMap written = fileDictionary(file);
        ASSERT_EQ(written.size(), writers) << "round " << round << ": " << QVDescription(written).toStdString();
        for (int writer = 0; writer < writers; ++writer)
            ASSERT_EQ(written.value(u"k%1"_s.arg(writer)).toString(), QString::number(writer)) << "round " << round;
    }
}

TEST_F(QVUserDefaultsTest, ConcurrentStoreObjectsOnThreadsLoseNoWrite)
{
    constexpr int threads = 8;
    constexpr int writesPerThread = 25;
    std::vector<std::thread> workers;
    std::atomic<int> failures{0};
    for (int thread = 0; thread < threads; ++thread) {
        workers.emplace_back([&, thread] {
            QVUserDefaults defaults(path());
            for (int write = 0; write < writesPerThread; ++write) {
                defaults.setInteger(write, u"t%1-%2"_s.arg(thread).arg(write));
                if (!defaults.synchronize())
                    ++failures;
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();
    EXPECT_EQ(failures, 0);
    const QVariantMap written = fileDictionary(path());
    EXPECT_EQ(written.size(), threads * writesPerThread);
    for (int thread = 0; thread < threads; ++thread) {
        for (int write = 0; write < writesPerThread; ++write)
            EXPECT_EQ(written.value(u"t%1-%2"_s.arg(thread).arg(write)).toInt(), write);
    }
}

TEST_F(QVUserDefaultsTest, KeysWithSeparatorsAndPercentSignsRoundTrip)
{
    const QStringList keys{u"a/b"_s,      u"/leading"_s, u"trailing/"_s, u"a//b"_s,
                           u"back\\slash"_s, u"100%"_s,   u"%2F"_s,      u"a"_s,
                           u"/"_s,         u"ключ/😀"_s};
    QVUserDefaults defaults(path());
    for (const QString &key : keys)
        defaults.setObject(key, key);
    ASSERT_TRUE(defaults.synchronize());

    QVariantMap expected;
    for (const QString &key : keys)
        expected.insert(key, key);
    EXPECT_EQ(fileDictionary(path()), expected);
    EXPECT_EQ(defaults.persistentDictionary(), expected);
    for (const QString &key : keys) {
        EXPECT_EQ(defaults.stringForKey(key), key);
        EXPECT_EQ(runHelper({u"get"_s, path(), key}).output, key);
    }
    EXPECT_FALSE(defaults.objectForKey(u"a/b/"_s).isValid());
    EXPECT_FALSE(defaults.objectForKey(u"leading"_s).isValid());

    defaults.removeObjectForKey(u"a//b"_s);
    EXPECT_EQ(defaults.stringForKey(u"a/b"_s), u"a/b"_s) << "removing one key leaves its look-alike";
}
