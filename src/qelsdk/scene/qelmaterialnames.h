// The channel names of QelSurfaceMaterial as objects of their own: one address per
// name across the program, usable in constant expressions. The class's name constants
// and the layer's channel table both point at them, so both are constant-initialised
// and agree on every pointer.
#ifndef QELSDK_SRC_SCENE_QELMATERIALNAMES_H
#define QELSDK_SRC_SCENE_QELMATERIALNAMES_H

namespace qelsdk {
namespace internal {

inline constexpr char sDiffuseName[] = "DiffuseColor";
inline constexpr char sDiffuseFactorName[] = "DiffuseFactor";
inline constexpr char sEmissiveName[] = "EmissiveColor";
inline constexpr char sEmissiveFactorName[] = "EmissiveFactor";
inline constexpr char sAmbientName[] = "AmbientColor";
inline constexpr char sAmbientFactorName[] = "AmbientFactor";
inline constexpr char sSpecularName[] = "SpecularColor";
inline constexpr char sSpecularFactorName[] = "SpecularFactor";
inline constexpr char sShininessName[] = "Shininess";
inline constexpr char sNormalMapName[] = "NormalMap";
inline constexpr char sBumpName[] = "Bump";
inline constexpr char sTransparentColorName[] = "TransparentColor";
inline constexpr char sTransparencyFactorName[] = "TransparencyFactor";
inline constexpr char sReflectionName[] = "ReflectionColor";
inline constexpr char sReflectionFactorName[] = "ReflectionFactor";
inline constexpr char sDisplacementColorName[] = "DisplacementColor";
inline constexpr char sVectorDisplacementColorName[] = "VectorDisplacementColor";

} // namespace internal
} // namespace qelsdk

#endif
