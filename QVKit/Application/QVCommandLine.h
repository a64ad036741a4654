#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <initializer_list>
#include <optional>

/** Option names mapped to the values that followed them, in name order. */
using QVCommandLineOptions = QMap<QString, QStringList>;

/**
 * A program's launch arguments split into the launch path, the leading words
 * (actions) and the dash-prefixed options with their values.
 *
 * "build -v -o out.txt extra" has the action "build", the option "v" with no
 * values and the option "o" with "out.txt" and "extra". An option's name is
 * the argument without its first character only, so "--verbose" names the
 * option "-verbose". Actions are an empty list when there are none; options
 * are absent (std::nullopt) when there are none, so a caller can tell "no
 * options given" from any dictionary.
 */
class QVKIT_EXPORT QVCommandLine
{
public:
    /** Parses the process's own arguments. */
    QVCommandLine();
    /** Parses the given arguments, the first being the launch path; std::nullopt parses the process's own. */
    explicit QVCommandLine(const std::optional<QStringList> &arguments);
    /** Parses the given arguments, the first being the launch path; an empty list has none. */
    explicit QVCommandLine(const QStringList &arguments)
        : QVCommandLine(std::optional<QStringList>(arguments))
    {
    }
    /** QVCommandLine({u"tool"_s, u"build"_s, u"-v"_s}). */
    QVCommandLine(std::initializer_list<QString> arguments)
        : QVCommandLine(QStringList(arguments))
    {
    }
    /** A command line of the launch path alone. */
    explicit QVCommandLine(const QString &launchPath)
        : QVCommandLine(QStringList{launchPath})
    {
    }

    /** The process's own command line, parsed once on first use. */
    static const QVCommandLine &commandLine();
    static QVCommandLine commandLineFromArgc(int argc, const char *const *argv);

    /** Each C string read as UTF-8; std::nullopt when there are none. */
    static std::optional<QStringList> argumentsFromArgc(int argc, const char *const *argv);
    /** The options of an argument list; std::nullopt when there would be none. */
    static std::optional<QVCommandLineOptions> optionsDictionaryFromArgumentArray(const QStringList &arguments);

    QString launchPath() const { return m_launchPath; }
    /** Every argument after the launch path. */
    QStringList arguments() const { return m_arguments; }
    QStringList actions() const { return m_actions; }
    std::optional<QVCommandLineOptions> options() const { return m_options; }

    /** True when every required action was given and every required option named. */
    bool validForActions(const QStringList &requiredActions, const QStringList &requiredOptions) const;
    /** As above; with printDebug, logs what is missing ("Required actions missing: …"). */
    bool validForActions(const QStringList &requiredActions, const QStringList &requiredOptions,
                         bool printDebug) const;

    /** The actions among the required ones that were not given, in the order required. */
    QStringList missingActions(const QStringList &requiredActions) const;
    /** The option names among the required ones that were not given, in the order required. */
    QStringList missingOptions(const QStringList &requiredOptions) const;

    /** "QVCommandLine <address>:\nlaunch path: …\narguments: …\nactions: …\noptions: …". */
    QString description() const;

private:
    QString m_launchPath;
    QStringList m_arguments;
    QStringList m_actions;
    std::optional<QVCommandLineOptions> m_options;
};
