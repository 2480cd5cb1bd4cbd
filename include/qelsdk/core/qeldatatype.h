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

// The constants are inline constexpr: constant-initialised, one object each across
// the program, and usable while other translation units initialise their statics
// (the layer's tables copy them).

// One per value type.
inline constexpr QelDataType QelUndefinedDT("Undefined", eQelUndefined);
inline constexpr QelDataType QelCharDT("Char", eQelChar);
inline constexpr QelDataType QelUCharDT("UChar", eQelUChar);
inline constexpr QelDataType QelShortDT("Short", eQelShort);
inline constexpr QelDataType QelUShortDT("UShort", eQelUShort);
inline constexpr QelDataType QelUIntDT("UInt", eQelUInt);
inline constexpr QelDataType QelLongLongDT("LongLong", eQelLongLong);
inline constexpr QelDataType QelULongLongDT("ULongLong", eQelULongLong);
inline constexpr QelDataType QelHalfFloatDT("HalfFloat", eQelHalfFloat);
inline constexpr QelDataType QelBoolDT("Bool", eQelBool);
inline constexpr QelDataType QelIntDT("Int", eQelInt);
inline constexpr QelDataType QelFloatDT("Float", eQelFloat);
inline constexpr QelDataType QelDoubleDT("Double", eQelDouble);
inline constexpr QelDataType QelDouble2DT("Double2", eQelDouble2);
inline constexpr QelDataType QelDouble3DT("Double3", eQelDouble3);
inline constexpr QelDataType QelDouble4DT("Double4", eQelDouble4);
inline constexpr QelDataType QelDouble4x4DT("Double4x4", eQelDouble4x4);
inline constexpr QelDataType QelEnumDT("Enum", eQelEnum);
inline constexpr QelDataType QelStringDT("String", eQelString);
inline constexpr QelDataType QelTimeDT("Time", eQelTime);
inline constexpr QelDataType QelReferenceDT("Reference", eQelReference);
inline constexpr QelDataType QelBlobDT("Blob", eQelBlob);
inline constexpr QelDataType QelDistanceDT("Distance", eQelDistance);
inline constexpr QelDataType QelDateTimeDT("DateTime", eQelDateTime);

// The element data types; GetType() is the stored type of the element's direct array.
inline constexpr QelDataType QelLayerElementNormalDT("Normal", eQelDouble4);
inline constexpr QelDataType QelLayerElementBinormalDT("Binormal", eQelDouble4);
inline constexpr QelDataType QelLayerElementTangentDT("Tangent", eQelDouble4);
inline constexpr QelDataType QelLayerElementUVDT("UV", eQelDouble2);
inline constexpr QelDataType QelLayerElementVertexColorDT("VertexColor", eQelDouble4);
inline constexpr QelDataType QelLayerElementPolygonGroupDT("PolygonGroup", eQelInt);
inline constexpr QelDataType QelLayerElementSmoothingDT("Smoothing", eQelInt);
inline constexpr QelDataType QelLayerElementCreaseDT("Crease", eQelDouble);
inline constexpr QelDataType QelLayerElementHoleDT("Hole", eQelBool);
inline constexpr QelDataType QelLayerElementVisibilityDT("Visibility", eQelBool);
inline constexpr QelDataType QelLayerElementMaterialDT("Material", eQelReference);
inline constexpr QelDataType QelLayerElementTextureDT("Texture", eQelReference);
inline constexpr QelDataType QelLayerElementUserDataDT("UserData", eQelReference);

// The texture channel data types, all references.
inline constexpr QelDataType QelMaterialDiffuseDT("DiffuseTexture", eQelReference);
inline constexpr QelDataType QelMaterialDiffuseFactorDT("DiffuseFactorTexture", eQelReference);
inline constexpr QelDataType QelMaterialEmissiveDT("EmissiveTexture", eQelReference);
inline constexpr QelDataType QelMaterialEmissiveFactorDT("EmissiveFactorTexture", eQelReference);
inline constexpr QelDataType QelMaterialAmbientDT("AmbientTexture", eQelReference);
inline constexpr QelDataType QelMaterialAmbientFactorDT("AmbientFactorTexture", eQelReference);
inline constexpr QelDataType QelMaterialSpecularDT("SpecularTexture", eQelReference);
inline constexpr QelDataType QelMaterialSpecularFactorDT("SpecularFactorTexture", eQelReference);
inline constexpr QelDataType QelMaterialShininessDT("ShininessTexture", eQelReference);
inline constexpr QelDataType QelMaterialNormalMapDT("NormalMapTexture", eQelReference);
inline constexpr QelDataType QelMaterialBumpDT("BumpTexture", eQelReference);
inline constexpr QelDataType QelMaterialTransparentColorDT("TransparentColorTexture",
                                                           eQelReference);
inline constexpr QelDataType QelMaterialTransparencyFactorDT("TransparencyFactorTexture",
                                                             eQelReference);
inline constexpr QelDataType QelMaterialReflectionDT("ReflectionTexture", eQelReference);
inline constexpr QelDataType QelMaterialReflectionFactorDT("ReflectionFactorTexture",
                                                           eQelReference);
inline constexpr QelDataType QelMaterialDisplacementDT("DisplacementTexture", eQelReference);
inline constexpr QelDataType QelMaterialVectorDisplacementDT("VectorDisplacementTexture",
                                                             eQelReference);

} // namespace qelsdk

#endif
