#include <qelsdk/core/qelobject.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Report;
using test::ReportCapture;

const Report kArrayFull{"include/qelsdk/core/base/qelarray", "InsertAt", false, "lArray"};

template <class T = QelObject> std::vector<QelObject*> Sources(const QelObject& pObject)
{
    std::vector<QelObject*> lSources;
    for (int i = 0; i < pObject.GetSrcObjectCount<T>(); ++i)
        lSources.push_back(pObject.GetSrcObject<T>(i));
    return lSources;
}

template <class T = QelObject> std::vector<QelObject*> Destinations(const QelObject& pObject)
{
    std::vector<QelObject*> lDestinations;
    for (int i = 0; i < pObject.GetDstObjectCount<T>(); ++i)
        lDestinations.push_back(pObject.GetDstObject<T>(i));
    return lDestinations;
}

using Objects = std::vector<QelObject*>;

// Puts back the wipe mode found at construction, whatever the test left behind.
class WipeModeGuard
{
public:
    WipeModeGuard() : mPrevious(QelObject::GetWipeMode()) {}
    ~WipeModeGuard() { QelObject::SetWipeMode(mPrevious); }
    WipeModeGuard(const WipeModeGuard&) = delete;
    WipeModeGuard& operator=(const WipeModeGuard&) = delete;

private:
    bool mPrevious;
};

TEST(QelObject, KeepsItsName)
{
    QelObject lObject("cube");
    EXPECT_STREQ(lObject.GetName(), "cube");
    lObject.SetName("sphere");
    EXPECT_STREQ(lObject.GetName(), "sphere");
    EXPECT_STREQ(QelObject().GetName(), "");
    EXPECT_STREQ(QelObject(nullptr).GetName(), "");
}

TEST(QelObject, KeepsOldNameWhenNewOneCannotBeAllocated)
{
    QelObject lObject("cube");
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    lObject.SetName("sphere");
    EXPECT_STREQ(lObject.GetName(), "cube");
}

TEST(QelObject, ConnectSrcObjectKeepsOrderAtBothEnds)
{
    QelObject lA("a"), lB("b"), lC("c");
    EXPECT_TRUE(lA.ConnectSrcObject(&lB));
    EXPECT_TRUE(lA.ConnectSrcObject(&lC));
    EXPECT_EQ(Sources(lA), (Objects{&lB, &lC}));
    EXPECT_EQ(Destinations(lA), Objects{});
    EXPECT_EQ(Destinations(lB), Objects{&lA});
    EXPECT_EQ(Destinations(lC), Objects{&lA});
    EXPECT_EQ(Sources(lB), Objects{});
}

TEST(QelObject, ConnectDstObjectIsTheSameSeenFromTheOtherEnd)
{
    QelObject lA("a"), lB("b"), lC("c");
    EXPECT_TRUE(lB.ConnectDstObject(&lA));
    EXPECT_TRUE(lC.ConnectDstObject(&lA));
    EXPECT_TRUE(lB.ConnectDstObject(&lC));
    EXPECT_EQ(Sources(lA), (Objects{&lB, &lC}));
    EXPECT_EQ(Destinations(lB), (Objects{&lA, &lC}));
    EXPECT_EQ(Sources(lC), Objects{&lB});
    EXPECT_TRUE(lA.IsConnectedSrcObject(&lB));
    EXPECT_TRUE(lB.IsConnectedDstObject(&lA));
    EXPECT_FALSE(lA.IsConnectedDstObject(&lB));
    EXPECT_FALSE(lB.IsConnectedSrcObject(&lA));
}

TEST(QelObject, RefusesNullSelfAndSecondConnection)
{
    QelObject lA("a"), lB("b");
    EXPECT_FALSE(lA.ConnectSrcObject(nullptr));
    EXPECT_FALSE(lA.ConnectDstObject(nullptr));
    EXPECT_FALSE(lA.ConnectSrcObject(&lA));
    EXPECT_TRUE(lA.ConnectSrcObject(&lB));
    EXPECT_FALSE(lA.ConnectSrcObject(&lB));
    EXPECT_FALSE(lB.ConnectDstObject(&lA));
    EXPECT_EQ(Sources(lA), Objects{&lB});
    EXPECT_EQ(Destinations(lB), Objects{&lA});
    EXPECT_EQ(Destinations(lA), Objects{});
}

TEST(QelObject, BothDirectionsBetweenTwoObjectsAreDistinct)
{
    QelObject lA("a"), lB("b");
    EXPECT_TRUE(lA.ConnectSrcObject(&lB));
    EXPECT_TRUE(lA.ConnectDstObject(&lB));
    EXPECT_EQ(Sources(lA), Objects{&lB});
    EXPECT_EQ(Destinations(lA), Objects{&lB});
    EXPECT_TRUE(lA.DisconnectSrcObject(&lB));
    EXPECT_EQ(Sources(lA), Objects{});
    EXPECT_EQ(Destinations(lA), Objects{&lB});
    EXPECT_EQ(Sources(lB), Objects{&lA});
}

TEST(QelObject, DisconnectRemovesBothEnds)
{
    QelObject lA("a"), lB("b"), lC("c"), lD("d");
    lA.ConnectSrcObject(&lB);
    lA.ConnectSrcObject(&lC);
    lA.ConnectSrcObject(&lD);
    EXPECT_TRUE(lA.DisconnectSrcObject(&lC));
    EXPECT_EQ(Sources(lA), (Objects{&lB, &lD}));
    EXPECT_EQ(Destinations(lC), Objects{});
    EXPECT_TRUE(lB.DisconnectDstObject(&lA));
    EXPECT_EQ(Sources(lA), Objects{&lD});
    EXPECT_EQ(Destinations(lB), Objects{});
}

TEST(QelObject, DisconnectOfWhatIsNotConnectedReturnsFalse)
{
    QelObject lA("a"), lB("b");
    lA.ConnectSrcObject(&lB);
    EXPECT_FALSE(lA.DisconnectSrcObject(nullptr));
    EXPECT_FALSE(lA.DisconnectDstObject(nullptr));
    EXPECT_FALSE(lA.DisconnectDstObject(&lB));
    EXPECT_FALSE(lB.DisconnectSrcObject(&lA));
    EXPECT_TRUE(lA.DisconnectSrcObject(&lB));
    EXPECT_FALSE(lA.DisconnectSrcObject(&lB));
}

TEST(QelObject, DestructorDisconnectsFromSourcesAndDestinations)
{
    QelObject lA("a"), lC("c"), lD("d");
    {
        QelObject lB("b");
        lA.ConnectSrcObject(&lB);
        lB.ConnectSrcObject(&lC);
        lB.ConnectSrcObject(&lD);
        lD.ConnectSrcObject(&lB);
        lA.ConnectSrcObject(&lC);
    }
    EXPECT_EQ(Sources(lA), Objects{&lC});
    EXPECT_EQ(Destinations(lC), Objects{&lA});
    EXPECT_EQ(Destinations(lD), Objects{});
    EXPECT_EQ(Sources(lD), Objects{});
}

TEST(QelObject, WipeModeIsOffUnlessSet)
{
    WipeModeGuard lGuard;
    EXPECT_FALSE(QelObject::GetWipeMode());
    QelObject::SetWipeMode(true);
    EXPECT_TRUE(QelObject::GetWipeMode());
    QelObject::SetWipeMode(false);
    EXPECT_FALSE(QelObject::GetWipeMode());
}

// Connects a source to a destination, destroys one end in wipe mode and checks that
// the other end's list was left alone: it still names the destroyed object (compared
// by address only) and its block was neither freed nor moved, while the destroyed
// object's own list and the object itself went back. The survivor is then destroyed
// in wipe mode too, as tearing a scene down does.
void CheckWipeModeDestruction(bool pDestroySource)
{
    WipeModeGuard lGuard;
    test::MemoryRecorder lRecorder;
    QelObject* lSource = QelNew<QelObject>();
    QelObject* lDestination = QelNew<QelObject>();
    ASSERT_TRUE(lSource && lDestination);
    const size_t lBefore = lRecorder.Allocations().size();
    ASSERT_TRUE(lDestination->ConnectSrcObject(lSource));
    // The destination's list of sources grows first, then the source's destinations.
    ASSERT_EQ(lRecorder.Allocations().size(), lBefore + 2);
    void* const lSourcesList = lRecorder.Allocations()[lBefore].mAddress;
    void* const lDestinationsList = lRecorder.Allocations()[lBefore + 1].mAddress;
    QelObject::SetWipeMode(true);
    lRecorder.Clear();
    QelObject* const lGone = pDestroySource ? lSource : lDestination;
    QelObject* const lKept = pDestroySource ? lDestination : lSource;
    void* const lGoneList = pDestroySource ? lDestinationsList : lSourcesList;
    void* const lKeptList = pDestroySource ? lSourcesList : lDestinationsList;
    QelDelete(lGone);
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lGoneList, static_cast<void*>(lGone)}));
    EXPECT_TRUE(lRecorder.Allocations().empty());
    EXPECT_EQ(lRecorder.TimesFreed(lKeptList), 0);
    if (pDestroySource)
        EXPECT_TRUE(lKept->IsConnectedSrcObject(lGone));
    else
        EXPECT_TRUE(lKept->IsConnectedDstObject(lGone));
    lRecorder.Clear();
    QelDelete(lKept);
    EXPECT_EQ(lRecorder.Frees(), (std::vector<void*>{lKeptList, static_cast<void*>(lKept)}));
    EXPECT_TRUE(QelObject::GetWipeMode());
}

TEST(QelObject, WipeModeDestroyingTheSourceLeavesTheDestinationAlone)
{
    CheckWipeModeDestruction(true);
}

TEST(QelObject, WipeModeDestroyingTheDestinationLeavesTheSourceAlone)
{
    CheckWipeModeDestruction(false);
}

TEST(QelObject, DestroyingOutsideWipeModeDisconnectsBothEnds)
{
    WipeModeGuard lGuard;
    QelObject lSource("source");
    {
        QelObject lDestination("destination");
        ASSERT_TRUE(lDestination.ConnectSrcObject(&lSource));
        EXPECT_EQ(Destinations(lSource), Objects{&lDestination});
    }
    EXPECT_EQ(Destinations(lSource), Objects{});
    QelObject lDestination("destination");
    {
        QelObject lOther("source");
        ASSERT_TRUE(lDestination.ConnectSrcObject(&lOther));
    }
    EXPECT_EQ(Sources(lDestination), Objects{});
}

TEST(QelObject, TypedCountsAndAccessorsFilterByClass)
{
    QelNode lNode("node");
    QelSurfaceMaterial lRed("red"), lBlue("blue");
    QelTexture lWood("wood");
    QelObject lPlain("plain");
    lNode.ConnectSrcObject(&lPlain);
    lNode.ConnectSrcObject(&lRed);
    lNode.ConnectSrcObject(&lWood);
    lNode.ConnectSrcObject(&lBlue);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelObject>(), 4);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelSurfaceMaterial>(), 2);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelTexture>(), 1);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelNode>(), 0);
    EXPECT_EQ(lNode.GetSrcObject<QelSurfaceMaterial>(0), &lRed);
    EXPECT_EQ(lNode.GetSrcObject<QelSurfaceMaterial>(1), &lBlue);
    EXPECT_EQ(lNode.GetSrcObject<QelSurfaceMaterial>(2), nullptr);
    EXPECT_EQ(lNode.GetSrcObject<QelSurfaceMaterial>(-1), nullptr);
    EXPECT_EQ(lNode.GetSrcObject<QelTexture>(0), &lWood);
    EXPECT_EQ(lNode.GetSrcObject<QelObject>(2), &lWood);
    EXPECT_EQ(lNode.GetSrcObject<QelNode>(0), nullptr);
    EXPECT_EQ(lRed.GetDstObjectCount<QelNode>(), 1);
    EXPECT_EQ(lRed.GetDstObject<QelNode>(0), &lNode);
    EXPECT_EQ(lRed.GetDstObject<QelNode>(1), nullptr);
    EXPECT_EQ(lRed.GetDstObjectCount<QelTexture>(), 0);
    EXPECT_EQ(lRed.GetDstObject<QelTexture>(0), nullptr);
}

TEST(QelObject, DisconnectAllSrcObjectTakesOnlyThatClass)
{
    QelNode lNode("node");
    QelSurfaceMaterial lRed("red"), lBlue("blue");
    QelTexture lWood("wood");
    lNode.ConnectSrcObject(&lRed);
    lNode.ConnectSrcObject(&lWood);
    lNode.ConnectSrcObject(&lBlue);
    EXPECT_TRUE(lNode.DisconnectAllSrcObject<QelSurfaceMaterial>());
    EXPECT_EQ(Sources(lNode), Objects{&lWood});
    EXPECT_EQ(Destinations(lRed), Objects{});
    EXPECT_EQ(Destinations(lBlue), Objects{});
    EXPECT_EQ(Destinations(lWood), Objects{&lNode});
    EXPECT_FALSE(lNode.DisconnectAllSrcObject<QelSurfaceMaterial>());
    EXPECT_TRUE(lNode.DisconnectAllSrcObject<QelObject>());
    EXPECT_EQ(Sources(lNode), Objects{});
}

TEST(QelObject, IsAndQelCastFollowTheClassTree)
{
    QelSurfaceMaterial lMaterial("m");
    QelObject* lObject = &lMaterial;
    EXPECT_TRUE(lObject->Is<QelObject>());
    EXPECT_TRUE(lObject->Is<QelSurfaceMaterial>());
    EXPECT_FALSE(lObject->Is<QelNode>());
    EXPECT_EQ(QelCast<QelSurfaceMaterial>(lObject), &lMaterial);
    EXPECT_EQ(QelCast<QelNode>(lObject), nullptr);
    EXPECT_EQ(QelCast<QelNode>(nullptr), nullptr);
}

TEST(QelObject, ConnectionRefusedWhenSourceListCannotGrow)
{
    QelObject lA("a"), lB("b");
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_FALSE(lA.ConnectSrcObject(&lB));
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), std::vector<Report>{kArrayFull});
    EXPECT_EQ(Sources(lA), Objects{});
    EXPECT_EQ(Destinations(lB), Objects{});
}

TEST(QelObject, ConnectionRefusedWhenDestinationListCannotGrow)
{
    QelObject lA("a"), lB("b");
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(2);
    EXPECT_FALSE(lA.ConnectSrcObject(&lB));
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), std::vector<Report>{kArrayFull});
    EXPECT_EQ(Sources(lA), Objects{});
    EXPECT_EQ(Destinations(lB), Objects{});
    lFailure.FailNone();
    EXPECT_TRUE(lA.ConnectSrcObject(&lB));
    EXPECT_EQ(Sources(lA), Objects{&lB});
}

} // namespace
} // namespace qelsdk
