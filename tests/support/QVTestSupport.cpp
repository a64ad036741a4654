#include "support/QVTestSupport.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QEventLoop>
#include <QtCore/QThread>

namespace QVTest {

bool waitUntil(const std::function<bool()> &condition, std::chrono::milliseconds deadline)
{
    QDeadlineTimer timer(deadline);
    while (!condition()) {
        if (timer.hasExpired())
            return condition();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::yieldCurrentThread();
    }
    return true;
}

QString dataPath(const QString &relativePath)
{
    return QDir(QString::fromUtf8(QVKIT_TEST_DATA_DIR)).filePath(relativePath);
}

QString helperPath(const QString &name)
{
    return QDir(QString::fromUtf8(QVKIT_TEST_BINARY_DIR)).filePath(QStringLiteral("helpers/") + name);
}

QString temporaryHome()
{
    return qEnvironmentVariable("HOME");
}

} // namespace QVTest
