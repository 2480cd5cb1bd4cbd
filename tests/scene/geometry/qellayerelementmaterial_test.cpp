#include <qelsdk/core/qelobject.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>

#include "qelsdk/scene/geometry/qellayerimp.h"
#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::Elements;
using test::ListOf;
using Materials = std::vector<QelSurfaceMaterial*>;
using MaterialArray = QelLayerElementArrayTemplate<QelSurfaceMaterial*>;
using Proxy = QelLayerElementMaterial::LayerElementArrayProxy;

const test::FileReports sLayerReports{"src/qelsdk/scene/geometry/qellayer"};
const test::FileReports sArrayReports{"include/qelsdk/core/base/qelarray"};

// The node's materials in connection order.
Materials MaterialsOf(const QelNode& pNode)
{
    Materials lMaterials;
    for (int i = 0; i < pNode.GetSrcObjectCount<QelSurfaceMaterial>(); ++i)
        lMaterials.push_back(pNode.GetSrcObject<QelSurfaceMaterial>(i));
    return lMaterials;
}

// The items of the array, each read under its own lock (the first one loads an empty
// proxy from its node).
Materials ItemsOf(const MaterialArray& pArray)
{
    Materials lItems;
    const int lCount = pArray.GetCount();
    for (int i = 0; i < lCount; ++i)
        lItems.push_back(pArray.GetAt(i));
    return lItems;
}

LayerElementArrayImp* StorageOf(QelLayerElementArray& pArray)
{
    return static_cast<LayerElementArrayImp*>(pArray.GetImplementation());
}

// The proxy storage of pArray, or null when its storage is a plain one.
LayerElementArrayProxyImp* ProxyStorageOf(QelLayerElementArray& pArray)
{
    return dynamic_cast<LayerElementArrayProxyImp*>(StorageOf(pArray));
}

// Sets wipe mode for the scope and puts the previous mode back.
class WipeModeGuard
{
public:
    explicit WipeModeGuard(bool pWipeMode) : mPrevious(QelObject::GetWipeMode())
    {
        QelObject::SetWipeMode(pWipeMode);
    }
    ~WipeModeGuard() { QelObject::SetWipeMode(mPrevious); }
    WipeModeGuard(const WipeModeGuard&) = delete;
    WipeModeGuard& operator=(const WipeModeGuard&) = delete;

private:
    bool mPrevious;
};

// A mesh instanced by one node whose materials are A then B; C is connected nowhere.
struct InstancedMesh
{
    InstancedMesh()
    {
        mNode.ConnectSrcObject(&mMesh);
        mNode.ConnectSrcObject(&mA);
        mNode.ConnectSrcObject(&mB);
    }

    QelSurfaceMaterial mA{"A"};
    QelSurfaceMaterial mB{"B"};
    QelSurfaceMaterial mC{"C"};
    QelMesh mMesh{"mesh"};
    QelNode mNode{"node"};
};

// A material element owned by the mesh of an InstancedMesh.
class QelLayerElementMaterialTest : public ::testing::Test, protected InstancedMesh
{
protected:
    void SetUp() override
    {
        mElement = QelLayerElementMaterial::Create(&mMesh, "materials");
        ASSERT_NE(mElement, nullptr);
    }

    MaterialArray& Direct() { return mElement->GetDirectArray(); }
    // Removes item pIndex of the direct array and returns it.
    QelSurfaceMaterial* RemoveAt(int pIndex)
    {
        QelSurfaceMaterial* lRemoved = nullptr;
        QelSurfaceMaterial** lTarget = &lRemoved;
        Direct().RemoveAt(pIndex, reinterpret_cast<void**>(&lTarget));
        return lRemoved;
    }
    LayerElementArrayImp& Storage() { return *StorageOf(Direct()); }

    QelLayerElementMaterial* mElement = nullptr; // owned by mMesh
};

TEST_F(QelLayerElementMaterialTest, CreateMakesAnElementOfItsOwnersFirstNode)
{
    EXPECT_STREQ(mElement->GetName(), "materials");
    EXPECT_EQ(mElement->GetReferenceMode(), QelLayerElement::eDirect);
    EXPECT_EQ(mElement->GetMappingMode(), QelLayerElement::eNone);
    EXPECT_EQ(mElement->GetOwner(), &mMesh);
    EXPECT_EQ(ListOf(mMesh), Elements{mElement});

    EXPECT_EQ(Direct().GetDataType(), eQelReference);
    LayerElementArrayProxyImp* lProxy = ProxyStorageOf(Direct());
    ASSERT_NE(lProxy, nullptr);
    EXPECT_EQ(lProxy->ItemSize(), 8);
    EXPECT_EQ(lProxy->GetCurrentNode(), &mNode);
    EXPECT_EQ(lProxy->GetCount(), 0);

    QelLayerElementArrayTemplate<int>& lIndices = mElement->GetIndexArray();
    EXPECT_EQ(lIndices.GetDataType(), eQelInt);
    EXPECT_EQ(ProxyStorageOf(lIndices), nullptr);
    EXPECT_EQ(StorageOf(lIndices)->ItemSize(), 4);
}

TEST_F(QelLayerElementMaterialTest, IndexArrayIsAnOrdinaryIntArray)
{
    mElement->SetReferenceMode(QelLayerElement::eIndexToDirect);
    EXPECT_EQ(mElement->GetIndexArray().Add(1), 0);
    EXPECT_EQ(mElement->GetIndexArray().Add(0), 1);
    EXPECT_EQ(mElement->GetIndexArray().GetAt(0), 1);
    EXPECT_EQ(mElement->GetIndexArray().GetAt(1), 0);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, FirstReadLockOfTheEmptyArrayLoadsTheNodesMaterials)
{
    void* lLocked = Direct().GetLocked(QelLayerElementArray::eReadLock);
    ASSERT_NE(lLocked, nullptr);
    QelSurfaceMaterial** lItems = static_cast<QelSurfaceMaterial**>(lLocked);
    EXPECT_EQ(Storage().GetCount(), 2);
    EXPECT_EQ(lItems[0], &mA);
    EXPECT_EQ(lItems[1], &mB);
    Direct().Release(&lLocked);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, WritingBAndUnlockingConnectsBThenA)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    EXPECT_EQ(RemoveAt(0), &mA);
    EXPECT_EQ(ItemsOf(Direct()), Materials{&mB});
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mB, &mA}));
    EXPECT_TRUE(mNode.IsConnectedSrcObject(&mMesh));
}

TEST_F(QelLayerElementMaterialTest, LockingAgainDoesNotReload)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    mNode.ConnectSrcObject(&mC);
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB, &mC}));
}

TEST_F(QelLayerElementMaterialTest, RemovingNeverDisconnectsAndAnEmptiedArrayReloads)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    EXPECT_EQ(RemoveAt(1), &mB);
    EXPECT_EQ(Storage().GetCount(), 1);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));

    EXPECT_EQ(RemoveAt(0), &mA);
    EXPECT_EQ(Storage().GetCount(), 0);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, NodesOtherMaterialsFollowInTheirOldOrder)
{
    mNode.ConnectSrcObject(&mC);
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB, &mC}));
    Direct().Resize(1);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB, &mC}));
    Direct().SetAt(0, &mC);
    EXPECT_EQ(Direct().GetStatus(), LockAccessStatus::eLockAccessOk);
    EXPECT_EQ(ItemsOf(Direct()), Materials{&mC});
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mC, &mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, WriteOnlyLockRewiresTheNodeOnRelease)
{
    void* lLocked = Direct().GetLocked(QelLayerElementArray::eWriteLock);
    ASSERT_NE(lLocked, nullptr);
    // The lock loads the two materials, then discards them for two zeroed items.
    QelSurfaceMaterial** lItems = static_cast<QelSurfaceMaterial**>(lLocked);
    EXPECT_EQ(Storage().GetCount(), 2);
    EXPECT_EQ(lItems[0], nullptr);
    EXPECT_EQ(lItems[1], nullptr);
    lItems[0] = &mC;
    lItems[1] = &mB;
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
    Direct().Release(&lLocked);
    EXPECT_EQ(lLocked, nullptr);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mC, &mB, &mA}));
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mC, &mB}));
}

TEST_F(QelLayerElementMaterialTest, NullItemsStayInTheArrayAndConnectNothing)
{
    void* lLocked = Direct().GetLocked(QelLayerElementArray::eWriteLock);
    ASSERT_NE(lLocked, nullptr);
    static_cast<QelSurfaceMaterial**>(lLocked)[1] = &mB;
    Direct().Release(&lLocked);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mB, &mA}));
    EXPECT_EQ(ItemsOf(Direct()), (Materials{nullptr, &mB}));
}

TEST_F(QelLayerElementMaterialTest, SetAtThroughTheTypedFaceRewiresTheNode)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    Direct().SetAt(1, &mC);
    EXPECT_EQ(Direct().GetStatus(), LockAccessStatus::eLockAccessOk);
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mA, &mC}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mC, &mB}));
}

// SetAt checks the index against the items before its lock loads them, so an array
// that was never read has no index to write to.
TEST_F(QelLayerElementMaterialTest, SetAtBeforeTheFirstLoadIsRefused)
{
    Direct().SetAt(0, &mC);
    EXPECT_EQ(Direct().GetStatus(), LockAccessStatus::eInvalidRequest);
    EXPECT_EQ(Storage().GetCount(), 0);
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

// Add takes its index from the items before its lock loads them: on an array that was
// never read it inserts in front of the node's materials.
TEST_F(QelLayerElementMaterialTest, AddBeforeTheFirstLoadGoesInFront)
{
    EXPECT_EQ(Direct().Add(&mC), 0);
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mC, &mA, &mB}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mC, &mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, SetInstanceFollowsTheSecondNodeAndStaysListed)
{
    QelLayerElementMaterial* lOther = QelLayerElementMaterial::Create(&mMesh, "other");
    ASSERT_NE(lOther, nullptr);
    QelNode lSecond("second");
    lSecond.ConnectSrcObject(&mMesh);
    lSecond.ConnectSrcObject(&mC);

    mElement->SetInstance(1);
    EXPECT_EQ(ProxyStorageOf(Direct())->GetCurrentNode(), &lSecond);
    EXPECT_EQ(mElement->GetOwner(), &mMesh);
    EXPECT_EQ(ListOf(mMesh), (Elements{lOther, mElement}));
    EXPECT_EQ(ItemsOf(Direct()), Materials{&mC});

    Direct().SetAt(0, &mA);
    EXPECT_EQ(MaterialsOf(lSecond), (Materials{&mA, &mC}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, SetOwnerFollowsTheNewOwnersNode)
{
    QelMesh lOtherMesh("other mesh");
    QelNode lOtherNode("other node");
    lOtherNode.ConnectSrcObject(&lOtherMesh);
    lOtherNode.ConnectSrcObject(&mC);

    mElement->SetOwner(&lOtherMesh, 0);
    EXPECT_TRUE(ListOf(mMesh).empty());
    EXPECT_EQ(ListOf(lOtherMesh), Elements{mElement});
    EXPECT_EQ(ProxyStorageOf(Direct())->GetCurrentNode(), &lOtherNode);
    EXPECT_EQ(ItemsOf(Direct()), Materials{&mC});
}

TEST_F(QelLayerElementMaterialTest, NoLoadFromTheNodeInWipeMode)
{
    {
        WipeModeGuard lWipe(true);
        EXPECT_EQ(Direct().GetCount(), 0);
        EXPECT_EQ(Direct().Add(&mC), 0);
        EXPECT_EQ(ItemsOf(Direct()), Materials{&mC});
        EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
    }
    EXPECT_FALSE(QelObject::GetWipeMode());
    EXPECT_EQ(ItemsOf(Direct()), Materials{&mC});
}

TEST_F(QelLayerElementMaterialTest, NoRewiringOfTheNodeInWipeMode)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    {
        WipeModeGuard lWipe(true);
        Direct().SetAt(0, &mC);
        EXPECT_EQ(Direct().GetStatus(), LockAccessStatus::eLockAccessOk);
        EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
    }
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mC, &mB}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, WithoutANodeTheArrayIsAPlainPointerArray)
{
    mElement->SetInstance(1);
    EXPECT_EQ(ProxyStorageOf(Direct())->GetCurrentNode(), nullptr);
    EXPECT_EQ(Direct().GetCount(), 0);
    EXPECT_EQ(Direct().Add(&mC), 0);
    EXPECT_EQ(Direct().Add(&mA), 1);
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mC, &mA}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
    EXPECT_EQ(mC.GetDstObjectCount<QelObject>(), 0);
}

TEST_F(QelLayerElementMaterialTest, WithoutAContainerTheArrayIsAPlainPointerArray)
{
    QelLayerElementMaterial* lLoose = QelLayerElementMaterial::Create(nullptr, "loose");
    ASSERT_NE(lLoose, nullptr);
    MaterialArray& lDirect = lLoose->GetDirectArray();
    EXPECT_EQ(ProxyStorageOf(lDirect)->GetCurrentNode(), nullptr);
    EXPECT_EQ(lDirect.GetCount(), 0);
    EXPECT_EQ(lDirect.Add(&mC), 0);
    EXPECT_EQ(ItemsOf(lDirect), Materials{&mC});
    EXPECT_EQ(mC.GetDstObjectCount<QelObject>(), 0);
    EXPECT_EQ(ListOf(mMesh), Elements{mElement});
    lLoose->Destroy();
}

TEST_F(QelLayerElementMaterialTest, LoadThatCannotGrowLeavesTheArrayEmpty)
{
    test::ReportCapture lReports;
    {
        test::AllocationFailure lFailure;
        lFailure.FailAt(1);
        EXPECT_EQ(Direct().GetCount(), 0);
        EXPECT_EQ(lFailure.Failed(), 1);
    }
    EXPECT_EQ(Storage().GetCount(), 0);
    EXPECT_TRUE(lReports.Reports().empty());
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
}

TEST_F(QelLayerElementMaterialTest, RewiringWithoutMemoryLeavesTheNodeAsItWas)
{
    ASSERT_EQ(ItemsOf(Direct()), (Materials{&mA, &mB}));
    test::ReportCapture lReports;
    {
        test::AllocationFailure lFailure;
        lFailure.FailAt(1);
        Direct().SetAt(0, &mB);
        EXPECT_EQ(lFailure.Count(), 1);
        EXPECT_EQ(lFailure.Failed(), 1);
    }
    EXPECT_EQ(lReports.Reports(),
              std::vector<test::Report>{sArrayReports.Condition("Reserve", "lArray")});
    EXPECT_EQ(ItemsOf(Direct()), (Materials{&mB, &mB}));
    EXPECT_EQ(MaterialsOf(mNode), (Materials{&mA, &mB}));
}

TEST(QelLayerElementMaterialProxy, ReferenceProxyUsesItemsOfOnePointer)
{
    Proxy lProxy(eQelReference);
    EXPECT_EQ(lProxy.GetDataType(), eQelReference);
    LayerElementArrayProxyImp* lStorage = ProxyStorageOf(lProxy);
    ASSERT_NE(lStorage, nullptr);
    EXPECT_EQ(lStorage->ItemSize(), 8);
    EXPECT_EQ(lStorage->GetCurrentNode(), nullptr);
}

TEST(QelLayerElementMaterialProxy, SetContainerFollowsTheContainersNode)
{
    InstancedMesh lScene;
    Proxy lProxy(eQelReference);
    lProxy.SetContainer(&lScene.mMesh, 0);
    EXPECT_EQ(ProxyStorageOf(lProxy)->GetCurrentNode(), &lScene.mNode);
    EXPECT_EQ(ItemsOf(lProxy), (Materials{&lScene.mA, &lScene.mB}));
}

// Items of another size cannot hold a material: the proxy leaves the node alone.
TEST(QelLayerElementMaterialProxy, ProxyOfAnotherItemSizeIsAPlainArray)
{
    InstancedMesh lScene;
    Proxy lProxy(eQelInt);
    EXPECT_EQ(StorageOf(lProxy)->ItemSize(), 4);
    lProxy.SetContainer(&lScene.mMesh, 0);
    EXPECT_EQ(ProxyStorageOf(lProxy)->GetCurrentNode(), &lScene.mNode);
    EXPECT_EQ(lProxy.GetCount(), 0);
    lProxy.AddMultiple(3);
    EXPECT_EQ(lProxy.GetCount(), 3);
    EXPECT_EQ(MaterialsOf(lScene.mNode), (Materials{&lScene.mA, &lScene.mB}));
}

TEST(QelLayerElementMaterialCreate, FailedElementAllocationIsReported)
{
    InstancedMesh lScene;
    test::ReportCapture lReports;
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(QelLayerElementMaterial::Create(&lScene.mMesh, "materials"), nullptr);
    EXPECT_EQ(lReports.Reports(),
              std::vector<test::Report>{sLayerReports.Condition("Create", "tmp != NULL")});
    EXPECT_TRUE(ListOf(lScene.mMesh).empty());
}

// Every allocation of Create, failed alone: the result is null with the owner's list
// untouched, or a whole element. The one failure an element survives is the storage
// the proxy's base constructor makes, which the proxy's own storage replaces anyway.
TEST(QelLayerElementMaterialCreate, FailedAllocationAtEveryIndexLeavesNoHalfElement)
{
    int lAllocations = 0;
    {
        InstancedMesh lScene;
        test::AllocationFailure lCounting;
        ASSERT_NE(QelLayerElementMaterial::Create(&lScene.mMesh, "materials"), nullptr);
        lAllocations = lCounting.Count();
    }
    // The element, its name, the proxy with two storages, the index array with its
    // storage, and the owner's list.
    ASSERT_GE(lAllocations, 7);

    int lMade = 0;
    for (int k = 1; k <= lAllocations; ++k) {
        SCOPED_TRACE(k);
        InstancedMesh lScene;
        test::ReportCapture lReports;
        QelLayerElementMaterial* lElement = nullptr;
        {
            test::AllocationFailure lFailure;
            lFailure.FailAt(k);
            lElement = QelLayerElementMaterial::Create(&lScene.mMesh, "materials");
            EXPECT_EQ(lFailure.Failed(), 1);
        }
        if (!lElement) {
            EXPECT_TRUE(ListOf(lScene.mMesh).empty());
            continue;
        }
        ++lMade;
        EXPECT_EQ(lReports.Reports(), std::vector<test::Report>{sLayerReports.Condition(
                                          "QelLayerElementArray", "mImplementation != NULL")});
        EXPECT_EQ(ListOf(lScene.mMesh), Elements{lElement});
        ASSERT_NE(ProxyStorageOf(lElement->GetDirectArray()), nullptr);
        EXPECT_EQ(ItemsOf(lElement->GetDirectArray()), (Materials{&lScene.mA, &lScene.mB}));
        EXPECT_EQ(lElement->GetIndexArray().GetDataType(), eQelInt);
    }
    EXPECT_EQ(lMade, 1);
}

} // namespace
} // namespace qelsdk
