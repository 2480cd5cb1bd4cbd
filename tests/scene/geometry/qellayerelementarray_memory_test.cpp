// What a caller's memory handlers see of the element arrays: converted buffers are the
// very blocks QelMalloc returned, of stride x count bytes, and come back to QelFree at
// that address; byte sizes that would wrap are refused before any allocation; typed
// reads never copy beyond the caller's item.
#include <qelsdk/scene/geometry/qellayerelementarray.h>

#include "qelsdk/scene/geometry/qellayerimp.h"
#include "support/qeltestsupport.h"

#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qelvector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

namespace qelsdk {
namespace {

using test::MemoryRecorder;
using test::Report;
using test::ReportCapture;
typedef LockAccessStatus Status;
typedef QelLayerElementArray Array;

const test::FileReports kReports{"src/qelsdk/scene/geometry/qellayer"};
const test::FileReports kArrayReports{"include/qelsdk/core/base/qelarray"};

// A double array holding 1.5, 2 and -3.
QelLayerElementArray* MakeDoubles()
{
    auto* lArray = QelNew<QelLayerElementArray>(eQelDouble);
    for (double lValue : {1.5, 2.0, -3.0})
        lArray->Add(&lValue, eQelDouble);
    return lArray;
}

// Owns an array for the length of a test.
struct Owned
{
    explicit Owned(QelLayerElementArray* pArray) : mArray(pArray) {}
    ~Owned() { QelDelete(mArray); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    QelLayerElementArray* operator->() { return mArray; }
    QelLayerElementArray* mArray;
};

// The allocations of the recorder from pFirst on that are fresh QelMalloc blocks.
std::vector<MemoryRecorder::Allocation> MallocsFrom(const MemoryRecorder& pRecorder, size_t pFirst)
{
    std::vector<MemoryRecorder::Allocation> lMallocs;
    for (size_t i = pFirst; i < pRecorder.Allocations().size(); ++i)
        if (!pRecorder.Allocations()[i].mRealloc) lMallocs.push_back(pRecorder.Allocations()[i]);
    return lMallocs;
}

// Every tag a converted buffer can be asked for, with its storage size.
struct Tag
{
    EQelType mType;
    size_t mSize;
};

const Tag kConvertible[] = {
    {eQelEnumMulti, sizeof(int)},
    {eQelChar, sizeof(signed char)},
    {eQelUChar, sizeof(unsigned char)},
    {eQelShort, sizeof(short)},
    {eQelUShort, sizeof(unsigned short)},
    {eQelUInt, sizeof(unsigned int)},
    {eQelLongLong, sizeof(long long)},
    {eQelULongLong, sizeof(unsigned long long)},
    {eQelHalfFloat, sizeof(QelHalfFloat)},
    {eQelBool, sizeof(bool)},
    {eQelInt, sizeof(int)},
    {eQelFloat, sizeof(float)},
    {eQelDouble2, sizeof(QelDouble2)},
    {eQelDouble3, sizeof(QelDouble3)},
    {eQelEnum, sizeof(int)},
    {eQelString, sizeof(QelString)},
    {eQelBlob, sizeof(QelBlob)},
};

// Tags a double refuses to convert into, silently or loudly.
const Tag kRefused[] = {
    {eQelDouble4, sizeof(QelDouble4)},   {eQelDouble4x4, sizeof(QelDouble4x4)},
    {eQelTime, sizeof(QelTime)},         {eQelReference, 8},
    {eQelDistance, sizeof(QelDistance)}, {eQelDateTime, sizeof(QelDateTime)},
};

void PrintTo(const Tag& pTag, std::ostream* pStream)
{
    *pStream << "tag " << pTag.mType << ", " << pTag.mSize << " bytes";
}

class ConvertedBuffer : public testing::TestWithParam<Tag>
{
};

// Read and read-write locks: the buffer is the first block QelMalloc handed out while
// locking, exactly stride x count bytes, and Release gives that address to QelFree once.
TEST_P(ConvertedBuffer, IsTheMallocBlockAndComesBackAtRelease)
{
    const Tag lTag = GetParam();
    for (Array::ELockMode lMode : {Array::eReadLock, Array::eReadWriteLock}) {
        Owned lArray(MakeDoubles());
        ReportCapture lCapture; // some types refuse the way back to double
        MemoryRecorder lRecorder;
        void* lBuffer = lArray->GetLocked(lMode, lTag.mType);
        ASSERT_NE(lBuffer, nullptr);
        const auto lMallocs = MallocsFrom(lRecorder, 0);
        ASSERT_FALSE(lMallocs.empty());
        EXPECT_EQ(lMallocs[0].mAddress, lBuffer);
        EXPECT_EQ(lMallocs[0].mSize, lTag.mSize * 3);
        EXPECT_EQ(lArray->GetStride(), lTag.mSize);
        EXPECT_EQ(lRecorder.TimesFreed(lBuffer), 0);
        void* lHandedOut = lBuffer;
        lArray->Release(&lBuffer, lTag.mType);
        EXPECT_EQ(lBuffer, nullptr);
        EXPECT_EQ(lRecorder.TimesFreed(lHandedOut), 1);
        EXPECT_FALSE(lArray->IsInUse());
    }
}

TEST_P(ConvertedBuffer, StillOutComesBackAtDestruction)
{
    const Tag lTag = GetParam();
    MemoryRecorder lRecorder;
    QelLayerElementArray* lArray = MakeDoubles();
    void* lFirst = lArray->GetLocked(Array::eReadLock, lTag.mType);
    void* lSecond = lArray->GetLocked(Array::eReadLock, lTag.mType);
    ASSERT_NE(lFirst, nullptr);
    ASSERT_NE(lSecond, nullptr);
    EXPECT_NE(lFirst, lSecond);
    EXPECT_EQ(lRecorder.TimesFreed(lFirst), 0);
    QelDelete(lArray);
    EXPECT_EQ(lRecorder.TimesFreed(lFirst), 1);
    EXPECT_EQ(lRecorder.TimesFreed(lSecond), 1);
}

// Every block allocated while the buffer was out (the items' own memory included) is
// freed by Release: nothing is left behind.
TEST_P(ConvertedBuffer, LeavesNothingBehind)
{
    const Tag lTag = GetParam();
    Owned lArray(MakeDoubles());
    ReportCapture lCapture; // some types refuse the way back to double
    // A first lock grows the lists that keep track of the buffers; they keep their
    // room for the next one.
    void* lBuffer = lArray->GetLocked(Array::eReadLock, lTag.mType);
    lArray->Release(&lBuffer, lTag.mType);
    MemoryRecorder lRecorder;
    lBuffer = lArray->GetLocked(Array::eReadWriteLock, lTag.mType);
    ASSERT_NE(lBuffer, nullptr);
    lArray->Release(&lBuffer, lTag.mType);
    // Addresses come back from the allocator after a free, so blocks are counted.
    const auto lMallocs = MallocsFrom(lRecorder, 0);
    EXPECT_FALSE(lMallocs.empty());
    EXPECT_EQ(lRecorder.Frees().size(), lMallocs.size());
}

INSTANTIATE_TEST_SUITE_P(EveryConvertibleType, ConvertedBuffer, testing::ValuesIn(kConvertible));

class RefusedConversion : public testing::TestWithParam<Tag>
{
};

// A refused conversion frees the very block it was given, of the refused type's size,
// and undoes the lock.
TEST_P(RefusedConversion, FreesItsBlockAndUndoesTheLock)
{
    const Tag lTag = GetParam();
    Owned lArray(MakeDoubles());
    ReportCapture lCapture;
    MemoryRecorder lRecorder;
    EXPECT_EQ(lArray->GetLocked(Array::eReadLock, lTag.mType), nullptr);
    const auto lMallocs = MallocsFrom(lRecorder, 0);
    ASSERT_EQ(lMallocs.size(), 1u);
    EXPECT_EQ(lMallocs[0].mSize, lTag.mSize * 3);
    EXPECT_EQ(lRecorder.Frees(), std::vector<void*>{lMallocs[0].mAddress});
    EXPECT_EQ(lArray->GetReadLockCount(), 0);
    EXPECT_FALSE(lArray->IsInUse());
}

INSTANTIATE_TEST_SUITE_P(EveryRefusedType, RefusedConversion, testing::ValuesIn(kRefused));

TEST(ConvertedBuffers, OwningItemsAreConstructedValues)
{
    Owned lArray(MakeDoubles());
    auto* lTexts = static_cast<QelString*>(lArray->GetLocked(Array::eReadLock, eQelString));
    ASSERT_NE(lTexts, nullptr);
    EXPECT_EQ(lTexts[0], "1.5");
    EXPECT_EQ(lTexts[1], "2");
    EXPECT_EQ(lTexts[2], "-3");
    lArray->Release(reinterpret_cast<void**>(&lTexts), eQelString);

    auto* lBlobs = static_cast<QelBlob*>(lArray->GetLocked(Array::eReadLock, eQelBlob));
    ASSERT_NE(lBlobs, nullptr);
    const double lTwo = 2.0;
    EXPECT_EQ(lBlobs[1], QelBlob(&lTwo, sizeof(lTwo)));
    lArray->Release(reinterpret_cast<void**>(&lBlobs), eQelBlob);
}

// A three-vector converted into a four-vector leaves the fourth component as the
// constructed item holds it: zero, not whatever the allocator left there.
TEST(ConvertedBuffers, FourthComponentOfConstructedVectorsIsZero)
{
    Owned lArray(QelNew<QelLayerElementArray>(eQelDouble3));
    const QelDouble3 lPoint(1.0, 2.0, 3.0);
    lArray->Add(&lPoint, eQelDouble3);
    auto* lVectors = static_cast<QelDouble4*>(lArray->GetLocked(Array::eReadLock, eQelDouble4));
    ASSERT_NE(lVectors, nullptr);
    EXPECT_EQ(lVectors[0], QelDouble4(1.0, 2.0, 3.0, 0.0));
    lArray->Release(reinterpret_cast<void**>(&lVectors), eQelDouble4);
}

TEST(ConvertedBuffers, FailedWriteBackFreesTheBuffer)
{
    Owned lArray(MakeDoubles());
    MemoryRecorder lRecorder;
    auto* lTexts = static_cast<QelString*>(lArray->GetLocked(Array::eReadWriteLock, eQelString));
    ASSERT_NE(lTexts, nullptr);
    void* lHandedOut = lTexts;
    lTexts[0] = "4.25";
    lTexts[1] = "not a number";
    lArray->Release(reinterpret_cast<void**>(&lTexts), eQelString);
    EXPECT_EQ(lArray->GetStatus(), Status::eCopyBackFailed);
    EXPECT_EQ(lRecorder.TimesFreed(lHandedOut), 1);
    double lValue = 0.0;
    void* lItem = &lValue;
    lArray->GetAt(0, &lItem, eQelDouble);
    EXPECT_EQ(lValue, 4.25);
    lArray->GetAt(1, &lItem, eQelDouble);
    EXPECT_EQ(lValue, 0.0);
}

// The buffer was made for three items; the array grew to five while it was out (a
// write inside a direct write lock does its work, only its unlock is refused). The
// write-back reads three items and leaves the other two zero.
TEST(ConvertedBuffers, WriteBackReadsNoMoreItemsThanTheBufferHolds)
{
    Owned lArray(MakeDoubles());
    ReportCapture lCapture;
    auto* lFloats = static_cast<float*>(lArray->GetLocked(Array::eWriteLock, eQelFloat));
    ASSERT_NE(lFloats, nullptr);
    lArray->AddMultiple(2);
    EXPECT_EQ(lCapture.Reports(),
              std::vector<Report>{kReports.Message("ReadWriteUnlock", "A direct lock is active")});
    lFloats[0] = 1.5f;
    lFloats[1] = 2.0f;
    lFloats[2] = 6.5f;
    lArray->Release(reinterpret_cast<void**>(&lFloats), eQelFloat);
    EXPECT_EQ(lArray->GetStatus(), Status::eCopyBackFailed);
    std::vector<double> lItems;
    for (int i = 0; i < lArray->GetCount(); ++i) {
        double lValue = -1.0;
        void* lItem = &lValue;
        lArray->GetAt(i, &lItem, eQelDouble);
        lItems.push_back(lValue);
    }
    EXPECT_EQ(lItems, (std::vector<double>{1.5, 2.0, 6.5, 0.0, 0.0}));
}

// Released as a type its items cannot be read as (the buffer holds strings), the
// buffer supplies no item: the items are zero and the strings are destroyed.
TEST(ConvertedBuffers, ReleasedAsAnotherOwningTypeWritesNothingBack)
{
    Owned lArray(MakeDoubles());
    MemoryRecorder lRecorder;
    void* lTexts = lArray->GetLocked(Array::eReadWriteLock, eQelString);
    ASSERT_NE(lTexts, nullptr);
    void* lHandedOut = lTexts;
    lArray->Release(&lTexts, eQelBlob);
    EXPECT_EQ(lArray->GetStatus(), Status::eCopyBackFailed);
    EXPECT_EQ(lRecorder.TimesFreed(lHandedOut), 1);
    double lValue = -1.0;
    void* lItem = &lValue;
    lArray->GetAt(0, &lItem, eQelDouble);
    EXPECT_EQ(lValue, 0.0);
}

// Allocation 1 is the buffer, 2 the growth of the buffer list, 3 that of the records
// beside it. Either list failing refuses the lock as a failed buffer would.
TEST(ConvertedBuffers, BookkeepingThatCannotGrowRefusesTheLock)
{
    for (int lFailing : {2, 3}) {
        Owned lArray(MakeDoubles());
        ReportCapture lCapture;
        MemoryRecorder lRecorder;
        lRecorder.RefuseAt(lFailing);
        EXPECT_EQ(lArray->GetLocked(Array::eReadLock, eQelFloat), nullptr) << lFailing;
        ASSERT_EQ(lRecorder.Allocations().size(), static_cast<size_t>(lFailing));
        void* lBuffer = lRecorder.Allocations()[0].mAddress;
        EXPECT_EQ(lRecorder.TimesFreed(lBuffer), 1);
        EXPECT_EQ(lCapture.Reports(),
                  std::vector<Report>{kArrayReports.Condition("InsertAt", "lArray")});
        EXPECT_EQ(lArray->GetReadLockCount(), 0);
        EXPECT_FALSE(lArray->IsInUse());
        lRecorder.RefuseNone();
        void* lAgain = lArray->GetLocked(Array::eReadLock, eQelFloat);
        ASSERT_NE(lAgain, nullptr);
        lArray->Release(&lAgain, eQelFloat);
        EXPECT_EQ(lAgain, nullptr);
    }
}

TEST(ConvertedBuffers, BufferThatCannotBeAllocatedRefusesTheLock)
{
    Owned lArray(MakeDoubles());
    ReportCapture lCapture;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAt(1);
    EXPECT_EQ(lArray->GetLocked(Array::eReadWriteLock, eQelFloat), nullptr);
    EXPECT_EQ(lCapture.Reports(),
              std::vector<Report>{kReports.Condition("ConvertDataType", "*pDataPtr != NULL")});
    EXPECT_TRUE(lRecorder.Frees().empty());
    EXPECT_FALSE(lArray->IsInUse());
}

// --- Typed reads ------------------------------------------------------------------------

TEST(TypedReads, LargerStoredItemIsRefusedWithTheValueUntouched)
{
    QelLayerElementArrayTemplate<float> lArray(eQelDouble);
    const double lValue = 2.5;
    lArray.QelLayerElementArray::Add(&lValue, eQelDouble);
    ReportCapture lCapture;
    float lItem = 7.0f;
    EXPECT_FALSE(lArray.QelLayerElementArray::GetAt<float>(0, &lItem));
    EXPECT_EQ(lItem, 7.0f);
    EXPECT_EQ(lArray.GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lArray.GetAt(0), 0.0f);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Message("GetAt", "Bad data type conversion"),
                                   kReports.Message("GetAt", "Bad data type conversion")}));
}

// A smaller stored item is copied as its raw bytes into the start of the T; the rest
// of the T keeps its bytes.
TEST(TypedReads, SmallerStoredItemFillsTheFirstBytes)
{
    QelLayerElementArrayTemplate<double> lArray(eQelInt);
    const int lValue = 5;
    lArray.QelLayerElementArray::Add(&lValue, eQelInt);
    const unsigned long long lBefore = 0xFFFFFFFF00000000ull;
    double lItem = 0.0;
    std::memcpy(&lItem, &lBefore, sizeof(lItem));
    EXPECT_TRUE(lArray.QelLayerElementArray::GetAt<double>(0, &lItem));
    unsigned long long lAfter = 0;
    std::memcpy(&lAfter, &lItem, sizeof(lAfter));
    EXPECT_EQ(lAfter, 0xFFFFFFFF00000005ull);
    EXPECT_EQ(lArray.GetStatus(), Status::eLockAccessOk);
}

TEST(TypedReads, ReferenceLargerThanTheStoredItemIsTheFallback)
{
    QelLayerElementArrayTemplate<double> lArray(eQelFloat);
    const float lValue = 1.0f;
    lArray.QelLayerElementArray::Add(&lValue, eQelFloat);
    ReportCapture lCapture;
    lArray.mFallbackItem = 9.0;
    EXPECT_EQ(&lArray.AsReference(0), &lArray.mFallbackItem);
    EXPECT_EQ(lArray.GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lCapture.Reports(),
              std::vector<Report>{kReports.Message("AsReference", "Bad data type conversion")});
}

// --- Byte sizes that would wrap -------------------------------------------------------------

// The largest count whose storage block (8 + blocks x 4 x size bytes) fits 32-bit
// unsigned byte sizes, capped by the int count.
long long LargestStorageCount(size_t pItemSize)
{
    const unsigned long long lBlocks = (0xFFFFFFFFull - 8u) / (4u * pItemSize);
    return std::min<long long>(static_cast<long long>(lBlocks * 4u), INT_MAX);
}

unsigned long long StorageBytes(long long pCount, size_t pItemSize)
{
    const unsigned long long lBlocks = (static_cast<unsigned long long>(pCount) + 3u) / 4u;
    return 8u + lBlocks * 4u * pItemSize;
}

class StorageBoundary : public testing::TestWithParam<size_t>
{
};

TEST_P(StorageBoundary, LargestCountAsksForItsExactBlockAndTheNextIsRefused)
{
    const size_t lSize = GetParam();
    const long long lLargest = LargestStorageCount(lSize);
    LayerElementArrayImp lImp(lSize);
    lImp.Resize(3);
    void* const lBlock = lImp.GetHeader();
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(1 << 20);

    lImp.Resize(static_cast<int>(lLargest));
    ASSERT_EQ(lRecorder.Allocations().size(), 1u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, StorageBytes(lLargest, lSize));
    EXPECT_EQ(lRecorder.Allocations()[0].mAddress, nullptr);
    EXPECT_EQ(lImp.GetHeader(), lBlock);
    EXPECT_EQ(lImp.GetCount(), 3);
    EXPECT_EQ(lImp.GetBlockCount(), 1);

    lImp.AddMultiple(static_cast<int>(lLargest - 3));
    ASSERT_EQ(lRecorder.Allocations().size(), 2u);
    EXPECT_EQ(lRecorder.Allocations()[1].mSize, StorageBytes(lLargest, lSize));

    if (lLargest < INT_MAX) {
        lImp.Resize(static_cast<int>(lLargest + 1));
        lImp.AddMultiple(static_cast<int>(lLargest + 1 - 3));
    }
    lImp.AddMultiple(INT_MAX - 2); // the count itself would pass INT_MAX
    EXPECT_EQ(lRecorder.Allocations().size(), 2u);
    EXPECT_EQ(lImp.GetHeader(), lBlock);
    EXPECT_EQ(lImp.GetCount(), 3);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
}

// Insertion doubles the blocks: the doubling that still fits asks for its exact block,
// the first that does not is refused before the allocator is asked. The header claims
// a full block far larger than the real one; nothing is written when the growth is
// refused, so the claim is never acted on.
TEST_P(StorageBoundary, DoublingPastTheLimitIsRefused)
{
    const size_t lSize = GetParam();
    const unsigned long long lMaxBlocks = (0xFFFFFFFFull - 8u) / (4u * lSize);
    if (lMaxBlocks * 4u > INT_MAX) GTEST_SKIP() << "the int count is reached first";
    LayerElementArrayImp lImp(lSize);
    lImp.Resize(0);
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(1 << 20);
    const char lItem[128] = {};
    for (unsigned long long lBlocks : {lMaxBlocks / 2, lMaxBlocks / 2 + 1}) {
        lImp.SetBlockCount(static_cast<int>(lBlocks));
        lImp.SetArrayCount(static_cast<int>(lBlocks * 4u));
        EXPECT_EQ(lImp.InsertAt(lImp.GetCount(), lItem), -1);
        EXPECT_EQ(lImp.GetCount(), static_cast<int>(lBlocks * 4u));
        EXPECT_EQ(lImp.GetBlockCount(), static_cast<int>(lBlocks));
    }
    ASSERT_EQ(lRecorder.Allocations().size(), 1u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, 8u + lMaxBlocks / 2 * 2 * 4u * lSize);
    lImp.SetBlockCount(1);
    lImp.SetArrayCount(0);
}

TEST_P(StorageBoundary, ElementArrayResizePastTheLimitChangesNothing)
{
    const size_t lSize = GetParam();
    const long long lLargest = LargestStorageCount(lSize);
    if (lLargest == INT_MAX) GTEST_SKIP() << "no int count is past the limit";
    QelLayerElementArray lArray(lSize == 1    ? eQelChar
                                : lSize == 4  ? eQelInt
                                : lSize == 8  ? eQelDouble
                                : lSize == 32 ? eQelDouble4
                                              : eQelDouble4x4);
    lArray.AddMultiple(2);
    MemoryRecorder lRecorder;
    lArray.Resize(static_cast<int>(lLargest + 1));
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_EQ(lArray.GetCount(), 2);
    char lItem[128] = {1};
    lArray.SetAt(1000, lItem, eQelUndefined);
    EXPECT_EQ(lArray.GetStatus(), Status::eInvalidRequest);
}

INSTANTIATE_TEST_SUITE_P(ItemSizes, StorageBoundary, testing::Values(1u, 4u, 8u, 32u, 128u));

TEST(StorageBoundary, TheMeasuredCase)
{
    QelLayerElementArray lArray(eQelDouble4);
    lArray.Resize(0x08000001);
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_EQ(LargestStorageCount(sizeof(QelDouble4)), 0x07FFFFFC);
}

template <size_t tSize> struct Bytes
{
    char mBytes[tSize];
};

// QelArray's byte sizes are size_t products of an int capacity: INT_MAX slots ask the
// allocator for exactly INT_MAX x item size bytes, a negative capacity asks nothing.
template <size_t tSize> void CheckArrayBoundary()
{
    QelArray<Bytes<tSize>> lArray;
    ReportCapture lCapture;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(1 << 20);
    EXPECT_FALSE(lArray.Reserve(INT_MAX));
    EXPECT_FALSE(lArray.Resize(INT_MAX));
    ASSERT_EQ(lRecorder.Allocations().size(), 2u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, static_cast<size_t>(INT_MAX) * tSize);
    EXPECT_EQ(lRecorder.Allocations()[1].mSize, static_cast<size_t>(INT_MAX) * tSize);
    EXPECT_EQ(lArray.Allocate(-1), nullptr);
    EXPECT_EQ(lArray.Allocate(INT_MIN), nullptr);
    EXPECT_EQ(lRecorder.Allocations().size(), 2u);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kArrayReports.Condition("Reserve", "lArray"),
                                   kArrayReports.Condition("Resize", "lArray")}));
}

TEST(QelArrayBoundary, LargestCapacityAsksForItsExactSizeAndWrappingOnesAskNothing)
{
    CheckArrayBoundary<1>();
    CheckArrayBoundary<4>();
    CheckArrayBoundary<8>();
    CheckArrayBoundary<32>();
    CheckArrayBoundary<128>();
}

// A converted buffer's size is a size_t product too: the largest count asks for
// exactly count x stride bytes. The header claims the count; the refused buffer means
// no item is ever read.
TEST(ConvertedBufferBoundary, LargestCountAsksForItsExactSize)
{
    QelLayerElementArray lArray(eQelChar);
    lArray.AddMultiple(1);
    auto* lImp = static_cast<LayerElementArrayImp*>(lArray.GetImplementation());
    lImp->SetArrayCount(INT_MAX);
    ReportCapture lCapture;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(1 << 20);
    EXPECT_EQ(lArray.GetLocked(Array::eReadLock, eQelDouble4x4), nullptr);
    ASSERT_EQ(lRecorder.Allocations().size(), 1u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, static_cast<size_t>(INT_MAX) * 128u);
    EXPECT_EQ(lArray.GetReadLockCount(), 0);
    lImp->SetArrayCount(1);
    EXPECT_EQ(lCapture.Reports(),
              std::vector<Report>{kReports.Condition("ConvertDataType", "*pDataPtr != NULL")});
}

} // namespace
} // namespace qelsdk
