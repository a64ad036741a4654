#include <QVKit/Text/QVTextAttributeRun.h>

#include <QtGui/QColor>
#include <QtGui/QFont>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

// Runs hold colours and fonts from the GUI side without the text library
// naming them: equal values give equal runs, values differing in any field
// (a colour's alpha included) give different ones.
TEST(QVTextAttributeRunGuiValuesTest, ColoursAndFontsCompareByEveryField)
{
    const auto run = [](const QVariant &value) { return QVTextAttributeRun(u"color"_s, value, {2, 3}); };
    const QVariant same[][2] = {{QColor(Qt::red), QColor(255, 0, 0)},
                                {QFont(u"Serif"_s, 12), QFont(u"Serif"_s, 12)}};
    for (const auto &pair : same)
        EXPECT_EQ(run(pair[0]), run(pair[1])) << pair[0].toString().toStdString();
    const QVariant different[][2] = {{QColor(Qt::red), QColor(Qt::blue)},
                                     {QColor(255, 0, 0), QColor(255, 0, 0, 128)},
                                     {QFont(u"Serif"_s, 12), QFont(u"Serif"_s, 13)},
                                     {QFont(u"Serif"_s, 12), QFont(u"Sans"_s, 12)}};
    for (const auto &pair : different)
        EXPECT_NE(run(pair[0]), run(pair[1])) << pair[0].toString().toStdString();
}
