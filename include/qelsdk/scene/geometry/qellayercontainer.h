// QelLayerContainer: a geometry that holds layers of attribute channels.
//
// The container owns its layers and the layer elements in its list. At its end it
// deletes the layers, which release nothing, and then frees every element still in
// the list whatever its reference count: holders that outlive the geometry must
// have taken the element out of the list (Destroy does) to keep it.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERCONTAINER_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERCONTAINER_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qelobject.h>

namespace qelsdk {

class QelLayer;
class QelLayerElement;

class QelLayerContainer : public QelObject
{
public:
    explicit QelLayerContainer(const char* pName = "");
    ~QelLayerContainer() override;

    // The index of a new, empty layer; -1 when it cannot be allocated.
    int CreateLayer();
    int GetLayerCount() const { return mLayers.Size(); }
    // Null out of range.
    QelLayer* GetLayer(int pIndex);
    const QelLayer* GetLayer(int pIndex) const;

    // The list of the elements the container owns, kept by the elements' SetOwner
    // and Destroy. Adding an element already listed does nothing, so that no element
    // is ever freed twice; when the list cannot grow it stays as it was.
    void AddToLayerElementsList(QelLayerElement* pElement);
    // Removes the element if it is listed.
    void RemoveFromLayerElementsList(QelLayerElement* pElement);
    int GetLayerElementCount() const { return mElements.Size(); }
    // Null out of range.
    QelLayerElement* GetLayerElement(int pIndex) const;

private:
    QelArray<QelLayer*> mLayers;
    QelArray<QelLayerElement*> mElements;
};

} // namespace qelsdk

#endif
