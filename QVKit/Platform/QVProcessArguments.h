#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QStringList>

/**
 * The process's own arguments, the program first: the application object's
 * when there is one, else read from the kernel (/proc/self/cmdline), so that
 * they are known before and without a QCoreApplication.
 */
QVKIT_EXPORT QStringList qv_process_arguments();

/** Splits the kernel's NUL-separated argument block; each argument read as UTF-8. */
QVKIT_EXPORT QStringList qv_arguments_from_cmdline(const QByteArray &cmdline);
