#include "QVKit/Platform/QVDispatch.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

bool qv_is_main_thread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return !application || QThread::currentThread() == application->thread();
}

void qv_dispatch_sync_safely_on_main_queue(const std::function<void()> &block)
{
    if (!block)
        return;
    if (qv_is_main_thread()) {
        block();
        return;
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(), block, Qt::BlockingQueuedConnection);
}
