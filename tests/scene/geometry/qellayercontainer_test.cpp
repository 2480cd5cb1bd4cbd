#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>

#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Elements;
using test::ListOf;
using test::Report;
using test::ReportCapture;
using test::TestElement;

const Report kArrayFull{"include/qelsdk/core/base/qelarray", "InsertAt", false, "lArray"};

TEST(QelLayerContainer, StartsWithoutLayersOrElements)
{
    const QelLayerContainer lContainer("mesh");
    EXPECT_STREQ(lContainer.GetName(), "mesh");
    EXPECT_TRUE(lContainer.Is<QelObject>());
    EXPECT_EQ(lContainer.GetLayerCount(), 0);
    EXPECT_EQ(lContainer.GetLayer(0), nullptr);
    EXPECT_EQ(lContainer.GetLayerElementCount(), 0);
    EXPECT_EQ(lContainer.GetLayerElement(0), nullptr);
}

TEST(QelLayerContainer, CreateLayerAppendsLayers)
{
    QelLayerContainer lContainer("mesh");
    EXPECT_EQ(lContainer.CreateLayer(), 0);
    EXPECT_EQ(lContainer.CreateLayer(), 1);
    EXPECT_EQ(lContainer.CreateLayer(), 2);
    EXPECT_EQ(lContainer.GetLayerCount(), 3);
    QelLayer* lFirst = lContainer.GetLayer(0);
    ASSERT_NE(lFirst, nullptr);
    EXPECT_NE(lContainer.GetLayer(1), nullptr);
    EXPECT_NE(lContainer.GetLayer(1), lFirst);
    EXPECT_NE(lContainer.GetLayer(2), lContainer.GetLayer(1));
    EXPECT_EQ(lContainer.GetLayer(3), nullptr);
    EXPECT_EQ(lContainer.GetLayer(-1), nullptr);
    const QelLayerContainer& lConst = lContainer;
    EXPECT_EQ(lConst.GetLayer(0), lFirst);
    EXPECT_EQ(lConst.GetLayer(3), nullptr);
    EXPECT_EQ(lConst.GetLayer(-1), nullptr);
}

TEST(QelLayerContainer, CreateLayerRefusesWhenTheLayerCannotBeAllocated)
{
    QelLayerContainer lContainer("mesh");
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    EXPECT_EQ(lContainer.CreateLayer(), -1);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lContainer.GetLayerCount(), 0);
    EXPECT_TRUE(lReports.Reports().empty());
}

TEST(QelLayerContainer, CreateLayerRefusesWhenTheListCannotGrow)
{
    QelLayerContainer lContainer("mesh");
    ASSERT_EQ(lContainer.CreateLayer(), 0);
    const QelLayer* lFirst = lContainer.GetLayer(0);
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(2);
    // The layer made for the refused slot is freed again (the leak check sees it).
    EXPECT_EQ(lContainer.CreateLayer(), -1);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), std::vector<Report>{kArrayFull});
    EXPECT_EQ(lContainer.GetLayerCount(), 1);
    EXPECT_EQ(lContainer.GetLayer(0), lFirst);
}

TEST(QelLayerContainer, ElementListKeepsOrderAndNoDuplicates)
{
    QelLayerContainer lContainer("mesh");
    TestElement* lA = TestElement::Create(nullptr);
    TestElement* lB = TestElement::Create(nullptr);
    ASSERT_TRUE(lA && lB);
    lContainer.AddToLayerElementsList(lA);
    lContainer.AddToLayerElementsList(lB);
    lContainer.AddToLayerElementsList(lA);
    lContainer.AddToLayerElementsList(nullptr);
    EXPECT_EQ(ListOf(lContainer), (Elements{lA, lB}));
    EXPECT_EQ(lContainer.GetLayerElement(2), nullptr);
    EXPECT_EQ(lContainer.GetLayerElement(-1), nullptr);
    lContainer.RemoveFromLayerElementsList(lA);
    lContainer.RemoveFromLayerElementsList(lA);
    lContainer.RemoveFromLayerElementsList(nullptr);
    EXPECT_EQ(ListOf(lContainer), Elements{lB});
    lA->Destroy();
}

TEST(QelLayerContainer, ElementListUnchangedWhenItCannotGrow)
{
    int lDestroyed = 0;
    TestElement* lElement = TestElement::Create(nullptr, &lDestroyed);
    ASSERT_TRUE(lElement);
    {
        QelLayerContainer lContainer("mesh");
        ReportCapture lReports;
        AllocationFailure lFailure;
        lFailure.FailAt(1);
        lContainer.AddToLayerElementsList(lElement);
        EXPECT_EQ(lFailure.Failed(), 1);
        EXPECT_EQ(lReports.Reports(), std::vector<Report>{kArrayFull});
        EXPECT_EQ(lContainer.GetLayerElementCount(), 0);
    }
    // Not listed, so the container left it alone.
    EXPECT_EQ(lDestroyed, 0);
    lElement->Destroy();
    EXPECT_EQ(lDestroyed, 1);
}

TEST(QelLayerContainer, DestructorFreesListedElementsWhateverTheirCount)
{
    int lDestroyed = 0;
    {
        QelLayerContainer lContainer("mesh");
        lContainer.CreateLayer();
        lContainer.CreateLayer();
        TestElement* lPlain = TestElement::Create(&lContainer, &lDestroyed);
        TestElement* lHeld = TestElement::Create(&lContainer, &lDestroyed);
        ASSERT_TRUE(lPlain && lHeld);
        lHeld->IncRefCount();
        lHeld->IncRefCount();
        EXPECT_EQ(lContainer.GetLayerElementCount(), 2);
    }
    EXPECT_EQ(lDestroyed, 2);
}

TEST(QelLayerContainer, DestructorLeavesUnlistedElementsToTheirHolder)
{
    int lDestroyed = 0;
    TestElement* lElement = nullptr;
    {
        QelLayerContainer lContainer("mesh");
        lElement = TestElement::Create(&lContainer, &lDestroyed);
        ASSERT_TRUE(lElement);
        lElement->IncRefCount();
        lElement->IncRefCount();
        lElement->Destroy();
        EXPECT_EQ(lContainer.GetLayerElementCount(), 0);
    }
    EXPECT_EQ(lDestroyed, 0);
    EXPECT_EQ(lElement->GetRefCount(), 1);
    // Its owner is gone, so only Destruct, which does not look at the owner, is safe.
    lElement->Destruct();
    EXPECT_EQ(lDestroyed, 1);
}

} // namespace
} // namespace qelsdk
