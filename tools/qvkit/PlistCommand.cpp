// qvkit plist [PATH|-] [-file PATH]: checks a property list and prints it in
// the library's XML form.

#include "QVKitCommand.h"

#include <QVKit/Platform/QVPropertyListSerialization.h>

using namespace Qt::StringLiterals;

namespace {

int run(QVKitInvocation &invocation)
{
    const QStringList &positional = invocation.positional();
    if (positional.size() > 1)
        return invocation.usageError(u"unexpected argument \"%1\""_s.arg(positional.at(1)));
    if (!positional.isEmpty() && invocation.has(u"file"))
        return invocation.usageError(u"give the path once: as an argument or with -file, not both"_s);
    const QString path = invocation.has(u"file") ? invocation.value(u"file") : positional.value(0);
    if (path.isEmpty())
        return invocation.usageError(u"missing path (\"-\" reads standard input)"_s);

    QByteArray data;
    if (!invocation.readInput(path, &data))
        return QVKitInvocation::Failure;
    QVError error;
    const QVariant propertyList = QVPropertyListSerialization::propertyListWithData(data, &error);
    if (!propertyList.isValid()) {
        const QString label = path == u"-"_s ? u"standard input"_s : path;
        return invocation.fail(u"%1: %2"_s.arg(label, error.localizedDescription()));
    }
    invocation.outBytes(QVPropertyListSerialization::dataWithPropertyList(propertyList));
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"plist"_s,
    u"Check a property list and print it in the library's XML form."_s,
    u"plist PATH|- [-file PATH]"_s,
    {},
    {{u"file"_s, u"PATH"_s, u"The property list to read (the same as giving PATH)."_s, false, true}},
    u"qvkit plist ~/.config/com.example.Notes.plist"_s,
    run,
});

} // namespace
