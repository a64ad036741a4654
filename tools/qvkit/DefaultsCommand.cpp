// qvkit defaults read|write|delete: reads and changes a settings store, the
// application's standard one or the one in -file.

#include "QVKitCommand.h"

#include <QVKit/Platform/QVPropertyListSerialization.h>
#include <QVKit/Platform/QVUserDefaults.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Writes what changed and says what happened to a damaged file on the way.
int write(QVKitInvocation &invocation, QVUserDefaults &store)
{
    if (!store.synchronize())
        return invocation.fail(u"cannot write %1: %2"_s.arg(store.filePath(), store.errorString()));
    if (!store.recoveredFilePath().isEmpty()) {
        invocation.note(u"%1 was damaged; kept it as %2 and wrote a new store"_s.arg(store.filePath(),
                                                                                   store.recoveredFilePath()));
    }
    return QVKitInvocation::Success;
}

int run(QVKitInvocation &invocation)
{
    const QStringList &positional = invocation.positional();
    if (positional.isEmpty())
        return invocation.usageError(u"missing action (read, write or delete)"_s);
    const QString action = positional.first();
    if (action != u"read"_s && action != u"write"_s && action != u"delete"_s)
        return invocation.usageError(u"unknown action \"%1\" (read, write or delete)"_s.arg(action));
    if (positional.size() > 1)
        return invocation.usageError(u"unexpected argument \"%1\""_s.arg(positional.at(1)));
    const QString key = invocation.value(u"key");
    if (invocation.has(u"key") && key.isEmpty())
        return invocation.usageError(u"-key needs a non-empty key"_s);
    if (action != u"read"_s && !invocation.has(u"key"))
        return invocation.usageError(u"%1 needs -key"_s.arg(action));
    if (action == u"write"_s && !invocation.has(u"value"))
        return invocation.usageError(u"write needs -value"_s);
    if (action != u"write"_s && invocation.has(u"value"))
        return invocation.usageError(u"%1 takes no -value"_s.arg(action));

    std::unique_ptr<QVUserDefaults> ownStore;
    QVUserDefaults *store = QVUserDefaults::standardUserDefaults();
    if (invocation.has(u"file")) {
        if (invocation.value(u"file").isEmpty())
            return invocation.usageError(u"-file needs a path"_s);
        ownStore = std::make_unique<QVUserDefaults>(invocation.value(u"file"));
        store = ownStore.get();
    }

    if (action == u"write"_s) {
        store->setObject(invocation.value(u"value"), key);
        return write(invocation, *store);
    }
    // Reading or deleting needs a store that reads; a damaged one is reported, not taken for empty.
    if (store->status() != QVUserDefaults::Status::NoError)
        return invocation.fail(store->errorString());
    const QVariant value = key.isNull() ? QVariant(store->persistentDictionary()) : store->objectForKey(key);
    if (!value.isValid())
        return invocation.fail(u"no value for the key \"%1\" in %2"_s.arg(key, store->filePath()));
    if (action == u"delete"_s) {
        store->removeObjectForKey(key);
        return write(invocation, *store);
    }
    if (value.typeId() == QMetaType::QString)
        invocation.out(value.toString() + u'\n');
    else
        invocation.outBytes(QVPropertyListSerialization::dataWithPropertyList(value));
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"defaults"_s,
    u"Read, write or delete settings of the standard store (or of the store in PATH)."_s,
    u"defaults read|write|delete [-key KEY] [-value TEXT] [-file PATH]"_s,
    {u"read"_s, u"write"_s, u"delete"_s},
    {
        {u"key"_s, u"KEY"_s, u"The setting: read prints its value alone; write and delete need it."_s},
        {u"value"_s, u"TEXT"_s, u"The text write stores (\"\" is an empty text)."_s},
        {u"file"_s, u"PATH"_s, u"A store file to use instead of the application's standard one."_s, false, true},
    },
    u"qvkit defaults write -key Greeting -value \"hello\" -file /tmp/settings.plist"_s,
    run,
});

} // namespace
