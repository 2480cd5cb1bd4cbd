#include "qelsdk/scene/geometry/qellayerimp.h"

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Report;
using test::ReportCapture;

const char* const kFile = "src/qelsdk/scene/geometry/qellayer";

int Item(LayerElementArrayImp& pImp, int pIndex) { return *static_cast<int*>(pImp.GetAt(pIndex)); }

// Every slot of the allocation, items and reserved ones.
std::vector<int> Slots(LayerElementArrayImp& pImp)
{
    std::vector<int> lSlots;
    for (int i = 0; i < pImp.GetBlockCount() * 4; ++i)
        lSlots.push_back(Item(pImp, i));
    return lSlots;
}

// Appends by insertion onto one zeroed block, so that reserved slots read as zero.
void Fill(LayerElementArrayImp& pImp, std::initializer_list<int> pItems)
{
    if (!pImp.GetHeader()) pImp.Resize(0);
    for (int lItem : pItems)
        pImp.InsertAt(pImp.GetCount(), &lItem);
}

TEST(LayerElementArrayImp, LayoutAndEmptyState)
{
    static_assert(sizeof(LayerArrayBase<LayerArrayBaseSize>::Header) == 8, "header is two int32");
    LayerElementArrayImp lImp(sizeof(int));
    EXPECT_EQ(lImp.ItemSize(), 4);
    EXPECT_EQ(lImp.GetTypeSize(), 4);
    EXPECT_EQ(lImp.GetHeaderOffset(), 8);
    EXPECT_EQ(lImp.GetHeader(), nullptr);
    EXPECT_EQ(lImp.GetArray(), nullptr);
    EXPECT_EQ(lImp.GetCount(), 0);
    EXPECT_EQ(lImp.GetArrayCount(), 0);
    EXPECT_EQ(lImp.GetBlockCount(), 0);
    lImp.SetArrayCount(3); // no block: silently nothing
    lImp.SetBlockCount(3);
    EXPECT_EQ(lImp.GetArrayCount(), 0);
    EXPECT_EQ(lImp.GetBlockCount(), 0);
}

TEST(LayerElementArrayImp, ItemAddressesFollowHeader)
{
    LayerElementArrayImp lImp(12);
    lImp.Resize(3);
    char* lBlock = reinterpret_cast<char*>(lImp.GetHeader());
    EXPECT_EQ(lImp.GetArray(), lBlock + 8);
    EXPECT_EQ(lImp.GetAt(2), lBlock + 8 + 24);
    EXPECT_EQ(lImp.GetHeader()->mArrayCount, 3);
    EXPECT_EQ(lImp.GetHeader()->mBlockCount, 1);
}

TEST(LayerElementArrayImp, ResizeZeroKeepsOneBlock)
{
    LayerElementArrayImp lImp(sizeof(int));
    lImp.Resize(0);
    EXPECT_NE(lImp.GetHeader(), nullptr);
    EXPECT_EQ(lImp.GetCount(), 0);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{0, 0, 0, 0}));
}

TEST(LayerElementArrayImp, ResizeFitsBlocksAndZeroesTail)
{
    LayerElementArrayImp lImp(sizeof(int));
    lImp.Resize(5);
    EXPECT_EQ(lImp.GetBlockCount(), 2);
    EXPECT_EQ(lImp.GetCount(), 5);
    for (int i = 0; i < 5; ++i)
        *static_cast<int*>(lImp.GetAt(i)) = i + 1;
    lImp.Resize(3);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
    EXPECT_EQ(lImp.GetCount(), 3);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{1, 2, 3, 0}));
}

TEST(LayerElementArrayImp, ResizeGrowingInsideBlocksExposesOldBytes)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3, 4, 5});
    lImp.Resize(5); // two blocks exactly
    ASSERT_EQ(lImp.GetBlockCount(), 2);
    lImp.SetCount(2);
    lImp.Resize(5);
    EXPECT_EQ(lImp.GetCount(), 5);
    EXPECT_EQ(Item(lImp, 2), 3);
    EXPECT_EQ(Item(lImp, 3), 4);
    EXPECT_EQ(Item(lImp, 4), 5);
}

TEST(LayerElementArrayImp, ResizeNegativeReportedAndRefused)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2});
    ReportCapture lCapture;
    lImp.Resize(-1);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{{kFile, "Resize", false, "pItemCount >= 0"}}));
    EXPECT_EQ(lImp.GetCount(), 2);
    EXPECT_EQ(Item(lImp, 1), 2);
}

TEST(LayerElementArrayImp, ResizeOutOfMemoryLeavesBlock)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    void* lBlock = lImp.GetHeader();
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    lImp.Resize(100);
    EXPECT_EQ(lImp.GetHeader(), lBlock);
    EXPECT_EQ(lImp.GetCount(), 3);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
    LayerElementArrayImp lEmpty(sizeof(int));
    lEmpty.Resize(0);
    EXPECT_EQ(lEmpty.GetHeader(), nullptr);
}

TEST(LayerElementArrayImp, AddMultipleOnEmpty)
{
    LayerElementArrayImp lImp(sizeof(int));
    lImp.AddMultiple(1);
    EXPECT_EQ(lImp.GetCount(), 1);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{0, 0, 0, 0}));
}

TEST(LayerElementArrayImp, AddMultipleFitsExactlyAndZeroes)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    lImp.AddMultiple(6); // 9 items: 3 blocks, never the doubled 4
    EXPECT_EQ(lImp.GetCount(), 9);
    EXPECT_EQ(lImp.GetBlockCount(), 3);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(LayerElementArrayImp, AddMultipleInsideBlockZeroesTheRest)
{
    LayerElementArrayImp lImp(sizeof(int));
    lImp.Resize(8);
    for (int i = 0; i < 8; ++i)
        *static_cast<int*>(lImp.GetAt(i)) = i + 1;
    lImp.SetCount(1);    // items 1..7 keep their bytes
    lImp.AddMultiple(1); // zeroes up to the end of the blocks two items need: one
    EXPECT_EQ(lImp.GetCount(), 2);
    EXPECT_EQ(lImp.GetBlockCount(), 2); // never shrinks
    EXPECT_EQ(Slots(lImp), (std::vector<int>{1, 0, 0, 0, 5, 6, 7, 8}));
}

TEST(LayerElementArrayImp, AddMultipleZeroOrNegativeReportedNoChange)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2});
    ReportCapture lCapture;
    lImp.AddMultiple(0);
    lImp.AddMultiple(-3);
    const Report lExpected{kFile, "AddMultiple", false, "pItemCount > 0"};
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{lExpected, lExpected}));
    EXPECT_EQ(lImp.GetCount(), 2);
}

TEST(LayerElementArrayImp, AddMultipleOutOfMemoryNoChange)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3, 4});
    void* lBlock = lImp.GetHeader();
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    lImp.AddMultiple(3);
    EXPECT_EQ(lImp.GetHeader(), lBlock);
    EXPECT_EQ(lImp.GetCount(), 4);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
}

TEST(LayerElementArrayImp, SetCountGrowsThroughAddMultiple)
{
    LayerElementArrayImp lImp(sizeof(int));
    lImp.SetCount(0); // no block: nothing at all
    EXPECT_EQ(lImp.GetHeader(), nullptr);
    lImp.SetCount(6);
    EXPECT_EQ(lImp.GetCount(), 6);
    EXPECT_EQ(lImp.GetBlockCount(), 2);
    EXPECT_EQ(Slots(lImp), (std::vector<int>(8, 0)));
}

TEST(LayerElementArrayImp, SetCountShrinkKeepsBytes)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3, 4, 5});
    lImp.SetCount(2);
    EXPECT_EQ(lImp.GetCount(), 2);
    EXPECT_EQ(lImp.GetBlockCount(), 2);
    EXPECT_EQ(Item(lImp, 2), 3);
}

TEST(LayerElementArrayImp, SetCountNegativeReportedNoChange)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2});
    ReportCapture lCapture;
    lImp.SetCount(-1);
    EXPECT_EQ(
        lCapture.Reports(),
        (std::vector<Report>{{kFile, "SetCount", true, "ArrayUL : Item count can't be negative"}}));
    EXPECT_EQ(lImp.GetCount(), 2);
}

TEST(LayerElementArrayImp, InsertPastEndAppends)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    const int lValue = 9;
    EXPECT_EQ(lImp.InsertAt(10, &lValue), 3);
    EXPECT_EQ(lImp.GetCount(), 4);
    EXPECT_EQ(Item(lImp, 3), 9);
}

TEST(LayerElementArrayImp, InsertShiftsUp)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    const int lValue = 9;
    EXPECT_EQ(lImp.InsertAt(1, &lValue), 1);
    EXPECT_EQ(Item(lImp, 0), 1);
    EXPECT_EQ(Item(lImp, 1), 9);
    EXPECT_EQ(Item(lImp, 2), 2);
    EXPECT_EQ(Item(lImp, 3), 3);
}

TEST(LayerElementArrayImp, InsertionDoublesBlocks)
{
    LayerElementArrayImp lImp(sizeof(int));
    ASSERT_EQ(lImp.GetBlockCount(), 0);
    std::vector<int> lBlockCounts;
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(lImp.InsertAt(i, &i), i);
        lBlockCounts.push_back(lImp.GetBlockCount());
    }
    EXPECT_EQ(lBlockCounts, (std::vector<int>{1, 1, 1, 1, 2, 2, 2, 2, 4}));
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(Item(lImp, i), i);
}

TEST(LayerElementArrayImp, InsertOwnItemMovesSafely)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    EXPECT_EQ(lImp.InsertAt(0, lImp.GetAt(0)), 0); // source slot overlaps the shift
    EXPECT_EQ(Item(lImp, 0), 1);
    EXPECT_EQ(Item(lImp, 1), 1);
    EXPECT_EQ(Item(lImp, 3), 3);
}

TEST(LayerElementArrayImp, InsertNegativeReportedAndRefused)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1});
    ReportCapture lCapture;
    const int lValue = 9;
    EXPECT_EQ(lImp.InsertAt(-1, &lValue), -1);
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{{kFile, "InsertAt", false, "pIndex >= 0"}}));
    EXPECT_EQ(lImp.GetCount(), 1);
}

TEST(LayerElementArrayImp, InsertOutOfMemoryReturnsMinusOne)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3, 4});
    void* lBlock = lImp.GetHeader();
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    const int lValue = 9;
    EXPECT_EQ(lImp.InsertAt(0, &lValue), -1);
    EXPECT_EQ(lImp.GetHeader(), lBlock);
    EXPECT_EQ(lImp.GetCount(), 4);
    EXPECT_EQ(lImp.GetBlockCount(), 1);
    EXPECT_EQ(Item(lImp, 0), 1);
}

TEST(LayerElementArrayImp, RemoveShiftsDownAndZeroesVacatedSlot)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    lImp.RemoveAt(0);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{2, 3, 0, 0}));
    lImp.RemoveAt(1); // the last item
    EXPECT_EQ(lImp.GetCount(), 1);
    EXPECT_EQ(Slots(lImp), (std::vector<int>{2, 0, 0, 0}));
    EXPECT_EQ(lImp.GetBlockCount(), 1);
}

TEST(LayerElementArrayImp, RemoveOutOfRangeReportedNoChange)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    ReportCapture lCapture;
    lImp.RemoveAt(-1);
    lImp.RemoveAt(3);
    const Report lExpected{kFile, "ValidateIndex", true, "Array : Index out of range"};
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{lExpected, lExpected}));
    EXPECT_EQ(Slots(lImp), (std::vector<int>{1, 2, 3, 0}));
    EXPECT_FALSE(lImp.ValidateIndex(3));
    EXPECT_TRUE(lImp.ValidateIndex(2));
}

TEST(LayerElementArrayImp, ClearFreesBlock)
{
    LayerElementArrayImp lImp(sizeof(int));
    Fill(lImp, {1, 2, 3});
    void* const lBlock = lImp.GetHeader();
    test::MemoryRecorder lRecorder;
    lImp.Clear();
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBlock}));
    EXPECT_EQ(lImp.GetHeader(), nullptr);
    EXPECT_EQ(lImp.GetCount(), 0);
    EXPECT_EQ(lImp.GetBlockCount(), 0);
    lImp.Clear();
    EXPECT_EQ(lRecorder.Frees().size(), 1u);
}

// Counts its destructions in a counter of the test's own.
struct CountingImp : LayerElementArrayImp
{
    explicit CountingImp(int& pDestroyed) : LayerElementArrayImp(8), mDestroyed(pDestroyed) {}
    ~CountingImp() override { ++mDestroyed; }
    int& mDestroyed;
};

TEST(LayerElementArrayImp, DestroyedThroughBasePointerFreesBlock)
{
    int lDestroyed = 0;
    test::MemoryRecorder lRecorder;
    LayerElementArrayImp* lImp = QelNew<CountingImp>(lDestroyed);
    lImp->Resize(10);
    lImp->LockPostProcess(); // the base hooks do nothing
    lImp->UnlockPostProcess();
    EXPECT_EQ(lImp->GetCount(), 10);
    // The object, then its block.
    ASSERT_EQ(lRecorder.Allocations().size(), 2u);
    void* lBlock = lRecorder.Allocations()[1].mAddress;
    ASSERT_NE(lBlock, nullptr);
    QelDelete(lImp);
    EXPECT_EQ(lDestroyed, 1);
    // The destructor frees the block, then QelDelete the object.
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBlock, static_cast<void*>(lImp)}));
}

} // namespace
} // namespace qelsdk
