#include "QVKitCommand.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cstdio>
#include <map>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// Sorted by name, so help and completion do not depend on the order in which
// the command files happened to be linked.
std::map<QString, QVKitCommand> &registry()
{
    static std::map<QString, QVKitCommand> commands;
    return commands;
}

void write(FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// "-key KEY" or "-verbose", as usage lines and help show an option.
QString optionSynopsis(const QVKitOption &option)
{
    return option.valueName.isEmpty() ? u'-' + option.name : u'-' + option.name + u' ' + option.valueName;
}

} // namespace

const QVKitOption *QVKitCommand::option(QStringView name) const
{
    const auto it = std::find_if(options.cbegin(), options.cend(),
                                 [&](const QVKitOption &option) { return option.name == name; });
    return it == options.cend() ? nullptr : &*it;
}

QList<const QVKitCommand *> QVKitCommandRegistry::commands()
{
    QList<const QVKitCommand *> result;
    for (const auto &[name, command] : registry())
        result.append(&command);
    return result;
}

const QVKitCommand *QVKitCommandRegistry::find(QStringView name)
{
    const auto it = registry().find(name.toString());
    return it == registry().end() ? nullptr : &it->second;
}

QVKitCommandRegistrar::QVKitCommandRegistrar(QVKitCommand command)
{
    const QString name = command.name;
    registry().emplace(name, std::move(command));
}

QVKitInvocation::QVKitInvocation(const QVKitCommand &command)
    : m_command(command)
{
}

bool QVKitInvocation::parse(const QStringList &arguments)
{
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == u"--"_s) {
            m_positional += arguments.mid(i + 1);
            break;
        }
        // A lone "-" is a positional argument: standard input.
        if (!argument.startsWith(u'-') || argument.size() == 1) {
            m_positional.append(argument);
            continue;
        }
        QStringView name = QStringView(argument).sliced(argument.startsWith(u"--"_s) ? 2 : 1);
        std::optional<QString> inlineValue;
        if (const qsizetype equals = name.indexOf(u'='); equals >= 0) {
            inlineValue = name.sliced(equals + 1).toString();
            name = name.first(equals);
        }
        if (name == u"h" || name == u"help") {
            m_help = true;
            continue;
        }
        const QVKitOption *option = m_command.option(name);
        if (!option) {
            m_error = u"unknown option %1"_s.arg(argument.section(u'=', 0, 0));
            return false;
        }
        const QString key = option->name;
        if (m_values.contains(key) && !option->repeatable) {
            m_error = u"option -%1 given more than once"_s.arg(key);
            return false;
        }
        QStringList &values = m_values[key];
        if (option->valueName.isEmpty()) {
            if (inlineValue) {
                m_error = u"option -%1 takes no value"_s.arg(key);
                return false;
            }
            continue;
        }
        if (inlineValue) {
            values.append(*inlineValue);
        } else if (i + 1 < arguments.size()) {
            // The next argument is the value whatever it looks like: "-5" and "" included.
            values.append(arguments.at(++i));
        } else {
            m_error = u"option -%1 needs a value (%2)"_s.arg(key, option->valueName);
            return false;
        }
    }
    return true;
}

bool QVKitInvocation::has(QStringView option) const
{
    return m_values.contains(option.toString());
}

QString QVKitInvocation::value(QStringView option) const
{
    const QStringList list = m_values.value(option.toString());
    return list.isEmpty() ? QString() : list.last();
}

QStringList QVKitInvocation::values(QStringView option) const
{
    return m_values.value(option.toString());
}

void QVKitInvocation::out(const QString &text)
{
    qvkitPrintOut(text);
}

void QVKitInvocation::outBytes(const QByteArray &bytes)
{
    write(stdout, bytes);
}

int QVKitInvocation::fail(const QString &message)
{
    note(message);
    return Failure;
}

int QVKitInvocation::usageError(const QString &message)
{
    qvkitPrintError(u"qvkit %1: %2\n%3\n"_s.arg(m_command.name, message, qvkitShortUsage(m_command)));
    return UsageError;
}

void QVKitInvocation::progress(const QString &message)
{
    note(message + u"\u2026"_s);
}

void QVKitInvocation::note(const QString &message)
{
    qvkitPrintError(u"qvkit %1: %2\n"_s.arg(m_command.name, message));
}

bool QVKitInvocation::readInput(const QString &path, QByteArray *bytes)
{
    QFile file;
    const bool standardInput = path == u"-"_s;
    const QString label = standardInput ? u"standard input"_s : path;
    const bool opened = standardInput ? file.open(STDIN_FILENO, QIODevice::ReadOnly)
                                      : (file.setFileName(path), file.open(QIODevice::ReadOnly));
    if (opened)
        *bytes = file.readAll();
    if (!opened || file.error() != QFileDevice::NoError) {
        fail(u"cannot read %1: %2"_s.arg(label, file.errorString()));
        return false;
    }
    return true;
}

QString qvkitShortUsage(const QVKitCommand &command)
{
    return u"usage: qvkit "_s + command.usage;
}

QString qvkitCommandHelp(const QVKitCommand &command)
{
    QString text = u"Usage: qvkit %1\n\n%2\n"_s.arg(command.usage, command.summary);
    qsizetype width = 0;
    for (const QVKitOption &option : command.options)
        width = std::max(width, optionSynopsis(option).size());
    text += u"\nOptions:\n"_s;
    for (const QVKitOption &option : command.options)
        text += u"  %1  %2\n"_s.arg(optionSynopsis(option).leftJustified(width), option.help);
    text += u"  %1  %2\n"_s.arg(u"--help"_s.leftJustified(width), u"Show this help."_s);
    text += u"\nOptions take one dash or two (-key, --key); a value follows as the next\n"
            u"argument or after \"=\" (-value=-5), and may begin with a dash.\n"_s;
    text += u"\nExample:\n  %1\n"_s.arg(command.example);
    return text;
}

void qvkitPrintError(const QString &text)
{
    write(stderr, text.toUtf8());
}

void qvkitPrintOut(const QString &text)
{
    write(stdout, text.toUtf8());
}
