#include <qelsdk/core/qeltypecopy.h>

#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qelvector.h>

#include <support/qeltestsupport.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
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

// The conversion matrix as a table of its own, kept apart from the library's: one row
// per destination, then one letter per source type in the column order char uchar
// short ushort uint llong ullong half bool int float double dbl2 dbl3 dbl4 dbl4x4
// string time blob dist dtime.
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

// The half each number sample becomes (bits, written out by hand): -5, 200, -300,
// 60000, the three beyond binary16 as infinity, the half sample itself (unused), 1, -7,
// 2.75 and 6.5.
const uint16_t sSampleHalfBits[] = {0xc500, 0x5a40, 0xdcb0, 0x7b53, 0x7c00, 0x7c00,
                                    0x7c00, 0x3e00, 0x3c00, 0xc700, 0x4180, 0x4680};

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

template <class TDst, class TSrc> TDst CastNumber(TSrc pSrc, int pSrcIndex)
{
    if constexpr (std::is_same<TDst, QelHalfFloat>::value)
        return QelHalfFloat::FromBits(sSampleHalfBits[pSrcIndex]);
    else if constexpr (std::is_same<TDst, bool>::value)
        return pSrc != 0;
    else
        return static_cast<TDst>(pSrc);
}

// pValue is exact in every destination that takes a float.
template <class TDst> bool ExpectFromFloat(float pValue, TDst& pExpected)
{
    if constexpr (std::is_floating_point<TDst>::value) {
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
            pExpected = CastNumber<TDst>(pSrc, pSrcIndex);
            return true;
        }
        break;
    case 'h': // the sample half is 1.5
        if constexpr (std::is_same<TSrc, QelHalfFloat>::value)
            return ExpectFromFloat(1.5f, pExpected);
        break;
    case 'u': // 2.5 m are 250 cm, the internal unit
        if constexpr (std::is_same<TSrc, QelDistance>::value &&
                      std::is_same<TDst, QelHalfFloat>::value) {
            pExpected = QelHalfFloat::FromBits(0x5bd0); // 250
            return true;
        } else if constexpr (std::is_same<TSrc, QelDistance>::value)
            return ExpectFromFloat(250.0f, pExpected);
        break;
    case 's': // the sample time is one and a half seconds
        if constexpr (std::is_same<TDst, double>::value && std::is_same<TSrc, QelTime>::value) {
            pExpected = 1.5;
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
    case 'p': // the sample text "1" reads as one in every type that parses
        if constexpr (std::is_same<TSrc, QelString>::value && HasParse<TDst>::value) {
            pExpected = static_cast<TDst>(1);
            return true;
        }
        break;
    case 'd': // "1" is no date: refused, the sentinel stays
        if constexpr (std::is_same<TDst, QelDateTime>::value &&
                      std::is_same<TSrc, QelString>::value)
            return false;
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

// Converts through the untyped entry point, as element arrays do.
template <class TDst, class TSrc>
bool Convert(TDst& pDst, EQelType pDstType, const TSrc& pSrc, EQelType pSrcType)
{
    return QelTypeCopy(&pDst, pDstType, &pSrc, pSrcType);
}

TEST(QelTypeCopyArithmetic, WiderIntegerKeepsTheLowBits)
{
    signed char lChar = 0;
    EXPECT_TRUE(QelTypeCopy(lChar, 300));
    EXPECT_EQ(lChar, 44);
    unsigned char lUChar = 0;
    EXPECT_TRUE(QelTypeCopy(lUChar, -1));
    EXPECT_EQ(lUChar, 255);
    int lInt = 0;
    EXPECT_TRUE(QelTypeCopy(lInt, 4294967297LL));
    EXPECT_EQ(lInt, 1);
    unsigned short lUShort = 0;
    EXPECT_TRUE(QelTypeCopy(lUShort, static_cast<short>(-2)));
    EXPECT_EQ(lUShort, 65534);
}

TEST(QelTypeCopyArithmetic, FloatingTruncatesTowardZero)
{
    int lInt = 0;
    EXPECT_TRUE(QelTypeCopy(lInt, 2.9));
    EXPECT_EQ(lInt, 2);
    EXPECT_TRUE(QelTypeCopy(lInt, -2.9));
    EXPECT_EQ(lInt, -2);
    EXPECT_TRUE(QelTypeCopy(lInt, 2.9f));
    EXPECT_EQ(lInt, 2);
    EXPECT_TRUE(QelTypeCopy(lInt, -2.9f));
    EXPECT_EQ(lInt, -2);
    long long lLong = 0;
    EXPECT_TRUE(QelTypeCopy(lLong, -1e15 - 0.5));
    EXPECT_EQ(lLong, -1000000000000000LL);
    unsigned int lUInt = 7;
    EXPECT_TRUE(QelTypeCopy(lUInt, -0.5));
    EXPECT_EQ(lUInt, 0u);
}

TEST(QelTypeCopyArithmetic, UnsignedLongLongFromTwoPow63Up)
{
    unsigned long long lValue = 0;
    EXPECT_TRUE(QelTypeCopy(lValue, 9223372036854775808.0));
    EXPECT_EQ(lValue, 9223372036854775808ull);
    EXPECT_TRUE(QelTypeCopy(lValue, 18000000000000000000.0));
    EXPECT_EQ(lValue, 18000000000000000000ull);
    EXPECT_TRUE(QelTypeCopy(lValue, 9223372036854775808.0f));
    EXPECT_EQ(lValue, 9223372036854775808ull);
    EXPECT_TRUE(QelTypeCopy(lValue, 1.5e19f));
    EXPECT_EQ(lValue, static_cast<unsigned long long>(1.5e19f));
    EXPECT_TRUE(QelTypeCopy(lValue, 9223372036854774784.0)); // the last double below 2^63
    EXPECT_EQ(lValue, 9223372036854774784ull);
}

TEST(QelTypeCopyArithmetic, OutOfRangeFloatingIsDefined)
{
    // Outside the destination: the low bits of the 64-bit truncation.
    signed char lChar = 0;
    EXPECT_TRUE(QelTypeCopy(lChar, 300.5));
    EXPECT_EQ(lChar, 44);
    int lInt = 0;
    EXPECT_TRUE(QelTypeCopy(lInt, 4294967297.75));
    EXPECT_EQ(lInt, 1);
    unsigned int lUInt = 0;
    EXPECT_TRUE(QelTypeCopy(lUInt, -1.0));
    EXPECT_EQ(lUInt, 4294967295u);
    long long lLong = 0;
    EXPECT_TRUE(QelTypeCopy(lLong, 9223372036854775808.0));
    EXPECT_EQ(lLong, std::numeric_limits<long long>::min());
    // Beyond every 64-bit integer: the 64-bit bounds; NaN: 0.
    unsigned long long lULong = 0;
    EXPECT_TRUE(QelTypeCopy(lULong, 1e30));
    EXPECT_EQ(lULong, std::numeric_limits<unsigned long long>::max());
    EXPECT_TRUE(QelTypeCopy(lULong, -1e30));
    EXPECT_EQ(lULong, 9223372036854775808ull);
    EXPECT_TRUE(QelTypeCopy(lLong, std::numeric_limits<double>::infinity()));
    EXPECT_EQ(lLong, -1);
    EXPECT_TRUE(QelTypeCopy(lLong, -std::numeric_limits<float>::infinity()));
    EXPECT_EQ(lLong, std::numeric_limits<long long>::min());
    lInt = 5;
    EXPECT_TRUE(QelTypeCopy(lInt, std::nan("")));
    EXPECT_EQ(lInt, 0);
}

TEST(QelTypeCopyArithmetic, UnsignedSixtyFourBitToFloating)
{
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, 18446744073709551615ull));
    EXPECT_EQ(lDouble, 18446744073709551616.0);
    float lFloat = 0;
    EXPECT_TRUE(QelTypeCopy(lFloat, 4000000000u));
    EXPECT_EQ(lFloat, 4000000000.0f);
    EXPECT_TRUE(QelTypeCopy(lFloat, 1e300)); // IEEE rounding beyond float's range
    EXPECT_EQ(lFloat, std::numeric_limits<float>::infinity());
}

TEST(QelTypeCopyArithmetic, BoolFromAndToNumbers)
{
    bool lBool = true;
    EXPECT_TRUE(QelTypeCopy(lBool, 0.0));
    EXPECT_FALSE(lBool);
    EXPECT_TRUE(QelTypeCopy(lBool, 0.1));
    EXPECT_TRUE(lBool);
    EXPECT_TRUE(QelTypeCopy(lBool, -0.0f));
    EXPECT_FALSE(lBool);
    EXPECT_TRUE(QelTypeCopy(lBool, 256)); // not the low bits: any non-zero is true
    EXPECT_TRUE(lBool);
    EXPECT_TRUE(QelTypeCopy(lBool, 0ull));
    EXPECT_FALSE(lBool);
    int lInt = 5;
    EXPECT_TRUE(QelTypeCopy(lInt, true));
    EXPECT_EQ(lInt, 1);
    EXPECT_TRUE(QelTypeCopy(lInt, false));
    EXPECT_EQ(lInt, 0);
    double lDouble = 5;
    EXPECT_TRUE(QelTypeCopy(lDouble, true));
    EXPECT_EQ(lDouble, 1.0);
}

TEST(QelTypeCopyArithmetic, HalfFloatIsBuiltFromFloat)
{
    QelHalfFloat lHalf;
    EXPECT_TRUE(QelTypeCopy(lHalf, 0.1));
    // The half nearest to 0.1.
    EXPECT_EQ(lHalf.Bits(), 0x2e66u);
    EXPECT_EQ(lHalf.value(), 0.0999755859375f);
    EXPECT_TRUE(QelTypeCopy(lHalf, 3));
    EXPECT_EQ(lHalf.value(), 3.0f);
    EXPECT_TRUE(QelTypeCopy(lHalf, true));
    EXPECT_EQ(lHalf.value(), 1.0f);
    EXPECT_TRUE(QelTypeCopy(lHalf, 70000LL)); // beyond binary16: infinity
    EXPECT_EQ(lHalf.value(), std::numeric_limits<float>::infinity());
}

TEST(QelTypeCopyRules, HalfFloatSource)
{
    const QelHalfFloat lHalf(1.5f);
    float lFloat = 0;
    EXPECT_TRUE(QelTypeCopy(lFloat, lHalf));
    EXPECT_EQ(lFloat, 1.5f);
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, lHalf));
    EXPECT_EQ(lDouble, 1.5);
    QelDouble2 lTwo;
    EXPECT_TRUE(QelTypeCopy(lTwo, lHalf));
    EXPECT_EQ(lTwo, QelDouble2(1.5, 1.5));
    QelDouble3 lThree;
    EXPECT_TRUE(QelTypeCopy(lThree, lHalf));
    EXPECT_EQ(lThree, QelDouble3(1.5, 1.5, 1.5));
}

TEST(QelTypeCopyRules, DistanceGivesItsInternalValue)
{
    const QelDistance lDistance(2.5f, "m");
    float lFloat = 0;
    EXPECT_TRUE(QelTypeCopy(lFloat, lDistance));
    EXPECT_EQ(lFloat, 250.0f);
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, lDistance));
    EXPECT_EQ(lDouble, 250.0);
    QelHalfFloat lHalf;
    EXPECT_TRUE(QelTypeCopy(lHalf, lDistance));
    EXPECT_EQ(lHalf.value(), 250.0f);
}

TEST(QelTypeCopyRules, TimeGivesSecondsToDouble)
{
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, QelTime(3 * sSecond / 2)));
    EXPECT_EQ(lDouble, 1.5);
}

TEST(QelTypeCopyRules, ScalarIntoEveryComponent)
{
    QelDouble3 lThree(9, 9, 9);
    EXPECT_TRUE(QelTypeCopy(lThree, 3));
    EXPECT_EQ(lThree, QelDouble3(3, 3, 3));
    QelDouble2 lTwo;
    EXPECT_TRUE(QelTypeCopy(lTwo, true));
    EXPECT_EQ(lTwo, QelDouble2(1, 1));
    EXPECT_TRUE(QelTypeCopy(lTwo, 2.75f));
    EXPECT_EQ(lTwo, QelDouble2(2.75, 2.75));
}

TEST(QelTypeCopyRules, FirstComponentIntoDouble)
{
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, QelDouble2(7, 8)));
    EXPECT_EQ(lDouble, 7.0);
    EXPECT_TRUE(QelTypeCopy(lDouble, QelDouble3(6, 8, 9)));
    EXPECT_EQ(lDouble, 6.0);
    EXPECT_TRUE(QelTypeCopy(lDouble, QelDouble4(5, 8, 9, 10)));
    EXPECT_EQ(lDouble, 5.0);
    EXPECT_TRUE(QelTypeCopy(lDouble, sMatrix));
    EXPECT_EQ(lDouble, 0.5);
}

TEST(QelTypeCopyRules, ThreeAndFourVectors)
{
    QelDouble4 lFour(9, 9, 9, 9);
    EXPECT_TRUE(QelTypeCopy(lFour, QelDouble3(1, 2, 3)));
    EXPECT_EQ(lFour, QelDouble4(1, 2, 3, 9));
    QelDouble3 lThree;
    EXPECT_TRUE(QelTypeCopy(lThree, QelDouble4(4, 5, 6, 7)));
    EXPECT_EQ(lThree, QelDouble3(4, 5, 6));
    EXPECT_TRUE(Convert(lFour, eQelDouble4, QelDouble3(7, 8, 9), eQelDouble3));
    EXPECT_EQ(lFour, QelDouble4(7, 8, 9, 9));
}

TEST(QelTypeCopyRules, SameTypeAssigns)
{
    QelDateTime lDate;
    EXPECT_TRUE(QelTypeCopy(lDate, QelDateTime(29, 2, 2024, 13, 45, 30)));
    EXPECT_EQ(lDate, QelDateTime(29, 2, 2024, 13, 45, 30));
    QelBlob lBlob;
    EXPECT_TRUE(Convert(lBlob, eQelBlob, QelBlob("xyz", 3), eQelBlob));
    EXPECT_EQ(lBlob, QelBlob("xyz", 3));
    QelDouble4x4 lMatrix;
    EXPECT_TRUE(Convert(lMatrix, eQelDouble4x4, sMatrix, eQelDouble4x4));
    EXPECT_EQ(lMatrix, sMatrix);
    int lInt = 0;
    EXPECT_TRUE(Convert(lInt, eQelEnumMulti, 12, eQelEnum));
    EXPECT_EQ(lInt, 12);
}

TEST(QelTypeCopyText, ParsesIntoTheDestination)
{
    int lInt = 5;
    EXPECT_TRUE(QelTypeCopy(lInt, QelString("12")));
    EXPECT_EQ(lInt, 12);
    EXPECT_FALSE(QelTypeCopy(lInt, QelString("x")));
    EXPECT_EQ(lInt, 12);
    unsigned int lUInt = 5;
    EXPECT_FALSE(QelTypeCopy(lUInt, QelString("-1")));
    EXPECT_EQ(lUInt, 5u);
    signed char lChar = 5;
    EXPECT_FALSE(QelTypeCopy(lChar, QelString("300")));
    EXPECT_EQ(lChar, 5);
    bool lBool = false;
    EXPECT_TRUE(QelTypeCopy(lBool, QelString("true")));
    EXPECT_TRUE(lBool);
    double lDouble = 0;
    EXPECT_TRUE(QelTypeCopy(lDouble, QelString("2.5e3")));
    EXPECT_EQ(lDouble, 2500.0);
    unsigned long long lULong = 0;
    EXPECT_TRUE(QelTypeCopy(lULong, QelString("18446744073709551615")));
    EXPECT_EQ(lULong, 18446744073709551615ull);
}

TEST(QelTypeCopyText, DateTimeFromText)
{
    QelDateTime lDate(1, 1, 2000, 0, 0, 0);
    EXPECT_TRUE(QelTypeCopy(lDate, QelString("2024-02-29 13:45:30")));
    EXPECT_EQ(lDate, QelDateTime(29, 2, 2024, 13, 45, 30));
    ReportCapture lCapture;
    EXPECT_FALSE(Convert(lDate, eQelDateTime, QelString("junk"), eQelString));
    EXPECT_EQ(lDate, QelDateTime(29, 2, 2024, 13, 45, 30));
    EXPECT_TRUE(lCapture.Reports().empty());
}

template <class T> std::string Text(const T& pValue)
{
    QelString lText("unset");
    EXPECT_TRUE(QelTypeCopy(lText, pValue));
    return lText.Buffer();
}

TEST(QelTypeCopyText, Formats)
{
    EXPECT_EQ(Text(static_cast<signed char>(-128)), "-128");
    EXPECT_EQ(Text(static_cast<unsigned char>(255)), "255");
    EXPECT_EQ(Text(static_cast<short>(-32768)), "-32768");
    EXPECT_EQ(Text(static_cast<unsigned short>(65535)), "65535");
    EXPECT_EQ(Text(2147483647), "2147483647");
    EXPECT_EQ(Text(QelHalfFloat(0.25f)), "0.25");
    EXPECT_EQ(Text(0.1f), "0.1");
    EXPECT_EQ(Text(0.1), "0.1");
    EXPECT_EQ(Text(1e21), "1e+21");
    EXPECT_EQ(Text(QelDouble2(-1, 0.5)), "-1,0.5");
    EXPECT_EQ(Text(QelDouble3(1, 2, 3)), "1,2,3");
    EXPECT_EQ(Text(QelDouble4(1.5, 2, 3, 4)), "1.5,2,3,4");
    EXPECT_EQ(Text(QelDistance(12.5f, "cm")), "12.5 cm");
    EXPECT_EQ(Text(QelDateTime(29, 2, 2024, 13, 45, 30)), "2024-02-29 13:45:30");
}

TEST(QelTypeCopyText, WideIntegersPrintTheirLowThirtyTwoBitsAsInt)
{
    EXPECT_EQ(Text(4294967297LL), "1");
    EXPECT_EQ(Text(-4294967297LL), "-1");
    EXPECT_EQ(Text(2147483648u), "-2147483648");
    EXPECT_EQ(Text(4294967295u), "-1");
    EXPECT_EQ(Text(18446744073709551615ull), "-1");
    EXPECT_EQ(Text(4294967296ull + 42), "42");
}

TEST(QelTypeCopyText, BoolBlobMatrixTime)
{
    EXPECT_EQ(Text(true), "true");
    EXPECT_EQ(Text(false), "false");
    EXPECT_EQ(Text(QelBlob()), "<blob>");
    EXPECT_EQ(Text(QelBlob("any bytes", 9)), "<blob>");
    EXPECT_EQ(Text(sMatrix), "0.5,1,2,3");
    // The time's own text with the buffer size 128, five elements, mode 0, protocol 2.
    char lExpected[128];
    const QelTime lTime(3723 * sSecond + sSecond / 2);
    lTime.GetTimeString(lExpected, 128, 5, 0, 2);
    EXPECT_EQ(Text(lTime), lExpected);
    EXPECT_EQ(Text(lTime), "1:02:03:15:0");
}

std::vector<unsigned char> Bytes(const QelBlob& pBlob)
{
    const unsigned char* lData = static_cast<const unsigned char*>(pBlob.Access());
    return std::vector<unsigned char>(lData, lData + pBlob.Size());
}

template <class T> std::vector<unsigned char> BytesOf(const T& pValue)
{
    const unsigned char* lData = reinterpret_cast<const unsigned char*>(&pValue);
    return std::vector<unsigned char>(lData, lData + sizeof(T));
}

TEST(QelTypeCopyBlob, ByteCountsAndContents)
{
    QelBlob lBlob("old", 3);
    EXPECT_TRUE(QelTypeCopy(lBlob, static_cast<short>(0x1234)));
    EXPECT_EQ(lBlob.Size(), 2);
    EXPECT_EQ(Bytes(lBlob), BytesOf(static_cast<short>(0x1234)));
    EXPECT_TRUE(QelTypeCopy(lBlob, true));
    EXPECT_EQ(Bytes(lBlob), std::vector<unsigned char>{1});
    EXPECT_TRUE(QelTypeCopy(lBlob, 0.1f));
    EXPECT_EQ(Bytes(lBlob), BytesOf(0.1f));
    EXPECT_TRUE(QelTypeCopy(lBlob, QelHalfFloat(1.0f)));
    EXPECT_EQ(Bytes(lBlob), (std::vector<unsigned char>{0x00, 0x3c}));
    EXPECT_TRUE(QelTypeCopy(lBlob, sMatrix));
    EXPECT_EQ(lBlob.Size(), 128);
    EXPECT_EQ(Bytes(lBlob), BytesOf(sMatrix));
    EXPECT_TRUE(QelTypeCopy(lBlob, QelTime(-2)));
    EXPECT_EQ(Bytes(lBlob), BytesOf(-2LL));
}

TEST(QelTypeCopyBlob, StringGivesItsCharactersWithoutTerminator)
{
    ReportCapture lCapture;
    QelBlob lBlob("old", 3);
    EXPECT_TRUE(Convert(lBlob, eQelBlob, QelString("abc"), eQelString));
    EXPECT_EQ(Bytes(lBlob), (std::vector<unsigned char>{'a', 'b', 'c'}));
    EXPECT_TRUE(QelTypeCopy(lBlob, QelString()));
    EXPECT_EQ(lBlob.Size(), 0);
    EXPECT_TRUE(lCapture.Reports().empty()); // the castable flag always holds
}

// Every "telling refusal": the destination keeps its sentinel; loud ones report once.
template <class TDst, class TSrc> void ExpectRefused(const TSrc& pSrc, bool pLoud)
{
    const TDst& lSentinel = std::get<TDst>(Sentinels());
    TDst lDst = lSentinel;
    ReportCapture lCapture;
    EXPECT_FALSE(QelTypeCopy(lDst, pSrc));
    EXPECT_TRUE(lDst == lSentinel);
    EXPECT_EQ(lCapture.Reports(),
              pLoud ? std::vector<Report>{sIncompatible} : std::vector<Report>{});
}

template <class TDst, class TSrc> void ExpectAccepted(const TSrc& pSrc)
{
    TDst lDst = std::get<TDst>(Sentinels());
    ReportCapture lCapture;
    EXPECT_TRUE(QelTypeCopy(lDst, pSrc));
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelTypeCopyRefusals, CharTakesIntButNoOtherInteger)
{
    ExpectAccepted<signed char>(7);
    ExpectAccepted<unsigned char>(7);
    ExpectRefused<signed char>(static_cast<short>(5), false);
    ExpectRefused<signed char>(static_cast<unsigned short>(5), false);
    ExpectRefused<signed char>(5u, false);
    ExpectRefused<signed char>(5LL, false);
    ExpectRefused<signed char>(5ull, false);
    ExpectRefused<unsigned char>(static_cast<short>(5), false);
    ExpectRefused<unsigned char>(static_cast<unsigned short>(5), false);
    ExpectRefused<unsigned char>(5u, false);
    ExpectRefused<unsigned char>(5LL, false);
    ExpectRefused<unsigned char>(5ull, false);
}

TEST(QelTypeCopyRefusals, ShortRefusesUnsignedShortNotTheOtherWay)
{
    ExpectRefused<short>(static_cast<unsigned short>(5), false);
    ExpectAccepted<unsigned short>(static_cast<short>(5));
}

TEST(QelTypeCopyRefusals, FloatRefusesSixtyFourBitsAndTextDoubleTakesThem)
{
    ExpectRefused<float>(5LL, false);
    ExpectRefused<float>(5ull, false);
    ExpectRefused<float>(QelString("5"), false);
    ExpectAccepted<double>(5LL);
    ExpectAccepted<double>(5ull);
    ExpectAccepted<double>(QelString("5"));
}

TEST(QelTypeCopyRefusals, HalfFloatOnlyIntoFloatingAndVectors)
{
    const QelHalfFloat lHalf(2.0f);
    ExpectRefused<signed char>(lHalf, false);
    ExpectRefused<unsigned char>(lHalf, false);
    ExpectRefused<short>(lHalf, false);
    ExpectRefused<unsigned short>(lHalf, false);
    ExpectRefused<unsigned int>(lHalf, false);
    ExpectRefused<long long>(lHalf, false);
    ExpectRefused<unsigned long long>(lHalf, false);
    ExpectRefused<int>(lHalf, false);
    ExpectRefused<bool>(lHalf, false);
    ExpectAccepted<float>(lHalf);
    ExpectAccepted<double>(lHalf);
    ExpectAccepted<QelDouble2>(lHalf);
    ExpectAccepted<QelDouble3>(lHalf);
    ExpectRefused<QelDouble4>(lHalf, false);
}

TEST(QelTypeCopyRefusals, FourVectorTakesOnlyThreeAndFourVectors)
{
    ExpectRefused<QelDouble4>(3, false);
    ExpectRefused<QelDouble4>(3.0, false);
    ExpectRefused<QelDouble4>(true, false);
    ExpectRefused<QelDouble4>(QelDouble2(1, 2), false);
    ExpectRefused<QelDouble4>(sMatrix, false);
    ExpectAccepted<QelDouble4>(QelDouble3(1, 2, 3));
    ExpectAccepted<QelDouble4>(QelDouble4(1, 2, 3, 4));
}

TEST(QelTypeCopyRefusals, TwoVectorLoudThreeVectorSilent)
{
    ExpectRefused<QelDouble2>(QelDouble3(1, 2, 3), true);
    ExpectRefused<QelDouble2>(QelDouble4(1, 2, 3, 4), true);
    ExpectRefused<QelDouble2>(sMatrix, true);
    ExpectRefused<QelDouble2>(QelString("1"), true);
    ExpectRefused<QelDouble2>(QelTime(1), true);
    ExpectRefused<QelDouble2>(QelBlob("a", 1), true);
    ExpectRefused<QelDouble2>(QelDistance(1.0f, "m"), true);
    ExpectRefused<QelDouble2>(QelDateTime(), true);
    ExpectRefused<QelDouble3>(QelDouble2(1, 2), false);
    ExpectRefused<QelDouble3>(sMatrix, false);
    ExpectRefused<QelDouble3>(QelString("1"), false);
    ExpectRefused<QelDouble3>(QelDistance(1.0f, "m"), false);
}

TEST(QelTypeCopyRefusals, MatrixAndTimeTakeOnlyThemselvesLoudly)
{
    ExpectRefused<QelDouble4x4>(1.0, true);
    ExpectRefused<QelDouble4x4>(QelDouble4(1, 2, 3, 4), true);
    ExpectRefused<QelDouble4x4>(QelString("1"), true);
    ExpectRefused<QelTime>(5LL, true);
    ExpectRefused<QelTime>(1.5, true);
    ExpectRefused<QelTime>(QelString("1"), true);
    ExpectAccepted<QelDouble4x4>(sMatrix);
    ExpectAccepted<QelTime>(QelTime(5));
}

TEST(QelTypeCopyRefusals, DistanceTakesOnlyItselfSilently)
{
    ExpectRefused<QelDistance>(1.0f, false);
    ExpectRefused<QelDistance>(QelString("1 m"), false);
    ExpectRefused<QelDistance>(QelBlob("a", 1), false);
    ExpectAccepted<QelDistance>(QelDistance(1.0f, "m"));
}

TEST(QelTypeCopyRefusals, DateTimeTakesOnlyItselfAndText)
{
    ExpectRefused<QelDateTime>(1.0, false);
    ExpectRefused<QelDateTime>(QelTime(1), false);
    ExpectAccepted<QelDateTime>(QelString("2024-02-29 13:45:30"));
    ExpectAccepted<QelDateTime>(QelDateTime(29, 2, 2024, 13, 45, 30));
}

TEST(QelTypeCopyRefusals, DoubleFromBlobAndDateTimeIsLoud)
{
    ExpectRefused<double>(QelBlob("a", 1), true);
    ExpectRefused<double>(QelDateTime(), true);
    ExpectRefused<QelDouble4x4>(2.0, true);
}

TEST(QelTypeCopyRefusals, TypesOutsideTheMatrixAreIncompatible)
{
    ExpectRefused<double>(QelColor(1, 2, 3), true);
    ExpectRefused<int>(static_cast<long>(3), true);
}

const int sUnknownTags[] = {0, -1, -16, -18, 24, INT_MIN, INT_MAX};

TEST(QelTypeCopyTags, EnumerationsConvertLikeInt)
{
    for (EQelType lEnum : {eQelEnumMulti, eQelEnum}) {
        signed char lChar = 0;
        EXPECT_TRUE(Convert(lChar, eQelChar, 300, lEnum));
        EXPECT_EQ(lChar, 44);
        int lInt = 0;
        EXPECT_TRUE(Convert(lInt, lEnum, 2.9, eQelDouble));
        EXPECT_EQ(lInt, 2);
        EXPECT_TRUE(QelTypeCopy(&lInt, lEnum, QelString("-12")));
        EXPECT_EQ(lInt, -12);
        ExpectRefused<int>(QelHalfFloat(1.0f), false);
        EXPECT_FALSE(Convert(lInt, lEnum, QelHalfFloat(1.0f), eQelHalfFloat));
        EXPECT_EQ(lInt, -12);
    }
}

TEST(QelTypeCopyTags, ReferenceTagRefusesBothWays)
{
    ReportCapture lCapture;
    int lInt = 5;
    const int lSrc = 7;
    EXPECT_FALSE(Convert(lInt, eQelReference, lSrc, eQelInt));
    EXPECT_FALSE(Convert(lInt, eQelInt, lSrc, eQelReference));
    EXPECT_FALSE(QelTypeCopy(&lInt, eQelReference, lSrc));
    EXPECT_EQ(lInt, 5);
    EXPECT_EQ(lCapture.Reports(),
              (std::vector<Report>{sVoidReference, sVoidReference, sVoidReference}));
}

TEST(QelTypeCopyTags, UnknownTagsRefuseBothWays)
{
    for (int lTag : sUnknownTags) {
        SCOPED_TRACE(lTag);
        ReportCapture lCapture;
        double lDouble = 5;
        const double lSrc = 7;
        EXPECT_FALSE(Convert(lDouble, static_cast<EQelType>(lTag), lSrc, eQelDouble));
        EXPECT_FALSE(Convert(lDouble, eQelDouble, lSrc, static_cast<EQelType>(lTag)));
        EXPECT_FALSE(QelTypeCopy(&lDouble, static_cast<EQelType>(lTag), lSrc));
        EXPECT_EQ(lDouble, 5.0);
        EXPECT_EQ(lCapture.Reports(),
                  (std::vector<Report>{sUnknownType, sUnknownType, sUnknownType}));
    }
}

TEST(QelTypeCopyTags, SourceTagIsCheckedFirst)
{
    ReportCapture lCapture;
    int lInt = 5;
    const int lSrc = 7;
    EXPECT_FALSE(Convert(lInt, eQelReference, lSrc, static_cast<EQelType>(24)));
    EXPECT_FALSE(Convert(lInt, eQelUndefined, lSrc, eQelReference));
    EXPECT_EQ(lCapture.Reports(), (std::vector<Report>{sUnknownType, sVoidReference}));
}

TEST(QelTypeCopyArray, StopsAtTheFirstRefusedItem)
{
    const QelString lTexts[] = {QelString("1"), QelString("2"), QelString("x"), QelString("4")};
    int lInts[] = {-1, -1, -1, -1};
    ReportCapture lCapture;
    EXPECT_EQ(
        QelTypeCopyArray(lInts, eQelInt, sizeof(int), lTexts, eQelString, sizeof(QelString), 4), 2);
    EXPECT_EQ(lInts[0], 1);
    EXPECT_EQ(lInts[1], 2);
    EXPECT_EQ(lInts[2], -1);
    EXPECT_EQ(lInts[3], -1);
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelTypeCopyArray, StridedItemsInsideRecords)
{
    struct Record
    {
        double mValue;
        int mTag;
    };
    const Record lRecords[] = {{2.9, 100}, {-2.9, 101}, {300.5, 102}};
    struct Out
    {
        short mPad;
        signed char mValue;
    };
    Out lOut[] = {{7, 0}, {7, 0}, {7, 0}};
    EXPECT_EQ(QelTypeCopyArray(&lOut[0].mValue, eQelChar, sizeof(Out), &lRecords[0].mValue,
                               eQelDouble, sizeof(Record), 3),
              3);
    EXPECT_EQ(lOut[0].mValue, 2);
    EXPECT_EQ(lOut[1].mValue, -2);
    EXPECT_EQ(lOut[2].mValue, 44);
    for (const Out& lItem : lOut)
        EXPECT_EQ(lItem.mPad, 7);
}

TEST(QelTypeCopyArray, RefusedPairsStopAtOnce)
{
    ReportCapture lCapture;
    double lDoubles[] = {1, 2};
    QelDouble4x4 lMatrices[2];
    EXPECT_EQ(QelTypeCopyArray(lMatrices, eQelDouble4x4, sizeof(QelDouble4x4), lDoubles, eQelDouble,
                               sizeof(double), 2),
              0);
    EXPECT_EQ(lCapture.Reports(), std::vector<Report>{sIncompatible});
    lCapture.Clear();
    QelDouble4 lFours[2];
    EXPECT_EQ(QelTypeCopyArray(lFours, eQelDouble4, sizeof(QelDouble4), lDoubles, eQelDouble,
                               sizeof(double), 2),
              0);
    EXPECT_EQ(lFours[0], QelDouble4());
    EXPECT_TRUE(lCapture.Reports().empty());
}

TEST(QelTypeCopyArray, ReferenceAndUnknownTagsReportOnce)
{
    ReportCapture lCapture;
    int lInts[] = {1, 2, 3};
    int lOut[] = {0, 0, 0};
    EXPECT_EQ(QelTypeCopyArray(lOut, eQelReference, sizeof(int), lInts, eQelInt, sizeof(int), 3),
              0);
    EXPECT_EQ(QelTypeCopyArray(lOut, eQelInt, sizeof(int), lInts, eQelReference, sizeof(int), 3),
              0);
    for (int lTag : sUnknownTags) {
        EXPECT_EQ(QelTypeCopyArray(lOut, static_cast<EQelType>(lTag), sizeof(int), lInts, eQelInt,
                                   sizeof(int), 3),
                  0);
        EXPECT_EQ(QelTypeCopyArray(lOut, eQelInt, sizeof(int), lInts, static_cast<EQelType>(lTag),
                                   sizeof(int), 3),
                  0);
    }
    EXPECT_EQ(QelTypeCopyArray(lOut, eQelReference, sizeof(int), lInts, static_cast<EQelType>(-1),
                               sizeof(int), 3),
              0);
    std::vector<Report> lExpected{sVoidReference, sVoidReference};
    lExpected.insert(lExpected.end(), 2 * std::size(sUnknownTags) + 1, sUnknownType);
    EXPECT_EQ(lCapture.Reports(), lExpected);
    EXPECT_EQ(lOut[0], 0);
}

TEST(QelTypeCopyArray, NoItemsCallNothing)
{
    ReportCapture lCapture;
    EXPECT_EQ(QelTypeCopyArray(nullptr, eQelReference, 0, nullptr, eQelInt, 0, 0), 0);
    EXPECT_EQ(QelTypeCopyArray(nullptr, eQelInt, 4, nullptr, static_cast<EQelType>(24), 4, 0), 0);
    EXPECT_EQ(QelTypeCopyArray(nullptr, eQelDouble4x4, 8, nullptr, eQelDouble, 8, 0), 0);
    EXPECT_EQ(QelTypeCopyArray(nullptr, eQelInt, 4, nullptr, eQelInt, 4, -3), 0);
    EXPECT_TRUE(lCapture.Reports().empty());
}

// Long buffers of floating values into integers, with values out of range, NaN and
// negative values scattered over several chunks and a length that leaves a tail:
// every item as the per-item entry point converts it.
template <class TDst, class TSrc>
void ExpectBatchedTruncationAgrees(EQelType pDstType, EQelType pSrcType)
{
    const TSrc lSpecial[] = {TSrc(300.5),
                             TSrc(-1),
                             TSrc(-0.0),
                             TSrc(-0.5),
                             TSrc(4294967297.0),
                             TSrc(1e30),
                             TSrc(-1e30),
                             std::numeric_limits<TSrc>::quiet_NaN(),
                             TSrc(9223372036854775808.0),
                             TSrc(2147483648.0),
                             TSrc(-2147483648.0)};
    const int lCount = 5000 + 3;
    std::vector<TSrc> lSrc(lCount);
    for (int lIndex = 0; lIndex < lCount; ++lIndex)
        lSrc[lIndex] = lIndex % 997 == 0 ? lSpecial[(lIndex / 997) % std::size(lSpecial)]
                                         : TSrc((lIndex % 120) * 0.75);
    lSrc[lCount - 1] = lSpecial[0]; // in the tail after the last whole group of lanes
    std::vector<TDst> lBatched(lCount, TDst(7));
    std::vector<TDst> lPerItem(lCount, TDst(7));
    EXPECT_EQ(QelTypeCopyArray(lBatched.data(), pDstType, sizeof(TDst), lSrc.data(), pSrcType,
                               sizeof(TSrc), lCount),
              lCount);
    for (int lIndex = 0; lIndex < lCount; ++lIndex)
        EXPECT_TRUE(QelTypeCopy(&lPerItem[lIndex], pDstType, &lSrc[lIndex], pSrcType));
    EXPECT_EQ(lBatched, lPerItem);
}

TEST(QelTypeCopyArray, TruncationOfLongBuffersAgreesWithPerItem)
{
    ExpectBatchedTruncationAgrees<int, double>(eQelInt, eQelDouble);
    ExpectBatchedTruncationAgrees<int, float>(eQelEnumMulti, eQelFloat);
    ExpectBatchedTruncationAgrees<signed char, double>(eQelChar, eQelDouble);
    ExpectBatchedTruncationAgrees<unsigned char, float>(eQelUChar, eQelFloat);
    ExpectBatchedTruncationAgrees<short, double>(eQelShort, eQelDouble);
    ExpectBatchedTruncationAgrees<unsigned short, double>(eQelUShort, eQelDouble);
    ExpectBatchedTruncationAgrees<unsigned int, double>(eQelUInt, eQelDouble);
    ExpectBatchedTruncationAgrees<long long, double>(eQelLongLong, eQelDouble);
    ExpectBatchedTruncationAgrees<unsigned long long, float>(eQelULongLong, eQelFloat);
    ExpectBatchedTruncationAgrees<unsigned long long, double>(eQelULongLong, eQelDouble);
}

TEST(QelTypeCopyArray, TruncationValuesInsideLongBuffers)
{
    std::vector<double> lSrc(2048, 1.5);
    lSrc[1500] = 300.5;
    lSrc[1501] = -2.9;
    std::vector<signed char> lDst(2048, 0);
    EXPECT_EQ(QelTypeCopyArray(lDst.data(), eQelChar, 1, lSrc.data(), eQelDouble, 8, 2048), 2048);
    EXPECT_EQ(lDst[0], 1);
    EXPECT_EQ(lDst[1500], 44);
    EXPECT_EQ(lDst[1501], -2);
    EXPECT_EQ(lDst[2047], 1);
    std::vector<unsigned int> lUnsigned(2048, 0);
    lSrc[3] = -0.5;
    lSrc[4] = -1.0;
    EXPECT_EQ(QelTypeCopyArray(lUnsigned.data(), eQelUInt, 4, lSrc.data(), eQelDouble, 8, 2048),
              2048);
    EXPECT_EQ(lUnsigned[2], 1u);
    EXPECT_EQ(lUnsigned[3], 0u);
    EXPECT_EQ(lUnsigned[4], 4294967295u);
}

TEST(QelTypeOf, ColourIsTaggedAsFourVector)
{
    EXPECT_EQ(QelTypeOf(QelColor()), QelTypeOf(QelVector4()));
    EXPECT_EQ(QelTypeOf(QelColor()), eQelDouble4);
}

} // namespace
} // namespace qelsdk
