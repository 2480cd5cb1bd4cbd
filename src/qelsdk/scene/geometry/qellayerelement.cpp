#include <qelsdk/scene/geometry/qellayerelement.h>

#include "qelsdk/scene/geometry/qellayerelementkind.h"
#include "qelsdk/scene/geometry/qellayerimp.h"
#include "qelsdk/scene/qelmaterialnames.h"

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>
#include <qelsdk/core/qelstream.h>
#include <qelsdk/scene/geometry/qellayercontainer.h>
#include <qelsdk/scene/geometry/qelmesh.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

#include <climits>
#include <cstring>
#include <type_traits>

namespace qelsdk {

// --- Base ---------------------------------------------------------------------------

// Constant initialisation: every entry is a constant expression, so the tables are
// filled before any dynamic initialiser of any translation unit runs.
constexpr const char* const QelLayerElement::sNonTextureNames[13] = {
    "LayerElementNormal",     "LayerElementBinormal",     "LayerElementTangent",
    "LayerElementMaterial",   "LayerElementPolygonGroup", "LayerElementUV",
    "LayerElementColor",      "LayerElementSmoothing",    "LayerElementVertexCrease",
    "LayerElementEdgeCrease", "LayerElementHole",         "LayerElementUserData",
    "LayerElementVisibility"};

constexpr const char* const QelLayerElement::sTextureNames[17] = {
    "LayerElementTexture",
    "LayerElementDiffuseFactorTextures",
    "LayerElementEmissive_Textures",
    "LayerElementEmissiveFactorTextures",
    "LayerElementAmbientTextures",
    "LayerElementAmbientFactorTextures",
    "LayerElementSpecularTextures",
    "LayerElementSpecularFactorTextures",
    "LayerElementShininessTextures",
    "LayerElementNormalMapTextures",
    "LayerElementBumpTextures",
    "LayerElementTransparentTextures",
    "LayerElementTransparencyFactorTextures",
    "LayerElementReflectionTextures",
    "LayerElementReflectionFactorTextures",
    "LayerElementDisplacementTextures",
    "LayerElementVectorDisplacementTextures"};

constexpr const char* const QelLayerElement::sTextureUVNames[17] = {
    "LayerElementUV",
    "LayerElementDiffuseFactorUV",
    "LayerElementEmissiveUV",
    "LayerElementEmissiveFactorUV",
    "LayerElementAmbientUV",
    "LayerElementAmbientFactorUV",
    "LayerElementSpecularUV",
    "LayerElementSpecularFactorUV",
    "LayerElementShininessUV",
    "LayerElementNormalMapUV",
    "LayerElementBumpUV",
    "LayerElementTransparentUV",
    "LayerElementTransparencyFactorUV",
    "LayerElementReflectionUV",
    "LayerElementReflectionFactorUV",
    "LayerElementDisplacementUV",
    "LayerElementVectorDisplacementUV"};

constexpr const char* const QelLayerElement::sTextureChannelNames[17] = {
    internal::sDiffuseName,
    internal::sDiffuseFactorName,
    internal::sEmissiveName,
    internal::sEmissiveFactorName,
    internal::sAmbientName,
    internal::sAmbientFactorName,
    internal::sSpecularName,
    internal::sSpecularFactorName,
    internal::sShininessName,
    internal::sNormalMapName,
    internal::sBumpName,
    internal::sTransparentColorName,
    internal::sTransparencyFactorName,
    internal::sReflectionName,
    internal::sReflectionFactorName,
    internal::sDisplacementColorName,
    internal::sVectorDisplacementColorName};

constexpr QelDataType QelLayerElement::sTextureDataTypes[17] = {QelMaterialDiffuseDT,
                                                                QelMaterialDiffuseFactorDT,
                                                                QelMaterialEmissiveDT,
                                                                QelMaterialEmissiveFactorDT,
                                                                QelMaterialAmbientDT,
                                                                QelMaterialAmbientFactorDT,
                                                                QelMaterialSpecularDT,
                                                                QelMaterialSpecularFactorDT,
                                                                QelMaterialShininessDT,
                                                                QelMaterialNormalMapDT,
                                                                QelMaterialBumpDT,
                                                                QelMaterialTransparentColorDT,
                                                                QelMaterialTransparencyFactorDT,
                                                                QelMaterialReflectionDT,
                                                                QelMaterialReflectionFactorDT,
                                                                QelMaterialDisplacementDT,
                                                                QelMaterialVectorDisplacementDT};

// mType stays null until the factory of the kind sets it.
QelLayerElement::QelLayerElement()
    : mMappingMode(eNone), mReferenceMode(eDirect), mType(nullptr), mOwner(nullptr), mRefCount(0)
{
}

QelLayerElement::~QelLayerElement() = default;

void QelLayerElement::SetOwner(QelLayerContainer* pOwner, int /*pInstance*/)
{
    if (mOwner) mOwner->RemoveFromLayerElementsList(this);
    mOwner = pOwner;
    if (mOwner) mOwner->AddToLayerElementsList(this);
}

bool QelLayerElement::ContentWriteTo(QelStream& pStream) const
{
    const int lLength = mName.GetLen();
    if (!internal::QelWriteInt(pStream, mMappingMode) ||
        !internal::QelWriteInt(pStream, mReferenceMode) || !internal::QelWriteInt(pStream, lLength))
        return false;
    return lLength < 1 || pStream.Write(mName.Buffer(), lLength) == lLength;
}

// The modes are read straight into their fields, so they stay overwritten when a
// later field is cut short.
bool QelLayerElement::ContentReadFrom(const QelStream& pStream)
{
    int lLength = 0;
    if (pStream.Read(reinterpret_cast<int*>(&mMappingMode), 4) != 4 ||
        pStream.Read(reinterpret_cast<int*>(&mReferenceMode), 4) != 4 ||
        pStream.Read(&lLength, 4) != 4)
        return false;
    if (lLength <= 0) return true;
    char* lText = static_cast<char*>(QelMalloc(static_cast<size_t>(lLength) + 1));
    if (!lText) {
        _QelAssert(internal::sLayerSourceFile, "ContentReadFrom", __LINE__, false, "%s",
                   "p != NULL");
        return false;
    }
    std::memset(lText, 0, static_cast<size_t>(lLength) + 1);
    const bool lRead = pStream.Read(lText, lLength) == lLength;
    if (lRead) mName = QelString(lText);
    QelFree(lText);
    return lRead;
}

void QelLayerElement::SetName(const char* pName) { mName = QelString(pName); }

int QelLayerElement::DecRefCount()
{
    mRefCount = QelMax(mRefCount - 1, 0);
    return mRefCount;
}

void QelLayerElement::Destroy()
{
    if (mOwner) mOwner->RemoveFromLayerElementsList(this);
    Destruct();
}

void QelLayerElement::Destruct()
{
    if (DecRefCount() == 0) QelDelete(this);
}

// Copying two enumerations is safe on the element itself.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
QelLayerElement& QelLayerElement::operator=(const QelLayerElement& pOther)
{
    mMappingMode = pOther.mMappingMode;
    mReferenceMode = pOther.mReferenceMode;
    return *this;
}

// --- Direct and index template ------------------------------------------------------------

namespace {

bool IsDirect(QelLayerElement::EReferenceMode pMode)
{
    return pMode == QelLayerElement::eDirect || pMode == QelLayerElement::eIndexToDirect;
}

bool IsIndexed(QelLayerElement::EReferenceMode pMode)
{
    return pMode == QelLayerElement::eIndex || pMode == QelLayerElement::eIndexToDirect;
}

void ReportCondition(const char* pFile, const char* pFunction, const char* pText)
{
    _QelAssert(pFile, pFunction, __LINE__, false, "%s", pText);
}

} // namespace

template <class T>
QelLayerElementTemplate<T>::QelLayerElementTemplate() : mDirectArray(nullptr), mIndexArray(nullptr)
{
}

template <class T> QelLayerElementTemplate<T>::~QelLayerElementTemplate()
{
    QelDelete(mDirectArray);
    QelDelete(mIndexArray);
}

template <class T> bool QelLayerElementTemplate<T>::AllocateArrays()
{
    if (!mDirectArray)
        mDirectArray = internal::QelNewArray<QelLayerElementArrayTemplate<T>>(mType->GetType());
    if (!mIndexArray)
        mIndexArray = internal::QelNewArray<QelLayerElementArrayTemplate<int>>(QelIntDT.GetType());
    return mDirectArray && mIndexArray;
}

template <class T> bool QelLayerElementTemplate<T>::Clear()
{
    mDirectArray->Clear();
    const bool lDirectCleared = mDirectArray->GetStatus() == LockAccessStatus::eLockAccessOk;
    mIndexArray->Clear();
    return lDirectCleared || mIndexArray->GetStatus() == LockAccessStatus::eLockAccessOk;
}

// 32-bit arithmetic that wraps instead of overflowing.
template <class T> int QelLayerElementTemplate<T>::MemorySize() const
{
    const unsigned int lDirect =
        static_cast<unsigned int>(mDirectArray->GetCount()) * static_cast<unsigned int>(sizeof(T));
    const unsigned int lIndex = static_cast<unsigned int>(mIndexArray->GetCount()) * 4u;
    return static_cast<int>(static_cast<unsigned int>(QelLayerElement::MemorySize()) + lDirect +
                            lIndex);
}

template <class T> QelLayerElementArrayTemplate<T>& QelLayerElementTemplate<T>::GetDirectArray()
{
    if (!IsDirect(mReferenceMode))
        ReportCondition(internal::sLayerHeaderFile, "GetDirectArray",
                        "mReferenceMode == QelLayerElement::eDirect || mReferenceMode == "
                        "QelLayerElement::eIndexToDirect");
    return *mDirectArray;
}

template <class T>
const QelLayerElementArrayTemplate<T>& QelLayerElementTemplate<T>::GetDirectArray() const
{
    return const_cast<QelLayerElementTemplate*>(this)->GetDirectArray();
}

template <class T> QelLayerElementArrayTemplate<int>& QelLayerElementTemplate<T>::GetIndexArray()
{
    if (!IsIndexed(mReferenceMode))
        ReportCondition(internal::sLayerHeaderFile, "GetIndexArray",
                        "mReferenceMode == QelLayerElement::eIndex || mReferenceMode == "
                        "QelLayerElement::eIndexToDirect");
    return *mIndexArray;
}

template <class T>
const QelLayerElementArrayTemplate<int>& QelLayerElementTemplate<T>::GetIndexArray() const
{
    return const_cast<QelLayerElementTemplate*>(this)->GetIndexArray();
}

// The arrays' own assignment leaves an array assigned to itself as it is.
template <class T>
QelLayerElementTemplate<T>&
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
QelLayerElementTemplate<T>::operator=(const QelLayerElementTemplate& pOther)
{
    if (!mDirectArray)
        ReportCondition(internal::sLayerHeaderFile, "operator=", "mDirectArray != NULL");
    if (!mIndexArray)
        ReportCondition(internal::sLayerHeaderFile, "operator=", "mIndexArray != NULL");
    if (mDirectArray && IsDirect(pOther.mReferenceMode)) *mDirectArray = pOther.GetDirectArray();
    if (mIndexArray && IsIndexed(pOther.mReferenceMode)) *mIndexArray = pOther.GetIndexArray();
    QelLayerElement::operator=(pOther);
    return *this;
}

namespace {

// The bytes of pCount items of pArray, in 64 bits: a stream call takes at most
// INT_MAX of them, which the callers check.
long long BlockBytes(const QelLayerElementArray& pArray, int pCount)
{
    return static_cast<long long>(pCount) * static_cast<long long>(pArray.GetStride());
}

// One array as a count and one block of raw items. The array is reached directly,
// not through the guarded accessors: its reference mode does not decide what is
// streamed.
bool WriteArray(QelStream& pStream, QelLayerElementArray& pArray)
{
    const int lCount = pArray.GetCount();
    if (!internal::QelWriteInt(pStream, lCount)) return false;
    if (lCount <= 0) return true;
    const long long lBytes = BlockBytes(pArray, lCount);
    if (lBytes > INT_MAX) return false;
    void* lItems = pArray.GetLocked(QelLayerElementArray::eReadWriteLock);
    if (!lItems) {
        ReportCondition(internal::sLayerHeaderFile, "ContentWriteTo", "a != NULL");
        return false;
    }
    const int lWritten = pStream.Write(lItems, static_cast<int>(lBytes));
    pArray.Release(&lItems);
    return lWritten == lBytes;
}

// A bool holds 0 or 1 and nothing else: a stream byte of any other value reads as
// true instead of becoming a value that no bool can hold.
void NormaliseBooleans(unsigned char* pBytes, int pCount)
{
    for (int i = 0; i < pCount; ++i)
        pBytes[i] = pBytes[i] != 0;
}

bool ReadArray(const QelStream& pStream, QelLayerElementArray& pArray)
{
    int lCount = 0;
    if (pStream.Read(&lCount, 4) != 4) return false;
    pArray.Resize(lCount);
    if (lCount <= 0) return true;
    const long long lBytes = BlockBytes(pArray, lCount);
    if (pArray.GetCount() != lCount || lBytes > INT_MAX) return false;
    void* lItems = pArray.GetLocked(QelLayerElementArray::eReadWriteLock);
    if (!lItems) {
        ReportCondition(internal::sLayerHeaderFile, "ContentReadFrom", "a != NULL");
        return false;
    }
    const int lRead = pStream.Read(lItems, static_cast<int>(lBytes));
    if (pArray.GetDataType() == eQelBool)
        NormaliseBooleans(static_cast<unsigned char*>(lItems), lRead);
    pArray.Release(&lItems);
    return lRead == lBytes;
}

} // namespace

template <class T> bool QelLayerElementTemplate<T>::ContentWriteTo(QelStream& pStream) const
{
    return WriteArray(pStream, *mDirectArray) && WriteArray(pStream, *mIndexArray) &&
           QelLayerElement::ContentWriteTo(pStream);
}

template <class T> bool QelLayerElementTemplate<T>::ContentReadFrom(const QelStream& pStream)
{
    return ReadArray(pStream, *mDirectArray) && ReadArray(pStream, *mIndexArray) &&
           QelLayerElement::ContentReadFrom(pStream);
}

template class QelLayerElementTemplate<QelVector4>;
template class QelLayerElementTemplate<QelVector2>;
template class QelLayerElementTemplate<QelColor>;
template class QelLayerElementTemplate<int>;
template class QelLayerElementTemplate<double>;
template class QelLayerElementTemplate<bool>;
template class QelLayerElementTemplate<QelSurfaceMaterial*>;
template class QelLayerElementTemplate<QelTexture*>;
template class QelLayerElementTemplate<void*>;

static_assert(sizeof(QelVector4) == 32 && sizeof(QelVector2) == 16 && sizeof(QelColor) == 32 &&
                  sizeof(int) == 4 && sizeof(double) == 8 && sizeof(bool) == 1 &&
                  sizeof(void*) == 8,
              "the value sizes MemorySize counts");

// --- Remapping ------------------------------------------------------------------------------

namespace {

// Results of RemapIndexArrayTo.
constexpr int sRemapped = 1;
constexpr int sNothingDone = 0;
constexpr int sUnsupported = -1;

// The outcome of checking one side of the remapping: go on only with the one pair of
// modes there is a rule for.
int CheckMode(int pMode, int pSupported)
{
    if (pMode > QelLayerElement::eAllSame) return sRemapped;
    return pMode == pSupported ? 0 : sUnsupported;
}

// The indices repeated once per vertex of their polygon; false when the result would
// not fit an int count or the memory is not there.
bool Expand(const QelArray<int>& pIndices, const QelMesh& pMesh, QelArray<int>& pExpanded)
{
    long long lTotal = 0;
    for (int lPolygon = 0; lPolygon < pIndices.Size(); ++lPolygon)
        lTotal += QelMax(pMesh.GetPolygonSize(lPolygon), 0);
    if (lTotal > INT_MAX || !pExpanded.Resize(static_cast<int>(lTotal))) return false;
    int* lOut = pExpanded.GetArray();
    for (int lPolygon = 0; lPolygon < pIndices.Size(); ++lPolygon) {
        const int lIndex = pIndices.GetArray()[lPolygon];
        for (int lVertex = pMesh.GetPolygonSize(lPolygon); lVertex > 0; --lVertex)
            *lOut++ = lIndex;
    }
    return true;
}

// The items of pArray, read through one lock; false when the memory is not there.
bool ReadAll(QelLayerElementArrayTemplate<int>& pArray, QelArray<int>& pItems)
{
    const int lCount = pArray.GetCount();
    if (lCount <= 0) return true;
    if (!pItems.Resize(lCount)) return false;
    void* lItems = pArray.GetLocked(QelLayerElementArray::eReadLock, eQelInt);
    if (!lItems) return false;
    std::memcpy(pItems.GetArray(), lItems, sizeof(int) * static_cast<size_t>(lCount));
    pArray.Release(&lItems, eQelInt);
    return true;
}

// Replaces the items of pArray by pItems: resized once, then written through one
// lock. False, with the array as it was, when it cannot be resized.
bool WriteAll(QelLayerElementArrayTemplate<int>& pArray, const QelArray<int>& pItems)
{
    pArray.Resize(pItems.Size());
    if (pArray.GetCount() != pItems.Size()) return false;
    if (pItems.Size() == 0) return true;
    // Read-write, not write: a write lock would discard the storage and allocate it
    // anew, which can fail after the old items are gone.
    void* lItems = pArray.GetLocked(QelLayerElementArray::eReadWriteLock, eQelInt);
    if (!lItems) return false;
    std::memcpy(lItems, pItems.GetArray(), sizeof(int) * static_cast<size_t>(pItems.Size()));
    pArray.Release(&lItems, eQelInt);
    return true;
}

} // namespace

int RemapIndexArrayTo(QelLayerElement* pLayerEl, QelLayerElement::EMappingMode pNewMapping,
                      QelLayerElementArrayTemplate<int>* pIndexArray)
{
    if (!pLayerEl) return sNothingDone;
    if (pLayerEl->GetReferenceMode() == QelLayerElement::eDirect) return sUnsupported;
    const QelLayerElement::EMappingMode lMapping = pLayerEl->GetMappingMode();
    if (lMapping == pNewMapping) return sRemapped;
    if (!pIndexArray) return sNothingDone;
    if (const int lFrom = CheckMode(lMapping, QelLayerElement::ePerPolygon)) return lFrom;
    QelLayerContainer* lOwner = pLayerEl->GetOwner();
    if (!lOwner || !lOwner->Is<QelMesh>()) return sNothingDone;
    // Is and QelCast share one class test, so the cast of a mesh cannot fail here;
    // the report stands for an object system where the two could disagree.
    const QelMesh* lMesh = QelCast<QelMesh>(lOwner);
    if (!lMesh) {
        ReportCondition(internal::sLayerSourceFile, "RemapIndexArrayTo", "mesh != NULL");
        return sNothingDone;
    }
    if (const int lTo = CheckMode(pNewMapping, QelLayerElement::ePerPolygonVertex)) return lTo;

    QelArray<int> lIndexBuffer;
    QelArray<int> lExpanded;
    if (!ReadAll(*pIndexArray, lIndexBuffer) || !Expand(lIndexBuffer, *lMesh, lExpanded) ||
        !WriteAll(*pIndexArray, lExpanded))
        return sNothingDone;
    pLayerEl->SetMappingMode(pNewMapping);
    return sRemapped;
}

// --- Kinds ----------------------------------------------------------------------------------

QelLayerElementNormal::QelLayerElementNormal() = default;
QelLayerElementBinormal::QelLayerElementBinormal() = default;
QelLayerElementTangent::QelLayerElementTangent() = default;
QelLayerElementPolygonGroup::QelLayerElementPolygonGroup() = default;
QelLayerElementUV::QelLayerElementUV() = default;
QelLayerElementVertexColor::QelLayerElementVertexColor() = default;
QelLayerElementVisibility::QelLayerElementVisibility() = default;

// The three kinds whose constructors store their reference mode themselves.
QelLayerElementSmoothing::QelLayerElementSmoothing() { mReferenceMode = eDirect; }
QelLayerElementCrease::QelLayerElementCrease() { mReferenceMode = eDirect; }
QelLayerElementHole::QelLayerElementHole() { mReferenceMode = eDirect; }

QelLayerElementTexture::QelLayerElementTexture() : mTextureMode(0), mTextureFactor(1.0)
{
    mReferenceMode = eIndexToDirect;
}

int QelLayerElementTexture::MemorySize() const
{
    return static_cast<int>(static_cast<unsigned int>(QelLayerElementTemplate::MemorySize()) + 12u);
}

QelLayerElementTexture& QelLayerElementTexture::operator=(const QelLayerElementTexture& pOther)
{
    QelLayerElementTemplate::operator=(pOther);
    mTextureMode = pOther.mTextureMode;
    mTextureFactor = pOther.mTextureFactor;
    return *this;
}

QelLayerElementNormal* QelLayerElementNormal::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementNormal>(pOwner, pName,
                                                             QelLayerElementNormalDT);
}

QelLayerElementBinormal* QelLayerElementBinormal::Create(QelLayerContainer* pOwner,
                                                         const char* pName)
{
    return internal::QelCreateElement<QelLayerElementBinormal>(pOwner, pName,
                                                               QelLayerElementBinormalDT);
}

QelLayerElementTangent* QelLayerElementTangent::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementTangent>(pOwner, pName,
                                                              QelLayerElementTangentDT);
}

QelLayerElementPolygonGroup* QelLayerElementPolygonGroup::Create(QelLayerContainer* pOwner,
                                                                 const char* pName)
{
    return internal::QelCreateElement<QelLayerElementPolygonGroup>(pOwner, pName,
                                                                   QelLayerElementPolygonGroupDT);
}

QelLayerElementUV* QelLayerElementUV::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementUV>(pOwner, pName, QelLayerElementUVDT);
}

QelLayerElementVertexColor* QelLayerElementVertexColor::Create(QelLayerContainer* pOwner,
                                                               const char* pName)
{
    return internal::QelCreateElement<QelLayerElementVertexColor>(pOwner, pName,
                                                                  QelLayerElementVertexColorDT);
}

QelLayerElementSmoothing* QelLayerElementSmoothing::Create(QelLayerContainer* pOwner,
                                                           const char* pName)
{
    return internal::QelCreateElement<QelLayerElementSmoothing>(pOwner, pName,
                                                                QelLayerElementSmoothingDT);
}

QelLayerElementCrease* QelLayerElementCrease::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementCrease>(pOwner, pName,
                                                             QelLayerElementCreaseDT);
}

QelLayerElementHole* QelLayerElementHole::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementHole>(pOwner, pName, QelLayerElementHoleDT);
}

QelLayerElementVisibility* QelLayerElementVisibility::Create(QelLayerContainer* pOwner,
                                                             const char* pName)
{
    return internal::QelCreateElement<QelLayerElementVisibility>(pOwner, pName,
                                                                 QelLayerElementVisibilityDT);
}

QelLayerElementTexture* QelLayerElementTexture::Create(QelLayerContainer* pOwner, const char* pName)
{
    return internal::QelCreateElement<QelLayerElementTexture>(pOwner, pName,
                                                              QelLayerElementTextureDT);
}

} // namespace qelsdk
