// Value-type tags: every value the library stores, converts or hands across a type
// boundary is tagged with an EQelType. The numbering is persistent vocabulary:
// streams and converted buffers depend on it, so it never changes.
#ifndef QELSDK_CORE_QELPROPERTYTYPES_H
#define QELSDK_CORE_QELPROPERTYTYPES_H

#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qelvector.h>

#include <array>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

namespace qelsdk {

class QelLayerElementArray;
class QelSurfaceMaterial;
class QelTexture;

// A fixed 32-bit underlying type, so that any tag, known or not, can be held and
// handed to the conversion entry points. Tags from -16 to -1, below -17 and above
// 23 are unknown types. -17 is the negation of eQelEnum and marks the second kind
// of enumeration, stored and converted exactly like int.
enum EQelType : int {
    eQelEnumMulti = -17,
    eQelUndefined = 0,
    eQelChar = 1,       // signed char
    eQelUChar = 2,      // unsigned char
    eQelShort = 3,      // short
    eQelUShort = 4,     // unsigned short
    eQelUInt = 5,       // unsigned int
    eQelLongLong = 6,   // long long
    eQelULongLong = 7,  // unsigned long long
    eQelHalfFloat = 8,  // QelHalfFloat
    eQelBool = 9,       // bool
    eQelInt = 10,       // int
    eQelFloat = 11,     // float
    eQelDouble = 12,    // double
    eQelDouble2 = 13,   // QelDouble2
    eQelDouble3 = 14,   // QelDouble3
    eQelDouble4 = 15,   // QelDouble4
    eQelDouble4x4 = 16, // QelDouble4x4
    eQelEnum = 17,      // int
    eQelString = 18,    // QelString
    eQelTime = 19,      // QelTime
    eQelReference = 20, // a pointer; no value can be set through it
    eQelBlob = 21,      // QelBlob
    eQelDistance = 22,  // QelDistance
    eQelDateTime = 23,  // QelDateTime
    eQelTypeCount       // one past the last tag
};

// The storage size of each tag in bytes: 8 for eQelReference (one pointer), 0 for
// eQelUndefined and unknown tags.
int QelTypeSizeOf(EQelType pType);

// The tag of a static item type, so that typed faces can tag themselves. A colour is
// deliberately tagged as a vector of four doubles.
inline EQelType QelTypeOf(const bool&) { return eQelBool; }
inline EQelType QelTypeOf(const int&) { return eQelInt; }
inline EQelType QelTypeOf(const float&) { return eQelFloat; }
inline EQelType QelTypeOf(const double&) { return eQelDouble; }
inline EQelType QelTypeOf(const QelVector2&) { return eQelDouble2; }
inline EQelType QelTypeOf(const QelVector4&) { return eQelDouble4; }
inline EQelType QelTypeOf(const QelColor&) { return eQelDouble4; }
inline EQelType QelTypeOf(unsigned long long* const&) { return eQelReference; }
inline EQelType QelTypeOf(QelLayerElementArray* const&) { return eQelReference; }
inline EQelType QelTypeOf(QelSurfaceMaterial* const&) { return eQelReference; }
inline EQelType QelTypeOf(QelTexture* const&) { return eQelReference; }

// Value conversion, in three levels: the untyped entry point reads the source as the
// storage type of its tag and calls the typed entry point of that type, which takes
// the destination as the storage type of its tag and calls the pairwise rule of the
// two types. Every level returns true on success and leaves the destination
// untouched on refusal.

// The untyped entry point. There is no shortcut for equal types and no null check:
// callers convert whole buffers through it, one call per item.
bool QelTypeCopy(void* pDst, EQelType pDstType, const void* pSrc, EQelType pSrcType);

// Converts pCount items between two strided buffers, exactly as calling the untyped
// entry point once per item in rising order would (same values, same reports),
// stopping at the first item that is refused. Returns the number of items converted
// before that one: pCount when every item was converted, 0 when pCount is negative.
int QelTypeCopyArray(void* pDst, EQelType pDstType, size_t pDstStride, const void* pSrc,
                     EQelType pSrcType, size_t pSrcStride, int pCount);

// The pairwise rule of any two types: see QelTypeCopyRuleOf below. Pairs whose cell
// is X, and types that have no storage tag at all, report "Incompatible type
// assignment!" and return false.
template <class TDst, class TSrc> bool QelTypeCopy(TDst& pDst, const TSrc& pSrc);

// The typed entry point of one source type: *pDst is taken as the storage type of
// pDstType (-17 and 17 both as int).
template <class TSrc> bool QelTypeCopy(void* pDst, EQelType pDstType, const TSrc& pSrc);

namespace internal {

// Every conversion report names this file and the function QelTypeCopy.
constexpr const char* sQelTypeCopyFile = "include/qelsdk/core/qelpropertytypes";

// Tables indexed by tag cover the tags from -17 to 23.
constexpr int sQelTagCount = eQelTypeCount - eQelEnumMulti;

inline bool QelIsTagInTable(EQelType pType)
{
    return pType >= eQelEnumMulti && pType < eQelTypeCount;
}

template <class... T> struct QelTypeList
{
};

// The 21 storage types in the order of their tags; this is also the order of the
// rows and columns of the conversion matrix. The enumerations (-17, 17) are int.
using QelCopyTypes =
    QelTypeList<signed char, unsigned char, short, unsigned short, unsigned int, long long,
                unsigned long long, QelHalfFloat, bool, int, float, double, QelDouble2, QelDouble3,
                QelDouble4, QelDouble4x4, QelString, QelTime, QelBlob, QelDistance, QelDateTime>;
constexpr int sQelCopyTypeCount = 21;

// The position of T in a type list, -1 when it is not there.
template <class T, class TList, int tIndex = 0> struct QelCopyIndexOf;
template <class T, int tIndex>
struct QelCopyIndexOf<T, QelTypeList<>, tIndex> : std::integral_constant<int, -1>
{
};
template <class T, class THead, class... TTail, int tIndex>
struct QelCopyIndexOf<T, QelTypeList<THead, TTail...>, tIndex>
    : std::conditional_t<std::is_same<T, THead>::value, std::integral_constant<int, tIndex>,
                         QelCopyIndexOf<T, QelTypeList<TTail...>, tIndex + 1>>
{
};

template <int tIndex, class TList> struct QelCopyTypeAt;
template <int tIndex, class THead, class... TTail>
struct QelCopyTypeAt<tIndex, QelTypeList<THead, TTail...>>
    : QelCopyTypeAt<tIndex - 1, QelTypeList<TTail...>>
{
};
template <class THead, class... TTail> struct QelCopyTypeAt<0, QelTypeList<THead, TTail...>>
{
    using Type = THead;
};

template <int tIndex> using QelCopyType = typename QelCopyTypeAt<tIndex, QelCopyTypes>::Type;

template <class T> constexpr int sQelCopyIndex = QelCopyIndexOf<T, QelCopyTypes>::value;

// The storage type of each tag as its position in QelCopyTypes, indexed by tag + 17;
// -1 for the reference tag and the unknown ones, which name no storage type.
constexpr int sQelCopyIndexOfTag[sQelTagCount] = {
    9,                                                              // -17 eQelEnumMulti: int
    -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, // -16 .. -1
    -1,                                                             // 0 eQelUndefined
    0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, // 1 .. 16
    9,                                                              // 17 eQelEnum: int
    16, 17,                                                         // 18 string, 19 time
    -1,                                                             // 20 eQelReference
    18, 19, 20}; // 21 blob, 22 distance, 23 date-time

// Precondition: QelIsTagInTable(pType).
constexpr int QelCopyIndexOfTag(EQelType pType)
{
    return sQelCopyIndexOfTag[pType - eQelEnumMulti];
}

// The rule of each cell of the conversion matrix.
enum EQelCopyRule {
    eQelCopySame,         // =  plain assignment of the type to itself
    eQelCopyArithmetic,   // c  the language's arithmetic conversion, defined for every value
    eQelCopyHalfValue,    // h  the half float's value(), then as from float
    eQelCopyDistance,     // u  the distance's internalValue(), then as from float
    eQelCopySeconds,      // s  the time's GetSecondDouble()
    eQelCopySpread,       // v  the value as double into every component
    eQelCopyFirst,        // 1  [0] of a vector, [0][0] of the matrix
    eQelCopyFirstThree,   // 3  the four-vector's view as a three-vector
    eQelCopyIntoFour,     // 4  three components into a four-vector, whose fourth stays
    eQelCopyParse,        // p  QelTypeCopyStr
    eQelCopyDateText,     // d  QelDateTime::fromString
    eQelCopyFormat,       // f  the value as text
    eQelCopyBytes,        // r  the value's bytes into a blob
    eQelCopyRefused,      // -  refused silently
    eQelCopyIncompatible, // X  refused with the report "Incompatible type assignment!"
    eQelCopyNoRule        // not a letter of the matrix
};

// The conversion matrix: one row per destination type, one letter per source type,
// both in the order of QelCopyTypes. Deliberately irregular and asymmetric: every
// refusal stands as it is (a char takes an int but not a short, float takes no 64-bit
// integer while double does, a two-vector refuses non-scalars loudly where a
// three-vector is silent, a four-vector takes no scalar at all).
//
// from:                 char uchar short ushort uint llong ullong half bool int float
//                       double dbl2 dbl3 dbl4 dbl4x4 string time blob dist dtime
constexpr const char* sQelCopyMatrix[sQelCopyTypeCount] = {
    "= c - - - - - - c c c c - - - - p - - - -", // char
    "c = - - - - - - c c c c - - - - p - - - -", // uchar
    "c c = - - - - - c c c c - - - - p - - - -", // short
    "c c c = - - - - c c c c - - - - p - - - -", // ushort
    "c c c c = c c - c c c c - - - - p - - - -", // uint
    "c c c c c = c - c c c c - - - - p - - - -", // llong
    "c c c c c c = - c c c c - - - - p - - - -", // ullong
    "c c c c c c c = c c c c - - - - - - - u -", // half
    "c c c c c c c - = c c c - - - - p - - - -", // bool
    "c c c c c c c - c = c c - - - - p - - - -", // int
    "c c c c c - - h c c = c - - - - - - - u -", // float
    "c c c c c c c h c c c = 1 1 1 1 p s X u X", // double
    "v v v v v v v h v v v v = X X X X X X X X", // dbl2
    "v v v v v v v h v v v v - = 3 - - - - - -", // dbl3
    "- - - - - - - - - - - - - 4 = - - - - - -", // dbl4
    "X X X X X X X X X X X X X X X = X X X X X", // dbl4x4
    "f f f f f f f f f f f f f f f f = f f f f", // string
    "X X X X X X X X X X X X X X X X X = X X X", // time
    "r r r r r r r r r r r r r r r r r r = - -", // blob
    "- - - - - - - - - - - - - - - - - - - = -", // dist
    "- - - - - - - - - - - - - - - - d - - - =", // dtime
};

constexpr EQelCopyRule QelCopyRuleOfLetter(char pLetter)
{
    constexpr char lLetters[] = "=chusv134pdfr-X";
    for (int lRule = 0; lRule < eQelCopyNoRule; ++lRule)
        if (lLetters[lRule] == pLetter) return static_cast<EQelCopyRule>(lRule);
    return eQelCopyNoRule;
}

constexpr EQelCopyRule QelCopyRuleAt(int pDst, int pSrc)
{
    return QelCopyRuleOfLetter(sQelCopyMatrix[pDst][2 * pSrc]);
}

// Every row has one known letter per column, separated by single spaces, and the
// diagonal is "same type".
constexpr bool QelIsCopyMatrixWellFormed()
{
    for (int lDst = 0; lDst < sQelCopyTypeCount; ++lDst) {
        const char* lRow = sQelCopyMatrix[lDst];
        for (int lSrc = 0; lSrc < sQelCopyTypeCount; ++lSrc) {
            if (QelCopyRuleAt(lDst, lSrc) == eQelCopyNoRule) return false;
            if ((QelCopyRuleAt(lDst, lSrc) == eQelCopySame) != (lDst == lSrc)) return false;
            const char lNext = lRow[2 * lSrc + 1];
            if (lNext != (lSrc + 1 < sQelCopyTypeCount ? ' ' : '\0')) return false;
        }
    }
    return true;
}
static_assert(QelIsCopyMatrixWellFormed(), "one rule letter per cell, same type on the diagonal");

} // namespace internal

// The rule of a pair of static types; types outside the matrix are incompatible with
// everything.
template <class TDst, class TSrc> constexpr internal::EQelCopyRule QelTypeCopyRuleOf()
{
    constexpr int lDst = internal::sQelCopyIndex<TDst>;
    constexpr int lSrc = internal::sQelCopyIndex<TSrc>;
    if (lDst < 0 || lSrc < 0) return internal::eQelCopyIncompatible;
    return internal::QelCopyRuleAt(lDst, lSrc);
}

namespace internal {

// Floating to integer truncates toward zero. The language leaves values outside the
// destination's range undefined; they are given the result a wider integer narrowed
// to the destination would give instead: the low bits of the value truncated to 64
// bits (300.5 into a signed char is 44, like the int 300). Values from 2^63 up to 2^64
// are exact in that 64-bit form, so an unsigned long long receives them correctly;
// values beyond every 64-bit integer stop at its bounds and NaN becomes 0.
template <class TInt, class TFloat> TInt QelTruncateWide(TFloat pValue)
{
    constexpr TFloat lTwoPow63 = static_cast<TFloat>(1ull << 63);
    if (!(pValue == pValue)) return 0;
    if (pValue < -lTwoPow63) return static_cast<TInt>(std::numeric_limits<long long>::min());
    if (pValue < lTwoPow63) return static_cast<TInt>(static_cast<long long>(pValue));
    if (pValue < 2 * lTwoPow63)
        return static_cast<TInt>(static_cast<unsigned long long>(pValue - lTwoPow63) +
                                 (1ull << 63));
    return static_cast<TInt>(std::numeric_limits<unsigned long long>::max());
}

// The bounds are powers of two, exact in float and double; values inside them convert
// directly, which keeps the common case a single instruction.
template <class TInt, class TFloat> TInt QelTruncate(TFloat pValue)
{
    constexpr TFloat lEnd = static_cast<TFloat>(std::numeric_limits<TInt>::max() / 2 + 1) * 2;
    constexpr TFloat lBegin = std::is_signed<TInt>::value ? -lEnd : TFloat(-1);
    const bool lInRange = std::is_signed<TInt>::value ? pValue >= lBegin : pValue > lBegin;
    if (lInRange && pValue < lEnd) return static_cast<TInt>(pValue);
    return QelTruncateWide<TInt>(pValue);
}

// Double to float needs no such care: IEEE arithmetic rounds values beyond float's
// range to infinity.
template <class TDst, class TSrc> void QelArithmeticCopy(TDst& pDst, const TSrc& pSrc)
{
    if constexpr (std::is_same<TDst, QelHalfFloat>::value)
        pDst = QelHalfFloat(static_cast<float>(pSrc));
    else if constexpr (std::is_same<TDst, bool>::value)
        pDst = pSrc != TSrc(0);
    else if constexpr (std::is_integral<TDst>::value && std::is_floating_point<TSrc>::value)
        pDst = QelTruncate<TDst>(pSrc);
    else
        pDst = static_cast<TDst>(pSrc);
}

template <class T> double QelFirstComponent(const T& pSrc)
{
    if constexpr (std::is_same<T, QelDouble4x4>::value)
        return pSrc[0][0];
    else
        return pSrc[0];
}

// The text of a value. Integers of 32 and 64 bits print their low 32 bits as an int,
// so 64-bit values lose their high half and unsigned values from 2^31 up print
// negative; kept as-is, stored files depend on that text.
QelString QelCopyText(const QelHalfFloat& pSrc);
QelString QelCopyText(const QelDouble2& pSrc);
QelString QelCopyText(const QelDouble3& pSrc);
QelString QelCopyText(const QelDouble4& pSrc);
QelString QelCopyText(const QelDouble4x4& pSrc); // only the first row, as a four-vector
QelString QelCopyText(const QelTime& pSrc);
QelString QelCopyText(const QelBlob& pSrc);
QelString QelCopyText(const QelDistance& pSrc);
QelString QelCopyText(const QelDateTime& pSrc);
QelString QelCopyText(bool pSrc);
QelString QelCopyText(float pSrc);
QelString QelCopyText(double pSrc);
template <class T,
          std::enable_if_t<std::is_integral<T>::value && !std::is_same<T, bool>::value, int> = 0>
QelString QelCopyText(T pSrc)
{
    return QelString(static_cast<int>(static_cast<unsigned int>(pSrc)));
}

// The storage bytes of the value; a time gives its raw 64-bit count, a string its
// characters without the terminating zero. The result is true whether or not the blob
// found memory for the copy (QelBlob keeps its old bytes then): kept as-is, callers
// treat a byte copy as always possible.
template <class T> bool QelCopyBytes(QelBlob& pDst, const T& pSrc)
{
    static_assert(std::is_trivially_copyable<T>::value, "only plain values copy as bytes");
    pDst.Assign(&pSrc, static_cast<int>(sizeof(T)));
    return true;
}
bool QelCopyBytes(QelBlob& pDst, const QelTime& pSrc);
bool QelCopyBytes(QelBlob& pDst, const QelString& pSrc);

// One rule per letter of the matrix; only the pairs whose cell names the rule
// instantiate it.
template <EQelCopyRule tRule> struct QelCopyRule;

template <> struct QelCopyRule<eQelCopySame>
{
    template <class T> static bool Apply(T& pDst, const T& pSrc)
    {
        pDst = pSrc;
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyArithmetic>
{
    template <class TDst, class TSrc> static bool Apply(TDst& pDst, const TSrc& pSrc)
    {
        QelArithmeticCopy(pDst, pSrc);
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyHalfValue>
{
    template <class TDst> static bool Apply(TDst& pDst, const QelHalfFloat& pSrc)
    {
        return QelTypeCopy(pDst, pSrc.value());
    }
};

template <> struct QelCopyRule<eQelCopyDistance>
{
    template <class TDst> static bool Apply(TDst& pDst, const QelDistance& pSrc)
    {
        return QelTypeCopy(pDst, pSrc.internalValue());
    }
};

template <> struct QelCopyRule<eQelCopySeconds>
{
    static bool Apply(double& pDst, const QelTime& pSrc)
    {
        pDst = pSrc.GetSecondDouble();
        return true;
    }
};

template <> struct QelCopyRule<eQelCopySpread>
{
    template <class TDst, class TSrc> static bool Apply(TDst& pDst, const TSrc& pSrc)
    {
        pDst = static_cast<double>(pSrc);
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyFirst>
{
    template <class TSrc> static bool Apply(double& pDst, const TSrc& pSrc)
    {
        pDst = QelFirstComponent(pSrc);
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyFirstThree>
{
    static bool Apply(QelDouble3& pDst, const QelDouble4& pSrc)
    {
        pDst = static_cast<const QelDouble3&>(pSrc);
        return true;
    }
};

// The fourth component keeps its value, deliberately: a point's w survives an update
// of its position.
template <> struct QelCopyRule<eQelCopyIntoFour>
{
    static bool Apply(QelDouble4& pDst, const QelDouble3& pSrc)
    {
        pDst = pSrc;
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyParse>
{
    template <class TDst> static bool Apply(TDst& pDst, const QelString& pSrc)
    {
        return QelTypeCopyStr(pDst, pSrc);
    }
};

template <> struct QelCopyRule<eQelCopyDateText>
{
    static bool Apply(QelDateTime& pDst, const QelString& pSrc)
    {
        return pDst.fromString(pSrc.Buffer());
    }
};

template <> struct QelCopyRule<eQelCopyFormat>
{
    template <class TSrc> static bool Apply(QelString& pDst, const TSrc& pSrc)
    {
        pDst = QelCopyText(pSrc);
        return true;
    }
};

template <> struct QelCopyRule<eQelCopyBytes>
{
    template <class TSrc> static bool Apply(QelBlob& pDst, const TSrc& pSrc)
    {
        return QelCopyBytes(pDst, pSrc);
    }
};

template <> struct QelCopyRule<eQelCopyRefused>
{
    template <class TDst, class TSrc> static bool Apply(TDst&, const TSrc&) { return false; }
};

// Converts into *pDst taken as TDst; the entries of the typed entry point's table.
template <class TDst, class TSrc> bool QelCopyInto(void* pDst, const TSrc& pSrc)
{
    return QelTypeCopy(*static_cast<TDst*>(pDst), pSrc);
}

// The typed entry point's table for one source type: one converter per destination
// tag, indexed by tag + 17, null for the tags that name no storage type.
template <class TSrc> struct QelCopyIntoTable
{
    typedef bool (*Copy)(void* pDst, const TSrc& pSrc);

    template <int tOffset> static constexpr Copy Entry()
    {
        constexpr int lIndex = sQelCopyIndexOfTag[tOffset];
        if constexpr (lIndex < 0)
            return nullptr;
        else
            return &QelCopyInto<QelCopyType<lIndex>, TSrc>;
    }

    template <int... tOffsets>
    static constexpr std::array<Copy, sQelTagCount> Make(std::integer_sequence<int, tOffsets...>)
    {
        return {{Entry<tOffsets>()...}};
    }

    static constexpr std::array<Copy, sQelTagCount> sTable =
        Make(std::make_integer_sequence<int, sQelTagCount>());
};

} // namespace internal

template <class TDst, class TSrc> bool QelTypeCopy(TDst& pDst, const TSrc& pSrc)
{
    constexpr internal::EQelCopyRule lRule = QelTypeCopyRuleOf<TDst, TSrc>();
    if constexpr (lRule == internal::eQelCopyIncompatible) {
        QEL_REPORT_MESSAGE(internal::sQelTypeCopyFile, "Incompatible type assignment!");
        return false;
    } else {
        return internal::QelCopyRule<lRule>::Apply(pDst, pSrc);
    }
}

template <class TSrc> bool QelTypeCopy(void* pDst, EQelType pDstType, const TSrc& pSrc)
{
    if (internal::QelIsTagInTable(pDstType)) {
        const auto lCopy = internal::QelCopyIntoTable<TSrc>::sTable[pDstType - eQelEnumMulti];
        if (lCopy) return lCopy(pDst, pSrc);
    }
    QEL_REPORT_MESSAGE(internal::sQelTypeCopyFile,
                       pDstType == eQelReference ? "Trying to set value on a void Reference type"
                                                 : "Trying to assign an unknown type");
    return false;
}

} // namespace qelsdk

#endif
