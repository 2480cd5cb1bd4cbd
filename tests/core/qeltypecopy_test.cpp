#include <qelsdk/core/qelpropertytypes.h>

#include <support/qeltestsupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace qelsdk {
namespace {

using test::Report;
using test::ReportCapture;

// The conversion matrix, rows copied as they are written in the design notes of the
// conversion: destination first, then one letter per source type in the column order
// char uchar short ushort uint llong ullong half bool int float double dbl2 dbl3 dbl4
// dbl4x4 string time blob dist dtime.
const char* const sMatrixRows[] = {
    "| char | = | c | - | - | - | - | - | - | c | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| uchar | c | = | - | - | - | - | - | - | c | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| short | c | c | = | - | - | - | - | - | c | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| ushort | c | c | c | = | - | - | - | - | c | c | c | c | - | - | - | - | p | - | - | - | - "
    "|",
    "| uint | c | c | c | c | = | c | c | - | c | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| llong | c | c | c | c | c | = | c | - | c | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| ullong | c | c | c | c | c | c | = | - | c | c | c | c | - | - | - | - | p | - | - | - | - "
    "|",
    "| half | c | c | c | c | c | c | c | = | c | c | c | c | - | - | - | - | - | - | - | u | - |",
    "| bool | c | c | c | c | c | c | c | - | = | c | c | c | - | - | - | - | p | - | - | - | - |",
    "| int | c | c | c | c | c | c | c | - | c | = | c | c | - | - | - | - | p | - | - | - | - |",
    "| float | c | c | c | c | c | - | - | h | c | c | = | c | - | - | - | - | - | - | - | u | - |",
    "| double | c | c | c | c | c | c | c | h | c | c | c | = | 1 | 1 | 1 | 1 | p | s | X | u | X "
    "|",
    "| dbl2 | v | v | v | v | v | v | v | h | v | v | v | v | = | X | X | X | X | X | X | X | X |",
    "| dbl3 | v | v | v | v | v | v | v | h | v | v | v | v | - | = | 3 | - | - | - | - | - | - |",
    "| dbl4 | - | - | - | - | - | - | - | - | - | - | - | - | - | 4 | = | - | - | - | - | - | - |",
    "| dbl4x4 | X | X | X | X | X | X | X | X | X | X | X | X | X | X | X | = | X | X | X | X | X "
    "|",
    "| string | f | f | f | f | f | f | f | f | f | f | f | f | f | f | f | f | = | f | f | f | f "
    "|",
    "| time | X | X | X | X | X | X | X | X | X | X | X | X | X | X | X | X | X | = | X | X | X |",
    "| blob | r | r | r | r | r | r | r | r | r | r | r | r | r | r | r | r | r | r | = | - | - |",
    "| dist | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | = | - |",
    "| dtime | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | - | d | - | - | - | = |",
};

const char* const sTypeNames[] = {"char", "uchar",  "short",  "ushort", "uint",   "llong", "ullong",
                                  "half", "bool",   "int",    "float",  "double", "dbl2",  "dbl3",
                                  "dbl4", "dbl4x4", "string", "time",   "blob",   "dist",  "dtime"};
constexpr int sTypeCount = 21;

struct MatrixRow
{
    std::string mName;
    std::vector<char> mLetters;
};

MatrixRow ParseRow(const char* pRow)
{
    MatrixRow lRow;
    std::vector<std::string> lCells;
    std::string lCell;
    for (const char* lChar = pRow + 1; *lChar; ++lChar) {
        if (*lChar == '|') {
            lCells.push_back(lCell);
            lCell.clear();
        } else if (*lChar != ' ') {
            lCell += *lChar;
        }
    }
    lRow.mName = lCells.empty() ? "" : lCells[0];
    for (size_t lIndex = 1; lIndex < lCells.size(); ++lIndex)
        lRow.mLetters.push_back(lCells[lIndex].size() == 1 ? lCells[lIndex][0] : '?');
    return lRow;
}

char Letter(int pDst, int pSrc) { return ParseRow(sMatrixRows[pDst]).mLetters[pSrc]; }

// The types of the rows and columns, their tags (int also as -17 and 17), one source
// sample and one destination sentinel of each. The samples are chosen so that every
// conversion that succeeds gives a value different from the sentinel.
template <class... T> struct Types
{
};
using AllTypes =
    Types<signed char, unsigned char, short, unsigned short, unsigned int, long long,
          unsigned long long, QelHalfFloat, bool, int, float, double, QelDouble2, QelDouble3,
          QelDouble4, QelDouble4x4, QelString, QelTime, QelBlob, QelDistance, QelDateTime>;
using Values =
    std::tuple<signed char, unsigned char, short, unsigned short, unsigned int, long long,
               unsigned long long, QelHalfFloat, bool, int, float, double, QelDouble2, QelDouble3,
               QelDouble4, QelDouble4x4, QelString, QelTime, QelBlob, QelDistance, QelDateTime>;

constexpr int sIntIndex = 9;

std::vector<EQelType> TagsOf(int pIndex)
{
    static const EQelType sTags[] = {
        eQelChar,      eQelUChar,     eQelShort,   eQelUShort,    eQelUInt,   eQelLongLong,
        eQelULongLong, eQelHalfFloat, eQelBool,    eQelInt,       eQelFloat,  eQelDouble,
        eQelDouble2,   eQelDouble3,   eQelDouble4, eQelDouble4x4, eQelString, eQelTime,
        eQelBlob,      eQelDistance,  eQelDateTime};
    if (pIndex == sIntIndex) return {eQelInt, eQelEnum, eQelEnumMulti};
    return {sTags[pIndex]};
}

const long long sSecond = QelTime::sTicksPerSecond;
const QelDouble4x4 sMatrix(QelDouble4(0.5, 1, 2, 3), QelDouble4(10, 11, 12, 13),
                           QelDouble4(20, 21, 22, 23), QelDouble4(30, 31, 32, 33));

const Values& Samples()
{
    static const Values sSamples(
        static_cast<signed char>(-5), static_cast<unsigned char>(200), static_cast<short>(-300),
        static_cast<unsigned short>(60000), 4000000000u, 4294967297LL, 9223372036854775813ull,
        QelHalfFloat(1.5f), true, -7, 2.75f, 6.5, QelDouble2(1, 2.5), QelDouble3(1, 2, 3),
        QelDouble4(4, 5, 6, 7), sMatrix, QelString("1"), QelTime(3 * sSecond / 2), QelBlob("ab", 2),
        QelDistance(2.5f, "m"), QelDateTime(29, 2, 2024, 13, 45, 30));
    return sSamples;
}

const Values& Sentinels()
{
    const QelDouble4 lNines(9, 9, 9, 9);
    static const Values sSentinels(
        static_cast<signed char>(99), static_cast<unsigned char>(99), static_cast<short>(99),
        static_cast<unsigned short>(99), 99u, 99LL, 99ull, QelHalfFloat(99.0f), false, 99, 99.0f,
        99.0, QelDouble2(9, 9), QelDouble3(9, 9, 9), lNines,
        QelDouble4x4(lNines, lNines, lNines, lNines), QelString("sentinel"), QelTime(99),
        QelBlob("sentinel", 8), QelDistance(9.0f, "km"), QelDateTime(1, 1, 2000, 0, 0, 0));
    return sSentinels;
}

// The text of each sample, written out by hand.
const char* const sSampleTexts[] = {
    "-5",      "200",       "-300",  "60000",        "-294967296", "1",     "5",
    "1.5",     "true",      "-7",    "2.75",         "6.5",        "1,2.5", "1,2,3",
    "4,5,6,7", "0.5,1,2,3", nullptr, "0:00:01:15:0", "<blob>",     "2.5 m", "2024-02-29 13:45:30"};

// The bytes a blob receives from each sample; the string gives its length.
const int sSampleByteCounts[] = {1, 1, 2, 2, 4, 8, 8, 2, 1, 4, 4, 8, 16, 24, 32, 128, 1, 8};

template <class T> constexpr bool sIsNumber = std::is_arithmetic<T>::value;
template <class T>
constexpr bool sIsScalarVector =
    std::is_same<T, QelDouble2>::value || std::is_same<T, QelDouble3>::value;

// Whether text parses into T: the destinations of the cells p.
template <class T, class = void> struct HasParse : std::false_type
{
};
template <class T>
struct HasParse<T, decltype(void(QelTypeCopyStr(
                       std::declval<T&>(), std::declval<const QelString&>())))> : std::true_type
{
};

template <class TDst, class TSrc> TDst CastNumber(TSrc pSrc)
{
    if constexpr (std::is_same<TDst, QelHalfFloat>::value)
        return QelHalfFloat(static_cast<float>(pSrc));
    else if constexpr (std::is_same<TDst, bool>::value)
        return pSrc != 0;
    else
        return static_cast<TDst>(pSrc);
}

template <class TDst> bool ExpectFromFloat(float pValue, TDst& pExpected)
{
    if constexpr (std::is_floating_point<TDst>::value || std::is_same<TDst, QelHalfFloat>::value) {
        pExpected = TDst(pValue);
        return true;
    } else if constexpr (sIsScalarVector<TDst>) {
        pExpected = static_cast<double>(pValue);
        return true;
    }
    ADD_FAILURE() << "no float conversion into this destination";
    return false;
}

template <class TSrc> QelBlob ExpectedBlob(const TSrc& pSrc, int pSrcIndex)
{
    if constexpr (std::is_same<TSrc, QelString>::value)
        return QelBlob(pSrc.Buffer(), sSampleByteCounts[pSrcIndex]);
    else if constexpr (std::is_same<TSrc, QelTime>::value) {
        const long long lCount = pSrc.Get();
        return QelBlob(&lCount, sSampleByteCounts[pSrcIndex]);
    } else
        return QelBlob(&pSrc, sSampleByteCounts[pSrcIndex]);
}

// What the cell's letter says the conversion of pSrc gives: the result, and the value
// left in pExpected (which holds the sentinel on entry).
template <class TDst, class TSrc>
bool ExpectCell(char pLetter, const TSrc& pSrc, int pSrcIndex, TDst& pExpected)
{
    constexpr bool lSame = std::is_same<TDst, TSrc>::value;
    switch (pLetter) {
    case '=':
        if constexpr (lSame) {
            pExpected = pSrc;
            return true;
        }
        break;
    case 'c':
        if constexpr ((sIsNumber<TDst> || std::is_same<TDst, QelHalfFloat>::value) &&
                      sIsNumber<TSrc>) {
            pExpected = CastNumber<TDst>(pSrc);
            return true;
        }
        break;
    case 'h':
        if constexpr (std::is_same<TSrc, QelHalfFloat>::value)
            return ExpectFromFloat(pSrc.value(), pExpected);
        break;
    case 'u':
        if constexpr (std::is_same<TSrc, QelDistance>::value)
            return ExpectFromFloat(pSrc.internalValue(), pExpected);
        break;
    case 's':
        if constexpr (std::is_same<TDst, double>::value && std::is_same<TSrc, QelTime>::value) {
            pExpected = pSrc.GetSecondDouble();
            return true;
        }
        break;
    case 'v':
        if constexpr (sIsScalarVector<TDst> && sIsNumber<TSrc>) {
            pExpected = static_cast<double>(pSrc);
            return true;
        }
        break;
    case '1':
        if constexpr (std::is_same<TDst, double>::value &&
                      std::is_same<TSrc, QelDouble4x4>::value) {
            pExpected = pSrc[0][0];
            return true;
        } else if constexpr (std::is_same<TDst, double>::value &&
                             (sIsScalarVector<TSrc> || std::is_same<TSrc, QelDouble4>::value)) {
            pExpected = pSrc[0];
            return true;
        }
        break;
    case '3':
        if constexpr (std::is_same<TDst, QelDouble3>::value &&
                      std::is_same<TSrc, QelDouble4>::value) {
            pExpected = QelDouble3(pSrc[0], pSrc[1], pSrc[2]);
            return true;
        }
        break;
    case '4':
        if constexpr (std::is_same<TDst, QelDouble4>::value &&
                      std::is_same<TSrc, QelDouble3>::value) {
            pExpected = QelDouble4(pSrc[0], pSrc[1], pSrc[2], pExpected[3]);
            return true;
        }
        break;
    case 'p':
        if constexpr (std::is_same<TSrc, QelString>::value && HasParse<TDst>::value)
            return QelTypeCopyStr(pExpected, pSrc);
        break;
    case 'd':
        if constexpr (std::is_same<TDst, QelDateTime>::value &&
                      std::is_same<TSrc, QelString>::value)
            return pExpected.fromString(pSrc.Buffer());
        break;
    case 'f':
        if constexpr (std::is_same<TDst, QelString>::value) {
            pExpected = sSampleTexts[pSrcIndex];
            return true;
        }
        break;
    case 'r':
        if constexpr (std::is_same<TDst, QelBlob>::value) {
            pExpected = ExpectedBlob(pSrc, pSrcIndex);
            return true;
        }
        break;
    case '-':
    case 'X':
        return false;
    }
    ADD_FAILURE() << "the letter " << pLetter << " does not fit this pair of types";
    return false;
}

const Report sIncompatible{"include/qelsdk/core/qelpropertytypes", "QelTypeCopy", true,
                           "Incompatible type assignment!"};
const Report sVoidReference{"include/qelsdk/core/qelpropertytypes", "QelTypeCopy", true,
                            "Trying to set value on a void Reference type"};
const Report sUnknownType{"include/qelsdk/core/qelpropertytypes", "QelTypeCopy", true,
                          "Trying to assign an unknown type"};

// One conversion of the sample through one path into a fresh sentinel.
template <class TDst, class TPath>
void CheckPath(const char* pPath, TPath pConvert, bool pResult, const TDst& pExpected,
               const std::vector<Report>& pReports)
{
    SCOPED_TRACE(pPath);
    TDst lDst = std::get<TDst>(Sentinels());
    ReportCapture lCapture;
    EXPECT_EQ(pConvert(lDst), pResult);
    EXPECT_TRUE(lDst == pExpected);
    EXPECT_EQ(lCapture.Reports(), pReports);
}

// The batched form over three items, laid out packed and with a gap of one item after
// each: the count, every item and the gaps (which must keep their sentinel).
template <class TDst, class TSrc>
void CheckBatched(EQelType pDstType, EQelType pSrcType, size_t pStep, bool pResult,
                  const TDst& pExpected, const std::vector<Report>& pReports)
{
    SCOPED_TRACE(pStep == 1 ? "batched, packed" : "batched, strided");
    const TDst& lSentinel = std::get<TDst>(Sentinels());
    // Arrays rather than vectors: a vector of bool holds no bool items to point at.
    const size_t lSize = 3 * pStep;
    std::unique_ptr<TDst[]> lDst(new TDst[lSize]);
    std::unique_ptr<TSrc[]> lSrc(new TSrc[lSize]);
    std::fill(lDst.get(), lDst.get() + lSize, lSentinel);
    std::fill(lSrc.get(), lSrc.get() + lSize, std::get<TSrc>(Samples()));
    ReportCapture lCapture;
    EXPECT_EQ(QelTypeCopyArray(lDst.get(), pDstType, pStep * sizeof(TDst), lSrc.get(), pSrcType,
                               pStep * sizeof(TSrc), 3),
              pResult ? 3 : 0);
    for (size_t lIndex = 0; lIndex < lSize; ++lIndex)
        EXPECT_TRUE(lDst[lIndex] == (lIndex % pStep == 0 ? pExpected : lSentinel)) << lIndex;
    EXPECT_EQ(lCapture.Reports(), pReports);
}

int sCellsChecked = 0;

template <class TDst, class TSrc> void CheckCell(int pDst, int pSrc)
{
    const char lLetter = Letter(pDst, pSrc);
    SCOPED_TRACE(std::string(sTypeNames[pDst]) + " from " + sTypeNames[pSrc] + ": " + lLetter);
    const TSrc& lSrc = std::get<TSrc>(Samples());
    TDst lExpected = std::get<TDst>(Sentinels());
    const bool lResult = ExpectCell(lLetter, lSrc, pSrc, lExpected);
    if (lResult) {
        EXPECT_FALSE(lExpected == std::get<TDst>(Sentinels())) << "sample too weak";
    }
    const std::vector<Report> lReports =
        lLetter == 'X' ? std::vector<Report>{sIncompatible} : std::vector<Report>{};

    CheckPath<TDst>(
        "pairwise", [&](TDst& pDstValue) { return QelTypeCopy(pDstValue, lSrc); }, lResult,
        lExpected, lReports);
    for (EQelType lDstType : TagsOf(pDst)) {
        SCOPED_TRACE("destination tag " + std::to_string(lDstType));
        CheckPath<TDst>(
            "typed", [&](TDst& pDstValue) { return QelTypeCopy(&pDstValue, lDstType, lSrc); },
            lResult, lExpected, lReports);
        for (EQelType lSrcType : TagsOf(pSrc)) {
            SCOPED_TRACE("source tag " + std::to_string(lSrcType));
            CheckPath<TDst>(
                "untyped",
                [&](TDst& pDstValue) { return QelTypeCopy(&pDstValue, lDstType, &lSrc, lSrcType); },
                lResult, lExpected, lReports);
            CheckBatched<TDst, TSrc>(lDstType, lSrcType, 1, lResult, lExpected, lReports);
            CheckBatched<TDst, TSrc>(lDstType, lSrcType, 2, lResult, lExpected, lReports);
        }
    }
    ++sCellsChecked;
}

template <class TDst, class... TSrcs> void CheckRow(int pDst, Types<TSrcs...>)
{
    int lSrc = 0;
    (CheckCell<TDst, TSrcs>(pDst, lSrc++), ...);
}

template <class... TDsts> void CheckMatrix(Types<TDsts...>)
{
    int lDst = 0;
    (CheckRow<TDsts>(lDst++, AllTypes()), ...);
}

TEST(QelTypeCopyMatrix, TranscriptionIsComplete)
{
    std::string lLetters;
    for (int lDst = 0; lDst < sTypeCount; ++lDst) {
        const MatrixRow lRow = ParseRow(sMatrixRows[lDst]);
        EXPECT_EQ(lRow.mName, sTypeNames[lDst]);
        ASSERT_EQ(lRow.mLetters.size(), 21u) << lRow.mName;
        lLetters.append(lRow.mLetters.begin(), lRow.mLetters.end());
    }
    // Tallied from the matrix, so that a row or letter lost in copying shows.
    const std::pair<char, int> lCounts[] = {
        {'=', 21}, {'c', 102}, {'h', 4}, {'u', 3},  {'s', 1},  {'v', 22},  {'1', 4}, {'3', 1},
        {'4', 1},  {'p', 10},  {'d', 1}, {'f', 20}, {'r', 18}, {'-', 183}, {'X', 50}};
    int lTotal = 0;
    for (const auto& lCount : lCounts) {
        EXPECT_EQ(std::count(lLetters.begin(), lLetters.end(), lCount.first), lCount.second)
            << lCount.first;
        lTotal += lCount.second;
    }
    EXPECT_EQ(lTotal, 441);
}

TEST(QelTypeCopyMatrix, EveryCellThroughEveryPath)
{
    sCellsChecked = 0;
    CheckMatrix(AllTypes());
    EXPECT_EQ(sCellsChecked, 441);
}

} // namespace
} // namespace qelsdk
