#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayerutils.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <ostream>
#include <vector>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;

// Everything an operation may change in an element: the two modes and the bytes of
// both arrays.
struct State
{
    int mMapping;
    int mReference;
    std::vector<unsigned char> mDirect;
    std::vector<int> mIndex;

    bool operator==(const State& pOther) const
    {
        return mMapping == pOther.mMapping && mReference == pOther.mReference &&
               mDirect == pOther.mDirect && mIndex == pOther.mIndex;
    }
};

std::ostream& operator<<(std::ostream& pStream, const State& pState)
{
    pStream << "mapping " << pState.mMapping << ", reference " << pState.mReference << ", "
            << pState.mDirect.size() << " direct bytes, indices";
    for (int lIndex : pState.mIndex)
        pStream << ' ' << lIndex;
    return pStream;
}

// Reaches both arrays whatever the reference mode, without the getters' reports.
template <class T> struct Arrays
{
    explicit Arrays(QelLayerElementTemplate<T>& pElement)
        : mElement(pElement), mMode(pElement.GetReferenceMode())
    {
        pElement.SetReferenceMode(Element::eIndexToDirect);
    }
    ~Arrays() { mElement.SetReferenceMode(mMode); }

    QelLayerElementArrayTemplate<T>& Direct() { return mElement.GetDirectArray(); }
    QelLayerElementArrayTemplate<int>& Index() { return mElement.GetIndexArray(); }

    QelLayerElementTemplate<T>& mElement;
    Element::EReferenceMode mMode;
};

template <class T> std::vector<T> DirectOf(QelLayerElementTemplate<T>& pElement)
{
    Arrays<T> lArrays(pElement);
    std::vector<T> lItems;
    for (int i = 0; i < lArrays.Direct().GetCount(); ++i)
        lItems.push_back(lArrays.Direct().GetAt(i));
    return lItems;
}

template <class T> std::vector<int> IndexOf(QelLayerElementTemplate<T>& pElement)
{
    Arrays<T> lArrays(pElement);
    std::vector<int> lItems;
    for (int i = 0; i < lArrays.Index().GetCount(); ++i)
        lItems.push_back(lArrays.Index().GetAt(i));
    return lItems;
}

template <class T> std::vector<unsigned char> BytesOf(const std::vector<T>& pItems)
{
    std::vector<unsigned char> lBytes(pItems.size() * sizeof(T));
    for (size_t i = 0; i < pItems.size(); ++i) {
        const T lItem = pItems[i]; // std::vector<bool> hands out no item to point at
        std::memcpy(lBytes.data() + i * sizeof(T), &lItem, sizeof(T));
    }
    return lBytes;
}

template <class T> State StateOf(QelLayerElementTemplate<T>& pElement)
{
    return State{pElement.GetMappingMode(), pElement.GetReferenceMode(),
                 BytesOf(DirectOf(pElement)), IndexOf(pElement)};
}

template <class T>
void Fill(QelLayerElementTemplate<T>& pElement, Element::EMappingMode pMapping,
          Element::EReferenceMode pReference, const std::vector<T>& pDirect,
          const std::vector<int>& pIndex)
{
    {
        Arrays<T> lArrays(pElement);
        lArrays.Direct().Clear();
        lArrays.Index().Clear();
        for (const T& lItem : pDirect)
            lArrays.Direct().Add(lItem);
        for (int lIndex : pIndex)
            lArrays.Index().Add(lIndex);
    }
    pElement.SetMappingMode(pMapping);
    pElement.SetReferenceMode(pReference);
}

// --- Every kind: distinct sample values and a factory --------------------------------

template <class Kind, class Item> struct KindOf
{
    typedef Kind Class;
    typedef Item T;
    static Kind* Create(QelMesh& pMesh) { return Kind::Create(&pMesh, "k"); }
};

QelVector4 Sample(QelVector4*, int i) { return QelVector4(i + 0.5, -i, 2.0 * i, 1.0); }
QelVector2 Sample(QelVector2*, int i) { return QelVector2(i * 0.25, 1.0 - i); }
QelColor Sample(QelColor*, int i) { return QelColor(i * 0.125, 0.25, 0.5, 1.0 - i * 0.5); }
int Sample(int*, int i) { return 10 * i - 7; }
double Sample(double*, int i) { return i * 1.5 - 2.0; }
bool Sample(bool*, int i) { return i == 1; }
template <class P> P* Sample(P**, int i)
{
    // Addresses that are only stored, never followed.
    return reinterpret_cast<P*>(static_cast<uintptr_t>(0x1000 + 0x40 * i));
}

template <class T> T SampleOf(int i) { return Sample(static_cast<T*>(nullptr), i); }
template <class T> constexpr int sDistinct = std::is_same<T, bool>::value ? 2 : 3;

template <class K> class EveryKind : public ::testing::Test
{
protected:
    typedef typename K::T T;

    void SetUp() override { mElement = K::Create(mMesh); }

    // Direct items s0, s1 (, s2); indices 0 1 0 last 1: every item used, none twice
    // in the direct array.
    void FillShared()
    {
        std::vector<T> lDirect;
        for (int i = 0; i < sDistinct<T>; ++i)
            lDirect.push_back(SampleOf<T>(i));
        Fill<T>(*mElement, Element::ePerPolygonVertex, Element::eIndexToDirect, lDirect,
                {0, 1, 0, sDistinct<T> - 1, 1});
    }

    std::vector<T> Flat() const
    {
        return {SampleOf<T>(0), SampleOf<T>(1), SampleOf<T>(0), SampleOf<T>(sDistinct<T> - 1),
                SampleOf<T>(1)};
    }

    QelMesh mMesh{"m"};
    QelLayerElementTemplate<T>* mElement = nullptr;
};

typedef ::testing::Types<
    KindOf<QelLayerElementNormal, QelVector4>, KindOf<QelLayerElementBinormal, QelVector4>,
    KindOf<QelLayerElementTangent, QelVector4>, KindOf<QelLayerElementUV, QelVector2>,
    KindOf<QelLayerElementVertexColor, QelColor>, KindOf<QelLayerElementPolygonGroup, int>,
    KindOf<QelLayerElementSmoothing, int>, KindOf<QelLayerElementCrease, double>,
    KindOf<QelLayerElementHole, bool>, KindOf<QelLayerElementVisibility, bool>,
    KindOf<QelLayerElementMaterial, QelSurfaceMaterial*>,
    KindOf<QelLayerElementTexture, QelTexture*>>
    Kinds;
TYPED_TEST_SUITE(EveryKind, Kinds);

TYPED_TEST(EveryKind, FlattenExpandsThroughTheIndices)
{
    this->FillShared();
    EXPECT_EQ(QelFlatten(*this->mElement), eQelUtilOk);
    EXPECT_EQ(this->mElement->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(this->mElement->GetMappingMode(), Element::ePerPolygonVertex);
    EXPECT_EQ(BytesOf(DirectOf(*this->mElement)), BytesOf(this->Flat()));
    EXPECT_EQ(IndexOf(*this->mElement), std::vector<int>());
}

TYPED_TEST(EveryKind, WeldAfterFlattenGivesBackTheArrays)
{
    this->FillShared();
    const State lOriginal = StateOf(*this->mElement);
    ASSERT_EQ(QelFlatten(*this->mElement), eQelUtilOk);
    EXPECT_EQ(QelWeld(*this->mElement), eQelUtilOk);
    EXPECT_EQ(StateOf(*this->mElement), lOriginal);
}

TYPED_TEST(EveryKind, FlattenOfADirectElementChangesNothing)
{
    typedef typename TypeParam::T T;
    Fill<T>(*this->mElement, Element::eByControlPoint, Element::eDirect, this->Flat(), {4, 4});
    const State lBefore = StateOf(*this->mElement);
    EXPECT_EQ(QelFlatten(*this->mElement), eQelUtilOk);
    EXPECT_EQ(StateOf(*this->mElement), lBefore);
}

TYPED_TEST(EveryKind, FlattenRefusesAnIndexOutOfRange)
{
    typedef typename TypeParam::T T;
    std::vector<T> lDirect;
    for (int i = 0; i < sDistinct<T>; ++i)
        lDirect.push_back(SampleOf<T>(i));
    for (int lBad : {-1, sDistinct<T>}) {
        Fill<T>(*this->mElement, Element::ePerPolygon, Element::eIndexToDirect, lDirect,
                {0, lBad, 1});
        const State lBefore = StateOf(*this->mElement);
        EXPECT_EQ(QelFlatten(*this->mElement), eQelUtilIndexOutOfRange) << lBad;
        EXPECT_EQ(StateOf(*this->mElement), lBefore);
    }
}

TYPED_TEST(EveryKind, FlattenAndWeldRefuseTheIndexMode)
{
    this->FillShared();
    this->mElement->SetReferenceMode(Element::eIndex);
    const State lBefore = StateOf(*this->mElement);
    EXPECT_EQ(QelFlatten(*this->mElement), eQelUtilBadReferenceMode);
    EXPECT_EQ(QelWeld(*this->mElement), eQelUtilBadReferenceMode);
    EXPECT_EQ(StateOf(*this->mElement), lBefore);
}

TYPED_TEST(EveryKind, WeldRefusesAnIndexToDirectElement)
{
    this->FillShared();
    const State lBefore = StateOf(*this->mElement);
    EXPECT_EQ(QelWeld(*this->mElement), eQelUtilBadReferenceMode);
    EXPECT_EQ(StateOf(*this->mElement), lBefore);
}

TYPED_TEST(EveryKind, WeldRefusesABadTolerance)
{
    typedef typename TypeParam::T T;
    Fill<T>(*this->mElement, Element::ePerPolygon, Element::eDirect, this->Flat(), {});
    const State lBefore = StateOf(*this->mElement);
    EXPECT_EQ(QelWeld(*this->mElement, -1.0), eQelUtilBadTolerance);
    EXPECT_EQ(QelWeld(*this->mElement, std::numeric_limits<double>::quiet_NaN()),
              eQelUtilBadTolerance);
    const bool lFloat = std::is_same<T, QelVector4>::value || std::is_same<T, QelVector2>::value ||
                        std::is_same<T, QelColor>::value || std::is_same<T, double>::value;
    if (!lFloat) {
        EXPECT_EQ(QelWeld(*this->mElement, 0.5), eQelUtilBadTolerance);
    }
    EXPECT_EQ(StateOf(*this->mElement), lBefore);
}

TYPED_TEST(EveryKind, LockedArraysAreRefused)
{
    this->FillShared();
    Arrays<typename TypeParam::T> lArrays(*this->mElement);
    for (QelLayerElementArray* lArray : {static_cast<QelLayerElementArray*>(&lArrays.Direct()),
                                         static_cast<QelLayerElementArray*>(&lArrays.Index())}) {
        ASSERT_EQ(lArray->ReadLock(), 1);
        this->mElement->SetReferenceMode(Element::eIndexToDirect);
        const State lBefore = StateOf(*this->mElement);
        EXPECT_EQ(QelFlatten(*this->mElement), eQelUtilLocked);
        this->mElement->SetReferenceMode(Element::eDirect);
        EXPECT_EQ(QelWeld(*this->mElement), eQelUtilLocked);
        this->mElement->SetReferenceMode(Element::eIndexToDirect);
        EXPECT_EQ(StateOf(*this->mElement), lBefore);
        EXPECT_EQ(lArray->ReadUnlock(), 0);
    }
}

// --- Weld semantics ------------------------------------------------------------------

class WeldTest : public ::testing::Test
{
protected:
    QelMesh mMesh{"m"};
    QelLayerElementCrease* mCrease = QelLayerElementCrease::Create(&mMesh, "c");
    QelLayerElementUV* mUV = QelLayerElementUV::Create(&mMesh, "uv");
};

TEST_F(WeldTest, KeepsFirstAppearanceOrder)
{
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect,
                 {5.0, 1.0, 5.0, 3.0, 1.0, 1.0, 7.0}, {});
    EXPECT_EQ(QelWeld(*mCrease), eQelUtilOk);
    EXPECT_EQ(mCrease->GetReferenceMode(), Element::eIndexToDirect);
    EXPECT_EQ(mCrease->GetMappingMode(), Element::ePerPolygonVertex);
    EXPECT_EQ(DirectOf(*mCrease), (std::vector<double>{5.0, 1.0, 3.0, 7.0}));
    EXPECT_EQ(IndexOf(*mCrease), (std::vector<int>{0, 1, 0, 2, 1, 1, 3}));
}

TEST_F(WeldTest, ExactWeldComparesBytes)
{
    const double lNaN = std::numeric_limits<double>::quiet_NaN();
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect,
                 {0.0, -0.0, lNaN, 0.0, lNaN, -0.0}, {});
    EXPECT_EQ(QelWeld(*mCrease), eQelUtilOk);
    EXPECT_EQ(BytesOf(DirectOf(*mCrease)), BytesOf(std::vector<double>{0.0, -0.0, lNaN}));
    EXPECT_EQ(IndexOf(*mCrease), (std::vector<int>{0, 1, 2, 0, 2, 1}));
}

TEST_F(WeldTest, AnEmptyElementBecomesAnEmptyIndexedOne)
{
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect, {}, {});
    EXPECT_EQ(QelWeld(*mCrease), eQelUtilOk);
    EXPECT_EQ(mCrease->GetReferenceMode(), Element::eIndexToDirect);
    EXPECT_EQ(DirectOf(*mCrease), std::vector<double>());
    EXPECT_EQ(IndexOf(*mCrease), std::vector<int>());
}

TEST_F(WeldTest, ToleranceIsNotTransitive)
{
    // 0.4 joins 0; 0.8 is within 0.5 of 0.4 only, which is not kept: a class of its own.
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect, {0.0, 0.4, 0.8}, {});
    EXPECT_EQ(QelWeld(*mCrease, 0.5), eQelUtilOk);
    EXPECT_EQ(DirectOf(*mCrease), (std::vector<double>{0.0, 0.8}));
    EXPECT_EQ(IndexOf(*mCrease), (std::vector<int>{0, 0, 1}));
}

TEST_F(WeldTest, ToleranceJoinsTheEarliestKeptItem)
{
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect,
                 {1.0, 1.625, 1.3125, 1.875, -3.0, -2.5}, {});
    EXPECT_EQ(QelWeld(*mCrease, 0.5), eQelUtilOk);
    EXPECT_EQ(DirectOf(*mCrease), (std::vector<double>{1.0, 1.625, -3.0}));
    EXPECT_EQ(IndexOf(*mCrease), (std::vector<int>{0, 1, 0, 1, 2, 2}));
}

TEST_F(WeldTest, ToleranceAppliesToEveryComponent)
{
    Fill<QelVector2>(*mUV, Element::ePerPolygonVertex, Element::eDirect,
                     {QelVector2(0.5, 0.5), QelVector2(0.5625, 0.4375), QelVector2(0.5625, 0.75),
                      QelVector2(0.75, 0.5), QelVector2(0.4375, 0.5)},
                     {});
    EXPECT_EQ(QelWeld(*mUV, 0.125), eQelUtilOk);
    EXPECT_EQ(DirectOf(*mUV),
              (std::vector<QelVector2>{QelVector2(0.5, 0.5), QelVector2(0.5625, 0.75),
                                       QelVector2(0.75, 0.5)}));
    EXPECT_EQ(IndexOf(*mUV), (std::vector<int>{0, 0, 1, 2, 0}));
}

TEST_F(WeldTest, ItemsOffTheGridWeldByTheirBytes)
{
    const double lInfinity = std::numeric_limits<double>::infinity();
    const double lNaN = std::numeric_limits<double>::quiet_NaN();
    Fill<double>(*mCrease, Element::ePerPolygonVertex, Element::eDirect,
                 {lInfinity, 1e300, lNaN, lInfinity, 1e300, 1.0, lNaN}, {});
    EXPECT_EQ(QelWeld(*mCrease, 0.25), eQelUtilOk);
    EXPECT_EQ(BytesOf(DirectOf(*mCrease)),
              BytesOf(std::vector<double>{lInfinity, 1e300, lNaN, 1.0}));
    EXPECT_EQ(IndexOf(*mCrease), (std::vector<int>{0, 1, 2, 0, 1, 3, 2}));
}

TEST_F(WeldTest, ManyItemsWeldIntoTheirClasses)
{
    std::vector<QelVector2> lItems;
    for (int i = 0; i < 5000; ++i)
        lItems.push_back(QelVector2((i * 7919) % 1000, 0.5));
    Fill<QelVector2>(*mUV, Element::ePerPolygonVertex, Element::eDirect, lItems, {});
    EXPECT_EQ(QelWeld(*mUV), eQelUtilOk);
    const std::vector<QelVector2> lKept = DirectOf(*mUV);
    const std::vector<int> lIndex = IndexOf(*mUV);
    ASSERT_EQ(lKept.size(), 1000u);
    ASSERT_EQ(lIndex.size(), lItems.size());
    for (size_t i = 0; i < lItems.size(); ++i)
        EXPECT_TRUE(lKept[lIndex[i]] == lItems[i]) << i;
    for (size_t i = 0; i < lKept.size(); ++i)
        EXPECT_EQ(lIndex[i], static_cast<int>(i)); // the first 1000 items are distinct
}

// --- User data: refused by all three ----------------------------------------------------

TEST(LayerUtilsUserData, IsRefusedWithNothingChanged)
{
    QelMesh lMesh("m");
    QelArray<QelDataType> lTypes;
    QelArray<const char*> lNames;
    QelLayerElementUserData* lUserData =
        QelLayerElementUserData::Create(&lMesh, "u", 7, lTypes, lNames);
    ASSERT_NE(lUserData, nullptr);
    lUserData->SetMappingMode(Element::ePerPolygon);
    lUserData->SetReferenceMode(Element::eIndexToDirect);
    const State lBefore = StateOf<void*>(*lUserData);
    EXPECT_EQ(QelFlatten<void*>(*lUserData), eQelUtilUnsupportedKind);
    lUserData->SetReferenceMode(Element::eDirect);
    EXPECT_EQ(QelWeld<void*>(*lUserData), eQelUtilUnsupportedKind);
    EXPECT_EQ(QelChangeMapping<void*>(*lUserData, lMesh, Element::eAllSame),
              eQelUtilUnsupportedKind);
    lUserData->SetReferenceMode(Element::eIndexToDirect);
    EXPECT_EQ(StateOf<void*>(*lUserData), lBefore);
}

// --- Change of mapping -------------------------------------------------------------------

// Two quads sharing the edge of control points 1 and 4; control point 6 is in no polygon.
//   3 - 4 - 5
//   | 0 | 1 |
//   0 - 1 - 2        polygon vertices: 0 1 4 3 | 1 2 5 4
class MappingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        mMesh.SetControlPointCount(7);
        const int lQuad0[] = {0, 1, 4, 3};
        const int lQuad1[] = {1, 2, 5, 4};
        ASSERT_EQ(mMesh.AddPolygon(lQuad0, 4), 0);
        ASSERT_EQ(mMesh.AddPolygon(lQuad1, 4), 1);
    }

    template <class K> K* Make() { return K::Create(&mMesh, "e"); }

    QelMesh mMesh{"m"};
};

TEST_F(MappingTest, WideningCopies)
{
    auto* lCrease = Make<QelLayerElementCrease>();
    Fill<double>(*lCrease, Element::eByControlPoint, Element::eDirect,
                 {0.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygonVertex), eQelUtilOk);
    EXPECT_EQ(lCrease->GetMappingMode(), Element::ePerPolygonVertex);
    EXPECT_EQ(lCrease->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{0, 1, 4, 3, 1, 2, 5, 4}));

    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {2.5, -1.0}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygonVertex), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{2.5, 2.5, 2.5, 2.5, -1, -1, -1, -1}));

    Fill<double>(*lCrease, Element::eAllSame, Element::eDirect, {9.0}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{9.0, 9.0}));
}

TEST_F(MappingTest, NarrowingAveragesDoubles)
{
    auto* lCrease = Make<QelLayerElementCrease>();
    const std::vector<double> lPerVertex{0, 1, 2, 3, 4, 5, 6, 7};
    Fill<double>(*lCrease, Element::ePerPolygonVertex, Element::eDirect, lPerVertex, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::eByControlPoint), eQelUtilOk);
    // Point 1: vertices 0 and 4; point 4: vertices 2 and 7; point 6: none.
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{0, 2.5, 5, 3, 4.5, 6, 0}));

    Fill<double>(*lCrease, Element::ePerPolygonVertex, Element::eDirect, lPerVertex, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{1.5, 5.5}));

    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {1.0, 4.0}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{1, 2.5, 4, 1, 2.5, 4, 0}));

    Fill<double>(*lCrease, Element::eByControlPoint, Element::eDirect, {0, 1, 2, 3, 4, 5, 6}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{2.0, 3.0}));

    Fill<double>(*lCrease, Element::eByControlPoint, Element::eDirect, {0, 1, 2, 3, 4, 5, 6}, {});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::eAllSame), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{3.0}));
}

TEST_F(MappingTest, NarrowingVotesOnInts)
{
    auto* lGroups = Make<QelLayerElementPolygonGroup>();
    Fill<int>(*lGroups, Element::ePerPolygonVertex, Element::eDirect, {3, 5, 5, 3, 9, 7, 5, 7}, {});
    EXPECT_EQ(QelChangeMapping(*lGroups, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lGroups), (std::vector<int>{3, 7})); // 3 and 5 tie: the smaller

    Fill<int>(*lGroups, Element::ePerPolygonVertex, Element::eDirect, {3, 5, 5, 3, 9, 7, 5, 7}, {});
    EXPECT_EQ(QelChangeMapping(*lGroups, mMesh, Element::eAllSame), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lGroups), (std::vector<int>{5}));

    Fill<int>(*lGroups, Element::ePerPolygonVertex, Element::eDirect, {3, 8, 5, 3, -2, 7, 5, 7},
              {});
    EXPECT_EQ(QelChangeMapping(*lGroups, mMesh, Element::eByControlPoint), eQelUtilOk);
    // Point 1: 8 and -2 tie; point 4: 5 and 7 tie.
    EXPECT_EQ(DirectOf(*lGroups), (std::vector<int>{3, -2, 7, 3, 5, 5, 0}));
}

TEST_F(MappingTest, NarrowingTakesTheMajorityOfBools)
{
    auto* lHoles = Make<QelLayerElementHole>();
    Fill<bool>(*lHoles, Element::ePerPolygon, Element::eDirect, {true, false}, {});
    EXPECT_EQ(QelChangeMapping(*lHoles, mMesh, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lHoles),
              (std::vector<bool>{true, false, false, true, false, false, false}));

    Fill<bool>(*lHoles, Element::ePerPolygonVertex, Element::eDirect,
               {true, true, false, true, false, true, false, false}, {});
    EXPECT_EQ(QelChangeMapping(*lHoles, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lHoles), (std::vector<bool>{true, false}));
}

TEST_F(MappingTest, NarrowingRenormalisesVectorsOfFourAndAveragesTheRest)
{
    auto* lNormals = Make<QelLayerElementNormal>();
    Fill<QelVector4>(*lNormals, Element::ePerPolygon, Element::eDirect,
                     {QelVector4(2, 0, 0, 1), QelVector4(0, 2, 0, 0)}, {});
    EXPECT_EQ(QelChangeMapping(*lNormals, mMesh, Element::eByControlPoint), eQelUtilOk);
    const std::vector<QelVector4> lPoints = DirectOf(*lNormals);
    ASSERT_EQ(lPoints.size(), 7u);
    // One source: a copy, not normalised.
    EXPECT_TRUE(lPoints[0] == QelVector4(2, 0, 0, 1));
    EXPECT_TRUE(lPoints[2] == QelVector4(0, 2, 0, 0));
    const double lHalf = 1.0 / std::sqrt(2.0);
    EXPECT_DOUBLE_EQ(lPoints[1][0], lHalf);
    EXPECT_DOUBLE_EQ(lPoints[1][1], lHalf);
    EXPECT_EQ(lPoints[1][2], 0.0);
    EXPECT_EQ(lPoints[1][3], 0.5);
    EXPECT_TRUE(lPoints[4] == lPoints[1]);
    EXPECT_TRUE(lPoints[6] == QelVector4(0, 0, 0, 0));

    auto* lUV = Make<QelLayerElementUV>();
    Fill<QelVector2>(*lUV, Element::ePerPolygon, Element::eDirect,
                     {QelVector2(0.0, 1.0), QelVector2(0.5, 0.0)}, {});
    EXPECT_EQ(QelChangeMapping(*lUV, mMesh, Element::eAllSame), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lUV), (std::vector<QelVector2>{QelVector2(0.25, 0.5)}));

    auto* lColors = Make<QelLayerElementVertexColor>();
    Fill<QelColor>(*lColors, Element::ePerPolygon, Element::eDirect,
                   {QelColor(1, 0, 0.5, 1), QelColor(0, 1, 0, 0)}, {});
    EXPECT_EQ(QelChangeMapping(*lColors, mMesh, Element::eAllSame), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lColors), (std::vector<QelColor>{QelColor(0.5, 0.5, 0.25, 0.5)}));
    // A control point of no polygon is zero, alpha included.
    Fill<QelColor>(*lColors, Element::ePerPolygon, Element::eDirect,
                   {QelColor(1, 0, 0.5, 1), QelColor(0, 1, 0, 0)}, {});
    EXPECT_EQ(QelChangeMapping(*lColors, mMesh, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lColors)[6], QelColor(0, 0, 0, 0));
}

TEST_F(MappingTest, IndexToDirectIsReadThroughTheIndicesAndComesOutDirect)
{
    auto* lCrease = Make<QelLayerElementCrease>();
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eIndexToDirect, {8.0, 2.0}, {1, 0});
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygonVertex), eQelUtilOk);
    EXPECT_EQ(lCrease->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(DirectOf(*lCrease), (std::vector<double>{2, 2, 2, 2, 8, 8, 8, 8}));
    EXPECT_EQ(IndexOf(*lCrease), std::vector<int>());
}

TEST_F(MappingTest, EqualModesChangeNothing)
{
    auto* lCrease = Make<QelLayerElementCrease>();
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eIndexToDirect, {8.0, 2.0}, {1, 0});
    const State lBefore = StateOf(*lCrease);
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::ePerPolygon), eQelUtilOk);
    EXPECT_EQ(StateOf(*lCrease), lBefore);
}

TEST_F(MappingTest, Refusals)
{
    auto* lCrease = Make<QelLayerElementCrease>();
    auto Expect = [&](EQelLayerUtilStatus pStatus, Element::EMappingMode pTo) {
        const State lBefore = StateOf(*lCrease);
        EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, pTo), pStatus);
        EXPECT_EQ(StateOf(*lCrease), lBefore);
    };
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {1.0, 2.0}, {});
    Expect(eQelUtilBadMappingMode, Element::eByEdge);
    Expect(eQelUtilBadMappingMode, Element::eNone);
    Expect(eQelUtilBadMappingMode, static_cast<Element::EMappingMode>(6));
    Fill<double>(*lCrease, Element::eByEdge, Element::eDirect, {1.0, 2.0}, {});
    Expect(eQelUtilBadMappingMode, Element::ePerPolygon);
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {1.0, 2.0, 3.0}, {});
    Expect(eQelUtilCountMismatch, Element::eAllSame);
    Fill<double>(*lCrease, Element::eAllSame, Element::eDirect, {1.0, 2.0}, {});
    Expect(eQelUtilCountMismatch, Element::ePerPolygon);
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eIndexToDirect, {1.0}, {0, 1});
    Expect(eQelUtilIndexOutOfRange, Element::eAllSame);
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eIndex, {1.0}, {0, 0});
    Expect(eQelUtilBadReferenceMode, Element::eAllSame);
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {1.0, 2.0}, {});
    ASSERT_EQ(lCrease->GetDirectArray().ReadLock(), 1);
    Expect(eQelUtilLocked, Element::eAllSame);
    lCrease->GetDirectArray().ReadUnlock();

    // A mesh vertex past the control points, only where control points take part.
    const int lBad[] = {0, 1, 7};
    ASSERT_EQ(mMesh.AddPolygon(lBad, 3), 2);
    Fill<double>(*lCrease, Element::ePerPolygon, Element::eDirect, {1.0, 2.0, 3.0}, {});
    Expect(eQelUtilIndexOutOfRange, Element::eByControlPoint);
    EXPECT_EQ(QelChangeMapping(*lCrease, mMesh, Element::eAllSame), eQelUtilOk);
    EXPECT_EQ(DirectOf(*lCrease), std::vector<double>{2.0});
}

TEST_F(MappingTest, PointerKindsAreRefused)
{
    auto* lMaterials = Make<QelLayerElementMaterial>();
    Fill<QelSurfaceMaterial*>(*lMaterials, Element::ePerPolygon, Element::eDirect,
                              {SampleOf<QelSurfaceMaterial*>(0), SampleOf<QelSurfaceMaterial*>(1)},
                              {});
    const State lMaterialsBefore = StateOf(*lMaterials);
    EXPECT_EQ(QelChangeMapping(*lMaterials, mMesh, Element::ePerPolygonVertex),
              eQelUtilUnsupportedKind);
    EXPECT_EQ(StateOf(*lMaterials), lMaterialsBefore);

    auto* lTextures = Make<QelLayerElementTexture>();
    Fill<QelTexture*>(*lTextures, Element::eAllSame, Element::eDirect, {SampleOf<QelTexture*>(1)},
                      {});
    const State lTexturesBefore = StateOf(*lTextures);
    EXPECT_EQ(QelChangeMapping(*lTextures, mMesh, Element::ePerPolygon), eQelUtilUnsupportedKind);
    EXPECT_EQ(StateOf(*lTextures), lTexturesBefore);
}

// --- Allocation failure: every allocation of every operation -------------------------

// Runs pRun on a fresh element from pMake with the n-th allocation failing, for n = 1,
// 2, ... until a run meets no failure. A run that fails leaves the element as pMake
// made it; a run that gets over a failure (a trim the allocator refuses) ends as an
// undisturbed run does.
template <class T, class Make, class Run> void ExpectCleanFailures(Make pMake, Run pRun)
{
    QelMesh lReferenceMesh("r");
    QelLayerElementTemplate<T>* lReference = pMake(lReferenceMesh);
    ASSERT_EQ(pRun(*lReference, lReferenceMesh), eQelUtilOk);
    const State lDone = StateOf(*lReference);
    int lRefusals = 0;
    for (int n = 1; n < 100; ++n) {
        QelMesh lMesh("m");
        QelLayerElementTemplate<T>* lElement = pMake(lMesh);
        const State lBefore = StateOf(*lElement);
        EQelLayerUtilStatus lStatus;
        int lFailed;
        {
            test::ReportCapture lQuiet;
            test::AllocationFailure lFailure;
            lFailure.FailAt(n);
            lStatus = pRun(*lElement, lMesh);
            lFailed = lFailure.Failed();
        }
        if (lFailed == 0) {
            EXPECT_EQ(lStatus, eQelUtilOk);
            EXPECT_EQ(StateOf(*lElement), lDone);
            EXPECT_GT(lRefusals, 0);
            return;
        }
        if (lStatus == eQelUtilOutOfMemory) {
            ++lRefusals;
            EXPECT_EQ(StateOf(*lElement), lBefore) << "allocation " << n;
        } else {
            EXPECT_EQ(lStatus, eQelUtilOk) << "allocation " << n;
            EXPECT_EQ(StateOf(*lElement), lDone) << "allocation " << n;
        }
    }
    FAIL() << "no run without a failure";
}

void TwoQuads(QelMesh& pMesh)
{
    pMesh.SetControlPointCount(7);
    const int lQuad0[] = {0, 1, 4, 3};
    const int lQuad1[] = {1, 2, 5, 4};
    pMesh.AddPolygon(lQuad0, 4);
    pMesh.AddPolygon(lQuad1, 4);
}

TEST(LayerUtilsMemory, FlattenFailsCleanly)
{
    ExpectCleanFailures<QelVector2>(
        [](QelMesh& pMesh) {
            auto* lUV = QelLayerElementUV::Create(&pMesh, "uv");
            std::vector<QelVector2> lDirect;
            for (int i = 0; i < 9; ++i)
                lDirect.push_back(QelVector2(i, -i));
            Fill<QelVector2>(*lUV, Element::ePerPolygonVertex, Element::eIndexToDirect, lDirect,
                             {8, 0, 3, 3, 7, 1, 2, 2, 5, 4, 6, 0, 8, 8, 8, 1, 2});
            return lUV;
        },
        [](QelLayerElementTemplate<QelVector2>& pElement, QelMesh&) {
            return QelFlatten(pElement);
        });
}

TEST(LayerUtilsMemory, WeldFailsCleanly)
{
    for (double lTolerance : {0.0, 0.25}) {
        ExpectCleanFailures<QelVector2>(
            [](QelMesh& pMesh) {
                auto* lUV = QelLayerElementUV::Create(&pMesh, "uv");
                std::vector<QelVector2> lDirect;
                for (int i = 0; i < 19; ++i)
                    lDirect.push_back(QelVector2(i % 5, 1.0));
                Fill<QelVector2>(*lUV, Element::ePerPolygonVertex, Element::eDirect, lDirect, {});
                return lUV;
            },
            [lTolerance](QelLayerElementTemplate<QelVector2>& pElement, QelMesh&) {
                return QelWeld(pElement, lTolerance);
            });
    }
}

TEST(LayerUtilsMemory, ChangeMappingFailsCleanly)
{
    const Element::EMappingMode lPairs[][2] = {
        {Element::eByControlPoint, Element::ePerPolygonVertex},
        {Element::ePerPolygonVertex, Element::eByControlPoint},
        {Element::ePerPolygon, Element::eAllSame},
        {Element::eAllSame, Element::ePerPolygonVertex}};
    for (const auto& lPair : lPairs) {
        const Element::EMappingMode lFrom = lPair[0], lTo = lPair[1];
        ExpectCleanFailures<int>(
            [lFrom](QelMesh& pMesh) {
                TwoQuads(pMesh);
                auto* lGroups = QelLayerElementPolygonGroup::Create(&pMesh, "g");
                const int lCount = lFrom == Element::eByControlPoint     ? 7
                                   : lFrom == Element::ePerPolygonVertex ? 8
                                   : lFrom == Element::ePerPolygon       ? 2
                                                                         : 1;
                std::vector<int> lDirect;
                for (int i = 0; i < lCount; ++i)
                    lDirect.push_back(i % 3);
                Fill<int>(*lGroups, lFrom, Element::eDirect, lDirect, {});
                return lGroups;
            },
            [lTo](QelLayerElementTemplate<int>& pElement, QelMesh& pMesh) {
                return QelChangeMapping(pElement, pMesh, lTo);
            });
    }
}

} // namespace
} // namespace qelsdk
