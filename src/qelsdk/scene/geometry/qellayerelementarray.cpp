#include <qelsdk/scene/geometry/qellayerelementarray.h>

#include "qelsdk/core/qelvaluetypes.h"
#include "qelsdk/scene/geometry/qellayerimp.h"

#include "qelsdk/core/base/qelreport.h"
#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qeldatatype.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltypecopy.h>

#include <climits>
#include <cstdint>
#include <cstring>

namespace qelsdk {
namespace {

typedef LockAccessStatus Status;

// A converted buffer is stride x count bytes: an int count times a type size, which
// cannot wrap a size_t.
static_assert(SIZE_MAX / INT_MAX >= INT_MAX, "a converted buffer's byte size fits a size_t");

// Exactly stride x count bytes from QelMalloc, the items constructed in place; null
// when the memory is not there.
void* AllocateBuffer(EQelType pType, int pCount, size_t pStride)
{
    void* lBuffer = QelMalloc(pStride * static_cast<size_t>(pCount));
    if (lBuffer) internal::QelConstructValues(pType, lBuffer, pCount);
    return lBuffer;
}

void DestroyBuffer(void* pBuffer, EQelType pType, int pCount)
{
    internal::QelDestroyValues(pType, pBuffer, pCount);
    QelFree(pBuffer);
}

// The items of pDataType that a buffer of pBufferCount items of pBufferType can be
// read as: never more than its bytes hold, and none when either type's items own
// memory, whose bytes mean nothing as the other type.
int ReadableItems(EQelType pBufferType, int pBufferCount, EQelType pDataType)
{
    if (pDataType == pBufferType) return pBufferCount;
    if (internal::QelTypeOwnsMemory(pDataType) || internal::QelTypeOwnsMemory(pBufferType))
        return 0;
    const size_t lStride = static_cast<size_t>(QelTypeSizeOf(pDataType));
    // An unknown type converts nothing: its first item is refused with its report.
    if (lStride == 0) return pBufferCount;
    const size_t lBytes =
        static_cast<size_t>(QelTypeSizeOf(pBufferType)) * static_cast<size_t>(pBufferCount);
    return static_cast<int>(lBytes / lStride);
}

// Copies one item. The common item sizes get a fixed-size copy the compiler turns
// into plain moves: single-item operations run once per item.
inline void CopyItem(void* pDst, const void* pSrc, size_t pSize)
{
    switch (pSize) {
    case 1:
        std::memcpy(pDst, pSrc, 1);
        break;
    case 4:
        std::memcpy(pDst, pSrc, 4);
        break;
    case 8:
        std::memcpy(pDst, pSrc, 8);
        break;
    case 16:
        std::memcpy(pDst, pSrc, 16);
        break;
    case 32:
        std::memcpy(pDst, pSrc, 32);
        break;
    default:
        std::memcpy(pDst, pSrc, pSize);
        break;
    }
}

} // namespace

QelLayerElementArray::QelLayerElementArray(EQelType pDataType)
    : mDataType(pDataType), mStatus(Status::eLockAccessOk), mReadLockCount(0), mWriteLocked(false),
      mImplementation(nullptr), mStride(static_cast<size_t>(QelTypeSizeOf(pDataType))),
      mDirectLocks(0), mDirectAccess(false)
{
    mImplementation = QelNew<LayerElementArrayImp>(mStride);
    if (!mImplementation)
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "mImplementation != NULL");
}

QelLayerElementArray::~QelLayerElementArray()
{
    QelDelete(Storage());
    while (mConvertedBuffers.Size() > 0)
        FreeBuffer(mConvertedBuffers.Size() - 1);
    mConvertedBuffers.Clear();
    mBufferRecords.Clear();
}

// Hands pBuffer out for good: both bookkeeping arrays take it, or neither does.
bool QelLayerElementArray::KeepBuffer(void* pBuffer, const BufferRecord& pRecord)
{
    if (mConvertedBuffers.Add(pBuffer) < 0) return false;
    if (mBufferRecords.Add(pRecord) >= 0) return true;
    mConvertedBuffers.RemoveAt(mConvertedBuffers.Size() - 1);
    return false;
}

// Destroys the items of converted buffer pIndex, frees it and forgets it.
void QelLayerElementArray::FreeBuffer(int pIndex)
{
    const BufferRecord lRecord = mBufferRecords.RemoveAt(pIndex);
    DestroyBuffer(mConvertedBuffers.RemoveAt(pIndex), lRecord.mType, lRecord.mCount);
}

size_t QelLayerElementArray::StoredItemSize() const
{
    return Storage() ? static_cast<size_t>(ItemSize()) : 0u;
}

bool QelLayerElementArray::CheckItemFits(const char* pFunction, bool pFits) const
{
    if (pFits) return true;
    _QelAssert(internal::sLayerSourceFile, pFunction, __LINE__, true, "%s",
               "Bad data type conversion");
    mStatus = Status::eTypeMismatch;
    return false;
}

LayerElementArrayImp* QelLayerElementArray::Storage() const
{
    return static_cast<LayerElementArrayImp*>(mImplementation);
}

int QelLayerElementArray::ItemSize() const { return Storage()->ItemSize(); }

bool QelLayerElementArray::IsInUse() const
{
    return mDirectAccess || mWriteLocked || mReadLockCount > 0 || mDirectLocks > 0;
}

// --- Lock protocol -------------------------------------------------------------

// The refusals of ReadLock, with their reports and status; true when refused.
bool QelLayerElementArray::ReadLockRefused() const
{
    if (mWriteLocked) {
        _QelAssert(internal::sLayerSourceFile, "ReadLock", __LINE__, true, "%s",
                   "A writeLock is active");
        return true;
    }
    if (mDirectLocks & eWriteLock) {
        _QelAssert(internal::sLayerSourceFile, "ReadLock", __LINE__, true, "%s",
                   "A direct WriteLock is active");
        mStatus = Status::eDirectLockHeld;
        return true;
    }
    return false;
}

int QelLayerElementArray::ReadLock() const
{
    if (ReadLockRefused()) return 0;
    if (Storage()) Storage()->LockPostProcess();
    return ++mReadLockCount;
}

int QelLayerElementArray::ReadUnlock() const
{
    if (mWriteLocked) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "A writeLock is active");
        return -1;
    }
    if (mDirectLocks & eWriteLock) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "A direct lock is active");
        mStatus = Status::eDirectLockHeld;
        return -1;
    }
    if (mReadLockCount <= 0) return -1;
    return --mReadLockCount;
}

// The write flag is not counted: a second write lock succeeds and the first unlock
// releases both, which nested operations (RemoveIt, operator=) rely on.
bool QelLayerElementArray::ReadWriteLock() const
{
    if (mReadLockCount > 0) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "At least one ReadLock is active");
        return false;
    }
    if (mDirectLocks & eReadLock) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "A direct ReadLock is active");
        mStatus = Status::eDirectLockHeld;
        return false;
    }
    if (Storage()) Storage()->LockPostProcess();
    mWriteLocked = true;
    return true;
}

void QelLayerElementArray::ReadWriteUnlock() const
{
    if (mDirectLocks != 0) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "A direct lock is active");
        mStatus = Status::eDirectLockHeld;
        return;
    }
    if (Storage()) Storage()->UnlockPostProcess();
    mWriteLocked = false;
}

bool QelLayerElementArray::WriteLock() const
{
    if (!ReadWriteLock()) return false;
    if (LayerElementArrayImp* lStorage = Storage()) {
        const int lCount = lStorage->GetCount();
        lStorage->Clear();
        lStorage->SetCount(lCount);
    }
    return true;
}

void QelLayerElementArray::WriteUnlock() const { ReadWriteUnlock(); }

// --- Whole buffers ---------------------------------------------------------------

void* QelLayerElementArray::GetLocked(ELockMode pLockMode, EQelType pDataType)
{
    if (!Storage()) {
        mStatus = Status::eInvalidRequest;
        return nullptr;
    }
    const bool lRead = (pLockMode & eReadLock) != 0;
    const bool lWrite = (pLockMode & eWriteLock) != 0;
    if (lRead && !lWrite) {
        if (mWriteLocked) {
            QEL_REPORT_MESSAGE(internal::sLayerSourceFile,
                               "Attempting to ReadLock an already WriteLocked data");
            mStatus = Status::eLockConflict;
            return nullptr;
        }
        if (ReadLock() == 0) return nullptr;
    }
    if (lWrite && !lRead && mReadLockCount > 0) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile,
                           "Attempting to WriteLock an already ReadLocked data");
        mStatus = Status::eLockConflict;
        return nullptr;
    }
    // A write-only lock discards the items instead of converting them.
    if (lWrite && !(lRead ? ReadWriteLock() : WriteLock())) return nullptr;

    mDirectLocks = pLockMode;
    void* lResult = nullptr;
    if (pDataType == mDataType || (mDataType == eQelReference && pDataType == eQelUndefined))
        lResult = Storage()->GetArray();
    else
        ConvertDataType(pDataType, &lResult, &mStride);
    if (!lResult) {
        mDirectLocks = 0;
        if (lWrite)
            ReadWriteUnlock();
        else if (lRead)
            ReadUnlock();
    }
    return lResult;
}

void QelLayerElementArray::ConvertDataType(EQelType pDataType, void** pDataPtr, size_t* pStride)
{
    if (pDataType == QelUndefinedDT.GetType() || !pDataPtr || !pStride)
        QEL_REPORT_CONDITION(
            internal::sLayerSourceFile,
            "pDataType != QelUndefinedDT.GetType() && pDataPtr != NULL && pStride != NULL");
    if (!pDataPtr || !pStride) return; // nowhere to hand a buffer to
    *pDataPtr = nullptr;
    *pStride = static_cast<size_t>(QelTypeSizeOf(pDataType));
    if (!Storage()) {
        mStatus = Status::eInvalidRequest;
        return;
    }
    const int lCount = Storage()->GetCount();
    void* lBuffer = AllocateBuffer(pDataType, lCount, *pStride);
    if (!lBuffer) {
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "*pDataPtr != NULL");
        return;
    }
    const int lCopied = QelTypeCopyArray(lBuffer, pDataType, *pStride, Storage()->GetArray(),
                                         mDataType, StoredItemSize(), lCount);
    if (lCopied != lCount || !KeepBuffer(lBuffer, BufferRecord{pDataType, lCount})) {
        DestroyBuffer(lBuffer, pDataType, lCount);
        return;
    }
    *pDataPtr = lBuffer;
}

void QelLayerElementArray::Release(void** pDataPtr, EQelType pDataType)
{
    const bool lRead = (mDirectLocks & eReadLock) != 0;
    const bool lWrite = (mDirectLocks & eWriteLock) != 0;
    if (lWrite) {
        mDirectLocks = 0;
        WriteUnlock();
    }
    if (lRead) {
        ReadUnlock();
        if (mReadLockCount == 0) mDirectLocks &= ~eReadLock;
    }
    if (!pDataPtr) {
        QEL_REPORT_CONDITION(internal::sLayerSourceFile, "pDataPtr != NULL");
        return;
    }
    if (!*pDataPtr) return;
    const int lIndex = mConvertedBuffers.Find(*pDataPtr, 0);
    if (lIndex < 0 && (!Storage() || *pDataPtr != Storage()->GetArray())) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "Attempting to release an alien pointer");
        mStatus = Status::eAlienPointer;
        return;
    }
    if (lIndex >= 0) {
        if (lWrite) CopyBack(*pDataPtr, mBufferRecords[lIndex], pDataType);
        FreeBuffer(lIndex);
    }
    *pDataPtr = nullptr;
    mStride = static_cast<size_t>(QelTypeSizeOf(mDataType));
}

// Writes a converted buffer back into the items under a write lock: items are
// converted until the first refusal, which leaves that item and the rest zero, as if
// the lock had zeroed them all first. Zeroing only what is not overwritten spares a
// pass over the storage. Items the buffer cannot supply (see ReadableItems, and a
// count that grew while the buffer was out) count as refused.
void QelLayerElementArray::CopyBack(void* pBuffer, const BufferRecord& pRecord, EQelType pDataType)
{
    const int lCount = GetCount();
    if (!ReadWriteLock()) return;
    LayerElementArrayImp& lStorage = *Storage();
    lStorage.Resize(lCount);
    const int lItems = QelMin(lCount, ReadableItems(pRecord.mType, pRecord.mCount, pDataType));
    const size_t lSourceStride = static_cast<size_t>(QelTypeSizeOf(pDataType));
    const int lCopied = lStorage.GetArray()
                            ? QelTypeCopyArray(lStorage.GetArray(), mDataType, StoredItemSize(),
                                               pBuffer, pDataType, lSourceStride, lItems)
                            : 0;
    if (lCopied != lCount) mStatus = Status::eCopyBackFailed;
    if (lCopied < lStorage.GetCount())
        std::memset(lStorage.GetAt(lCopied), 0,
                    static_cast<size_t>(lStorage.GetCount() - lCopied) *
                        static_cast<size_t>(lStorage.ItemSize()));
    WriteUnlock();
}

void* QelLayerElementArray::GetDataPtr()
{
    mDirectAccess = true;
    return Storage() ? Storage()->GetArray() : nullptr;
}

// Writing and removing accept the stored type or eQelUndefined; the report names the
// operation that was refused.
bool QelLayerElementArray::CheckValueType(const char* pFunction, EQelType pValueType) const
{
    if (pValueType == eQelUndefined || pValueType == mDataType) return true;
    _QelAssert(internal::sLayerSourceFile, pFunction, __LINE__, true, "%s",
               "Bad data type conversion");
    mStatus = Status::eTypeMismatch;
    return false;
}

// The address is handed out after the lock is gone, deliberately: callers use it
// until the storage is next reallocated.
void* QelLayerElementArray::GetReference(int pIndex, EQelType pValueType)
{
    if (!Storage()) return nullptr;
    if (!CheckValueType(__func__, pValueType) || !ReadWriteLock()) return nullptr;
    void* lItem = Storage()->GetArray() ? Storage()->GetAt(pIndex) : nullptr;
    if (lItem) mStatus = Status::eLockAccessOk;
    ReadWriteUnlock();
    return lItem;
}

void QelLayerElementArray::GetReferenceTo(int pIndex, void** pRef, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pRef || !CheckValueType(__func__, pValueType)) return;
    mStatus = Status::eWriteLockRefused;
    *pRef = nullptr;
    if (!IsWriteLocked()) {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "The array is not write locked");
        return;
    }
    *pRef = Storage()->GetArray() ? Storage()->GetAt(pIndex) : nullptr;
    if (*pRef) mStatus = Status::eLockAccessOk;
}

void QelLayerElementArray::SetImplementation(void* pImplementation)
{
    QelDelete(Storage());
    mImplementation = pImplementation;
}

// --- Sizing ------------------------------------------------------------------------

// The write pattern shared by the writing operations; reports carry the name of the
// operation that asked for the lock. Without storage there is nothing to lock.
template <class Work> void QelLayerElementArray::UnderWriteLock(const char* pFunction, Work pWork)
{
    if (!Storage()) {
        mStatus = Status::eInvalidRequest;
        return;
    }
    mStatus = Status::eWriteLockRefused;
    if (!ReadWriteLock()) {
        _QelAssert(internal::sLayerSourceFile, pFunction, __LINE__, true, "%s",
                   "The array is not write locked");
        return;
    }
    mStatus = Status::eLockAccessOk;
    pWork(*Storage());
    ReadWriteUnlock();
}

// A read lock held only for the length of pWork, granted and refused exactly as
// ReadLock (reports, status and hook included). The count would go up and straight
// back down with nothing in between able to see it, so it is left alone: the
// single-item reads run once per item and a round trip of the count through memory
// would be most of their cost.
template <class Work> bool QelLayerElementArray::UnderReadLock(Work pWork) const
{
    if (ReadLockRefused()) return false;
    if (Storage()) Storage()->LockPostProcess();
    pWork(*Storage());
    return true;
}

void QelLayerElementArray::SetCount(int pCount)
{
    if (pCount < 0) pCount = 0;
    UnderWriteLock(__func__,
                   [pCount](LayerElementArrayImp& pStorage) { pStorage.SetCount(pCount); });
}

void QelLayerElementArray::Resize(int pItemCount)
{
    if (pItemCount < 0) pItemCount = 0;
    UnderWriteLock(__func__,
                   [pItemCount](LayerElementArrayImp& pStorage) { pStorage.Resize(pItemCount); });
}

void QelLayerElementArray::AddMultiple(int pItemCount)
{
    if (pItemCount <= 0) return;
    UnderWriteLock(__func__, [pItemCount](LayerElementArrayImp& pStorage) {
        pStorage.AddMultiple(pItemCount);
    });
}

void QelLayerElementArray::Clear()
{
    UnderWriteLock(__func__, [](LayerElementArrayImp& pStorage) { pStorage.Clear(); });
}

// --- Reading -----------------------------------------------------------------------

// The count cannot be read inside a write lock: the read lock it needs is refused.
int QelLayerElementArray::GetCount() const
{
    if (!Storage()) {
        mStatus = Status::eInvalidRequest;
        return 0;
    }
    mStatus = Status::eReadLockRefused;
    int lCount = -1;
    if (!UnderReadLock([&](LayerElementArrayImp& pStorage) {
            mStatus = Status::eLockAccessOk;
            lCount = pStorage.GetCount();
        }))
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "The array is not read locked");
    return lCount;
}

bool QelLayerElementArray::GetAt(int pIndex, void** pItem, EQelType) const
{
    return GetAtInto(pIndex, pItem, SIZE_MAX);
}

// The typed reads pass their item's size here, so that the size check costs no call
// of its own on a path that runs once per item.
bool QelLayerElementArray::GetAtInto(int pIndex, void** pItem, size_t pRoom) const
{
    if (!CheckItemFits("GetAt", StoredItemSize() <= pRoom)) return false;
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || !*pItem) return false;
    if (pIndex < 0 || pIndex >= Storage()->GetCount()) {
        std::memset(*pItem, 0, static_cast<size_t>(ItemSize()));
        return false;
    }
    mStatus = Status::eReadLockRefused;
    if (!UnderReadLock([&](LayerElementArrayImp& pStorage) {
            mStatus = Status::eLockAccessOk;
            CopyItem(*pItem, pStorage.GetAt(pIndex), static_cast<size_t>(pStorage.ItemSize()));
        }))
        _QelAssert(internal::sLayerSourceFile, "GetAt", __LINE__, true, "%s",
                   "The array is not read locked");
    return mStatus == Status::eLockAccessOk;
}

bool QelLayerElementArray::GetFirst(void** pItem, EQelType pValueType) const
{
    return GetAt(0, pItem, pValueType);
}

bool QelLayerElementArray::GetLast(void** pItem, EQelType pValueType) const
{
    if (!Storage()) {
        mStatus = Status::eInvalidRequest;
        return false;
    }
    return GetAt(Storage()->GetCount() - 1, pItem, pValueType);
}

// --- Writing -----------------------------------------------------------------------

void QelLayerElementArray::SetAt(int pIndex, const void* pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || pIndex < 0 || pIndex >= Storage()->GetCount()) return;
    if (!CheckValueType(__func__, pValueType)) return;
    // Under the lock just taken, the reference GetReferenceTo would hand out is the
    // item's address and its status is eLockAccessOk: written here directly.
    UnderWriteLock(__func__, [&](LayerElementArrayImp& pStorage) {
        CopyItem(pStorage.GetAt(pIndex), pItem, static_cast<size_t>(pStorage.ItemSize()));
    });
}

void QelLayerElementArray::SetLast(const void* pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage()) return;
    SetAt(Storage()->GetCount() - 1, pItem, pValueType);
}

int QelLayerElementArray::InsertAt(int pIndex, const void* pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || pIndex < 0 || pIndex > Storage()->GetCount()) return -1;
    if (!CheckValueType(__func__, pValueType)) return -1;
    int lIndex = -1;
    UnderWriteLock(__func__, [&](LayerElementArrayImp& pStorage) {
        lIndex = pStorage.InsertAt(pIndex, pItem);
    });
    return lIndex;
}

int QelLayerElementArray::Add(const void* pItem, EQelType pValueType)
{
    return InsertAt(Storage() ? Storage()->GetCount() : 0, pItem, pValueType);
}

// --- Removing ----------------------------------------------------------------------

void QelLayerElementArray::RemoveAt(int pIndex, void** pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || pIndex < 0 || pIndex >= Storage()->GetCount()) return;
    if (!CheckValueType(__func__, pValueType)) return;
    UnderWriteLock(__func__, [&](LayerElementArrayImp& pStorage) {
        if (*pItem)
            CopyItem(*pItem, pStorage.GetAt(pIndex), static_cast<size_t>(pStorage.ItemSize()));
        pStorage.RemoveAt(pIndex);
    });
}

void QelLayerElementArray::RemoveLast(void** pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (Storage() && pItem) RemoveAt(Storage()->GetCount() - 1, pItem, pValueType);
}

// A missing item is reported with the lock-refusal text too, deliberately: the two
// cases are told apart by the status alone (eLockAccessOk is never left by a miss).
bool QelLayerElementArray::RemoveIt(void** pItem, EQelType pValueType)
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || !*pItem) return false;
    if (!CheckValueType(__func__, pValueType)) return false;
    mStatus = Status::eWriteLockRefused;
    const int lIndex = Find(*pItem, pValueType);
    if (lIndex >= 0 && ReadWriteLock()) {
        RemoveAt(lIndex, pItem, pValueType);
        ReadWriteUnlock();
    } else {
        QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "The array is not write locked");
    }
    return mStatus == Status::eLockAccessOk;
}

// --- Searching ---------------------------------------------------------------------

// A search that finds nothing leaves eReadLockRefused, set before the lock and never
// cleared; callers rely on the returned index. A refused read lock reports the write
// text, deliberately: one text covers every refused lock of a search.
int QelLayerElementArray::Search(const char* pFunction, int pFrom, int pStep,
                                 const void* pItem) const
{
    mStatus = Status::eReadLockRefused;
    int lFound = -1;
    if (!UnderReadLock([&](LayerElementArrayImp& pStorage) {
            const size_t lSize = static_cast<size_t>(pStorage.ItemSize());
            for (int i = pFrom; i >= 0 && i < pStorage.GetCount(); i += pStep) {
                if (std::memcmp(pStorage.GetAt(i), pItem, lSize) == 0) {
                    mStatus = Status::eLockAccessOk;
                    lFound = i;
                    return;
                }
            }
        }))
        _QelAssert(internal::sLayerSourceFile, pFunction, __LINE__, true, "%s",
                   "The array is not write locked");
    return lFound;
}

int QelLayerElementArray::FindAfter(int pAfterIndex, const void* pItem, EQelType) const
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || pAfterIndex < -1 || pAfterIndex >= Storage()->GetCount()) return -1;
    return Search(__func__, pAfterIndex + 1, 1, pItem);
}

// The nearest equal item strictly before pAfterIndex.
int QelLayerElementArray::FindBefore(int pAfterIndex, const void* pItem, EQelType) const
{
    mStatus = Status::eInvalidRequest;
    if (!Storage() || !pItem || pAfterIndex < 0 || pAfterIndex >= Storage()->GetCount()) return -1;
    return Search(__func__, pAfterIndex - 1, -1, pItem);
}

int QelLayerElementArray::Find(const void* pItem, EQelType pValueType) const
{
    return FindAfter(-1, pItem, pValueType);
}

// --- Comparing ---------------------------------------------------------------------

bool QelLayerElementArray::IsEqual(const QelLayerElementArray& pArray) const
{
    LayerElementArrayImp* lMine = Storage();
    LayerElementArrayImp* lTheirs = pArray.Storage();
    const int lCount = lMine ? lMine->GetCount() : 0;
    if (lCount != (lTheirs ? lTheirs->GetCount() : 0)) return false;
    void* lMineItems = lMine ? lMine->GetArray() : nullptr;
    void* lTheirItems = lTheirs ? lTheirs->GetArray() : nullptr;
    if (!lMineItems || !lTheirItems) return !lMineItems && !lTheirItems;
    return std::memcmp(lMineItems, lTheirItems,
                       static_cast<size_t>(lCount) * static_cast<size_t>(ItemSize())) == 0;
}

} // namespace qelsdk
