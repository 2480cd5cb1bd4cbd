#include <qelsdk/scene/geometry/qellayer.h>
#include <qelsdk/scene/geometry/qellayerutils.h>
#include <qelsdk/scene/geometry/qelmesh.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;

const double sPi = 3.14159265358979323846;

void AddPoints(QelMesh& pMesh, const std::vector<QelVector4>& pPoints)
{
    pMesh.SetControlPointCount(static_cast<int>(pPoints.size()));
    for (size_t i = 0; i < pPoints.size(); ++i)
        pMesh.SetControlPointAt(pPoints[i], static_cast<int>(i));
}

void AddPolygons(QelMesh& pMesh, const std::vector<std::vector<int>>& pPolygons)
{
    for (const std::vector<int>& lPolygon : pPolygons)
        ASSERT_GE(pMesh.AddPolygon(lPolygon.data(), static_cast<int>(lPolygon.size())), 0);
}

// The cube of corners (+-1, +-1, +-1): point i has x > 0 for bit 0, y for bit 1, z for
// bit 2; faces wound counter-clockwise seen from outside, in the order -z +z -y +y -x +x.
void MakeCube(QelMesh& pMesh)
{
    std::vector<QelVector4> lPoints;
    for (int i = 0; i < 8; ++i)
        lPoints.push_back(QelVector4(i & 1 ? 1 : -1, i & 2 ? 1 : -1, i & 4 ? 1 : -1, 1));
    AddPoints(pMesh, lPoints);
    AddPolygons(
        pMesh,
        {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}});
}

const QelVector4 sCubeFaces[6] = {QelVector4(0, 0, -1, 0), QelVector4(0, 0, 1, 0),
                                  QelVector4(0, -1, 0, 0), QelVector4(0, 1, 0, 0),
                                  QelVector4(-1, 0, 0, 0), QelVector4(1, 0, 0, 0)};

QelLayerElementSmoothing* AddSmoothing(QelMesh& pMesh, const std::vector<int>& pGroups,
                                       Element::EMappingMode pMapping = Element::ePerPolygon)
{
    if (pMesh.GetLayerCount() == 0) pMesh.CreateLayer();
    auto* lSmoothing = static_cast<QelLayerElementSmoothing*>(
        pMesh.GetLayer(0)->CreateLayerElementOfType(Element::eSmoothing));
    lSmoothing->SetMappingMode(pMapping);
    for (int lGroup : pGroups)
        lSmoothing->GetDirectArray().Add(lGroup);
    return lSmoothing;
}

std::vector<QelVector4> NormalsOf(QelMesh& pMesh, int pLayer = 0)
{
    QelLayerElementNormal* lNormals = pMesh.GetLayer(pLayer)->GetNormals();
    std::vector<QelVector4> lItems;
    for (int i = 0; i < lNormals->GetDirectArray().GetCount(); ++i)
        lItems.push_back(lNormals->GetDirectArray().GetAt(i));
    return lItems;
}

// The index count of an element whatever its reference mode, without the getter's
// report outside the index modes.
int IndexCount(QelLayerElementNormal& pNormals)
{
    const Element::EReferenceMode lMode = pNormals.GetReferenceMode();
    pNormals.SetReferenceMode(Element::eIndexToDirect);
    const int lCount = pNormals.GetIndexArray().GetCount();
    pNormals.SetReferenceMode(lMode);
    return lCount;
}

void ExpectNear(const QelVector4& pActual, const QelVector4& pExpected, double pTolerance,
                int pItem)
{
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(pActual[c], pExpected[c], pTolerance) << "item " << pItem << " component " << c;
}

void ExpectHardCube(QelMesh& pMesh)
{
    const std::vector<QelVector4> lNormals = NormalsOf(pMesh);
    ASSERT_EQ(lNormals.size(), 24u);
    for (int k = 0; k < 24; ++k)
        EXPECT_TRUE(lNormals[k] == sCubeFaces[k / 4]) << "polygon vertex " << k;
}

TEST(ComputeNormals, HardCubeGivesEachFaceItsNormal)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    AddSmoothing(lMesh, {0, 0, 0, 0, 0, 0});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    QelLayerElementNormal* lNormals = lMesh.GetLayer(0)->GetNormals();
    ASSERT_NE(lNormals, nullptr);
    EXPECT_EQ(lNormals->GetMappingMode(), Element::ePerPolygonVertex);
    EXPECT_EQ(lNormals->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(IndexCount(*lNormals), 0);
    ExpectHardCube(lMesh);
}

TEST(ComputeNormals, CubeOfSixGroupsIsHardToo)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    AddSmoothing(lMesh, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    ExpectHardCube(lMesh);
}

TEST(ComputeNormals, SmoothCubeGivesCornerDiagonals)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(lMesh.GetLayer(0)->GetNormals()->GetMappingMode(), Element::eByControlPoint);
    const std::vector<QelVector4> lNormals = NormalsOf(lMesh);
    ASSERT_EQ(lNormals.size(), 8u);
    const double lThird = 1.0 / std::sqrt(3.0);
    for (int i = 0; i < 8; ++i)
        ExpectNear(lNormals[i],
                   QelVector4(i & 1 ? lThird : -lThird, i & 2 ? lThird : -lThird,
                              i & 4 ? lThird : -lThird, 0.0),
                   1e-15, i);
}

// A UV sphere of radius 2: poles, then rings of points; triangles at the poles and
// quads between, wound counter-clockwise seen from outside.
void MakeSphere(QelMesh& pMesh, int pSlices, int pStacks)
{
    std::vector<QelVector4> lPoints{QelVector4(0, 0, 2, 1)};
    for (int j = 1; j < pStacks; ++j)
        for (int i = 0; i < pSlices; ++i) {
            const double lTheta = sPi * j / pStacks, lPhi = 2 * sPi * i / pSlices;
            lPoints.push_back(QelVector4(2 * std::sin(lTheta) * std::cos(lPhi),
                                         2 * std::sin(lTheta) * std::sin(lPhi),
                                         2 * std::cos(lTheta), 1));
        }
    lPoints.push_back(QelVector4(0, 0, -2, 1));
    AddPoints(pMesh, lPoints);
    auto Ring = [pSlices](int j, int i) { return 1 + (j - 1) * pSlices + i % pSlices; };
    const int lSouth = static_cast<int>(lPoints.size()) - 1;
    std::vector<std::vector<int>> lPolygons;
    for (int i = 0; i < pSlices; ++i) {
        lPolygons.push_back({0, Ring(1, i), Ring(1, i + 1)});
        for (int j = 1; j + 1 < pStacks; ++j)
            lPolygons.push_back({Ring(j, i), Ring(j + 1, i), Ring(j + 1, i + 1), Ring(j, i + 1)});
        lPolygons.push_back({Ring(pStacks - 1, i), lSouth, Ring(pStacks - 1, i + 1)});
    }
    AddPolygons(pMesh, lPolygons);
}

// At a point of polar angle t, the quad above meets it at an angle smaller by about
// cos(t) hPhi / 2 than the quad below, and the two lean by -hTheta / 2 and +hTheta / 2:
// the angle-weighted normal leans from the radial direction by about
// cos(t) hTheta hPhi / (2 pi) = pi cos(t) / (slices stacks), and by nothing at the
// equator and the poles.
void ExpectRadial(int pSlices, int pStacks)
{
    QelMesh lMesh("sphere");
    MakeSphere(lMesh, pSlices, pStacks);
    ASSERT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    const std::vector<QelVector4> lNormals = NormalsOf(lMesh);
    ASSERT_EQ(static_cast<int>(lNormals.size()), lMesh.GetControlPointsCount());
    const double lLean = sPi / (static_cast<double>(pSlices) * pStacks);
    double lWorst = 0.0;
    for (int i = 0; i < lMesh.GetControlPointsCount(); ++i) {
        const QelVector4 lPoint = lMesh.GetControlPointAt(i);
        const double lCos = std::fabs(lPoint[2] / 2);
        const double lPole = i == 0 || i + 1 == lMesh.GetControlPointsCount() ? 0.0 : 1.0;
        const double lBound = 1.001 * lLean * lCos * lPole + 1e-12;
        double lError = 0.0;
        for (int c = 0; c < 3; ++c)
            lError = std::max(lError, std::fabs(lNormals[i][c] - lPoint[c] / 2));
        EXPECT_LE(lError, lBound) << "point " << i;
        EXPECT_EQ(lNormals[i][3], 0.0);
        lWorst = std::max(lWorst, lError);
    }
    EXPECT_GT(lWorst, 0.9 * lLean * std::cos(sPi / pStacks)); // the bound is tight
}

TEST(ComputeNormals, SphereNormalsAreRadial)
{
    ExpectRadial(64, 32);
    ExpectRadial(512, 256);
}

// The lean falls below 1e-6 with slices x stacks above pi 1e6: 3.3 million polygons,
// which only an optimised build goes through in reasonable time.
TEST(ComputeNormals, FineSphereNormalsAreWithinAMillionth)
{
#ifndef NDEBUG
    GTEST_SKIP() << "a sphere of 3.3 million polygons is for optimised builds";
#endif
    QelMesh lMesh("sphere");
    MakeSphere(lMesh, 2048, 1600);
    ASSERT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    const std::vector<QelVector4> lNormals = NormalsOf(lMesh);
    double lWorst = 0.0;
    for (int i = 0; i < lMesh.GetControlPointsCount(); ++i) {
        const QelVector4 lPoint = lMesh.GetControlPointAt(i);
        for (int c = 0; c < 3; ++c)
            lWorst = std::max(lWorst, std::fabs(lNormals[i][c] - lPoint[c] / 2));
    }
    EXPECT_LT(lWorst, 1e-6);
}

// Two unit quads folded along their common edge (points 1 and 2): the first faces +z,
// the second +x.
void MakeFold(QelMesh& pMesh)
{
    AddPoints(pMesh, {QelVector4(0, 0, 0, 1), QelVector4(1, 0, 0, 1), QelVector4(1, 1, 0, 1),
                      QelVector4(0, 1, 0, 1), QelVector4(1, 0, -1, 1), QelVector4(1, 1, -1, 1)});
    AddPolygons(pMesh, {{0, 1, 2, 3}, {1, 4, 5, 2}});
}

const QelVector4 sUp(0, 0, 1, 0), sSide(1, 0, 0, 0);

void ExpectFold(QelMesh& pMesh, bool pShared)
{
    const double lHalf = 1.0 / std::sqrt(2.0);
    const QelVector4 lEdge = pShared ? QelVector4(lHalf, 0, lHalf, 0) : sUp;
    const QelVector4 lEdgeSide = pShared ? lEdge : sSide;
    const std::vector<QelVector4> lExpected{sUp,       lEdge, lEdge, sUp,
                                            lEdgeSide, sSide, sSide, lEdgeSide};
    const std::vector<QelVector4> lNormals = NormalsOf(pMesh);
    ASSERT_EQ(lNormals.size(), 8u);
    for (int k = 0; k < 8; ++k)
        ExpectNear(lNormals[k], lExpected[k], 1e-15, k);
}

TEST(ComputeNormals, SameGroupSharesAcrossTheFold)
{
    QelMesh lMesh("fold");
    MakeFold(lMesh);
    AddSmoothing(lMesh, {3, 3});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    ExpectFold(lMesh, true);
}

TEST(ComputeNormals, DifferentGroupsAndGroupZeroSplitTheFold)
{
    for (const std::vector<int>& lGroups :
         {std::vector<int>{1, 2}, std::vector<int>{0, 2}, std::vector<int>{0, 0}}) {
        QelMesh lMesh("fold");
        MakeFold(lMesh);
        AddSmoothing(lMesh, lGroups);
        EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
        ExpectFold(lMesh, false);
    }
}

TEST(ComputeNormals, WithoutSmoothingTheMeshIsSmooth)
{
    QelMesh lMesh("fold");
    MakeFold(lMesh);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    ExpectFold(lMesh, true);
}

TEST(ComputeNormals, SmoothingOfAnotherMappingIsIgnored)
{
    QelMesh lMesh("fold");
    MakeFold(lMesh);
    AddSmoothing(lMesh, {0, 0, 0, 0, 0, 0, 0}, Element::eByEdge);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    ExpectFold(lMesh, true);
}

TEST(ComputeNormals, SmoothingIsReadThroughItsIndices)
{
    QelMesh lMesh("fold");
    MakeFold(lMesh);
    QelLayerElementSmoothing* lSmoothing = AddSmoothing(lMesh, {0, 5});
    lSmoothing->SetReferenceMode(Element::eIndexToDirect);
    lSmoothing->GetIndexArray().Add(1);
    lSmoothing->GetIndexArray().Add(1);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    ExpectFold(lMesh, true);
}

TEST(ComputeNormals, WeightsByTheAngleAtTheVertex)
{
    // At the origin: a right angle of a triangle facing +z, and an angle of 45 degrees
    // of a triangle facing +x. Angle weights give (pi/4, 0, pi/2), of direction (1, 0, 2).
    QelMesh lMesh("corner");
    AddPoints(lMesh, {QelVector4(0, 0, 0, 1), QelVector4(1, 0, 0, 1), QelVector4(0, 1, 0, 1),
                      QelVector4(0, 1, 1, 1)});
    AddPolygons(lMesh, {{0, 1, 2}, {0, 2, 3}});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    const double lFifth = 1.0 / std::sqrt(5.0);
    ExpectNear(NormalsOf(lMesh)[0], QelVector4(lFifth, 0, 2 * lFifth, 0), 1e-15, 0);
}

TEST(ComputeNormals, DegeneratePolygonsAreSkipped)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    // Points 8 to 10 on a line, point 11 used by no polygon; a polygon of two vertices.
    lMesh.SetControlPointCount(12);
    lMesh.SetControlPointAt(QelVector4(-1, -1, -1, 1), 8);
    lMesh.SetControlPointAt(QelVector4(0, 0, 0, 1), 9);
    lMesh.SetControlPointAt(QelVector4(1, 1, 1, 1), 10);
    AddPolygons(lMesh, {{8, 9, 10}, {0, 7}, {0, 7, 0}});
    AddSmoothing(lMesh, {0, 0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    const std::vector<QelVector4> lPoints = NormalsOf(lMesh);
    ASSERT_EQ(lPoints.size(), 12u);
    EXPECT_NEAR(lPoints[0][0], -1.0 / std::sqrt(3.0), 1e-15);
    for (int i = 8; i < 12; ++i)
        EXPECT_TRUE(lPoints[i] == QelVector4(0, 0, 0, 0)) << i;

    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilOk);
    const std::vector<QelVector4> lVertices = NormalsOf(lMesh);
    ASSERT_EQ(lVertices.size(), 32u);
    for (int k = 0; k < 24; ++k)
        EXPECT_TRUE(lVertices[k] == sCubeFaces[k / 4]) << k;
    for (int k = 24; k < 32; ++k)
        EXPECT_TRUE(lVertices[k] == QelVector4(0, 0, 0, 0)) << k;
}

TEST(ComputeNormals, ReplacesTheContentOfTheExistingElement)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    lMesh.CreateLayer();
    lMesh.CreateLayer();
    auto* lOld = static_cast<QelLayerElementNormal*>(
        lMesh.GetLayer(1)->CreateLayerElementOfType(Element::eNormal));
    lOld->SetMappingMode(Element::ePerPolygon);
    lOld->SetReferenceMode(Element::eIndexToDirect);
    lOld->GetDirectArray().Add(QelVector4(5, 5, 5, 5));
    for (int i = 0; i < 6; ++i)
        lOld->GetIndexArray().Add(0);
    const int lElements = lMesh.GetLayerElementCount();
    EXPECT_EQ(QelComputeNormals(lMesh, 1, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(lMesh.GetLayer(1)->GetNormals(), lOld);
    EXPECT_EQ(lMesh.GetLayerElementCount(), lElements);
    EXPECT_EQ(lOld->GetMappingMode(), Element::eByControlPoint);
    EXPECT_EQ(lOld->GetReferenceMode(), Element::eDirect);
    EXPECT_EQ(lOld->GetDirectArray().GetCount(), 8);
    EXPECT_EQ(IndexCount(*lOld), 0);
    EXPECT_EQ(lMesh.GetLayer(0)->GetNormals(), nullptr);
}

TEST(ComputeNormals, CreatesTheNextLayerOnly)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    EXPECT_EQ(QelComputeNormals(lMesh, 1, Element::eByControlPoint), eQelUtilBadLayer);
    EXPECT_EQ(QelComputeNormals(lMesh, -1, Element::eByControlPoint), eQelUtilBadLayer);
    EXPECT_EQ(lMesh.GetLayerCount(), 0);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilOk);
    EXPECT_EQ(lMesh.GetLayerCount(), 1);
    EXPECT_EQ(QelComputeNormals(lMesh, 1, Element::ePerPolygonVertex), eQelUtilOk);
    EXPECT_EQ(lMesh.GetLayerCount(), 2);
    EXPECT_EQ(lMesh.GetLayer(1)->GetNormals()->GetDirectArray().GetCount(), 24);
    EXPECT_EQ(lMesh.GetLayerElementCount(), 2);
}

TEST(ComputeNormals, Refusals)
{
    QelMesh lMesh("cube");
    MakeCube(lMesh);
    for (Element::EMappingMode lMapping :
         {Element::eNone, Element::ePerPolygon, Element::eByEdge, Element::eAllSame}) {
        EXPECT_EQ(QelComputeNormals(lMesh, 0, lMapping), eQelUtilBadMappingMode);
    }
    EXPECT_EQ(lMesh.GetLayerCount(), 0);

    QelLayerElementSmoothing* lSmoothing = AddSmoothing(lMesh, {1, 1, 1, 1, 1});
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilCountMismatch);
    lSmoothing->GetDirectArray().Add(1);
    lSmoothing->SetReferenceMode(Element::eIndexToDirect);
    for (int i = 0; i < 6; ++i)
        lSmoothing->GetIndexArray().Add(i == 3 ? 6 : 0);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilIndexOutOfRange);
    EXPECT_EQ(lMesh.GetLayer(0)->GetNormals(), nullptr);
    lSmoothing->SetReferenceMode(Element::eDirect);

    auto* lNormals = static_cast<QelLayerElementNormal*>(
        lMesh.GetLayer(0)->CreateLayerElementOfType(Element::eNormal));
    lNormals->SetMappingMode(Element::eAllSame);
    lNormals->GetDirectArray().Add(QelVector4(1, 2, 3, 4));
    ASSERT_EQ(lNormals->GetDirectArray().ReadLock(), 1);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilLocked);
    lNormals->GetDirectArray().ReadUnlock();
    ASSERT_EQ(lSmoothing->GetDirectArray().ReadLock(), 1);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::ePerPolygonVertex), eQelUtilLocked);
    lSmoothing->GetDirectArray().ReadUnlock();

    const int lBad[] = {0, 1, 8};
    ASSERT_EQ(lMesh.AddPolygon(lBad, 3), 6);
    EXPECT_EQ(QelComputeNormals(lMesh, 0, Element::eByControlPoint), eQelUtilIndexOutOfRange);
    EXPECT_EQ(lNormals->GetMappingMode(), Element::eAllSame);
    ASSERT_EQ(lNormals->GetDirectArray().GetCount(), 1);
    EXPECT_TRUE(lNormals->GetDirectArray().GetAt(0) == QelVector4(1, 2, 3, 4));
}

// Every allocation of the computation fails in turn on a cube with a layer 0 that holds
// smoothing groups, written into layer pTarget (0, or 1 which is then created), whose
// normal element exists beforehand when pExisting. A refusal leaves the mesh's
// elements as they were (a layer it had to create stays, empty); the run that meets no
// failure gives the normals.
void ExpectCleanFailures(int pTarget, bool pExisting, Element::EMappingMode pMapping)
{
    int lRefusals = 0;
    for (int n = 1; n < 200; ++n) {
        QelMesh lMesh("cube");
        MakeCube(lMesh);
        AddSmoothing(lMesh, {1, 1, 0, 2, 2, 1});
        QelLayerElementNormal* lOld = nullptr;
        if (pExisting) {
            lOld = static_cast<QelLayerElementNormal*>(
                lMesh.GetLayer(pTarget)->CreateLayerElementOfType(Element::eNormal));
            lOld->SetMappingMode(Element::eAllSame);
            lOld->GetDirectArray().Add(QelVector4(1, 2, 3, 4));
        }
        const int lElements = lMesh.GetLayerElementCount();
        EQelLayerUtilStatus lStatus;
        int lFailed;
        {
            test::ReportCapture lQuiet;
            test::AllocationFailure lFailure;
            lFailure.FailAt(n);
            lStatus = QelComputeNormals(lMesh, pTarget, pMapping);
            lFailed = lFailure.Failed();
        }
        if (lStatus == eQelUtilOutOfMemory) {
            ++lRefusals;
            EXPECT_EQ(lMesh.GetLayerElementCount(), lElements) << n;
            if (lMesh.GetLayerCount() > pTarget) {
                EXPECT_EQ(lMesh.GetLayer(pTarget)->GetNormals(), lOld) << n;
            }
            if (lOld) {
                EXPECT_EQ(lOld->GetMappingMode(), Element::eAllSame) << n;
                ASSERT_EQ(lOld->GetDirectArray().GetCount(), 1) << n;
                EXPECT_TRUE(lOld->GetDirectArray().GetAt(0) == QelVector4(1, 2, 3, 4)) << n;
            }
            continue;
        }
        EXPECT_EQ(lStatus, eQelUtilOk) << n;
        const std::vector<QelVector4> lNormals = NormalsOf(lMesh, pTarget);
        ASSERT_EQ(lNormals.size(), pMapping == Element::eByControlPoint ? 8u : 24u) << n;
        if (pTarget == 0 && pMapping == Element::ePerPolygonVertex) {
            // The hard face (polygon 2) keeps its own normal.
            for (int k = 8; k < 12; ++k)
                EXPECT_TRUE(lNormals[k] == sCubeFaces[2]) << n << " " << k;
        }
        if (lFailed == 0) {
            EXPECT_GT(lRefusals, 0);
            return;
        }
    }
    FAIL() << "no run without a failure";
}

TEST(ComputeNormalsMemory, NewLayerFailsCleanly)
{
    ExpectCleanFailures(1, false, Element::ePerPolygonVertex);
    ExpectCleanFailures(1, false, Element::eByControlPoint);
}

TEST(ComputeNormalsMemory, NewElementFailsCleanly)
{
    ExpectCleanFailures(0, false, Element::ePerPolygonVertex);
    ExpectCleanFailures(0, false, Element::eByControlPoint);
}

TEST(ComputeNormalsMemory, ExistingElementFailsCleanly)
{
    ExpectCleanFailures(0, true, Element::ePerPolygonVertex);
    ExpectCleanFailures(0, true, Element::eByControlPoint);
}

} // namespace
} // namespace qelsdk
