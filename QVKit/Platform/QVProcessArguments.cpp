#include "QVKit/Platform/QVProcessArguments.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

QStringList qv_arguments_from_cmdline(const QByteArray &cmdline)
{
    QStringList arguments;
    qsizetype start = 0;
    while (start < cmdline.size()) {
        qsizetype end = cmdline.indexOf('\0', start);
        if (end < 0)
            end = cmdline.size();
        arguments.append(QString::fromUtf8(cmdline.constData() + start, end - start));
        start = end + 1;
    }
    return arguments;
}

QStringList qv_process_arguments()
{
    if (QCoreApplication::instance())
        return QCoreApplication::arguments();
    QFile file(QStringLiteral("/proc/self/cmdline"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return qv_arguments_from_cmdline(file.readAll());
}
