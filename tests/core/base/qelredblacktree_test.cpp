#include <qelsdk/core/base/qelredblacktree.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Report;
using test::ReportCapture;

const char* const kFile = "include/qelsdk/core/base/qelredblacktree";
const test::FileReports kReports{kFile};

typedef QelMap<int, int> IntMap;
typedef IntMap::KeyValuePair IntPair;
typedef QelRedBlackTree<IntPair, QelLessCompare<int>, QelBaseAllocator> IntTree;

// Opens the repair helpers and the root to the tests.
class TestTree : public IntTree
{
public:
    using IntTree::FixNodesAfterRemoval;
    using IntTree::LeftRotate;
    using IntTree::mRoot;
    using IntTree::RemoveNode;
    using IntTree::ReplaceNode;
    using IntTree::RightRotate;

    RecordType* Add(int pKey, int pValue = 0) { return Insert(IntPair(pKey, pValue)).mFirst; }
};

typedef TestTree::RecordType Record;

// Checks the red-black rules below pNode and returns the black height, counting
// the null leaves; pError receives the first broken rule.
int CheckSubtree(const Record* pNode, const Record* pParent, std::string& pError)
{
    if (!pNode) return 1;
    const char* lBroken = nullptr;
    if (pNode->mParent != pParent) lBroken = "parent link";
    if (pNode->mColor > 1) lBroken = "colour value";
    const bool lRed = pNode->mColor == TestTree::eRed;
    const bool lRedChild = (pNode->mLeftChild && pNode->mLeftChild->mColor == TestTree::eRed) ||
                           (pNode->mRightChild && pNode->mRightChild->mColor == TestTree::eRed);
    if (lRed && lRedChild) lBroken = "red record with red child";
    const int lLeft = CheckSubtree(pNode->mLeftChild, pNode, pError);
    const int lRight = CheckSubtree(pNode->mRightChild, pNode, pError);
    if (lLeft != lRight) lBroken = "black height";
    if (lBroken) pError = std::string(lBroken) + " at key " + std::to_string(pNode->GetKey());
    return lLeft + (lRed ? 0 : 1);
}

// The tree is a valid red-black tree holding exactly the entries of pExpected.
::testing::AssertionResult Matches(const TestTree& pTree, const std::map<int, int>& pExpected)
{
    std::string lError;
    if (pTree.mRoot && pTree.mRoot->mColor != TestTree::eBlack) lError = "red root";
    CheckSubtree(pTree.mRoot, nullptr, lError);
    if (!lError.empty()) return ::testing::AssertionFailure() << lError;
    if (pTree.GetSize() != static_cast<int>(pExpected.size()))
        return ::testing::AssertionFailure()
               << "size " << pTree.GetSize() << " instead of " << pExpected.size();
    const Record* lRecord = pTree.Minimum();
    for (const auto& lEntry : pExpected) {
        if (!lRecord || lRecord->GetKey() != lEntry.first || lRecord->GetValue() != lEntry.second)
            return ::testing::AssertionFailure() << "order or value at key " << lEntry.first;
        lRecord = lRecord->Successor();
    }
    if (lRecord) return ::testing::AssertionFailure() << "extra record " << lRecord->GetKey();
    return ::testing::AssertionSuccess();
}

std::vector<int> Keys(const TestTree& pTree)
{
    std::vector<int> lKeys;
    for (const Record* lRecord = pTree.Minimum(); lRecord; lRecord = lRecord->Successor())
        lKeys.push_back(lRecord->GetKey());
    return lKeys;
}

// Counts the blocks handed out by QelMalloc and not yet freed.
class LiveBlocks
{
public:
    LiveBlocks()
        : mPreviousMalloc(QelSetMallocHandler(Malloc)), mPreviousFree(QelSetFreeHandler(Free))
    {
        sLive = 0;
    }
    ~LiveBlocks()
    {
        QelSetMallocHandler(mPreviousMalloc);
        QelSetFreeHandler(mPreviousFree);
    }
    int Live() const { return sLive; }

private:
    static void* Malloc(size_t pSize)
    {
        ++sLive;
        return std::malloc(pSize);
    }
    static void Free(void* pBlock)
    {
        if (pBlock) --sLive;
        std::free(pBlock);
    }

    static int sLive;
    QelMallocProc mPreviousMalloc;
    QelFreeProc mPreviousFree;
};
int LiveBlocks::sLive = 0;

// A value that counts its living copies, to see record data being destroyed.
struct Tracked
{
    explicit Tracked(int pValue) : mValue(pValue) { ++sLive; }
    Tracked(const Tracked& pOther) : mValue(pOther.mValue) { ++sLive; }
    ~Tracked() { --sLive; }
    Tracked& operator=(const Tracked&) = default;

    int mValue;
    static int sLive;
};
int Tracked::sLive = 0;

struct Descending
{
    int operator()(int pLeft, int pRight) const { return pRight - pLeft; }
};

TEST(QelLessCompare, GivesThreeWayResult)
{
    QelLessCompare<int> lCompare;
    EXPECT_EQ(lCompare(1, 2), -1);
    EXPECT_EQ(lCompare(2, 2), 0);
    EXPECT_EQ(lCompare(3, 2), 1);
}

TEST(QelStringCompare, OrdersByCharacters)
{
    QelStringCompare lCompare;
    EXPECT_LT(lCompare(QelString("alpha"), QelString("beta")), 0);
    EXPECT_EQ(lCompare(QelString("beta"), QelString("beta")), 0);
    EXPECT_GT(lCompare(QelString("beta"), QelString("be")), 0);
}

TEST(QelPair, HoldsBothValues)
{
    QelPair<int, double> lPair(3, 2.5);
    EXPECT_EQ(lPair.mFirst, 3);
    EXPECT_EQ(lPair.mSecond, 2.5);
    QelPair<int, double> lEmpty;
    EXPECT_EQ(lEmpty.mFirst, 0);
    EXPECT_EQ(lEmpty.mSecond, 0.0);
}

TEST(QelRedBlackTree, StartsEmpty)
{
    ReportCapture lCapture;
    TestTree lTree;
    EXPECT_EQ(lTree.GetSize(), 0);
    EXPECT_EQ(lTree.mRoot, nullptr);
    EXPECT_EQ(lTree.Minimum(), nullptr);
    EXPECT_EQ(lTree.Find(1), nullptr);
    EXPECT_FALSE(lTree.Remove(1));
    lTree.Clear();
    EXPECT_EQ(lTree.GetSize(), 0);
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelRedBlackTree, FirstRecordBecomesBlackRoot)
{
    TestTree lTree;
    QelPair<Record*, bool> lResult = lTree.Insert(IntPair(5, 50));
    ASSERT_NE(lResult.mFirst, nullptr);
    EXPECT_TRUE(lResult.mSecond);
    EXPECT_EQ(lTree.mRoot, lResult.mFirst);
    EXPECT_EQ(lResult.mFirst->GetKey(), 5);
    EXPECT_EQ(lResult.mFirst->GetValue(), 50);
    EXPECT_EQ(lResult.mFirst->mColor, 1u);
    EXPECT_EQ(lResult.mFirst->mParent, nullptr);
    EXPECT_EQ(lResult.mFirst->mLeftChild, nullptr);
    EXPECT_EQ(lResult.mFirst->mRightChild, nullptr);
    EXPECT_EQ(lTree.GetSize(), 1);
}

TEST(QelRedBlackTree, NewChildIsRed)
{
    TestTree lTree;
    Record* lRoot = lTree.Add(5);
    Record* lLeft = lTree.Add(3);
    Record* lRight = lTree.Add(8);
    EXPECT_EQ(lRoot->mLeftChild, lLeft);
    EXPECT_EQ(lRoot->mRightChild, lRight);
    EXPECT_EQ(lLeft->mColor, 0u);
    EXPECT_EQ(lRight->mColor, 0u);
    EXPECT_EQ(lLeft->mParent, lRoot);
}

TEST(QelRedBlackTree, AscendingInsertsRotateToBalance)
{
    TestTree lTree;
    Record* l1 = lTree.Add(1);
    Record* l2 = lTree.Add(2);
    Record* l3 = lTree.Add(3);
    EXPECT_EQ(lTree.mRoot, l2);
    EXPECT_EQ(l2->mLeftChild, l1);
    EXPECT_EQ(l2->mRightChild, l3);
    EXPECT_EQ(l2->mColor, 1u);
    EXPECT_EQ(l1->mColor, 0u);
    EXPECT_EQ(l3->mColor, 0u);
}

TEST(QelRedBlackTree, InnerGrandchildIsRotatedTwice)
{
    TestTree lTree;
    Record* l5 = lTree.Add(5);
    Record* l1 = lTree.Add(1);
    Record* l3 = lTree.Add(3);
    EXPECT_EQ(lTree.mRoot, l3);
    EXPECT_EQ(l3->mLeftChild, l1);
    EXPECT_EQ(l3->mRightChild, l5);
    EXPECT_TRUE(Matches(lTree, {{1, 0}, {3, 0}, {5, 0}}));
}

TEST(QelRedBlackTree, InsertPresentKeepsRecordAndValue)
{
    ReportCapture lCapture;
    TestTree lTree;
    Record* lRecord = lTree.Add(7, 70);
    lTree.Add(3, 30);
    QelPair<Record*, bool> lResult = lTree.Insert(IntPair(7, 99));
    EXPECT_EQ(lResult.mFirst, lRecord);
    EXPECT_FALSE(lResult.mSecond);
    EXPECT_EQ(lRecord->GetValue(), 70);
    EXPECT_EQ(lTree.GetSize(), 2);
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelRedBlackTree, FindReturnsRecordOrNull)
{
    TestTree lTree;
    std::vector<Record*> lRecords;
    for (int lKey = 0; lKey < 20; ++lKey)
        lRecords.push_back(lTree.Add(lKey * 2, lKey));
    for (int lKey = 0; lKey < 20; ++lKey) {
        EXPECT_EQ(lTree.Find(lKey * 2), lRecords[lKey]);
        EXPECT_EQ(lTree.Find(lKey * 2 + 1), nullptr);
    }
    EXPECT_EQ(lTree.Find(-1), nullptr);
}

TEST(QelRedBlackTree, RemoveAbsentChangesNothing)
{
    ReportCapture lCapture;
    TestTree lTree;
    for (int lKey : {4, 2, 6, 1})
        lTree.Add(lKey, lKey * 10);
    const Record* lRoot = lTree.mRoot;
    EXPECT_FALSE(lTree.Remove(5));
    EXPECT_EQ(lTree.mRoot, lRoot);
    EXPECT_TRUE(Matches(lTree, {{1, 10}, {2, 20}, {4, 40}, {6, 60}}));
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelRedBlackTree, RemovingLastRecordEmptiesTree)
{
    LiveBlocks lBlocks;
    TestTree lTree;
    lTree.Add(1);
    EXPECT_EQ(lBlocks.Live(), 1);
    EXPECT_TRUE(lTree.Remove(1));
    EXPECT_EQ(lTree.mRoot, nullptr);
    EXPECT_EQ(lTree.GetSize(), 0);
    EXPECT_EQ(lTree.Minimum(), nullptr);
    EXPECT_EQ(lBlocks.Live(), 0);
}

TEST(QelRedBlackTree, RemovingTwoChildRecordKeepsOtherAddresses)
{
    ReportCapture lCapture;
    TestTree lTree;
    std::map<int, Record*> lRecords;
    std::map<int, int> lExpected;
    for (int lKey = 1; lKey <= 15; ++lKey) {
        lRecords[lKey] = lTree.Add(lKey, lKey * 100);
        lExpected[lKey] = lKey * 100;
    }
    for (int lKey : {8, 4, 12}) {
        Record* lVictim = lRecords[lKey];
        ASSERT_NE(lVictim->mLeftChild, nullptr) << lKey;
        ASSERT_NE(lVictim->mRightChild, nullptr) << lKey;
        EXPECT_TRUE(lTree.Remove(lKey));
        lRecords.erase(lKey);
        lExpected.erase(lKey);
        for (const auto& lEntry : lRecords) {
            EXPECT_EQ(lTree.Find(lEntry.first), lEntry.second) << lEntry.first;
            EXPECT_EQ(lEntry.second->GetValue(), lEntry.first * 100);
        }
        EXPECT_TRUE(Matches(lTree, lExpected));
    }
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelRedBlackTree, RecordsWalkInKeyOrder)
{
    TestTree lTree;
    for (int lKey : {50, 20, 80, 10, 30, 70, 90, 60, 40})
        lTree.Add(lKey);
    EXPECT_EQ(Keys(lTree), (std::vector<int>{10, 20, 30, 40, 50, 60, 70, 80, 90}));
    EXPECT_EQ(lTree.Minimum()->GetKey(), 10);
    EXPECT_EQ(lTree.mRoot->Minimum(), lTree.Minimum());
    EXPECT_EQ(lTree.Find(90)->Successor(), nullptr);
}

TEST(QelRedBlackTree, OutOfMemoryInsertRefusesCleanly)
{
    ReportCapture lCapture;
    TestTree lTree;
    for (int lKey : {2, 1, 3})
        lTree.Add(lKey, lKey);
    const Record* lRoot = lTree.mRoot;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    QelPair<Record*, bool> lResult = lTree.Insert(IntPair(4, 4));
    EXPECT_EQ(lResult.mFirst, nullptr);
    EXPECT_FALSE(lResult.mSecond);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lTree.mRoot, lRoot);
    EXPECT_EQ(lTree.Find(4), nullptr);
    EXPECT_TRUE(Matches(lTree, {{1, 1}, {2, 2}, {3, 3}}));
    EXPECT_TRUE(lCapture.Reports().empty());
    lResult = lTree.Insert(IntPair(4, 4));
    EXPECT_TRUE(lResult.mSecond);
    EXPECT_TRUE(Matches(lTree, {{1, 1}, {2, 2}, {3, 3}, {4, 4}}));
}

TEST(QelRedBlackTree, ReserveAllocatesNothing)
{
    TestTree lTree;
    AllocationFailure lFailure;
    lTree.Reserve(100);
    EXPECT_EQ(lFailure.Count(), 0);
    EXPECT_EQ(lTree.GetSize(), 0);
}

TEST(QelRedBlackTree, ClearFreesEveryRecord)
{
    LiveBlocks lBlocks;
    TestTree lTree;
    for (int lKey = 0; lKey < 100; ++lKey)
        lTree.Add((lKey * 37) % 100);
    EXPECT_EQ(lBlocks.Live(), 100);
    lTree.Clear();
    EXPECT_EQ(lBlocks.Live(), 0);
    EXPECT_EQ(lTree.mRoot, nullptr);
    EXPECT_EQ(lTree.GetSize(), 0);
    lTree.Add(5);
    EXPECT_TRUE(Matches(lTree, {{5, 0}}));
}

TEST(QelRedBlackTree, DestructorFreesEveryRecord)
{
    LiveBlocks lBlocks;
    {
        TestTree lTree;
        for (int lKey = 0; lKey < 10; ++lKey)
            lTree.Add(lKey);
        EXPECT_EQ(lBlocks.Live(), 10);
    }
    EXPECT_EQ(lBlocks.Live(), 0);
}

TEST(QelMap, RemoveAndClearDestroyRecordData)
{
    Tracked::sLive = 0;
    {
        QelMap<int, Tracked> lMap;
        for (int lKey = 0; lKey < 6; ++lKey)
            lMap.Insert(lKey, Tracked(lKey));
        EXPECT_EQ(Tracked::sLive, 6);
        EXPECT_TRUE(lMap.Remove(2));
        EXPECT_EQ(Tracked::sLive, 5);
        lMap.Clear();
        EXPECT_EQ(Tracked::sLive, 0);
        for (int lKey = 0; lKey < 3; ++lKey)
            lMap.Insert(lKey, Tracked(lKey));
        EXPECT_EQ(Tracked::sLive, 3);
    }
    EXPECT_EQ(Tracked::sLive, 0);
}

TEST(QelMap, ForwardsToTree)
{
    QelMap<int, double> lMap;
    EXPECT_TRUE(lMap.Insert(2, 2.5).mSecond);
    EXPECT_TRUE(lMap.Insert(1, 1.5).mSecond);
    EXPECT_FALSE(lMap.Insert(2, 9.0).mSecond);
    EXPECT_EQ(lMap.GetSize(), 2);
    EXPECT_EQ(lMap.Find(2)->GetValue(), 2.5);
    EXPECT_EQ(lMap.Minimum()->GetKey(), 1);
    lMap.Find(1)->GetValue() = 4.0;
    const QelMap<int, double>& lConstMap = lMap;
    EXPECT_EQ(lConstMap.Find(1)->GetValue(), 4.0);
    EXPECT_EQ(lConstMap.Minimum()->GetKey(), 1);
    EXPECT_TRUE(lMap.Remove(1));
    EXPECT_FALSE(lMap.Remove(1));
    EXPECT_EQ(lMap.GetSize(), 1);
    lMap.Reserve(10);
    lMap.Clear();
    EXPECT_EQ(lMap.GetSize(), 0);
    EXPECT_EQ(lMap.Minimum(), nullptr);
}

TEST(QelMap, KeyValuePairGivesKeyAndValue)
{
    IntPair lPair(3, 4);
    EXPECT_EQ(lPair.GetKey(), 3);
    EXPECT_EQ(lPair.GetValue(), 4);
    EXPECT_EQ(lPair.mFirst, 3);
    EXPECT_EQ(lPair.mSecond, 4);
}

TEST(QelSimpleMap, CursorFollowsComparatorOrder)
{
    QelSimpleMap<int, long, Descending> lMap;
    for (int lKey : {3, 9, 1, 7, 5})
        EXPECT_TRUE(lMap.Add(lKey, lKey * 2));
    EXPECT_FALSE(lMap.Add(7, 0));
    EXPECT_EQ(lMap.GetCount(), 5);
    std::vector<int> lKeys;
    for (auto* lRecord = lMap.GetFirst(); lRecord; lRecord = lMap.GetNext(lRecord))
        lKeys.push_back(lRecord->GetKey());
    EXPECT_EQ(lKeys, (std::vector<int>{9, 7, 5, 3, 1}));
    EXPECT_EQ(lMap.GetNext(nullptr), nullptr);
    EXPECT_EQ(lMap.Find(7)->GetValue(), 14);
}

TEST(QelSimpleMap, EmptyCursorIsNull)
{
    QelSimpleMap<int, long> lMap;
    EXPECT_EQ(lMap.GetFirst(), nullptr);
    EXPECT_EQ(lMap.GetCount(), 0);
    lMap.Reserve(4);
    lMap.Clear();
    EXPECT_EQ(lMap.GetCount(), 0);
}

class QelObjectMapTest : public ::testing::Test
{
protected:
    QelObject* Object(int pIndex) { return reinterpret_cast<QelObject*>(&mStorage[pIndex]); }

    void SetUp() override
    {
        ASSERT_TRUE(mMap.Add(QelString("beta"), Object(1)));
        ASSERT_TRUE(mMap.Add(QelString("alpha"), Object(0)));
        ASSERT_TRUE(mMap.Add(QelString("gamma"), Object(2)));
    }

    std::vector<std::string> Names()
    {
        std::vector<std::string> lNames;
        for (auto* lRecord = mMap.GetFirst(); lRecord; lRecord = mMap.GetNext(lRecord))
            lNames.push_back(lRecord->GetKey().Buffer());
        return lNames;
    }

    int mStorage[4] = {};
    QelObjectMap<QelString, QelStringCompare> mMap;
};

TEST_F(QelObjectMapTest, AddKeepsFirstObject)
{
    EXPECT_FALSE(mMap.Add(QelString("beta"), Object(3)));
    EXPECT_EQ(mMap.GetCount(), 3);
    EXPECT_EQ(mMap.Get(mMap.Find(QelString("beta"))), Object(1));
}

TEST_F(QelObjectMapTest, FindsByKey)
{
    auto* lRecord = mMap.Find(QelString("gamma"));
    ASSERT_NE(lRecord, nullptr);
    EXPECT_STREQ(lRecord->GetKey().Buffer(), "gamma");
    EXPECT_EQ(mMap.Get(lRecord), Object(2));
    EXPECT_EQ(mMap.Find(QelString("delta")), nullptr);
}

TEST_F(QelObjectMapTest, FindsByValue)
{
    auto* lRecord = mMap.Find(Object(0));
    ASSERT_NE(lRecord, nullptr);
    EXPECT_STREQ(lRecord->GetKey().Buffer(), "alpha");
    EXPECT_EQ(mMap.Find(Object(3)), nullptr);
}

TEST_F(QelObjectMapTest, GetOfNullIsNull) { EXPECT_EQ(mMap.Get(nullptr), nullptr); }

TEST_F(QelObjectMapTest, WalksNamesInOrder)
{
    EXPECT_EQ(Names(), (std::vector<std::string>{"alpha", "beta", "gamma"}));
}

TEST_F(QelObjectMapTest, RemovesByRecord)
{
    mMap.Remove(mMap.Find(QelString("beta")));
    EXPECT_EQ(mMap.GetCount(), 2);
    EXPECT_EQ(mMap.Find(QelString("beta")), nullptr);
    EXPECT_EQ(Names(), (std::vector<std::string>{"alpha", "gamma"}));
    mMap.Remove(nullptr);
    EXPECT_EQ(mMap.GetCount(), 2);
    mMap.Clear();
    EXPECT_EQ(mMap.GetCount(), 0);
}

// Random inserts, removals and finds against std::map, checking every rule of the
// tree after each operation.
void RunDifferential(unsigned int pSeed, int pOperations, unsigned int pKeyRange)
{
    std::mt19937 lRandom(pSeed);
    TestTree lTree;
    std::map<int, int> lExpected;
    for (int lStep = 0; lStep < pOperations; ++lStep) {
        const unsigned int lKind = lRandom() % 20;
        const int lKey = static_cast<int>(lRandom() % pKeyRange);
        if (lKind < 8) {
            const int lValue = static_cast<int>(lRandom() % 100000);
            QelPair<Record*, bool> lResult = lTree.Insert(IntPair(lKey, lValue));
            auto lReference = lExpected.emplace(lKey, lValue);
            ASSERT_EQ(lResult.mSecond, lReference.second) << "seed " << pSeed << " step " << lStep;
            ASSERT_NE(lResult.mFirst, nullptr);
            ASSERT_EQ(lResult.mFirst->GetValue(), lReference.first->second);
        } else if (lKind < 15) {
            ASSERT_EQ(lTree.Remove(lKey), lExpected.erase(lKey) == 1)
                << "seed " << pSeed << " step " << lStep;
        } else {
            const Record* lRecord = lTree.Find(lKey);
            auto lReference = lExpected.find(lKey);
            ASSERT_EQ(lRecord != nullptr, lReference != lExpected.end());
            if (lRecord) {
                ASSERT_EQ(lRecord->GetValue(), lReference->second);
            }
        }
        ASSERT_TRUE(Matches(lTree, lExpected)) << "seed " << pSeed << " step " << lStep;
    }
    lTree.Clear();
    lExpected.clear();
    ASSERT_TRUE(Matches(lTree, lExpected));
}

TEST(QelRedBlackTreeDifferential, MatchesStdMapWithoutReports)
{
    ReportCapture lCapture;
    RunDifferential(7u, 40000, 1000u);
    RunDifferential(2024u, 40000, 300u);
    RunDifferential(99991u, 40000, 2000u);
    EXPECT_TRUE(lCapture.Reports().empty());
}

// Three records 1, 2, 3 under a black 2; with pWithFour, a red 4 under a black 3.
class RotationTest : public ::testing::Test
{
protected:
    void Build(bool pWithFour)
    {
        for (int lKey : {1, 2, 3})
            mRecords[lKey] = mTree.Add(lKey);
        if (pWithFour) mRecords[4] = mTree.Add(4);
    }

    TestTree mTree;
    Record* mRecords[5] = {};
    ReportCapture mCapture;
};

TEST_F(RotationTest, LeftRotateRelinksSilently)
{
    Build(true);
    mTree.LeftRotate(mRecords[2]);
    EXPECT_EQ(mTree.mRoot, mRecords[3]);
    EXPECT_EQ(mRecords[3]->mLeftChild, mRecords[2]);
    EXPECT_EQ(mRecords[3]->mRightChild, mRecords[4]);
    EXPECT_EQ(mRecords[2]->mLeftChild, mRecords[1]);
    EXPECT_EQ(mRecords[2]->mRightChild, nullptr);
    EXPECT_EQ(mRecords[2]->mParent, mRecords[3]);
    EXPECT_EQ(mRecords[3]->mParent, nullptr);
    EXPECT_EQ(Keys(mTree), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_TRUE(mCapture.Reports().empty());
}

TEST_F(RotationTest, RightRotateRelinksSilently)
{
    Build(false);
    mTree.RightRotate(mRecords[2]);
    EXPECT_EQ(mTree.mRoot, mRecords[1]);
    EXPECT_EQ(mRecords[1]->mRightChild, mRecords[2]);
    EXPECT_EQ(mRecords[1]->mLeftChild, nullptr);
    EXPECT_EQ(mRecords[2]->mRightChild, mRecords[3]);
    EXPECT_EQ(mRecords[2]->mParent, mRecords[1]);
    EXPECT_EQ(Keys(mTree), (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(mCapture.Reports().empty());
}

TEST_F(RotationTest, RotationUnderParentRelinksParent)
{
    Build(true);
    mTree.LeftRotate(mRecords[3]);
    EXPECT_EQ(mRecords[2]->mRightChild, mRecords[4]);
    EXPECT_EQ(mRecords[4]->mParent, mRecords[2]);
    mTree.RightRotate(mRecords[4]);
    EXPECT_EQ(mRecords[2]->mRightChild, mRecords[3]);
    EXPECT_EQ(mRecords[3]->mRightChild, mRecords[4]);
    EXPECT_TRUE(mCapture.Reports().empty());
}

TEST_F(RotationTest, RotationsRefuseMissingNodes)
{
    Build(false);
    mTree.LeftRotate(nullptr);
    mTree.LeftRotate(mRecords[3]);
    mTree.RightRotate(nullptr);
    mTree.RightRotate(mRecords[1]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition("LeftRotate", "pNode"),
                                   kReports.Condition("LeftRotate", "lNode"),
                                   kReports.Condition("RightRotate", "pNode"),
                                   kReports.Condition("RightRotate", "lNode")}));
    EXPECT_TRUE(Matches(mTree, {{1, 0}, {2, 0}, {3, 0}}));
}

TEST_F(RotationTest, LeftRotateChecksSubtreeA)
{
    Build(true);
    mRecords[1]->mParent = mRecords[3];
    mTree.LeftRotate(mRecords[2]);
    EXPECT_EQ(
        mCapture.Reports(),
        (std::vector<Report>{kReports.Condition("LeftRotate", "A == 0 || A->mParent == pNode")}));
}

TEST_F(RotationTest, LeftRotateChecksSubtreeC)
{
    Build(true);
    mRecords[4]->mParent = mRecords[1];
    mTree.LeftRotate(mRecords[2]);
    EXPECT_EQ(
        mCapture.Reports(),
        (std::vector<Report>{kReports.Condition("LeftRotate", "C == 0 || C->mParent == lNode")}));
}

TEST_F(RotationTest, LeftRotateChecksParentZ)
{
    Build(true);
    mRecords[3]->mParent = mRecords[1];
    mTree.LeftRotate(mRecords[3]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition(
                  "LeftRotate", "Z == 0 || Z->mLeftChild == lNode || Z->mRightChild == lNode")}));
    // Hang the lifted record back where the tree can reach and free it.
    mRecords[2]->mRightChild = mRecords[4];
    mRecords[4]->mParent = mRecords[2];
}

TEST_F(RotationTest, LeftRotateChecksRoot)
{
    Build(false);
    mTree.mRoot = mRecords[1];
    mTree.LeftRotate(mRecords[2]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition("LeftRotate", "mRoot == pNode")}));
    EXPECT_EQ(mTree.mRoot, mRecords[3]);
    EXPECT_EQ(Keys(mTree), (std::vector<int>{1, 2, 3}));
}

TEST_F(RotationTest, RightRotateChecksSubtreeA)
{
    for (int lKey : {4, 3, 2, 1})
        mRecords[lKey] = mTree.Add(lKey);
    ASSERT_EQ(mTree.mRoot, mRecords[3]);
    mRecords[1]->mParent = mRecords[4];
    mTree.RightRotate(mRecords[3]);
    EXPECT_EQ(
        mCapture.Reports(),
        (std::vector<Report>{kReports.Condition("RightRotate", "A == 0 || A->mParent == lNode")}));
}

TEST_F(RotationTest, RightRotateChecksSubtreeC)
{
    Build(false);
    mRecords[3]->mParent = mRecords[1];
    mTree.RightRotate(mRecords[2]);
    EXPECT_EQ(
        mCapture.Reports(),
        (std::vector<Report>{kReports.Condition("RightRotate", "C == 0 || C->mParent == pNode")}));
}

TEST_F(RotationTest, RightRotateChecksParentZ)
{
    for (int lKey : {4, 3, 2, 1})
        mRecords[lKey] = mTree.Add(lKey);
    mRecords[2]->mParent = mRecords[4];
    mTree.RightRotate(mRecords[2]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition(
                  "RightRotate", "Z == 0 || Z->mLeftChild == lNode || Z->mRightChild == lNode")}));
    mRecords[3]->mLeftChild = mRecords[1];
    mRecords[1]->mParent = mRecords[3];
}

TEST_F(RotationTest, RightRotateChecksRoot)
{
    Build(false);
    mTree.mRoot = mRecords[3];
    mTree.RightRotate(mRecords[2]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition("RightRotate", "mRoot == pNode")}));
    EXPECT_EQ(mTree.mRoot, mRecords[1]);
    EXPECT_EQ(Keys(mTree), (std::vector<int>{1, 2, 3}));
}

TEST_F(RotationTest, RemoveNodeReportsForeignParent)
{
    Build(false);
    mRecords[1]->mParent = mRecords[3];
    mTree.RemoveNode(mRecords[1]);
    EXPECT_EQ(
        mCapture.Reports(),
        (std::vector<Report>{kReports.Message("RemoveNode", "Node not found in QelRedBlackTree")}));
    EXPECT_EQ(mRecords[2]->mLeftChild, mRecords[1]);
    mRecords[1]->mParent = mRecords[2];
}

TEST_F(RotationTest, RemoveNodeReportsParentlessNonRoot)
{
    Build(false);
    mRecords[1]->mParent = nullptr;
    mTree.RemoveNode(mRecords[1]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition("RemoveNode", "mRoot == pNode")}));
    mTree.mRoot = mRecords[2];
    mRecords[1]->mParent = mRecords[2];
}

TEST_F(RotationTest, ReplaceNodeReportsParentlessNonRoot)
{
    Build(false);
    mRecords[1]->mParent = nullptr;
    mTree.ReplaceNode(mRecords[1], mRecords[2]);
    EXPECT_EQ(mCapture.Reports(),
              (std::vector<Report>{kReports.Condition("ReplaceNode", "mRoot == pNodeToReplace")}));
    mRecords[2]->mLeftChild = mRecords[1];
    mRecords[2]->mRightChild = mRecords[3];
    mRecords[1]->mParent = mRecords[2];
}

TEST_F(RotationTest, FixNodesAfterRemovalReportsMissingSibling)
{
    Record* lOnly = mTree.Add(1);
    mTree.FixNodesAfterRemoval(lOnly, nullptr);
    EXPECT_EQ(mCapture.Reports(), (std::vector<Report>{kReports.Condition(
                                      "FixNodesAfterRemoval", "lSibling != 0 && lParent != 0")}));
    EXPECT_TRUE(Matches(mTree, {{1, 0}}));
}

TEST_F(RotationTest, FixNodesAfterRemovalBlackensRedNode)
{
    Build(false);
    mTree.FixNodesAfterRemoval(mRecords[2], mRecords[1]);
    EXPECT_EQ(mRecords[1]->mColor, 1u);
    EXPECT_EQ(mRecords[3]->mColor, 0u);
    EXPECT_TRUE(mCapture.Reports().empty());
}

} // namespace
} // namespace qelsdk
