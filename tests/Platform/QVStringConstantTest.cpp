#include <QVKit/Platform/QVError.h>
#include <QVKit/Platform/QVNotificationCenter.h>
#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/Platform/QVUserDefaults.h>

#include <QtCore/QHash>
#include <QtCore/QVariantMap>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QVStringConstant Beyond = u"cl\u00e9-\U0001F511";

// Made at compile time: nothing to run when a library full of them loads.
static_assert(Beyond.size() == 6);
static_assert(QVErrorDomain.size() == 13);

} // namespace

// The exported names go straight into maps, notifications and comparisons.
TEST(QVStringConstantTest, UsableWhereverAStringIsTaken)
{
    const QVariantMap info{{QVLocalizedDescriptionKey, u"text"_s}, {Beyond, 1}};
    EXPECT_EQ(info.value(QVLocalizedDescriptionKey).toString(), u"text"_s);
    EXPECT_TRUE(info.contains(u"cl\u00e9-\U0001F511"_s));

    QVariantMap map;
    map.insert(QVFilePathErrorKey, u"/tmp"_s);
    map[QVURLErrorKey] = 2;
    EXPECT_EQ(map.value(QVFilePathErrorKey).toString(), u"/tmp"_s);
    EXPECT_EQ(map.value(QVURLErrorKey).toInt(), 2);

    QHash<QString, int> hash{{QVErrorDomain, 7}};
    EXPECT_EQ(hash.value(QVErrorDomain), 7);
    QHash<QString, int> keyed;
    keyed.insert(Beyond, 3);
    EXPECT_EQ(keyed.value(u"cl\u00e9-\U0001F511"_s), 3);

    QString received;
    QVNotificationCenter center;
    center.addObserver(QVUserDefaultsDidChangeNotification, nullptr, &center,
                       [&](const QVNotification &notification) { received = notification.name; });
    center.postNotificationName(QVUserDefaultsDidChangeNotification);
    EXPECT_EQ(received, u"QVUserDefaultsDidChangeNotification"_s);
    EXPECT_TRUE(received == QVUserDefaultsDidChangeNotification);
    EXPECT_TRUE(QVUserDefaultsDidChangeNotification == received);
    EXPECT_TRUE(QStringView(received) == QVUserDefaultsDidChangeNotification);
    EXPECT_TRUE(QVUserDefaultsDidChangeNotification != QVErrorDomain);
    EXPECT_TRUE(Beyond == u"cl\u00e9-\U0001F511");

    const QVError error(QVErrorDomain, 3, {{QVLocalizedDescriptionKey, u"d"_s}});
    EXPECT_EQ(error.domain(), QVErrorDomain);

    QString logged;
    QDebug(&logged).noquote().nospace() << Beyond;
    EXPECT_EQ(logged, u"cl\u00e9-\U0001F511"_s);

    // The string shares the constant's characters rather than copying them.
    const QString shared = Beyond;
    EXPECT_EQ(static_cast<const void *>(shared.constData()), static_cast<const void *>(Beyond.view().utf16()));
}
