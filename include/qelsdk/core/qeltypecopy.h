// Value conversion, in three levels: the untyped entry point reads the source as the
// storage type of its tag and calls the typed entry point of that type, which takes
// the destination as the storage type of its tag and applies the pairwise rule of the
// two types. Every level returns true on success and leaves the destination
// untouched on refusal. Every report names the file
// "include/qelsdk/core/qelpropertytypes" and the function QelTypeCopy.
//
// The rules themselves live in the library; the typed and pairwise entry points here
// reach them through the untyped one.
#ifndef QELSDK_CORE_QELTYPECOPY_H
#define QELSDK_CORE_QELTYPECOPY_H

#include <qelsdk/core/qeltypetable.h>

#include <cstddef>

namespace qelsdk {

// The untyped entry point. There is no shortcut for equal types and no null check:
// callers convert whole buffers through it, one call per item. A reference source
// reports "Trying to set value on a void Reference type", any other tag without
// storage "Trying to assign an unknown type".
bool QelTypeCopy(void* pDst, EQelType pDstType, const void* pSrc, EQelType pSrcType);

// Converts pCount items between two strided buffers, exactly as calling the untyped
// entry point once per item in rising order would (same values, same reports),
// stopping at the first item that is refused. Returns the number of items converted
// before that one: pCount when every item was converted, 0 when pCount is negative.
int QelTypeCopyArray(void* pDst, EQelType pDstType, size_t pDstStride, const void* pSrc,
                     EQelType pSrcType, size_t pSrcStride, int pCount);

namespace internal {

template <class T, class TOther> struct QelIsSame
{
    static constexpr bool sValue = false;
};
template <class T> struct QelIsSame<T, T>
{
    static constexpr bool sValue = true;
};

// The tag of T's own row and column in the conversion matrix; eQelUndefined when T is
// none of the matrix's types.
template <class T> constexpr EQelType QelCopyTagOf()
{
    EQelType lTag = eQelUndefined;
    auto lVisit = [&lTag](auto pRow) {
        if (QelIsSame<typename decltype(pRow)::Storage, T>::sValue && pRow.mCopyAs == pRow.mTag)
            lTag = pRow.mTag;
    };
    sQelValueTypes.ForEach(lVisit);
    return lTag;
}

template <class T> constexpr EQelType sQelCopyTagOf = QelCopyTagOf<T>();

// Reports "Incompatible type assignment!" and returns false.
bool QelRefuseIncompatible();

// The typed entry point's refusal of a source type outside the matrix: a destination
// tag with storage finds the pair incompatible, any other tag is refused as the
// untyped entry point refuses it.
bool QelRefuseForeignSource(EQelType pDstType);

} // namespace internal

// The typed entry point of one source type: *pDst is taken as the storage type of
// pDstType (-17 and 17 both as int).
template <class TSrc> bool QelTypeCopy(void* pDst, EQelType pDstType, const TSrc& pSrc)
{
    constexpr EQelType lSrcType = internal::sQelCopyTagOf<TSrc>;
    if constexpr (lSrcType == eQelUndefined)
        return internal::QelRefuseForeignSource(pDstType);
    else
        return QelTypeCopy(pDst, pDstType, &pSrc, lSrcType);
}

// The pairwise rule of any two types, as the cell of the conversion matrix gives it.
// Pairs whose cell is X, and types that are none of the matrix's, report
// "Incompatible type assignment!" and return false.
template <class TDst, class TSrc> bool QelTypeCopy(TDst& pDst, const TSrc& pSrc)
{
    constexpr EQelType lDstType = internal::sQelCopyTagOf<TDst>;
    constexpr EQelType lSrcType = internal::sQelCopyTagOf<TSrc>;
    if constexpr (lDstType == eQelUndefined || lSrcType == eQelUndefined)
        return internal::QelRefuseIncompatible();
    else
        return QelTypeCopy(&pDst, lDstType, &pSrc, lSrcType);
}

} // namespace qelsdk

#endif
