#include <QVKit/Platform/QVRange.h>

#include <gtest/gtest.h>

TEST(QVRangeTest, Placeholder)
{
    EXPECT_EQ(QVMaxRange(QVMakeRange(2, 3)), 5u);
}
