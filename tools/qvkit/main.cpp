// qvkit: shows the library at work from the command line. Each command lives
// in its own file and adds itself to the registry (QVKitCommand.h); this file
// only finds the command and runs it.

#include "QVKitCommand.h"
#include "QVKitCompletion.h"

#include <QtCore/QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

QtMessageHandler previousHandler = nullptr;

// The tool reports every failure itself, naming what failed and which file;
// the library's own diagnostics would only repeat that in other words. They
// show with QVKIT_DEBUG=1 or when QT_LOGGING_RULES asks for them.
void quietMessageHandler(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtFatalMsg && previousHandler)
        previousHandler(type, context, message);
}

int generalUsageError(const QString &message)
{
    qvkitPrintError(u"qvkit: %1\nusage: qvkit [COMMAND] [OPTIONS]  (\"qvkit help\" lists the commands)\n"_s.arg(message));
    return QVKitInvocation::UsageError;
}

int runCommand(const QVKitCommand &command, const QStringList &arguments)
{
    QVKitInvocation invocation(command);
    if (!invocation.parse(arguments))
        return invocation.usageError(invocation.errorMessage());
    if (invocation.helpRequested()) {
        qvkitPrintOut(qvkitCommandHelp(command));
        return QVKitInvocation::Success;
    }
    return command.run(invocation);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (qEnvironmentVariableIsEmpty("QVKIT_DEBUG") && qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        previousHandler = qInstallMessageHandler(quietMessageHandler);

    QStringList arguments = QCoreApplication::arguments().mid(1);
    QString name = arguments.isEmpty() ? u"summary"_s : arguments.takeFirst();
    if (name == u"-h"_s || name == u"-help"_s || name == u"--help"_s)
        name = u"help"_s;
    else if (name == u"-version"_s || name == u"--version"_s)
        name = u"version"_s;
    else if (name == u"--completion"_s)
        return qvkitPrintCompletion(arguments);
    else if (name.startsWith(u'-'))
        return generalUsageError(u"unknown option %1"_s.arg(name));

    const QVKitCommand *command = QVKitCommandRegistry::find(name);
    if (!command)
        return generalUsageError(u"unknown command \"%1\""_s.arg(name));
    return runCommand(*command, arguments);
}
