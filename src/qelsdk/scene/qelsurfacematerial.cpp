#include <qelsdk/scene/qelsurfacematerial.h>

namespace qelsdk {

// Constant-initialised, so that other static tables may copy these pointers while
// the process starts.
const char* const QelSurfaceMaterial::sDiffuse = "DiffuseColor";
const char* const QelSurfaceMaterial::sDiffuseFactor = "DiffuseFactor";
const char* const QelSurfaceMaterial::sEmissive = "EmissiveColor";
const char* const QelSurfaceMaterial::sEmissiveFactor = "EmissiveFactor";
const char* const QelSurfaceMaterial::sAmbient = "AmbientColor";
const char* const QelSurfaceMaterial::sAmbientFactor = "AmbientFactor";
const char* const QelSurfaceMaterial::sSpecular = "SpecularColor";
const char* const QelSurfaceMaterial::sSpecularFactor = "SpecularFactor";
const char* const QelSurfaceMaterial::sShininess = "Shininess";
const char* const QelSurfaceMaterial::sNormalMap = "NormalMap";
const char* const QelSurfaceMaterial::sBump = "Bump";
const char* const QelSurfaceMaterial::sTransparentColor = "TransparentColor";
const char* const QelSurfaceMaterial::sTransparencyFactor = "TransparencyFactor";
const char* const QelSurfaceMaterial::sReflection = "ReflectionColor";
const char* const QelSurfaceMaterial::sReflectionFactor = "ReflectionFactor";
const char* const QelSurfaceMaterial::sDisplacementColor = "DisplacementColor";
const char* const QelSurfaceMaterial::sVectorDisplacementColor = "VectorDisplacementColor";

QelSurfaceMaterial::QelSurfaceMaterial(const char* pName) : QelObject(pName) {}

// Out of line so that the class has one home for its virtual table.
QelSurfaceMaterial::~QelSurfaceMaterial() = default;

} // namespace qelsdk
