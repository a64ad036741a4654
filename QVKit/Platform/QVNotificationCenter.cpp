#include "QVKit/Platform/QVNotificationCenter.h"

QVNotificationCenter *QVNotificationCenter::defaultCenter()
{
    // Deliberately never destroyed: observers may post while other statics
    // are being torn down at exit.
    static auto *center = new QVNotificationCenter;
    return center;
}

QVNotificationCenter::QVNotificationCenter(QObject *parent)
    : QObject(parent)
{
}

QVNotificationCenter::~QVNotificationCenter() = default;

void QVNotificationCenter::postNotification(const QVNotification &notification)
{
    Q_EMIT notificationPosted(notification);
}

void QVNotificationCenter::postNotificationName(const QString &name, const QObject *object,
                                                const QVariantMap &userInfo)
{
    postNotification(QVNotification{name, object, userInfo});
}

QMetaObject::Connection QVNotificationCenter::addObserver(const QString &name, const QObject *object,
                                                          const QObject *context, Observer observer)
{
    if (!observer)
        return {};
    auto filtered = [name, object, observer = std::move(observer)](const QVNotification &notification) {
        if (!name.isEmpty() && notification.name != name)
            return;
        if (object && notification.object != object)
            return;
        observer(notification);
    };
    // Direct even across threads: a notification is delivered before posting returns.
    return connect(this, &QVNotificationCenter::notificationPosted, context ? context : this,
                   std::move(filtered), Qt::DirectConnection);
}

bool QVNotificationCenter::removeObserver(const QMetaObject::Connection &connection)
{
    return QObject::disconnect(connection);
}
