// Fixed-size vectors of two, three and four components, and the 4x4 matrix built
// from them. They hold exactly their components (trivially copyable, no virtual
// functions): element arrays move them as raw bytes.
#ifndef QELSDK_CORE_QELVECTOR_H
#define QELSDK_CORE_QELVECTOR_H

#include <qelsdk/core/qelvectorfwd.h>

#include <type_traits>

namespace qelsdk {

template <class T> class QelVectorTemplate2
{
public:
    QelVectorTemplate2() : mData{} {}
    QelVectorTemplate2(const T& pX, const T& pY) : mData{pX, pY} {}

    T& operator[](int pIndex) { return mData[pIndex]; }
    const T& operator[](int pIndex) const { return mData[pIndex]; }

    // Stores the one value into every component.
    QelVectorTemplate2& operator=(const T& pValue)
    {
        mData[0] = mData[1] = pValue;
        return *this;
    }

    bool operator==(const QelVectorTemplate2& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1];
    }
    bool operator!=(const QelVectorTemplate2& pOther) const { return !(*this == pOther); }

    T mData[2];
};

template <class T> class QelVectorTemplate3
{
public:
    QelVectorTemplate3() : mData{} {}
    QelVectorTemplate3(const T& pX, const T& pY, const T& pZ) : mData{pX, pY, pZ} {}

    T& operator[](int pIndex) { return mData[pIndex]; }
    const T& operator[](int pIndex) const { return mData[pIndex]; }

    // Stores the one value into every component.
    QelVectorTemplate3& operator=(const T& pValue)
    {
        mData[0] = mData[1] = mData[2] = pValue;
        return *this;
    }

    bool operator==(const QelVectorTemplate3& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1] &&
               mData[2] == pOther.mData[2];
    }
    bool operator!=(const QelVectorTemplate3& pOther) const { return !(*this == pOther); }

    T mData[3];
};

template <class T> class QelVectorTemplate4
{
public:
    QelVectorTemplate4() : mData{} {}
    QelVectorTemplate4(const T& pX, const T& pY, const T& pZ, const T& pW) : mData{pX, pY, pZ, pW}
    {
    }

    T& operator[](int pIndex) { return mData[pIndex]; }
    const T& operator[](int pIndex) const { return mData[pIndex]; }

    QelVectorTemplate4(const QelVectorTemplate4&) = default;
    QelVectorTemplate4& operator=(const QelVectorTemplate4&) = default;

    // Copies the three components into the first three; the fourth keeps its value.
    QelVectorTemplate4& operator=(const QelVectorTemplate3<T>& pOther)
    {
        mData[0] = pOther[0];
        mData[1] = pOther[1];
        mData[2] = pOther[2];
        return *this;
    }

    // A view of the first three components. The three-vector is a standard-layout
    // array of three T sharing the address of mData (pinned below).
    operator QelVectorTemplate3<T>&() { return *reinterpret_cast<QelVectorTemplate3<T>*>(mData); }
    operator const QelVectorTemplate3<T>&() const
    {
        return *reinterpret_cast<const QelVectorTemplate3<T>*>(mData);
    }

    bool operator==(const QelVectorTemplate4& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1] &&
               mData[2] == pOther.mData[2] && mData[3] == pOther.mData[3];
    }
    bool operator!=(const QelVectorTemplate4& pOther) const { return !(*this == pOther); }

    T mData[4];
};

static_assert(sizeof(QelDouble2) == 16 && sizeof(QelDouble3) == 24 && sizeof(QelDouble4) == 32 &&
                  sizeof(QelDouble4x4) == 128,
              "vectors hold exactly their components");
static_assert(
    std::conjunction<std::is_trivially_copyable<QelDouble2>, std::is_trivially_copyable<QelDouble3>,
                     std::is_trivially_copyable<QelDouble4>,
                     std::is_trivially_copyable<QelDouble4x4>>::value,
    "element arrays move vectors as bytes");

} // namespace qelsdk

#endif
