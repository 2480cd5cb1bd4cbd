// QelBlob: a block of bytes with its size, owned and deep-copied. An all-zero blob
// (no data, size 0) is a valid empty blob.
#ifndef QELSDK_CORE_QELBLOB_H
#define QELSDK_CORE_QELBLOB_H

namespace qelsdk {

class QelBlob
{
public:
    QelBlob() : mData(nullptr), mSize(0) {}
    QelBlob(const void* pData, int pSize);
    QelBlob(const QelBlob& pOther);
    ~QelBlob();

    QelBlob& operator=(const QelBlob& pOther);

    // Replaces the bytes with a copy of pSize bytes at pData. On allocation failure
    // the blob keeps its old bytes and false is returned.
    bool Assign(const void* pData, int pSize);

    int Size() const { return mSize; }
    const void* Access() const { return mData; }

    bool operator==(const QelBlob& pOther) const;
    bool operator!=(const QelBlob& pOther) const { return !(*this == pOther); }

private:
    void* mData;
    int mSize;
};

} // namespace qelsdk

#endif
