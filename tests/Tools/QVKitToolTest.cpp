// The qvkit tool, run as a user runs it: a separate process with arguments.

#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include "support/QVTestSupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

struct ToolRun
{
    int status = -1;
    QString out;
    QString err;
};

struct ToolBytes
{
    int status = -1;
    QByteArray out;
    QString err;
};

ToolBytes qvkitBytes(const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(QString::fromUtf8(QVKIT_TOOL_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            QString::fromUtf8(process.readAllStandardError())};
}

ToolRun qvkit(const QStringList &arguments)
{
    const ToolBytes run = qvkitBytes(arguments);
    return {run.status, QString::fromUtf8(run.out), run.err};
}

const QStringList commands = {u"summary"_s, u"help"_s, u"version"_s, u"plist"_s, u"defaults"_s, u"transform"_s};

} // namespace

TEST(QVKitToolTest, HelpListsEveryCommandOnce)
{
    const ToolRun dashed = qvkit({u"--help"_s});
    const ToolRun word = qvkit({u"help"_s});
    ASSERT_EQ(dashed.status, 0);
    EXPECT_EQ(word.status, 0);
    EXPECT_EQ(dashed.out, word.out);
    EXPECT_EQ(qvkit({u"-h"_s}).out, dashed.out);
    for (const QString &command : commands) {
        const QString listing = u"\n  "_s + command + u' ';
        EXPECT_EQ(dashed.out.count(listing), 1) << command.toStdString();
    }
    EXPECT_TRUE(dashed.err.isEmpty());
}

TEST(QVKitToolTest, VersionAndSummary)
{
    const QString version = u"qvkit "_s + QString::fromLatin1(QVKIT_VERSION_STRING) + u'\n';
    EXPECT_EQ(qvkit({u"--version"_s}).out, version);
    EXPECT_EQ(qvkit({u"version"_s}).out, version);

    const ToolRun summary = qvkit({});
    EXPECT_EQ(summary.status, 0);
    EXPECT_TRUE(summary.out.startsWith(u"QVKit "_s + QString::fromLatin1(QVKIT_VERSION_STRING)));
    for (const QString &label : {u"Qt"_s, u"System"_s, u"Processors"_s, u"Settings"_s})
        EXPECT_TRUE(summary.out.contains(u'\n' + label)) << label.toStdString();
    // The settings line shows where the standard store lives: in the (temporary) home.
    EXPECT_TRUE(summary.out.contains(QVTest::temporaryHome())) << summary.out.toStdString();
}

TEST(QVKitToolTest, MistakesExitWithStatusTwo)
{
    const ToolRun unknown = qvkit({u"frobnicate"_s});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.contains(u"unknown command \"frobnicate\""_s));
    EXPECT_TRUE(unknown.out.startsWith(u"Usage: qvkit"_s)) << "the help follows the complaint";

    const ToolRun unknownOption = qvkit({u"--frobnicate"_s});
    EXPECT_EQ(unknownOption.status, 2);
    EXPECT_TRUE(unknownOption.err.contains(u"-frobnicate"_s));

    const ToolRun missing = qvkit({u"plist"_s});
    EXPECT_EQ(missing.status, 2);
    EXPECT_TRUE(missing.err.contains(u"missing required option -file"_s)) << missing.err.toStdString();

    const ToolRun missingKey = qvkit({u"defaults"_s, u"write"_s, u"-value"_s, u"x"_s});
    EXPECT_EQ(missingKey.status, 2);
    EXPECT_TRUE(missingKey.err.contains(u"-key"_s));
}

TEST(QVKitToolTest, PropertyListsAreCheckedAndPrinted)
{
    QTemporaryDir dir;
    const QString good = dir.filePath(u"good.plist"_s);
    QFile file(good);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>b</key><integer>2</integer><key>a</key><string>\xc3\xa9t\xc3\xa9</string></dict></plist>");
    file.close();

    const ToolRun printed = qvkit({u"plist"_s, u"-file"_s, good});
    EXPECT_EQ(printed.status, 0) << printed.err.toStdString();
    EXPECT_LT(printed.out.indexOf(u"<key>a</key>"_s), printed.out.indexOf(u"<key>b</key>"_s));
    EXPECT_TRUE(printed.out.contains(u"<string>\u00e9t\u00e9</string>"_s));

    const QString truncated = dir.filePath(u"truncated.plist"_s);
    QFile bad(truncated);
    ASSERT_TRUE(bad.open(QIODevice::WriteOnly));
    bad.write("<plist version=\"1.0\"><dict><key>a</key>");
    bad.close();
    const ToolRun failed = qvkit({u"plist"_s, u"-file"_s, truncated});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(failed.err.startsWith(u"qvkit plist: "_s + truncated)) << failed.err.toStdString();
    EXPECT_TRUE(failed.out.isEmpty());
}

TEST(QVKitToolTest, DefaultsWriteReadDelete)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(u"store.plist"_s);
    EXPECT_EQ(qvkit({u"defaults"_s, u"write"_s, u"-key"_s, u"QVGreeting"_s, u"-value"_s, u"gr\u00fc\u00df"_s, u"dich"_s,
                     u"-file"_s, store})
                  .status,
              0);
    const ToolRun read = qvkit({u"defaults"_s, u"read"_s, u"-key"_s, u"QVGreeting"_s, u"-file"_s, store});
    EXPECT_EQ(read.status, 0);
    EXPECT_TRUE(read.out.contains(u"<string>gr\u00fc\u00df dich</string>"_s)) << read.out.toStdString();

    EXPECT_EQ(qvkit({u"defaults"_s, u"delete"_s, u"-key"_s, u"QVGreeting"_s, u"-file"_s, store}).status, 0);
    const ToolRun gone = qvkit({u"defaults"_s, u"read"_s, u"-key"_s, u"QVGreeting"_s, u"-file"_s, store});
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(gone.err.contains(u"QVGreeting"_s));

    EXPECT_EQ(qvkit({u"defaults"_s, u"rename"_s, u"-key"_s, u"k"_s, u"-file"_s, store}).status, 2);
}

TEST(QVKitToolTest, TransformEachMode)
{
    // The tool runs in the test's en_US locale.
    const struct
    {
        const char *mode;
        QString input;
        QString output;
    } rows[] = {
        {"upper", u"stra\u00dfe \u00e9t\u00e9 \U0001F600!"_s, u"STRASSE \u00c9T\u00c9 \U0001F600!"_s},
        {"upper", u"\ufeffhi"_s, u"\ufeffHI"_s}, // a byte order mark is text like any other
        {"upper", u""_s, u""_s},
        {"lower", u"\u00c0B\nC"_s, u"\u00e0b\nc"_s},
        {"capitalize", u"hello wORLD"_s, u"Hello World"_s},
        {"quote", u"hi there"_s, u"\u201chi there\u201d"_s},
        {"alternative-quote", u"hi"_s, u"\u2018hi\u2019"_s},
        {"straighten", u"\u201ca\u201d \u2018b\u2019"_s, u"\"a\" 'b'"_s},
        {"smarten", u"\"a\" 'b'"_s, u"\u201ca\u201d \u2018b\u2019"_s},
    };
    for (const auto &row : rows) {
        const ToolBytes run = qvkitBytes({u"transform"_s, QString::fromLatin1(row.mode)}, row.input.toUtf8());
        EXPECT_EQ(run.status, 0) << row.mode << run.err.toStdString();
        EXPECT_EQ(run.out, row.output.toUtf8()) << row.mode;
        EXPECT_TRUE(run.err.isEmpty()) << row.mode << run.err.toStdString();
    }
}

TEST(QVKitToolTest, TransformLargeInputThroughStandardInputAndFile)
{
    const QString pieces[] = {u"Stra\u00dfe "_s, u"na\u00efve "_s, u"\u0149 "_s, u"word\n"_s, u"\U0001F1E9\U0001F1EA "_s,
                              u"\u00e9clair, "_s};
    QByteArray input;
    // Upper-case mapping looks at no context, so the pieces' mappings make the whole one.
    QByteArray expected;
    for (size_t i = 0; input.size() < 5 * 1024 * 1024; ++i) {
        const QString &piece = pieces[i % std::size(pieces)];
        input += piece.toUtf8();
        expected += QVString::uppercaseString(piece).toUtf8();
    }
    ASSERT_GT(expected.size(), input.size()) << "some letters grow";

    const ToolBytes piped = qvkitBytes({u"transform"_s, u"upper"_s}, input);
    EXPECT_EQ(piped.status, 0) << piped.err.toStdString();
    EXPECT_TRUE(piped.out == expected) << "sizes " << piped.out.size() << " and " << expected.size();

    QTemporaryDir dir;
    QFile file(dir.filePath(u"large.txt"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(input);
    file.close();
    const ToolBytes fromFile = qvkitBytes({u"transform"_s, u"upper"_s, u"-file"_s, file.fileName()});
    EXPECT_EQ(fromFile.status, 0) << fromFile.err.toStdString();
    EXPECT_TRUE(fromFile.out == expected);
}

TEST(QVKitToolTest, TransformRefusesBadInput)
{
    const struct
    {
        QByteArray input;
        const char *offset;
    } invalid[] = {
        {"ab\xff", "2"}, {"ab\xc3", "2"}, {"\xc3\xa9\xed\xa0\x80", "3"}, {"x\xc0\xaf", "1"}, {"ok\xf4\x90\x80\x80", "3"},
    };
    for (const auto &row : invalid) {
        const ToolBytes run = qvkitBytes({u"transform"_s, u"upper"_s}, row.input);
        EXPECT_EQ(run.status, 1) << row.input.toHex().constData();
        EXPECT_TRUE(run.out.isEmpty()) << "nothing half-written";
        EXPECT_TRUE(run.err.startsWith(u"qvkit transform: the input is not valid UTF-8"_s)) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(u"byte "_s + QString::fromLatin1(row.offset))) << run.err.toStdString();
    }

    QTemporaryDir dir;
    const QString missingFile = dir.filePath(u"missing.txt"_s);
    const ToolBytes missing = qvkitBytes({u"transform"_s, u"lower"_s, u"-file"_s, missingFile});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.out.isEmpty());
    EXPECT_TRUE(missing.err.contains(missingFile)) << missing.err.toStdString();

    const ToolBytes noMode = qvkitBytes({u"transform"_s});
    EXPECT_EQ(noMode.status, 2);
    EXPECT_TRUE(noMode.err.contains(u"missing mode"_s)) << noMode.err.toStdString();

    const ToolBytes unknownMode = qvkitBytes({u"transform"_s, u"shout"_s}, "abc");
    EXPECT_EQ(unknownMode.status, 2);
    EXPECT_TRUE(unknownMode.out.isEmpty());
    EXPECT_TRUE(unknownMode.err.contains(u"unknown mode \"shout\""_s));
    EXPECT_TRUE(unknownMode.err.contains(u"usage: qvkit transform upper|lower|"_s)) << unknownMode.err.toStdString();
}
