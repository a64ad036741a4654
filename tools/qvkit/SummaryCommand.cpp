// qvkit summary (and qvkit alone): the library, the platform and this run.

#include "QVKitCommand.h"

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QLocale>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

using namespace Qt::StringLiterals;

namespace {

int run(QVKitInvocation &invocation)
{
    if (!invocation.positional().isEmpty())
        return invocation.usageError(u"unexpected argument \"%1\""_s.arg(invocation.positional().first()));
    QString text = u"QVKit %1\n"_s.arg(QString::fromLatin1(QVKIT_VERSION_STRING));
    const auto line = [&text](const QString &label, const QString &value) {
        text += label.leftJustified(14) + value + u'\n';
    };
    line(u"Qt"_s, QString::fromLatin1(qVersion()));
    line(u"System"_s, QSysInfo::prettyProductName());
    line(u"Kernel"_s, QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion());
    line(u"Architecture"_s, QSysInfo::currentCpuArchitecture());
    line(u"Processors"_s, QString::number(QThread::idealThreadCount()));
    line(u"Locale"_s, QLocale::system().name());
    line(u"Application"_s, QVBundle::applicationName());
    line(u"Identifier"_s, QVBundle::bundleIdentifier());
    line(u"Settings"_s, QVUserDefaults::standardUserDefaults()->filePath());
    text += u"\nRun \"qvkit help\" for the list of commands.\n"_s;
    invocation.out(text);
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"summary"_s,
    u"Describe the library, the platform and this run (the default)."_s,
    u"summary"_s,
    {},
    {},
    u"qvkit summary"_s,
    run,
});

} // namespace
