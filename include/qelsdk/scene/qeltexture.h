// QelTexture: a texture object, connected to the materials and layer elements that use it.
#ifndef QELSDK_SCENE_QELTEXTURE_H
#define QELSDK_SCENE_QELTEXTURE_H

#include <qelsdk/core/qelobject.h>

namespace qelsdk {

class QelTexture : public QelObject
{
public:
    explicit QelTexture(const char* pName = "");
    ~QelTexture() override;
};

} // namespace qelsdk

#endif
