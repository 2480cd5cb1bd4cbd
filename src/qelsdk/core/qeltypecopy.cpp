#include "qelsdk/core/qeltypecopyrules.h"

#include <qelsdk/core/base/qelassert.h>

#include <cstring>

namespace qelsdk {
namespace internal {

QelString QelCopyText(const QelHalfFloat& pSrc) { return QelString(pSrc.value()); }
QelString QelCopyText(bool pSrc) { return QelString(pSrc ? "true" : "false"); }
QelString QelCopyText(float pSrc) { return QelString(pSrc); }
QelString QelCopyText(double pSrc) { return QelString(pSrc); }

namespace {

// The components joined with ",": "1,2.5,-3".
QelString QelJoinComponents(const double* pValues, int pCount)
{
    QelString lText(pValues[0]);
    for (int lIndex = 1; lIndex < pCount; ++lIndex) {
        lText += ",";
        lText += QelString(pValues[lIndex]);
    }
    return lText;
}

} // namespace

QelString QelCopyText(const QelDouble2& pSrc) { return QelJoinComponents(pSrc.mData, 2); }
QelString QelCopyText(const QelDouble3& pSrc) { return QelJoinComponents(pSrc.mData, 3); }
QelString QelCopyText(const QelDouble4& pSrc) { return QelJoinComponents(pSrc.mData, 4); }

// Only the first row is formatted: the text stays one line of four values.
QelString QelCopyText(const QelDouble4x4& pSrc) { return QelCopyText(pSrc[0]); }

// Timecode of all five elements at the default frame rate: callers compare the text.
QelString QelCopyText(const QelTime& pSrc)
{
    constexpr unsigned short lSize = 128;
    char lText[lSize];
    return QelString(pSrc.GetTimeString(lText, lSize, 5, 0, 2));
}

QelString QelCopyText(const QelBlob&) { return QelString("<blob>"); }

QelString QelCopyText(const QelDistance& pSrc)
{
    QelString lText(pSrc.value());
    lText += " ";
    lText += pSrc.unitName();
    return lText;
}

QelString QelCopyText(const QelDateTime& pSrc) { return pSrc.toString(); }

bool QelCopyBytes(QelBlob& pDst, const QelTime& pSrc)
{
    const long long lCount = pSrc.Get();
    return QelCopyBytes(pDst, lCount);
}

// The characters go to the blob as they are, so their count must be a valid byte
// count: zero or more. QelString keeps its length non-negative (and its buffer
// non-null), so with this string type the check cannot fail.
bool QelCopyBytes(QelBlob& pDst, const QelString& pSrc)
{
    const int lLength = pSrc.GetLen();
    const bool lCastable = lLength >= 0;
    if (!lCastable) {
        _QelAssert(sQelTypeCopyFile, "QelTypeCopy", __LINE__, false, "%s", "lCastable");
        return false;
    }
    pDst.Assign(pSrc.Buffer(), lLength);
    return true;
}

namespace {

// Reports pText as a message of QelTypeCopy and returns false.
bool QelRefuse(unsigned int pLine, const char* pText)
{
    _QelAssert(sQelTypeCopyFile, "QelTypeCopy", pLine, true, "%s", pText);
    return false;
}

// The storage position of a tag, -1 when the tag names no storage type.
int QelStorageIndex(EQelType pType)
{
    return QelIsTagInTable(pType) ? QelCopyIndexOfTag(pType) : -1;
}

} // namespace

bool QelRefuseIncompatible() { return QelRefuse(__LINE__, "Incompatible type assignment!"); }

bool QelRefuseTag(EQelType pType)
{
    return QelRefuse(__LINE__, pType == eQelReference
                                   ? "Trying to set value on a void Reference type"
                                   : "Trying to assign an unknown type");
}

bool QelRefuseForeignSource(EQelType pDstType)
{
    return QelStorageIndex(pDstType) >= 0 ? QelRefuseIncompatible() : QelRefuseTag(pDstType);
}

} // namespace internal

namespace {

using namespace internal;

// A table of one function per tag, indexed by tag + 17: TEntry<T>::Apply of the
// tag's storage type T for the tags with a matrix position, null for the others.
template <class TFunction, template <class> class TEntry, int tOffset>
constexpr TFunction QelTagEntry()
{
    constexpr int lIndex = sQelCopyIndexOfTag[tOffset];
    if constexpr (lIndex < 0)
        return nullptr;
    else
        return &TEntry<QelCopyType<lIndex>>::Apply;
}

template <class TFunction, template <class> class TEntry, int... tOffsets>
constexpr std::array<TFunction, sQelTagCount>
QelMakeTagTable(std::integer_sequence<int, tOffsets...>)
{
    return {{QelTagEntry<TFunction, TEntry, tOffsets>()...}};
}

template <class TFunction, template <class> class TEntry>
constexpr std::array<TFunction, sQelTagCount> QelMakeTagTable()
{
    return QelMakeTagTable<TFunction, TEntry>(std::make_integer_sequence<int, sQelTagCount>());
}

// The typed entry point's entries for one source type: *pDst taken as TDst.
template <class TSrc> struct QelCopyInto
{
    typedef bool (*Function)(void* pDst, const TSrc& pSrc);

    template <class TDst> struct To
    {
        static bool Apply(void* pDst, const TSrc& pSrc)
        {
            return QelCopyPair(*static_cast<TDst*>(pDst), pSrc);
        }
    };
};

// The typed entry point of TSrc.
template <class TSrc> bool QelCopyFromValue(void* pDst, EQelType pDstType, const TSrc& pSrc)
{
    typedef QelCopyInto<TSrc> Into;
    static constexpr std::array<typename Into::Function, sQelTagCount> sTable =
        QelMakeTagTable<typename Into::Function, Into::template To>();
    if (QelIsTagInTable(pDstType)) {
        const auto lCopy = sTable[QelTagOffset(pDstType)];
        if (lCopy) return lCopy(pDst, pSrc);
    }
    return QelRefuseTag(pDstType);
}

// The untyped entry point's entries: *pSrc read as TSrc.
typedef bool (*QelCopyFrom)(void* pDst, EQelType pDstType, const void* pSrc);

template <class TSrc> struct QelCopyFromStorage
{
    static bool Apply(void* pDst, EQelType pDstType, const void* pSrc)
    {
        return QelCopyFromValue(pDst, pDstType, *static_cast<const TSrc*>(pSrc));
    }
};

constexpr std::array<QelCopyFrom, sQelTagCount> sCopyFrom =
    QelMakeTagTable<QelCopyFrom, QelCopyFromStorage>();

// The batched loops, one per cell of the matrix. Buffers laid out item after item
// are walked as typed arrays so that the compiler can vectorise the plain numeric
// rules; other strides step over bytes.
typedef int (*QelCopyLoop)(void* pDst, size_t pDstStride, const void* pSrc, size_t pSrcStride,
                           int pCount);

template <class T, class TByte> T& QelItemAt(TByte* pBuffer, size_t pStride, int pIndex)
{
    return *reinterpret_cast<T*>(pBuffer + pStride * static_cast<size_t>(pIndex));
}

// Floating to integer: the pairs whose plain loop the compiler vectorises only when no
// value needs the out-of-range treatment.
template <class TDst, class TSrc>
constexpr bool sIsTruncation = (QelCopyRuleOf<TDst, TSrc>() == eQelCopyArithmetic) &&
                               (std::is_integral<TDst>::value &&
                                !std::is_same<TDst, bool>::value) &&
                               std::is_floating_point<TSrc>::value;

// The bits of a float or double as an unsigned integer of the same size.
template <class TFloat> auto QelBitsOf(TFloat pValue)
{
    std::conditional_t<sizeof(TFloat) == 8, unsigned long long, unsigned int> lBits;
    static_assert(sizeof(lBits) == sizeof(pValue), "a float is read as an integer of its size");
    std::memcpy(&lBits, &pValue, sizeof(lBits));
    return lBits;
}

// Items per chunk of a truncation: a chunk with a value out of range is converted
// again item by item, while it is still in the first level cache.
constexpr int sTruncationChunk = 1024;
// Items checked side by side; the chunks of the vectorised path are multiples of it.
constexpr int sTruncationLanes = 8;
static_assert(sTruncationChunk % sTruncationLanes == 0, "whole groups of lanes per chunk");

// Whether the truncation of every value of the chunk lies in TDst's range, tested on
// the bits: and, add and or only, which vectorise (the compares do not, on the base
// instruction set). The magnitude is below the bound, a power of two, exactly when
// adding (sign bit - bound) leaves the sign bit clear; NaN and infinities are above.
// For unsigned destinations any sign bit counts as out of range, -0.0 and (-1, 0)
// included: those few take the item-by-item path, which gives them their value.
template <class TDst, class TSrc> bool QelTruncatesChunkDirectly(const TSrc* pSrc, int pCount)
{
    typedef decltype(QelBitsOf(TSrc())) Bits;
    constexpr Bits lSign = Bits(1) << (sizeof(Bits) * 8 - 1);
    const Bits lBoundBits = QelBitsOf(sQelTruncationEnd<TDst, TSrc>);
    const Bits lNegative = std::is_signed<TDst>::value ? Bits(0) : lSign;
    // Several accumulators, so that the or does not chain every vector to the last.
    Bits lOutside[sTruncationLanes] = {};
    for (int lIndex = 0; lIndex < pCount; lIndex += sTruncationLanes) {
        for (int lLane = 0; lLane < sTruncationLanes; ++lLane) {
            const Bits lBits = QelBitsOf(pSrc[lIndex + lLane]);
            lOutside[lLane] |= ((lBits & ~lSign) + (lSign - lBoundBits)) | (lBits & lNegative);
        }
    }
    Bits lAll = 0;
    for (const Bits lLane : lOutside)
        lAll |= lLane;
    return (lAll & lSign) == 0;
}

// Converts the chunk directly when every value is in range, and tells whether it did.
template <class TDst, class TSrc> bool QelTruncateChunk(TDst* pDst, const TSrc* pSrc, int pCount)
{
    if (!QelTruncatesChunkDirectly<TDst>(pSrc, pCount)) return false;
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
        pDst[lIndex] = static_cast<TDst>(pSrc[lIndex]);
    return true;
}

// The per-item rule over a packed buffer, up to the first refused item.
template <class TDst, class TSrc> int QelCopyEach(TDst* pDst, const TSrc* pSrc, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
        if (!QelCopyPair(pDst[lIndex], pSrc[lIndex])) return lIndex;
    return pCount;
}

// Arithmetic never refuses, so a chunk converted again item by item, and the items
// after the last whole group of lanes, end as the per-item path leaves them.
template <class TDst, class TSrc> int QelCopyPacked(TDst* pDst, const TSrc* pSrc, int pCount)
{
    if constexpr (sIsTruncation<TDst, TSrc>) {
        const int lInChunks = pCount - pCount % sTruncationLanes;
        for (int lBegin = 0; lBegin < lInChunks; lBegin += sTruncationChunk) {
            const int lLeft = lInChunks - lBegin;
            const int lCount = lLeft < sTruncationChunk ? lLeft : sTruncationChunk;
            if (!QelTruncateChunk(pDst + lBegin, pSrc + lBegin, lCount))
                QelCopyEach(pDst + lBegin, pSrc + lBegin, lCount);
        }
        QelCopyEach(pDst + lInChunks, pSrc + lInChunks, pCount - lInChunks);
        return pCount;
    } else {
        return QelCopyEach(pDst, pSrc, pCount);
    }
}

template <class TDst, class TSrc>
int QelCopyStrided(char* pDst, size_t pDstStride, const char* pSrc, size_t pSrcStride, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex) {
        const TSrc& lSrc = QelItemAt<const TSrc>(pSrc, pSrcStride, lIndex);
        if (!QelCopyPair(QelItemAt<TDst>(pDst, pDstStride, lIndex), lSrc)) return lIndex;
    }
    return pCount;
}

template <class TDst, class TSrc>
int QelCopyItems(void* pDst, size_t pDstStride, const void* pSrc, size_t pSrcStride, int pCount)
{
    if (pDstStride == sizeof(TDst) && pSrcStride == sizeof(TSrc))
        return QelCopyPacked(static_cast<TDst*>(pDst), static_cast<const TSrc*>(pSrc), pCount);
    return QelCopyStrided<TDst, TSrc>(static_cast<char*>(pDst), pDstStride,
                                      static_cast<const char*>(pSrc), pSrcStride, pCount);
}

constexpr int sCellCount = sQelCopyTypeCount * sQelCopyTypeCount;

template <int tCell> constexpr QelCopyLoop QelCopyLoopEntry()
{
    return &QelCopyItems<QelCopyType<tCell / sQelCopyTypeCount>,
                         QelCopyType<tCell % sQelCopyTypeCount>>;
}

template <int... tCells>
constexpr std::array<QelCopyLoop, sCellCount>
QelMakeCopyLoops(std::integer_sequence<int, tCells...>)
{
    return {{QelCopyLoopEntry<tCells>()...}};
}

// Indexed by destination position * sQelCopyTypeCount + source position.
constexpr std::array<QelCopyLoop, sCellCount> sCopyLoops =
    QelMakeCopyLoops(std::make_integer_sequence<int, sCellCount>());

} // namespace

bool QelTypeCopy(void* pDst, EQelType pDstType, const void* pSrc, EQelType pSrcType)
{
    if (QelIsTagInTable(pSrcType)) {
        const QelCopyFrom lCopy = sCopyFrom[QelTagOffset(pSrcType)];
        if (lCopy) return lCopy(pDst, pDstType, pSrc);
    }
    return QelRefuseTag(pSrcType);
}

int QelTypeCopyArray(void* pDst, EQelType pDstType, size_t pDstStride, const void* pSrc,
                     EQelType pSrcType, size_t pSrcStride, int pCount)
{
    if (pCount <= 0) return 0;
    const int lDst = QelStorageIndex(pDstType);
    const int lSrc = QelStorageIndex(pSrcType);
    if (lDst < 0 || lSrc < 0) {
        // A reference or unknown tag refuses the first item already: its one call
        // makes the same report the per-item conversion would.
        QelTypeCopy(pDst, pDstType, pSrc, pSrcType);
        return 0;
    }
    return sCopyLoops[lDst * sQelCopyTypeCount + lSrc](pDst, pDstStride, pSrc, pSrcStride, pCount);
}

} // namespace qelsdk
