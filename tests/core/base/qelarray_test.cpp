#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qeldatatype.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Report;
using test::ReportCapture;

const char* const kFile = "include/qelsdk/core/base/qelarray";
const test::FileReports kReports{kFile};

QelArray<int> Make(std::initializer_list<int> pItems)
{
    QelArray<int> lArray;
    for (int lItem : pItems)
        lArray.Add(lItem);
    return lArray;
}

std::vector<int> Items(const QelArray<int>& pArray)
{
    return std::vector<int>(pArray.GetArray(), pArray.GetArray() + pArray.Size());
}

TEST(QelArray, StartsEmptyWithoutBlock)
{
    QelArray<int> lArray;
    EXPECT_EQ(lArray.GetCount(), 0);
    EXPECT_EQ(lArray.Size(), 0);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    EXPECT_EQ(lArray.GetArray(), nullptr);
}

TEST(QelArray, CapacityConstructorReservesZeroedSlots)
{
    QelArray<int> lArray(6);
    EXPECT_EQ(lArray.Size(), 0);
    EXPECT_EQ(lArray.GetCapacity(), 6);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(lArray.GetArray()[i], 0);
    QelArray<int> lNone(0);
    EXPECT_EQ(lNone.GetArray(), nullptr);
}

TEST(QelArray, AddDoublesFromOne)
{
    QelArray<int> lArray;
    const int lExpected[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(lArray.Add(i * 10), i);
        EXPECT_EQ(lArray.GetCapacity(), lExpected[i]) << "after add " << i + 1;
    }
    EXPECT_EQ(Items(lArray), (std::vector<int>{0, 10, 20, 30, 40, 50, 60, 70, 80}));
}

TEST(QelArray, CompactInsertGrowsByOne)
{
    QelArray<int> lArray = Make({1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_EQ(lArray.GetCapacity(), 8);
    EXPECT_EQ(lArray.InsertAt(8, 9, true), 8);
    EXPECT_EQ(lArray.GetCapacity(), 9);
    EXPECT_EQ(lArray.InsertAt(0, 0, true), 0);
    EXPECT_EQ(lArray.GetCapacity(), 10);
    EXPECT_EQ(Items(lArray), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(QelArray, InsertPastEndAppends)
{
    QelArray<int> lArray = Make({1, 2, 3});
    EXPECT_EQ(lArray.InsertAt(100, 4), 3);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3, 4}));
}

TEST(QelArray, InsertNegativeRefused)
{
    QelArray<int> lArray = Make({1, 2, 3});
    ReportCapture lCapture;
    EXPECT_EQ(lArray.InsertAt(-1, 9), -1);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Condition("InsertAt", "pIndex >= 0")}));
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(lArray.GetCapacity(), 4);
}

TEST(QelArray, InsertShiftsUp)
{
    QelArray<int> lArray = Make({1, 2, 3});
    EXPECT_EQ(lArray.InsertAt(1, 7), 1);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 7, 2, 3}));
}

TEST(QelArray, InsertOwnItemWithRoom)
{
    QelArray<int> lArray = Make({10, 20, 30});
    ASSERT_EQ(lArray.GetCapacity(), 4);
    EXPECT_EQ(lArray.InsertAt(0, lArray[2]), 0);
    EXPECT_EQ(Items(lArray), (std::vector<int>{30, 10, 20, 30}));
}

TEST(QelArray, InsertOwnItemWithGrowth)
{
    QelArray<int> lArray = Make({10, 20, 30, 40});
    ASSERT_EQ(lArray.GetCapacity(), 4);
    EXPECT_EQ(lArray.InsertAt(0, lArray[2]), 0);
    EXPECT_EQ(lArray.GetCapacity(), 8);
    EXPECT_EQ(Items(lArray), (std::vector<int>{30, 10, 20, 30, 40}));
    EXPECT_EQ(lArray.Add(lArray[4]), 5);
    EXPECT_EQ(Items(lArray), (std::vector<int>{30, 10, 20, 30, 40, 40}));
}

TEST(QelArray, InsertOutOfMemoryOnEmptyArray)
{
    QelArray<int> lArray;
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(lArray.Add(1), -1);
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    EXPECT_EQ(lArray.Size(), 0);
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("InsertAt", "lArray")}));
    EXPECT_EQ(lArray.Add(1), 0); // the next allocation succeeds
    EXPECT_EQ(lArray.GetCapacity(), 1);
}

TEST(QelArray, InsertOutOfMemoryKeepsFullArrayUnchanged)
{
    QelArray<int> lArray = Make({1, 2, 3, 4});
    int* lBlock = lArray.GetArray();
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_EQ(lArray.InsertAt(1, 9, false), -1);
    EXPECT_EQ(lArray.InsertAt(1, 9, true), -1);
    EXPECT_EQ(lArray.GetArray(), lBlock);
    EXPECT_EQ(lArray.GetCapacity(), 4);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("InsertAt", "lArray"),
                                                       kReports.Condition("InsertAt", "lArray")}));
}

TEST(QelArray, SubscriptReportsButReturnsSlot)
{
    QelArray<int> lArray(4);
    lArray.Add(1);
    ReportCapture lCapture;
    EXPECT_EQ(&lArray[1], lArray.GetArray() + 1);
    EXPECT_EQ(&lArray[4], lArray.GetArray() + 4);
    EXPECT_EQ(&lArray[-1], lArray.GetArray() - 1);
    EXPECT_EQ(lArray[0], 1);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{
                  kReports.Message("operator[]",
                                   "Index is out of range, but not outside of capacity! Call "
                                   "SetAt() to use reserved memory."),
                  kReports.Message("operator[]", "Index is out of range!"),
                  kReports.Message("operator[]", "Index is out of range!")}));
}

TEST(QelArray, GetAtChecksLikeSubscript)
{
    QelArray<int> lArray(4); // reserved slots are zero
    lArray.Add(4);
    lArray.Add(5);
    lArray.Add(6);
    ReportCapture lCapture;
    EXPECT_EQ(lArray.GetAt(1), 5);
    EXPECT_EQ(lArray.GetAt(3), 0); // reserved slot: its bytes
    EXPECT_EQ(lArray.GetAt(9), 0); // no slot at all: zero
    EXPECT_EQ(lArray.GetAt(-2), 0);
    ASSERT_EQ(lCapture.Reports().size(), 3u);
    EXPECT_EQ(lCapture.Reports()[0].mFunction, "operator[]");
    EXPECT_EQ(
        lCapture.Reports()[0].mMessage,
        "Index is out of range, but not outside of capacity! Call SetAt() to use reserved memory.");
    EXPECT_EQ(lCapture.Reports()[1].mMessage, "Index is out of range!");
    EXPECT_EQ(lCapture.Reports()[2].mMessage, "Index is out of range!");
}

TEST(QelArray, SetAtInsideCapacityLengthens)
{
    QelArray<int> lArray(8);
    lArray.Add(1);
    lArray.Add(2);
    ReportCapture lCapture;
    lArray.SetAt(lArray.Size() + 2, 9);
    EXPECT_EQ(lArray.Size(), 5);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 0, 0, 9}));
    lArray.SetAt(0, 7);
    EXPECT_EQ(lArray.GetAt(0), 7);
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelArray, SetAtOutsideCapacityRefused)
{
    QelArray<int> lArray = Make({1, 2, 3});
    ReportCapture lCapture;
    lArray.SetAt(4, 9);
    lArray.SetAt(-1, 9);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3}));
    const Report lExpected = kReports.Condition("SetAt", "pIndex >= 0 && pIndex < mCapacity");
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{lExpected, lExpected}));
    QelArray<int> lEmpty;
    lEmpty.SetAt(0, 1);
    EXPECT_EQ(lEmpty.Size(), 0);
}

TEST(QelArray, RemoveAtShiftsDownAndKeepsFreedSlotBytes)
{
    QelArray<int> lArray = Make({1, 2, 3, 4});
    EXPECT_EQ(lArray.RemoveAt(1), 2);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 3, 4}));
    EXPECT_EQ(lArray.GetArray()[3], 4); // the freed slot keeps its bytes
    EXPECT_EQ(lArray.RemoveAt(2), 4);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 3}));
}

TEST(QelArray, RemoveAtBadIndexStillShrinks)
{
    QelArray<int> lArray(4); // reserved slots are zero
    for (int lItem : {1, 2, 3})
        lArray.Add(lItem);
    ReportCapture lCapture;
    EXPECT_EQ(lArray.RemoveAt(3), 0); // reserved slot of the block of 4
    EXPECT_EQ(lArray.Size(), 2);
    EXPECT_EQ(lArray.RemoveAt(-1), 0);
    EXPECT_EQ(lArray.Size(), 1);
    EXPECT_EQ(lArray.GetArray()[0], 1); // nothing moved for a negative index
    ASSERT_EQ(lCapture.Reports().size(), 2u);
    EXPECT_EQ(lCapture.Reports()[0],
              kReports.Message("operator[]",
                               "Index is out of range, but not outside of capacity! Call "
                               "SetAt() to use reserved memory."));
    EXPECT_EQ(lCapture.Reports()[1], kReports.Message("operator[]", "Index is out of range!"));
}

TEST(QelArray, RemoveItAndFind)
{
    QelArray<int> lArray = Make({5, 6, 5, 7});
    EXPECT_EQ(lArray.Find(5, 0), 0);
    EXPECT_EQ(lArray.Find(5, 1), 2);
    EXPECT_EQ(lArray.Find(5, 3), -1);
    EXPECT_EQ(lArray.Find(8, 0), -1);
    EXPECT_EQ(lArray.Find(5, 10), -1);
    EXPECT_TRUE(lArray.RemoveIt(5));
    EXPECT_EQ(Items(lArray), (std::vector<int>{6, 5, 7}));
    EXPECT_FALSE(lArray.RemoveIt(9));
    EXPECT_EQ(Items(lArray), (std::vector<int>{6, 5, 7}));
}

TEST(QelArray, FindNegativeStartRefused)
{
    QelArray<int> lArray = Make({1});
    ReportCapture lCapture;
    EXPECT_EQ(lArray.Find(1, -1), -1);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Condition("Find", "pStartIndex >= 0")}));
}

TEST(QelArray, ReserveGrowsZeroedNeverShrinks)
{
    QelArray<int> lArray = Make({1, 2, 3});
    ReportCapture lCapture;
    EXPECT_TRUE(lArray.Reserve(10));
    EXPECT_EQ(lArray.GetCapacity(), 10);
    for (int i = 3; i < 10; ++i)
        EXPECT_EQ(lArray.GetArray()[i], 0);
    int* lBlock = lArray.GetArray();
    EXPECT_TRUE(lArray.Reserve(2));
    EXPECT_EQ(lArray.GetCapacity(), 10);
    EXPECT_EQ(lArray.GetArray(), lBlock);
    EXPECT_FALSE(lArray.Reserve(0));
    EXPECT_FALSE(lArray.Reserve(-4));
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kReports.Condition("Reserve", "pCapacity > 0"),
                                   kReports.Condition("Reserve", "pCapacity > 0")}));
    EXPECT_EQ(lArray.GetCapacity(), 10);
}

TEST(QelArray, ReserveOutOfMemory)
{
    QelArray<int> lArray = Make({1, 2});
    int* lBlock = lArray.GetArray();
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_FALSE(lArray.Reserve(100));
    EXPECT_EQ(lArray.GetArray(), lBlock);
    EXPECT_EQ(lArray.GetCapacity(), 2);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2}));
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("Reserve", "lArray")}));
}

TEST(QelArray, ResizeFitsExactly)
{
    QelArray<int> lArray = Make({1, 2, 3});
    EXPECT_TRUE(lArray.Resize(6));
    EXPECT_EQ(lArray.Size(), 6);
    EXPECT_EQ(lArray.GetCapacity(), 6);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3, 0, 0, 0}));
    EXPECT_TRUE(lArray.Resize(2));
    EXPECT_EQ(lArray.GetCapacity(), 2);
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2}));
}

TEST(QelArray, ResizeInsideOldCapacityKeepsOldBytes)
{
    QelArray<int> lArray = Make({1, 2, 3, 4}); // capacity 4
    lArray.RemoveAt(3);
    lArray.RemoveAt(2);
    EXPECT_TRUE(lArray.Resize(4)); // gained inside the old capacity: old bytes
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3, 4}));
    lArray.RemoveAt(3);
    EXPECT_TRUE(lArray.Resize(5)); // beyond the old capacity: from old size, zero
    EXPECT_EQ(Items(lArray), (std::vector<int>{1, 2, 3, 0, 0}));
}

TEST(QelArray, ResizeZeroFreesNegativeRefused)
{
    QelArray<int> lArray = Make({1, 2, 3});
    test::MemoryRecorder lRecorder;
    void* const lBlock = lArray.GetArray();
    EXPECT_TRUE(lArray.Resize(0));
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBlock}));
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    lArray.Add(1);
    ReportCapture lCapture;
    EXPECT_FALSE(lArray.Resize(-1));
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("Resize", "pSize > 0")}));
    EXPECT_EQ(Items(lArray), (std::vector<int>{1}));
}

TEST(QelArray, ResizeOutOfMemoryLeavesArray)
{
    QelArray<int> lArray = Make({1, 2, 3});
    int* lBlock = lArray.GetArray();
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    EXPECT_FALSE(lArray.Resize(50));
    EXPECT_EQ(lArray.GetArray(), lBlock);
    EXPECT_EQ(lArray.Size(), 3);
    EXPECT_EQ(lArray.GetCapacity(), 4);
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("Resize", "lArray")}));
}

TEST(QelArray, ClearFreesAndIsIdempotent)
{
    QelArray<int> lArray = Make({1, 2});
    test::MemoryRecorder lRecorder;
    void* const lBlock = lArray.GetArray();
    lArray.Clear();
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lBlock}));
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lArray.Size(), 0);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    lArray.Clear();
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lRecorder.Frees().size(), 1u);
}

TEST(QelArray, AssignmentCopiesBytesAndFits)
{
    QelArray<int> lSource = Make({1, 2, 3, 4, 5});
    QelArray<int> lTarget(20);
    lTarget.Add(9);
    lTarget = lSource;
    EXPECT_EQ(lTarget.Size(), 5);
    EXPECT_EQ(lTarget.GetCapacity(), 5);
    EXPECT_EQ(Items(lTarget), Items(lSource));
    EXPECT_NE(lTarget.GetArray(), lSource.GetArray());
    QelArray<int>& lAlias = lTarget;
    lTarget = lAlias;
    EXPECT_EQ(Items(lTarget), Items(lSource));
    QelArray<int> lCopy(lSource);
    EXPECT_EQ(Items(lCopy), Items(lSource));
    QelArray<int> lEmpty;
    lCopy = lEmpty;
    EXPECT_EQ(lCopy.GetArray(), nullptr);
}

TEST(QelArray, AssignmentOutOfMemoryLeavesTarget)
{
    QelArray<int> lSource = Make({1, 2, 3, 4, 5});
    QelArray<int> lTarget = Make({7});
    ReportCapture lCapture;
    AllocationFailure lFailure;
    lFailure.FailFrom(1);
    lTarget = lSource;
    EXPECT_EQ(Items(lTarget), (std::vector<int>{7}));
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{kReports.Condition("Resize", "lArray")}));
}

TEST(QelArray, AllocateChangesNoField)
{
    QelArray<int> lArray;
    int* lBlock = lArray.Allocate(3);
    ASSERT_NE(lBlock, nullptr);
    EXPECT_EQ(lArray.GetArray(), nullptr);
    EXPECT_EQ(lArray.GetCapacity(), 0);
    QelFree(lBlock);
}

TEST(QelArray, StoresDataTypesAsBytes)
{
    QelArray<QelDataType> lTypes;
    lTypes.Add(QelIntDT);
    lTypes.Add(QelDoubleDT);
    EXPECT_EQ(lTypes.Find(QelDoubleDT, 0), 1);
    EXPECT_EQ(lTypes.GetAt(0).GetType(), eQelInt);
}

TEST(QelArrayFree, FreesEveryItemAndClears)
{
    QelArray<void*> lBlocks;
    for (int i = 0; i < 3; ++i)
        lBlocks.Add(QelMalloc(16));
    test::MemoryRecorder lRecorder;
    const std::vector<void*> lItems(lBlocks.GetArray(), lBlocks.GetArray() + 3);
    void* const lStorage = lBlocks.GetArray();
    QelArrayFree(lBlocks);
    // Every item, then the array's own block.
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lItems[0], lItems[1], lItems[2], lStorage}));
    EXPECT_EQ(lBlocks.Size(), 0);
    EXPECT_EQ(lBlocks.GetArray(), nullptr);
}

TEST(QelAlloc, MinMax)
{
    EXPECT_EQ(QelMin(3, 7), 3);
    EXPECT_EQ(QelMax(3, 7), 7);
    EXPECT_EQ(QelMin(-2, -9), -9);
    EXPECT_EQ(QelMax(-2, -9), -2);
}

} // namespace
} // namespace qelsdk
