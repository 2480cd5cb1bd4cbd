#include <qelsdk/scene/geometry/qellayer.h>

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>

namespace qelsdk {

// mType stays null until the factory of the kind sets it.
QelLayerElement::QelLayerElement()
    : mMappingMode(eNone), mReferenceMode(eDirect), mType(nullptr), mOwner(nullptr), mRefCount(0)
{
}

QelLayerElement::~QelLayerElement() = default;

void QelLayerElement::SetOwner(QelLayerContainer* pOwner, int /*pInstance*/)
{
    if (mOwner) mOwner->RemoveFromLayerElementsList(this);
    mOwner = pOwner;
    if (mOwner) mOwner->AddToLayerElementsList(this);
}

// The base has no content of its own to stream yet.
bool QelLayerElement::ContentWriteTo(QelStream& /*pStream*/) const { return true; }
bool QelLayerElement::ContentReadFrom(const QelStream& /*pStream*/) { return true; }

void QelLayerElement::SetName(const char* pName) { mName = QelString(pName); }

int QelLayerElement::DecRefCount()
{
    mRefCount = QelMax(mRefCount - 1, 0);
    return mRefCount;
}

void QelLayerElement::Destroy()
{
    if (mOwner) mOwner->RemoveFromLayerElementsList(this);
    Destruct();
}

void QelLayerElement::Destruct()
{
    if (DecRefCount() == 0) QelDelete(this);
}

QelLayerElement& QelLayerElement::operator=(const QelLayerElement& pOther)
{
    mMappingMode = pOther.mMappingMode;
    mReferenceMode = pOther.mReferenceMode;
    return *this;
}

QelLayer::QelLayer(QelLayerContainer& pOwner) : mOwnerContainer(pOwner) {}

QelLayer::~QelLayer() = default;

} // namespace qelsdk
