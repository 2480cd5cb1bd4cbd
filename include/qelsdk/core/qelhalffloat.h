// QelHalfFloat: a 16-bit IEEE 754 binary16 floating-point value, two bytes holding
// the bits. Built from a float with round to nearest even (subnormals, infinities
// and NaN included); value() gives the exact float.
#ifndef QELSDK_CORE_QELHALFFLOAT_H
#define QELSDK_CORE_QELHALFFLOAT_H

#include <cstdint>
#include <type_traits>

namespace qelsdk {

class QelHalfFloat
{
public:
    QelHalfFloat() : mBits(0) {}
    QelHalfFloat(float pValue) : mBits(FromFloat(pValue)) {}

    float value() const { return ToFloat(mBits); }
    uint16_t Bits() const { return mBits; }
    static QelHalfFloat FromBits(uint16_t pBits);

    // Bitwise equality: equal bits, so NaN with the same payload equals itself.
    bool operator==(const QelHalfFloat& pOther) const { return mBits == pOther.mBits; }
    bool operator!=(const QelHalfFloat& pOther) const { return mBits != pOther.mBits; }

    static uint16_t FromFloat(float pValue);
    static float ToFloat(uint16_t pBits);

private:
    uint16_t mBits;
};

static_assert(sizeof(QelHalfFloat) == 2, "a half float is two bytes");
static_assert(std::is_trivially_copyable<QelHalfFloat>::value,
              "element arrays move half floats as bytes");

} // namespace qelsdk

#endif
