// QelArray<T>: the library's growable array of plain items.
//
// A raw-memory container: items are never constructed, copied through a copy
// constructor or destroyed by it. They are moved with block moves, zero-filled and
// copied byte for byte, so only trivially copyable item types may be stored; an
// array of pointers does not own its pointees (see QelArrayFree).
//
// Invariants: 0 <= mSize <= mCapacity, except after the documented RemoveAt misuse;
// mArray is null exactly when nothing is allocated, and then both counts are 0.
// Slots from mSize to mCapacity - 1 are reserved memory: SetAt may write there,
// operator[] complains about reading there.
//
// Capacities are ints: a growth past INT_MAX slots, and a negative capacity handed to
// Allocate, are refused like a failed allocation ("lArray"; -1, false or null) without
// asking the allocator, so that no byte size wraps.
#ifndef QELSDK_CORE_BASE_QELARRAY_H
#define QELSDK_CORE_BASE_QELARRAY_H

#include <qelsdk/core/base/qelalloc.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace qelsdk {
namespace internal {

// Reports for the templates of this header, under its file name: pText is a failed
// condition, or a message when pIsMessage.
void QelArrayReport(const char* pFunction, unsigned int pLine, bool pIsMessage, const char* pText);

} // namespace internal

template <class T> class QelArray
{
    static_assert(std::is_trivially_copyable<T>::value, "QelArray moves its items as raw bytes");
    // Byte sizes are size_t products of an int count and the item size: they cannot
    // wrap for any count an array can hold.
    static_assert(sizeof(T) <= SIZE_MAX / INT_MAX, "the byte size of INT_MAX items fits a size_t");

public:
    QelArray() : mSize(0), mCapacity(0), mArray(nullptr) {}

    explicit QelArray(int pCapacity) : QelArray()
    {
        if (pCapacity > 0) Reserve(pCapacity);
    }

    QelArray(const QelArray& pOther) : QelArray() { *this = pOther; }

    ~QelArray() { Clear(); }

    int GetCount() const { return mSize; }
    int Size() const { return mSize; }
    int GetCapacity() const { return mCapacity; }
    T* GetArray() const { return mArray; }

    // Reports a bad index but hands out the slot whatever the check said.
    T& operator[](int pIndex) const
    {
        CheckIndex(pIndex);
        return mArray[pIndex];
    }

    // The item at pIndex with the checks of operator[]. A slot that does not exist
    // at all (outside the allocation) reads as zero bytes instead of stray memory.
    T GetAt(int pIndex) const
    {
        if (!CheckIndex(pIndex) && (pIndex < 0 || pIndex >= mCapacity)) return T();
        return mArray[pIndex];
    }

    // Writes into any slot below the capacity; a slot at or past the size makes the
    // array that long, turning the skipped reserved slots into items as they are.
    void SetAt(int pIndex, const T& pItem)
    {
        if (pIndex < 0 || pIndex >= mCapacity) {
            internal::QelArrayReport("SetAt", __LINE__, false, "pIndex >= 0 && pIndex < mCapacity");
            return;
        }
        if (pIndex >= mSize) mSize = pIndex + 1;
        if (mArray) mArray[pIndex] = pItem;
    }

    // Inserts pItem before pIndex (an index past the end appends) and returns the
    // index used, or -1. A full array doubles, or grows by one slot when pCompact.
    int InsertAt(int pIndex, const T& pItem, bool pCompact = false)
    {
        if (pIndex < 0) {
            internal::QelArrayReport("InsertAt", __LINE__, false, "pIndex >= 0");
            return -1;
        }
        const int lIndex = QelMin(pIndex, mSize);
        if (mSize < mCapacity) {
            if (lIndex < mSize && &pItem >= mArray + lIndex && &pItem < mArray + mSize) {
                // The shift below would move the item being inserted.
                const T lItem = pItem;
                return InsertAt(pIndex, lItem, false);
            }
            if (lIndex < mSize)
                std::memmove(static_cast<void*>(mArray + lIndex + 1), mArray + lIndex,
                             sizeof(T) * static_cast<size_t>(mSize - lIndex));
            mArray[lIndex] = pItem;
            ++mSize;
            return lIndex;
        }
        // pItem may live in the block that is about to move.
        const T lItem = pItem;
        const long long lWanted = pCompact ? mCapacity + 1LL : mCapacity * 2LL;
        const int lCapacity = lWanted > INT_MAX ? 0 : QelMax(static_cast<int>(lWanted), 1);
        T* lArray = lCapacity ? Allocate(lCapacity) : nullptr;
        if (!lArray) {
            internal::QelArrayReport("InsertAt", __LINE__, false, "lArray");
            return -1;
        }
        mArray = lArray;
        mCapacity = lCapacity;
        return InsertAt(pIndex, lItem, false);
    }

    int Add(const T& pItem)
    {
        if (mSize < mCapacity) { // fast path of InsertAt(mSize, pItem, false)
            mArray[mSize] = pItem;
            return mSize++;
        }
        return InsertAt(mSize, pItem, false);
    }

    // Removes the item at pIndex and returns it. A bad index is reported and the
    // size still goes down by one, deliberately: callers that remove past the end
    // count on the size dropping. Only the item move is skipped for a negative
    // index, which has no slot.
    T RemoveAt(int pIndex)
    {
        const T lItem = GetAt(pIndex);
        if (pIndex >= 0 && pIndex + 1 < mSize)
            std::memmove(static_cast<void*>(mArray + pIndex), mArray + pIndex + 1,
                         sizeof(T) * static_cast<size_t>(mSize - pIndex - 1));
        mSize -= 1;
        return lItem;
    }

    bool RemoveIt(const T& pItem)
    {
        const int lIndex = Find(pItem, 0);
        if (lIndex < 0) return false;
        RemoveAt(lIndex);
        return true;
    }

    int Find(const T& pItem, int pStartIndex = 0) const
    {
        if (pStartIndex < 0) {
            internal::QelArrayReport("Find", __LINE__, false, "pStartIndex >= 0");
            return -1;
        }
        for (int i = pStartIndex; i < mSize; ++i)
            if (mArray[i] == pItem) return i;
        return -1;
    }

    // Grows the allocation to pCapacity slots, never shrinks it; new slots are zero.
    bool Reserve(int pCapacity)
    {
        if (pCapacity <= 0) {
            internal::QelArrayReport("Reserve", __LINE__, false, "pCapacity > 0");
            return false;
        }
        if (pCapacity <= mCapacity) return true;
        T* lArray = Allocate(pCapacity);
        if (!lArray) {
            internal::QelArrayReport("Reserve", __LINE__, false, "lArray");
            return false;
        }
        mArray = lArray;
        mCapacity = pCapacity;
        ZeroSlots(mSize, mCapacity);
        return true;
    }

    // Sets size and capacity both to pSize. Slots gained beyond the old capacity are
    // zeroed; items regained inside the old capacity keep their old bytes, which is
    // kept as-is: SetAt-then-Resize callers rely on it.
    bool Resize(int pSize)
    {
        if (mSize == pSize && mSize == mCapacity) return true;
        if (pSize == 0) {
            Clear();
            return true;
        }
        if (pSize < 0) {
            internal::QelArrayReport("Resize", __LINE__, false, "pSize > 0");
            return false;
        }
        if (mCapacity != pSize) {
            T* lArray = Allocate(pSize);
            if (!lArray) {
                internal::QelArrayReport("Resize", __LINE__, false, "lArray");
                return false;
            }
            mArray = lArray;
        }
        if (mCapacity < pSize) ZeroSlots(QelMax(mSize, 0), pSize);
        mSize = pSize;
        mCapacity = pSize;
        return true;
    }

    void Clear()
    {
        if (!mArray) return;
        mSize = 0;
        mCapacity = 0;
        QelFree(mArray);
        mArray = nullptr;
    }

    // Byte copy of the other array's items; the target ends with capacity == size.
    QelArray& operator=(const QelArray& pOther)
    {
        if (&pOther == this) return *this;
        if (!Resize(pOther.mSize)) return *this;
        if (pOther.mSize > 0)
            std::memcpy(static_cast<void*>(mArray), pOther.mArray,
                        sizeof(T) * static_cast<size_t>(pOther.mSize));
        return *this;
    }

    // The block reallocated to pCapacity slots; no field changes. The caller stores
    // the result only when it is not null (the old block is then gone). A negative
    // capacity, whose byte size would wrap, is null without asking the allocator.
    T* Allocate(int pCapacity)
    {
        if (pCapacity < 0) return nullptr;
        return static_cast<T*>(QelRealloc(mArray, sizeof(T) * static_cast<size_t>(pCapacity)));
    }

private:
    // The index check of operator[] (GetAt and RemoveAt read through it, so their
    // reports name operator[]). True when the index names an item.
    bool CheckIndex(int pIndex) const
    {
        const char* lText = nullptr;
        if (pIndex < 0 || pIndex >= mCapacity)
            lText = "Index is out of range!";
        else if (pIndex >= mSize)
            lText = "Index is out of range, but not outside of capacity! Call SetAt() to use "
                    "reserved memory.";
        if (lText) internal::QelArrayReport("operator[]", __LINE__, true, lText);
        return !lText;
    }

    void ZeroSlots(int pFrom, int pTo)
    {
        if (pFrom < pTo)
            std::memset(static_cast<void*>(mArray + pFrom), 0,
                        sizeof(T) * static_cast<size_t>(pTo - pFrom));
    }

    int mSize;
    int mCapacity;
    T* mArray;
};

// Frees every item with QelFree, then empties the array. Only for arrays of
// pointers to blocks obtained from QelMalloc.
template <class T> void QelArrayFree(QelArray<T>& pArray)
{
    for (int i = 0; i < pArray.Size(); ++i)
        QelFree(pArray[i]);
    pArray.Clear();
}

} // namespace qelsdk

#endif
