// The qvkit tool, run as a user runs it: a separate process with arguments.
// Standard output, standard error and the exit status are checked apart.

#include <QVKit/Platform/QVPropertyListSerialization.h>
#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QDir>
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
    QByteArray out;
    QString err;

    QString text() const { return QString::fromUtf8(out); }
};

ToolRun qvkit(const QStringList &arguments, const QByteArray &input = {},
              const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QString::fromUtf8(QVKIT_TOOL_PATH), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
            QString::fromUtf8(process.readAllStandardError())};
}

void writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(contents), contents.size());
}

QByteArray fileContents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const QStringList commands = {u"defaults"_s, u"help"_s, u"plist"_s, u"summary"_s, u"transform"_s, u"version"_s};

} // namespace

TEST(QVKitToolTest, HelpListsEveryCommandAndEachCommandHasItsOwn)
{
    const ToolRun list = qvkit({u"help"_s});
    ASSERT_EQ(list.status, 0);
    EXPECT_TRUE(list.err.isEmpty());
    for (const QStringList &same : {QStringList{u"--help"_s}, QStringList{u"-h"_s}, QStringList{u"-help"_s}})
        EXPECT_EQ(qvkit(same).out, list.out) << same.join(u' ').toStdString();
    for (const QString &command : commands) {
        SCOPED_TRACE(command.toStdString());
        EXPECT_EQ(list.text().count(u"\n  "_s + command + u' '), 1) << "one line each in the list";

        const ToolRun help = qvkit({u"help"_s, command});
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.err.isEmpty());
        EXPECT_TRUE(help.text().startsWith(u"Usage: qvkit "_s + command)) << help.text().toStdString();
        const QString example = help.text().section(u"\nExample:\n"_s, 1);
        EXPECT_TRUE(example.contains(u"qvkit "_s + command)) << help.text().toStdString();
        for (const QString &flag : {u"--help"_s, u"-help"_s, u"-h"_s})
            EXPECT_EQ(qvkit({command, flag}).out, help.out) << flag.toStdString();
    }
    EXPECT_TRUE(qvkit({u"help"_s, u"defaults"_s}).text().contains(u"-value TEXT"_s));
}

TEST(QVKitToolTest, VersionAndSummary)
{
    const QByteArray version = "qvkit " QVKIT_VERSION_STRING "\n";
    EXPECT_EQ(qvkit({u"--version"_s}).out, version);
    EXPECT_EQ(qvkit({u"version"_s}).out, version);

    const ToolRun summary = qvkit({});
    EXPECT_EQ(summary.status, 0);
    EXPECT_EQ(qvkit({u"summary"_s}).out, summary.out);
    EXPECT_TRUE(summary.text().startsWith(u"QVKit " QVKIT_VERSION_STRING ""_s));
    for (const QString &label : {u"Qt"_s, u"System"_s, u"Processors"_s, u"Settings"_s})
        EXPECT_TRUE(summary.text().contains(u'\n' + label)) << label.toStdString();
    // The settings line shows where the standard store lives: in the (temporary) home.
    EXPECT_TRUE(summary.text().contains(QVTest::temporaryHome())) << summary.text().toStdString();
}

// Every usage error: one line naming the problem, then the short usage, on
// standard error; nothing on standard output; status 2.
TEST(QVKitToolTest, UsageErrorsNameTheProblemAndShowTheUsage)
{
    const struct
    {
        QStringList arguments;
        QString problem;
        QString usage;
    } rows[] = {
        {{u"frobnicate"_s}, u"qvkit: unknown command \"frobnicate\""_s, u"usage: qvkit [COMMAND]"_s},
        {{u"--frobnicate"_s}, u"qvkit: unknown option --frobnicate"_s, u"usage: qvkit [COMMAND]"_s},
        {{u"help"_s, u"nosuch"_s}, u"qvkit help: unknown command \"nosuch\""_s, u"usage: qvkit help"_s},
        {{u"help"_s, u"plist"_s, u"defaults"_s}, u"qvkit help: one command at a time, not 2"_s, u"usage: qvkit help"_s},
        {{u"version"_s, u"extra"_s}, u"qvkit version: unexpected argument \"extra\""_s, u"usage: qvkit version"_s},
        {{u"defaults"_s}, u"qvkit defaults: missing action (read, write or delete)"_s, u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"frob"_s}, u"qvkit defaults: unknown action \"frob\" (read, write or delete)"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"read"_s, u"-colour"_s, u"red"_s}, u"qvkit defaults: unknown option -colour"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"read"_s, u"--colour=red"_s}, u"qvkit defaults: unknown option --colour"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"write"_s, u"-value"_s, u"x"_s}, u"qvkit defaults: write needs -key"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"write"_s, u"-key"_s, u"k"_s}, u"qvkit defaults: write needs -value"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"write"_s, u"-key"_s, u"k"_s, u"-value"_s},
         u"qvkit defaults: option -value needs a value (TEXT)"_s, u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"write"_s, u"-key"_s, u"k"_s, u"-value"_s, u"1"_s, u"--value"_s, u"2"_s},
         u"qvkit defaults: option -value given more than once"_s, u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"read"_s, u"-key"_s, u""_s}, u"qvkit defaults: -key needs a non-empty key"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"read"_s, u"-value"_s, u"x"_s}, u"qvkit defaults: read takes no -value"_s,
         u"usage: qvkit defaults"_s},
        {{u"defaults"_s, u"read"_s, u"extra"_s}, u"qvkit defaults: unexpected argument \"extra\""_s,
         u"usage: qvkit defaults"_s},
        {{u"plist"_s}, u"qvkit plist: missing path (\"-\" reads standard input)"_s, u"usage: qvkit plist"_s},
        {{u"plist"_s, u"a.plist"_s, u"-file"_s, u"b.plist"_s},
         u"qvkit plist: give the path once: as an argument or with -file, not both"_s, u"usage: qvkit plist"_s},
        {{u"plist"_s, u"a.plist"_s, u"b.plist"_s}, u"qvkit plist: unexpected argument \"b.plist\""_s,
         u"usage: qvkit plist"_s},
        {{u"transform"_s}, u"qvkit transform: missing mode (upper, lower, capitalize, quote, alternative-quote, "
                           u"straighten, smarten)"_s,
         u"usage: qvkit transform"_s},
        {{u"transform"_s, u"shout"_s}, u"qvkit transform: unknown mode \"shout\" (upper, lower, capitalize, quote, "
                                       u"alternative-quote, straighten, smarten)"_s,
         u"usage: qvkit transform upper|lower|"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments.join(u' ').toStdString());
        const ToolRun run = qvkit(row.arguments, "input that must not be read");
        EXPECT_EQ(run.status, 2);
        EXPECT_TRUE(run.out.isEmpty()) << run.text().toStdString();
        const QStringList lines = run.err.split(u'\n');
        ASSERT_EQ(lines.size(), 3) << run.err.toStdString(); // two lines and the final newline
        EXPECT_EQ(lines.at(0), row.problem);
        EXPECT_TRUE(lines.at(1).startsWith(row.usage)) << lines.at(1).toStdString();
    }
}

TEST(QVKitToolTest, PropertyListsFromAPathStandardInputOrFile)
{
    QTemporaryDir dir;
    const QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                           "<key>b</key><integer>2</integer><key>a</key><string>\xc3\xa9t\xc3\xa9</string></dict>"
                           "</plist>";
    const QString good = dir.filePath(u"good.plist"_s);
    writeFile(good, xml);

    const ToolRun byPath = qvkit({u"plist"_s, good});
    EXPECT_EQ(byPath.status, 0) << byPath.err.toStdString();
    EXPECT_TRUE(byPath.err.isEmpty());
    EXPECT_LT(byPath.text().indexOf(u"<key>a</key>"_s), byPath.text().indexOf(u"<key>b</key>"_s));
    EXPECT_TRUE(byPath.text().contains(u"<string>\u00e9t\u00e9</string>"_s));
    EXPECT_EQ(qvkit({u"plist"_s, u"-file"_s, good}).out, byPath.out);
    EXPECT_EQ(qvkit({u"plist"_s, u"--file="_s + good}).out, byPath.out);
    EXPECT_EQ(qvkit({u"plist"_s, u"-"_s}, xml).out, byPath.out);

    const QString truncated = dir.filePath(u"truncated.plist"_s);
    writeFile(truncated, "<plist version=\"1.0\"><dict><key>a</key>");
    const ToolRun bad = qvkit({u"plist"_s, truncated});
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(bad.out.isEmpty());
    EXPECT_EQ(bad.err, u"qvkit plist: %1: Property list is malformed at line 1, column 40: unexpected end of file\n"_s
                           .arg(truncated));
    const ToolRun badInput = qvkit({u"plist"_s, u"-"_s}, "<plist><dict>");
    EXPECT_EQ(badInput.status, 1);
    EXPECT_TRUE(badInput.err.startsWith(u"qvkit plist: standard input: "_s)) << badInput.err.toStdString();
    const ToolRun missing = qvkit({u"plist"_s, dir.filePath(u"missing.plist"_s)});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.startsWith(u"qvkit plist: cannot read %1: "_s.arg(dir.filePath(u"missing.plist"_s))))
        << missing.err.toStdString();
}

TEST(QVKitToolTest, DefaultsWriteReadDeleteWithEveryOptionSpelling)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(u"store.plist"_s);
    const struct
    {
        QStringList options;
        QString stored;
    } writes[] = {
        {{u"-key"_s, u"a"_s, u"-value"_s, u"gr\u00fc\u00df dich"_s}, u"gr\u00fc\u00df dich"_s},
        {{u"--key"_s, u"b"_s, u"--value"_s, u"-5"_s}, u"-5"_s},
        {{u"-key=c"_s, u"-value=-5"_s}, u"-5"_s},
        {{u"--key=d"_s, u"--value="_s}, u""_s},
        {{u"-key"_s, u"e"_s, u"-value"_s, u""_s}, u""_s},
        {{u"-key"_s, u"-f"_s, u"-value"_s, u"--"_s}, u"--"_s},
    };
    for (const auto &row : writes) {
        SCOPED_TRACE(row.options.join(u' ').toStdString());
        const ToolRun write = qvkit(QStringList{u"defaults"_s, u"write"_s, u"-file"_s, store} + row.options);
        ASSERT_EQ(write.status, 0) << write.err.toStdString();
        EXPECT_TRUE(write.out.isEmpty());
        EXPECT_TRUE(write.err.isEmpty()) << write.err.toStdString();
    }
    const QVariantMap written = QVPropertyListSerialization::propertyListWithContentsOfFile(store).toMap();
    ASSERT_EQ(written.size(), qsizetype(std::size(writes)));
    EXPECT_EQ(written.value(u"-f"_s).toString(), u"--"_s);
    for (const QString &key : {u"b"_s, u"c"_s})
        EXPECT_EQ(written.value(key).toString(), u"-5"_s);
    for (const QString &key : {u"d"_s, u"e"_s}) {
        EXPECT_EQ(written.value(key).typeId(), QMetaType::QString);
        EXPECT_TRUE(written.value(key).toString().isEmpty());
    }

    // A string reads back alone, as plain text; the whole store as a property list.
    const ToolRun one = qvkit({u"defaults"_s, u"read"_s, u"-key"_s, u"a"_s, u"-file"_s, store});
    EXPECT_EQ(one.status, 0);
    EXPECT_EQ(one.text(), u"gr\u00fc\u00df dich\n"_s);
    const ToolRun all = qvkit({u"defaults"_s, u"read"_s, u"-file"_s, store});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(QVPropertyListSerialization::propertyListWithData(all.out).toMap(), written);

    EXPECT_EQ(qvkit({u"defaults"_s, u"delete"_s, u"-key"_s, u"a"_s, u"-file"_s, store}).status, 0);
    for (const QString &action : {u"read"_s, u"delete"_s}) {
        const ToolRun gone = qvkit({u"defaults"_s, action, u"-key"_s, u"a"_s, u"-file"_s, store});
        EXPECT_EQ(gone.status, 1) << action.toStdString();
        EXPECT_TRUE(gone.out.isEmpty());
        EXPECT_EQ(gone.err, u"qvkit defaults: no value for the key \"a\" in %1\n"_s.arg(store));
    }
}

TEST(QVKitToolTest, DefaultsReportADamagedStoreAndKeepItOnWrite)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(u"damaged.plist"_s);
    const QByteArray damaged = "<plist><dict><key>lost?</key>";
    writeFile(store, damaged);

    for (const QStringList &arguments : {QStringList{u"read"_s}, QStringList{u"read"_s, u"-key"_s, u"k"_s},
                                         QStringList{u"delete"_s, u"-key"_s, u"k"_s}}) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        const ToolRun read = qvkit(QStringList{u"defaults"_s} + arguments + QStringList{u"-file"_s, store});
        EXPECT_EQ(read.status, 1);
        EXPECT_TRUE(read.out.isEmpty()) << "never an empty dictionary";
        EXPECT_EQ(read.err, u"qvkit defaults: %1: Property list is malformed at line 1, column 30: unexpected end "
                            u"of file\n"_s.arg(store));
        EXPECT_EQ(fileContents(store), damaged);
    }

    const ToolRun write = qvkit({u"defaults"_s, u"write"_s, u"-key"_s, u"k"_s, u"-value"_s, u"v"_s, u"-file"_s, store});
    EXPECT_EQ(write.status, 0);
    EXPECT_TRUE(write.out.isEmpty());
    const QStringList asides = QDir(dir.path()).entryList({u"damaged.plist.corrupt-*"_s}, QDir::Files);
    ASSERT_EQ(asides.size(), 1);
    const QString aside = dir.filePath(asides.first());
    EXPECT_EQ(fileContents(aside), damaged);
    EXPECT_EQ(write.err, u"qvkit defaults: %1 was damaged; kept it as %2 and wrote a new store\n"_s.arg(store, aside));
    EXPECT_EQ(qvkit({u"defaults"_s, u"read"_s, u"-key"_s, u"k"_s, u"-file"_s, store}).out, QByteArray("v\n"));

    // A store that cannot be read at all is not written: one line says what and where, no library lines.
    const QString folder = dir.filePath(u"folder.plist"_s);
    ASSERT_TRUE(QDir().mkpath(folder));
    const ToolRun refused =
        qvkit({u"defaults"_s, u"write"_s, u"-key"_s, u"k"_s, u"-value"_s, u"v"_s, u"-file"_s, folder});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.out.isEmpty());
    EXPECT_TRUE(refused.err.startsWith(u"qvkit defaults: cannot write %1: %1: cannot read"_s.arg(folder)))
        << refused.err.toStdString();
    EXPECT_EQ(refused.err.count(u'\n'), 1) << refused.err.toStdString();
}

TEST(QVKitToolTest, TransformEachModeKeepingTheLineEndOutside)
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
        {"upper", u"\n"_s, u"\n"_s},
        {"lower", u"\u00c0B\nC\n"_s, u"\u00e0b\nc\n"_s},
        {"capitalize", u"hello wORLD"_s, u"Hello World"_s},
        {"quote", u"hi\n"_s, u"\u201chi\u201d\n"_s},
        {"quote", u"hi\r\n"_s, u"\u201chi\u201d\r\n"_s},
        {"quote", u"two\nlines\n\n"_s, u"\u201ctwo\nlines\n\u201d\n"_s},
        {"alternative-quote", u"hi"_s, u"\u2018hi\u2019"_s},
        {"straighten", u"\u201ca\u201d \u2018b\u2019 it\u2019s"_s, u"\"a\" 'b' it's"_s},
        {"smarten", u"\"a\" 'b' it's\n"_s, u"\u201ca\u201d \u2018b\u2019 it\u2019s\n"_s},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.mode);
        SCOPED_TRACE(row.input.toStdString());
        const ToolRun run = qvkit({u"transform"_s, QString::fromLatin1(row.mode)}, row.input.toUtf8());
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        EXPECT_EQ(run.out, row.output.toUtf8());
        EXPECT_TRUE(run.err.isEmpty()) << run.err.toStdString();
    }
}

// Quotes take the marks of the user's locale; an apostrophe is ’ in every one.
TEST(QVKitToolTest, TransformSmartenFollowsTheLocale)
{
    const QString input = u"\"x\" it's 'y'\n"_s;
    for (const char *name : {"en_US", "de_DE", "fr_FR", "ja_JP", "ru_RU"}) {
        SCOPED_TRACE(name);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"LANG"_s, QString::fromLatin1(name) + u".UTF-8"_s);
        environment.remove(u"LC_ALL"_s);
        const QLocale locale(QString::fromLatin1(name));
        const QString expected = locale.quoteString(u"x") + u" it\u2019s "_s
                                 + locale.quoteString(u"y", QLocale::AlternateQuotation) + u'\n';
        const ToolRun run = qvkit({u"transform"_s, u"smarten"_s}, input.toUtf8(), environment);
        EXPECT_EQ(run.status, 0) << run.err.toStdString();
        EXPECT_EQ(run.text(), expected);
    }
}

TEST(QVKitToolTest, TransformLargeInputThroughStandardInputPathAndFile)
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

    const ToolRun piped = qvkit({u"transform"_s, u"upper"_s}, input);
    EXPECT_EQ(piped.status, 0) << piped.err.toStdString();
    EXPECT_TRUE(piped.out == expected) << "sizes " << piped.out.size() << " and " << expected.size();

    QTemporaryDir dir;
    const QString path = dir.filePath(u"large.txt"_s);
    writeFile(path, input);
    for (const QStringList &source : {QStringList{path}, QStringList{u"-file"_s, path}}) {
        const ToolRun fromFile = qvkit(QStringList{u"transform"_s, u"upper"_s} + source);
        EXPECT_EQ(fromFile.status, 0) << fromFile.err.toStdString();
        EXPECT_TRUE(fromFile.out == expected);
    }
}

TEST(QVKitToolTest, TransformRefusesBadInputPointingAtTheFirstBadByte)
{
    const struct
    {
        const char *name;
        QByteArray input;
        int offset;
    } invalid[] = {
        {"stray continuation byte", "ab\x80", 2},
        {"byte that never appears", "ab\xff", 2},
        {"overlong C0", "x\xc0\xaf", 1},
        {"overlong E0 80", "xy\xe0\x80\xaf", 2},
        {"encoded surrogate", "\xc3\xa9\xed\xa0\x80", 2},
        {"above U+10FFFF", "ok\xf4\x90\x80\x80", 2},
        {"F5 lead", "ok\xf5\x80\x80\x80", 2},
        {"cut off at the end", "ab\xe2\x82", 2},
        {"cut off before ASCII", "ab\xe2\x82z", 2},
    };
    for (const auto &row : invalid) {
        SCOPED_TRACE(row.name);
        const ToolRun run = qvkit({u"transform"_s, u"upper"_s}, row.input);
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.out.isEmpty()) << "nothing half-written";
        EXPECT_EQ(run.err, u"qvkit transform: the input is not valid UTF-8 (at byte %1)\n"_s.arg(row.offset));
    }

    QTemporaryDir dir;
    const QString missingFile = dir.filePath(u"missing.txt"_s);
    const ToolRun missing = qvkit({u"transform"_s, u"lower"_s, missingFile});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.out.isEmpty());
    EXPECT_TRUE(missing.err.startsWith(u"qvkit transform: cannot read %1: "_s.arg(missingFile)))
        << missing.err.toStdString();
}

TEST(QVKitToolTest, CompletionScriptsComeFromTheCommandList)
{
    const ToolRun bash = qvkit({u"--completion"_s, u"bash"_s});
    ASSERT_EQ(bash.status, 0);
    const ToolRun zsh = qvkit({u"--completion"_s, u"zsh"_s});
    ASSERT_EQ(zsh.status, 0);
    EXPECT_TRUE(zsh.text().startsWith(u"#compdef qvkit\n"_s));
    for (const QString &command : commands) {
        EXPECT_TRUE(bash.text().contains(u"        "_s + command + u")\n"_s)) << command.toStdString();
        EXPECT_TRUE(zsh.text().contains(u"        '"_s + command + u':')) << command.toStdString();
    }
    EXPECT_TRUE(bash.text().contains(u"actions=\"read write delete\""_s));

    // The bash script parses, and completes a command's actions.
    QTemporaryDir dir;
    const QString script = dir.filePath(u"qvkit.bash"_s);
    writeFile(script, bash.out);
    QProcess shell;
    shell.start(u"bash"_s, {u"-c"_s, u"source '%1' && COMP_WORDS=(qvkit defaults w) && COMP_CWORD=2 && _qvkit "
                                     u"&& echo \"${COMPREPLY[@]}\""_s.arg(script)});
    ASSERT_TRUE(shell.waitForFinished(30000));
    EXPECT_EQ(shell.exitCode(), 0) << shell.readAllStandardError().constData();
    EXPECT_EQ(shell.readAllStandardOutput(), QByteArray("write\n"));

    EXPECT_EQ(qvkit({u"--completion"_s, u"fish"_s}).status, 2);
}
