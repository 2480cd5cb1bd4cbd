#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qelsurfacematerial.h>

#include <gtest/gtest.h>

namespace qelsdk {
namespace {

TEST(QelNode, IsANamedObject)
{
    QelNode lNode("root");
    EXPECT_STREQ(lNode.GetName(), "root");
    EXPECT_STREQ(QelNode().GetName(), "");
    EXPECT_TRUE(lNode.Is<QelObject>());
    EXPECT_TRUE(lNode.Is<QelNode>());
    EXPECT_FALSE(lNode.Is<QelSurfaceMaterial>());
}

TEST(QelNode, InstantiatesItsMeshAndHoldsItsMaterials)
{
    QelNode lNode("node");
    QelMesh lMesh("mesh");
    QelSurfaceMaterial lMaterial("material");
    EXPECT_TRUE(lNode.ConnectSrcObject(&lMesh));
    EXPECT_TRUE(lNode.ConnectSrcObject(&lMaterial));
    EXPECT_EQ(lMesh.GetDstObjectCount<QelNode>(), 1);
    EXPECT_EQ(lMesh.GetDstObject<QelNode>(0), &lNode);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelMesh>(), 1);
    EXPECT_EQ(lNode.GetSrcObjectCount<QelSurfaceMaterial>(), 1);
    EXPECT_EQ(lNode.GetSrcObject<QelSurfaceMaterial>(0), &lMaterial);
}

} // namespace
} // namespace qelsdk
