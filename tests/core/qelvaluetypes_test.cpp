#include "qelsdk/core/qelvaluetypes.h"

#include <qelsdk/core/base/qelalloc.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace qelsdk {
namespace {

using namespace internal;

const EQelType sUnknownTags[] = {eQelUndefined, static_cast<EQelType>(-1),
                                 static_cast<EQelType>(-18), eQelTypeCount};

TEST(QelTypeOwnsMemory, OnlyTypesWithMemoryOfTheirOwn)
{
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset) {
        const EQelType lTag = QelTagAt(lOffset);
        const bool lOwns = lTag == eQelString || lTag == eQelBlob || lTag == eQelDistance;
        EXPECT_EQ(QelTypeOwnsMemory(lTag), lOwns) << lTag;
    }
    for (EQelType lTag : sUnknownTags)
        EXPECT_FALSE(QelTypeOwnsMemory(lTag)) << lTag;
}

// Items of T, their bytes set to garbage first.
template <class T> struct GarbageItems
{
    GarbageItems() { std::memset(mBytes, 0xA5, sizeof(mBytes)); }
    T* Items() { return reinterpret_cast<T*>(mBytes); }
    alignas(T) unsigned char mBytes[3 * sizeof(T)];
};

TEST(QelConstructValues, BuildsDefaultValuesInPlace)
{
    GarbageItems<QelDouble3> lVectors;
    QelConstructValues(eQelDouble3, lVectors.Items(), 3);
    for (int lIndex = 0; lIndex < 3; ++lIndex)
        EXPECT_TRUE(lVectors.Items()[lIndex] == QelDouble3()) << lIndex;

    GarbageItems<QelString> lStrings;
    QelConstructValues(eQelString, lStrings.Items(), 3);
    for (int lIndex = 0; lIndex < 3; ++lIndex)
        EXPECT_EQ(lStrings.Items()[lIndex].GetLen(), 0) << lIndex;
    QelDestroyValues(eQelString, lStrings.Items(), 3);
}

TEST(QelConstructValues, LeavesPlainItemsAlone)
{
    const EQelType lTags[] = {eQelInt,
                              eQelEnumMulti,
                              eQelEnum,
                              eQelDouble,
                              eQelReference,
                              eQelUndefined,
                              static_cast<EQelType>(-1),
                              eQelTypeCount};
    for (EQelType lTag : lTags) {
        GarbageItems<long long> lItems;
        const GarbageItems<long long> lUntouched;
        QelConstructValues(lTag, lItems.Items(), 3);
        QelDestroyValues(lTag, lItems.Items(), 3);
        EXPECT_EQ(std::memcmp(lItems.mBytes, lUntouched.mBytes, sizeof(lItems.mBytes)), 0) << lTag;
    }
}

int sFrees = 0;
QelFreeProc sPreviousFree = nullptr;

void CountingFree(void* pBlock)
{
    if (pBlock) ++sFrees;
    sPreviousFree(pBlock);
}

TEST(QelDestroyValues, ReleasesTheMemoryOfEveryItem)
{
    GarbageItems<QelString> lStrings;
    QelConstructValues(eQelString, lStrings.Items(), 3);
    for (int lIndex = 0; lIndex < 3; ++lIndex)
        lStrings.Items()[lIndex] = "text";
    sFrees = 0;
    sPreviousFree = QelSetFreeHandler(CountingFree);
    QelDestroyValues(eQelString, lStrings.Items(), 3);
    QelSetFreeHandler(sPreviousFree);
    EXPECT_EQ(sFrees, 3);
}

TEST(QelTypeFacts, EveryRowHasItsNameAndSize)
{
    int lRows = 0;
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset) {
        const QelTypeFacts& lFacts = sQelTypeFacts[lOffset];
        const EQelType lTag = QelTagAt(lOffset);
        if (!lFacts.mName) {
            EXPECT_EQ(lFacts.mSize, 0) << lTag;
            continue;
        }
        ++lRows;
        EXPECT_EQ(std::string(lFacts.mName).rfind("eQel", 0), 0u) << lTag;
        EXPECT_EQ(lFacts.mSize, QelTypeSizeOf(lTag)) << lTag;
    }
    EXPECT_EQ(lRows, 24);
    EXPECT_STREQ(QelFactsOfTag(eQelInt).mName, "eQelInt");
    EXPECT_STREQ(QelFactsOfTag(eQelEnumMulti).mName, "eQelEnumMulti");
    EXPECT_STREQ(QelFactsOfTag(eQelReference).mName, "eQelReference");
    for (EQelType lTag : sUnknownTags)
        EXPECT_EQ(QelFactsOfTag(lTag).mName, nullptr) << lTag;
}

} // namespace
} // namespace qelsdk
