#include <qelsdk/core/qelpropertytypes.h>

#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qelvector.h>
#include <qelsdk/scene/geometry/qellayerelementarray.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

namespace qelsdk {
namespace {

static_assert(std::is_same<std::underlying_type<EQelType>::type, int>::value,
              "any 32-bit tag can be held");

TEST(EQelType, ValuesAreFixed)
{
    EXPECT_EQ(eQelEnumMulti, -17);
    EXPECT_EQ(eQelUndefined, 0);
    const EQelType lInOrder[] = {
        eQelChar,      eQelUChar,     eQelShort,   eQelUShort,    eQelUInt,    eQelLongLong,
        eQelULongLong, eQelHalfFloat, eQelBool,    eQelInt,       eQelFloat,   eQelDouble,
        eQelDouble2,   eQelDouble3,   eQelDouble4, eQelDouble4x4, eQelEnum,    eQelString,
        eQelTime,      eQelReference, eQelBlob,    eQelDistance,  eQelDateTime};
    int lExpected = 1;
    for (EQelType lType : lInOrder)
        EXPECT_EQ(static_cast<int>(lType), lExpected++);
    EXPECT_EQ(eQelDateTime, 23);
    EXPECT_EQ(eQelEnumMulti, -eQelEnum);
}

TEST(QelTypeSizeOf, StorageSizeOfEveryTag)
{
    struct Case
    {
        EQelType mType;
        int mSize;
    };
    const Case lCases[] = {{eQelEnumMulti, 4},
                           {eQelUndefined, 0},
                           {eQelChar, 1},
                           {eQelUChar, 1},
                           {eQelShort, 2},
                           {eQelUShort, 2},
                           {eQelUInt, 4},
                           {eQelLongLong, 8},
                           {eQelULongLong, 8},
                           {eQelHalfFloat, 2},
                           {eQelBool, 1},
                           {eQelInt, 4},
                           {eQelFloat, 4},
                           {eQelDouble, 8},
                           {eQelDouble2, 16},
                           {eQelDouble3, 24},
                           {eQelDouble4, 32},
                           {eQelDouble4x4, 128},
                           {eQelEnum, 4},
                           {eQelString, static_cast<int>(sizeof(QelString))},
                           {eQelTime, 8},
                           {eQelReference, 8},
                           {eQelBlob, static_cast<int>(sizeof(QelBlob))},
                           {eQelDistance, static_cast<int>(sizeof(QelDistance))},
                           {eQelDateTime, static_cast<int>(sizeof(QelDateTime))}};
    for (const Case& lCase : lCases)
        EXPECT_EQ(QelTypeSizeOf(lCase.mType), lCase.mSize) << lCase.mType;
    EXPECT_EQ(QelTypeSizeOf(eQelDateTime), 6 * static_cast<int>(sizeof(int)));
}

TEST(QelTypeSizeOf, UnknownTagsHaveNoSize)
{
    for (int lTag = -16; lTag <= -1; ++lTag)
        EXPECT_EQ(QelTypeSizeOf(static_cast<EQelType>(lTag)), 0) << lTag;
    const int lOthers[] = {
        -18, 24, 25, -1000, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()};
    for (int lTag : lOthers)
        EXPECT_EQ(QelTypeSizeOf(static_cast<EQelType>(lTag)), 0) << lTag;
}

TEST(QelTypeOf, TagsOfStaticTypes)
{
    EXPECT_EQ(QelTypeOf(true), eQelBool);
    EXPECT_EQ(QelTypeOf(3), eQelInt);
    EXPECT_EQ(QelTypeOf(1.5f), eQelFloat);
    EXPECT_EQ(QelTypeOf(1.5), eQelDouble);
    EXPECT_EQ(QelTypeOf(QelVector2()), eQelDouble2);
    EXPECT_EQ(QelTypeOf(QelVector4()), eQelDouble4);
    EXPECT_EQ(QelTypeOf(QelColor()), eQelDouble4);
    EXPECT_EQ(QelTypeOf(QelColor()), QelTypeOf(QelVector4()));
    EXPECT_EQ(QelTypeOf(QelColor()), 15);
}

TEST(QelTypeOf, PointersAreReferences)
{
    unsigned long long* lUserData = nullptr;
    QelLayerElementArray* lArray = nullptr;
    QelSurfaceMaterial* lMaterial = nullptr;
    QelTexture* lTexture = nullptr;
    EXPECT_EQ(QelTypeOf(lUserData), eQelReference);
    EXPECT_EQ(QelTypeOf(lArray), eQelReference);
    EXPECT_EQ(QelTypeOf(lMaterial), eQelReference);
    EXPECT_EQ(QelTypeOf(lTexture), eQelReference);
}

// Whether QelTypeOf takes a T.
template <class T, class = void> struct HasTag : std::false_type
{
};
template <class T>
struct HasTag<T, decltype(void(QelTypeOf(std::declval<const T&>())))> : std::true_type
{
};

// A pointer whose class declares no tag does not fall back to the bool overload.
TEST(QelTypeOf, UntaggedPointersHaveNoTag)
{
    static_assert(!HasTag<int*>::value, "an int pointer has no tag");
    static_assert(!HasTag<QelString*>::value, "a string pointer has no tag");
    static_assert(HasTag<unsigned long long*>::value, "");
    EXPECT_EQ(QelTypeOf(static_cast<void*>(nullptr)), eQelReference);
}

} // namespace
} // namespace qelsdk
