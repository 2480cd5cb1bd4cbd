// The conversion rules: the matrix that names the rule of every pair of storage
// types, the rules themselves and the dispatch from tags to matrix positions. Kept
// out of the public headers and inlinable, so that the batched loops compile each
// pair's rule into their bodies.
#ifndef QELSDK_CORE_QELTYPECOPYRULES_H
#define QELSDK_CORE_QELTYPECOPYRULES_H

#include <qelsdk/core/qeltypecopy.h>

#include "qelsdk/core/qelvaluetypes.h"

#include <array>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

namespace qelsdk {
namespace internal {

// Every conversion report names this file and the function QelTypeCopy.
constexpr const char* sQelTypeCopyFile = "include/qelsdk/core/qelpropertytypes";

// Reports "Trying to set value on a void Reference type" for eQelReference and
// "Trying to assign an unknown type" for any other tag, and returns false: the
// refusal of a tag that names no storage type of the matrix.
bool QelRefuseTag(EQelType pType);

// Whether the tag at pOffset has a row and column of its own in the matrix.
constexpr bool QelHasOwnCopyPosition(int pOffset)
{
    const EQelType lCopyAs = sQelTypeFacts[pOffset].mCopyAs;
    return lCopyAs != eQelUndefined && lCopyAs == QelTagAt(pOffset);
}

constexpr int QelCountCopyTypes()
{
    int lCount = 0;
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset)
        lCount += QelHasOwnCopyPosition(lOffset) ? 1 : 0;
    return lCount;
}

// The number of rows and columns of the matrix.
constexpr int sQelCopyTypeCount = QelCountCopyTypes();

// The tag of every matrix position: the tags with a row and column of their own, in
// rising order.
constexpr std::array<EQelType, sQelCopyTypeCount> QelMakeCopyTags()
{
    std::array<EQelType, sQelCopyTypeCount> lTags{};
    int lPosition = 0;
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset)
        if (QelHasOwnCopyPosition(lOffset)) lTags[lPosition++] = QelTagAt(lOffset);
    return lTags;
}

inline constexpr std::array<EQelType, sQelCopyTypeCount> sQelCopyTags = QelMakeCopyTags();

// The matrix position of every tag, indexed by tag + 17: the position of the tag it
// converts as, -1 for the tags that are never converted.
constexpr std::array<int, sQelTagCount> QelMakeCopyIndexOfTag()
{
    std::array<int, sQelTagCount> lIndex{};
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset) {
        lIndex[lOffset] = -1;
        for (int lPosition = 0; lPosition < sQelCopyTypeCount; ++lPosition)
            if (sQelCopyTags[lPosition] == sQelTypeFacts[lOffset].mCopyAs)
                lIndex[lOffset] = lPosition;
    }
    return lIndex;
}

inline constexpr std::array<int, sQelTagCount> sQelCopyIndexOfTag = QelMakeCopyIndexOfTag();

// Precondition: QelIsTagInTable(pType).
constexpr int QelCopyIndexOfTag(EQelType pType) { return sQelCopyIndexOfTag[QelTagOffset(pType)]; }

// Every row that is converted converts as a tag with a row and column of its own.
constexpr bool QelDoConvertedRowsHavePositions()
{
    for (int lOffset = 0; lOffset < sQelTagCount; ++lOffset)
        if (sQelTypeFacts[lOffset].mCopyAs != eQelUndefined && sQelCopyIndexOfTag[lOffset] < 0)
            return false;
    return true;
}
static_assert(QelDoConvertedRowsHavePositions(), "mCopyAs names a tag of the matrix");

// The row of the value-type table at tIndex.
template <int tIndex, class TTable> constexpr const auto& QelRowAt(const TTable& pTable)
{
    if constexpr (tIndex == 0)
        return pTable.mRow;
    else
        return QelRowAt<tIndex - 1>(pTable.mRows);
}

// The position of pType's row in the value-type table.
constexpr int QelRowIndexOf(EQelType pType)
{
    int lIndex = 0;
    int lFound = -1;
    auto lVisit = [&lIndex, &lFound, pType](const auto& pRow) {
        if (pRow.mTag == pType) lFound = lIndex;
        ++lIndex;
    };
    sQelValueTypes.ForEach(lVisit);
    return lFound;
}

template <EQelType tTag>
using QelStorageOf =
    typename std::decay_t<decltype(QelRowAt<QelRowIndexOf(tTag)>(sQelValueTypes))>::Storage;

// The storage types in matrix order.
template <int tIndex> using QelCopyType = QelStorageOf<sQelCopyTags[tIndex]>;

// The matrix position of a static type, -1 when it has none.
template <class T>
constexpr int sQelCopyIndex = sQelCopyTagOf<T> == eQelUndefined
                                  ? -1
                                  : QelCopyIndexOfTag(sQelCopyTagOf<T>);

// Every type of the matrix has one position, the one its tag gives.
template <int... tIndices>
constexpr bool QelCopyTypesAreDistinct(std::integer_sequence<int, tIndices...>)
{
    return ((sQelCopyIndex<QelCopyType<tIndices>> == tIndices) && ...);
}
static_assert(QelCopyTypesAreDistinct(std::make_integer_sequence<int, sQelCopyTypeCount>()),
              "one row of the value-type table per storage type of the matrix");
static_assert(QelCopyIndexOfTag(eQelEnumMulti) == QelCopyIndexOfTag(eQelInt) &&
                  QelCopyIndexOfTag(eQelEnum) == QelCopyIndexOfTag(eQelInt) &&
                  QelCopyIndexOfTag(eQelReference) < 0 && QelCopyIndexOfTag(eQelUndefined) < 0,
              "the enumerations convert as int, references and eQelUndefined never");

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
// both in matrix order (QelCopyType). Deliberately irregular and asymmetric: every
// refusal stands as it is (a char takes an int but not a short, float takes no 64-bit
// integer while double does, a two-vector refuses non-scalars loudly where a
// three-vector is silent, a four-vector takes no scalar at all).
//
// from:                 char uchar short ushort uint llong ullong half bool int float
//                       double dbl2 dbl3 dbl4 dbl4x4 string time blob dist dtime
constexpr const char* sQelCopyMatrix[] = {
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
    return QelCopyRuleOfLetter(sQelCopyMatrix[pDst][2 * static_cast<std::size_t>(pSrc)]);
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
static_assert(sizeof(sQelCopyMatrix) / sizeof(sQelCopyMatrix[0]) == sQelCopyTypeCount,
              "one row of the matrix per matrix position of the value-type table");
static_assert(QelIsCopyMatrixWellFormed(), "one rule letter per cell, same type on the diagonal");

// The rule of a pair of static types; types outside the matrix are incompatible with
// everything.
template <class TDst, class TSrc> constexpr EQelCopyRule QelCopyRuleOf()
{
    constexpr int lDst = sQelCopyIndex<TDst>;
    constexpr int lSrc = sQelCopyIndex<TSrc>;
    if (lDst < 0 || lSrc < 0) return eQelCopyIncompatible;
    return QelCopyRuleAt(lDst, lSrc);
}

// The pairwise rule inside the library; defined below, after the rules it applies.
template <class TDst, class TSrc> bool QelCopyPair(TDst& pDst, const TSrc& pSrc);

// Floating to integer truncates toward zero. The language leaves values outside the
// destination's range undefined; they are given the result a wider integer narrowed
// to the destination would give instead: the low bits of the value truncated to 64
// bits (300.5 into a signed char is 44, like the int 300). Values from 2^63 up to 2^64
// are exact in that 64-bit form, so an unsigned long long receives them correctly.
// Values beyond every 64-bit integer take the nearest 64-bit bound (2^64 - 1 above,
// -2^63 below) before narrowing, and NaN becomes 0.
template <class TInt, class TFloat> TInt QelTruncateWide(TFloat pValue)
{
    constexpr TFloat lTwoPow63 = static_cast<TFloat>(1ull << 63);
    if (std::isnan(pValue)) return 0;
    if (pValue < -lTwoPow63) return static_cast<TInt>(std::numeric_limits<long long>::min());
    if (pValue < lTwoPow63) return static_cast<TInt>(static_cast<long long>(pValue));
    if (pValue < 2 * lTwoPow63)
        return static_cast<TInt>(static_cast<unsigned long long>(pValue - lTwoPow63) +
                                 (1ull << 63));
    return static_cast<TInt>(std::numeric_limits<unsigned long long>::max());
}

// The first value whose truncation is above TInt's range: a power of two, exact in
// float and double.
template <class TInt, class TFloat>
constexpr TFloat sQelTruncationEnd = static_cast<TFloat>(std::numeric_limits<TInt>::max() / 2 + 1) *
                                     2;

// Whether the language itself defines the conversion of pValue to TInt: its
// truncation lies in TInt's range.
template <class TInt, class TFloat> bool QelTruncatesDirectly(TFloat pValue)
{
    constexpr TFloat lEnd = sQelTruncationEnd<TInt, TFloat>;
    if constexpr (std::is_signed<TInt>::value)
        return pValue >= -lEnd && pValue < lEnd;
    else
        return pValue > TFloat(-1) && pValue < lEnd;
}

// Values in range convert directly, which keeps the common case a single instruction.
template <class TInt, class TFloat> TInt QelTruncate(TFloat pValue)
{
    if (QelTruncatesDirectly<TInt>(pValue)) return static_cast<TInt>(pValue);
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
        // A char item is a signed number, converted by value like every other integer.
        // NOLINTNEXTLINE(bugprone-signed-char-misuse)
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
// negative: callers compare the text.
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
// found memory for the copy (QelBlob keeps its old bytes then): callers treat a byte
// copy as always possible.
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
        return QelCopyPair(pDst, pSrc.value());
    }
};

template <> struct QelCopyRule<eQelCopyDistance>
{
    template <class TDst> static bool Apply(TDst& pDst, const QelDistance& pSrc)
    {
        return QelCopyPair(pDst, pSrc.internalValue());
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

// The pairwise rule inside the library: applies the rule of the pair's cell.
template <class TDst, class TSrc> bool QelCopyPair(TDst& pDst, const TSrc& pSrc)
{
    constexpr EQelCopyRule lRule = QelCopyRuleOf<TDst, TSrc>();
    if constexpr (lRule == eQelCopyIncompatible)
        return QelRefuseIncompatible();
    else
        return QelCopyRule<lRule>::Apply(pDst, pSrc);
}

} // namespace internal
} // namespace qelsdk

#endif
