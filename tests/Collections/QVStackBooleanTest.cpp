#include <QVKit/Collections/QVStackBoolean.h>

#include <QtCore/QString>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

TEST(QVStackBooleanTest, StateFollowsTheCountAndChangesAreReportedOnce)
{
    // Steps: '+' enable, '-' disable. States: the state after each step.
    struct Row
    {
        const char *name;
        bool initialState;
        const char *steps;
        const char *states;
        std::vector<bool> reported;
    };
    const Row rows[] = {
        {"off: nothing", false, "", "", {}},
        {"off: first enable turns on", false, "+", "1", {true}},
        {"off: nested enables need matching disables", false, "++--", "1110", {true, false}},
        {"off: disable below zero stays off", false, "--++", "0000", {}},
        {"off: a disable below zero delays the next on", false, "-+++-", "00111", {true}},
        {"on: nothing", true, "", "", {}},
        {"on: first disable turns off", true, "-", "0", {false}},
        {"on: second disable reports nothing", true, "--", "00", {false}},
        {"on: two enables later turn on once", true, "--++", "0001", {false, true}},
        {"on: enables above zero stay on", true, "++--", "1111", {}},
        {"on: off and on around zero", true, "-+-+", "0101", {false, true, false, true}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<bool> reported;
        auto stackBoolean = QVStackBoolean::stackBooleanWithInitialState(
            row.initialState, [&reported](bool enabled) { reported.push_back(enabled); });
        EXPECT_EQ(stackBoolean.isEnabled(), row.initialState);
        EXPECT_EQ(stackBoolean.initialState(), row.initialState);

        qint64 count = 0;
        QString states;
        for (const char *step = row.steps; *step; ++step) {
            if (*step == '+') {
                stackBoolean.enable();
                ++count;
            } else {
                stackBoolean.disable();
                --count;
            }
            states += stackBoolean.isEnabled() ? u'1' : u'0';
        }
        EXPECT_EQ(states, QString::fromLatin1(row.states));
        EXPECT_EQ(reported, row.reported);
        EXPECT_EQ(stackBoolean.enableCount(), count);
    }
}

TEST(QVStackBooleanTest, WorksWithoutACallable)
{
    QVStackBoolean stackBoolean(false);
    stackBoolean.enable();
    EXPECT_TRUE(stackBoolean.isEnabled());
    stackBoolean.disable();
    EXPECT_FALSE(stackBoolean.isEnabled());
}

TEST(QVStackBooleanTest, DescriptionShowsCountAndState)
{
    QVStackBoolean on(true);
    const QString address = QString::asprintf("%p", static_cast<const void *>(&on));
    EXPECT_EQ(on.description(), u"QVStackBoolean %1: count = 0  isEnabled = YES"_s.arg(address));
    on.disable();
    EXPECT_EQ(on.description(), u"QVStackBoolean %1: count = -1  isEnabled = NO"_s.arg(address));

    QVStackBoolean off(false);
    off.enable();
    off.enable();
    EXPECT_EQ(off.description(), u"QVStackBoolean %1: count = 2  isEnabled = YES"_s.arg(
                                     QString::asprintf("%p", static_cast<const void *>(&off))));
}
