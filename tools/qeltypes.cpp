// Prints every value-type tag with its storage size, one per line.
#include <qelsdk/qelsdk.h>

#include <cstdio>

int main()
{
    using namespace qelsdk;
    const EQelType lTags[] = {
        eQelEnumMulti, eQelChar,      eQelUChar,     eQelShort,   eQelUShort,    eQelUInt,
        eQelLongLong,  eQelULongLong, eQelHalfFloat, eQelBool,    eQelInt,       eQelFloat,
        eQelDouble,    eQelDouble2,   eQelDouble3,   eQelDouble4, eQelDouble4x4, eQelEnum,
        eQelString,    eQelTime,      eQelReference, eQelBlob,    eQelDistance,  eQelDateTime};
    for (EQelType lTag : lTags)
        std::printf("%3d %4d\n", static_cast<int>(lTag), QelTypeSizeOf(lTag));
    return 0;
}
