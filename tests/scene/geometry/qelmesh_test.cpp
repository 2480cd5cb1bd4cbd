#include <qelsdk/scene/geometry/qelmesh.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace qelsdk {
namespace {

using test::AllocationFailure;
using test::Report;
using test::ReportCapture;

const char* const kArrayFile = "include/qelsdk/core/base/qelarray";

std::vector<int> Polygon(const QelMesh& pMesh, int pPolygon)
{
    std::vector<int> lVertices;
    for (int i = 0; i < pMesh.GetPolygonSize(pPolygon); ++i)
        lVertices.push_back(pMesh.GetPolygonVertex(pPolygon, i));
    return lVertices;
}

TEST(QelMesh, StartsEmpty)
{
    const QelMesh lMesh("cube");
    EXPECT_STREQ(lMesh.GetName(), "cube");
    EXPECT_EQ(lMesh.GetControlPointsCount(), 0);
    EXPECT_EQ(lMesh.GetPolygonCount(), 0);
    EXPECT_EQ(lMesh.GetPolygonVertexCount(), 0);
    EXPECT_EQ(lMesh.GetLayerCount(), 0);
}

TEST(QelMesh, IsALayerContainer)
{
    QelMesh lMesh("cube");
    QelObject* lObject = &lMesh;
    EXPECT_TRUE(lObject->Is<QelLayerContainer>());
    EXPECT_EQ(QelCast<QelMesh>(lObject), &lMesh);
    EXPECT_EQ(lMesh.CreateLayer(), 0);
    EXPECT_NE(lMesh.GetLayer(0), nullptr);
}

TEST(QelMesh, ControlPoints)
{
    QelMesh lMesh("cube");
    lMesh.SetControlPointCount(3);
    EXPECT_EQ(lMesh.GetControlPointsCount(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(lMesh.GetControlPointAt(i), QelVector4());
    lMesh.SetControlPointAt(QelVector4(1, 2, 3, 1), 0);
    lMesh.SetControlPointAt(QelVector4(4, 5, 6, 1), 2);
    EXPECT_EQ(lMesh.GetControlPointAt(0), QelVector4(1, 2, 3, 1));
    EXPECT_EQ(lMesh.GetControlPointAt(1), QelVector4());
    EXPECT_EQ(lMesh.GetControlPointAt(2), QelVector4(4, 5, 6, 1));
    lMesh.SetControlPointCount(5);
    EXPECT_EQ(lMesh.GetControlPointsCount(), 5);
    EXPECT_EQ(lMesh.GetControlPointAt(2), QelVector4(4, 5, 6, 1));
    EXPECT_EQ(lMesh.GetControlPointAt(4), QelVector4());
    lMesh.SetControlPointCount(1);
    EXPECT_EQ(lMesh.GetControlPointsCount(), 1);
    EXPECT_EQ(lMesh.GetControlPointAt(0), QelVector4(1, 2, 3, 1));
}

TEST(QelMesh, ControlPointsOutOfRange)
{
    QelMesh lMesh("cube");
    lMesh.SetControlPointCount(2);
    lMesh.SetControlPointAt(QelVector4(1, 1, 1, 1), 2);
    lMesh.SetControlPointAt(QelVector4(1, 1, 1, 1), -1);
    EXPECT_EQ(lMesh.GetControlPointAt(0), QelVector4());
    EXPECT_EQ(lMesh.GetControlPointAt(1), QelVector4());
    EXPECT_EQ(lMesh.GetControlPointAt(2), QelVector4());
    EXPECT_EQ(lMesh.GetControlPointAt(-1), QelVector4());
    lMesh.SetControlPointCount(-1);
    EXPECT_EQ(lMesh.GetControlPointsCount(), 2);
}

TEST(QelMesh, ControlPointCountKeptWhenItCannotBeAllocated)
{
    QelMesh lMesh("cube");
    lMesh.SetControlPointCount(2);
    lMesh.SetControlPointAt(QelVector4(7, 8, 9, 1), 1);
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(1);
    lMesh.SetControlPointCount(4);
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_EQ(lReports.Reports(), (std::vector<Report>{{kArrayFile, "Resize", false, "lArray"}}));
    EXPECT_EQ(lMesh.GetControlPointsCount(), 2);
    EXPECT_EQ(lMesh.GetControlPointAt(1), QelVector4(7, 8, 9, 1));
}

TEST(QelMesh, AddPolygonKeepsVerticesInOrder)
{
    QelMesh lMesh("cube");
    const int lTriangle[] = {0, 1, 2};
    const int lQuad[] = {3, 2, 1, 4};
    const int lPoint[] = {7};
    EXPECT_EQ(lMesh.AddPolygon(lTriangle, 3), 0);
    EXPECT_EQ(lMesh.AddPolygon(lQuad, 4), 1);
    EXPECT_EQ(lMesh.AddPolygon(lPoint, 1), 2);
    EXPECT_EQ(lMesh.GetPolygonCount(), 3);
    EXPECT_EQ(lMesh.GetPolygonVertexCount(), 8);
    EXPECT_EQ(lMesh.GetPolygonSize(0), 3);
    EXPECT_EQ(lMesh.GetPolygonSize(1), 4);
    EXPECT_EQ(lMesh.GetPolygonSize(2), 1);
    EXPECT_EQ(Polygon(lMesh, 0), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(Polygon(lMesh, 1), (std::vector<int>{3, 2, 1, 4}));
    EXPECT_EQ(Polygon(lMesh, 2), (std::vector<int>{7}));
}

TEST(QelMesh, PolygonGettersOutOfRange)
{
    QelMesh lMesh("cube");
    const int lTriangle[] = {5, 6, 7};
    lMesh.AddPolygon(lTriangle, 3);
    EXPECT_EQ(lMesh.GetPolygonSize(1), -1);
    EXPECT_EQ(lMesh.GetPolygonSize(-1), -1);
    EXPECT_EQ(lMesh.GetPolygonVertex(0, 3), -1);
    EXPECT_EQ(lMesh.GetPolygonVertex(0, -1), -1);
    EXPECT_EQ(lMesh.GetPolygonVertex(1, 0), -1);
    EXPECT_EQ(lMesh.GetPolygonVertex(-1, 0), -1);
}

TEST(QelMesh, AddPolygonRefusesEmptyPolygons)
{
    QelMesh lMesh("cube");
    const int lVertices[] = {0, 1, 2};
    EXPECT_EQ(lMesh.AddPolygon(lVertices, 0), -1);
    EXPECT_EQ(lMesh.AddPolygon(lVertices, -3), -1);
    EXPECT_EQ(lMesh.AddPolygon(nullptr, 3), -1);
    EXPECT_EQ(lMesh.GetPolygonCount(), 0);
    EXPECT_EQ(lMesh.GetPolygonVertexCount(), 0);
}

TEST(QelMesh, AddPolygonGrowsByDoubling)
{
    QelMesh lMesh("cube");
    const int lTriangle[] = {0, 1, 2};
    AllocationFailure lFailure;
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(lMesh.AddPolygon(lTriangle, 3), i);
    // Vertex indices 3, 6, ... 384 and polygons 1, 2, ... 128: eight blocks each.
    EXPECT_EQ(lFailure.Count(), 16);
    EXPECT_EQ(lMesh.GetPolygonVertexCount(), 300);
    EXPECT_EQ(Polygon(lMesh, 99), (std::vector<int>{0, 1, 2}));
}

// Adding a second triangle needs a larger vertex block (allocation 1) and a larger
// polygon list (allocation 2).
class QelMeshOutOfMemory : public ::testing::TestWithParam<int>
{
};

TEST_P(QelMeshOutOfMemory, AddPolygonChangesNothing)
{
    QelMesh lMesh("cube");
    const int lFirst[] = {0, 1, 2};
    const int lSecond[] = {2, 1, 3};
    ASSERT_EQ(lMesh.AddPolygon(lFirst, 3), 0);
    ReportCapture lReports;
    AllocationFailure lFailure;
    lFailure.FailAt(GetParam());
    EXPECT_EQ(lMesh.AddPolygon(lSecond, 3), -1);
    EXPECT_EQ(lFailure.Failed(), 1);
    const char* lFunction = GetParam() == 1 ? "Reserve" : "InsertAt";
    EXPECT_EQ(lReports.Reports(), (std::vector<Report>{{kArrayFile, lFunction, false, "lArray"}}));
    EXPECT_EQ(lMesh.GetPolygonCount(), 1);
    EXPECT_EQ(lMesh.GetPolygonVertexCount(), 3);
    EXPECT_EQ(Polygon(lMesh, 0), (std::vector<int>{0, 1, 2}));
    lFailure.FailNone();
    EXPECT_EQ(lMesh.AddPolygon(lSecond, 3), 1);
    EXPECT_EQ(Polygon(lMesh, 1), (std::vector<int>{2, 1, 3}));
}

INSTANTIATE_TEST_SUITE_P(EachAllocation, QelMeshOutOfMemory, ::testing::Values(1, 2));

} // namespace
} // namespace qelsdk
