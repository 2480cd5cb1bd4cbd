#include <qelsdk/core/qelpropertytypes.h>

#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>

namespace qelsdk {
namespace {

// Storage size per tag, indexed by tag + 17; zero marks an unknown tag.
constexpr int sTypeSizes[] = {sizeof(int), // -17 eQelEnumMulti
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0,
                              0, // -16 .. -1 unknown
                              0, // 0 eQelUndefined
                              sizeof(signed char),
                              sizeof(unsigned char),
                              sizeof(short),
                              sizeof(unsigned short),
                              sizeof(unsigned int),
                              sizeof(long long),
                              sizeof(unsigned long long),
                              sizeof(QelHalfFloat),
                              sizeof(bool),
                              sizeof(int),
                              sizeof(float),
                              sizeof(double),
                              sizeof(QelDouble2),
                              sizeof(QelDouble3),
                              sizeof(QelDouble4),
                              sizeof(QelDouble4x4),
                              sizeof(int), // 17 eQelEnum
                              sizeof(QelString),
                              sizeof(QelTime),
                              8, // 20 eQelReference: one pointer
                              sizeof(QelBlob),
                              sizeof(QelDistance),
                              sizeof(QelDateTime)};

static_assert(sizeof(sTypeSizes) / sizeof(sTypeSizes[0]) == eQelTypeCount + 17,
              "one size per tag from -17 to 23");

} // namespace

int QelTypeSizeOf(EQelType pType)
{
    // Range first: adding the offset to an arbitrary 32-bit tag could overflow.
    if (pType < eQelEnumMulti || pType >= eQelTypeCount) return 0;
    return sTypeSizes[pType - eQelEnumMulti];
}

} // namespace qelsdk
