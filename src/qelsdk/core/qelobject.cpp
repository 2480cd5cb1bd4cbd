#include <qelsdk/core/qelobject.h>

namespace qelsdk {
namespace {

bool sWipeMode = false;

} // namespace

QelObject::QelObject(const char* pName) : mName(pName) {}

QelObject::~QelObject()
{
    if (sWipeMode) return;
    while (mSources.Size() > 0)
        Unlink(mSources[mSources.Size() - 1], this);
    while (mDestinations.Size() > 0)
        Unlink(this, mDestinations[mDestinations.Size() - 1]);
}

bool QelObject::ConnectSrcObject(QelObject* pObject, QelConnection::EType /*pType*/)
{
    return Link(pObject, this);
}

bool QelObject::ConnectDstObject(QelObject* pObject, QelConnection::EType /*pType*/)
{
    return Link(this, pObject);
}

bool QelObject::DisconnectSrcObject(QelObject* pObject) { return Unlink(pObject, this); }
bool QelObject::DisconnectDstObject(QelObject* pObject) { return Unlink(this, pObject); }

bool QelObject::IsConnectedSrcObject(const QelObject* pObject) const
{
    return Contains(mSources, pObject);
}

bool QelObject::IsConnectedDstObject(const QelObject* pObject) const
{
    return Contains(mDestinations, pObject);
}

bool QelObject::GetWipeMode() { return sWipeMode; }
void QelObject::SetWipeMode(bool pWipeMode) { sWipeMode = pWipeMode; }

bool QelObject::Link(QelObject* pSource, QelObject* pDestination)
{
    if (!pSource || !pDestination || pSource == pDestination) return false;
    if (pDestination->IsConnectedSrcObject(pSource)) return false;
    if (pDestination->mSources.Add(pSource) < 0) return false;
    if (pSource->mDestinations.Add(pDestination) < 0) {
        // Take the first end back so that a refused connection leaves no trace.
        pDestination->mSources.RemoveAt(pDestination->mSources.Size() - 1);
        return false;
    }
    return true;
}

bool QelObject::Unlink(QelObject* pSource, QelObject* pDestination)
{
    if (!pSource || !pDestination || !pDestination->mSources.RemoveIt(pSource)) return false;
    pSource->mDestinations.RemoveIt(pDestination);
    return true;
}

bool QelObject::Contains(const QelArray<QelObject*>& pList, const QelObject* pObject)
{
    for (int i = 0; i < pList.Size(); ++i)
        if (pList[i] == pObject) return true;
    return false;
}

} // namespace qelsdk
