// The factory every element kind shares, with the array allocation of the kinds.
#ifndef QELSDK_SRC_SCENE_GEOMETRY_QELLAYERELEMENTKIND_H
#define QELSDK_SRC_SCENE_GEOMETRY_QELLAYERELEMENTKIND_H

#include "qelsdk/scene/geometry/qellayerimp.h"

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/qelpropertytypes.h>
#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/geometry/qellayerelement.h>

#include <cstring>

namespace qelsdk {
namespace internal {

// Writes one native 32-bit integer; false when the stream takes fewer bytes.
inline bool QelWriteInt(QelStream& pStream, int pValue) { return pStream.Write(&pValue, 4) == 4; }

// A new element array of pType with its storage, or null with nothing left allocated.
template <class TArray> TArray* QelNewArray(EQelType pType)
{
    TArray* lArray = QelNew<TArray>(pType);
    if (lArray && !lArray->GetImplementation()) {
        QelDelete(lArray);
        return nullptr;
    }
    return lArray;
}

// Whether pElement holds pName, which a name that could not be allocated does not.
inline bool QelHasName(const QelLayerElement& pElement, const char* pName)
{
    return !pName || std::strcmp(pElement.GetName(), pName) == 0;
}

// Registers pElement with pOwner (none for a null owner); false when the owner's
// list could not take it, the element then being in no list.
inline bool QelRegister(QelLayerElement& pElement, QelLayerContainer* pOwner, int pInstance)
{
    const int lListed = pOwner ? pOwner->GetLayerElementCount() : 0;
    pElement.SetOwner(pOwner, pInstance);
    return !pOwner || pOwner->GetLayerElementCount() == lListed + 1;
}

// Allocates a TKind, names it, sets its data type, allocates its arrays and registers
// it with pOwner, in that order: the arrays take the data type's value type and exist
// before the owner learns of the element. Null when any step cannot get its memory,
// with nothing left allocated or registered; only the element's own allocation is
// reported ("tmp != NULL").
template <class TKind>
TKind* QelCreateElement(QelLayerContainer* pOwner, const char* pName, const QelDataType& pType)
{
    TKind* lElement = QelNew<TKind>();
    if (!lElement) {
        _QelAssert(sLayerSourceFile, "Create", __LINE__, false, "%s", "tmp != NULL");
        return nullptr;
    }
    lElement->SetName(pName);
    lElement->SetType(&pType);
    if (!QelHasName(*lElement, pName) || !lElement->AllocateArrays() ||
        !QelRegister(*lElement, pOwner, 0)) {
        QelDelete(lElement);
        return nullptr;
    }
    return lElement;
}

} // namespace internal
} // namespace qelsdk

#endif
