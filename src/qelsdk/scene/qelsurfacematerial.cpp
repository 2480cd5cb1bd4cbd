#include <qelsdk/scene/qelsurfacematerial.h>

#include "qelsdk/scene/qelmaterialnames.h"

namespace qelsdk {

const char* const QelSurfaceMaterial::sDiffuse = internal::sDiffuseName;
const char* const QelSurfaceMaterial::sDiffuseFactor = internal::sDiffuseFactorName;
const char* const QelSurfaceMaterial::sEmissive = internal::sEmissiveName;
const char* const QelSurfaceMaterial::sEmissiveFactor = internal::sEmissiveFactorName;
const char* const QelSurfaceMaterial::sAmbient = internal::sAmbientName;
const char* const QelSurfaceMaterial::sAmbientFactor = internal::sAmbientFactorName;
const char* const QelSurfaceMaterial::sSpecular = internal::sSpecularName;
const char* const QelSurfaceMaterial::sSpecularFactor = internal::sSpecularFactorName;
const char* const QelSurfaceMaterial::sShininess = internal::sShininessName;
const char* const QelSurfaceMaterial::sNormalMap = internal::sNormalMapName;
const char* const QelSurfaceMaterial::sBump = internal::sBumpName;
const char* const QelSurfaceMaterial::sTransparentColor = internal::sTransparentColorName;
const char* const QelSurfaceMaterial::sTransparencyFactor = internal::sTransparencyFactorName;
const char* const QelSurfaceMaterial::sReflection = internal::sReflectionName;
const char* const QelSurfaceMaterial::sReflectionFactor = internal::sReflectionFactorName;
const char* const QelSurfaceMaterial::sDisplacementColor = internal::sDisplacementColorName;
const char* const QelSurfaceMaterial::sVectorDisplacementColor =
    internal::sVectorDisplacementColorName;

QelSurfaceMaterial::QelSurfaceMaterial(const char* pName) : QelObject(pName) {}

// Out of line so that the class has one home for its virtual table.
QelSurfaceMaterial::~QelSurfaceMaterial() = default;

} // namespace qelsdk
