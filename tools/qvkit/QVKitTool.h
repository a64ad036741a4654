#pragma once

#include <QVKit/Application/QVCommandLine.h>

#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include <functional>

class QVUserDefaults;

/**
 * The qvkit command-line tool. A command is the first leading word; options
 * follow with a dash and their values ("qvkit defaults write -key K -value V").
 * Each command declares the options it cannot do without, so that a missing
 * one is reported by name before the command runs.
 */
class QVKitTool
{
public:
    QVKitTool();

    /** Runs the command the arguments name (the first one is the program) and answers the exit status. */
    int run(const QStringList &arguments);

private:
    struct Command
    {
        QString name;
        QString usage;
        QString summary;
        QStringList requiredOptions;
        std::function<int(const QVCommandLine &commandLine)> action;
    };

    int printHelp();
    int printVersion();
    int printSummary();
    int showPropertyList(const QVCommandLine &commandLine);
    int runDefaults(const QVCommandLine &commandLine);
    /**
     * Decodes standard input (or -file) strictly as UTF-8, runs one text view
     * command over all of it in a QVHeadlessTextView and writes the text to
     * standard output; invalid input writes nothing there.
     */
    int runTransform(const QVCommandLine &commandLine);

    /** The first value of an option, or a null string when it has none. */
    static QString optionValue(const QVCommandLine &commandLine, const QString &name);
    int fail(const QString &message, int status = 1);

    QList<Command> m_commands;
    QTextStream m_out;
    QTextStream m_err;
};
