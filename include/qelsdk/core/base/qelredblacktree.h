// The library's ordered associative container: a red-black tree of records, and the
// maps built on it.
//
// QelRedBlackTree<Data, Compare, Allocator> keeps one record per key. Data is the
// record payload; it names its key and value types (KeyType, ValueType) and gives
// them out through GetKey() and GetValue(). Compare is a functor
// int operator()(const Key&, const Key&) const with a three-way result. Allocator is
// built with the record size and hands out records one at a time.
//
// Records are relinked and never copied once inserted: a record keeps its address
// until its own key is removed or the tree is cleared, so callers may hold record
// pointers across inserts and removals of other keys.
//
// Out of memory: when the allocator yields no record, Insert refuses cleanly. It
// returns a null record with false and changes nothing: no report, no size change,
// no relinking. A null record with false therefore means "not added for lack of
// memory", a record with false means "the key was already present".
#ifndef QELSDK_CORE_BASE_QELREDBLACKTREE_H
#define QELSDK_CORE_BASE_QELREDBLACKTREE_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/qelstring.h>

namespace qelsdk {
namespace internal {

// Reports for the templates of this header, under its file name: pText is a failed
// condition, or a message when pIsMessage.
void QelRedBlackTreeReport(const char* pFunction, unsigned int pLine, bool pIsMessage,
                           const char* pText);

} // namespace internal

class QelObject;

template <class First, class Second> class QelPair
{
public:
    QelPair() : mFirst(), mSecond() {}
    QelPair(const First& pFirst, const Second& pSecond) : mFirst(pFirst), mSecond(pSecond) {}

    First mFirst;
    Second mSecond;
};

// The default comparator: a three-way result (-1, 0, 1) from operator< alone, so
// that any key type with a strict weak order can be used.
template <class T> struct QelLessCompare
{
    int operator()(const T& pLeft, const T& pRight) const
    {
        return pLeft < pRight ? -1 : (pRight < pLeft ? 1 : 0);
    }
};

// Orders QelString keys by their characters.
struct QelStringCompare
{
    int operator()(const QelString& pLeft, const QelString& pRight) const
    {
        return pLeft.Compare(pRight.Buffer());
    }
};

template <class Data, class Compare, class Allocator> class QelRedBlackTree
{
public:
    typedef typename Data::KeyType KeyType;
    typedef typename Data::ValueType ValueType;

    enum EColor { eRed = 0, eBlack = 1 };

    class RecordType
    {
    public:
        // A new record is red and unlinked; insertion links and recolours it.
        explicit RecordType(const Data& pData)
            : mData(pData), mParent(nullptr), mLeftChild(nullptr), mRightChild(nullptr),
              mColor(eRed)
        {
        }

        const KeyType& GetKey() const { return mData.GetKey(); }
        const ValueType& GetValue() const { return mData.GetValue(); }
        ValueType& GetValue() { return mData.GetValue(); }

        // The leftmost record of the subtree rooted here.
        const RecordType* Minimum() const
        {
            const RecordType* lRecord = this;
            while (lRecord->mLeftChild)
                lRecord = lRecord->mLeftChild;
            return lRecord;
        }
        RecordType* Minimum() { return const_cast<RecordType*>(AsConst().Minimum()); }

        // The next record in key order, or null after the last one.
        const RecordType* Successor() const
        {
            if (mRightChild) return mRightChild->Minimum();
            const RecordType* lChild = this;
            const RecordType* lParent = mParent;
            while (lParent && lChild == lParent->mRightChild) {
                lChild = lParent;
                lParent = lParent->mParent;
            }
            return lParent;
        }
        RecordType* Successor() { return const_cast<RecordType*>(AsConst().Successor()); }

        Data mData;
        RecordType* mParent;
        RecordType* mLeftChild;
        RecordType* mRightChild;
        unsigned int mColor : 2;

    private:
        const RecordType& AsConst() const { return *this; }
    };

    QelRedBlackTree() : mRoot(nullptr), mSize(0), mAllocator(sizeof(RecordType)) {}
    ~QelRedBlackTree() { Clear(); }

    // Records are owned one by one through the allocator; a copy would have to
    // allocate without a way to refuse, so trees are not copied.
    QelRedBlackTree(const QelRedBlackTree&) = delete;
    QelRedBlackTree& operator=(const QelRedBlackTree&) = delete;

    int GetSize() const { return mSize; }
    void Reserve(unsigned int pRecordCount) { mAllocator.Reserve(pRecordCount); }

    // Adds a record for pData's key unless one is present. Returns the record that
    // holds the key and whether it was added; a present record keeps its value, so
    // inserting never overwrites. See the header comment for the out-of-memory case.
    QelPair<RecordType*, bool> Insert(const Data& pData)
    {
        RecordType* lParent = nullptr;
        int lOrder = 0;
        for (RecordType* lNode = mRoot; lNode;) {
            lOrder = Compare()(lNode->GetKey(), pData.GetKey());
            if (lOrder == 0) return QelPair<RecordType*, bool>(lNode, false);
            lParent = lNode;
            lNode = lOrder < 0 ? lNode->mRightChild : lNode->mLeftChild;
        }
        void* lMemory = mAllocator.AllocateRecords(1);
        if (!lMemory) return QelPair<RecordType*, bool>(nullptr, false);
        RecordType* lRecord = new (lMemory) RecordType(pData);
        ++mSize;
        LinkNewRecord(lParent, lRecord, lOrder < 0);
        FixNodesAfterInsertion(lRecord);
        return QelPair<RecordType*, bool>(lRecord, true);
    }

    const RecordType* Find(const KeyType& pKey) const
    {
        const RecordType* lNode = mRoot;
        while (lNode) {
            const int lOrder = Compare()(lNode->GetKey(), pKey);
            if (lOrder == 0) return lNode;
            lNode = lOrder < 0 ? lNode->mRightChild : lNode->mLeftChild;
        }
        return nullptr;
    }
    RecordType* Find(const KeyType& pKey)
    {
        return const_cast<RecordType*>(static_cast<const QelRedBlackTree&>(*this).Find(pKey));
    }

    // Removes the record of pKey and destroys it; false when there is none.
    bool Remove(const KeyType& pKey)
    {
        RecordType* lRecord = Find(pKey);
        if (!lRecord) return false;
        RemoveNode(lRecord);
        --mSize;
        DestroyRecord(lRecord);
        return true;
    }

    const RecordType* Minimum() const { return mRoot ? mRoot->Minimum() : nullptr; }
    RecordType* Minimum() { return mRoot ? mRoot->Minimum() : nullptr; }

    void Clear()
    {
        if (!mRoot) return;
        DestroySubtree(mRoot);
        mRoot = nullptr;
        mSize = 0;
    }

protected:
    enum ESide { eLeft, eRight };

    static ESide Opposite(ESide pSide) { return pSide == eLeft ? eRight : eLeft; }

    static RecordType*& Child(RecordType* pNode, ESide pSide)
    {
        return pSide == eLeft ? pNode->mLeftChild : pNode->mRightChild;
    }

    static bool IsRed(const RecordType* pNode) { return pNode && pNode->mColor == eRed; }
    static bool IsBlack(const RecordType* pNode) { return !IsRed(pNode); }

    // Reports pText as a failed condition of pFunction when pHolds is false. Taking
    // the name as an argument lets shared helpers report for the operation that
    // called them.
    static void ReportUnless(bool pHolds, const char* pFunction, const char* pText)
    {
        if (!pHolds) internal::QelRedBlackTreeReport(pFunction, __LINE__, false, pText);
    }

    void LinkNewRecord(RecordType* pParent, RecordType* pRecord, bool pAsRightChild)
    {
        pRecord->mParent = pParent;
        if (!pParent) {
            mRoot = pRecord;
        } else if (pAsRightChild) {
            ReportUnless(pParent->mRightChild == nullptr, "Insert", "lParent->mRightChild == 0");
            pParent->mRightChild = pRecord;
        } else {
            ReportUnless(pParent->mLeftChild == nullptr, "Insert", "lParent->mLeftChild == 0");
            pParent->mLeftChild = pRecord;
        }
    }

    // Puts pNew where pOld hangs under pParent, or at the root when pParent is null
    // (reporting pRootText for pFunction unless pOld was the root). Returns false,
    // touching nothing, when pParent holds pOld as neither child.
    bool Reattach(RecordType* pParent, RecordType* pOld, RecordType* pNew, const char* pFunction,
                  const char* pRootText)
    {
        if (!pParent) {
            ReportUnless(mRoot == pOld, pFunction, pRootText);
            mRoot = pNew;
        } else if (pParent->mLeftChild == pOld) {
            pParent->mLeftChild = pNew;
        } else if (pParent->mRightChild == pOld) {
            pParent->mRightChild = pNew;
        } else {
            return false;
        }
        if (pNew) pNew->mParent = pParent;
        return true;
    }

    // The rotation both directions share: the child of pNode on the side opposite
    // to pSide takes pNode's place, pNode becomes its pSide child, and the subtree
    // between them moves across. Returns the lifted child.
    RecordType* Rotate(RecordType* pNode, ESide pSide, const char* pFunction)
    {
        RecordType* lNode = Child(pNode, Opposite(pSide));
        RecordType* lInner = Child(lNode, pSide);
        Child(pNode, Opposite(pSide)) = lInner;
        if (lInner) lInner->mParent = pNode;
        // A parent that does not hold pNode is left as it is; the caller's check
        // on Z reports it.
        RecordType* lParent = pNode->mParent;
        if (!Reattach(lParent, pNode, lNode, pFunction, "mRoot == pNode")) lNode->mParent = lParent;
        Child(lNode, pSide) = pNode;
        pNode->mParent = lNode;
        return lNode;
    }

    // Both rotations refuse a missing node or a node without the child to lift,
    // which would leave nothing to rotate.
    bool CanRotate(RecordType* pNode, ESide pSide, const char* pFunction)
    {
        ReportUnless(pNode != nullptr, pFunction, "pNode");
        if (!pNode) return false;
        ReportUnless(Child(pNode, Opposite(pSide)) != nullptr, pFunction, "lNode");
        return Child(pNode, Opposite(pSide)) != nullptr;
    }

    // The checks name the subtrees as the rotation's picture does: A, B and C hang
    // below pNode and lNode, Z is the parent above them.
    void LeftRotate(RecordType* pNode)
    {
        if (!CanRotate(pNode, eLeft, __func__)) return;
        RecordType* lZ = pNode->mParent;
        RecordType* lA = pNode->mLeftChild;
        RecordType* lB = pNode->mRightChild->mLeftChild;
        RecordType* lC = pNode->mRightChild->mRightChild;
        RecordType* lNode = Rotate(pNode, eLeft, __func__);
        ReportUnless(lNode->mLeftChild == pNode, __func__, "lNode->mLeftChild == pNode");
        ReportUnless(lNode->mRightChild == lC, __func__, "lNode->mRightChild == C");
        ReportUnless(pNode->mLeftChild == lA, __func__, "pNode->mLeftChild == A");
        ReportUnless(pNode->mRightChild == lB, __func__, "pNode->mRightChild == B");
        ReportUnless(pNode->mParent == lNode, __func__, "pNode->mParent == lNode");
        ReportUnless(lNode->mParent == lZ, __func__, "lNode->mParent == Z");
        ReportUnless(!lA || lA->mParent == pNode, __func__, "A == 0 || A->mParent == pNode");
        ReportUnless(!lB || lB->mParent == pNode, __func__, "B == 0 || B->mParent == pNode");
        ReportUnless(!lC || lC->mParent == lNode, __func__, "C == 0 || C->mParent == lNode");
        ReportUnless(!lZ || lZ->mLeftChild == lNode || lZ->mRightChild == lNode, __func__,
                     "Z == 0 || Z->mLeftChild == lNode || Z->mRightChild == lNode");
    }

    void RightRotate(RecordType* pNode)
    {
        if (!CanRotate(pNode, eRight, __func__)) return;
        RecordType* lZ = pNode->mParent;
        RecordType* lA = pNode->mLeftChild->mLeftChild;
        RecordType* lB = pNode->mLeftChild->mRightChild;
        RecordType* lC = pNode->mRightChild;
        RecordType* lNode = Rotate(pNode, eRight, __func__);
        ReportUnless(lNode->mLeftChild == lA, __func__, "lNode->mLeftChild == A");
        ReportUnless(lNode->mRightChild == pNode, __func__, "lNode->mRightChild == pNode");
        ReportUnless(pNode->mLeftChild == lB, __func__, "pNode->mLeftChild == B");
        ReportUnless(pNode->mRightChild == lC, __func__, "pNode->mRightChild == C");
        ReportUnless(pNode->mParent == lNode, __func__, "pNode->mParent == lNode");
        ReportUnless(lNode->mParent == lZ, __func__, "lNode->mParent == Z");
        ReportUnless(!lA || lA->mParent == lNode, __func__, "A == 0 || A->mParent == lNode");
        ReportUnless(!lB || lB->mParent == pNode, __func__, "B == 0 || B->mParent == pNode");
        ReportUnless(!lC || lC->mParent == pNode, __func__, "C == 0 || C->mParent == pNode");
        ReportUnless(!lZ || lZ->mLeftChild == lNode || lZ->mRightChild == lNode, __func__,
                     "Z == 0 || Z->mLeftChild == lNode || Z->mRightChild == lNode");
    }

    // Rotates pNode so that it goes down on pSide.
    void RotateToward(RecordType* pNode, ESide pSide)
    {
        if (pSide == eLeft) {
            LeftRotate(pNode);
        } else {
            RightRotate(pNode);
        }
    }

    // Restores the colour rules after pNode was linked in red.
    void FixNodesAfterInsertion(RecordType* pNode)
    {
        RecordType* lNode = pNode;
        while (lNode->mParent && IsRed(lNode->mParent)) {
            RecordType* lParent = lNode->mParent;
            RecordType* lGrandparent = lParent->mParent;
            const ESide lSide = lParent == lGrandparent->mLeftChild ? eLeft : eRight;
            RecordType* lUncle = Child(lGrandparent, Opposite(lSide));
            if (IsRed(lUncle)) {
                lParent->mColor = eBlack;
                lUncle->mColor = eBlack;
                lGrandparent->mColor = eRed;
                lNode = lGrandparent;
                continue;
            }
            if (lNode == Child(lParent, Opposite(lSide))) {
                RotateToward(lParent, lSide);
                lNode = lParent;
                lParent = lNode->mParent;
            }
            lParent->mColor = eBlack;
            lGrandparent->mColor = eRed;
            RotateToward(lGrandparent, Opposite(lSide));
        }
        mRoot->mColor = eBlack;
    }

    // The other child of pParent than the one on pSide.
    static RecordType* Sibling(RecordType* pParent, ESide pSide)
    {
        return Child(pParent, Opposite(pSide));
    }

    // Unlinks pNode from the tree without freeing it.
    void RemoveNode(RecordType* pNode)
    {
        if (pNode->mLeftChild && pNode->mRightChild) {
            RecordType* lSuccessor = pNode->mRightChild->Minimum();
            RemoveNode(lSuccessor);
            lSuccessor->mColor = pNode->mColor;
            ReplaceNode(pNode, lSuccessor);
            return;
        }
        RecordType* lChild = pNode->mLeftChild ? pNode->mLeftChild : pNode->mRightChild;
        RecordType* lParent = pNode->mParent;
        if (!Reattach(lParent, pNode, lChild, __func__, "mRoot == pNode"))
            internal::QelRedBlackTreeReport("RemoveNode", __LINE__, true,
                                            "Node not found in QelRedBlackTree");
        if (pNode->mColor == eBlack) FixNodesAfterRemoval(lParent, lChild);
    }

    // Puts pNewNode, already unlinked, in the place of pNodeToReplace.
    void ReplaceNode(RecordType* pNodeToReplace, RecordType* pNewNode)
    {
        if (!Reattach(pNodeToReplace->mParent, pNodeToReplace, pNewNode, __func__,
                      "mRoot == pNodeToReplace"))
            internal::QelRedBlackTreeReport("ReplaceNode", __LINE__, true,
                                            "Node not found in QelRedBlackTree");
        pNewNode->mLeftChild = pNodeToReplace->mLeftChild;
        pNewNode->mRightChild = pNodeToReplace->mRightChild;
        if (pNewNode->mLeftChild) pNewNode->mLeftChild->mParent = pNewNode;
        if (pNewNode->mRightChild) pNewNode->mRightChild->mParent = pNewNode;
    }

    static bool HasBlackChildren(const RecordType* pNode)
    {
        return !pNode || (IsBlack(pNode->mLeftChild) && IsBlack(pNode->mRightChild));
    }

    // Restores the colour rules after a black record left the place now held by
    // pNode (null counts as black) under pParent.
    void FixNodesAfterRemoval(RecordType* pParent, RecordType* pNode)
    {
        RecordType* lParent = pParent;
        RecordType* lNode = pNode;
        while (!IsRed(lNode) && lParent) {
            const ESide lSide = lNode == lParent->mLeftChild ? eLeft : eRight;
            RecordType* lSibling = Sibling(lParent, lSide);
            if (IsRed(lSibling)) {
                lParent->mColor = eRed;
                lSibling->mColor = eBlack;
                RotateToward(lParent, lSide);
                lSibling = Sibling(lParent, lSide);
            }
            if (lSibling && IsBlack(lParent) && IsBlack(lSibling) && HasBlackChildren(lSibling)) {
                lSibling->mColor = eRed;
                lNode = lParent;
                lParent = lParent->mParent;
                continue;
            }
            if (IsRed(lParent) && IsBlack(lSibling) && HasBlackChildren(lSibling)) {
                if (lSibling) lSibling->mColor = eRed;
                lParent->mColor = eBlack;
                break;
            }
            lSibling = MoveRedNephewOutside(lParent, lSide, lSibling);
            if (!lSibling) {
                internal::QelRedBlackTreeReport("FixNodesAfterRemoval", __LINE__, false,
                                                "lSibling != 0 && lParent != 0");
                break;
            }
            RotateSiblingUp(lParent, lSide, lSibling);
            break;
        }
        if (IsRed(lNode)) lNode->mColor = eBlack;
        if (mRoot) mRoot->mColor = eBlack;
    }

    // When the red nephew hangs on the inner side of the sibling (on pSide, toward
    // the removal), rotates it outside. Returns the sibling of pNode afterwards.
    RecordType* MoveRedNephewOutside(RecordType* pParent, ESide pSide, RecordType* pSibling)
    {
        if (!pSibling || IsRed(pSibling) || IsBlack(Child(pSibling, pSide)) ||
            IsRed(Child(pSibling, Opposite(pSide))))
            return pSibling;
        pSibling->mColor = eRed;
        Child(pSibling, pSide)->mColor = eBlack;
        RotateToward(pSibling, Opposite(pSide));
        return Sibling(pParent, pSide);
    }

    // The last removal repair: the sibling, with a red outer child, takes the place
    // of pParent, which goes down on pSide and gives the missing black record there.
    void RotateSiblingUp(RecordType* pParent, ESide pSide, RecordType* pSibling)
    {
        pSibling->mColor = pParent->mColor;
        pParent->mColor = eBlack;
        if (RecordType* lOuter = Child(pSibling, Opposite(pSide))) lOuter->mColor = eBlack;
        RotateToward(pParent, pSide);
    }

    void DestroyRecord(RecordType* pRecord)
    {
        pRecord->~RecordType();
        mAllocator.FreeMemory(pRecord);
    }

    // Children before their parent, so no freed record is read.
    void DestroySubtree(RecordType* pNode)
    {
        if (pNode->mLeftChild) DestroySubtree(pNode->mLeftChild);
        if (pNode->mRightChild) DestroySubtree(pNode->mRightChild);
        DestroyRecord(pNode);
    }

    RecordType* mRoot;
    int mSize;
    Allocator mAllocator;
};

// Key-value records in key order. Inserting a present key keeps the stored value.
template <class Key, class Type, class Compare = QelLessCompare<Key>,
          class Allocator = QelBaseAllocator>
class QelMap
{
public:
    class KeyValuePair : public QelPair<const Key, Type>
    {
    public:
        typedef Key KeyType;
        typedef Type ValueType;

        KeyValuePair(const Key& pKey, const Type& pValue) : QelPair<const Key, Type>(pKey, pValue)
        {
        }

        const Key& GetKey() const { return this->mFirst; }
        const Type& GetValue() const { return this->mSecond; }
        Type& GetValue() { return this->mSecond; }
    };

    typedef QelRedBlackTree<KeyValuePair, Compare, Allocator> StorageType;
    typedef typename StorageType::RecordType RecordType;

    QelPair<RecordType*, bool> Insert(const Key& pKey, const Type& pValue)
    {
        return mTree.Insert(KeyValuePair(pKey, pValue));
    }

    const RecordType* Find(const Key& pKey) const { return mTree.Find(pKey); }
    RecordType* Find(const Key& pKey) { return mTree.Find(pKey); }
    bool Remove(const Key& pKey) { return mTree.Remove(pKey); }
    const RecordType* Minimum() const { return mTree.Minimum(); }
    RecordType* Minimum() { return mTree.Minimum(); }
    int GetSize() const { return mTree.GetSize(); }
    void Clear() { mTree.Clear(); }
    void Reserve(unsigned int pRecordCount) { mTree.Reserve(pRecordCount); }

private:
    StorageType mTree;
};

// A map walked with a record cursor: GetFirst, then GetNext until null. Find is
// overloaded on the key and the value type, so the two must differ.
template <class Key, class Type, class Compare = QelLessCompare<Key>> class QelSimpleMap
{
public:
    typedef QelMap<Key, Type, Compare> MapType;
    typedef typename MapType::RecordType RecordType;

    // True when the key was added; a present key keeps its value.
    bool Add(const Key& pKey, const Type& pValue) { return mMap.Insert(pKey, pValue).mSecond; }

    RecordType* Find(const Key& pKey) { return mMap.Find(pKey); }

    // A linear walk: values are not ordered.
    RecordType* Find(const Type& pValue)
    {
        for (RecordType* lRecord = GetFirst(); lRecord; lRecord = GetNext(lRecord))
            if (lRecord->GetValue() == pValue) return lRecord;
        return nullptr;
    }

    RecordType* GetFirst() { return mMap.Minimum(); }
    RecordType* GetNext(RecordType* pRecord) { return pRecord ? pRecord->Successor() : nullptr; }

    // Removes the record of pRecord's key; a null record is ignored.
    void Remove(RecordType* pRecord)
    {
        if (pRecord) mMap.Remove(pRecord->GetKey());
    }

    int GetCount() const { return mMap.GetSize(); }
    void Clear() { mMap.Clear(); }
    void Reserve(int pRecordCount) { mMap.Reserve(static_cast<unsigned int>(pRecordCount)); }

private:
    MapType mMap;
};

// A simple map whose values are objects it does not own.
template <class Key, class Compare = QelLessCompare<Key>>
class QelObjectMap : public QelSimpleMap<Key, QelObject*, Compare>
{
public:
    typedef typename QelSimpleMap<Key, QelObject*, Compare>::RecordType RecordType;

    QelObject* Get(const RecordType* pRecord) const
    {
        return pRecord ? pRecord->GetValue() : nullptr;
    }
};

} // namespace qelsdk

#endif
