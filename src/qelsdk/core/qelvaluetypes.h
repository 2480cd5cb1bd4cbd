// The facts of each tag that the library uses at run time, derived from the
// value-type table: storage size, name, conversion role and how items of the type
// are built and destroyed in place.
#ifndef QELSDK_CORE_QELVALUETYPES_H
#define QELSDK_CORE_QELVALUETYPES_H

#include <qelsdk/core/qelblob.h>
#include <qelsdk/core/qeldatetime.h>
#include <qelsdk/core/qeldistance.h>
#include <qelsdk/core/qelhalffloat.h>
#include <qelsdk/core/qelstring.h>
#include <qelsdk/core/qeltime.h>
#include <qelsdk/core/qeltypetable.h>
#include <qelsdk/core/qelvector.h>

#include <array>
#include <new>
#include <type_traits>

namespace qelsdk {
namespace internal {

// Items hold memory of their own (strings, blobs, distances), which QelDestroyValues
// releases.
bool QelTypeOwnsMemory(EQelType pType);

// Default-constructs pCount items in place where the type's default constructor does
// something (vectors are zero, strings empty); a no-op for trivially
// default-constructible types, eQelReference and unknown tags.
void QelConstructValues(EQelType pType, void* pItems, int pCount);

// Runs the destructors of pCount items where they are not trivial; a no-op otherwise.
void QelDestroyValues(EQelType pType, void* pItems, int pCount);

// Tables indexed by tag cover the tags from -17 to 23.
constexpr int sQelTagCount = eQelTypeCount - eQelEnumMulti;

constexpr bool QelIsTagInTable(EQelType pType)
{
    return pType >= eQelEnumMulti && pType < eQelTypeCount;
}

// Precondition: QelIsTagInTable(pType).
constexpr int QelTagOffset(EQelType pType) { return pType - eQelEnumMulti; }

constexpr EQelType QelTagAt(int pOffset) { return static_cast<EQelType>(pOffset + eQelEnumMulti); }

// An operation on pCount items in place.
typedef void (*QelValuesOperation)(void* pItems, int pCount);

template <class T> void QelConstructEach(void* pItems, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
        new (static_cast<T*>(pItems) + lIndex) T();
}

template <class T> void QelDestroyEach(void* pItems, int pCount)
{
    for (int lIndex = 0; lIndex < pCount; ++lIndex)
        static_cast<T*>(pItems)[lIndex].~T();
}

// The facts of one tag. A tag without a row has all of them zero: no name, no size,
// never converted, nothing to build or destroy.
struct QelTypeFacts
{
    const char* mName;
    int mSize;
    EQelType mCopyAs;
    QelValuesOperation mConstruct; // null where default construction does nothing
    QelValuesOperation mDestroy;   // null where destruction does nothing
};

template <class T> constexpr QelTypeFacts QelFactsOf(const QelValueType<T>& pRow)
{
    return {pRow.mName, static_cast<int>(sizeof(T)), pRow.mCopyAs,
            std::is_trivially_default_constructible<T>::value ? nullptr : &QelConstructEach<T>,
            std::is_trivially_destructible<T>::value ? nullptr : &QelDestroyEach<T>};
}

constexpr std::array<QelTypeFacts, sQelTagCount> QelMakeTypeFacts()
{
    std::array<QelTypeFacts, sQelTagCount> lFacts{};
    auto lVisit = [&lFacts](const auto& pRow) {
        lFacts[QelTagOffset(pRow.mTag)] = QelFactsOf(pRow);
    };
    sQelValueTypes.ForEach(lVisit);
    return lFacts;
}

// Indexed by tag + 17.
inline constexpr std::array<QelTypeFacts, sQelTagCount> sQelTypeFacts = QelMakeTypeFacts();

// The facts of any tag, known or not.
constexpr QelTypeFacts QelFactsOfTag(EQelType pType)
{
    return QelIsTagInTable(pType) ? sQelTypeFacts[QelTagOffset(pType)] : QelTypeFacts{};
}

static_assert(QelFactsOfTag(eQelReference).mSize == 8, "a reference is one 64-bit pointer");
static_assert(QelFactsOfTag(eQelEnumMulti).mSize == 4 && QelFactsOfTag(eQelEnum).mSize == 4,
              "both enumerations are stored as a 32-bit int");
static_assert(QelFactsOfTag(eQelUndefined).mSize == 0 &&
                  QelFactsOfTag(static_cast<EQelType>(-1)).mSize == 0 &&
                  QelFactsOfTag(eQelTypeCount).mSize == 0,
              "eQelUndefined and unknown tags have no storage");
static_assert(!QelFactsOfTag(eQelReference).mConstruct && !QelFactsOfTag(eQelReference).mDestroy,
              "a reference is a plain pointer");

} // namespace internal
} // namespace qelsdk

#endif
