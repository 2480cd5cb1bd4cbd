#include <qelsdk/core/qeldatatype.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

namespace qelsdk {
namespace {

// Copied during static initialisation of this translation unit: the constants are
// constant-initialised, so the copies hold their values whatever the order in which
// translation units are initialised.
const QelDataType sEarlyUV = QelLayerElementUVDT;
const QelDataType sEarlyDiffuse = QelMaterialDiffuseDT;
const QelDataType sEarlyDouble = QelDoubleDT;

struct Case
{
    const QelDataType* mDataType;
    EQelType mType;
};

const Case sValueTypes[] = {{&QelUndefinedDT, eQelUndefined},
                            {&QelCharDT, eQelChar},
                            {&QelUCharDT, eQelUChar},
                            {&QelShortDT, eQelShort},
                            {&QelUShortDT, eQelUShort},
                            {&QelUIntDT, eQelUInt},
                            {&QelLongLongDT, eQelLongLong},
                            {&QelULongLongDT, eQelULongLong},
                            {&QelHalfFloatDT, eQelHalfFloat},
                            {&QelBoolDT, eQelBool},
                            {&QelIntDT, eQelInt},
                            {&QelFloatDT, eQelFloat},
                            {&QelDoubleDT, eQelDouble},
                            {&QelDouble2DT, eQelDouble2},
                            {&QelDouble3DT, eQelDouble3},
                            {&QelDouble4DT, eQelDouble4},
                            {&QelDouble4x4DT, eQelDouble4x4},
                            {&QelEnumDT, eQelEnum},
                            {&QelStringDT, eQelString},
                            {&QelTimeDT, eQelTime},
                            {&QelReferenceDT, eQelReference},
                            {&QelBlobDT, eQelBlob},
                            {&QelDistanceDT, eQelDistance},
                            {&QelDateTimeDT, eQelDateTime}};

const Case sElementTypes[] = {
    {&QelLayerElementNormalDT, eQelDouble4},      {&QelLayerElementBinormalDT, eQelDouble4},
    {&QelLayerElementTangentDT, eQelDouble4},     {&QelLayerElementUVDT, eQelDouble2},
    {&QelLayerElementVertexColorDT, eQelDouble4}, {&QelLayerElementPolygonGroupDT, eQelInt},
    {&QelLayerElementSmoothingDT, eQelInt},       {&QelLayerElementCreaseDT, eQelDouble},
    {&QelLayerElementHoleDT, eQelBool},           {&QelLayerElementVisibilityDT, eQelBool},
    {&QelLayerElementMaterialDT, eQelReference},  {&QelLayerElementTextureDT, eQelReference},
    {&QelLayerElementUserDataDT, eQelReference}};

const QelDataType* const sChannelTypes[] = {&QelMaterialDiffuseDT,
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

template <size_t N> void ExpectTypesAndDistinctNames(const Case (&pCases)[N])
{
    std::set<std::string> lNames;
    for (const Case& lCase : pCases) {
        EXPECT_EQ(lCase.mDataType->GetType(), lCase.mType) << lCase.mDataType->GetName();
        EXPECT_STRNE(lCase.mDataType->GetName(), "");
        EXPECT_TRUE(lNames.insert(lCase.mDataType->GetName()).second) << lCase.mDataType->GetName();
    }
}

TEST(QelDataType, ValueTypeConstants) { ExpectTypesAndDistinctNames(sValueTypes); }

TEST(QelDataType, ElementConstantsCarryTheirDirectArrayType)
{
    ExpectTypesAndDistinctNames(sElementTypes);
}

TEST(QelDataType, ChannelConstantsAreReferences)
{
    EXPECT_EQ(sizeof(sChannelTypes) / sizeof(sChannelTypes[0]), 17u);
    std::set<std::string> lNames;
    for (const QelDataType* lDataType : sChannelTypes) {
        EXPECT_EQ(lDataType->GetType(), eQelReference) << lDataType->GetName();
        EXPECT_STRNE(lDataType->GetName(), "");
        EXPECT_TRUE(lNames.insert(lDataType->GetName()).second) << lDataType->GetName();
    }
}

TEST(QelDataType, UsableDuringStaticInitialisation)
{
    EXPECT_EQ(sEarlyUV, QelLayerElementUVDT);
    EXPECT_EQ(sEarlyUV.GetType(), eQelDouble2);
    EXPECT_STREQ(sEarlyUV.GetName(), QelLayerElementUVDT.GetName());
    EXPECT_EQ(sEarlyDiffuse.GetType(), eQelReference);
    EXPECT_STREQ(sEarlyDiffuse.GetName(), QelMaterialDiffuseDT.GetName());
    EXPECT_EQ(sEarlyDouble.GetType(), eQelDouble);
}

TEST(QelDataType, DefaultIsUndefinedWithEmptyName)
{
    const QelDataType lType;
    EXPECT_EQ(lType.GetType(), eQelUndefined);
    EXPECT_STREQ(lType.GetName(), "");
    EXPECT_STREQ(QelDataType(nullptr, eQelInt).GetName(), "");
}

TEST(QelDataType, EqualityComparesTypeAndNameText)
{
    char lName[] = "Normal";
    EXPECT_TRUE(QelDataType(lName, eQelDouble4) == QelLayerElementNormalDT);
    EXPECT_FALSE(QelDataType(lName, eQelDouble4) != QelLayerElementNormalDT);
    EXPECT_TRUE(QelDataType(lName, eQelDouble3) != QelLayerElementNormalDT);
    EXPECT_TRUE(QelDataType("Other", eQelDouble4) != QelLayerElementNormalDT);
}

TEST(QelDataType, CopiesAsBytes)
{
    QelDataType lCopy;
    std::memcpy(static_cast<void*>(&lCopy), &QelLayerElementCreaseDT, sizeof(lCopy));
    EXPECT_EQ(lCopy, QelLayerElementCreaseDT);
}

} // namespace
} // namespace qelsdk
