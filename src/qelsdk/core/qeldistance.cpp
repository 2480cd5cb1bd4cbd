#include <qelsdk/core/qeldistance.h>

#include <cstring>

namespace qelsdk {
namespace {

struct UnitFactor
{
    const char* mName;
    float mCentimetres;
};

// Centimetres per unit.
constexpr UnitFactor sUnitFactors[] = {{"mm", 0.1f},   {"cm", 1.0f},      {"dm", 10.0f},
                                       {"m", 100.0f},  {"km", 100000.0f}, {"in", 2.54f},
                                       {"ft", 30.48f}, {"yd", 91.44f},    {"mi", 160934.4f}};

// An empty or unknown unit is taken as centimetres, so that a zero-filled distance
// and one read from text with a unit this library does not know keep their value.
float CentimetresPerUnit(const char* pUnit)
{
    for (const UnitFactor& lFactor : sUnitFactors)
        if (std::strcmp(lFactor.mName, pUnit) == 0) return lFactor.mCentimetres;
    return 1.0f;
}

} // namespace

float QelDistance::internalValue() const { return mValue * CentimetresPerUnit(mUnit.Buffer()); }

bool QelDistance::operator==(const QelDistance& pOther) const
{
    return mValue == pOther.mValue && mUnit == pOther.mUnit;
}

} // namespace qelsdk
