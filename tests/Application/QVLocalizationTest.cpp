#include <QVKit/Application/QVLocalization.h>

#include <QtCore/QLocale>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// Every test leaves the override as it found it.
class QVLocalizationTest : public ::testing::Test
{
protected:
    void TearDown() override { QVLocalization::setDebugLayoutDirection(m_override); }

private:
    qint64 m_override = QVLocalization::debugLayoutDirection();
};

template<typename T>
QList<T> reversed(QList<T> list)
{
    std::reverse(list.begin(), list.end());
    return list;
}

} // namespace

TEST_F(QVLocalizationTest, OverrideWinsOverTheApplicationDirection)
{
    EXPECT_EQ(QVLocalization::debugLayoutDirection(), 0);

    struct Row
    {
        const char *name;
        qint64 debugOverride;
        bool rightToLeft;
    };
    // The application here lays out left to right; QVViewLocalizationTest
    // follows a right-to-left GUI application.
    const Row rows[] = {
        {"follows the application", 0, false},
        {"1 forces right-to-left", 1, true},
        {"2 forces left-to-right", 2, false},
        {"-1 forces left-to-right", -1, false},
        {"minimum forces left-to-right", std::numeric_limits<qint64>::min(), false},
        {"1 plus 2^32 is not 1", (qint64(1) << 32) + 1, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLocalization::setDebugLayoutDirection(row.debugOverride);
        EXPECT_EQ(QVLocalization::debugLayoutDirection(), row.debugOverride);
        EXPECT_EQ(QVLocalization::isRightToLeftLayout(), row.rightToLeft);
        EXPECT_EQ(QVLocalization::localizedTextAlignment(), row.rightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    }

    // The override is one value for the whole process, not per thread.
    QVLocalization::setDebugLayoutDirection(1);
    qint64 seen = 0;
    bool rightToLeft = false;
    std::thread reader([&] {
        seen = QVLocalization::debugLayoutDirection();
        rightToLeft = QVLocalization::isRightToLeftLayout();
    });
    reader.join();
    EXPECT_EQ(seen, 1);
    EXPECT_TRUE(rightToLeft);
}

TEST_F(QVLocalizationTest, DefaultItemIdentifiersKeepAbsentAndEmptyApart)
{
    const QStringList identifiers{u"back"_s, u"forward"_s, u"\u691c\u7d22"_s};
    for (const bool rightToLeft : {false, true}) {
        SCOPED_TRACE(rightToLeft ? "right-to-left" : "left-to-right");
        QVLocalization::setDebugLayoutDirection(rightToLeft ? 1 : 2);
        EXPECT_FALSE(QVLocalization::localizedToolbarDefaultItemIdentifiers(std::nullopt).has_value());
        const auto empty = QVLocalization::localizedToolbarDefaultItemIdentifiers(QStringList());
        ASSERT_TRUE(empty.has_value());
        EXPECT_TRUE(empty->isEmpty());
        EXPECT_EQ(QVLocalization::localizedToolbarDefaultItemIdentifiers(identifiers),
                  rightToLeft ? reversed(identifiers) : identifiers);
    }
}

TEST_F(QVLocalizationTest, MetricSystemFollowsTheCurrentLocale)
{
    const QLocale saved;
    struct Row
    {
        QLocale locale;
        bool metric;
    };
    const Row rows[] = {
        {QLocale(QLocale::English, QLocale::UnitedStates), false},
        {QLocale(QLocale::German, QLocale::Germany), true},
        {QLocale(QLocale::Arabic, QLocale::Egypt), true},
        // Imperial in the United Kingdom's sense is still not metric.
        {QLocale(QLocale::English, QLocale::UnitedKingdom), false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.locale.name().toStdString());
        QLocale::setDefault(row.locale);
        EXPECT_EQ(QVLocalization::usesMetricSystem(), row.metric);
    }
    QLocale::setDefault(saved);
}
