#include <qelsdk/core/qelhalffloat.h>

#include <cstring>

namespace qelsdk {
namespace {

// Float fields as unsigned bit patterns of the absolute value.
constexpr uint32_t sFloatInfinity = 0x7f800000u;
// 65520, halfway between the largest half (65504) and 65536: it and everything
// above round to infinity (the tie goes to the even neighbour, which is 2^16).
constexpr uint32_t sFloatHalfOverflow = 0x477ff000u;
// 2^-14, the smallest normal half.
constexpr uint32_t sFloatHalfMinNormal = 0x38800000u;
// Float biased exponent of 2^-25 (half of the smallest subnormal half): below it
// every value rounds to zero.
constexpr uint32_t sFloatExponentHalfMinSubnormal = 102;
// Rebias from float (127) to half (15), in place in the float exponent field.
constexpr uint32_t sExponentRebias = (127u - 15u) << 23;

constexpr uint16_t sHalfInfinity = 0x7c00u;
constexpr uint16_t sHalfQuietBit = 0x0200u;
constexpr int sMantissaShift = 23 - 10;

uint32_t FloatBits(float pValue)
{
    uint32_t lBits;
    std::memcpy(&lBits, &pValue, sizeof(lBits));
    return lBits;
}

float BitsFloat(uint32_t pBits)
{
    float lValue;
    std::memcpy(&lValue, &pBits, sizeof(lValue));
    return lValue;
}

// pValue >> pShift rounded to nearest, ties to even.
uint32_t ShiftRoundEven(uint32_t pValue, int pShift)
{
    const uint32_t lResult = pValue >> pShift;
    const uint32_t lRest = pValue & ((1u << pShift) - 1u);
    const uint32_t lHalf = 1u << (pShift - 1);
    const bool lUp = lRest > lHalf || (lRest == lHalf && (lResult & 1u));
    return lResult + (lUp ? 1u : 0u);
}

// NaN keeps its sign and the top of its payload, and is made quiet so that a
// payload living only in the dropped low bits cannot turn it into infinity.
uint16_t HalfNaN(uint32_t pAbsBits)
{
    return static_cast<uint16_t>(sHalfInfinity | sHalfQuietBit |
                                 ((pAbsBits & 0x7fffffu) >> sMantissaShift));
}

// Below the smallest normal half: the result is round(value * 2^24) as the
// subnormal mantissa; a carry into 0x400 is the correct smallest normal.
uint16_t HalfSubnormal(uint32_t pAbsBits)
{
    const uint32_t lExponent = pAbsBits >> 23;
    if (lExponent < sFloatExponentHalfMinSubnormal) return 0;
    const uint32_t lMantissa = (pAbsBits & 0x7fffffu) | 0x800000u;
    return static_cast<uint16_t>(ShiftRoundEven(lMantissa, static_cast<int>(126u - lExponent)));
}

// A carry out of the mantissa moves into the exponent, which is what rounding up
// to the next power of two needs.
uint16_t HalfNormal(uint32_t pAbsBits)
{
    return static_cast<uint16_t>(ShiftRoundEven(pAbsBits - sExponentRebias, sMantissaShift));
}

uint16_t HalfMagnitude(uint32_t pAbsBits)
{
    if (pAbsBits > sFloatInfinity) return HalfNaN(pAbsBits);
    if (pAbsBits >= sFloatHalfOverflow) return sHalfInfinity;
    if (pAbsBits < sFloatHalfMinNormal) return HalfSubnormal(pAbsBits);
    return HalfNormal(pAbsBits);
}

} // namespace

QelHalfFloat QelHalfFloat::FromBits(uint16_t pBits)
{
    QelHalfFloat lValue;
    lValue.mBits = pBits;
    return lValue;
}

uint16_t QelHalfFloat::FromFloat(float pValue)
{
    const uint32_t lBits = FloatBits(pValue);
    const uint16_t lSign = static_cast<uint16_t>((lBits >> 16) & 0x8000u);
    return static_cast<uint16_t>(lSign | HalfMagnitude(lBits & 0x7fffffffu));
}

float QelHalfFloat::ToFloat(uint16_t pBits)
{
    const uint32_t lSign = static_cast<uint32_t>(pBits & 0x8000u) << 16;
    const uint32_t lExponent = (pBits >> 10) & 0x1fu;
    const uint32_t lMantissa = pBits & 0x3ffu;
    if (lExponent == 0) {
        // Subnormal or zero: mantissa * 2^-24, exact in a float.
        const float lMagnitude = static_cast<float>(lMantissa) * (1.0f / 16777216.0f);
        return BitsFloat(lSign | FloatBits(lMagnitude));
    }
    if (lExponent == 0x1fu)
        return BitsFloat(lSign | sFloatInfinity | (lMantissa << sMantissaShift));
    return BitsFloat(lSign |
                     ((((lExponent << 10) | lMantissa) << sMantissaShift) + sExponentRebias));
}

} // namespace qelsdk
