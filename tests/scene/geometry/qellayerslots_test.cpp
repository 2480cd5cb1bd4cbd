// The layer: its slots, creation by kind, UV sets, clear, clone and memory usage.
#include <qelsdk/scene/geometry/qellayer.h>

#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <qelsdk/scene/geometry/qelmesh.h>

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::ListOf;
using test::Report;
using test::ReportCapture;
typedef QelLayerElement Element;

const test::FileReports kSource{"src/qelsdk/scene/geometry/qellayer"};

Element::EType Kind(int pValue) { return static_cast<Element::EType>(pValue); }

// A mesh with one layer.
struct LayerTest : testing::Test
{
    LayerTest() : mMesh("mesh") { mLayer = mMesh.GetLayer(mMesh.CreateLayer()); }
    QelMesh mMesh;
    QelLayer* mLayer;
};

TEST_F(LayerTest, NewLayerIsEmpty)
{
    for (int lKind = -1; lKind <= 32; ++lKind) {
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind), false), nullptr) << lKind;
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind), true), nullptr) << lKind;
    }
    EXPECT_EQ(mLayer->GetUVSetCount(), 0);
    EXPECT_EQ(mLayer->GetUVSets().Size(), 0);
    EXPECT_EQ(mLayer->GetUVSetChannels().Size(), 0);
    EXPECT_EQ(mLayer->MemoryUsage(), static_cast<int>(sizeof(QelLayer)));
}

TEST_F(LayerTest, TypedSettersStoreAndDoNothingElse)
{
    QelLayerElementNormal* lNormals = QelLayerElementNormal::Create(&mMesh, "n");
    QelLayerElementHole* lHoles = QelLayerElementHole::Create(&mMesh, "h");
    mLayer->SetNormals(lNormals);
    mLayer->SetHole(lHoles);
    mLayer->SetEdgeCrease(nullptr);
    EXPECT_EQ(mLayer->GetNormals(), lNormals);
    EXPECT_EQ(static_cast<const QelLayer*>(mLayer)->GetHole(), lHoles);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eNormal), lNormals);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eHole), lHoles);
    QelLayerElementNormal* lOther = QelLayerElementNormal::Create(&mMesh, "m");
    mLayer->SetNormals(lOther);
    EXPECT_EQ(mLayer->GetNormals(), lOther);
    EXPECT_EQ(ListOf(mMesh), (test::Elements{lNormals, lHoles, lOther}));
}

TEST_F(LayerTest, DiffuseUVsAreAlsoTheUVSlot)
{
    QelLayerElementUV* lDiffuse = QelLayerElementUV::Create(&mMesh, "d");
    QelLayerElementUV* lBump = QelLayerElementUV::Create(&mMesh, "b");
    mLayer->SetUVs(lDiffuse);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eUV), lDiffuse);
    EXPECT_EQ(mLayer->GetUVs(Element::eTextureDiffuse), lDiffuse);
    mLayer->SetUVs(lBump, Element::eTextureBump);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eUV), lDiffuse);
    EXPECT_EQ(mLayer->GetUVs(Element::eTextureBump), lBump);
    mLayer->SetUVs(lBump, Element::eNormal);
    mLayer->SetUVs(lBump, Kind(31));
    EXPECT_EQ(mLayer->GetUVSetCount(), 2);
}

TEST_F(LayerTest, SettingTheUVKindTouchesOnlyItsSlot)
{
    QelLayerElementUV* lDiffuse = QelLayerElementUV::Create(&mMesh, "d");
    QelLayerElementUV* lOther = QelLayerElementUV::Create(&mMesh, "o");
    mLayer->SetUVs(lDiffuse);
    mLayer->SetLayerElementOfType(lOther, Element::eUV);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eUV), lOther);
    EXPECT_EQ(mLayer->GetUVs(Element::eTextureDiffuse), lDiffuse);
    EXPECT_EQ(mLayer->GetUVSetCount(), 1);
    mLayer->SetLayerElementOfType(lOther, Element::eTextureDiffuse, true);
    EXPECT_EQ(mLayer->GetUVs(), lOther);
    mLayer->SetLayerElementOfType(lDiffuse, Element::eUV);
    mLayer->SetLayerElementOfType(lDiffuse, Kind(0));
    mLayer->SetLayerElementOfType(lDiffuse, Kind(31));
    EXPECT_EQ(mLayer->GetUVs(), lOther);
}

TEST_F(LayerTest, SettingATextureByKindNeitherCountsNorTypes)
{
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(&mMesh, "t");
    mLayer->SetLayerElementOfType(lTexture, Element::eTextureBump);
    EXPECT_EQ(mLayer->GetTextures(Element::eTextureBump), lTexture);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 0);
    EXPECT_EQ(test::ElementFields::TypeOf(*lTexture), &QelLayerElementTextureDT);
}

TEST_F(LayerTest, PIsUVIsIgnoredForNonTextureKinds)
{
    QelLayerElement* lNormals = mLayer->CreateLayerElementOfType(Element::eNormal);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eNormal, true), lNormals);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eNormal, false), lNormals);
}

TEST_F(LayerTest, ChannelAccessorsRefuseOtherKinds)
{
    mLayer->CreateLayerElementOfType(Element::eVisibility);
    EXPECT_EQ(mLayer->GetUVs(Element::eVisibility), nullptr);
    EXPECT_EQ(mLayer->GetUVs(Kind(31)), nullptr);
    EXPECT_EQ(mLayer->GetTextures(Kind(0)), nullptr);
    EXPECT_EQ(mLayer->GetTextures(Element::eVisibility), nullptr);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(0)), nullptr);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(31)), nullptr);
    EXPECT_EQ(mLayer->CreateLayerElementOfType(Kind(0)), nullptr);
    EXPECT_EQ(mLayer->CreateLayerElementOfType(Kind(31)), nullptr);
}

TEST_F(LayerTest, CreatesEveryKindInItsSlot)
{
    const std::vector<int> lKinds = {1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 13};
    for (int lKind : lKinds) {
        QelLayerElement* lElement = mLayer->CreateLayerElementOfType(Kind(lKind));
        ASSERT_NE(lElement, nullptr) << lKind;
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind)), lElement);
        EXPECT_STREQ(lElement->GetName(), "");
        EXPECT_EQ(lElement->GetOwner(), &mMesh);
    }
    EXPECT_NE(dynamic_cast<QelLayerElementMaterial*>(mLayer->GetMaterials()), nullptr);
    EXPECT_NE(mLayer->GetVertexCrease(), mLayer->GetEdgeCrease());
    EXPECT_NE(dynamic_cast<QelLayerElementCrease*>(mLayer->GetVertexCrease()), nullptr);
    EXPECT_NE(dynamic_cast<QelLayerElementCrease*>(mLayer->GetEdgeCrease()), nullptr);
    EXPECT_EQ(ListOf(mMesh).size(), lKinds.size());
}

TEST_F(LayerTest, UserDataCannotBeCreated)
{
    ReportCapture lCapture;
    EXPECT_EQ(mLayer->CreateLayerElementOfType(Element::eUserData), nullptr);
    EXPECT_EQ(lCapture.Reports(), std::vector<Report>{kSource.Message("CreateLayerElementOfType",
                                                                      "Need to be implemented!")});
    EXPECT_TRUE(ListOf(mMesh).empty());
}

TEST_F(LayerTest, DiffuseUVCreationFillsBothSlots)
{
    QelLayerElement* lFromChannel =
        mLayer->CreateLayerElementOfType(Element::eTextureDiffuse, true);
    ASSERT_NE(lFromChannel, nullptr);
    EXPECT_EQ(mLayer->GetUVs(), lFromChannel);
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eUV), lFromChannel);

    QelMesh lMesh("other");
    QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
    QelLayerElement* lFromKind = lLayer->CreateLayerElementOfType(Element::eUV);
    ASSERT_NE(lFromKind, nullptr);
    EXPECT_EQ(lLayer->GetUVs(), lFromKind);
    EXPECT_EQ(lLayer->GetLayerElementOfType(Element::eUV), lFromKind);
    EXPECT_NE(dynamic_cast<QelLayerElementUV*>(lFromKind), nullptr);
}

TEST_F(LayerTest, CreatedTexturesAreNeitherCountedNorTyped)
{
    QelLayerElement* lTexture = mLayer->CreateLayerElementOfType(Element::eTextureSpecular);
    ASSERT_NE(lTexture, nullptr);
    EXPECT_EQ(mLayer->GetTextures(Element::eTextureSpecular), lTexture);
    EXPECT_EQ(mLayer->GetUVs(Element::eTextureSpecular), nullptr);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 0);
    EXPECT_EQ(test::ElementFields::TypeOf(*lTexture), &QelLayerElementTextureDT);
}

TEST_F(LayerTest, CreatingOverAnOccupiedSlotReportsAndKeepsTheOldElement)
{
    QelLayerElement* lNormals = mLayer->CreateLayerElementOfType(Element::eNormal);
    QelLayerElement* lUVs = mLayer->CreateLayerElementOfType(Element::eTextureBump, true);
    QelLayerElement* lTexture = mLayer->CreateLayerElementOfType(Element::eTextureBump);
    ReportCapture lCapture;
    QelLayerElement* lNewNormals = mLayer->CreateLayerElementOfType(Element::eNormal);
    QelLayerElement* lNewUVs = mLayer->CreateLayerElementOfType(Element::eTextureBump, true);
    QelLayerElement* lNewTexture = mLayer->CreateLayerElementOfType(Element::eTextureBump);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{
                  kSource.Condition("CreateLayerElementOfType", "lNonTextureElement == NULL"),
                  kSource.Condition("CreateLayerElementOfType", "lUVElement == NULL"),
                  kSource.Condition("CreateLayerElementOfType", "lTextureElement == NULL")}));
    EXPECT_NE(lNewNormals, lNormals);
    EXPECT_EQ(mLayer->GetNormals(), lNewNormals);
    EXPECT_EQ(mLayer->GetUVs(Element::eTextureBump), lNewUVs);
    EXPECT_EQ(mLayer->GetTextures(Element::eTextureBump), lNewTexture);
    EXPECT_EQ(ListOf(mMesh),
              (test::Elements{lNormals, lUVs, lTexture, lNewNormals, lNewUVs, lNewTexture}));
}

TEST_F(LayerTest, UVSetsInChannelOrder)
{
    QelLayerElement* lLast = mLayer->CreateLayerElementOfType(Kind(30), true);
    QelLayerElement* lFirst = mLayer->CreateLayerElementOfType(Kind(14), true);
    QelLayerElement* lMiddle = mLayer->CreateLayerElementOfType(Kind(20), true);
    mLayer->CreateLayerElementOfType(Kind(22)); // a texture, not a UV set
    EXPECT_EQ(mLayer->GetUVSetCount(), 3);
    const QelArray<const QelLayerElementUV*> lSets = mLayer->GetUVSets();
    ASSERT_EQ(lSets.Size(), 3);
    EXPECT_EQ(lSets[0], lFirst);
    EXPECT_EQ(lSets[1], lMiddle);
    EXPECT_EQ(lSets[2], lLast);
    const QelArray<Element::EType> lChannels = mLayer->GetUVSetChannels();
    ASSERT_EQ(lChannels.Size(), 3);
    EXPECT_EQ(lChannels[0], 14);
    EXPECT_EQ(lChannels[1], 20);
    EXPECT_EQ(lChannels[2], 30);
}

TEST_F(LayerTest, SetTexturesCountsAndTypesEachTime)
{
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(&mMesh, "t");
    mLayer->SetTextures(Element::eTextureEmissive, lTexture);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 1);
    EXPECT_EQ(test::ElementFields::TypeOf(*lTexture), &Element::sTextureDataTypes[2]);
    mLayer->SetTextures(Element::eTextureEmissive, lTexture);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 2);
    mLayer->SetTextures(Element::eTextureEmissive, nullptr);
    EXPECT_EQ(mLayer->GetTextures(Element::eTextureEmissive), nullptr);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 2);
}

// A kind outside the channels names no slot: the texture is not stored, counted or
// typed.
TEST_F(LayerTest, SetTexturesOutsideTheChannelsChangesNothing)
{
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(&mMesh, "t");
    mLayer->SetTextures(Element::eNormal, lTexture);
    mLayer->SetTextures(Kind(31), lTexture);
    mLayer->SetTextures(Kind(-100), lTexture);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 0);
    for (int lKind = 0; lKind <= 31; ++lKind)
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind)), nullptr) << lKind;
}

// --- Lifecycle -----------------------------------------------------------------------------

TEST_F(LayerTest, MemoryUsageCountsNonTextureElementsTwiceAndTheDiffuseUVThrice)
{
    auto* lNormals =
        static_cast<QelLayerElementNormal*>(mLayer->CreateLayerElementOfType(Element::eNormal));
    lNormals->GetDirectArray().Resize(10);
    const int lNormalSize = lNormals->MemorySize();
    EXPECT_EQ(lNormalSize, 320);
    EXPECT_EQ(mLayer->MemoryUsage(), static_cast<int>(sizeof(QelLayer)) + 2 * lNormalSize);

    QelMesh lMesh("other");
    QelLayer* lLayer = lMesh.GetLayer(lMesh.CreateLayer());
    auto* lUVs = static_cast<QelLayerElementUV*>(lLayer->CreateLayerElementOfType(Element::eUV));
    lUVs->GetDirectArray().Resize(3);
    EXPECT_EQ(lLayer->MemoryUsage(), static_cast<int>(sizeof(QelLayer)) + 3 * 48);
}

TEST_F(LayerTest, ClearDestroysEverythingButTheUVSlot)
{
    for (int lKind : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13})
        mLayer->CreateLayerElementOfType(Kind(lKind));
    for (int lKind = 15; lKind <= 30; ++lKind) {
        mLayer->CreateLayerElementOfType(Kind(lKind), true);
        mLayer->CreateLayerElementOfType(Kind(lKind));
    }
    QelLayerElement* lUVSlot = mLayer->GetLayerElementOfType(Element::eUV);
    ASSERT_NE(lUVSlot, nullptr);
    ASSERT_EQ(ListOf(mMesh).size(), 11u + 1u + 32u);
    mLayer->Clear();
    EXPECT_TRUE(ListOf(mMesh).empty());
    for (int lKind = 1; lKind <= 30; ++lKind) {
        if (lKind == Element::eUV) continue;
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind), false), nullptr) << lKind;
        EXPECT_EQ(mLayer->GetLayerElementOfType(Kind(lKind), true), nullptr) << lKind;
    }
    EXPECT_EQ(mLayer->GetLayerElementOfType(Element::eUV), lUVSlot);
    // The layer itself no longer reaches the destroyed element.
    EXPECT_EQ(mLayer->MemoryUsage(), static_cast<int>(sizeof(QelLayer)));
}

// A texture that SetTextures counted survives its Destroy: emptied and unlisted.
TEST_F(LayerTest, ClearEmptiesACountedTextureAndLeavesItAlive)
{
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(&mMesh, "t");
    lTexture->GetIndexArray().Add(3);
    mLayer->SetTextures(Element::eTextureBump, lTexture);
    mLayer->SetTextures(Element::eTextureBump, lTexture);
    mLayer->Clear();
    EXPECT_EQ(mLayer->GetTextures(Element::eTextureBump), nullptr);
    EXPECT_TRUE(ListOf(mMesh).empty());
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTexture), 1);
    EXPECT_EQ(lTexture->GetIndexArray().GetCount(), 0);
    lTexture->Destroy();
}

// One element in two slots is destroyed once.
TEST_F(LayerTest, ClearDestroysASharedElementOnce)
{
    QelLayerElementUV* lUVs = QelLayerElementUV::Create(&mMesh, "uv");
    mLayer->SetUVs(lUVs, Element::eTextureBump);
    mLayer->SetUVs(lUVs, Element::eTextureSpecular);
    mLayer->Clear();
    EXPECT_EQ(mLayer->GetUVSetCount(), 0);
    EXPECT_TRUE(ListOf(mMesh).empty());
}

TEST_F(LayerTest, DestroyingALayerLeavesItsElementsAlive)
{
    QelLayerElement* lNormals = nullptr;
    {
        QelLayer lLayer(mMesh);
        lNormals = lLayer.CreateLayerElementOfType(Element::eNormal);
    }
    EXPECT_EQ(ListOf(mMesh), test::Elements{lNormals});
    EXPECT_STREQ(lNormals->GetName(), "");
}

TEST_F(LayerTest, CloneMakesDistinctEqualElementsForThisContainer)
{
    QelLayerElementNormal* lNormals = QelLayerElementNormal::Create(&mMesh, "n");
    lNormals->SetMappingMode(Element::ePerPolygonVertex);
    lNormals->GetDirectArray().Add(QelVector4(1, 2, 3, 0));
    mLayer->SetNormals(lNormals);
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(&mMesh, "t");
    lTexture->SetTextureFactor(0.5);
    mLayer->SetTextures(Element::eTextureBump, lTexture);

    QelMesh lTarget("target");
    QelLayer* lCopy = lTarget.GetLayer(lTarget.CreateLayer());
    lCopy->Clone(*mLayer);
    QelLayerElementNormal* lCopied = lCopy->GetNormals();
    ASSERT_NE(lCopied, nullptr);
    EXPECT_NE(lCopied, lNormals);
    EXPECT_STREQ(lCopied->GetName(), "n");
    EXPECT_EQ(lCopied->GetOwner(), &lTarget);
    EXPECT_EQ(lCopied->GetMappingMode(), Element::ePerPolygonVertex);
    EXPECT_TRUE(lCopied->GetDirectArray().IsEqual(lNormals->GetDirectArray()));
    QelLayerElementTexture* lTextureCopy = lCopy->GetTextures(Element::eTextureBump);
    ASSERT_NE(lTextureCopy, nullptr);
    EXPECT_EQ(lTextureCopy->GetTextureFactor(), 0.5);
    EXPECT_EQ(test::ElementFields::RefCountOf(*lTextureCopy), 0);
    EXPECT_EQ(ListOf(lTarget), (test::Elements{lCopied, lTextureCopy}));
}

TEST_F(LayerTest, CloneAimsTheUVSlotAtTheNewDiffuseUVs)
{
    mLayer->CreateLayerElementOfType(Element::eTextureDiffuse, true);
    mLayer->CreateLayerElementOfType(Element::eTextureSpecular, true);
    QelMesh lTarget("target");
    QelLayer* lCopy = lTarget.GetLayer(lTarget.CreateLayer());
    lCopy->Clone(*mLayer);
    ASSERT_NE(lCopy->GetUVs(Element::eTextureDiffuse), nullptr);
    ASSERT_NE(lCopy->GetUVs(Element::eTextureSpecular), nullptr);
    EXPECT_NE(lCopy->GetUVs(), mLayer->GetUVs());
    EXPECT_EQ(lCopy->GetLayerElementOfType(Element::eUV), lCopy->GetUVs());
    EXPECT_EQ(ListOf(lTarget).size(), 2u);
}

TEST_F(LayerTest, CloneSkipsAnUVSlotThatIsNotTheDiffuseUVs)
{
    QelLayerElementUV* lStray = QelLayerElementUV::Create(&mMesh, "stray");
    mLayer->SetLayerElementOfType(lStray, Element::eUV);
    QelMesh lTarget("target");
    QelLayer* lCopy = lTarget.GetLayer(lTarget.CreateLayer());
    lCopy->Clone(*mLayer);
    EXPECT_EQ(lCopy->GetLayerElementOfType(Element::eUV), nullptr);
    EXPECT_TRUE(ListOf(lTarget).empty());
}

// User data copies through its copying factory and then takes the source's name.
TEST_F(LayerTest, CloneCopiesUserDataWithItsName)
{
    QelArray<QelDataType> lTypes;
    lTypes.Add(QelDoubleDT);
    QelArray<const char*> lNames;
    lNames.Add("height");
    QelLayerElementUserData* lUserData =
        QelLayerElementUserData::Create(&mMesh, "user", 3, lTypes, lNames);
    ASSERT_NE(lUserData, nullptr);
    QelGetDirectArray<double>(lUserData, 0).Add(2.5);
    mLayer->SetUserData(lUserData);
    QelMesh lTarget("target");
    QelLayer* lCopy = lTarget.GetLayer(lTarget.CreateLayer());
    lCopy->Clone(*mLayer);
    QelLayerElementUserData* lCopied = lCopy->GetUserData();
    ASSERT_NE(lCopied, nullptr);
    EXPECT_NE(lCopied, lUserData);
    EXPECT_STREQ(lCopied->GetName(), "user");
    EXPECT_EQ(lCopied->GetOwner(), &lTarget);
    EXPECT_EQ(QelGetDirectArray<double>(lCopied, 0).GetAt(0), 2.5);
    EXPECT_NE(lCopied->GetDirectArrayVoid(0), lUserData->GetDirectArrayVoid(0));
}

} // namespace
} // namespace qelsdk
