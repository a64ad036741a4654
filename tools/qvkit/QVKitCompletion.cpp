#include "QVKitCompletion.h"

#include "QVKitCommand.h"

using namespace Qt::StringLiterals;

namespace {

QStringList dashed(const QVKitCommand &command, bool paths)
{
    QStringList result;
    for (const QVKitOption &option : command.options) {
        if (!paths || option.isPath)
            result.append(u'-' + option.name);
    }
    return result;
}

QStringList commandNames()
{
    QStringList names;
    for (const QVKitCommand *command : QVKitCommandRegistry::commands())
        names.append(command->name);
    return names;
}

QString bashScript()
{
    QString cases;
    for (const QVKitCommand *command : QVKitCommandRegistry::commands()) {
        QStringList options = dashed(*command, false);
        options.append(u"--help"_s);
        cases += u"        %1)\n            options=\"%2\"\n            actions=\"%3\"\n            paths=\"%4\"\n"
                 u"            ;;\n"_s.arg(command->name, options.join(u' '), command->actions.join(u' '),
                                         dashed(*command, true).join(u' '));
    }
    return uR"(# bash completion for qvkit; made by "qvkit --completion bash" from its command list.
_qvkit()
{
    local cur="${COMP_WORDS[COMP_CWORD]}"
    local prev="${COMP_WORDS[COMP_CWORD-1]}"
    if [ "$COMP_CWORD" -eq 1 ]; then
        COMPREPLY=($(compgen -W "%1 --help --version" -- "$cur"))
        return
    fi
    local options="" actions="" paths=""
    case "${COMP_WORDS[1]}" in
%2    esac
    local path
    for path in $paths; do
        if [ "$prev" = "$path" ] || [ "$prev" = "-$path" ]; then
            COMPREPLY=($(compgen -f -- "$cur"))
            return
        fi
    done
    if [[ "$cur" == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [ "$COMP_CWORD" -eq 2 ] && [ -n "$actions" ]; then
        COMPREPLY=($(compgen -W "$actions" -- "$cur"))
    else
        COMPREPLY=($(compgen -f -- "$cur"))
    fi
}
complete -F _qvkit qvkit
)"_s.arg(commandNames().join(u' '), cases);
}

// zsh's _describe and _arguments read ':' and brackets as separators.
QString zshEscaped(QString text)
{
    return text.replace(u'\\', u"\\\\"_s).replace(u':', u"\\:"_s).replace(u'[', u"\\["_s).replace(u']', u"\\]"_s)
        .replace(u'\'', u"'\\''"_s);
}

QString zshScript()
{
    QString descriptions;
    QString cases;
    for (const QVKitCommand *command : QVKitCommandRegistry::commands()) {
        descriptions += u"        '%1:%2'\n"_s.arg(command->name, zshEscaped(command->summary));
        QStringList specs;
        for (const QVKitOption &option : command->options) {
            QString spec = u"'-%1[%2]"_s.arg(option.name, zshEscaped(option.help));
            if (!option.valueName.isEmpty())
                spec += u":%1:%2"_s.arg(option.valueName.toLower(), option.isPath ? u"_files"_s : QString());
            specs.append(spec + u'\'');
        }
        if (!command->actions.isEmpty())
            specs.append(u"'1:action:(%1)'"_s.arg(command->actions.join(u' ')));
        specs.append(u"'*:file:_files'"_s);
        cases += u"        %1)\n            _arguments %2\n            ;;\n"_s.arg(command->name, specs.join(u' '));
    }
    return uR"(#compdef qvkit
# zsh completion for qvkit; made by "qvkit --completion zsh" from its command list.
_qvkit() {
    local -a commands
    commands=(
%1    )
    if (( CURRENT == 2 )); then
        _describe 'command' commands
        return
    fi
    local command=$words[2]
    shift words
    (( CURRENT-- ))
    case $command in
%2    esac
}
_qvkit "$@"
)"_s.arg(descriptions, cases);
}

} // namespace

int qvkitPrintCompletion(const QStringList &arguments)
{
    const QString shell = arguments.value(0);
    if (arguments.size() != 1 || (shell != u"bash"_s && shell != u"zsh"_s)) {
        qvkitPrintError(u"qvkit: --completion needs a shell, bash or zsh\nusage: qvkit --completion bash|zsh\n"_s);
        return QVKitInvocation::UsageError;
    }
    qvkitPrintOut(shell == u"bash"_s ? bashScript() : zshScript());
    return QVKitInvocation::Success;
}
