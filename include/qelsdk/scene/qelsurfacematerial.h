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

    static const char* const sDiffuse;
    static const char* const sDiffuseFactor;
    static const char* const sEmissive;
    static const char* const sEmissiveFactor;
    static const char* const sAmbient;
    static const char* const sAmbientFactor;
    static const char* const sSpecular;
    static const char* const sSpecularFactor;
    static const char* const sShininess;
    static const char* const sNormalMap;
    static const char* const sBump;
    static const char* const sTransparentColor;
    static const char* const sTransparencyFactor;
    static const char* const sReflection;
    static const char* const sReflectionFactor;
    static const char* const sDisplacementColor;
    static const char* const sVectorDisplacementColor;
};

// Arrays of QelSurfaceMaterial pointers are tagged as references.
inline EQelType QelTypeOf(QelSurfaceMaterial* const&) { return eQelReference; }

} // namespace qelsdk

#endif
