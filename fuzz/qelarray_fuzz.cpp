// Random sequences of element array operations on an array of ints, checked after
// every operation against a std::vector that does what each operation documents.
// A difference traps. Slots that Resize exposes inside the blocks it already has keep
// whatever bytes they held (insertions do not zero the slots they allocate): the model
// takes such items as unknown until they are written.
#include <qelsdk/scene/geometry/qellayerelementarray.h>

#include "qelfuzzsupport.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

using namespace qelsdk;

namespace {

typedef QelLayerElementArrayTemplate<int> IntArray;
struct Item
{
    int mValue;
    bool mKnown;
};
typedef std::vector<Item> Model;

Item Known(int pValue) { return Item{pValue, true}; }

void Check(bool pCondition)
{
    if (!pCondition) __builtin_trap();
}

void CheckSame(const IntArray& pArray, const Model& pModel)
{
    Check(pArray.GetCount() == static_cast<int>(pModel.size()));
    for (size_t i = 0; i < pModel.size(); ++i)
        Check(!pModel[i].mKnown || pArray.GetAt(static_cast<int>(i)) == pModel[i].mValue);
    Check(!pArray.IsInUse());
}

// An index around the model's range, out of range on both sides included.
int IndexFrom(fuzz::QelInput& pInput, const Model& pModel)
{
    return static_cast<int>(pInput.Take<uint8_t>() % (pModel.size() + 3)) - 1;
}

bool InRange(int pIndex, const Model& pModel)
{
    return pIndex >= 0 && pIndex < static_cast<int>(pModel.size());
}

// Locks the whole buffer as pType (T its storage), checks it, writes values from the
// input into it when pWrite, and releases it.
template <class T>
void ThroughBuffer(IntArray& pArray, Model& pModel, EQelType pType, bool pWrite,
                   fuzz::QelInput& pInput)
{
    const auto lMode =
        pWrite ? QelLayerElementArray::eReadWriteLock : QelLayerElementArray::eReadLock;
    void* lBuffer = pArray.GetLocked(lMode, pType);
    if (!lBuffer) return;
    T* lItems = static_cast<T*>(lBuffer);
    for (size_t i = 0; i < pModel.size(); ++i) {
        Check(!pModel[i].mKnown || lItems[i] == static_cast<T>(pModel[i].mValue));
        if (pWrite) {
            pModel[i] = Known(pInput.Take<int8_t>());
            lItems[i] = static_cast<T>(pModel[i].mValue);
        }
    }
    pArray.Release(&lBuffer, pType);
    Check(lBuffer == nullptr);
}

void Apply(uint8_t pOperation, IntArray& pArray, Model& pModel, fuzz::QelInput& pInput)
{
    switch (pOperation % 12) {
    case 0: {
        const int lValue = pInput.Take<int32_t>();
        Check(pArray.Add(lValue) == static_cast<int>(pModel.size()));
        pModel.push_back(Known(lValue));
        break;
    }
    case 1: {
        const int lIndex = IndexFrom(pInput, pModel);
        const int lValue = pInput.Take<int32_t>();
        const bool lValid = lIndex >= 0 && lIndex <= static_cast<int>(pModel.size());
        Check(pArray.InsertAt(lIndex, &lValue, eQelInt) == (lValid ? lIndex : -1));
        if (lValid) pModel.insert(pModel.begin() + lIndex, Known(lValue));
        break;
    }
    case 2: {
        const int lIndex = IndexFrom(pInput, pModel);
        int lRemoved = 0;
        int* lTarget = &lRemoved;
        pArray.RemoveAt(lIndex, reinterpret_cast<void**>(&lTarget));
        if (InRange(lIndex, pModel)) {
            Check(!pModel[lIndex].mKnown || lRemoved == pModel[lIndex].mValue);
            pModel.erase(pModel.begin() + lIndex);
        }
        break;
    }
    case 3: {
        const int lIndex = IndexFrom(pInput, pModel);
        const int lValue = pInput.Take<int32_t>();
        pArray.SetAt(lIndex, lValue);
        if (InRange(lIndex, pModel)) pModel[lIndex] = Known(lValue);
        break;
    }
    case 4: {
        const int lCount = pInput.Take<uint8_t>() % 40;
        pArray.Resize(lCount);
        pModel.resize(lCount, Item{0, false});
        break;
    }
    case 5: {
        const int lCount = pInput.Take<uint8_t>() % 20 + 1;
        pArray.AddMultiple(lCount);
        pModel.resize(pModel.size() + lCount, Known(0));
        break;
    }
    case 6:
        pArray.Clear();
        pModel.clear();
        break;
    case 7:
        ThroughBuffer<double>(pArray, pModel, eQelDouble, true, pInput);
        break;
    case 8:
        ThroughBuffer<long long>(pArray, pModel, eQelLongLong, false, pInput);
        break;
    case 9:
        ThroughBuffer<int>(pArray, pModel, eQelInt, true, pInput);
        break;
    case 10: {
        const int lValue = pInput.Take<int8_t>();
        const auto lFound = std::find_if(pModel.begin(), pModel.end(), [&](const Item& pItem) {
            return !pItem.mKnown || pItem.mValue == lValue;
        });
        const int lIndex = pArray.Find(&lValue);
        if (lFound == pModel.end())
            Check(lIndex == -1);
        else if (lFound->mKnown)
            Check(lIndex == static_cast<int>(lFound - pModel.begin()));
        break;
    }
    case 11: {
        int lLast = 0;
        int* lTarget = &lLast;
        pArray.RemoveLast(reinterpret_cast<void**>(&lTarget));
        if (!pModel.empty()) {
            Check(!pModel.back().mKnown || lLast == pModel.back().mValue);
            pModel.pop_back();
        }
        break;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) { return fuzz::QelInstallFuzzHandlers(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    fuzz::QelInput lInput(pData, pSize);
    IntArray lArray(eQelInt);
    Model lModel;
    while (!lInput.Empty()) {
        Apply(lInput.Take<uint8_t>(), lArray, lModel, lInput);
        CheckSame(lArray, lModel);
    }
    return 0;
}
