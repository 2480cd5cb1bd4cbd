#include <qelsdk/scene/qelnode.h>
#include <qelsdk/scene/qeltexture.h>

#include <gtest/gtest.h>

namespace qelsdk {
namespace {

TEST(QelTexture, IsANamedObject)
{
    QelTexture lTexture("wood");
    EXPECT_STREQ(lTexture.GetName(), "wood");
    EXPECT_STREQ(QelTexture().GetName(), "");
    EXPECT_TRUE(lTexture.Is<QelTexture>());
    EXPECT_FALSE(lTexture.Is<QelNode>());
    EXPECT_EQ(QelCast<QelTexture>(&lTexture), &lTexture);
}

} // namespace
} // namespace qelsdk
