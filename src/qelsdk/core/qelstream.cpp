#include <qelsdk/core/qelstream.h>

#include <qelsdk/core/base/qelalloc.h>

#include <climits>
#include <cstring>

namespace qelsdk {
namespace {

bool IsTransfer(const void* pData, int pSize) { return pData && pSize > 0; }

} // namespace

QelStream::~QelStream() = default;

int QelStream::Write(const char* pData, int pSize)
{
    return Write(static_cast<const void*>(pData), pSize);
}

int QelStream::Write(const int* pData, int pSize)
{
    return Write(static_cast<const void*>(pData), pSize);
}

int QelStream::Read(char* pData, int pSize) const { return Read(static_cast<void*>(pData), pSize); }
int QelStream::Read(int* pData, int pSize) const { return Read(static_cast<void*>(pData), pSize); }

QelMemoryStream::QelMemoryStream() : mData(nullptr), mSize(0), mCapacity(0), mPosition(0) {}

QelMemoryStream::QelMemoryStream(const void* pData, int pSize) : QelMemoryStream()
{
    Write(pData, pSize);
}

QelMemoryStream::~QelMemoryStream() { QelFree(mData); }

int QelMemoryStream::Write(const void* pData, int pSize)
{
    if (!IsTransfer(pData, pSize) || !Grow(pSize)) return 0;
    std::memcpy(mData + mSize, pData, static_cast<size_t>(pSize));
    mSize += pSize;
    return pSize;
}

int QelMemoryStream::Read(void* pData, int pSize) const
{
    if (!IsTransfer(pData, pSize)) return 0;
    const int lCount = QelMin(pSize, mSize - mPosition);
    if (lCount > 0) std::memcpy(pData, mData + mPosition, static_cast<size_t>(lCount));
    mPosition += lCount;
    return lCount;
}

// Makes room for pSize more bytes. Doubling keeps a long run of small writes to a
// logarithmic number of reallocations.
bool QelMemoryStream::Grow(int pSize)
{
    if (pSize > INT_MAX - mSize) return false;
    const int lNeeded = mSize + pSize;
    if (lNeeded <= mCapacity) return true;
    const int lCapacity = mCapacity > INT_MAX / 2 ? INT_MAX : QelMax(lNeeded, mCapacity * 2);
    char* lData = static_cast<char*>(QelRealloc(mData, static_cast<size_t>(lCapacity)));
    if (!lData) return false;
    mData = lData;
    mCapacity = lCapacity;
    return true;
}

QelFileStream::QelFileStream(const char* pPath, const char* pMode)
    : mFile(pPath && pMode ? std::fopen(pPath, pMode) : nullptr)
{
}

QelFileStream::~QelFileStream()
{
    if (mFile) std::fclose(mFile);
}

int QelFileStream::Write(const void* pData, int pSize)
{
    if (!mFile || !IsTransfer(pData, pSize)) return 0;
    return static_cast<int>(std::fwrite(pData, 1, static_cast<size_t>(pSize), mFile));
}

int QelFileStream::Read(void* pData, int pSize) const
{
    if (!mFile || !IsTransfer(pData, pSize)) return 0;
    return static_cast<int>(std::fread(pData, 1, static_cast<size_t>(pSize), mFile));
}

} // namespace qelsdk
