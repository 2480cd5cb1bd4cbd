// Layer elements: the attribute channels of a mesh layer.
//
// QelLayerElement carries what every channel has: a mapping mode (to which mesh
// component each value belongs), a reference mode (values stored directly, reached
// through an index array, or both), a name, a data type descriptor, the container
// whose element list holds it and a reference count. QelLayerElementTemplate<T>
// gives it storage: a direct array of T and an index array of int, both owned. The
// kinds below are thin subclasses with a Create factory each.
//
// An element is registered with the layer container that owns it, which frees it at
// the latest when the container goes. Holders beyond the container raise the
// element's reference count; Destruct frees the element once the count, clamped at
// 0, comes down to 0. An element is therefore released through Destroy (leave the
// owner's list, then Destruct) and never deleted directly.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERELEMENT_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERELEMENT_H

#include <qelsdk/core/qelcolor.h>
#include <qelsdk/core/qeldatatype.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qelvector.h>
#include <qelsdk/scene/geometry/qellayerelementarray.h>
#include <qelsdk/scene/qelsurfacematerial.h>
#include <qelsdk/scene/qeltexture.h>

namespace qelsdk {

class QelLayerContainer;
class QelStream;

class QelLayerElement
{
public:
    // Values 1, 4 and 5 are kept, copied and streamed only; the mesh code gives them
    // their meaning. A value above 5 is carried like any other.
    enum EMappingMode : int {
        eNone = 0,
        eByControlPoint = 1,
        ePerPolygonVertex = 2,
        ePerPolygon = 3,
        eByEdge = 4,
        eAllSame = 5
    };

    enum EReferenceMode : int { eDirect = 0, eIndex = 1, eIndexToDirect = 2 };

    // 1 to 13 are the non-texture kinds, 14 to 30 the texture channels.
    enum EType : int {
        eUnknown = 0,
        eNormal = 1,
        eBinormal,
        eTangent,
        eMaterial,
        ePolygonGroup,
        eUV,
        eVertexColor,
        eSmoothing,
        eVertexCrease,
        eEdgeCrease,
        eHole,
        eUserData,
        eVisibility,
        eTextureDiffuse = 14,
        eTextureDiffuseFactor,
        eTextureEmissive,
        eTextureEmissiveFactor,
        eTextureAmbient,
        eTextureAmbientFactor,
        eTextureSpecular,
        eTextureSpecularFactor,
        eTextureShininess,
        eTextureNormalMap,
        eTextureBump,
        eTextureTransparency,
        eTextureTransparencyFactor,
        eTextureReflection,
        eTextureReflectionFactor,
        eTextureDisplacement,
        eTextureVectorDisplacement
    };

    // Elements are made by the factories of their kinds, never copied whole.
    QelLayerElement(const QelLayerElement&) = delete;

    // Empties the content; the base has none.
    virtual bool Clear() { return true; }
    // Releases the name only: it neither leaves the owner's list nor looks at the
    // reference count, which is why elements go through Destroy.
    virtual ~QelLayerElement();
    // Leaves the current owner's list, then joins the list of pOwner (if any).
    // Setting the same owner again moves the element to the end of its list.
    // pInstance is for kinds that mirror a particular instance of their owner.
    virtual void SetOwner(QelLayerContainer* pOwner, int pInstance);
    virtual int MemorySize() const { return 0; }
    // The element's content in a stream of the same process: the mapping mode, the
    // reference mode and the name (a 32-bit length, then its characters) as native
    // 32-bit integers and raw bytes. False at once when the stream takes or gives
    // fewer bytes than asked; what was read before stays. A name length of 0 or less
    // leaves the name as it is; a name reads up to its first zero byte.
    virtual bool ContentWriteTo(QelStream& pStream) const;
    virtual bool ContentReadFrom(const QelStream& pStream);

    void SetMappingMode(EMappingMode pMappingMode) { mMappingMode = pMappingMode; }
    EMappingMode GetMappingMode() const { return mMappingMode; }
    void SetReferenceMode(EReferenceMode pReferenceMode) { mReferenceMode = pReferenceMode; }
    EReferenceMode GetReferenceMode() const { return mReferenceMode; }
    void SetName(const char* pName);
    const char* GetName() const { return mName.Buffer(); }
    // Not copied: the descriptors are constants that outlive every element.
    void SetType(const QelDataType* pDataType) { mType = pDataType; }
    QelLayerContainer* GetOwner() const { return mOwner; }

    void IncRefCount() { ++mRefCount; }
    // The count after the decrement; never below 0.
    int DecRefCount();
    // Leaves the owner's list (mOwner stays set), then Destruct.
    void Destroy();
    // Frees the element when DecRefCount comes down to 0, so a count of 0 or 1 dies
    // at the first call and a count of n survives n - 1 calls.
    void Destruct();

    // Copies the two modes only: name, type, owner and count stay the target's own.
    QelLayerElement& operator=(const QelLayerElement& pOther);

    // Names and data types by kind, filled before any code runs (constant
    // initialisation), so that static objects of other translation units may read
    // them. Non-texture kinds are indexed by kind - 1, texture channels by kind - 14.
    // The irregular names are the ones readers of scene files compare against.
    static const char* const sNonTextureNames[13];
    static const char* const sTextureNames[17];
    static const char* const sTextureUVNames[17];
    // The material property of each channel: QelSurfaceMaterial's name constants.
    static const char* const sTextureChannelNames[17];
    static const QelDataType sTextureDataTypes[17];

protected:
    QelLayerElement();

    EMappingMode mMappingMode;
    EReferenceMode mReferenceMode;
    QelString mName;
    const QelDataType* mType;
    QelLayerContainer* mOwner;
    int mRefCount;
};

// The storage of an element: a direct array of T, of the element's data type, and
// an index array of int. Which of the two is meaningful follows the reference mode;
// both always exist once the factory has made the element. Instantiated for the nine
// value types of the kinds: QelVector4, QelVector2, QelColor, int, double, bool,
// QelSurfaceMaterial*, QelTexture* and void*.
template <class T> class QelLayerElementTemplate : public QelLayerElement
{
public:
    // Releases both arrays, the direct one first.
    ~QelLayerElementTemplate() override;

    // Empties both arrays. True when either of them reports success: one array that
    // cannot be emptied does not make the element's Clear fail.
    bool Clear() override;
    // Direct count x sizeof(T) + index count x 4, in 32-bit arithmetic.
    int MemorySize() const override;
    // The direct array (count, then its items as raw memory: pointer items are
    // addresses, meaningful in the writing process only), the index array (the same,
    // even for a direct element), then the base content. Each array moves in one
    // stream call of count x item size bytes under a read-write lock of its own.
    // A lock that cannot be taken is reported ("a != NULL") and gives false. An array
    // whose bytes do not fit one call (more than INT_MAX), and on reading a count the
    // array cannot be resized to, give false with nothing read into the array. Bool
    // items read back as 0 or 1: a stream byte other than 0 is true.
    bool ContentWriteTo(QelStream& pStream) const override;
    bool ContentReadFrom(const QelStream& pStream) override;
    // Creates the direct array with the data type's value type (SetType comes first)
    // and the index array of ints; arrays that exist already are not released. False
    // when either array, or its storage, cannot be allocated; what was made is kept
    // and released by the destructor. The factories call it once.
    virtual bool AllocateArrays();

    // Outside eDirect and eIndexToDirect, reports the condition and returns the
    // array all the same.
    QelLayerElementArrayTemplate<T>& GetDirectArray();
    const QelLayerElementArrayTemplate<T>& GetDirectArray() const;
    // Outside eIndex and eIndexToDirect, reports the condition and returns the array
    // all the same.
    QelLayerElementArrayTemplate<int>& GetIndexArray();
    const QelLayerElementArrayTemplate<int>& GetIndexArray() const;

    // Copies the arrays that pOther's reference mode selects (the other keeps its
    // contents), then the two modes. A missing array of this element is reported
    // ("mDirectArray != NULL", "mIndexArray != NULL") and not assigned to. Assigning an
    // element to itself is safe: the arrays' own assignment leaves an array as it is.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    QelLayerElementTemplate& operator=(const QelLayerElementTemplate& pOther);

protected:
    QelLayerElementTemplate();

    QelLayerElementArrayTemplate<T>* mDirectArray;
    QelLayerElementArrayTemplate<int>* mIndexArray;
};

extern template class QelLayerElementTemplate<QelVector4>;
extern template class QelLayerElementTemplate<QelVector2>;
extern template class QelLayerElementTemplate<QelColor>;
extern template class QelLayerElementTemplate<int>;
extern template class QelLayerElementTemplate<double>;
extern template class QelLayerElementTemplate<bool>;
extern template class QelLayerElementTemplate<QelSurfaceMaterial*>;
extern template class QelLayerElementTemplate<QelTexture*>;
extern template class QelLayerElementTemplate<void*>;

// Remaps an index array from one value per polygon (ePerPolygon) to one value per
// polygon vertex (ePerPolygonVertex), repeating each polygon's index once per vertex
// of the polygon; the old index count is taken as the polygon count. pIndexArray need
// not be pLayerEl's own. Returns 1 on success or when there is nothing to do (equal
// modes, a mode above 5), 0 when nothing could be done (no element, no index array,
// no mesh owner, or no memory for the new indices: the array is then as it was), -1
// for an eDirect element and for every other pair of modes.
int RemapIndexArrayTo(QelLayerElement* pLayerEl, QelLayerElement::EMappingMode pNewMapping,
                      QelLayerElementArrayTemplate<int>* pIndexArray);

// The kinds. Each Create allocates the element, names it, sets its data type,
// allocates its arrays and registers it with pOwner (a null owner leaves it in no
// list). It returns null, with nothing registered and nothing leaked, when any of
// that cannot be allocated; a failed allocation of the element itself is reported
// as "tmp != NULL". Constructors are for QelNew: elements come from Create.
// eNormal.
class QelLayerElementNormal : public QelLayerElementTemplate<QelVector4>
{
public:
    static QelLayerElementNormal* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementNormal();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eBinormal.
class QelLayerElementBinormal : public QelLayerElementTemplate<QelVector4>
{
public:
    static QelLayerElementBinormal* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementBinormal();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eTangent.
class QelLayerElementTangent : public QelLayerElementTemplate<QelVector4>
{
public:
    static QelLayerElementTangent* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementTangent();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// ePolygonGroup.
class QelLayerElementPolygonGroup : public QelLayerElementTemplate<int>
{
public:
    static QelLayerElementPolygonGroup* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementPolygonGroup();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eUV and the UV set of every texture channel.
class QelLayerElementUV : public QelLayerElementTemplate<QelVector2>
{
public:
    static QelLayerElementUV* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementUV();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eVertexColor.
class QelLayerElementVertexColor : public QelLayerElementTemplate<QelColor>
{
public:
    static QelLayerElementVertexColor* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementVertexColor();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eSmoothing.
class QelLayerElementSmoothing : public QelLayerElementTemplate<int>
{
public:
    static QelLayerElementSmoothing* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementSmoothing();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eVertexCrease and eEdgeCrease: the layer slot tells which.
class QelLayerElementCrease : public QelLayerElementTemplate<double>
{
public:
    static QelLayerElementCrease* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementCrease();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eHole.
class QelLayerElementHole : public QelLayerElementTemplate<bool>
{
public:
    static QelLayerElementHole* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementHole();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// eVisibility.
class QelLayerElementVisibility : public QelLayerElementTemplate<bool>
{
public:
    static QelLayerElementVisibility* Create(QelLayerContainer* pOwner, const char* pName);

protected:
    QelLayerElementVisibility();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);
};

// Every texture channel; reference mode eIndexToDirect. The texture mode and factor
// are settings of the element that are stored, copied and counted only.
class QelLayerElementTexture : public QelLayerElementTemplate<QelTexture*>
{
public:
    static QelLayerElementTexture* Create(QelLayerContainer* pOwner, const char* pName);

    // The template's value plus 12: 4 for the mode, 8 for the factor.
    int MemorySize() const override;
    // The template's assignment, then the mode and the factor, whatever arrays the
    // source's reference mode selects.
    QelLayerElementTexture& operator=(const QelLayerElementTexture& pOther);

    void SetTextureMode(int pTextureMode) { mTextureMode = pTextureMode; }
    int GetTextureMode() const { return mTextureMode; }
    void SetTextureFactor(double pTextureFactor) { mTextureFactor = pTextureFactor; }
    double GetTextureFactor() const { return mTextureFactor; }

protected:
    QelLayerElementTexture();
    template <class T, class... Args> friend T* QelNew(Args&&... pArgs);

    int mTextureMode;
    double mTextureFactor;
};

} // namespace qelsdk

#endif
