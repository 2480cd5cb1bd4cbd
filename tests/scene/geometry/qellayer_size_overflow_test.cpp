// Counts that come from outside the storage: the stream reader's item counts and name
// lengths, converted buffers, the stream writer and user data channels, each at the
// largest count whose byte size fits and just past it. A count that fits asks the
// allocator for its whole byte size; one past the wrap asks nothing and is refused
// like a failed allocation; nothing is written and nothing is left allocated.
#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayer.h>

#include "qelsdk/scene/geometry/qellayerimp.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace qelsdk {
namespace {

using test::MemoryRecorder;
using test::ReportCapture;

const test::FileReports sLayerReports{"src/qelsdk/scene/geometry/qellayer"};

// Requests above this are refused by the recorders below: only the counts under test
// ask for that much.
constexpr size_t sLargeRequest = size_t(1) << 24;

// Item counts at the edge of 32-bit block sizes (header of 8 bytes, blocks of four
// slots): the largest that fits, for 32-byte and 4-byte items.
constexpr int sLastVector4Count = 0x07FFFFFC;
constexpr int sLastIntCount = 0x3FFFFFFC;

// An empty array resized to 0 items keeps one block of four slots.
constexpr uint64_t sEmptyVector4Block = 8 + 4 * 32;
constexpr uint64_t sEmptyIntBlock = 8 + 4 * 4;

// The block size the storage asks for pCount items of pItemSize bytes.
uint64_t BlockBytes(uint64_t pCount, uint64_t pItemSize)
{
    return (pCount + 3) / 4 * 4 * pItemSize + 8;
}

void WriteInts(QelMemoryStream& pStream, std::initializer_list<int> pValues)
{
    for (int lValue : pValues)
        ASSERT_EQ(pStream.Write(&lValue, 4), 4);
}

// The sizes of the requests the recorder saw.
std::vector<uint64_t> SizesOf(const MemoryRecorder& pRecorder)
{
    std::vector<uint64_t> lSizes;
    for (const auto& lAllocation : pRecorder.Allocations())
        lSizes.push_back(lAllocation.mSize);
    return lSizes;
}

LayerElementArrayImp& StorageOf(QelLayerElementArray& pArray)
{
    return *static_cast<LayerElementArrayImp*>(pArray.GetImplementation());
}

// A normal element read from a stream of native ints under a recorder that refuses
// large requests.
class StreamCounts : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mElement = QelLayerElementNormal::Create(nullptr, "kept");
        ASSERT_NE(mElement, nullptr);
    }
    void TearDown() override
    {
        mElement->Destroy();
        EXPECT_TRUE(mRecorder.Live().empty());
    }

    bool Read(std::initializer_list<int> pValues)
    {
        QelMemoryStream lStream;
        WriteInts(lStream, pValues);
        // Only the reading is recorded.
        mRecorder.Clear();
        mRecorder.RefuseAbove(sLargeRequest);
        return mElement->ContentReadFrom(lStream);
    }

    MemoryRecorder mRecorder;
    ReportCapture mReports;
    QelLayerElementNormal* mElement = nullptr;
};

TEST_F(StreamCounts, ADirectCountThatFitsAsksForItsWholeBlock)
{
    EXPECT_FALSE(Read({sLastVector4Count}));
    EXPECT_EQ(SizesOf(mRecorder), std::vector<uint64_t>{BlockBytes(sLastVector4Count, 32)});
    EXPECT_EQ(SizesOf(mRecorder)[0], 4294967176u);
    EXPECT_EQ(mRecorder.Refused(), 1);
    EXPECT_EQ(mElement->GetDirectArray().GetCount(), 0);
}

TEST_F(StreamCounts, ADirectCountPastTheWrapAsksForNothing)
{
    for (int lCount : {sLastVector4Count + 1, sLastVector4Count + 4, INT_MAX}) {
        EXPECT_FALSE(Read({lCount})) << lCount;
        EXPECT_TRUE(mRecorder.Allocations().empty()) << lCount;
        EXPECT_EQ(mElement->GetDirectArray().GetCount(), 0) << lCount;
    }
}

TEST_F(StreamCounts, AnIndexCountThatFitsAsksForItsWholeBlock)
{
    EXPECT_FALSE(Read({0, sLastIntCount}));
    EXPECT_EQ(SizesOf(mRecorder),
              (std::vector<uint64_t>{sEmptyVector4Block, BlockBytes(sLastIntCount, 4)}));
    EXPECT_EQ(SizesOf(mRecorder)[1], 4294967288u);
    EXPECT_EQ(mElement->GetIndexArray().GetCount(), 0);
}

TEST_F(StreamCounts, AnIndexCountPastTheWrapAsksForNothing)
{
    for (int lCount : {sLastIntCount + 1, INT_MAX}) {
        EXPECT_FALSE(Read({0, lCount})) << lCount;
        // The direct array's empty block is asked for by the first read only.
        const std::vector<uint64_t> lExpected = lCount == sLastIntCount + 1
                                                    ? std::vector<uint64_t>{sEmptyVector4Block}
                                                    : std::vector<uint64_t>{};
        EXPECT_EQ(SizesOf(mRecorder), lExpected) << lCount;
        EXPECT_EQ(mElement->GetIndexArray().GetCount(), 0) << lCount;
    }
}

TEST_F(StreamCounts, ANameOfIntMaxCharactersAsksForIntMaxPlusOneBytes)
{
    EXPECT_FALSE(Read({0, 0, 2, 1, INT_MAX}));
    EXPECT_EQ(SizesOf(mRecorder),
              (std::vector<uint64_t>{sEmptyVector4Block, sEmptyIntBlock, uint64_t(INT_MAX) + 1}));
    EXPECT_EQ(mRecorder.Refused(), 1);
    EXPECT_EQ(mReports.Reports(),
              std::vector<test::Report>{sLayerReports.Condition("ContentReadFrom", "p != NULL")});
    EXPECT_STREQ(mElement->GetName(), "kept");
    EXPECT_EQ(mElement->GetMappingMode(), QelLayerElement::ePerPolygonVertex);
}

TEST_F(StreamCounts, ANameLongerThanTheStreamReadsNothingIntoTheName)
{
    EXPECT_FALSE(Read({0, 0, 2, 1, 1000}));
    EXPECT_EQ(SizesOf(mRecorder),
              (std::vector<uint64_t>{sEmptyVector4Block, sEmptyIntBlock, 1001}));
    EXPECT_STREQ(mElement->GetName(), "kept");
}

// An array whose storage claims pCount items over a block of four, so that the byte
// sizes of a huge count can be seen without the memory for it; the count goes back
// before the array is destroyed.
class ClaimedCount
{
public:
    ClaimedCount(QelLayerElementArray& pArray, int pCount) : mStorage(StorageOf(pArray))
    {
        mCount = mStorage.GetArrayCount();
        mStorage.SetArrayCount(pCount);
    }
    ~ClaimedCount() { mStorage.SetArrayCount(mCount); }
    ClaimedCount(const ClaimedCount&) = delete;
    ClaimedCount& operator=(const ClaimedCount&) = delete;

private:
    LayerElementArrayImp& mStorage;
    int mCount;
};

TEST(ConvertedBufferSize, AHugeCountAsksForItsWholeByteSize)
{
    QelLayerElementArray lArray(eQelBool);
    ASSERT_EQ(lArray.Add(true), 0);
    ReportCapture lReports;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(sLargeRequest);
    {
        ClaimedCount lClaim(lArray, 0x08000001);
        EXPECT_EQ(lArray.GetLocked(QelLayerElementArray::eReadLock, eQelDouble4), nullptr);
        void* lBuffer = &lArray;
        size_t lStride = 0;
        lArray.ConvertDataType(eQelDouble4, &lBuffer, &lStride);
        EXPECT_EQ(lBuffer, nullptr);
    }
    // 32 bytes per item in size_t: 0x100000020, not the 32 of a 32-bit product.
    EXPECT_EQ(SizesOf(lRecorder), (std::vector<uint64_t>{0x100000020u, 0x100000020u}));
    EXPECT_FALSE(lArray.IsInUse());
    EXPECT_EQ(lArray.GetCount(), 1);
    EXPECT_TRUE(lRecorder.Live().empty());
}

TEST(StreamWriterSize, AnArrayBeyondOneStreamCallWritesOnlyItsCount)
{
    QelLayerElementNormal* lElement = QelLayerElementNormal::Create(nullptr, "n");
    ASSERT_NE(lElement, nullptr);
    ASSERT_EQ(lElement->GetDirectArray().Add(QelVector4(1, 2, 3, 4)), 0);
    QelMemoryStream lStream;
    {
        // 0x04000000 items of 32 bytes are 2 GiB: more than one call can move.
        ClaimedCount lClaim(lElement->GetDirectArray(), 0x04000000);
        EXPECT_FALSE(lElement->ContentWriteTo(lStream));
    }
    ASSERT_EQ(lStream.GetSize(), 4);
    int lCount = 0;
    ASSERT_EQ(lStream.Read(&lCount, 4), 4);
    EXPECT_EQ(lCount, 0x04000000);
    EXPECT_FALSE(lElement->GetDirectArray().IsInUse());
    lElement->Destroy();
}

TEST(UserDataChannelSize, AChannelResizedPastTheWrapAsksForNothing)
{
    QelArray<QelDataType> lTypes;
    QelArray<const char*> lNames;
    ASSERT_EQ(lTypes.Add(QelIntDT), 0);
    ASSERT_EQ(lNames.Add("count"), 0);
    QelLayerElementUserData* lUserData =
        QelLayerElementUserData::Create(nullptr, "user", 1, lTypes, lNames);
    ASSERT_NE(lUserData, nullptr);
    QelLayerElementArrayTemplate<int>& lChannel = QelGetDirectArray<int>(lUserData, 0);
    ASSERT_EQ(lChannel.Add(7), 0);
    {
        MemoryRecorder lRecorder;
        lRecorder.RefuseAbove(sLargeRequest);
        lChannel.Resize(sLastIntCount + 1);
        lChannel.AddMultiple(sLastIntCount);
        EXPECT_TRUE(lRecorder.Allocations().empty());
        lChannel.Resize(sLastIntCount);
        EXPECT_EQ(SizesOf(lRecorder), std::vector<uint64_t>{BlockBytes(sLastIntCount, 4)});
    }
    EXPECT_EQ(lChannel.GetCount(), 1);
    EXPECT_EQ(lChannel.GetAt(0), 7);
    lUserData->Destroy();
}

} // namespace
} // namespace qelsdk
