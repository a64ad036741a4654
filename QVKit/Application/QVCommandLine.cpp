#include "QVKit/Application/QVCommandLine.h"

#include "QVKit/Platform/QVLog.h"
#include "QVKit/Platform/QVProcessArguments.h"

using namespace Qt::StringLiterals;

namespace {

QString describeOptions(const std::optional<QVCommandLineOptions> &options)
{
    if (!options)
        return u"(null)"_s;
    QVariantMap map;
    for (auto it = options->cbegin(); it != options->cend(); ++it)
        map.insert(it.key(), it.value());
    return QVDescription(map);
}

} // namespace

QVCommandLine::QVCommandLine()
    : QVCommandLine(std::nullopt)
{
}

QVCommandLine::QVCommandLine(const std::optional<QStringList> &arguments)
{
    const QStringList all = arguments ? *arguments : qv_process_arguments();
    if (all.isEmpty())
        return;
    m_launchPath = all.first();
    m_arguments = all.mid(1);

    qsizetype firstOption = 0;
    while (firstOption < m_arguments.size() && !m_arguments[firstOption].startsWith(u'-'))
        ++firstOption;
    m_actions = m_arguments.first(firstOption);
    m_options = optionsDictionaryFromArgumentArray(m_arguments.sliced(firstOption));
}

const QVCommandLine &QVCommandLine::commandLine()
{
    static const QVCommandLine shared;
    return shared;
}

QVCommandLine QVCommandLine::commandLineFromArgc(int argc, const char *const *argv)
{
    return QVCommandLine(argumentsFromArgc(argc, argv).value_or(QStringList()));
}

std::optional<QStringList> QVCommandLine::argumentsFromArgc(int argc, const char *const *argv)
{
    if (argc <= 0 || !argv)
        return std::nullopt;
    QStringList arguments;
    arguments.reserve(argc);
    for (int i = 0; i < argc && argv[i]; ++i)
        arguments.append(QString::fromUtf8(argv[i]));
    if (arguments.isEmpty())
        return std::nullopt;
    return arguments;
}

std::optional<QVCommandLineOptions> QVCommandLine::optionsDictionaryFromArgumentArray(const QStringList &arguments)
{
    QVCommandLineOptions options;
    QString current;
    for (const QString &argument : arguments) {
        if (argument.startsWith(u'-')) {
            // One dash comes off, not all: "--long" names the option "-long".
            const QString name = argument.mid(1);
            if (name.isEmpty())
                continue; // a lone "-" leaves the current option as it was
            if (options.contains(name))
                QVLog("Option %@ appears earlier.", name);
            else
                options.insert(name, QStringList());
            current = name;
        } else if (!current.isNull()) {
            options[current].append(argument);
        }
    }
    if (options.isEmpty())
        return std::nullopt;
    return options;
}

QStringList QVCommandLine::missingActions(const QStringList &requiredActions) const
{
    QStringList missing;
    for (const QString &action : requiredActions) {
        if (!m_actions.contains(action))
            missing.append(action);
    }
    return missing;
}

QStringList QVCommandLine::missingOptions(const QStringList &requiredOptions) const
{
    QStringList missing;
    for (const QString &name : requiredOptions) {
        if (!m_options || !m_options->contains(name))
            missing.append(name);
    }
    return missing;
}

bool QVCommandLine::validForActions(const QStringList &requiredActions, const QStringList &requiredOptions) const
{
    return validForActions(requiredActions, requiredOptions, false);
}

bool QVCommandLine::validForActions(const QStringList &requiredActions, const QStringList &requiredOptions,
                                    bool printDebug) const
{
    const QStringList actions = missingActions(requiredActions);
    const QStringList options = missingOptions(requiredOptions);
    if (printDebug && !actions.isEmpty())
        QVLog("Required actions missing: %@", QVariant(actions));
    if (printDebug && !options.isEmpty())
        QVLog("Required options missing: %@", QVariant(options));
    return actions.isEmpty() && options.isEmpty();
}

QString QVCommandLine::description() const
{
    return QVFormat("%@ %p:\nlaunch path: %@\narguments: %@\nactions: %@\noptions: %@", u"QVCommandLine"_s,
                    static_cast<const void *>(this), m_launchPath, QVariant(m_arguments), QVariant(m_actions),
                    describeOptions(m_options));
}
