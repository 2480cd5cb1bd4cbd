#include <qelsdk/scene/geometry/qellayerelementarray.h>

#include "qelsdk/scene/geometry/qellayerimp.h"
#include "support/qeltestsupport.h"

#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qelvector.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::MemoryRecorder;
using test::Report;
using test::ReportCapture;
typedef LockAccessStatus Status;
typedef QelLayerElementArray Array;

const char* const kFile = "src/qelsdk/scene/geometry/qellayer";
const test::FileReports kReports{kFile};

// The reports of a write refused because a read lock is held: the lock, then the
// operation that asked for it.
std::vector<Report> kWriteRefusal(const char* pFunction)
{
    return {kReports.Message("ReadWriteLock", "At least one ReadLock is active"),
            kReports.Message(pFunction, "The array is not write locked")};
}

QelLayerElementArrayTemplate<int>* MakeInts(std::initializer_list<int> pItems)
{
    auto* lArray = QelNew<QelLayerElementArrayTemplate<int>>(eQelInt);
    for (int lItem : pItems)
        lArray->Add(lItem);
    return lArray;
}

std::vector<int> Items(QelLayerElementArrayTemplate<int>& pArray)
{
    std::vector<int> lItems;
    const int lCount = pArray.GetCount();
    for (int i = 0; i < lCount; ++i)
        lItems.push_back(pArray.GetAt(i));
    return lItems;
}

// Owns a typed int array for the length of a test.
struct Ints
{
    explicit Ints(std::initializer_list<int> pItems) : mArray(MakeInts(pItems)) {}
    ~Ints() { QelDelete(mArray); }
    QelLayerElementArrayTemplate<int>* operator->() { return mArray; }
    QelLayerElementArrayTemplate<int>& operator*() { return *mArray; }
    QelLayerElementArrayTemplate<int>* mArray;
};

// --- Construction --------------------------------------------------------------------

TEST(QelLayerElementArray, ConstructionState)
{
    QelLayerElementArray lArray(eQelDouble);
    EXPECT_EQ(lArray.GetDataType(), eQelDouble);
    EXPECT_EQ(lArray.GetStatus(), Status::eLockAccessOk);
    EXPECT_EQ(lArray.GetReadLockCount(), 0);
    EXPECT_FALSE(lArray.IsWriteLocked());
    EXPECT_FALSE(lArray.IsInUse());
    EXPECT_EQ(lArray.GetStride(), sizeof(double));
    ASSERT_NE(lArray.GetImplementation(), nullptr);
    EXPECT_EQ(static_cast<LayerElementArrayImp*>(lArray.GetImplementation())->ItemSize(), 8);
    EXPECT_EQ(lArray.GetCount(), 0);
}

TEST(QelLayerElementArray, ReferenceArraysStorePointers)
{
    QelLayerElementArray lArray(eQelReference);
    EXPECT_EQ(static_cast<LayerElementArrayImp*>(lArray.GetImplementation())->ItemSize(), 8);
    EXPECT_EQ(lArray.GetStride(), 8u);
}

TEST(QelLayerElementArray, WithoutMemoryForStorageEveryOperationRefuses)
{
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    QelLayerElementArrayTemplate<int> lArray(eQelInt);
    lFailure.FailNone();
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition(
                                      "QelLayerElementArray", "mImplementation != NULL")}));
    lCapture.Clear();
    EXPECT_EQ(lArray.GetImplementation(), nullptr);
    int lValue = 5;
    int* lPtr = &lValue;
    MemoryRecorder lRecorder;
    // Each operation, from a clean status, refuses with eInvalidRequest.
    const auto lRefuses = [&](const char* pName, const std::function<void()>& pOperation) {
        SCOPED_TRACE(pName);
        lArray.SetStatus(Status::eLockAccessOk);
        pOperation();
        EXPECT_EQ(lArray.GetStatus(), Status::eInvalidRequest);
    };
    lRefuses("GetCount", [&] { EXPECT_EQ(lArray.GetCount(), 0); });
    lRefuses("GetAt",
             [&] { EXPECT_FALSE(lArray.GetAt(0, reinterpret_cast<void**>(&lPtr), eQelInt)); });
    lRefuses("Add", [&] { EXPECT_EQ(lArray.Add(1), -1); });
    lRefuses("InsertAt", [&] { EXPECT_EQ(lArray.InsertAt(0, &lValue, eQelInt), -1); });
    lRefuses("Find", [&] { EXPECT_EQ(lArray.Find(&lValue), -1); });
    lRefuses("SetCount", [&] { lArray.SetCount(3); });
    lRefuses("Resize", [&] { lArray.Resize(3); });
    lRefuses("AddMultiple", [&] { lArray.AddMultiple(3); });
    lRefuses("Clear", [&] { lArray.Clear(); });
    lRefuses("SetAt", [&] { lArray.SetAt(0, 1); });
    lRefuses("RemoveLast", [&] { lArray.RemoveLast(reinterpret_cast<void**>(&lPtr)); });
    lRefuses("RemoveIt", [&] { EXPECT_FALSE(lArray.RemoveIt(reinterpret_cast<void**>(&lPtr))); });
    lRefuses("GetLast", [&] { EXPECT_FALSE(lArray.GetLast(reinterpret_cast<void**>(&lPtr))); });
    lRefuses("GetLocked", [&] { EXPECT_EQ(lArray.GetLocked(Array::eReadLock), nullptr); });
    EXPECT_EQ(lArray.GetReadLockCount(), 0);
    EXPECT_FALSE(lArray.IsInUse());
    EXPECT_EQ(lArray.GetReference(0), nullptr);
    EXPECT_EQ(lArray.GetDataPtr(), nullptr);
    EXPECT_EQ(&lArray.AsReference(0), &lArray.mFallbackItem);
    EXPECT_EQ(lValue, 5);
    EXPECT_EQ(lPtr, &lValue);
    // Refusing asks for no memory and reports nothing.
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_TRUE(lCapture.Reports().empty());
}

// --- Lock protocol -------------------------------------------------------------------

TEST(QelLayerElementArrayLocks, ReadLocksCount)
{
    Ints lArray({1});
    EXPECT_EQ(lArray->ReadLock(), 1);
    EXPECT_EQ(lArray->ReadLock(), 2);
    EXPECT_TRUE(lArray->IsInUse());
    EXPECT_EQ(lArray->ReadUnlock(), 1);
    EXPECT_EQ(lArray->ReadUnlock(), 0);
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayLocks, ReadUnlockWithoutLockIsSilent)
{
    Ints lArray({1});
    ReportCapture lCapture;
    EXPECT_EQ(lArray->ReadUnlock(), -1);
    EXPECT_TRUE(lCapture.Reports().empty());
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
}

TEST(QelLayerElementArrayLocks, ReadLockRefusedInsideWriteLock)
{
    Ints lArray({1});
    ASSERT_TRUE(lArray->ReadWriteLock());
    ReportCapture lCapture;
    EXPECT_EQ(lArray->ReadLock(), 0);
    EXPECT_EQ(lArray->ReadUnlock(), -1);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("ReadLock", "A writeLock is active"),
                                   kReports.Message("ReadUnlock", "A writeLock is active")}));
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayLocks, WriteLockRefusedUnderReadLock)
{
    Ints lArray({1, 2});
    lArray->ReadLock();
    ReportCapture lCapture;
    EXPECT_FALSE(lArray->ReadWriteLock());
    EXPECT_FALSE(lArray->WriteLock());
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{
                  kReports.Message("ReadWriteLock", "At least one ReadLock is active"),
                  kReports.Message("ReadWriteLock", "At least one ReadLock is active")}));
    EXPECT_FALSE(lArray->IsWriteLocked());
    lArray->ReadUnlock();
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2})); // the refused WriteLock discarded nothing
}

TEST(QelLayerElementArrayLocks, NestedWriteLocksReleasedByFirstUnlock)
{
    Ints lArray({1});
    ReportCapture lCapture;
    EXPECT_TRUE(lArray->ReadWriteLock());
    EXPECT_TRUE(lArray->ReadWriteLock());
    lArray->ReadWriteUnlock();
    EXPECT_FALSE(lArray->IsWriteLocked());
    lArray->ReadWriteUnlock(); // unlock without a lock: not checked
    EXPECT_FALSE(lArray->IsWriteLocked());
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelLayerElementArrayLocks, WriteLockZeroesItemsKeepingCount)
{
    Ints lArray({4, 5, 6});
    ASSERT_TRUE(lArray->WriteLock());
    EXPECT_TRUE(lArray->IsWriteLocked());
    lArray->WriteUnlock();
    EXPECT_FALSE(lArray->IsWriteLocked());
    EXPECT_EQ(Items(*lArray), (std::vector<int>{0, 0, 0}));
}

TEST(QelLayerElementArrayLocks, GetCountInsideWriteLock)
{
    Ints lArray({1, 2, 3});
    ASSERT_TRUE(lArray->ReadWriteLock());
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetCount(), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("ReadLock", "A writeLock is active"),
                                   kReports.Message("GetCount", "The array is not read locked")}));
    lArray->ReadWriteUnlock();
    EXPECT_EQ(lArray->GetCount(), 3);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
}

// Counts the hooks and records the lock state each one saw.
struct CountingImp : LayerElementArrayImp
{
    explicit CountingImp(size_t pItemSize) : LayerElementArrayImp(pItemSize) {}
    void LockPostProcess() override { mLocks.push_back(State()); }
    void UnlockPostProcess() override { mUnlocks.push_back(State()); }
    std::pair<int, bool> State() const
    {
        return {mOwner->GetReadLockCount(), mOwner->IsWriteLocked()};
    }
    const QelLayerElementArray* mOwner = nullptr;
    std::vector<std::pair<int, bool>> mLocks;
    std::vector<std::pair<int, bool>> mUnlocks;
};

struct Hooked : testing::Test
{
    void SetUp() override
    {
        mImp = QelNew<CountingImp>(sizeof(int));
        mImp->mOwner = &mArray;
        mArray.SetImplementation(mImp);
        for (int i = 1; i <= 3; ++i)
            mArray.Add(i);
        mImp->mLocks.clear();
        mImp->mUnlocks.clear();
    }
    QelLayerElementArrayTemplate<int> mArray{eQelInt};
    CountingImp* mImp = nullptr;
};

TEST_F(Hooked, LockHookRunsBeforeTheStateChanges)
{
    mArray.ReadLock();
    mArray.ReadLock();
    mArray.ReadUnlock(); // no hook
    mArray.ReadUnlock();
    ASSERT_TRUE(mArray.ReadWriteLock());
    mArray.ReadWriteUnlock();
    const std::vector<std::pair<int, bool>> lLocks{{0, false}, {1, false}, {0, false}};
    EXPECT_EQ(mImp->mLocks, lLocks);
    // The unlock hook runs before the write flag is cleared.
    EXPECT_EQ(mImp->mUnlocks, (std::vector<std::pair<int, bool>>{{0, true}}));
}

TEST_F(Hooked, RefusedLocksRunNoHook)
{
    mArray.ReadLock();
    ReportCapture lCapture;
    EXPECT_FALSE(mArray.ReadWriteLock());
    mArray.ReadUnlock();
    mArray.ReadWriteLock();
    EXPECT_EQ(mArray.ReadLock(), 0);
    mArray.ReadWriteUnlock();
    EXPECT_EQ(mImp->mLocks.size(), 2u); // the granted read lock and read-write lock
    EXPECT_EQ(mImp->mUnlocks.size(), 1u);
}

TEST_F(Hooked, WriteUnlockAndSingleItemOperationsCallHooksOncePerLock)
{
    mArray.WriteLock();
    mArray.WriteUnlock();
    EXPECT_EQ(mImp->mLocks.size(), 1u);
    EXPECT_EQ(mImp->mUnlocks.size(), 1u);
    mImp->mLocks.clear();
    mImp->mUnlocks.clear();
    mArray.SetAt(0, 7); // write lock
    mArray.GetAt(0);    // read lock
    mArray.GetCount();  // read lock
    EXPECT_EQ(mImp->mLocks.size(), 3u);
    EXPECT_EQ(mImp->mUnlocks.size(), 1u);
}

TEST_F(Hooked, RemoveItNestsTwoWriteLocks)
{
    mImp->mLocks.clear();
    int lValue = 2;
    int* lPtr = &lValue;
    EXPECT_TRUE(mArray.RemoveIt(reinterpret_cast<void**>(&lPtr), eQelInt));
    // Find's read lock, then the outer and the inner write lock.
    EXPECT_EQ(mImp->mLocks, (std::vector<std::pair<int, bool>>{{0, false}, {0, false}, {0, true}}));
    EXPECT_EQ(mImp->mUnlocks, (std::vector<std::pair<int, bool>>{{0, true}, {0, false}}));
    EXPECT_FALSE(mArray.IsWriteLocked());
}

TEST_F(Hooked, GetLockedCallsHooksAndReleaseToo)
{
    void* lItems = mArray.GetLocked(Array::eReadWriteLock);
    ASSERT_NE(lItems, nullptr);
    EXPECT_EQ(mImp->mLocks.size(), 1u);
    mArray.Release(&lItems);
    EXPECT_EQ(mImp->mUnlocks.size(), 1u);
}

TEST(QelLayerElementArrayImplementation, SetImplementationReplacesAndDestroysOld)
{
    MemoryRecorder lRecorder;
    QelLayerElementArrayTemplate<int> lArray(eQelInt);
    lArray.Add(1);
    // The storage object, then its block.
    const std::vector<void*> lOld = lRecorder.Live();
    ASSERT_EQ(lOld.size(), 2u);
    EXPECT_EQ(lOld[0], lArray.GetImplementation());
    auto* lImp = QelNew<LayerElementArrayImp>(sizeof(int));
    lArray.SetImplementation(lImp);
    // The old storage frees its block, then is freed itself.
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lOld[1], lOld[0]}));
    EXPECT_EQ(lArray.GetImplementation(), lImp);
    EXPECT_EQ(lArray.GetCount(), 0);
    lArray.SetImplementation(nullptr);
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_EQ(lArray.GetStatus(), Status::eInvalidRequest);
}

// --- Whole buffers -------------------------------------------------------------------

TEST(QelLayerElementArrayGetLocked, ReadLockedTwiceSharesRawItems)
{
    Ints lArray({1, 2, 3});
    void* lFirst = lArray->GetLocked(Array::eReadLock, eQelInt);
    void* lSecond = lArray->GetLocked(Array::eReadLock, eQelInt);
    ASSERT_NE(lFirst, nullptr);
    EXPECT_EQ(lFirst, lSecond);
    EXPECT_EQ(lFirst,
              lArray->GetImplementation()
                  ? static_cast<LayerElementArrayImp*>(lArray->GetImplementation())->GetArray()
                  : nullptr);
    EXPECT_EQ(lArray->GetReadLockCount(), 2);
    lArray->Release(&lFirst);
    EXPECT_EQ(lFirst, nullptr);
    EXPECT_EQ(lArray->GetReadLockCount(), 1);
    EXPECT_TRUE(lArray->IsInUse()); // bit 1 of the direct locks is kept
    {
        ReportCapture lCapture;
        EXPECT_FALSE(lArray->ReadWriteLock());
        EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Message(
                                          "ReadWriteLock", "At least one ReadLock is active")}));
    }
    lArray->Release(&lSecond);
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
    EXPECT_FALSE(lArray->IsInUse());
    EXPECT_TRUE(lArray->ReadWriteLock());
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayGetLocked, WriteLockDiscardsReadWriteKeeps)
{
    Ints lArray({4, 5, 6});
    int* lItems = static_cast<int*>(lArray->GetLocked(Array::eReadWriteLock));
    ASSERT_NE(lItems, nullptr);
    EXPECT_EQ(std::vector<int>(lItems, lItems + 3), (std::vector<int>{4, 5, 6}));
    lItems[1] = 50;
    lArray->Release(reinterpret_cast<void**>(&lItems));
    EXPECT_EQ(Items(*lArray), (std::vector<int>{4, 50, 6}));
    lItems = static_cast<int*>(lArray->GetLocked(Array::eWriteLock));
    ASSERT_NE(lItems, nullptr);
    EXPECT_EQ(std::vector<int>(lItems, lItems + 3), (std::vector<int>{0, 0, 0}));
    lItems[0] = 9;
    lArray->Release(reinterpret_cast<void**>(&lItems));
    EXPECT_EQ(Items(*lArray), (std::vector<int>{9, 0, 0}));
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayGetLocked, ConvertedReadBufferIsFreedNotWrittenBack)
{
    Ints lArray({1, 2, 3});
    MemoryRecorder lRecorder;
    float* lFloats = static_cast<float*>(lArray->GetLocked(Array::eReadLock, eQelFloat));
    ASSERT_NE(lFloats, nullptr);
    // The buffer first, then the list of handed-out buffers and the records beside it.
    ASSERT_EQ(lRecorder.Allocations().size(), 3u);
    void* const lBuffer = lRecorder.Allocations()[0].mAddress;
    EXPECT_TRUE(lRecorder.Frees().empty());
    EXPECT_EQ(std::vector<float>(lFloats, lFloats + 3), (std::vector<float>{1.0f, 2.0f, 3.0f}));
    EXPECT_EQ(lArray->GetStride(), sizeof(float));
    lFloats[0] = 42.0f;
    lArray->Release(reinterpret_cast<void**>(&lFloats), eQelFloat);
    EXPECT_EQ(lFloats, nullptr);
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBuffer}));
    EXPECT_EQ(lRecorder.Allocations().size(), 3u);
    EXPECT_EQ(lArray->GetStride(), sizeof(int));
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2, 3}));
}

TEST(QelLayerElementArrayGetLocked, ConvertedReadWriteBufferIsWrittenBack)
{
    Ints lArray({1, 2, 3});
    double* lDoubles = static_cast<double*>(lArray->GetLocked(Array::eReadWriteLock, eQelDouble));
    ASSERT_NE(lDoubles, nullptr);
    EXPECT_EQ(lArray->GetStride(), sizeof(double));
    lDoubles[0] = 10.9;
    lDoubles[2] = -3.7;
    lArray->Release(reinterpret_cast<void**>(&lDoubles), eQelDouble);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{10, 2, -3}));
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayGetLocked, ConvertedWriteOnlyBufferStartsZero)
{
    Ints lArray({1, 2});
    double* lDoubles = static_cast<double*>(lArray->GetLocked(Array::eWriteLock, eQelDouble));
    ASSERT_NE(lDoubles, nullptr);
    EXPECT_EQ(lDoubles[0], 0.0);
    EXPECT_EQ(lDoubles[1], 0.0);
    lDoubles[1] = 8.0;
    lArray->Release(reinterpret_cast<void**>(&lDoubles), eQelDouble);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{0, 8}));
}

TEST(QelLayerElementArrayGetLocked, FailedWriteBackKeepsConvertedPrefixThenZeroes)
{
    Ints lArray({1, 2, 3});
    QelString* lTexts =
        static_cast<QelString*>(lArray->GetLocked(Array::eReadWriteLock, eQelString));
    ASSERT_NE(lTexts, nullptr);
    EXPECT_EQ(lTexts[0], "1");
    EXPECT_EQ(lTexts[2], "3");
    lTexts[0] = "7";
    lTexts[1] = "not a number";
    lTexts[2] = "9";
    lArray->Release(reinterpret_cast<void**>(&lTexts), eQelString);
    EXPECT_EQ(lArray->GetStatus(), Status::eCopyBackFailed);
    lArray->SetStatus(Status::eLockAccessOk);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{7, 0, 0}));
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayGetLocked, ReadLockInsideWriteLockConflicts)
{
    Ints lArray({1});
    ASSERT_TRUE(lArray->ReadWriteLock());
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetLocked(Array::eReadLock), nullptr);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockConflict);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message(
                  "GetLocked", "Attempting to ReadLock an already WriteLocked data")}));
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayGetLocked, WriteLockUnderReadLockConflicts)
{
    Ints lArray({1});
    lArray->ReadLock();
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetLocked(Array::eWriteLock), nullptr);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockConflict);
    EXPECT_EQ(lArray->GetLocked(Array::eReadWriteLock), nullptr);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{
            kReports.Message("GetLocked", "Attempting to WriteLock an already ReadLocked data"),
            kReports.Message("ReadWriteLock", "At least one ReadLock is active")}));
    lArray->ReadUnlock();
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1}));
}

// Reaches the lock fields, to set up states the public operations pass through.
struct Probe : QelLayerElementArrayTemplate<int>
{
    Probe() : QelLayerElementArrayTemplate<int>(eQelInt) {}
    void SetDirectLocks(int pBits) { mDirectLocks = pBits; }
    int DirectLocks() const { return mDirectLocks; }
};

TEST(QelLayerElementArrayGetLocked, DirectLockBitsFollowTheMode)
{
    Probe lArray;
    lArray.Add(1);
    void* lItems = lArray.GetLocked(Array::eReadWriteLock);
    EXPECT_EQ(lArray.DirectLocks(), 3);
    lArray.Release(&lItems);
    EXPECT_EQ(lArray.DirectLocks(), 0);
    lItems = lArray.GetLocked(Array::eWriteLock);
    EXPECT_EQ(lArray.DirectLocks(), 2);
    lArray.Release(&lItems);
    EXPECT_EQ(lArray.DirectLocks(), 0);
}

TEST(QelLayerElementArrayGetLocked, DirectWriteBitRefusesReadLocks)
{
    Probe lArray;
    lArray.Add(1);
    lArray.SetDirectLocks(Array::eWriteLock);
    ReportCapture lCapture;
    EXPECT_EQ(lArray.ReadLock(), 0);
    EXPECT_EQ(lArray.GetStatus(), Status::eDirectLockHeld);
    lArray.SetStatus(Status::eLockAccessOk);
    EXPECT_EQ(lArray.ReadUnlock(), -1);
    EXPECT_EQ(lArray.GetStatus(), Status::eDirectLockHeld);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("ReadLock", "A direct WriteLock is active"),
                                   kReports.Message("ReadUnlock", "A direct lock is active")}));
    lArray.SetDirectLocks(0);
}

TEST(QelLayerElementArrayGetLocked, DirectReadBitRefusesReadWriteLock)
{
    Ints lArray({1});
    void* lItems = lArray->GetLocked(Array::eReadLock);
    lArray->ReadUnlock(); // the count drops to 0, the direct bit stays
    ReportCapture lCapture;
    EXPECT_FALSE(lArray->ReadWriteLock());
    EXPECT_EQ(lArray->GetStatus(), Status::eDirectLockHeld);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("ReadWriteLock", "A direct ReadLock is active")}));
    lArray->Release(&lItems); // its ReadUnlock finds no count; the bit is cleared
    EXPECT_TRUE(lArray->ReadWriteLock());
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayGetLocked, ReadWriteLockInsideDirectWriteLock)
{
    Ints lArray({1, 2});
    void* lItems = lArray->GetLocked(Array::eWriteLock);
    ASSERT_NE(lItems, nullptr);
    ReportCapture lCapture;
    EXPECT_TRUE(lArray->ReadWriteLock());
    lArray->ReadWriteUnlock();
    EXPECT_TRUE(lArray->IsWriteLocked());
    EXPECT_EQ(lArray->GetStatus(), Status::eDirectLockHeld);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("ReadWriteUnlock", "A direct lock is active")}));
    lArray->Release(&lItems);
    EXPECT_FALSE(lArray->IsWriteLocked());
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayGetLocked, WritingInsideDirectWriteLockWorksButCannotUnlock)
{
    Ints lArray({1, 2});
    void* lItems = lArray->GetLocked(Array::eWriteLock);
    ReportCapture lCapture;
    lArray->SetAt(1, 5);
    EXPECT_EQ(lArray->GetStatus(), Status::eDirectLockHeld);
    EXPECT_TRUE(lArray->IsWriteLocked());
    EXPECT_EQ(static_cast<int*>(lItems)[1], 5);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("ReadWriteUnlock", "A direct lock is active")}));
    lArray->Release(&lItems);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{0, 5}));
}

TEST(QelLayerElementArrayGetLocked, ModeZeroTakesNoLock)
{
    Ints lArray({1});
    void* lItems = lArray->GetLocked(static_cast<Array::ELockMode>(0), eQelInt);
    EXPECT_NE(lItems, nullptr);
    EXPECT_FALSE(lArray->IsInUse());
    lArray->Release(&lItems);
    EXPECT_EQ(lItems, nullptr);
}

TEST(QelLayerElementArrayGetLocked, EmptyArrayWithoutBlockGivesNullWithLockUndone)
{
    QelLayerElementArrayTemplate<int> lArray(eQelInt);
    EXPECT_EQ(lArray.GetLocked(Array::eReadLock), nullptr);
    EXPECT_EQ(lArray.GetReadLockCount(), 0);
    EXPECT_EQ(lArray.GetLocked(Array::eReadWriteLock), nullptr);
    EXPECT_FALSE(lArray.IsWriteLocked());
    EXPECT_FALSE(lArray.IsInUse());
}

TEST(QelLayerElementArrayGetLocked, AlienPointerRefused)
{
    Ints lArray({1});
    void* lItems = lArray->GetLocked(Array::eReadLock);
    int lOther = 0;
    void* lAlien = &lOther;
    ReportCapture lCapture;
    lArray->Release(&lAlien);
    EXPECT_EQ(lAlien, &lOther);
    EXPECT_EQ(lArray->GetStatus(), Status::eAlienPointer);
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Message(
                                      "Release", "Attempting to release an alien pointer")}));
    EXPECT_EQ(lArray->GetReadLockCount(), 0); // the unlock happened before the check
    (void)lItems;
}

TEST(QelLayerElementArrayGetLocked, ReleaseOfNullPointers)
{
    Ints lArray({1});
    ReportCapture lCapture;
    lArray->Release(nullptr);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Condition("Release", "pDataPtr != NULL")}));
    void* lNull = nullptr;
    lArray->Release(&lNull);
    EXPECT_EQ(lCapture.Reports().size(), 1u);
}

TEST(QelLayerElementArrayGetLocked, ReferenceArrayAskedForUndefinedGivesRawItems)
{
    QelLayerElementArray lArray(eQelReference);
    unsigned long long lValue = 0;
    unsigned long long* lPointer = &lValue;
    lArray.Add(&lPointer, eQelReference);
    void* lItems = lArray.GetLocked(Array::eReadLock, eQelUndefined);
    ASSERT_NE(lItems, nullptr);
    EXPECT_EQ(*static_cast<unsigned long long**>(lItems), lPointer);
    lArray.Release(&lItems, eQelUndefined);
    unsigned long long** lTyped = lArray.GetLocked(&lPointer, Array::eReadLock);
    EXPECT_EQ(*lTyped, lPointer);
    lArray.Release(reinterpret_cast<void**>(&lTyped), eQelReference);
    EXPECT_FALSE(lArray.IsInUse());
}

TEST(QelLayerElementArrayGetLocked, OtherArrayAskedForUndefinedReportsConversion)
{
    Ints lArray({1});
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetLocked(Array::eReadLock, eQelUndefined), nullptr);
    ASSERT_GE(lCapture.Reports().size(), 1u);
    EXPECT_EQ(lCapture.Reports()[0],
              kReports.Condition(
                  "ConvertDataType",
                  "pDataType != QelUndefinedDT.GetType() && pDataPtr != NULL && pStride != NULL"));
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayGetLocked, RefusedConversionGivesNullWithLockUndone)
{
    Ints lArray({1, 2});
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetLocked(Array::eReadWriteLock, eQelDouble4),
              nullptr); // int to four-vector: refused
    EXPECT_FALSE(lArray->IsWriteLocked());
    EXPECT_FALSE(lArray->IsInUse());
    EXPECT_TRUE(lCapture.Reports().empty());
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
}

TEST(QelLayerElementArrayGetLocked, ConvertedBufferOutOfMemory)
{
    Ints lArray({1, 2});
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_EQ(lArray->GetLocked(Array::eReadLock, eQelDouble), nullptr);
    EXPECT_EQ(lArray->GetLocked(Array::eReadWriteLock, eQelDouble), nullptr);
    lFailure.FailNone();
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Condition("ConvertDataType", "*pDataPtr != NULL"),
                                   kReports.Condition("ConvertDataType", "*pDataPtr != NULL")}));
    EXPECT_FALSE(lArray->IsInUse());
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
}

TEST(QelLayerElementArrayGetLocked, DestroyingWithBuffersOutFreesThem)
{
    MemoryRecorder lRecorder;
    auto* lArray = MakeInts({1, 2, 3});
    const std::vector<void*> lBefore = lRecorder.Live();
    EXPECT_NE(lArray->GetLocked(Array::eReadLock, eQelDouble), nullptr);
    EXPECT_NE(lArray->GetLocked(Array::eReadLock, eQelString), nullptr); // owning items too
    // What locking left allocated: the buffers, the list holding them and the texts.
    std::vector<void*> lLocking;
    for (void* lBlock : lRecorder.Live())
        if (std::find(lBefore.begin(), lBefore.end(), lBlock) == lBefore.end())
            lLocking.push_back(lBlock);
    EXPECT_GE(lLocking.size(), 3u);
    const size_t lLive = lRecorder.Live().size();
    lRecorder.Clear();
    QelDelete(lArray);
    for (void* lBlock : lLocking)
        EXPECT_EQ(lRecorder.TimesFreed(lBlock), 1) << lBlock;
    // Every block still allocated goes back once and nothing else is freed.
    EXPECT_EQ(lRecorder.Frees().size(), lLive);
    for (void* lBlock : lBefore)
        EXPECT_EQ(lRecorder.TimesFreed(lBlock), 1) << lBlock;
    EXPECT_TRUE(lRecorder.Allocations().empty());
}

TEST(QelLayerElementArrayGetLocked, ConvertedBufferListThatCannotGrow)
{
    for (const Array::ELockMode lMode : {Array::eReadLock, Array::eReadWriteLock}) {
        SCOPED_TRACE(lMode);
        Ints lArray({1, 2});
        ReportCapture lCapture;
        MemoryRecorder lRecorder;
        // The first request is the buffer, the second the list that keeps it.
        lRecorder.RefuseAt(2);
        EXPECT_EQ(lArray->GetLocked(lMode, eQelDouble), nullptr);
        ASSERT_EQ(lRecorder.Allocations().size(), 2u);
        EXPECT_EQ(lRecorder.Refused(), 1);
        EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lRecorder.Allocations()[0].mAddress}));
        EXPECT_TRUE(lRecorder.Live().empty());
        // The list reports its own refusal; the conversion adds nothing.
        EXPECT_EQ(
            lCapture.Reports(),
            (std::vector<Report>{test::FileReports{"include/qelsdk/core/base/qelarray"}.Condition(
                "InsertAt", "lArray")}));
        EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
        EXPECT_EQ(lArray->GetReadLockCount(), 0);
        EXPECT_FALSE(lArray->IsWriteLocked());
        EXPECT_FALSE(lArray->IsInUse());
        EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
    }
}

TEST(QelLayerElementArrayGetLocked, ConvertDataTypeDirectly)
{
    Ints lArray({3, 4});
    void* lBuffer = nullptr;
    size_t lStride = 0;
    lArray->ConvertDataType(eQelShort, &lBuffer, &lStride);
    ASSERT_NE(lBuffer, nullptr);
    EXPECT_EQ(lStride, sizeof(short));
    EXPECT_EQ(static_cast<short*>(lBuffer)[1], 4);
    lArray->Release(&lBuffer, eQelShort); // a buffer it handed out: freed
    EXPECT_EQ(lBuffer, nullptr);
    ReportCapture lCapture;
    lArray->ConvertDataType(eQelDouble, nullptr, &lStride);
    EXPECT_EQ(lCapture.Reports().size(), 1u);
}

TEST(QelLayerElementArrayGetLocked, DataPtrMarksInUseForGood)
{
    Ints lArray({1, 2});
    EXPECT_FALSE(lArray->IsInUse());
    void* lItems = lArray->GetDataPtr();
    ASSERT_NE(lItems, nullptr);
    EXPECT_EQ(static_cast<int*>(lItems)[1], 2);
    EXPECT_TRUE(lArray->IsInUse());
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
    EXPECT_FALSE(lArray->IsWriteLocked());
    // No lock taken or given back afterwards clears the mark.
    EXPECT_EQ(lArray->ReadLock(), 1);
    EXPECT_EQ(lArray->ReadUnlock(), 0);
    ASSERT_TRUE(lArray->ReadWriteLock());
    lArray->ReadWriteUnlock();
    void* lLocked = lArray->GetLocked(Array::eReadWriteLock);
    EXPECT_EQ(lLocked, lItems);
    lArray->Release(&lLocked);
    lArray->SetAt(0, 7);
    EXPECT_EQ(lArray->GetAt(0), 7);
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
    EXPECT_FALSE(lArray->IsWriteLocked());
    EXPECT_TRUE(lArray->IsInUse());
}

// --- References ----------------------------------------------------------------------

TEST(QelLayerElementArrayReference, GetReference)
{
    Ints lArray({1, 2});
    lArray->SetStatus(Status::eInvalidRequest);
    int* lItem = static_cast<int*>(lArray->GetReference(1, eQelInt));
    ASSERT_NE(lItem, nullptr);
    EXPECT_EQ(*lItem, 2);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    EXPECT_FALSE(lArray->IsWriteLocked());
    ReportCapture lCapture;
    EXPECT_EQ(lArray->GetReference(1, eQelFloat), nullptr);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("GetReference", "Bad data type conversion")}));
}

TEST(QelLayerElementArrayReference, GetReferenceToNeedsWriteLock)
{
    Ints lArray({1, 2});
    void* lRef = &lArray;
    ReportCapture lCapture;
    lArray->GetReferenceTo(0, &lRef, eQelInt);
    EXPECT_EQ(lRef, nullptr);
    EXPECT_EQ(lArray->GetStatus(), Status::eWriteLockRefused);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("GetReferenceTo", "The array is not write locked")}));
    ASSERT_TRUE(lArray->ReadWriteLock());
    lArray->GetReferenceTo(1, &lRef);
    ASSERT_NE(lRef, nullptr);
    EXPECT_EQ(*static_cast<int*>(lRef), 2);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    lArray->GetReferenceTo(1, nullptr);
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    lArray->GetReferenceTo(1, &lRef, eQelDouble);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch);
    lArray->ReadWriteUnlock();
}

// --- Single-item operations ------------------------------------------------------------

TEST(QelLayerElementArrayOps, GetAtOutOfRangeZeroFills)
{
    Ints lArray({1, 2, 3});
    int lValue = 99;
    int* lPtr = &lValue;
    EXPECT_FALSE(lArray->GetAt(5, reinterpret_cast<void**>(&lPtr), eQelInt));
    EXPECT_EQ(lValue, 0);
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    EXPECT_TRUE(lArray->GetAt(2, reinterpret_cast<void**>(&lPtr), eQelDouble)); // type ignored
    EXPECT_EQ(lValue, 3);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    EXPECT_TRUE(lArray->GetFirst(reinterpret_cast<void**>(&lPtr)));
    EXPECT_EQ(lValue, 1);
    EXPECT_TRUE(lArray->GetLast(reinterpret_cast<void**>(&lPtr)));
    EXPECT_EQ(lValue, 3);
    EXPECT_FALSE(lArray->GetAt(0, nullptr, eQelInt));
}

TEST(QelLayerElementArrayOps, GetAtRefusedInsideWriteLock)
{
    Ints lArray({1});
    int lValue = 7;
    int* lPtr = &lValue;
    lArray->ReadWriteLock();
    ReportCapture lCapture;
    EXPECT_FALSE(lArray->GetAt(0, reinterpret_cast<void**>(&lPtr), eQelInt));
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
    EXPECT_EQ(lValue, 7);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("ReadLock", "A writeLock is active"),
                                   kReports.Message("GetAt", "The array is not read locked")}));
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayOps, SetAtTypeChecked)
{
    Ints lArray({1, 2});
    const float lFloat = 2.5f;
    ReportCapture lCapture;
    lArray->SetAt(0, &lFloat, eQelFloat);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("SetAt", "Bad data type conversion")}));
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
    lArray->SetAt(0, &lFloat, eQelUndefined); // raw bytes
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    int lBits = 0;
    std::memcpy(&lBits, &lFloat, sizeof(lBits));
    EXPECT_EQ(lArray->GetAt(0), lBits);
    lArray->SetAt(2, &lFloat, eQelInt); // out of range: silent
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    lArray->SetLast(&lBits);
    EXPECT_EQ(lArray->GetAt(1), lBits);
}

TEST(QelLayerElementArrayOps, SetAtRefusedUnderReadLock)
{
    Ints lArray({1});
    lArray->ReadLock();
    ReportCapture lCapture;
    lArray->SetAt(0, 5);
    EXPECT_EQ(lArray->GetStatus(), Status::eWriteLockRefused);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("ReadWriteLock", "At least one ReadLock is active"),
                             kReports.Message("SetAt", "The array is not write locked")}));
    lArray->ReadUnlock();
    EXPECT_EQ(lArray->GetAt(0), 1);
}

TEST(QelLayerElementArrayOps, InsertAtBounds)
{
    Ints lArray({1, 2});
    const int lValue = 9;
    EXPECT_EQ(lArray->InsertAt(2, &lValue, eQelInt), 2);
    EXPECT_EQ(lArray->InsertAt(4, &lValue, eQelInt), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    EXPECT_EQ(lArray->InsertAt(-1, &lValue, eQelInt), -1);
    EXPECT_EQ(lArray->InsertAt(0, nullptr, eQelInt), -1);
    ReportCapture lCapture;
    EXPECT_EQ(lArray->InsertAt(0, &lValue, eQelBool), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("InsertAt", "Bad data type conversion")}));
    EXPECT_EQ(lArray->InsertAt(0, &lValue, eQelUndefined), 0);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{9, 1, 2, 9}));
}

TEST(QelLayerElementArrayOps, InsertAtRefusedLockGivesMinusOne)
{
    Ints lArray({1});
    lArray->ReadLock();
    ReportCapture lCapture;
    const int lValue = 3;
    EXPECT_EQ(lArray->InsertAt(0, &lValue, eQelInt), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eWriteLockRefused);
    lArray->SetStatus(Status::eLockAccessOk);
    EXPECT_EQ(lArray->Add(2), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eWriteLockRefused);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kWriteRefusal("InsertAt")[0], kWriteRefusal("InsertAt")[1],
                                   kWriteRefusal("InsertAt")[0], kWriteRefusal("InsertAt")[1]}));
    EXPECT_EQ(lArray->ReadUnlock(), 0);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1}));
}

TEST(QelLayerElementArrayOps, AddOutOfMemory)
{
    Ints lArray({1, 2, 3, 4});
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_EQ(lArray->Add(5), -1);
    EXPECT_EQ(lArray->GetStatus(),
              Status::eLockAccessOk); // the lock was granted; the storage refused
    lFailure.FailNone();
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_FALSE(lArray->IsInUse());
}

TEST(QelLayerElementArrayOps, RemoveAtAndRemoveLast)
{
    Ints lArray({1, 2, 3});
    int lValue = 0;
    int* lPtr = &lValue;
    lArray->RemoveAt(1, reinterpret_cast<void**>(&lPtr));
    EXPECT_EQ(lValue, 2);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    lArray->RemoveLast(reinterpret_cast<void**>(&lPtr), eQelInt);
    EXPECT_EQ(lValue, 3);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1}));
    lArray->RemoveAt(5, reinterpret_cast<void**>(&lPtr));
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    ReportCapture lCapture;
    lArray->RemoveAt(0, reinterpret_cast<void**>(&lPtr), eQelDouble);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1}));
}

TEST(QelLayerElementArrayOps, RemoveItMissingValueReportsWriteText)
{
    Ints lArray({1, 2});
    int lValue = 5;
    int* lPtr = &lValue;
    ReportCapture lCapture;
    EXPECT_FALSE(lArray->RemoveIt(reinterpret_cast<void**>(&lPtr)));
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("RemoveIt", "The array is not write locked")}));
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
    lValue = 1;
    EXPECT_TRUE(lArray->RemoveIt(reinterpret_cast<void**>(&lPtr)));
    EXPECT_EQ(Items(*lArray), (std::vector<int>{2}));
}

TEST(QelLayerElementArrayOps, SearchSemantics)
{
    Ints lArray({7, 3, 7, 7});
    const int lSeven = 7;
    EXPECT_EQ(lArray->Find(&lSeven), 0);
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    EXPECT_EQ(lArray->FindAfter(0, &lSeven), 2);
    EXPECT_EQ(lArray->FindBefore(3, &lSeven), 2);
    EXPECT_EQ(lArray->FindBefore(0, &lSeven), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
    EXPECT_EQ(lArray->FindAfter(3, &lSeven), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
    EXPECT_EQ(lArray->FindAfter(-2, &lSeven), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eInvalidRequest);
    EXPECT_EQ(lArray->FindAfter(4, &lSeven), -1);
    EXPECT_EQ(lArray->FindBefore(4, &lSeven), -1);
    const int lNine = 9;
    EXPECT_EQ(lArray->Find(&lNine), -1);
    EXPECT_EQ(lArray->GetStatus(), Status::eReadLockRefused);
}

TEST(QelLayerElementArrayOps, SearchRefusedInsideWriteLockReusesWriteText)
{
    Ints lArray({1});
    const int lOne = 1;
    lArray->ReadWriteLock();
    ReportCapture lCapture;
    EXPECT_EQ(lArray->Find(&lOne), -1);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{kReports.Message("ReadLock", "A writeLock is active"),
                             kReports.Message("FindAfter", "The array is not write locked")}));
    lArray->ReadWriteUnlock();
}

TEST(QelLayerElementArrayOps, SizingOperations)
{
    Ints lArray({1, 2, 3});
    lArray->SetCount(5);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2, 3, 0, 0}));
    lArray->SetStatus(Status::eTypeMismatch);
    lArray->AddMultiple(0);
    lArray->AddMultiple(-3);
    EXPECT_EQ(lArray->GetStatus(), Status::eTypeMismatch); // untouched
    EXPECT_EQ(lArray->GetCount(), 5);
    lArray->AddMultiple(2);
    EXPECT_EQ(lArray->GetCount(), 7);
    lArray->Resize(2);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
    lArray->Resize(-4);
    EXPECT_EQ(lArray->GetCount(), 0);
    lArray->Add(8);
    lArray->SetCount(-3);
    EXPECT_EQ(lArray->GetCount(), 0);
    lArray->Clear();
    EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
    EXPECT_EQ(lArray->GetDataPtr(), nullptr);
}

// The sizing operations, each with a request that needs more blocks than three items
// fill.
const std::pair<const char*, std::function<void(Array&)>> kSizings[] = {
    {"SetCount", [](Array& pArray) { pArray.SetCount(100); }},
    {"Resize", [](Array& pArray) { pArray.Resize(100); }},
    {"AddMultiple", [](Array& pArray) { pArray.AddMultiple(100); }},
    {"Clear", [](Array& pArray) { pArray.Clear(); }},
};

TEST(QelLayerElementArrayOps, SizingRefusedUnderReadLock)
{
    for (const auto& lSizing : kSizings) {
        SCOPED_TRACE(lSizing.first);
        Ints lArray({1, 2, 3});
        ASSERT_EQ(lArray->ReadLock(), 1);
        ReportCapture lCapture;
        MemoryRecorder lRecorder;
        lSizing.second(*lArray);
        EXPECT_EQ(lArray->GetStatus(), Status::eWriteLockRefused);
        EXPECT_EQ(lCapture.Reports(), kWriteRefusal(lSizing.first));
        EXPECT_TRUE(lRecorder.Allocations().empty());
        EXPECT_TRUE(lRecorder.Frees().empty());
        EXPECT_EQ(lArray->GetReadLockCount(), 1);
        EXPECT_FALSE(lArray->IsWriteLocked());
        EXPECT_EQ(lArray->ReadUnlock(), 0);
        EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2, 3}));
    }
}

TEST(QelLayerElementArrayOps, SizingWithoutMemoryKeepsTheItems)
{
    for (const auto& lSizing : kSizings) {
        SCOPED_TRACE(lSizing.first);
        Ints lArray({1, 2, 3});
        ReportCapture lCapture;
        MemoryRecorder lRecorder;
        lRecorder.RefuseAbove(0);
        lSizing.second(*lArray);
        // The lock was granted; the storage refused to grow.
        EXPECT_EQ(lArray->GetStatus(), Status::eLockAccessOk);
        EXPECT_TRUE(lCapture.Reports().empty());
        EXPECT_FALSE(lArray->IsInUse());
        if (std::string(lSizing.first) == "Clear") {
            // Clearing only frees: nothing to refuse.
            EXPECT_TRUE(lRecorder.Allocations().empty());
            EXPECT_EQ(lRecorder.Frees().size(), 1u);
            EXPECT_EQ(lArray->GetCount(), 0);
            continue;
        }
        EXPECT_EQ(lRecorder.Refused(), 1);
        EXPECT_TRUE(lRecorder.Frees().empty());
        EXPECT_EQ(lArray->GetCount(), 3);
        EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2, 3}));
    }
}

TEST(QelLayerElementArrayOps, IsEqualComparesBytesOnly)
{
    QelLayerElementArrayTemplate<int> lEmptyA(eQelInt);
    QelLayerElementArrayTemplate<float> lEmptyB(eQelFloat);
    EXPECT_TRUE(lEmptyA.IsEqual(lEmptyB));
    Ints lCleared({1, 2});
    lCleared->Clear();
    EXPECT_TRUE(lCleared->IsEqual(lEmptyA));
    lEmptyA.Add(0);
    lEmptyB.Add(0.0f);
    EXPECT_TRUE(lEmptyA.IsEqual(lEmptyB));
    lEmptyB.SetAt(0, 1.0f);
    EXPECT_FALSE(lEmptyA.IsEqual(lEmptyB));
    Ints lShort({0, 0});
    EXPECT_FALSE(lShort->IsEqual(lEmptyA));
    Ints lBlockButEmpty({});
    lBlockButEmpty->Resize(0); // storage with no items
    EXPECT_FALSE(lBlockButEmpty->IsEqual(*lCleared));
    EXPECT_EQ(lEmptyA.GetStatus(), Status::eLockAccessOk);
}

// --- Typed face ----------------------------------------------------------------------

TEST(QelLayerElementArrayTemplate, IntAddGetAt)
{
    QelLayerElementArrayTemplate<int> lArray(eQelInt);
    EXPECT_EQ(lArray.Add(5), 0);
    EXPECT_EQ(lArray.GetAt(0), 5);
    EXPECT_EQ(lArray.GetAt(1), 0);
    EXPECT_EQ(lArray.GetStatus(), Status::eInvalidRequest);
}

TEST(QelLayerElementArrayTemplate, ColourTaggedAsFourVector)
{
    QelLayerElementArrayTemplate<QelColor> lArray(eQelDouble4);
    lArray.Resize(1);
    const QelColor lColour(0.1, 0.2, 0.3, 0.4);
    lArray.SetAt(0, lColour);
    EXPECT_EQ(lArray.GetStatus(), Status::eLockAccessOk);
    EXPECT_EQ(lArray.GetAt(0), lColour);
    QelLayerElementArrayTemplate<QelColor> lOther(eQelDouble3);
    lOther.Resize(1);
    ReportCapture lCapture;
    lOther.SetAt(0, lColour);
    EXPECT_EQ(lOther.GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("SetAt", "Bad data type conversion")}));
}

TEST(QelLayerElementArrayTemplate, AssignmentCopiesItems)
{
    QelLayerElementArrayTemplate<QelVector4> lSource(eQelDouble4);
    lSource.Resize(3);
    for (int i = 0; i < 3; ++i)
        lSource.SetAt(i, QelVector4(i, i + 1, i + 2, i + 3));
    QelLayerElementArrayTemplate<QelVector4> lTarget(eQelDouble4);
    lTarget.Resize(10);
    lTarget = lSource;
    EXPECT_EQ(lTarget.GetCount(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(lTarget.GetAt(i), lSource.GetAt(i));
    EXPECT_EQ(lTarget.GetStatus(), Status::eLockAccessOk);
    EXPECT_FALSE(lTarget.IsWriteLocked());
}

TEST(QelLayerElementArrayTemplate, SelfAssignmentChangesNothing)
{
    Ints lArray({1, 2});
    lArray->SetStatus(Status::eAlienPointer);
    *lArray = *lArray;
    EXPECT_EQ(lArray->GetStatus(), Status::eAlienPointer);
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 2}));
}

TEST(QelLayerElementArrayTemplate, AssignmentIntoOtherTypeRefusesEveryItem)
{
    Ints lSource({1, 2});
    QelLayerElementArrayTemplate<int> lTarget(eQelFloat);
    ReportCapture lCapture;
    lTarget = *lSource;
    EXPECT_EQ(lTarget.GetDataType(), eQelFloat);
    EXPECT_EQ(lTarget.GetCount(), 2);
    EXPECT_EQ(lTarget.GetAt(0), 0);
    EXPECT_EQ(lTarget.GetAt(1), 0);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("SetAt", "Bad data type conversion"),
                                   kReports.Message("SetAt", "Bad data type conversion")}));
}

TEST(QelLayerElementArrayTemplate, AssignmentRefusedUnderReadLock)
{
    Ints lSource({1, 2});
    Ints lTarget({5});
    lTarget->ReadLock();
    ReportCapture lCapture;
    *lTarget = *lSource;
    EXPECT_EQ(lTarget->GetStatus(), Status::eWriteLockRefused);
    // The assignment takes its lock through WriteLock, which reports the refusal.
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Message(
                                      "ReadWriteLock", "At least one ReadLock is active")}));
    lTarget->ReadUnlock();
    EXPECT_EQ(Items(*lTarget), (std::vector<int>{5}));
}

TEST(QelLayerElementArrayTemplate, AsReference)
{
    Ints lArray({1, 2});
    lArray->AsReference(1) = 20;
    EXPECT_EQ(lArray->GetAt(1), 20);
    lArray->ReadLock();
    ReportCapture lCapture;
    int& lFallback = lArray->AsReference(0);
    EXPECT_EQ(&lFallback, &lArray->mFallbackItem);
    lFallback = 99;
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Message(
                                      "ReadWriteLock", "At least one ReadLock is active")}));
    lArray->ReadUnlock();
    EXPECT_EQ(Items(*lArray), (std::vector<int>{1, 20}));
}

TEST(QelLayerElementArrayTemplate, PointerInstantiations)
{
    QelLayerElementArrayTemplate<void*> lVoids(eQelReference);
    EXPECT_EQ(lVoids.mFallbackItem, nullptr);
    EXPECT_EQ(lVoids.AsReference(0), nullptr); // no storage yet: the fallback
    QelLayerElementArrayTemplate<bool> lBools(eQelBool);
    lBools.Resize(1);
    lBools.SetAt(0, true);
    EXPECT_TRUE(lBools.GetAt(0));
    QelLayerElementArrayTemplate<double> lDoubles(eQelDouble);
    lDoubles.Resize(1);
    lDoubles.SetAt(0, 2.5);
    EXPECT_EQ(lDoubles.GetAt(0), 2.5);
    QelLayerElementArrayTemplate<QelVector2> lUVs(eQelDouble2);
    lUVs.Resize(1);
    lUVs.SetAt(0, QelVector2(0.5, 0.25));
    EXPECT_EQ(lUVs.GetAt(0), QelVector2(0.5, 0.25));
}

// A bool slot holding a byte no bool holds (here written raw; slots that growth
// exposes without zeroing can hold any byte) reads as true, as a bool of value 1.
TEST(QelLayerElementArrayTemplate, BoolItemsReadTheirByteAsZeroOrOne)
{
    QelLayerElementArrayTemplate<bool> lBools(eQelBool);
    lBools.Resize(3);
    void* lItems = lBools.GetLocked(QelLayerElementArray::eWriteLock);
    ASSERT_NE(lItems, nullptr);
    const unsigned char lBytes[3] = {0xbe, 0, 1};
    std::memcpy(lItems, lBytes, sizeof lBytes);
    lBools.Release(&lItems);

    for (int i = 0; i < 3; ++i) {
        const bool lItem = lBools.GetAt(i);
        unsigned char lByte = 0xff;
        std::memcpy(&lByte, &lItem, 1);
        EXPECT_EQ(lByte, i == 1 ? 0 : 1) << i;
    }
    bool lKept = true;
    EXPECT_FALSE(lBools.QelLayerElementArray::GetAt(3, &lKept)); // out of range: zero
    EXPECT_FALSE(lKept);

    QelLayerElementArrayTemplate<bool> lCopy(eQelBool);
    lCopy = lBools;
    const void* lCopied = lCopy.GetLocked(QelLayerElementArray::eReadLock);
    ASSERT_NE(lCopied, nullptr);
    EXPECT_EQ(std::memcmp(lCopied, "\1\0\1", 3), 0);
    lCopy.Release(const_cast<void**>(&lCopied));
}

} // namespace
} // namespace qelsdk
