// The layer module: the layer elements (qellayerelement.h and the user data and
// material kinds) and the layer that groups them.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYER_H
#define QELSDK_SCENE_GEOMETRY_QELLAYER_H

#include <qelsdk/scene/geometry/qellayerelement.h>
#include <qelsdk/scene/geometry/qellayerelementuserdata.h>

namespace qelsdk {

class QelLayerContainer;

// The elements of one layer of a geometry. Its pointers do not own the elements:
// they stay registered with the container, which frees them.
class QelLayer
{
public:
    explicit QelLayer(QelLayerContainer& pOwner);
    // Releases nothing: the elements belong to the container.
    virtual ~QelLayer();

    QelLayer(const QelLayer&) = delete;
    QelLayer& operator=(const QelLayer&) = delete;

protected:
    QelLayerContainer& mOwnerContainer;
};

} // namespace qelsdk

#endif
