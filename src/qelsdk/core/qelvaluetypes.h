// Placeholder until the value-type table lands: construction and destruction of items.
#ifndef QELSDK_SRC_CORE_QELVALUETYPES_H
#define QELSDK_SRC_CORE_QELVALUETYPES_H

#include <qelsdk/core/qelpropertytypes.h>

#include <new>

namespace qelsdk {
namespace internal {

template <class T> void QelConstructAll(void* pItems, int pCount)
{
    for (int i = 0; i < pCount; ++i)
        new (static_cast<T*>(pItems) + i) T();
}
template <class T> void QelDestroyAll(void* pItems, int pCount)
{
    for (int i = 0; i < pCount; ++i)
        static_cast<T*>(pItems)[i].~T();
}

inline bool QelTypeOwnsMemory(EQelType pType)
{
    return pType == eQelString || pType == eQelBlob || pType == eQelDistance;
}
inline void QelConstructValues(EQelType pType, void* pItems, int pCount)
{
    switch (pType) {
    case eQelString:
        QelConstructAll<QelString>(pItems, pCount);
        break;
    case eQelBlob:
        QelConstructAll<QelBlob>(pItems, pCount);
        break;
    case eQelDistance:
        QelConstructAll<QelDistance>(pItems, pCount);
        break;
    case eQelDouble2:
        QelConstructAll<QelDouble2>(pItems, pCount);
        break;
    case eQelDouble3:
        QelConstructAll<QelDouble3>(pItems, pCount);
        break;
    case eQelDouble4:
        QelConstructAll<QelDouble4>(pItems, pCount);
        break;
    case eQelDouble4x4:
        QelConstructAll<QelDouble4x4>(pItems, pCount);
        break;
    case eQelDateTime:
        QelConstructAll<QelDateTime>(pItems, pCount);
        break;
    case eQelTime:
        QelConstructAll<QelTime>(pItems, pCount);
        break;
    case eQelHalfFloat:
        QelConstructAll<QelHalfFloat>(pItems, pCount);
        break;
    default:
        break;
    }
}
inline void QelDestroyValues(EQelType pType, void* pItems, int pCount)
{
    switch (pType) {
    case eQelString:
        QelDestroyAll<QelString>(pItems, pCount);
        break;
    case eQelBlob:
        QelDestroyAll<QelBlob>(pItems, pCount);
        break;
    case eQelDistance:
        QelDestroyAll<QelDistance>(pItems, pCount);
        break;
    default:
        break;
    }
}

} // namespace internal
} // namespace qelsdk

#endif
