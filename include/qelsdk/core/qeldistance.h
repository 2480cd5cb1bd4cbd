// QelDistance: a length as a value in a named unit. An all-zero distance (value 0,
// empty unit) is valid; an empty or unknown unit counts as centimetres.
#ifndef QELSDK_CORE_QELDISTANCE_H
#define QELSDK_CORE_QELDISTANCE_H

#include <qelsdk/core/qelstring.h>

namespace qelsdk {

class QelDistance
{
public:
    QelDistance() : mValue(0.0f) {}
    QelDistance(float pValue, const char* pUnit) : mValue(pValue), mUnit(pUnit) {}

    float value() const { return mValue; }
    // The value in centimetres, the library's internal unit.
    float internalValue() const;
    QelString unitName() const { return mUnit; }

    // Same value in the same unit.
    bool operator==(const QelDistance& pOther) const;
    bool operator!=(const QelDistance& pOther) const { return !(*this == pOther); }

private:
    float mValue;
    QelString mUnit;
};

} // namespace qelsdk

#endif
