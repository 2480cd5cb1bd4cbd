#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayerelementuserdata.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <initializer_list>
#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Elements;
using test::FileReports;
using test::ListOf;
using test::Report;
using test::ReportCapture;
using Reports = std::vector<Report>;
using Status = LockAccessStatus;

const FileReports kHeader{"include/qelsdk/scene/geometry/qellayer"};
const FileReports kSource{"src/qelsdk/scene/geometry/qellayer"};
const Report kMismatch =
    kHeader.Condition("QelLayerElementUserData", "pDataTypes.GetCount() == pDataNames.GetCount()");
const Report kNoElement = kSource.Condition("Create", "tmp != NULL");
const Report kUnknownInInit = kSource.Message("Init", "Trying to assign an unknown type");
const Report kUnknownInCopy = kHeader.Message("QelLayerElementUserData", "Unknown type");
const Report kOutOfBounds = kHeader.Message("GetDirectArrayVoid", "Index out of bounds");

// The channel types and names a user data element is made from.
struct Layout
{
    Layout(std::initializer_list<QelDataType> pTypes, std::initializer_list<const char*> pNames)
    {
        for (const QelDataType& lType : pTypes)
            mTypes.Add(lType);
        for (const char* lName : pNames)
            mNames.Add(lName);
    }

    QelArray<QelDataType> mTypes;
    QelArray<const char*> mNames;
};

QelLayerElementUserData* Make(QelLayerContainer* pOwner, Layout& pLayout, int pId = 7)
{
    return QelLayerElementUserData::Create(pOwner, "user", pId, pLayout.mTypes, pLayout.mNames);
}

template <class T>
QelLayerElementArrayTemplate<T>& Channel(QelLayerElementUserData& pElement, int pIndex)
{
    bool lStatus = false;
    QelLayerElementArrayTemplate<T>& lChannel = QelGetDirectArray<T>(&pElement, pIndex, &lStatus);
    EXPECT_TRUE(lStatus) << "channel " << pIndex;
    return lChannel;
}

template <class T> std::vector<T> ValuesOf(QelLayerElementUserData& pElement, int pIndex)
{
    const QelLayerElementArrayTemplate<T>& lChannel = Channel<T>(pElement, pIndex);
    std::vector<T> lValues;
    for (int i = 0; i < lChannel.GetCount(); ++i)
        lValues.push_back(lChannel.GetAt(i));
    return lValues;
}

std::vector<EQelType> ChannelTypesOf(const QelLayerElementUserData& pElement)
{
    std::vector<EQelType> lTypes;
    for (int i = 0; i < pElement.GetDirectArrayCount(); ++i) {
        const void* lChannel = pElement.GetDirectArrayVoid(i);
        lTypes.push_back(lChannel
                             ? static_cast<const QelLayerElementArray*>(lChannel)->GetDataType()
                             : eQelUndefined);
    }
    return lTypes;
}

std::vector<std::string> NamesOf(const QelLayerElementUserData& pElement)
{
    std::vector<std::string> lNames;
    for (int i = 0; i < pElement.GetDataNameCount(); ++i)
        lNames.push_back(pElement.GetDataName(i));
    return lNames;
}

TEST(QelLayerElementUserData, CreateMakesOneChannelArrayPerTypeAndRegisters)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a", "b"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_TRUE(lReports.Reports().empty());
    EXPECT_EQ(lElement->GetDirectArrayCount(), 2);
    EXPECT_EQ(ChannelTypesOf(*lElement), (std::vector<EQelType>{eQelInt, eQelDouble}));
    EXPECT_EQ(lElement->GetDirectArrayVoid(0), &Channel<int>(*lElement, 0));
    EXPECT_EQ(lElement->GetDirectArrayVoid(1), &Channel<double>(*lElement, 1));
    EXPECT_EQ(Channel<int>(*lElement, 0).GetCount(), 0);
    EXPECT_EQ(lElement->GetId(), 7);
    EXPECT_STREQ(lElement->GetName(), "user");
    EXPECT_EQ(lElement->GetDataTypeCount(), 2);
    EXPECT_EQ(lElement->GetDataType(0), QelIntDT);
    EXPECT_EQ(lElement->GetDataType(1), QelDoubleDT);
    EXPECT_EQ(NamesOf(*lElement), (std::vector<std::string>{"a", "b"}));
    // The direct array holds the channel pointers, as the element's data type says.
    EXPECT_EQ(lElement->GetDirectArray().GetDataType(), QelLayerElementUserDataDT.GetType());
    EXPECT_EQ(lElement->GetMappingMode(), QelLayerElement::eNone);
    EXPECT_EQ(lElement->GetReferenceMode(), QelLayerElement::eDirect);
    EXPECT_EQ(lElement->GetOwner(), &lMesh);
    EXPECT_EQ(ListOf(lMesh), (Elements{lElement}));
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerElementUserData, EveryChannelTypeHoldsValuesOfItsType)
{
    Layout lLayout({QelBoolDT, QelIntDT, QelFloatDT, QelDoubleDT}, {"b", "i", "f", "d"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(ChannelTypesOf(*lElement),
              (std::vector<EQelType>{eQelBool, eQelInt, eQelFloat, eQelDouble}));
    ReportCapture lReports;
    Channel<bool>(*lElement, 0).Add(true);
    Channel<bool>(*lElement, 0).Add(false);
    Channel<int>(*lElement, 1).Add(-3);
    Channel<float>(*lElement, 2).Add(1.5f);
    Channel<double>(*lElement, 3).Add(0.25);
    Channel<double>(*lElement, 3).Add(-8.0);
    EXPECT_EQ(ValuesOf<bool>(*lElement, 0), (std::vector<bool>{true, false}));
    EXPECT_EQ(ValuesOf<int>(*lElement, 1), (std::vector<int>{-3}));
    EXPECT_EQ(ValuesOf<float>(*lElement, 2), (std::vector<float>{1.5f}));
    EXPECT_EQ(ValuesOf<double>(*lElement, 3), (std::vector<double>{0.25, -8.0}));
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerElementUserData, MoreNamesThanTypesAreReportedAndKept)
{
    Layout lLayout({QelIntDT}, {"a", "b"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(lReports.Reports(), Reports{kMismatch});
    EXPECT_EQ(lElement->GetDirectArrayCount(), 1);
    EXPECT_EQ(ChannelTypesOf(*lElement), std::vector<EQelType>{eQelInt});
    EXPECT_EQ(NamesOf(*lElement), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(lElement->GetDataType(1), QelUndefinedDT);
    EXPECT_EQ(lElement->GetDataName(2), nullptr);
    EXPECT_EQ(lElement->GetDataName(-1), nullptr);
    EXPECT_EQ(ListOf(lMesh), (Elements{lElement}));
}

TEST(QelLayerElementUserData, MoreTypesThanNamesAreReportedAndKept)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(lReports.Reports(), Reports{kMismatch});
    EXPECT_EQ(ChannelTypesOf(*lElement), (std::vector<EQelType>{eQelInt, eQelDouble}));
    EXPECT_EQ(NamesOf(*lElement), std::vector<std::string>{"a"});
    EXPECT_EQ(lElement->GetDataName(1), nullptr);
    EXPECT_EQ(lElement->GetDataType(-1), QelUndefinedDT);
    EXPECT_EQ(ListOf(lMesh), (Elements{lElement}));
    // The copy keeps the same counts and reports nothing of them.
    lReports.Clear();
    QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(&lMesh, *lElement);
    ASSERT_NE(lCopy, nullptr);
    EXPECT_TRUE(lReports.Reports().empty());
    EXPECT_EQ(ChannelTypesOf(*lCopy), (std::vector<EQelType>{eQelInt, eQelDouble}));
    EXPECT_EQ(NamesOf(*lCopy), std::vector<std::string>{"a"});
}

TEST(QelLayerElementUserData, ChannelOfAnUnknownTypeIsReportedAndHasNoArray)
{
    Layout lLayout({QelIntDT, QelStringDT, QelDoubleDT}, {"a", "s", "d"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(lReports.Reports(), Reports{kUnknownInInit});
    EXPECT_EQ(lElement->GetDirectArrayCount(), 3);
    EXPECT_EQ(ChannelTypesOf(*lElement),
              (std::vector<EQelType>{eQelInt, eQelUndefined, eQelDouble}));
    bool lStatus = false;
    EXPECT_EQ(lElement->GetDirectArrayVoid(1, &lStatus), nullptr);
    EXPECT_TRUE(lStatus);
    QelGetDirectArray<int>(lElement, 1, &lStatus);
    EXPECT_FALSE(lStatus);
    EXPECT_EQ(ListOf(lMesh), (Elements{lElement}));
}

TEST(QelLayerElementUserData, CreateWithoutOwnerListsTheElementNowhere)
{
    Layout lLayout({QelIntDT}, {"a"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(nullptr, lLayout);
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(lElement->GetOwner(), nullptr);
    EXPECT_EQ(lMesh.GetLayerElementCount(), 0);
    EXPECT_EQ(lElement->GetDirectArrayCount(), 1);
    lElement->Destroy();
}

TEST(QelLayerElementUserData, CreateWithoutNameOrChannels)
{
    Layout lLayout({}, {});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lElement =
        QelLayerElementUserData::Create(&lMesh, nullptr, -2, lLayout.mTypes, lLayout.mNames);
    ASSERT_NE(lElement, nullptr);
    EXPECT_STREQ(lElement->GetName(), "");
    EXPECT_EQ(lElement->GetId(), -2);
    EXPECT_EQ(lElement->GetDirectArrayCount(), 0);
    EXPECT_EQ(lElement->MemorySize(), 4);
    EXPECT_TRUE(lReports.Reports().empty());
    EXPECT_EQ(ListOf(lMesh), (Elements{lElement}));
}

TEST(QelLayerElementUserData, CreateReportsAnElementThatCannotBeAllocated)
{
    Layout lLayout({QelIntDT}, {"a"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(Make(&lMesh, lLayout), nullptr);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), Reports{kNoElement});
    EXPECT_EQ(lMesh.GetLayerElementCount(), 0);
}

// The whole element the tests below make: channels [int, double] named "a" and "b",
// with the values [1, 2, 3] and [0.5] when pFilled.
void ExpectWhole(QelLayerElementUserData& pElement, bool pFilled)
{
    EXPECT_EQ(pElement.GetId(), 7);
    EXPECT_EQ(ChannelTypesOf(pElement), (std::vector<EQelType>{eQelInt, eQelDouble}));
    EXPECT_EQ(pElement.GetDataTypeCount(), 2);
    EXPECT_EQ(NamesOf(pElement), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(ValuesOf<int>(pElement, 0),
              (pFilled ? std::vector<int>{1, 2, 3} : std::vector<int>{}));
    EXPECT_EQ(ValuesOf<double>(pElement, 1),
              pFilled ? std::vector<double>{0.5} : std::vector<double>{});
}

// Makes the element once to count its allocations, then once per allocation with
// only that one failing: every attempt is refused with nothing left in the mesh's list
// (and, under the leak checker, nothing left allocated).
void ExpectEveryFailedAllocationRefused(
    const std::function<QelLayerElementUserData*(QelMesh&)>& pCreate, bool pFilled)
{
    int lAllocations = 0;
    {
        QelMesh lMesh("mesh");
        AllocationFailure lCounter;
        QelLayerElementUserData* lElement = pCreate(lMesh);
        lAllocations = lCounter.Count();
        ASSERT_NE(lElement, nullptr);
        ExpectWhole(*lElement, pFilled);
    }
    ASSERT_GT(lAllocations, 0);
    for (int k = 1; k <= lAllocations; ++k) {
        QelMesh lMesh("mesh");
        ReportCapture lReports;
        AllocationFailure lFailure;
        lFailure.FailAt(k);
        QelLayerElementUserData* lElement = pCreate(lMesh);
        EXPECT_EQ(lFailure.Failed(), 1) << "allocation " << k;
        lFailure.FailNone();
        EXPECT_EQ(lElement, nullptr) << "allocation " << k;
        EXPECT_EQ(lMesh.GetLayerElementCount(), 0) << "allocation " << k;
        if (k == 1) {
            EXPECT_EQ(lReports.Reports(), Reports{kNoElement});
        }
    }
}

TEST(QelLayerElementUserData, CreateRefusesEveryAllocationThatFails)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a", "b"});
    ExpectEveryFailedAllocationRefused([&](QelMesh& pMesh) { return Make(&pMesh, lLayout); },
                                       false);
}

// [int, double] named "a" and "b", holding [1, 2, 3] and [0.5], with mapping and
// reference modes and an index array that a copy does not take.
QelLayerElementUserData* MakeSource(QelLayerContainer& pOwner)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a", "b"});
    QelLayerElementUserData* lSource =
        QelLayerElementUserData::Create(&pOwner, "source", 7, lLayout.mTypes, lLayout.mNames);
    if (!lSource) return nullptr;
    for (int lValue : {1, 2, 3})
        QelGetDirectArray<int>(lSource, 0).Add(lValue);
    QelGetDirectArray<double>(lSource, 1).Add(0.5);
    lSource->SetMappingMode(QelLayerElement::ePerPolygon);
    lSource->SetReferenceMode(QelLayerElement::eIndexToDirect);
    lSource->GetIndexArray().Add(1);
    lSource->GetIndexArray().Add(0);
    return lSource;
}

// A mesh holding the element MakeSource makes.
class QelLayerElementUserDataSource : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_NE(mSource, nullptr); }

    QelMesh mMesh{"mesh"};
    QelLayerElementUserData* mSource = MakeSource(mMesh);
};

TEST_F(QelLayerElementUserDataSource,
       CopyHasItsOwnChannelsWithTheSourceValuesButNoNameModesOrIndices)
{
    ReportCapture lReports;
    QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(&mMesh, *mSource);
    ASSERT_NE(lCopy, nullptr);
    EXPECT_TRUE(lReports.Reports().empty());
    ExpectWhole(*lCopy, true);
    // Kept as-is: name, mapping and reference mode are the new element's own.
    EXPECT_STREQ(lCopy->GetName(), "");
    EXPECT_EQ(lCopy->GetMappingMode(), QelLayerElement::eNone);
    EXPECT_EQ(lCopy->GetReferenceMode(), QelLayerElement::eDirect);
    EXPECT_EQ(lCopy->GetDirectArray().GetDataType(), QelLayerElementUserDataDT.GetType());
    EXPECT_EQ(lCopy->GetOwner(), &mMesh);
    EXPECT_EQ(ListOf(mMesh), (Elements{mSource, lCopy}));
    EXPECT_NE(lCopy->GetDirectArrayVoid(0), mSource->GetDirectArrayVoid(0));
    EXPECT_NE(lCopy->GetDirectArrayVoid(1), mSource->GetDirectArrayVoid(1));
    Channel<int>(*lCopy, 0).SetAt(0, 9);
    EXPECT_EQ(ValuesOf<int>(*lCopy, 0), (std::vector<int>{9, 2, 3}));
    EXPECT_EQ(ValuesOf<int>(*mSource, 0), (std::vector<int>{1, 2, 3}));
    lCopy->SetReferenceMode(QelLayerElement::eIndexToDirect);
    EXPECT_EQ(lCopy->GetIndexArray().GetCount(), 0);
    EXPECT_EQ(mSource->GetIndexArray().GetCount(), 2);
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST_F(QelLayerElementUserDataSource, CopyConstructedDirectlyBelongsToItsHolder)
{
    ReportCapture lReports;
    {
        QelLayerElementUserData lCopy(*mSource);
        ExpectWhole(lCopy, true);
        EXPECT_EQ(lCopy.GetOwner(), nullptr);
        EXPECT_STREQ(lCopy.GetName(), "");
    }
    EXPECT_EQ(ListOf(mMesh), (Elements{mSource}));
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerElementUserData, CopyReportsChannelsOfAnUnknownType)
{
    Layout lLayout({QelIntDT, QelStringDT}, {"a", "s"});
    QelMesh lMesh("mesh");
    ReportCapture lReports;
    QelLayerElementUserData* lSource = Make(&lMesh, lLayout);
    ASSERT_NE(lSource, nullptr);
    QelGetDirectArray<int>(lSource, 0).Add(4);
    lReports.Clear();
    QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(&lMesh, *lSource);
    ASSERT_NE(lCopy, nullptr);
    EXPECT_EQ(lReports.Reports(), (Reports{kUnknownInInit, kUnknownInCopy}));
    EXPECT_EQ(ChannelTypesOf(*lCopy), (std::vector<EQelType>{eQelInt, eQelUndefined}));
    EXPECT_EQ(ValuesOf<int>(*lCopy, 0), std::vector<int>{4});
    EXPECT_EQ(ListOf(lMesh), (Elements{lSource, lCopy}));
}

TEST_F(QelLayerElementUserDataSource, CopyOfAClearedElementHasNoChannels)
{
    mSource->Clear();
    QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(&mMesh, *mSource);
    ASSERT_NE(lCopy, nullptr);
    EXPECT_EQ(lCopy->GetDirectArrayCount(), 0);
    EXPECT_EQ(lCopy->MemorySize(), 4);
}

TEST_F(QelLayerElementUserDataSource, CopyReportsAnElementThatCannotBeAllocated)
{
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(QelLayerElementUserData::Create(&mMesh, *mSource), nullptr);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), Reports{kNoElement});
    EXPECT_EQ(ListOf(mMesh), (Elements{mSource}));
}

TEST_F(QelLayerElementUserDataSource, CopyRefusesEveryAllocationThatFails)
{
    ExpectEveryFailedAllocationRefused(
        [&](QelMesh& pMesh) { return QelLayerElementUserData::Create(&pMesh, *mSource); }, true);
    ExpectWhole(*mSource, true);
}

TEST(QelLayerElementUserData, ConstructedDirectlyItHasNoChannelsUntilItsArraysAreMade)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a", "b"});
    ReportCapture lReports;
    QelLayerElementUserData lElement(7, lLayout.mTypes, lLayout.mNames);
    EXPECT_EQ(lElement.GetDirectArrayCount(), 0);
    EXPECT_EQ(lElement.MemorySize(), 4 + 2 * 16 + 2 * 8);
    bool lStatus = false;
    EXPECT_EQ(lElement.GetDirectArrayVoid(0, &lStatus), nullptr);
    EXPECT_TRUE(lStatus);
    lElement.SetType(&QelLayerElementUserDataDT);
    EXPECT_TRUE(lElement.AllocateArrays());
    ExpectWhole(lElement, false);
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerElementUserData, GetDirectArrayVoidAcceptsEveryIndexWhileTheCountCanBeRead)
{
    Layout lLayout({QelIntDT, QelDoubleDT}, {"a", "b"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    const QelLayerElementUserData& lConst = *lElement;
    ReportCapture lReports;
    for (int lIndex : {-1, INT_MIN, 2, INT_MAX}) {
        bool lStatus = false;
        EXPECT_EQ(lElement->GetDirectArrayVoid(lIndex, &lStatus), nullptr) << lIndex;
        EXPECT_TRUE(lStatus) << lIndex;
        lStatus = false;
        EXPECT_EQ(lConst.GetDirectArrayVoid(lIndex, &lStatus), nullptr) << lIndex;
        EXPECT_TRUE(lStatus) << lIndex;
        EXPECT_EQ(lElement->GetDirectArrayVoid(lIndex), nullptr) << lIndex;
    }
    bool lStatus = false;
    void* lChannel = lElement->GetDirectArrayVoid(1, &lStatus);
    EXPECT_TRUE(lStatus);
    EXPECT_EQ(lChannel, &Channel<double>(*lElement, 1));
    EXPECT_EQ(lConst.GetDirectArrayVoid(1), lChannel);
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerElementUserData, GetDirectArrayVoidRefusesMinusOneWhileTheCountCannotBeRead)
{
    Layout lLayout({QelIntDT}, {"a"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    const QelLayerElementArray& lDirect = lElement->GetDirectArray();
    ASSERT_TRUE(lDirect.ReadWriteLock());
    const Report kCountRefused[] = {kSource.Message("ReadLock", "A writeLock is active"),
                                    kSource.Message("GetCount", "The array is not read locked")};
    ReportCapture lReports;
    bool lStatus = true;
    EXPECT_EQ(lElement->GetDirectArrayVoid(-1, &lStatus), nullptr);
    EXPECT_FALSE(lStatus);
    EXPECT_EQ(lReports.Reports(), (Reports{kCountRefused[0], kCountRefused[1], kOutOfBounds}));
    // Below the unreadable count (-1), and at or above 0, indices are accepted; none
    // lies inside the direct array's items.
    for (int lIndex : {-2, 0}) {
        lReports.Clear();
        lStatus = false;
        EXPECT_EQ(lElement->GetDirectArrayVoid(lIndex, &lStatus), nullptr) << lIndex;
        EXPECT_TRUE(lStatus) << lIndex;
        EXPECT_EQ(lReports.Reports(), (Reports{kCountRefused[0], kCountRefused[1]})) << lIndex;
    }
    lDirect.ReadWriteUnlock();
    lReports.Clear();
    EXPECT_NE(lElement->GetDirectArrayVoid(0, &lStatus), nullptr);
    EXPECT_TRUE(lStatus);
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST_F(QelLayerElementUserDataSource, ClearLeavesNoChannelsNamesOrTypes)
{
    ReportCapture lReports;
    EXPECT_TRUE(mSource->Clear());
    EXPECT_EQ(mSource->GetDirectArrayCount(), 0);
    EXPECT_EQ(mSource->GetDataTypeCount(), 0);
    EXPECT_EQ(mSource->GetDataNameCount(), 0);
    EXPECT_EQ(mSource->GetIndexArray().GetCount(), 0);
    EXPECT_EQ(mSource->MemorySize(), 4);
    bool lStatus = false;
    EXPECT_EQ(mSource->GetDirectArrayVoid(0, &lStatus), nullptr);
    EXPECT_TRUE(lStatus);
    EXPECT_TRUE(mSource->Clear());
    EXPECT_EQ(mSource->MemorySize(), 4);
    EXPECT_TRUE(lReports.Reports().empty());
    EXPECT_EQ(ListOf(mMesh), (Elements{mSource}));
    mSource->Destroy();
    EXPECT_EQ(mMesh.GetLayerElementCount(), 0);
}

TEST_F(QelLayerElementUserDataSource, MemorySizeCountsPointersIndicesIdTypesAndNames)
{
    // 2 channel pointers, 2 indices, the id, 2 types and 2 names; the channels' own
    // values are not counted.
    EXPECT_EQ(mSource->MemorySize(), 2 * 8 + 2 * 4 + 4 + 2 * 16 + 2 * 8);
    Layout lLayout({QelIntDT}, {"a", "b"});
    ReportCapture lReports;
    QelLayerElementUserData* lMismatched = Make(&mMesh, lLayout);
    ASSERT_NE(lMismatched, nullptr);
    EXPECT_EQ(lReports.Reports(), Reports{kMismatch});
    EXPECT_EQ(lMismatched->MemorySize(), 8 + 4 + 16 + 2 * 8);
}

TEST(QelLayerElementUserData, TypedChannelOfASmallerTypeRefusesToOverrunTheCallersValue)
{
    Layout lLayout({QelDoubleDT}, {"d"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    Channel<double>(*lElement, 0).Add(2.5);
    ReportCapture lReports;
    bool lStatus = false;
    // Nothing checks T against the channel: the double channel comes back as floats.
    QelLayerElementArrayTemplate<float>& lFloats = QelGetDirectArray<float>(lElement, 0, &lStatus);
    EXPECT_TRUE(lStatus);
    EXPECT_EQ(static_cast<void*>(&lFloats), lElement->GetDirectArrayVoid(0));
    float lValue = 7.0f;
    EXPECT_FALSE(lFloats.GetAt(0, &lValue));
    EXPECT_EQ(lFloats.GetStatus(), Status::eTypeMismatch);
    EXPECT_EQ(lValue, 7.0f);
    EXPECT_EQ(lReports.Reports(), Reports{kSource.Message("GetAt", "Bad data type conversion")});
    EXPECT_EQ(ValuesOf<double>(*lElement, 0), std::vector<double>{2.5});
}

TEST(QelLayerElementUserData, TypedChannelThatDoesNotExistIsAnInertStandIn)
{
    Layout lLayout({QelIntDT}, {"a"});
    QelMesh lMesh("mesh");
    QelLayerElementUserData* lElement = Make(&lMesh, lLayout);
    ASSERT_NE(lElement, nullptr);
    ReportCapture lReports;
    bool lStatus = true;
    QelLayerElementArrayTemplate<int>& lMissing = QelGetDirectArray<int>(lElement, 1, &lStatus);
    EXPECT_FALSE(lStatus);
    EXPECT_NE(static_cast<void*>(&lMissing), lElement->GetDirectArrayVoid(0));
    EXPECT_EQ(lMissing.Add(5), -1);
    EXPECT_EQ(lMissing.GetStatus(), Status::eInvalidRequest);
    EXPECT_EQ(lMissing.GetCount(), 0);
    EXPECT_EQ(lMissing.GetStatus(), Status::eInvalidRequest);
    lStatus = true;
    EXPECT_EQ(&QelGetDirectArray<int>(static_cast<QelLayerElementUserData*>(nullptr), 0, &lStatus),
              &lMissing);
    EXPECT_FALSE(lStatus);
    lStatus = true;
    const QelLayerElementUserData* lConst = lElement;
    EXPECT_EQ(&QelGetDirectArray<int>(lConst, -1, &lStatus), &lMissing);
    EXPECT_FALSE(lStatus);
    EXPECT_EQ(&QelGetDirectArray<int>(lConst, 0), &Channel<int>(*lElement, 0));
    EXPECT_TRUE(lReports.Reports().empty());
}

} // namespace
} // namespace qelsdk
