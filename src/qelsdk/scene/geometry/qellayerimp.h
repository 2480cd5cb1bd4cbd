// The untyped storage behind every element array.
//
// An implementation knows only the size in bytes of one item. It keeps the items in
// one heap block that carries a small header in front of them:
//
//   offset 0  int32 array count  (items in use)
//   offset 4  int32 block count  (blocks of four item slots allocated)
//   offset 8  block count * 4 item slots, each the type size in bytes
//
// The block is grown with QelRealloc and freed with QelFree; its size is always
// 8 + block count * 4 * type size bytes. Invariants: count <= 4 * block count; a null
// block reads as count 0 and block count 0. Slots past the count are not items; most
// operations keep them zero, but SetCount and InsertAt deliberately do not.
//
// Byte sizes are 32-bit unsigned. A count whose block would not fit in them (for
// example Resize(0x08000001) of 32-byte items), or whose sum with the current count
// would not fit in an int, is treated as an allocation failure: QelRealloc is not
// called and block, count and block count stay as they were. Wrapping instead would
// hand out slots far beyond the block.
#ifndef QELSDK_SCENE_GEOMETRY_QELLAYERIMP_H
#define QELSDK_SCENE_GEOMETRY_QELLAYERIMP_H

#include <qelsdk/core/base/qelalloc.h>

#include <cstddef>
#include <cstdint>

namespace qelsdk {

class QelLayerContainer;
class QelNode;
class QelSurfaceMaterial;

namespace internal {

// The file names the module's reports carry.
constexpr const char* sLayerSourceFile = "src/qelsdk/scene/geometry/qellayer";
constexpr const char* sLayerHeaderFile = "include/qelsdk/scene/geometry/qellayer";

} // namespace internal

// Holds the item size of an implementation.
class LayerArrayBaseSize
{
public:
    explicit LayerArrayBaseSize(int pTypeSize) : mTypeSize(pTypeSize) {}
    int GetTypeSize() const { return mTypeSize; }

private:
    int mTypeSize;
};

// The block storage proper, over its item-size holder (only LayerArrayBaseSize is
// instantiated). No virtual operations: the fields are the block and the holder.
template <class TypeSize> class LayerArrayBase
{
public:
    struct Header
    {
        int32_t mArrayCount;
        int32_t mBlockCount;
    };

    explicit LayerArrayBase(TypeSize pTypeSize) : mBlock(nullptr), mTypeSize(pTypeSize) {}
    ~LayerArrayBase() { Clear(); }
    LayerArrayBase(const LayerArrayBase&) = delete;
    LayerArrayBase& operator=(const LayerArrayBase&) = delete;

    int GetTypeSize() const { return mTypeSize.GetTypeSize(); }
    int GetHeaderOffset() const { return static_cast<int>(sizeof(Header)); }
    Header* GetHeader() { return static_cast<Header*>(mBlock); }
    const Header* GetHeader() const { return static_cast<const Header*>(mBlock); }

    int GetArrayCount() const { return mBlock ? GetHeader()->mArrayCount : 0; }
    int GetBlockCount() const { return mBlock ? GetHeader()->mBlockCount : 0; }
    void SetArrayCount(int pCount)
    {
        if (mBlock) GetHeader()->mArrayCount = pCount;
    }
    void SetBlockCount(int pCount)
    {
        if (mBlock) GetHeader()->mBlockCount = pCount;
    }
    int GetCount() const { return GetArrayCount(); }

    // The address of slot pIndex; no range check and no null check.
    void* GetAt(int pIndex)
    {
        return static_cast<char*>(mBlock) + GetHeaderOffset() +
               static_cast<ptrdiff_t>(pIndex) * GetTypeSize();
    }

    bool ValidateIndex(int pIndex) const;
    void Resize(int pItemCount);
    void AddMultiple(int pItemCount);
    void SetCount(int pCount);
    int InsertAt(int pIndex, const void* pItem);
    void RemoveAt(int pIndex);
    void Clear();

private:
    // Byte offset of slot pIndex from the first slot, in 32-bit unsigned arithmetic
    // like every byte size of the block. Never wraps for slots of a block that fits.
    uint32_t SlotBytes(uint32_t pSlots) const
    {
        return pSlots * static_cast<uint32_t>(GetTypeSize());
    }
    // Whether a block of pBlockCount blocks of four slots, header included, fits in
    // 32-bit unsigned byte sizes.
    bool Fits(uint64_t pBlockCount) const;
    char* Slots() { return static_cast<char*>(mBlock) + GetHeaderOffset(); }
    // Reallocates the block to pBlockCount blocks of four slots; false (block kept)
    // when the block would not fit or the allocation fails.
    bool Reallocate(uint32_t pBlockCount);
    void ZeroBytes(uint32_t pFrom, uint32_t pTo);

    void* mBlock;
    TypeSize mTypeSize;
};

extern template class LayerArrayBase<LayerArrayBaseSize>;

// The implementation object an element array owns: the storage plus two hooks that a
// subclass overrides to refresh the items before they are read (LockPostProcess, on
// every granted read lock and read-write lock) and to push them elsewhere after they
// were written (UnlockPostProcess, on every granted read-write unlock).
class LayerElementArrayImp : public LayerArrayBase<LayerArrayBaseSize>
{
public:
    explicit LayerElementArrayImp(size_t pItemSize)
        : LayerArrayBase<LayerArrayBaseSize>(LayerArrayBaseSize(static_cast<int>(pItemSize)))
    {
    }
    virtual ~LayerElementArrayImp() {}

    virtual void UnlockPostProcess() {}
    virtual void LockPostProcess() {}

    int ItemSize() const { return GetTypeSize(); }
    // The first item slot, or null when nothing is allocated.
    void* GetArray() { return GetHeader() ? GetAt(0) : nullptr; }
};

// The storage of a material element's direct array: a cache of the material
// connections of the node that instantiates the container (its mInstance-th
// destination node). The first lock of an empty array loads the node's materials in
// connection order; every read-write unlock makes the items the node's first material
// connections, in item order, and appends after them, in their old order, the
// materials the node had that the items no longer name. Removing an item therefore
// never disconnects a material; this is deliberate. Items that are already there are
// never refreshed from the node.
//
// Both hooks do nothing while QelObject's wipe mode is set, without a container or a
// node (the array is then a plain pointer array), and when the item size is not that
// of a pointer: the items could not hold a material then. Connection failures of the
// object system are ignored.
class LayerElementArrayProxyImp : public LayerElementArrayImp
{
public:
    explicit LayerElementArrayProxyImp(size_t pItemSize);
    // Clears the binding (no container, instance -1).
    ~LayerElementArrayProxyImp() override;

    // Loads the node's materials into an empty array. When the storage cannot grow
    // to hold them, the array stays empty.
    void LockPostProcess() override;
    // Rewires the node's materials to the items. When the memory to save the node's
    // old materials is not there, the node keeps its connections as they are: a hook
    // cannot report a failure to the lock that runs it.
    void UnlockPostProcess() override;

    // pContainer is not owned; pInstance selects which destination node to follow.
    void SetContainer(QelLayerContainer* pContainer, int pInstance);
    // The container's pInstance-th destination node, or null.
    QelNode* GetCurrentNode() const;

private:
    // The node the hooks work on, or null when they must leave everything alone.
    QelNode* MirroredNode() const;
    QelSurfaceMaterial*& Item(int pIndex);

    QelLayerContainer* mContainer;
    int mInstance;
};

} // namespace qelsdk

#endif
