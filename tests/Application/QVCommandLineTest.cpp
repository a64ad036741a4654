#include <QVKit/Application/QVCommandLine.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVProcessArguments.h>

#include <QtCore/QCoreApplication>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QVCommandLine parse(const QString &line)
{
    return QVCommandLine(line.split(u' ', Qt::SkipEmptyParts));
}

} // namespace

TEST(QVCommandLineTest, ActionsAndOptions)
{
    struct Row
    {
        const char *name;
        QString line;
        QStringList actions;
        std::optional<QVCommandLineOptions> options;
    };
    const Row rows[] = {
        {"actions then options", u"tool build -v -o out.txt extra"_s, {u"build"_s},
         QVCommandLineOptions{{u"v"_s, {}}, {u"o"_s, {u"out.txt"_s, u"extra"_s}}}},
        {"only actions", u"tool a b c"_s, {u"a"_s, u"b"_s, u"c"_s}, std::nullopt},
        {"nothing after the path", u"tool"_s, {}, std::nullopt},
        {"double dash keeps one", u"tool --long value"_s, {}, QVCommandLineOptions{{u"-long"_s, {u"value"_s}}}},
        {"lone dash skipped, no current option", u"tool x - y"_s, {u"x"_s}, std::nullopt},
        {"lone dash keeps the current option", u"tool -a 1 - 2"_s, {},
         QVCommandLineOptions{{u"a"_s, {u"1"_s, u"2"_s}}}},
        {"actions stop at the first option", u"tool one -f two three"_s, {u"one"_s},
         QVCommandLineOptions{{u"f"_s, {u"two"_s, u"three"_s}}}},
        {"non-ASCII names and values", u"tool \u00fcbersetze -sprache \u65e5\u672c\u8a9e"_s, {u"\u00fcbersetze"_s},
         QVCommandLineOptions{{u"sprache"_s, {u"\u65e5\u672c\u8a9e"_s}}}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const QVCommandLine commandLine = parse(row.line);
        EXPECT_EQ(commandLine.launchPath(), u"tool"_s);
        EXPECT_EQ(commandLine.actions(), row.actions);
        EXPECT_EQ(commandLine.options(), row.options);
        EXPECT_EQ(commandLine.arguments(), row.line.split(u' ', Qt::SkipEmptyParts).mid(1));
    }
}

TEST(QVCommandLineTest, RepeatedOptionIsLoggedAndMerged)
{
    QVLogCapture capture;
    const QVCommandLine commandLine = parse(u"tool -a 1 -b -a 2"_s);
    EXPECT_EQ(capture.lines(), QStringList{u"Option a appears earlier."_s});
    EXPECT_EQ(commandLine.options(), (QVCommandLineOptions{{u"a"_s, {u"1"_s, u"2"_s}}, {u"b"_s, {}}}));
}

TEST(QVCommandLineTest, EmptyInputs)
{
    const QVCommandLine empty(QStringList{});
    EXPECT_TRUE(empty.launchPath().isNull());
    EXPECT_TRUE(empty.actions().isEmpty());
    EXPECT_FALSE(empty.options().has_value());

    EXPECT_FALSE(QVCommandLine::argumentsFromArgc(0, nullptr).has_value());
    const char *argv[] = {"/usr/bin/tool", "gr\xc3\xbc\xc3\x9f", "-x", nullptr};
    EXPECT_EQ(QVCommandLine::argumentsFromArgc(3, argv), (QStringList{u"/usr/bin/tool"_s, u"gr\u00fc\u00df"_s, u"-x"_s}));
    const QVCommandLine fromArgv = QVCommandLine::commandLineFromArgc(3, argv);
    EXPECT_EQ(fromArgv.actions(), QStringList{u"gr\u00fc\u00df"_s});
    EXPECT_EQ(fromArgv.options(), (QVCommandLineOptions{{u"x"_s, {}}}));

    EXPECT_FALSE(QVCommandLine::optionsDictionaryFromArgumentArray({}).has_value());
    EXPECT_FALSE(QVCommandLine::optionsDictionaryFromArgumentArray({u"-"_s, u"loose"_s}).has_value());
}

TEST(QVCommandLineTest, ProcessArguments)
{
    EXPECT_EQ(QVCommandLine().arguments(), QCoreApplication::arguments().mid(1));
    EXPECT_EQ(&QVCommandLine::commandLine(), &QVCommandLine::commandLine());
    EXPECT_EQ(QVCommandLine::commandLine().launchPath(), QCoreApplication::arguments().first());

    EXPECT_EQ(qv_arguments_from_cmdline(QByteArray("a\0\0b\xc3\xa9\0", 7)), (QStringList{u"a"_s, u""_s, u"b\u00e9"_s}));
    EXPECT_TRUE(qv_arguments_from_cmdline(QByteArray()).isEmpty());
    EXPECT_EQ(qv_arguments_from_cmdline(QByteArray("unterminated")), QStringList{u"unterminated"_s});
}

TEST(QVCommandLineTest, Validation)
{
    const QVCommandLine commandLine = parse(u"tool build test -o out -v"_s);
    QVLogCapture capture;
    EXPECT_TRUE(commandLine.validForActions({u"build"_s}, {u"o"_s, u"v"_s}, true));
    EXPECT_TRUE(commandLine.validForActions({}, {}, true));
    EXPECT_TRUE(capture.lines().isEmpty());

    EXPECT_FALSE(commandLine.validForActions({u"deploy"_s, u"build"_s, u"clean"_s}, {u"o"_s}));
    EXPECT_TRUE(capture.lines().isEmpty()) << "printing is off in the short form";

    EXPECT_FALSE(commandLine.validForActions({u"deploy"_s, u"build"_s, u"clean"_s}, {u"x"_s, u"o"_s}, true));
    EXPECT_EQ(capture.lines(), QStringList({u"Required actions missing: (deploy, clean)"_s,
                                            u"Required options missing: (x)"_s}));

    const QVCommandLine bare = parse(u"tool"_s);
    EXPECT_TRUE(bare.validForActions({}, {}));
    EXPECT_EQ(bare.missingOptions({u"o"_s}), QStringList{u"o"_s});
}

TEST(QVCommandLineTest, Description)
{
    const QVCommandLine commandLine = parse(u"tool go -n 1"_s);
    const QString description = commandLine.description();
    EXPECT_TRUE(description.startsWith(u"QVCommandLine 0x"_s)) << description.toStdString();
    EXPECT_TRUE(description.endsWith(u":\nlaunch path: tool\narguments: (go, -n, 1)\nactions: (go)\noptions: {n = (1); }"_s))
        << description.toStdString();
    EXPECT_TRUE(parse(u"tool"_s).description().endsWith(u"actions: ()\noptions: (null)"_s));
}

TEST(QVCommandLineTest, ConstructedFromAListAnInitializerListOrOneString)
{
    const QVCommandLine fromList(QStringList{u"tool"_s, u"build"_s, u"-v"_s});
    const QVCommandLine fromBraces({u"tool"_s, u"build"_s, u"-v"_s});
    const QVCommandLine fromOptional(std::optional<QStringList>({u"tool"_s, u"build"_s, u"-v"_s}));
    for (const QVCommandLine *line : {&fromList, &fromBraces, &fromOptional}) {
        EXPECT_EQ(line->launchPath(), u"tool"_s);
        EXPECT_EQ(line->actions(), QStringList{u"build"_s});
        EXPECT_EQ(line->options(), QVCommandLineOptions({{u"v"_s, {}}}));
    }

    const QVCommandLine alone(u"/usr/bin/t\u00f6\u00f6l"_s);
    EXPECT_EQ(alone.launchPath(), u"/usr/bin/t\u00f6\u00f6l"_s);
    EXPECT_TRUE(alone.arguments().isEmpty());

    // An empty list has no launch path; no list at all is the process's own.
    EXPECT_TRUE(QVCommandLine(QStringList()).launchPath().isEmpty());
    EXPECT_FALSE(QVCommandLine(std::nullopt).launchPath().isEmpty());
}
