#include <qelsdk/core/base/qelalloc.h>

#include <cstdlib>

namespace qelsdk {
namespace {

void* DefaultMalloc(size_t pSize) { return std::malloc(pSize); }
void* DefaultRealloc(void* pBlock, size_t pSize) { return std::realloc(pBlock, pSize); }
void DefaultFree(void* pBlock) { std::free(pBlock); }

QelMallocProc sMallocProc = DefaultMalloc;
QelReallocProc sReallocProc = DefaultRealloc;
QelFreeProc sFreeProc = DefaultFree;

template <class Proc> Proc Replace(Proc& pSlot, Proc pProc, Proc pDefault)
{
    Proc lPrevious = pSlot;
    pSlot = pProc ? pProc : pDefault;
    return lPrevious;
}

} // namespace

QelMallocProc QelSetMallocHandler(QelMallocProc pProc)
{
    return Replace(sMallocProc, pProc, DefaultMalloc);
}
QelReallocProc QelSetReallocHandler(QelReallocProc pProc)
{
    return Replace(sReallocProc, pProc, DefaultRealloc);
}
QelFreeProc QelSetFreeHandler(QelFreeProc pProc) { return Replace(sFreeProc, pProc, DefaultFree); }

// A zero-byte request is served as one byte so that a null result always means
// "out of memory" and never "nothing asked for".
void* QelMalloc(size_t pSize) { return sMallocProc(pSize ? pSize : 1); }

void* QelRealloc(void* pBlock, size_t pSize)
{
    if (!pBlock) return QelMalloc(pSize);
    return sReallocProc(pBlock, pSize ? pSize : 1);
}

void QelFree(void* pBlock)
{
    if (pBlock) sFreeProc(pBlock);
}

} // namespace qelsdk
