#include "qelsdk/scene/geometry/qellayerutils.h"

#include "qelsdk/core/base/qelarray.h"
#include "qelsdk/scene/geometry/qellayer.h"
#include "qelsdk/scene/geometry/qelmesh.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;

// Item types whose components are doubles: the ones a tolerance and an average apply to.
template <class T> struct QelIsFloatItem : std::false_type
{
};
template <> struct QelIsFloatItem<QelVector4> : std::true_type
{
};
template <> struct QelIsFloatItem<QelVector2> : std::true_type
{
};
template <> struct QelIsFloatItem<QelColor> : std::true_type
{
};
template <> struct QelIsFloatItem<double> : std::true_type
{
};

// User data keeps pointers to the channel arrays it owns in its direct array.
template <class T> constexpr bool sIsUserData = std::is_same<T, void*>::value;

template <class T> struct QelElementArrays
{
    QelLayerElementArrayTemplate<T>& mDirect;
    QelLayerElementArrayTemplate<int>& mIndex;
};

// Both arrays of an element. The getters report a reference mode that does not
// select their array, which is no misuse here: the mode is lent for the call.
template <class T> QelElementArrays<T> ArraysOf(QelLayerElementTemplate<T>& pElement)
{
    const Element::EReferenceMode lMode = pElement.GetReferenceMode();
    pElement.SetReferenceMode(Element::eIndexToDirect);
    QelElementArrays<T> lArrays{pElement.GetDirectArray(), pElement.GetIndexArray()};
    pElement.SetReferenceMode(lMode);
    return lArrays;
}

bool IsLocked(const QelLayerElementArray& pArray)
{
    return pArray.IsWriteLocked() || pArray.GetReadLockCount() > 0;
}

template <class T> bool IsLocked(const QelElementArrays<T>& pArrays)
{
    return IsLocked(pArrays.mDirect) || IsLocked(pArrays.mIndex);
}

// The items of an array under a read lock held for the view's life. An empty array
// hands out no buffer and needs no lock.
template <class T> class QelReadView
{
public:
    explicit QelReadView(QelLayerElementArray& pArray)
        : mArray(pArray), mCount(pArray.GetCount()), mItems(nullptr)
    {
        if (mCount > 0) mItems = static_cast<T*>(pArray.GetLocked(QelLayerElementArray::eReadLock));
    }
    ~QelReadView()
    {
        void* lItems = mItems;
        if (lItems) mArray.Release(&lItems);
    }
    QelReadView(const QelReadView&) = delete;
    QelReadView& operator=(const QelReadView&) = delete;

    bool Failed() const { return mCount > 0 && !mItems; }
    int Count() const { return mCount; }
    const T* Items() const { return mItems; }

private:
    QelLayerElementArray& mArray;
    int mCount;
    T* mItems;
};

// Gives pArray exactly pCount items. Growing may need memory and gives false with the
// array as it was; shrinking never does: the count drops first, and the block is
// trimmed afterwards when the allocator allows. Items kept or gained are the caller's
// to overwrite.
bool SetItemCount(QelLayerElementArray& pArray, int pCount)
{
    if (pCount > pArray.GetCount()) {
        pArray.Resize(pCount);
        return pArray.GetCount() == pCount;
    }
    pArray.SetCount(pCount);
    pArray.Resize(pCount);
    return true;
}

// Gives pArray exactly pCount items copied from pItems; false, with the array as it
// was, when it cannot grow.
template <class T> bool Store(QelLayerElementArray& pArray, const T* pItems, int pCount)
{
    if (!SetItemCount(pArray, pCount)) return false;
    if (pCount == 0) return true;
    void* lBuffer = pArray.GetLocked(QelLayerElementArray::eReadWriteLock);
    std::memcpy(lBuffer, pItems, sizeof(T) * static_cast<size_t>(pCount));
    pArray.Release(&lBuffer);
    return true;
}

// A QelArray of exactly pCount items, zero when the array was empty; false when it
// cannot be allocated.
template <class T> bool Allocate(QelArray<T>& pArray, int pCount)
{
    return pCount == 0 || pArray.Resize(pCount);
}

// The element's items as its mapping sees them: the direct items, or the direct
// items its indices name.
template <class T>
EQelLayerUtilStatus Resolve(QelLayerElementTemplate<T>& pElement, QelArray<T>& pItems)
{
    const Element::EReferenceMode lMode = pElement.GetReferenceMode();
    if (lMode != Element::eDirect && lMode != Element::eIndexToDirect)
        return eQelUtilBadReferenceMode;
    QelElementArrays<T> lArrays = ArraysOf(pElement);
    if (IsLocked(lArrays)) return eQelUtilLocked;
    QelReadView<T> lDirect(lArrays.mDirect);
    if (lDirect.Failed()) return eQelUtilLocked;
    if (lMode == Element::eDirect) {
        if (!Allocate(pItems, lDirect.Count())) return eQelUtilOutOfMemory;
        if (lDirect.Count() > 0)
            std::memcpy(static_cast<void*>(pItems.GetArray()), lDirect.Items(),
                        sizeof(T) * static_cast<size_t>(lDirect.Count()));
        return eQelUtilOk;
    }
    QelReadView<int> lIndex(lArrays.mIndex);
    if (lIndex.Failed()) return eQelUtilLocked;
    for (int i = 0; i < lIndex.Count(); ++i)
        if (lIndex.Items()[i] < 0 || lIndex.Items()[i] >= lDirect.Count())
            return eQelUtilIndexOutOfRange;
    if (!Allocate(pItems, lIndex.Count())) return eQelUtilOutOfMemory;
    for (int i = 0; i < lIndex.Count(); ++i)
        pItems.GetArray()[i] = lDirect.Items()[lIndex.Items()[i]];
    return eQelUtilOk;
}

// Makes pItems the element's direct items, with no indices, under pMapping.
template <class T>
EQelLayerUtilStatus CommitDirect(QelLayerElementTemplate<T>& pElement, const QelArray<T>& pItems,
                                 Element::EMappingMode pMapping)
{
    QelElementArrays<T> lArrays = ArraysOf(pElement);
    if (!Store(lArrays.mDirect, pItems.GetArray(), pItems.Size())) return eQelUtilOutOfMemory;
    lArrays.mIndex.Clear();
    pElement.SetReferenceMode(Element::eDirect);
    pElement.SetMappingMode(pMapping);
    return eQelUtilOk;
}

// --- Hashing -----------------------------------------------------------------------

uint64_t Mix(uint64_t pValue)
{
    pValue ^= pValue >> 33;
    pValue *= 0xff51afd7ed558ccdULL;
    pValue ^= pValue >> 33;
    pValue *= 0xc4ceb9fe1a85ec53ULL;
    pValue ^= pValue >> 33;
    return pValue;
}

template <class T> uint32_t HashBytes(const T& pItem)
{
    unsigned char lBytes[sizeof(T)];
    std::memcpy(lBytes, &pItem, sizeof(T));
    uint64_t lHash = sizeof(T);
    for (size_t i = 0; i < sizeof(T); i += 8) {
        uint64_t lWord = 0;
        std::memcpy(&lWord, lBytes + i, QelMin<size_t>(8, sizeof(T) - i));
        lHash = Mix(lHash ^ lWord);
    }
    return static_cast<uint32_t>(lHash);
}

template <class T> bool SameBytes(const T& pA, const T& pB)
{
    // Exact welding is by bytes: -0.0 and 0.0 stay apart and a NaN matches its own bits.
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(&pA, &pB, sizeof(T)) == 0;
}

// Open addressing with linear probing. A slot holds a value + 1 (0 when free) and the
// hash it was added under, which spares most comparisons of the items the values
// stand for and lets the table grow without looking at them. The table doubles before
// it is half full, so every probe ends at a free slot.
class QelUtilSlotTable
{
    struct QelUtilSlot
    {
        int mValue;
        uint32_t mHash;
    };

public:
    QelUtilSlotTable() = default;
    ~QelUtilSlotTable() { QelFree(mSlots); }
    QelUtilSlotTable(const QelUtilSlotTable&) = delete;
    QelUtilSlotTable& operator=(const QelUtilSlotTable&) = delete;

    // Room for pEntries values before the table first grows; false without memory.
    bool Init(int pEntries)
    {
        size_t lCapacity = 16;
        while (lCapacity < 2 * static_cast<size_t>(pEntries) + 2)
            lCapacity *= 2;
        return Reallocate(lCapacity);
    }

    // The first value along pHash's probe that pSame accepts, or -1.
    template <class Same> int Find(uint32_t pHash, Same pSame) const
    {
        for (uint32_t i = pHash & mMask;; i = (i + 1) & mMask) {
            const QelUtilSlot& lSlot = mSlots[i];
            if (lSlot.mValue == 0) return -1;
            if (lSlot.mHash == pHash && pSame(lSlot.mValue - 1)) return lSlot.mValue - 1;
        }
    }

    // Adds pValue under pHash; false when the table has to grow and cannot.
    bool Add(uint32_t pHash, int pValue)
    {
        const size_t lCapacity = static_cast<size_t>(mMask) + 1;
        if (2 * (static_cast<size_t>(mCount) + 1) > lCapacity && !Reallocate(2 * lCapacity))
            return false;
        Place(pHash, pValue + 1);
        ++mCount;
        return true;
    }

private:
    void Place(uint32_t pHash, int pStored)
    {
        uint32_t i = pHash & mMask;
        while (mSlots[i].mValue != 0)
            i = (i + 1) & mMask;
        mSlots[i] = QelUtilSlot{pStored, pHash};
    }

    // Moves the entries into a free block of pCapacity slots (a power of 2).
    bool Reallocate(size_t pCapacity)
    {
        if (pCapacity > (size_t(1) << 31)) return false;
        QelUtilSlot* lSlots = static_cast<QelUtilSlot*>(QelMalloc(sizeof(QelUtilSlot) * pCapacity));
        if (!lSlots) return false;
        std::memset(static_cast<void*>(lSlots), 0, sizeof(QelUtilSlot) * pCapacity);
        QelUtilSlot* lOld = mSlots;
        const size_t lOldCapacity = lOld ? static_cast<size_t>(mMask) + 1 : 0;
        mSlots = lSlots;
        mMask = static_cast<uint32_t>(pCapacity - 1);
        for (size_t i = 0; i < lOldCapacity; ++i)
            if (lOld[i].mValue != 0) Place(lOld[i].mHash, lOld[i].mValue);
        QelFree(lOld);
        return true;
    }

    QelUtilSlot* mSlots = nullptr;
    uint32_t mMask = 0;
    int mCount = 0;
};

// Tables start small and grow with the classes found, which are often far fewer than
// the items.
constexpr int sFirstTableEntries = 1024;

// --- Welding -----------------------------------------------------------------------

// The outcome of a weld: the class of every item and the first item of each class.
template <class T> struct QelWeldClasses
{
    QelArray<int> mIndices;
    QelArray<T> mKept;

    // A new class for pItem; -1 without memory.
    int Keep(const T& pItem) { return mKept.Add(pItem); }
    const T& Kept(int pClass) const { return mKept.GetArray()[pClass]; }
};

// The class of pItem among the classes compared by their bytes in pTable: an earlier
// class, or a new one; -1 without memory.
template <class T>
int ClassByBytes(const T& pItem, QelUtilSlotTable& pTable, QelWeldClasses<T>& pClasses)
{
    const uint32_t lHash = HashBytes(pItem);
    const int lFound =
        pTable.Find(lHash, [&](int pClass) { return SameBytes(pClasses.Kept(pClass), pItem); });
    if (lFound >= 0) return lFound;
    const int lClass = pClasses.mKept.Size();
    if (!pTable.Add(lHash, lClass)) return -1;
    return pClasses.Keep(pItem);
}

template <class T> bool WeldExact(const T* pItems, int pCount, QelWeldClasses<T>& pClasses)
{
    QelUtilSlotTable lTable;
    if (!lTable.Init(QelMin(pCount, sFirstTableEntries))) return false;
    int* lIndices = pClasses.mIndices.GetArray();
    for (int i = 0; i < pCount; ++i)
        if ((lIndices[i] = ClassByBytes(pItems[i], lTable, pClasses)) < 0) return false;
    return true;
}

// Grid cells of a floating-point item for welding within a tolerance.
template <class T> class QelToleranceGrid
{
public:
    static constexpr int sDimensions = static_cast<int>(sizeof(T) / sizeof(double));

    struct QelGridCell
    {
        long long mAxis[sDimensions];
    };

    explicit QelToleranceGrid(double pTolerance) : mTolerance(pTolerance) {}

    bool Init(int pCount) { return mTable.Init(QelMin(pCount, sFirstTableEntries)); }

    // The cell of pItem; false for an item off the grid: a component that is not
    // finite or too far out for its cell number to be exact.
    bool CellOf(const T& pItem, QelGridCell& pCell) const
    {
        double lValues[sDimensions];
        std::memcpy(lValues, &pItem, sizeof(T));
        for (int lAxis = 0; lAxis < sDimensions; ++lAxis) {
            const double lCell = std::floor(lValues[lAxis] / mTolerance);
            if (!(std::fabs(lCell) < 4503599627370496.0)) return false; // 2^52, NaN too
            pCell.mAxis[lAxis] = static_cast<long long>(lCell);
        }
        return true;
    }

    bool Within(const T& pA, const T& pB) const
    {
        double lA[sDimensions], lB[sDimensions];
        std::memcpy(lA, &pA, sizeof(T));
        std::memcpy(lB, &pB, sizeof(T));
        for (int lAxis = 0; lAxis < sDimensions; ++lAxis)
            if (!(std::fabs(lA[lAxis] - lB[lAxis]) <= mTolerance)) return false;
        return true;
    }

    // The earliest class within tolerance of pItem among the cells around pCell, or -1.
    int Nearest(const QelWeldClasses<T>& pClasses, const T& pItem, const QelGridCell& pCell) const
    {
        int lBest = -1;
        int lOffsets = 1;
        for (int lAxis = 0; lAxis < sDimensions; ++lAxis)
            lOffsets *= 3;
        for (int lOffset = 0; lOffset < lOffsets; ++lOffset) {
            QelGridCell lCell;
            for (int lAxis = 0, lDigits = lOffset; lAxis < sDimensions; ++lAxis, lDigits /= 3)
                lCell.mAxis[lAxis] = pCell.mAxis[lAxis] + lDigits % 3 - 1;
            const int lClass =
                mTable.Find(HashCell(lCell), [&](int pClass) { return IsCell(pClass, lCell); });
            if (lClass >= 0 && (lBest < 0 || lClass < lBest) &&
                Within(pClasses.Kept(lClass), pItem))
                lBest = lClass;
        }
        return lBest;
    }

    // Files class pClass, the only one of its cell, under pCell; false without memory.
    bool Add(int pClass, const QelGridCell& pCell)
    {
        return mCells.Add(pCell) >= 0 && mTable.Add(HashCell(pCell), pClass);
    }

    // Gives a class off the grid its place among the cells, where no search looks.
    bool Skip() { return mCells.Add(QelGridCell{}) >= 0; }

private:
    static uint32_t HashCell(const QelGridCell& pCell)
    {
        uint64_t lHash = 0;
        for (int lAxis = 0; lAxis < sDimensions; ++lAxis)
            lHash = Mix(lHash ^ static_cast<uint64_t>(pCell.mAxis[lAxis]));
        return static_cast<uint32_t>(lHash);
    }

    bool IsCell(int pClass, const QelGridCell& pCell) const
    {
        return std::memcmp(&mCells.GetArray()[pClass], &pCell, sizeof(QelGridCell)) == 0;
    }

    double mTolerance;
    QelUtilSlotTable mTable;
    QelArray<QelGridCell> mCells; // one per class, in class order
};

template <class T>
bool WeldWithin(const T* pItems, int pCount, double pTolerance, QelWeldClasses<T>& pClasses)
{
    QelUtilSlotTable lExact;
    QelToleranceGrid<T> lGrid(pTolerance);
    if (!lExact.Init(QelMin(pCount, sFirstTableEntries)) || !lGrid.Init(pCount)) return false;
    int* lIndices = pClasses.mIndices.GetArray();
    for (int i = 0; i < pCount; ++i) {
        typename QelToleranceGrid<T>::QelGridCell lCell;
        const int lClasses = pClasses.mKept.Size();
        int lClass;
        if (!lGrid.CellOf(pItems[i], lCell)) {
            lClass = ClassByBytes(pItems[i], lExact, pClasses);
            if (lClass == lClasses && !lGrid.Skip()) return false;
        } else {
            lClass = lGrid.Nearest(pClasses, pItems[i], lCell);
            if (lClass < 0) {
                lClass = pClasses.Keep(pItems[i]);
                if (lClass >= 0 && !lGrid.Add(lClass, lCell)) return false;
            }
        }
        if (lClass < 0) return false;
        lIndices[i] = lClass;
    }
    return true;
}

template <class T>
bool Classify(const T* pItems, int pCount, double pTolerance, QelWeldClasses<T>& pClasses)
{
    if (!Allocate(pClasses.mIndices, pCount)) return false;
    if constexpr (QelIsFloatItem<T>::value) {
        if (pTolerance > 0.0) return WeldWithin(pItems, pCount, pTolerance, pClasses);
    }
    return WeldExact(pItems, pCount, pClasses);
}

// --- Mapping -----------------------------------------------------------------------

bool IsConvertibleMapping(Element::EMappingMode pMapping)
{
    return pMapping == Element::eByControlPoint || pMapping == Element::ePerPolygonVertex ||
           pMapping == Element::ePerPolygon || pMapping == Element::eAllSame;
}

int ItemCountFor(const QelMesh& pMesh, Element::EMappingMode pMapping)
{
    switch (pMapping) {
    case Element::eByControlPoint:
        return pMesh.GetControlPointsCount();
    case Element::ePerPolygonVertex:
        return pMesh.GetPolygonVertexCount();
    case Element::ePerPolygon:
        return pMesh.GetPolygonCount();
    default:
        return 1;
    }
}

// The item of a polygon vertex (polygon pPolygon, vertex pVertex, control point
// pPoint) under a mapping other than eAllSame.
int ItemOfCorner(Element::EMappingMode pMapping, int pPolygon, int pVertex, int pPoint)
{
    if (pMapping == Element::eByControlPoint) return pPoint;
    return pMapping == Element::ePerPolygonVertex ? pVertex : pPolygon;
}

// Calls pVisit(polygon, polygon vertex, control point) for every polygon vertex.
template <class Visit> void ForEachCorner(const QelMesh& pMesh, Visit pVisit)
{
    int lVertex = 0;
    for (int lPolygon = 0; lPolygon < pMesh.GetPolygonCount(); ++lPolygon) {
        const int lSize = pMesh.GetPolygonSize(lPolygon);
        for (int lCorner = 0; lCorner < lSize; ++lCorner)
            pVisit(lPolygon, lVertex++, pMesh.GetPolygonVertex(lPolygon, lCorner));
    }
}

bool PointsInRange(const QelMesh& pMesh)
{
    bool lInRange = true;
    const int lPoints = pMesh.GetControlPointsCount();
    ForEachCorner(pMesh, [&](int, int, int pPoint) {
        lInRange = lInRange && pPoint >= 0 && pPoint < lPoints;
    });
    return lInRange;
}

// For each new item, the old items that fall on it: the sources of item t are
// mSources[mOffsets[t]] to mSources[mOffsets[t + 1] - 1].
struct QelGathering
{
    QelArray<int> mOffsets;
    QelArray<int> mSources;
    int mLongest = 0;

    bool Build(const QelMesh& pMesh, Element::EMappingMode pFrom, Element::EMappingMode pTo,
               int pFromCount, int pToCount)
    {
        if (pFrom == Element::eAllSame || pTo == Element::eAllSame) {
            const int lSources = pFrom == Element::eAllSame ? pToCount : pFromCount;
            if (!Allocate(mOffsets, pToCount + 1) || !Allocate(mSources, lSources)) return false;
            for (int lTarget = 0; lTarget <= pToCount; ++lTarget)
                mOffsets.GetArray()[lTarget] =
                    pFrom == Element::eAllSame ? lTarget : (lTarget ? lSources : 0);
            for (int i = 0; i < lSources; ++i)
                mSources.GetArray()[i] = pFrom == Element::eAllSame ? 0 : i;
            mLongest = pFrom == Element::eAllSame ? 1 : lSources;
            return true;
        }
        if (!Allocate(mOffsets, pToCount + 1) || !Allocate(mSources, pMesh.GetPolygonVertexCount()))
            return false;
        int* lOffsets = mOffsets.GetArray();
        std::memset(lOffsets, 0, sizeof(int) * static_cast<size_t>(pToCount + 1));
        ForEachCorner(pMesh, [&](int pPolygon, int pVertex, int pPoint) {
            ++lOffsets[ItemOfCorner(pTo, pPolygon, pVertex, pPoint) + 1];
        });
        for (int lTarget = 0; lTarget < pToCount; ++lTarget) {
            mLongest = QelMax(mLongest, lOffsets[lTarget + 1]);
            lOffsets[lTarget + 1] += lOffsets[lTarget];
        }
        // Fills each run from its start, moving the starts along; they end where the
        // next run begins, and are put back after.
        ForEachCorner(pMesh, [&](int pPolygon, int pVertex, int pPoint) {
            mSources.GetArray()[lOffsets[ItemOfCorner(pTo, pPolygon, pVertex, pPoint)]++] =
                ItemOfCorner(pFrom, pPolygon, pVertex, pPoint);
        });
        for (int lTarget = pToCount; lTarget > 0; --lTarget)
            lOffsets[lTarget] = lOffsets[lTarget - 1];
        lOffsets[0] = 0;
        return true;
    }
};

template <class T> T Zero()
{
    T lValue;
    std::memset(static_cast<void*>(&lValue), 0, sizeof(T));
    return lValue;
}

// The most frequent value, ties to the smallest; pScratch holds pCount ints.
int Vote(const int* pItems, const int* pSources, int pCount, int* pScratch)
{
    for (int i = 0; i < pCount; ++i)
        pScratch[i] = pItems[pSources[i]];
    std::sort(pScratch, pScratch + pCount);
    int lBest = pScratch[0], lBestRun = 0;
    for (int i = 0, lRun = 0; i < pCount; ++i) {
        lRun = (i > 0 && pScratch[i] == pScratch[i - 1]) ? lRun + 1 : 1;
        if (lRun > lBestRun) {
            lBest = pScratch[i];
            lBestRun = lRun;
        }
    }
    return lBest;
}

bool Vote(const bool* pItems, const int* pSources, int pCount, int*)
{
    int lTrue = 0;
    for (int i = 0; i < pCount; ++i)
        lTrue += pItems[pSources[i]] ? 1 : 0;
    return lTrue > pCount - lTrue;
}

// The mean of the items; QelVector4 items (normals, binormals, tangents) then have
// their direction scaled to length 1.
template <class T> T Average(const T* pItems, const int* pSources, int pCount)
{
    constexpr int lDimensions = static_cast<int>(sizeof(T) / sizeof(double));
    double lSum[lDimensions] = {};
    for (int i = 0; i < pCount; ++i) {
        double lValues[lDimensions];
        std::memcpy(lValues, &pItems[pSources[i]], sizeof(T));
        for (int lAxis = 0; lAxis < lDimensions; ++lAxis)
            lSum[lAxis] += lValues[lAxis];
    }
    for (int lAxis = 0; lAxis < lDimensions; ++lAxis)
        lSum[lAxis] /= pCount;
    if constexpr (std::is_same<T, QelVector4>::value) {
        const double lLength = std::sqrt(lSum[0] * lSum[0] + lSum[1] * lSum[1] + lSum[2] * lSum[2]);
        if (lLength > 0.0)
            for (int lAxis = 0; lAxis < 3; ++lAxis)
                lSum[lAxis] /= lLength;
    }
    T lResult;
    std::memcpy(static_cast<void*>(&lResult), lSum, sizeof(T));
    return lResult;
}

template <class T> T Merge(const T* pItems, const int* pSources, int pCount, int* pScratch)
{
    if (pCount == 0) return Zero<T>();
    if (pCount == 1) return pItems[pSources[0]];
    if constexpr (QelIsFloatItem<T>::value) {
        (void)pScratch;
        return Average(pItems, pSources, pCount);
    } else {
        return Vote(pItems, pSources, pCount, pScratch);
    }
}

template <class T>
EQelLayerUtilStatus ChangeMapping(QelLayerElementTemplate<T>& pElement, const QelMesh& pMesh,
                                  Element::EMappingMode pMapping)
{
    const Element::EMappingMode lFrom = pElement.GetMappingMode();
    if (!IsConvertibleMapping(lFrom) || !IsConvertibleMapping(pMapping))
        return eQelUtilBadMappingMode;
    if (lFrom == pMapping) return eQelUtilOk;
    if ((lFrom == Element::eByControlPoint || pMapping == Element::eByControlPoint) &&
        !PointsInRange(pMesh))
        return eQelUtilIndexOutOfRange;
    QelArray<T> lItems;
    const EQelLayerUtilStatus lStatus = Resolve(pElement, lItems);
    if (lStatus != eQelUtilOk) return lStatus;
    if (lItems.Size() != ItemCountFor(pMesh, lFrom)) return eQelUtilCountMismatch;
    const int lCount = ItemCountFor(pMesh, pMapping);
    QelGathering lGathering;
    QelArray<T> lMerged;
    QelArray<int> lScratch;
    if (!lGathering.Build(pMesh, lFrom, pMapping, lItems.Size(), lCount) ||
        !Allocate(lMerged, lCount) ||
        (std::is_same<T, int>::value && !Allocate(lScratch, lGathering.mLongest)))
        return eQelUtilOutOfMemory;
    const int* lOffsets = lGathering.mOffsets.GetArray();
    for (int lTarget = 0; lTarget < lCount; ++lTarget)
        lMerged.GetArray()[lTarget] =
            Merge(lItems.GetArray(), lGathering.mSources.GetArray() + lOffsets[lTarget],
                  lOffsets[lTarget + 1] - lOffsets[lTarget], lScratch.GetArray());
    return CommitDirect(pElement, lMerged, pMapping);
}

// --- Normals -----------------------------------------------------------------------

struct QelVec3
{
    double mX, mY, mZ;
};

QelVec3 operator-(const QelVec3& pA, const QelVec3& pB)
{
    return {pA.mX - pB.mX, pA.mY - pB.mY, pA.mZ - pB.mZ};
}
QelVec3 Cross(const QelVec3& pA, const QelVec3& pB)
{
    return {pA.mY * pB.mZ - pA.mZ * pB.mY, pA.mZ * pB.mX - pA.mX * pB.mZ,
            pA.mX * pB.mY - pA.mY * pB.mX};
}
double Dot(const QelVec3& pA, const QelVec3& pB)
{
    return pA.mX * pB.mX + pA.mY * pB.mY + pA.mZ * pB.mZ;
}
double Length(const QelVec3& pA) { return std::sqrt(Dot(pA, pA)); }

QelVec3 PointOf(const QelMesh& pMesh, int pPoint)
{
    const QelVector4 lPoint = pMesh.GetControlPointAt(pPoint);
    return {lPoint[0], lPoint[1], lPoint[2]};
}

// Newell's sum of a polygon, twice its area along its normal, and the summed squares
// of its edge lengths.
void NewellSum(const QelVec3* pPoints, int pSize, QelVec3& pNewell, double& pEdges)
{
    if (pSize == 3) {
        // For a triangle the sum is the cross product of two of its edges.
        const QelVec3 lEdges[3] = {pPoints[1] - pPoints[0], pPoints[2] - pPoints[1],
                                   pPoints[0] - pPoints[2]};
        pNewell = Cross(lEdges[0], lEdges[1]);
        pEdges = Dot(lEdges[0], lEdges[0]) + Dot(lEdges[1], lEdges[1]) + Dot(lEdges[2], lEdges[2]);
        return;
    }
    pNewell = {0.0, 0.0, 0.0};
    pEdges = 0.0;
    for (int i = 0; i < pSize; ++i) {
        const QelVec3& lFrom = pPoints[i];
        const QelVec3& lTo = pPoints[i + 1 == pSize ? 0 : i + 1];
        pNewell.mX += (lFrom.mY - lTo.mY) * (lFrom.mZ + lTo.mZ);
        pNewell.mY += (lFrom.mZ - lTo.mZ) * (lFrom.mX + lTo.mX);
        pNewell.mZ += (lFrom.mX - lTo.mX) * (lFrom.mY + lTo.mY);
        const QelVec3 lEdge = lTo - lFrom;
        pEdges += Dot(lEdge, lEdge);
    }
}

// The unit normal of a polygon by Newell's method, or false for a degenerate one.
bool PolygonNormal(const QelVec3* pPoints, int pSize, QelVec3& pNormal)
{
    if (pSize < 3) return false;
    QelVec3 lNewell;
    double lEdges;
    NewellSum(pPoints, pSize, lNewell, lEdges);
    const double lLength = Length(lNewell);
    if (!(lLength > 1e-10 * lEdges)) return false;
    pNormal = {lNewell.mX / lLength, lNewell.mY / lLength, lNewell.mZ / lLength};
    return true;
}

// The angle of a polygon at pPoints[i].
double CornerAngle(const QelVec3* pPoints, int pSize, int pCorner)
{
    const QelVec3 lToPrevious = pPoints[pCorner == 0 ? pSize - 1 : pCorner - 1] - pPoints[pCorner];
    const QelVec3 lToNext = pPoints[pCorner + 1 == pSize ? 0 : pCorner + 1] - pPoints[pCorner];
    return std::atan2(Length(Cross(lToPrevious, lToNext)), Dot(lToPrevious, lToNext));
}

// Where each polygon vertex adds its weighted normal: one sum per control point, or,
// with smoothing groups, one per control point and non-zero group (found through a
// hash table) and none for the vertices of hard polygons.
class QelNormalSums
{
public:
    bool Init(const QelMesh& pMesh, const int* pGroups)
    {
        mGroups = pGroups;
        const int lSums = pGroups ? pMesh.GetPolygonVertexCount() : pMesh.GetControlPointsCount();
        // A fresh QelArray comes zeroed: every sum starts at 0.
        if (!Allocate(mSums, lSums)) return false;
        return !pGroups || (mTable.Init(lSums) && (lSums == 0 || mKeys.Reserve(lSums)));
    }

    // The sum of a polygon vertex; -1 for a vertex of a hard polygon.
    int SumOf(int pPolygon, int pPoint)
    {
        if (!mGroups) return pPoint;
        const int lGroup = mGroups[pPolygon];
        if (lGroup == 0) return -1;
        const uint64_t lKey = static_cast<uint64_t>(static_cast<uint32_t>(pPoint)) << 32 |
                              static_cast<uint32_t>(lGroup);
        const uint32_t lHash = static_cast<uint32_t>(Mix(lKey));
        const int lFound =
            mTable.Find(lHash, [&](int pSum) { return mKeys.GetArray()[pSum] == lKey; });
        if (lFound >= 0) return lFound;
        // Init made room for every polygon vertex: neither of these grows.
        mTable.Add(lHash, mKeys.Size());
        return mKeys.Add(lKey);
    }

    void Add(int pSum, const QelVec3& pNormal, double pWeight)
    {
        QelVec3& lSum = mSums.GetArray()[pSum];
        lSum.mX += pNormal.mX * pWeight;
        lSum.mY += pNormal.mY * pWeight;
        lSum.mZ += pNormal.mZ * pWeight;
    }

    const QelVec3& Sum(int pSum) const { return mSums.GetArray()[pSum]; }

private:
    const int* mGroups = nullptr;
    QelArray<QelVec3> mSums;
    QelArray<uint64_t> mKeys;
    QelUtilSlotTable mTable;
};

QelVector4 UnitNormal(const QelVec3& pSum)
{
    const double lLength = Length(pSum);
    if (!(lLength > 0.0)) return QelVector4(0.0, 0.0, 0.0, 0.0);
    return QelVector4(pSum.mX / lLength, pSum.mY / lLength, pSum.mZ / lLength, 0.0);
}

// The smoothing groups of a by-polygon smoothing element of pLayer, into pGroups;
// pGroups stays empty (and pUse false) when there is none to follow.
EQelLayerUtilStatus SmoothingGroups(const QelMesh& pMesh, QelLayer* pLayer, QelArray<int>& pGroups,
                                    bool& pUse)
{
    QelLayerElementSmoothing* lSmoothing = pLayer ? pLayer->GetSmoothing() : nullptr;
    pUse = lSmoothing && lSmoothing->GetMappingMode() == Element::ePerPolygon;
    if (!pUse) return eQelUtilOk;
    const EQelLayerUtilStatus lStatus = Resolve(*lSmoothing, pGroups);
    if (lStatus != eQelUtilOk) return lStatus;
    return pGroups.Size() == pMesh.GetPolygonCount() ? eQelUtilOk : eQelUtilCountMismatch;
}

// The weighted sums of a mesh's polygon normals, ready to be written out as unit
// normals, one per control point or polygon vertex.
class QelMeshNormals
{
public:
    // Checks the vertices on the way: eQelUtilIndexOutOfRange for one past the control
    // points.
    EQelLayerUtilStatus Compute(const QelMesh& pMesh, const int* pGroups)
    {
        QelArray<QelVec3> lPoints;
        QelArray<int> lVertices;
        if (!mSums.Init(pMesh, pGroups) || (pGroups && !Allocate(mFaces, pMesh.GetPolygonCount())))
            return eQelUtilOutOfMemory;
        const int lPointCount = pMesh.GetControlPointsCount();
        for (int lPolygon = 0; lPolygon < pMesh.GetPolygonCount(); ++lPolygon) {
            const int lSize = pMesh.GetPolygonSize(lPolygon);
            if (lSize > lPoints.Size() && (!lPoints.Resize(lSize) || !lVertices.Resize(lSize)))
                return eQelUtilOutOfMemory;
            QelVec3* lPoint = lPoints.GetArray();
            int* lVertex = lVertices.GetArray();
            for (int lCorner = 0; lCorner < lSize; ++lCorner) {
                lVertex[lCorner] = pMesh.GetPolygonVertex(lPolygon, lCorner);
                if (lVertex[lCorner] < 0 || lVertex[lCorner] >= lPointCount)
                    return eQelUtilIndexOutOfRange;
                lPoint[lCorner] = PointOf(pMesh, lVertex[lCorner]);
            }
            QelVec3 lFace{0.0, 0.0, 0.0};
            const bool lSolid = PolygonNormal(lPoint, lSize, lFace);
            if (pGroups) mFaces.GetArray()[lPolygon] = lFace;
            if (!lSolid) continue;
            for (int lCorner = 0; lCorner < lSize; ++lCorner) {
                const int lSum = mSums.SumOf(lPolygon, lVertex[lCorner]);
                if (lSum >= 0) mSums.Add(lSum, lFace, CornerAngle(lPoint, lSize, lCorner));
            }
        }
        return eQelUtilOk;
    }

    // Writes the ItemCountFor(pMapping) unit normals to pNormals.
    void WriteTo(const QelMesh& pMesh, Element::EMappingMode pMapping, QelVector4* pNormals)
    {
        if (pMapping == Element::eByControlPoint) {
            for (int i = 0; i < pMesh.GetControlPointsCount(); ++i)
                pNormals[i] = UnitNormal(mSums.Sum(i));
            return;
        }
        // The sums exist already: SumOf only finds them again.
        ForEachCorner(pMesh, [&](int pPolygon, int pVertex, int pPoint) {
            const int lSum = mSums.SumOf(pPolygon, pPoint);
            pNormals[pVertex] =
                UnitNormal(lSum >= 0 ? mSums.Sum(lSum) : mFaces.GetArray()[pPolygon]);
        });
    }

private:
    QelNormalSums mSums;
    QelArray<QelVec3> mFaces; // with smoothing groups only: the normals of hard polygons
};

// The layer and its normal element to write into, made when missing. A normal
// element made here is undone by Discard.
struct QelNormalTarget
{
    QelLayer* mLayer = nullptr;
    QelLayerElementNormal* mElement = nullptr;
    bool mCreated = false;

    bool Make(QelMesh& pMesh, int pLayerIndex)
    {
        if (!mLayer) {
            if (pMesh.CreateLayer() < 0) return false;
            mLayer = pMesh.GetLayer(pLayerIndex);
        }
        if (mElement) return true;
        mElement = QelLayerElementNormal::Create(&pMesh, "");
        if (!mElement) return false;
        mLayer->SetNormals(mElement);
        mCreated = true;
        return true;
    }

    void Discard()
    {
        if (!mCreated) return;
        mLayer->SetNormals(nullptr);
        mElement->Destroy();
    }
};

} // namespace

template <class T> EQelLayerUtilStatus QelFlatten(QelLayerElementTemplate<T>& pElement)
{
    if (sIsUserData<T>) return eQelUtilUnsupportedKind;
    if (pElement.GetReferenceMode() == Element::eDirect) return eQelUtilOk;
    QelArray<T> lItems;
    const EQelLayerUtilStatus lStatus = Resolve(pElement, lItems);
    if (lStatus != eQelUtilOk) return lStatus;
    return CommitDirect(pElement, lItems, pElement.GetMappingMode());
}

template <class T>
EQelLayerUtilStatus QelWeld(QelLayerElementTemplate<T>& pElement, double pTolerance)
{
    if (sIsUserData<T>) return eQelUtilUnsupportedKind;
    if (!(pTolerance >= 0.0) || (pTolerance > 0.0 && !QelIsFloatItem<T>::value))
        return eQelUtilBadTolerance;
    if (pElement.GetReferenceMode() != Element::eDirect) return eQelUtilBadReferenceMode;
    QelElementArrays<T> lArrays = ArraysOf(pElement);
    if (IsLocked(lArrays)) return eQelUtilLocked;
    QelWeldClasses<T> lClasses;
    {
        QelReadView<T> lDirect(lArrays.mDirect);
        if (lDirect.Failed()) return eQelUtilLocked;
        if (!Classify(lDirect.Items(), lDirect.Count(), pTolerance, lClasses))
            return eQelUtilOutOfMemory;
    }
    // The index array grows, which may fail; the direct array only shrinks, which
    // cannot.
    if (!Store(lArrays.mIndex, lClasses.mIndices.GetArray(), lClasses.mIndices.Size()))
        return eQelUtilOutOfMemory;
    Store(lArrays.mDirect, lClasses.mKept.GetArray(), lClasses.mKept.Size());
    pElement.SetReferenceMode(Element::eIndexToDirect);
    return eQelUtilOk;
}

template <class T>
EQelLayerUtilStatus QelChangeMapping(QelLayerElementTemplate<T>& pElement, const QelMesh& pMesh,
                                     QelLayerElement::EMappingMode pMapping)
{
    if constexpr (std::is_pointer<T>::value) {
        (void)pElement;
        (void)pMesh;
        (void)pMapping;
        return eQelUtilUnsupportedKind;
    } else {
        return ChangeMapping(pElement, pMesh, pMapping);
    }
}

EQelLayerUtilStatus QelComputeNormals(QelMesh& pMesh, int pLayerIndex,
                                      QelLayerElement::EMappingMode pMapping)
{
    if (pMapping != Element::eByControlPoint && pMapping != Element::ePerPolygonVertex)
        return eQelUtilBadMappingMode;
    if (pLayerIndex < 0 || pLayerIndex > pMesh.GetLayerCount()) return eQelUtilBadLayer;
    QelNormalTarget lTarget;
    lTarget.mLayer = pMesh.GetLayer(pLayerIndex);
    lTarget.mElement = lTarget.mLayer ? lTarget.mLayer->GetNormals() : nullptr;
    if (lTarget.mElement && IsLocked(ArraysOf(*lTarget.mElement))) return eQelUtilLocked;
    QelArray<int> lGroups;
    bool lUseGroups = false;
    if (pMapping == Element::ePerPolygonVertex) {
        const EQelLayerUtilStatus lStatus =
            SmoothingGroups(pMesh, lTarget.mLayer, lGroups, lUseGroups);
        if (lStatus != eQelUtilOk) return lStatus;
    }
    QelMeshNormals lNormals;
    const EQelLayerUtilStatus lStatus =
        lNormals.Compute(pMesh, lUseGroups ? lGroups.GetArray() : nullptr);
    if (lStatus != eQelUtilOk) return lStatus;
    if (!lTarget.Make(pMesh, pLayerIndex)) return eQelUtilOutOfMemory;
    // The normals go straight into the element, whose array is sized first: the only
    // step that may fail once the target exists.
    QelElementArrays<QelVector4> lArrays = ArraysOf(*lTarget.mElement);
    const int lCount = ItemCountFor(pMesh, pMapping);
    if (!SetItemCount(lArrays.mDirect, lCount)) {
        lTarget.Discard();
        return eQelUtilOutOfMemory;
    }
    if (lCount > 0) {
        void* lBuffer = lArrays.mDirect.GetLocked(QelLayerElementArray::eReadWriteLock);
        lNormals.WriteTo(pMesh, pMapping, static_cast<QelVector4*>(lBuffer));
        lArrays.mDirect.Release(&lBuffer);
    }
    lArrays.mIndex.Clear();
    lTarget.mElement->SetReferenceMode(Element::eDirect);
    lTarget.mElement->SetMappingMode(pMapping);
    return eQelUtilOk;
}

#define QELSDK_LAYER_UTILS_INSTANTIATE(T)                                                          \
    template EQelLayerUtilStatus QelFlatten<T>(QelLayerElementTemplate<T>&);                       \
    template EQelLayerUtilStatus QelWeld<T>(QelLayerElementTemplate<T>&, double);                  \
    template EQelLayerUtilStatus QelChangeMapping<T>(QelLayerElementTemplate<T>&, const QelMesh&,  \
                                                     QelLayerElement::EMappingMode);
QELSDK_LAYER_UTILS_INSTANTIATE(QelVector4)
QELSDK_LAYER_UTILS_INSTANTIATE(QelVector2)
QELSDK_LAYER_UTILS_INSTANTIATE(QelColor)
QELSDK_LAYER_UTILS_INSTANTIATE(int)
QELSDK_LAYER_UTILS_INSTANTIATE(double)
QELSDK_LAYER_UTILS_INSTANTIATE(bool)
QELSDK_LAYER_UTILS_INSTANTIATE(QelSurfaceMaterial*)
QELSDK_LAYER_UTILS_INSTANTIATE(QelTexture*)
QELSDK_LAYER_UTILS_INSTANTIATE(void*)
#undef QELSDK_LAYER_UTILS_INSTANTIATE

} // namespace qelsdk
