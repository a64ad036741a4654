#include <QVKit/Platform/QVNotificationCenter.h>

#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

TEST(QVNotificationCenterTest, ObserversFilterByNameAndObject)
{
    QVNotificationCenter center;
    QObject sender;
    QObject other;
    QObject context;
    QStringList seen;
    const auto record = [&seen](const QString &tag) {
        return [&seen, tag](const QVNotification &notification) { seen.append(tag + u':' + notification.name); };
    };
    center.addObserver(u"Did"_s, nullptr, &context, record(u"name"_s));
    center.addObserver(QString(), &sender, &context, record(u"object"_s));
    center.addObserver(u"Did"_s, &sender, &context, record(u"both"_s));
    center.addObserver(QString(), nullptr, &context, record(u"all"_s));

    center.postNotificationName(u"Did"_s, &sender);
    EXPECT_EQ(seen, QStringList({u"name:Did"_s, u"object:Did"_s, u"both:Did"_s, u"all:Did"_s}))
        << "synchronous, in the order observers were added";
    seen.clear();
    center.postNotificationName(u"Did"_s, &other);
    EXPECT_EQ(seen, QStringList({u"name:Did"_s, u"all:Did"_s}));
    seen.clear();
    center.postNotificationName(u"Will"_s, &sender);
    EXPECT_EQ(seen, QStringList({u"object:Will"_s, u"all:Will"_s}));
    seen.clear();
    center.postNotificationName(u"did"_s); // names are case-sensitive
    EXPECT_EQ(seen, QStringList({u"all:did"_s}));
}

TEST(QVNotificationCenterTest, UserInfoArrivesAndObserversCanLeave)
{
    QVNotificationCenter center;
    QVariantMap received;
    int calls = 0;
    auto context = std::make_unique<QObject>();
    const QMetaObject::Connection connection =
        center.addObserver(u"Changed"_s, nullptr, context.get(), [&](const QVNotification &notification) {
            received = notification.userInfo;
            ++calls;
        });
    center.postNotificationName(u"Changed"_s, nullptr, {{u"ClassName"_s, u"QVCache"_s}});
    EXPECT_EQ(received.value(u"ClassName"_s).toString(), u"QVCache"_s);

    EXPECT_TRUE(QVNotificationCenter::removeObserver(connection));
    EXPECT_FALSE(QVNotificationCenter::removeObserver(connection));
    center.postNotificationName(u"Changed"_s);
    EXPECT_EQ(calls, 1);

    // An observer whose context is gone is never called.
    center.addObserver(u"Changed"_s, nullptr, context.get(), [&](const QVNotification &) { ++calls; });
    context.reset();
    center.postNotificationName(u"Changed"_s);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(center.addObserver(u"Changed"_s, nullptr, nullptr, {}));
}

TEST(QVNotificationCenterTest, DeliveryHappensOnThePostingThread)
{
    QVNotificationCenter *center = QVNotificationCenter::defaultCenter();
    EXPECT_EQ(center, QVNotificationCenter::defaultCenter());
    QObject context;
    QThread *deliveredOn = nullptr;
    center->addObserver(u"QVNotificationCenterTestThread"_s, nullptr, &context,
                        [&](const QVNotification &) { deliveredOn = QThread::currentThread(); });
    QThread *worker = QThread::create([center] { center->postNotificationName(u"QVNotificationCenterTestThread"_s); });
    worker->start();
    worker->wait();
    EXPECT_EQ(deliveredOn, worker);
    delete worker;
}
