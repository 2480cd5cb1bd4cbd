// QelLayerElementMaterial: the material assignments of a mesh layer.
//
// Unlike the other kinds, the element does not keep its materials to itself: its
// direct array is a proxy whose items mirror the material connections of the node
// that instantiates the owning container. Reading the array shows the node's
// materials in connection order; writing it and unlocking rewires the node's
// materials to match, the array's first and in its order, then the ones the node had
// that the array no longer names. With no owner or no such node the direct array is
// a plain pointer array. The index array is an ordinary array of ints.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTMATERIAL_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTMATERIAL_H

#include <qelsdk/scene/geometry/qellayerelement.h>

namespace qelsdk {

// eMaterial; reference mode eDirect.
class QelLayerElementMaterial : public QelLayerElementTemplate<QelSurfaceMaterial*>
{
public:
    // The direct array: a typed array of material pointers whose storage follows a
    // node of the container (see LayerElementArrayProxyImp).
    class LayerElementArrayProxy : public QelLayerElementArrayTemplate<QelSurfaceMaterial*>
    {
    public:
        // Storage of QelTypeSizeOf(pType) bytes per item (8 for eQelReference) that
        // follows no container yet. Without memory for it the array has no storage
        // and its operations refuse with eInvalidRequest.
        explicit LayerElementArrayProxy(EQelType pType);
        ~LayerElementArrayProxy() override;

        // Follows the pInstance-th destination node of pContainer (not owned).
        void SetContainer(QelLayerContainer* pContainer, int pInstance);
    };

    // Null, with nothing registered and nothing leaked, when any part cannot be
    // allocated, the proxy's storage included.
    static QelLayerElementMaterial* Create(QelLayerContainer* pOwner, const char* pName);

    // Joins pOwner's list, then makes the direct array follow the pInstance-th node
    // that instantiates pOwner.
    void SetOwner(QelLayerContainer* pOwner, int pInstance) override;
    // The proxy direct array of QelLayerElementMaterialDT's value type (the element's
    // own data type is not consulted) and the index array of ints. False when either
    // cannot be allocated with its storage.
    bool AllocateArrays() override;
    // Follows another node of the same owner; the element leaves its owner's list and
    // joins it again at the end.
    virtual void SetInstance(int pInstance);

protected:
    QelLayerElementMaterial();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);

private:
    // The direct array, which AllocateArrays makes a proxy before the element is
    // handed to its owner.
    LayerElementArrayProxy& Proxy();
};

} // namespace qelsdk

#endif
