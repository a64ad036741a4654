#include "QVKit/Platform/QVLog.h"

#include <QtCore/QMutex>

#include <atomic>

using namespace Qt::StringLiterals;

void QVLogText(const QString &line)
{
    QMessageLogger().info().noquote() << line;
}

struct QVLogCapture::Private
{
    bool passThrough = false;
    QtMessageHandler previousHandler = nullptr;
    QVLogCapture *outer = nullptr;
    // Messages may arrive from worker threads while a test reads on the main
    // thread; this guard protects only the test's own list.
    mutable QMutex mutex;
    QStringList lines;
};

namespace {

std::atomic<QVLogCapture *> activeCapture{nullptr};

} // namespace

void QVLogCapture::handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    QVLogCapture *active = activeCapture.load();
    if (!active)
        return;
    Private *capture = active->d.get();
    {
        QMutexLocker locker(&capture->mutex);
        capture->lines.append(message);
    }
    if (capture->passThrough && capture->previousHandler)
        capture->previousHandler(type, context, message);
}

QVLogCapture::QVLogCapture(bool passThrough)
    : d(std::make_unique<Private>())
{
    d->passThrough = passThrough;
    d->outer = activeCapture.exchange(this);
    d->previousHandler = qInstallMessageHandler(handleMessage);
}

QVLogCapture::~QVLogCapture()
{
    activeCapture.store(d->outer);
    qInstallMessageHandler(d->previousHandler);
}

QStringList QVLogCapture::lines() const
{
    QMutexLocker locker(&d->mutex);
    return d->lines;
}

bool QVLogCapture::contains(const QString &line) const
{
    return lines().contains(line);
}

bool QVLogCapture::containsFragment(const QString &fragment) const
{
    const QStringList all = lines();
    return std::any_of(all.cbegin(), all.cend(),
                       [&](const QString &line) { return line.contains(fragment); });
}

void QVLogCapture::clear()
{
    QMutexLocker locker(&d->mutex);
    d->lines.clear();
}
