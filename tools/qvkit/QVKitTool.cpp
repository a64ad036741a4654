#include "QVKitTool.h"

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QLocale>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

#include <cstdio>

using namespace Qt::StringLiterals;

QVKitTool::QVKitTool()
    : m_out(stdout)
    , m_err(stderr)
{
    m_commands = {
        {u"help"_s, u"List the commands with a line on each."_s,
         [this](const QStringList &) { return printHelp(); }},
        {u"version"_s, u"Print the library version."_s,
         [this](const QStringList &) { return printVersion(); }},
        {u"summary"_s, u"Describe the library, the platform and this run (the default)."_s,
         [this](const QStringList &) { return printSummary(); }},
    };
}

int QVKitTool::run(const QStringList &arguments)
{
    const QStringList rest = arguments.mid(1);
    if (rest.isEmpty())
        return printSummary();

    const QString &first = rest.first();
    if (first == u"--help"_s || first == u"-h"_s)
        return printHelp();
    if (first == u"--version"_s)
        return printVersion();

    for (const Command &command : std::as_const(m_commands)) {
        if (command.name == first)
            return command.action(rest.mid(1));
    }

    m_err << "qvkit: unknown command \"" << first << "\"\n\n";
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
    line("Locale", locale.name() + u" ("_s + locale.nativeLanguageName() + u')');
    line("Application", QVBundle::applicationName());
    line("Identifier", QVBundle::bundleIdentifier());
    line("Settings", QVUserDefaults::standardUserDefaults()->filePath());
    m_out << "\nRun \"qvkit help\" for the list of commands.\n";
    m_out.flush();
    return 0;
}
