#include <qelsdk/core/base/qelalloc.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace qelsdk {
namespace {

int sMallocCalls = 0;
int sReallocCalls = 0;
int sFreeCalls = 0;
void* CountingMalloc(size_t pSize)
{
    ++sMallocCalls;
    return std::malloc(pSize);
}
void* CountingRealloc(void* p, size_t pSize)
{
    ++sReallocCalls;
    return std::realloc(p, pSize);
}
void CountingFree(void* p)
{
    ++sFreeCalls;
    std::free(p);
}

// The counting handlers, installed for one test and put back by the guard however the
// test ends.
struct Counters : testing::Test
{
    void SetUp() override
    {
        sMallocCalls = sReallocCalls = sFreeCalls = 0;
        QelSetMallocHandler(CountingMalloc);
        QelSetReallocHandler(CountingRealloc);
        QelSetFreeHandler(CountingFree);
    }
    void TearDown() override
    {
        // Nothing in the test replaced them.
        EXPECT_EQ(QelSetMallocHandler(nullptr), CountingMalloc);
        EXPECT_EQ(QelSetReallocHandler(nullptr), CountingRealloc);
        EXPECT_EQ(QelSetFreeHandler(nullptr), CountingFree);
    }
    test::HandlerGuard mGuard;
};

TEST_F(Counters, FunctionsGoThroughHandlers)
{
    void* lBlock = QelMalloc(8);
    EXPECT_EQ(sMallocCalls, 1);
    std::memset(lBlock, 1, 8);
    lBlock = QelRealloc(lBlock, 64);
    EXPECT_EQ(sReallocCalls, 1);
    EXPECT_EQ(static_cast<unsigned char*>(lBlock)[7], 1);
    QelFree(lBlock);
    EXPECT_EQ(sFreeCalls, 1);
}

TEST_F(Counters, ReallocOfNullIsFreshAllocation)
{
    void* lBlock = QelRealloc(nullptr, 16);
    ASSERT_NE(lBlock, nullptr);
    EXPECT_EQ(sMallocCalls, 1);
    EXPECT_EQ(sReallocCalls, 0);
    QelFree(lBlock);
}

TEST_F(Counters, FreeOfNullIgnored)
{
    QelFree(nullptr);
    EXPECT_EQ(sFreeCalls, 0);
}

TEST_F(Counters, ZeroByteRequestStillGivesBlock)
{
    void* lBlock = QelMalloc(0);
    EXPECT_NE(lBlock, nullptr);
    QelFree(lBlock);
}

TEST(QelAllocHandlers, NullRestoresDefault)
{
    test::HandlerGuard lGuard;
    EXPECT_NE(QelSetMallocHandler(CountingMalloc), CountingMalloc);
    EXPECT_EQ(QelSetMallocHandler(nullptr), CountingMalloc);
    sMallocCalls = 0;
    QelFree(QelMalloc(4));
    EXPECT_EQ(sMallocCalls, 0);
}

TEST(QelAllocHandlers, GuardPutsBackWhatWasInstalled)
{
    const QelMallocProc lMalloc = QelSetMallocHandler(nullptr);
    QelSetMallocHandler(lMalloc);
    {
        test::HandlerGuard lGuard;
        QelSetMallocHandler(CountingMalloc);
        QelSetReallocHandler(CountingRealloc);
        QelSetFreeHandler(CountingFree);
    }
    sMallocCalls = sReallocCalls = sFreeCalls = 0;
    void* lBlock = QelRealloc(QelMalloc(4), 64);
    QelFree(lBlock);
    EXPECT_EQ(sMallocCalls + sReallocCalls + sFreeCalls, 0);
    EXPECT_EQ(QelSetMallocHandler(lMalloc), lMalloc);
}

struct Tracked
{
    static int sLive;
    explicit Tracked(int pValue, const int& pRef) : mValue(pValue + pRef) { ++sLive; }
    virtual ~Tracked() { --sLive; }
    int mValue;
};
int Tracked::sLive = 0;

struct Derived : Tracked
{
    static int sDerivedLive;
    Derived() : Tracked(1, 1) { ++sDerivedLive; }
    ~Derived() override { --sDerivedLive; }
};
int Derived::sDerivedLive = 0;

// Every test starts with no living objects, whatever an earlier one left behind.
struct QelNewTest : testing::Test
{
    void SetUp() override { Tracked::sLive = Derived::sDerivedLive = 0; }
};

TEST_F(QelNewTest, ConstructsFromForwardedArguments)
{
    const int lRef = 5;
    Tracked* lObject = QelNew<Tracked>(2, lRef);
    ASSERT_NE(lObject, nullptr);
    EXPECT_EQ(lObject->mValue, 7);
    EXPECT_EQ(Tracked::sLive, 1);
    QelDelete(lObject);
    EXPECT_EQ(Tracked::sLive, 0);
}

TEST_F(QelNewTest, NullWithoutConstructionWhenAllocationFails)
{
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(QelNew<Tracked>(1, 1), nullptr);
    EXPECT_EQ(Tracked::sLive, 0);
}

TEST_F(QelNewTest, DeleteRunsVirtualDestructorAndIgnoresNull)
{
    test::MemoryRecorder lRecorder;
    Tracked* lObject = QelNew<Derived>();
    EXPECT_EQ(Derived::sDerivedLive, 1);
    QelDelete(lObject);
    ASSERT_EQ(lRecorder.Allocations().size(), 1u);
    EXPECT_EQ(lRecorder.Allocations()[0].mSize, sizeof(Derived));
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lRecorder.Allocations()[0].mAddress}));
    EXPECT_EQ(Derived::sDerivedLive, 0);
    EXPECT_EQ(Tracked::sLive, 0);
    QelDelete<Tracked>(nullptr);
    EXPECT_EQ(lRecorder.Frees().size(), 1u);
}

TEST(QelBaseAllocator, AllocatesRecordsOfItsSize)
{
    QelBaseAllocator lAllocator(24);
    EXPECT_EQ(lAllocator.GetRecordSize(), 24u);
    lAllocator.Reserve(100);
    test::AllocationFailure lFailure;
    void* lRecords = lAllocator.AllocateRecords(3);
    ASSERT_NE(lRecords, nullptr);
    EXPECT_EQ(lFailure.Count(), 1);
    std::memset(lRecords, 0, 72); // all 72 bytes are ours (checked under the sanitizer)
    lAllocator.FreeMemory(lRecords);
    lFailure.FailAt(1);
    EXPECT_EQ(lAllocator.AllocateRecords(1), nullptr);
}

// --- The recording handler of the test support ------------------------------------

using test::MemoryRecorder;

TEST(MemoryRecorder, RecordsRequestsAddressesAndFrees)
{
    MemoryRecorder lRecorder;
    void* lFirst = QelMalloc(24);
    void* lGrown = QelRealloc(lFirst, 200);
    void* lZero = QelMalloc(0);
    void* lFresh = QelRealloc(nullptr, 8);
    // The block moved by the QelRealloc is no longer live.
    EXPECT_EQ(lRecorder.Live(), (std::vector<void*>{lGrown, lZero, lFresh}));
    QelFree(lGrown);
    QelFree(nullptr);
    QelFree(lZero);
    QelFree(lFresh);
    const auto& lAllocations = lRecorder.Allocations();
    ASSERT_EQ(lAllocations.size(), 4u);
    EXPECT_EQ(lAllocations[0].mSize, 24u);
    EXPECT_EQ(lAllocations[0].mAddress, lFirst);
    EXPECT_FALSE(lAllocations[0].mRealloc);
    EXPECT_EQ(lAllocations[0].mOldBlock, nullptr);
    EXPECT_EQ(lAllocations[1].mSize, 200u);
    EXPECT_EQ(lAllocations[1].mAddress, lGrown);
    EXPECT_TRUE(lAllocations[1].mRealloc);
    EXPECT_EQ(lAllocations[1].mOldBlock, lFirst);
    EXPECT_EQ(lAllocations[2].mSize, 1u);   // a zero-byte request is served as one byte
    EXPECT_FALSE(lAllocations[3].mRealloc); // a null block is a fresh allocation
    EXPECT_EQ(lAllocations[3].mSize, 8u);
    EXPECT_EQ(lRecorder.Addresses(), (std::vector<void*>{lFirst, lGrown, lZero, lFresh}));
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lGrown, lZero, lFresh}));
    EXPECT_EQ(lRecorder.TimesFreed(lGrown), 1);
    EXPECT_TRUE(lRecorder.Live().empty());
    EXPECT_EQ(lRecorder.Refused(), 0);
}

TEST(MemoryRecorder, RefusesWithoutAllocating)
{
    MemoryRecorder lOuter;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(100);
    lRecorder.RefuseAt(2);
    void* lSmall = QelMalloc(100);
    ASSERT_NE(lSmall, nullptr);
    EXPECT_EQ(QelMalloc(4), nullptr); // the second request
    EXPECT_EQ(QelMalloc(size_t(1) << 62), nullptr);
    EXPECT_EQ(QelRealloc(lSmall, 101), nullptr);
    EXPECT_EQ(lRecorder.Refused(), 3);
    ASSERT_EQ(lRecorder.Allocations().size(), 4u);
    EXPECT_EQ(lRecorder.Allocations()[2].mSize, size_t(1) << 62);
    EXPECT_EQ(lRecorder.Allocations()[2].mAddress, nullptr);
    EXPECT_EQ(lRecorder.Allocations()[3].mOldBlock, lSmall);
    // Refused requests never reach the handlers below.
    EXPECT_EQ(lOuter.Addresses(), (std::vector<void*>{lSmall}));
    EXPECT_EQ(lOuter.Allocations().size(), 1u);
    lRecorder.RefuseNone();
    void* lLarge = QelRealloc(lSmall, 4096);
    EXPECT_NE(lLarge, nullptr);
    QelFree(lLarge);
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lLarge}));
    EXPECT_EQ(lOuter.Frees(), (std::vector<void*>{lLarge}));
    lRecorder.Clear();
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_TRUE(lRecorder.Frees().empty());
    EXPECT_EQ(lRecorder.Refused(), 0);
}

TEST(MemoryRecorder, NestsWithAllocationFailure)
{
    MemoryRecorder lRecorder;
    {
        test::AllocationFailure lFailure;
        lFailure.FailAt(2);
        void* lFirst = QelMalloc(8);
        EXPECT_EQ(QelMalloc(8), nullptr);
        QelFree(lFirst);
        // Only the granted request goes on to the recorder outside.
        ASSERT_EQ(lRecorder.Allocations().size(), 1u);
        EXPECT_EQ(lRecorder.Allocations()[0].mAddress, lFirst);
        EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lFirst}));
    }
    lRecorder.Clear();
    {
        test::AllocationFailure lFailure;
        lFailure.FailAt(1);
        MemoryRecorder lInner;
        EXPECT_EQ(QelMalloc(8), nullptr);
        // A failure below the recorder is recorded with a null address.
        ASSERT_EQ(lInner.Allocations().size(), 1u);
        EXPECT_EQ(lInner.Allocations()[0].mSize, 8u);
        EXPECT_EQ(lInner.Allocations()[0].mAddress, nullptr);
        EXPECT_EQ(lInner.Refused(), 0);
        void* lBlock = QelMalloc(16);
        QelFree(lBlock);
        EXPECT_EQ(lInner.Addresses(), (std::vector<void*>{lBlock}));
        EXPECT_EQ(lRecorder.Addresses(), (std::vector<void*>{lBlock}));
        EXPECT_EQ(lInner.Frees(), (std::vector<void*>{lBlock}));
        EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBlock}));
    }
    void* lAfter = QelMalloc(4);
    QelFree(lAfter);
    EXPECT_EQ(lRecorder.Addresses().back(), lAfter);
}

} // namespace
} // namespace qelsdk
