// The layer module: the layer elements (qellayerelement.h and the user data and
// material kinds) and the layer that groups them.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYER_H
#define QELSDK_SCENE_GEOMETRY_QELLAYER_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/scene/geometry/qellayerelement.h>
#include <qelsdk/scene/geometry/qellayerelementmaterial.h>
#include <qelsdk/scene/geometry/qellayerelementuserdata.h>

namespace qelsdk {

class QelLayerContainer;
class QelStream;

// The elements of one layer of a geometry: at most one element of each non-texture
// kind and, for each of the seventeen texture channels, one UV element and one
// texture element. The slots are plain pointers: setting one changes nothing of the
// element that was there (only SetTextures raises the new element's count), and the
// destructor releases nothing; the elements stay registered with the container,
// which frees them, and Clear destroys them.
//
// The eUV slot is a second handle on the diffuse channel's UV element: SetUVs on the
// diffuse channel, CreateLayerElementOfType(eUV), CreateLayerElementOfType(
// eTextureDiffuse, true) and Clone keep the two in step; SetLayerElementOfType does
// not. Kinds outside 1 to 30 name no slot: the by-kind operations give null or do
// nothing for them, and the channel operations for kinds outside 14 to 30.
class QelLayer
{
public:
    typedef QelLayerElement::EType EType;

    // Every slot starts null.
    explicit QelLayer(QelLayerContainer& pLayerContainer);
    // Releases nothing: the elements belong to the container.
    virtual ~QelLayer();
    // The size of the layer plus MemorySize() of the element of every kind 1 to 30,
    // asked once with pIsUV false and once with true. A non-texture element is
    // therefore counted twice and the shared diffuse UV element three times: the
    // figure is an estimate that errs high, deliberately.
    virtual int MemoryUsage() const;

    QelLayer(const QelLayer&) = delete;
    QelLayer& operator=(const QelLayer&) = delete;

    // Typed slots: the setters store the pointer and do nothing else.
    QelLayerElementNormal* GetNormals() { return SlotAs<QelLayerElementNormal>(1); }
    const QelLayerElementNormal* GetNormals() const { return SlotAs<QelLayerElementNormal>(1); }
    void SetNormals(QelLayerElementNormal* pElement) { mNonTextureElements[0] = pElement; }
    QelLayerElementBinormal* GetBinormals() { return SlotAs<QelLayerElementBinormal>(2); }
    const QelLayerElementBinormal* GetBinormals() const
    {
        return SlotAs<QelLayerElementBinormal>(2);
    }
    void SetBinormals(QelLayerElementBinormal* pElement) { mNonTextureElements[1] = pElement; }
    QelLayerElementTangent* GetTangents() { return SlotAs<QelLayerElementTangent>(3); }
    const QelLayerElementTangent* GetTangents() const { return SlotAs<QelLayerElementTangent>(3); }
    void SetTangents(QelLayerElementTangent* pElement) { mNonTextureElements[2] = pElement; }
    QelLayerElementMaterial* GetMaterials() { return SlotAs<QelLayerElementMaterial>(4); }
    const QelLayerElementMaterial* GetMaterials() const
    {
        return SlotAs<QelLayerElementMaterial>(4);
    }
    void SetMaterials(QelLayerElementMaterial* pElement) { mNonTextureElements[3] = pElement; }
    QelLayerElementPolygonGroup* GetPolygonGroups()
    {
        return SlotAs<QelLayerElementPolygonGroup>(5);
    }
    const QelLayerElementPolygonGroup* GetPolygonGroups() const
    {
        return SlotAs<QelLayerElementPolygonGroup>(5);
    }
    void SetPolygonGroups(QelLayerElementPolygonGroup* pElement)
    {
        mNonTextureElements[4] = pElement;
    }
    QelLayerElementVertexColor* GetVertexColors() { return SlotAs<QelLayerElementVertexColor>(7); }
    const QelLayerElementVertexColor* GetVertexColors() const
    {
        return SlotAs<QelLayerElementVertexColor>(7);
    }
    void SetVertexColors(QelLayerElementVertexColor* pElement)
    {
        mNonTextureElements[6] = pElement;
    }
    QelLayerElementSmoothing* GetSmoothing() { return SlotAs<QelLayerElementSmoothing>(8); }
    const QelLayerElementSmoothing* GetSmoothing() const
    {
        return SlotAs<QelLayerElementSmoothing>(8);
    }
    void SetSmoothing(QelLayerElementSmoothing* pElement) { mNonTextureElements[7] = pElement; }
    QelLayerElementCrease* GetVertexCrease() { return SlotAs<QelLayerElementCrease>(9); }
    const QelLayerElementCrease* GetVertexCrease() const
    {
        return SlotAs<QelLayerElementCrease>(9);
    }
    void SetVertexCrease(QelLayerElementCrease* pElement) { mNonTextureElements[8] = pElement; }
    QelLayerElementCrease* GetEdgeCrease() { return SlotAs<QelLayerElementCrease>(10); }
    const QelLayerElementCrease* GetEdgeCrease() const { return SlotAs<QelLayerElementCrease>(10); }
    void SetEdgeCrease(QelLayerElementCrease* pElement) { mNonTextureElements[9] = pElement; }
    QelLayerElementHole* GetHole() { return SlotAs<QelLayerElementHole>(11); }
    const QelLayerElementHole* GetHole() const { return SlotAs<QelLayerElementHole>(11); }
    void SetHole(QelLayerElementHole* pElement) { mNonTextureElements[10] = pElement; }
    QelLayerElementUserData* GetUserData() { return SlotAs<QelLayerElementUserData>(12); }
    const QelLayerElementUserData* GetUserData() const
    {
        return SlotAs<QelLayerElementUserData>(12);
    }
    void SetUserData(QelLayerElementUserData* pElement) { mNonTextureElements[11] = pElement; }
    QelLayerElementVisibility* GetVisibility() { return SlotAs<QelLayerElementVisibility>(13); }
    const QelLayerElementVisibility* GetVisibility() const
    {
        return SlotAs<QelLayerElementVisibility>(13);
    }
    void SetVisibility(QelLayerElementVisibility* pElement) { mNonTextureElements[12] = pElement; }

    // The UV and texture elements of a channel (14 to 30); null for other kinds.
    QelLayerElementUV* GetUVs(EType pType = QelLayerElement::eTextureDiffuse);
    const QelLayerElementUV* GetUVs(EType pType = QelLayerElement::eTextureDiffuse) const;
    QelLayerElementTexture* GetTextures(EType pType);
    const QelLayerElementTexture* GetTextures(EType pType) const;
    // Stores pElement as the UV element of the channel, and in the eUV slot too for
    // the diffuse channel; nothing for other kinds.
    void SetUVs(QelLayerElementUV* pElement, EType pType = QelLayerElement::eTextureDiffuse);
    // Stores pElement as the texture element of the channel (note the argument order)
    // and, when it is not null, raises its reference count and gives it the channel's
    // data type (sTextureDataTypes). The element that was there is left alone. The
    // range is the caller's to respect: a kind outside 14 to 30 names memory that is
    // not a slot, and is refused with nothing changed.
    void SetTextures(EType pType, QelLayerElementTexture* pElement);

    // By kind: 1 to 13 the non-texture slots (pIsUV ignored; 6 is the eUV slot),
    // 14 to 30 the channel's UV (pIsUV) or texture element.
    QelLayerElement* GetLayerElementOfType(EType pType, bool pIsUV = false);
    const QelLayerElement* GetLayerElementOfType(EType pType, bool pIsUV = false) const;
    // Stores the pointer and nothing more: no eUV follow-up, no count, no data type.
    void SetLayerElementOfType(QelLayerElement* pLayerElement, EType pType, bool pIsUV = false);
    // Creates the element of the kind with the container as owner and an empty name
    // and stores it in its slot (a UV element of the diffuse channel, or of kind eUV,
    // in both the eUV and the diffuse UV slots). An occupied slot is reported
    // ("lNonTextureElement == NULL", "lUVElement == NULL", "lTextureElement == NULL")
    // and overwritten: the old element stays alive and registered. User data cannot
    // be created: "Need to be implemented!", and the slot's value is returned. Null
    // when the factory fails (the slot is then null) and for kinds outside 1 to 30.
    QelLayerElement* CreateLayerElementOfType(EType pType, bool pIsUV = false);

    // The channels that have a UV element, in channel order: their count, the
    // elements, and their kinds (14 to 30), the last two entry by entry.
    int GetUVSetCount() const;
    QelArray<const QelLayerElementUV*> GetUVSets() const;
    QelArray<EType> GetUVSetChannels() const;

    // Empties (Clear) and destroys (Destroy) every element and nulls its slot, except
    // the eUV slot, which keeps its pointer: it names the diffuse UV element, which is
    // destroyed through its own slot. Reference counts are not looked at: an element
    // that SetTextures counted survives its Destroy, emptied and unlisted.
    void Clear();
    // Clears this layer, then fills it with copies of pOther's elements, made by the
    // kinds' factories with this layer's container and the source's names, and
    // assigned from the sources. The eUV slot then names the new diffuse UV element,
    // if any; an eUV element of pOther other than its diffuse UV element is not
    // copied. A copy that cannot be allocated leaves its slot null.
    void Clone(const QelLayer& pOther);

    // The layer as 47 records (kinds 1 to 13, then per channel its texture and its UV
    // element), each its kind (native 32-bit), a presence byte and, when present, the
    // element's content. Valid only in the writing process: pointer items are written
    // as addresses. False at once on a short write.
    bool ContentWriteTo(QelStream& pStream) const;
    // Reads the records into this layer without clearing it: present records are read
    // into the slot's element, created when the slot is empty. A record of another
    // kind than its position expects, or whose presence byte is not 1, is skipped
    // without its content, deliberately: the stream is read as it was written, and a
    // stream that does not match desynchronises. False at once on a short read; what
    // was read stays.
    bool ContentReadFrom(const QelStream& pStream);

protected:
    QelLayerContainer& mOwnerContainer;
    QelLayerElement* mNonTextureElements[13];
    QelLayerElementUV* mUVElements[17];
    QelLayerElementTexture* mTextureElements[17];

private:
    template <class T> T* SlotAs(int pType) const
    {
        return static_cast<T*>(mNonTextureElements[pType - 1]);
    }
    QelLayerElement* LiveElementOfType(int pType, bool pIsUV) const;
    void SetUVSlot(QelLayerElement* pElement);
    QelLayerElement* CreateNonTexture(EType pType);
    template <class T> void Discard(T*& pSlot, QelArray<QelLayerElement*>& pDestroyed);

    // Set when Clear has destroyed the element the eUV slot still names, until the
    // slot is written again: the layer's own reading (memory usage, the stream) then
    // takes the slot as empty instead of reaching a destroyed element.
    bool mUVSlotDestroyed;
};

} // namespace qelsdk

#endif
