#include <qelsdk/core/qelblob.h>

#include "support/qeltestsupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace qelsdk {
namespace {

const char sBytes[] = {1, 2, 3, 4, 0, 6};

bool Holds(const QelBlob& pBlob, const void* pData, int pSize)
{
    return pBlob.Size() == pSize &&
           std::memcmp(pBlob.Access(), pData, static_cast<size_t>(pSize)) == 0;
}

TEST(QelBlob, DefaultIsEmpty)
{
    QelBlob lBlob;
    EXPECT_EQ(lBlob.Size(), 0);
    EXPECT_EQ(lBlob.Access(), nullptr);
}

TEST(QelBlob, ConstructorCopiesBytes)
{
    QelBlob lBlob(sBytes, sizeof(sBytes));
    EXPECT_TRUE(Holds(lBlob, sBytes, sizeof(sBytes)));
    EXPECT_NE(lBlob.Access(), static_cast<const void*>(sBytes));
}

TEST(QelBlob, NullOrNonPositiveSizeIsEmpty)
{
    EXPECT_EQ(QelBlob(nullptr, 4).Size(), 0);
    EXPECT_EQ(QelBlob(sBytes, 0).Size(), 0);
    EXPECT_EQ(QelBlob(sBytes, -1).Size(), 0);
    QelBlob lBlob(sBytes, 3);
    EXPECT_TRUE(lBlob.Assign(nullptr, 3));
    EXPECT_EQ(lBlob.Size(), 0);
    EXPECT_EQ(lBlob.Access(), nullptr);
    lBlob.Assign(sBytes, 3);
    EXPECT_TRUE(lBlob.Assign(sBytes, -5));
    EXPECT_EQ(lBlob.Size(), 0);
}

TEST(QelBlob, AssignReplaces)
{
    QelBlob lBlob(sBytes, 2);
    EXPECT_TRUE(lBlob.Assign(sBytes + 1, 5));
    EXPECT_TRUE(Holds(lBlob, sBytes + 1, 5));
}

TEST(QelBlob, AssignFromOwnBlock)
{
    QelBlob lBlob(sBytes, sizeof(sBytes));
    EXPECT_TRUE(lBlob.Assign(static_cast<const char*>(lBlob.Access()) + 2, 4));
    EXPECT_TRUE(Holds(lBlob, sBytes + 2, 4));
    EXPECT_TRUE(lBlob.Assign(lBlob.Access(), lBlob.Size()));
    EXPECT_TRUE(Holds(lBlob, sBytes + 2, 4));
}

TEST(QelBlob, CopyIsDeep)
{
    QelBlob lBlob(sBytes, sizeof(sBytes));
    QelBlob lCopy(lBlob);
    EXPECT_TRUE(Holds(lCopy, sBytes, sizeof(sBytes)));
    EXPECT_NE(lCopy.Access(), lBlob.Access());
    QelBlob lOther;
    lOther = lBlob;
    EXPECT_TRUE(Holds(lOther, sBytes, sizeof(sBytes)));
    EXPECT_NE(lOther.Access(), lBlob.Access());
    lBlob.Assign(sBytes, 1);
    EXPECT_TRUE(Holds(lCopy, sBytes, sizeof(sBytes)));
}

TEST(QelBlob, SelfAssignmentKeepsBytes)
{
    QelBlob lBlob(sBytes, sizeof(sBytes));
    const void* lData = lBlob.Access();
    QelBlob& lSame = lBlob;
    lBlob = lSame;
    EXPECT_EQ(lBlob.Access(), lData);
    EXPECT_TRUE(Holds(lBlob, sBytes, sizeof(sBytes)));
}

TEST(QelBlob, AssignEmptyBlobEmpties)
{
    QelBlob lBlob(sBytes, 3);
    lBlob = QelBlob();
    EXPECT_EQ(lBlob.Size(), 0);
    EXPECT_EQ(lBlob.Access(), nullptr);
}

TEST(QelBlob, Equality)
{
    EXPECT_TRUE(QelBlob(sBytes, 3) == QelBlob(sBytes, 3));
    EXPECT_FALSE(QelBlob(sBytes, 3) != QelBlob(sBytes, 3));
    EXPECT_TRUE(QelBlob(sBytes, 3) != QelBlob(sBytes, 4));
    EXPECT_TRUE(QelBlob(sBytes, 3) != QelBlob(sBytes + 1, 3));
    EXPECT_TRUE(QelBlob() == QelBlob(sBytes, 0));
    EXPECT_TRUE(QelBlob() != QelBlob(sBytes, 1));
}

TEST(QelBlob, FailedAllocationKeepsOldBytes)
{
    QelBlob lBlob(sBytes, 2);
    const void* lData = lBlob.Access();
    {
        test::AllocationFailure lFailure;
        lFailure.FailAt(1);
        EXPECT_FALSE(lBlob.Assign(sBytes, sizeof(sBytes)));
        EXPECT_EQ(lFailure.Failed(), 1);
    }
    EXPECT_EQ(lBlob.Access(), lData);
    EXPECT_TRUE(Holds(lBlob, sBytes, 2));
}

TEST(QelBlob, FailedAllocationInAssignmentKeepsOldBytes)
{
    QelBlob lBlob(sBytes, 2);
    const QelBlob lOther(sBytes + 1, 4);
    test::AllocationFailure lFailure;
    lFailure.FailAt(1);
    lBlob = lOther;
    EXPECT_EQ(lFailure.Failed(), 1);
    EXPECT_TRUE(Holds(lBlob, sBytes, 2));
}

TEST(QelBlob, FailedAllocationInConstructionGivesEmpty)
{
    const QelBlob lSource(sBytes, 4);
    test::AllocationFailure lFailure;
    lFailure.FailFrom(1);
    QelBlob lBlob(sBytes, 4);
    EXPECT_EQ(lBlob.Size(), 0);
    EXPECT_EQ(lBlob.Access(), nullptr);
    QelBlob lCopy(lSource);
    EXPECT_EQ(lCopy.Size(), 0);
    EXPECT_EQ(lFailure.Failed(), 2);
}

TEST(QelBlob, ZeroFilledBytesAreValidEmptyBlob)
{
    alignas(QelBlob) unsigned char lStorage[sizeof(QelBlob)];
    std::memset(lStorage, 0, sizeof(lStorage));
    QelBlob* lBlob = std::launder(reinterpret_cast<QelBlob*>(lStorage));
    EXPECT_EQ(lBlob->Size(), 0);
    EXPECT_TRUE(*lBlob == QelBlob());
    *lBlob = QelBlob(sBytes, 3);
    EXPECT_TRUE(Holds(*lBlob, sBytes, 3));
    lBlob->~QelBlob();
}

} // namespace
} // namespace qelsdk
