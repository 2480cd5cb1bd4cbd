// What every fuzz target installs once: a report procedure that keeps the library's
// reports quiet, and memory handlers that refuse large requests, so that a count read
// from the input meets the library's allocation-failure path instead of the
// fuzzer's memory limit.
#ifndef QELSDK_FUZZ_QELFUZZSUPPORT_H
#define QELSDK_FUZZ_QELFUZZSUPPORT_H

#include <qelsdk/core/base/qelalloc.h>
#include <qelsdk/core/base/qelassert.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace qelsdk {
namespace fuzz {

// Larger requests are refused: no input of the corpora needs more.
constexpr size_t sLargestRequest = size_t(1) << 20;

inline void QelQuietReport(const char*, const char*, unsigned int, bool, const char*) {}

inline void* QelCappedMalloc(size_t pSize)
{
    return pSize > sLargestRequest ? nullptr : std::malloc(pSize);
}

inline void* QelCappedRealloc(void* pBlock, size_t pSize)
{
    return pSize > sLargestRequest ? nullptr : std::realloc(pBlock, pSize);
}

// Installs the quiet report procedure and the capped handlers; returns 0 for
// LLVMFuzzerInitialize.
inline int QelInstallFuzzHandlers()
{
    QelSetAssertProc(QelQuietReport);
    QelSetMallocHandler(QelCappedMalloc);
    QelSetReallocHandler(QelCappedRealloc);
    return 0;
}

// Reads the input from the front, giving zeros once it runs out.
class QelInput
{
public:
    QelInput(const uint8_t* pData, size_t pSize) : mData(pData), mSize(pSize) {}

    bool Empty() const { return mSize == 0; }
    size_t Left() const { return mSize; }
    const uint8_t* Data() const { return mData; }

    template <class T> T Take()
    {
        T lValue{};
        const size_t lBytes = sizeof(T) < mSize ? sizeof(T) : mSize;
        std::memcpy(&lValue, mData, lBytes);
        mData += lBytes;
        mSize -= lBytes;
        return lValue;
    }

private:
    const uint8_t* mData;
    size_t mSize;
};

} // namespace fuzz
} // namespace qelsdk

#endif
