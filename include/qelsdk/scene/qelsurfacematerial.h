// QelSurfaceMaterial: the material of a surface. The channel names are the names of
// the material properties that textures connect to; the layer module maps each
// texture channel to one of them.
#ifndef QELSDK_SCENE_QELSURFACEMATERIAL_H
#define QELSDK_SCENE_QELSURFACEMATERIAL_H

#include <qelsdk/core/qelobject.h>
#include <qelsdk/core/qelpropertytypes.h>

namespace qelsdk {

class QelSurfaceMaterial : public QelObject
{
public:
    explicit QelSurfaceMaterial(const char* pName = "");
    ~QelSurfaceMaterial() override;

    static constexpr const char* sDiffuse = "DiffuseColor";
    static constexpr const char* sDiffuseFactor = "DiffuseFactor";
    static constexpr const char* sEmissive = "EmissiveColor";
    static constexpr const char* sEmissiveFactor = "EmissiveFactor";
    static constexpr const char* sAmbient = "AmbientColor";
    static constexpr const char* sAmbientFactor = "AmbientFactor";
    static constexpr const char* sSpecular = "SpecularColor";
    static constexpr const char* sSpecularFactor = "SpecularFactor";
    static constexpr const char* sShininess = "Shininess";
    static constexpr const char* sNormalMap = "NormalMap";
    static constexpr const char* sBump = "Bump";
    static constexpr const char* sTransparentColor = "TransparentColor";
    static constexpr const char* sTransparencyFactor = "TransparencyFactor";
    static constexpr const char* sReflection = "ReflectionColor";
    static constexpr const char* sReflectionFactor = "ReflectionFactor";
    static constexpr const char* sDisplacementColor = "DisplacementColor";
    static constexpr const char* sVectorDisplacementColor = "VectorDisplacementColor";
};

// Arrays of QelSurfaceMaterial pointers are tagged as references.
inline EQelType QelTypeOf(QelSurfaceMaterial* const&) { return eQelReference; }

} // namespace qelsdk

#endif
