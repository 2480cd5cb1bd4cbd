#include "qelsdk/scene/geometry/qellayerimp.h"

#include "qelsdk/core/base/qelreport.h"

#include <climits>
#include <cstring>

namespace qelsdk {
namespace {

// Blocks of four slots needed for pItemCount items; at least one, so that even an
// empty resize keeps a block.
uint32_t BlocksFor(int pItemCount)
{
    const uint32_t lBlocks = (static_cast<uint32_t>(pItemCount) + 3u) / 4u;
    return lBlocks ? lBlocks : 1u;
}

} // namespace

template <class TypeSize> bool LayerArrayBase<TypeSize>::ValidateIndex(int pIndex) const
{
    if (pIndex >= 0 && pIndex < GetArrayCount()) return true;
    QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "Array : Index out of range");
    return false;
}

template <class TypeSize> bool LayerArrayBase<TypeSize>::Fits(uint64_t pBlockCount) const
{
    const uint64_t lBytes = pBlockCount * 4u * static_cast<uint64_t>(GetTypeSize()) +
                            static_cast<uint64_t>(GetHeaderOffset());
    return lBytes <= UINT32_MAX;
}

template <class TypeSize> bool LayerArrayBase<TypeSize>::Reallocate(uint32_t pBlockCount)
{
    if (!Fits(pBlockCount)) return false;
    const uint32_t lBytes = SlotBytes(pBlockCount * 4u) + static_cast<uint32_t>(GetHeaderOffset());
    void* lBlock = QelRealloc(mBlock, lBytes);
    if (!lBlock) return false;
    if (!mBlock) static_cast<Header*>(lBlock)->mArrayCount = 0;
    mBlock = lBlock;
    return true;
}

template <class TypeSize> void LayerArrayBase<TypeSize>::ZeroBytes(uint32_t pFrom, uint32_t pTo)
{
    if (pFrom < pTo) std::memset(Slots() + pFrom, 0, pTo - pFrom);
}

// Sets the count to exactly pItemCount and the allocation to exactly the blocks it
// needs, shrinking as well as growing. A negative count is reported and refused: it
// has no slots to zero and no allocation to fit.
template <class TypeSize> void LayerArrayBase<TypeSize>::Resize(int pItemCount)
{
    if (pItemCount < 0) {
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "pItemCount >= 0");
        return;
    }
    const uint32_t lNewBlockCount = BlocksFor(pItemCount);
    const int lOldCount = GetArrayCount();
    const uint32_t lOldBlockCount = static_cast<uint32_t>(GetBlockCount());
    if (lNewBlockCount != lOldBlockCount && !Reallocate(lNewBlockCount)) return;
    const uint32_t lOldSize = SlotBytes(static_cast<uint32_t>(lOldCount));
    const uint32_t lNewSize = SlotBytes(lNewBlockCount * 4u);
    // Growing the count inside the same blocks zeroes nothing: the exposed slots keep
    // whatever they hold, which SetCount-then-Resize callers see again.
    if (lOldBlockCount < lNewBlockCount)
        ZeroBytes(lOldSize, lNewSize);
    else if (pItemCount < lOldCount)
        ZeroBytes(SlotBytes(static_cast<uint32_t>(pItemCount)), lNewSize);
    SetBlockCount(static_cast<int>(lNewBlockCount));
    SetArrayCount(pItemCount);
}

// Appends pItemCount zeroed items; the allocation grows to exactly the blocks needed
// and never shrinks. A negative count is reported and then refused like zero.
template <class TypeSize> void LayerArrayBase<TypeSize>::AddMultiple(int pItemCount)
{
    if (pItemCount <= 0) {
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "pItemCount > 0");
        return;
    }
    const int lOldCount = GetArrayCount();
    // A count beyond an int, or a block beyond 32-bit byte sizes, is refused like a
    // failed allocation.
    if (pItemCount > INT_MAX - lOldCount) return;
    const uint32_t lOldBlockCount = static_cast<uint32_t>(GetBlockCount());
    const uint32_t lNewBlockCount = BlocksFor(pItemCount + lOldCount);
    if (!Fits(lNewBlockCount)) return;
    const uint32_t lOldSize = SlotBytes(static_cast<uint32_t>(lOldCount));
    const uint32_t lNewSize = SlotBytes(lNewBlockCount * 4u);
    if (lOldSize >= lNewSize)
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "lOldArraySize < lNewArraySize");
    uint32_t lBlockCount = lOldBlockCount;
    if (lOldBlockCount < lNewBlockCount) {
        if (!Reallocate(lNewBlockCount)) return;
        lBlockCount = lNewBlockCount;
    }
    ZeroBytes(lOldSize, lNewSize);
    SetArrayCount(lOldCount + pItemCount);
    SetBlockCount(static_cast<int>(lBlockCount));
}

// Shrinking frees and zeroes nothing: the items beyond the new count keep their
// bytes. On an array without a block this does nothing at all.
template <class TypeSize> void LayerArrayBase<TypeSize>::SetCount(int pCount)
{
    if (pCount < 0) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "ArrayUL : Item count can't be negative");
        return;
    }
    const int lCount = GetArrayCount();
    if (pCount > lCount)
        AddMultiple(pCount - lCount);
    else
        SetArrayCount(pCount);
}

// Inserts one item copied from pItem before pIndex (past the end appends) and returns
// the index used, or -1 when the block cannot grow. A full block doubles (1, 2, 4 ...
// blocks) and the new slots are left as the allocator gave them. A negative index is
// reported and refused: it names no slot.
template <class TypeSize> int LayerArrayBase<TypeSize>::InsertAt(int pIndex, const void* pItem)
{
    const int lCount = GetArrayCount();
    const uint32_t lBlockCount = static_cast<uint32_t>(GetBlockCount());
    if (pIndex < 0) {
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "pIndex >= 0");
        return -1;
    }
    if (pIndex > lCount) pIndex = lCount;
    if (lCount == INT_MAX)
        return -1; // the count has no room left: refused like a failed allocation
    uint32_t lNewBlockCount = lBlockCount;
    if (lBlockCount * 4u <= static_cast<uint32_t>(lCount)) {
        lNewBlockCount = lBlockCount ? lBlockCount * 2u : 1u;
        if (!Reallocate(lNewBlockCount)) return -1;
    }
    const uint32_t lItemSize = static_cast<uint32_t>(GetTypeSize());
    char* lSlot = Slots() + SlotBytes(static_cast<uint32_t>(pIndex));
    if (pIndex < lCount)
        std::memmove(lSlot + lItemSize, lSlot, SlotBytes(static_cast<uint32_t>(lCount - pIndex)));
    std::memmove(lSlot, pItem, lItemSize);
    SetArrayCount(lCount + 1);
    SetBlockCount(static_cast<int>(lNewBlockCount));
    return pIndex;
}

// Removes one item; the vacated last slot is zeroed and the allocation kept.
template <class TypeSize> void LayerArrayBase<TypeSize>::RemoveAt(int pIndex)
{
    if (!ValidateIndex(pIndex)) return;
    const int lCount = GetArrayCount();
    const uint32_t lItemSize = static_cast<uint32_t>(GetTypeSize());
    char* lSlot = Slots() + SlotBytes(static_cast<uint32_t>(pIndex));
    if (pIndex + 1 < lCount)
        std::memmove(lSlot, lSlot + lItemSize,
                     SlotBytes(static_cast<uint32_t>(lCount - pIndex - 1)));
    SetArrayCount(lCount - 1);
    ZeroBytes(SlotBytes(static_cast<uint32_t>(lCount - 1)),
              SlotBytes(static_cast<uint32_t>(lCount)));
}

template <class TypeSize> void LayerArrayBase<TypeSize>::Clear()
{
    QelFree(mBlock);
    mBlock = nullptr;
}

template class LayerArrayBase<LayerArrayBaseSize>;

} // namespace qelsdk
