#include "QVKit/Platform/QVAssert.h"

#include <QtCore/QFileInfo>
#include <QtCore/QString>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

QString qv_assert_report(const char *condition, const char *operation, const char *file, int line)
{
    const QString source = QFileInfo(QString::fromUtf8(file ? file : "")).completeBaseName();
    return u"*** Assertion failure in %1, %2:%3\n*** Condition not satisfied: %4"_s.arg(
        QString::fromUtf8(operation ? operation : "?"), source, QString::number(line),
        QString::fromUtf8(condition ? condition : "?"));
}

void qv_assert_failed(const char *condition, const char *operation, const char *file, int line) noexcept
{
    // Written straight to standard error rather than through the message
    // handler: a handler installed by the host must not be able to swallow it.
    const QByteArray report = qv_assert_report(condition, operation, file, line).toUtf8();
    std::fprintf(stderr, "%s\n", report.constData());
    std::fflush(stderr);
    std::abort();
}
