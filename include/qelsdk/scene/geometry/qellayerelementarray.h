// QelLayerElementArray: the lockable, type-tagged array behind every layer element.
//
// Items of one value type (tagged with an EQelType) live in an untyped storage object
// owned by the array. Every access goes through a lock discipline for one thread at a
// time: read locks that count, a write lock that does not (nested write locks succeed
// and the first unlock releases them all), and direct locks taken while the whole item
// buffer is handed out by GetLocked. A buffer may be asked for in another value type:
// the array then hands out a converted copy it owns and, for a write lock, converts it
// back into its items on Release. Nothing here blocks or waits.
//
// A converted buffer is exactly the block QelMalloc returned, of stride x count bytes,
// with its items constructed in place (strings, blobs and distances own memory); it
// goes back to QelFree at that same address, after its items are destroyed, when it is
// released, when the array is destroyed, or when the conversion is refused. Its type
// and item count are kept beside it, so that the write-back never reads more items
// than the buffer holds: a buffer whose count fell short of the array's, or that is
// released as a type whose items it cannot be read as (one of the two owns memory),
// leaves the items it cannot supply zero, with status eCopyBackFailed.
//
// Each operation records its outcome in the status (GetStatus). Misuse is reported
// through _QelAssert with the file "src/qelsdk/scene/geometry/qellayer".
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTARRAY_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTARRAY_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qelpropertytypes.h>

#include <cstddef>

namespace qelsdk {

class LayerElementArrayImp;
class QelLayerElementArray;

// Arrays of array pointers are tagged as references.
inline EQelType QelTypeOf(QelLayerElementArray* const&) { return eQelReference; }

struct LockAccessStatus
{
    enum ELockAccessStatus {
        eLockAccessOk = 0,     // the operation did what was asked
        eTypeMismatch = 1,     // a single-item operation was given a foreign value type
        eCopyBackFailed = 2,   // Release could not convert an item of a written buffer back
        eInvalidRequest = 3,   // no storage, or an argument was null or out of range
        eLockConflict = 4,     // GetLocked met an opposing lock
        eWriteLockRefused = 5, // set before a write lock is attempted; stays when refused
        eReadLockRefused = 6,  // set before a read lock is attempted; stays when refused
                               // and when a search finds nothing
        eAlienPointer = 7,     // Release was handed a pointer the array never gave out
        eDirectLockHeld = 8    // a lock or unlock collided with a direct lock
    };
};

class QelLayerElementArray
{
public:
    enum ELockMode { eReadLock = 1, eWriteLock = 2, eReadWriteLock = 3 };

    // Without memory for its storage the array still exists: it reports
    // "mImplementation != NULL" and its operations then refuse with eInvalidRequest.
    explicit QelLayerElementArray(EQelType pDataType);
    // Frees the storage and every converted buffer still handed out.
    virtual ~QelLayerElementArray();
    QelLayerElementArray(const QelLayerElementArray&) = delete;
    QelLayerElementArray& operator=(const QelLayerElementArray&) = delete;

    EQelType GetDataType() const { return mDataType; }
    LockAccessStatus::ELockAccessStatus GetStatus() const { return mStatus; }
    void SetStatus(LockAccessStatus::ELockAccessStatus pStatus) const { mStatus = pStatus; }

    // Lock state.
    bool IsWriteLocked() const { return mWriteLocked; }
    int GetReadLockCount() const { return mReadLockCount; }
    bool IsInUse() const;
    int ReadLock() const;       // new count; 0 when refused
    int ReadUnlock() const;     // new count; -1 when refused
    bool ReadWriteLock() const; // keeps the items
    void ReadWriteUnlock() const;
    bool WriteLock() const; // replaces the items by as many zeroed items
    void WriteUnlock() const;

    // Whole-buffer access. GetLocked locks and hands out the items as pDataType (the
    // raw items when that is the stored type, else a converted copy); null on failure.
    virtual void* GetLocked(ELockMode pLockMode, EQelType pDataType);
    void* GetLocked(ELockMode pLockMode = eReadWriteLock)
    {
        return GetLocked(pLockMode, mDataType);
    }
    template <class T> T* GetLocked(T* pDummy, ELockMode pLockMode = eReadWriteLock)
    {
        return static_cast<T*>(GetLocked(pLockMode, QelTypeOf(*pDummy)));
    }
    // Gives back a buffer from GetLocked, locked as pDataType; a written converted
    // buffer is converted back into the items. *pDataPtr is set to null.
    virtual void Release(void** pDataPtr, EQelType pDataType);
    void Release(void** pDataPtr) { Release(pDataPtr, mDataType); }
    // Byte distance between the items of the buffer last handed out.
    virtual size_t GetStride() const { return mStride; }
    // Makes a converted copy of all items, owned by the array until released.
    virtual void ConvertDataType(EQelType pDataType, void** pDataPtr, size_t* pStride);

    // The raw items with no lock; marks the array in use for the rest of its life.
    void* GetDataPtr();
    // Address of one stored item, valid until the storage is next reallocated.
    void* GetReference(int pIndex, EQelType pValueType = eQelUndefined);
    // The same for a caller that already holds the write lock.
    void GetReferenceTo(int pIndex, void** pRef, EQelType pValueType = eQelUndefined);

    // Adopts pImplementation (a LayerElementArrayImp or subclass), destroying the
    // current storage.
    void SetImplementation(void* pImplementation);
    void* GetImplementation() { return mImplementation; }

    // Sizing (each under its own write lock).
    void SetCount(int pCount);
    void Resize(int pItemCount);
    void AddMultiple(int pItemCount);
    void Clear();

    // Single items, moved as raw bytes of the item size. Writing and removing accept
    // eQelUndefined or the stored type as pValueType; reading and searching ignore it.
    int GetCount() const;
    bool GetAt(int pIndex, void** pItem, EQelType pValueType) const;
    bool GetFirst(void** pItem, EQelType pValueType = eQelUndefined) const;
    bool GetLast(void** pItem, EQelType pValueType = eQelUndefined) const;
    void SetAt(int pIndex, const void* pItem, EQelType pValueType);
    void SetLast(const void* pItem, EQelType pValueType = eQelUndefined);
    int InsertAt(int pIndex, const void* pItem, EQelType pValueType);
    int Add(const void* pItem, EQelType pValueType);
    void RemoveAt(int pIndex, void** pItem, EQelType pValueType = eQelUndefined);
    void RemoveLast(void** pItem, EQelType pValueType = eQelUndefined);
    bool RemoveIt(void** pItem, EQelType pValueType = eQelUndefined);
    int FindAfter(int pAfterIndex, const void* pItem, EQelType pValueType = eQelUndefined) const;
    int FindBefore(int pAfterIndex, const void* pItem, EQelType pValueType = eQelUndefined) const;
    int Find(const void* pItem, EQelType pValueType = eQelUndefined) const;
    // Byte equality of the items; neither the types nor anything else is compared.
    bool IsEqual(const QelLayerElementArray& pArray) const;

    // Typed single items: the type passed down is QelTypeOf(T). A stored item larger
    // than T is not copied into *pItem, which it would overrun: GetAt then reports "Bad
    // data type conversion", sets eTypeMismatch and returns false with *pItem
    // untouched. Stored items of T's size or smaller are copied as raw bytes, but a
    // bool is read as its byte: slots that growth exposes without zeroing (and raw
    // writes) may hold a byte no bool holds, which reads as true.
    template <class T> bool GetAt(int pIndex, T* pItem) const
    {
        T* lPtr = pItem;
        return GetAtInto(pIndex, reinterpret_cast<void**>(&lPtr), sizeof(T));
    }
    template <class T> void SetAt(int pIndex, const T& pItem)
    {
        SetAt(pIndex, &pItem, QelTypeOf(pItem));
    }
    template <class T> int Add(const T& pItem) { return Add(&pItem, QelTypeOf(pItem)); }

protected:
    // The storage's item size, 0 without storage.
    size_t StoredItemSize() const;
    // pFits false: reports "Bad data type conversion" from pFunction, sets
    // eTypeMismatch and returns false. Guards typed access against copying beyond a T
    // or beyond a stored item.
    bool CheckItemFits(const char* pFunction, bool pFits) const;

    // The value type and item count of a converted buffer.
    struct BufferRecord
    {
        EQelType mType;
        int mCount;
    };

    EQelType mDataType;
    mutable LockAccessStatus::ELockAccessStatus mStatus;
    mutable int mReadLockCount;
    mutable bool mWriteLocked;
    void* mImplementation;
    size_t mStride;
    int mDirectLocks;
    bool mDirectAccess;
    QelArray<void*> mConvertedBuffers;
    // In step with mConvertedBuffers: entry i describes buffer i.
    QelArray<BufferRecord> mBufferRecords;

private:
    LayerElementArrayImp* Storage() const;
    int ItemSize() const;
    bool CheckValueType(const char* pFunction, EQelType pValueType) const;
    // GetAt into caller storage of pRoom bytes: a stored item larger than that is
    // refused (CheckItemFits) before anything else is looked at.
    bool GetAtInto(int pIndex, void** pItem, size_t pRoom) const;
    bool ReadLockRefused() const;
    bool KeepBuffer(void* pBuffer, const BufferRecord& pRecord);
    void FreeBuffer(int pIndex);
    template <class Work> void UnderWriteLock(const char* pFunction, Work pWork);
    template <class Work> bool UnderReadLock(Work pWork) const;
    void CopyBack(void* pBuffer, const BufferRecord& pRecord, EQelType pDataType);
    int Search(const char* pFunction, int pFrom, int pStep, const void* pItem) const;
};

template <> inline bool QelLayerElementArray::GetAt<bool>(int pIndex, bool* pItem) const
{
    unsigned char lByte = pItem && *pItem;
    unsigned char* lPtr = pItem ? &lByte : nullptr;
    const bool lRead = GetAtInto(pIndex, reinterpret_cast<void**>(&lPtr), sizeof(bool));
    if (pItem) *pItem = lByte != 0;
    return lRead;
}

// The typed face of the array: the same storage, locks and status, with values of T.
// The stored type is whatever the creator passed, not derived from T.
template <class T> class QelLayerElementArrayTemplate : public QelLayerElementArray
{
public:
    explicit QelLayerElementArrayTemplate(EQelType pDataType)
        : QelLayerElementArray(pDataType), mFallbackItem()
    {
    }
    ~QelLayerElementArrayTemplate() override {}

    using QelLayerElementArray::Add;
    using QelLayerElementArray::GetAt;
    using QelLayerElementArray::SetAt;

    // Zero for an index out of range or a refused read lock.
    T GetAt(int pIndex) const
    {
        T lValue = T();
        QelLayerElementArray::GetAt<T>(pIndex, &lValue);
        return lValue;
    }
    void SetAt(int pIndex, const T& pItem) { QelLayerElementArray::SetAt<T>(pIndex, pItem); }
    int Add(const T& pItem) { return QelLayerElementArray::Add<T>(pItem); }

    // The stored item, or mFallbackItem when the array cannot give one. No range
    // check; valid until the storage is next reallocated. A T larger than the stored
    // item would reach beyond it: mFallbackItem, with "Bad data type conversion" and
    // eTypeMismatch.
    T& AsReference(int pIndex)
    {
        void* lItem = GetReference(pIndex, mDataType);
        if (!lItem || !CheckItemFits("AsReference", sizeof(T) <= StoredItemSize()))
            return mFallbackItem;
        return *static_cast<T*>(lItem);
    }

    // Copies item by item through the typed path under a write lock; the stored type
    // of the target stays as it was, so a target of another type refuses every item.
    QelLayerElementArrayTemplate& operator=(const QelLayerElementArrayTemplate& pOther)
    {
        if (&pOther == this) return *this;
        SetStatus(LockAccessStatus::eWriteLockRefused);
        if (!WriteLock()) return *this;
        QelLayerElementArray::SetCount(pOther.GetCount());
        for (int i = 0; i < pOther.GetCount(); ++i)
            SetAt(i, pOther.GetAt(i));
        WriteUnlock();
        SetStatus(LockAccessStatus::eLockAccessOk);
        return *this;
    }

    T mFallbackItem;
};

class QelLayerElementUserData;

// The channel pIndex of a user data element as a typed array. T must match the
// channel's type; nothing checks it. When there is no such channel *pStatus says so
// and the reference must not be used.
template <class T>
QelLayerElementArrayTemplate<T>& QelGetDirectArray(QelLayerElementUserData* pUserData, int pIndex,
                                                   bool* pStatus = nullptr);
template <class T>
const QelLayerElementArrayTemplate<T>& QelGetDirectArray(const QelLayerElementUserData* pUserData,
                                                         int pIndex, bool* pStatus = nullptr);

} // namespace qelsdk

#endif
