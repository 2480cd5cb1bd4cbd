// QelTexture: a texture object, connected to the materials and layer elements that use it.
#ifndef QELSDK_SCENE_QELTEXTURE_H
#define QELSDK_SCENE_QELTEXTURE_H

#include <qelsdk/core/qelobject.h>
#include <qelsdk/core/qelpropertytypes.h>

namespace qelsdk {

class QelTexture : public QelObject
{
public:
    explicit QelTexture(const char* pName = "");
    ~QelTexture() override;
};

// Arrays of QelTexture pointers are tagged as references.
inline EQelType QelTypeOf(QelTexture* const&) { return eQelReference; }

} // namespace qelsdk

#endif
