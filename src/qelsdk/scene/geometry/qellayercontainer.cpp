#include <qelsdk/scene/geometry/qellayercontainer.h>

#include <qelsdk/scene/geometry/qellayer.h>

namespace qelsdk {
namespace {

template <class T> bool IsIndexOf(const QelArray<T>& pArray, int pIndex)
{
    return pIndex >= 0 && pIndex < pArray.Size();
}

} // namespace

QelLayerContainer::QelLayerContainer(const char* pName) : QelObject(pName) {}

QelLayerContainer::~QelLayerContainer()
{
    for (int i = 0; i < mLayers.Size(); ++i)
        QelDelete(mLayers[i]);
    // Deleting an element does not touch this list, so it can be walked as it is.
    for (int i = 0; i < mElements.Size(); ++i)
        QelDelete(mElements[i]);
}

int QelLayerContainer::CreateLayer()
{
    QelLayer* lLayer = QelNew<QelLayer>(*this);
    if (!lLayer) return -1;
    const int lIndex = mLayers.Add(lLayer);
    if (lIndex < 0) QelDelete(lLayer);
    return lIndex;
}

QelLayer* QelLayerContainer::GetLayer(int pIndex)
{
    return IsIndexOf(mLayers, pIndex) ? mLayers[pIndex] : nullptr;
}

const QelLayer* QelLayerContainer::GetLayer(int pIndex) const
{
    return IsIndexOf(mLayers, pIndex) ? mLayers[pIndex] : nullptr;
}

void QelLayerContainer::AddToLayerElementsList(QelLayerElement* pElement)
{
    if (pElement && mElements.Find(pElement) < 0) mElements.Add(pElement);
}

void QelLayerContainer::RemoveFromLayerElementsList(QelLayerElement* pElement)
{
    mElements.RemoveIt(pElement);
}

QelLayerElement* QelLayerContainer::GetLayerElement(int pIndex) const
{
    return IsIndexOf(mElements, pIndex) ? mElements[pIndex] : nullptr;
}

} // namespace qelsdk
