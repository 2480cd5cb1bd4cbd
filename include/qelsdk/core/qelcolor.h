// An RGBA colour: four doubles and nothing else, stored and converted like a
// four-component vector of doubles.
#ifndef QELSDK_CORE_QELCOLOR_H
#define QELSDK_CORE_QELCOLOR_H

#include <type_traits>

namespace qelsdk {

class QelColor
{
public:
    QelColor() : mRed(0.0), mGreen(0.0), mBlue(0.0), mAlpha(1.0) {}
    QelColor(double pRed, double pGreen, double pBlue, double pAlpha = 1.0)
        : mRed(pRed), mGreen(pGreen), mBlue(pBlue), mAlpha(pAlpha)
    {
    }

    bool operator==(const QelColor& pOther) const
    {
        return mRed == pOther.mRed && mGreen == pOther.mGreen && mBlue == pOther.mBlue &&
               mAlpha == pOther.mAlpha;
    }
    bool operator!=(const QelColor& pOther) const { return !(*this == pOther); }

    double mRed;
    double mGreen;
    double mBlue;
    double mAlpha;
};

static_assert(sizeof(QelColor) == 4 * sizeof(double), "a colour is four doubles");
static_assert(std::is_trivially_copyable<QelColor>::value, "element arrays move colours as bytes");

} // namespace qelsdk

#endif
