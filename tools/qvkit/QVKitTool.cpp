#include "QVKitTool.h"

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVPropertyListSerialization.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QLocale>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

#include <cstdio>
#include <memory>

using namespace Qt::StringLiterals;

QVKitTool::QVKitTool()
    : m_out(stdout)
    , m_err(stderr)
{
    m_commands = {
        {u"summary"_s, u"summary"_s, u"Describe the library, the platform and this run (the default)."_s, {},
         [this](const QVCommandLine &) { return printSummary(); }},
        {u"help"_s, u"help"_s, u"List the commands with a line on each."_s, {},
         [this](const QVCommandLine &) { return printHelp(); }},
        {u"version"_s, u"version"_s, u"Print the library version."_s, {},
         [this](const QVCommandLine &) { return printVersion(); }},
        {u"plist"_s, u"plist -file PATH"_s, u"Check a property list and print it in the library's XML form."_s,
         {u"file"_s}, [this](const QVCommandLine &commandLine) { return showPropertyList(commandLine); }},
        {u"defaults"_s, u"defaults read|write|delete [-key KEY] [-value TEXT] [-file PATH]"_s,
         u"Read, write or delete settings of the standard store (or of the store in PATH)."_s, {},
         [this](const QVCommandLine &commandLine) { return runDefaults(commandLine); }},
    };
}

int QVKitTool::run(const QStringList &arguments)
{
    const QVCommandLine commandLine(arguments);
    const QVCommandLineOptions options = commandLine.options().value_or(QVCommandLineOptions());

    if (commandLine.actions().isEmpty()) {
        if (options.contains(u"-help"_s) || options.contains(u"h"_s))
            return printHelp();
        if (options.contains(u"-version"_s))
            return printVersion();
        if (!options.isEmpty()) {
            m_err << "qvkit: unknown option -" << options.firstKey() << "\n\n";
            m_err.flush();
            printHelp();
            return 2;
        }
        return printSummary();
    }

    const QString name = commandLine.actions().first();
    for (const Command &command : std::as_const(m_commands)) {
        if (command.name != name)
            continue;
        const QStringList missing = commandLine.missingOptions(command.requiredOptions);
        if (!missing.isEmpty()) {
            m_err << "qvkit " << name << ": missing required option -" << missing.join(u", -"_s) << '\n'
                  << "usage: qvkit " << command.usage << '\n';
            m_err.flush();
            return 2;
        }
        return command.action(commandLine);
    }

    m_err << "qvkit: unknown command \"" << name << "\"\n\n";
    m_err.flush();
    printHelp();
    return 2;
}

int QVKitTool::printHelp()
{
    m_out << "Usage: qvkit [command] [-option value ...]\n\n"
          << "QVKit " << QVKIT_VERSION_STRING
          << ": application support for Qt desktop applications.\n\nCommands:\n";
    qsizetype width = 0;
    for (const Command &command : std::as_const(m_commands))
        width = qMax(width, command.name.size());
    for (const Command &command : std::as_const(m_commands))
        m_out << "  " << command.name.leftJustified(width + 2) << command.summary << '\n';
    m_out << "\nUsage of each command:\n";
    for (const Command &command : std::as_const(m_commands))
        m_out << "  qvkit " << command.usage << '\n';
    m_out << "\nOptions:\n"
          << "  --help      Same as the help command.\n"
          << "  --version   Same as the version command.\n"
          << "\nWith no command, qvkit prints the summary.\n";
    m_out.flush();
    return 0;
}

int QVKitTool::printVersion()
{
    m_out << "qvkit " << QVKIT_VERSION_STRING << '\n';
    m_out.flush();
    return 0;
}

int QVKitTool::printSummary()
{
    const QLocale locale = QLocale::system();
    const auto line = [this](const char *label, const QString &value) {
        m_out << QString::fromLatin1(label).leftJustified(14) << value << '\n';
    };
    m_out << "QVKit " << QVKIT_VERSION_STRING << '\n';
    line("Qt", QString::fromLatin1(qVersion()));
    line("System", QSysInfo::prettyProductName());
    line("Kernel", QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion());
    line("Architecture", QSysInfo::currentCpuArchitecture());
    line("Processors", QString::number(QThread::idealThreadCount()));
    line("Locale", locale.name());
    line("Application", QVBundle::applicationName());
    line("Identifier", QVBundle::bundleIdentifier());
    line("Settings", QVUserDefaults::standardUserDefaults()->filePath());
    m_out << "\nRun \"qvkit help\" for the list of commands.\n";
    m_out.flush();
    return 0;
}

int QVKitTool::showPropertyList(const QVCommandLine &commandLine)
{
    const QString path = optionValue(commandLine, u"file"_s);
    if (path.isEmpty())
        return fail(u"qvkit plist: -file needs a path"_s, 2);
    QVError error;
    const QVariant propertyList = QVPropertyListSerialization::propertyListWithContentsOfFile(path, &error);
    if (!propertyList.isValid())
        return fail(u"qvkit plist: %1: %2"_s.arg(path, error.localizedDescription()));
    m_out << QString::fromUtf8(QVPropertyListSerialization::dataWithPropertyList(propertyList));
    m_out.flush();
    return 0;
}

int QVKitTool::runDefaults(const QVCommandLine &commandLine)
{
    const QString verb = commandLine.actions().value(1, u"read"_s);
    const QString key = optionValue(commandLine, u"key"_s);
    const QString file = optionValue(commandLine, u"file"_s);

    std::unique_ptr<QVUserDefaults> ownStore;
    QVUserDefaults *store = QVUserDefaults::standardUserDefaults();
    if (!file.isEmpty()) {
        ownStore = std::make_unique<QVUserDefaults>(file);
        store = ownStore.get();
    }

    if (verb == u"read"_s) {
        const QVariant value = key.isEmpty() ? QVariant(store->dictionaryRepresentation()) : store->objectForKey(key);
        if (!value.isValid())
            return fail(u"qvkit defaults: no value for the key \"%1\""_s.arg(key));
        m_out << QString::fromUtf8(QVPropertyListSerialization::dataWithPropertyList(value));
        m_out.flush();
        return 0;
    }
    if (key.isEmpty())
        return fail(u"qvkit defaults %1: missing required option -key"_s.arg(verb), 2);
    if (verb == u"write"_s) {
        const QStringList values = commandLine.options().value_or(QVCommandLineOptions()).value(u"value"_s);
        if (values.isEmpty())
            return fail(u"qvkit defaults write: missing required option -value"_s, 2);
        store->setObject(values.join(u' '), key);
    } else if (verb == u"delete"_s) {
        store->removeObjectForKey(key);
    } else {
        return fail(u"qvkit defaults: unknown action \"%1\" (read, write or delete)"_s.arg(verb), 2);
    }
    if (!store->synchronize())
        return fail(u"qvkit defaults: could not write %1"_s.arg(store->filePath()));
    return 0;
}

QString QVKitTool::optionValue(const QVCommandLine &commandLine, const QString &name)
{
    const QStringList values = commandLine.options().value_or(QVCommandLineOptions()).value(name);
    return values.isEmpty() ? QString() : values.first();
}

int QVKitTool::fail(const QString &message, int status)
{
    m_err << message << '\n';
    m_err.flush();
    return status;
}
