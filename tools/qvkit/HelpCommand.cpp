// qvkit help [COMMAND]: the command list, or one command's own help.

#include "QVKitCommand.h"

#include <QVKit/QVKitVersion.h>

using namespace Qt::StringLiterals;

namespace {

QString commandList()
{
    QString text = u"Usage: qvkit [COMMAND] [OPTIONS]\n\nQVKit %1: application support for Qt desktop "
                   u"applications.\n\nCommands:\n"_s.arg(QString::fromLatin1(QVKIT_VERSION_STRING));
    const QList<const QVKitCommand *> commands = QVKitCommandRegistry::commands();
    qsizetype width = 0;
    for (const QVKitCommand *command : commands)
        width = std::max(width, command->name.size());
    for (const QVKitCommand *command : commands)
        text += u"  %1  %2\n"_s.arg(command->name.leftJustified(width), command->summary);
    text += u"\nOptions:\n"
            u"  --help      Show this list; \"qvkit help COMMAND\" or \"qvkit COMMAND --help\" shows a command's own.\n"
            u"  --version   Show the library version.\n"
            u"\nWith no command, qvkit prints the summary. Exit status: 0 done, 1 the work failed, 2 a usage "
            u"error.\n"_s;
    return text;
}

int run(QVKitInvocation &invocation)
{
    const QStringList &names = invocation.positional();
    if (names.size() > 1)
        return invocation.usageError(u"one command at a time, not %1"_s.arg(names.size()));
    if (names.isEmpty()) {
        invocation.out(commandList());
        return QVKitInvocation::Success;
    }
    const QVKitCommand *command = QVKitCommandRegistry::find(names.first());
    if (!command)
        return invocation.usageError(u"unknown command \"%1\""_s.arg(names.first()));
    invocation.out(qvkitCommandHelp(*command));
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"help"_s,
    u"List the commands, or show one command's usage, options and an example."_s,
    u"help [COMMAND]"_s,
    {},
    {},
    u"qvkit help defaults"_s,
    run,
});

} // namespace
