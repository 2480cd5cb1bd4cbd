// Value-type tags: every value the library stores, converts or hands across a type
// boundary is tagged with an EQelType. The numbering is persistent vocabulary:
// streams and converted buffers depend on it, so it never changes.
#ifndef QELSDK_CORE_QELPROPERTYTYPES_H
#define QELSDK_CORE_QELPROPERTYTYPES_H

#include <qelsdk/core/qelvectorfwd.h>

namespace qelsdk {

class QelColor;

// A fixed 32-bit underlying type, so that any tag, known or not, can be held and
// handed to the conversion entry points. Tags from -16 to -1, below -17 and above
// 23 are unknown types. -17 is the negation of eQelEnum and marks the second kind
// of enumeration, stored and converted exactly like int. Every tag with storage has
// one row in the value-type table (qelsdk/core/qeltypetable.h), which checks that
// its rows and these enumerators agree.
enum EQelType : int {
    eQelEnumMulti = -17,
    eQelUndefined = 0,
    eQelChar = 1,       // signed char
    eQelUChar = 2,      // unsigned char
    eQelShort = 3,      // short
    eQelUShort = 4,     // unsigned short
    eQelUInt = 5,       // unsigned int
    eQelLongLong = 6,   // long long
    eQelULongLong = 7,  // unsigned long long
    eQelHalfFloat = 8,  // QelHalfFloat
    eQelBool = 9,       // bool
    eQelInt = 10,       // int
    eQelFloat = 11,     // float
    eQelDouble = 12,    // double
    eQelDouble2 = 13,   // QelDouble2
    eQelDouble3 = 14,   // QelDouble3
    eQelDouble4 = 15,   // QelDouble4
    eQelDouble4x4 = 16, // QelDouble4x4
    eQelEnum = 17,      // int
    eQelString = 18,    // QelString
    eQelTime = 19,      // QelTime
    eQelReference = 20, // a pointer; no value can be set through it
    eQelBlob = 21,      // QelBlob
    eQelDistance = 22,  // QelDistance
    eQelDateTime = 23,  // QelDateTime
    eQelTypeCount       // one past the last tag
};

// The storage size of each tag in bytes: 8 for eQelReference (one pointer), 0 for
// eQelUndefined and unknown tags.
int QelTypeSizeOf(EQelType pType);

// The tag of a static item type, so that typed faces can tag themselves. A colour is
// deliberately tagged as a vector of four doubles. The pointers to library classes
// are tagged beside their classes.
inline EQelType QelTypeOf(const bool&) { return eQelBool; }
inline EQelType QelTypeOf(const int&) { return eQelInt; }
inline EQelType QelTypeOf(const float&) { return eQelFloat; }
inline EQelType QelTypeOf(const double&) { return eQelDouble; }
inline EQelType QelTypeOf(const QelVector2&) { return eQelDouble2; }
inline EQelType QelTypeOf(const QelVector4&) { return eQelDouble4; }
inline EQelType QelTypeOf(const QelColor&) { return eQelDouble4; }
inline EQelType QelTypeOf(unsigned long long* const&) { return eQelReference; }
inline EQelType QelTypeOf(void* const&) { return eQelReference; }
// Other pointers are tagged beside their classes. Without this, a pointer whose
// class header is not included would convert to bool and be tagged eQelBool.
template <class T> EQelType QelTypeOf(T* const&) = delete;

} // namespace qelsdk

#endif
