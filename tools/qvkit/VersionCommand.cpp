// qvkit version: the library version.

#include "QVKitCommand.h"

#include <QVKit/QVKitVersion.h>

using namespace Qt::StringLiterals;

namespace {

int run(QVKitInvocation &invocation)
{
    if (!invocation.positional().isEmpty())
        return invocation.usageError(u"unexpected argument \"%1\""_s.arg(invocation.positional().first()));
    invocation.out(u"qvkit %1\n"_s.arg(QString::fromLatin1(QVKIT_VERSION_STRING)));
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"version"_s,
    u"Print the library version."_s,
    u"version"_s,
    {},
    {},
    u"qvkit version"_s,
    run,
});

} // namespace
