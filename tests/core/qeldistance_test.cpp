#include <qelsdk/core/qeldistance.h>

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace qelsdk {
namespace {

TEST(QelDistance, DefaultIsZeroWithoutUnit)
{
    QelDistance lDistance;
    EXPECT_EQ(lDistance.value(), 0.0f);
    EXPECT_EQ(lDistance.internalValue(), 0.0f);
    EXPECT_EQ(lDistance.unitName(), "");
}

TEST(QelDistance, KeepsValueAndUnit)
{
    QelDistance lDistance(2.5f, "m");
    EXPECT_EQ(lDistance.value(), 2.5f);
    EXPECT_EQ(lDistance.unitName(), "m");
}

TEST(QelDistance, InternalValueIsCentimetres)
{
    struct Case
    {
        const char* mUnit;
        float mCentimetres;
    };
    const Case lCases[] = {{"mm", 0.1f},   {"cm", 1.0f},      {"dm", 10.0f},
                           {"m", 100.0f},  {"km", 100000.0f}, {"in", 2.54f},
                           {"ft", 30.48f}, {"yd", 91.44f},    {"mi", 160934.4f}};
    for (const Case& lCase : lCases) {
        EXPECT_EQ(QelDistance(1.0f, lCase.mUnit).internalValue(), lCase.mCentimetres)
            << lCase.mUnit;
        EXPECT_EQ(QelDistance(2.0f, lCase.mUnit).internalValue(), 2.0f * lCase.mCentimetres)
            << lCase.mUnit;
    }
}

TEST(QelDistance, EmptyOrUnknownUnitCountsAsCentimetres)
{
    EXPECT_EQ(QelDistance(3.5f, "").internalValue(), 3.5f);
    EXPECT_EQ(QelDistance(3.5f, nullptr).internalValue(), 3.5f);
    EXPECT_EQ(QelDistance(3.5f, "parsec").internalValue(), 3.5f);
    // Names are exact: no case folding, no prefix match.
    EXPECT_EQ(QelDistance(3.5f, "M").internalValue(), 3.5f);
    EXPECT_EQ(QelDistance(3.5f, "mmm").internalValue(), 3.5f);
}

TEST(QelDistance, EqualityComparesValueAndUnitText)
{
    EXPECT_TRUE(QelDistance(1.0f, "m") == QelDistance(1.0f, "m"));
    EXPECT_FALSE(QelDistance(1.0f, "m") != QelDistance(1.0f, "m"));
    EXPECT_TRUE(QelDistance(1.0f, "m") != QelDistance(2.0f, "m"));
    // The same length in another unit is another distance.
    EXPECT_TRUE(QelDistance(1.0f, "m") != QelDistance(100.0f, "cm"));
    EXPECT_TRUE(QelDistance(1.0f, "") != QelDistance(1.0f, "cm"));
    EXPECT_TRUE(QelDistance() == QelDistance(0.0f, ""));
}

TEST(QelDistance, CopyAndAssignment)
{
    QelDistance lDistance(4.0f, "ft");
    QelDistance lCopy(lDistance);
    EXPECT_TRUE(lCopy == lDistance);
    QelDistance lOther;
    lOther = lDistance;
    EXPECT_TRUE(lOther == lDistance);
    EXPECT_EQ(lOther.internalValue(), 4.0f * 30.48f);
}

TEST(QelDistance, ZeroFilledBytesAreValidDistance)
{
    alignas(QelDistance) unsigned char lStorage[sizeof(QelDistance)];
    std::memset(lStorage, 0, sizeof(lStorage));
    QelDistance* lDistance = std::launder(reinterpret_cast<QelDistance*>(lStorage));
    EXPECT_EQ(lDistance->value(), 0.0f);
    EXPECT_EQ(lDistance->internalValue(), 0.0f);
    EXPECT_EQ(lDistance->unitName(), "");
    EXPECT_TRUE(*lDistance == QelDistance());
    *lDistance = QelDistance(2.0f, "km");
    EXPECT_EQ(lDistance->internalValue(), 200000.0f);
    lDistance->~QelDistance();
}

} // namespace
} // namespace qelsdk
