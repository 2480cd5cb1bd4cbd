// QelDataType: a named value type. A small value (a name pointer that is not owned
// and an EQelType) that may be moved and copied as raw bytes; QelArray stores it.
#ifndef QELSDK_CORE_QELDATATYPE_H
#define QELSDK_CORE_QELDATATYPE_H

#include <qelsdk/core/qelpropertytypes.h>

#include <cstring>
#include <type_traits>

namespace qelsdk {

class QelDataType
{
public:
    constexpr QelDataType() : mName(""), mType(eQelUndefined) {}
    constexpr QelDataType(const char* pName, EQelType pType)
        : mName(pName ? pName : ""), mType(pType)
    {
    }

    EQelType GetType() const { return mType; }
    const char* GetName() const { return mName; }

    // Same type and same name text.
    bool operator==(const QelDataType& pOther) const
    {
        return mType == pOther.mType && std::strcmp(mName, pOther.mName) == 0;
    }
    bool operator!=(const QelDataType& pOther) const { return !(*this == pOther); }

private:
    const char* mName;
    EQelType mType;
};

static_assert(std::is_trivially_copyable<QelDataType>::value, "QelArray moves data types as bytes");

// One per value type.
extern const QelDataType QelUndefinedDT, QelCharDT, QelUCharDT, QelShortDT, QelUShortDT, QelUIntDT,
    QelLongLongDT, QelULongLongDT, QelHalfFloatDT, QelBoolDT, QelIntDT, QelFloatDT, QelDoubleDT,
    QelDouble2DT, QelDouble3DT, QelDouble4DT, QelDouble4x4DT, QelEnumDT, QelStringDT, QelTimeDT,
    QelReferenceDT, QelBlobDT, QelDistanceDT, QelDateTimeDT;

// The element data types; GetType() is the stored type of the element's direct array.
extern const QelDataType QelLayerElementNormalDT, QelLayerElementBinormalDT,
    QelLayerElementTangentDT, QelLayerElementUVDT, QelLayerElementVertexColorDT,
    QelLayerElementPolygonGroupDT, QelLayerElementSmoothingDT, QelLayerElementCreaseDT,
    QelLayerElementHoleDT, QelLayerElementVisibilityDT, QelLayerElementMaterialDT,
    QelLayerElementTextureDT, QelLayerElementUserDataDT;

// The texture channel data types, all references.
extern const QelDataType QelMaterialDiffuseDT, QelMaterialDiffuseFactorDT, QelMaterialEmissiveDT,
    QelMaterialEmissiveFactorDT, QelMaterialAmbientDT, QelMaterialAmbientFactorDT,
    QelMaterialSpecularDT, QelMaterialSpecularFactorDT, QelMaterialShininessDT,
    QelMaterialNormalMapDT, QelMaterialBumpDT, QelMaterialTransparentColorDT,
    QelMaterialTransparencyFactorDT, QelMaterialReflectionDT, QelMaterialReflectionFactorDT,
    QelMaterialDisplacementDT, QelMaterialVectorDisplacementDT;

} // namespace qelsdk

#endif
