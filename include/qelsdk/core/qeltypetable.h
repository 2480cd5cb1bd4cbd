// The value-type table: one row per tag that has storage, giving the type its values
// are stored as, how it takes part in conversion and its printable name. What the
// library knows per value type (sizes, the types and dispatch of the conversion
// matrix, how items are built and destroyed) is derived from these rows, so adding a
// value type means adding its enumerator to EQelType and its row here.
//
// The header names the value types without defining them, so that the headers that
// include it stay light.
#ifndef QELSDK_CORE_QELTYPETABLE_H
#define QELSDK_CORE_QELTYPETABLE_H

#include <qelsdk/core/qelpropertytypes.h>
#include <qelsdk/core/qelvectorfwd.h>

namespace qelsdk {

class QelBlob;
class QelDateTime;
class QelDistance;
class QelHalfFloat;
class QelString;
class QelTime;

namespace internal {

// One row; the storage type is the template argument. mCopyAs is the tag whose row
// and column of the conversion matrix the values use: the tag itself for a type with
// its own row and column, another tag for a tag that converts exactly like that one,
// eQelUndefined for a tag that is never converted.
template <class TStorage> struct QelValueType
{
    typedef TStorage Storage;
    EQelType mTag;
    const char* mName;
    EQelType mCopyAs;
};

// A list of rows of different storage types, walked in order at compile time.
template <class... TRows> struct QelValueTypeTable;

template <> struct QelValueTypeTable<>
{
    template <class TVisit> constexpr void ForEach(TVisit&) const {}
};

template <class TRow, class... TRows> struct QelValueTypeTable<TRow, TRows...>
{
    constexpr QelValueTypeTable(const TRow& pRow, const TRows&... pRows)
        : mRow(pRow), mRows(pRows...)
    {
    }

    // Calls pVisit with every row, in order.
    template <class TVisit> constexpr void ForEach(TVisit& pVisit) const
    {
        pVisit(mRow);
        mRows.ForEach(pVisit);
    }

    TRow mRow;
    QelValueTypeTable<TRows...> mRows;
};

template <class... TRows> QelValueTypeTable(const TRows&...) -> QelValueTypeTable<TRows...>;

// The rows, in rising tag order. Both enumerations are stored as int and convert as
// eQelInt; a reference is one pointer, which no conversion reads or writes.
inline constexpr QelValueTypeTable
    sQelValueTypes(QelValueType<int>{eQelEnumMulti, "eQelEnumMulti", eQelInt},
                   QelValueType<signed char>{eQelChar, "eQelChar", eQelChar},
                   QelValueType<unsigned char>{eQelUChar, "eQelUChar", eQelUChar},
                   QelValueType<short>{eQelShort, "eQelShort", eQelShort},
                   QelValueType<unsigned short>{eQelUShort, "eQelUShort", eQelUShort},
                   QelValueType<unsigned int>{eQelUInt, "eQelUInt", eQelUInt},
                   QelValueType<long long>{eQelLongLong, "eQelLongLong", eQelLongLong},
                   QelValueType<unsigned long long>{eQelULongLong, "eQelULongLong", eQelULongLong},
                   QelValueType<QelHalfFloat>{eQelHalfFloat, "eQelHalfFloat", eQelHalfFloat},
                   QelValueType<bool>{eQelBool, "eQelBool", eQelBool},
                   QelValueType<int>{eQelInt, "eQelInt", eQelInt},
                   QelValueType<float>{eQelFloat, "eQelFloat", eQelFloat},
                   QelValueType<double>{eQelDouble, "eQelDouble", eQelDouble},
                   QelValueType<QelDouble2>{eQelDouble2, "eQelDouble2", eQelDouble2},
                   QelValueType<QelDouble3>{eQelDouble3, "eQelDouble3", eQelDouble3},
                   QelValueType<QelDouble4>{eQelDouble4, "eQelDouble4", eQelDouble4},
                   QelValueType<QelDouble4x4>{eQelDouble4x4, "eQelDouble4x4", eQelDouble4x4},
                   QelValueType<int>{eQelEnum, "eQelEnum", eQelInt},
                   QelValueType<QelString>{eQelString, "eQelString", eQelString},
                   QelValueType<QelTime>{eQelTime, "eQelTime", eQelTime},
                   QelValueType<void*>{eQelReference, "eQelReference", eQelUndefined},
                   QelValueType<QelBlob>{eQelBlob, "eQelBlob", eQelBlob},
                   QelValueType<QelDistance>{eQelDistance, "eQelDistance", eQelDistance},
                   QelValueType<QelDateTime>{eQelDateTime, "eQelDateTime", eQelDateTime});

// The rows and the enumerators agree: the rows name eQelEnumMulti and then every
// enumerator from eQelChar to the last one, in order.
constexpr bool QelRowsMatchEnumerators()
{
    int lExpected = eQelEnumMulti;
    bool lMatch = true;
    auto lVisit = [&lExpected, &lMatch](auto pRow) {
        lMatch = lMatch && pRow.mTag == lExpected;
        lExpected = pRow.mTag == eQelEnumMulti ? eQelChar : pRow.mTag + 1;
    };
    sQelValueTypes.ForEach(lVisit);
    return lMatch && lExpected == eQelTypeCount;
}
static_assert(QelRowsMatchEnumerators(), "one row per EQelType enumerator with storage");

} // namespace internal
} // namespace qelsdk

#endif
