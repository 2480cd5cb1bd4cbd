#include <qelsdk/scene/geometry/qellayerelementmaterial.h>

#include "qelsdk/scene/geometry/qellayerelementkind.h"
#include "qelsdk/scene/geometry/qellayerimp.h"

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qelobject.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>

namespace qelsdk {

// --- Proxy storage ---------------------------------------------------------------------------

namespace {

// The node's materials, in connection order; false when they cannot be held.
bool SaveMaterials(const QelNode& pNode, QelArray<QelSurfaceMaterial*>& pSaved)
{
    const int lCount = pNode.GetSrcObjectCount<QelSurfaceMaterial>();
    if (lCount > 0 && !pSaved.Reserve(lCount)) return false;
    for (int i = 0; i < lCount; ++i)
        pSaved.Add(pNode.GetSrcObject<QelSurfaceMaterial>(i));
    return true;
}

} // namespace

LayerElementArrayProxyImp::LayerElementArrayProxyImp(size_t pItemSize)
    : LayerElementArrayImp(pItemSize), mContainer(nullptr), mInstance(0)
{
}

LayerElementArrayProxyImp::~LayerElementArrayProxyImp()
{
    mContainer = nullptr;
    mInstance = -1;
}

void LayerElementArrayProxyImp::SetContainer(QelLayerContainer* pContainer, int pInstance)
{
    mContainer = pContainer;
    mInstance = pInstance;
}

QelNode* LayerElementArrayProxyImp::GetCurrentNode() const
{
    return mContainer ? mContainer->GetDstObject<QelNode>(mInstance) : nullptr;
}

QelNode* LayerElementArrayProxyImp::MirroredNode() const
{
    if (QelObject::GetWipeMode() || ItemSize() != static_cast<int>(sizeof(QelSurfaceMaterial*)))
        return nullptr;
    return GetCurrentNode();
}

// Only called with an item size of one pointer, on a slot below the count.
QelSurfaceMaterial*& LayerElementArrayProxyImp::Item(int pIndex)
{
    return *static_cast<QelSurfaceMaterial**>(GetAt(pIndex));
}

void LayerElementArrayProxyImp::LockPostProcess()
{
    if (GetCount() > 0) return;
    const QelNode* lNode = MirroredNode();
    if (!lNode) return;
    const int lCount = lNode->GetSrcObjectCount<QelSurfaceMaterial>();
    Resize(lCount);
    // A failed Resize leaves the block as it was, and the count at 0.
    if (GetCount() != lCount) return;
    for (int i = 0; i < lCount; ++i)
        Item(i) = lNode->GetSrcObject<QelSurfaceMaterial>(i);
}

void LayerElementArrayProxyImp::UnlockPostProcess()
{
    QelNode* lNode = MirroredNode();
    if (!lNode) return;
    QelArray<QelSurfaceMaterial*> lSaved;
    if (!SaveMaterials(*lNode, lSaved)) return;
    lNode->DisconnectAllSrcObject<QelSurfaceMaterial>();
    // Null items are handed over as they are; the object system refuses them.
    for (int i = 0; i < GetCount(); ++i)
        lNode->ConnectSrcObject(Item(i), QelConnection::eNone);
    for (int i = 0; i < lSaved.Size(); ++i)
        if (!lNode->IsConnectedSrcObject(lSaved[i]))
            lNode->ConnectSrcObject(lSaved[i], QelConnection::eNone);
}

// --- Proxy array -----------------------------------------------------------------------------

// QelTypeSizeOf gives eQelReference the size of one pointer. SetImplementation
// releases the storage the base constructor made.
QelLayerElementMaterial::LayerElementArrayProxy::LayerElementArrayProxy(EQelType pType)
    : QelLayerElementArrayTemplate<QelSurfaceMaterial*>(pType)
{
    SetImplementation(QelNew<LayerElementArrayProxyImp>(static_cast<size_t>(QelTypeSizeOf(pType))));
}

QelLayerElementMaterial::LayerElementArrayProxy::~LayerElementArrayProxy() = default;

void QelLayerElementMaterial::LayerElementArrayProxy::SetContainer(QelLayerContainer* pContainer,
                                                                   int pInstance)
{
    if (void* lStorage = GetImplementation())
        static_cast<LayerElementArrayProxyImp*>(lStorage)->SetContainer(pContainer, pInstance);
}

// --- Element ---------------------------------------------------------------------------------

QelLayerElementMaterial::QelLayerElementMaterial() = default;

QelLayerElementMaterial* QelLayerElementMaterial::Create(QelLayerContainer* pOwner,
                                                         const char* pName)
{
    return internal::QelCreateElement<QelLayerElementMaterial>(pOwner, pName,
                                                               QelLayerElementMaterialDT);
}

// The template makes the index array and keeps the proxy, which exists by then.
bool QelLayerElementMaterial::AllocateArrays()
{
    if (!mDirectArray)
        mDirectArray =
            internal::QelNewArray<LayerElementArrayProxy>(QelLayerElementMaterialDT.GetType());
    return mDirectArray && QelLayerElementTemplate::AllocateArrays();
}

void QelLayerElementMaterial::SetOwner(QelLayerContainer* pOwner, int pInstance)
{
    QelLayerElement::SetOwner(pOwner, 0);
    Proxy().SetContainer(pOwner, pInstance);
}

void QelLayerElementMaterial::SetInstance(int pInstance) { SetOwner(mOwner, pInstance); }

QelLayerElementMaterial::LayerElementArrayProxy& QelLayerElementMaterial::Proxy()
{
    return *static_cast<LayerElementArrayProxy*>(mDirectArray);
}

} // namespace qelsdk
