#include <qelsdk/scene/geometry/qellayer.h>

#include "qelsdk/scene/geometry/qellayerelementkind.h"
#include "qelsdk/scene/geometry/qellayerimp.h"

#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/qelstream.h>

namespace qelsdk {
namespace {

typedef QelLayerElement Element;

constexpr int sNonTextureCount = 13;
constexpr int sChannelCount = 17;
constexpr int sFirstChannel = Element::eTextureDiffuse;
constexpr int sLastChannel = Element::eTextureVectorDisplacement;
constexpr int sUVSlot = Element::eUV - 1;
constexpr int sDiffuse = 0;

bool IsNonTexture(int pType) { return pType >= Element::eNormal && pType <= Element::eVisibility; }
bool IsChannel(int pType) { return pType >= sFirstChannel && pType <= sLastChannel; }

void Report(bool pIsMessage, const char* pText)
{
    _QelAssert(internal::sLayerSourceFile, "CreateLayerElementOfType", __LINE__, pIsMessage, "%s",
               pText);
}

// How the layer makes and copies the element of one non-texture kind.
struct KindOps
{
    Element* (*mCreate)(QelLayerContainer* pOwner, const char* pName);
    // A copy of pSource owned by pOwner; null when pSource is not of the kind or the
    // copy cannot be allocated.
    Element* (*mCopy)(QelLayerContainer* pOwner, const Element& pSource);
};

template <class TKind> Element* CreateAs(QelLayerContainer* pOwner, const char* pName)
{
    return TKind::Create(pOwner, pName);
}

// Made by the kind's factory with the source's name, then assigned from the source.
template <class TKind> Element* CopyAs(QelLayerContainer* pOwner, const Element& pSource)
{
    const TKind* lSource = dynamic_cast<const TKind*>(&pSource);
    if (!lSource) return nullptr;
    TKind* lCopy = TKind::Create(pOwner, lSource->GetName());
    if (lCopy) *lCopy = *lSource;
    return lCopy;
}

// User data copies through its copying factory, which sets no name.
Element* CopyUserData(QelLayerContainer* pOwner, const Element& pSource)
{
    const auto* lSource = dynamic_cast<const QelLayerElementUserData*>(&pSource);
    if (!lSource) return nullptr;
    QelLayerElementUserData* lCopy = QelLayerElementUserData::Create(pOwner, *lSource);
    if (lCopy) lCopy->SetName(lSource->GetName());
    return lCopy;
}

// By kind - 1. The eUV kind is made through the diffuse channel and copied from it;
// user data cannot be created.
const KindOps sKindOps[sNonTextureCount] = {
    {CreateAs<QelLayerElementNormal>, CopyAs<QelLayerElementNormal>},
    {CreateAs<QelLayerElementBinormal>, CopyAs<QelLayerElementBinormal>},
    {CreateAs<QelLayerElementTangent>, CopyAs<QelLayerElementTangent>},
    {CreateAs<QelLayerElementMaterial>, CopyAs<QelLayerElementMaterial>},
    {CreateAs<QelLayerElementPolygonGroup>, CopyAs<QelLayerElementPolygonGroup>},
    {nullptr, nullptr},
    {CreateAs<QelLayerElementVertexColor>, CopyAs<QelLayerElementVertexColor>},
    {CreateAs<QelLayerElementSmoothing>, CopyAs<QelLayerElementSmoothing>},
    {CreateAs<QelLayerElementCrease>, CopyAs<QelLayerElementCrease>},
    {CreateAs<QelLayerElementCrease>, CopyAs<QelLayerElementCrease>},
    {CreateAs<QelLayerElementHole>, CopyAs<QelLayerElementHole>},
    {nullptr, CopyUserData},
    {CreateAs<QelLayerElementVisibility>, CopyAs<QelLayerElementVisibility>},
};

// The number of records of a kind in the stream: a channel has its texture and its
// UV element.
int RecordsOf(int pType) { return pType >= sFirstChannel ? 2 : 1; }

} // namespace

QelLayer::QelLayer(QelLayerContainer& pLayerContainer)
    : mOwnerContainer(pLayerContainer), mNonTextureElements(), mUVElements(), mTextureElements(),
      mUVSlotDestroyed(false)
{
}

QelLayer::~QelLayer() = default;

// --- Slots -------------------------------------------------------------------------------

QelLayerElementUV* QelLayer::GetUVs(EType pType)
{
    return IsChannel(pType) ? mUVElements[pType - sFirstChannel] : nullptr;
}

const QelLayerElementUV* QelLayer::GetUVs(EType pType) const
{
    return const_cast<QelLayer*>(this)->GetUVs(pType);
}

QelLayerElementTexture* QelLayer::GetTextures(EType pType)
{
    return IsChannel(pType) ? mTextureElements[pType - sFirstChannel] : nullptr;
}

const QelLayerElementTexture* QelLayer::GetTextures(EType pType) const
{
    return const_cast<QelLayer*>(this)->GetTextures(pType);
}

void QelLayer::SetUVs(QelLayerElementUV* pElement, EType pType)
{
    if (!IsChannel(pType)) return;
    mUVElements[pType - sFirstChannel] = pElement;
    if (pType == sFirstChannel) SetUVSlot(pElement);
}

void QelLayer::SetTextures(EType pType, QelLayerElementTexture* pElement)
{
    if (!IsChannel(pType)) return;
    const int lChannel = pType - sFirstChannel;
    mTextureElements[lChannel] = pElement;
    if (!pElement) return;
    pElement->IncRefCount();
    pElement->SetType(&QelLayerElement::sTextureDataTypes[lChannel]);
}

QelLayerElement* QelLayer::GetLayerElementOfType(EType pType, bool pIsUV)
{
    if (IsNonTexture(pType)) return mNonTextureElements[pType - 1];
    if (!IsChannel(pType)) return nullptr;
    return pIsUV ? static_cast<QelLayerElement*>(mUVElements[pType - sFirstChannel])
                 : mTextureElements[pType - sFirstChannel];
}

const QelLayerElement* QelLayer::GetLayerElementOfType(EType pType, bool pIsUV) const
{
    return const_cast<QelLayer*>(this)->GetLayerElementOfType(pType, pIsUV);
}

// The element behind a kind as the layer itself may use it: the eUV slot's pointer
// once Clear has destroyed its element names nothing alive.
QelLayerElement* QelLayer::LiveElementOfType(int pType, bool pIsUV) const
{
    if (pType == QelLayerElement::eUV && mUVSlotDestroyed) return nullptr;
    return const_cast<QelLayer*>(this)->GetLayerElementOfType(static_cast<EType>(pType), pIsUV);
}

void QelLayer::SetUVSlot(QelLayerElement* pElement)
{
    mNonTextureElements[sUVSlot] = pElement;
    mUVSlotDestroyed = false;
}

void QelLayer::SetLayerElementOfType(QelLayerElement* pLayerElement, EType pType, bool pIsUV)
{
    if (pType == QelLayerElement::eUV) {
        SetUVSlot(pLayerElement);
    } else if (IsNonTexture(pType)) {
        mNonTextureElements[pType - 1] = pLayerElement;
    } else if (IsChannel(pType)) {
        const int lChannel = pType - sFirstChannel;
        if (pIsUV)
            mUVElements[lChannel] = static_cast<QelLayerElementUV*>(pLayerElement);
        else
            mTextureElements[lChannel] = static_cast<QelLayerElementTexture*>(pLayerElement);
    }
}

QelLayerElement* QelLayer::CreateLayerElementOfType(EType pType, bool pIsUV)
{
    if (IsNonTexture(pType)) return CreateNonTexture(pType);
    if (!IsChannel(pType)) return nullptr;
    const int lChannel = pType - sFirstChannel;
    if (pIsUV) {
        if (mUVElements[lChannel]) Report(false, "lUVElement == NULL");
        SetUVs(QelLayerElementUV::Create(&mOwnerContainer, ""), pType);
        return mUVElements[lChannel];
    }
    // Deliberately neither counted nor typed by channel, unlike SetTextures.
    if (mTextureElements[lChannel]) Report(false, "lTextureElement == NULL");
    mTextureElements[lChannel] = QelLayerElementTexture::Create(&mOwnerContainer, "");
    return mTextureElements[lChannel];
}

QelLayerElement* QelLayer::CreateNonTexture(EType pType)
{
    QelLayerElement*& lSlot = mNonTextureElements[pType - 1];
    if (lSlot) Report(false, "lNonTextureElement == NULL");
    if (pType == QelLayerElement::eUV) {
        SetUVs(QelLayerElementUV::Create(&mOwnerContainer, ""), QelLayerElement::eTextureDiffuse);
    } else if (const auto lCreate = sKindOps[pType - 1].mCreate) {
        lSlot = lCreate(&mOwnerContainer, "");
    } else {
        Report(true, "Need to be implemented!");
    }
    return lSlot;
}

// --- UV sets -----------------------------------------------------------------------------

int QelLayer::GetUVSetCount() const
{
    int lCount = 0;
    for (const QelLayerElementUV* lElement : mUVElements)
        lCount += lElement != nullptr;
    return lCount;
}

QelArray<const QelLayerElementUV*> QelLayer::GetUVSets() const
{
    QelArray<const QelLayerElementUV*> lSets;
    lSets.Clear();
    for (const QelLayerElementUV* lElement : mUVElements)
        if (lElement) lSets.Add(lElement);
    return lSets;
}

QelArray<QelLayerElement::EType> QelLayer::GetUVSetChannels() const
{
    QelArray<EType> lChannels;
    lChannels.Clear();
    for (int lChannel = 0; lChannel < sChannelCount; ++lChannel)
        if (mUVElements[lChannel]) lChannels.Add(static_cast<EType>(sFirstChannel + lChannel));
    return lChannels;
}

// --- Lifecycle ---------------------------------------------------------------------------

// Empties and destroys the element of a slot and nulls the slot. An element that
// another slot names as well is destroyed once: the later slots are only nulled.
template <class T> void QelLayer::Discard(T*& pSlot, QelArray<QelLayerElement*>& pDestroyed)
{
    QelLayerElement* lElement = pSlot;
    pSlot = nullptr;
    if (!lElement || pDestroyed.Find(lElement) >= 0) return;
    if (lElement == mNonTextureElements[sUVSlot]) mUVSlotDestroyed = true;
    pDestroyed.Add(lElement);
    lElement->Clear();
    lElement->Destroy();
}

void QelLayer::Clear()
{
    QelArray<QelLayerElement*> lDestroyed(sNonTextureCount + 2 * sChannelCount);
    for (int lKind = 0; lKind < sNonTextureCount; ++lKind)
        if (lKind != sUVSlot) Discard(mNonTextureElements[lKind], lDestroyed);
    for (int lChannel = 0; lChannel < sChannelCount; ++lChannel) {
        Discard(mUVElements[lChannel], lDestroyed);
        Discard(mTextureElements[lChannel], lDestroyed);
    }
}

void QelLayer::Clone(const QelLayer& pOther)
{
    if (&pOther == this) return;
    Clear();
    for (int lKind = 0; lKind < sNonTextureCount; ++lKind) {
        const QelLayerElement* lSource = pOther.mNonTextureElements[lKind];
        if (lKind == sUVSlot || !lSource) continue;
        mNonTextureElements[lKind] = sKindOps[lKind].mCopy(&mOwnerContainer, *lSource);
    }
    for (int lChannel = 0; lChannel < sChannelCount; ++lChannel) {
        if (const QelLayerElementTexture* lTexture = pOther.mTextureElements[lChannel])
            mTextureElements[lChannel] = static_cast<QelLayerElementTexture*>(
                CopyAs<QelLayerElementTexture>(&mOwnerContainer, *lTexture));
        if (const QelLayerElementUV* lUV = pOther.mUVElements[lChannel])
            mUVElements[lChannel] =
                static_cast<QelLayerElementUV*>(CopyAs<QelLayerElementUV>(&mOwnerContainer, *lUV));
    }
    if (mUVElements[sDiffuse]) SetUVSlot(mUVElements[sDiffuse]);
}

int QelLayer::MemoryUsage() const
{
    unsigned int lSize = sizeof(QelLayer);
    for (int lType = Element::eNormal; lType <= sLastChannel; ++lType)
        for (bool lIsUV : {false, true})
            if (const QelLayerElement* lElement = LiveElementOfType(lType, lIsUV))
                lSize += static_cast<unsigned int>(lElement->MemorySize());
    return static_cast<int>(lSize);
}

// --- Content stream ----------------------------------------------------------------------

bool QelLayer::ContentWriteTo(QelStream& pStream) const
{
    for (int lType = Element::eNormal; lType <= sLastChannel; ++lType) {
        for (int lRecord = 0; lRecord < RecordsOf(lType); ++lRecord) {
            const QelLayerElement* lElement = LiveElementOfType(lType, lRecord == 1);
            const char lPresent = lElement ? 1 : 0;
            if (!internal::QelWriteInt(pStream, lType) || pStream.Write(&lPresent, 1) != 1)
                return false;
            if (lElement && !lElement->ContentWriteTo(pStream)) return false;
        }
    }
    return true;
}

bool QelLayer::ContentReadFrom(const QelStream& pStream)
{
    for (int lType = Element::eNormal; lType <= sLastChannel; ++lType) {
        for (int lRecord = 0; lRecord < RecordsOf(lType); ++lRecord) {
            int lRecordType = 0;
            char lPresent = 0;
            if (pStream.Read(&lRecordType, 4) != 4 || pStream.Read(&lPresent, 1) != 1) return false;
            if (lRecordType != lType || lPresent != 1) continue;
            const EType lKind = static_cast<EType>(lType);
            QelLayerElement* lElement = LiveElementOfType(lType, lRecord == 1);
            if (!lElement) lElement = CreateLayerElementOfType(lKind, lRecord == 1);
            if (lElement && !lElement->ContentReadFrom(pStream)) return false;
        }
    }
    return true;
}

} // namespace qelsdk
