// The layer module: layer elements (the attribute channels of a mesh) and the
// layer that groups them.
//
// A layer element is registered with the layer container that owns it, which frees
// it at the latest when the container goes. Holders beyond the container raise the
// element's reference count; Destruct frees the element once the count, clamped at
// 0, comes down to 0. An element is therefore released through Destroy (leave the
// owner's list, then Destruct) and never deleted directly.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYER_H
#define QELSDK_SCENE_GEOMETRY_QELLAYER_H

#include <qelsdk/core/qeldatatype.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/scene/geometry/qellayerelementarray.h>

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

protected:
    QelLayerElement();

    EMappingMode mMappingMode;
    EReferenceMode mReferenceMode;
    QelString mName;
    const QelDataType* mType;
    QelLayerContainer* mOwner;
    int mRefCount;
};

// The elements of one layer of a geometry. Its pointers do not own the elements:
// they stay registered with the container, which frees them.
class QelLayer
{
public:
    explicit QelLayer(QelLayerContainer& pOwner);
    // Releases nothing: the elements belong to the container.
    virtual ~QelLayer();

    QelLayer(const QelLayer&) = delete;
    QelLayer& operator=(const QelLayer&) = delete;

protected:
    QelLayerContainer& mOwnerContainer;
};

} // namespace qelsdk

#endif
