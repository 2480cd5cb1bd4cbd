#include <qelsdk/core/qelcolor.h>

#include <gtest/gtest.h>

namespace qelsdk {
namespace {

static_assert(sizeof(QelColor) == 32, "four doubles and nothing else");

TEST(QelColor, AlphaDefaultsToOne)
{
    const QelColor lColor(0.1, 0.2, 0.3);
    EXPECT_EQ(lColor.mRed, 0.1);
    EXPECT_EQ(lColor.mGreen, 0.2);
    EXPECT_EQ(lColor.mBlue, 0.3);
    EXPECT_EQ(lColor.mAlpha, 1.0);
    EXPECT_EQ(QelColor(0.1, 0.2, 0.3, 0.5).mAlpha, 0.5);
}

TEST(QelColor, DefaultIsOpaqueBlack) { EXPECT_EQ(QelColor(), QelColor(0.0, 0.0, 0.0, 1.0)); }

TEST(QelColor, EqualityComparesEveryChannel)
{
    const QelColor lColor(0.1, 0.2, 0.3, 0.4);
    EXPECT_TRUE(lColor == QelColor(0.1, 0.2, 0.3, 0.4));
    EXPECT_FALSE(lColor != QelColor(0.1, 0.2, 0.3, 0.4));
    EXPECT_TRUE(lColor != QelColor(0.0, 0.2, 0.3, 0.4));
    EXPECT_TRUE(lColor != QelColor(0.1, 0.0, 0.3, 0.4));
    EXPECT_TRUE(lColor != QelColor(0.1, 0.2, 0.0, 0.4));
    EXPECT_TRUE(lColor != QelColor(0.1, 0.2, 0.3, 0.0));
}

} // namespace
} // namespace qelsdk
