#include <qelsdk/core/qeldatatype.h>

namespace qelsdk {

// constexpr definitions: constant-initialised, so usable during static
// initialisation of other translation units (the layer's name tables copy them).
constexpr QelDataType QelUndefinedDT("Undefined", eQelUndefined);
constexpr QelDataType QelCharDT("Char", eQelChar);
constexpr QelDataType QelUCharDT("UChar", eQelUChar);
constexpr QelDataType QelShortDT("Short", eQelShort);
constexpr QelDataType QelUShortDT("UShort", eQelUShort);
constexpr QelDataType QelUIntDT("UInt", eQelUInt);
constexpr QelDataType QelLongLongDT("LongLong", eQelLongLong);
constexpr QelDataType QelULongLongDT("ULongLong", eQelULongLong);
constexpr QelDataType QelHalfFloatDT("HalfFloat", eQelHalfFloat);
constexpr QelDataType QelBoolDT("Bool", eQelBool);
constexpr QelDataType QelIntDT("Int", eQelInt);
constexpr QelDataType QelFloatDT("Float", eQelFloat);
constexpr QelDataType QelDoubleDT("Double", eQelDouble);
constexpr QelDataType QelDouble2DT("Double2", eQelDouble2);
constexpr QelDataType QelDouble3DT("Double3", eQelDouble3);
constexpr QelDataType QelDouble4DT("Double4", eQelDouble4);
constexpr QelDataType QelDouble4x4DT("Double4x4", eQelDouble4x4);
constexpr QelDataType QelEnumDT("Enum", eQelEnum);
constexpr QelDataType QelStringDT("String", eQelString);
constexpr QelDataType QelTimeDT("Time", eQelTime);
constexpr QelDataType QelReferenceDT("Reference", eQelReference);
constexpr QelDataType QelBlobDT("Blob", eQelBlob);
constexpr QelDataType QelDistanceDT("Distance", eQelDistance);
constexpr QelDataType QelDateTimeDT("DateTime", eQelDateTime);

constexpr QelDataType QelLayerElementNormalDT("Normal", eQelDouble4);
constexpr QelDataType QelLayerElementBinormalDT("Binormal", eQelDouble4);
constexpr QelDataType QelLayerElementTangentDT("Tangent", eQelDouble4);
constexpr QelDataType QelLayerElementUVDT("UV", eQelDouble2);
constexpr QelDataType QelLayerElementVertexColorDT("VertexColor", eQelDouble4);
constexpr QelDataType QelLayerElementPolygonGroupDT("PolygonGroup", eQelInt);
constexpr QelDataType QelLayerElementSmoothingDT("Smoothing", eQelInt);
constexpr QelDataType QelLayerElementCreaseDT("Crease", eQelDouble);
constexpr QelDataType QelLayerElementHoleDT("Hole", eQelBool);
constexpr QelDataType QelLayerElementVisibilityDT("Visibility", eQelBool);
constexpr QelDataType QelLayerElementMaterialDT("Material", eQelReference);
constexpr QelDataType QelLayerElementTextureDT("Texture", eQelReference);
constexpr QelDataType QelLayerElementUserDataDT("UserData", eQelReference);

constexpr QelDataType QelMaterialDiffuseDT("DiffuseTexture", eQelReference);
constexpr QelDataType QelMaterialDiffuseFactorDT("DiffuseFactorTexture", eQelReference);
constexpr QelDataType QelMaterialEmissiveDT("EmissiveTexture", eQelReference);
constexpr QelDataType QelMaterialEmissiveFactorDT("EmissiveFactorTexture", eQelReference);
constexpr QelDataType QelMaterialAmbientDT("AmbientTexture", eQelReference);
constexpr QelDataType QelMaterialAmbientFactorDT("AmbientFactorTexture", eQelReference);
constexpr QelDataType QelMaterialSpecularDT("SpecularTexture", eQelReference);
constexpr QelDataType QelMaterialSpecularFactorDT("SpecularFactorTexture", eQelReference);
constexpr QelDataType QelMaterialShininessDT("ShininessTexture", eQelReference);
constexpr QelDataType QelMaterialNormalMapDT("NormalMapTexture", eQelReference);
constexpr QelDataType QelMaterialBumpDT("BumpTexture", eQelReference);
constexpr QelDataType QelMaterialTransparentColorDT("TransparentColorTexture", eQelReference);
constexpr QelDataType QelMaterialTransparencyFactorDT("TransparencyFactorTexture", eQelReference);
constexpr QelDataType QelMaterialReflectionDT("ReflectionTexture", eQelReference);
constexpr QelDataType QelMaterialReflectionFactorDT("ReflectionFactorTexture", eQelReference);
constexpr QelDataType QelMaterialDisplacementDT("DisplacementTexture", eQelReference);
constexpr QelDataType QelMaterialVectorDisplacementDT("VectorDisplacementTexture", eQelReference);

} // namespace qelsdk
