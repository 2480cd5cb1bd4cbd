#include <qelsdk/core/qelhalffloat.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace qelsdk {
namespace {

uint16_t Bits(float pValue) { return QelHalfFloat(pValue).Bits(); }

uint32_t FloatBits(float pValue)
{
    uint32_t lBits;
    std::memcpy(&lBits, &pValue, sizeof(lBits));
    return lBits;
}

bool IsHalfNaN(uint16_t pBits) { return (pBits & 0x7c00u) == 0x7c00u && (pBits & 0x3ffu) != 0; }

TEST(QelHalfFloat, DefaultIsPositiveZero)
{
    EXPECT_EQ(QelHalfFloat().Bits(), 0u);
    EXPECT_EQ(QelHalfFloat().value(), 0.0f);
}

TEST(QelHalfFloat, Zeros)
{
    EXPECT_EQ(Bits(0.0f), 0x0000u);
    EXPECT_EQ(Bits(-0.0f), 0x8000u);
    EXPECT_TRUE(std::signbit(QelHalfFloat::FromBits(0x8000u).value()));
    EXPECT_EQ(QelHalfFloat::FromBits(0x8000u).value(), 0.0f);
}

TEST(QelHalfFloat, SmallIntegers)
{
    EXPECT_EQ(Bits(1.0f), 0x3c00u);
    EXPECT_EQ(Bits(-2.0f), 0xc000u);
    EXPECT_EQ(QelHalfFloat(1.0f).value(), 1.0f);
    EXPECT_EQ(QelHalfFloat(-2.0f).value(), -2.0f);
    EXPECT_EQ(QelHalfFloat(0.5f).value(), 0.5f);
}

TEST(QelHalfFloat, Largest)
{
    EXPECT_EQ(Bits(65504.0f), 0x7bffu);
    EXPECT_EQ(QelHalfFloat(65504.0f).value(), 65504.0f);
    // Below the halfway point to 65536: rounds down to the largest half.
    EXPECT_EQ(Bits(65519.0f), 0x7bffu);
}

TEST(QelHalfFloat, OverflowGoesToInfinity)
{
    EXPECT_EQ(Bits(65520.0f), 0x7c00u);
    EXPECT_EQ(Bits(-65520.0f), 0xfc00u);
    EXPECT_EQ(Bits(1.0e10f), 0x7c00u);
    EXPECT_EQ(Bits(std::numeric_limits<float>::max()), 0x7c00u);
}

TEST(QelHalfFloat, Infinities)
{
    const float lInfinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Bits(lInfinity), 0x7c00u);
    EXPECT_EQ(Bits(-lInfinity), 0xfc00u);
    EXPECT_EQ(QelHalfFloat::FromBits(0x7c00u).value(), lInfinity);
    EXPECT_EQ(QelHalfFloat::FromBits(0xfc00u).value(), -lInfinity);
}

TEST(QelHalfFloat, SmallestNormal)
{
    EXPECT_EQ(Bits(6.1035156e-05f), 0x0400u);
    EXPECT_EQ(QelHalfFloat::FromBits(0x0400u).value(), std::ldexp(1.0f, -14));
}

TEST(QelHalfFloat, Subnormals)
{
    EXPECT_EQ(Bits(5.9604645e-08f), 0x0001u);
    EXPECT_EQ(QelHalfFloat::FromBits(0x0001u).value(), std::ldexp(1.0f, -24));
    EXPECT_EQ(Bits(-5.9604645e-08f), 0x8001u);
    // The largest subnormal.
    EXPECT_EQ(Bits(std::ldexp(1023.0f, -24)), 0x03ffu);
    EXPECT_EQ(QelHalfFloat::FromBits(0x03ffu).value(), std::ldexp(1023.0f, -24));
}

TEST(QelHalfFloat, HalfOfSmallestSubnormalRoundsToZero)
{
    EXPECT_EQ(Bits(std::ldexp(1.0f, -25)), 0x0000u);
    EXPECT_EQ(Bits(-std::ldexp(1.0f, -25)), 0x8000u);
    // Just above the tie: rounds up to the smallest subnormal.
    EXPECT_EQ(Bits(std::nextafter(std::ldexp(1.0f, -25), 1.0f)), 0x0001u);
    // 1.5 subnormal units is a tie between 1 and 2: goes to the even 2.
    EXPECT_EQ(Bits(std::ldexp(3.0f, -25)), 0x0002u);
    // Far below: zero; float subnormals too.
    EXPECT_EQ(Bits(1.0e-30f), 0x0000u);
    EXPECT_EQ(Bits(std::numeric_limits<float>::denorm_min()), 0x0000u);
}

TEST(QelHalfFloat, SubnormalRoundsUpToSmallestNormal)
{
    // Halfway between the largest subnormal and 2^-14: ties to the even 0x0400.
    EXPECT_EQ(Bits(std::ldexp(2047.0f, -25)), 0x0400u);
}

TEST(QelHalfFloat, TiesToEven)
{
    // Above 2048 halves are two apart.
    EXPECT_EQ(QelHalfFloat(2049.0f).value(), 2048.0f);
    EXPECT_EQ(QelHalfFloat(2051.0f).value(), 2052.0f);
    EXPECT_EQ(QelHalfFloat(2053.0f).value(), 2052.0f);
    EXPECT_EQ(QelHalfFloat(2050.0f).value(), 2050.0f);
    // Off the tie: nearest.
    EXPECT_EQ(QelHalfFloat(2049.5f).value(), 2050.0f);
    EXPECT_EQ(QelHalfFloat(2048.5f).value(), 2048.0f);
    // 1 + 2^-11 is halfway between 1 and the next half: stays 1.
    EXPECT_EQ(Bits(1.0f + std::ldexp(1.0f, -11)), 0x3c00u);
    EXPECT_EQ(Bits(1.0f + 3.0f * std::ldexp(1.0f, -11)), 0x3c02u);
}

TEST(QelHalfFloat, RoundingCarriesIntoExponent)
{
    // Just below 2: rounds up to 2.
    EXPECT_EQ(Bits(std::nextafter(2.0f, 0.0f)), 0x4000u);
}

TEST(QelHalfFloat, NaNStaysQuietNaNWithSign)
{
    const float lNaN = std::numeric_limits<float>::quiet_NaN();
    const uint16_t lPositive = Bits(lNaN);
    EXPECT_TRUE(IsHalfNaN(lPositive));
    EXPECT_EQ(lPositive & 0x8000u, 0u);
    EXPECT_NE(lPositive & 0x0200u, 0u);
    const uint16_t lNegative = Bits(-lNaN);
    EXPECT_TRUE(IsHalfNaN(lNegative));
    EXPECT_EQ(lNegative & 0x8000u, 0x8000u);
    EXPECT_TRUE(std::isnan(QelHalfFloat(lNaN).value()));
}

TEST(QelHalfFloat, NaNWithPayloadOnlyInLowBitsStaysNaN)
{
    uint32_t lBits = 0x7f800001u;
    float lNaN;
    std::memcpy(&lNaN, &lBits, sizeof(lNaN));
    EXPECT_TRUE(IsHalfNaN(QelHalfFloat::FromFloat(lNaN)));
}

TEST(QelHalfFloat, NaNToFloatKeepsSignAndPayload)
{
    EXPECT_EQ(FloatBits(QelHalfFloat::ToFloat(0x7e01u)), 0x7fc02000u);
    EXPECT_EQ(FloatBits(QelHalfFloat::ToFloat(0xfe00u)), 0xffc00000u);
}

TEST(QelHalfFloat, FromBitsKeepsBits)
{
    EXPECT_EQ(QelHalfFloat::FromBits(0x1234u).Bits(), 0x1234u);
    EXPECT_EQ(QelHalfFloat::FromBits(0x3c00u), QelHalfFloat(1.0f));
    EXPECT_NE(QelHalfFloat::FromBits(0x3c01u), QelHalfFloat(1.0f));
}

TEST(QelHalfFloat, EveryNonNaNPatternRoundTrips)
{
    for (uint32_t lPattern = 0; lPattern <= 0xffffu; ++lPattern) {
        const uint16_t lBits = static_cast<uint16_t>(lPattern);
        if (IsHalfNaN(lBits)) continue;
        const float lValue = QelHalfFloat::ToFloat(lBits);
        ASSERT_EQ(QelHalfFloat::FromFloat(lValue), lBits) << "pattern " << lPattern;
    }
}

TEST(QelHalfFloat, EveryNaNPatternStaysNaN)
{
    for (uint32_t lPattern = 0; lPattern <= 0xffffu; ++lPattern) {
        const uint16_t lBits = static_cast<uint16_t>(lPattern);
        if (!IsHalfNaN(lBits)) continue;
        ASSERT_TRUE(std::isnan(QelHalfFloat::ToFloat(lBits))) << "pattern " << lPattern;
        const uint16_t lBack = QelHalfFloat::FromFloat(QelHalfFloat::ToFloat(lBits));
        ASSERT_EQ(lBack, lBits | 0x0200u) << "pattern " << lPattern;
    }
}

TEST(QelHalfFloat, EveryFloatBetweenTwoHalvesRoundsToNearest)
{
    // Midpoints between neighbouring positive finite halves: ties to the even one,
    // and the floats right beside the midpoint go to their nearer neighbour.
    for (uint16_t lBits = 0; lBits < 0x7bffu; ++lBits) {
        const float lLow = QelHalfFloat::ToFloat(lBits);
        const float lHigh = QelHalfFloat::ToFloat(static_cast<uint16_t>(lBits + 1));
        const float lMiddle = lLow + (lHigh - lLow) / 2.0f;
        const uint16_t lEven = (lBits & 1u) ? static_cast<uint16_t>(lBits + 1) : lBits;
        ASSERT_EQ(QelHalfFloat::FromFloat(lMiddle), lEven) << "pattern " << lBits;
        ASSERT_EQ(QelHalfFloat::FromFloat(std::nextafter(lMiddle, 0.0f)), lBits);
        ASSERT_EQ(QelHalfFloat::FromFloat(std::nextafter(lMiddle, 1.0e6f)), lBits + 1);
    }
}

} // namespace
} // namespace qelsdk
