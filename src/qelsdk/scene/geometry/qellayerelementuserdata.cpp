#include <qelsdk/scene/geometry/qellayerelementuserdata.h>

#include "qelsdk/core/base/qelreport.h"
#include "qelsdk/scene/geometry/qellayerelementkind.h"
#include "qelsdk/scene/geometry/qellayerimp.h"

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>

// Reports of the constructors and of GetDirectArrayVoid name the public header, those
// of Init and of the factories the module's source.

namespace qelsdk {
namespace {

// What MemorySize counts per field: the identifier, one data type, one name pointer.
constexpr unsigned int sIdSize = 4u;
constexpr unsigned int sDataTypeSize = 16u;
constexpr unsigned int sDataNameSize = 8u;

template <class T> struct ValueTag
{
    using Type = T;
};

// Calls pWork with the ValueTag of the value type that channels of pType hold; false,
// without the call, for a type no channel can have.
template <class Work> bool WithChannelType(EQelType pType, Work pWork)
{
    switch (pType) {
    case eQelBool:
        pWork(ValueTag<bool>());
        return true;
    case eQelInt:
        pWork(ValueTag<int>());
        return true;
    case eQelFloat:
        pWork(ValueTag<float>());
        return true;
    case eQelDouble:
        pWork(ValueTag<double>());
        return true;
    default:
        return false;
    }
}

bool IsChannelType(EQelType pType)
{
    return WithChannelType(pType, [](auto) {});
}

// The stand-in QelGetDirectArray hands out when there is no channel. It has no
// storage, so every operation on it refuses with eInvalidRequest.
template <class T> class NoChannel : public QelLayerElementArrayTemplate<T>
{
public:
    NoChannel() : QelLayerElementArrayTemplate<T>(eQelUndefined)
    {
        this->SetImplementation(nullptr);
    }
};

template <class T> NoChannel<T> sNoChannel;

// Assigns channel pIndex of pFrom to the same channel of pTo when both have it.
template <class T>
void CopyChannel(QelLayerElementUserData& pTo, const QelLayerElementUserData& pFrom, int pIndex)
{
    bool lToFound = false;
    bool lFromFound = false;
    QelLayerElementArrayTemplate<T>& lTo = QelGetDirectArray<T>(&pTo, pIndex, &lToFound);
    const QelLayerElementArrayTemplate<T>& lFrom =
        QelGetDirectArray<T>(&pFrom, pIndex, &lFromFound);
    if (lToFound && lFromFound) lTo = lFrom;
}

// False only when both channels exist and their counts differ.
bool SameCount(const void* pChannel, const void* pOtherChannel)
{
    return !pChannel || !pOtherChannel ||
           static_cast<const QelLayerElementArray*>(pChannel)->GetCount() ==
               static_cast<const QelLayerElementArray*>(pOtherChannel)->GetCount();
}

QelLayerElementUserData* ReportNoElement()
{
    _QelAssert(internal::sLayerSourceFile, "Create", __LINE__, false, "%s", "tmp != NULL");
    return nullptr;
}

} // namespace

QelLayerElementUserData* QelLayerElementUserData::Create(QelLayerContainer* pOwner,
                                                         const char* pName, int pId,
                                                         QelArray<QelDataType>& pDataTypes,
                                                         QelArray<const char*>& pDataNames)
{
    QelLayerElementUserData* lElement =
        QelNew<QelLayerElementUserData>(pId, pDataTypes, pDataNames);
    if (!lElement) return ReportNoElement();
    lElement->SetName(pName);
    lElement->SetType(&QelLayerElementUserDataDT);
    const bool lWhole = lElement->Holds(pDataTypes.GetCount(), pDataNames.GetCount()) &&
                        internal::QelHasName(*lElement, pName) && lElement->AllocateArrays();
    return Register(lElement, lWhole, pOwner);
}

QelLayerElementUserData* QelLayerElementUserData::Create(QelLayerContainer* pOwner,
                                                         const QelLayerElementUserData& pOther)
{
    QelLayerElementUserData* lElement = QelNew<QelLayerElementUserData>(pOther);
    if (!lElement) return ReportNoElement();
    const bool lWhole = lElement->Holds(pOther.GetDataTypeCount(), pOther.GetDataNameCount()) &&
                        lElement->HasChannels() && lElement->HasValuesOf(pOther);
    return Register(lElement, lWhole, pOwner);
}

QelLayerElementUserData* QelLayerElementUserData::Register(QelLayerElementUserData* pElement,
                                                           bool pWhole, QelLayerContainer* pOwner)
{
    if (pWhole && internal::QelRegister(*pElement, pOwner, 0)) return pElement;
    QelDelete(pElement);
    return nullptr;
}

QelLayerElementUserData::QelLayerElementUserData(int pId, QelArray<QelDataType>& pDataTypes,
                                                 QelArray<const char*>& pDataNames)
    : mId(pId), mDataTypes(pDataTypes)
{
    if (pDataTypes.GetCount() != pDataNames.GetCount())
        QEL_REPORT_CONDITION(internal::sLayerHeaderFile,
                             "pDataTypes.GetCount() == pDataNames.GetCount()");
    for (int i = 0; i < pDataNames.GetCount() && AppendName(pDataNames[i]); ++i) {
    }
}

QelLayerElementUserData::QelLayerElementUserData(const QelLayerElementUserData& pOther)
    : mId(pOther.mId), mDataTypes(pOther.mDataTypes)
{
    for (int i = 0; i < pOther.mDataNames.GetCount() && AppendName(pOther.GetDataName(i)); ++i) {
    }
    SetType(&QelLayerElementUserDataDT);
    // Create finds out from the channels whether this succeeded.
    AllocateArrays();
    const int lChannels = QelMin(pOther.GetDirectArrayCount(), mDataTypes.GetCount());
    for (int i = 0; i < lChannels; ++i) {
        const bool lKnown = WithChannelType(mDataTypes[i].GetType(), [&](auto pTag) {
            CopyChannel<typename decltype(pTag)::Type>(*this, pOther, i);
        });
        if (!lKnown) QEL_REPORT_MESSAGE(internal::sLayerHeaderFile, "Unknown type");
    }
    // The index array stays empty: only an element whose own reference mode selects
    // it would copy it, and this one's is still the eDirect of its construction.
}

QelLayerElementUserData::~QelLayerElementUserData() { Clear(); }

bool QelLayerElementUserData::AllocateArrays()
{
    return QelLayerElementTemplate::AllocateArrays() && Init();
}

bool QelLayerElementUserData::Init()
{
    const int lCount = mDataTypes.GetCount();
    mDirectArray->Resize(lCount);
    // The entries written below must exist.
    if (mDirectArray->GetCount() != lCount) return false;
    for (int i = 0; i < lCount; ++i) {
        void* lItems = mDirectArray->GetLocked(QelLayerElementArray::eReadWriteLock);
        if (!lItems) continue;
        const EQelType lType = mDataTypes[i].GetType();
        void** lChannels = static_cast<void**>(lItems);
        const bool lKnown = WithChannelType(lType, [&](auto pTag) {
            lChannels[i] =
                internal::QelNewArray<QelLayerElementArrayTemplate<typename decltype(pTag)::Type>>(
                    lType);
        });
        if (!lKnown)
            QEL_REPORT_MESSAGE(internal::sLayerSourceFile, "Trying to assign an unknown type");
        mDirectArray->Release(&lItems);
    }
    return HasChannels();
}

bool QelLayerElementUserData::Clear()
{
    DeleteChannels();
    for (int i = 0; i < mDataNames.GetCount(); ++i)
        QelDelete(mDataNames[i]);
    mDataNames.Clear();
    mDataTypes.Clear();
    if (HasArrays()) QelLayerElementTemplate::Clear();
    return true;
}

// Channel arrays are deleted through their base, which shares their address.
void QelLayerElementUserData::DeleteChannels()
{
    if (!mDirectArray) return;
    const int lCount = mDirectArray->GetCount();
    void* lItems = mDirectArray->GetLocked(QelLayerElementArray::eReadWriteLock);
    if (!lItems) return;
    void** lChannels = static_cast<void**>(lItems);
    for (int i = 0; i < lCount; ++i) {
        QelDelete(static_cast<QelLayerElementArray*>(lChannels[i]));
        lChannels[i] = nullptr;
    }
    mDirectArray->Release(&lItems);
}

int QelLayerElementUserData::MemorySize() const
{
    const unsigned int lArrays =
        HasArrays() ? static_cast<unsigned int>(QelLayerElementTemplate::MemorySize()) : 0u;
    return static_cast<int>(lArrays + sIdSize +
                            sDataTypeSize * static_cast<unsigned int>(mDataTypes.GetCount()) +
                            sDataNameSize * static_cast<unsigned int>(mDataNames.GetCount()));
}

void* QelLayerElementUserData::GetDirectArrayVoid(int pIndex, bool* pStatus)
{
    const int lCount = GetDirectArrayCount();
    // Kept as-is: either-or, not both (see the header).
    const bool lAccepted = pIndex >= 0 || pIndex < lCount;
    if (pStatus) *pStatus = lAccepted;
    if (!lAccepted) {
        QEL_REPORT_MESSAGE(internal::sLayerHeaderFile, "Index out of bounds");
        return nullptr;
    }
    if (pIndex < 0 || pIndex >= lCount) return nullptr;
    return mDirectArray->AsReference(pIndex);
}

const void* QelLayerElementUserData::GetDirectArrayVoid(int pIndex, bool* pStatus) const
{
    return const_cast<QelLayerElementUserData*>(this)->GetDirectArrayVoid(pIndex, pStatus);
}

int QelLayerElementUserData::GetDirectArrayCount() const
{
    return mDirectArray ? mDirectArray->GetCount() : 0;
}

const QelDataType& QelLayerElementUserData::GetDataType(int pIndex) const
{
    return pIndex >= 0 && pIndex < mDataTypes.GetCount() ? mDataTypes[pIndex] : QelUndefinedDT;
}

const char* QelLayerElementUserData::GetDataName(int pIndex) const
{
    return pIndex >= 0 && pIndex < mDataNames.GetCount() ? mDataNames[pIndex]->Buffer() : nullptr;
}

bool QelLayerElementUserData::AppendName(const char* pText)
{
    QelString* lName = QelNew<QelString>(pText);
    // A text that could not be allocated leaves the string empty.
    if (lName && (!pText || *lName == pText) && mDataNames.Add(lName) >= 0) return true;
    QelDelete(lName);
    return false;
}

bool QelLayerElementUserData::Holds(int pTypeCount, int pNameCount) const
{
    return mDataTypes.GetCount() == pTypeCount && mDataNames.GetCount() == pNameCount;
}

bool QelLayerElementUserData::HasChannels() const
{
    if (!HasArrays() || GetDirectArrayCount() != mDataTypes.GetCount()) return false;
    for (int i = 0; i < mDataTypes.GetCount(); ++i)
        if (!GetDirectArrayVoid(i) && IsChannelType(mDataTypes[i].GetType())) return false;
    return true;
}

bool QelLayerElementUserData::HasValuesOf(const QelLayerElementUserData& pOther) const
{
    const int lChannels = QelMin(GetDirectArrayCount(), pOther.GetDirectArrayCount());
    for (int i = 0; i < lChannels; ++i)
        if (!SameCount(GetDirectArrayVoid(i), pOther.GetDirectArrayVoid(i))) return false;
    return true;
}

template <class T>
QelLayerElementArrayTemplate<T>& QelGetDirectArray(QelLayerElementUserData* pUserData, int pIndex,
                                                   bool* pStatus)
{
    void* lChannel = pUserData ? pUserData->GetDirectArrayVoid(pIndex, pStatus) : nullptr;
    if (lChannel) return *static_cast<QelLayerElementArrayTemplate<T>*>(lChannel);
    if (pStatus) *pStatus = false;
    return sNoChannel<T>;
}

template <class T>
const QelLayerElementArrayTemplate<T>& QelGetDirectArray(const QelLayerElementUserData* pUserData,
                                                         int pIndex, bool* pStatus)
{
    return QelGetDirectArray<T>(const_cast<QelLayerElementUserData*>(pUserData), pIndex, pStatus);
}

template QelLayerElementArrayTemplate<bool>& QelGetDirectArray<bool>(QelLayerElementUserData*, int,
                                                                     bool*);
template QelLayerElementArrayTemplate<int>& QelGetDirectArray<int>(QelLayerElementUserData*, int,
                                                                   bool*);
template QelLayerElementArrayTemplate<float>& QelGetDirectArray<float>(QelLayerElementUserData*,
                                                                       int, bool*);
template QelLayerElementArrayTemplate<double>& QelGetDirectArray<double>(QelLayerElementUserData*,
                                                                         int, bool*);
template const QelLayerElementArrayTemplate<bool>&
QelGetDirectArray<bool>(const QelLayerElementUserData*, int, bool*);
template const QelLayerElementArrayTemplate<int>&
QelGetDirectArray<int>(const QelLayerElementUserData*, int, bool*);
template const QelLayerElementArrayTemplate<float>&
QelGetDirectArray<float>(const QelLayerElementUserData*, int, bool*);
template const QelLayerElementArrayTemplate<double>&
QelGetDirectArray<double>(const QelLayerElementUserData*, int, bool*);

} // namespace qelsdk
