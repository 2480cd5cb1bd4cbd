#include <qelsdk/core/qelvector.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace qelsdk {
namespace {

static_assert(std::is_same<QelVector2, QelVectorTemplate2<double>>::value, "");
static_assert(std::is_same<QelVector4, QelVectorTemplate4<double>>::value, "");
static_assert(std::is_same<QelDouble4x4, QelVectorTemplate4<QelVectorTemplate4<double>>>::value,
              "");

TEST(QelVector, DefaultIsAllZeros)
{
    const QelDouble2 l2;
    const QelDouble3 l3;
    const QelDouble4 l4;
    const QelDouble4x4 lMatrix;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(l2[i], 0.0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(l3[i], 0.0);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(l4[i], 0.0);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            EXPECT_EQ(lMatrix[i][j], 0.0);
}

TEST(QelVector, ComponentsByIndex)
{
    QelDouble4 lVector(1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(lVector[0], 1.0);
    EXPECT_EQ(lVector[3], 4.0);
    lVector[2] = 7.0;
    EXPECT_EQ(lVector, QelDouble4(1.0, 2.0, 7.0, 4.0));
    const QelDouble2 l2(5.0, 6.0);
    EXPECT_EQ(l2[1], 6.0);
    const QelDouble3 l3(5.0, 6.0, 8.0);
    EXPECT_EQ(l3[2], 8.0);
}

TEST(QelVector, ScalarAssignmentFillsTwoAndThreeVectors)
{
    QelDouble2 l2(1.0, 2.0);
    l2 = 4.5;
    EXPECT_EQ(l2, QelDouble2(4.5, 4.5));
    QelDouble3 l3(1.0, 2.0, 3.0);
    l3 = -1.0;
    EXPECT_EQ(l3, QelDouble3(-1.0, -1.0, -1.0));
}

TEST(QelVector, FourVectorFromThreeVectorKeepsFourth)
{
    QelDouble4 lVector(9.0, 9.0, 9.0, 9.0);
    lVector = QelDouble3(1.0, 2.0, 3.0);
    EXPECT_EQ(lVector, QelDouble4(1.0, 2.0, 3.0, 9.0));
}

TEST(QelVector, FourVectorViewsFirstThree)
{
    QelDouble4 lVector(1.0, 2.0, 3.0, 4.0);
    QelDouble3& lView = lVector;
    EXPECT_EQ(lView, QelDouble3(1.0, 2.0, 3.0));
    lView[1] = 20.0;
    EXPECT_EQ(lVector, QelDouble4(1.0, 20.0, 3.0, 4.0));
    const QelDouble4& lConst = lVector;
    const QelDouble3& lConstView = lConst;
    EXPECT_EQ(&lConstView[0], &lVector[0]);
}

TEST(QelVector, Assignment)
{
    QelDouble4 lVector;
    lVector = QelDouble4(1.0, 2.0, 3.0, 4.0);
    EXPECT_EQ(lVector, QelDouble4(1.0, 2.0, 3.0, 4.0));
    QelDouble2 l2;
    l2 = QelDouble2(1.0, 2.0);
    EXPECT_EQ(l2, QelDouble2(1.0, 2.0));
    QelDouble3 l3;
    l3 = QelDouble3(1.0, 2.0, 3.0);
    EXPECT_EQ(l3, QelDouble3(1.0, 2.0, 3.0));
    QelDouble4x4 lMatrix;
    lMatrix[2] = QelDouble4(1.0, 2.0, 3.0, 4.0);
    QelDouble4x4 lCopy;
    lCopy = lMatrix;
    EXPECT_EQ(lCopy, lMatrix);
    EXPECT_EQ(lCopy[2][3], 4.0);
}

TEST(QelVector, EqualityComparesEveryComponent)
{
    EXPECT_TRUE(QelDouble2(1.0, 2.0) == QelDouble2(1.0, 2.0));
    EXPECT_FALSE(QelDouble2(1.0, 2.0) != QelDouble2(1.0, 2.0));
    EXPECT_TRUE(QelDouble2(1.0, 2.0) != QelDouble2(1.0, 3.0));
    EXPECT_TRUE(QelDouble2(1.0, 2.0) != QelDouble2(0.0, 2.0));
    EXPECT_TRUE(QelDouble3(1.0, 2.0, 3.0) != QelDouble3(1.0, 2.0, 4.0));
    EXPECT_TRUE(QelDouble3(1.0, 2.0, 3.0) != QelDouble3(0.0, 2.0, 3.0));
    EXPECT_FALSE(QelDouble3(1.0, 2.0, 3.0) != QelDouble3(1.0, 2.0, 3.0));
    for (int i = 0; i < 4; ++i) {
        QelDouble4 lOther(1.0, 2.0, 3.0, 4.0);
        lOther[i] = 0.0;
        EXPECT_TRUE(lOther != QelDouble4(1.0, 2.0, 3.0, 4.0)) << i;
        EXPECT_FALSE(lOther == QelDouble4(1.0, 2.0, 3.0, 4.0)) << i;
    }
}

} // namespace
} // namespace qelsdk
