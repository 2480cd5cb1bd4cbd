// One scenario over the whole layer module, run once to count its allocations and
// then once per allocation with that one allocation refused. Every run must end
// without a crash or a leak, and each operation must either do what was asked or,
// when the refused allocation fell inside it, give its documented failure value.
#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::MemoryRecorder;
using test::ReportCapture;
typedef QelLayerElement Element;

// What an operation gave: what was asked, its documented failure value, or neither.
enum EOutcome { eDone, eRefused, eWrong };

EOutcome Outcome(bool pDone, bool pRefused)
{
    if (pDone) return eDone;
    return pRefused ? eRefused : eWrong;
}

// An index-returning operation: the expected index, or -1.
EOutcome IndexOutcome(int pResult, int pExpected)
{
    return Outcome(pResult == pExpected, pResult == -1);
}

// Runs the steps of one scenario and checks each outcome against the allocation that
// is refused in this run (0: none). A step that is refused ends the scenario: what
// follows depends on it.
class Steps
{
public:
    Steps(const AllocationFailure& pCounter, int pFailAt) : mCounter(pCounter), mFailAt(pFailAt) {}

    template <class Step> bool Run(const std::string& pName, Step pStep)
    {
        const int lBefore = mCounter.Count();
        const EOutcome lOutcome = pStep();
        const int lAfter = mCounter.Count();
        const bool lMet = mFailAt > lBefore && mFailAt <= lAfter;
        if (lMet) mMetBy = pName;
        if (lOutcome == eWrong)
            ADD_FAILURE() << pName << " gave neither its result nor its failure value (refused "
                          << mFailAt << ")";
        else if (lOutcome == eRefused && !lMet)
            ADD_FAILURE() << pName << " refused without meeting the refused allocation " << mFailAt
                          << " (its allocations " << lBefore + 1 << " to " << lAfter << ")";
        if (lOutcome == eRefused) ++mRefusals;
        return lOutcome == eDone;
    }

    const std::string& MetBy() const { return mMetBy; }
    int Refusals() const { return mRefusals; }

private:
    const AllocationFailure& mCounter;
    int mFailAt;
    std::string mMetBy;
    int mRefusals = 0;
};

// The element kinds the layer creates, each with whether it is a channel's UV
// element: every non-texture kind but the shared eUV slot and user data (which the
// layer cannot create), then both elements of every texture channel.
std::vector<std::pair<Element::EType, bool>> CreatedKinds()
{
    std::vector<std::pair<Element::EType, bool>> lKinds;
    for (int lKind = Element::eNormal; lKind <= Element::eVisibility; ++lKind)
        if (lKind != Element::eUV && lKind != Element::eUserData)
            lKinds.emplace_back(static_cast<Element::EType>(lKind), false);
    for (int lKind = Element::eTextureDiffuse; lKind <= Element::eTextureVectorDisplacement;
         ++lKind) {
        lKinds.emplace_back(static_cast<Element::EType>(lKind), true);
        lKinds.emplace_back(static_cast<Element::EType>(lKind), false);
    }
    return lKinds;
}

// Fills an element through single-item operations: two direct items, one inserted in
// front, one overwritten, and an index per direct item.
template <class T>
bool FillItems(Steps& pSteps, QelLayerElement* pElement, const T& pFirst, const T& pSecond)
{
    auto* lElement = static_cast<QelLayerElementTemplate<T>*>(pElement);
    const std::string lName = std::to_string(sizeof(T)) + "-byte items";
    lElement->SetReferenceMode(Element::eIndexToDirect);
    auto& lDirect = lElement->GetDirectArray();
    auto& lIndex = lElement->GetIndexArray();
    const int lCount = lDirect.GetCount();
    const int lIndices = lIndex.GetCount();
    return pSteps.Run("Add to " + lName, [&] {
        return IndexOutcome(lDirect.Add(pFirst), lCount);
    }) && pSteps.Run("InsertAt into " + lName, [&] {
        const int lIndexUsed = lDirect.InsertAt(0, &pSecond, eQelUndefined);
        return Outcome(lIndexUsed == 0 && lDirect.GetCount() == lCount + 2,
                       lIndexUsed == -1 && lDirect.GetCount() == lCount + 1);
    }) && pSteps.Run("SetAt in " + lName, [&] {
        lDirect.SetAt(1, pSecond);
        return Outcome(lDirect.GetStatus() == LockAccessStatus::eLockAccessOk, false);
    }) && pSteps.Run("index Add to " + lName, [&] {
        return IndexOutcome(lIndex.Add(0), lIndices);
    }) && pSteps.Run("index Add to " + lName, [&] {
        return IndexOutcome(lIndex.Add(1), lIndices + 1);
    });
}

// Takes the whole buffer as pType, writes pValue into every item of it when
// pWrite, and releases it. Refused: no buffer, and the items as they were.
template <class B>
EOutcome ThroughLock(QelLayerElementArray& pArray, EQelType pType, bool pWrite, const B& pValue)
{
    const int lCount = pArray.GetCount();
    void* lBuffer = pArray.GetLocked(
        pWrite ? QelLayerElementArray::eReadWriteLock : QelLayerElementArray::eReadLock, pType);
    if (!lBuffer) return Outcome(false, !pArray.IsInUse() && pArray.GetCount() == lCount);
    if (pWrite)
        for (int i = 0; i < lCount; ++i)
            static_cast<B*>(lBuffer)[i] = pValue;
    pArray.Release(&lBuffer, pType);
    return Outcome(!lBuffer && !pArray.IsInUse() && pArray.GetCount() == lCount &&
                       pArray.GetStatus() == LockAccessStatus::eLockAccessOk,
                   false);
}

// Whether every element of pCopy matches the element of pSource of its kind by
// presence and item counts.
bool SameShape(const QelLayer& pSource, const QelLayer& pCopy)
{
    for (const auto& lKind : CreatedKinds()) {
        const auto* lFrom = pSource.GetLayerElementOfType(lKind.first, lKind.second);
        const auto* lTo = pCopy.GetLayerElementOfType(lKind.first, lKind.second);
        if (!lFrom != !lTo) return false;
    }
    const auto* lFrom = pSource.GetNormals();
    const auto* lTo = pCopy.GetNormals();
    return lFrom && lTo && lFrom->GetDirectArray().GetCount() == lTo->GetDirectArray().GetCount();
}

// Whether every slot of pLayer is empty (the eUV slot keeps its pointer).
bool Emptied(const QelLayer& pLayer)
{
    for (const auto& lKind : CreatedKinds())
        if (pLayer.GetLayerElementOfType(lKind.first, lKind.second)) return false;
    return !pLayer.GetUserData();
}

// The node, its materials and its mesh; the single-item and whole-buffer work on
// every kind; user data; a remap; a stream round trip; a clone; a clear.
void RunScenario(Steps& pSteps)
{
    QelSurfaceMaterial lA("A");
    QelSurfaceMaterial lB("B");
    QelTexture lTexture("texture");
    QelMesh lMesh("mesh");
    QelNode lNode("node");
    for (QelObject* lObject : std::vector<QelObject*>{&lMesh, &lA, &lB})
        if (!pSteps.Run("connect to the node", [&] {
                return Outcome(lNode.ConnectSrcObject(lObject),
                               !lNode.IsConnectedSrcObject(lObject));
            }))
            return;
    if (!pSteps.Run("SetControlPointCount", [&] {
            lMesh.SetControlPointCount(5);
            return Outcome(lMesh.GetControlPointsCount() == 5, lMesh.GetControlPointsCount() == 0);
        }))
        return;
    const int lQuad[] = {0, 1, 2, 3};
    const int lTriangle[] = {1, 4, 2};
    if (!pSteps.Run("AddPolygon", [&] { return IndexOutcome(lMesh.AddPolygon(lQuad, 4), 0); }) ||
        !pSteps.Run("AddPolygon",
                    [&] { return IndexOutcome(lMesh.AddPolygon(lTriangle, 3), 1); }) ||
        !pSteps.Run("CreateLayer", [&] { return IndexOutcome(lMesh.CreateLayer(), 0); }))
        return;
    QelLayer& lLayer = *lMesh.GetLayer(0);

    for (const auto& lKind : CreatedKinds())
        if (!pSteps.Run("CreateLayerElementOfType " + std::to_string(lKind.first), [&] {
                const bool lMade = lLayer.CreateLayerElementOfType(lKind.first, lKind.second);
                return Outcome(lMade, !lLayer.GetLayerElementOfType(lKind.first, lKind.second));
            }))
            return;

    const QelVector4 lUp(0, 0, 1, 0);
    const QelVector4 lSide(1, 0, 0, 0);
    const QelVector2 lCorner(1, 1);
    QelTexture* lNoTexture = nullptr;
    for (int lKind = Element::eNormal; lKind <= Element::eTangent; ++lKind)
        if (!FillItems(pSteps, lLayer.GetLayerElementOfType(static_cast<Element::EType>(lKind)),
                       lUp, lSide))
            return;
    // The first lock of the material element loads the node's two materials; without
    // the memory for them the element stays empty.
    if (!pSteps.Run("load the node's materials", [&] {
            const int lCount = lLayer.GetMaterials()->GetDirectArray().GetCount();
            return Outcome(lCount == 2, lCount == 0);
        }))
        return;
    if (!FillItems<QelSurfaceMaterial*>(pSteps, lLayer.GetMaterials(), &lB, &lA) ||
        !FillItems(pSteps, lLayer.GetPolygonGroups(), 3, 4) ||
        !FillItems(pSteps, lLayer.GetVertexColors(), QelColor(1, 0, 0, 1), QelColor(0, 1, 0, 1)) ||
        !FillItems(pSteps, lLayer.GetSmoothing(), 1, 0) ||
        !FillItems(pSteps, lLayer.GetVertexCrease(), 0.25, 0.5) ||
        !FillItems(pSteps, lLayer.GetEdgeCrease(), 0.75, 1.0) ||
        !FillItems(pSteps, lLayer.GetHole(), true, false) ||
        !FillItems(pSteps, lLayer.GetVisibility(), false, true))
        return;
    for (int lKind = Element::eTextureDiffuse; lKind <= Element::eTextureVectorDisplacement;
         ++lKind) {
        const auto lChannel = static_cast<Element::EType>(lKind);
        if (!FillItems(pSteps, lLayer.GetUVs(lChannel), lCorner, QelVector2(0, 1)) ||
            !FillItems(pSteps, lLayer.GetTextures(lChannel), &lTexture, lNoTexture))
            return;
    }

    // Whole buffers: raw, converted for reading, converted and written back.
    if (!pSteps.Run("raw normals",
                    [&] {
                        return ThroughLock(lLayer.GetNormals()->GetDirectArray(), eQelDouble4, true,
                                           lSide);
                    }) ||
        !pSteps.Run("creases as floats",
                    [&] {
                        return ThroughLock(lLayer.GetVertexCrease()->GetDirectArray(), eQelFloat,
                                           false, 0.0f);
                    }) ||
        !pSteps.Run("creases written as floats",
                    [&] {
                        return ThroughLock(lLayer.GetEdgeCrease()->GetDirectArray(), eQelFloat,
                                           true, 0.5f);
                    }) ||
        !pSteps.Run("smoothing written as doubles",
                    [&] {
                        return ThroughLock(lLayer.GetSmoothing()->GetDirectArray(), eQelDouble,
                                           true, 2.0);
                    }) ||
        !pSteps.Run("group indices written as unsigned", [&] {
            return ThroughLock(lLayer.GetPolygonGroups()->GetIndexArray(), eQelUInt, true, 1u);
        }))
        return;
    if (!pSteps.Run("ConvertDataType", [&] {
            void* lBuffer = nullptr;
            size_t lStride = 0;
            lLayer.GetHole()->GetDirectArray().ConvertDataType(eQelInt, &lBuffer, &lStride);
            // The array keeps the buffer and frees it at its end.
            return Outcome(lBuffer && lStride == 4, !lBuffer);
        }))
        return;

    // A polygon group per polygon, spread to one per polygon vertex.
    QelLayerElementPolygonGroup& lGroups = *lLayer.GetPolygonGroups();
    lGroups.SetMappingMode(Element::ePerPolygon);
    if (!pSteps.Run("RemapIndexArrayTo", [&] {
            const int lResult =
                RemapIndexArrayTo(&lGroups, Element::ePerPolygonVertex, &lGroups.GetIndexArray());
            return Outcome(lResult == 1 && lGroups.GetIndexArray().GetCount() == 7,
                           lResult == 0 && lGroups.GetIndexArray().GetCount() == 2 &&
                               lGroups.GetMappingMode() == Element::ePerPolygon);
        }))
        return;

    // The stream round trip, into the layer of a mesh no node instances.
    QelMemoryStream lStream;
    QelMesh lOther("other");
    if (!pSteps.Run("ContentWriteTo",
                    [&] { return Outcome(lLayer.ContentWriteTo(lStream), true); }) ||
        !pSteps.Run("CreateLayer", [&] { return IndexOutcome(lOther.CreateLayer(), 0); }) ||
        !pSteps.Run("ContentReadFrom", [&] {
            // A record whose element cannot be created is skipped without its content,
            // as every record the reader does not take: what follows is misread, and
            // the read may even end true with another layer.
            const bool lRead = lOther.GetLayer(0)->ContentReadFrom(lStream);
            return Outcome(lRead && SameShape(lLayer, *lOther.GetLayer(0)), true);
        }))
        return;

    // User data with one channel of each value type.
    QelArray<QelDataType> lTypes;
    QelArray<const char*> lNames;
    const QelDataType* lChannelTypes[] = {&QelBoolDT, &QelIntDT, &QelFloatDT, &QelDoubleDT};
    const char* lChannelNames[] = {"flag", "count", "weight", "distance"};
    for (int i = 0; i < 4; ++i)
        if (!pSteps.Run("user data type",
                        [&] { return IndexOutcome(lTypes.Add(*lChannelTypes[i]), i); }) ||
            !pSteps.Run("user data name",
                        [&] { return IndexOutcome(lNames.Add(lChannelNames[i]), i); }))
            return;
    QelLayerElementUserData* lUserData = nullptr;
    if (!pSteps.Run("user data Create", [&] {
            lUserData = QelLayerElementUserData::Create(&lMesh, "user", 7, lTypes, lNames);
            return Outcome(lUserData && lUserData->GetDirectArrayCount() == 4, !lUserData);
        }))
        return;
    lLayer.SetUserData(lUserData);
    if (!pSteps.Run("user data int channel",
                    [&] { return IndexOutcome(QelGetDirectArray<int>(lUserData, 1).Add(5), 0); }) ||
        !pSteps.Run(
            "user data double channel",
            [&] { return IndexOutcome(QelGetDirectArray<double>(lUserData, 3).Add(2.5), 0); }) ||
        !pSteps.Run("user data copy", [&] {
            QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(nullptr, *lUserData);
            const bool lWhole = lCopy && QelGetDirectArray<int>(lCopy, 1).GetAt(0) == 5;
            if (lCopy) lCopy->Destroy();
            return Outcome(lWhole, !lCopy);
        }))
        return;

    if (!pSteps.Run("CreateLayer", [&] { return IndexOutcome(lMesh.CreateLayer(), 1); }) ||
        !pSteps.Run("Clone",
                    [&] {
                        QelLayer& lCopy = *lMesh.GetLayer(1);
                        lCopy.Clone(lLayer);
                        // A copy that cannot be made leaves its slot empty.
                        return Outcome(SameShape(lLayer, lCopy) && lCopy.GetUserData(),
                                       !SameShape(lLayer, lCopy) || !lCopy.GetUserData());
                    }) ||
        !pSteps.Run("Clear", [&] {
            lLayer.Clear();
            return Outcome(Emptied(lLayer), false);
        }))
        return;
}

struct SweepResult
{
    int mAllocations = 0; // asked for by the whole run
    int mRefusals = 0;    // operations that gave their failure value
    std::string mMetBy;   // the operation that met the refused allocation
};

// One run of the scenario with allocation pFailAt refused (0: none), under a recorder
// that sees every block and refuses blocks so large that only a misread count asks
// for them.
SweepResult RunOnce(int pFailAt)
{
    SweepResult lResult;
    MemoryRecorder lRecorder;
    lRecorder.RefuseAbove(size_t(1) << 24);
    {
        ReportCapture lQuiet;
        AllocationFailure lFailure;
        if (pFailAt > 0) lFailure.FailAt(pFailAt);
        {
            Steps lSteps(lFailure, pFailAt);
            RunScenario(lSteps);
            lResult.mRefusals = lSteps.Refusals();
            lResult.mMetBy = lSteps.MetBy();
        }
        lResult.mAllocations = lFailure.Count();
        if (pFailAt > 0 && pFailAt <= lResult.mAllocations) {
            EXPECT_EQ(lFailure.Failed(), 1) << "refused " << pFailAt;
        }
    }
    EXPECT_EQ(lRecorder.Live().size(), 0u)
        << "blocks left with allocation " << pFailAt << " refused, met by " << lResult.mMetBy;
    return lResult;
}

TEST(QelLayerAllocationSweep, TheScenarioRunsWholeWithoutRefusals)
{
    const SweepResult lResult = RunOnce(0);
    EXPECT_EQ(lResult.mRefusals, 0);
    EXPECT_GT(lResult.mAllocations, 200);
}

TEST(QelLayerAllocationSweep, EveryRefusedAllocationEndsCleanly)
{
    const int lTotal = RunOnce(0).mAllocations;
    std::set<std::string> lOperations;
    int lReached = 0;
    for (int lFailAt = 1; lFailAt <= lTotal; ++lFailAt) {
        const SweepResult lResult = RunOnce(lFailAt);
        if (!lResult.mMetBy.empty()) {
            ++lReached;
            lOperations.insert(lResult.mMetBy);
        }
        if (::testing::Test::HasFailure()) break; // the first failing index tells enough
    }
    // Every allocation of the scenario falls inside one of its operations, apart from
    // those of the objects' constructors and destructors.
    EXPECT_GT(lReached, lTotal * 9 / 10);
    std::printf("allocation sweep: %d allocations, %d met inside an operation, %zu operations\n",
                lTotal, lReached, lOperations.size());
}

} // namespace
} // namespace qelsdk
