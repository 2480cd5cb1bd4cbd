#include <qelsdk/core/qelpropertytypes.h>

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

// Only the first row: the other twelve values are dropped, kept as-is for the files
// that already hold matrices written this way.
QelString QelCopyText(const QelDouble4x4& pSrc) { return QelCopyText(pSrc[0]); }

QelString QelCopyText(const QelTime& pSrc)
{
    char lText[128];
    return QelString(pSrc.GetTimeString(lText, 128, 5, 0, 2));
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

// The castable flag compares the length with itself and so is always true; the check
// stays so that a string type whose length could disagree with its buffer is caught.
bool QelCopyBytes(QelBlob& pDst, const QelString& pSrc)
{
    const int lLength = pSrc.GetLen();
    const bool lCastable = lLength == pSrc.GetLen();
    if (!lCastable) {
        _QelAssert(sQelTypeCopyFile, "QelTypeCopy", __LINE__, false, "%s", "lCastable");
        return false;
    }
    pDst.Assign(pSrc.Buffer(), lLength);
    return true;
}

} // namespace internal

namespace {

using namespace internal;

// The untyped entry point's table: one reader per source tag, indexed by tag + 17,
// null for the tags that name no storage type.
typedef bool (*QelCopyFrom)(void* pDst, EQelType pDstType, const void* pSrc);

template <class TSrc> bool QelCopyFromStorage(void* pDst, EQelType pDstType, const void* pSrc)
{
    return QelTypeCopy(pDst, pDstType, *static_cast<const TSrc*>(pSrc));
}

template <int tOffset> constexpr QelCopyFrom QelCopyFromEntry()
{
    constexpr int lIndex = sQelCopyIndexOfTag[tOffset];
    if constexpr (lIndex < 0)
        return nullptr;
    else
        return &QelCopyFromStorage<QelCopyType<lIndex>>;
}

template <int... tOffsets>
constexpr std::array<QelCopyFrom, sQelTagCount>
QelMakeCopyFrom(std::integer_sequence<int, tOffsets...>)
{
    return {{QelCopyFromEntry<tOffsets>()...}};
}

constexpr std::array<QelCopyFrom, sQelTagCount> sCopyFrom =
    QelMakeCopyFrom(std::make_integer_sequence<int, sQelTagCount>());

// The batched loops, one per cell of the matrix. Buffers laid out item after item
// are walked as typed arrays so that the compiler can vectorise the plain numeric
// rules; other strides step over bytes.
typedef int (*QelCopyLoop)(void* pDst, size_t pDstStride, const void* pSrc, size_t pSrcStride,
                           int pCount);

template <class T, class TByte> T& QelItemAt(TByte* pBuffer, size_t pStride, int pIndex)
{
    return *reinterpret_cast<T*>(pBuffer + pStride * static_cast<size_t>(pIndex));
}

template <class TDst, class TSrc> int QelCopyPacked(TDst* pDst, const TSrc* pSrc, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
        if (!QelTypeCopy(pDst[lIndex], pSrc[lIndex])) return lIndex;
    return pCount;
}

template <class TDst, class TSrc>
int QelCopyStrided(char* pDst, size_t pDstStride, const char* pSrc, size_t pSrcStride, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex) {
        const TSrc& lSrc = QelItemAt<const TSrc>(pSrc, pSrcStride, lIndex);
        if (!QelTypeCopy(QelItemAt<TDst>(pDst, pDstStride, lIndex), lSrc)) return lIndex;
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

// Indexed by destination position * 21 + source position in QelCopyTypes.
constexpr std::array<QelCopyLoop, sCellCount> sCopyLoops =
    QelMakeCopyLoops(std::make_integer_sequence<int, sCellCount>());

// The storage position of a tag, -1 when the tag names no storage type.
int QelStorageIndex(EQelType pType)
{
    return QelIsTagInTable(pType) ? QelCopyIndexOfTag(pType) : -1;
}

} // namespace

bool QelTypeCopy(void* pDst, EQelType pDstType, const void* pSrc, EQelType pSrcType)
{
    if (QelIsTagInTable(pSrcType)) {
        const QelCopyFrom lCopy = sCopyFrom[pSrcType - eQelEnumMulti];
        if (lCopy) return lCopy(pDst, pDstType, pSrc);
    }
    QEL_REPORT_MESSAGE(sQelTypeCopyFile, pSrcType == eQelReference
                                             ? "Trying to set value on a void Reference type"
                                             : "Trying to assign an unknown type");
    return false;
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
