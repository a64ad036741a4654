#pragma once

#include <QtCore/QStringList>
#include <QtCore/QTextStream>

#include <functional>

/**
 * The qvkit command-line tool: a table of commands, each a leading word with
 * a one-line summary, and the help, version and summary output.
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
        QString summary;
        std::function<int(const QStringList &arguments)> action;
    };

    int printHelp();
    int printVersion();
    int printSummary();

    QList<Command> m_commands;
    QTextStream m_out;
    QTextStream m_err;
};
