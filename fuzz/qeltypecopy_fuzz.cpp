// Value conversion on arbitrary tag pairs. Sources of the types whose every bit
// pattern is a value take their bytes from the input (a bool is normalised to 0 or 1
// first); the others (strings, blobs, distances, dates, references, unknown tags)
// are default values. A refused conversion must leave the destination's bytes as they
// were.
#include <qelsdk/core/qeltypecopy.h>

#include "qelfuzzsupport.h"
#include "qelsdk/core/qelvaluetypes.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace qelsdk;

namespace {

// Room for the largest value (a 4x4 matrix of doubles), aligned for any of them.
constexpr size_t sValueRoom = 256;

bool EveryBitPatternIsAValue(EQelType pType)
{
    switch (pType) {
    case eQelEnumMulti:
    case eQelChar:
    case eQelUChar:
    case eQelShort:
    case eQelUShort:
    case eQelUInt:
    case eQelLongLong:
    case eQelULongLong:
    case eQelHalfFloat:
    case eQelInt:
    case eQelFloat:
    case eQelDouble:
    case eQelDouble2:
    case eQelDouble3:
    case eQelDouble4:
    case eQelDouble4x4:
    case eQelEnum:
    case eQelTime:
        return true;
    default:
        return false;
    }
}

// A value of pType in pRoom: input bytes where they make a value, else the default.
void MakeSource(EQelType pType, unsigned char* pRoom, fuzz::QelInput& pInput)
{
    if (EveryBitPatternIsAValue(pType)) {
        const size_t lBytes = pInput.Left() < sValueRoom ? pInput.Left() : sValueRoom;
        std::memcpy(pRoom, pInput.Data(), lBytes);
    } else if (pType == eQelBool) {
        pRoom[0] = pInput.Take<uint8_t>() & 1;
    } else if (internal::QelIsTagInTable(pType)) {
        internal::QelConstructValues(pType, pRoom, 1);
    }
}

void Destroy(EQelType pType, void* pValue)
{
    if (internal::QelIsTagInTable(pType)) internal::QelDestroyValues(pType, pValue, 1);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::QelInstallFuzzHandlers(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    fuzz::QelInput lInput(pData, pSize);
    const auto lDstType = static_cast<EQelType>(lInput.Take<int8_t>());
    const auto lSrcType = static_cast<EQelType>(lInput.Take<int8_t>());
    alignas(16) unsigned char lSource[sValueRoom] = {};
    alignas(16) unsigned char lTarget[sValueRoom] = {};
    MakeSource(lSrcType, lSource, lInput);
    if (internal::QelIsTagInTable(lDstType)) internal::QelConstructValues(lDstType, lTarget, 1);
    unsigned char lBefore[sValueRoom];
    std::memcpy(lBefore, lTarget, sValueRoom);
    const bool lCopied = QelTypeCopy(lTarget, lDstType, lSource, lSrcType);
    if (!lCopied && std::memcmp(lBefore, lTarget, sValueRoom) != 0) __builtin_trap();
    // Whatever was copied is read back the other way, through the array form.
    alignas(16) unsigned char lBack[sValueRoom] = {};
    if (internal::QelIsTagInTable(lSrcType)) internal::QelConstructValues(lSrcType, lBack, 1);
    if (lCopied) QelTypeCopyArray(lBack, lSrcType, sValueRoom, lTarget, lDstType, sValueRoom, 1);
    Destroy(lSrcType, lBack);
    Destroy(lDstType, lTarget);
    Destroy(lSrcType, lSource);
    return 0;
}
