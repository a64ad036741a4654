#include <QVKit/Platform/QVAssert.h>

#include <QtCore/QString>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

void requirePositive(int value)
{
    QV_ASSERT(value > 0);
}

void requireEven(int count)
{
    QV_ASSERT_TEXT(count % 2 == 0, "(replacePairs.count % 2) == 0");
}

} // namespace

TEST(QVAssertTest, ReportNamesConditionOperationAndSource)
{
    const QString report = qv_assert_report("object", "void QVSortedArray::addObject()",
                                            "/src/QVKit/Collections/QVSortedArray.h", 95);
    EXPECT_EQ(report, u"*** Assertion failure in void QVSortedArray::addObject(), QVSortedArray:95\n"
                      u"*** Condition not satisfied: object"_s);
}

TEST(QVAssertTest, PassingAssertionsDoNothing)
{
    requirePositive(1);
    requireEven(4);
}

TEST(QVAssertTest, FailingAssertionsStopTheProgram)
{
    EXPECT_DEATH(requirePositive(0),
                 "Assertion failure in .*requirePositive.*QVAssertTest:[0-9]+\n.*Condition not satisfied: value > 0");
    // The named form reports its own text, not the C++ expression.
    EXPECT_DEATH(requireEven(3), "Condition not satisfied: \\(replacePairs.count % 2\\) == 0");
}
