#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include <gtest/gtest.h>

#include <cstring>

namespace qelsdk {
namespace {

const char* const kChannels[] = {QelSurfaceMaterial::sDiffuse,
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

TEST(QelSurfaceMaterial, IsANamedObject)
{
    QelSurfaceMaterial lMaterial("red");
    EXPECT_STREQ(lMaterial.GetName(), "red");
    EXPECT_STREQ(QelSurfaceMaterial().GetName(), "");
    EXPECT_TRUE(lMaterial.Is<QelSurfaceMaterial>());
    EXPECT_FALSE(lMaterial.Is<QelTexture>());
}

TEST(QelSurfaceMaterial, ChannelNames)
{
    const char* const lExpected[] = {"DiffuseColor",
                                     "DiffuseFactor",
                                     "EmissiveColor",
                                     "EmissiveFactor",
                                     "AmbientColor",
                                     "AmbientFactor",
                                     "SpecularColor",
                                     "SpecularFactor",
                                     "Shininess",
                                     "NormalMap",
                                     "Bump",
                                     "TransparentColor",
                                     "TransparencyFactor",
                                     "ReflectionColor",
                                     "ReflectionFactor",
                                     "DisplacementColor",
                                     "VectorDisplacementColor"};
    static_assert(sizeof(lExpected) == sizeof(kChannels), "one text per channel");
    for (size_t i = 0; i < sizeof(kChannels) / sizeof(kChannels[0]); ++i)
        EXPECT_STREQ(kChannels[i], lExpected[i]) << "channel " << i;
}

TEST(QelSurfaceMaterial, ChannelNamesAreDistinct)
{
    const size_t lCount = sizeof(kChannels) / sizeof(kChannels[0]);
    EXPECT_EQ(lCount, 17u);
    for (size_t i = 0; i < lCount; ++i)
        for (size_t j = i + 1; j < lCount; ++j)
            EXPECT_STRNE(kChannels[i], kChannels[j]) << i << " and " << j;
}

} // namespace
} // namespace qelsdk
