#include <qelsdk/scene/geometry/qellayerelement.h>

#include "support/qeltestelement.h"
#include "support/qeltestsupport.h"

#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::ListOf;
using test::Report;
using test::ReportCapture;
typedef QelLayerElement Element;
typedef LockAccessStatus Status;

const test::FileReports kHeader{"include/qelsdk/scene/geometry/qellayer"};
const test::FileReports kSource{"src/qelsdk/scene/geometry/qellayer"};

// --- Static tables ------------------------------------------------------------------------

// Copied while this program's statics are initialised, which may come before or after
// those of the library: the tables must already hold their values.
struct EarlyCopy
{
    EarlyCopy()
        : mNormal(Element::sNonTextureNames[0]), mEmissive(Element::sTextureNames[2]),
          mDiffuseUV(Element::sTextureUVNames[0]), mChannel(Element::sTextureChannelNames[16]),
          mType(Element::sTextureDataTypes[16])
    {
    }
    const char* mNormal;
    const char* mEmissive;
    const char* mDiffuseUV;
    const char* mChannel;
    QelDataType mType;
};
const EarlyCopy sEarlyCopy;

TEST(QelLayerElementTables, FilledBeforeOtherStaticsRead)
{
    ASSERT_NE(sEarlyCopy.mNormal, nullptr);
    EXPECT_STREQ(sEarlyCopy.mNormal, "LayerElementNormal");
    EXPECT_STREQ(sEarlyCopy.mEmissive, "LayerElementEmissive_Textures");
    EXPECT_STREQ(sEarlyCopy.mDiffuseUV, "LayerElementUV");
    EXPECT_EQ(sEarlyCopy.mChannel, QelSurfaceMaterial::sVectorDisplacementColor);
    EXPECT_EQ(sEarlyCopy.mType, QelMaterialVectorDisplacementDT);
}

TEST(QelLayerElementTables, NonTextureNames)
{
    const std::vector<std::string> lExpected = {
        "LayerElementNormal",     "LayerElementBinormal",     "LayerElementTangent",
        "LayerElementMaterial",   "LayerElementPolygonGroup", "LayerElementUV",
        "LayerElementColor",      "LayerElementSmoothing",    "LayerElementVertexCrease",
        "LayerElementEdgeCrease", "LayerElementHole",         "LayerElementUserData",
        "LayerElementVisibility"};
    EXPECT_EQ(std::vector<std::string>(Element::sNonTextureNames, Element::sNonTextureNames + 13),
              lExpected);
    EXPECT_STREQ(Element::sNonTextureNames[Element::eVertexColor - 1], "LayerElementColor");
}

TEST(QelLayerElementTables, TextureNames)
{
    const std::vector<std::string> lExpected = {"LayerElementTexture",
                                                "LayerElementDiffuseFactorTextures",
                                                "LayerElementEmissive_Textures",
                                                "LayerElementEmissiveFactorTextures",
                                                "LayerElementAmbientTextures",
                                                "LayerElementAmbientFactorTextures",
                                                "LayerElementSpecularTextures",
                                                "LayerElementSpecularFactorTextures",
                                                "LayerElementShininessTextures",
                                                "LayerElementNormalMapTextures",
                                                "LayerElementBumpTextures",
                                                "LayerElementTransparentTextures",
                                                "LayerElementTransparencyFactorTextures",
                                                "LayerElementReflectionTextures",
                                                "LayerElementReflectionFactorTextures",
                                                "LayerElementDisplacementTextures",
                                                "LayerElementVectorDisplacementTextures"};
    EXPECT_EQ(std::vector<std::string>(Element::sTextureNames, Element::sTextureNames + 17),
              lExpected);
}

TEST(QelLayerElementTables, TextureUVNames)
{
    const std::vector<std::string> lExpected = {"LayerElementUV",
                                                "LayerElementDiffuseFactorUV",
                                                "LayerElementEmissiveUV",
                                                "LayerElementEmissiveFactorUV",
                                                "LayerElementAmbientUV",
                                                "LayerElementAmbientFactorUV",
                                                "LayerElementSpecularUV",
                                                "LayerElementSpecularFactorUV",
                                                "LayerElementShininessUV",
                                                "LayerElementNormalMapUV",
                                                "LayerElementBumpUV",
                                                "LayerElementTransparentUV",
                                                "LayerElementTransparencyFactorUV",
                                                "LayerElementReflectionUV",
                                                "LayerElementReflectionFactorUV",
                                                "LayerElementDisplacementUV",
                                                "LayerElementVectorDisplacementUV"};
    EXPECT_EQ(std::vector<std::string>(Element::sTextureUVNames, Element::sTextureUVNames + 17),
              lExpected);
    EXPECT_STREQ(Element::sNonTextureNames[Element::eUV - 1], Element::sTextureUVNames[0]);
}

TEST(QelLayerElementTables, ChannelNamesAreTheMaterialConstants)
{
    const char* const lExpected[17] = {QelSurfaceMaterial::sDiffuse,
                                       QelSurfaceMaterial::sDiffuseFactor,
                                       QelSurfaceMaterial::sEmissive,
                                       QelSurfaceMaterial::sEmissiveFactor,
                                       QelSurfaceMaterial::sAmbient,
                                       QelSurfaceMaterial::sAmbientFactor,
                                       QelSurfaceMaterial::sSpecular,
                                       QelSurfaceMaterial::sSpecularFactor,
                                       QelSurfaceMaterial::sShininess,
                                       QelSurfaceMaterial::sNormalMap,
                                       QelSurfaceMaterial::sBump,
                                       QelSurfaceMaterial::sTransparentColor,
                                       QelSurfaceMaterial::sTransparencyFactor,
                                       QelSurfaceMaterial::sReflection,
                                       QelSurfaceMaterial::sReflectionFactor,
                                       QelSurfaceMaterial::sDisplacementColor,
                                       QelSurfaceMaterial::sVectorDisplacementColor};
    for (int i = 0; i < 17; ++i)
        EXPECT_EQ(Element::sTextureChannelNames[i], lExpected[i]) << i;
}

TEST(QelLayerElementTables, DataTypesAreCopiesOfTheChannelConstants)
{
    const QelDataType* const lExpected[17] = {&QelMaterialDiffuseDT,
                                              &QelMaterialDiffuseFactorDT,
                                              &QelMaterialEmissiveDT,
                                              &QelMaterialEmissiveFactorDT,
                                              &QelMaterialAmbientDT,
                                              &QelMaterialAmbientFactorDT,
                                              &QelMaterialSpecularDT,
                                              &QelMaterialSpecularFactorDT,
                                              &QelMaterialShininessDT,
                                              &QelMaterialNormalMapDT,
                                              &QelMaterialBumpDT,
                                              &QelMaterialTransparentColorDT,
                                              &QelMaterialTransparencyFactorDT,
                                              &QelMaterialReflectionDT,
                                              &QelMaterialReflectionFactorDT,
                                              &QelMaterialDisplacementDT,
                                              &QelMaterialVectorDisplacementDT};
    for (int i = 0; i < 17; ++i) {
        EXPECT_EQ(Element::sTextureDataTypes[i], *lExpected[i]) << i;
        EXPECT_NE(&Element::sTextureDataTypes[i], lExpected[i]) << i;
        EXPECT_EQ(Element::sTextureDataTypes[i].GetType(), eQelReference) << i;
    }
}

// --- Kinds and their factories -----------------------------------------------------------------

// One kind: its factory, its data type and its starting reference mode.
struct Kind
{
    const char* mName;
    Element* (*mCreate)(QelLayerContainer*, const char*);
    const QelDataType* mType;
    Element::EReferenceMode mReferenceMode;
    int mValueSize;
};

template <class TKind> Element* CreateKind(QelLayerContainer* pOwner, const char* pName)
{
    return TKind::Create(pOwner, pName);
}

const Kind kKinds[] = {
    {"Normal", CreateKind<QelLayerElementNormal>, &QelLayerElementNormalDT, Element::eDirect, 32},
    {"Binormal", CreateKind<QelLayerElementBinormal>, &QelLayerElementBinormalDT, Element::eDirect,
     32},
    {"Tangent", CreateKind<QelLayerElementTangent>, &QelLayerElementTangentDT, Element::eDirect,
     32},
    {"PolygonGroup", CreateKind<QelLayerElementPolygonGroup>, &QelLayerElementPolygonGroupDT,
     Element::eDirect, 4},
    {"UV", CreateKind<QelLayerElementUV>, &QelLayerElementUVDT, Element::eDirect, 16},
    {"VertexColor", CreateKind<QelLayerElementVertexColor>, &QelLayerElementVertexColorDT,
     Element::eDirect, 32},
    {"Smoothing", CreateKind<QelLayerElementSmoothing>, &QelLayerElementSmoothingDT,
     Element::eDirect, 4},
    {"Crease", CreateKind<QelLayerElementCrease>, &QelLayerElementCreaseDT, Element::eDirect, 8},
    {"Hole", CreateKind<QelLayerElementHole>, &QelLayerElementHoleDT, Element::eDirect, 1},
    {"Visibility", CreateKind<QelLayerElementVisibility>, &QelLayerElementVisibilityDT,
     Element::eDirect, 1},
    {"Texture", CreateKind<QelLayerElementTexture>, &QelLayerElementTextureDT,
     Element::eIndexToDirect, 8},
};

void PrintTo(const Kind& pKind, std::ostream* pStream) { *pStream << pKind.mName; }

class ElementKind : public testing::TestWithParam<Kind>
{
};

typedef test::ElementFields Fields;

TEST_P(ElementKind, CreateNamesTypesAllocatesAndRegisters)
{
    const Kind lKind = GetParam();
    QelMesh lMesh("mesh");
    Element* lElement = lKind.mCreate(&lMesh, "channel");
    ASSERT_NE(lElement, nullptr);
    EXPECT_STREQ(lElement->GetName(), "channel");
    EXPECT_EQ(Fields::TypeOf(*lElement), lKind.mType);
    EXPECT_EQ(lElement->GetMappingMode(), Element::eNone);
    EXPECT_EQ(lElement->GetReferenceMode(), lKind.mReferenceMode);
    EXPECT_EQ(lElement->GetOwner(), &lMesh);
    EXPECT_EQ(Fields::RefCountOf(*lElement), 0);
    EXPECT_EQ(ListOf(lMesh), test::Elements{lElement});
    lElement->Destroy();
    EXPECT_TRUE(ListOf(lMesh).empty());
}

TEST_P(ElementKind, NullOwnerLeavesTheElementInNoList)
{
    QelMesh lMesh("mesh");
    Element* lElement = GetParam().mCreate(nullptr, "free");
    ASSERT_NE(lElement, nullptr);
    EXPECT_EQ(lElement->GetOwner(), nullptr);
    EXPECT_TRUE(ListOf(lMesh).empty());
    lElement->Destroy();
}

// Every allocation of Create, failed alone: either the element comes out whole and
// registered, or Create gives null and the container's list is as it was.
TEST_P(ElementKind, EveryFailedAllocationGivesNullAndRegistersNothing)
{
    const Kind lKind = GetParam();
    int lAllocations = 0;
    {
        QelMesh lMesh("mesh");
        AllocationFailure lFailure;
        Element* lElement = lKind.mCreate(&lMesh, "channel");
        lAllocations = lFailure.Count();
        ASSERT_NE(lElement, nullptr);
    }
    ASSERT_GE(lAllocations, 6); // element, name, two arrays with their storage, the list
    for (int k = 1; k <= lAllocations; ++k) {
        QelMesh lMesh("mesh");
        ReportCapture lCapture;
        AllocationFailure lFailure;
        lFailure.FailAt(k);
        Element* lElement = lKind.mCreate(&lMesh, "channel");
        EXPECT_EQ(lElement, nullptr) << k;
        EXPECT_TRUE(ListOf(lMesh).empty()) << k;
        if (k != 1) continue;
        EXPECT_EQ(lCapture.Reports(),
                  std::vector<Report>{kSource.Condition("Create", "tmp != NULL")});
    }
}

// The two arrays of pElement, found through the instantiation of the template it is
// one of (the first of Ts that matches).
template <class... Ts>
void FindArrays(Element* pElement, const QelLayerElementArray*& pDirect,
                const QelLayerElementArray*& pIndex)
{
    auto lTry = [&](auto* pTyped) {
        if (pDirect || !pTyped) return;
        pDirect = &pTyped->GetDirectArray();
        pIndex = &pTyped->GetIndexArray();
    };
    (lTry(dynamic_cast<QelLayerElementTemplate<Ts>*>(pElement)), ...);
}

TEST_P(ElementKind, DirectArrayTakesTheDataTypesValueType)
{
    const Kind lKind = GetParam();
    Element* lElement = lKind.mCreate(nullptr, "");
    ASSERT_NE(lElement, nullptr);
    lElement->SetReferenceMode(Element::eIndexToDirect);
    // Every kind is one of the template's instantiations; the stored types are what
    // the element's data type and QelIntDT report.
    const QelLayerElementArray* lDirect = nullptr;
    const QelLayerElementArray* lIndex = nullptr;
    FindArrays<QelVector4, QelVector2, QelColor, int, double, bool, QelTexture*>(lElement, lDirect,
                                                                                 lIndex);
    ASSERT_NE(lDirect, nullptr);
    EXPECT_EQ(lDirect->GetDataType(), lKind.mType->GetType());
    EXPECT_EQ(lIndex->GetDataType(), eQelInt);
    EXPECT_EQ(lDirect->GetCount(), 0);
    EXPECT_EQ(lElement->MemorySize(), lKind.mReferenceMode == Element::eIndexToDirect ? 12 : 0);
    lElement->Destroy();
}

INSTANTIATE_TEST_SUITE_P(EveryPlainKind, ElementKind, testing::ValuesIn(kKinds),
                         [](const testing::TestParamInfo<Kind>& pInfo) {
                             return std::string(pInfo.param.mName);
                         });

TEST(QelLayerElementTexture, DefaultsAndAccessors)
{
    QelLayerElementTexture* lTexture = QelLayerElementTexture::Create(nullptr, "tex");
    ASSERT_NE(lTexture, nullptr);
    EXPECT_EQ(lTexture->GetReferenceMode(), Element::eIndexToDirect);
    EXPECT_EQ(lTexture->GetTextureMode(), 0);
    EXPECT_EQ(lTexture->GetTextureFactor(), 1.0);
    EXPECT_EQ(lTexture->MemorySize(), 12);
    lTexture->SetTextureMode(3);
    lTexture->SetTextureFactor(0.25);
    EXPECT_EQ(lTexture->GetTextureMode(), 3);
    EXPECT_EQ(lTexture->GetTextureFactor(), 0.25);
    lTexture->GetDirectArray().Add(static_cast<QelTexture*>(nullptr));
    lTexture->GetIndexArray().Add(0);
    lTexture->GetIndexArray().Add(0);
    EXPECT_EQ(lTexture->MemorySize(), 8 + 2 * 4 + 12);
    lTexture->Destroy();
}

// The source selects no array (eIndex selects only the index array, here empty on
// both sides): the mode and factor are copied all the same.
TEST(QelLayerElementTexture, AssignmentCopiesModeAndFactorWhateverTheArrays)
{
    QelLayerElementTexture* lSource = QelLayerElementTexture::Create(nullptr, "a");
    QelLayerElementTexture* lTarget = QelLayerElementTexture::Create(nullptr, "b");
    ASSERT_NE(lSource, nullptr);
    ASSERT_NE(lTarget, nullptr);
    lSource->SetReferenceMode(Element::eDirect);
    lSource->SetTextureMode(7);
    lSource->SetTextureFactor(0.5);
    lTarget->GetIndexArray().Add(4);
    *lTarget = *lSource;
    EXPECT_EQ(lTarget->GetTextureMode(), 7);
    EXPECT_EQ(lTarget->GetTextureFactor(), 0.5);
    EXPECT_EQ(lTarget->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(lTarget->GetIndexArray().GetAt(0), 4);
    EXPECT_STREQ(lTarget->GetName(), "b");
    lSource->Destroy();
    lTarget->Destroy();
}

TEST(QelLayerElementCrease, OneClassServesBothCreaseKinds)
{
    QelMesh lMesh("mesh");
    QelLayerElementCrease* lVertex = QelLayerElementCrease::Create(&lMesh, "vertex");
    QelLayerElementCrease* lEdge = QelLayerElementCrease::Create(&lMesh, "edge");
    ASSERT_NE(lVertex, nullptr);
    ASSERT_NE(lEdge, nullptr);
    EXPECT_EQ(Fields::TypeOf(*lVertex), Fields::TypeOf(*lEdge));
    EXPECT_EQ(ListOf(lMesh), (test::Elements{lVertex, lEdge}));
}

// --- Template -----------------------------------------------------------------------------

struct Normals
{
    Normals() : mElement(QelLayerElementNormal::Create(nullptr, "n")) {}
    ~Normals() { mElement->Destroy(); }
    QelLayerElementNormal* operator->() { return mElement; }
    QelLayerElementNormal& operator*() { return *mElement; }
    QelLayerElementNormal* mElement;
};

TEST(QelLayerElementTemplate, WrongModeAccessorsReportAndStillReturnTheArray)
{
    Normals lNormals;
    ReportCapture lCapture;
    QelLayerElementArrayTemplate<int>& lIndex = lNormals->GetIndexArray();
    EXPECT_EQ(lIndex.GetCount(), 0);
    EXPECT_EQ(lIndex.GetDataType(), eQelInt);
    lNormals->SetReferenceMode(Element::eIndex);
    const QelLayerElementNormal& lConst = *lNormals;
    lConst.GetDirectArray();
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{
                  kHeader.Condition("GetIndexArray",
                                    "mReferenceMode == QelLayerElement::eIndex || mReferenceMode "
                                    "== QelLayerElement::eIndexToDirect"),
                  kHeader.Condition("GetDirectArray",
                                    "mReferenceMode == QelLayerElement::eDirect || mReferenceMode "
                                    "== QelLayerElement::eIndexToDirect")}));
    lCapture.Clear();
    lNormals->SetReferenceMode(Element::eIndexToDirect);
    lNormals->GetDirectArray();
    lNormals->GetIndexArray();
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelLayerElementTemplate, MemorySizeCountsValuesAndIndices)
{
    Normals lNormals;
    lNormals->SetReferenceMode(Element::eIndexToDirect);
    lNormals->GetDirectArray().Resize(10);
    lNormals->GetIndexArray().Resize(4);
    EXPECT_EQ(lNormals->MemorySize(), 336);
}

TEST(QelLayerElementTemplate, ClearEmptiesBothAndSucceedsWhenEitherDoes)
{
    Normals lNormals;
    lNormals->SetReferenceMode(Element::eIndexToDirect);
    lNormals->GetDirectArray().Resize(3);
    lNormals->GetIndexArray().Resize(2);
    EXPECT_TRUE(lNormals->Clear());
    EXPECT_EQ(lNormals->GetDirectArray().GetCount(), 0);
    EXPECT_EQ(lNormals->GetIndexArray().GetCount(), 0);

    // The direct array is read-locked: its clear is refused, the index array's is not.
    lNormals->GetIndexArray().Resize(2);
    ReportCapture lCapture;
    lNormals->GetDirectArray().ReadLock();
    EXPECT_TRUE(lNormals->Clear());
    EXPECT_EQ(lNormals->GetIndexArray().GetCount(), 0);
    // Both refused: false.
    lNormals->GetIndexArray().ReadLock();
    EXPECT_FALSE(lNormals->Clear());
    lNormals->GetIndexArray().ReadUnlock();
    lNormals->GetDirectArray().ReadUnlock();
}

TEST(QelLayerElementTemplate, AssignmentCopiesTheArraysTheSourceSelects)
{
    Normals lSource;
    Normals lTarget;
    lSource->GetDirectArray().Resize(2);
    lSource->GetDirectArray().SetAt(1, QelVector4(1, 2, 3, 4));
    lSource->SetMappingMode(Element::ePerPolygon);
    lTarget->SetReferenceMode(Element::eIndexToDirect);
    lTarget->GetIndexArray().Add(9);
    *lTarget = *lSource;
    EXPECT_EQ(lTarget->GetDirectArray().GetCount(), 2);
    EXPECT_EQ(lTarget->GetDirectArray().GetAt(1), QelVector4(1, 2, 3, 4));
    EXPECT_EQ(lTarget->GetMappingMode(), Element::ePerPolygon);
    EXPECT_EQ(lTarget->GetReferenceMode(), Element::eDirect);
    lTarget->SetReferenceMode(Element::eIndexToDirect);
    EXPECT_EQ(lTarget->GetIndexArray().GetCount(), 1);
    EXPECT_EQ(lTarget->GetIndexArray().GetAt(0), 9);
    EXPECT_STREQ(lTarget->GetName(), "n");

    lSource->SetReferenceMode(Element::eIndex);
    lSource->GetIndexArray().Add(5);
    lSource->GetIndexArray().Add(6);
    lTarget->GetDirectArray().Clear();
    lSource->GetDirectArray().Resize(7);
    *lTarget = *lSource;
    EXPECT_EQ(lTarget->GetIndexArray().GetCount(), 2);
    EXPECT_EQ(lTarget->GetIndexArray().GetAt(1), 6);
    lTarget->SetReferenceMode(Element::eDirect);
    EXPECT_EQ(lTarget->GetDirectArray().GetCount(), 0);
}

// An element whose factory did not allocate its arrays: the assignment reports both
// and copies into neither.
struct Bare : QelLayerElementTemplate<int>
{
};

TEST(QelLayerElementTemplate, AssignmentToMissingArraysReportsAndCopiesNothing)
{
    auto* lSource = QelLayerElementSmoothing::Create(nullptr, "s");
    ASSERT_NE(lSource, nullptr);
    lSource->SetMappingMode(Element::ePerPolygon);
    Bare lBare;
    ReportCapture lCapture;
    static_cast<QelLayerElementTemplate<int>&>(lBare) = *lSource;
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{kHeader.Condition("operator=", "mDirectArray != NULL"),
                                   kHeader.Condition("operator=", "mIndexArray != NULL")}));
    EXPECT_EQ(lBare.GetMappingMode(), Element::ePerPolygon);
    lSource->Destroy();
}

// --- Remapping ----------------------------------------------------------------------------------

// A mesh with a triangle and a quad, and an index-to-direct element it owns.
struct Remap : testing::Test
{
    Remap() : mMesh("mesh")
    {
        const int lTriangle[] = {0, 1, 2};
        const int lQuad[] = {0, 1, 2, 3};
        mMesh.AddPolygon(lTriangle, 3);
        mMesh.AddPolygon(lQuad, 4);
        mElement = QelLayerElementPolygonGroup::Create(&mMesh, "groups");
        mElement->SetReferenceMode(Element::eIndexToDirect);
        mElement->SetMappingMode(Element::ePerPolygon);
        mElement->GetIndexArray().Add(5);
        mElement->GetIndexArray().Add(7);
    }

    std::vector<int> Indices()
    {
        std::vector<int> lIndices;
        for (int i = 0; i < mElement->GetIndexArray().GetCount(); ++i)
            lIndices.push_back(mElement->GetIndexArray().GetAt(i));
        return lIndices;
    }

    int RemapTo(int pMode)
    {
        return RemapIndexArrayTo(mElement, static_cast<Element::EMappingMode>(pMode),
                                 &mElement->GetIndexArray());
    }

    QelMesh mMesh;
    QelLayerElementPolygonGroup* mElement;
};

TEST_F(Remap, PerPolygonToPerPolygonVertexRepeatsEachIndex)
{
    EXPECT_EQ(RemapTo(Element::ePerPolygonVertex), 1);
    EXPECT_EQ(Indices(), (std::vector<int>{5, 5, 5, 7, 7, 7, 7}));
    EXPECT_EQ(mElement->GetMappingMode(), Element::ePerPolygonVertex);
}

TEST_F(Remap, UnsupportedOrOutOfRangeNewModesChangeNothing)
{
    for (int lMode : {0, 1, 4, 5}) {
        EXPECT_EQ(RemapTo(lMode), -1) << lMode;
        EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
        EXPECT_EQ(mElement->GetMappingMode(), Element::ePerPolygon);
    }
    EXPECT_EQ(RemapTo(6), 1);
    EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
    EXPECT_EQ(mElement->GetMappingMode(), Element::ePerPolygon);
}

TEST_F(Remap, CurrentModeDecidesFirst)
{
    for (int lMode : {0, 1, 2, 4, 5}) {
        mElement->SetMappingMode(static_cast<Element::EMappingMode>(lMode));
        EXPECT_EQ(RemapTo(lMode == 2 ? 3 : 2), -1) << lMode;
    }
    mElement->SetMappingMode(static_cast<Element::EMappingMode>(9));
    EXPECT_EQ(RemapTo(2), 1);
    EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
}

TEST_F(Remap, EqualModesSucceedButDirectElementsNeverDo)
{
    EXPECT_EQ(RemapTo(Element::ePerPolygon), 1);
    EXPECT_EQ(RemapIndexArrayTo(mElement, Element::ePerPolygon, nullptr), 1);
    mElement->SetReferenceMode(Element::eDirect);
    EXPECT_EQ(RemapTo(Element::ePerPolygon), -1);
    EXPECT_EQ(RemapTo(Element::ePerPolygonVertex), -1);
    EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
}

TEST_F(Remap, NothingToWorkOnGivesZero)
{
    EXPECT_EQ(RemapIndexArrayTo(nullptr, Element::ePerPolygonVertex, &mElement->GetIndexArray()),
              0);
    EXPECT_EQ(RemapIndexArrayTo(mElement, Element::ePerPolygonVertex, nullptr), 0);
    QelLayerContainer lContainer("not a mesh");
    mElement->SetOwner(&lContainer, 0);
    EXPECT_EQ(RemapTo(Element::ePerPolygonVertex), 0);
    mElement->SetOwner(nullptr, 0);
    EXPECT_EQ(RemapTo(Element::ePerPolygonVertex), 0);
    mElement->SetOwner(&mMesh, 0);
    EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
}

// The array remapped need not be the element's own; the old index count is the
// polygon count, whatever the mesh holds.
TEST_F(Remap, WorksOnTheArrayItIsGiven)
{
    QelLayerElementArrayTemplate<int> lOther(eQelInt);
    lOther.Add(1);
    lOther.Add(2);
    lOther.Add(3);
    EXPECT_EQ(RemapIndexArrayTo(mElement, Element::ePerPolygonVertex, &lOther), 1);
    std::vector<int> lItems;
    for (int i = 0; i < lOther.GetCount(); ++i)
        lItems.push_back(lOther.GetAt(i));
    EXPECT_EQ(lItems, (std::vector<int>{1, 1, 1, 2, 2, 2, 2}));
    EXPECT_EQ(Indices(), (std::vector<int>{5, 7}));
}

TEST_F(Remap, WithoutMemoryNothingChanges)
{
    int lAllocations = 0;
    {
        QelLayerElementArrayTemplate<int> lCopy(eQelInt);
        lCopy.Add(5);
        lCopy.Add(7);
        AllocationFailure lFailure;
        EXPECT_EQ(RemapIndexArrayTo(mElement, Element::ePerPolygonVertex, &lCopy), 1);
        lAllocations = lFailure.Count();
        mElement->SetMappingMode(Element::ePerPolygon);
    }
    ASSERT_GE(lAllocations, 3);
    for (int k = 1; k <= lAllocations; ++k) {
        ReportCapture lCapture;
        AllocationFailure lFailure;
        lFailure.FailAt(k);
        EXPECT_EQ(RemapTo(Element::ePerPolygonVertex), 0) << k;
        EXPECT_EQ(Indices(), (std::vector<int>{5, 7})) << k;
        EXPECT_EQ(mElement->GetMappingMode(), Element::ePerPolygon) << k;
    }
}

} // namespace
} // namespace qelsdk
