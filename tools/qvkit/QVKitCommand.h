#pragma once

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

/** One option of a command: "-name VALUE", or a flag "-name" when valueName is empty. */
struct QVKitOption
{
    QString name;
    /** What the value is, for usage lines ("KEY", "PATH"); empty for a flag. */
    QString valueName;
    QString help;
    /** Whether the option may be given more than once (each value is kept). */
    bool repeatable = false;
    /** Whether the value names a file, so that completion offers file names. */
    bool isPath = false;
};

class QVKitInvocation;

/**
 * A qvkit command as the registry knows it: everything help, usage errors and
 * shell completion say about it, and the function that runs it.
 */
struct QVKitCommand
{
    QString name;
    /** One line for the command list. */
    QString summary;
    /** What follows "qvkit " in the short usage, without the options' help. */
    QString usage;
    /** Words that may follow the name (actions, modes), for completion. */
    QStringList actions;
    QList<QVKitOption> options;
    /** One command line, with a comment when it needs one. */
    QString example;
    std::function<int(QVKitInvocation &invocation)> run;

    const QVKitOption *option(QStringView name) const;
};

/**
 * The commands of the tool. Each command's file adds itself with a
 * QVKitCommandRegistrar, so that a new command is one new file.
 */
namespace QVKitCommandRegistry {

/** Every command, sorted by name. */
QList<const QVKitCommand *> commands();
/** The command of that name, or nullptr. */
const QVKitCommand *find(QStringView name);

} // namespace QVKitCommandRegistry

/** Adds a command to the registry when the program starts. */
struct QVKitCommandRegistrar
{
    explicit QVKitCommandRegistrar(QVKitCommand command);
};

/**
 * A command's parsed arguments and its ways to answer: results on standard
 * output, diagnostics on standard error, and the exit statuses 0 (done),
 * 1 (the work failed) and 2 (the command line was wrong).
 */
class QVKitInvocation
{
public:
    enum Status { Success = 0, Failure = 1, UsageError = 2 };

    explicit QVKitInvocation(const QVKitCommand &command);

    /**
     * Reads the arguments after the command's name: "-name value",
     * "--name value", "-name=value" (a value may begin with "-" and may be
     * empty), flags, positional arguments, and "--" before positional
     * arguments that begin with "-". False with errorMessage() on a mistake.
     */
    bool parse(const QStringList &arguments);
    QString errorMessage() const { return m_error; }
    /** Whether -h, -help or --help was among the options. */
    bool helpRequested() const { return m_help; }

    const QVKitCommand &command() const { return m_command; }
    const QStringList &positional() const { return m_positional; }
    bool has(QStringView option) const;
    /** The option's value (its last one), or a null string when it was not given. */
    QString value(QStringView option) const;
    QStringList values(QStringView option) const;

    /** Writes to standard output as it is. */
    void out(const QString &text);
    void outBytes(const QByteArray &bytes);
    /** "qvkit COMMAND: message" on standard error; answers Failure. */
    int fail(const QString &message);
    /** "qvkit COMMAND: message" and the short usage on standard error; answers UsageError. */
    int usageError(const QString &message);
    /** A progress line on standard error, for work that takes a while. */
    void progress(const QString &message);
    /** A note on standard error that does not end the command. */
    void note(const QString &message);

    /**
     * The bytes of a file, or of standard input for "-". False, after saying
     * why on standard error, when it cannot be read.
     */
    bool readInput(const QString &path, QByteArray *bytes);

private:
    const QVKitCommand &m_command;
    QStringList m_positional;
    QHash<QString, QStringList> m_values;
    QString m_error;
    bool m_help = false;
};

/** The short usage of a command: "usage: qvkit …". */
QString qvkitShortUsage(const QVKitCommand &command);
/** The whole help of a command: usage, summary, options with their help, an example. */
QString qvkitCommandHelp(const QVKitCommand &command);
/** Writes text to standard error at once. */
void qvkitPrintError(const QString &text);
/** Writes text to standard output at once. */
void qvkitPrintOut(const QString &text);
