#include <QVKit/Collections/QVRandomAppearance.h>

#include <QtGui/QFontDatabase>

#include <gtest/gtest.h>

TEST(QVRandomAppearanceTest, FontAndColor)
{
    const QStringList families = QFontDatabase::families();
    for (int i = 0; i < 20; ++i) {
        const QColor color = QVRandomAppearance::color();
        EXPECT_TRUE(color.isValid());
        EXPECT_EQ(color.alpha(), 255);
        const QFont font = QVRandomAppearance::font();
        if (families.isEmpty()) {
            EXPECT_EQ(font, QFont());
        } else {
            EXPECT_TRUE(families.contains(font.family())) << font.family().toStdString();
            EXPECT_GE(font.pointSize(), 8);
            EXPECT_LE(font.pointSize(), 36);
        }
    }
}
