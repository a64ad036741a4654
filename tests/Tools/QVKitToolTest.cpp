// The qvkit tool, run as a user runs it: a separate process with arguments.

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

ToolRun qvkit(const QStringList &arguments)
{
    QProcess process;
    process.start(QString::fromUtf8(QVKIT_TOOL_PATH), arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

const QStringList commands = {u"summary"_s, u"help"_s, u"version"_s, u"plist"_s, u"defaults"_s};

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
