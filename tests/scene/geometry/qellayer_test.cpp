#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>

#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace qelsdk {
namespace {

using test::Elements;
using test::ListOf;
using test::TestElement;

TEST(QelLayerElement, EnumeratorValues)
{
    EXPECT_EQ(QelLayerElement::eNone, 0);
    EXPECT_EQ(QelLayerElement::eByControlPoint, 1);
    EXPECT_EQ(QelLayerElement::ePerPolygonVertex, 2);
    EXPECT_EQ(QelLayerElement::ePerPolygon, 3);
    EXPECT_EQ(QelLayerElement::eByEdge, 4);
    EXPECT_EQ(QelLayerElement::eAllSame, 5);
    EXPECT_EQ(QelLayerElement::eDirect, 0);
    EXPECT_EQ(QelLayerElement::eIndex, 1);
    EXPECT_EQ(QelLayerElement::eIndexToDirect, 2);
    EXPECT_EQ(QelLayerElement::eUnknown, 0);
    EXPECT_EQ(QelLayerElement::eNormal, 1);
    EXPECT_EQ(QelLayerElement::eUV, 6);
    EXPECT_EQ(QelLayerElement::eVertexColor, 7);
    EXPECT_EQ(QelLayerElement::eUserData, 12);
    EXPECT_EQ(QelLayerElement::eVisibility, 13);
    EXPECT_EQ(QelLayerElement::eTextureDiffuse, 14);
    EXPECT_EQ(QelLayerElement::eTextureShininess, 22);
    EXPECT_EQ(QelLayerElement::eTextureTransparency, 25);
    EXPECT_EQ(QelLayerElement::eTextureVectorDisplacement, 30);
}

TEST(QelLayerElement, NewElementHasNothingSet)
{
    TestElement lElement;
    EXPECT_EQ(lElement.GetMappingMode(), QelLayerElement::eNone);
    EXPECT_EQ(lElement.GetReferenceMode(), QelLayerElement::eDirect);
    EXPECT_STREQ(lElement.GetName(), "");
    EXPECT_EQ(lElement.GetOwner(), nullptr);
    EXPECT_EQ(lElement.GetRefCount(), 0);
    EXPECT_EQ(lElement.GetDataType(), nullptr);
}

TEST(QelLayerElement, SettersStoreWithoutValidation)
{
    TestElement lElement;
    lElement.SetMappingMode(QelLayerElement::ePerPolygon);
    EXPECT_EQ(lElement.GetMappingMode(), QelLayerElement::ePerPolygon);
    lElement.SetMappingMode(static_cast<QelLayerElement::EMappingMode>(9));
    EXPECT_EQ(lElement.GetMappingMode(), 9);
    lElement.SetReferenceMode(QelLayerElement::eIndexToDirect);
    EXPECT_EQ(lElement.GetReferenceMode(), QelLayerElement::eIndexToDirect);
    lElement.SetName("normals");
    EXPECT_STREQ(lElement.GetName(), "normals");
    lElement.SetName(nullptr);
    EXPECT_STREQ(lElement.GetName(), "");
}

TEST(QelLayerElement, SetTypeKeepsThePointer)
{
    TestElement lElement;
    lElement.SetType(&QelLayerElementNormalDT);
    EXPECT_EQ(lElement.GetDataType(), &QelLayerElementNormalDT);
    lElement.SetType(nullptr);
    EXPECT_EQ(lElement.GetDataType(), nullptr);
}

TEST(QelLayerElement, BaseVirtualsHaveNoContentButTheFields)
{
    TestElement lElement;
    QelMemoryStream lStream;
    EXPECT_TRUE(lElement.Clear());
    EXPECT_EQ(lElement.MemorySize(), 0);
    lElement.SetMappingMode(QelLayerElement::ePerPolygon);
    EXPECT_TRUE(lElement.ContentWriteTo(lStream));
    const int lExpected[] = {QelLayerElement::ePerPolygon, QelLayerElement::eDirect, 0};
    ASSERT_EQ(lStream.GetSize(), 12);
    EXPECT_EQ(std::memcmp(lStream.GetData(), lExpected, 12), 0);
    TestElement lRead;
    EXPECT_TRUE(lRead.ContentReadFrom(lStream));
    EXPECT_EQ(lRead.GetMappingMode(), QelLayerElement::ePerPolygon);
}

TEST(QelLayerElement, SetOwnerRegistersWithTheContainer)
{
    QelLayerContainer lContainer("mesh");
    TestElement* lA = TestElement::Create(&lContainer);
    TestElement* lB = TestElement::Create(&lContainer);
    ASSERT_TRUE(lA && lB);
    EXPECT_EQ(lA->GetOwner(), &lContainer);
    EXPECT_EQ(ListOf(lContainer), (Elements{lA, lB}));
    // The same owner again: removed and added, so it moves to the end.
    lA->SetOwner(&lContainer, 0);
    EXPECT_EQ(ListOf(lContainer), (Elements{lB, lA}));
}

TEST(QelLayerElement, SetOwnerMovesBetweenContainersAndNullDetaches)
{
    QelLayerContainer lFirst("first"), lSecond("second");
    TestElement* lElement = TestElement::Create(&lFirst);
    ASSERT_TRUE(lElement);
    lElement->SetOwner(&lSecond, 3);
    EXPECT_EQ(lElement->GetOwner(), &lSecond);
    EXPECT_EQ(ListOf(lFirst), Elements{});
    EXPECT_EQ(ListOf(lSecond), Elements{lElement});
    lElement->SetOwner(nullptr, 0);
    EXPECT_EQ(lElement->GetOwner(), nullptr);
    EXPECT_EQ(ListOf(lSecond), Elements{});
    lElement->Destroy();
}

TEST(QelLayerElement, DestroyWithCountZeroLeavesTheOwnerAndFrees)
{
    int lDestroyed = 0;
    QelLayerContainer lContainer("mesh");
    TestElement* lKept = TestElement::Create(&lContainer);
    TestElement* lElement = TestElement::Create(&lContainer, &lDestroyed);
    ASSERT_TRUE(lKept && lElement);
    test::MemoryRecorder lRecorder;
    lElement->Destroy();
    EXPECT_EQ(lDestroyed, 1);
    EXPECT_EQ(lRecorder.TimesFreed(lElement), 1);
    EXPECT_EQ(ListOf(lContainer), Elements{lKept});
}

TEST(QelLayerElement, DestroyWithCountTwoLeavesTheOwnerAndKeepsTheElement)
{
    int lDestroyed = 0;
    QelLayerContainer lContainer("mesh");
    TestElement* lElement = TestElement::Create(&lContainer, &lDestroyed);
    ASSERT_TRUE(lElement);
    lElement->IncRefCount();
    lElement->IncRefCount();
    lElement->Destroy();
    EXPECT_EQ(lDestroyed, 0);
    EXPECT_EQ(lElement->GetRefCount(), 1);
    EXPECT_EQ(ListOf(lContainer), Elements{});
    // The owner is kept: the second Destroy asks it again to drop the element.
    EXPECT_EQ(lElement->GetOwner(), &lContainer);
    lContainer.AddToLayerElementsList(lElement);
    lElement->Destroy();
    EXPECT_EQ(lDestroyed, 1);
    EXPECT_EQ(ListOf(lContainer), Elements{});
}

TEST(QelLayerElement, DestructCountsDownToTheLastHolder)
{
    int lDestroyed = 0;
    TestElement* lElement = TestElement::Create(nullptr, &lDestroyed);
    ASSERT_TRUE(lElement);
    for (int i = 0; i < 3; ++i)
        lElement->IncRefCount();
    lElement->Destruct();
    lElement->Destruct();
    EXPECT_EQ(lDestroyed, 0);
    EXPECT_EQ(lElement->GetRefCount(), 1);
    lElement->Destruct();
    EXPECT_EQ(lDestroyed, 1);
}

TEST(QelLayerElement, CountOfOneDiesAtFirstDestruct)
{
    int lDestroyed = 0;
    TestElement* lElement = TestElement::Create(nullptr, &lDestroyed);
    ASSERT_TRUE(lElement);
    lElement->IncRefCount();
    lElement->Destruct();
    EXPECT_EQ(lDestroyed, 1);
}

TEST(QelLayerElement, DecRefCountClampsAtZero)
{
    TestElement lElement;
    EXPECT_EQ(lElement.DecRefCount(), 0);
    EXPECT_EQ(lElement.GetRefCount(), 0);
    lElement.IncRefCount();
    lElement.IncRefCount();
    EXPECT_EQ(lElement.DecRefCount(), 1);
    EXPECT_EQ(lElement.DecRefCount(), 0);
    EXPECT_EQ(lElement.DecRefCount(), 0);
}

TEST(QelLayerElement, AssignmentCopiesTheModesOnly)
{
    QelLayerContainer lContainer("mesh");
    TestElement* lTarget = TestElement::Create(&lContainer);
    ASSERT_TRUE(lTarget);
    lTarget->SetName("target");
    lTarget->SetType(&QelLayerElementUVDT);
    lTarget->IncRefCount();
    TestElement lSource;
    lSource.SetName("source");
    lSource.SetType(&QelLayerElementNormalDT);
    lSource.SetMappingMode(QelLayerElement::ePerPolygonVertex);
    lSource.SetReferenceMode(QelLayerElement::eIndexToDirect);
    // The element base's own assignment, without the test kind's counter pointer.
    static_cast<QelLayerElement&>(*lTarget) = lSource;
    EXPECT_EQ(lTarget->GetMappingMode(), QelLayerElement::ePerPolygonVertex);
    EXPECT_EQ(lTarget->GetReferenceMode(), QelLayerElement::eIndexToDirect);
    EXPECT_STREQ(lTarget->GetName(), "target");
    EXPECT_EQ(lTarget->GetDataType(), &QelLayerElementUVDT);
    EXPECT_EQ(lTarget->GetOwner(), &lContainer);
    EXPECT_EQ(lTarget->GetRefCount(), 1);
}

} // namespace
} // namespace qelsdk
