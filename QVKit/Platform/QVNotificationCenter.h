#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>

#include <functional>

/** A named event with the object it concerns and a dictionary of details. */
struct QVNotification
{
    QString name;
    /** The object the event concerns, compared by address only; may be null. */
    const QObject *object = nullptr;
    QVariantMap userInfo;
};

Q_DECLARE_METATYPE(QVNotification)

/**
 * Delivers named notifications to the observers that asked for them.
 *
 * Posting is synchronous: every matching observer has run, in the order it
 * was added, before postNotification() returns, on the posting thread. An
 * observer lives until its connection is removed or its context object is
 * destroyed, so observers never outlive what they capture.
 */
class QVKIT_EXPORT QVNotificationCenter : public QObject
{
    Q_OBJECT

public:
    using Observer = std::function<void(const QVNotification &notification)>;

    /** The process-wide centre, made on first use. */
    static QVNotificationCenter *defaultCenter();

    explicit QVNotificationCenter(QObject *parent = nullptr);
    ~QVNotificationCenter() override;

    void postNotification(const QVNotification &notification);
    void postNotificationName(const QString &name, const QObject *object = nullptr,
                              const QVariantMap &userInfo = {});

    /**
     * Calls the observer for each notification whose name equals name (any
     * name when it is empty) and whose object is object (any object when it
     * is null). Answers the connection to give to removeObserver().
     */
    QMetaObject::Connection addObserver(const QString &name, const QObject *object,
                                        const QObject *context, Observer observer);

    static bool removeObserver(const QMetaObject::Connection &connection);

Q_SIGNALS:
    /** Every notification posted here, for observers that filter for themselves. */
    void notificationPosted(const QVNotification &notification);
};
