// Memory services. Every allocation of the library goes through QelMalloc,
// QelRealloc and QelFree, whose handlers can be replaced so that a caller can make
// any single allocation fail and watch the library refuse cleanly.
#ifndef QELSDK_CORE_BASE_QELALLOC_H
#define QELSDK_CORE_BASE_QELALLOC_H

#include <cstddef>
#include <new>
#include <utility>

namespace qelsdk {

typedef void* (*QelMallocProc)(size_t pSize);
typedef void* (*QelReallocProc)(void* pBlock, size_t pSize);
typedef void (*QelFreeProc)(void* pBlock);

// Each setter returns the previous handler; nullptr restores the default.
QelMallocProc QelSetMallocHandler(QelMallocProc pProc);
QelReallocProc QelSetReallocHandler(QelReallocProc pProc);
QelFreeProc QelSetFreeHandler(QelFreeProc pProc);

void* QelMalloc(size_t pSize);
// A null block is a fresh allocation. On failure the block is left as it was.
void* QelRealloc(void* pBlock, size_t pSize);
// A null block is ignored.
void QelFree(void* pBlock);

// Allocates through QelMalloc and constructs in place; null without construction
// when the allocation fails.
template <class T, class... Args> T* QelNew(Args&&... pArgs)
{
    void* lMemory = QelMalloc(sizeof(T));
    if (!lMemory) return nullptr;
    return new (lMemory) T(std::forward<Args>(pArgs)...);
}

// Runs the (virtual) destructor, then frees; a null pointer is ignored. The block
// freed is the one of the most derived object, which a virtual destructor's class
// shares its address with for the single-inheritance trees of the library.
// NOLINTNEXTLINE(readability-identifier-naming): the interface names the parameter p.
template <class T> void QelDelete(T* p)
{
    if (!p) return;
    p->~T();
    QelFree(p);
}

// The parameters keep the names a and b that the interface gives them.
// NOLINTNEXTLINE(readability-identifier-naming)
template <class T> inline T QelMin(const T& a, const T& b) { return b < a ? b : a; }

// NOLINTNEXTLINE(readability-identifier-naming)
template <class T> inline T QelMax(const T& a, const T& b) { return a < b ? b : a; }

// The record allocator of the ordered map: a fixed record size, records taken from
// QelMalloc. Reserve is a hook for pooling allocators and does nothing here.
class QelBaseAllocator
{
public:
    explicit QelBaseAllocator(size_t pRecordSize) : mRecordSize(pRecordSize) {}

    void Reserve(size_t /*pRecordCount*/) {}
    void* AllocateRecords(size_t pRecordCount = 1) { return QelMalloc(mRecordSize * pRecordCount); }
    // NOLINTNEXTLINE(readability-identifier-naming): the interface names the parameter p.
    void FreeMemory(void* p) { QelFree(p); }
    size_t GetRecordSize() const { return mRecordSize; }

private:
    size_t mRecordSize;
};

} // namespace qelsdk

#endif
