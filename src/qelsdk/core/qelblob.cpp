#include <qelsdk/core/qelblob.h>

#include <qelsdk/core/base/qelalloc.h>

#include <cstring>

namespace qelsdk {

QelBlob::QelBlob(const void* pData, int pSize) : QelBlob() { Assign(pData, pSize); }
QelBlob::QelBlob(const QelBlob& pOther) : QelBlob() { Assign(pOther.mData, pOther.mSize); }
QelBlob::~QelBlob() { QelFree(mData); }

QelBlob& QelBlob::operator=(const QelBlob& pOther)
{
    if (&pOther != this) Assign(pOther.mData, pOther.mSize);
    return *this;
}

bool QelBlob::Assign(const void* pData, int pSize)
{
    if (!pData || pSize <= 0) {
        QelFree(mData);
        mData = nullptr;
        mSize = 0;
        return true;
    }
    // A fresh block before the old one goes: pData may point into it.
    void* lData = QelMalloc(static_cast<size_t>(pSize));
    if (!lData) return false;
    std::memcpy(lData, pData, static_cast<size_t>(pSize));
    QelFree(mData);
    mData = lData;
    mSize = pSize;
    return true;
}

bool QelBlob::operator==(const QelBlob& pOther) const
{
    return mSize == pOther.mSize &&
           (mSize == 0 || std::memcmp(mData, pOther.mData, static_cast<size_t>(mSize)) == 0);
}

} // namespace qelsdk
