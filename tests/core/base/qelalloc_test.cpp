#include <qelsdk/core/base/qelalloc.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

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

struct Counters : testing::Test
{
    void SetUp() override
    {
        sMallocCalls = sReallocCalls = sFreeCalls = 0;
        mMalloc = QelSetMallocHandler(CountingMalloc);
        mRealloc = QelSetReallocHandler(CountingRealloc);
        mFree = QelSetFreeHandler(CountingFree);
    }
    void TearDown() override
    {
        EXPECT_EQ(QelSetMallocHandler(mMalloc), CountingMalloc);
        EXPECT_EQ(QelSetReallocHandler(mRealloc), CountingRealloc);
        EXPECT_EQ(QelSetFreeHandler(mFree), CountingFree);
    }
    QelMallocProc mMalloc;
    QelReallocProc mRealloc;
    QelFreeProc mFree;
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
    QelMallocProc lPrevious = QelSetMallocHandler(CountingMalloc);
    QelSetMallocHandler(nullptr);
    sMallocCalls = 0;
    QelFree(QelMalloc(4));
    EXPECT_EQ(sMallocCalls, 0);
    QelSetMallocHandler(lPrevious);
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

TEST(QelNew, ConstructsFromForwardedArguments)
{
    const int lRef = 5;
    Tracked* lObject = QelNew<Tracked>(2, lRef);
    ASSERT_NE(lObject, nullptr);
    EXPECT_EQ(lObject->mValue, 7);
    EXPECT_EQ(Tracked::sLive, 1);
    QelDelete(lObject);
    EXPECT_EQ(Tracked::sLive, 0);
}

TEST(QelNew, NullWithoutConstructionWhenAllocationFails)
{
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(QelNew<Tracked>(1, 1), nullptr);
    EXPECT_EQ(Tracked::sLive, 0);
}

TEST(QelDelete, RunsVirtualDestructorAndIgnoresNull)
{
    Tracked* lObject = QelNew<Derived>();
    EXPECT_EQ(Derived::sDerivedLive, 1);
    QelDelete(lObject);
    EXPECT_EQ(Derived::sDerivedLive, 0);
    EXPECT_EQ(Tracked::sLive, 0);
    QelDelete<Tracked>(nullptr);
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

} // namespace
} // namespace qelsdk
