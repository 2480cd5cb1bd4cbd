// QelLayerElementUserData: free-form attribute channels chosen by the application.
//
// The element carries an identifier and any number of named channels, each an array
// of bool, int, float or double values. Its direct array holds, per channel, a pointer
// to the channel's own typed array (QelLayerElementArrayTemplate of the channel's
// value type), which the element owns together with the channel names. The index
// array of the template exists as for every element and is not used by the channels.
//
// Channel i has the value type of GetDataType(i) when that is eQelBool, eQelInt,
// eQelFloat or eQelDouble; a channel of any other type is reported when the arrays are
// made and has no array. Type and name counts may differ: the element then keeps more
// types than names or the reverse, and names past the name count do not exist.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTUSERDATA_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERELEMENTUSERDATA_H

#include <qelsdk/core/base/qelarray.h>
#include <qelsdk/core/qeldatatype.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/scene/geometry/qellayerelement.h>

namespace qelsdk {

class QelLayerContainer;

class QelLayerElementUserData : public QelLayerElementTemplate<void*>
{
public:
    // Makes the element from pDataTypes and pDataNames, names it pName, sets the data
    // type QelLayerElementUserDataDT, makes one array per channel and registers the
    // element with pOwner (a null owner leaves it in no list). Null, with nothing
    // registered and nothing leaked, when any of that cannot be allocated; a failed
    // allocation of the element itself is reported as "tmp != NULL". Mismatched counts
    // and unknown types are reported and tolerated.
    static QelLayerElementUserData* Create(QelLayerContainer* pOwner, const char* pName, int pId,
                                           QelArray<QelDataType>& pDataTypes,
                                           QelArray<const char*>& pDataNames);
    // A copy of pOther (see the copy constructor) registered with pOwner; it is not
    // named. Null, as above, when the copy cannot be made whole.
    static QelLayerElementUserData* Create(QelLayerContainer* pOwner,
                                           const QelLayerElementUserData& pOther);

    // Keeps pId, a copy of the types and a copy of each name; reports differing counts
    // ("pDataTypes.GetCount() == pDataNames.GetCount()") and goes on. Neither the data
    // type nor the arrays are set: Create does that. An element constructed directly
    // has no arrays and no channels until SetType(&QelLayerElementUserDataDT) and
    // AllocateArrays, is in no container's list and belongs to its holder. A name
    // that cannot be allocated ends the names there.
    QelLayerElementUserData(int pId, QelArray<QelDataType>& pDataTypes,
                            QelArray<const char*>& pDataNames);
    // Copies the identifier, the types and the names, makes this element's own channel
    // arrays and copies pOther's values into them; a channel of an unknown type is
    // reported ("Unknown type"). Kept as-is: the name, the mapping mode and the
    // reference mode are not copied, so the copy starts unnamed, eNone and eDirect,
    // and because its own mode is eDirect the index array is never copied.
    QelLayerElementUserData(const QelLayerElementUserData& pOther);
    QelLayerElementUserData& operator=(const QelLayerElementUserData&) = delete;
    // Clear, then the template releases the direct and index arrays.
    ~QelLayerElementUserData() override;

    // Frees every channel array and every name, empties the types and names, then
    // empties the direct and index arrays. Always true. The element then has no
    // channels and no types, and AllocateArrays gives it none.
    bool Clear() override;
    // The template's value + 4 for the identifier + 16 per type + 8 per name, in
    // 32-bit arithmetic. The contents of the channel arrays are not counted.
    int MemorySize() const override;
    // The template's arrays, then one array per channel. False when any array, or
    // its storage, cannot be allocated; a channel of an unknown type is reported
    // ("Trying to assign an unknown type") and does not make it false.
    bool AllocateArrays() override;

    // The array of channel pIndex as an untyped pointer (QelGetDirectArray gives it
    // typed). Kept as-is: the index test is "pIndex >= 0 || pIndex < channel count",
    // which accepts every non-negative index and every negative index below the
    // count, so every index at all while the count can be read. Only while it cannot
    // (the direct array is write locked: its count reads as -1) is an index refused,
    // -1 alone, with "Index out of bounds", *pStatus false and null. An accepted index
    // sets *pStatus true. Where an accepted index has no array to give (it lies
    // outside the channels, or names a channel of an unknown type) the result is
    // null: the direct array is never read outside its items.
    void* GetDirectArrayVoid(int pIndex, bool* pStatus = nullptr);
    const void* GetDirectArrayVoid(int pIndex, bool* pStatus = nullptr) const;
    // The number of channels: the count of the direct array (0 before the arrays are
    // made).
    int GetDirectArrayCount() const;

    int GetId() const { return mId; }
    int GetDataTypeCount() const { return mDataTypes.GetCount(); }
    // QelUndefinedDT for an index that names no type.
    const QelDataType& GetDataType(int pIndex) const;
    int GetDataNameCount() const { return mDataNames.GetCount(); }
    // Null for an index that names no name.
    const char* GetDataName(int pIndex) const;

protected:
    // Sizes the direct array to the type count and gives each channel of a known type
    // a new typed array, taking the direct array's read-write lock once per channel.
    // False when the direct array cannot be sized or a channel of a known type gets
    // no array.
    bool Init();

    int mId;
    QelArray<QelDataType> mDataTypes;
    // Owned: every entry is a QelString from QelNew.
    QelArray<QelString*> mDataNames;

private:
    bool HasArrays() const { return mDirectArray && mIndexArray; }
    // Appends a new QelString of pText; false, with nothing appended, when it cannot
    // be allocated.
    bool AppendName(const char* pText);
    // Frees every channel array under one read-write lock of the direct array.
    void DeleteChannels();
    // Whether the element kept pTypeCount types and pNameCount names.
    bool Holds(int pTypeCount, int pNameCount) const;
    // Whether there is one channel per type and every channel of a known type has
    // its array.
    bool HasChannels() const;
    // Whether every channel that both elements have holds as many values here as in
    // pOther.
    bool HasValuesOf(const QelLayerElementUserData& pOther) const;
    // Frees pElement unless it is whole and pOwner's list takes it.
    static QelLayerElementUserData* Register(QelLayerElementUserData* pElement, bool pWhole,
                                             QelLayerContainer* pOwner);
};

// QelGetDirectArray<T> (declared with the element arrays), instantiated for bool, int,
// float and double: the array of channel pIndex, from GetDirectArrayVoid, as
// QelLayerElementArrayTemplate<T>. T must match the channel's value type; nothing
// checks it, and a typed GetAt on a channel whose items are larger than T refuses
// with eTypeMismatch instead of overrunning the caller's T. When there is no array
// to give (a refused or out-of-range index, a channel of an unknown type, a null
// pUserData), *pStatus is set to false, even where GetDirectArrayVoid itself sets it
// true, and the reference is to a shared stand-in array of T without storage that
// callers must not use: every operation on it refuses with eInvalidRequest.

} // namespace qelsdk

#endif
